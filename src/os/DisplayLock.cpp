#include "os/DisplayLock.h"

namespace os
{
DisplayLock::DisplayLock()
{
    SDL_VERSION(&m_info.version);
    m_isOpen = SDL_WasInit(SDL_INIT_VIDEO) && SDL_GetWMInfo(&m_info) > 0 &&
               m_info.subsystem == SDL_SYSWM_X11 && m_info.info.x11.display;
    if (m_isOpen)
        m_info.info.x11.lock_func();
}

DisplayLock::~DisplayLock()
{
    if (m_isOpen)
        m_info.info.x11.unlock_func();
}
}
