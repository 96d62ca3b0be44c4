#include "HandFixture.h"

namespace app
{
namespace
{
class MoveToolTest : public HandFixture
{
protected:
    static MoveTool& TheTool() { return *TheTools()->Get<MoveTool>(); }
};

TEST_F(MoveToolTest, MovesWhatIsUnderTheMouse)
{
    const GeomEntityPtr box = Make::Box(Vec2(1, 0));
    EXPECT_TRUE(Begin(TheTool(), Vec2(1, 0)));
    EXPECT_TRUE(TheTool().IsInUse());
    EXPECT_TRUE(Drag(TheTool(), Vec2(1, 0), Vec2(1, 0), Vec2(2, 0)));
    EXPECT_TRUE(Drag(TheTool(), Vec2(1, 0), Vec2(2, 0), Vec2(2, 3)));
    ExpectNear(Vec2(2, 3), CenterOf(box));
    EXPECT_TRUE(End(TheTool(), Vec2(1, 0), Vec2(2, 3)));
    EXPECT_FALSE(TheTool().IsInUse());
    ExpectNear(Vec2(2, 3), CenterOf(box));
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ("UndoMove", NextUndo());
}

TEST_F(MoveToolTest, AMoveIsUndoneAndRedoneToTheByte)
{
    const GeomEntityPtr a = Make::Box(Vec2(1, 0)), b = Make::Box(Vec2(1.5f, 0));
    Make::Join<HingeEntity>(a, b, Vec2(1.2f, 0));
    Select({a, b});
    const util::String before = Save();
    DragAlong(TheTool(), {Vec2(1, 0), Vec2(1.3f, 0.4f), Vec2(2.1f, 0.7f)});
    ExpectUndoAndRedo(before);
}

TEST_F(MoveToolTest, DoesNotTakeADragOnTheBackground)
{
    Make::Box(Vec2(3, 0));
    EXPECT_FALSE(DragAlong(TheTool(), {Vec2(0, 0), Vec2(1, 1)}));
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ("", NextUndo());
}

TEST_F(MoveToolTest, LeavesOtherButtonsAndHandledEventsAlone)
{
    const GeomEntityPtr box = Make::Box(Vec2(0, 0));
    EXPECT_FALSE(Begin(TheTool(), Vec2(), input::MouseRight));
    const input::DragEvent event(GUIPos(Vec2()), Vec2(), GUIPos(Vec2()), input::MouseLeft);
    event.SetHandled(true);
    TheTool().OnDragBegin(event);
    EXPECT_FALSE(TheTool().IsInUse());
}

TEST_F(MoveToolTest, MovesAllThatIsSelected)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(3, 0)),
                        c = Make::Box(Vec2(-3, 0));
    Select({a, b});
    DragAlong(TheTool(), {Vec2(0, 0), Vec2(0, 1)});
    ExpectNear(Vec2(0, 1), CenterOf(a));
    ExpectNear(Vec2(3, 1), CenterOf(b));
    ExpectNear(Vec2(-3, 0), CenterOf(c));
}

TEST_F(MoveToolTest, SelectsWhatIsNotSelectedInPlaceOfTheRest)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(3, 0));
    Select({b});
    DragAlong(TheTool(), {Vec2(0, 0), Vec2(0, 1)});
    ExpectNear(Vec2(0, 1), CenterOf(a));
    ExpectNear(Vec2(3, 0), CenterOf(b));
    EXPECT_FALSE(TheScene()->IsSelected(b));
}

TEST_F(MoveToolTest, CtrlMovesACopyAndPausesTheWorld)
{
    const GeomEntityPtr box = Make::Box(Vec2(0, 0));
    Sim()->m_running = true;
    {
        const test::HeldKeys held({SDLK_LCTRL});
        Begin(TheTool(), Vec2());
        EXPECT_EQ("clone", TheTool().GetCursorName());
        EXPECT_FALSE(Sim()->m_running);
    }
    // Only how it began counts.
    Drag(TheTool(), Vec2(), Vec2(), Vec2(2, 0));
    EXPECT_EQ("clone", TheTool().GetCursorName());
    End(TheTool(), Vec2(), Vec2(2, 0));
    EXPECT_EQ("UndoClone", NextUndo());
    ASSERT_EQ(2u, EntityCount());
    ExpectNear(Vec2(0, 0), CenterOf(box));
    const EntityPtr clone = TheScene()->GetEntityAt(Vec2(2, 0));
    ASSERT_TRUE(clone);
    EXPECT_TRUE(TheScene()->IsSelected(clone));
    EXPECT_FALSE(TheScene()->IsSelected(box));
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(1u, EntityCount());
}

