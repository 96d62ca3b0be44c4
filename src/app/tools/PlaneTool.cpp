#include "app/tools/PlaneTool.h"

#include "app/entities/PlaneEntity.h"
#include "math/Plane.h"
#include "physics/Plane.h"

#include <cmath>

using math::Vec2;

namespace app
{
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
    {
        const float angle = SnapAngle(std::atan2(normal.y, normal.x));
        normal = Vec2(std::cos(angle), std::sin(angle));
    }
    if (GetPreview() && normal == m_normal)
        return;
    const auto plane = math::Plane2D::FromPointNormal(GetStart(), normal);
    SetPreview(QUIB_NEW PlaneEntity(QUIB_NEW physics::Plane(plane)));
    m_normal = normal;
}
}
