// For what happens once in the life of a process: services that never come back, a loop that ends for
// good, an exit.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <iostream>

/// Runs the function in a child process. Its failed expectations are printed there, and fail the
/// calling test too. Returns the child's exit code: 0 when all went well, or what it ended with itself;
/// -1 when it died otherwise.
inline int RunInFreshProcess(const std::function<void()>& function)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        try
        {
            function();
        }
        catch (std::exception& e)
        {
            ADD_FAILURE() << "thrown: " << e.what();
        }
        std::cout.flush();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 111 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#define EXPECT_FINE_IN_FRESH_PROCESS(...)                                                          \
    do                                                                                             \
    {                                                                                              \
        const int exitCode = RunInFreshProcess([&] __VA_ARGS__);                                   \
        EXPECT_EQ(0, exitCode) << "the failures stand above; -1 means that it crashed";            \
    } while (false)
