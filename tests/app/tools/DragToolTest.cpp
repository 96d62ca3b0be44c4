#include "HandFixture.h"

namespace app
{
namespace
{
class DragToolTest : public HandFixture
{
protected:
    void SetUp() override
    {
        HandFixture::SetUp();
        Sim()->m_running = true;
        MoveMouse(Vec2());
    }
    void TearDown() override
    {
        test::SendKey(input::MouseLeft, false, true);
        test::SendKey(input::MouseRight, false, true);
        HandFixture::TearDown();
    }
    static DragTool& TheTool() { return *TheTools()->Get<DragTool>(); }

    /// With the button down, as the tool looks for it.
    static bool Grip(const Vec2& pos)
    {
        test::SendKey(input::MouseLeft, true, true);
        return Begin(TheTool(), pos);
    }
    static void MouseFrame(const Vec2& mouse, int count = 1)
    {
        MoveMouse(mouse);
        for (int i = 0; i < count; ++i)
        {
            TheTool().Update(0.01f);
            Make::Frame();
        }
    }
    static size_t HingeCount() { return Sim()->GetHinges().size(); }
    static physics::HingePtr TheHinge() { return *Sim()->GetHinges().begin(); }
};

TEST_F(DragToolTest, ThePulledBodyComesToTheMouse)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    EXPECT_TRUE(Grip(Vec2()));
    EXPECT_TRUE(TheTool().IsInUse());
    MouseFrame(Vec2(2, 1), 200);
    ExpectNear(Vec2(2, 1), CenterOf(box), 0.05f);
    EXPECT_TRUE(End(TheTool(), Vec2(), Vec2(2, 1)));
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, HingeCount());
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(DragToolTest, TheGripIsAsSoftAsTheSettingSays)
{
    Make::Box(Vec2());
    Grip(Vec2());
    EXPECT_EQ(0.25f, TheHinge()->GetDistScale());
    EXPECT_EQ(0.25f, TheHinge()->GetWarmScale());
    TheTool().Disband();
    Run("App.dragToolStrength = 0.5");
    Grip(Vec2());
    EXPECT_EQ(0.5f, TheHinge()->GetDistScale());
    EXPECT_EQ(0.5f, TheHinge()->GetWarmScale());
    Run("App.dragToolStrength = 0.25");
}

TEST_F(DragToolTest, WhatDoesNotMoveIsNotPulled)
{
    const GeomEntityPtr plane = Make::Plane(-2), free = Make::Box(Vec2(3, 0)),
                        held = Make::Box(Vec2(-3, 0)), fixed = Make::Box(Vec2());
    Make::Join<FixJointEntity>(Vec2(), Vec2());
    held->GetBody()->SetSuspended(true);
    EXPECT_FALSE(Grip(Vec2(0, 0))) << "welded to the background";
    EXPECT_FALSE(Grip(Vec2(0, -3))) << "a plane";
    EXPECT_FALSE(Grip(Vec2(-3, 0))) << "held by a tool";
    EXPECT_FALSE(Grip(Vec2(0, 5))) << "the background";
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, HingeCount());
    EXPECT_TRUE(Grip(Vec2(3, 0)));
}

TEST_F(DragToolTest, TakesTheLeftButtonOnly)
{
    Make::Box(Vec2());
    EXPECT_FALSE(Begin(TheTool(), Vec2(), input::MouseRight));
    Grip(Vec2());
    EXPECT_FALSE(Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 1)));
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2(1, 1), input::MouseRight));
    EXPECT_TRUE(TheTool().IsInUse());
}

// Deliberate: a drag belongs to the run. The name "UndoDrag" is never used.
TEST_F(DragToolTest, LeavesNothingToUndo)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Grip(Vec2());
    MouseFrame(Vec2(2, 1), 50);
    Drag(TheTool(), Vec2(), Vec2(), Vec2(2, 1));
    End(TheTool(), Vec2(), Vec2(2, 1));
    EXPECT_GT(CenterOf(box).x, 0.5f);
    EXPECT_EQ("", NextUndo());
    Grip(CenterOf(box));
    MouseFrame(Vec2(-2, 1), 50);
    EXPECT_TRUE(TheTool().Disband());
    EXPECT_EQ("", NextUndo());
}

