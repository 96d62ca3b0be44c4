#include "app/tools/BoxTool.h"

#include "ToolFixture.h"

#include "app/entities/BoxEntity.h"
#include "physics/Box.h"

#include <SDL_keysym.h>

using math::Vec2;

namespace app
{
namespace
{
class BoxToolTest : public ToolFixture
{
protected:
    static BoxTool& Tool() { return *TheTools()->Get<BoxTool>(); }
    /// Of the topmost entity; null when that is none.
    static const physics::Box* LastBox()
    {
        if (EntityCount() == 0)
            return nullptr;
        const auto box = util::DynamicCast<BoxEntity>(TheScene()->GetEntities().back());
        return box ? &static_cast<const physics::Box&>(*box->GetGeom()) : nullptr;
    }
};

TEST_F(BoxToolTest, TheCornersAreWhereTheDragBeganAndEnded)
{
    const Vec2 start(1, 2);
    for (const Vec2& end : {Vec2(3, 3), Vec2(-2, 3), Vec2(-2, -1), Vec2(3, -1)})
    {
        SCOPED_TRACE(end);
        StartAnew();
        DragAlong(Tool(), {start, Vec2(0, 0), end});
        const physics::Box* box = LastBox();
        ASSERT_TRUE(box);
        EXPECT_NEAR((start.x + end.x) / 2, box->GetCenter().x, 1e-4f);
        EXPECT_NEAR((start.y + end.y) / 2, box->GetCenter().y, 1e-4f);
        EXPECT_NEAR(std::fabs(start.x - end.x), box->GetSize().x, 1e-4f);
        EXPECT_NEAR(std::fabs(start.y - end.y), box->GetSize().y, 1e-4f);
        EXPECT_EQ(0, box->GetPose().GetAngle());
        EXPECT_EQ(1u, BodyCount());
    }
}

TEST_F(BoxToolTest, WithShiftItIsASquareOfTheLargerExtentInEveryQuadrant)
{
    const Vec2 start(1, 2);
    const test::HeldKeys shift({SDLK_LSHIFT});
    for (const Vec2& way : {Vec2(2, 1), Vec2(-2, 1), Vec2(-2, -1), Vec2(2, -1), Vec2(1, 2),
                            Vec2(-1, 2), Vec2(-1, -2), Vec2(1, -2)})
    {
        SCOPED_TRACE(way);
        StartAnew();
        DragAlong(Tool(), {start, start + way});
        const physics::Box* box = LastBox();
        ASSERT_TRUE(box);
        EXPECT_NEAR(2, box->GetSize().x, 1e-4f);
        EXPECT_NEAR(2, box->GetSize().y, 1e-4f);
        EXPECT_NEAR(start.x + (way.x > 0 ? 1 : -1), box->GetCenter().x, 1e-4f);
        EXPECT_NEAR(start.y + (way.y > 0 ? 1 : -1), box->GetCenter().y, 1e-4f);
    }
}

TEST_F(BoxToolTest, WithShiftAStraightDragMakesASquareToo)
{
    const test::HeldKeys shift({SDLK_RSHIFT});
    for (const Vec2& end : {Vec2(2, 0), Vec2(-2, 0), Vec2(0, 2), Vec2(0, -2)})
    {
        SCOPED_TRACE(end);
        StartAnew();
        DragAlong(Tool(), {Vec2(), end});
        const physics::Box* box = LastBox();
        ASSERT_TRUE(box);
        EXPECT_NEAR(2, box->GetSize().x, 1e-4f);
        EXPECT_NEAR(2, box->GetSize().y, 1e-4f);
    }
}

TEST_F(BoxToolTest, ShiftCountsAtTheRelease)
{
    {
        const test::HeldKeys shift({SDLK_LSHIFT});
        Begin(Tool(), Vec2());
        Drag(Tool(), Vec2(), Vec2(), Vec2(2, 1));
    }
    End(Tool(), Vec2(), Vec2(2, 1));
    ASSERT_TRUE(LastBox());
    EXPECT_NEAR(1, LastBox()->GetSize().y, 1e-4f);
}

TEST_F(BoxToolTest, WithoutWidthOrHeightNothingIsMade)
{
    for (const Vec2& end : {Vec2(2, 0), Vec2(0, 2), Vec2(-2, 0), Vec2()})
    {
        SCOPED_TRACE(end);
        EXPECT_TRUE(DragAlong(Tool(), {Vec2(), Vec2(1, 1), end}));
        EXPECT_EQ(0u, EntityCount());
        EXPECT_EQ("", NextUndo());
        EXPECT_FALSE(Tool().IsInUse());
    }
}

TEST_F(BoxToolTest, ABoxAroundEntitiesSelectsThemAndMakesNothing)
{
    const EntityPtr inside = Add("Scene.addCircle { pos = [0, 0]; radius = 0.5 }");
    const EntityPtr alsoInside = Add("Scene.addCircle { pos = [1, 1]; radius = 0.3 }");
    const EntityPtr halfInside = Add("Scene.addCircle { pos = [2, 0]; radius = 0.5 }");
    for (const auto& [start, end] : std::vector<std::pair<Vec2, Vec2>>{
             {Vec2(-1, -1), Vec2(2, 2)}, {Vec2(2, 2), Vec2(-1, -1)}, {Vec2(-1, 2), Vec2(2, -1)}})
    {
        TheScene()->SetSelection(QUIB_NEW Group);
        EXPECT_TRUE(DragAlong(Tool(), {start, end}));
        EXPECT_EQ(3u, EntityCount());
        EXPECT_TRUE(TheScene()->IsSelected(inside));
        EXPECT_TRUE(TheScene()->IsSelected(alsoInside));
        EXPECT_FALSE(TheScene()->IsSelected(halfInside));
        EXPECT_EQ("", NextUndo());
        EXPECT_FALSE(Tool().IsInUse());
    }
}

TEST_F(BoxToolTest, ABoxOverThePartOfAnEntityIsABox)
{
    const EntityPtr circle = Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    DragAlong(Tool(), {Vec2(-2, -2), Vec2(0.5f, 2)});
    EXPECT_EQ(2u, EntityCount());
    EXPECT_TRUE(LastBox());
    EXPECT_FALSE(TheScene()->IsSelected(circle));
}

TEST_F(BoxToolTest, TheSelectionStaysWhenABoxIsMade)
{
    const EntityPtr circle = Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
    TheScene()->SetSelection(GroupOf({circle}));
    DragAlong(Tool(), {Vec2(2, 2), Vec2(3, 3)});
    EXPECT_EQ(2u, EntityCount());
    EXPECT_TRUE(TheScene()->IsSelected(circle));
}

TEST_F(BoxToolTest, DrawsWithTheMouseOnceItsKeyIsTapped)
{
    Tap('x');
    MouseDrag({Vec2(1, 1), Vec2(1.5f, 1.2f), Vec2(2, 3)});
    ASSERT_TRUE(LastBox());
    EXPECT_NEAR(1, LastBox()->GetSize().x, 0.011f);
    EXPECT_NEAR(2, LastBox()->GetSize().y, 0.011f);
}
}
}
