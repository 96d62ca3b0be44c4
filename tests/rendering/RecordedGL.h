// OpenGL with a tape instead of a screen. The functions that this folder's tests are about are
// defined in RecordedGLTest.cpp and stand before the library's own. What a real context makes of them is
// the matter of tests/window.
#pragma once

#include <string>
#include <vector>

namespace recorded
{
/// The calls since Clear, such as "glVertex2f 1 2".
std::vector<std::string>& Calls();

/// What the frame buffer is said to hold.
struct State
{
    int width = 4, height = 3;
    int packAlignment = 4, unpackAlignment = 4;
    unsigned textures = 0; // given out so far
    int mipmapsError = 0;  // of gluBuild2DMipmaps
    unsigned error = 0;    // of the next glGetError
};
State& GL();

/// Back to the start of everything.
void Clear();
}
