#include "physics/BoundsList.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <cfloat>
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

class BoundsListTest : public testing::Test
{
protected:
    void Add(const Bounds& b)
    {
        all.push_back(b);
        list.Append(b);
    }
    void Add(Vec2 min, Vec2 size) { Add(Bounds{min, min + size}); }

    void ExpectSameAsPlain(const Bounds& query, size_t begin)
    {
        std::vector<size_t> expected, visited;
        for (size_t i = begin; i < all.size(); ++i)
            if (all[i].min.x <= query.max.x && all[i].max.x >= query.min.x &&
                all[i].min.y <= query.max.y && all[i].max.y >= query.min.y)
                expected.push_back(i);
        list.ForEachTouching(query, begin, [&](size_t i) { visited.push_back(i); });
        ASSERT_EQ(expected, visited);
        hits += visited.size();
    }
    /// As the loops over all pairs ask.
    void ExpectAllPairsAsPlain()
    {
        list.Finish();
        for (size_t i = 0; i < all.size(); ++i)
            ASSERT_NO_FATAL_FAILURE(ExpectSameAsPlain(all[i], i + 1));
    }
    void Forget()
    {
        all.clear();
        list.Clear();
    }

    test::Dice dice;
    std::vector<Bounds> all;
    BoundsList list;
    size_t hits = 0;
};
}

TEST_F(BoundsListTest, VisitsWhatTouchesInRisingOrder)
{
    for (int round = 0; round < 600; ++round)
    {
        SCOPED_TRACE(round);
        const int n = dice.OneIn(4) ? dice.Int(300, 2000) : dice.Int(0, 300);
        const float width = n > 300 ? 300 : 100;
        for (int i = 0; i < n; ++i)
        {
            Add(Vec2(dice.Uniform(0, width), dice.Uniform(0, 100)),
                Vec2(dice.Uniform(0, 10), dice.Uniform(0, 10)));
            if (dice.OneIn(n > 300 ? 1000 : 30))
                Add(Bounds::Everything());
        }
        list.Finish();
        for (int k = 0; k < 5; ++k)
        {
            const Vec2 min(dice.Uniform(0, width), dice.Uniform(0, 100));
            const float size = dice.Uniform(0, 1) * dice.Uniform(0, 100);
            const Bounds query =
                dice.OneIn(10) ? Bounds::Everything() : Bounds{min, min + Vec2(size, size)};
            ASSERT_NO_FATAL_FAILURE(
                ExpectSameAsPlain(query, dice.Int(0, static_cast<int>(all.size()) + 1)));
        }
        Forget();
    }
    EXPECT_GT(hits, 50000u);
}

TEST_F(BoundsListTest, FindsTheNeighborsOfManyHoweverTheyLie)
{
    for (int round = 0; round < 60; ++round)
    {
        SCOPED_TRACE(round);
        const int n = dice.Int(64, 400);
        // In a heap, a row or a column, two clusters, far away, along a diagonal.
        const int kind = round % 6;
        const float size = std::pow(10.0f, dice.Uniform(-12, 12));
        for (int i = 0; i < n; ++i)
        {
            const float far = dice.Uniform(0, static_cast<float>(n)), near = dice.Uniform(0, 1);
            Vec2 min(dice.Uniform(0, 20), dice.Uniform(-20, 20));
            if (kind == 1)
                min = Vec2(far, near);
            if (kind == 2)
                min = Vec2(near, far);
            if (kind == 3 && i % 2)
                min += Vec2(1e6f, -1e5f);
            if (kind == 4)
                min += Vec2(-3e7f, 4e7f);
            if (kind == 5)
                min = Vec2(far, -far);
            const float large = dice.OneIn(100) ? 30.0f : 1.0f;
            Add(size * min, size * large * Vec2(dice.Uniform(0.3f, 2), dice.Uniform(0.3f, 2)));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAllPairsAsPlain());
        Forget();
    }
    EXPECT_GT(hits, 20000u);
}

TEST_F(BoundsListTest, FindsTheNeighborsOfManyOfAllSizes)
{
    for (int round = 0; round < 60; ++round)
    {
        SCOPED_TRACE(round);
        const int n = dice.Int(64, 400);
        for (int i = 0; i < n; ++i)
        {
            const float w = std::pow(10.0f, dice.Uniform(-3, 2));
            const float h = round % 2 ? w : std::pow(10.0f, dice.Uniform(-3, 2));
            Add(Vec2(dice.Uniform(0, 100), dice.Uniform(0, 100)), Vec2(w, h));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAllPairsAsPlain());
        Forget();
    }
    EXPECT_GT(hits, 20000u);
}

TEST_F(BoundsListTest, FindsWhatTouchesWithASideOnly)
{
    // Tiles of the size of a cell, so that every side lies on the border of one.
    for (int i = 0; i < 900; ++i)
        Add(Vec2(i % 30 - 15.0f, i / 30 - 15.0f), Vec2(1, 1));
    ASSERT_NO_FATAL_FAILURE(ExpectAllPairsAsPlain());
    EXPECT_EQ(2u * 29 * 30 + 2 * 29 * 29, hits);
}

TEST_F(BoundsListTest, ManyOnOneSpotAllTouchEachOther)
{
    for (int i = 0; i < 300; ++i)
        Add(Vec2(7, 7), Vec2(1, 1));
    ASSERT_NO_FATAL_FAILURE(ExpectAllPairsAsPlain());
    EXPECT_EQ(300u * 299 / 2, hits);
}

TEST_F(BoundsListTest, StartsAfreshWhenCleared)
{
    for (int n : {500, 3, 0, 200, 900})
    {
        for (int i = 0; i < n; ++i)
            Add(Vec2(dice.Uniform(0, 30), dice.Uniform(0, 30)), Vec2(1, 1));
        ASSERT_NO_FATAL_FAILURE(ExpectAllPairsAsPlain());
        Forget();
    }
}

TEST(Bounds, TakesStrangeShapesForEverything)
{
    const auto isEverything = [](const Bounds& b)
    { return b.min == Vec2(-FLT_MAX, -FLT_MAX) && b.max == Vec2(FLT_MAX, FLT_MAX); };
    const Vec2 x(1, 0), y(0, 1);
    EXPECT_FALSE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, y, 1, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(nan, 2), x, y, 1, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, inf), x, y, 1, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, y, nan, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, y, -1, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, y, 1, 1e20f))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, Vec2(nan, 1), 1, 1))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::OBB2D(Vec2(1, 2), x, Vec2(0.1f, 1), 1, 1))));
    EXPECT_FALSE(isEverything(Bounds::Around(math::BoundingCircle(Vec2(1, 2), 3))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::BoundingCircle(Vec2(1, 2), nan))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::BoundingCircle(Vec2(1, 2), inf))));
    EXPECT_TRUE(isEverything(Bounds::Around(math::BoundingCircle(Vec2(1, 2), -3))));
}
}
