// Wall-clock time in seconds.
#pragma once

namespace util
{
struct Timer
{
    /// Seconds since SDL started, in whole milliseconds; not to be asked before. This is what the program
    /// goes by: a recording keeps each answer, and a replay gives them again.
    static double GetCurrentTime();
    /// The machine's own, which no replay changes. For waiting, and for measuring the machine.
    static unsigned GetRealMilliseconds();

    /// Makes the answers of GetCurrentTime, in milliseconds, from those of the machine.
    using Source = unsigned (*)(unsigned real);
    /// @param source  null for the machine's own
    static void SetSource(Source source);
};
}