TEST_F(MoveToolTest, ACloneIsUndoneAndRedoneToTheByte)
{
    const GeomEntityPtr box = Make::Box(Vec2(0, 0));
    Select({box});
    const util::String before = Save();
    {
        const test::HeldKeys held({SDLK_LCTRL});
        DragAlong(TheTool(), {Vec2(), Vec2(0.3f, 1.1f)});
    }
    ExpectUndoAndRedo(before);
}

TEST_F(MoveToolTest, HasACursorWhileInUseOnly)
{
    Make::Box(Vec2());
    EXPECT_EQ("", TheTool().GetCursorName());
    Begin(TheTool(), Vec2());
    EXPECT_EQ("move", TheTool().GetCursorName());
    End(TheTool(), Vec2(), Vec2());
    EXPECT_EQ("", TheTool().GetCursorName());
}

// Deliberate: whoever hears the key next gets it.
TEST_F(MoveToolTest, TheKeyThatBreaksItOffGoesOnToOthers)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(TheTool(), Vec2());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 1));
    EXPECT_FALSE(Escape(TheTool()));
    EXPECT_FALSE(TheTool().IsInUse());
    Begin(TheTool(), Vec2());
    EXPECT_FALSE(TheTool().Disband());
    EXPECT_FALSE(TheTool().IsInUse());
}

TEST_F(MoveToolTest, AMoveThatIsBrokenOffLeavesTheSceneAsItWas)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(0.5f, 0));
    Make::Join<FixJointEntity>(a, b, Vec2(0.2f, 0));
    Select({a});
    const util::String before = Save();
    Begin(TheTool(), Vec2(-0.3f, 0));
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1.1f, 0.7f));
    EXPECT_NE(before, Save());
    Escape(TheTool());
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    // Nothing of the gesture is left: the rest of it goes nowhere.
    EXPECT_FALSE(Drag(TheTool(), Vec2(), Vec2(1, 1), Vec2(2, 2)));
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2(2, 2)));
    EXPECT_EQ(before, Save());
    EXPECT_FALSE(a->GetBody()->IsSuspended());
}

TEST_F(MoveToolTest, ACloneThatIsBrokenOffIsGone)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Select({box});
    const util::String before = Save();
    const test::HeldKeys held({SDLK_LCTRL});
    Begin(TheTool(), Vec2());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 1));
    TheTool().Disband();
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    EXPECT_TRUE(TheScene()->IsSelected(box));
}

TEST_F(MoveToolTest, AMoveWhoseEndWasLostIsEndedByTheNext)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(TheTool(), Vec2());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 0));
    Begin(TheTool(), Vec2(1, 0));
    EXPECT_EQ("UndoMove", NextUndo());
    Drag(TheTool(), Vec2(1, 0), Vec2(1, 0), Vec2(2, 0));
    TheTool().Disband();
    ExpectNear(Vec2(1, 0), CenterOf(box));
    EXPECT_FALSE(box->GetBody()->IsSuspended());
}

TEST_F(MoveToolTest, DisbandingItWhenNotInUseDoesNothing)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    DragAlong(TheTool(), {Vec2(), Vec2(1, 1)});
    const util::String moved = Save();
    EXPECT_FALSE(TheTool().Disband());
    EXPECT_EQ(moved, Save());
}

TEST_F(MoveToolTest, HoldsTheBodyStillWhileTheWorldRuns)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Run("Sim.gravitySwitch = true");
    Sim()->m_running = true;
    box->GetBody()->SetVel(Vec2(5, 0));
    Begin(TheTool(), Vec2());
    Make::Frame(5);
    ExpectNear(Vec2(), CenterOf(box));
    Drag(TheTool(), Vec2(), Vec2(), Vec2(2, 0));
    Make::Frame(5);
    ExpectNear(Vec2(2, 0), CenterOf(box));
    End(TheTool(), Vec2(), Vec2(2, 0));
    EXPECT_EQ(Vec2(), box->GetBody()->GetVel());
    Make::Frame(5);
    EXPECT_LT(CenterOf(box).y, 0);
}

TEST_F(MoveToolTest, AWeldedBodyMovesAsAWhole)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(0.9f, 0));
    Make::Join<FixJointEntity>(a, b, Vec2(0.45f, 0));
    DragAlong(TheTool(), {Vec2(-0.3f, 0), Vec2(-0.3f, 2)});
    ExpectNear(Vec2(0, 2), CenterOf(a));
    ExpectNear(Vec2(0.9f, 2), CenterOf(b));
    Make::Frame();
    EXPECT_EQ(3u, EntityCount());
}

