#include "HandFixture.h"

namespace app
{
namespace
{
class SpringToolTest : public HandFixture
{
protected:
    static SpringTool& TheTool() { return *TheTools()->Get<SpringTool>(); }
    static SpringPtr Newest()
    {
        return util::DynamicCast<SpringEntity>(TheScene()->GetEntities().back());
    }
};

TEST_F(SpringToolTest, JoinsTwoBodies)
{
    const GeomEntityPtr a = Make::Box(Vec2(-2, 0)), b = Make::Box(Vec2(2, 0));
    EXPECT_TRUE(Begin(TheTool(), Vec2(-2, 0.1f)));
    EXPECT_TRUE(TheTool().IsInUse());
    MoveMouse(Vec2(1, 1));
    TheTool().Update(0.01f);
    EXPECT_TRUE(End(TheTool(), Vec2(-2, 0.1f), Vec2(2, 0.1f)));
    EXPECT_FALSE(TheTool().IsInUse());
    ASSERT_EQ(3u, EntityCount());
    const SpringPtr spring = Newest();
    ASSERT_TRUE(spring);
    EXPECT_TRUE(spring->IsAlive());
    EXPECT_EQ(a->GetGeom(), spring->GetGeom(0));
    EXPECT_EQ(b->GetGeom(), spring->GetGeom(1));
    ExpectNear(Vec2(-2, 0.1f), spring->GetWorldPoint(0));
    ExpectNear(Vec2(2, 0.1f), spring->GetWorldPoint(1));
    EXPECT_NEAR(4, spring->GetTargetLength(), 1e-4f);
    EXPECT_FLOAT_EQ(App::GetInstancePtr()->GetDefaultJointSize(), spring->GetSize());
    EXPECT_EQ(1u, Sim()->GetJoints().size());
    EXPECT_EQ("UndoSpring", NextUndo());
    TheScene()->Update(0.01f);
    EXPECT_TRUE(TheScene()->HasEntity(spring)) << "it stays";
}

TEST_F(SpringToolTest, FastensABodyToTheBackgroundFromEitherSide)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    DragAlong(TheTool(), {Vec2(), Vec2(0, 2)});
    ASSERT_TRUE(Newest());
    EXPECT_EQ(box->GetGeom(), Newest()->GetGeom(0));
    EXPECT_TRUE(Newest()->IsAttachedToWorld());
    DragAlong(TheTool(), {Vec2(3, 2), Vec2()});
    ASSERT_EQ(3u, EntityCount());
    EXPECT_EQ(box->GetGeom(), Newest()->GetGeom(1));
    TheScene()->Update(0.01f);
    EXPECT_EQ(3u, EntityCount());
}

TEST_F(SpringToolTest, IsUndoneAndRedoneToTheByte)
{
    Make::Box(Vec2());
    const util::String before = Save();
    DragAlong(TheTool(), {Vec2(0.2f, 0.1f), Vec2(0, 2)});
    ExpectUndoAndRedo(before);
}

TEST_F(SpringToolTest, IsAtRestHoweverFastItWasDrawn)
{
    Make::Box(Vec2());
    // Press and release in one frame: no update in between.
    Begin(TheTool(), Vec2());
    End(TheTool(), Vec2(), Vec2(3, 4));
    ASSERT_TRUE(Newest());
    EXPECT_NEAR(5, Newest()->GetTargetLength(), 1e-4f);
}

TEST_F(SpringToolTest, TheFirstEndStaysOnItsMovingBody)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(TheTool(), Vec2(0.2f, 0));
    box->GetGeom()->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(1, 0), math::PIf / 2));
    box->GetBody()->OnGeomChange();
    End(TheTool(), Vec2(0.2f, 0), Vec2(1, 3.2f));
    ASSERT_TRUE(Newest());
    ExpectNear(Vec2(1, 0.2f), Newest()->GetWorldPoint(0));
    EXPECT_NEAR(3, Newest()->GetTargetLength(), 1e-4f);
}

TEST_F(SpringToolTest, ThePreviewIsNeitherInTheSceneNorInTheWorld)
{
    Make::Box(Vec2());
    const util::String before = Save();
    Begin(TheTool(), Vec2());
    MoveMouse(Vec2(2, 2));
    TheTool().Update(0.01f);
    EXPECT_EQ(before, Save());
    EXPECT_EQ(0u, Sim()->GetJoints().size());
}

TEST_F(SpringToolTest, EscapeLeavesTheSceneUntouched)
{
    Make::Box(Vec2());
    const util::String before = Save();
    Begin(TheTool(), Vec2());
    MoveMouse(Vec2(2, 2));
    TheTool().Update(0.01f);
    EXPECT_TRUE(Escape(TheTool()));
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2(2, 2)));
    TheTool().Update(0.01f);
    EXPECT_EQ(before, Save());
    EXPECT_FALSE(TheTool().Disband());
}

TEST_F(SpringToolTest, TakesTheLeftButtonOnly)
{
    Make::Box(Vec2());
    EXPECT_FALSE(DragAlong(TheTool(), {Vec2(), Vec2(2, 2)}, input::MouseRight));
    EXPECT_EQ(1u, EntityCount());
}

TEST_F(SpringToolTest, BetweenTwoPointsOfOneBodyThereIsNone)
{
    Make::Box(Vec2(), Vec2(3, 3));
    for (const Vec2& start : {Vec2(0, 0), Vec2(4, 4)}) // the box, the background
    {
        EXPECT_TRUE(DragAlong(TheTool(), {start, start + Vec2(1, 1)}));
        EXPECT_EQ(1u, EntityCount());
        EXPECT_EQ("", NextUndo());
        EXPECT_FALSE(TheTool().IsInUse());
    }
}

TEST_F(SpringToolTest, ThereIsNoneWhenTheFirstBodyHasGone)
{
    const GeomEntityPtr box = Make::Box(Vec2());
    Begin(TheTool(), Vec2());
    TheScene()->RemoveEntity(box);
    MoveMouse(Vec2(2, 2));
    TheTool().Update(0.01f);
    EXPECT_TRUE(End(TheTool(), Vec2(), Vec2(2, 2)));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(SpringToolTest, ClearingTheSceneBreaksItOff)
{
    TheTools()->Select(TheTools()->Get<SpringTool>());
    Make::Box(Vec2());
    Begin(TheTool(), Vec2());
    Run("Scene.Clear");
    EXPECT_FALSE(TheTool().IsInUse());
    EXPECT_FALSE(End(TheTool(), Vec2(), Vec2(2, 2)));
}
}
}
