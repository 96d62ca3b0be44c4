// The one place where SDL's event queue is read, and the root of the tree of listeners.
#pragma once

#include "input/InputDelegator.h"
#include "input/Key.h"
#include "util/Singleton.h"

#include <initializer_list>

union SDL_Event;

namespace input
{
// Keys that others are held with.
enum Modifier
{
    ModNone, // none of them is held
    ModShift,
    ModLeftShift,
    ModRightShift,
    ModCtrl, // or the command key, and so with the next two
    ModLeftCtrl,
    ModRightCtrl,
    ModAlt,
    ModLeftAlt,
    ModRightAlt,
    ModMeta,
    ModLeftMeta,
    ModRightMeta,
    ModNumLock,
    ModCapsLock
};

/// Key repeat and unicode translation.
void SetTextInput(bool on);

class Input : public InputDelegator, public util::Singleton<Input>
{
public:
    /// Calls nothing of SDL: the services that it would ask do not exist yet.
    Input();

    /// Once SDL is up. Needs no window.
    void InitializeSDL();

    /// Once a frame: delivers all waiting events and reads the mouse. Of several resizes only the last
    /// is delivered, after all other events: each one costs a new GL context.
    void PumpEvents();

    /// Delivers one event as PumpEvents does.
    void HandleEvent(const SDL_Event& event);

    /// A key never seen is up.
    bool IsKeyDown(int key) const;
    /// Not zero when the modifier is held: SDL says so, and its key has been seen to go down, as SDL's own
    /// state may stick when the window loses the focus. For what is no Modifier the mask of SDL's state.
    int CheckModifier(Modifier modifier) const;
    /// As of the last PumpEvents, in GUI units.
    const math::Vec2& GetMousePos() const { return m_mousePos; }
    /// Seconds; when the last PumpEvents began.
    double GetPumpTime() const { return m_pumpTime; }

    /// Whether mouse and keyboard stay with the window, away from all others.
    void SetGrabInput(bool grab);

    /// How pixels become positions. Set by the GUI, which lies above this; one to one before that.
    using PosFromPixelFunction = math::Vec2 (*)(int x, int y);
    void SetPosFromPixel(PosFromPixelFunction function) { m_posFromPixel = function; }

    void OnKeyEvent(const KeyEvent& event) override;

private:
    bool IsAnyKeyDown(std::initializer_list<int> keys) const;

    double m_pumpTime = 0;
    std::map<int, bool> m_keys;
    math::Vec2 m_mousePos;
    PosFromPixelFunction m_posFromPixel;
};
}
