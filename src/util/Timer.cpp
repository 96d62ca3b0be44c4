#include "util/Timer.h"

#include <SDL_timer.h>

namespace util
{
double Timer::GetCurrentTime()
{
    return SDL_GetTicks() / 1000.0;
}
}
