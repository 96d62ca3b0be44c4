#include "input/Events.h"

#include "input/Input.h"
#include "input/Joystick.h"

namespace input
{
KeyEvent::KeyEvent(int key, char character, bool down, const math::Vec2& position)
    : m_key(key)
    , m_character(character)
    , m_down(down)
    , m_position(position)
{
    const Input* input = Input::GetInstancePtr();
    m_repeat = down && input->IsKeyDown(key);
    m_alt = input->CheckModifier(ModAlt);
    m_ctrl = input->CheckModifier(ModCtrl);
    m_shift = input->CheckModifier(ModShift);
}

JoyAxisEvent::JoyAxisEvent(util::SharedPtr<Joystick> joystick, int axis)
    : m_joystick(std::move(joystick))
    , m_axis(axis)
{
}

JoyAxisEvent::~JoyAxisEvent() = default;
}
