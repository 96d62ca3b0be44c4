#include "app/tools/PenTool.h"

#include "app/entities/PenEntity.h"

namespace app
{
PenTool::PenTool()
    : AttachTool("UndoPen")
{
}

PenTool::~PenTool() = default;

EntityPtr PenTool::Make(const math::Vec2& pos, float size) const
{
    const PenEntityPtr pen = QUIB_NEW PenEntity(size);
    pen->AttachAt(pos);
    return pen;
}
}
