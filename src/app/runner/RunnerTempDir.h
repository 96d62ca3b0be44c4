// The temporary work directory of a run. A killed run removes it too, as far as a signal handler may.
#pragma once

#include <string>

namespace app
{
class RunnerTempDir
{
public:
    /// Below $TMPDIR. There can be one at a time.
    /// @throws RunFailure
    RunnerTempDir();
    ~RunnerTempDir();
    RunnerTempDir(const RunnerTempDir&) = delete;
    RunnerTempDir& operator=(const RunnerTempDir&) = delete;

    /// Ends in a slash.
    const std::string& GetPath() const { return m_path; }

private:
    std::string m_path;
};
}
