#include "input/Input.h"

#include "input/InputEvent.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <SDL.h>

namespace input
{
namespace
{
math::Vec2 OneToOne(int x, int y)
{
    return math::Vec2(static_cast<float>(x), static_cast<float>(y));
}
}

void SetTextInput(bool on)
{
    SDL_EnableUNICODE(on);
    // Milliseconds: the first delay, and from one repeat to the next.
    SDL_EnableKeyRepeat(on ? 500 : 0, 30);
}

Input::Input()
    : InputDelegator(50)
    , m_posFromPixel(OneToOne)
{
}

void Input::InitializeSDL()
{
    SetTextInput(true);
    SetGrabInput(false);
    SDL_EventState(SDL_SYSWMEVENT, SDL_ENABLE);
}

void Input::PumpEvents()
{
    util::ScopeProfiler profile("Event handling");
    m_pumpTime = util::Timer::GetCurrentTime();
    {
        util::ScopeProfiler profileLoop("Poll loop");
        SDL_Event event;
        SDL_Event resize;
        bool isResized = false;
        while (SDL_PollEvent(&event))
        {
            if (event.type == SDL_VIDEORESIZE)
            {
                resize = event;
                isResized = true;
            }
            else
                HandleEvent(event);
        }
        if (isResized)
            HandleEvent(resize);
    }
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    m_mousePos = m_posFromPixel(x, y);
}

void Input::HandleEvent(const SDL_Event& event)
{
    util::ScopeProfiler profile("HandleEvent");
    switch (event.type)
    {
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        OnKeyEvent(KeyEvent(FirstMouseKey + event.button.button, event.type == SDL_MOUSEBUTTONDOWN,
                            m_posFromPixel(event.button.x, event.button.y)));
        break;
    case SDL_MOUSEMOTION:
        OnMouseMove(MouseEvent(event.motion.state, m_posFromPixel(event.motion.x, event.motion.y),
                               m_posFromPixel(event.motion.xrel, event.motion.yrel)));
        break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        OnKeyEvent(KeyEvent(event.key.keysym.sym, event.type == SDL_KEYDOWN, m_mousePos));
        break;
    case SDL_ACTIVEEVENT:
    case SDL_QUIT:
    case SDL_SYSWMEVENT:
    case SDL_VIDEORESIZE:
    case SDL_VIDEOEXPOSE:
    case SDL_USEREVENT:
        OnOtherEvent(InputEvent(event));
        break;
    default:
        Log(logging::LogWarning, "Unknown Event from SDL");
    }
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
    const int mask = SDL_GetModState();
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

void Input::SetGrabInput(bool grab)
{
    SDL_WM_GrabInput(grab ? SDL_GRAB_ON : SDL_GRAB_OFF);
}

void Input::OnKeyEvent(const KeyEvent& event)
{
    m_keys[event.GetKey()] = event.IsDown();
    InputDelegator::OnKeyEvent(event);
}
}
