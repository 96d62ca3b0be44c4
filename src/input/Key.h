// The names of keys. One space of numbers holds all that can be down or up: SDL's own keys, the mouse's
// buttons behind them, and then buttons and hat directions of joysticks.
#pragma once

#include "util/String.h"

namespace input
{
/// The key of button 0 of the mouse.
constexpr int FirstMouseKey = 323;
/// The key of button 0 of joystick 0.
constexpr int FirstJoystickKey = 579;
constexpr int JoystickCount = 32;
constexpr int JoystickButtonCount = 256;
constexpr int JoystickHatCount = 32;
/// From one joystick to the next: the buttons, then up, right, down and left of each hat.
constexpr int KeysPerJoystick = JoystickButtonCount + JoystickHatCount * 4;
/// The end of the number space.
constexpr int KEYBUFFERSIZE = FirstJoystickKey + JoystickCount * KeysPerJoystick;

namespace Key
{
/// @throws BadDataException  "Unknown key": there are numbers that stand for no key
const util::String& GetKeyName(int key);
/// Case does not count.
/// @throws BadDataException  Unknown name of key "name"
int GetKeyFromName(const util::String& name);
}
}
