#include "math/FarthestPair.h"

#include "math/Simd.h"

#include <limits>

namespace math
{
PointPair FindFarthestPair(const Vec2* points, size_t n)
{
    // Flat copies, padded to whole vectors by NaNs, which never win. Only a row of the triangle that
    // beats the best so far is walked again for the place of its first largest distance.
    const size_t padded = n + 4;
    std::vector<float> flat(2 * padded, std::numeric_limits<float>::quiet_NaN());
    float *x = flat.data(), *y = x + padded;
    for (size_t i = 0; i < n; ++i)
    {
        x[i] = points[i].x;
        y[i] = points[i].y;
    }

    PointPair best;
    for (size_t i = 0; i < n; ++i)
    {
        const Float4 xi = Splat4(x[i]), yi = Splat4(y[i]);
        Float4 rowBest = Splat4(best.distSq);
        for (size_t j = i + 1; j < n; j += 4)
        {
            const Float4 dx = xi - Load4(x + j), dy = yi - Load4(y + j);
            rowBest = Max4(dx * dx + dy * dy, rowBest);
        }
        if (!AnyTrue4(rowBest > best.distSq))
            continue;
        for (size_t j = i + 1; j < n; ++j)
        {
            const float d = DistanceSq(points[i], points[j]);
            if (d > best.distSq)
            {
                best.i = i;
                best.j = j;
                best.distSq = d;
            }
        }
    }
    return best;
}
}
