#include "input/Key.h"

#include "logging/Log.h"
#include "util/Failures.h"

#include <SDL_keysym.h>

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace input
{
namespace
{
struct NamedKeys
{
    int first;
    std::vector<const char*> names; // of the keys from first on
};

const std::vector<NamedKeys>& GetNamedKeys()
{
    // clang-format off
    static const auto* s_keys = new std::vector<NamedKeys>{
        {SDLK_BACKSPACE, {"backspace", "tab"}},
        {SDLK_CLEAR, {"clear", "return"}},
        {SDLK_PAUSE, {"pause"}},
        {SDLK_ESCAPE, {"escape"}},
        {SDLK_SPACE, {"space"}},
        {SDLK_DELETE, {"delete"}},
        {SDLK_KP0, {"[0]", "[1]", "[2]", "[3]", "[4]", "[5]", "[6]", "[7]", "[8]", "[9]",
                    "[.]", "[/]", "[*]", "[-]", "[+]", "enter", "equals"}},
        {SDLK_UP, {"up", "down", "right", "left"}},
        {SDLK_INSERT, {"insert", "home", "end", "page_up", "page_down"}},
        {SDLK_F1, {"f1", "f2", "f3", "f4", "f5", "f6", "f7", "f8", "f9", "f10", "f11", "f12", "f13",
                   "f14", "f15"}},
        {SDLK_NUMLOCK, {"numlock", "caps_lock", "scroll_lock", "right_shift", "left_shift",
                        "right_ctrl", "left_ctrl", "right_alt", "left_alt", "right_meta", "left_meta",
                        "left_super", "right_super", "alt_graph", "compose", "help", "print_screen",
                        "sys_req", "break", "menu", "power", "euro", "undo"}},
        {FirstMouseKey + 1, {"mouse_left", "mouse_middle", "mouse_right", "mouse_wheel_up",
                             "mouse_wheel_down"}},
    };
    // clang-format on
    return *s_keys;
}

// Both directions of the table of names. Made at first use and never destroyed.
class KeyTable
{
public:
    KeyTable()
    {
        m_keyToName.reserve(KEYBUFFERSIZE);
        AddSDLKeys();
        AddMouseButtons();
        AddJoysticks();
        const int destIndex = static_cast<int>(m_keyToName.size());
        CODE_ASSERT(destIndex == KEYBUFFERSIZE);
        for (const NamedKeys& keys : GetNamedKeys())
            std::copy(keys.names.begin(), keys.names.end(), m_keyToName.begin() + keys.first);
        for (int key = 0; key < KEYBUFFERSIZE; ++key)
            if (!m_keyToName[key].empty())
                m_nameToKey[m_keyToName[key]] = key;
    }

    std::vector<util::String> m_keyToName; // "" for a number that is no key
    std::unordered_map<util::String, int> m_nameToKey;

private:
    void AddSDLKeys()
    {
        for (int key = 0; key < FirstMouseKey; ++key)
        {
            const bool isCharacter = key > SDLK_SPACE && key < SDLK_DELETE;
            const bool isCapital = key >= 'A' && key <= 'Z';
            const bool isWorld = key >= SDLK_WORLD_0 && key <= SDLK_WORLD_95;
            if (isCharacter && !isCapital)
                m_keyToName.emplace_back(1, static_cast<char>(key));
            else if (isWorld)
                m_keyToName.push_back("world_" + util::ToString(key - SDLK_WORLD_0));
            else
                m_keyToName.emplace_back();
        }
    }

    void AddMouseButtons()
    {
        for (int button = 0; button < FirstJoystickKey - FirstMouseKey; ++button)
            m_keyToName.push_back("mouse_" + util::ToString(button));
    }

    void AddJoysticks()
    {
        for (int joystick = 0; joystick < JoystickCount; ++joystick)
        {
            const util::String name = "joy_" + util::ToString(joystick);
            for (int button = 0; button < JoystickButtonCount; ++button)
                m_keyToName.push_back(name + "_b" + util::ToString(button));
            for (int hat = 0; hat < JoystickHatCount; ++hat)
                for (const char* direction : {"_up", "_right", "_down", "_left"})
                    m_keyToName.push_back(name + "_h" + util::ToString(hat) + direction);
        }
    }
};

const KeyTable& GetTable()
{
    static const KeyTable* s_table = new KeyTable;
    return *s_table;
}
}

bool Key::HasName(int key)
{
    return key >= 0 && key < KEYBUFFERSIZE && !GetTable().m_keyToName[key].empty();
}

const util::String& Key::GetKeyName(int key)
{
    if (!HasName(key))
        QUIB_THROW(BadDataException("Unknown key"));
    return GetTable().m_keyToName[key];
}

int Key::GetKeyFromName(const util::String& name)
{
    const KeyTable& table = GetTable();
    const auto found = table.m_nameToKey.find(util::ToLower(name));
    if (found == table.m_nameToKey.end())
        QUIB_THROW(BadDataException("Unknown name of key \"" + util::Shorten(name) + "\""));
    return found->second;
}

bool Key::IsKeyName(const util::String& name)
{
    return GetTable().m_nameToKey.count(util::ToLower(name)) != 0;
}

bool Key::IsMouseButton(int key)
{
    return key >= FirstMouseKey && key < FirstJoystickKey;
}

int Key::GetJoystickKey(int joystick, int button)
{
    return FirstJoystickKey + joystick * KeysPerJoystick + button;
}

int Key::GetJoystickHatKey(int joystick, int hat, int mask)
{
    const int masks[] = {1, 2, 4, 8};
    const int direction = static_cast<int>(std::find(masks, masks + 4, mask) - masks);
    if (direction == 4)
    {
        Log(logging::LogError, "Bad hat-mask in Key::GetJoystickHatKey");
        return 0;
    }
    return GetJoystickKey(joystick, JoystickButtonCount + hat * 4 + direction);
}

int Key::GetJoystickFromKey(int key)
{
    const bool isJoystick = key >= FirstJoystickKey && key < KEYBUFFERSIZE;
    return isJoystick ? (key - FirstJoystickKey) / KeysPerJoystick : -1;
}

int Key::GetJoystickButtonFromKey(int key)
{
    return GetJoystickFromKey(key) < 0 ? -1 : (key - FirstJoystickKey) % KeysPerJoystick;
}

int Key::GetJoystickHatFromKey(int key)
{
    const int button = GetJoystickButtonFromKey(key);
    return button < JoystickButtonCount ? -1 : (button - JoystickButtonCount) / 4;
}

bool Key::IsJoystickHatKey(int key)
{
    return GetJoystickHatFromKey(key) >= 0;
}
}
