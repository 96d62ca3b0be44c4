#include "input/EventQueue.h"

#include <SDL.h>
#include <SDL_syswm.h>

#include <vector>

namespace input
{
namespace
{
const int SDLQueueLength = 128;

struct WaitingEvent
{
    SDL_Event event;
    int mods;             // when many events come in one frame, SDL's own are those after the last
    SDL_SysWMmsg message; // what an event of the window system points to
};

std::vector<WaitingEvent>& WaitingEvents()
{
    static auto* s_events = new std::vector<WaitingEvent>;
    return *s_events;
}

/// SDL's filter sees each event before its queue does.
int KeepEvent(const SDL_Event* event)
{
    WaitingEvents().push_back({*event, SDL_GetModState(), {}});
    if (event->type == SDL_SYSWMEVENT)
        WaitingEvents().back().message = *event->syswm.msg;
    return 0; // not for SDL's own queue
}
}

void KeepEvents()
{
    SDL_SetEventFilter(KeepEvent);
}

void ForEachEvent(const EventHandler& handler)
{
    SDL_PumpEvents();
    std::vector<WaitingEvent>& waiting = WaitingEvents();
    const size_t count = waiting.size();
    for (size_t i = 0; i < count; ++i)
    {
        WaitingEvent copy = waiting[i]; // a handler may make SDL look for more
        if (copy.event.type == SDL_SYSWMEVENT)
            copy.event.syswm.msg = &copy.message;
        handler(copy.event, copy.mods);
    }
    waiting.erase(waiting.begin(), waiting.begin() + count);
    // Then what was pushed, by whoever.
    SDL_Event event;
    for (int i = 0;
         i < SDLQueueLength && SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_ALLEVENTS) > 0; ++i)
        handler(event, SDL_GetModState());
}
}
