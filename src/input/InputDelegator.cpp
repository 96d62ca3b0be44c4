#include "input/InputDelegator.h"

#include <algorithm>

namespace input
{
InputDelegator::InputDelegator(int priority)
    : InputListener(priority)
{
}

InputDelegator::~InputDelegator() = default;

void InputDelegator::AddListener(const util::WeakPtr<InputListener>& listener)
{
    Insert(listener, false);
}

void InputDelegator::AddFirstListener(const util::WeakPtr<InputListener>& listener)
{
    Insert(listener, true);
}

void InputDelegator::Insert(const util::WeakPtr<InputListener>& listener, bool isFirst)
{
    CODE_ASSERT(!listener.IsNull());
    RemoveListener(listener);

    InputListener* added = listener.GetUnlocked();
    Entry entry;
    entry.listener = listener;
    entry.isFirst = isFirst;
    entry.onPriority = util::MakeCallback(&InputDelegator::Sort, this);
    entry.priority = added->GetPriority();
    added->AddPriorityCallback(entry.onPriority);
    // Before its equals: the latest comes first. By bisection, as a scene may bind thousands of buttons.
    const auto place = std::lower_bound(m_listeners.begin(), m_listeners.end(), entry, IsBefore);
    m_listeners.insert(place, entry);
}

void InputDelegator::RemoveListener(const util::WeakPtr<InputListener>& listener)
{
    InputListener* wanted = listener.GetUnlocked();
    // What hangs in some delegator has a callback of it. A new listener is not searched for.
    if (!wanted || !wanted->HasPriorityCallbacks())
        return;
    for (auto it = m_listeners.begin(); it != m_listeners.end(); ++it)
        if (it->listener.GetUnlocked() == wanted)
        {
            wanted->RemovePriorityCallback(it->onPriority);
            m_listeners.erase(it);
            return;
        }
}

void InputDelegator::RemoveDead()
{
    m_listeners.erase(std::remove_if(m_listeners.begin(), m_listeners.end(),
                                     [](const Entry& entry) { return entry.listener.IsNull(); }),
                      m_listeners.end());
}

bool InputDelegator::IsBefore(const Entry& a, const Entry& b)
{
    return a.priority != b.priority ? a.priority > b.priority : a.isFirst && !b.isFirst;
}

void InputDelegator::Sort()
{
    for (Entry& entry : m_listeners)
        if (const InputListener* listener = entry.listener.GetUnlocked())
            entry.priority = listener->GetPriority();
    std::stable_sort(m_listeners.begin(), m_listeners.end(), IsBefore);
}

void InputDelegator::OnMouseMove(const MouseEvent& event)
{
    FireEvent(event, &InputListener::OnMouseMove);
}

void InputDelegator::OnKeyEvent(const KeyEvent& event)
{
    FireEvent(event, &InputListener::OnKeyEvent);
    // What no listener here has taken counts as down for the delegator itself.
    InputListener::OnKeyEvent(event);
}

void InputDelegator::OnOtherEvent(const InputEvent& event)
{
    FireEvent(event, &InputListener::OnOtherEvent);
}

void InputDelegator::OnDragBegin(const DragEvent& event)
{
    FireEvent(event, &InputListener::OnDragBegin);
}

void InputDelegator::OnDrag(const DragEvent& event)
{
    FireEvent(event, &InputListener::OnDrag);
}

void InputDelegator::OnDragEnd(const DragEvent& event)
{
    FireEvent(event, &InputListener::OnDragEnd);
}

void InputDelegator::OnClick(const ClickEvent& event)
{
    FireEvent(event, &InputListener::OnClick);
}

void InputDelegator::OnJoyAxisEvent(const JoyAxisEvent& event)
{
    FireEvent(event, &InputListener::OnJoyAxisEvent);
}
}
