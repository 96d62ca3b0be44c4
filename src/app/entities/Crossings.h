// How often a stroke that erases crosses an outline.
#pragma once

#include "physics/Linesegment.h"

namespace app
{
/// In how many places the stroke meets the outline. Unlike physics::IntersectCount, a place where two
/// segments of the stroke meet each other on the outline counts once. So does a corner of the outline on the
/// way of a stroke; but when the corner is all that it meets, each of the two sides counts.
int CountCrossings(const physics::LinesegmentList& stroke, const physics::LinesegmentList& outline);
}
