// A bounding circle.
#pragma once

#include "math/FarthestPair.h"
#include "math/Mat2D.h"
#include "math/Vector.h"

#include <limits>

namespace math
{
template<typename Vec>
struct TBoundingSphere
{
    Vec center;
    float radius = -std::numeric_limits<float>::infinity();

    /// Empty.
    TBoundingSphere() = default;
    TBoundingSphere(const Vec& c, float r)
        : center(c)
        , radius(r)
    {
    }

    static TBoundingSphere Empty() { return TBoundingSphere(); }
    static TBoundingSphere Everything()
    {
        return TBoundingSphere(Vec(), std::numeric_limits<float>::infinity());
    }

    /// The largest distance of the n points from c.
    static TBoundingSphere BuildFromCenterAndPoints(const Vec& c, size_t n, const Vec* points)
    {
        float r = 0;
        for (size_t i = 0; i < n; ++i)
        {
            const float d = Distance(c, points[i]);
            if (d > r)
                r = d;
        }
        return TBoundingSphere(c, r);
    }

    /// Around the middle of the farthest pair of points; the first such pair wins. Without points the
    /// radius is -1. Quadratic in n. Our own, and not the smallest of all circles (Welzl 1991,
    /// "Smallest enclosing disks").
    static TBoundingSphere BuildBest(size_t n, const Vec* points)
    {
        if (n == 0)
            return TBoundingSphere(Vec(), -1);
        if (n == 1)
            return TBoundingSphere(points[0], 0);
        const PointPair pair = FindFarthestPair(points, n);
        return BuildFromCenterAndPoints((points[pair.i] + points[pair.j]) * 0.5f, n, points);
    }

    TBoundingSphere Transform(const Mat2D& m) const
    {
        return TBoundingSphere(TransformCoordinate(m, center), radius);
    }

    /// Touching circles do not intersect.
    friend bool Intersects(const TBoundingSphere& a, const TBoundingSphere& b)
    {
        const float r = a.radius + b.radius;
        return DistanceSq(a.center, b.center) < r * r;
    }
};

using BoundingCircle = TBoundingSphere<Vec2>;
}
