// The names of keys. One space of numbers holds all that can be down or up: SDL's own keys, the mouse's
// buttons behind them, and then buttons and hat directions of joysticks.
#pragma once

#include "util/String.h"

namespace input
{
/// The key of button 0 of the mouse.
constexpr int FirstMouseKey = 323;
// Those that make clicks and drags.
constexpr int MouseLeft = 324;
constexpr int MouseMiddle = 325;
constexpr int MouseRight = 326;
// A notch is a press and a release.
constexpr int MouseWheelUp = 327;
constexpr int MouseWheelDown = 328;
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
bool HasName(int key);
/// Case does not count.
/// @throws BadDataException  Unknown name of key "name"
int GetKeyFromName(const util::String& name);
/// Whether that would find one.
bool IsKeyName(const util::String& name);

bool IsMouseButton(int key);

// Joystick: 0 to 31; button: 0 to 255; hat: 0 to 31.

int GetJoystickKey(int joystick, int button);
/// @param mask  SDL's for one direction: 1 up, 2 right, 4 down, 8 left
/// @return 0, with a line in the log, for another mask
int GetJoystickHatKey(int joystick, int hat, int mask);
// Each -1 for a key that is none of that kind.
int GetJoystickFromKey(int key);
/// Of a hat's key what stands in the button's place in its number.
int GetJoystickButtonFromKey(int key);
int GetJoystickHatFromKey(int key);
bool IsJoystickHatKey(int key);
}
}
