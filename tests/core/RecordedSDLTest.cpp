#include "core/RecordedSDL.h"

#include <GL/glew.h>
#include <GL/glu.h>
#include <SDL.h>

#include <dlfcn.h>
#include <unistd.h>

#include <map>

namespace recorded
{
SDL& State()
{
    static SDL s_state;
    return s_state;
}

namespace
{
const char* AttributeName(SDL_GLattr attribute)
{
    static const std::map<int, const char*> names = {
        {SDL_GL_BUFFER_SIZE, "SDL_GL_BUFFER_SIZE"},
        {SDL_GL_RED_SIZE, "SDL_GL_RED_SIZE"},
        {SDL_GL_GREEN_SIZE, "SDL_GL_GREEN_SIZE"},
        {SDL_GL_BLUE_SIZE, "SDL_GL_BLUE_SIZE"},
        {SDL_GL_ALPHA_SIZE, "SDL_GL_ALPHA_SIZE"},
        {SDL_GL_DEPTH_SIZE, "SDL_GL_DEPTH_SIZE"},
        {SDL_GL_STENCIL_SIZE, "SDL_GL_STENCIL_SIZE"},
        {SDL_GL_MULTISAMPLEBUFFERS, "SDL_GL_MULTISAMPLEBUFFERS"},
        {SDL_GL_MULTISAMPLESAMPLES, "SDL_GL_MULTISAMPLESAMPLES"},
    };
    const auto it = names.find(attribute);
    return it == names.end() ? "another attribute" : it->second;
}

std::string FlagNames(Uint32 flags)
{
    std::string names;
    if (flags & SDL_OPENGL)
        names += " opengl";
    if (flags & SDL_FULLSCREEN)
        names += " fullscreen";
    if (flags & SDL_RESIZABLE)
        names += " resizable";
    if (flags & SDL_NOFRAME)
        names += " noframe";
    return names;
}
}
}

using recorded::State;

extern "C"
{
    // GLU asks OpenGL for its version, and there is none.
    GLint gluBuild2DMipmaps(GLenum, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*)
    {
        return 0;
    }

    int SDL_GL_SetAttribute(SDL_GLattr attribute, int value)
    {
        const std::string name = recorded::AttributeName(attribute);
        State().attributes.push_back(name + " " + std::to_string(value));
        return name == State().failingAttribute && State().attributeFailures-- > 0 ? -1 : 0;
    }

    int SDL_GL_GetAttribute(SDL_GLattr, int* value)
    {
        *value = State().alphaBits;
        return State().alphaBits < 0 ? -1 : 0;
    }

    SDL_Surface* SDL_SetVideoMode(int width, int height, int bpp, Uint32 flags)
    {
        static SDL_Surface s_screen;
        if (State().onMode)
            State().onMode();
        State().modes.push_back(std::to_string(width) + "x" + std::to_string(height) + " bpp " +
                                std::to_string(bpp) + recorded::FlagNames(flags));
        if (!State().modeFails)
            return &s_screen;
        SDL_SetError("no such mode");
        return nullptr;
    }

    const SDL_VideoInfo* SDL_GetVideoInfo()
    {
        static SDL_VideoInfo s_info;
        s_info.current_w = State().displayWidth;
        s_info.current_h = State().displayHeight;
        return &s_info;
    }

    void SDL_GL_SwapBuffers()
    {
        ++State().swaps;
        if (State().onSwap)
            State().onSwap();
    }

    void SDL_WM_SetIcon(SDL_Surface* icon, Uint8*)
    {
        State().icons.push_back(std::to_string(icon->w) + "x" + std::to_string(icon->h));
    }

    void SDL_Quit()
    {
        if (State().onQuit)
            State().onQuit();
        reinterpret_cast<void (*)()>(dlsym(RTLD_NEXT, "SDL_Quit"))();
    }

    GLenum glewInit()
    {
        return State().glewResult;
    }

    // SDL has a thread for its timers, which sleeps too, by the real clock.
    void SDL_Delay(Uint32 milliseconds)
    {
        if (gettid() != getpid())
        {
            usleep(milliseconds * 1000);
            return;
        }
        State().delays.push_back(milliseconds);
        State().now += milliseconds;
    }

    // Whoever waits for the clock to change gets to see it change.
    Uint32 SDL_GetTicks()
    {
        if (gettid() != getpid())
            return 0;
        static unsigned s_last = 0;
        static int s_reads = 0;
        s_reads = State().now == s_last ? s_reads + 1 : 0;
        if (s_reads == 200)
            ++State().now;
        return s_last = State().now;
    }
}
