#include "core/Subsystem.h"

#include "core/ResourceManager.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "input/InputEvent.h"
#include "input/Recorder.h"
#include "input/Replay.h"
#include "logging/Logger.h"
#include "os/Clipboard.h"
#include "os/Platform.h"
#include "physics/Simulation.h"
#include "rendering/Image.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"
#include "script/Parser.h"
#include "script/Recursion.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <GL/glew.h>
#include <SDL.h>
#include <boost/filesystem.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>

namespace fs = boost::filesystem;

namespace core
{
namespace
{
bool s_logToStandardOutput = true;
bool s_useJoysticks = true;

// All that a signal handler may touch. Run looks at them once a frame.
volatile std::sig_atomic_t s_exitSignal = 0;
volatile std::sig_atomic_t s_screenshotSignal = 0;

void OnExitSignal(int)
{
    s_exitSignal = 1;
}
void OnScreenshotSignal(int)
{
    s_screenshotSignal = 1;
}

void AddLoggers()
{
    logging::Logger* logger = logging::Logger::GetInstancePtr();
    logger->AddLogger(
        QUIB_NEW logging::StreamLogger(static_cast<logging::LogLevel>(7), &std::cerr));
    if (s_logToStandardOutput)
        logger->AddLogger(QUIB_NEW logging::StreamLogger(logging::LogVerbose, &std::cout));
    logger->AddLogger(QUIB_NEW logging::FileLogger(
        static_cast<logging::LogLevel>(31),
        util::FileSystem::GetInstancePtr()->WorkDir() + "Logfile.txt", true));
}

void InitSDL()
{
    // GLEW speaks to GLX, so that the window has to be X11's. A driver that the user or the headless
    // runner has named is left alone.
    ::setenv("SDL_VIDEODRIVER", "x11", 0);
    Log(logging::LogInfo, "Init SDL...");
    const Uint32 joysticks = s_useJoysticks ? SDL_INIT_JOYSTICK : 0;
    if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE | joysticks) < 0)
        QUIB_THROW(std::runtime_error(util::String("Couldn't init SDL: ") + SDL_GetError()));
    os::NoteDisplaySize();
}

void SetIcon()
{
    const util::String path = util::FileSystem::GetInstancePtr()->WorkDir() + "Quib.bmp";
    boost::system::error_code error;
    if (fs::status(path, error).type() == fs::file_not_found)
        return; // no error: SDL keeps its default icon
    SDL_Surface* icon = rendering::LoadSurface(path);
    if (!icon)
    {
        Log(logging::LogWarning, "Failed to load the icon \"" + path + "\": " + SDL_GetError());
        return;
    }
    SDL_WM_SetIcon(icon, nullptr);
    SDL_FreeSurface(icon);
}

int ClampToDisplay(int extent, int display)
{
    extent = std::min(std::max(extent, 1), 4096);
    return display > 0 ? std::min(extent, display) : extent;
}

// Nobody uses the two values: they are there for reading bug reports.
void LogPrecisions()
{
    const unsigned beforeSleep = util::Timer::GetRealMilliseconds();
    SDL_Delay(1);
    const unsigned sleepPrecision = util::Timer::GetRealMilliseconds() - beforeSleep;

    const unsigned start = util::Timer::GetRealMilliseconds();
    unsigned now = start;
    while (now == start)
        now = util::Timer::GetRealMilliseconds();
    Log(logging::LogInfo, "sleep precision=" + util::ToString(sleepPrecision) +
                              "ms, timer precision: " + util::ToString(now - start) + "ms");
}
}

void Subsystem::SetLogToStandardOutput(bool on)
{
    s_logToStandardOutput = on;
}

void Subsystem::SetUseJoysticks(bool on)
{
    s_useJoysticks = on;
}

