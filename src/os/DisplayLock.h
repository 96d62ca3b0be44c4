// The window's own connection to the X server. It belongs to SDL, which may use it in between.
#pragma once

#include <SDL.h>
#include <SDL_syswm.h>

namespace os
{
class DisplayLock
{
public:
    DisplayLock();
    ~DisplayLock();
    DisplayLock(const DisplayLock&) = delete;
    DisplayLock& operator=(const DisplayLock&) = delete;

    /// Without it there is no X11, or no window yet.
    bool IsOpen() const { return m_isOpen; }
    Display* GetDisplay() const { return m_info.info.x11.display; }
    Window GetWindow() const { return m_info.info.x11.window; }

private:
    SDL_SysWMinfo m_info = {};
    bool m_isOpen;
};
}
