#include "app/runner/RunnerTempDir.h"

#include "app/runner/RunFailure.h"

#include <boost/filesystem.hpp>

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <vector>

namespace app
{
namespace
{
// What is to go when a signal ends the run, in the order in which it can be removed.
std::vector<std::string>& Leavings()
{
    static std::vector<std::string>* leavings = new std::vector<std::string>;
    return *leavings;
}

void OnSignal(int signal)
{
    for (const std::string& path : Leavings())
        if (unlink(path.c_str()) != 0)
            rmdir(path.c_str());
    std::signal(signal, SIG_DFL);
    raise(signal);
}
}

RunnerTempDir::RunnerTempDir()
{
    const char* base = std::getenv("TMPDIR");
    std::string name = std::string(base && *base ? base : "/tmp") + "/quib-run-XXXXXX";
    if (!mkdtemp(name.data()))
        throw RunFailure(FileFailure, "can't make a temporary directory " + name);
    m_path = name + "/";
    // Strings now, as the handler may not make any.
    for (const char* left :
         {"Logfile.txt", "quib.lock", "config.autosave.cfg", "config.autosave.cfg.tmp",
          "scenes/_AUTOSAVE.qib", "scenes/_AUTOSAVE.qib.tmp", "scenes/quiblets", "scenes",
          "screenshots", ""})
        Leavings().push_back(m_path + left);
    for (int signal : {SIGHUP, SIGINT, SIGTERM})
        std::signal(signal, &OnSignal);
}

RunnerTempDir::~RunnerTempDir()
{
    Leavings().clear();
    boost::system::error_code ignored;
    boost::filesystem::remove_all(m_path, ignored);
}
}
