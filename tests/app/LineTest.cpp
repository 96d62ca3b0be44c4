#include "app/Line.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <map>

namespace app
{
namespace
{
using math::Vec2;
using math::Vec2List;

Line MakeLine(const Vec2List& points)
{
    Line line;
    for (const Vec2& point : points)
        line.Add(point);
    return line;
}

// A tail that crosses the rest of the line at (2, 0), where the loop ends.
//
//     P3 ------ P2      The loop is 10 long without the side that closes it.
//      |         |
//  P0 -+-------- P1
//      P4
Line MakeLoop(float tail, float overshoot)
{
    return MakeLine({Vec2(-tail, 0), Vec2(4, 0), Vec2(4, 4), Vec2(2, 4), Vec2(2, -overshoot)});
}

TEST(Line, LeavesOutAPointThatEqualsTheLast)
{
    Line line;
    line.Add(Vec2(1, 2));
    line.Add(Vec2(1, 2));
    EXPECT_EQ(1u, line.GetPoints().size());
    line.Add(Vec2(1, std::nextafter(2.0f, 3.0f)));
    line.Add(Vec2(1, 2));
    EXPECT_EQ(3u, line.GetPoints().size());
}

TEST(Line, IsAsLongAsItsSegments)
{
    EXPECT_EQ(0, Line().Length());
    EXPECT_EQ(0, MakeLine({Vec2(1, 1)}).Length());
    EXPECT_EQ(7, MakeLine({Vec2(0, 0), Vec2(3, 0), Vec2(3, 4)}).Length());
}

TEST(Line, HasASegmentBetweenNeighbours)
{
    EXPECT_TRUE(Line().GetSegments().empty());
    EXPECT_TRUE(MakeLine({Vec2(1, 1)}).GetSegments().empty());
    const auto segments = MakeLine({Vec2(0, 0), Vec2(3, 0), Vec2(3, 4)}).GetSegments();
    ASSERT_EQ(2u, segments.size());
    EXPECT_EQ(Vec2(0, 0), segments[0].p0);
    EXPECT_EQ(Vec2(3, 0), segments[0].p1);
    EXPECT_EQ(Vec2(3, 0), segments[1].p0);
    EXPECT_EQ(Vec2(3, 4), segments[1].p1);
}

TEST(Line, IsOpenWithLessThanTwoPoints)
{
    Line line;
    EXPECT_EQ(Line::Open, line.CheckSelfIntersect());
    line.Add(Vec2(1, 1));
    EXPECT_EQ(Line::Open, line.CheckSelfIntersect());
    line.Add(Vec2(2, 1));
    EXPECT_EQ(Line::Open, line.CheckSelfIntersect());
}

TEST(Line, IsClosedWhenItsEndsAreNearerThanAnEighthOfItsLength)
{
    const auto shapeOf = [](float gap) {
        return MakeLine({Vec2(0, 0), Vec2(7, 0), Vec2(7, gap), Vec2(0, gap)}).CheckSelfIntersect();
    };
    EXPECT_EQ(Line::Open, shapeOf(2.001f));
    EXPECT_EQ(Line::Open, shapeOf(2)); // just an eighth of 16
    EXPECT_EQ(Line::Closed, shapeOf(std::nextafter(2.0f, 0.0f)));
}

TEST(Line, StaysWholeWhenItClosesWithoutACrossing)
{
    Line line = MakeLine({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 4), Vec2(0, 0.5f)});
    const Vec2List before = line.GetPoints();
    EXPECT_EQ(Line::Closed, line.CheckSelfIntersect());
    EXPECT_EQ(before, line.GetPoints());
}

TEST(Line, IsClosedWhenItEndsWhereItBegan)
{
    EXPECT_EQ(Line::Closed,
              MakeLine({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 0)}).CheckSelfIntersect());
}

