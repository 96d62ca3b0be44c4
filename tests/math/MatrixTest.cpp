#include "math/Matrix.h"

#include "WhatOf.h"
#include "util/Failures.h"

#include <gtest/gtest.h>

using namespace math;

namespace
{
void ExpectNear(const Vec2& expected, const Vec2& actual)
{
    EXPECT_NEAR(expected.x, actual.x, 1e-5f);
    EXPECT_NEAR(expected.y, actual.y, 1e-5f);
}

template<typename F>
std::string AssertionOf(const F& f)
{
    return test::WhatOf<BadCoderException>(f);
}
}

TEST(Mat2D, StartsAsIdentity)
{
    const Mat2D m;
    EXPECT_EQ(Mat2D(1, 0, 0, 0), m);
    EXPECT_EQ(Vec2(3, 4), TransformCoordinate(m, Vec2(3, 4)));
}

TEST(Mat2D, TurnsThenShifts)
{
    const Mat2D m = Mat2D::TranslationRotation(Vec2(10, 20), PIf / 2);
    ExpectNear(Vec2(8, 21), TransformCoordinate(m, Vec2(1, 2)));
    ExpectNear(Vec2(-2, 1), TransformNormal(m, Vec2(1, 2)));
    EXPECT_EQ(Mat2D::Translation(Vec2(10, 20)) * Mat2D::Rotation(PIf / 2), m);
    EXPECT_EQ(Vec2(10, 20), m.GetTranslation());
    EXPECT_FLOAT_EQ(PIf / 2, m.GetAngle());
}

TEST(Mat2D, TransformsByTheFormula)
{
    // c x - s y + tx, s x + c y + ty: a rotation is not asked for.
    EXPECT_EQ(Vec2(2 * 5 - 3 * 7 + 11, 3 * 5 + 2 * 7 + 13),
              TransformCoordinate(Mat2D(2, 3, 11, 13), Vec2(5, 7)));
    EXPECT_EQ(Vec2(2 * 5 - 3 * 7, 3 * 5 + 2 * 7), TransformNormal(Mat2D(2, 3, 11, 13), Vec2(5, 7)));
}

TEST(Mat2D, MultipliesAndInverts)
{
    const Mat2D a = Mat2D::TranslationRotation(Vec2(1, 2), 0.3f);
    const Mat2D b = Mat2D::TranslationRotation(Vec2(-4, 5), 1.1f);
    const Vec2 p(7, -3);
    ExpectNear(TransformCoordinate(a, TransformCoordinate(b, p)), TransformCoordinate(a * b, p));
    ExpectNear(p, TransformCoordinate(Inverted(a), TransformCoordinate(a, p)));
    ExpectNear(p, TransformCoordinate(a * Inverted(a), p));
}

TEST(Mat2D, TakesATranslation)
{
    Mat2D m = Mat2D::Rotation(0.5f);
    const float angle = m.GetAngle();
    m.SetTranslation(Vec2(8, 9));
    EXPECT_EQ(Vec2(8, 9), m.GetTranslation());
    EXPECT_EQ(angle, m.GetAngle());
}

TEST(Matrix2, InvertsAndAssertsThatItCan)
{
    const TMatrix2<float> m(2, 1, 4, 3);
    const Vec2 v(5, -6);
    ExpectNear(v, Inverted(m) * (m * v));
    EXPECT_EQ(Vec2(4, 4), m * Vec2(4, -4));
    EXPECT_EQ(0u, AssertionOf([] { Inverted(TMatrix2<float>(1, 2, 2, 4)); })
                      .find("Code assertion failed: \"det != 0\" in function "));
}

TEST(Matrix3, TransformsHomogeneously)
{
    // The third component is divided out.
    const Mat3 m(2, 0, 4, 0, 2, 6, 0, 0, 2);
    EXPECT_EQ(Vec2(3, 4), TransformCoordinate(m, Vec2(1, 1)));
    EXPECT_EQ(Vec2(1, 1), TransformDirection(m, Vec2(1, 1)));
    EXPECT_EQ(Vec2(4, 6), TransformCoordinate(Mat3::Translation2D(Vec2(3, 5)), Vec2(1, 1)));
}

