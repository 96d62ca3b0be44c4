// Fastens pens.
#pragma once

#include "app/tools/AttachTool.h"

namespace app
{
class PenTool final : public AttachTool
{
public:
    PenTool();
    ~PenTool() override;

private:
    EntityPtr Make(const math::Vec2& pos, float size) const override;
};
}
