// The tools that draw one kind of thing, and those that fasten, by the hand.
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
class ShapeGestureTest : public test::Desk
{
protected:
    SavedScene Drag(const std::vector<Point>& points)
    {
        hand->Drag(points);
        return hand->Save();
    }
    /// What an undo leaves of it.
    std::string KindsAfterUndo()
    {
        hand->Tap("Control_L", "z");
        return Kinds(hand->Save());
    }
    static double Degrees(double radians) { return radians * 180 / M_PI; }
};

const Point FromCorner = {-1.5, 1.2}, ToCorner = {0.5, 0.2};
}

TEST_F(ShapeGestureTest, ABoxReachesFromPressToRelease)
{
    hand->Tap("x");
    const SavedScene scene = Drag(Straight(FromCorner, ToCorner));
    ASSERT_EQ("Box", Kinds(scene));
    EXPECT_AT((Point{-0.5, 0.7}), scene.One("Box").Vec("pos"));
    EXPECT_AT((Point{2, 1.0001}), scene.One("Box").Vec("size"));
    EXPECT_EQ("", KindsAfterUndo());
}

TEST_F(ShapeGestureTest, WithShiftABoxIsASquareOfTheLargerExtent)
{
    hand->Tap("x");
    hand->Hold("Shift_L");
    const SavedScene scene = Drag(Straight(FromCorner, ToCorner));
    EXPECT_AT((Point{2, 2}), scene.One("Box").Vec("size"));
    EXPECT_AT((Point{-0.5, 0.2}), scene.One("Box").Vec("pos")) << "to the right and down";
}

TEST_F(ShapeGestureTest, ABoxDrawnAroundBodiesSelectsThem)
{
    Lay(TwoBoxes);
    hand->Tap("x");
    EXPECT_EQ("Box Box", Kinds(Drag(Straight({-1.7, 0.7}, {-0.3, -0.7}))));
    hand->Tap("Delete");
    EXPECT_AT((Point{1, 0}), hand->Save().One("Box").Vec("pos"));
}

TEST_F(ShapeGestureTest, ABoxBegunOnABodyMovesThatInstead)
{
    Lay(Box);
    hand->Tap("x");
    const SavedScene scene = Drag(Straight({0, 0}, {1, 0.5}));
    ASSERT_EQ("Box", Kinds(scene));
    EXPECT_AT((Point{1, 0.5}), scene.One("Box").Vec("pos"));
}

TEST_F(ShapeGestureTest, WithDrawInsideItIsDrawnOnTheBody)
{
    Lay(Box);
    hand->Do(DrawInside);
    for (const char* tool : {"x", "c", "p"})
    {
        hand->Tap(tool);
        hand->Drag(Straight({0, 0}, {0.3, 0.25}));
    }
    EXPECT_EQ("Box Box Circle Plane", Kinds(hand->Save()));
}

TEST_F(ShapeGestureTest, ABoxWithoutHeightIsNone)
{
    hand->Tap("x");
    EXPECT_EQ("", Kinds(Drag(Straight({-1, 0}, {1, 0}))));
}

TEST_F(ShapeGestureTest, ACircleHasItsCentreAtThePressAndItsRimAtTheRelease)
{
    hand->Tap("c");
    const SavedScene scene = Drag(Straight({-0.5, 0.25}, {0.1, -0.55}));
    ASSERT_EQ("Circle", Kinds(scene));
    EXPECT_AT((Point{-0.5, 0.25}), scene.One("Circle").Vec("pos"));
    EXPECT_NEAR(1.0, scene.One("Circle").Has("radius") ? scene.One("Circle").Number("radius") : 1.0,
                0.015);
    EXPECT_EQ("", KindsAfterUndo());
}

TEST_F(ShapeGestureTest, APlaneLooksFromPressToRelease)
{
    hand->Tap("p");
    const SavedScene scene = Drag(Straight({0, -0.5}, {0.3, 0.5}));
    ASSERT_EQ("Plane", Kinds(scene));
    EXPECT_NEAR(Degrees(std::atan2(1, 0.3)), Degrees(scene.One("Plane").Number("angle")), 1);
    EXPECT_EQ("", KindsAfterUndo());
}

