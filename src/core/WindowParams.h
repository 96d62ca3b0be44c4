// What is asked of the window. The subsystem keeps two of these: the one in force, and the one that
// the script attributes write to.
#pragma once

#include "math/Vector.h"

namespace core
{
struct WindowParams
{
    bool resizable = true;
    bool frame = true; // false gives a frameless window
    bool fullscreen = false;
    math::TVector2<int> size = math::TVector2<int>(1024, 768); // pixels
    int depth = 32;                                            // bits of the colour buffer
    int zDepth = 24;                                           // bits of the depth buffer
    int stencil = 8;                                           // bits of the stencil buffer
    bool vSync = false;
    int antiAlias = 1; // samples; above 1 turns multisampling on

    int GetWidth() const { return size.x; }
    int GetHeight() const { return size.y; }
};
}