TEST_F(MoveToolTest, AWeldToTheBackgroundComesAlong)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    const FixJointPtr weld = Make::Join<FixJointEntity>(Vec2(0.2f, 0.2f), Vec2(0.2f, 0.2f));
    ASSERT_TRUE(weld->IsAttachedToWorld());
    Select({box});
    const util::String before = Save();
    DragAlong(TheTool(), {Vec2(-0.3f, 0), Vec2(0.4f, 0.7f), Vec2(1.7f, 1)});
    TheScene()->Update(0.01f);
    ExpectNear(Vec2(2, 1), CenterOf(box));
    for (int i : {0, 1})
        ExpectNear(Vec2(2.2f, 1.2f), weld->GetWorldPoint(i));
    EXPECT_EQ(EntityPtr(weld), TheScene()->GetEntityAt(Vec2(2.2f, 1.2f)));
    EXPECT_EQ(Sim()->GetWorldBody(), box->GetBody());
    ExpectUndoAndRedo(before);

    // And so does that of a copy; the first one stays where it is.
    Select({box, weld});
    {
        const test::HeldKeys held({SDLK_LCTRL});
        DragAlong(TheTool(), {Vec2(1.7f, 1), Vec2(-1.3f, 1)});
    }
    TheScene()->Update(0.01f);
    ASSERT_EQ(4u, EntityCount());
    const auto clone =
        util::DynamicCast<FixJointEntity>(TheScene()->GetEntityAt(Vec2(-0.8f, 1.2f)));
    ASSERT_TRUE(clone);
    for (int i : {0, 1})
    {
        ExpectNear(Vec2(-0.8f, 1.2f), clone->GetWorldPoint(i));
        ExpectNear(Vec2(2.2f, 1.2f), weld->GetWorldPoint(i));
    }
}

TEST_F(MoveToolTest, AWeldToTheGroundComesAlongWithTheBodyAndWithTheGround)
{
    const GeomEntityPtr plane = Make::Plane(0), box = Make::Box(Vec2(0, 0.2f));
    const FixJointPtr weld = Make::Join<FixJointEntity>(plane, box);
    DragAlong(TheTool(), {Vec2(0.3f, 0.3f), Vec2(2.3f, 0.3f)});
    Select({plane, box});
    DragAlong(TheTool(), {Vec2(2.3f, 0.3f), Vec2(2.3f, 1.3f)});
    TheScene()->Update(0.01f);
    ExpectNear(Vec2(2, 1.2f), CenterOf(box));
    for (int i : {0, 1})
        ExpectNear(Vec2(2, 1), weld->GetWorldPoint(i));
}

TEST_F(MoveToolTest, AHingeOnTheBackgroundComesAlongAndASpringStays)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(0.2f, 0.2f), Vec2(0.2f, 0.2f));
    const SpringPtr spring = Make::Join<SpringEntity>(Vec2(), Vec2(0, 3));
    Select({box});
    const util::String before = Save();
    DragAlong(TheTool(), {Vec2(-0.3f, 0), Vec2(1.7f, 1)});
    TheScene()->Update(0.01f);
    for (int i : {0, 1})
        ExpectNear(Vec2(2.2f, 1.2f), hinge->GetWorldPoint(i));
    ExpectNear(Vec2(2, 1), spring->GetWorldPoint(0));
    ExpectNear(Vec2(0, 3), spring->GetWorldPoint(1));
    ExpectUndoAndRedo(before);
}

TEST_F(MoveToolTest, WithAltAMemberMovesAlone)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(0.9f, 0));
    Make::Join<FixJointEntity>(a, b, Vec2(0.45f, 0));
    const test::HeldKeys held({SDLK_LALT});
    DragAlong(TheTool(), {Vec2(-0.3f, 0), Vec2(-0.3f, 0.2f)});
    ExpectNear(Vec2(0, 0.2f), CenterOf(a));
    ExpectNear(Vec2(0.9f, 0), CenterOf(b));
    EXPECT_EQ(a->GetBody(), b->GetBody());
}

TEST_F(MoveToolTest, AJointAloneIsFastenedToWhatItIsMovedTo)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(3, 0));
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(0, 0), Vec2(0, 0));
    ASSERT_EQ(a->GetGeom(), hinge->GetGeom(0));
    DragAlong(TheTool(), {Vec2(0, 0), Vec2(2, 0.1f), Vec2(3, 0.2f)});
    ExpectNear(Vec2(), CenterOf(a));
    EXPECT_EQ(b->GetGeom(), hinge->GetGeom(0));
    ExpectNear(Vec2(3, 0.2f), hinge->GetWorldPoint(0));
}

