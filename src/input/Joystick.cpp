#include "input/Joystick.h"

#include "input/Recording.h"
#include "util/Failures.h"

#include <SDL.h>

#include <algorithm>

namespace input
{
Joystick::Joystick(int index)
    : m_index(index)
    , m_handle(SDL_JoystickOpen(index))
{
    if (!m_handle)
        QUIB_THROW(BadDataException("Failed to open joystick " + util::String(SDL_GetError())));
    m_offsets.resize(std::max(0, SDL_JoystickNumAxes(m_handle)));
}

Joystick::Joystick(const RecordedJoystick& recorded)
    : m_index(recorded.index)
    , m_handle(nullptr)
    , m_recordedName(recorded.name)
    , m_recordedAxes(recorded.axes)
    , m_offsets(recorded.axes.size())
{
}

Joystick::~Joystick()
{
    if (!m_handle)
        return;
    // SDL closes what is open when it quits itself, and may have done so.
    if (SDL_WasInit(SDL_INIT_JOYSTICK) && SDL_JoystickOpened(m_index))
        SDL_JoystickClose(m_handle);
}

RecordedJoystick Joystick::Record() const
{
    RecordedJoystick recorded;
    recorded.index = m_index;
    recorded.name = GetName();
    for (int axis = 0; axis < GetAxisCount(); ++axis)
        recorded.axes.push_back(ReadAxis(axis));
    return recorded;
}

void Joystick::SetAxis(int axis, int value)
{
    if (axis >= 0 && axis < static_cast<int>(m_recordedAxes.size()))
        m_recordedAxes[axis] = value;
}

util::String Joystick::GetName() const
{
    if (!m_handle)
        return m_recordedName;
    const char* name = SDL_JoystickName(m_index);
    return name ? name : "";
}

int Joystick::ReadAxis(int axis) const
{
    return m_handle ? SDL_JoystickGetAxis(m_handle, axis) : m_recordedAxes[axis];
}

float Joystick::GetAxis(int axis) const
{
    if (axis < 0 || axis >= GetAxisCount() || (m_handle && !SDL_WasInit(SDL_INIT_JOYSTICK)))
        return 0;
    const float value = (ReadAxis(axis) + 32768) / 65535.0f * 2 - 1;
    return std::clamp(value - m_offsets[axis], -1.0f, 1.0f);
}

math::Vec2 Joystick::GetAxis(int axisX, int axisY) const
{
    const math::Vec2 dir(GetAxis(axisX), GetAxis(axisY));
    return dir.LengthSq() > 1 ? math::Normalized(dir) : dir;
}

void Joystick::Calibrate()
{
    std::fill(m_offsets.begin(), m_offsets.end(), 0.0f);
    for (int axis = 0; axis < GetAxisCount(); ++axis)
        m_offsets[axis] = GetAxis(axis);
}

util::String Joystick::Describe() const
{
    return "Opened joystick " + util::ToString(m_index) + "\nName: " + GetName() +
           "\nNumber of axes: " + util::ToString(GetAxisCount()) +
           "\nNumber of buttons: " + util::ToString(SDL_JoystickNumButtons(m_handle)) +
           "\nNumber of balls: " + util::ToString(SDL_JoystickNumBalls(m_handle)) +
           "\nNumber of hats: " + util::ToString(SDL_JoystickNumHats(m_handle)) + "\n--";
}
}
