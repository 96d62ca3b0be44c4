#include "input/Input.h"

#include "input/BindInputListener.h"
#include "input/InputEvent.h"
#include "os/Platform.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <SDL.h>

#include <algorithm>

namespace input
{
namespace
{
math::Vec2 OneToOne(int x, int y)
{
    return math::Vec2(static_cast<float>(x), static_cast<float>(y));
}

Input::ClickLimits UsualClickLimits()
{
    return {0.4f, 3.5f};
}

util::SharedPtr<util::Pointee> ListenForBindings(script::KeyBinder* binder)
{
    const util::SharedPtr<script::KeyBinder::BindInputListener> listener =
        QUIB_NEW script::KeyBinder::BindInputListener(binder);
    Input::GetInstancePtr()->AddListener(util::WeakPtr<InputListener>(listener.get()));
    return listener;
}

// SDL keeps 128 events and silently drops more, which a slow frame and a quick mouse can bring together.
// Its filter sees each event before that, so they wait here.
std::vector<SDL_Event>& WaitingEvents()
{
    static auto* s_events = new std::vector<SDL_Event>;
    return *s_events;
}

int KeepEvent(const SDL_Event* event)
{
    if (event->type == SDL_SYSWMEVENT)
        return 1; // SDL's queue alone keeps the message that it points to
    WaitingEvents().push_back(*event);
    return 0; // not for SDL's own queue
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
    , m_clickLimits(UsualClickLimits)
{
    script::KeyBinder::SetKeyboard({Key::GetKeyName, Key::GetKeyFromName, ListenForBindings});
}

void Input::InitializeSDL()
{
    SetTextInput(true);
    if (SDL_WasInit(SDL_INIT_JOYSTICK))
    {
        LookForJoysticks();
        CalibrateJoysticks();
    }
    SetGrabInput(false);
    SetTextInput(true);
    SDL_SetEventFilter(KeepEvent);
    SDL_EventState(SDL_SYSWMEVENT, SDL_ENABLE);
}

void Input::PumpEvents()
{
    util::ScopeProfiler profile("Event handling");
    {
        util::ScopeProfiler profileJoysticks("Joystick update");
        m_pumpTime = util::Timer::GetCurrentTime();
    }
    {
        util::ScopeProfiler profileLoop("Poll loop");
        std::vector<SDL_Event>& waiting = WaitingEvents();
        SDL_Event resize;
        bool isResized = false;
        const auto deliver = [&](const SDL_Event& event)
        {
            if (event.type != SDL_VIDEORESIZE)
            {
                HandleEvent(event);
                return;
            }
            resize = event;
            isResized = true;
        };
        for (bool isMore = true; isMore;)
        {
            SDL_Event event;
            const bool isPushed =
                SDL_PollEvent(&event); // by whoever; it fills the waiting ones too
            isMore = isPushed || !waiting.empty();
            // A handler may make SDL look for events again: by index.
            for (size_t i = 0; i < waiting.size(); ++i)
                deliver(SDL_Event(waiting[i]));
            waiting.clear();
            if (isPushed)
                deliver(event);
        }
        if (isResized)
            HandleEvent(resize);
    }
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    m_mousePos = m_posFromPixel(x, y);
    CheckClickTimeout();
}

void Input::HandleEvent(const SDL_Event& event)
{
    util::ScopeProfiler profile("HandleEvent");
    switch (event.type)
    {
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        m_isMouseButtonDown = event.type == SDL_MOUSEBUTTONDOWN;
        if (m_isMouseButtonDown && event.button.button == SDL_BUTTON_WHEELUP)
            ++m_wheel;
        if (m_isMouseButtonDown && event.button.button == SDL_BUTTON_WHEELDOWN)
            --m_wheel;
        OnKeyEvent(KeyEvent(FirstMouseKey + event.button.button, 0, m_isMouseButtonDown,
                            m_posFromPixel(event.button.x, event.button.y)));
        break;
    case SDL_MOUSEMOTION:
        OnMouseMove(MouseEvent(event.motion.state, m_posFromPixel(event.motion.x, event.motion.y),
                               m_posFromPixel(event.motion.xrel, event.motion.yrel)));
        break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        OnKeyEvent(BuildKeyEvent(event, event.type == SDL_KEYDOWN));
        break;
    case SDL_JOYAXISMOTION:
        OnJoyAxisEvent(JoyAxisEvent(GetJoystick(event.jaxis.which), event.jaxis.axis));
        break;
    case SDL_JOYBALLMOTION:
        break;
    case SDL_JOYHATMOTION:
        HandleHat(event);
        break;
    case SDL_JOYBUTTONDOWN:
    case SDL_JOYBUTTONUP:
        if (event.jbutton.which < JoystickCount)
            OnKeyEvent(KeyEvent(Key::GetJoystickKey(event.jbutton.which, event.jbutton.button), 0,
                                event.type == SDL_JOYBUTTONDOWN, m_mousePos));
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

void Input::HandleHat(const SDL_Event& event)
{
    if (event.jhat.which >= JoystickCount || event.jhat.hat >= JoystickHatCount)
        return;
    for (const int mask : {SDL_HAT_UP, SDL_HAT_RIGHT, SDL_HAT_DOWN, SDL_HAT_LEFT})
    {
        const int key = Key::GetJoystickHatKey(event.jhat.which, event.jhat.hat, mask);
        const bool down = event.jhat.value & mask;
        if (down != IsKeyDown(key))
            OnKeyEvent(KeyEvent(key, 0, down, m_mousePos));
    }
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
            if (!m_isUnicodeReported)
                Log(logging::LogWarning, "SDL unicode doesn't work");
            m_isUnicodeReported = true;
            SetTextInput(true);
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

void Input::SetShowCursor(bool show)
{
    SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
}

JoystickPtr Input::GetJoystick(int index) const
{
    return index >= 0 && index < static_cast<int>(m_joysticks.size()) ? m_joysticks[index]
                                                                      : nullptr;
}

void Input::LookForJoysticks()
{
    m_joysticks.clear();
    SDL_JoystickEventState(SDL_ENABLE);
    const int count = std::clamp(SDL_NumJoysticks(), 0, JoystickCount);
    Log(logging::LogVerbose,
        "Found " + util::ToString(count) + " joystick" + Plural(count) + "\n---");
    for (int i = 0; i < count; ++i)
    {
        m_joysticks.push_back(nullptr);
        try
        {
            m_joysticks.back() = QUIB_NEW Joystick(i);
            Log(logging::LogVerbose, m_joysticks.back()->Describe());
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning, e.what());
        }
    }
}

void Input::CalibrateJoysticks()
{
    for (const JoystickPtr& joystick : m_joysticks)
        if (joystick)
            joystick->Calibrate();
}

util::String Input::GetClipboardText() const
{
    return os::GetClipboardText();
}

void Input::SetClipboardText(const util::String& text)
{
    os::SetClipboardText(text);
}
}
