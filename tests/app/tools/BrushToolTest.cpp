#include "StrokeFixture.h"

#include "app/entities/FixJointEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/tools/BrushTool.h"

namespace app
{
namespace
{
class BrushToolTest : public StrokeFixture
{
protected:
    static BrushTool& Brush() { return *TheTools()->Get<BrushTool>(); }
    static bool Draw(const Vec2List& points) { return DragAlong(Brush(), points); }

    void TearDown() override
    {
        Run("App.GUI.drawInside = false");
        Brush().Disband();
        StrokeFixture::TearDown();
    }
};

TEST_F(BrushToolTest, MakesAPolygonOfAClosedStroke)
{
    const util::String before = Save();
    EXPECT_TRUE(Draw(Square(Vec2(2, 2), 1)));
    ASSERT_TRUE(Newest<PolyEntity>());
    EXPECT_NEAR(4, Newest<PolyEntity>()->GetGeom()->Area(), 0.01f);
    EXPECT_FALSE(Brush().IsInUse());
    ExpectUndoable(before, "UndoPolygon");
}

TEST_F(BrushToolTest, MakesNothingOfAnOpenStroke)
{
    Draw({Vec2(0, 0), Vec2(4, 0), Vec2(4, 4)});
    EXPECT_TRUE(IsNothingDone(0));
}

TEST_F(BrushToolTest, BeginsOnABodyOnlyWhenTheUserHasChosenSo)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    EXPECT_FALSE(Begin(Brush(), Vec2(0, 0)));
    EXPECT_FALSE(Brush().IsInUse());
    EXPECT_TRUE(Begin(Brush(), Vec2(6, 0)));
    Brush().Disband();
    Run("App.GUI.drawInside = true");
    EXPECT_TRUE(Begin(Brush(), Vec2(0, 0)));
}

TEST_F(BrushToolTest, TakesTheLeftButtonAlone)
{
    EXPECT_FALSE(Begin(Brush(), Vec2(0, 0), input::MouseRight));
    EXPECT_FALSE(Brush().IsInUse());
}

TEST_F(BrushToolTest, MakesAPolygonOfASmallRoundStrokeOnABody)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Run("App.GUI.drawInside = true");
    Draw(Square(Vec2(0, 0), 0.5f));
    EXPECT_TRUE(Newest<PolyEntity>());
}

TEST_F(BrushToolTest, MakesNoSpringOfAZigzag)
{
    AddBox(Vec2(-1, 0));
    AddBox(Vec2(6, 0));
    Draw({Vec2(0, 0), Vec2(1, 1), Vec2(2, -1), Vec2(3, 1), Vec2(4, -1), Vec2(5, 0)});
    EXPECT_TRUE(IsNothingDone(2));
}

TEST_F(BrushToolTest, WeldsNothing)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    Run("App.GUI.drawInside = true");
    Draw({Vec2(-1, 0), Vec2(1, 0)});
    Draw({Vec2(0, -1), Vec2(0, 1)});
    EXPECT_TRUE(IsNothingDone(1));
}

TEST_F(BrushToolTest, TakesOverNoJoints)
{
    AddBox(Vec2(5, 0));
    const auto spring = Attach<SpringEntity>(0.25f, Vec2(5, 0), Vec2(0, 0));
    Run("App.GUI.drawInside = true");
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_TRUE(Newest<PolyEntity>()) << "on top";
    EXPECT_EQ(WorldGeom(), spring->GetGeom(1));
}

TEST_F(BrushToolTest, SelectsAJointThatIsPinnedToTheWorld)
{
    AddBox(Vec2(0, 0), Vec2(8, 8));
    const auto hinge = Attach<HingeEntity>(0.25f, Vec2(0, 0), Vec2(0, 0));
    Run("App.GUI.drawInside = true");
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_EQ((Entities{hinge}), TheScene()->GetSelection()->GetSorted());
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
    EXPECT_TRUE(IsNothingDone(2));
}

