// Moving, cloning, turning, scaling, grabbing and panning by the hand.
#include "window/Desk.h"

#include <cmath>

using test::Point;
using test::Round;
using test::SavedEntity;
using test::SavedScene;
using test::Straight;

namespace
{
class ManipulationGestureTest : public test::Desk
{
protected:
    SavedScene Drag(const std::vector<Point>& points, unsigned button = test::Hand::Left)
    {
        hand->Drag(points, button);
        return hand->Save();
    }
    void Undo() { hand->Tap("Control_L", "z"); }
    static double Degrees(double radians) { return radians * 180 / M_PI; }
    static double AngleOf(const SavedEntity& entity)
    {
        return entity.Has("angle") ? Degrees(entity.Number("angle")) : 0;
    }
    static Point PosOf(const SavedEntity& entity)
    {
        return entity.Has("pos") ? entity.Vec("pos") : Point{0, 0};
    }
    static Point SizeOf(const SavedEntity& entity)
    {
        return entity.Has("size") ? entity.Vec("size") : Point{1, 1};
    }
    static bool IsDarkRed(const Color& c) { return c.r > 100 && c.g < 40 && c.b < 40; }
    /// A turn about the middle, this far out.
    static std::vector<Point> Arc(double fromDegrees, double toDegrees)
    {
        std::vector<Point> points;
        for (int i = 0; i <= 30; ++i)
        {
            const double angle = (fromDegrees + (toDegrees - fromDegrees) * i / 30) * M_PI / 180;
            points.push_back(0.45 * Point{std::cos(angle), std::sin(angle)});
        }
        return points;
    }
};
}

TEST_F(ManipulationGestureTest, DraggingWhatIsSelectedMovesIt)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    const SavedScene scene = Drag(Straight({-1.2, 0.1}, {-0.7, 1.1}));
    EXPECT_AT((Point{-0.5, 1}), PosOf(scene.All("Box").at(0)));
    EXPECT_AT((Point{1, 0}), PosOf(scene.All("Box").at(1)));
    Undo();
    EXPECT_AT((Point{-1, 0}), PosOf(hand->Save().All("Box").at(0)));
}

TEST_F(ManipulationGestureTest, TheWholeSelectionMovesWithTheOneThatIsDragged)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    const SavedScene scene = Drag(Straight({-1, 0}, {-1, 1}));
    EXPECT_AT((Point{-1, 1}), PosOf(scene.All("Box").at(0)));
    EXPECT_AT((Point{1, 1}), PosOf(scene.All("Box").at(1)));
}

TEST_F(ManipulationGestureTest, WithCtrlItIsCloned)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Hold("Control_L");
    hand->Drag(Straight({0.1, 0.1}, {1.6, 1.1}));
    hand->LetGo("Control_L");
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Box Box", Kinds(scene));
    EXPECT_AT((Point{0, 0}), PosOf(scene.All("Box").at(0)));
    EXPECT_AT((Point{1.5, 1}), PosOf(scene.All("Box").at(1)));
    EXPECT_EQ(scene.All("Box")[0].Value("color"), scene.All("Box")[1].Value("color"));
    Undo();
    EXPECT_EQ("Box", Kinds(hand->Save()));
}

TEST_F(ManipulationGestureTest, EscapePutsAMoveBackAndLeavesNothingToUndo)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    hand->Drag(Straight({-1, 0}, {-1, 1}));
    hand->PressAlong(Straight({-1, 1}, {1, 1}));
    hand->Tap("Escape");
    hand->Release();
    EXPECT_AT((Point{-1, 1}), PosOf(hand->Save().All("Box").at(0)));
    Undo();
    EXPECT_AT((Point{-1, 0}), PosOf(hand->Save().All("Box").at(0))) << "that was the move before";
}

TEST_F(ManipulationGestureTest, ARightDragOnABodyTurnsIt)
{
    Lay(Box);
    const SavedScene scene = Drag(Arc(0, 60), test::Hand::Right);
    // The first event, which comes after 3.5 pixels, turns nothing yet.
    EXPECT_NEAR(54, AngleOf(scene.One("Box")), 2);
    EXPECT_AT((Point{0, 0}), PosOf(scene.One("Box")));
    Undo();
    EXPECT_NEAR(0, AngleOf(hand->Save().One("Box")), 0.001);
}

TEST_F(ManipulationGestureTest, WithShiftItTurnsInStepsOf15Degrees)
{
    Lay(Box);
    hand->Hold("Shift_L");
    const SavedScene scene = Drag(Arc(0, 50), test::Hand::Right);
    EXPECT_NEAR(45, AngleOf(scene.One("Box")), 0.01);
}

