// What tools draw while they are in use, by the pixels of a real OpenGL.
#include "app/App.h"
#include "app/tools/BoxTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/SpringTool.h"
#include "app/tools/Tools.h"
#include "input/Key.h"
#include "util/Timer.h"
#include "window/EntityPictureStage.h"

#include "KeyEvents.h"

#include <cmath>
#include <utility>

using math::Vec2;
using test::Color;

namespace
{
// A world unit is 100 pixels; four of them are the width of the window, and three its height.
class ToolPictureTest : public test::EntityPictureStage
{
protected:
    /// The current one from now on.
    template<typename T>
    static T& Take()
    {
        app::Tools* tools = app::Tools::GetInstancePtr();
        tools->Select(tools->Get<T>());
        return *tools->Get<T>();
    }
    static Vec2 GUIPos(const Vec2& world) { return TheScene()->GetCamera()->WorldToGUI(world); }
    /// Pressed at the first of the points, and not let go.
    static void Drag(app::Tool& tool, const std::vector<Vec2>& points, int button)
    {
        const Vec2 start = GUIPos(points[0]);
        const input::DragEvent begin(start, Vec2(), start, button);
        tool.OnDragBegin(begin);
        EXPECT_TRUE(begin.IsHandled());
        for (size_t i = 1; i < points.size(); ++i)
            tool.OnDrag(input::DragEvent(start, GUIPos(points[i]) - GUIPos(points[i - 1]),
                                         GUIPos(points[i]), button));
    }
    static void End(app::Tool& tool, const Vec2& pos)
    {
        tool.OnDragEnd(input::DragEvent(Vec2(), Vec2(), GUIPos(pos), input::MouseLeft));
    }
    static void PointAt(const Vec2& pos)
    {
        const Vec2 pixel = GUIPos(pos);
        MoveMouse(int(std::lround(pixel.x)), int(std::lround(pixel.y)));
    }
    void ExpectNothingOf(app::Tool& tool, const Vec2& pos)
    {
        tool.Disband();
        Draw();
        EXPECT_COLOR(Backdrop, At(pos));
    }

    using EntityPictureStage::At;
    Color At(const Vec2& pos) const { return At(pos.x, pos.y); }
    /// Under a line of half opaque white, once or, where two parts of it meet, twice.
    bool IsVeiled(const Vec2& pos) const
    {
        return IsNear({127, 127, 255}, At(pos)) || IsNear({191, 191, 255}, At(pos));
    }
    static Vec2 OnArc(float degrees)
    {
        const float angle = degrees * math::PIf / 180;
        return app::App::GetInstancePtr()->GetScreenCM() * Vec2(std::cos(angle), std::sin(angle));
    }
    static constexpr Color White = {255, 255, 255};
};

TEST_F(ToolPictureTest, WhatTurnsScalesAndDragsShowsWhereItHolds)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const std::string box =
            std::string("Scene.addBox { geomID = 1; size = [0.4, 0.4]; ") + AmberKeys + "}; ";

        // A quarter of a turn: a target at the centre, and the arc of the way.
        Lay(box);
        EXPECT_COLOR(Amber, At(0, 0));
        auto& rotate = Take<app::RotateTool>();
        Drag(rotate, {Vec2(0, 0), Vec2(1, 0), Vec2(0, 1)}, input::MouseRight);
        Draw();
        EXPECT_TRUE(IsNear(White, At(0, 0), 80)) << At(0, 0);
        for (float degrees : {3.0f, 45.0f, 87.0f})
            EXPECT_TRUE(IsVeiled(OnArc(degrees))) << degrees << ": " << At(OnArc(degrees));
        for (float degrees : {-15.0f, 105.0f, 225.0f})
            EXPECT_COLOR(Backdrop, At(OnArc(degrees)));
        ExpectNothingOf(rotate, OnArc(45));
        EXPECT_COLOR(Amber, At(0, 0));

