// SDL with a tape in place of a screen, and a clock that stands still unless told. The functions in
// RecordedSDLTest.cpp stand before the library's own; all others are SDL's, on its dummy driver. What
// a real X server makes of it all is the matter of tests/window.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace recorded
{
struct SDL
{
    std::vector<std::string> attributes; // as "SDL_GL_DEPTH_SIZE 24"
    std::string failingAttribute;        // its setting fails
    int attributeFailures = 1000000;     // so many times
    std::vector<std::string> modes;      // as "1024x768 bpp 0 flags ..."
    bool modeFails = false;
    unsigned glewResult = 0;
    int alphaBits = 8; // -1: can't be asked for
    int displayWidth = 0, displayHeight = 0;
    int swaps = 0;
    std::vector<std::string> icons; // as "16x16"

    // Acts in the midst of the program, once they are set. What they throw flies through it.
    std::function<void()> onMode; // when a window is asked for
    std::function<void()> onSwap; // when a frame is shown
    std::function<void()> onQuit; // just before SDL is gone

    unsigned now = 1000; // milliseconds
    std::vector<unsigned> delays;
};

SDL& State();
}
