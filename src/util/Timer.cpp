#include "util/Timer.h"

#include <SDL_timer.h>

namespace util
{
namespace
{
Timer::Source s_source = nullptr;
}

double Timer::GetCurrentTime()
{
    const unsigned real = GetRealMilliseconds();
    return (s_source ? s_source(real) : real) / 1000.0;
}

unsigned Timer::GetRealMilliseconds()
{
    return SDL_GetTicks();
}

void Timer::SetSource(Source source)
{
    s_source = source;
}
}