        // A box that hangs by a pin: the way of the handle through the pin, to both sides of it.
        Lay(box + "Scene.addHinge { geom0 = 1; geom0pos = [-0.1, 0.0]; geom1 = 0; "
                  "geom1pos = [-0.1, 0.0]; size = 0.1 }");
        auto& scale = Take<app::ScaleTool>();
        Drag(scale, {Vec2(0.19f, 0.19f)}, input::MouseLeft);
        scale.OnDrag(input::DragEvent(Vec2(), Vec2(), GUIPos(Vec2(0.8f, 0.6f)), input::MouseLeft));
        Draw();
        for (float part : {-0.9f, -0.6f, 0.9f})
        {
            const Vec2 pos = Vec2(-0.1f, 0) + part * Vec2(0.9f, 0.6f);
            EXPECT_TRUE(IsVeiled(pos)) << part << ": " << At(pos);
        }
        ExpectNothingOf(scale, Vec2(-0.1f, 0) - 0.9f * Vec2(0.9f, 0.6f));

        // From the grip to the mouse; while rotating, from the middle of that to where it was kept.
        Lay(box);
        auto& drag = Take<app::DragTool>();
        Drag(drag, {Vec2(0, 0)}, input::MouseLeft);
        test::SendKey(input::MouseLeft, true, true);
        PointAt(Vec2(1.2f, 0.8f));
        drag.Update(0.01f);
        MoveMouse(5000, 5000); // its cursor is in the way
        Draw();
        for (float part : {0.35f, 0.65f, 0.95f})
            EXPECT_TRUE(IsVeiled(part * Vec2(1.2f, 0.8f))) << part;
        test::SendKey(input::MouseRight, true, true);
        PointAt(Vec2(-1, 1));
        drag.Update(0.01f);
        Draw();
        EXPECT_COLOR(Backdrop, At(0.35f * Vec2(1.2f, 0.8f)));
        for (float part : {0.65f, 0.95f})
            EXPECT_TRUE(IsVeiled(part * Vec2(1.2f, 0.8f))) << part;
        ExpectNothingOf(drag, 0.65f * Vec2(1.2f, 0.8f));
    });
}

TEST_F(ToolPictureTest, WhatIsToBeMadeShowsWhileTheMouseIsDragged)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lay("");

        // A spring from end to end.
        auto& spring = Take<app::SpringTool>();
        Drag(spring, {Vec2(-1, 0)}, input::MouseLeft);
        PointAt(Vec2(1, 0));
        spring.Update(0.01f);
        MoveMouse(5000, 5000); // its cursor is in the way
        Draw();
        const int half = int(std::lround(app::App::GetInstancePtr()->GetDefaultJointSize() * 50));
        const auto countSeen = [this](int x0, int x1, int height)
        {
            int seen = 0;
            for (int x = x0; x < x1; ++x)
                for (int y = -height; y < height; ++y)
                    seen += !IsNear(Backdrop, GetColor(x, Height / 2 + y));
            return seen;
        };
        for (int x = 110; x < 290; x += 30)
            EXPECT_GT(countSeen(x, x + 30, half), 30) << x;
        EXPECT_EQ(countSeen(0, Width, half + 2), countSeen(0, Width, Height / 2))
            << "no wider than that";
        spring.Disband();
        Draw();
        EXPECT_EQ(0, countSeen(0, Width, Height / 2));

        // The outline of a box, as wide as its border.
        auto& box = Take<app::BoxTool>();
        Drag(box, {Vec2(-1, -0.6f)}, input::MouseLeft);
        PointAt(Vec2(1, 0.6f));
        Draw();
        for (const Vec2& pos :
             {Vec2(-0.98f, 0), Vec2(0.98f, 0.3f), Vec2(0.5f, 0.58f), Vec2(0, -0.58f)})
            EXPECT_COLOR(White, At(pos)) << pos.x << ", " << pos.y;
        for (const Vec2& pos : {Vec2(0, 0), Vec2(-0.94f, 0), Vec2(0, 0.54f), Vec2(1.02f, 0)})
            EXPECT_COLOR(Backdrop, At(pos)) << pos.x << ", " << pos.y;
        ExpectNothingOf(box, Vec2(-0.98f, 0));

        // A circle and a plane look as they will look: with a border around the colour, which a tool that
        // drew without depth would lay over all of it.
        for (bool hasShaders : {true, false})
        {
            SCOPED_TRACE(hasShaders);
            UseShaders(hasShaders);
            auto& circle = Take<app::CircleTool>();
            const math::Vec4 amber(240 / 255.0f, 160 / 255.0f, 60 / 255.0f, 1);
            // A small one, and one of 1,100 pixels.
            for (float radius : {0.5f, 5.5f})
            {
                SCOPED_TRACE(radius);
                const Vec2 center(0, 0.5f - radius);
                Drag(circle, {center, Vec2(0, 0.5f)}, input::MouseLeft);
                circle.GetPreview()->SetColor4(amber);
                Draw();
                EXPECT_COLOR(Amber, At(0, 0.2f));
                EXPECT_COLOR(AmberBorder, At(0, 0.48f));
                EXPECT_COLOR(Backdrop, At(0, 0.53f));
                ExpectNothingOf(circle, Vec2(0, 0.2f));
            }
            auto& plane = Take<app::PlaneTool>();
            Drag(plane, {Vec2(0, 0), Vec2(0, 1)}, input::MouseLeft);
            plane.GetPreview()->SetColor4(amber);
            Draw();
            EXPECT_COLOR(Amber, At(1, -0.5f));
            EXPECT_COLOR(AmberBorder, At(1, -0.02f));
            EXPECT_COLOR(Backdrop, At(1, 0.03f));
            ExpectNothingOf(plane, Vec2(1, -0.5f));
        }
    });
}

