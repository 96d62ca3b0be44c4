#include "frame/Frames.h"

#include "Measure.h"
#include "app/App.h"
#include "app/Scene.h"
#include "app/Startup.h"
#include "app/entities/Entity.h"
#include "core/Subsystem.h"
#include "frame/Allocations.h"
#include "frame/Scenes.h"
#include "frame/XServer.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <GL/gl.h>
#include <SDL.h>
#include <boost/filesystem.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <sstream>
#include <vector>

namespace bench
{
namespace
{
// The scopes at whose ends a driver has to finish what it was given, so that each stage is charged with
// its own. The others tell what was asked of it only.
const char* const Stages[] = {"glClear",   "DrawMetaTex",        "Setup",    "Texture::Copy",
                              "Water",     "Background::DrawBG", "Entities", "App::DrawComp",
                              "GUI::Draw", "SDL_GL_SwapBuffers"};

// The middle of the window.
const int MouseX = 512, MouseY = 384;

double GetSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double GetProcessSeconds()
{
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// Listens to the scopes.
struct OpenScope
{
    const char* name;
    bool isStage;
    double start;
};
std::vector<OpenScope> s_open;
std::map<std::string, double> s_seconds;
bool s_finishes = false;

void BeginScope(const char* name)
{
    const bool isStage =
        s_finishes && std::any_of(std::begin(Stages), std::end(Stages),
                                  [name](const char* stage) { return !std::strcmp(stage, name); });
    if (isStage)
        glFinish();
    s_open.push_back({name, isStage, GetSeconds()});
}

void EndScope()
{
    if (s_open.empty())
        return; // of a scope that was there before
    if (s_open.back().isStage)
        glFinish();
    s_seconds[s_open.back().name] += GetSeconds() - s_open.back().start;
    s_open.pop_back();
}

unsigned s_now = 1000; // milliseconds; the program's clock

unsigned ReadClock(unsigned)
{
    return s_now;
}

// Sees each frame pass by, and sends what it saw to `out` before it ends the process.
class Observer : public gui::Component
{
public:
    Observer(const FrameScene& scene, const FrameOptions& options, FILE* out)
        : m_scene(scene)
        , m_options(options)
        , m_out(out)
        , m_warmUp(scene.settleFrames + 30)
    {
        m_ms.reserve(Frames);
    }

    void Update(float dt) override
    {
        Component::Update(dt);
        const double now = GetTime();
        if (m_frame == m_warmUp)
            m_cpu = GetProcessSeconds();
        if (m_frame == m_warmUp + Frames)
            m_cpu = GetProcessSeconds() - m_cpu;
        if (m_frame > m_warmUp && m_frame <= m_warmUp + Frames)
        {
            m_ms.push_back((now - m_start) * 1e3);
            m_allocations = std::max(m_allocations, CountAllocations() - m_allocationsBefore);
        }
        ++m_frame;
        if (m_frame == m_scene.settleFrames)
            physics::Simulation::GetInstancePtr()->m_running = m_scene.isRunning;
        if (m_frame == 5 && m_options.mouseOver)
        {
            SDL_Event motion = {};
            motion.type = SDL_MOUSEMOTION;
            motion.motion.x = MouseX;
            motion.motion.y = MouseY;
            input::Input::GetInstancePtr()->HandleEvent(motion);
        }
        if (m_frame == m_warmUp + Frames + 1)
        {
            GetGLCounts().clear();
            s_open.reserve(100);
            s_finishes = m_options.mode == GLMode::Real;
            util::ScopeProfiler::s_begin = BeginScope;
            util::ScopeProfiler::s_end = EndScope;
        }
        if (m_frame == m_warmUp + 2 * Frames + 1)
            SendAndExit();
        s_now += m_frame % 3 ? 17 : 16;
        m_allocationsBefore = CountAllocations();
        m_start = GetTime();
    }

private:
    static constexpr int Frames = 100;

    double GetTime() const
    {
        return m_options.mode == GLMode::Real ? GetSeconds() : GetThreadSeconds();
    }

    void SendAndExit()
    {
        std::sort(m_ms.begin(), m_ms.end());
        std::fprintf(
            m_out,
            "ms\t%.9g\nbest\t%.9g\ncpu\t%.9g\nallocations\t%zu\nentities\t%zu\nparticles\t%zu\n",
            m_ms[m_ms.size() / 2], m_ms.front(), m_cpu * 1e3 / Frames, m_allocations,
            app::Scene::GetInstancePtr()->GetEntities().size(),
            physics::Simulation::GetInstancePtr()->GetParticles().size());
        for (const auto& [name, seconds] : s_seconds)
            std::fprintf(m_out, "stage %s\t%.9g\n", name.c_str(), seconds * 1e3 / Frames);
        for (const auto& [name, count] : GetGLCounts())
            std::fprintf(m_out, "call %s\t%.9g\nvain %s\t%.9g\n", name.c_str(),
                         double(count.calls) / Frames, name.c_str(), double(count.vain) / Frames);
        std::fflush(m_out);
        _exit(0);
    }

    const FrameScene& m_scene;
    const FrameOptions m_options;
    FILE* m_out;
    int m_warmUp;
    int m_frame = 0;
    double m_start = 0;
    double m_cpu = 0; // seconds, of all threads
    size_t m_allocations = 0, m_allocationsBefore = 0;
    std::vector<double> m_ms;
};

void RunProgram(const FrameScene& scene, const FrameOptions& options, const std::string& workDir,
                FILE* out)
{
    SetGLMode(options.mode);
    if (options.mouseOver)
        SetMouse(MouseX, MouseY);
    else
        SetMouse(-10000, -10000);
    setenv("SDL_VIDEODRIVER", options.mode == GLMode::Real ? "x11" : "dummy", 1);
    util::FileSystem::GetInstancePtr()->SetWorkDir(workDir);
    core::Subsystem::SetLogToStandardOutput(false);
    core::Subsystem::SetUseJoysticks(false);
    app::CreateServices();
    util::Timer::SetSource(ReadClock);
    script::Parser* parser = script::Parser::GetInstancePtr();
    parser->ExecuteToString("System.maxFPS = 1000.0");
    if (!options.shaders)
        parser->ExecuteToString("Resources.shaders = false");
    core::Subsystem::GetInstancePtr()->ApplyParserConfig();
    app::App::GetInstancePtr()->CreateGUI();
    scene.make();
    physics::Simulation::GetInstancePtr()->m_running = scene.settleFrames > 0 || scene.isRunning;
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(
        QUIB_NEW Observer(scene, options, out));
    core::Subsystem::GetInstancePtr()->Run();
}

void Read(std::istream& in, FrameResult& result)
{
    std::string name;
    double value;
    while (std::getline(in, name, '\t') && in >> value && in.get())
    {
        const size_t blank = name.find(' ');
        const std::string kind = name.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : name.substr(blank + 1);
        if (kind == "stage")
            result.stages[rest] = value;
        else if (kind == "call")
            result.calls[rest] = value;
        else if (kind == "vain")
            result.vain[rest] = value;
        else
            (kind == "ms"            ? result.ms
             : kind == "best"        ? result.best
             : kind == "cpu"         ? result.cpu
             : kind == "allocations" ? result.allocations
             : kind == "entities"    ? result.entities
                                     : result.particles) = value;
    }
}
}

std::string MeasureFrames(const FrameScene& scene, const FrameOptions& options, FrameResult& result)
{
    if (options.mode == GLMode::Real && !EnsureDisplay())
        return "there is no DISPLAY, and Xvfb is not installed";
    char folder[] = "/tmp/bench_frame_XXXXXX";
    if (!mkdtemp(folder))
        return "no folder in /tmp";
    for (const char* name : {"data", "scenes"})
        boost::filesystem::create_directory_symlink(std::string(QUIB_SOURCE_DIR) + "/" + name,
                                                    std::string(folder) + "/" + name);
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        close(ends[0]);
        RunProgram(scene, options, std::string(folder) + "/", fdopen(ends[1], "w"));
        _exit(1);
    }
    close(ends[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = read(ends[0], buffer, sizeof(buffer))) > 0;)
        text.append(buffer, size_t(n));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    boost::filesystem::remove_all(folder);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "the program failed";
    std::istringstream in(text);
    Read(in, result);
    return "";
}
}
