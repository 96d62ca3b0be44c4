// One run of the built program, in a work directory of its own.
#pragma once

#include "TestSupport.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace test
{
// A work directory as a user has it: the data by a link, everything else to be made by the program.
// Starts with a world at rest, so that pictures can be compared.
class WorkDir
{
public:
    WorkDir();

    std::string operator/(const std::string& name) const { return m_dir / name; }
    const std::string& Path() const { return m_dir.Path(); }
    bool Has(const std::string& name) const { return boost::filesystem::exists(m_dir / name); }
    /// Makes its folder too.
    void Write(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const { return Slurp(m_dir / name); }
    /// The names in a folder of it that match.
    std::vector<std::string> List(const std::string& folder) const;

private:
    TempDir m_dir;
};

class Program
{
public:
    struct Options
    {
        std::vector<std::string> arguments;
        std::string program = QUIB_PROGRAM;
        bool asNobody = false;         // give up root's rights
        bool fileLimitIsError = false; // a file over the limit is a failed write, not a signal
    };

    Program(const WorkDir& dir, const std::string& display, const Options& options);
    Program(const WorkDir& dir, const std::string& display,
            std::vector<std::string> arguments = {});
    /// Kills it when it still runs.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Signal(int signal);
    /// From now on no file can grow beyond this.
    void LimitFileSize(unsigned long bytes);
    /// Waits for the end. @return the exit code, minus the signal, or 999 when it does not end
    int Wait();
    bool IsRunning();

    /// What it has said so far.
    std::string Out() const { return Slurp(m_said / "out"); }
    std::string Err() const { return Slurp(m_said / "err"); }
    bool Says(const std::string& text) const { return Out().find(text) != std::string::npos; }
    bool WaitUntilItSays(const std::string& text);

private:
    pid_t m_pid = 0;
    bool m_isOver = false;
    int m_result = 0;
    TempDir m_said;
};
}
