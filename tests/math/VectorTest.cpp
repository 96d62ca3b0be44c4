#include "math/Vector.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

using namespace math;

TEST(Vector, NormalizesInPlaceAndReturnsTheFormerLength)
{
    Vec2 v(3, 4);
    EXPECT_EQ(5, v.Normalize());
    EXPECT_FLOAT_EQ(0.6f, v.x);
    EXPECT_FLOAT_EQ(0.8f, v.y);
}

// Deliberate: what is shorter than 1e-7 has no direction.
TEST(Vector, ShorterThanTheToleranceNormalizesToZero)
{
    Vec2 v(1e-8f, 0);
    EXPECT_EQ(0, v.Normalize());
    EXPECT_EQ(Vec2(0, 0), v);
    Vec2 just(0, 2e-7f);
    EXPECT_FLOAT_EQ(2e-7f, just.Normalize());
    EXPECT_EQ(Vec2(0, 1), just);
    EXPECT_EQ(Vec2(0, 0), Normalized(Vec2(0, -9e-8f)));
}

TEST(Vector, DividesByMultiplyingWithTheReciprocal)
{
    // 1/41 is rounded, so that 41 * (1/41) is not 1.
    const float r = 1.0f / 41.0f;
    ASSERT_NE(1.0f, 41.0f * r);
    EXPECT_EQ(Vec2(41.0f * r, 82.0f * r), Vec2(41, 82) / 41.0f);
    Vec2 v(41, 82);
    v /= 41.0f;
    EXPECT_EQ(Vec2(41.0f * r, 82.0f * r), v);
    EXPECT_EQ(41.0f * r, (Vec3(41, 0, 0) / 41.0f).x);
    EXPECT_EQ(41.0f * r, (Vec4(0, 0, 0, 41) / 41.0f).w);
}

TEST(Vector, CrossesAndTurns)
{
    EXPECT_EQ(1, Cross(Vec2(1, 0), Vec2(0, 1)));
    EXPECT_EQ(-2, Cross(Vec2(1, 2), Vec2(3, 4)));
    EXPECT_EQ(Vec2(-6, 4), Cross(2, Vec2(2, 3)));
    EXPECT_EQ(Vec2(-2, 1), Rot90CCW(Vec2(1, 2)));
    EXPECT_EQ(Vec2(2, -1), Rot90CW(Vec2(1, 2)));
    EXPECT_EQ(Vec3(0, 0, 1), Cross(Vec3(1, 0, 0), Vec3(0, 1, 0)));
    EXPECT_EQ(11, Dot(Vec2(1, 2), Vec2(3, 4)));
    EXPECT_EQ(32, Dot(Vec3(1, 2, 3), Vec3(4, 5, 6)));
}

TEST(Vector, WorksByComponent)
{
    EXPECT_EQ(Vec2(3, 8), Vec2::Mul(Vec2(1, 2), Vec2(3, 4)));
    EXPECT_EQ(Vec2(2, 0.5f), Vec2::Div(Vec2(6, 2), Vec2(3, 4)));
    EXPECT_EQ(Vec2(3, 2), Vec2::Max(Vec2(1, 2), Vec2(3, -4)));
    EXPECT_EQ(Vec2i(3, 8), Vec2i::Mul(Vec2i(1, 2), Vec2i(3, 4)));
    EXPECT_EQ(Vec2u(2, 0), Vec2u::Div(Vec2u(6, 2), Vec2u(3, 4)));
    EXPECT_EQ(Vec3(4, 10, 18), Vec3::Mul(Vec3(1, 2, 3), Vec3(4, 5, 6)));
    EXPECT_EQ(Vec3(4, 2, 6), Vec3::Max(Vec3(1, 2, 3), Vec3(4, -5, 6)));
    EXPECT_EQ(Vec3(2, 2, 2), Vec3::Div(Vec3(2, 4, 6), Vec3(1, 2, 3)));
    EXPECT_EQ(Vec4(5, 12, 21, 32), Vec4::Mul(Vec4(1, 2, 3, 4), Vec4(5, 6, 7, 8)));
    EXPECT_EQ(Vec4(2, 2, 2, 2), Vec4::Div(Vec4(2, 4, 6, 8), Vec4(1, 2, 3, 4)));
    EXPECT_EQ(Color4(200, 2, 3, 4), Color4::Max(Color4(1, 2, 3, 4), Color4(200, 1, 1, 1)));
}

