// quib-run as its user meets it: a process in a folder of its own, its output, its files.
#pragma once

#include <boost/filesystem.hpp>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline std::string Slurp(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

inline std::vector<std::string> Fields(const std::string& line)
{
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ',');)
        fields.push_back(field);
    return fields;
}

struct Result
{
    int exitCode; // -1 when killed
    std::string out, err;
};

// A folder to run in, and temporary directories of quib-run below it where they can be seen.
class RunnerTest : public testing::Test
{
protected:
    RunnerTest()
    {
        char name[] = "/tmp/quib-runner-test-XXXXXX";
        m_dir = std::string(mkdtemp(name)) + "/";
        boost::filesystem::create_directories(m_dir + "tmp");
    }
    ~RunnerTest() override
    {
        boost::system::error_code ignored;
        boost::filesystem::remove_all(m_dir, ignored);
    }

    std::string Path(const std::string& name) const { return m_dir + name; }
    std::string Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }
    static std::string Scene(const std::string& name)
    {
        return std::string(QUIB_SOURCE_DIR) + "/scenes/" + name + ".qib";
    }
    /// Nothing of a run stays behind.
    bool IsTidy() const { return boost::filesystem::is_empty(m_dir + "tmp"); }

    /// @param readerHasGone  nobody reads standard output any more
    pid_t Start(const std::vector<std::string>& arguments, bool readerHasGone = false) const
    {
        const pid_t pid = fork();
        if (pid != 0)
            return pid;
        if (chdir(m_dir.c_str()) != 0)
            _exit(99);
        setenv("TMPDIR", (m_dir + "tmp").c_str(), 1);
        unsetenv("DISPLAY");
        dup2(open((m_dir + "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
        int ends[2];
        if (readerHasGone && pipe(ends) == 0)
        {
            close(ends[0]);
            dup2(ends[1], STDOUT_FILENO);
            std::signal(SIGPIPE, SIG_DFL);
        }
        dup2(open((m_dir + "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        std::vector<char*> argv{const_cast<char*>(QUIB_RUN)};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(QUIB_RUN, argv.data());
        _exit(99);
    }
    Result Wait(pid_t pid) const
    {
        int status = 0;
        waitpid(pid, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(m_dir + "out"),
                Slurp(m_dir + "err")};
    }
    Result Run(const std::vector<std::string>& arguments) const { return Wait(Start(arguments)); }

    /// What the code prints.
    std::string Eval(const std::string& code) const { return Run({"-q", "-e", code}).out; }

private:
    std::string m_dir;
};
