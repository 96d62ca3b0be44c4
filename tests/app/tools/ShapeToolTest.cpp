#include "ToolFixture.h"

#include "app/tools/BoxTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/PlaneTool.h"

#include <SDL_keysym.h>

using math::Vec2;

namespace app
{
namespace
{
// What boxes, circles and planes have in common.
class ShapeToolTest : public ToolFixture
{
protected:
    struct Kind
    {
        util::SharedPtr<ShapeTool> tool;
        const char* undoName;
    };
    static std::vector<Kind> Kinds()
    {
        return {{TheTools()->Get<BoxTool>(), "UndoBox"},
                {TheTools()->Get<CircleTool>(), "UndoCircle"},
                {TheTools()->Get<PlaneTool>(), "UndoPlane"}};
    }
    void TearDown() override
    {
        Run("App.GUI.drawInside = false");
        ToolFixture::TearDown();
    }

    // Everything that a shape could leave behind.
    static util::String World()
    {
        return Save() + " " + std::to_string(EntityCount()) + " " +
               std::to_string(Sim()->GetBodies().size()) + " " +
               std::to_string(Sim()->GetWorldBody()->GetGeoms().size());
    }
};

TEST_F(ShapeToolTest, ADragMakesOneEntityInOneStepOfUndo)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        EXPECT_TRUE(DragAlong(*kind.tool, {Vec2(1, 1), Vec2(2, 2), Vec2(2, 3)}));
        EXPECT_EQ(1u, EntityCount());
        EXPECT_EQ(kind.undoName, NextUndo());
        EXPECT_FALSE(kind.tool->IsInUse());
        Undoer::GetInstancePtr()->Undo();
        EXPECT_EQ("", NextUndo());
    }
}

TEST_F(ShapeToolTest, UndoAndRedoBringBackTheSceneByteForByte)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        Add("Scene.addCircle { pos = [-3, 0]; radius = 0.5 }");
        const util::String before = Save();
        DragAlong(*kind.tool, {Vec2(1.1f, 1.3f), Vec2(2, 2), Vec2(2.7f, 3.1f)});
        const util::String after = Save();
        EXPECT_NE(before, after);
        Undoer::GetInstancePtr()->Undo();
        EXPECT_EQ(before, Save());
        Undoer::GetInstancePtr()->Redo();
        EXPECT_EQ(after, Save());
    }
}

TEST_F(ShapeToolTest, WhatIsDrawnCanBeSavedAndLoaded)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        DragAlong(*kind.tool, {Vec2(1.1f, 1.3f), Vec2(2.7f, 3.1f)});
        const math::Mat2D pose = TheScene()->GetEntities()[0]->AsGeomEntity()->GetGeom()->GetPose();
        const util::String text = Save();
        TheScene()->ClearScene();
        Serializer::GetInstancePtr()->Deserialize(text);
        ASSERT_EQ(1u, EntityCount());
        const auto* loaded = TheScene()->GetEntities()[0]->AsGeomEntity();
        EXPECT_NEAR(pose.x, loaded->GetGeom()->GetPose().x, 1e-5f);
        EXPECT_NEAR(pose.y, loaded->GetGeom()->GetPose().y, 1e-5f);
    }
}

TEST_F(ShapeToolTest, NothingEntersTheSceneOrTheSimulationBeforeTheRelease)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        const util::String before = World();
        Begin(*kind.tool, Vec2(1, 1));
        EXPECT_EQ(before, World());
        Drag(*kind.tool, Vec2(1, 1), Vec2(1, 1), Vec2(2, 3));
        Drag(*kind.tool, Vec2(1, 1), Vec2(2, 3), Vec2(3, 3));
        EXPECT_EQ(before, World());
        EXPECT_FALSE(TheScene()->GetEntityAt(Vec2(1.1f, 0.9f)));
        TheScene()->FlushBodies();
        EXPECT_EQ(before, World());
        End(*kind.tool, Vec2(1, 1), Vec2(3, 3));
        EXPECT_NE(before, World());
        EXPECT_EQ(1u, EntityCount());
    }
}

