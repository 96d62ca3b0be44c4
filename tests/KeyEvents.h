// Presses and releases of keys, as the input passes them on.
#pragma once

#include "input/Input.h"
#include "input/InputListener.h"

#include <gtest/gtest.h>

namespace test
{
/// @param handled  somebody before all listeners has taken it
inline void SendKey(int key, bool down, bool handled = false)
{
    const input::KeyEvent event(key, 0, down, math::Vec2());
    event.SetHandled(handled);
    input::Input::GetInstancePtr()->OnKeyEvent(event);
}

/// Straight to one listener.
/// @param handled  somebody before it has taken it
/// @param repeat   the key is down already
/// @return whether it is handled afterwards
inline bool SendKeyTo(input::InputListener& listener, int key, bool down, bool handled, bool repeat)
{
    if (repeat)
        SendKey(key, true, true);
    const input::KeyEvent event(key, 0, down, math::Vec2());
    EXPECT_EQ(repeat, event.IsRepeat());
    event.SetHandled(handled);
    listener.OnKeyEvent(event);
    if (repeat)
        SendKey(key, false, true);
    return event.IsHandled();
}
}
