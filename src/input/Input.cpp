#include "input/Input.h"

#include "input/BindInputListener.h"
#include "input/InputEvent.h"
#include "input/Recorder.h"
#include "input/Replay.h"
#include "os/Platform.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <SDL.h>
#include <SDL_syswm.h>

#include <algorithm>

namespace input
{
namespace
{
const int GestureButtons[] = {SDL_BUTTON_LEFT, SDL_BUTTON_MIDDLE, SDL_BUTTON_RIGHT};

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
// Its filter sees each event before that, so they wait here. So do the modifiers: when many events come
// in one frame, SDL's own are those after the last of them.
struct WaitingEvent
{
    SDL_Event event;
    int mods;
    SDL_SysWMmsg message; // what an event of the window system points to
};

std::vector<WaitingEvent>& WaitingEvents()
{
    static auto* s_events = new std::vector<WaitingEvent>;
    return *s_events;
}

int KeepEvent(const SDL_Event* event)
{
    WaitingEvents().push_back({*event, SDL_GetModState(), {}});
    if (event->type == SDL_SYSWMEVENT)
        WaitingEvents().back().message = *event->syswm.msg;
    return 0; // not for SDL's own queue
}

/// Those that have come by now. What comes while they are handled waits for the next frame: as long as each
/// takes longer than the next is away, this one would never end.
template<typename Handler>
void ForEachRealEvent(const Handler& handler)
{
    SDL_PumpEvents();
    std::vector<WaitingEvent>& waiting = WaitingEvents();
    const size_t count = waiting.size();
    for (size_t i = 0; i < count; ++i)
    {
        WaitingEvent copy = waiting[i]; // a handler may make SDL look for more
        if (copy.event.type == SDL_SYSWMEVENT)
            copy.event.syswm.msg = &copy.message;
        handler(copy.event, copy.mods);
    }
    waiting.erase(waiting.begin(), waiting.begin() + count);
    // Then what was pushed, by whoever. SDL keeps no more than this.
    SDL_Event event;
    for (int i = 0; i < 128 && SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_ALLEVENTS) > 0; ++i)
        handler(event, SDL_GetModState());
}

/// What an event of a user comes to must not cost those after it.
template<typename Call>
void Guarded(Call call)
{
    try
    {
        call();
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("An event failed: ") + e.what());
    }
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

/// A recording was made on a screen of its own.
void Input::NoteDisplay()
{
    if (const Replay* replay = Replay::Get())
        os::SetDisplaySize(math::TVector2<int>(replay->GetRecording().displayWidth,
                                               replay->GetRecording().displayHeight));
    math::TVector2<int> size;
    if (Recorder* recorder = Recorder::Get())
        if (os::GetDisplaySize(size))
            recorder->NoteDisplay(size.x, size.y);
}

void Input::InitializeSDL()
{
    SetTextInput(true);
    NoteDisplay();
    if (SDL_WasInit(SDL_INIT_JOYSTICK) || Replay::Get())
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
    QUIB_PROFILE("Event handling");
    Replay* const replay = Replay::Get();
    const bool wasReplaying = replay && !replay->IsOver();
    const bool isReplaying = wasReplaying && replay->NextFrame();
    {
        QUIB_PROFILE("Joystick update");
        if (Recorder* recorder = Recorder::Get())
            recorder->BeginFrame();
        m_pumpTime = util::Timer::GetCurrentTime();
    }
    if (wasReplaying && !isReplaying)
    {
        if (replay->WantsQuit())
            return;
        ReturnFromReplay();
    }
    {
        QUIB_PROFILE("Poll loop");
        if (isReplaying)
            PumpReplay(replay->GetFrame());
        else
            PumpRealEvents();
    }
    Guarded([this] { CheckClickTimeout(); });
}

void Input::PumpRealEvents()
{
    ForEachRealEvent(
        [this](const SDL_Event& event, int mods)
        {
            if (event.type == SDL_VIDEORESIZE)
                KeepResize(event);
            else
                Deliver(event, mods);
        });
    if (m_isResized)
    {
        m_isResized = false;
        EndGestureBeforeResize();
        SDL_Event resize = {};
        resize.type = SDL_VIDEORESIZE;
        resize.resize.w = m_newSize.x;
        resize.resize.h = m_newSize.y;
        Deliver(resize, SDL_GetModState());
    }
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    ReleaseLostButtons(x, y);
    if (Recorder* recorder = Recorder::Get())
        recorder->NoteState(SDL_GetModState(), x, y);
    m_mousePos = m_posFromPixel(x, y);
}

void Input::KeepResize(const SDL_Event& event)
{
    m_isResized = true;
    m_newSize = math::TVector2<int>(event.resize.w, event.resize.h);
}

void Input::PumpReplay(const RecordedFrame& frame)
{
    // Meanwhile a user can close the window, and other programs get what was copied here.
    ForEachRealEvent(
        [this](const SDL_Event& event, int)
        {
            if (event.type == SDL_QUIT || event.type == SDL_SYSWMEVENT)
                HandleEvent(event);
            else if (event.type == SDL_VIDEORESIZE)
                KeepResize(event);
        });
    // Axes are read at any time: they stand where they stood when the frame began.
    for (const RecordedEvent& recorded : frame.events)
        if (recorded.event.type == SDL_JOYAXISMOTION)
            if (const JoystickPtr joystick = GetJoystick(recorded.event.jaxis.which))
                joystick->SetAxis(recorded.event.jaxis.axis, recorded.event.jaxis.value);
    for (const RecordedEvent& recorded : frame.events)
        Deliver(recorded.event, recorded.mods);
    m_mods = frame.mods;
    m_mousePos = m_posFromPixel(frame.mouseX, frame.mouseY);
}

/// What the user of the recording held down is not held any more.
void Input::ReturnFromReplay()
{
    Log(logging::LogVerbose, "The replay is over");
    m_mods.reset();
    const std::map<int, bool> keys = m_keys;
    for (const auto& [key, isDown] : keys)
        if (isDown)
            Guarded([&, key = key] { OnKeyEvent(KeyEvent(key, 0, false, m_mousePos)); });
}

void Input::Deliver(const SDL_Event& event, int mods)
{
    if (Recorder* recorder = Recorder::Get())
        recorder->NoteEvent(event, mods);
    m_mods = mods;
    switch (event.type)
    {
    case SDL_ACTIVEEVENT:
    case SDL_QUIT:
    case SDL_SYSWMEVENT:
    case SDL_VIDEORESIZE:
    case SDL_VIDEOEXPOSE:
    case SDL_USEREVENT:
        HandleEvent(event); // a window that can't be had is none of a user's slips
        break;
    default:
        Guarded([&] { HandleEvent(event); });
    }
    if (!Replay::Get() || Replay::Get()->IsOver())
        m_mods.reset();
}

int Input::GetModState() const
{
    return m_mods ? *m_mods : SDL_GetModState();
}

/// A window that loses the mouse for a moment, as when it is hidden, does not get the release of a button:
/// the gesture must end all the same.
void Input::ReleaseLostButtons(int x, int y)
{
    const unsigned down = GetButtonsDown();
    m_heldButtons &= down;
    unsigned held = 0;
    if (!down || !os::GetHeldMouseButtons(held))
    {
        m_lostButtons = 0;
        return;
    }
    // Only a button that the desktop has seen held can be lost: a press that a program has made up is
    // known to us alone.
    m_heldButtons |= down & held;
    const unsigned missing = m_heldButtons & ~held;
    // The release may be on its way, but in the frame after the first question it must have come.
    const unsigned lost = missing & m_lostButtons;
    m_lostButtons = missing & ~lost;
    ReleaseButtons(lost, x, y);
}

/// SDL lets go of the buttons with each new window, where the pixel of the mouse is another place of the world.
void Input::EndGestureBeforeResize()
{
    const SDL_Surface* const screen = SDL_GetVideoSurface();
    if (!screen || math::TVector2<int>(screen->w, screen->h) == m_newSize)
        return;
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    ReleaseButtons(GetButtonsDown(), x, y);
}

unsigned Input::GetButtonsDown() const
{
    unsigned down = 0;
    for (int button : GestureButtons)
        if (IsKeyDown(FirstMouseKey + button))
            down |= SDL_BUTTON(button);
    return down;
}

void Input::ReleaseButtons(unsigned buttons, int x, int y)
{
    for (int button : GestureButtons)
        if (buttons & SDL_BUTTON(button))
        {
            SDL_Event event = {};
            event.type = SDL_MOUSEBUTTONUP;
            event.button.button = static_cast<Uint8>(button);
            event.button.x = static_cast<Uint16>(x);
            event.button.y = static_cast<Uint16>(y);
            Deliver(event, SDL_GetModState());
        }
}

void Input::HandleEvent(const SDL_Event& event)
{
    QUIB_PROFILE("HandleEvent");
    switch (event.type)
    {
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        m_isMouseButtonDown = event.type == SDL_MOUSEBUTTONDOWN;
        if (m_isMouseButtonDown && event.button.button == SDL_BUTTON_WHEELUP)
            ++m_wheel;
        if (m_isMouseButtonDown && event.button.button == SDL_BUTTON_WHEELDOWN)
            --m_wheel;
        m_mousePos = m_posFromPixel(event.button.x, event.button.y);
        OnKeyEvent(
            KeyEvent(FirstMouseKey + event.button.button, 0, m_isMouseButtonDown, m_mousePos));
        break;
    case SDL_MOUSEMOTION:
        m_mousePos = m_posFromPixel(event.motion.x, event.motion.y);
        OnMouseMove(MouseEvent(event.motion.state, m_mousePos,
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
    if (const Replay* replay = Replay::Get())
    {
        for (const RecordedJoystick& recorded : replay->GetRecording().joysticks)
        {
            if (recorded.index >= static_cast<int>(m_joysticks.size()))
                m_joysticks.resize(recorded.index + 1);
            m_joysticks[recorded.index] = QUIB_NEW Joystick(recorded);
        }
        return;
    }
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
    if (Recorder* recorder = Recorder::Get())
        for (const JoystickPtr& joystick : m_joysticks)
            if (joystick)
                recorder->NoteJoystick(joystick->Record());
}

void Input::CalibrateJoysticks()
{
    for (const JoystickPtr& joystick : m_joysticks)
        if (joystick)
            joystick->Calibrate();
}

util::String Input::GetClipboardText()
{
    if (Replay* replay = Replay::Get())
        if (replay->HasPaste())
            return replay->TakePaste();
    const util::String text = os::GetClipboardText();
    if (Recorder* recorder = Recorder::Get())
        recorder->NotePaste(text);
    return text;
}

void Input::SetClipboardText(const util::String& text)
{
    os::SetClipboardText(text);
}
}
