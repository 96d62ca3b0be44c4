// Joysticks that tests plug in. The functions in JoystickTest.cpp stand before SDL's own.
#pragma once

#include <string>
#include <vector>

namespace input
{
struct TestJoystick
{
    std::string name;
    std::vector<int> axes; // as SDL reads them: -32768 to 32767
    int buttons = 0;
    int balls = 0;
    int hats = 0;
    bool canBeOpened = true;
    int opened = 0; // how often
};

/// By SDL's index. Empty until a test plugs one in.
std::vector<TestJoystick>& PluggedIn();
}
