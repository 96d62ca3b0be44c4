#include "input/Key.h"

#include "TestSupport.h"
#include "util/Failures.h"

#include <gtest/gtest.h>

namespace input
{
namespace
{
TEST(Key, NamesAreThoseOfTheTable)
{
    const struct
    {
        int key;
        const char* name;
    } cases[] = {
        {8, "backspace"},
        {9, "tab"},
        {12, "clear"},
        {13, "return"},
        {19, "pause"},
        {27, "escape"},
        {32, "space"},
        {33, "!"},
        {'0', "0"},
        {'a', "a"},
        {126, "~"},
        {127, "delete"},
        {160, "world_0"},
        {255, "world_95"},
        {256, "[0]"},
        {265, "[9]"},
        {266, "[.]"},
        {270, "[+]"},
        {271, "enter"},
        {272, "equals"},
        {273, "up"},
        {274, "down"},
        {275, "right"},
        {276, "left"},
        {277, "insert"},
        {278, "home"},
        {279, "end"},
        {280, "page_up"},
        {281, "page_down"},
        {282, "f1"},
        {296, "f15"},
        {300, "numlock"},
        {301, "caps_lock"},
        {302, "scroll_lock"},
        {303, "right_shift"},
        {304, "left_shift"},
        {305, "right_ctrl"},
        {306, "left_ctrl"},
        {307, "right_alt"},
        {308, "left_alt"},
        {309, "right_meta"},
        {310, "left_meta"},
        {311, "left_super"},
        {312, "right_super"},
        {313, "alt_graph"},
        {314, "compose"},
        {315, "help"},
        {316, "print_screen"},
        {317, "sys_req"},
        {318, "break"},
        {319, "menu"},
        {320, "power"},
        {321, "euro"},
        {322, "undo"},
        {323, "mouse_0"},
        {324, "mouse_left"},
        {325, "mouse_middle"},
        {326, "mouse_right"},
        {327, "mouse_wheel_up"},
        {328, "mouse_wheel_down"},
        {329, "mouse_6"},
        {331, "mouse_8"},
        {578, "mouse_255"},
        {579, "joy_0_b0"},
        {966, "joy_1_b3"},
        {835, "joy_0_h0_up"},
        {836, "joy_0_h0_right"},
        {837, "joy_0_h0_down"},
        {838, "joy_0_h0_left"},
        {KEYBUFFERSIZE - 1, "joy_31_h31_left"},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.name, Key::GetKeyName(c.key)) << c.key;
        EXPECT_EQ(c.key, Key::GetKeyFromName(c.name)) << c.name;
    }
}

TEST(Key, EachNameIsOneKeyOnly)
{
    int named = 0;
    for (int key = 0; key < KEYBUFFERSIZE; ++key)
    {
        try
        {
            EXPECT_EQ(key, Key::GetKeyFromName(Key::GetKeyName(key)));
            ++named;
        }
        catch (BadDataException&)
        {
        }
    }
    EXPECT_EQ(12867, KEYBUFFERSIZE);
    EXPECT_EQ(236 + 256 + 32 * 384, named);
}

TEST(Key, NamesAreFoundInAnyCase)
{
    EXPECT_EQ(13, Key::GetKeyFromName("RETURN"));
    EXPECT_EQ(97, Key::GetKeyFromName("A"));
}

TEST(Key, RefusesNumbersThatAreNoKey)
{
    for (int key : {-1, 0, 1, 7, 10, 65, 90, 128, 159, 297, 299, KEYBUFFERSIZE})
    {
        try
        {
            Key::GetKeyName(key);
            ADD_FAILURE() << key;
        }
        catch (BadDataException& e)
        {
            EXPECT_STREQ("Unknown key", e.what());
        }
    }
}

TEST(Key, RefusesNamesThatAreNoKeys)
{
    for (const char* name : {"", "nokey", "mouse_1", "joy_32_b0"})
    {
        try
        {
            Key::GetKeyFromName(name);
            ADD_FAILURE() << name;
        }
        catch (BadDataException& e)
        {
            EXPECT_EQ(util::String("Unknown name of key \"") + name + "\"", e.what());
        }
    }
}

TEST(Key, JoystickKeysAreBuiltAndTakenApart)
{
    EXPECT_EQ(966, Key::GetJoystickKey(1, 3));
    EXPECT_EQ("joy_1_b3", Key::GetKeyName(966));
    EXPECT_EQ(837, Key::GetJoystickHatKey(0, 0, 4));
    EXPECT_EQ("joy_0_h0_down", Key::GetKeyName(837));
    EXPECT_EQ(1, Key::GetJoystickFromKey(966));
    EXPECT_EQ(3, Key::GetJoystickButtonFromKey(966));
    EXPECT_EQ(-1, Key::GetJoystickHatFromKey(966));
    EXPECT_FALSE(Key::IsJoystickHatKey(966));
    const int last = Key::GetJoystickHatKey(31, 31, 8);
    EXPECT_EQ(KEYBUFFERSIZE - 1, last);
    EXPECT_EQ(31, Key::GetJoystickFromKey(last));
    EXPECT_EQ(31, Key::GetJoystickHatFromKey(last));
    EXPECT_TRUE(Key::IsJoystickHatKey(last));
    for (int key : {0, 324, 578, KEYBUFFERSIZE})
    {
        EXPECT_EQ(-1, Key::GetJoystickFromKey(key)) << key;
        EXPECT_EQ(-1, Key::GetJoystickButtonFromKey(key)) << key;
        EXPECT_FALSE(Key::IsJoystickHatKey(key)) << key;
    }
}

TEST(Key, AHatLooksInOneDirectionAtATime)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(835 + i, Key::GetJoystickHatKey(0, 0, 1 << i));
    for (int mask : {0, 3, 5, 16})
    {
        test::LogCapture log(logging::LogError);
        EXPECT_EQ(0, Key::GetJoystickHatKey(0, 0, mask));
        EXPECT_EQ(std::vector<std::string>{"!! ERROR: Bad hat-mask in Key::GetJoystickHatKey"},
                  log.Lines());
    }
}

TEST(Key, TheMousesButtonsLieBetweenTheKeysAndTheJoysticks)
{
    EXPECT_FALSE(Key::IsMouseButton(322));
    EXPECT_TRUE(Key::IsMouseButton(323));
    EXPECT_TRUE(Key::IsMouseButton(578));
    EXPECT_FALSE(Key::IsMouseButton(579));
}
}
}
