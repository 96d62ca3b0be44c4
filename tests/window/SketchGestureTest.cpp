// Strokes of the hand, by the sketch tool and the brush: each shape in its clear form.
#include "window/Desk.h"

#include <chrono>
#include <cmath>
#include <thread>

using test::Point;
using test::Round;
using test::SavedEntity;
using test::SavedScene;
using test::Straight;

namespace
{
class SketchGestureTest : public test::Desk
{
protected:
    static bool IsInk(const Color& c) { return c.g > c.r + 20 && c.g > c.b + 20 && c.g > 180; }
    static bool IsRed(const Color& c) { return c.r > c.g + 60 && c.r > c.b + 60; }
    static bool IsWhite(const Color& c) { return c.r > 230 && c.g > 230 && c.b > 230; }

    static std::vector<Point> Closed(std::vector<Point> points)
    {
        points.push_back(points.front());
        return points;
    }
    static std::vector<Point> Through(const std::vector<Point>& corners)
    {
        std::vector<Point> points = {corners.front()};
        for (size_t i = 1; i < corners.size(); ++i)
            for (const Point& p : Straight(corners[i - 1], corners[i]))
                points.push_back(p);
        return points;
    }
    /// From a to b with teeth of this height to both sides.
    static std::vector<Point> Zigzag(Point a, Point b, double height)
    {
        const int count = 8;
        const double length = test::Distance(a, b);
        const Point normal = (1 / length) * Point{a.y - b.y, b.x - a.x};
        std::vector<Point> corners = {a};
        for (int i = 1; i < count; ++i)
            corners.push_back((1 - double(i) / count) * a + double(i) / count * b +
                              (i % 2 ? height : -height) * normal);
        corners.push_back(b);
        return Through(corners);
    }

    SavedScene Stroke(const std::vector<Point>& points)
    {
        hand->Drag(points);
        return hand->Save();
    }
};
}

TEST_F(SketchGestureTest, AClosedStrokeIsAPolygonThatOneUndoTakesAway)
{
    const SavedScene scene = Stroke(Closed(Round({0.5, 0.25}, 0.8, 40)));
    EXPECT_EQ("Polygon", Kinds(scene));
    EXPECT_AT((Point{0.5, 0.25}), scene.One("Polygon").Vec("pos"));
    hand->Tap("Control_L", "z");
    EXPECT_EQ("", Kinds(hand->Save()));
    hand->Tap("Control_L", "y");
    EXPECT_EQ("Polygon", Kinds(hand->Save()));
}

TEST_F(SketchGestureTest, AStrokeWhoseEndsNearlyMeetIsAPolygon)
{
    std::vector<Point> points = Round({0, 0}, 1, 60);
    points.resize(55); // a gap of 0.63, and a way of 5.65
    EXPECT_EQ("Polygon", Kinds(Stroke(points)));
}

TEST_F(SketchGestureTest, AStrokeWhoseEndsStayApartIsNothing)
{
    std::vector<Point> points = Round({0, 0}, 1, 60);
    points.resize(45);
    EXPECT_EQ("", Kinds(Stroke(points)));
}

TEST_F(SketchGestureTest, AFigureOfEightIsTheLoopAroundItsMiddle)
{
    // A small loop, then a large one, then a tail: the large one holds the middle.
    const SavedScene scene =
        Stroke(Through({{-1.6, 0.4}, {-1.2, 0.4}, {1, -1}, {1, 1}, {-1.2, -0.4}, {-1.6, -0.4}}));
    const SavedEntity polygon = scene.One("Polygon");
    EXPECT_GT(polygon.Vec("pos").x, 0.1);
    EXPECT_EQ("Polygon", Kinds(scene));
}

TEST_F(SketchGestureTest, AZigzagIsASpringBetweenItsEnds)
{
    Lay(TwoBoxes);
    const SavedScene scene = Stroke(Zigzag({-1, 0}, {1, 0.4}, 0.3));
    ASSERT_EQ("Box Box Spring", Kinds(scene));
    EXPECT_NEAR(0.6, scene.One("Spring").Number("size"), 0.03);
    EXPECT_NEAR(std::hypot(2, 0.4), scene.One("Spring").Number("length"), 0.03);
}

TEST_F(SketchGestureTest, AStraightStrokeDoesNothingButShineRedForTwoSeconds)
{
    hand->Drag(Straight({-1.5, 1}, {1.5, 1}));
    ASSERT_TRUE(WaitForPicture([&] { return IsAnyNear({0.5, 1}, 2, IsRed); }));
    EXPECT_TRUE(IsAnyNear({-1, 1}, 2, IsRed));
    EXPECT_EQ("", Kinds(hand->Save()));
    EXPECT_TRUE(WaitForPicture([&] { return !IsAnyNear({0.5, 1}, 2, IsRed); }));
}