TEST(Vector, HasTheOrdinaryOperators)
{
    EXPECT_EQ(Vec2(4, 6), Vec2(1, 2) + Vec2(3, 4));
    EXPECT_EQ(Vec2(-2, -2), Vec2(1, 2) - Vec2(3, 4));
    EXPECT_EQ(Vec2(-1, -2), -Vec2(1, 2));
    EXPECT_EQ(Vec2(2, 4), 2.0f * Vec2(1, 2));
    EXPECT_NE(Vec2(1, 2), Vec2(1, 3));
    Vec2 v(1, 2);
    v += Vec2(1, 1);
    v -= Vec2(0, 5);
    v *= 2;
    EXPECT_EQ(Vec2(4, -4), v);
    v[0] = 9;
    EXPECT_EQ(9, v.x);
    EXPECT_EQ(-4, v[1]);
    EXPECT_EQ(Vec2i(5, 7), Vec2i(2, 3) + Vec2i(3, 4));
    EXPECT_EQ(Vec3(5, 7, 9), Vec3(1, 2, 3) + Vec3(4, 5, 6));
    EXPECT_EQ(3, Vec3(1, 2, 3)[2]);
    EXPECT_EQ(Vec4(1, 2, 3, 4), Vec4(Vec3(1, 2, 3), 4));
    EXPECT_EQ(Vec3(1, 2, 3), Vec4(1, 2, 3, 4).XYZ());
    Vec3 u(1, 2, 3);
    u += Vec3(1, 1, 1);
    u -= Vec3(0, 0, 2);
    u *= 4;
    u /= 2;
    EXPECT_EQ(Vec3(4, 6, 4), u);
    EXPECT_EQ(Vec3(-1, -2, -3), -Vec3(1, 2, 3));
    EXPECT_EQ(Vec3(2, 4, 6), 2.0f * Vec3(1, 2, 3));
    Vec4 w(1, 2, 3, 4);
    w += Vec4(1, 1, 1, 0);
    w -= Vec4(0, 0, 2, 8);
    w *= 4;
    w /= 2;
    EXPECT_EQ(Vec4(4, 6, 4, -8), w);
    EXPECT_EQ(Vec4(-1, -2, -3, -4), -Vec4(1, 2, 3, 4));
    EXPECT_EQ(Vec4(2, 4, 6, 8), 2.0f * Vec4(1, 2, 3, 4));
    EXPECT_EQ(Vec4(0, 1, 2, 3), Vec4(1, 2, 3, 4) - Vec4(1, 1, 1, 1));
    EXPECT_EQ(4, w[0]);
    EXPECT_EQ(-8, w[3]);
    TVector3<int> whole(1, 2, 3);
    whole += TVector3<int>(1, 1, 1);
    whole *= 2;
    EXPECT_EQ(TVector3<int>(4, 6, 8), whole);
    std::ostringstream out;
    out << Vec2(1, 2.5f) << Vec3(1, 2, 3) << Vec4(1, 2, 3, 4);
    EXPECT_EQ("(1, 2.5)(1, 2, 3)(1, 2, 3, 4)", out.str());
}

TEST(Vector, MeasuresInSinglePrecision)
{
    EXPECT_EQ(25, Vec2(3, 4).LengthSq());
    EXPECT_EQ(5, Distance(Vec2(1, 1), Vec2(4, 5)));
    EXPECT_EQ(25, DistanceSq(Vec2(1, 1), Vec2(4, 5)));
    EXPECT_EQ(3, Vec3(1, 2, 2).Length());
    EXPECT_EQ(std::sqrt(2.0f), Vec2(1, 1).Length());
    static_assert(std::is_same<float, decltype(Vec2().Length())>::value, "");
}

TEST(Vector, IsFiniteWhenAllComponentsAre)
{
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(IsFinite(Vec2(1, 2)));
    EXPECT_FALSE(IsFinite(Vec2(1, inf)));
    EXPECT_FALSE(IsFinite(Vec2(std::nanf(""), 1)));
    EXPECT_FALSE(IsFinite(Vec3(1, 2, -inf)));
    EXPECT_TRUE(IsFinite(Vec4(1, 2, 3, 4)));
    EXPECT_FALSE(IsFinite(Vec4(1, 2, 3, std::nanf(""))));
}
