// A window with the program's input and nothing else, to be opened in a fresh process.
#pragma once

#include "input/Input.h"
#include "window/XServer.h"

#include <SDL.h>
#include <X11/Xlib.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

namespace test
{
class InputWindow
{
public:
    explicit InputWindow(const std::string& display)
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", display.c_str(), 1);
        if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE) != 0)
            throw std::runtime_error(SDL_GetError());
        SetSize(100, 80);
        XSetErrorHandler(nullptr); // Xlib's own, which ends the program at the first error
        input::Input::GetInstancePtr()->InitializeSDL();
    }

    void SetSize(int width, int height)
    {
        if (!SDL_SetVideoMode(width, height, 0, SDL_SWSURFACE | SDL_RESIZABLE))
            throw std::runtime_error(SDL_GetError());
    }

    void RunUntil(const std::function<bool()>& condition)
    {
        EXPECT_TRUE(WaitFor(
            [&]
            {
                input::Input::GetInstancePtr()->PumpEvents();
                return condition();
            }));
    }
};
}