TEST_F(ManipulationGestureTest, ATurnTooNearTheCentreIsNone)
{
    Lay(Box);
    hand->Drag({{0, 0}, {0.1, 0}, {0, 0.1}, {-0.1, 0}, {0, -0.1}}, test::Hand::Right);
    EXPECT_NEAR(0, AngleOf(hand->Save().One("Box")), 0.001);
}

TEST_F(ManipulationGestureTest, EscapeTurnsBack)
{
    Lay(Box);
    hand->PressAlong(Arc(0, 60), test::Hand::Right);
    hand->Tap("Escape");
    hand->Release(test::Hand::Right);
    EXPECT_NEAR(0, AngleOf(hand->Save().One("Box")), 0.001);
}

TEST_F(ManipulationGestureTest, ARightDragOffBodiesPansTheView)
{
    Lay(Box);
    SavedScene scene = Drag(Straight({1.5, 1}, {1, 0.5}), test::Hand::Right);
    EXPECT_AT((Point{0.5, 0.5}), scene.Vec("Scene.Camera.pan"));
    // And back: what is under the hand stays under the hand.
    hand->LookAt(scene.Vec("Scene.Camera.pan"), Zoom);
    scene = Drag(Straight({1, 0.5}, {1.5, 1}), test::Hand::Right);
    EXPECT_AT((Point{0, 0}), scene.Vec("Scene.Camera.pan"));
}

// The handles of the scale tool stand on the corners and the middles of the edges.

TEST_F(ManipulationGestureTest, ACornerHandleScalesAboutTheOppositeCorner)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    const SavedScene scene = Drag(Straight({0.5, 0.5}, {1, 1.3}));
    EXPECT_AT((Point{1.5, 1.8}), SizeOf(scene.One("Box")));
    EXPECT_AT((Point{0.25, 0.4}), PosOf(scene.One("Box")));
    Undo();
    EXPECT_AT((Point{1, 1}), SizeOf(hand->Save().One("Box")));
}

TEST_F(ManipulationGestureTest, AnEdgeHandleScalesOneWay)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    const SavedScene scene = Drag(Straight({0.5, 0}, {1, 0.4}));
    EXPECT_AT((Point{1.5, 1}), SizeOf(scene.One("Box")));
}

TEST_F(ManipulationGestureTest, WithShiftACornerKeepsTheShape)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    hand->Hold("Shift_L");
    hand->Drag(Straight({0.5, 0.5}, {1.5, 1}));
    hand->LetGo("Shift_L");
    const double expected = std::sqrt(2 * 1.5);
    EXPECT_AT((Point{expected, expected}), SizeOf(hand->Save().One("Box")));
}

// Deliberate: an edge handle has no other side to keep in step.
TEST_F(ManipulationGestureTest, WithShiftAnEdgeHandleStandsStill)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    hand->Hold("Shift_L");
    hand->Drag(Straight({0.5, 0}, {1.5, 0}));
    hand->LetGo("Shift_L");
    EXPECT_AT((Point{1, 1}), SizeOf(hand->Save().One("Box")));
}

TEST_F(ManipulationGestureTest, WithCtrlItScalesToWholeMultiples)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    hand->Hold("Control_L");
    hand->Drag(Straight({0.5, 0.5}, {1.4, -0.05}));
    hand->LetGo("Control_L");
    EXPECT_AT((Point{2, 0.5}), SizeOf(hand->Save().One("Box")));
}

TEST_F(ManipulationGestureTest, AScaleIsSeenBeforeItIsDoneAndDoneAtTheRelease)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    hand->PressAlong(Straight({0.5, 0.5}, {1.3, 1.3}));
    EXPECT_TRUE(WaitForPicture([&] { return IsAnyNear({1, 0.8}, 2, IsDarkRed); }));
    EXPECT_AT((Point{1, 1}), SizeOf(hand->Save().One("Box")));
    hand->Release();
    EXPECT_AT((Point{1.8, 1.8}), SizeOf(hand->Save().One("Box")));
}

// Deliberate: what Alt has done in passing stays done.
TEST_F(ManipulationGestureTest, WithAltItScalesAtOnceAndEscapeKeepsThat)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("r");
    hand->PressAlong(Straight({0.5, 0.5}, {1.3, 1.3}));
    hand->Hold("Alt_L");
    hand->Sync();
    hand->Sync();
    hand->LetGo("Alt_L");
    EXPECT_AT((Point{1.8, 1.8}), SizeOf(hand->Save().One("Box")));
    hand->MoveTo({1.6, 1.6});
    hand->Tap("Escape");
    hand->Release();
    EXPECT_AT((Point{1.8, 1.8}), SizeOf(hand->Save().One("Box")));
    Undo();
    EXPECT_AT((Point{1, 1}), SizeOf(hand->Save().One("Box")));
}

// While the world runs.

