// Presses and releases of keys, as the input passes them on.
#pragma once

#include "input/Input.h"

namespace test
{
/// @param handled  somebody before all listeners has taken it
inline void SendKey(int key, bool down, bool handled = false)
{
    const input::KeyEvent event(key, 0, down, math::Vec2());
    event.SetHandled(handled);
    input::Input::GetInstancePtr()->OnKeyEvent(event);
}
}
