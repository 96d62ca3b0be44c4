#include "math/Scalar.h"

#include "math/Vector.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

using math::PIf;
using math::WrapAngle;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

float FromBits(uint32_t bits)
{
    float x;
    std::memcpy(&x, &bits, sizeof(x));
    return x;
}
}

TEST(IsZero, IsWithinItsTolerance)
{
    EXPECT_TRUE(math::IsZero(0.0f));
    EXPECT_TRUE(math::IsZero(-9.9e-8f));
    EXPECT_FALSE(math::IsZero(1.01e-7f));
    EXPECT_TRUE(math::IsZero(9.9e-12));
    EXPECT_FALSE(math::IsZero(-1.01e-11));
    EXPECT_FALSE(math::IsZero(1e-10)) << "a double is held to its own tolerance";
}

TEST(IsNaN, KnowsEveryPattern)
{
    for (uint32_t bits : {0x7FC00000u, 0x7FA00000u, 0xFFC00000u, 0xFFA00000u, 0x7F800001u,
                          0x7FFFFFFFu, 0xFFFFFFFFu, 0xFF800001u})
        EXPECT_TRUE(math::IsNaN(FromBits(bits))) << std::hex << bits;
    for (uint32_t bits : {0x7F800000u, 0xFF800000u, 0x7F7FFFFFu, 0u, 0x80000000u, 0x3F800000u})
        EXPECT_FALSE(math::IsNaN(FromBits(bits))) << std::hex << bits;
}

TEST(IsNaN, KnowsWhatTheHardwareMakes)
{
    // At run time, so that the processor and not the compiler does it.
    volatile float zero = 0.0f, minusOne = -1.0f, infinity = Infinity;
    EXPECT_TRUE(math::IsNaN(zero / zero));
    EXPECT_TRUE(math::IsNaN(std::sqrt(float(minusOne))));
    EXPECT_TRUE(math::IsNaN(infinity - infinity));
    EXPECT_TRUE(math::IsNaN(infinity * zero));
    EXPECT_TRUE(math::IsNaN(std::fmod(float(infinity), 1.0f)));
    EXPECT_TRUE(math::IsNaN(-(zero / zero)));
}

TEST(IsFinite, RefusesInfinityAndNaN)
{
    EXPECT_TRUE(math::IsFinite(0.0f));
    EXPECT_TRUE(math::IsFinite(FLT_MAX));
    EXPECT_TRUE(math::IsFinite(-FLT_MAX));
    EXPECT_FALSE(math::IsFinite(Infinity));
    EXPECT_FALSE(math::IsFinite(-Infinity));
    EXPECT_FALSE(math::IsFinite(std::nanf("")));
    EXPECT_TRUE(math::IsFinite(1e300));
    EXPECT_FALSE(math::IsFinite(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(math::IsFinite(std::nan("")));
}

TEST(WrapAngle, GivesZeroForWhatIsNotFinite)
{
    EXPECT_EQ(0, WrapAngle(std::nanf("")));
    EXPECT_EQ(0, WrapAngle(Infinity));
    EXPECT_EQ(0, WrapAngle(-Infinity));
}

TEST(WrapAngle, LiesAboveMinusPiAndUpToPi)
{
    EXPECT_EQ(PIf, WrapAngle(-PIf));
    EXPECT_EQ(PIf, WrapAngle(PIf));
    EXPECT_EQ(0.5f, WrapAngle(0.5f));
    EXPECT_NEAR(-PIf / 2, WrapAngle(PIf * 1.5f), 1e-5f);
    EXPECT_NEAR(PIf / 2, WrapAngle(-PIf * 1.5f), 1e-5f);
    EXPECT_NEAR(1, WrapAngle(1 + 10 * PIf), 1e-4f);
    for (float a = -1e6f; a < 1e6f; a += 1234.567f)
    {
        const float w = WrapAngle(a);
        ASSERT_GT(w, -PIf) << a;
        ASSERT_LE(w, PIf) << a;
    }
    EXPECT_LE(std::fabs(WrapAngle(FLT_MAX)), PIf);
}

TEST(WrapAngle, LeavesWhatIsInRangeAsItIs)
{
    for (float a : {0.0f, 1e-30f, -3.14159f, 3.14159f, -1.0f})
        EXPECT_EQ(a, WrapAngle(a));
}

TEST(SmoothFun, RisesToAFlatEnd)
{
    EXPECT_EQ(0, math::SmoothFun(0));
    EXPECT_EQ(1, math::SmoothFun(1));
    EXPECT_FLOAT_EQ(0.5f + 0.25f - 0.125f, math::SmoothFun(0.5f));
    EXPECT_LT(math::SmoothFun(1) - math::SmoothFun(0.999f), 1e-5f);
}

TEST(Scalar, HelpersAreTheUsualOnes)
{
    EXPECT_FLOAT_EQ(3.0f, math::Lerp(2.0f, 6.0f, 0.25f));
    EXPECT_EQ(math::Vec2(1, 3), math::Lerp(math::Vec2(0, 2), math::Vec2(2, 4), 0.5f));
    EXPECT_EQ(0x40490FDBu,
              []
              {
                  uint32_t b;
                  std::memcpy(&b, &PIf, 4);
                  return b;
              }());
    EXPECT_EQ(1, math::Sign(3));
    EXPECT_EQ(-1, math::Sign(-0.1f));
    EXPECT_EQ(0, math::Sign(0));
}
