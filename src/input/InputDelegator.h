// A listener that hands each event on to its own listeners: highest priority first, and among equals
// the latest added first.
#pragma once

#include "input/InputListener.h"

#include <deque>

namespace input
{
class InputDelegator : public InputListener
{
public:
    explicit InputDelegator(int priority);
    ~InputDelegator() override;

    /// One that is here already moves to the front of its priority.
    /// @throws BadCoderException  when it is null or gone
    void AddListener(const util::WeakPtr<InputListener>& listener);
    /// The same, but it stays in front of all others of its priority, whenever they come.
    void AddFirstListener(const util::WeakPtr<InputListener>& listener);
    void RemoveListener(const util::WeakPtr<InputListener>& listener);

    void OnMouseMove(const MouseEvent& event) override;
    void OnKeyEvent(const KeyEvent& event) override;
    void OnOtherEvent(const InputEvent& event) override;
    void OnDragBegin(const DragEvent& event) override;
    void OnDrag(const DragEvent& event) override;
    void OnDragEnd(const DragEvent& event) override;
    void OnClick(const ClickEvent& event) override;
    void OnJoyAxisEvent(const JoyAxisEvent& event) override;

protected:
    /// Calls the handler on every listener; the handled flag does not stop the round. Listeners may
    /// be added and removed meanwhile, which shows from the next event on. The dead are dropped.
    template<typename E>
    void FireEvent(const E& event, void (InputListener::*handler)(const E&))
    {
        const std::deque<Entry> copy = m_listeners;
        bool isAnyDead = false;
        for (const Entry& entry : copy)
        {
            util::LockPtr<InputListener> listener(entry.listener);
            if (listener)
                (listener.get()->*handler)(event);
            else
                isAnyDead = true;
        }
        if (isAnyDead)
            RemoveDead();
    }

private:
    struct Entry
    {
        util::WeakPtr<InputListener> listener;
        util::CallbackPtr onPriority; // its registration at the listener
        int priority;                 // as of the last Sort; stays when the listener dies
        bool isFirst;                 // among equals
    };

    void Insert(const util::WeakPtr<InputListener>& listener, bool isFirst);
    static bool IsBefore(const Entry& a, const Entry& b);
    void Sort();
    void RemoveDead();

    std::deque<Entry> m_listeners; // sorted, the dead included
};
}