TEST_F(ShapeToolTest, OnlyTheLeftButtonDraws)
{
    for (const Kind& kind : Kinds())
        for (int button : {325, 326})
        {
            EXPECT_FALSE(DragAlong(*kind.tool, {Vec2(1, 1), Vec2(2, 2)}, button));
            EXPECT_FALSE(kind.tool->IsInUse());
            EXPECT_EQ(0u, EntityCount());
        }
}

TEST_F(ShapeToolTest, AnEventThatIsHandledIsNobodysAnyMore)
{
    for (const Kind& kind : Kinds())
    {
        const input::DragEvent event(GUIPos(Vec2()), Vec2(), GUIPos(Vec2()), input::MouseLeft);
        event.SetHandled(true);
        kind.tool->OnDragBegin(event);
        EXPECT_FALSE(kind.tool->IsInUse());
    }
}

TEST_F(ShapeToolTest, EveryEventOfADragIsTaken)
{
    for (const Kind& kind : Kinds())
    {
        StartAnew();
        EXPECT_TRUE(Begin(*kind.tool, Vec2()));
        EXPECT_TRUE(kind.tool->IsInUse());
        EXPECT_TRUE(Drag(*kind.tool, Vec2(), Vec2(), Vec2(1, 1)));
        EXPECT_TRUE(End(*kind.tool, Vec2(), Vec2(1, 1)));
        // Without a beginning there is nothing to go on with.
        EXPECT_FALSE(Drag(*kind.tool, Vec2(), Vec2(), Vec2(1, 1)));
        EXPECT_FALSE(End(*kind.tool, Vec2(), Vec2(1, 1)));
        EXPECT_EQ(1u, EntityCount());
    }
}

TEST_F(ShapeToolTest, ADragThatBeginsOnAnEntityIsLeftToTheGestures)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
        EXPECT_FALSE(DragAlong(*kind.tool, {Vec2(0.5f, 0), Vec2(0.9f, 0.3f)}));
        EXPECT_FALSE(kind.tool->IsInUse());
        EXPECT_EQ(1u, EntityCount());
        // It may end on one.
        EXPECT_TRUE(DragAlong(*kind.tool, {Vec2(2, 0), Vec2(0.5f, 0.3f)}));
        EXPECT_EQ(2u, EntityCount());
    }
}

TEST_F(ShapeToolTest, WithDrawInsideAShapeCanBeBegunOnAnEntity)
{
    Run("App.GUI.drawInside = true");
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        Add("Scene.addCircle { pos = [0, 0]; radius = 1 }");
        EXPECT_TRUE(DragAlong(*kind.tool, {Vec2(0.5f, 0), Vec2(0.9f, 0.3f)}));
        EXPECT_EQ(2u, EntityCount());
    }
}

TEST_F(ShapeToolTest, ADragWithoutAWayMakesNothing)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        const util::String before = World();
        EXPECT_TRUE(DragAlong(*kind.tool, {Vec2(1, 1), Vec2(1, 1), Vec2(1, 1)}));
        EXPECT_TRUE(DragAlong(*kind.tool, {Vec2(1, 1)}));
        EXPECT_EQ(before, World());
        EXPECT_EQ("", NextUndo());
    }
}

