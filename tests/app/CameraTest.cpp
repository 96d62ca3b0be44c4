#include "AppFixture.h"

#include "util/Callback.h"

#include <limits>

using math::Vec2;

namespace app
{
namespace
{
using CameraTest = AppFixture;

const float Inf = std::numeric_limits<float>::infinity();

TEST_F(CameraTest, StartsAtTheDefaultView)
{
    EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());
    EXPECT_EQ(150, TheCamera()->GetZoom());
    EXPECT_EQ(1.5f, Camera::GetMinZoom());
    EXPECT_EQ(3000, Camera::GetMaxZoom());
}

TEST_F(CameraTest, HoldsTheZoomThatAScriptSetsToItsRange)
{
    Run("Scene.Camera.zoom = 1.0");
    EXPECT_EQ("1.5", Run("Scene.Camera.zoom"));
    EXPECT_EQ(1.5f, TheCamera()->GetZoom());
    Run("Scene.Camera.zoom = 1.0e6");
    EXPECT_EQ("3000", Run("Scene.Camera.zoom"));
    Run("Scene.Camera.zoom = -20.0");
    EXPECT_EQ("1.5", Run("Scene.Camera.zoom"));
}

TEST_F(CameraTest, ShowsNativeChangesToScripts)
{
    TheCamera()->SetZoom(75);
    TheCamera()->SetPan(Vec2(2, -3));
    EXPECT_EQ("75", Run("Scene.Camera.zoom"));
    EXPECT_EQ("[2, -3]", Run("Scene.Camera.pan"));
}

util::String Setting(const char* name)
{
    return Scene::GetInstancePtr()->GetCamera()->GetVariable(name)->ToExpression()->ToCode();
}

TEST_F(CameraTest, FollowsFormulasFrameByFrame)
{
    Run("k = 10.0; Scene.Camera.zoom = { k }; Scene.Camera.pan = { [k, 1.0] }");
    for (const char* value : {"20.0", "30.0", "40.0"})
    {
        Run(util::String("k = ") + value);
        Parser()->Update();
        App::GetInstancePtr()->Update(0.01f);
        EXPECT_EQ(util::FromString<float>(value), TheCamera()->GetZoom());
        EXPECT_EQ(Vec2(util::FromString<float>(value), 1), TheCamera()->GetPan());
        EXPECT_EQ("Scene.Camera.zoom = {k}", Setting("zoom"));
        EXPECT_EQ("Scene.Camera.pan = {[k, 1.0]}", Setting("pan"));
    }
    // One that leaves the range is held there, and stays.
    Run("k = 1.0");
    Parser()->Update();
    EXPECT_EQ(1.5f, TheCamera()->GetZoom());
    EXPECT_EQ("Scene.Camera.zoom = {k}", Setting("zoom"));
}

TEST_F(CameraTest, ReplacesTheFormulaOfWhatIsSetNativelyAndNoOther)
{
    Run("k = 10.0; Scene.Camera.zoom = { k }; Scene.Camera.pan = { [k, 1.0] }");
    TheCamera()->PanView(Vec2(10, 0));
    Parser()->Update();
    EXPECT_EQ("Scene.Camera.zoom = {k}", Setting("zoom"));
    EXPECT_EQ("Scene.Camera.pan = [9.0, 1.0]", Setting("pan"));
    Run("Scene.Camera.pan = { [k, 1.0] }");
    TheCamera()->SetZoom(5000);
    EXPECT_EQ("Scene.Camera.zoom = 3000.0", Setting("zoom"));
    EXPECT_EQ("Scene.Camera.pan = {[k, 1.0]}", Setting("pan"));
    TheCamera()->Reset();
    EXPECT_EQ("Scene.Camera.pan = [0.0, 0.0]", Setting("pan"));
}

TEST_F(CameraTest, WritesBackAPlainValueThatWasHeldToTheRange)
{
    Run("Scene.Camera.zoom = 1.0");
    EXPECT_EQ("Scene.Camera.zoom = 1.5", Setting("zoom"));
    Run("Scene.Camera.zoom = 1.0e9");
    EXPECT_EQ("Scene.Camera.zoom = 3000.0", Setting("zoom"));
}

TEST_F(CameraTest, CallsWhoWaitsForAChange)
{
    int zooms = 0, pans = 0;
    const util::SharedPtr<util::Pointee> owner = QUIB_NEW util::Pointee;
    const auto attrib = [](const char* name) { return TheCamera()->GetVariable(name); };
    util::DynamicCast<script::TAttrib<float>>(attrib("zoom"))
        ->AddChangeCallback(QUIB_NEW util::Callback([&zooms] { ++zooms; }, owner.get()));
    util::DynamicCast<script::TAttrib<Vec2>>(attrib("pan"))
        ->AddChangeCallback(QUIB_NEW util::Callback([&pans] { ++pans; }, owner.get()));
    TheCamera()->SetZoom(20);
    TheCamera()->SetZoom(20);
    EXPECT_EQ(1, zooms);
    Run("Scene.Camera.zoom = 30.0");
    EXPECT_EQ(2, zooms);
    TheCamera()->SetPan(Vec2(1, 1));
    EXPECT_EQ(1, pans);
    TheCamera()->Reset();
    EXPECT_EQ(3, zooms);
    EXPECT_EQ(2, pans);
}

TEST_F(CameraTest, ZoomsByNotches)
{
    Run("App.GUI.zoomFactor = 0.5");
    TheCamera()->SetZoom(100);
    TheCamera()->SetPan(Vec2(3, 4));
    TheCamera()->ZoomView(2);
    EXPECT_FLOAT_EQ(200, TheCamera()->GetZoom());
    EXPECT_EQ(Vec2(3, 4), TheCamera()->GetPan());
    TheCamera()->ZoomView(-4);
    EXPECT_FLOAT_EQ(50, TheCamera()->GetZoom());
    TheCamera()->ZoomView(100);
    EXPECT_EQ(3000, TheCamera()->GetZoom());
    TheCamera()->ZoomView(-100);
    EXPECT_EQ(1.5f, TheCamera()->GetZoom());
    // A zoom that is no number is none.
    Run("App.GUI.zoomFactor = +inf");
    TheCamera()->ZoomView(1);
    EXPECT_EQ(1.5f, TheCamera()->GetZoom());
    Run("App.GUI.zoomFactor = 0.2");
}

TEST_F(CameraTest, ZoomsAroundAPlaceThatKeepsShowingTheSamePoint)
{
    TheCamera()->SetPan(Vec2(3, 4));
    for (float delta : {1.0f, -3.0f, 40.0f})
    {
        const Vec2 place(100, 50), before = TheCamera()->GUIToWorld(place);
        TheCamera()->ZoomView(delta, place);
        EXPECT_NEAR(before.x, TheCamera()->GUIToWorld(place).x, 1e-3f) << delta;
        EXPECT_NEAR(before.y, TheCamera()->GUIToWorld(place).y, 1e-3f) << delta;
    }
    EXPECT_EQ(3000, TheCamera()->GetZoom());
}

TEST_F(CameraTest, IsWhereItIsHeading)
{
    TheCamera()->SetPan(Vec2(3, 4));
    TheCamera()->SetZoom(20);
    EXPECT_EQ(TheCamera()->WorldToGUI(), TheCamera()->WorldToGUITarget());
}

TEST_F(CameraTest, RefusesAViewFromAScriptThatIsNotFinite)
{
    TheCamera()->SetPan(Vec2(1, 2));
    TheCamera()->SetZoom(100);
    for (const char* code : {"Scene.Camera.zoom = +inf", "Scene.Camera.pan = [0.0, -inf]",
                             "Scene.Camera.zoom = { math.divide(0.0, 0.0) }",
                             "Scene.Camera.pan = { [math.divide(0.0, 0.0), 0.0] }"})
    {
        SCOPED_TRACE(code);
        test::LogCapture log(logging::LogWarning);
        Run(code);
        EXPECT_TRUE(log.Has(" was bound to bad type")) << log.Text();
        // One burst: the old value stands where the bad one was.
        log.Clear();
        Parser()->Update();
        Parser()->Update();
        EXPECT_TRUE(log.Lines().empty()) << log.Text();
        EXPECT_EQ(Vec2(1, 2), TheCamera()->GetPan());
        EXPECT_EQ(100, TheCamera()->GetZoom());
    }
}

TEST_F(CameraTest, IgnoresANativeViewThatIsNotFinite)
{
    TheCamera()->SetPan(Vec2(1, 2));
    TheCamera()->SetZoom(100);
    TheCamera()->SetPan(Vec2(Inf, 0));
    TheCamera()->SetZoom(std::numeric_limits<float>::quiet_NaN());
    math::Mat3 bad;
    bad[0][2] = Inf;
    TheCamera()->SetGUIToWorld(bad);
    TheCamera()->SetWorldToGUI(bad);
    TheCamera()->SetWorldToGUI(math::Mat3::Scale2D(Vec2(0, 0)));
    EXPECT_EQ(Vec2(1, 2), TheCamera()->GetPan());
    EXPECT_EQ(100, TheCamera()->GetZoom());
}

TEST_F(CameraTest, PutsThePanInTheMiddleAndTurnsY)
{
    const Vec2 middle = gui::GUI::GetInstancePtr()->GetSize() * 0.5f;
    TheCamera()->SetPan(Vec2(3, -2));
    TheCamera()->SetZoom(100);
    EXPECT_EQ(middle, TheCamera()->WorldToGUI(Vec2(3, -2)));
    EXPECT_EQ(middle + Vec2(100, -200), TheCamera()->WorldToGUI(Vec2(4, 0)));
    EXPECT_EQ(Vec2(1, -2), TheCamera()->GUIToWorldNormal(Vec2(100, 200)));
    const Vec2 back = TheCamera()->GUIToWorld(TheCamera()->WorldToGUI(Vec2(0.5f, 0.25f)));
    EXPECT_NEAR(0.5f, back.x, 1e-4f);
    EXPECT_NEAR(0.25f, back.y, 1e-4f);
}

TEST_F(CameraTest, TakesItsViewFromAMatrix)
{
    TheCamera()->SetPan(Vec2(5, 6));
    TheCamera()->SetZoom(64);
    const math::Mat3 toWorld = TheCamera()->GUIToWorld(), toGUI = TheCamera()->WorldToGUI();
    TheCamera()->Reset();
    TheCamera()->SetGUIToWorld(toWorld);
    EXPECT_NEAR(5, TheCamera()->GetPan().x, 1e-4f);
    EXPECT_NEAR(6, TheCamera()->GetPan().y, 1e-4f);
    EXPECT_NEAR(64, TheCamera()->GetZoom(), 1e-3f);
    TheCamera()->Reset();
    TheCamera()->SetWorldToGUI(toGUI);
    EXPECT_NEAR(5, TheCamera()->GetPan().x, 1e-4f);
    EXPECT_NEAR(64, TheCamera()->GetZoom(), 1e-3f);
}

TEST_F(CameraTest, MovesThePictureByThePannedDistance)
{
    TheCamera()->SetZoom(100);
    const Vec2 before = TheCamera()->WorldToGUI(Vec2(0, 0));
    TheCamera()->PanView(Vec2(30, -40));
    const Vec2 moved = TheCamera()->WorldToGUI(Vec2(0, 0)) - before;
    EXPECT_NEAR(30, moved.x, 1e-3f);
    EXPECT_NEAR(-40, moved.y, 1e-3f);
}

TEST_F(CameraTest, FollowsTheTrackedGroup)
{
    const auto circle = Add("Scene.addCircle { pos = [1.0, 1.0] }");
    TheCamera()->SetPan(Vec2(10, 10));
    TheCamera()->SetTrackedGroup(QUIB_NEW Group(circle));
    circle->GetBody()->SetPos(Vec2(3, 0));
    circle->GetBody()->ApplyPoseChange();
    TheCamera()->Update(0.01f);
    EXPECT_EQ(Vec2(12, 9), TheCamera()->GetPan());
    circle->GetBody()->SetPos(Vec2(4, 0));
    circle->GetBody()->ApplyPoseChange();
    TheCamera()->Update(0.01f);
    EXPECT_EQ(Vec2(13, 9), TheCamera()->GetPan());
}

TEST_F(CameraTest, KeepsFollowingAGroupThatItIsGivenAgain)
{
    const auto box = Add("Scene.addBox { }");
    const GroupPtr group = QUIB_NEW Group(box);
    TheCamera()->SetTrackedGroup(group);
    TheScene()->Transform(group, math::Mat2D::Translation(Vec2(3, 1)));
    TheCamera()->SetTrackedGroup(group);
    TheCamera()->Update(0.01f);
    EXPECT_EQ(Vec2(3, 1), TheCamera()->GetPan());
}

TEST_F(CameraTest, StopsFollowingWhatIsGone)
{
    const auto circle = Add("Scene.addCircle { }");
    const GroupPtr group = QUIB_NEW Group(TrackedName);
    group->Add(circle);
    TheScene()->AddGroup(group);
    EXPECT_EQ(group, TheCamera()->GetTrackedGroup());
    TheScene()->RemoveEntity(circle);
    TheCamera()->Update(0.01f);
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    EXPECT_FALSE(TheScene()->GetGroupByName(TrackedName));
}

TEST_F(CameraTest, StopsFollowingAGroupWithoutANameOnceItsEntitiesAreGone)
{
    const auto box = Add("Scene.addBox { tracked = true }");
    ASSERT_TRUE(TheCamera()->GetTrackedGroup());
    TheScene()->RemoveEntity(box);
    TheCamera()->Update(0.01f);
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
}

TEST_F(CameraTest, StopsFollowingWhatHasItsMiddleNowhere)
{
    // The box of both is finite, and the sum of its corners is not.
    const GroupPtr group = GroupOf(
        {Add("Scene.addBox { pos = [2.0e38, 0.0] }"), Add("Scene.addBox { pos = [3.0e38, 0.0] }")});
    ASSERT_TRUE(group->CalcFiniteAABB().IsFinite());
    TheCamera()->SetPan(Vec2(4, 5));
    TheCamera()->SetTrackedGroup(group);
    TheCamera()->Update(0.01f);
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    EXPECT_EQ(Vec2(4, 5), TheCamera()->GetPan());
}

TEST_F(CameraTest, TakesAReplacedTrackedGroupOutOfTheScene)
{
    const GroupPtr first = QUIB_NEW Group(TrackedName), second = QUIB_NEW Group(TrackedName);
    first->Add(Add("Scene.addCircle { }"));
    second->Add(Add("Scene.addCircle { }"));
    TheScene()->AddGroup(first);
    TheScene()->AddGroup(second);
    EXPECT_EQ(second, TheCamera()->GetTrackedGroup());
    EXPECT_EQ(second, TheScene()->GetGroupByName(TrackedName));
    EXPECT_EQ(2u, TheScene()->GetGroups().size()); // the selection and the second
}

TEST_F(CameraTest, StopsFollowingAtAReset)
{
    TheCamera()->SetTrackedGroup(QUIB_NEW Group(Add("Scene.addCircle { }")));
    TheCamera()->SetZoom(20);
    TheCamera()->Reset();
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    EXPECT_EQ(150, TheCamera()->GetZoom());
}

TEST_F(CameraTest, ConvertsWithAScaleThatNoScriptCanBreak)
{
    // What was written stays, what is used does not leave 0.1 to 10.
    Run("GUI.scale = 0.0");
    EXPECT_TRUE(math::IsFinite(App::GetInstancePtr()->GetPixelSize()));
    EXPECT_NO_THROW(App::GetInstancePtr()->Update(0));
    EXPECT_EQ("0", Run("GUI.scale"));
    Run("GUI.scale = 1.0");
}
}
}
