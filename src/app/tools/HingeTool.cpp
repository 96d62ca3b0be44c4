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
    return MakeJoint<HingeEntity>(pos, size);
}
}
