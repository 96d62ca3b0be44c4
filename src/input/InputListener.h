// Whoever wants input events. A listener hangs in an InputDelegator, by a weak reference: to be
// destroyed is to be gone from there.
#pragma once

#include "input/Events.h"
#include "script/Reflected.h"
#include "util/Callback.h"

#include <map>

namespace input
{
class InputListener : public script::Reflected
{
public:
    /// Named "unnamed" until changed.
    /// @param priority  the higher gets each event earlier; 50 is what most have
    explicit InputListener(int priority);
    ~InputListener() override;

    virtual void OnMouseMove(const MouseEvent& event);
    /// Records whether the key is down, unless a listener before has handled the event.
    virtual void OnKeyEvent(const KeyEvent& event);
    virtual void OnOtherEvent(const InputEvent& event);
    virtual void OnDragBegin(const DragEvent& event);
    virtual void OnDrag(const DragEvent& event);
    virtual void OnDragEnd(const DragEvent& event);
    virtual void OnClick(const ClickEvent& event);
    virtual void OnJoyAxisEvent(const JoyAxisEvent& event);

    /// True when this listener saw the key go down, and it is down still. A key that a listener above
    /// has taken is not down for those below.
    bool IsKeyDown(int key) const;

    int GetPriority() const { return m_priority; }
    /// Delegators that hold this listener sort it anew.
    void SetPriority(int priority);
    void AddPriorityCallback(const util::CallbackPtr& callback) { m_onPriority.Add(callback); }
    bool HasPriorityCallbacks() const { return m_onPriority.size() != 0; }
    void RemovePriorityCallback(const util::CallbackPtr& callback)
    {
        m_onPriority.Remove(callback);
    }

private:
    int m_priority;
    util::CallbackSet m_onPriority;
    std::map<int, bool> m_keys; // those seen by this listener
};
}
