#include "app/tools/PlaneTool.h"

#include "ToolFixture.h"

#include "app/entities/PlaneEntity.h"
#include "physics/Plane.h"

#include <SDL_keysym.h>

using math::Vec2;

namespace app
{
namespace
{
class PlaneToolTest : public ToolFixture
{
protected:
    static PlaneTool& Tool() { return *TheTools()->Get<PlaneTool>(); }
    static const physics::Plane* PlaneOf(const EntityPtr& entity)
    {
        const auto plane = util::DynamicCast<PlaneEntity>(entity);
        return plane ? &static_cast<const physics::Plane&>(*plane->GetGeom()) : nullptr;
    }
    static const physics::Plane* LastPlane()
    {
        return EntityCount() == 0 ? nullptr : PlaneOf(TheScene()->GetEntities().back());
    }
    static Vec2 At(float angle, float length)
    {
        return Vec2(std::cos(angle) * length, std::sin(angle) * length);
    }
};

TEST_F(PlaneToolTest, TheDragRunsFromTheEdgeAlongTheNormal)
{
    for (const Vec2& way : {Vec2(3, 4), Vec2(-3, 4), Vec2(-4, -3), Vec2(0, -5)})
    {
        SCOPED_TRACE(way);
        StartAnew();
        const Vec2 start(1, 2);
        DragAlong(Tool(), {start, start + Vec2(1, 0), start + way});
        const physics::Plane* plane = LastPlane();
        ASSERT_TRUE(plane);
        EXPECT_NEAR(way.x / 5, plane->GetPlane().normal.x, 1e-5f);
        EXPECT_NEAR(way.y / 5, plane->GetPlane().normal.y, 1e-5f);
        EXPECT_NEAR(0, plane->DistanceWorld(start), 1e-4f);
        // Earth is behind, where the drag came from.
        EXPECT_NEAR(5, plane->DistanceWorld(start + way), 1e-4f);
        EXPECT_EQ("UndoPlane", NextUndo());
    }
}

TEST_F(PlaneToolTest, WithShiftTheNormalSnapsToTheNearestOfTwentyFourDirections)
{
    const float step = 15 * math::PIf / 180;
    const test::HeldKeys shift({SDLK_LSHIFT});
    for (int i = -12; i < 12; ++i)
        for (float part : {-0.48f, -0.2f, 0.0f, 0.2f, 0.48f})
        {
            SCOPED_TRACE(testing::Message() << i << " " << part);
            StartAnew();
            DragAlong(Tool(), {Vec2(), At((float(i) + part) * step, 3)});
            const physics::Plane* plane = LastPlane();
            ASSERT_TRUE(plane);
            EXPECT_NEAR(std::cos(float(i) * step), plane->GetPlane().normal.x, 1e-5f);
            EXPECT_NEAR(std::sin(float(i) * step), plane->GetPlane().normal.y, 1e-5f);
        }
}

TEST_F(PlaneToolTest, WithoutShiftItDoesNotSnap)
{
    DragAlong(Tool(), {Vec2(), At(0.1f, 3)});
    ASSERT_TRUE(LastPlane());
    EXPECT_NEAR(std::sin(0.1f), LastPlane()->GetPlane().normal.y, 1e-5f);
}

TEST_F(PlaneToolTest, ShiftIsSeenWhileTheMouseIsStill)
{
    TheTools()->Select(TheTools()->Get<PlaneTool>());
    const Vec2 mouse(3, 0.3f);
    MoveMouse(mouse);
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), mouse);
    EXPECT_GT(PlaneOf(Tool().GetPreview())->GetPlane().normal.y, 0.09f);
    {
        const test::HeldKeys shift({SDLK_LSHIFT});
        Tool().Update(0.01f);
        EXPECT_NEAR(0, PlaneOf(Tool().GetPreview())->GetPlane().normal.y, 1e-6f);
    }
    Tool().Update(0.01f);
    EXPECT_GT(PlaneOf(Tool().GetPreview())->GetPlane().normal.y, 0.09f);
}

TEST_F(PlaneToolTest, AZeroLengthDragChangesNothing)
{
    Begin(Tool(), Vec2(1, 1));
    Drag(Tool(), Vec2(1, 1), Vec2(1, 1), Vec2(1, 1));
    EXPECT_FALSE(Tool().GetPreview());
    Drag(Tool(), Vec2(1, 1), Vec2(1, 1), Vec2(2, 1));
    const EntityPtr preview = Tool().GetPreview();
    ASSERT_TRUE(preview);
    Drag(Tool(), Vec2(1, 1), Vec2(2, 1), Vec2(1, 1));
    EXPECT_EQ(preview, Tool().GetPreview());
    End(Tool(), Vec2(1, 1), Vec2(1, 1));
    ASSERT_TRUE(LastPlane());
    EXPECT_NEAR(1, LastPlane()->GetPlane().normal.x, 1e-5f);
}

TEST_F(PlaneToolTest, TheSameWayKeepsTheSamePreview)
{
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    const EntityPtr preview = Tool().GetPreview();
    Drag(Tool(), Vec2(), Vec2(1, 0), Vec2(2, 0));
    EXPECT_EQ(preview, Tool().GetPreview());
    Drag(Tool(), Vec2(), Vec2(2, 0), Vec2(2, 1));
    EXPECT_NE(preview, Tool().GetPreview());
}

TEST_F(PlaneToolTest, TheColourStaysFromTheFirstPreviewToTheEntity)
{
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    const math::Vec4 color = Tool().GetPreview()->GetColor4();
    Drag(Tool(), Vec2(), Vec2(1, 0), Vec2(1, 1));
    EXPECT_EQ(color, Tool().GetPreview()->GetColor4());
    End(Tool(), Vec2(), Vec2(1, 1));
    EXPECT_EQ(color, TheScene()->GetEntities()[0]->GetColor4());
}

TEST_F(PlaneToolTest, ThePlaneIsPartOfTheWorldBody)
{
    const size_t geoms = Sim()->GetWorldBody()->GetGeoms().size();
    DragAlong(Tool(), {Vec2(), Vec2(0, 1)});
    ASSERT_TRUE(LastPlane());
    EXPECT_EQ(Sim()->GetWorldBody().get(), LastPlane()->GetBodyBodyPtr());
    EXPECT_EQ(geoms + 1, Sim()->GetWorldBody()->GetGeoms().size());
    EXPECT_EQ(0u, BodyCount());
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(geoms, Sim()->GetWorldBody()->GetGeoms().size());
}

TEST_F(PlaneToolTest, ThingsComeToRestOnIt)
{
    DragAlong(Tool(), {Vec2(0, -1), Vec2(0, 1)});
    const auto circle = Add("Scene.addCircle { pos = [0, 1]; radius = 0.5 }");
    Play(300);
    EXPECT_NEAR(-0.5f, GeomOf(circle).GetCenter().y, 0.05f);
}

TEST_F(PlaneToolTest, DrawsWithTheMouseOnceItsKeyIsTapped)
{
    Tap('p');
    MouseDrag({Vec2(0, -2), Vec2(0, -1), Vec2(0, 1)});
    ASSERT_TRUE(LastPlane());
    EXPECT_NEAR(1, LastPlane()->GetPlane().normal.y, 1e-4f);
}
}
}
