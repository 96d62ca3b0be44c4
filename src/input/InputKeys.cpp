// Input's keys: which are down, and what they type.
#include "input/Input.h"

#include "util/Failures.h"

#include <SDL.h>

namespace input
{
void SetTextInput(bool on)
{
    SDL_EnableUNICODE(on);
    // Milliseconds: the first delay, and from one repeat to the next.
    SDL_EnableKeyRepeat(on ? 500 : 0, 30);
}

KeyEvent Input::BuildKeyEvent(const SDL_Event& event, bool down)
{
    const SDL_keysym& keysym = event.key.keysym;
    char character = 0;
    if (keysym.unicode)
        // Text is Latin-1: what lies beyond types nothing.
        character = keysym.unicode < 256 ? static_cast<char>(keysym.unicode) : 0;
    else
    {
        character = BuildCharacter(keysym.sym);
        if (character && down)
        {
            // Once only: it would end the repeat of the key that is being held.
            if (!m_isUnicodeReported)
            {
                Log(logging::LogWarning, "SDL unicode doesn't work");
                SetTextInput(true);
            }
            m_isUnicodeReported = true;
        }
    }
    return KeyEvent(keysym.sym, character, down, m_mousePos);
}

/// In place of what SDL should have said.
char Input::BuildCharacter(int key)
{
    if (key == SDLK_SPACE)
        return ' ';
    if (key == SDLK_RETURN)
        return '\n';
    if (key == SDLK_TAB)
        return '\t';
    if (key >= SDLK_KP0 && key <= SDLK_KP9)
        return static_cast<char>('0' + key - SDLK_KP0);
    try
    {
        const util::String& name = Key::GetKeyName(key);
        if (name.size() == 1)
            return CheckModifier(ModShift) ? util::ToUpper(name)[0] : util::ToLower(name)[0];
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION); // a key without a name types nothing
    }
    return 0;
}

bool Input::IsKeyDown(int key) const
{
    const auto it = m_keys.find(key);
    return it != m_keys.end() && it->second;
}

bool Input::IsAnyKeyDown(std::initializer_list<int> keys) const
{
    for (int key : keys)
        if (IsKeyDown(key))
            return true;
    return false;
}

int Input::CheckModifier(Modifier modifier) const
{
    const int mask = GetModState();
    switch (modifier)
    {
    case ModNone:
        return mask == 0;
    case ModShift:
        return (mask & KMOD_SHIFT) && IsAnyKeyDown({SDLK_LSHIFT, SDLK_RSHIFT});
    case ModLeftShift:
        return (mask & KMOD_LSHIFT) && IsKeyDown(SDLK_LSHIFT);
    case ModRightShift:
        return (mask & KMOD_RSHIFT) && IsKeyDown(SDLK_RSHIFT);
    case ModCtrl:
        return ((mask & KMOD_CTRL) && IsAnyKeyDown({SDLK_LCTRL, SDLK_RCTRL})) ||
               ((mask & KMOD_META) && IsAnyKeyDown({SDLK_LMETA, SDLK_RMETA}));
    case ModLeftCtrl:
        return ((mask & KMOD_LCTRL) && IsKeyDown(SDLK_LCTRL)) ||
               ((mask & KMOD_LMETA) && IsKeyDown(SDLK_LMETA));
    case ModRightCtrl:
        return ((mask & KMOD_RCTRL) && IsKeyDown(SDLK_RCTRL)) ||
               ((mask & KMOD_RMETA) && IsKeyDown(SDLK_RMETA));
    case ModAlt:
        return (mask & KMOD_ALT) && IsAnyKeyDown({SDLK_LALT, SDLK_RALT});
    case ModLeftAlt:
        return (mask & KMOD_LALT) && IsKeyDown(SDLK_LALT);
    case ModRightAlt:
        // Deliberate: no key is asked. On many keyboards the right one reports itself as AltGr.
        return (mask & KMOD_RALT) != 0;
    case ModMeta:
        return (mask & KMOD_META) && IsAnyKeyDown({SDLK_LMETA, SDLK_RMETA});
    case ModLeftMeta:
        return (mask & KMOD_LMETA) && IsKeyDown(SDLK_LMETA);
    case ModRightMeta:
        return (mask & KMOD_RMETA) && IsKeyDown(SDLK_RMETA);
    case ModNumLock:
        return (mask & KMOD_NUM) && IsKeyDown(SDLK_NUMLOCK);
    case ModCapsLock:
        return (mask & KMOD_CAPS) && IsKeyDown(SDLK_CAPSLOCK);
    }
    return mask;
}

int Input::GetModState() const
{
    return m_mods ? *m_mods : SDL_GetModState();
}
}
