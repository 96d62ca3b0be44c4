#include "input/DirInput.h"

#include "input/Input.h"
#include "logging/Log.h"

namespace input
{
DirInput::~DirInput() = default;

DirInputPtr DirInput::Deserialize(const util::String& text)
{
    const std::vector<util::String> words = util::Split(text, ' ');
    if (words[0] == "joy")
    {
        Log(logging::LogWarning,
            "No joystick connected, cannot find DirInput \"" + util::Shorten(text) + "\"");
        return nullptr;
    }
    if (words[0] == "keys" && words.size() == 1 + KeyDirInput::DirectionCount)
    {
        std::array<int, KeyDirInput::DirectionCount> keys;
        for (int i = 0; i < KeyDirInput::DirectionCount; ++i)
            keys[i] = Key::GetKeyFromName(words[1 + i]);
        return QUIB_NEW KeyDirInput(keys);
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
}
