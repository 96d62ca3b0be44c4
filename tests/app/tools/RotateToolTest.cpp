#include "HandFixture.h"

namespace app
{
namespace
{
const float Degree = math::PIf / 180;

class RotateToolTest : public HandFixture
{
protected:
    static RotateTool& TheTool() { return *TheTools()->Get<RotateTool>(); }
    /// On a circle around the origin.
    static Vec2 At(float degrees, float radius = 1)
    {
        return Vec2(std::cos(degrees * Degree), std::sin(degrees * Degree)) * radius;
    }
    static bool Begin(const Vec2& pos)
    {
        return ToolFixture::Begin(TheTool(), pos, input::MouseRight);
    }
    static bool Drag(const Vec2& from, const Vec2& to)
    {
        return ToolFixture::Drag(TheTool(), Vec2(), from, to, input::MouseRight);
    }
    static bool End() { return ToolFixture::End(TheTool(), Vec2(), Vec2(), input::MouseRight); }
    /// Around the origin, from the first to the last of the angles in degrees.
    static void Turn(const std::vector<float>& degrees)
    {
        Begin(Vec2());
        Drag(Vec2(), At(degrees[0]));
        for (size_t i = 1; i < degrees.size(); ++i)
            Drag(At(degrees[i - 1]), At(degrees[i]));
    }
    static float Degrees(const GeomEntityPtr& entity) { return Make::Radians(entity) / Degree; }
};

TEST_F(RotateToolTest, TurnsTheBodyWithTheMouse)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    EXPECT_TRUE(Begin(Vec2()));
    EXPECT_TRUE(TheTool().IsInUse());
    EXPECT_TRUE(Drag(Vec2(), At(10)));
    EXPECT_NEAR(0, Degrees(box), 1e-3f) << "the event that starts it turns nothing";
    EXPECT_TRUE(Drag(At(10), At(40)));
    EXPECT_NEAR(30, Degrees(box), 1e-3f);
    EXPECT_TRUE(Drag(At(40), At(-10)));
    EXPECT_NEAR(-20, Degrees(box), 1e-3f);
    EXPECT_TRUE(End());
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ("UndoRotate", NextUndo());
    ExpectNear(Vec2(), CenterOf(box));
}

TEST_F(RotateToolTest, ARotationIsUndoneAndRedoneToTheByte)
{
    const GeomEntityPtr a = Make::Box(Vec2(-0.3f, 0)), b = Make::Box(Vec2(0.3f, 0));
    Make::Join<FixJointEntity>(a, b);
    Select({a});
    const util::String before = Save();
    Begin(Vec2(-0.6f, 0));
    Drag(Vec2(-0.6f, 0), At(3));
    Drag(At(3), At(20));
    Drag(At(20), At(33));
    End();
    ExpectUndoAndRedo(before);
}

TEST_F(RotateToolTest, TakesTheRightButtonOnAnEntityOnly)
{
    Make::Box(Vec2());
    EXPECT_FALSE(ToolFixture::Begin(TheTool(), Vec2(), input::MouseLeft));
    EXPECT_FALSE(Begin(Vec2(3, 0)));
    EXPECT_FALSE(TheTool().IsInUse());
}

TEST_F(RotateToolTest, SelectsWhatIsNotSelected)
{
    const GeomEntityPtr a = Make::Box(Vec2()), b = Make::Box(Vec2(3, 0));
    Select({b});
    Begin(Vec2());
    EXPECT_TRUE(TheScene()->IsSelected(a));
    EXPECT_FALSE(TheScene()->IsSelected(b));
}

TEST_F(RotateToolTest, NothingHappensWithinHalfACentimetreOfTheCentre)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Sim()->m_running = true;
    box->GetBody()->SetVel(Vec2(0.001f, 0));
    box->GetBody()->SetAngVel(0.5f);
    Begin(Vec2());
    const float radius = 0.49f * CM();
    for (int i = 0; i < 12; ++i)
        Drag(At(float(i) * 30, radius), At(float(i + 1) * 30, radius));
    EXPECT_NEAR(0, Degrees(box), 1e-3f);
    EXPECT_FALSE(box->GetBody()->IsSuspended());
    EXPECT_EQ(Vec2(0.001f, 0), box->GetBody()->GetVel());
    EXPECT_EQ(0.5f, box->GetBody()->GetAngVel());
    EXPECT_TRUE(End());
    EXPECT_EQ("", NextUndo());
    EXPECT_EQ(0.5f, box->GetBody()->GetAngVel());
}

