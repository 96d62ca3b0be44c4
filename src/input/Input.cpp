#include "input/Input.h"

#include "input/BindInputListener.h"
#include "input/EventQueue.h"
#include "input/InputEvent.h"
#include "input/Recorder.h"
#include "input/Replay.h"
#include "os/Platform.h"
#include "util/Failures.h"
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
    KeepEvents();
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
    ForEachEvent(
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
    ForEachEvent(
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

void Input::SetGrabInput(bool grab)
{
    SDL_WM_GrabInput(grab ? SDL_GRAB_ON : SDL_GRAB_OFF);
}

void Input::SetShowCursor(bool show)
{
    SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
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
