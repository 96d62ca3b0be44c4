#include "app/tools/HingeTool.h"

#include "app/entities/HingeEntity.h"

namespace app
{
HingeTool::HingeTool()
    : AttachTool("UndoHinge")
{
}

HingeTool::~HingeTool() = default;

EntityPtr HingeTool::Make(const math::Vec2& pos, float size) const
{
    const util::SharedPtr<HingeEntity> joint = QUIB_NEW HingeEntity(size);
    const math::Vec2 ends[2] = {pos, pos};
    joint->AttachAt(ends);
    return joint;
}
}
