// Brings key events to the key bindings of scripts: the upper half of script::KeyBinder.
#pragma once

#include "input/InputListener.h"
#include "script/KeyBinder.h"

// Just below the interface, where most listeners have 50: a key that a text box has taken fires nothing.
class script::KeyBinder::BindInputListener final : public input::InputListener
{
public:
    explicit BindInputListener(KeyBinder* binder);

    void OnKeyEvent(const input::KeyEvent& event) override;

private:
    KeyBinder* m_binder; // whose part this is
};