TEST(Line, LosesItsTailsWhereItCrossesItself)
{
    Line line = MakeLoop(1, 1);
    EXPECT_EQ(Line::Closed, line.CheckSelfIntersect());
    EXPECT_EQ((Vec2List{Vec2(4, 0), Vec2(4, 4), Vec2(2, 4), Vec2(2, 0)}), line.GetPoints());
    EXPECT_EQ(10, line.Length());
}

// Two loops: the one that holds the middle of the line stays, whether it comes first or second.
TEST(Line, KeepsOfAFigureOfEightTheLoopAroundItsMiddle)
{
    const auto eight = [](float left, float right)
    {
        return MakeLine({Vec2(1, 1), Vec2(-left, -left), Vec2(-left, left), Vec2(-1, 1),
                         Vec2(right, -right), Vec2(right, right), Vec2(0.5f, 0.5f + right / 4)});
    };
    Line line = eight(2, 6);
    ASSERT_EQ(Line::Closed, line.CheckSelfIntersect());
    for (const Vec2& point : line.GetPoints())
        EXPECT_GT(point.x, -1e-6f);

    line = eight(6, 2);
    ASSERT_EQ(Line::Closed, line.CheckSelfIntersect());
    for (const Vec2& point : line.GetPoints())
        EXPECT_LT(point.x, 1e-6f);
}

TEST(Line, IsHopelessWhenAllOfItIsCrossed)
{
    // A star of five points.
    Line line = MakeLine({Vec2(0, 5), Vec2(3, -4), Vec2(-5, 2), Vec2(5, 2), Vec2(-3, -4)});
    const Vec2List before = line.GetPoints();
    EXPECT_EQ(Line::Hopeless, line.CheckSelfIntersect());
    EXPECT_EQ(before, line.GetPoints());
}

TEST(Line, IsHopelessWhenOnlyItsFirstSegmentIsFree)
{
    // The long first segment is nearest the middle. The rest is a star.
    Line line = MakeLine({Vec2(-40, 0), Vec2(0, 0), Vec2(4, 3), Vec2(0, 3), Vec2(4, 0), Vec2(2, 5),
                          Vec2(0.2f, -0.1f)});
    EXPECT_EQ(Line::Hopeless, line.CheckSelfIntersect());
}

TEST(Line, TakesTheEarlierOfTwoSegmentsEquallyNearTheMiddle)
{
    // A loop at each end, and the middle of the line where its halves cross.
    Line line = MakeLine({Vec2(-2, -1), Vec2(-2, 4), Vec2(-4, 4), Vec2(-4, 0), Vec2(4, 0),
                          Vec2(4, -4), Vec2(2, -4), Vec2(2, 1)});
    ASSERT_EQ(Line::Closed, line.CheckSelfIntersect());
    EXPECT_EQ((Vec2List{Vec2(-2, 4), Vec2(-4, 4), Vec2(-4, 0), Vec2(-2, 0)}), line.GetPoints());
}

TEST(Line, EndsTheLoopAtTheEndsOfTheLineWhereNothingCrosses)
{
    // The crossing lies ahead of the middle: backwards the walk ends at the first segment, which goes with
    // the tails.
    Line line = MakeLine({Vec2(0, 0), Vec2(10, 0), Vec2(20, 0), Vec2(30, 0), Vec2(31, 1),
                          Vec2(32, 0), Vec2(32, 1), Vec2(31, 0)});
    ASSERT_EQ(Line::Closed, line.CheckSelfIntersect());
    EXPECT_EQ((Vec2List{Vec2(10, 0), Vec2(20, 0), Vec2(30, 0), Vec2(31, 1)}), line.GetPoints());
}