TEST_F(DragToolTest, LetsGoWhenTheButtonIsUp)
{
    Make::Box(Vec2());
    Grip(Vec2());
    test::SendKey(input::MouseLeft, false, true);
    EXPECT_TRUE(TheTool().IsInUse());
    TheTool().Update(0.01f);
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, HingeCount());
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2()));
}

TEST_F(DragToolTest, EscapeLetsGo)
{
    Make::Box(Vec2());
    Grip(Vec2());
    EXPECT_TRUE(Escape(TheTool()));
    EXPECT_EQ(0u, HingeCount());
    EXPECT_EQ(1u, BodyCount());
    EXPECT_FALSE(TheTool().Disband());
}

TEST_F(DragToolTest, HasACursorWhileInUse)
{
    Make::Box(Vec2());
    EXPECT_EQ("", TheTool().GetCursorName());
    Grip(Vec2());
    EXPECT_EQ("drag", TheTool().GetCursorName());
    TheTool().Disband();
    EXPECT_EQ("", TheTool().GetCursorName());
}

TEST_F(DragToolTest, WithTheRightButtonTheGripStandsStillAndTurnsTheBody)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Grip(Vec2());
    MouseFrame(Vec2());
    EXPECT_FALSE(TheHinge()->IsMotor());
    test::SendKey(input::MouseRight, true, true);
    EXPECT_TRUE(DragTool::IsRotating());
    MoveMouse(Vec2(0, 2));
    TheTool().Update(0.01f);
    EXPECT_TRUE(TheHinge()->IsMotor());
    ExpectNear(Vec2(0, 2), TheTool().GetWrench());
    // Deliberate: the direction as an angle is the speed.
    EXPECT_NEAR(math::PIf / 2, TheHinge()->GetMotorSpeed(), 1e-4f);
    EXPECT_NEAR(200, TheHinge()->GetMotorTorque(), 0.01f);
    MouseFrame(Vec2(0, 2), 60);
    ExpectNear(Vec2(), CenterOf(box), 0.02f);
    EXPECT_GT(box->GetBody()->GetAngVel(), 1);
    test::SendKey(input::MouseRight, false, true);
    MouseFrame(Vec2(0, 2));
    EXPECT_FALSE(TheHinge()->IsMotor());
    MouseFrame(Vec2(0, 2), 200);
    ExpectNear(Vec2(0, 2), CenterOf(box), 0.05f);
}

TEST_F(DragToolTest, AMouseOnTheGripTurnsNothing)
{
    Make::Box(Vec2());
    Grip(Vec2());
    test::SendKey(input::MouseRight, true, true);
    TheTool().Update(0.01f);
    EXPECT_EQ(0, TheTool().GetMotorSpeed());
    EXPECT_EQ(0, TheTool().GetMotorTorque());
}

TEST_F(DragToolTest, TheMouseBodyStaysInTheWorldOnlyAsLongAsTheDrag)
{
    Make::Box(Vec2());
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(1u, BodyCount());
        EXPECT_EQ(0u, HingeCount());
        Grip(Vec2());
        MouseFrame(Vec2(), 3);
        // The scene throws out the bodies that no entity holds, but not this one.
        TheScene()->FlushBodies();
        EXPECT_EQ(2u, BodyCount());
        EXPECT_EQ(1u, HingeCount());
        EXPECT_EQ(0, Sim()->GetBodies().back()->GetMassInv());
        EXPECT_EQ(0, Sim()->GetBodies().back()->GetInertiaInv());
        End(TheTool(), Vec2(), Vec2());
    }
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(DragToolTest, NothingTouchesTheMouseBody)
{
    const GeomEntityPtr pulled = Make::Box(Vec2()), other = Make::Box(Vec2(3, 0));
    Grip(Vec2());
    pulled->GetGeom()->SetCollideSet(0);
    MouseFrame(Vec2(3, 0), 100);
    EXPECT_TRUE(Sim()->GetContacts().empty());
    ExpectNear(Vec2(3, 0), CenterOf(other), 1e-6f);
}

