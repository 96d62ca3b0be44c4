#include "input/BindInputListener.h"

#include "script/Objects.h"

script::KeyBinder::BindInputListener::BindInputListener(KeyBinder* binder)
    : InputListener(49)
    , m_binder(binder)
{
}

void script::KeyBinder::BindInputListener::OnKeyEvent(const input::KeyEvent& event)
{
    InputListener::OnKeyEvent(event);
    m_binder->OnKeyEvent(event);
}

void script::KeyBinder::OnKeyEvent(const input::KeyEvent& event)
{
    if (!event.IsDown() || event.IsHandled())
        return;
    const auto binding = m_bindings.find(event.GetKey());
    if (binding == m_bindings.end())
        return;
    const util::SharedPtr<AbstractFunction> code = binding->second; // it may bind its own key anew
    code->Call({});
    event.SetHandled(true);
}
