#include "window/Program.h"

#include "window/XServer.h"

#include <boost/filesystem.hpp>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace fs = boost::filesystem;

namespace test
{
WorkDir::WorkDir()
{
    fs::create_directory_symlink(QUIB_SOURCE_DIR "/data", m_dir / "data");
}

void WorkDir::Write(const std::string& name, const std::string& text) const
{
    fs::create_directories(fs::path(m_dir / name).parent_path());
    Spit(m_dir / name, text);
}

std::vector<std::string> WorkDir::List(const std::string& folder) const
{
    std::vector<std::string> names;
    boost::system::error_code error;
    for (fs::directory_iterator it(m_dir / folder, error), end; !error && it != end; ++it)
        names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

Program::Program(const WorkDir& dir, const std::string& display, std::vector<std::string> arguments)
    : Program(dir, display, Options{std::move(arguments)})
{
}

Program::Program(const WorkDir& dir, const std::string& display, const Options& options)
{
    const std::string out = m_said / "out", err = m_said / "err";
    std::vector<char*> argv = {const_cast<char*>(options.program.c_str())};
    for (const std::string& argument : options.arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    m_pid = fork();
    if (m_pid != 0)
        return;
    dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666), 1);
    dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666), 2);
    setenv("DISPLAY", display.c_str(), 1);
    unsetenv("SDL_VIDEODRIVER");
    // The program ends with _exit on purpose, with most of its services alive.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    if (options.fileLimitIsError)
        signal(SIGXFSZ, SIG_IGN);
    if (chdir(dir.Path().c_str()) != 0)
        _exit(126);
    if (options.asNobody && (setgid(65534) != 0 || setuid(65534) != 0))
        _exit(126);
    execv(argv[0], argv.data());
    _exit(127);
}

Program::~Program()
{
    if (IsRunning())
    {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
}

void Program::Signal(int signal)
{
    kill(m_pid, signal);
}

void Program::LimitFileSize(unsigned long bytes)
{
    const struct rlimit limit = {bytes, bytes};
    prlimit(m_pid, RLIMIT_FSIZE, &limit, nullptr);
}

bool Program::IsRunning()
{
    if (m_isOver)
        return false;
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) != m_pid)
        return true;
    m_isOver = true;
    m_result = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return false;
}

int Program::Wait()
{
    return WaitFor([&] { return !IsRunning(); }) ? m_result : 999;
}

bool Program::WaitUntilItSays(const std::string& text)
{
    return WaitFor([&] { return Says(text) || !IsRunning(); }) && Says(text);
}
}
