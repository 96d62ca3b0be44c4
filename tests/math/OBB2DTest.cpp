#include "math/OBB2D.h"

#include <gtest/gtest.h>

#include <limits>

using math::Mat2D;
using math::OBB2D;
using math::PIf;
using math::Vec2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

void ExpectNear(const Vec2& expected, const Vec2& actual)
{
    EXPECT_NEAR(expected.x, actual.x, 1e-5f);
    EXPECT_NEAR(expected.y, actual.y, 1e-5f);
}

OBB2D Box(float x, float y, float angle, float halfX, float halfY)
{
    return OBB2D::Transform(Mat2D::TranslationRotation(Vec2(x, y), angle),
                            OBB2D(Vec2(), Vec2(1, 0), Vec2(0, 1), halfX, halfY));
}
}

TEST(OBB2D, StartsAsAPointAlongTheAxes)
{
    const OBB2D obb;
    EXPECT_EQ(Vec2(0, 0), obb.GetCenter());
    EXPECT_EQ(Vec2(1, 0), obb.GetAxis(0));
    EXPECT_EQ(Vec2(0, 1), obb.GetAxis(1));
    EXPECT_EQ(Vec2(0, 0), obb.GetHalfSize());
}

TEST(OBB2D, IsMadeOfACenterAndARadius)
{
    const OBB2D obb = OBB2D::FromCenterRad(Vec2(1, 2), 3);
    EXPECT_EQ(Vec2(1, 2), obb.GetCenter());
    EXPECT_EQ(Vec2(3, 3), obb.GetHalfSize());
    EXPECT_EQ(36, obb.Area());
    EXPECT_EQ(-Infinity, OBB2D::Empty().GetHalf(0));
    EXPECT_EQ(Infinity, OBB2D::Everything().GetHalf(1));
    EXPECT_FALSE(OBB2D::Empty().Contains(Vec2(0, 0)));
    EXPECT_TRUE(OBB2D::Everything().Contains(Vec2(1e30f, 0)));
}

TEST(FindMainAxis, IsTheFirstOfTheLongestPairs)
{
    const Vec2 points[] = {Vec2(0, 0), Vec2(3, 4), Vec2(1, 1)};
    ExpectNear(Vec2(0.6f, 0.8f), math::FindMainAxisSimple(points, 3));
    EXPECT_EQ(math::FindMainAxisSimple(points, 3), math::FindMainAxisLinAlg(points, 3));
    // From the earlier point to the later one; both diagonals are as long.
    const Vec2 square[] = {Vec2(2, 2), Vec2(0, 2), Vec2(0, 0), Vec2(2, 0)};
    ExpectNear(Vec2(-std::sqrt(0.5f), -std::sqrt(0.5f)), math::FindMainAxisSimple(square, 4));
}

TEST(FindMainAxis, AssertsTwoPoints)
{
    const Vec2 point;
    for (int i = 0; i < 3; ++i)
        try
        {
            if (i == 0)
                math::FindMainAxisSimple(&point, 1);
            else if (i == 1)
                OBB2D::Build(&point, 1, Vec2(1, 0));
            else
                OBB2D::Build(&point, 1);
            FAIL() << i;
        }
        catch (BadCoderException& e)
        {
            EXPECT_EQ(0u, std::string(e.what()).find(
                              "Code assertion failed: \"nPoints > 1\" in function "));
        }
}

TEST(OBB2D, IsBuiltAlongAnAxis)
{
    const Vec2 points[] = {Vec2(0, 0), Vec2(4, 0), Vec2(1, 2)};
    const OBB2D obb = OBB2D::Build(points, 3, Vec2(0, 1));
    EXPECT_EQ(Vec2(0, 1), obb.GetAxis(0));
    EXPECT_EQ(Vec2(-1, 0), obb.GetAxis(1));
    EXPECT_EQ(Vec2(2, 1), obb.GetCenter());
    EXPECT_EQ(Vec2(1, 2), obb.GetHalfSize());
}

TEST(OBB2D, KeepsTheAreaOfAnAxisAlignedRectangle)
{
    const Vec2 points[] = {Vec2(1, 1), Vec2(7, 1), Vec2(7, 3), Vec2(1, 3)};
    const OBB2D obb = OBB2D::Build(points, 4);
    EXPECT_FLOAT_EQ(12, obb.Area());
    ExpectNear(Vec2(4, 2), obb.GetCenter());
}

TEST(OBB2D, TriesEightTurnsBesidesTheMainAxis)
{
    // A rectangle turned by 36 degrees is met exactly, one turned by 30 only nearly.
    auto areaAt = [](float degrees)
    {
        const Mat2D m = Mat2D::Rotation(degrees * PIf / 180);
        Vec2 points[4];
        int i = 0;
        for (const Vec2& p : {Vec2(3, 1), Vec2(-3, 1), Vec2(-3, -1), Vec2(3, -1)})
            points[i++] = TransformCoordinate(m, p);
        return OBB2D::Build(points, 4).Area();
    };
    EXPECT_NEAR(12, areaAt(36), 1e-3f);
    EXPECT_NEAR(12, areaAt(84), 1e-3f);
    // 96 degrees are past the quarter turn, and are the same box as 6.
    EXPECT_GT(areaAt(6), 12.5f);
    EXPECT_GT(areaAt(30), 12.5f);
}

