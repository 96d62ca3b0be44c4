// SDL on its dummy driver with a screen, without which that driver has no mouse, and the input on top.
#pragma once

#include "input/Input.h"

#include <SDL.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace input
{
class ScreenFixture : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        ASSERT_EQ(0, SDL_Init(SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE)) << SDL_GetError();
        ASSERT_TRUE(SDL_SetVideoMode(640, 480, 0, SDL_SWSURFACE)) << SDL_GetError();
        Input::GetInstancePtr()->InitializeSDL();
    }
    static void TearDownTestSuite() { SDL_Quit(); }

    Input* input = Input::GetInstancePtr();
};
}
