#include "app/tools/CircleTool.h"

#include "ToolFixture.h"

#include "app/entities/CircleEntity.h"
#include "physics/Circle.h"

#include <stdexcept>

using math::Vec2;

namespace app
{
namespace
{
class CircleToolTest : public ToolFixture
{
protected:
    static CircleTool& Tool() { return *TheTools()->Get<CircleTool>(); }
    static const physics::Circle* CircleOf(const EntityPtr& entity)
    {
        const auto circle = util::DynamicCast<CircleEntity>(entity);
        return circle ? &static_cast<const physics::Circle&>(*circle->GetGeom()) : nullptr;
    }
};

TEST_F(CircleToolTest, TheDragBeginsInTheCentreAndEndsOnTheRim)
{
    for (const Vec2& way : {Vec2(3, 4), Vec2(-3, 4), Vec2(-4, -3), Vec2(0, -5)})
    {
        SCOPED_TRACE(way);
        StartAnew();
        DragAlong(Tool(), {Vec2(1, 2), Vec2(1, 3), Vec2(1, 2) + way});
        ASSERT_EQ(1u, EntityCount());
        const physics::Circle* circle = CircleOf(TheScene()->GetEntities()[0]);
        ASSERT_TRUE(circle);
        EXPECT_NEAR(5, circle->GetRadius(), 1e-4f);
        EXPECT_NEAR(1, circle->GetCenter().x, 1e-4f);
        EXPECT_NEAR(2, circle->GetCenter().y, 1e-4f);
        EXPECT_EQ(1u, BodyCount());
    }
}

TEST_F(CircleToolTest, ThePreviewFollowsTheMouseAndIsWhatIsMade)
{
    Begin(Tool(), Vec2());
    EXPECT_FALSE(Tool().GetPreview());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    ASSERT_TRUE(CircleOf(Tool().GetPreview()));
    EXPECT_NEAR(1, CircleOf(Tool().GetPreview())->GetRadius(), 1e-4f);
    Drag(Tool(), Vec2(), Vec2(1, 0), Vec2(0, 2));
    EXPECT_NEAR(2, CircleOf(Tool().GetPreview())->GetRadius(), 1e-4f);
    const EntityPtr preview = Tool().GetPreview();
    End(Tool(), Vec2(), Vec2(0, 2));
    ASSERT_EQ(1u, EntityCount());
    EXPECT_EQ(preview, TheScene()->GetEntities()[0]);
    EXPECT_FALSE(Tool().GetPreview());
}

TEST_F(CircleToolTest, TheColourStaysFromTheFirstPreviewToTheEntity)
{
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    ASSERT_TRUE(Tool().GetPreview());
    const math::Vec4 color = Tool().GetPreview()->GetColor4();
    EXPECT_EQ(1, color.w);
    Drag(Tool(), Vec2(), Vec2(1, 0), Vec2());
    for (float x : {0.5f, 2.0f, 3.0f})
    {
        Drag(Tool(), Vec2(), Vec2(), Vec2(x, 0));
        EXPECT_EQ(color, Tool().GetPreview()->GetColor4());
    }
    End(Tool(), Vec2(), Vec2(3, 0));
    EXPECT_EQ(color, TheScene()->GetEntities()[0]->GetColor4());
    // Each has a colour of its own.
    DragAlong(Tool(), {Vec2(-4, 0), Vec2(-4, 1)});
    EXPECT_NE(color, TheScene()->GetEntities()[1]->GetColor4());
}

TEST_F(CircleToolTest, BackAtTheCentreTheLastPreviewStays)
{
    EXPECT_TRUE(DragAlong(Tool(), {Vec2(1, 1), Vec2(2, 1), Vec2(1, 1)}));
    ASSERT_EQ(1u, EntityCount());
    EXPECT_NEAR(1, CircleOf(TheScene()->GetEntities()[0])->GetRadius(), 1e-4f);
    EXPECT_EQ("UndoCircle", NextUndo());
}

TEST_F(CircleToolTest, ThePreviewFollowsTheViewThatMovesUnderAStillMouse)
{
    TheTools()->Select(TheTools()->Get<CircleTool>());
    MoveMouse(Vec2(1, 0));
    Begin(Tool(), Vec2());
    Drag(Tool(), Vec2(), Vec2(), Vec2(1, 0));
    TheCamera()->SetPan(Vec2(1, 0));
    Tool().Update(0.01f);
    EXPECT_NEAR(2, CircleOf(Tool().GetPreview())->GetRadius(), 0.02f);
    Tool().Disband();
    Tool().Update(0.01f);
    EXPECT_FALSE(Tool().GetPreview());
}

TEST_F(CircleToolTest, ACircleAroundEntitiesIsACircleAllTheSame)
{
    const EntityPtr inside = Add("Scene.addCircle { pos = [1, 0]; radius = 0.1 }");
    DragAlong(Tool(), {Vec2(), Vec2(3, 0)});
    EXPECT_EQ(2u, EntityCount());
    EXPECT_FALSE(TheScene()->IsSelected(inside));
}

class FailingTool final : public PreviewTool
{
public:
    FailingTool()
        : PreviewTool("UndoCircle")
    {
    }
    bool m_throwsException = true;

private:
    void UpdatePreview(const Vec2&) override
    {
        if (m_throwsException)
            throw std::runtime_error("what it is");
        throw 1;
    }
};

TEST_F(CircleToolTest, APreviewThatCannotBeMadeIsLogged)
{
    FailingTool tool;
    EXPECT_TRUE(Begin(tool, Vec2()));
    {
        test::LogCapture log(logging::LogInfo);
        EXPECT_TRUE(Drag(tool, Vec2(), Vec2(), Vec2(1, 0)));
        EXPECT_EQ(1u, log.Count("Error: what it is\n"));
    }
    tool.m_throwsException = false;
    {
        test::LogCapture log(logging::LogInfo);
        Drag(tool, Vec2(), Vec2(1, 0), Vec2(2, 0));
        EXPECT_EQ(1u, log.Count("Fail\n"));
    }
    End(tool, Vec2(), Vec2(2, 0));
    EXPECT_EQ(0u, EntityCount());
    EXPECT_EQ("", NextUndo());
}

TEST_F(CircleToolTest, DrawsWithTheMouseOnceItsKeyIsTapped)
{
    Tap('c');
    MouseDrag({Vec2(1, 1), Vec2(1.5f, 1), Vec2(3, 1)});
    ASSERT_EQ(1u, EntityCount());
    EXPECT_NEAR(2, CircleOf(TheScene()->GetEntities()[0])->GetRadius(), 0.02f);
    EXPECT_EQ("UndoCircle", NextUndo());
}
}
}
