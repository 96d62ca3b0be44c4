// Stands between Quib and OpenGL, and between it and SDL's window: hands the calls on, or replaces them by
// nothing, so that what is left is Quib's own work.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace bench
{
enum class GLMode
{
    Real,    // handed on
    Nothing, // no window, no driver: each call returns at once
    Counting // like Nothing, but what the calls change is kept track of
};

/// Before the first call of SDL.
void SetGLMode(GLMode mode);
/// Pixels. Where the mouse is, in every mode.
void SetMouse(int x, int y);

struct GLCount
{
    size_t calls = 0;
    size_t vain = 0; // until the next time that something was drawn they came to nothing
};
/// By function, while the mode is Counting.
std::map<std::string, GLCount>& GetGLCounts();
}