TEST_F(ToolPictureTest, InkRunsAheadToTheMouseAndAStraightStrokeFades)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lay("");
        static unsigned s_now = 100000; // milliseconds
        util::Timer::SetSource([](unsigned) { return s_now; });
        const Color ink = {217, 255, 217};
        auto& sketch = Take<app::SketchTool>();
        Drag(sketch, {Vec2(-1, 0), Vec2(0, 0)}, input::MouseLeft);
        PointAt(Vec2(1, 0.5f));
        Draw();
        EXPECT_COLOR(ink, At(-0.5f, 0));
        EXPECT_COLOR(ink, At(0.5f, 0.25f));
        EXPECT_COLOR(Backdrop, At(0.5f, 0));
        // The end of it is no part of the stroke yet.
        PointAt(Vec2(1, -0.5f));
        Draw();
        EXPECT_COLOR(ink, At(0.5f, -0.25f));
        EXPECT_COLOR(Backdrop, At(0.5f, 0.25f));

        // Straight, and across nothing: red over blue, for two seconds.
        End(sketch, Vec2(1, 0));
        for (const auto& [age, alpha] : {std::pair(0u, 1.0f), {300u, 0.85f}, {1500u, 0.25f}})
        {
            s_now = 100000 + age;
            Draw();
            const Color faded = {int(255 * alpha), 0, int(255 * (1 - alpha))};
            EXPECT_COLOR(faded, At(-0.5f, 0)) << age;
            EXPECT_COLOR(faded, At(0.5f, 0)) << age;
        }
        s_now = 102000;
        Draw();
        EXPECT_COLOR(Backdrop, At(0.5f, 0));

        // The part of a rope that is still to be laid.
        auto& chain = Take<app::ChainTool>();
        Drag(chain, {Vec2(-1, 0.5f)}, input::MouseLeft);
        PointAt(Vec2(1, 0.5f));
        Draw();
        const Color rope = At(0, 0.5f);
        EXPECT_FALSE(IsNear(Backdrop, rope, 20)) << rope;
        EXPECT_COLOR(rope, At(-0.8f, 0.5f));
        EXPECT_COLOR(rope, At(0.8f, 0.5f));
        EXPECT_COLOR(Backdrop, At(1.5f, 0.5f));
        ExpectNothingOf(chain, Vec2(0, 0.5f));
        util::Timer::SetSource(nullptr);
    });
}
}
