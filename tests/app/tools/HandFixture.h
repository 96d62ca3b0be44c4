// A hand on things that are there already: scenes of boxes with joints and pens, paused, without gravity
// and air.
#pragma once

#include "../JointFixture.h"
#include "ToolFixture.h"

#include "app/Snapshot.h"
#include "app/tools/DragTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SpringTool.h"

namespace app
{
// What a test of joints makes.
struct Make : JointFixture
{
    using JointFixture::AddPen;
    using JointFixture::Box;
    using JointFixture::Frame;
    using JointFixture::Join;
    using JointFixture::Plane;
    using JointFixture::Radians;
};

class HandFixture : public ToolFixture
{
protected:
    void SetUp() override
    {
        ToolFixture::SetUp();
        Run("Sim.gravitySwitch = false; Sim.airSwitch = false");
    }
    void TearDown() override
    {
        // Many a test ends in the middle of a gesture.
        const std::initializer_list<ToolPtr> tools = {
            TheTools()->Get<MoveTool>(),  TheTools()->Get<RotateTool>(),
            TheTools()->Get<ScaleTool>(), TheTools()->Get<DragTool>(),
            TheTools()->Get<PanTool>(),   TheTools()->Get<SpringTool>()};
        for (const ToolPtr& tool : tools)
            tool->Disband();
        Run("Sim.gravitySwitch = true; Sim.airSwitch = true");
        ToolFixture::TearDown();
    }

    static void Select(const Entities& entities) { TheScene()->SetSelection(GroupOf(entities)); }
    static Vec2 CenterOf(const GeomEntityPtr& entity) { return entity->GetGeom()->GetCenter(); }
    static Vec2 SizeOf(const EntityPtr& entity) { return entity->GetAABB().GetSize(); }
    static bool Escape(Tool& tool)
    {
        const input::KeyEvent event(SDLK_ESCAPE, 0, true, Vec2());
        tool.OnKeyEvent(event);
        return event.IsHandled();
    }
    /// A centimetre of the screen, in world units.
    static float CM() { return App::GetInstancePtr()->GetScreenCM(); }

    /// Undo brings back the one, and redo the other, byte for byte.
    static void ExpectUndoAndRedo(const util::String& before)
    {
        const util::String after = Save();
        EXPECT_NE(before, after);
        for (int i = 0; i < 2; ++i)
        {
            Undoer::GetInstancePtr()->Undo();
            EXPECT_EQ(before, Save());
            Undoer::GetInstancePtr()->Redo();
            EXPECT_EQ(after, Save());
        }
    }
    static void ExpectNear(const Vec2& expected, const Vec2& actual, float tolerance = 1e-4f)
    {
        EXPECT_NEAR(expected.x, actual.x, tolerance);
        EXPECT_NEAR(expected.y, actual.y, tolerance);
    }
};
}
