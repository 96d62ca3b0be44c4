// Welds: one body to the background, two that overlap to each other.
#pragma once

#include "app/tools/AttachTool.h"

namespace app
{
class FixJointTool final : public AttachTool
{
public:
    FixJointTool();
    ~FixJointTool() override;

private:
    EntityPtr Make(const math::Vec2& pos, float size) const override;
};
}