TEST_F(SketchGestureTest, TwoStraightStrokesThatCrossAreAWeld)
{
    Lay(Stacked);
    hand->Drag(Straight({-0.3, -0.3}, {0.3, 0.3}));
    const SavedScene scene = Stroke(Straight({-0.3, 0.3}, {0.3, -0.3}));
    EXPECT_EQ(1u, scene.Count("Fixjoint")) << scene.text;
    EXPECT_EQ(2u, scene.Count("Box"));
    EXPECT_NEAR(0.7 * 0.6 * std::sqrt(2), scene.One("Fixjoint").Number("size"), 0.02);
}

TEST_F(SketchGestureTest, ACrossThatComesTooLateIsNone)
{
    Lay(Stacked);
    hand->Drag(Straight({-0.3, -0.3}, {0.3, 0.3}));
    // Once it is no longer to be seen it is there for a moment still.
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    EXPECT_EQ(0u, Stroke(Straight({-0.3, 0.3}, {0.3, -0.3})).Count("Fixjoint"));
}

TEST_F(SketchGestureTest, ASlashErasesWhatItCutsAndNothingElse)
{
    Lay(TwoBoxes);
    const SavedScene scene = Stroke(Straight({-1, 1}, {-1, -1}));
    EXPECT_EQ("Box", Kinds(scene));
    EXPECT_AT((Point{1, 0}), scene.One("Box").Vec("pos"));
    hand->Tap("Control_L", "z");
    EXPECT_EQ("Box Box", Kinds(hand->Save()));
}

TEST_F(SketchGestureTest, ASlashThroughABodyAndTheGroundLeavesTheGround)
{
    Lay(Ground);
    EXPECT_EQ("Plane", Kinds(Stroke(Straight({0, 0.5}, {0.1, -1.5}))));
    EXPECT_EQ("", Kinds(Stroke(Straight({0.5, 0.5}, {0.6, -1.5})))) << "alone it is erased";
}

TEST_F(SketchGestureTest, ALoopAroundBodiesSelectsThem)
{
    Lay(TwoBoxes);
    EXPECT_EQ("Box Box", Kinds(Stroke(Closed(Round({-1, 0}, 0.95, 40)))));
    EXPECT_TRUE(WaitForPicture(
        [&] {
            return IsAnyNear({-1, 0.49}, 3, IsWhite);
        }))
        << "the selected one has a white border";
    EXPECT_FALSE(IsAnyNear({1, 0.49}, 3, IsWhite));
    hand->Tap("Delete");
    const SavedScene scene = hand->Save();
    EXPECT_AT((Point{1, 0}), scene.One("Box").Vec("pos"));
}

// Deliberate: cutting one of the selected cuts all of them.
TEST_F(SketchGestureTest, ASlashThroughOneOfTheSelectionErasesTheSelection)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    EXPECT_EQ("", Kinds(Stroke(Straight({-1, 1}, {-1, -1}))));
}

TEST_F(SketchGestureTest, ASmallRoundStrokeOnABodyIsAHinge)
{
    Lay(Box);
    const SavedScene scene = Stroke(Closed(Round({0.1, 0.1}, 0.15, 12)));
    EXPECT_EQ("Box Hinge", Kinds(scene));
    EXPECT_NEAR(0.3, scene.One("Hinge").Number("size"), 0.04);
}

TEST_F(SketchGestureTest, AStrokeAroundTheEndOfASpringOnTheBackgroundIsABodyThatTakesItOver)
{
    Lay(Box);
    hand->Tap("s");
    hand->Drag(Straight({0, 0.2}, {1.8, 1.2}));
    hand->Tap("k");
    const SavedScene scene = Stroke(Closed(Round({1.8, 1.2}, 0.4, 30)));
    ASSERT_EQ("Box Polygon Spring", Kinds(scene));
    EXPECT_EQ(scene.One("Polygon").Value("geomID"), scene.One("Spring").Value("geom1"));
}

TEST_F(SketchGestureTest, WithShiftAllTheWayAStrokeIsOneStraightEdge)
{
    Lay(TwoBoxes);
    hand->Hold("Shift_L");
    // A wild way around the boxes, whose chord cuts the left one.
    hand->PressAlong(Through({{-1.1, 1}, {2, 1.5}, {2, -1.5}, {-1.1, -1}}));
    hand->Release();
    hand->LetGo("Shift_L");
    const SavedScene scene = hand->Save();
    EXPECT_AT((Point{1, 0}), scene.One("Box").Vec("pos"));
}

