#include "app/tools/BrushTool.h"

#include "app/Scene.h"
#include "app/entities/PolyEntity.h"
#include "physics/Polygon.h"
#include "util/Failures.h"

namespace app
{
BrushTool::BrushTool() = default;

BrushTool::~BrushTool() = default;

bool BrushTool::MayBeginAt(const math::Vec2& pos) const
{
    return MayBeginShapeAt(pos);
}

void BrushTool::AnalyzeDrawing()
{
    if (IsLine())
    {
        TestEraseLine();
        return;
    }
    const physics::PolygonPtr polygon = IsPolygon();
    if (!polygon || Scene::GetInstancePtr()->IsSelection(*polygon))
        return;
    try
    {
        AddEntityUndoable(QUIB_NEW PolyEntity(polygon), "UndoPolygon");
    }
    catch (...)
    {
        LogCaught(QUIB_LOCATION);
    }
}
}