TEST(Matrix3, TransformsNormalsByTheInverseTranspose)
{
    // Squeezed to half the width, a slope's normal turns towards x.
    const Mat3 m = Mat3::Scale2D(Vec2(0.5f, 1));
    ExpectNear(Vec2(2, 1), TransformNormal2D(m, Vec2(1, 1)));
    const Mat3 sheared(1, 2, 9, 0, 1, 9, 0, 0, 1);
    const Vec2 tangent = TransformDirection(sheared, Vec2(0.6f, 0.8f));
    EXPECT_NEAR(0, Dot(tangent, TransformNormal2D(sheared, Vec2(-0.8f, 0.6f))), 1e-5f);
    // (n.x m11 - n.y m10, n.y m00 - n.x m01) / det
    ExpectNear(Vec2((1 * 5 - 2 * 4) / -2.0f, (2 * 2 - 1 * 3) / -2.0f),
               TransformNormal2D(Mat3(2, 3, 0, 4, 5, 0, 0, 0, 1), Vec2(1, 2)));
}

TEST(Matrix3, InvertsByItsAdjugate)
{
    const Mat3 m(2, 1, 3, 0, 4, 5, 1, 0, 6);
    const Mat3 i = m * Inverted(m);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(row == column, i[row][column], 1e-5f);
    EXPECT_FLOAT_EQ(41, m.Determinant());
    const Mat3 adjugate = m.Adj();
    EXPECT_FLOAT_EQ(24, adjugate[0][0]);
    EXPECT_FLOAT_EQ(-6, adjugate[0][1]);
    EXPECT_FLOAT_EQ(5, adjugate[1][0]);
    EXPECT_EQ(0u, AssertionOf([] { Inverted(Mat3(1, 2, 3, 2, 4, 6, 0, 0, 1)); })
                      .find("Code assertion failed: \"det != 0\" in function "));
}

TEST(Matrix3, HasColumnsAndATranspose)
{
    Mat3 m(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(Vec2(2, 5), m.GetColumn2(1));
    m.SetColumn2(2, Vec2(-1, -2));
    EXPECT_EQ(-1, m[0][2]);
    EXPECT_EQ(-2, m[1][2]);
    EXPECT_EQ(9, m[2][2]);
    EXPECT_EQ(4, m.Transpose()[0][1]);
    EXPECT_EQ(8, m.Transpose()[1][2]);
}

TEST(Matrix3, HoldsARigidTransform)
{
    const Mat2D rigid = Mat2D::TranslationRotation(Vec2(3, -2), 0.7f);
    ExpectNear(TransformCoordinate(rigid, Vec2(5, 6)),
               TransformCoordinate(Mat3(rigid), Vec2(5, 6)));
}

TEST(Matrix4, HoldsAPlanarTransform)
{
    const Mat4 m = Mat4FromMat2D(Mat3(1, 2, 3, 4, 5, 6, 7, 8, 9));
    const float expected[4][4] = {{1, 2, 0, 3}, {4, 5, 0, 6}, {0, 0, 1, 0}, {7, 8, 0, 9}};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(expected[row][column], m.m[row][column]) << row << ", " << column;
}

TEST(Matrix4, Multiplies)
{
    const Mat4 a = Mat4FromMat2D(Mat3::Translation2D(Vec2(1, 2)));
    const Mat4 b = Mat4FromMat2D(Mat3::Translation2D(Vec2(10, 20)));
    const Mat4 ab = a * b;
    EXPECT_EQ(11, ab.m[0][3]);
    EXPECT_EQ(22, ab.m[1][3]);
    EXPECT_EQ(1, ab.m[2][2]);
}
