// Makes hinges: one body turns on the background, two that overlap turn on each other.
#pragma once

#include "app/tools/AttachTool.h"

namespace app
{
class HingeTool final : public AttachTool
{
public:
    HingeTool();
    ~HingeTool() override;

private:
    EntityPtr Make(const math::Vec2& pos, float size) const override;
};
}
