#include "util/Random.h"

#include "WhatOf.h"
#include "util/Failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

using math::Vec2;
using util::Random;

namespace
{
/// The first number of a generator with that seed.
float FirstOf(unsigned seed)
{
    return static_cast<float>(std::mt19937(seed)()) * (1.0f / 4294967296.0f);
}

[[noreturn]] void ExitWithSeedsInOrder()
{
    Random a, b, c;
    const bool good = a.GetUniform() == FirstOf(0) && b.GetUniform() == FirstOf(1) &&
                      c.GetUniform() == FirstOf(2) && Random().GetUniform() == FirstOf(3);
    std::_Exit(good ? 0 : 1);
}
}

// Deliberate: every run of the program sees the same numbers.
TEST(Random, IsSeededInOrderOfConstructionFromZeroOn)
{
    // In a process of its own, in which no generator was made before.
    const std::string style = testing::FLAGS_gtest_death_test_style;
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(ExitWithSeedsInOrder(), testing::ExitedWithCode(0), "");
    testing::FLAGS_gtest_death_test_style = style;
}

TEST(Random, StaysInItsRange)
{
    Random random;
    float lowest = 1, highest = 0;
    for (int i = 0; i < 100000; ++i)
    {
        const float u = random.GetUniform();
        ASSERT_GE(u, 0);
        ASSERT_LT(u, 1);
        lowest = std::min(lowest, u);
        highest = std::max(highest, u);
        const float v = random.GetUniform(-3, 5);
        ASSERT_GE(v, -3);
        ASSERT_LE(v, 5);
    }
    EXPECT_LT(lowest, 0.001f);
    EXPECT_GT(highest, 0.999f);
    EXPECT_EQ(2, random.GetUniform(2, 2));
}

TEST(Random, NeverGivesTheUpperEndOfWholeNumbers)
{
    Random random;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(3, random.GetUniformInt(3, 4));
    std::set<int> seen;
    for (int i = 0; i < 1000; ++i)
        seen.insert(random.GetUniformInt(-1, 2));
    EXPECT_EQ((std::set<int>{-1, 0, 1}), seen);
}

TEST(Random, AssertsTheOrderOfItsEnds)
{
    Random random;
    const auto textOf = [](const auto& function)
    { return test::WhatOf<BadCoderException>(function); };
    const std::string atMost = "Code assertion failed: \"a <= b\" in function ";
    const std::string below = "Code assertion failed: \"a < b\" in function ";
    EXPECT_EQ(0u, textOf([&] { random.GetUniform(2, 1); }).find(atMost));
    EXPECT_EQ(0u, textOf([&] { random.GetUniformInt(3, 3); }).find(below));
    EXPECT_EQ(0u, textOf([&] { random.GetUniformInt(4, 3); }).find(below));
}

TEST(Random, FillsTheDiscEvenly)
{
    Random random;
    int inside = 0;
    const int n = 20000;
    for (int i = 0; i < n; ++i)
    {
        const Vec2 p = random.GetPointInCircle(4);
        ASSERT_LE(p.Length(), 4.0001f);
        inside += p.Length() < 2; // a quarter of the area
        const Vec2 v = random.GetUniformVec2();
        ASSERT_TRUE(v.x >= -1 && v.x < 1 && v.y >= -1 && v.y < 1);
    }
    EXPECT_NEAR(0.25, double(inside) / n, 0.02);
}

TEST(Random, HasANormalDistribution)
{
    Random random;
    double sum = 0, squares = 0;
    const int n = 20000;
    for (int i = 0; i < n; ++i)
    {
        const Vec2 v = random.GetNormalVec2();
        sum += v.x + v.y;
        squares += v.x * v.x + v.y * v.y;
    }
    EXPECT_NEAR(0, sum / (2 * n), 0.02);
    EXPECT_NEAR(1, squares / (2 * n), 0.03);
}
