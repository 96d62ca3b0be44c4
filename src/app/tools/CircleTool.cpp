#include "app/tools/CircleTool.h"

#include "app/entities/CircleEntity.h"
#include "physics/Circle.h"

namespace app
{
CircleTool::CircleTool()
    : PreviewTool("UndoCircle")
{
}

CircleTool::~CircleTool() = default;

void CircleTool::UpdatePreview(const math::Vec2& end)
{
    const float radius = math::Distance(GetStart(), end);
    if (!(radius > 0) || (GetPreview() && radius == m_radius))
        return;
    SetPreview(QUIB_NEW CircleEntity(QUIB_NEW physics::Circle(GetStart(), radius)));
    m_radius = radius;
}
}
