#include "app/entities/PointEntity.h"

#include "physics/Circle.h"
#include "physics/Polygon.h"

using math::Vec2;

namespace app
{
PointEntity::~PointEntity() = default;

bool PointEntity::IsOnEntity(const Vec2& pos) const
{
    const math::BoundingCircle circle = AsCircle();
    return math::Distance(pos, circle.center) < circle.radius;
}

bool PointEntity::ErasedBy(const physics::LinesegmentList& stroke) const
{
    const math::BoundingCircle circle = AsCircle();
    return physics::CircleIntersectCount(circle.center, circle.radius, stroke) > 1;
}

bool PointEntity::IsContainedBy(const physics::Polygon& lasso) const
{
    const math::BoundingCircle circle = AsCircle();
    return lasso.DistanceWorld(circle.center) < -circle.radius;
}

math::BoundingBox PointEntity::GetAABB() const
{
    const math::BoundingCircle circle = AsCircle();
    math::BoundingBox box(circle.center, circle.center);
    box.Grow(circle.radius);
    return box;
}
}
