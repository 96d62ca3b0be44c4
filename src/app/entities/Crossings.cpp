#include "app/entities/Crossings.h"

#include <algorithm>
#include <vector>

using math::Vec2;

namespace app
{
namespace
{
/// Whether two places on a segment of a stroke are the same, but for the rounding of their calculation.
bool IsSamePlace(const Vec2& a, const Vec2& b, const physics::Linesegment& segment)
{
    return math::Distance(a, b) <= 1e-6f * (a.Length() + segment.Length());
}
}

int CountCrossings(const physics::LinesegmentList& stroke, const physics::LinesegmentList& outline)
{
    int count = 0;
    bool isCornerMet = false;
    bool isEndMet = false; // the end of the segment before is a place that has been counted
    std::vector<Vec2> places;
    for (size_t i = 0; i < stroke.size(); ++i)
    {
        const physics::Linesegment& segment = stroke[i];
        const bool goesOn = i > 0 && stroke[i - 1].p1 == segment.p0;
        const bool isStartCounted = goesOn && isEndMet;
        places.clear();
        isEndMet = false;
        for (const physics::Linesegment& side : outline)
        {
            Vec2 place =
                segment.p0 == side.p0 ? side.p0 : side.p1; // when these are what they share
            if (!physics::Intersects(segment, side, &place))
                continue;
            if (IsSamePlace(place, segment.p1, segment))
                isEndMet = true;
            if (isStartCounted && IsSamePlace(place, segment.p0, segment))
                continue;
            if (std::any_of(places.begin(), places.end(),
                            [&](const Vec2& other) { return IsSamePlace(place, other, segment); }))
                continue;
            places.push_back(place);
            if (IsSamePlace(place, side.p0, segment) || IsSamePlace(place, side.p1, segment))
                isCornerMet = true;
        }
        count += static_cast<int>(places.size());
    }
    // An end on a corner is on one of its sides.
    return count == 1 && isCornerMet ? std::min(2, physics::IntersectCount(stroke, outline))
                                     : count;
}
}
