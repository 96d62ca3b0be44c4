#include "math/FarthestPair.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace math
{
namespace
{
PointPair FindPlainly(const std::vector<Vec2>& points)
{
    PointPair best;
    for (size_t i = 0; i < points.size(); ++i)
        for (size_t j = i + 1; j < points.size(); ++j)
        {
            const float d = DistanceSq(points[i], points[j]);
            if (d > best.distSq)
            {
                best.i = i;
                best.j = j;
                best.distSq = d;
            }
        }
    return best;
}
}

TEST(FarthestPair, IsTheFirstOfTheLargest)
{
    // A square: both diagonals are equal.
    const Vec2 square[] = {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)};
    const PointPair pair = FindFarthestPair(square, 4);
    EXPECT_EQ(0u, pair.i);
    EXPECT_EQ(2u, pair.j);
    EXPECT_EQ(8, pair.distSq);
}

TEST(FarthestPair, OfPointsThatAreNotNumbersIsNone)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Vec2 points[] = {Vec2(nan, 0), Vec2(nan, nan), Vec2(0, nan)};
    EXPECT_EQ(-1, FindFarthestPair(points, 3).distSq);
}

TEST(FarthestPair, AgreesWithThePlainSearch)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float strange[] = {0, 1e-30f, 1e15f, 1e30f, inf, -inf, inf - inf};
    test::Dice dice;
    for (int round = 0; round < 20000; ++round)
    {
        std::vector<Vec2> points(dice.Int(2, 30));
        for (Vec2& p : points)
            for (int k = 0; k < 2; ++k)
            {
                // A grid, where many pairs are equal; or anything; or strange numbers among it.
                if (round % 3 == 0)
                    p[k] = static_cast<float>(dice.Int(0, 5));
                else if (round % 3 == 1 || !dice.OneIn(5))
                    p[k] = dice.Uniform(-10, 10);
                else
                    p[k] = strange[dice.Int(0, 7)];
            }
        const PointPair expected = FindPlainly(points);
        const PointPair actual = FindFarthestPair(points.data(), points.size());
        ASSERT_EQ(expected.i, actual.i) << "round " << round;
        ASSERT_EQ(expected.j, actual.j) << "round " << round;
        ASSERT_EQ(expected.distSq, actual.distSq) << "round " << round;
    }
}
}
