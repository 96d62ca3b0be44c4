#include "physics/Linesegment.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <limits>

namespace physics
{
using math::Vec2;

namespace
{
const float inf = std::numeric_limits<float>::infinity();
const float nan = std::numeric_limits<float>::quiet_NaN();

Linesegment Segment(float x0, float y0, float x1, float y1)
{
    return Linesegment(Vec2(x0, y0), Vec2(x1, y1));
}
}

TEST(Linesegment, ClosestPointLiesOnTheSegmentOrAtItsEnds)
{
    const Linesegment s = Segment(1, 0, 5, 0);
    const struct
    {
        Vec2 p, expected;
        float t;
    } cases[] = {
        {Vec2(3, 2), Vec2(3, 0), 0.5f}, {Vec2(2, -7), Vec2(2, 0), 0.25f},
        {Vec2(0, 1), Vec2(1, 0), 0.0f}, // before the start
        {Vec2(1, 1), Vec2(1, 0), 0.0f}, // at the start
        {Vec2(9, 1), Vec2(5, 0), 1.0f}, // past the end
    };
    for (const auto& c : cases)
    {
        float t = -1;
        EXPECT_EQ(c.expected, s.ClosestPoint(c.p, t)) << c.p;
        EXPECT_EQ(c.t, t) << c.p;
    }
}

TEST(Linesegment, ClosestPointOfASegmentWithoutLengthIsTheQueryPoint)
{
    const Linesegment s = Segment(1, 1, 1, 1);
    float t = 0;
    EXPECT_EQ(Vec2(4, 5), s.ClosestPoint(Vec2(4, 5), t));
    EXPECT_FALSE(math::IsFinite(t));
    EXPECT_EQ(0, s.Distance(Vec2(4, 5)));
}

TEST(Linesegment, MeasuresTheDistanceToItsNearestPoint)
{
    const Linesegment s = Segment(0, 0, 4, 0);
    EXPECT_FLOAT_EQ(9, s.DistanceSq(Vec2(2, 3)));
    EXPECT_FLOAT_EQ(3, s.Distance(Vec2(2, -3)));
    EXPECT_FLOAT_EQ(5, s.Distance(Vec2(7, 4)));
}

TEST(Linesegment, LeftIsStrictlyLeft)
{
    const Linesegment s = Segment(0, 0, 0, 2);
    EXPECT_TRUE(s.IsPointOnTheLeft(Vec2(-1, 1)));
    EXPECT_FALSE(s.IsPointOnTheLeft(Vec2(1, 1)));
    EXPECT_FALSE(s.IsPointOnTheLeft(Vec2(0, 5)));
}

TEST(Linesegment, TransformMovesBothEnds)
{
    const Linesegment s = Transform(math::Mat2D::TranslationRotation(Vec2(10, 0), math::PIf / 2),
                                    Segment(1, 0, 3, 0));
    EXPECT_NEAR(10, s.p0.x, 1e-6f);
    EXPECT_NEAR(1, s.p0.y, 1e-6f);
    EXPECT_NEAR(10, s.p1.x, 1e-6f);
    EXPECT_NEAR(3, s.p1.y, 1e-6f);
}

TEST(Linesegment, CrossingSegmentsIntersectAtTheirCrossing)
{
    Vec2 out;
    EXPECT_TRUE(Intersects(Segment(0, 0, 4, 4), Segment(0, 2, 4, 2), &out));
    EXPECT_EQ(Vec2(2, 2), out);
    EXPECT_TRUE(Intersects(Segment(0, 0, 4, 4), Segment(0, 2, 4, 2), nullptr));
    EXPECT_TRUE(LineSegmentIntersectTest(Vec2(0, 0), Vec2(4, 4), Vec2(0, 2), Vec2(4, 2), &out));
}

TEST(Linesegment, TouchingSegmentsIntersect)
{
    // The end of one lies on the inside of the other.
    EXPECT_TRUE(Intersects(Segment(0, 0, 4, 0), Segment(1, 0, 1, 3), nullptr));
    EXPECT_TRUE(Intersects(Segment(1, 3, 1, 0), Segment(0, 0, 4, 0), nullptr));
    EXPECT_FALSE(Intersects(Segment(0, 0, 4, 0), Segment(1, 0.001f, 1, 3), nullptr));
    EXPECT_FALSE(Intersects(Segment(0, 0, 4, 0), Segment(4.001f, -1, 4.001f, 3), nullptr));
}

TEST(Linesegment, ParallelSegmentsNeverIntersect)
{
    EXPECT_FALSE(Intersects(Segment(0, 0, 4, 0), Segment(0, 1, 4, 1), nullptr));
    EXPECT_FALSE(Intersects(Segment(0, 0, 4, 0), Segment(1, 0, 3, 0), nullptr));
    // So short that they count as parallel.
    EXPECT_FALSE(Intersects(Segment(-1e-4f, 0, 1e-4f, 0), Segment(0, -1e-4f, 0, 1e-4f), nullptr));
}

// Deliberate: chains and rings of segments must have no crossings at their joints.
TEST(Linesegment, SegmentsHeadToTailNeverIntersect)
{
    EXPECT_FALSE(Intersects(Segment(0, 0, 1, 1), Segment(1, 1, 2, 0), nullptr));
    EXPECT_FALSE(Intersects(Segment(1, 1, 2, 0), Segment(0, 0, 1, 1), nullptr));
    // Although the second runs back over the first.
    EXPECT_FALSE(Intersects(Segment(0, 0, 4, 0), Segment(4, 0, 2, 0), nullptr));
}

// Deliberate, as above.
TEST(Linesegment, SegmentsWithTheSameStartOrTheSameEndAlwaysIntersect)
{
    Vec2 out(7, 7);
    EXPECT_TRUE(Intersects(Segment(0, 0, 1, 1), Segment(0, 0, 2, -3), &out));
    EXPECT_TRUE(Intersects(Segment(1, 1, 0, 0), Segment(2, -3, 0, 0), &out));
    // Parallel ones too.
    EXPECT_TRUE(Intersects(Segment(0, 0, 1, 0), Segment(0, 0, -1, 0), &out));
    // Both rules at once: the same start goes first.
    EXPECT_TRUE(Intersects(Segment(0, 0, 1, 0), Segment(0, 0, 0, 0), &out));
    EXPECT_EQ(Vec2(7, 7), out) << "the crossing is left alone";
}

TEST(Linesegment, CountsCrossings)
{
    const LinesegmentList square = {Segment(0, 0, 4, 0), Segment(4, 0, 4, 4), Segment(4, 4, 0, 4),
                                    Segment(0, 4, 0, 0)};
    EXPECT_EQ(2, IntersectCount(Segment(-1, 1, 5, 1), square));
    EXPECT_EQ(1, IntersectCount(Segment(-1, 1, 2, 1), square));
    EXPECT_EQ(0, IntersectCount(Segment(1, 1, 2, 1), square));
    EXPECT_EQ(3, IntersectCount({Segment(-1, 1, 5, 1), Segment(1, 1, 2, 1), Segment(-1, 1, 2, 1)},
                                square));
    EXPECT_EQ(0, IntersectCount(LinesegmentList(), square));
}

namespace
{
bool AnyIntersectPlainly(const LinesegmentList& lines)
{
    for (size_t i = 0; i < lines.size(); ++i)
        for (size_t j = i + 1; j < lines.size(); ++j)
            if (Intersects(lines[i], lines[j], nullptr))
                return true;
    return false;
}

std::vector<bool> FindIntersectingPlainly(const LinesegmentList& lines)
{
    std::vector<bool> marks(lines.size());
    for (size_t i = 0; i < lines.size(); ++i)
        for (size_t j = i + 1; j < lines.size(); ++j)
            if (Intersects(lines[i], lines[j], nullptr))
                marks[i] = marks[j] = true;
    return marks;
}
}

TEST(Linesegment, AnyIntersectFindsASinglePairAnywhere)
{
    for (size_t n = 2; n < 12; ++n)
        for (size_t i = 0; i < n; ++i)
            for (size_t j = i + 1; j < n; ++j)
            {
                LinesegmentList lines;
                for (size_t k = 0; k < n; ++k)
                    lines.push_back(Segment(0, 10.0f * k, 1, 10.0f * k + 1));
                EXPECT_FALSE(AnyIntersect(lines));
                lines[j] = Segment(0, 10.0f * i + 0.5f, 1, 10.0f * i + 0.5f);
                EXPECT_TRUE(AnyIntersect(lines)) << n << " lines, " << i << " and " << j;
            }
}

TEST(Linesegment, TheSearchesForCrossingsAgreeWithTheTestOfAllPairs)
{
    test::Dice dice;
    const float strange[] = {0, 1, -1, 1e-20f, 1e-8f, 1e10f, 1e30f, -1e38f, inf, -inf, nan};
    int crossings = 0;
    for (int round = 0; round < 20000; ++round)
    {
        const int n = dice.Int(2, 11);
        // A grid, so that ends meet and segments are parallel; or anything; or strange numbers.
        const int kind = dice.Int(0, 4);
        const auto number = [&]() -> float
        {
            switch (kind)
            {
            case 0:
                return static_cast<float>(dice.Int(0, 30));
            case 1:
                return dice.Uniform(-100, 100);
            case 2:
                return strange[dice.Int(0, 11)];
            default:
                return dice.OneIn(6) ? strange[dice.Int(0, 11)] : dice.Uniform(-1, 1);
            }
        };
        LinesegmentList lines;
        for (int i = 0; i < n; ++i)
        {
            const float x = number(), y = number();
            if (round % 2 == 0)
                lines.push_back(Segment(x, y, number(), number()));
            else // short ones: fewer crossings
                lines.push_back(Segment(x, y, x + 0.1f * number(), y + 0.1f * number()));
        }
        const bool expected = AnyIntersectPlainly(lines);
        crossings += expected;
        ASSERT_EQ(expected, AnyIntersect(lines)) << "round " << round;
        ASSERT_EQ(FindIntersectingPlainly(lines), FindIntersecting(lines)) << "round " << round;
    }
    EXPECT_GT(crossings, 5000);
    EXPECT_LT(crossings, 15000);
}

TEST(Linesegment, SlantedChainsDoNotCrossThemselves)
{
    // Sides cut into pieces that lie nearly on one line: what a long straight stroke becomes.
    for (int round = 0; round < 100; ++round)
    {
        const math::Mat2D turn = math::Mat2D::TranslationRotation(Vec2(3, 7), 0.03f * round);
        LinesegmentList lines;
        for (int i = 0; i < 100; ++i)
            lines.push_back(Transform(turn, Segment(0.3f * i, 0, 0.3f * (i + 1), 0)));
        EXPECT_FALSE(AnyIntersect(lines)) << "round " << round;
    }
}
}
