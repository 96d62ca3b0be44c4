// OpenGL in a window and nothing else of Quib. To be used in a fresh process.
#pragma once

#include "rendering/Renderer.h"
#include "window/XServer.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace test
{
inline void OpenPlainWindow(const XServer& server, int width, int height)
{
    setenv("SDL_VIDEODRIVER", "x11", 1);
    setenv("DISPLAY", server.Display().c_str(), 1);
    ASSERT_EQ(0, SDL_Init(SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE)) << SDL_GetError();
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 16);
    ASSERT_TRUE(SDL_SetVideoMode(width, height, 0, SDL_OPENGL)) << SDL_GetError();
    ASSERT_EQ(GLenum(GLEW_OK), glewInit());
    rendering::GLHasLoaded();
}
}
