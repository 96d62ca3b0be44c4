#include "app/entities/CirclePicking.h"

#include "physics/Circle.h"
#include "physics/Polygon.h"

using math::Vec2;

namespace app
{
bool IsInCircle(const math::BoundingCircle& circle, const Vec2& pos)
{
    return math::Distance(pos, circle.center) < circle.radius;
}

bool IsCircleErasedBy(const math::BoundingCircle& circle, const physics::LinesegmentList& stroke)
{
    return physics::CircleIntersectCount(circle.center, circle.radius, stroke) > 1;
}

bool IsCircleContainedBy(const math::BoundingCircle& circle, const physics::Polygon& polygon)
{
    return polygon.DistanceWorld(circle.center) < -circle.radius;
}

math::BoundingBox CircleBox(const math::BoundingCircle& circle)
{
    math::BoundingBox box(circle.center, circle.center);
    box.Grow(circle.radius);
    return box;
}
}
