// Input's clicks and drags, made from presses, releases and motion that no listener has taken.
#include "input/Input.h"

#include "util/ScopeProfiler.h"
#include "util/Timer.h"

namespace input
{
void Input::OnKeyEvent(const KeyEvent& event)
{
    QUIB_PROFILE("OnKeyEvent");
    m_keys[event.GetKey()] = event.IsDown();
    InputDelegator::OnKeyEvent(event);
    if (event.GetKey() < MouseLeft || event.GetKey() > MouseRight)
        return;
    if (event.IsDown())
        OnButtonPress(event);
    else if (event.GetKey() == m_button && m_state != Idle)
        OnButtonRelease(event);
}

void Input::OnButtonPress(const KeyEvent& event)
{
    if (event.IsHandled() || m_state != Idle)
        return;
    m_state = Armed;
    m_pressTime = util::Timer::GetCurrentTime();
    m_pressPos = event.GetPosition();
    m_button = event.GetKey();
    m_clickCount = 0;
}

void Input::OnButtonRelease(const KeyEvent& event)
{
    if (m_state == Dragging)
    {
        // Somebody may have taken the release: the drag ends all the same, or it would stick.
        m_state = Idle;
        const DragEvent end(m_pressPos, math::Vec2(0, 0), event.GetPosition(), m_button);
        FireEvent(end, &InputListener::OnDragEnd);
        event.SetHandled(event.IsHandled() || end.IsHandled());
        return;
    }
    if (event.IsHandled())
    {
        m_state = Idle;
        return;
    }
    if (++m_clickCount < MaxClickCount())
    {
        event.SetHandled(true);
        return;
    }
    event.SetHandled(FireClick());
}

void Input::OnMouseMove(const MouseEvent& event)
{
    QUIB_PROFILE("OnMouseMove");
    FireEvent(event, &InputListener::OnMouseMove);
    if (event.IsHandled())
        return;
    if (m_state == Armed)
    {
        const math::Vec2 way = event.GetPosition() - m_pressPos;
        if (!(way.Length() > m_clickLimits().distance))
            return;
        if (m_clickCount > 0)
            FireClick();
        if (IsKeyDown(m_button))
        {
            const bool isBeginHandled = FireDragBegin();
            event.SetHandled(FireDrag(way, event.GetPosition()) || isBeginHandled);
        }
    }
    else if (m_state == Dragging)
        event.SetHandled(FireDrag(event.GetRelative(), event.GetPosition()));
}

void Input::CheckClickTimeout()
{
    QUIB_PROFILE("CheckClickTimeout");
    if (m_state != Armed || !(util::Timer::GetCurrentTime() - m_pressTime > m_clickLimits().time))
        return;
    if (m_clickCount > 0)
        FireClick();
    if (!IsKeyDown(m_button))
    {
        m_state = Idle;
        return;
    }
    FireDragBegin();
    if (m_mousePos != m_pressPos)
        FireDrag(m_mousePos - m_pressPos, m_mousePos);
}

bool Input::FireClick()
{
    m_state = Idle;
    const ClickEvent click(m_pressPos, m_button, m_clickCount);
    FireEvent(click, &InputListener::OnClick);
    return click.IsHandled();
}

bool Input::FireDragBegin()
{
    m_state = Dragging;
    const DragEvent begin(m_pressPos, math::Vec2(0, 0), m_pressPos, m_button);
    FireEvent(begin, &InputListener::OnDragBegin);
    return begin.IsHandled();
}

bool Input::FireDrag(const math::Vec2& delta, const math::Vec2& position)
{
    const DragEvent drag(m_pressPos, delta, position, m_button);
    FireEvent(drag, &InputListener::OnDrag);
    return drag.IsHandled();
}
}
