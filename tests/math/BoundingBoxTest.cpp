#include "math/BoundingBox.h"

#include <gtest/gtest.h>

using math::BoundingBox;
using math::Vec2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();
const BoundingBox Box(Vec2(1, 2), Vec2(5, 4));
}

TEST(BoundingBox, StartsEmpty)
{
    BoundingBox box;
    EXPECT_EQ(Vec2(Infinity, Infinity), box.GetMin());
    EXPECT_EQ(Vec2(-Infinity, -Infinity), box.GetMax());
    EXPECT_EQ(BoundingBox::Empty(), box);
    for (const Vec2& p : {Vec2(0, 0), Vec2(1e30f, -1e30f)})
        EXPECT_FALSE(box.Contains(p));
    EXPECT_FALSE(box.IsFinite());
}

TEST(BoundingBox, IncludesAPointIntoTheEmptyBoxAsThatPoint)
{
    BoundingBox box;
    box.Include(Vec2(3, -4));
    EXPECT_EQ(Vec2(3, -4), box.GetMin());
    EXPECT_EQ(Vec2(3, -4), box.GetMax());
    EXPECT_TRUE(box.Contains(Vec2(3, -4)));
    EXPECT_TRUE(box.IsFinite());
}

TEST(BoundingBox, OrdersItsTwoPointsPerAxis)
{
    const BoundingBox box(Vec2(5, 2), Vec2(1, 4));
    EXPECT_EQ(Vec2(1, 2), box.GetMin());
    EXPECT_EQ(Vec2(5, 4), box.GetMax());
    EXPECT_EQ(Box, box);
}

TEST(BoundingBox, Measures)
{
    EXPECT_EQ(Vec2(3, 3), Box.GetCenter());
    EXPECT_EQ(Vec2(4, 2), Box.GetSize());
    EXPECT_EQ(8, Box.GetArea());
    EXPECT_FLOAT_EQ(2 * 0.6f + 1 * 0.8f, Box.ProjectedRadius(Vec2(0.6f, -0.8f)));
}

TEST(BoundingBox, NumbersItsCornersByBits)
{
    const auto corners = Box.GetCorners();
    EXPECT_EQ(Vec2(1, 2), corners[0]);
    EXPECT_EQ(Vec2(5, 2), corners[1]);
    EXPECT_EQ(Vec2(1, 4), corners[2]);
    EXPECT_EQ(Vec2(5, 4), corners[3]);
}

TEST(BoundingBox, ContainsItsBorder)
{
    for (const Vec2& corner : Box.GetCorners())
        EXPECT_TRUE(Box.Contains(corner));
    EXPECT_FALSE(Box.Contains(Vec2(5.0001f, 3)));
    EXPECT_FALSE(Box.Contains(Vec2(3, 1.9999f)));
    EXPECT_TRUE(Box.Contains(Box));
    EXPECT_FALSE(Box.Contains(BoundingBox(Vec2(1, 2), Vec2(5, 4.001f))));
    EXPECT_TRUE(BoundingBox::Everything().Contains(Box));
    EXPECT_TRUE(BoundingBox::Everything().Contains(Vec2(1e38f, -1e38f)));
}

TEST(BoundingBox, GrowsByPointsAndBoxes)
{
    BoundingBox box = Box;
    box.Include(Vec2(3, 9));
    EXPECT_EQ(BoundingBox(Vec2(1, 2), Vec2(5, 9)), box);
    box.Include(BoundingBox(Vec2(-1, 3), Vec2(0, 4)));
    EXPECT_EQ(BoundingBox(Vec2(-1, 2), Vec2(5, 9)), box);
    box.Include(BoundingBox());
    EXPECT_EQ(BoundingBox(Vec2(-1, 2), Vec2(5, 9)), box);
    box.Grow(1);
    EXPECT_EQ(BoundingBox(Vec2(-2, 1), Vec2(6, 10)), box);
}

TEST(BoundingBox, MeasuresTheDistanceToItsNearestPoint)
{
    EXPECT_EQ(3, Box.Distance(Vec2(8, 3)));
    EXPECT_EQ(2, Box.Distance(Vec2(3, 0)));
    EXPECT_EQ(5, Box.Distance(Vec2(-2, -2)));
    EXPECT_EQ(5, Box.Distance(Vec2(8, 8)));
    // Inside: minus the smallest distance to a side.
    EXPECT_EQ(-1, Box.Distance(Vec2(3, 3)));
    EXPECT_EQ(-0.5f, Box.Distance(Vec2(1.5f, 3)));
    EXPECT_EQ(-0.25f, Box.Distance(Vec2(4, 3.75f)));
    EXPECT_EQ(0, Box.Distance(Vec2(5, 3)));
}

TEST(BoundingBox, IntersectsWhatItTouches)
{
    EXPECT_TRUE(Intersects(Box, BoundingBox(Vec2(5, 4), Vec2(9, 9)))) << "a shared corner";
    EXPECT_TRUE(Intersects(Box, BoundingBox(Vec2(1, 4), Vec2(5, 6)))) << "a shared edge";
    EXPECT_TRUE(Intersects(BoundingBox(Vec2(5, 4), Vec2(9, 9)), Box));
    EXPECT_TRUE(Intersects(BoundingBox(Vec2(1, 4), Vec2(5, 6)), Box));
    EXPECT_FALSE(Intersects(Box, BoundingBox(Vec2(5.001f, 2), Vec2(6, 4))));
    EXPECT_FALSE(Intersects(BoundingBox(Vec2(5.001f, 2), Vec2(6, 4)), Box));
    EXPECT_FALSE(Intersects(Box, BoundingBox(Vec2(1, -4), Vec2(5, 1.999f))));
    EXPECT_TRUE(Intersects(Box, BoundingBox::Everything()));
    EXPECT_FALSE(Intersects(Box, BoundingBox::Empty()));
}

TEST(BoundingBox, IsFiniteInAllFourBounds)
{
    EXPECT_TRUE(Box.IsFinite());
    EXPECT_FALSE(BoundingBox(Vec2(1, 2), Vec2(5, Infinity)).IsFinite());
    EXPECT_FALSE(BoundingBox(Vec2(-Infinity, 2), Vec2(5, 3)).IsFinite());
    EXPECT_FALSE(BoundingBox::Everything().IsFinite());
}

TEST(TestBBCircle, IsTheBoxGrownByTheRadius)
{
    EXPECT_TRUE(TestBBCircle(Box, Vec2(7, 3), 2));
    EXPECT_FALSE(TestBBCircle(Box, Vec2(7.01f, 3), 2));
    EXPECT_TRUE(TestBBCircle(Box, Vec2(6.9f, 5.9f), 2)) << "the grown box has its corners";
}