TEST_F(ShapeToolTest, EscapeBreaksOffWithoutATrace)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        const util::String before = World();
        Begin(*kind.tool, Vec2(1, 1));
        Drag(*kind.tool, Vec2(1, 1), Vec2(1, 1), Vec2(2, 3));
        const input::KeyEvent escape(SDLK_ESCAPE, 0, true, Vec2());
        kind.tool->OnKeyEvent(escape);
        EXPECT_TRUE(escape.IsHandled());
        EXPECT_FALSE(kind.tool->IsInUse());
        EXPECT_FALSE(Drag(*kind.tool, Vec2(1, 1), Vec2(2, 3), Vec2(3, 3)));
        EXPECT_FALSE(End(*kind.tool, Vec2(1, 1), Vec2(3, 3)));
        EXPECT_EQ(before, World());
        EXPECT_EQ("", NextUndo());
        // Nor is there anything left that the next one could find.
        DragAlong(*kind.tool, {Vec2(5, 5)});
        EXPECT_EQ(before, World());
        EXPECT_FALSE(kind.tool->Disband());
    }
}

TEST_F(ShapeToolTest, ClearingTheSceneBreaksOff)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        TheTools()->Select(kind.tool);
        Begin(*kind.tool, Vec2(1, 1));
        Drag(*kind.tool, Vec2(1, 1), Vec2(1, 1), Vec2(2, 3));
        TheScene()->ClearScene();
        EXPECT_FALSE(kind.tool->IsInUse());
        End(*kind.tool, Vec2(1, 1), Vec2(3, 3));
        EXPECT_EQ(0u, EntityCount());
        EXPECT_EQ("", NextUndo());
    }
}

TEST_F(ShapeToolTest, AnUndoUnderTheMouseBreaksOff)
{
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.undoName);
        StartAnew();
        TheTools()->Select(kind.tool);
        DragAlong(*kind.tool, {Vec2(-2, 1), Vec2(-3, 2)});
        Begin(*kind.tool, Vec2(2, 2));
        Drag(*kind.tool, Vec2(2, 2), Vec2(2, 2), Vec2(3, 3));
        Undoer::GetInstancePtr()->Undo();
        End(*kind.tool, Vec2(2, 2), Vec2(3, 3));
        EXPECT_EQ(0u, EntityCount());
        Undoer::GetInstancePtr()->Redo();
        EXPECT_EQ(1u, EntityCount());
    }
}

// From a few pixels under the strongest magnification to a whole view of the widest.
TEST_F(ShapeToolTest, ShapesOfEverySizeThatAViewCanShowAreMadeAndStay)
{
    const struct
    {
        float zoom;
        Vec2 from, to; // GUI units
    } cases[] = {
        {Camera::GetMaxZoom(), Vec2(500, 300), Vec2(501, 301)},
        {Camera::GetMaxZoom(), Vec2(0, 300), Vec2(1023, 301)},
        {Camera::GetMinZoom(), Vec2(500, 300), Vec2(501, 301)},
        {Camera::GetMinZoom(), Vec2(0, 0), Vec2(1023, 767)},
        {Camera::GetMinZoom(), Vec2(0, 300), Vec2(1023, 301)},
        {Camera::GetMinZoom(), Vec2(300, 767), Vec2(301, 0)},
    };
    for (const Kind& kind : Kinds())
        for (const auto& c : cases)
            for (const Vec2& pan : {Vec2(), Vec2(300, -200), Vec2(1500, 700), Vec2(-6000, 5000)})
            {
                SCOPED_TRACE(testing::Message() << kind.undoName << " " << c.zoom << " " << c.from
                                                << " " << c.to << " " << pan);
                StartAnew();
                TheCamera()->SetZoom(c.zoom);
                TheCamera()->SetPan(pan);
                const Vec2 from = TheCamera()->GUIToWorld(c.from);
                const Vec2 to = TheCamera()->GUIToWorld(c.to);
                if (from.x == to.x || from.y == to.y)
                    continue; // nobody can tell them apart so far out
                EXPECT_TRUE(DragAlong(*kind.tool, {from, to}));
                ASSERT_EQ(1u, EntityCount());
                Play(10);
                EXPECT_EQ(1u, EntityCount());
                const util::String text = Save();
                TheScene()->ClearScene();
                Serializer::GetInstancePtr()->Deserialize(text);
                EXPECT_EQ(1u, EntityCount());
            }
}
}
}
