// Draws circles: from the centre to the rim.
#pragma once

#include "app/tools/PreviewTool.h"

namespace app
{
class CircleTool final : public PreviewTool
{
public:
    CircleTool();
    ~CircleTool() override;

private:
    void UpdatePreview(const math::Vec2& end) override;

    float m_radius = 0; // of the preview; 0 when there is none
};
}