TEST_F(SketchGestureTest, LettingGoOfShiftKeepsTheEndOfTheStraightEdge)
{
    // Three straight edges of a triangle.
    hand->MoveTo({-1, -1});
    hand->Press();
    hand->Hold("Shift_L");
    for (const Point& corner : {Point{1, -1}, Point{0, 1}, Point{-1, -1}})
    {
        for (const Point& p : Straight(corner + Point{0.5, 0.5}, corner, 0.2))
            hand->MoveTo(p);
        hand->LetGo("Shift_L");
        hand->Hold("Shift_L");
    }
    hand->Release();
    hand->LetGo("Shift_L");
    const SavedScene scene = hand->Save();
    EXPECT_EQ("Polygon", Kinds(scene));
    EXPECT_AT((Point{0, -1.0 / 3}), scene.One("Polygon").Vec("pos"));
}

TEST_F(SketchGestureTest, EscapeDropsAStrokeAndTheOneBeforeIt)
{
    Lay(Stacked);
    hand->Drag(Straight({-0.3, -0.3}, {0.3, 0.3}));
    hand->PressAlong(Round({0, 0}, 0.8, 40));
    hand->Tap("Escape");
    hand->Release();
    EXPECT_EQ("Box Box", Kinds(hand->Save()));
    EXPECT_EQ("Box Box", Kinds(Stroke(Straight({-0.3, 0.3}, {0.3, -0.3}))))
        << "no cross: the first arm is gone";
}

TEST_F(SketchGestureTest, InkReachesTheMouseInTheFrameThatSeesItMove)
{
    // With Shift all that is drawn is the way from the stroke's end to the mouse.
    for (const bool shift : {false, true})
    {
        SCOPED_TRACE(shift);
        Point from = {-1, 0.5};
        hand->MoveTo(from);
        hand->Press();
        if (shift)
            hand->Hold("Shift_L");
        for (const Point& tip : {Point{1, 0.5}, Point{1, -1}, Point{-1.5, -1}})
        {
            hand->MoveTo(tip);
            hand->Sync(); // seen
            hand->Sync(); // and the frame that saw it is drawn
            pixels = hand->Look();
            // The cursor covers the tip itself.
            const Point before = tip + 0.3 / test::Distance(from, tip) * (from + -1.0 * tip);
            EXPECT_TRUE(IsAnyNear(before, 3, IsInk)) << tip.x << ", " << tip.y;
            if (!shift)
                from = tip;
        }
        hand->Tap("Escape");
        hand->Release();
        hand->LetGoOfAll();
    }
}

TEST_F(SketchGestureTest, AStrokeMayBeginOnABodyThatIsNotSelected)
{
    Lay(TwoBoxes);
    const SavedScene scene = Stroke(Closed(Round({-1.2, 0}, 0.3, 20)));
    EXPECT_EQ(1u, scene.Count("Hinge") + scene.Count("Polygon")) << scene.text;
    EXPECT_AT((Point{-1, 0}), scene.All("Box").at(0).Vec("pos"));
}

TEST_F(SketchGestureTest, HundredsOfMovesBetweenTwoFramesAreAllInk)
{
    hand->Do(Slow);
    std::vector<Point> points;
    for (int i = 0; i < 600; ++i)
        points.push_back(Round({0, 0}, 1.2 + 0.3 * std::sin(i * 0.0523599 * 2), 600)[i]);
    hand->Drag(Closed(points));
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Polygon", Kinds(scene));
    const std::string vecs = scene.One("Polygon").Value("vecs");
    EXPECT_GT(std::count(vecs.begin(), vecs.end(), '['), 60);
}

// The brush.

TEST_F(SketchGestureTest, TheBrushMakesABodyOfWhatTheSketchToolTakesForAHinge)
{
    Lay(Box);
    hand->Tap("b");
    // It begins off the box: on it, the drag would be a move.
    hand->Drag(Closed(Round({0.55, 0}, 0.2, 20)));
    EXPECT_EQ("Box Polygon", Kinds(hand->Save()));
}

TEST_F(SketchGestureTest, TheBrushMakesNoSprings)
{
    Lay(TwoBoxes);
    hand->Tap("b");
    EXPECT_EQ("Box Box", Kinds(Stroke(Zigzag({-0.4, -0.9}, {0.4, -0.8}, 0.1))));
    hand->Do(DrawInside);
    EXPECT_EQ("Box Box", Kinds(Stroke(Zigzag({-1, 0}, {1, 0.4}, 0.3))));
}

TEST_F(SketchGestureTest, TheBrushErasesAndSelects)
{
    Lay(TwoBoxes);
    hand->Tap("b");
    hand->Drag(Closed(Round({-1, 0}, 0.95, 40)));
    EXPECT_TRUE(WaitForPicture([&] { return IsAnyNear({-1, 0.49}, 3, IsWhite); }));
    EXPECT_EQ("Box", Kinds(Stroke(Straight({1, 1}, {1, -1}))));
}
