#include "app/entities/CircleDrawing.h"

#include "math/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>

namespace app
{
using math::Vec2;

TEST(CircleDrawing, SmoothIsARampAroundZero)
{
    const struct
    {
        float w, x, expected;
    } cases[] = {{2, -5, 0},       {2, -1, 0}, {2, -0.5f, 0.25f}, {2, 0, 0.5f},
                 {2, 0.5f, 0.75f}, {2, 1, 1},  {2, 5, 1},         {0.1f, 0.025f, 0.75f}};
    for (const auto& c : cases)
        EXPECT_FLOAT_EQ(c.expected, Smooth(c.w, c.x)) << c.w << ", " << c.x;
}

TEST(CircleDrawing, VectorsGoClockwiseAllAroundAndEndWhereTheyBegin)
{
    for (const int n : {4, 128})
    {
        const math::Vec2List vecs = CalcVecs(n);
        ASSERT_EQ(size_t(n) + 1, vecs.size());
        EXPECT_EQ(Vec2(1, 0), vecs.front());
        EXPECT_EQ(Vec2(1, 0), vecs.back());
        for (int i = 0; i < n; ++i)
        {
            const float angle = -2 * math::PIf * float(i) / float(n);
            EXPECT_NEAR(std::cos(angle), vecs[i].x, 1e-6f) << i;
            EXPECT_NEAR(std::sin(angle), vecs[i].y, 1e-6f) << i;
        }
    }
}

TEST(CircleDrawing, TheImageIsACircleInASquareOneFifthLarger)
{
    const rendering::ImageFloatPtr image = MakeCircleImage(false);
    ASSERT_EQ(1024u, image->GetWidth());
    ASSERT_EQ(1024u, image->GetHeight());
    const float radius = 512 / 1.2f; // in pixels
    EXPECT_EQ(1, (*image)(512, 512));
    EXPECT_EQ(0, (*image)(0, 0));
    EXPECT_EQ(1, (*image)(unsigned(512 + radius - 2), 512));
    EXPECT_EQ(0, (*image)(unsigned(512 + radius + 2), 512));
    EXPECT_EQ(1, (*image)(512, unsigned(512 - radius + 2)));
    EXPECT_EQ(0, (*image)(512, unsigned(512 - radius - 2)));
    // Smooth over a pixel.
    double sum = 0;
    for (unsigned y = 0; y < 1024; ++y)
        for (unsigned x = 0; x < 1024; ++x)
            sum += (*image)(x, y);
    EXPECT_NEAR(double(math::PIf) * radius * radius, sum, 50);
}

TEST(CircleDrawing, WithCakeAWedgeOfAnEighthOfPiIsOpenAroundTheXAxis)
{
    const rendering::ImageFloatPtr whole = MakeCircleImage(false), cake = MakeCircleImage(true);
    const auto at = [&cake](float angle) {
        return (*cake)(unsigned(512 + 300 * std::cos(angle)),
                       unsigned(512 + 300 * std::sin(angle)));
    };
    const float edge = 0.0625f * math::PIf, pixel = 1.0f / 300;
    for (const float angle : {0.0f, edge - 2 * pixel, -edge + 2 * pixel})
        EXPECT_EQ(0, at(angle)) << angle;
    for (const float angle : {edge + 2 * pixel, -edge - 2 * pixel, 1.5f, 3.1f, -3.1f})
        EXPECT_EQ(1, at(angle)) << angle;
    double open = 0;
    for (unsigned y = 0; y < 1024; ++y)
        for (unsigned x = 0; x < 1024; ++x)
            open += (*whole)(x, y) - (*cake)(x, y);
    const double radius = 512 / 1.2;
    EXPECT_NEAR(0.0625 * double(math::PIf) * radius * radius, open, 50);
}
}
