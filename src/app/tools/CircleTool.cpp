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
    if (GetPreview() && radius == m_radius)
        return;
    // Back at its centre nothing is left of the circle.
    util::SharedPtr<CircleEntity> preview;
    if (radius > 0)
        preview = QUIB_NEW CircleEntity(QUIB_NEW physics::Circle(GetStart(), radius));
    SetPreview(preview);
    m_radius = radius;
}
}