TEST_F(ShapeGestureTest, WithShiftAPlaneStandsAtAMultipleOf15Degrees)
{
    hand->Tap("p");
    hand->Hold("Shift_R");
    const SavedScene scene = Drag(Straight({0, -0.5}, {0.3, 0.5}));
    EXPECT_NEAR(75, Degrees(scene.One("Plane").Number("angle")), 0.001);
}

TEST_F(ShapeGestureTest, EscapeDropsAShape)
{
    for (const char* tool : {"x", "c", "p", "b", "n", "s"})
    {
        SCOPED_TRACE(tool);
        Lay(Nothing);
        hand->Tap(tool);
        // Shift keeps the chain from being laid.
        hand->Hold("Shift_L");
        hand->PressAlong(Straight({-0.5, -0.5}, {0.5, 0.5}));
        hand->Tap("Escape");
        hand->Release();
        hand->LetGo("Shift_L");
        EXPECT_EQ("", Kinds(hand->Save()));
    }
}

TEST_F(ShapeGestureTest, ChainsOnTheBackgroundEndFree)
{
    hand->Tap("n");
    const SavedScene scene = Drag(Straight({-1.5, 1}, {1.5, 1}));
    const size_t links = size_t(3 / (2 * 0.4 * ScreenCM));
    EXPECT_EQ(links, scene.Count("Circle"));
    EXPECT_EQ(links, scene.Count("Hinge"));
    EXPECT_EQ("", KindsAfterUndo()) << "the whole chain is one step";
}

TEST_F(ShapeGestureTest, ChainsBetweenBodiesAreBridges)
{
    Lay(TwoBoxes);
    hand->Tap("n");
    const SavedScene scene = Drag(Straight({-0.9, 0.1}, {0.9, 0.1}));
    EXPECT_GT(scene.Count("Circle"), 1u);
    EXPECT_EQ(scene.Count("Circle") + 1, scene.Count("Hinge"));
    // The two at the ends hold the boxes.
    int ends = 0;
    for (const SavedEntity& hinge : scene.All("Hinge"))
        for (const char* end : {"geom0", "geom1"})
            for (const SavedEntity& box : scene.All("Box"))
                ends += hinge.Value(end) == box.Value("geomID");
    EXPECT_EQ(2, ends);
}

TEST_F(ShapeGestureTest, WithShiftTheMouseGoesAheadOfTheChain)
{
    hand->Tap("n");
    hand->Hold("Shift_L");
    hand->PressAlong(Straight({-1.5, 1}, {-1.5, -1}));
    hand->MoveTo({1.5, 1});
    hand->LetGo("Shift_L");
    hand->Release();
    const SavedScene scene = hand->Save();
    EXPECT_LT(5u, scene.Count("Circle")) << "laid at the release";
    for (const SavedEntity& link : scene.All("Circle"))
        EXPECT_NEAR(1, link.Vec("pos").y, 0.02) << "straight to where the mouse is then";
}

TEST_F(ShapeGestureTest, AChainTooShortForALinkIsNothing)
{
    hand->Tap("n");
    EXPECT_EQ("", Kinds(Drag(Straight({0, 0}, {0.2, 0}, 0.05))));
}

// What fastens.

TEST_F(ShapeGestureTest, AClickOnABodyHingesWeldsOrTraces)
{
    const struct
    {
        const char* key;
        const char* kind;
    } cases[] = {{"h", "Hinge"}, {"f", "Fixjoint"}, {"e", "Pen"}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.kind);
        Lay(Stacked);
        hand->Tap(c.key);
        hand->Click({0.2, 0.2});
        const SavedScene scene = hand->Save();
        EXPECT_EQ(std::string("Box Box ") + c.kind, Kinds(scene));
        EXPECT_EQ("Box Box", KindsAfterUndo());

        hand->Click({2.5, 2});
        EXPECT_EQ("Box Box", Kinds(hand->Save())) << "on the background there is nothing to fasten";
    }
}

