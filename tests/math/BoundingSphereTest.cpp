#include "math/BoundingSphere.h"

#include <gtest/gtest.h>

using math::BoundingCircle;
using math::Vec2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();
}

TEST(BoundingCircle, IsEmptyOrEverythingByItsRadius)
{
    EXPECT_EQ(Vec2(0, 0), BoundingCircle::Empty().center);
    EXPECT_EQ(-Infinity, BoundingCircle::Empty().radius);
    EXPECT_EQ(-Infinity, BoundingCircle().radius);
    EXPECT_EQ(Infinity, BoundingCircle::Everything().radius);
}

TEST(BoundingCircle, ReachesTheFarthestPointFromItsCenter)
{
    const Vec2 points[] = {Vec2(1, 0), Vec2(0, 3), Vec2(-2, 0)};
    const BoundingCircle circle = BoundingCircle::BuildFromCenterAndPoints(Vec2(0, 0), 3, points);
    EXPECT_EQ(3, circle.radius);
    EXPECT_EQ(Vec2(0, 0), circle.center);
    EXPECT_EQ(0, BoundingCircle::BuildFromCenterAndPoints(Vec2(1, 1), 0, nullptr).radius);
}

TEST(BoundingCircle, OfFewPointsIsSpecial)
{
    EXPECT_EQ(-1, BoundingCircle::BuildBest(0, nullptr).radius);
    const Vec2 points[] = {Vec2(2, 3), Vec2(8, 11)};
    EXPECT_EQ(0, BoundingCircle::BuildBest(1, points).radius);
    EXPECT_EQ(Vec2(2, 3), BoundingCircle::BuildBest(1, points).center);
    EXPECT_EQ(5, BoundingCircle::BuildBest(2, points).radius);
    EXPECT_EQ(Vec2(5, 7), BoundingCircle::BuildBest(2, points).center);
}

TEST(BoundingCircle, StandsOverTheFarthestPairAndCoversAllPoints)
{
    // The third point lies outside the circle over the pair.
    const Vec2 points[] = {Vec2(-5, 0), Vec2(5, 0), Vec2(0, 6)};
    const BoundingCircle circle = BoundingCircle::BuildBest(3, points);
    EXPECT_EQ(Vec2(0, 0), circle.center);
    EXPECT_EQ(6, circle.radius);
}

TEST(BoundingCircle, TakesTheFirstOfEqualPairs)
{
    // Both diagonals of the square are as long: 0-2 comes before 1-3.
    const Vec2 points[] = {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)};
    EXPECT_EQ(Vec2(1, 1), BoundingCircle::BuildBest(4, points).center);
    const Vec2 corners[] = {Vec2(0, 0), Vec2(4, 0), Vec2(0, 4), Vec2(0, 0)};
    // 1-2 is the longest; of an equilateral kind of tie the earlier one stays.
    EXPECT_EQ(Vec2(2, 2), BoundingCircle::BuildBest(4, corners).center);
    const Vec2 tie[] = {Vec2(0, 0), Vec2(2, 0), Vec2(-2, 0), Vec2(0, 4), Vec2(4, 0)};
    EXPECT_EQ(Vec2(1, 0), BoundingCircle::BuildBest(5, tie).center);
}

TEST(BoundingCircle, MovesWithATransform)
{
    const math::Mat2D m = math::Mat2D::TranslationRotation(Vec2(1, 2), math::PIf);
    const BoundingCircle circle = BoundingCircle(Vec2(3, 0), 7).Transform(m);
    EXPECT_NEAR(-2, circle.center.x, 1e-5f);
    EXPECT_NEAR(2, circle.center.y, 1e-5f);
    EXPECT_EQ(7, circle.radius);
}

TEST(BoundingCircle, DoesNotIntersectWhatItTouches)
{
    const BoundingCircle a(Vec2(0, 0), 2);
    EXPECT_FALSE(Intersects(a, BoundingCircle(Vec2(5, 0), 3)));
    EXPECT_TRUE(Intersects(a, BoundingCircle(Vec2(4.999f, 0), 3)));
    EXPECT_TRUE(Intersects(a, BoundingCircle::Everything()));
}