TEST_F(ManipulationGestureTest, ABodyIsPulledByTheDragTool)
{
    Lay(Ground);
    hand->Tap("d");
    hand->Do(Play);
    hand->PressAlong(Straight({0, -0.4}, {0, 1}));
    EXPECT_TRUE(WaitForPicture(
        [&] {
            return IsAnyNear({0.15, 0.8}, 1, IsDarkRed);
        }))
        << "it comes along";
    hand->Release();
    EXPECT_TRUE(WaitForPicture([&] { return IsDarkRed(At({0.15, -0.7})); })) << "and falls back";
}

// Nothing pulls at what is part of the background. The drag goes on to those that move.
TEST_F(ManipulationGestureTest, AWeldedBodyIsMovedByTheDragToolWithItsWeld)
{
    Lay(Box);
    hand->Tap("f");
    hand->Click({0.2, 0.2});
    hand->Tap("d");
    SavedScene scene = Drag(Straight({-0.2, 0}, {0.8, 0.5}));
    EXPECT_AT((Point{1, 0.5}), PosOf(scene.One("Box")));
    EXPECT_AT((Point{0.2, 0.2}), scene.One("Fixjoint").Vec("geom0pos"));
    EXPECT_AT((Point{1.2, 0.7}), scene.One("Fixjoint").Vec("geom1pos"));
    Undo();
    scene = hand->Save();
    EXPECT_AT((Point{0, 0}), PosOf(scene.One("Box")));
    EXPECT_AT((Point{0.2, 0.2}), scene.One("Fixjoint").Vec("geom1pos"));
}

TEST_F(ManipulationGestureTest, DraggingTheOneSelectedBodyOfARunningWorldGrabsIt)
{
    Lay(Ground);
    hand->Click({0, -0.5});
    hand->Do(Play);
    hand->PressAlong(Straight({0, -0.4}, {0, 1}));
    // Moved it would hang there, suspended and unturned; the grip turns it as it swings.
    EXPECT_TRUE(WaitForPicture([&] { return IsAnyNear({0.15, 0.8}, 1, IsDarkRed); }));
    hand->Release();
    EXPECT_TRUE(WaitForPicture([&] { return IsDarkRed(At({0.15, -0.7})); }));
    // No undo of it: the one before it is the scene's.
    hand->Tap("space");
    EXPECT_EQ("Plane Box", Kinds(hand->Save()));
}

TEST_F(ManipulationGestureTest, CtrlDragInARunningWorldStopsItAndClones)
{
    Lay(Ground);
    hand->Click({0, -0.5});
    hand->Tap("x"); // with the sketch tool it would be grabbed
    hand->Do(Play);
    hand->Hold("Control_L");
    hand->Drag(Straight({0, -0.4}, {1.5, 1}));
    hand->LetGo("Control_L");
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Plane Box Box", Kinds(scene));
    EXPECT_NEAR(0.9, PosOf(scene.All("Box")[1]).y, 0.1) << "it does not fall";
}

TEST_F(ManipulationGestureTest, TheRightButtonTurnsWhatTheDragToolHolds)
{
    Lay(Ground);
    hand->Tap("d");
    hand->Do(Play);
    hand->PressAlong(Straight({0, -0.4}, {0, 0.8}));
    ASSERT_TRUE(WaitForPicture([&] { return IsAnyNear({0.1, 0.7}, 1, IsDarkRed); }));
    hand->Press(test::Hand::Right);
    hand->MoveTo({-1.5, 1.2}); // the grip stays where it is, and the body turns
    const auto isTurned = [&]
    {
        hand->Sync();
        const double angle = AngleOf(hand->Save().One("Box"));
        return std::abs(angle) > 20;
    };
    EXPECT_TRUE(test::WaitFor(isTurned));
    hand->Release(test::Hand::Right);
    hand->Release();
}

TEST_F(ManipulationGestureTest, ATurnSelectsWhatItBeginsOn)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    hand->Drag({{1.4, 0}, {1.38, 0.1}, {1.3, 0.3}, {1.1, 0.4}}, test::Hand::Right);
    const SavedScene scene = hand->Save();
    EXPECT_EQ("2", scene.Group("selected"));
    EXPECT_NEAR(0, AngleOf(scene.All("Box")[0]), 0.001);
    EXPECT_GT(AngleOf(scene.All("Box")[1]), 30);
}

TEST_F(ManipulationGestureTest, ADragOffBodiesIsABrushStrokeForToolsThatOnlyClick)
{
    hand->Tap("h");
    std::vector<Point> circle = Round({0, 0}, 0.8, 40);
    circle.push_back(circle.front());
    hand->Drag(circle);
    EXPECT_EQ("Polygon", Kinds(hand->Save()));
    hand->Drag(Straight({0, 0}, {0.5, 0.25}));
    EXPECT_AT((Point{0.5, 0.25}), PosOf(hand->Save().One("Polygon"))); // and on one a move
}
