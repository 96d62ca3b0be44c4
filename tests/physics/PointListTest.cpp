#include "physics/PointList.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace physics
{
using math::Vec2;

namespace
{
const float inf = std::numeric_limits<float>::infinity();
const float nan = std::numeric_limits<float>::quiet_NaN();
}

TEST(PointList, VisitsWhatLiesInABoxInRisingOrder)
{
    test::Dice dice;
    PointList list;
    size_t hits = 0;
    for (int round = 0; round < 300; ++round)
    {
        SCOPED_TRACE(round);
        const float odd[] = {nan, inf, -inf, 0, -0.0f, 3e38f, 1e-45f, 5};
        list.Clear();
        std::vector<Vec2> all;
        const int n = dice.OneIn(5) ? dice.Int(500, 3000) : dice.Int(0, 100);
        const float spread = dice.OneIn(3) ? 1 : 10;
        const Vec2 offset = dice.OneIn(3) ? Vec2(1e6f, -1e6f) : Vec2();
        for (int i = 0; i < n; ++i)
        {
            Vec2 p = offset + spread * Vec2(dice.Uniform(-1, 1), dice.Uniform(-1, 1));
            if (dice.OneIn(100))
                p = Vec2(odd[dice.Int(0, 8)], odd[dice.Int(0, 8)]);
            all.push_back(p);
            list.Append(p);
        }
        list.Finish();
        ASSERT_EQ(all.size(), list.size());
        if (dice.OneIn(2))
            list.BuildGrid(dice.OneIn(10) ? odd[dice.Int(0, 8)]
                                          : spread * std::pow(2.0f, dice.Uniform(-6, 2)));
        for (int k = 0; k < 30; ++k)
        {
            const Vec2 min = offset + spread * Vec2(dice.Uniform(-1, 1), dice.Uniform(-1, 1));
            Bounds b{min, min + spread * dice.Uniform(0, 0.5f) * Vec2(1, dice.Uniform(0, 1))};
            if (n > 0 && dice.OneIn(5)) // a corner on a point
                b.min = all[dice.Int(0, n)];
            if (dice.OneIn(20))
                b = Bounds::Everything();
            std::vector<size_t> expected, visited;
            for (size_t i = 0; i < all.size(); ++i)
                if (all[i].x >= b.min.x && all[i].x <= b.max.x && all[i].y >= b.min.y &&
                    all[i].y <= b.max.y)
                    expected.push_back(i);
            list.ForEachIn(b, [&](size_t i) { visited.push_back(i); });
            ASSERT_EQ(expected, visited);
            hits += visited.size();
        }
    }
    EXPECT_GT(hits, 50000u);
}

TEST(PointList, VisitsWhatIsNearToAPlaneAsThePlaneTells)
{
    test::Dice dice;
    PointList list;
    for (int round = 0; round < 300; ++round)
    {
        list.Clear();
        const math::Plane2D plane(Vec2(dice.Uniform(-1, 1), dice.Uniform(-1, 1)),
                                  dice.OneIn(10) ? nan : dice.Uniform(-1, 1));
        const float distance = dice.OneIn(10) ? nan : dice.Uniform(-0.1f, 0.3f);
        std::vector<size_t> expected, visited;
        const int n = dice.Int(0, 50);
        for (int i = 0; i < n; ++i)
        {
            const Vec2 p(dice.OneIn(30) ? inf : dice.Uniform(-2, 2), dice.Uniform(-2, 2));
            list.Append(p);
            if (plane.Distance(p) < distance)
                expected.push_back(i);
        }
        list.Finish();
        list.ForEachNearerThan(distance, plane, [&](size_t i) { visited.push_back(i); });
        EXPECT_EQ(expected, visited) << "round " << round;
    }
}

TEST(PointList, BoundsItsPointsButForWhatIsNoNumber)
{
    PointList list;
    list.Finish();
    EXPECT_TRUE(list.empty());
    list.Clear();
    for (const Vec2& p : {Vec2(1, 2), Vec2(nan, 7), Vec2(-3, nan), Vec2(0, 4), Vec2(1, 3)})
        list.Append(p);
    list.Finish();
    EXPECT_EQ(math::BoundingBox(Vec2(-3, 2), Vec2(1, 7)), list.CalcBounds());
    list.Clear();
    for (int i = 0; i < 5; ++i)
        list.Append(Vec2(5, 6));
    list.Append(Vec2(inf, 6));
    list.Finish();
    EXPECT_EQ(Vec2(inf, 6), list.CalcBounds().GetMax());
    EXPECT_EQ(Vec2(5, 6), list.CalcBounds().GetMin());
}
}
