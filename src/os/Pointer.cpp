#include "os/DisplayLock.h"
#include "os/Platform.h"

#include <X11/Xlib.h>

namespace os
{
bool GetHeldMouseButtons(unsigned& held)
{
    const DisplayLock lock;
    if (!lock.IsOpen())
        return false;
    Display* const display = lock.GetDisplay();
    Window root = 0, child = 0;
    int x = 0, y = 0;
    unsigned state = 0;
    if (!XQueryPointer(display, DefaultRootWindow(display), &root, &child, &x, &y, &x, &y, &state))
        return false; // the mouse is on another screen
    held = 0;
    if (state & Button1Mask)
        held |= SDL_BUTTON(SDL_BUTTON_LEFT);
    if (state & Button2Mask)
        held |= SDL_BUTTON(SDL_BUTTON_MIDDLE);
    if (state & Button3Mask)
        held |= SDL_BUTTON(SDL_BUTTON_RIGHT);
    return true;
}
}
