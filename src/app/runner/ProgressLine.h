// One line on the terminal that says how far a long run is, and goes when the run is over. Where standard
// error is no terminal there is none.
#pragma once

#include <chrono>

namespace app
{
class ProgressLine
{
public:
    /// @param total  steps
    explicit ProgressLine(long total);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// After each step.
    void Update(long step);

private:
    using Clock = std::chrono::steady_clock;

    long m_total;
    bool m_isShown;
    bool m_hasPrinted = false;
    Clock::time_point m_next; // when it is written again
};
}
