#include "os/DisplayLock.h"
#include "os/Platform.h"

#include <X11/Xlib.h>

namespace os
{
bool MayShineThrough()
{
    const DisplayLock lock;
    XWindowAttributes attributes;
    if (!lock.IsOpen() || !XGetWindowAttributes(lock.GetDisplay(), lock.GetWindow(), &attributes))
        return true;
    return attributes.depth == 32;
}
}
