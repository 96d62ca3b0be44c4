// Listeners that write down what reaches them.
#pragma once

#include "input/InputDelegator.h"
#include "input/InputEvent.h"

#include <string>
#include <vector>

namespace input
{
class NotingListener : public InputListener
{
public:
    NotingListener(int priority, std::string name, std::vector<std::string>* notes)
        : InputListener(priority)
        , m_name(std::move(name))
        , m_notes(notes)
    {
    }

    void OnMouseMove(const MouseEvent&) override { m_notes->push_back(m_name + " move"); }
    void OnKeyEvent(const KeyEvent& event) override
    {
        InputListener::OnKeyEvent(event);
        m_notes->push_back(m_name);
        if (m_onKey)
            m_onKey(event);
    }
    void OnOtherEvent(const InputEvent& event) override
    {
        m_notes->push_back(m_name + " other " + std::to_string(event.GetEvent().type));
    }

    void OnDragBegin(const DragEvent&) override { m_notes->push_back(m_name + " begin"); }
    void OnDrag(const DragEvent&) override { m_notes->push_back(m_name + " drag"); }
    void OnDragEnd(const DragEvent&) override { m_notes->push_back(m_name + " end"); }
    void OnClick(const ClickEvent&) override { m_notes->push_back(m_name + " click"); }
    void OnJoyAxisEvent(const JoyAxisEvent&) override { m_notes->push_back(m_name + " axis"); }

    std::function<void(const KeyEvent&)> m_onKey;

private:
    std::string m_name;
    std::vector<std::string>* m_notes;
};
}