TEST_F(RotateToolTest, StartsBeyondHalfACentimetre)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(Vec2());
    Drag(Vec2(), At(0, 0.51f * CM()));
    EXPECT_TRUE(box->GetBody()->IsSuspended());
    // From there on it may come as close as it likes.
    Drag(At(0, 0.51f * CM()), At(20, 0.1f));
    EXPECT_NEAR(20, Degrees(box), 0.01f);
}

TEST_F(RotateToolTest, ABreakOffBeforeTheStartDoesNotTurnBackTheWorld)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Sim()->m_running = true;
    box->GetBody()->SetVel(Vec2(1, 0));
    Begin(Vec2());
    Make::Frame(10);
    const float x = CenterOf(box).x;
    EXPECT_GT(x, 0);
    EXPECT_TRUE(TheTool().Disband());
    EXPECT_EQ(x, CenterOf(box).x);
    EXPECT_EQ(Vec2(1, 0), box->GetBody()->GetVel());
}

TEST_F(RotateToolTest, TurnsAnyNumberOfTimes)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(Vec2());
    Drag(Vec2(), At(0));
    for (int i = 0; i < 1000; i += 25)
        Drag(At(float(i)), At(float(i + 25)));
    EXPECT_NEAR(1000 - 3 * 360, Degrees(box), 0.05f);
    for (int i = 1000; i > -1000; i -= 25)
        Drag(At(float(i)), At(float(i - 25)));
    EXPECT_NEAR(-1000 + 3 * 360, Degrees(box), 0.05f);
}

TEST_F(RotateToolTest, WithShiftASingleBodySnapsToTheRasterOfTheWorld)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    box->GetGeom()->SetWorldPose(math::Mat2D::Rotation(7 * Degree));
    box->GetBody()->OnGeomChange();
    const test::HeldKeys held({SDLK_LSHIFT});
    Select({box});
    // With Shift a click on what is selected would take it away; a drag leaves it selected.
    Turn({0, 0.1f});
    EXPECT_NEAR(0, Degrees(box), 0.01f) << "7 is nearer to 0 than to 15";
    Drag(At(0.1f), At(0.6f));
    EXPECT_NEAR(15, Degrees(box), 0.01f) << "7.6 is nearer to 15";
    Drag(At(0.6f), At(20));
    EXPECT_NEAR(30, Degrees(box), 0.01f) << "27";
    Drag(At(20), At(-20));
    EXPECT_NEAR(-15, Degrees(box), 0.01f) << "-13";
}

TEST_F(RotateToolTest, WithShiftAGroupSnapsToTheRasterOfTheDrag)
{
    const GeomEntityPtr a = Make::Box(Vec2(-1, 0)), b = Make::Box(Vec2(1, 0));
    a->GetGeom()->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(-1, 0), 7 * Degree));
    a->GetBody()->OnGeomChange();
    Select({a, b});
    Begin(Vec2(1, 0));
    Drag(Vec2(), At(0));
    const test::HeldKeys held({SDLK_LSHIFT});
    Drag(At(0), At(7));
    EXPECT_NEAR(7, Degrees(a), 0.01f);
    Drag(At(7), At(8));
    EXPECT_NEAR(22, Degrees(a), 0.01f);
    EXPECT_NEAR(15, Degrees(b), 0.01f);
    ExpectNear(At(15), CenterOf(b));
}

TEST_F(RotateToolTest, WithoutShiftItGoesBackToWhereTheMouseIs)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Turn({0});
    {
        const test::HeldKeys held({SDLK_LSHIFT});
        Drag(At(0), At(20));
    }
    EXPECT_NEAR(15, Degrees(box), 0.01f);
    Drag(At(20), At(21));
    EXPECT_NEAR(21, Degrees(box), 0.01f);
}

