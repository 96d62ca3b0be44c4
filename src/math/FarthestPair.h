// The two points that are farthest apart, which main axes and bounding circles are built on.
#pragma once

#include "math/Vector.h"

#include <cstddef>

namespace math
{
struct PointPair
{
    size_t i = 0, j = 1;
    float distSq = -1; // -1 when no pair has a distance, as between points that are not numbers
};

/// The pair i < j with the largest squared distance; the first such pair wins. Quadratic in n, a
/// fifth of a nanosecond per pair (bench/polygon).
PointPair FindFarthestPair(const Vec2* points, size_t n);
}
