// The handles by which a box is scaled: eight rings on its corners and edges.
#pragma once

#include "app/Group.h"
#include "math/BoundingBox.h"

#include <boost/container/static_vector.hpp>

#include <optional>

namespace app
{
// One handle.
struct Ring
{
    math::Vec2 pos;            // in the world
    math::Vec2 anchor;         // the point opposite
    float radius = 0;          // world units
    int index = 0;             // in the list of all
    math::TVector2<bool> axes; // those that it moves
    const char* cursor = "";   // its name
};
using RingList = boost::container::static_vector<Ring, 8>;

/// From the top left to the bottom right, row by row. Small boxes get small rings, so that they never
/// overlap. None for a box that is empty or infinite.
RingList CalcRingList(const math::BoundingBox& box);
/// @param pos  in the world
std::optional<Ring> GetRingAt(const math::BoundingBox& box, const math::Vec2& pos);
/// The point that stays where it is: that by which the group hangs, unless the ring is right at it; else
/// the ring's anchor.
/// @param box  the group's
math::Vec2 CalcScaleCenter(const math::BoundingBox& box, const Group& group, const Ring& ring);
}
