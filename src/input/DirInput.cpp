#include "input/DirInput.h"

#include "input/Input.h"
#include "logging/Log.h"

#include <charconv>

namespace input
{
DirInput::~DirInput() = default;

namespace
{
/// The joystick of the number or, without that one, the first that is there.
JoystickPtr FindJoystick(int number)
{
    const Input* input = Input::GetInstancePtr();
    JoystickPtr joystick = input->GetJoystick(number);
    for (int i = 0; i < JoystickCount && !joystick; ++i)
        joystick = input->GetJoystick(i);
    return joystick;
}

/// @return false when the word is no whole number
bool ReadNumber(const util::String& word, int& number)
{
    const char* const end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

/// @param words   from "joy" on
/// @param number  of the joystick, as it was asked for
/// @return null when they name nothing
DirInputPtr MakeJoyInput(const std::vector<util::String>& words, const JoystickPtr& joystick,
                         int number)
{
    int axisX = 0, axisY = 0, hat = 0;
    if (words.size() == 5 && words[2] == "axis" && ReadNumber(words[3], axisX) &&
        ReadNumber(words[4], axisY))
        return QUIB_NEW JoyAxisInput(joystick, number, axisX, axisY);
    if (words.size() == 4 && words[2] == "hat" && ReadNumber(words[3], hat) && hat >= 0 &&
        hat < JoystickHatCount)
        return QUIB_NEW JoyHatInput(joystick, number, hat);
    return nullptr;
}
}

DirInputPtr DirInput::Deserialize(const util::String& text)
{
    const std::vector<util::String> words = util::Split(text, ' ');
    if (words[0] == "keys" && words.size() == 1 + KeyDirInput::DirectionCount)
    {
        std::array<int, KeyDirInput::DirectionCount> keys;
        for (int i = 0; i < KeyDirInput::DirectionCount; ++i)
            keys[i] = Key::GetKeyFromName(words[1 + i]);
        return QUIB_NEW KeyDirInput(keys);
    }
    int number = 0;
    if (words[0] == "joy" && words.size() > 1 && ReadNumber(words[1], number))
    {
        const JoystickPtr joystick = FindJoystick(number);
        if (!joystick)
        {
            Log(logging::LogWarning,
                "No joystick connected, cannot find DirInput \"" + util::Shorten(text) + "\"");
            return nullptr;
        }
        if (const DirInputPtr input = MakeJoyInput(words, joystick, number))
            return input;
    }
    Log(logging::LogWarning, "Failed to find DirInput \"" + util::Shorten(text) + "\"");
    return nullptr;
}

KeyDirInput::KeyDirInput(const std::array<int, DirectionCount>& keys)
    : m_keys(keys)
{
}

KeyDirInput::~KeyDirInput() = default;

math::Vec2 KeyDirInput::GetDir() const
{
    const Input* input = Input::GetInstancePtr();
    const auto isDown = [&](Direction d) { return float(input->IsKeyDown(m_keys[d])); };
    const math::Vec2 dir(isDown(Right) - isDown(Left), isDown(Up) - isDown(Down));
    // So that diagonals aren't faster.
    return dir.LengthSq() > 1 ? math::Normalized(dir) : dir;
}

util::String KeyDirInput::Serialize() const
{
    util::String text = "keys";
    for (int key : m_keys)
        text += " " + Key::GetKeyName(key);
    return text;
}

JoyAxisInput::JoyAxisInput(const JoystickPtr& joystick, int joystickNumber, int axisX, int axisY)
    : m_joystick(joystick)
    , m_joystickNumber(joystickNumber)
    , m_axisX(axisX)
    , m_axisY(axisY)
{
}

JoyAxisInput::~JoyAxisInput() = default;

math::Vec2 JoyAxisInput::GetDir() const
{
    return m_joystick->GetAxis(m_axisX, m_axisY);
}

util::String JoyAxisInput::Serialize() const
{
    return "joy " + util::ToString(m_joystickNumber) + " axis " + util::ToString(m_axisX) + " " +
           util::ToString(m_axisY);
}

JoyHatInput::JoyHatInput(const JoystickPtr& joystick, int joystickNumber, int hat)
    // In the order of the directions: up, right, down, left.
    : KeyDirInput({Key::GetJoystickHatKey(joystick->GetIndex(), hat, 1),
                   Key::GetJoystickHatKey(joystick->GetIndex(), hat, 2),
                   Key::GetJoystickHatKey(joystick->GetIndex(), hat, 4),
                   Key::GetJoystickHatKey(joystick->GetIndex(), hat, 8)})
    , m_joystickNumber(joystickNumber)
    , m_hat(hat)
{
}

JoyHatInput::~JoyHatInput() = default;

util::String JoyHatInput::Serialize() const
{
    return "joy " + util::ToString(m_joystickNumber) + " hat " + util::ToString(m_hat);
}
}