TEST_F(DragToolTest, SavedScenesAndSnapshotsKnowNothingOfIt)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    const util::String before = Save();
    Grip(Vec2());
    EXPECT_EQ(before, Save());
    const SnapshotPtr snapshot = Snapshot::TakeSnapshot();
    TheTool().Disband();
    snapshot->Restore();
    EXPECT_EQ(1u, BodyCount());
    EXPECT_EQ(0u, HingeCount());
    EXPECT_EQ(before, Save());
    ASSERT_TRUE(box->IsAlive());
    Make::Frame(3);
    EXPECT_EQ(before, Save());
}

TEST_F(DragToolTest, RestoringASnapshotDuringTheDragLetsGo)
{
    TheTools()->SetActive(TheTools()->Get<DragTool>());
    Make::Box(Vec2());
    const SnapshotPtr snapshot = Snapshot::TakeSnapshot();
    Grip(Vec2());
    MouseFrame(Vec2(1, 1), 20);
    snapshot->Restore();
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, HingeCount());
    EXPECT_EQ(1u, BodyCount());
    MouseFrame(Vec2(1, 1), 3);
    TheTools()->SetActive(nullptr);
}

TEST_F(DragToolTest, LetsGoWhenTheBodyIsErased)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Grip(Vec2());
    MouseFrame(Vec2(1, 0), 5);
    TheScene()->RemoveEntity(box);
    Make::Frame();
    EXPECT_EQ(0u, HingeCount()) << "it has nothing to hold";
    TheTool().Update(0.01f);
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, BodyCount());
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2()));
}

TEST_F(DragToolTest, LetsGoWhenTheSceneIsCleared)
{
    // By whichever tool: the scene breaks off the current one only.
    for (bool isCurrent : {true, false})
    {
        if (isCurrent)
            TheTools()->SetActive(TheTools()->Get<DragTool>());
        Make::Box(Vec2());
        Grip(Vec2());
        MouseFrame(Vec2(1, 0), 5);
        Run("Scene.Clear");
        MouseFrame(Vec2(1, 0), 2);
        EXPECT_FALSE(TheTool().IsInUse());
        EXPECT_EQ(0u, BodyCount());
        EXPECT_EQ(0u, HingeCount());
        TheTools()->SetActive(nullptr);
    }
}

TEST_F(DragToolTest, APausedWorldCanBeGrippedAndGoesOnLater)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Sim()->m_running = false;
    EXPECT_TRUE(Grip(Vec2()));
    MouseFrame(Vec2(1, 0), 5);
    ExpectNear(Vec2(), CenterOf(box));
    Sim()->m_running = true;
    MouseFrame(Vec2(1, 0), 200);
    ExpectNear(Vec2(1, 0), CenterOf(box), 0.05f);
    Sim()->m_running = false;
    MouseFrame(Vec2(2, 0), 5);
    EXPECT_TRUE(TheTool().IsInUse());
    End(TheTool(), Vec2(), Vec2());
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(DragToolTest, ABodyThatIsWeldedMeanwhileIsHeldOn)
{
    const GeomEntityPtr a = Make::Box(Vec2()), b = Make::Box(Vec2(0.9f, 0));
    Grip(Vec2(0.1f, 0));
    MouseFrame(Vec2(0.1f, 0), 2);
    Make::Join<FixJointEntity>(a, b, CenterOf(a) + Vec2(0.45f, 0));
    MouseFrame(Vec2(0.1f, 2), 200);
    EXPECT_TRUE(TheTool().IsInUse());
    EXPECT_GT(CenterOf(b).y, 1);
    // To the background: nothing moves any more, and nothing breaks.
    Make::Join<FixJointEntity>(a->GetGeom(), Sim()->GetWorldGeom(), CenterOf(a));
    const Vec2 place = CenterOf(a);
    MouseFrame(Vec2(3, 3), 20);
    ExpectNear(place, CenterOf(a));
}

TEST_F(DragToolTest, APullBeyondTheFallLimitLetsGo)
{
    Run("Sim.gravitySwitch = true");
    const GeomEntityPtr box = Make::Box(Vec2());
    Grip(Vec2());
    TheCamera()->SetPan(Vec2(0, -float(Sim()->m_fallLimit) - 100));
    for (int i = 0; i < 3; ++i)
        MouseFrame(TheCamera()->GetPan());
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, HingeCount());
}
}
}
