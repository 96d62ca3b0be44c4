// Keys that are held down for its life, as SDL and the program see them.
#pragma once

#include "../KeyEvents.h"

#include <SDL_keyboard.h>

#include <initializer_list>
#include <vector>

namespace test
{
class HeldKeys
{
public:
    HeldKeys(std::initializer_list<int> keys)
        : m_keys(keys)
        , m_before(SDL_GetModState())
    {
        int mask = m_before;
        for (int key : m_keys)
        {
            SendKey(key, true);
            mask |= MaskOf(key);
        }
        SDL_SetModState(static_cast<SDLMod>(mask));
    }
    ~HeldKeys()
    {
        for (int key : m_keys)
            SendKey(key, false);
        SDL_SetModState(m_before);
    }
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

private:
    static int MaskOf(int key)
    {
        switch (key)
        {
        case SDLK_LSHIFT:
            return KMOD_LSHIFT;
        case SDLK_RSHIFT:
            return KMOD_RSHIFT;
        case SDLK_LCTRL:
            return KMOD_LCTRL;
        case SDLK_RCTRL:
            return KMOD_RCTRL;
        case SDLK_LALT:
            return KMOD_LALT;
        case SDLK_RALT:
            return KMOD_RALT;
        case SDLK_LMETA:
            return KMOD_LMETA;
        default:
            return 0;
        }
    }

    std::vector<int> m_keys;
    SDLMod m_before;
};
}
