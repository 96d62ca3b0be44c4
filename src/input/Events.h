// What the listeners get. The raw SDL event has its own header, input/InputEvent.h, so that SDL stays
// out of this one.
#pragma once

#include "math/Vector.h"
#include "util/SharedPtr.h"

namespace input
{
class Joystick;

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

// A key, or a button of the mouse or of a joystick as one: see input/Key.h for the numbers. A key is
// an int and not an SDLKey, as the numbers go beyond SDL's.
class KeyEvent final : public GeneralEvent
{
public:
    /// Takes the modifiers, and whether this press repeats one that has not been released, from the
    /// input as it is now.
    /// @param character  what the key types, in Latin-1; 0 for nothing
    /// @param position   of the mouse, in GUI units
    KeyEvent(int key, char character, bool down, const math::Vec2& position);

    int GetKey() const { return m_key; }
    char GetCharacter() const { return m_character; }
    bool IsDown() const { return m_down; }
    /// A press of a key that was down already: SDL repeats what is held, as typing text wants it.
    bool IsRepeat() const { return m_repeat; }
    bool IsAltDown() const { return m_alt; }
    /// Ctrl or the command key.
    bool IsCtrlDown() const { return m_ctrl; }
    bool IsShiftDown() const { return m_shift; }
    const math::Vec2& GetPosition() const { return m_position; }

private:
    int m_key;
    char m_character;
    bool m_down;
    bool m_repeat;
    bool m_alt;
    bool m_ctrl;
    bool m_shift;
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

// A press and release of a mouse button in one place.
class ClickEvent final : public GeneralEvent
{
public:
    ClickEvent(const math::Vec2& position, int button, int count)
        : m_position(position)
        , m_button(button)
        , m_count(count)
    {
    }

    /// Of the press, in GUI units.
    const math::Vec2& GetPosition() const { return m_position; }
    /// A key: MouseLeft and so on.
    int GetButton() const { return m_button; }
    int GetClickCount() const { return m_count; }

private:
    math::Vec2 m_position;
    int m_button;
    int m_count;
};

// The mouse moved, or held still for a while, with a button down.
class DragEvent final : public GeneralEvent
{
public:
    DragEvent(const math::Vec2& start, const math::Vec2& delta, const math::Vec2& position,
              int button)
        : m_start(start)
        , m_delta(delta)
        , m_position(position)
        , m_button(button)
    {
    }

    /// Where the button went down. All in GUI units.
    const math::Vec2& GetStart() const { return m_start; }
    /// Deliberate: of the first OnDrag of a drag the whole way from the start, of the others the way
    /// since the one before, so that their sum is the way of the drag. Else 0.
    const math::Vec2& GetDelta() const { return m_delta; }
    const math::Vec2& GetPosition() const { return m_position; }
    /// A key: MouseLeft and so on.
    int GetButton() const { return m_button; }

private:
    math::Vec2 m_start;
    math::Vec2 m_delta;
    math::Vec2 m_position;
    int m_button;
};

class JoyAxisEvent final : public GeneralEvent
{
public:
    JoyAxisEvent(util::SharedPtr<Joystick> joystick, int axis);
    ~JoyAxisEvent();

    /// Null for one that nobody has opened.
    const util::SharedPtr<Joystick>& GetJoystick() const { return m_joystick; }
    int GetAxis() const { return m_axis; }

private:
    util::SharedPtr<Joystick> m_joystick;
    int m_axis;
};

class InputEvent;
}