TEST_F(RotateToolTest, WhatHangsByAPinTurnsAboutThePin)
{
    const GeomEntityPtr box = Make::Box(Vec2(1, 0), Vec2(3, 1));
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(0, 0), Vec2(0, 0));
    ASSERT_TRUE(hinge->IsAttachedToWorld());
    Begin(Vec2(1, 0));
    Drag(Vec2(), At(0));
    Drag(At(0), At(90));
    ExpectNear(Vec2(0, 1), CenterOf(box));
    End();
    EXPECT_TRUE(hinge->IsAlive());
    ExpectNear(Vec2(), hinge->GetWorldPoint(1));
}

TEST_F(RotateToolTest, WeldsToTheBackgroundComeAlong)
{
    // Of two pins neither is the centre.
    const GeomEntityPtr box = Make::Box(Vec2(), Vec2(3, 1));
    const FixJointPtr welds[] = {Make::Join<FixJointEntity>(Vec2(-1, 0), Vec2(-1, 0)),
                                 Make::Join<FixJointEntity>(Vec2(1, 0.2f), Vec2(1, 0.2f))};
    Select({box});
    const util::String before = Save();
    Turn({0, 40, 90});
    End();
    TheScene()->Update(0.01f);
    EXPECT_NEAR(90, Degrees(box), 1e-3f);
    for (int i : {0, 1})
    {
        ExpectNear(Vec2(0, -1), welds[0]->GetWorldPoint(i));
        ExpectNear(Vec2(-0.2f, 1), welds[1]->GetWorldPoint(i));
    }
    ExpectUndoAndRedo(before);
    // Its one pin left, it turns about that.
    TheScene()->RemoveEntity(welds[0]);
    Begin(Vec2());
    Drag(Vec2(), Vec2(2, 1));
    Drag(Vec2(2, 1), Vec2(-0.2f, 4));
    End();
    TheScene()->Update(0.01f);
    EXPECT_NEAR(180, std::fabs(Degrees(box)), 1e-2f);
    for (int i : {0, 1})
        ExpectNear(Vec2(-0.2f, 1), welds[1]->GetWorldPoint(i));
}

TEST_F(RotateToolTest, ARotationThatIsBrokenOffLeavesTheSceneAsItWas)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Select({box});
    const util::String before = Save();
    Turn({0, 30});
    EXPECT_NE(before, Save());
    EXPECT_TRUE(Escape(TheTool()));
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    EXPECT_FALSE(box->GetBody()->IsSuspended());
    EXPECT_FALSE(Drag(At(30), At(60)));
    EXPECT_FALSE(End());
    EXPECT_FALSE(TheTool().Disband());
    EXPECT_EQ(before, Save());
}

TEST_F(RotateToolTest, HoldsTheBodyWhileTheWorldRuns)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Run("Sim.gravitySwitch = true");
    Sim()->m_running = true;
    Turn({0, 30});
    Make::Frame(5);
    ExpectNear(Vec2(), CenterOf(box));
    EXPECT_NEAR(30, Degrees(box), 1e-3f);
    End();
    Make::Frame(5);
    EXPECT_LT(CenterOf(box).y, 0);
}

TEST_F(RotateToolTest, WhatLeavesTheSceneDuringTheDragIsNoMatter)
{
    const GeomEntityPtr a = Make::Box(Vec2(-1, 0)), b = Make::Box(Vec2(1, 0));
    Select({a, b});
    Begin(Vec2(1, 0));
    Drag(Vec2(), At(0));
    TheScene()->RemoveEntity(a);
    Drag(At(0), At(90));
    End();
    ExpectNear(Vec2(0, 1), CenterOf(b));
    Undoer::GetInstancePtr()->Undo();
    ExpectNear(Vec2(-1, 0), CenterOf(a));
}

TEST_F(RotateToolTest, APlaneTurnsAboutTheMouse)
{
    const GeomEntityPtr plane = Make::Plane(0);
    MoveMouse(Vec2(1, -1));
    Select({plane});
    Begin(Vec2(1, -1));
    Drag(Vec2(1, -1), Vec2(2, -1));
    Drag(Vec2(2, -1), Vec2(1, 0));
    // The surface was one unit above the mouse, and is one to its left.
    EXPECT_TRUE(plane->IsOnEntity(Vec2(0.1f, 5)));
    EXPECT_FALSE(plane->IsOnEntity(Vec2(-0.1f, 5)));
}
}
}
