// Wall-clock time in seconds.
#pragma once

namespace util
{
struct Timer
{
    /// Seconds since SDL started, in whole milliseconds; 0 before that.
    static double GetCurrentTime();
};
}
