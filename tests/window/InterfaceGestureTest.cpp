// The shortcuts, the wheel, clicks and their tolerances, and what comes in between: another size, another
// window, a button that goes up elsewhere.
#include "window/Desk.h"

#include <cmath>
#include <thread>

using test::Hand;
using test::Point;
using test::Round;
using test::SavedEntity;
using test::SavedScene;
using test::Straight;

namespace
{
class InterfaceGestureTest : public test::Desk
{
protected:
    static bool IsRed(const Color& c) { return c.r > 100 && c.g < 40 && c.b < 40; }
    std::string Selected() { return hand->Save().Group("selected"); }
    /// How wide the bodies are, from back to front.
    static std::string Widths(const SavedScene& scene)
    {
        std::string widths;
        for (const SavedEntity& entity : scene.entities)
            widths += std::to_string(std::lround(entity.Vec("size").x));
        return widths;
    }
    /// A circle somewhere: something to undo.
    void MakeCircle(Point centre)
    {
        hand->Tap("c");
        hand->Drag(Straight(centre, centre + Point{0.3, 0}));
    }
    /// Whether the last look shows MakeCircle's at (x, 0): its border, as any colour may be inside.
    bool HasCircle(double x) const
    {
        const Color inside = At({x, 0.1}), outside = At({x, 0.6});
        return std::abs(inside.r - outside.r) + std::abs(inside.g - outside.g) +
                   std::abs(inside.b - outside.b) >
               40;
    }
    static Point PosOf(const SavedEntity& entity)
    {
        return entity.Has("pos") ? entity.Vec("pos") : Point{0, 0};
    }
};
}

TEST_F(InterfaceGestureTest, TheWheelZoomsAroundTheMouse)
{
    const Point mouse = {1, 0.5};
    hand->MoveTo(mouse);
    hand->Wheel(1);
    SavedScene scene = hand->Save();
    const double zoom = 100 * std::pow(2, 0.2);
    EXPECT_NEAR(zoom, scene.Number("Scene.Camera.zoom"), 0.01);
    // Where the mouse was, (100, -50) pixels from the middle, is the same point still.
    const Point pan = scene.Vec("Scene.Camera.pan");
    EXPECT_AT(mouse, (pan + (1 / zoom) * Point{100, 50}));
    hand->Wheel(-1);
    scene = hand->Save();
    EXPECT_NEAR(100, scene.Number("Scene.Camera.zoom"), 0.01);
    EXPECT_AT((Point{0, 0}), scene.Vec("Scene.Camera.pan"));
}

TEST_F(InterfaceGestureTest, NoNotchIsLostHoweverFastTheyCome)
{
    hand->Wheel(-20);
    hand->Wheel(35);
    EXPECT_NEAR(800, hand->Save().Number("Scene.Camera.zoom"), 0.1);
    hand->Wheel(300);
    EXPECT_NEAR(3000, hand->Save().Number("Scene.Camera.zoom"), 0.1);
    hand->Wheel(-300);
    EXPECT_NEAR(1.5, hand->Save().Number("Scene.Camera.zoom"), 0.001);
}

TEST_F(InterfaceGestureTest, TheWheelWithCtrlIsUndoAndRedoOneStepForEachNotch)
{
    for (double x : {-2.0, -1.0, 0.0, 1.0})
        MakeCircle({x, 0});
    hand->Hold("Control_L");
    hand->Wheel(-3);
    hand->LetGo("Control_L");
    EXPECT_EQ(1u, hand->Save().Count("Circle"));
    hand->Hold("Control_R");
    hand->Wheel(2);
    hand->LetGo("Control_R");
    const SavedScene scene = hand->Save();
    EXPECT_EQ(3u, scene.Count("Circle"));
    EXPECT_EQ(100, scene.Number("Scene.Camera.zoom"));
}

