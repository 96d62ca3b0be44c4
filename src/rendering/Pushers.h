// Scopes that put back what they found.
#pragma once

#include "math/Vector.h"

namespace rendering
{
// The renderer's colour.
class ColorPusher
{
public:
    ColorPusher();
    ~ColorPusher();
    ColorPusher(const ColorPusher&) = delete;
    ColorPusher& operator=(const ColorPusher&) = delete;

private:
    math::Vec4 m_saved;
};

// GL attributes and the colour with them, so that the renderer's cache stays in step with GL.
class AttribPusher
{
public:
    static constexpr unsigned long AllAttribs = 0xFFFFF;

    explicit AttribPusher(unsigned long mask = AllAttribs);
    ~AttribPusher();
    AttribPusher(const AttribPusher&) = delete;
    AttribPusher& operator=(const AttribPusher&) = delete;

private:
    math::Vec4 m_saved;
};
}
