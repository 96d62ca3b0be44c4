#include "app/tools/ScaleRings.h"

#include "app/App.h"

#include <algorithm>
#include <cmath>

using math::BoundingBox;
using math::Vec2;

namespace app
{
namespace
{
const float MaxRadiusPart = 0.225f; // of the box's smaller side
const float MaxRadius = 0.5f;       // screen centimetres
// Of the box's size: so much closer to the ring than to what lies opposite a pin must not be.
const float MinCenterDistance = 0.45f;

// Places as parts of the box: -1 is left or bottom, 1 is right or top.
const struct
{
    int x, y;
    const char* cursor;
} Places[] = {
    {-1, 1, "arrow_north-west"},  {0, 1, "arrow_north-south"},  {1, 1, "arrow_north-east"}, //
    {-1, 0, "arrow_west-east"},   {1, 0, "arrow_west-east"},                                //
    {-1, -1, "arrow_north-east"}, {0, -1, "arrow_north-south"}, {1, -1, "arrow_north-west"},
};
}

RingList CalcRingList(const BoundingBox& box)
{
    RingList rings;
    if (!box.IsFinite())
        return rings;
    const Vec2 half = box.GetSize() * 0.5f, center = box.GetCenter();
    const float radius = std::min(MaxRadiusPart * std::min(box.GetSize().x, box.GetSize().y),
                                  MaxRadius * App::GetInstancePtr()->GetScreenCM());
    for (const auto& place : Places)
    {
        const Vec2 offset(float(place.x) * half.x, float(place.y) * half.y);
        rings.push_back({center + offset, center - offset, radius, int(rings.size()),
                         math::TVector2<bool>(place.x != 0, place.y != 0), place.cursor});
    }
    return rings;
}

std::optional<Ring> GetRingAt(const BoundingBox& box, const Vec2& pos)
{
    for (const Ring& ring : CalcRingList(box))
        if (math::DistanceSq(ring.pos, pos) < ring.radius * ring.radius)
            return ring;
    return std::nullopt;
}

Vec2 CalcScaleCenter(const BoundingBox& box, const Group& group, const Ring& ring)
{
    const std::optional<Vec2> pin = group.CalcScaleCenter();
    if (!pin)
        return ring.anchor;
    for (int i = 0; i < 2; ++i)
        if (ring.axes[i] &&
            std::fabs((*pin)[i] - ring.pos[i]) < MinCenterDistance * box.GetSize()[i])
            return ring.anchor;
    return *pin;
}
}