TEST_F(InterfaceGestureTest, TheWheelWithShiftBringsTheSelectionToTheFrontOrTheBack)
{
    Lay(Stacked);
    EXPECT_EQ("21", Widths(hand->Save()));
    hand->Click({0.8, 0.8}); // the large one, behind
    hand->Hold("Shift_L");
    hand->Wheel(1);
    EXPECT_EQ("12", Widths(hand->Save()));
    hand->Wheel(-1);
    hand->LetGo("Shift_L");
    EXPECT_EQ("21", Widths(hand->Save()));
}

TEST_F(InterfaceGestureTest, SpacePlaysAndPausesAndUndoIsTheReset)
{
    Lay(Ground);
    hand->Click({0, -0.5});
    hand->Drag(Straight({0, -0.5}, {0, 1.5}));
    ASSERT_TRUE(WaitForPicture([&] { return IsRed(At({0, 1.5})); }));
    hand->Tap("space");
    ASSERT_TRUE(WaitForPicture([&] { return IsRed(At({0, -0.5})) && !IsRed(At({0, 1.5})); }));
    hand->Tap("space");
    const Point fallen = PosOf(hand->Save().One("Box"));
    EXPECT_LT(fallen.y, 0.5);
    EXPECT_AT(fallen, PosOf(hand->Save().One("Box"))) << "paused";
    hand->Tap("Control_L", "z");
    EXPECT_AT((Point{0, 1.5}), PosOf(hand->Save().One("Box")));
}

TEST_F(InterfaceGestureTest, SpaceThatIsHeldIsPressedOnce)
{
    Lay(Ground);
    hand->Click({0, -0.5});
    hand->Drag(Straight({0, -0.5}, {0, 1.5}));
    hand->Hold("space");
    // The first repeat comes after half a second, the next ones 30 ms apart.
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    hand->LetGo("space");
    hand->Tap("space");
    EXPECT_LT(PosOf(hand->Save().One("Box")).y, 0.5) << "it ran all the time";
    hand->Tap("Control_L", "z");
    EXPECT_AT((Point{0, 1.5}), PosOf(hand->Save().One("Box"))) << "one step of undo";
}

TEST_F(InterfaceGestureTest, CopiesAreLaidDownWhereTheMouseIs)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("Control_L", "c");
    hand->MoveTo({1.5, 1});
    hand->Tap("Control_L", "v");
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Box Box", Kinds(scene));
    EXPECT_AT((Point{0, 0}), PosOf(scene.All("Box")[0]));
    EXPECT_AT((Point{1.5, 1}), PosOf(scene.All("Box")[1]));
    EXPECT_EQ(scene.All("Box")[1].Value("entityID"), scene.Group("selected"));
    hand->Tap("Control_L", "z");
    EXPECT_EQ("Box", Kinds(hand->Save()));
}

TEST_F(InterfaceGestureTest, CopiesGoToAnotherQuib)
{
    Lay(Box);
    hand->Click({0, 0});
    hand->Tap("Control_L", "c");
    hand->Sync();
    {
        const test::WorkDir dir;
        dir.Write("autoexec.cfg", test::HandSettings({}));
        dir.Write("config.cfg", "System.resolution = [640, 480]");
        dir.Write("scenes/welcome.qib", "Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0");
        test::Program another(dir, Server().Display());
        ASSERT_TRUE(another.WaitUntilItSays("Running program...")) << another.Err();
        Hand second(Server(), dir, another); // at its window, which lies over the first one
        second.Tap("space");                 // a scene that was loaded runs
        second.MoveTo({1.5, 1});
        second.Tap("Control_L", "v");
        EXPECT_AT((Point{1.5, 1}), PosOf(second.Save().One("Box")));
    }
    hand->LookAgain();
}

TEST_F(InterfaceGestureTest, CtrlASelectsAllAndDeleteErasesTheSelection)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    EXPECT_EQ("1, 2", Selected());
    hand->Tap("Delete");
    EXPECT_EQ("", Kinds(hand->Save()));
    hand->Tap("Control_L", "z");
    EXPECT_EQ("Box Box", Kinds(hand->Save()));
    hand->Tap("Control_L", "y");
    EXPECT_EQ("", Kinds(hand->Save()));
}