Subsystem::Subsystem()
    : InputListener(50)
    , m_clearColor(this, "clearColor", math::Vec4(0, 0, 0, 1))
    , m_minFPS(this, "minFPS", 10.0f)
    , m_maxFPS(this, "maxFPS", 60.0f)
    , m_vSync(this, "vSync", false, &Subsystem::GetVSync, &Subsystem::SetVSync)
{
    SetReflectedName("System");
    AddLoggers();
    InitSDL();

    input::Input* input = input::Input::GetInstancePtr();
    input->InitializeSDL();
    input->AddListener(util::WeakPtr<InputListener>(this));
    // Behind the GUI, which puts itself first.
    input->AddListener(util::WeakPtr<InputListener>(util::Profiler::GetInstancePtr()));
    input->AddListener(util::WeakPtr<InputListener>(util::Profiler2::GetInstancePtr()));
    SetIcon();

    AddCmd("exit", &Subsystem::Exit);
    AddCmd("time", &util::Timer::GetCurrentTime);
    AddCmd("objectCurrent", &util::Pointee::GetInstanceCount);
    AddCmd("objectHandleCurrent", &util::PointeeHandle::GetInstanceCount);
    AddCmd("objectTotal", &util::Pointee::GetAllocateCount);
    AddPoker("resizable", &m_configParams.resizable);
    AddPoker("fullscreen", &m_configParams.fullscreen);
    AddPoker("resolution", &m_configParams.size);
    AddPoker("antiAlias", &m_configParams.antiAlias);
    AddPoker("depth", &m_configParams.depth);
    AddCmd("recreateWindow", &Subsystem::ApplyParserConfig);
}

Subsystem::~Subsystem()
{
    rendering::Renderer::Destroy();
    input::Input::Destroy();
    gui::GUI::Destroy();
    rendering::TextureManager::Destroy();
    util::FileSystem::Destroy();
    script::Parser::Destroy();
    SDL_Quit();
}

template<typename T>
void Subsystem::AddPoker(const util::String& name, T* remote)
{
    m_pokers.push_back(QUIB_NEW script::AttribRemotePoker<T>(name, remote));
    AddVariable(m_pokers.back());
}

void Subsystem::SetTitle(const util::String& title)
{
    SDL_WM_SetCaption(title.c_str(), nullptr);
}

void Subsystem::SetParams(const WindowParams& params)
{
    m_windowParams = params;
    SetConfigParams(params);
}

void Subsystem::SetConfigParams(const WindowParams& params)
{
    m_configParams = params;
    // At once, and not in the next frame only: this may be the last, and the settings are saved.
    for (const auto& poker : m_pokers)
        poker->CalcValue();
}

void Subsystem::CreateWindow(WindowParams params)
{
    const VideoMode oldMode = m_videoMode;
    const WindowParams oldParams = m_windowParams;
    try
    {
        MakeWindow(params);
    }
    catch (...)
    {
        if (oldMode.HasBeenSet())
            BringBackWindow(oldMode, oldParams);
        throw;
    }
}

void Subsystem::BringBackWindow(const VideoMode& mode, const WindowParams& params)
{
    // The failure travels on. Where a script stops it, the loop goes on, and it draws.
    try
    {
        m_videoMode.GoBackTo(mode, params);
        MakeWindow(params);
        Log(logging::LogError, "There is no such window: the one before it is back");
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("No window is left: ") + e.what());
        rendering::GLIsGone();
        SetParams(params); // what is saved now must not be what failed
        Exit();
    }
}

void Subsystem::MakeWindow(WindowParams params)
{
    Log(logging::LogVerbose, "Creating window...");
    // While their context is there: a new mode may mean a new one.
    ResourceManager::GetInstancePtr()->UnloadAll();

    math::TVector2<int> display(0, 0);
    os::GetDisplaySize(display);
    params.size.x = ClampToDisplay(params.size.x, display.x);
    params.size.y = ClampToDisplay(params.size.y, display.y);

    Log(logging::LogInfo, "Setting up SDL");
    m_videoMode.SetGLAttributes(params);
    Log(logging::LogInfo, "Setting video mode");
    m_videoMode.Set(params);
    m_mayShineThrough = os::MayShineThrough();

    Log(logging::LogInfo, "Init GLEW...");
    const GLenum glew = glewInit();
    if (glew != GLEW_OK)
        QUIB_THROW(std::runtime_error(util::String("GLEW Error: ") +
                                      reinterpret_cast<const char*>(glewGetErrorString(glew))));

    Log(logging::LogInfo, "Setting vsync");
    SetVSync(params.vSync);
    params.vSync = m_windowParams.vSync;
    SetParams(params);

    Log(logging::LogInfo, "Setting viewport");
    glViewport(0, 0, GetWidth(), GetHeight());
    rendering::GLHasLoaded();
    rendering::Renderer::GetInstancePtr()->ResetColor();

    Log(logging::LogInfo, "Checking for alpha framebuffer");
    int alphaBits = 0;
    if (SDL_GL_GetAttribute(SDL_GL_ALPHA_SIZE, &alphaBits) != 0)
        // Deliberate: "You'r".
        QUIB_THROW(std::runtime_error("You'r computer won't let me query the alpha bit depth"));
    m_hasAlpha = alphaBits > 0;
    if (alphaBits != 8)
        Log(logging::LogWarning,
            "Your computer doesn't support alpha framebuffers; water may not be rendered "
            "correctly.");

    Log(logging::LogInfo, "Loading all resources...");
    ResourceManager::GetInstancePtr()->LoadAll(false);
    Log(logging::LogInfo, "Done loading resources.");

    gui::GUI::GetInstancePtr()->OnNewWindowSize(GetWidth(), GetHeight());
    rendering::CheckForGLError();

    if (!m_screenshotAdded)
    {
        AddVoidCmd("screenshot",
                   [this]
                   {
                       // More than a formula may spend: it would fill the disk with a picture a frame.
                       script::Charge(3000000);
                       TakeScreenshot();
                   });
        m_screenshotAdded = true;
    }
    Log(logging::LogVerbose, "Window created.");
}

