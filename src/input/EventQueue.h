// Where SDL's events wait for their frame. SDL keeps 128 and silently drops more, which a slow frame and a quick
// mouse can bring together; here none is lost.
#pragma once

#include <SDL_events.h>

#include <functional>

namespace input
{
/// From now on. SDL must be up.
void KeepEvents();

/// @param mods  SDL's modifiers as they were when the event came
using EventHandler = std::function<void(const SDL_Event& event, int mods)>;

/// Once a frame: hands over those that have come by now. What comes while they are handled waits for the next frame:
/// as long as each takes longer than the next is away, this one would never end.
void ForEachEvent(const EventHandler& handler);
}
