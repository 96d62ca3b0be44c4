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
    const util::SharedPtr<FixJointEntity> joint = QUIB_NEW FixJointEntity(size);
    const math::Vec2 ends[2] = {pos, pos};
    joint->AttachAt(ends);
    return joint;
}
}
