// A setting that is a direction in the plane, given by four keys.
#pragma once

#include "math/Vector.h"
#include "util/Pointee.h"
#include "util/SharedPtr.h"
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
}
