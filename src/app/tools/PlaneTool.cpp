#include "app/tools/PlaneTool.h"

#include "app/entities/PlaneEntity.h"
#include "math/Plane.h"
#include "physics/Plane.h"

#include <cmath>

using math::Vec2;

namespace app
{
namespace
{
const float SnapStep = 0.2617994f; // radians: 15 degrees

Vec2 Snapped(const Vec2& direction)
{
    const float angle = std::atan2(direction.y, direction.x);
    const float snapped = std::floor(angle / SnapStep + 0.5f) * SnapStep;
    return Vec2(std::cos(snapped), std::sin(snapped));
}
}

PlaneTool::PlaneTool()
    : PreviewTool("UndoPlane")
{
}

PlaneTool::~PlaneTool() = default;

void PlaneTool::UpdatePreview(const Vec2& end)
{
    Vec2 normal = end - GetStart();
    if (normal.Normalize() == 0)
        return;
    if (IsShiftDown())
        normal = Snapped(normal);
    if (GetPreview() && normal == m_normal)
        return;
    const auto plane = math::Plane2D::FromPointNormal(GetStart(), normal);
    SetPreview(QUIB_NEW PlaneEntity(QUIB_NEW physics::Plane(plane)));
    m_normal = normal;
}
}
