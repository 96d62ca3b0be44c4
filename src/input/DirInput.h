// A setting that is a direction in the plane: four keys, or the stick or the hat of a joystick.
#pragma once

#include "input/Joystick.h"
#include "util/String.h"

#include <array>

namespace input
{
class DirInput;
using DirInputPtr = util::SharedPtr<DirInput>;

class DirInput : public util::Pointee
{
public:
    ~DirInput() override;

    /// At most 1 long; y points up.
    virtual math::Vec2 GetDir() const = 0;
    /// What Deserialize makes the same input from.
    virtual util::String Serialize() const = 0;

    /// @param text  "keys up right down left" with the names of keys, or "joy ..."
    /// @return null, with a warning, for what can't be bound on this machine: whoever read the text
    ///         keeps it, so that a scene does not lose it by being saved here
    /// @throws BadDataException  for the name of a key that is none
    static DirInputPtr Deserialize(const util::String& text);
};

class KeyDirInput : public DirInput
{
public:
    enum Direction
    {
        Up,
        Right,
        Down,
        Left,
        DirectionCount
    };

    /// @param keys  by Direction
    explicit KeyDirInput(const std::array<int, DirectionCount>& keys);
    ~KeyDirInput() override;

    math::Vec2 GetDir() const override;
    util::String Serialize() const override;

private:
    std::array<int, DirectionCount> m_keys;
};

// Text of either names the joystick that was asked for, though another may stand in for it here.

class JoyAxisInput final : public DirInput
{
public:
    /// @param joystick        not null
    /// @param joystickNumber  the one that was asked for
    JoyAxisInput(const JoystickPtr& joystick, int joystickNumber, int axisX, int axisY);
    ~JoyAxisInput() override;

    /// As SDL has it: down is positive.
    math::Vec2 GetDir() const override;
    util::String Serialize() const override;

private:
    JoystickPtr m_joystick;
    int m_joystickNumber;
    int m_axisX;
    int m_axisY;
};

class JoyHatInput final : public KeyDirInput
{
public:
    /// @param joystick  not null
    /// @param hat       0 to 31
    JoyHatInput(const JoystickPtr& joystick, int joystickNumber, int hat);
    ~JoyHatInput() override;

    util::String Serialize() const override;

private:
    int m_joystickNumber;
    int m_hat;
};
}
