// Draws half planes: the drag runs from a point of the edge along the normal, out of the ground.
#pragma once

#include "app/tools/PreviewTool.h"

namespace app
{
class PlaneTool final : public PreviewTool
{
public:
    PlaneTool();
    ~PlaneTool() override;

private:
    void UpdatePreview(const math::Vec2& end) override;

    math::Vec2 m_normal; // of the preview
};
}
