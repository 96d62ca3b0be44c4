// The program with a screen, and a hand on the mouse: either straight at one tool, with positions as
// exact as floats are, or through the whole of the input.
#pragma once

#include "../AppFixture.h"
#include "../HeldKeys.h"
#include "../../MouseEvents.h"

#include "app/tools/SketchTool.h"
#include "app/tools/Tools.h"
#include "input/Input.h"

#include <SDL.h>

#include <cmath>
#include <vector>

namespace app
{
class ToolFixture : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        // SDL's dummy driver has no mouse without a screen.
        if (!SDL_GetVideoSurface() && !SDL_SetVideoMode(1024, 768, 0, SDL_SWSURFACE))
            FAIL() << SDL_GetError();
        gui::GUI::GetInstancePtr()->OnNewWindowSize(1024, 768);
        Prepare();
        ChooseSketchTool();
    }
    void TearDown() override
    {
        ChooseSketchTool();
        AppFixture::TearDown();
    }

    /// As at the beginning of a test, but for the tools.
    static void StartAnew()
    {
        Reset();
        Prepare();
    }
    /// So many steps of a hundredth of a second, with a frame after each. Paused again afterwards.
    static void Play(int steps)
    {
        Sim()->m_running = true;
        for (int i = 0; i < steps; ++i)
        {
            Sim()->Update(0.01);
            TheScene()->Update(0.01f);
        }
        Sim()->m_running = false;
    }

    static Tools* TheTools() { return Tools::GetInstancePtr(); }
    static size_t EntityCount() { return TheScene()->GetEntities().size(); }
    /// The key of the next undo's name, "" when there is none.
    static util::String NextUndo()
    {
        const ActionPtr action = Undoer::GetInstancePtr()->GetNextUndo();
        return action ? action->GetNameKey() : "";
    }

    // Straight at a tool. Positions are in the world; each tells whether the tool took the event.

    static math::Vec2 GUIPos(const math::Vec2& world) { return TheCamera()->WorldToGUI(world); }
    static bool Begin(Tool& tool, const math::Vec2& pos, int button = input::MouseLeft)
    {
        const input::DragEvent event(GUIPos(pos), math::Vec2(), GUIPos(pos), button);
        tool.OnDragBegin(event);
        return event.IsHandled();
    }
    static bool Drag(Tool& tool, const math::Vec2& start, const math::Vec2& from,
                     const math::Vec2& to, int button = input::MouseLeft)
    {
        const input::DragEvent event(GUIPos(start), GUIPos(to) - GUIPos(from), GUIPos(to), button);
        tool.OnDrag(event);
        return event.IsHandled();
    }
    static bool End(Tool& tool, const math::Vec2& start, const math::Vec2& pos,
                    int button = input::MouseLeft)
    {
        const input::DragEvent event(GUIPos(start), math::Vec2(), GUIPos(pos), button);
        tool.OnDragEnd(event);
        return event.IsHandled();
    }
    /// A whole drag, from the first to the last of the points.
    /// @return whether the tool took its beginning
    static bool DragAlong(Tool& tool, const std::vector<math::Vec2>& points,
                          int button = input::MouseLeft)
    {
        const bool isTaken = Begin(tool, points.front(), button);
        for (size_t i = 1; i < points.size(); ++i)
            Drag(tool, points[0], points[i - 1], points[i], button);
        End(tool, points.front(), points.back(), button);
        return isTaken;
    }
    static bool Click(Tool& tool, const math::Vec2& pos, int button = input::MouseLeft,
                      int count = 1)
    {
        const input::ClickEvent event(GUIPos(pos), button, count);
        tool.OnClick(event);
        return event.IsHandled();
    }

    // Through the whole of the input, at the nearest pixel.

    static void MoveMouse(const math::Vec2& pos)
    {
        const math::Vec2 pixel = gui::GUI::GetInstancePtr()->PixelFromPos(GUIPos(pos));
        SDL_WarpMouse(static_cast<Uint16>(std::lround(pixel.x)),
                      static_cast<Uint16>(std::lround(pixel.y)));
        input::Input::GetInstancePtr()->PumpEvents();
    }
    static void Button(bool down, int button = input::MouseLeft)
    {
        int x = 0, y = 0;
        SDL_GetMouseState(&x, &y);
        input::Input::GetInstancePtr()->HandleEvent(
            test::ButtonEvent(down, button - input::FirstMouseKey, x, y));
    }
    /// Moves there, presses, moves on from point to point, and lets go.
    static void MouseDrag(const std::vector<math::Vec2>& points, int button = input::MouseLeft)
    {
        MoveMouse(points.front());
        Button(true, button);
        for (size_t i = 1; i < points.size(); ++i)
            MoveMouse(points[i]);
        Button(false, button);
    }
    static void MouseClick(const math::Vec2& pos, int button = input::MouseLeft)
    {
        MoveMouse(pos);
        Button(true, button);
        Button(false, button);
    }
    /// A key pressed and released.
    static void Tap(int key)
    {
        test::SendKey(key, true);
        test::SendKey(key, false);
    }

private:
    static void Prepare()
    {
        Sim()->m_running = false;
        // A pixel is a hundredth of a unit, and a screen centimetre 0.3386.
        TheCamera()->SetPan(math::Vec2());
        TheCamera()->SetZoom(100);
    }
    static void ChooseSketchTool()
    {
        TheTools()->GetTool()->Disband();
        TheTools()->Select(TheTools()->Get<SketchTool>());
    }
};
}
