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
    CODE_ASSERT(!listener.IsNull());
    RemoveListener(listener);

    Entry entry;
    entry.listener = listener;
    entry.onPriority = util::MakeCallback(&InputDelegator::Sort, this);
    listener.GetUnlocked()->AddPriorityCallback(entry.onPriority);
    // At the front: the sort is stable, so that the latest comes first among equals.
    m_listeners.push_front(entry);
    Sort();
}

void InputDelegator::RemoveListener(const util::WeakPtr<InputListener>& listener)
{
    InputListener* wanted = listener.GetUnlocked();
    if (!wanted)
        return;
    for (auto it = m_listeners.begin(); it != m_listeners.end(); ++it)
        if (it->listener.GetUnlocked() == wanted)
        {
            wanted->RemovePriorityCallback(it->onPriority);
            m_listeners.erase(it);
            return;
        }
}

void InputDelegator::RemoveDead(const Entry& entry)
{
    const auto it = std::find_if(m_listeners.begin(), m_listeners.end(),
                                 [&](const Entry& e) { return e.onPriority == entry.onPriority; });
    if (it != m_listeners.end())
        m_listeners.erase(it);
}

void InputDelegator::Sort()
{
    std::stable_sort(m_listeners.begin(), m_listeners.end(),
                     [](const Entry& a, const Entry& b)
                     {
                         const InputListener* la = a.listener.GetUnlocked();
                         const InputListener* lb = b.listener.GetUnlocked();
                         return (la ? la->GetPriority() : -1) > (lb ? lb->GetPriority() : -1);
                     });
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
}
