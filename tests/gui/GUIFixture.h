// The GUI in a window of 400 x 300 that nobody sees, with a hand on the mouse and one on the clock.
#pragma once

#include "gui/Component.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "script/Parser.h"

#include <SDL_events.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace gui
{
/// What SDL takes for the time (GUITest.cpp).
void SetMilliseconds(unsigned time);

using Notes = std::vector<std::string>;

// Draws nothing and writes down what happens to it.
class NotingComponent : public Component
{
public:
    explicit NotingComponent(std::string name, Notes* notes, const LayoutPtr& layout = nullptr)
        : Component(layout)
        , m_name(std::move(name))
        , m_notes(notes)
    {
        SetReflectedName("x");
    }

    void OnKeyEvent(const input::KeyEvent& event) override
    {
        Note("key");
        Component::OnKeyEvent(event);
        if (m_onEvent)
            m_onEvent();
    }
    void Update(float dt) override
    {
        Component::Update(dt);
        Note("update");
        if (m_onEvent)
            m_onEvent();
    }
    void OnMouseEnter() override
    {
        Component::OnMouseEnter();
        Note("enter");
        if (m_onEvent)
            m_onEvent();
    }
    void OnMouseLeave() override
    {
        Component::OnMouseLeave();
        Note("leave");
    }
    void Reorganize() override
    {
        Component::Reorganize();
        ++m_reorganized;
    }
    void OnFormChange() override
    {
        Note("form");
        Component::OnFormChange();
    }
    void OnChildFormChange() override
    {
        Component::OnChildFormChange();
        Note("child's");
    }
    void OnOwnerFormChange() override
    {
        Component::OnOwnerFormChange();
        Note("owner's");
    }

    std::function<void()> m_onEvent;
    int m_reorganized = 0;

private:
    void Note(const std::string& what) { m_notes->push_back(m_name + " " + what); }

    std::string m_name;
    Notes* m_notes;
};
using NotingPtr = util::SharedPtr<NotingComponent>;

class GUIFixture : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (GUI::GetInstancePtr()->GetOwner().IsNull())
            GUI::GetInstancePtr()->AddToRoot();
    }
    void SetUp() override
    {
        SetSeconds(100);
        gui->OnNewWindowSize(400, 300);
        MoveMouse(399, 299);
    }
    void TearDown() override
    {
        Main()->RemoveAllComponents();
        gui->GetTooltipLayer()->RemoveAllComponents();
        Script("GUI.scale = 1.0");
        gui->OnNewWindowSize(0, 0);
    }

    static util::String Script(const util::String& code)
    {
        return script::Parser::GetInstancePtr()->ExecuteToString(code);
    }
    static const ComponentPtr& Main() { return GUI::GetInstancePtr()->GetMainContainer(); }
    static void SetSeconds(double time)
    {
        SetMilliseconds(static_cast<unsigned>(time * 1000 + 0.5));
    }
    /// Pixels. The event goes through the whole input.
    static void MoveMouse(int x, int y)
    {
        SDL_Event event = {};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = static_cast<Uint16>(x);
        event.motion.y = static_cast<Uint16>(y);
        input::Input::GetInstancePtr()->HandleEvent(event);
    }
    static input::KeyEvent Press(int key) { return input::KeyEvent(key, 0, true, math::Vec2()); }

    template<typename T>
    static util::SharedPtr<T> Place(const util::SharedPtr<T>& component, const ComponentPtr& owner,
                                    float x, float y, float w, float h)
    {
        component->SetOuterPos(math::Vec2(x, y));
        component->SetInnerSize(math::Vec2(w, h));
        owner->AddComponent(component);
        return component;
    }
    static ComponentPtr Place(const ComponentPtr& owner, float x, float y, float w, float h)
    {
        return Place(ComponentPtr(QUIB_NEW Component), owner, x, y, w, h);
    }

    GUI* gui = GUI::GetInstancePtr();
};
}
