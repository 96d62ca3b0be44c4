// What the listeners get. The raw SDL event has its own header, input/InputEvent.h, so that SDL stays
// out of this one.
#pragma once

#include "math/Vector.h"

namespace input
{
// An event reaches all listeners, handled or not: the flag is a message from one listener to those
// after it, and each has to look at it.
class GeneralEvent
{
public:
    bool IsHandled() const { return m_handled; }
    void SetHandled(bool handled) const { m_handled = handled; }

protected:
    GeneralEvent() = default;
    ~GeneralEvent() = default;

private:
    mutable bool m_handled = false;
};

// A key, or a mouse button as one: button n of the mouse is key n + 323, the wheel up 327 and down
// 328. A key is an int and not an SDLKey, as the numbers go beyond SDL's.
class KeyEvent final : public GeneralEvent
{
public:
    KeyEvent(int key, bool down, const math::Vec2& position)
        : m_key(key)
        , m_down(down)
        , m_position(position)
    {
    }

    int GetKey() const { return m_key; }
    bool IsDown() const { return m_down; }
    /// Of the mouse, in GUI units.
    const math::Vec2& GetPosition() const { return m_position; }

private:
    int m_key;
    bool m_down;
    math::Vec2 m_position;
};

class MouseEvent final : public GeneralEvent
{
public:
    MouseEvent(unsigned char buttons, const math::Vec2& position, const math::Vec2& relative)
        : m_buttons(buttons)
        , m_position(position)
        , m_relative(relative)
    {
    }

    /// SDL's state bits.
    unsigned char GetButtons() const { return m_buttons; }
    /// In GUI units.
    const math::Vec2& GetPosition() const { return m_position; }
    /// The motion since the event before, in GUI units.
    const math::Vec2& GetRelative() const { return m_relative; }

private:
    unsigned char m_buttons;
    math::Vec2 m_position;
    math::Vec2 m_relative;
};

class InputEvent;
}
