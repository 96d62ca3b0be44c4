#include "os/Platform.h"

#include <boost/filesystem.hpp>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <fcntl.h>
#include <unistd.h>

namespace fs = boost::filesystem;

namespace
{
// Whether a process of its own, as a second copy of the program is, gets the lock.
bool AnotherProcessLocks(const std::string& path)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(os::TryLock(path) ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
}

TEST(Lock, KeepsOtherProcessesOutAndGoesWithItsHolder)
{
    const fs::path dir = fs::temp_directory_path() / fs::unique_path("quib-%%%%%%%%");
    fs::create_directories(dir);
    const std::string path = (dir / "quib.lock").string();

    EXPECT_TRUE(AnotherProcessLocks(path));
    EXPECT_TRUE(AnotherProcessLocks(path)) << "the first holder has ended";
    EXPECT_TRUE(os::TryLock(path));
    EXPECT_FALSE(AnotherProcessLocks(path));
    fs::remove_all(dir);
}

TEST(Lock, AFileThatCannotBeMadeLocksNobodyOut)
{
    EXPECT_TRUE(os::TryLock("/nonexistent/quib.lock"));
}
