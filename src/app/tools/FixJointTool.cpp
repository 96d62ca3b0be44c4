#include "app/tools/FixJointTool.h"

#include "app/entities/FixJointEntity.h"

namespace app
{
FixJointTool::FixJointTool()
    : AttachTool("UndoFixate")
{
}

FixJointTool::~FixJointTool() = default;

EntityPtr FixJointTool::Make(const math::Vec2& pos, float size) const
{
    return MakeJoint<FixJointEntity>(pos, size);
}
}
