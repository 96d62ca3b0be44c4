// How small things are picked that are drawn around a point: hinges, welds and pens. A plain circle
// stands for them; a physics::Circle each time would use up the ids of geometries.
#pragma once

#include "math/BoundingBox.h"
#include "math/BoundingSphere.h"
#include "physics/Linesegment.h"

namespace physics
{
class Polygon;
}

namespace app
{
/// Strictly.
bool IsInCircle(const math::BoundingCircle& circle, const math::Vec2& pos);
/// Whether the stroke crosses the outline more than once.
bool IsCircleErasedBy(const math::BoundingCircle& circle, const physics::LinesegmentList& stroke);
/// All of it.
bool IsCircleContainedBy(const math::BoundingCircle& circle, const physics::Polygon& polygon);
math::BoundingBox CircleBox(const math::BoundingCircle& circle);
}
