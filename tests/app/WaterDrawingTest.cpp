#include "app/FrameTexture.h"
#include "app/WaterDrawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using math::Vec2;
using math::Vec2i;

namespace app
{
namespace
{
const float Inf = std::numeric_limits<float>::infinity();

/// The value of the field, 1 at the distance 1 and 0 at 4, where the image spans -4 to 4.
double FieldAt(unsigned x, unsigned y)
{
    const double nx = x / 63.0 * 8 - 4, ny = y / 63.0 * 8 - 4;
    return (1 / (nx * nx + ny * ny) - 0.0625) / 0.9375;
}

TEST(MetaColor, IsNothingAtTheBorder)
{
    const rendering::PixelRGBA32 nothing(0, 0, 0, 0);
    for (unsigned i = 0; i < 64; ++i)
    {
        // A factor that would leave green there: the field is below 0 in the corners.
        EXPECT_EQ(nothing, MetaColor(i, 0, 64, 1000)) << i;
        EXPECT_EQ(nothing, MetaColor(i, 63, 64, 1000)) << i;
        EXPECT_EQ(nothing, MetaColor(0, i, 64, 1000)) << i;
        EXPECT_EQ(nothing, MetaColor(63, i, 64, 1000)) << i;
    }
}

TEST(MetaColor, IsFullNearTheCenterAndFallsToTheRim)
{
    EXPECT_EQ(255, MetaColor(31, 31, 64, 10).x);
    EXPECT_EQ(255, MetaColor(39, 31, 64, 10).x) << "0.95 from the centre";
    for (unsigned x : {41u, 45u, 50u, 58u, 62u})
    {
        const rendering::PixelRGBA32 c = MetaColor(x, 31, 64, 10);
        EXPECT_EQ(int(std::floor(FieldAt(x, 31) * 255 + 0.5)), c.x) << x;
        EXPECT_EQ(c.x, c.z) << x;
        EXPECT_EQ(c.x, c.w) << x;
        EXPECT_EQ(int(std::floor(FieldAt(x, 31) * 10 + 0.5)), c.y) << x;
    }
    EXPECT_EQ(0, MetaColor(1, 1, 64, 10).x) << "beyond the rim";
}

// Kept: who clamps it takes the shading of the water away.
TEST(MetaColor, HasAGreenThatWrapsAroundInTheMiddle)
{
    const double v = FieldAt(31, 31);
    ASSERT_GT(v * 10, 1024);
    EXPECT_EQ(int(std::floor(v * 10 + 0.5)) % 256, MetaColor(31, 31, 64, 10).y);
    EXPECT_NE(255, MetaColor(31, 31, 64, 10).y);
    EXPECT_EQ(255, MetaColor(1, 1, 64, 40).y) << "and below 0, in the corners";
}

TEST(MetaColor, TakesAnyFactor)
{
    for (float factor : {Inf, -Inf, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(0, MetaColor(31, 31, 64, factor).y) << factor;
    EXPECT_EQ(255, MetaColor(31, 31, 64, 3e37f).x);
}

TEST(CalcElongation, IsRoundAtRestAndLimitedForTheFast)
{
    EXPECT_EQ(1, CalcElongation(0, 0.05f, 2));
    EXPECT_FLOAT_EQ(1.5f, CalcElongation(10, 0.05f, 2));
    EXPECT_EQ(2, CalcElongation(1000, 0.05f, 2));
    EXPECT_EQ(3, CalcElongation(1000, 0.05f, 3));
    EXPECT_EQ(1, CalcElongation(10, -0.05f, 2)) << "never below 1";
}

TEST(CalcElongation, HasItsLimitsSwappedForAMaximumBelowOne)
{
    EXPECT_EQ(1, CalcElongation(0, 0.05f, 0.5f));
    EXPECT_EQ(1, CalcElongation(1000, 0.05f, 0.5f));
    EXPECT_FLOAT_EQ(0.75f, CalcElongation(5, -0.05f, 0.5f));
    EXPECT_EQ(0.5f, CalcElongation(1000, -0.05f, 0.5f));
}

// Kept: who takes the root draws other drops at the edge of the view.
TEST(CalcBlobMargin, IsTheSquareOfALength)
{
    EXPECT_FLOAT_EQ(0.16f, CalcBlobMargin(0.4f, 2));
    EXPECT_FLOAT_EQ(64, CalcBlobMargin(8, 2));
    EXPECT_FLOAT_EQ(0.04f, CalcBlobMargin(0.4f, 1));
}

TEST(FrameTexture, CoversAWindowThatItIsLargeEnoughFor)
{
    const auto c = FrameTexture::CalcCoverage(Vec2(1024, 768), Vec2i(1024, 768), Vec2i(2048, 2048));
    EXPECT_EQ(Vec2i(1024, 768), c.pixels);
    EXPECT_EQ(Vec2(0, 0), c.pos);
    EXPECT_EQ(Vec2(1024, 768), c.size);
    EXPECT_EQ(Vec2(0.5f, 0.375f), c.texSize);
}

TEST(FrameTexture, CoversTheLowerLeftOfALargerWindow)
{
    // Two pixels to a GUI unit.
    const auto c =
        FrameTexture::CalcCoverage(Vec2(1600, 1500), Vec2i(3200, 3000), Vec2i(2048, 2048));
    EXPECT_EQ(Vec2i(2048, 2048), c.pixels);
    EXPECT_EQ(Vec2(1024, 1024), c.size);
    EXPECT_EQ(Vec2(0, 476), c.pos);
    EXPECT_EQ(Vec2(1, 1), c.texSize);
    const auto wide =
        FrameTexture::CalcCoverage(Vec2(2500, 500), Vec2i(2500, 500), Vec2i(2048, 2048));
    EXPECT_EQ(Vec2i(2048, 500), wide.pixels);
    EXPECT_EQ(Vec2(0, 0), wide.pos);
    EXPECT_EQ(Vec2(2048, 500), wide.size);
}
}
}
