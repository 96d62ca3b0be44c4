// The window's video mode, and what its GL context was made with. Owned by the Subsystem; lives as long
// as SDL does.
#pragma once

#include "core/WindowParams.h"

#include <map>

namespace core
{
class VideoMode
{
public:
    VideoMode();

    /// Asks SDL for the buffers that the next window is to have.
    /// @throws std::runtime_error  when one can't be asked for
    void SetGLAttributes(const WindowParams& params);
    /// Makes the window with these buffers. A window that has the same ones may stay, with its context;
    /// any other is gone afterwards, whether the new one could be had or not.
    /// @throws std::runtime_error
    void Set(const WindowParams& params);
    /// After a failure: drops what window there is and asks SDL for the buffers that the window had when
    /// the copy was taken. The window is to be made again with the parameters of that time.
    void GoBackTo(const VideoMode& before, const WindowParams& params);

    /// Whether there has ever been a window.
    bool HasBeenSet() const { return m_hasBeenSet; }

private:
    using Attributes = std::map<int, int>; // by SDL_GLattr

    void SetAttribute(int attribute, int value, const char* failure);

    Attributes m_asked;   // of SDL
    Attributes m_inForce; // those of the window; SDL's own defaults before there is one
    bool m_hasBeenSet = false;
};
}
