// What SDL makes of a mouse.
#pragma once

#include <SDL_events.h>

namespace test
{
/// @param button  SDL's number
/// @param x, y    pixels, and so with the next one
inline SDL_Event ButtonEvent(bool down, int button, int x, int y)
{
    SDL_Event event = {};
    event.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
    event.button.button = static_cast<Uint8>(button);
    event.button.x = static_cast<Uint16>(x);
    event.button.y = static_cast<Uint16>(y);
    return event;
}

/// @param dx, dy  since the event before
inline SDL_Event MotionEvent(int x, int y, int dx, int dy)
{
    SDL_Event event = {};
    event.type = SDL_MOUSEMOTION;
    event.motion.x = static_cast<Uint16>(x);
    event.motion.y = static_cast<Uint16>(y);
    event.motion.xrel = static_cast<Sint16>(dx);
    event.motion.yrel = static_cast<Sint16>(dy);
    return event;
}
}