TEST_F(MoveToolTest, APenAloneStaysOnItsBody)
{
    Make::Box(Vec2());
    const PenEntityPtr pen = Make::AddPen(Vec2(0.2f, 0.2f));
    EXPECT_TRUE(DragAlong(TheTool(), {Vec2(0.2f, 0.2f), Vec2(2, 2)}));
    ExpectNear(Vec2(0.2f, 0.2f), pen->GetPos());
}

TEST_F(MoveToolTest, APlaneMovesWithTheRest)
{
    const GeomEntityPtr plane = Make::Plane(-1), box = Make::Box(Vec2());
    Select({plane, box});
    DragAlong(TheTool(), {Vec2(), Vec2(0, 1)});
    ExpectNear(Vec2(0, 1), CenterOf(box));
    EXPECT_TRUE(plane->IsOnEntity(Vec2(3, -0.1f)));
    EXPECT_FALSE(plane->IsOnEntity(Vec2(3, 0.1f)));
}

TEST_F(MoveToolTest, WhatLeavesTheSceneDuringTheDragStaysAway)
{
    const GeomEntityPtr a = Make::Box(Vec2(0, 0)), b = Make::Box(Vec2(3, 0));
    const HingePtr hinge = Make::Join<HingeEntity>(Vec2(0, 0), Vec2(0, 0));
    Select({a, b, hinge});
    Begin(TheTool(), Vec2(0.3f, 0));
    Drag(TheTool(), Vec2(0.3f, 0), Vec2(0.3f, 0), Vec2(0.3f, 1));
    TheScene()->RemoveEntity(a);
    Drag(TheTool(), Vec2(0.3f, 0), Vec2(0.3f, 1), Vec2(0.3f, 2));
    TheScene()->Update(0.01f);
    End(TheTool(), Vec2(0.3f, 0), Vec2(0.3f, 2));
    TheScene()->Update(0.01f);
    ASSERT_EQ(1u, EntityCount());
    EXPECT_TRUE(TheScene()->HasEntity(b));
    ExpectNear(Vec2(3, 2), CenterOf(b));
    // And comes back whole.
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(3u, EntityCount());
    ExpectNear(Vec2(0, 0), CenterOf(a));
    TheScene()->Update(0.01f);
    ExpectNear(Vec2(0, 0), hinge->GetWorldPoint(0));
}

TEST_F(MoveToolTest, AnUndoDuringTheDragBreaksItOff)
{
    TheTools()->SetActive(TheTools()->Get<MoveTool>());
    const util::String empty = Save();
    const SnapshotPtr snapshot = Snapshot::TakeSnapshot();
    const GeomEntityPtr box = Make::Box(Vec2());
    Undoer::GetInstancePtr()->AddUndo(snapshot, "UndoBox");
    const util::String withBox = Save();
    Begin(TheTool(), Vec2());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 1));
    Undoer::GetInstancePtr()->Undo();
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(empty, Save());
    Undoer::GetInstancePtr()->Redo();
    EXPECT_EQ(withBox, Save());
    EXPECT_FALSE(box->GetBody()->IsSuspended());
    TheTools()->SetActive(nullptr);
}

TEST_F(MoveToolTest, ClearingTheSceneBreaksItOff)
{
    TheTools()->SetActive(TheTools()->Get<MoveTool>());
    Make::Box(Vec2());
    Begin(TheTool(), Vec2());
    Drag(TheTool(), Vec2(), Vec2(), Vec2(1, 1));
    Run("Scene.Clear");
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_EQ(0u, EntityCount());
    End(TheTool(), Vec2(), Vec2(1, 1));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
    TheTools()->SetActive(nullptr);
}

TEST_F(MoveToolTest, AThousandWeldedBoxesFollowTheMouse)
{
    Entities boxes;
    for (int i = 0; i < 1000; ++i)
        boxes.push_back(
            Make::Box(Vec2(float(i % 40) * 0.1f, float(i / 40) * 0.1f), Vec2(0.1f, 0.1f)));
    physics::GeomSet geoms;
    for (const EntityPtr& box : boxes)
        geoms.insert(box->AsGeomEntity()->GetGeom());
    boxes[0]->AsGeomEntity()->GetBody()->SetGeoms(geoms);
    Select(boxes);
    Begin(TheTool(), Vec2());
    const double start = Seconds();
    for (int i = 0; i < 20; ++i)
        Drag(TheTool(), Vec2(), Vec2(), Vec2(0.1f, 0));
    EXPECT_LT(Seconds() - start, 1);
    End(TheTool(), Vec2(), Vec2(2, 0));
    ExpectNear(Vec2(2, 0), boxes[0]->AsGeomEntity()->GetGeom()->GetCenter());
}
}
}