void Subsystem::ApplyParserConfig()
{
    // A script that asks for window after window must end too.
    script::Charge(20000000);
    CreateWindow(m_configParams);
}

void Subsystem::SetVSync(bool)
{
    m_windowParams.vSync = false;
    // What a script wrote is replaced, so that scripts read false too.
    m_vSync = false;
}

void Subsystem::OnOtherEvent(const input::InputEvent& event)
{
    const SDL_Event& sdl = event.GetEvent();
    if (sdl.type == SDL_SYSWMEVENT)
        os::ServeClipboard(*sdl.syswm.msg);
    else if (sdl.type == SDL_QUIT)
    {
        m_exit = true;
        event.SetHandled(true);
    }
    else if (sdl.type == SDL_VIDEORESIZE)
    {
        WindowParams params = m_windowParams;
        params.size = math::TVector2<int>(sdl.resize.w, sdl.resize.h);
        // The window systems like to say twice what they have said once.
        if (params.size != m_windowParams.size)
            CreateWindow(params);
        event.SetHandled(true);
    }
}

void Subsystem::HandleSignals()
{
    struct sigaction action = {};
    action.sa_handler = OnExitSignal;
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // Whoever started this under nohup wants it to outlive the terminal.
    struct sigaction old = {};
    if (sigaction(SIGHUP, nullptr, &old) == 0 && old.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
    action.sa_handler = OnScreenshotSignal;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

void Subsystem::PumpEvents()
{
    input::Input::GetInstancePtr()->PumpEvents();
    const input::Replay* replay = input::Replay::Get();
    if (s_exitSignal || (replay && replay->WantsQuit()))
        m_exit = true;
    if (input::Recorder* recorder = m_exit ? input::Recorder::Get() : nullptr)
        recorder->NoteQuit();
    if (s_screenshotSignal)
    {
        s_screenshotSignal = 0;
        TakeScreenshot();
    }
}

void Subsystem::Run()
{
    double previous = util::Timer::GetCurrentTime();
    m_fpsTime = previous;
    LogPrecisions();
    util::Profiler::GetInstancePtr()->Reset();
    m_profiledUntil = util::Timer::GetRealMilliseconds();
    // Sticks tell where they rest with the first events.
    input::Input::GetInstancePtr()->PumpEvents();
    input::Input::GetInstancePtr()->CalibrateJoysticks();
    Log(logging::LogInfo, "Entering game loop");

    int framesSinceFlush = 0;
    while (!m_exit)
    {
        {
            QUIB_PROFILE("Events");
            QUIB_PASS_ON(PumpEvents());
        }
        physics::Simulation::GetInstancePtr()->SetFrameBudget(1 / m_minFPS);
        if (m_exit)
            break;

        const double now = util::Timer::GetCurrentTime();
        const float dt = static_cast<float>(now - previous);
        // Callbacks whose owners are gone are few: every eleventh frame is often enough.
        if (++framesSinceFlush > 10)
        {
            QUIB_PROFILE("FlushCallbackSets");
            QUIB_PASS_ON(util::AbstractCallbackSet::FlushCallbackSets());
            framesSinceFlush = 0;
        }
        {
            QUIB_PROFILE("GC");
            QUIB_PASS_ON(util::PointeeHandle::Flush());
        }
        {
            QUIB_PROFILE("Parser::Update");
            QUIB_PASS_ON(script::Parser::GetInstancePtr()->Update());
        }
        {
            // Deliberate: no interpolator exists, the stage runs empty.
            QUIB_PROFILE("Interp::Update");
            QUIB_PASS_ON(util::InterpolatorBase::UpdateAll());
        }
        {
            QUIB_PROFILE("GUI::Update");
            QUIB_PASS_ON(gui::GUI::GetInstancePtr()->Update(dt));
        }
        // No frame is drawn after a request to quit.
        if (m_exit)
            break;
        {
            QUIB_PROFILE("Draw");
            QUIB_PASS_ON(Draw());
        }
        QUIB_PASS_ON(UpdateProfilers());
        {
            QUIB_PROFILE("Logger::Update");
            QUIB_PASS_ON(logging::Logger::GetInstancePtr()->Update());
        }
        {
            QUIB_PROFILE("Frame limiter");
            LimitRate(dt);
        }
        previous = now;
    }
    ResourceManager::GetInstancePtr()->UnloadAll();
}

void Subsystem::UpdateProfilers()
{
    util::Profiler::GetInstancePtr()->Update();
    // The frame's own dt is what a replay tells, and the places are timed by the machine's clock.
    const unsigned now = util::Timer::GetRealMilliseconds();
    util::Profiler2::GetInstancePtr()->Update((now - m_profiledUntil) / 1000.0);
    m_profiledUntil = now;
}

void Subsystem::LimitRate(float dt)
{
    if (m_maxFPS < 1)
        m_maxFPS = 1;
    const input::Replay* replay = input::Replay::Get();
    if (replay && !replay->IsOver())
        SDL_Delay(replay->GetTimeToNextFrame());
    else if (const unsigned milliseconds = CalcFrameSleep(dt, m_maxFPS))
        SDL_Delay(milliseconds);
}

unsigned CalcFrameSleep(float dt, float maxFPS)
{
    // Deliberate: dt is the frame before this one, its sleep included, and not this frame's work. A
    // slow frame is followed by one that sleeps less, or not at all.
    const float target = 1 / maxFPS;
    if (!(dt < target))
        return 0;
    return static_cast<unsigned>(std::floor((target - dt) * 1000 + 0.5));
}

void Subsystem::Draw()
{
    {
        QUIB_PROFILE("glClear");
        const math::Vec4 color = m_clearColor;
        glClearColor(color.x, color.y, color.z, color.w);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }
    gui::GUI::GetInstancePtr()->Draw();
    CallOnFrame();
    ForceOpaque();
    {
        QUIB_PROFILE("SDL_GL_SwapBuffers");
        SDL_GL_SwapBuffers();
    }
    MeasureRate();
    rendering::CheckForGLError();
}

void Subsystem::TakeScreenshot()
{
    // Whoever asks for one of the same frame gets the same.
    if (m_wantsScreenshot)
        return;
    m_wantsScreenshot = true;
    CallWithFrame(
        [this]
        {
            m_wantsScreenshot = false;
            rendering::Renderer::GetInstancePtr()->ScreenShot(
                util::FileSystem::GetInstancePtr()->WorkDir() + "screenshots/quib");
        });
}

void Subsystem::CallOnFrame()
{
    std::vector<std::function<void()>> functions;
    functions.swap(m_onFrame);
    for (const auto& function : functions)
        try
        {
            function();
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogError, util::String("The screenshot failed: ") + e.what());
        }
}

void Subsystem::ForceOpaque()
{
    // A compositing desktop would let other windows shine through where the scene left alpha below 1.
    // Elsewhere that would be for nothing: 1.8 ms of the 4.8 of an empty frame in Mesa's software renderer,
    // which draws a whole rectangle when not all channels are cleared (bench_frame, empty/shaders).
    if (!m_mayShineThrough)
        return;
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

void Subsystem::MeasureRate()
{
    ++m_frameCount;
    const double now = util::Timer::GetCurrentTime();
    const double elapsed = now - m_fpsTime;
    // A value from the first frames on.
    if (m_fps == 0 && elapsed > 0)
        m_fps = m_frameCount / elapsed;
    if (elapsed > 1.0)
    {
        m_fps = m_frameCount / elapsed;
        m_fpsTime = now;
        m_frameCount = 0;
    }
}
}
