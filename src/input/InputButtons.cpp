// Input's mouse buttons that are let go of without an event that says so.
#include "input/Input.h"

#include "os/Platform.h"

#include <SDL.h>

namespace input
{
namespace
{
const int GestureButtons[] = {SDL_BUTTON_LEFT, SDL_BUTTON_MIDDLE, SDL_BUTTON_RIGHT};
}

/// A window that loses the mouse for a moment, as when it is hidden, does not get the release of a button:
/// the gesture must end all the same.
void Input::ReleaseLostButtons(int x, int y)
{
    const unsigned down = GetButtonsDown();
    m_heldButtons &= down;
    unsigned held = 0;
    if (!down || !os::GetHeldMouseButtons(held))
    {
        m_lostButtons = 0;
        return;
    }
    // Only a button that the desktop has seen held can be lost: a press that a program has made up is
    // known to us alone.
    m_heldButtons |= down & held;
    const unsigned missing = m_heldButtons & ~held;
    // The release may be on its way, but in the frame after the first question it must have come.
    const unsigned lost = missing & m_lostButtons;
    m_lostButtons = missing & ~lost;
    ReleaseButtons(lost, x, y);
}

/// SDL lets go of the buttons with each new window, where the pixel of the mouse is another place of the world.
void Input::EndGestureBeforeResize()
{
    const SDL_Surface* const screen = SDL_GetVideoSurface();
    if (!screen || math::TVector2<int>(screen->w, screen->h) == m_newSize)
        return;
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    ReleaseButtons(GetButtonsDown(), x, y);
}

unsigned Input::GetButtonsDown() const
{
    unsigned down = 0;
    for (int button : GestureButtons)
        if (IsKeyDown(FirstMouseKey + button))
            down |= SDL_BUTTON(button);
    return down;
}

void Input::ReleaseButtons(unsigned buttons, int x, int y)
{
    for (int button : GestureButtons)
        if (buttons & SDL_BUTTON(button))
        {
            SDL_Event event = {};
            event.type = SDL_MOUSEBUTTONUP;
            event.button.button = static_cast<Uint8>(button);
            event.button.x = static_cast<Uint16>(x);
            event.button.y = static_cast<Uint16>(y);
            Deliver(event, SDL_GetModState());
        }
}
}
