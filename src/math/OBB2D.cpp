#include "math/OBB2D.h"

#include "math/FarthestPair.h"
#include "util/Failures.h"

#include <limits>

namespace math
{
OBB2D OBB2D::Empty()
{
    return FromCenterRad(Vec2(), -std::numeric_limits<float>::infinity());
}
OBB2D OBB2D::Everything()
{
    return FromCenterRad(Vec2(), std::numeric_limits<float>::infinity());
}

OBB2D OBB2D::Build(const Vec2* points, size_t nPoints, const Vec2& axis)
{
    CODE_ASSERT(nPoints > 1);
    const Vec2 y = Rot90CCW(axis);
    const float inf = std::numeric_limits<float>::infinity();
    float minX = inf, maxX = -inf, minY = inf, maxY = -inf;
    for (size_t i = 0; i < nPoints; ++i)
    {
        const float px = Dot(points[i], axis), py = Dot(points[i], y);
        minX = px < minX ? px : minX;
        maxX = px > maxX ? px : maxX;
        minY = py < minY ? py : minY;
        maxY = py > maxY ? py : maxY;
    }
    const Vec2 center = (axis * (minX + maxX) + y * (minY + maxY)) / 2;
    return OBB2D(center, axis, y, (maxX - minX) / 2, (maxY - minY) / 2);
}

OBB2D OBB2D::Build(const Vec2* points, size_t n)
{
    OBB2D best = Build(points, n, FindMainAxisSimple(points, n));
    for (int i = 0; i < 8; ++i)
    {
        const float a = i * (TwoPIf / 30);
        const OBB2D candidate = Build(points, n, Vec2(std::cos(a), std::sin(a)));
        if (candidate.Area() < best.Area())
            best = candidate;
    }
    return best;
}

Vec2 FindMainAxisSimple(const Vec2* points, size_t nPoints)
{
    CODE_ASSERT(nPoints > 1);
    const PointPair pair = FindFarthestPair(points, nPoints);
    return pair.distSq < 0 ? Vec2() : Normalized(points[pair.j] - points[pair.i]);
}

Vec2 FindMainAxisLinAlg(const Vec2* points, size_t n)
{
    return FindMainAxisSimple(points, n);
}
}
