#include "util/Color.h"

#include <gtest/gtest.h>

using math::Vec3;
using util::HSL2RGB;

TEST(HSL2RGB, WalksTheColourCircle)
{
    const struct
    {
        float hue;
        Vec3 rgb;
    } cases[] = {
        {0, Vec3(1, 0, 0)},      {60, Vec3(1, 1, 0)},    {120, Vec3(0, 1, 0)},
        {180, Vec3(0, 1, 1)},    {240, Vec3(0, 0, 1)},   {300, Vec3(1, 0, 1)},
        {360, Vec3(1, 0, 0)},    {30, Vec3(1, 0.5f, 0)}, {-120, Vec3(0, 0, 1)},
        {-1e-9f, Vec3(1, 0, 0)}, {3720, Vec3(0, 1, 0)},
    };
    for (const auto& c : cases)
    {
        const Vec3 rgb = HSL2RGB(c.hue, 1, 0.5f);
        EXPECT_NEAR(0, (rgb - c.rgb).Length(), 1e-5f) << c.hue << " gave " << rgb;
    }
}

TEST(HSL2RGB, KnowsGreyAndLightness)
{
    EXPECT_NEAR(0, (HSL2RGB(77, 0, 0.25f) - Vec3(0.25f, 0.25f, 0.25f)).Length(), 1e-6f);
    EXPECT_NEAR(0, (HSL2RGB(77, 1, 1) - Vec3(1, 1, 1)).Length(), 1e-6f);
    EXPECT_NEAR(0, HSL2RGB(77, 1, 0).Length(), 1e-6f);
    EXPECT_NEAR(0, (HSL2RGB(0, 1, 0.75f) - Vec3(1, 0.5f, 0.5f)).Length(), 1e-6f);
}

TEST(RGBIntensity, IsTheMean)
{
    EXPECT_FLOAT_EQ(0.5f, util::RGBIntensity(Vec3(1, 0.5f, 0)));
}
