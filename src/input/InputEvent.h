// Everything that SDL reports and that is neither key nor mouse: quit, resize, window system events.
#pragma once

#include "input/Events.h"

#include <SDL_events.h>

namespace input
{
class InputEvent final : public GeneralEvent
{
public:
    explicit InputEvent(const SDL_Event& event)
        : m_event(event)
    {
    }

    const SDL_Event& GetEvent() const { return m_event; }

private:
    SDL_Event m_event;
};
}
