// A plain pair of points: polygon edges, erasing strokes.
#pragma once

#include "math/Mat2D.h"
#include "math/Vector.h"

#include <vector>

namespace physics
{
struct Linesegment
{
    math::Vec2 p0, p1;

    Linesegment() = default;
    Linesegment(const math::Vec2& a, const math::Vec2& b)
        : p0(a)
        , p1(b)
    {
    }

    /// @param t  out: position of the result along the segment, 0 at p0 and 1 at p1. Not finite for a
    ///           segment without length, whose closest point is p itself.
    math::Vec2 ClosestPoint(const math::Vec2& p, float& t) const
    {
        const math::Vec2 u = p1 - p0;
        t = math::Dot(u, p - p0) / u.LengthSq();
        if (!math::IsFinite(t))
            return p;
        if (t <= 0)
        {
            t = 0;
            return p0;
        }
        if (t >= 1)
        {
            t = 1;
            return p1;
        }
        return p0 + t * u;
    }
    float DistanceSq(const math::Vec2& p) const
    {
        float t;
        return math::DistanceSq(p, ClosestPoint(p, t));
    }
    float Distance(const math::Vec2& p) const { return std::sqrt(DistanceSq(p)); }
    float Length() const { return math::Distance(p0, p1); }

    /// Strictly: points on the line are not.
    bool IsPointOnTheLeft(const math::Vec2& p) const
    {
        return math::Dot(p - p0, math::Rot90CCW(p1 - p0)) > 0;
    }
};

using LinesegmentList = std::vector<Linesegment>;

inline Linesegment Transform(const math::Mat2D& m, const Linesegment& s)
{
    return Linesegment(math::TransformCoordinate(m, s.p0), math::TransformCoordinate(m, s.p1));
}

/// Whether two segments cross or touch. Deliberate, so that chains and rings of segments have no
/// crossings at their joints: segments that meet head to tail never intersect, whatever else they
/// do, while segments with the same start, or the same end, always do. Parallel ones never do.
/// @param out  where they meet; may be null. Left alone for segments with the same start or end.
bool Intersects(const Linesegment& a, const Linesegment& b, math::Vec2* out);

/// The same on the four ends.
bool LineSegmentIntersectTest(const math::Vec2& a0, const math::Vec2& a1, const math::Vec2& b0,
                              const math::Vec2& b1, math::Vec2* out);

/// How many of the list the segment intersects.
int IntersectCount(const Linesegment& segment, const LinesegmentList& list);
/// The sum over the first list.
int IntersectCount(const LinesegmentList& segments, const LinesegmentList& list);

/// Whether any two of the lines intersect. Quadratic in their number: less than a nanosecond per
/// pair (bench/polygon).
bool AnyIntersect(const LinesegmentList& lines);
/// For each of the lines, whether it intersects any other. Costs the same.
std::vector<bool> FindIntersecting(const LinesegmentList& lines);
}
