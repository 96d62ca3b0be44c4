// One opened joystick. Held by the input, and by the settings that are bound to it.
#pragma once

#include "math/Vector.h"
#include "util/Pointee.h"
#include "util/SharedPtr.h"
#include "util/String.h"

#include <vector>

struct _SDL_Joystick;

namespace input
{
struct RecordedJoystick;

class Joystick final : public util::Pointee
{
public:
    /// @param index  SDL's
    /// @throws BadDataException  "Failed to open joystick " and SDL's reason
    explicit Joystick(int index);
    /// One that a replay moves.
    explicit Joystick(const RecordedJoystick& recorded);
    ~Joystick() override;

    int GetIndex() const { return m_index; }
    /// "" when SDL knows none.
    util::String GetName() const;
    int GetAxisCount() const { return static_cast<int>(m_offsets.size()); }
    /// -1 to 1, from where the axis was when it was calibrated; 0 for one that does not exist.
    float GetAxis(int axis) const;
    /// Two axes as a direction, at most 1 long.
    math::Vec2 GetAxis(int axisX, int axisY) const;
    /// The present position of the stick counts as its centre.
    void Calibrate();
    /// Moves one of a replay.
    /// @param value  as SDL reads it: -32768 to 32767
    void SetAxis(int axis, int value);
    RecordedJoystick Record() const;
    /// Text for the log, a line each: what it is and what it has.
    util::String Describe() const;

private:
    int ReadAxis(int axis) const;

    int m_index;
    _SDL_Joystick* m_handle; // null for one of a replay, which has these two instead
    util::String m_recordedName;
    std::vector<int> m_recordedAxes;
    std::vector<float> m_offsets; // by axis
};

using JoystickPtr = util::SharedPtr<Joystick>;
}