TEST(Line, FindsWhatTheComparisonOfAllPairsFinds)
{
    test::Dice dice(7);
    std::map<int, int> seen;
    for (int round = 0; round < 300; ++round)
    {
        // On a grid, so that lines meet at points too.
        Line line;
        const int n = dice.Int(2, 14);
        for (int i = 0; i < n; ++i)
            line.Add(Vec2(float(dice.Int(0, 9)), float(dice.Int(0, 9))));
        const auto segments = line.GetSegments();
        bool isCrossed = false;
        for (size_t i = 0; i < segments.size(); ++i)
            for (size_t j = i + 1; j < segments.size(); ++j)
                isCrossed = isCrossed || physics::Intersects(segments[i], segments[j], nullptr);
        const Vec2List before = line.GetPoints();
        const float gap = math::Distance(before.front(), before.back()), length = line.Length();
        const Line::Shape shape = line.CheckSelfIntersect();
        ++seen[shape];
        const bool isGapSmall = gap < 0.125f * length;
        EXPECT_EQ(isCrossed || isGapSmall, shape != Line::Open);
        EXPECT_TRUE(isCrossed || shape != Line::Hopeless);
        EXPECT_TRUE((isCrossed && shape == Line::Closed) || line.GetPoints() == before);
    }
    for (int shape : {Line::Open, Line::Closed, Line::Hopeless})
        EXPECT_GT(seen[shape], 3) << shape;
}

TEST(Line, TellsWhetherTheFirstSideOfItsRingIsCrossed)
{
    EXPECT_FALSE(Line().FirstLineIntersectTheRest());
    EXPECT_FALSE(MakeLine({Vec2(0, 0)}).FirstLineIntersectTheRest());
    EXPECT_FALSE(MakeLine({Vec2(0, 0), Vec2(4, 0)}).FirstLineIntersectTheRest());
    EXPECT_FALSE(MakeLine({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4)}).FirstLineIntersectTheRest());
    EXPECT_TRUE(MakeLoop(1, 1).FirstLineIntersectTheRest());
}

TEST(Line, TellsWhetherTheSideThatClosesItsRingIsCrossed)
{
    EXPECT_FALSE(Line().LastLineIntersectTheRest());
    EXPECT_FALSE(MakeLine({Vec2(0, 0)}).LastLineIntersectTheRest());
    EXPECT_FALSE(
        MakeLine({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4), Vec2(0, 4)}).LastLineIntersectTheRest());
    EXPECT_TRUE(MakeLine({Vec2(0, 0), Vec2(4, 1), Vec2(-1, 2), Vec2(-1, 4), Vec2(0, 4)})
                    .LastLineIntersectTheRest());
}

TEST(IntersectTest, FindsTheCrossingsInTheOrderOfTheFirstLineAndThenOfTheSecond)
{
    const Line zigzag = MakeLine({Vec2(0, -1), Vec2(2, 1), Vec2(4, -1)});
    const Line straight = MakeLine({Vec2(5, 0), Vec2(2, 0), Vec2(-1, 0)});
    EXPECT_EQ((Vec2List{Vec2(1, 0), Vec2(3, 0)}), IntersectTest(zigzag, straight));
    EXPECT_EQ((Vec2List{Vec2(3, 0), Vec2(1, 0)}), IntersectTest(straight, zigzag));
}

TEST(IntersectTest, FindsNothingWithLessThanTwoPoints)
{
    const Line line = MakeLine({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_TRUE(IntersectTest(line, Line()).empty());
    EXPECT_TRUE(IntersectTest(Line(), line).empty());
    EXPECT_TRUE(IntersectTest(line, MakeLine({Vec2(2, 0)})).empty());
}

TEST(IntersectTest, KnowsWhereLinesMeetThatShareAPoint)
{
    const Line a = MakeLine({Vec2(5, 5), Vec2(7, 5), Vec2(9, 5)});
    const Line b = MakeLine({Vec2(7, 8), Vec2(7, 5), Vec2(7, 2)});
    // Those that end there cross, and those that begin there; the others hang together head to tail.
    EXPECT_EQ((Vec2List{Vec2(7, 5), Vec2(7, 5)}), IntersectTest(a, b));
}
}
}