TEST(OBB2D, ProjectsOnAnAxis)
{
    const OBB2D obb = Box(5, 5, PIf / 2, 3, 1);
    EXPECT_NEAR(1, obb.ProjectedRadius(Vec2(1, 0)), 1e-5f);
    EXPECT_NEAR(3, obb.ProjectedRadius(Vec2(0, 1)), 1e-5f);
}

TEST(OBB2D, IsSeparatedOnlyBeyondTouching)
{
    const OBB2D a = Box(0, 0, 0, 1, 1);
    EXPECT_FALSE(OBB2D::IsSeparatingAxis(a, Box(2, 0, 0, 1, 1), Vec2(1, 0)));
    EXPECT_TRUE(OBB2D::IsSeparatingAxis(a, Box(2.001f, 0, 0, 1, 1), Vec2(1, 0)));
    EXPECT_TRUE(Intersects(a, Box(2, 0, 0, 1, 1)));
    EXPECT_FALSE(Intersects(a, Box(2.001f, 0, 0, 1, 1)));
    // Only an axis of the second box tells these two apart.
    const OBB2D diamond = Box(1.9f, 1.9f, PIf / 4, 1, 1);
    EXPECT_FALSE(OBB2D::IsSeparatingAxis(a, diamond, Vec2(1, 0)));
    EXPECT_FALSE(OBB2D::IsSeparatingAxis(a, diamond, Vec2(0, 1)));
    EXPECT_FALSE(Intersects(a, diamond));
    EXPECT_FALSE(Intersects(diamond, a));
    EXPECT_TRUE(Intersects(a, Box(1.6f, 1.6f, PIf / 4, 1, 1)));
}

TEST(OBB2D, ContainsItsBorder)
{
    const OBB2D obb = Box(1, 1, 0, 2, 1);
    EXPECT_TRUE(obb.Contains(Vec2(3, 2)));
    EXPECT_FALSE(obb.Contains(Vec2(3.001f, 1)));
    EXPECT_FALSE(obb.Contains(Vec2(1, -0.001f)));
    EXPECT_TRUE(Box(0, 0, PIf / 4, 1, 1).Contains(Vec2(1.4f, 0)));
}

TEST(OBB2D, MeasuresDistances)
{
    const OBB2D obb = Box(0, 0, 0, 2, 1);
    EXPECT_EQ(5, obb.Distance(Vec2(5, 5))); // past both: 3 and 4
    EXPECT_EQ(3, obb.Distance(Vec2(5, 0.5f)));
    EXPECT_EQ(4, obb.Distance(Vec2(-1, -5)));
    EXPECT_EQ(-1, obb.Distance(Vec2(0, 0))); // the larger of -2 and -1
    EXPECT_EQ(-0.25f, obb.Distance(Vec2(1.75f, 0)));
    EXPECT_EQ(0, obb.Distance(Vec2(2, 0.5f)));
}

TEST(OBB2D, ListsItsCornersAround)
{
    Vec2 corners[4];
    Box(10, 20, 0, 2, 1).CalcCorners(corners);
    EXPECT_EQ(Vec2(12, 21), corners[0]);
    EXPECT_EQ(Vec2(12, 19), corners[1]);
    EXPECT_EQ(Vec2(8, 19), corners[2]);
    EXPECT_EQ(Vec2(8, 21), corners[3]);
}

TEST(OBB2D, MovesAsAWhole)
{
    const Mat2D m = Mat2D::TranslationRotation(Vec2(10, 0), PIf / 2);
    const OBB2D obb = OBB2D::Transform(m, OBB2D(Vec2(1, 0), Vec2(1, 0), Vec2(0, 1), 3, 2));
    ExpectNear(Vec2(10, 1), obb.GetCenter());
    ExpectNear(Vec2(0, 1), obb.GetAxis(0));
    ExpectNear(Vec2(-1, 0), obb.GetAxis(1));
    EXPECT_EQ(Vec2(3, 2), obb.GetHalfSize());
}

TEST(OBB2D, MapsTheWorldIntoItself)
{
    const OBB2D obb = Box(3, 4, 0.7f, 2, 1);
    Vec2 corners[4];
    obb.CalcCorners(corners);
    const math::Mat3 m = obb.WorldToOBBmatrix();
    ExpectNear(Vec2(2, 1), TransformCoordinate(m, corners[0]));
    ExpectNear(Vec2(-2, -1), TransformCoordinate(m, corners[2]));
    ExpectNear(obb.GetAxis(0), Vec2(obb.RotMat3()[0][0], obb.RotMat3()[0][1]));
    ExpectNear(obb.GetAxis(1), Vec2(obb.RotMat3()[1][0], obb.RotMat3()[1][1]));
}
