// Input's joysticks: those that are there, or that a recording had.
#include "input/Input.h"

#include "input/Recorder.h"
#include "input/Replay.h"
#include "util/Failures.h"

#include <SDL.h>

#include <algorithm>

namespace input
{
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
}