TEST_F(InterfaceGestureTest, CtrlGMakesAGroupThatIsSelectedAsOneAndCtrlUTakesItApart)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    hand->Tap("Control_L", "g");
    hand->Click({0, 2});
    EXPECT_EQ("", Selected());
    hand->Click({1, 0});
    EXPECT_EQ("1, 2", Selected());
    hand->Tap("Control_L", "u");
    hand->Click({0, 2});
    hand->Click({1, 0});
    EXPECT_EQ("2", Selected());
}

TEST_F(InterfaceGestureTest, WithAltAClickPicksOneOutOfItsGroup)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    hand->Tap("Control_L", "g");
    hand->Click({0, 2});
    hand->Hold("Alt_L");
    hand->Click({1, 0});
    hand->LetGo("Alt_L");
    EXPECT_EQ("2", Selected());
}

TEST_F(InterfaceGestureTest, AKeyThatIsNoShortcutWithCtrlDoesNothing)
{
    Lay(TwoBoxes);
    for (const char* key : {"b", "k", "d", "p", "x", "n", "f", "h", "e", "r", "t", "w"})
        hand->Tap("Control_L", key);
    hand->Drag(Straight({-1, 1}, {-1, -1}));
    EXPECT_EQ("Box", Kinds(hand->Save())) << "the sketch tool still";
}

TEST_F(InterfaceGestureTest, HeldCtrlZUndoesMoreThanOnce)
{
    for (double x : {-2.0, -1.0, 0.0, 1.0})
        MakeCircle({x, 0});
    hand->Hold("Control_L");
    hand->Hold("z");
    // Half a second to the first repeat; one press alone would take the last circle only.
    EXPECT_TRUE(WaitForPicture([&] { return !HasCircle(1) && !HasCircle(0); }));
    hand->LetGoOfAll();
}

// Clicks.

TEST_F(InterfaceGestureTest, AClickSelectsAndOneOnTheBackgroundSelectsNothing)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    EXPECT_EQ("1", Selected());
    hand->Click({1, 0});
    EXPECT_EQ("2", Selected());
    hand->Click({0, 1.5});
    EXPECT_EQ("", Selected());
}

TEST_F(InterfaceGestureTest, ClicksWithCtrlAddWithShiftTakeAwayWithBothTurnOver)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    hand->Hold("Control_L");
    hand->Click({1, 0});
    hand->LetGo("Control_L");
    EXPECT_EQ("1, 2", Selected());
    hand->Hold("Shift_L");
    hand->Click({-1, 0});
    hand->LetGo("Shift_L");
    EXPECT_EQ("2", Selected());
    hand->Hold("Control_R");
    hand->Hold("Shift_R");
    hand->Click({-1, 0});
    hand->Click({1, 0});
    hand->LetGo("Shift_R");
    hand->LetGo("Control_R");
    EXPECT_EQ("1", Selected());
}

TEST_F(InterfaceGestureTest, ARightClickSelectsWhatItIsOnAndKeepsASelectionThatItIsIn)
{
    Lay(TwoBoxes);
    hand->Click({1, 0}, Hand::Right);
    EXPECT_EQ("2", Selected());
    hand->Tap("Escape"); // the menu
    hand->Tap("Control_L", "a");
    hand->Click({1, 0}, Hand::Right);
    EXPECT_EQ("1, 2", Selected());
    hand->Tap("Escape");
}

TEST_F(InterfaceGestureTest, WithLeftClickMenusALeftClickKeepsASelectionToo)
{
    Lay(TwoBoxes);
    hand->Tap("Control_L", "a");
    hand->Do(LeftClickMenus);
    hand->Click({1, 0});
    EXPECT_EQ("1, 2", Selected());
    hand->Tap("Escape");
}