TEST_F(BrushToolTest, SelectsWithCtrlAndShiftAsAClickDoes)
{
    const BoxPtr a = AddBox(Vec2(0, 0)), b = AddBox(Vec2(4, 0));
    TheScene()->SetSelection(GroupOf({b}));
    Draw(Square(Vec2(0, 0), 1));
    EXPECT_EQ((Entities{a}), TheScene()->GetSelection()->GetSorted());
    const test::HeldKeys ctrl({SDLK_LCTRL});
    Draw(Square(Vec2(4, 0), 1));
    EXPECT_EQ((Entities{a, b}), TheScene()->GetSelection()->GetSorted());
    EXPECT_TRUE(IsNothingDone(2));
}

TEST_F(BrushToolTest, ErasesWhatASlashCuts)
{
    const BoxPtr a = AddBox(Vec2(2, 0)), selected = AddBox(Vec2(4, 40));
    const EntityPtr plane = AddPlane(-0.1f);
    TheScene()->SetSelection(GroupOf({a, selected}));
    const util::String before = Save();
    Draw({Vec2(0, 0.3f), Vec2(4, -0.3f)});
    EXPECT_FALSE(IsThere(a));
    EXPECT_FALSE(IsThere(selected));
    EXPECT_TRUE(IsThere(plane));
    ExpectUndoable(before, "UndoErase");
}

TEST_F(BrushToolTest, ErasesTheOthersWhenOneFails)
{
    TheScene()->AddEntity(QUIB_NEW Brittle);
    const BoxPtr box = AddBox(Vec2(2, 0));
    const test::LogCapture info(logging::LogInfo);
    Draw({Vec2(0, 0), Vec2(4, 0)});
    EXPECT_FALSE(IsThere(box));
    EXPECT_EQ(1u, info.Count("SketchTool::TestEraseLine, ErasedBy: snap")) << info.Text();
}

TEST_F(BrushToolTest, DrawsAStraightEdgeWhileShiftIsHeld)
{
    Begin(Brush(), Vec2(1, -1));
    {
        const test::HeldKeys shift({SDLK_LSHIFT});
        Drag(Brush(), Vec2(1, -1), Vec2(1, -1), Vec2(2, -1));
        MoveMouse(Vec2(3, -4));
    }
    EXPECT_EQ(1u, Brush().GetStroke().GetPoints().size());
    ReleaseKey(Brush(), SDLK_LSHIFT);
    EXPECT_EQ((Vec2List{Vec2(1, -1), Vec2(3, -4)}), Brush().GetStroke().GetPoints());
}

TEST_F(BrushToolTest, BreaksOffOnEscape)
{
    EXPECT_FALSE(PressEscape(Brush()));
    Begin(Brush(), Vec2(0, 0));
    EXPECT_TRUE(PressEscape(Brush()));
    EXPECT_FALSE(Brush().IsInUse());
    EXPECT_TRUE(Brush().GetStroke().GetPoints().empty());
    EXPECT_FALSE(End(Brush(), Vec2(0, 0), Vec2(4, 0)));
}

TEST_F(BrushToolTest, LogsAPolygonThatCanNotBeMade)
{
    const test::LogCapture info(logging::LogInfo), severe(1 | 6);
    EntityPtr bad = QUIB_NEW Unsaveable<std::runtime_error>(std::runtime_error("no luck"));
    TheScene()->AddEntity(bad);
    Draw(Square(Vec2(2, 2), 1));
    EXPECT_TRUE(info.Has("Error: no luck")) << info.Text();
    EXPECT_FALSE(severe.Has("Error: no luck"));
    EXPECT_TRUE(IsNothingDone(1));
    EXPECT_FALSE(Brush().IsInUse());
    TheScene()->RemoveEntity(bad);

    bad = QUIB_NEW Unsaveable<int>(7);
    TheScene()->AddEntity(bad);
    Draw(Square(Vec2(2, 2), 1));
    EXPECT_TRUE(info.Has("Fail")) << info.Text();
    TheScene()->RemoveEntity(bad);
}

TEST_F(BrushToolTest, LogsAShapeThatCrossesItselfWhereItCloses)
{
    const test::LogCapture info(logging::LogInfo);
    Draw({Vec2(0, 0.3f), Vec2(1, 0.3f), Vec2(1, 2), Vec2(-1, 2), Vec2(-1, 0), Vec2(2, 0),
          Vec2(2, -1), Vec2(0, -0.3f)});
    EXPECT_TRUE(info.Has("Bad polygon")) << info.Text();
    EXPECT_TRUE(IsNothingDone(0));
}
}
}
