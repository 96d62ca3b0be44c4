// A stroke drawn by hand: points in the world, in the order drawn.
#pragma once

#include "math/Vector.h"
#include "physics/Linesegment.h"

namespace app
{
class Line
{
public:
    /// What CheckSelfIntersect finds.
    enum Shape
    {
        Open = 0,
        Closed = 1,
        Hopeless = 2, // crosses itself all over
    };

    const math::Vec2List& GetPoints() const { return m_points; }
    /// One that equals the last is left out, so that no two neighbours are equal.
    void Add(const math::Vec2& point);
    float Length() const;
    /// From each point to the next.
    physics::LinesegmentList GetSegments() const;
    /// A smooth line strip in the renderer's colour, of two points and more.
    void Draw() const;

    /// Tells whether the line is a shape, and cuts the tails off a shape that crosses itself: what is left
    /// is the loop around the middle of the line. One that does not cross itself is a shape when its
    /// ends nearly meet. Quadratic in the number of points: with 5,000 it takes 10 ms,
    /// and 25 ms for a scribble (bench/polygon).
    Shape CheckSelfIntersect();

    // Whether, in the ring of the points, a side crosses others. Deliberate: nothing asks here; they are kept
    // for whoever needs a simple ring.

    /// The first side against all others.
    bool FirstLineIntersectTheRest() const;
    /// The side that closes the ring against all others.
    bool LastLineIntersectTheRest() const;

private:
    math::Vec2List m_points;
};

/// Where they cross: each segment of a with each of b, in the order of a, and then of b.
math::Vec2List IntersectTest(const Line& a, const Line& b);
}