TEST_F(InterfaceGestureTest, APressThatMovesLittleIsAClickAndOneThatMovesMoreIsADrag)
{
    Lay(Nothing);
    hand->Tap("c");
    // The tolerance is 3.5 pixels.
    hand->Drag({{-1, 0}, {-0.97, 0}});
    EXPECT_EQ("", Kinds(hand->Save()));
    hand->Drag({{1, 0}, {1.04, 0}});
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Circle", Kinds(scene));
    EXPECT_NEAR(0.04, scene.One("Circle").Number("radius"), 0.001) << "from where the press was";
}

TEST_F(InterfaceGestureTest, ASlowPressIsADragHoweverLittleItMoves)
{
    hand->Tap("c");
    hand->MoveTo({-1, 0});
    hand->Press();
    // Beyond 0.4 seconds it is no click.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    hand->MoveTo({-0.98, 0});
    hand->Release();
    EXPECT_EQ("Circle", Kinds(hand->Save()));
}

TEST_F(InterfaceGestureTest, AQuickPressIsAClickEvenWhereADragWouldBeTaken)
{
    Lay(Box);
    hand->Tap("x");
    hand->Click({0, 0});
    EXPECT_EQ("1", Selected());
}

// What comes in between.

TEST_F(InterfaceGestureTest, AWindowResizedDuringADragLeavesNothingStuck)
{
    hand->Tap("c");
    hand->PressAlong(Straight({0, 0}, {0.5, 0}));
    hand->Resize(600, 440);
    hand->Sync();
    hand->MoveTo({1, 0});
    hand->Release();
    SavedScene scene = hand->Save();
    ASSERT_EQ("Circle", Kinds(scene));
    EXPECT_NEAR(0.5, scene.One("Circle").Number("radius"), 0.02) << "as far as it was drawn";
    // The next gesture is as good as ever.
    Lay(Nothing);
    MakeCircle({0, 0});
    EXPECT_EQ("Circle", Kinds(hand->Save()));
    hand->Resize(640, 480);
    MakeCircle({1, 1});
    scene = hand->Save();
    ASSERT_EQ("Circle Circle", Kinds(scene));
    EXPECT_AT((Point{1, 1}), scene.All("Circle")[1].Vec("pos"));
}

TEST_F(InterfaceGestureTest, AModifierHeldWhileTheFocusGoesElsewhereIsNotStuck)
{
    Lay(TwoBoxes);
    hand->Click({-1, 0});
    for (const char* modifier : {"Control_L", "Shift_L", "Alt_L"})
    {
        SCOPED_TRACE(modifier);
        hand->Hold(modifier);
        hand->Sync();
        const unsigned long other = Server().OpenOtherWindow();
        Server().Focus(other);
        hand->LetGo(modifier); // the other window gets that
        Server().CloseOtherWindow(other);
        hand->LookAgain();
        hand->Click({1, 0});
        EXPECT_EQ("2", Selected()) << "no click with a modifier";
        hand->Click({-1, 0});
    }
}

TEST_F(InterfaceGestureTest, AButtonThatGoesUpOutsideOfTheWindowEndsItsDrag)
{
    hand->Tap("x");
    hand->PressAlong(Straight({-1, 0}, {1, 1}));
    hand->MoveToPixel(900, 600);
    hand->Release();
    hand->Sync();
    hand->MoveTo({0, -1});
    hand->MoveTo({1, -1.5});
    EXPECT_EQ(1u, hand->Save().Count("Box"));
    MakeCircle({-2, -1});
    EXPECT_EQ("Box Circle", Kinds(hand->Save()));
}

TEST_F(InterfaceGestureTest, AnotherButtonDuringADragChangesNothing)
{
    hand->Tap("x");
    hand->PressAlong(Straight({-1, 0}, {0, 0.5}));
    hand->Press(Hand::Right);
    hand->MoveTo({1, 1});
    hand->Release(Hand::Right);
    hand->Press(Hand::Middle);
    hand->Release(Hand::Middle);
    hand->MoveTo({1, 1.2});
    hand->Release();
    const SavedScene scene = hand->Save();
    ASSERT_EQ("Box", Kinds(scene));
    EXPECT_AT((Point{0, 0.6}), scene.One("Box").Vec("pos"));
}