TEST_F(ShapeGestureTest, AHingeOnTwoBodiesJoinsThem)
{
    Lay(Stacked);
    hand->Tap("h");
    hand->Click({-0.3, 0.3}); // elsewhere: the second click at a place in short time is none
    const SavedEntity hinge = hand->Save().One("Hinge");
    EXPECT_NE(hinge.Value("geom0"), hinge.Value("geom1"));
    std::string ids;
    for (const SavedEntity& box : hand->Save().All("Box"))
        ids += box.Value("geomID") + ",";
    for (const char* end : {"geom0", "geom1"})
        EXPECT_NE(std::string::npos, ids.find(hinge.Value(end) + ",")) << ids;
}

TEST_F(ShapeGestureTest, ADoubleClickMakesOneHinge)
{
    Lay(Box);
    hand->Tap("h");
    hand->Click({-0.2, -0.1});
    hand->Click({-0.2, -0.1});
    EXPECT_EQ("Box Hinge", Kinds(hand->Save()));
}

TEST_F(ShapeGestureTest, ASpringReachesFromPressToRelease)
{
    Lay(TwoBoxes);
    hand->Tap("s");
    const SavedScene scene = Drag(Straight({-1, 0.2}, {1, 0.2}));
    ASSERT_EQ("Box Box Spring", Kinds(scene));
    EXPECT_NEAR(2, scene.One("Spring").Number("length"), 0.015);
    EXPECT_NE(scene.One("Spring").Value("geom0"), scene.One("Spring").Value("geom1"));
    EXPECT_EQ("Box Box", KindsAfterUndo());
}

TEST_F(ShapeGestureTest, ASpringMayEndOnTheBackground)
{
    Lay(Box);
    hand->Tap("s");
    EXPECT_EQ("Box Spring", Kinds(Drag(Straight({0, 0.2}, {1.5, 1.2}))));
}

// Keys that choose a tool for good, or lend it.

TEST_F(ShapeGestureTest, AToolKeyThatIsTappedStays)
{
    hand->Tap("c");
    hand->Drag(Straight({-1.5, 0}, {-1.2, 0}));
    hand->Drag(Straight({1.5, 0}, {1.2, 0}));
    EXPECT_EQ("Circle Circle", Kinds(hand->Save()));
}

TEST_F(ShapeGestureTest, AToolKeyThatIsHeldLendsItsToolUntilItGoesUp)
{
    Lay(NoPatience);
    hand->Tap("x");
    hand->Hold("c");
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    hand->Drag(Straight({-1.5, 0}, {-1.2, 0.1}));
    hand->Drag(Straight({1.5, 0}, {1.2, 0.1}));
    // Ctrl S in between would be no tool key.
    EXPECT_EQ("Circle Circle", Kinds(hand->Save()));
    hand->LetGo("c");
    hand->Drag(Straight({-0.5, 1}, {0.5, 1.5}));
    EXPECT_EQ("Circle Circle Box", Kinds(hand->Save()));
}

TEST_F(ShapeGestureTest, ASecondToolKeyWaitsForTheFirstToGoUp)
{
    Lay(NoPatience);
    hand->Hold("c");
    hand->Tap("x");
    hand->Drag(Straight({-1.5, 0}, {-1.2, 0.1}));
    EXPECT_EQ("Circle", Kinds(hand->Save()));
    hand->LetGo("c");
    hand->Tap("x");
    hand->Drag(Straight({-0.5, 1}, {0.5, 1.5}));
    EXPECT_EQ("Circle Box", Kinds(hand->Save()));
}

TEST_F(ShapeGestureTest, ToolKeysMeanNothingTogetherWithCtrl)
{
    hand->Tap("x");
    for (const char* key : {"Control_L", "Alt_L"})
        hand->Tap(key, "p");
    hand->Drag(Straight({-0.5, 1}, {0.5, 1.5}));
    EXPECT_EQ("Box", Kinds(hand->Save()));
}
