#include "core/VideoMode.h"

#include "logging/Log.h"
#include "util/Failures.h"
#include "util/String.h"

#include <SDL.h>

namespace core
{
namespace
{
Uint32 CalcFlags(const WindowParams& params)
{
    return SDL_OPENGL | (params.fullscreen ? SDL_FULLSCREEN : 0) |
           (params.resizable ? SDL_RESIZABLE : 0) | (params.frame ? 0 : SDL_NOFRAME);
}

SDL_Surface* SetMode(const WindowParams& params, Uint32 flags)
{
    // 0 bits a pixel: the desktop's.
    return SDL_SetVideoMode(params.GetWidth(), params.GetHeight(), 0, flags);
}

/// SDL looks at the attributes only when it makes a window, and keeps the one it has for as long as the
/// flags stay the same. One without OpenGL in between takes window and context away, and leaves the
/// title, the icon, the events and the grab as they are.
void DropWindow(const WindowParams& params)
{
    SetMode(params, CalcFlags(params) & ~SDL_OPENGL);
}
}

VideoMode::VideoMode()
    : m_asked{{SDL_GL_BUFFER_SIZE, 0},       {SDL_GL_RED_SIZE, 3},
              {SDL_GL_GREEN_SIZE, 3},        {SDL_GL_BLUE_SIZE, 2},
              {SDL_GL_ALPHA_SIZE, 0},        {SDL_GL_DEPTH_SIZE, 16},
              {SDL_GL_STENCIL_SIZE, 0},      {SDL_GL_MULTISAMPLEBUFFERS, 0},
              {SDL_GL_MULTISAMPLESAMPLES, 0}}
    , m_inForce(m_asked)
{
}

void VideoMode::SetAttribute(int attribute, int value, const char* failure)
{
    m_asked[attribute] = value;
    if (SDL_GL_SetAttribute(static_cast<SDL_GLattr>(attribute), value) != 0)
        QUIB_THROW(std::runtime_error(failure));
}

void VideoMode::SetGLAttributes(const WindowParams& params)
{
    SetAttribute(SDL_GL_BUFFER_SIZE, params.depth, "Couldn't set buffer depth");
    if (params.depth == 32)
    {
        SetAttribute(SDL_GL_RED_SIZE, 8, "Couldn't set buffer red depth");
        SetAttribute(SDL_GL_GREEN_SIZE, 8, "Couldn't set buffer green depth");
        SetAttribute(SDL_GL_BLUE_SIZE, 8, "Couldn't set buffer blue depth");
        SetAttribute(SDL_GL_ALPHA_SIZE, 8, "Couldn't set buffer alpha depth");
    }
    SetAttribute(SDL_GL_DEPTH_SIZE, params.zDepth, "Couldn't set z-buffer depth");
    if (params.stencil != 0)
        SetAttribute(SDL_GL_STENCIL_SIZE, params.stencil, "Couldn't set stencil-buffer depth");
    // Deliberate: 0 and 1 leave the attributes alone, so that multisampling, once on, stays on for
    // the rest of the run.
    if (params.antiAlias > 1)
    {
        SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, 1, "Couldn't set the AA buffer");
        SetAttribute(SDL_GL_MULTISAMPLESAMPLES, params.antiAlias, "Couldn't set the AA samples");
    }
}

void VideoMode::Set(const WindowParams& params)
{
    if (m_hasBeenSet && m_asked != m_inForce)
        DropWindow(params);
    if (!SetMode(params, CalcFlags(params)))
    {
        const util::String error = SDL_GetError();
        if (params.antiAlias > 1)
            Log(logging::LogError,
                "No window with System.antiAlias = " + util::ToString(params.antiAlias) +
                    ": set it to 1 in config.cfg and config.autosave.cfg, or delete these files");
        QUIB_THROW(std::runtime_error("Couldn't set video mode, SDL-error: " + error));
    }
    m_inForce = m_asked;
    m_hasBeenSet = true;
}

void VideoMode::GoBackTo(const VideoMode& before, const WindowParams& params)
{
    *this = before;
    m_asked = m_inForce;
    // Those that SetGLAttributes leaves alone too.
    for (const auto& attribute : m_asked)
        SDL_GL_SetAttribute(static_cast<SDL_GLattr>(attribute.first), attribute.second);
    DropWindow(params);
}
}
