#include "math/Plane.h"

#include <gtest/gtest.h>

using math::Plane;
using math::Plane2D;
using math::Vec2;
using math::Vec3;

TEST(Plane2D, KeepsItsNormalAsItIs)
{
    const Plane2D plane = Plane2D::FromPointNormal(Vec2(1, 2), Vec2(3, 4));
    EXPECT_EQ(Vec2(3, 4), plane.normal);
    EXPECT_EQ(-11, plane.d);
    EXPECT_EQ(0, plane.Distance(Vec2(1, 2)));
    EXPECT_EQ(25, plane.Distance(Vec2(4, 6)));
}

// Deliberate: the factor 1/|n| is applied twice, and d stays.
TEST(Plane2D, NormalizesTwiceAndLeavesD)
{
    Plane2D plane(Vec2(0, 2), 8);
    plane.Normalize();
    EXPECT_EQ(Vec2(0, 0.5f), plane.normal);
    EXPECT_EQ(8, plane.d);

    Plane2D unit(Vec2(0, 1), 8);
    unit.Normalize();
    EXPECT_EQ(Vec2(0, 1), unit.normal);
    EXPECT_EQ(8, unit.d);
}

TEST(Plane, NormalizesNormalAndDTogether)
{
    const Plane plane(Vec3(0, 0, 2), 8);
    EXPECT_EQ(Vec3(0, 0, 1), plane.normal);
    EXPECT_EQ(4, plane.d);
}

TEST(Plane, GoesThroughItsPoints)
{
    const Plane plane = Plane::FromPointNormal(Vec3(1, 2, 3), Vec3(0, 5, 0));
    EXPECT_FLOAT_EQ(1, plane.normal.y);
    EXPECT_FLOAT_EQ(-2, plane.d);

    // (a - b) x (c - b)
    const Plane spanned = Plane::FromPoints(Vec3(1, 0, 5), Vec3(0, 0, 5), Vec3(0, 1, 5));
    EXPECT_EQ(Vec3(0, 0, 1), spanned.normal);
    EXPECT_EQ(-5, spanned.d);
}

TEST(Plane3Intersection, IsThePointOnAllThree)
{
    const Plane a = Plane::FromPointNormal(Vec3(1, 2, 3), Vec3(1, 1, 0));
    const Plane b = Plane::FromPointNormal(Vec3(1, 2, 3), Vec3(0, 1, -2));
    const Plane c = Plane::FromPointNormal(Vec3(1, 2, 3), Vec3(4, 0, 1));
    EXPECT_NEAR(0, (Plane3Intersection(a, b, c) - Vec3(1, 2, 3)).Length(), 1e-5f);
}
