// Planes in two and three dimensions.
#pragma once

#include "math/Vector.h"
#include "util/Failures.h"

namespace math
{
// The line n * p + d = 0.
struct Plane2D
{
    Vec2 normal;
    float d = 0;

    Plane2D() = default;
    Plane2D(const Vec2& n, float d_)
        : normal(n)
        , d(d_)
    {
    }

    /// The normal is kept as it is.
    static Plane2D FromPointNormal(const Vec2& p, const Vec2& n) { return Plane2D(n, -Dot(n, p)); }

    float Distance(const Vec2& p) const { return Dot(normal, p) + d; }

    /// Deliberate: the factor is applied twice and d is left alone, so that only a normal of unit
    /// length stays one.
    void Normalize()
    {
        const float r = 1 / normal.Length();
        normal *= r;
        normal *= r;
    }
};

struct Plane
{
    Vec3 normal;
    float d = 0;

    Plane() = default;
    /// Normalises normal and d together.
    Plane(const Vec3& n, float d_)
        : normal(n)
        , d(d_)
    {
        Normalize();
    }

    static Plane FromPointNormal(const Vec3& p, const Vec3& n) { return Plane(n, -Dot(p, n)); }
    /// Through a, with the normal (a - b) x (c - b).
    static Plane FromPoints(const Vec3& a, const Vec3& b, const Vec3& c)
    {
        return FromPointNormal(a, Cross(a - b, c - b));
    }

    void Normalize()
    {
        const float r = 1 / normal.Length();
        normal = normal * r;
        d *= r;
    }
};

/// The point shared by three planes, by Cramer's rule; not finite when there is none.
inline Vec3 Plane3Intersection(const Plane& a, const Plane& b, const Plane& c)
{
    const Vec3 bc = Cross(b.normal, c.normal);
    const Vec3 ca = Cross(c.normal, a.normal);
    const Vec3 ab = Cross(a.normal, b.normal);
    return (bc * -a.d + ca * -b.d + ab * -c.d) * (1 / Dot(a.normal, bc));
}
}
