#include "input/InputListener.h"

#include "input/Input.h"

namespace input
{
InputListener::InputListener(int priority)
    : Reflected("unnamed")
    , m_priority(priority)
{
}

InputListener::~InputListener() = default;

void InputListener::OnMouseMove(const MouseEvent&) {}

void InputListener::OnKeyEvent(const KeyEvent& event)
{
    if (!event.IsHandled())
        m_keys[event.GetKey()] = event.IsDown();
}

void InputListener::OnOtherEvent(const InputEvent&) {}

void InputListener::OnDragBegin(const DragEvent&) {}

void InputListener::OnDrag(const DragEvent&) {}

void InputListener::OnDragEnd(const DragEvent&) {}

void InputListener::OnClick(const ClickEvent&) {}

void InputListener::OnJoyAxisEvent(const JoyAxisEvent&) {}

bool InputListener::IsKeyDown(int key) const
{
    const auto it = m_keys.find(key);
    // A release that somebody else took never came here: the root of all input has the last word.
    return it != m_keys.end() && it->second && Input::GetInstancePtr()->IsKeyDown(key);
}

void InputListener::SetPriority(int priority)
{
    m_priority = priority;
    m_onPriority.CallAll();
}
}
