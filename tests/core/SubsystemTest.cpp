#include "core/Subsystem.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/RecordedSDL.h"
#include "core/ResourceManager.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "input/InputEvent.h"
#include "os/Platform.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "rendering/Shader.h"
#include "rendering/TextureManager.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/Mentor.h"
#include "util/ScopeProfiler.h"

#include <SDL.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

using core::Subsystem;
using core::WindowParams;
using recorded::State;

namespace
{
using Lines = std::vector<std::string>;

Subsystem* System()
{
    return Subsystem::GetInstancePtr();
}

util::String Script(const util::String& code)
{
    return script::Parser::GetInstancePtr()->ExecuteToString(code);
}

// Each test gets a program of its own: the subsystem comes once in the life of a process.
class SubsystemTest : public testing::Test
{
protected:
    void Start()
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::SetLogToStandardOutput(false);
        Subsystem::Create();
        System()->AddToRoot();
        gui::GUI::GetInstancePtr()->AddToRoot();
    }

    test::TempDir dir;
};

// Does something in the GUI's update of each frame.
class FrameComponent : public gui::Component
{
public:
    explicit FrameComponent(std::function<void(int frame)> act)
        : m_act(std::move(act))
    {
    }
    void Update(float dt) override
    {
        Component::Update(dt);
        dts.push_back(dt);
        m_act(static_cast<int>(dts.size()));
    }

    std::vector<float> dts;

private:
    std::function<void(int)> m_act;
};
using FramePtr = util::SharedPtr<FrameComponent>;

FramePtr EachFrame(std::function<void(int frame)> act)
{
    const FramePtr component = QUIB_NEW FrameComponent(std::move(act));
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(component);
    return component;
}

class CountingResource : public util::AbstractMentor
{
public:
    void Load() override { ++loads; }
    void Unload() override { ++unloads; }
    const std::type_info& GetType() const override { return typeid(CountingResource); }
    int loads = 0, unloads = 0;
};

SDL_Event Event(Uint8 type, int w = 0, int h = 0)
{
    SDL_Event event = {};
    event.type = type;
    if (type == SDL_VIDEORESIZE)
    {
        event.resize.w = w;
        event.resize.h = h;
    }
    return event;
}

// The names of the loop's own stages, in order.
Lines& Stages()
{
    static Lines s_stages;
    return s_stages;
}

void RecordStages()
{
    util::ScopeProfiler::s_begin = [](const char* name)
    {
        for (const char* stage : {"Events", "FlushCallbackSets", "GC", "Parser::Update",
                                  "Interp::Update", "GUI::Update", "Draw", "Logger::Update"})
            if (std::strcmp(name, stage) == 0)
                Stages().push_back(name);
    };
}

std::string Message(const std::function<void()>& act)
{
    try
    {
        act();
    }
    catch (const std::runtime_error& e)
    {
        return e.what();
    }
    return "nothing thrown";
}
}

TEST_F(SubsystemTest, OffersItsSettingsToScripts)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const struct
        {
            const char *name, *value;
        } cases[] = {
            {"clearColor", "[0, 0, 0, 1]"},
            {"minFPS", "10"},
            {"maxFPS", "60"},
            {"vSync", "false"},
            {"resizable", "true"},
            {"fullscreen", "false"},
            {"resolution", "[1024, 768]"},
            {"antiAlias", "1"},
            {"depth", "32"},
        };
        for (const auto& c : cases)
        {
            SCOPED_TRACE(c.name);
            EXPECT_EQ(c.value, Script(util::String("System.") + c.name));
        }
    });
}

TEST_F(SubsystemTest, TellsTimeAndCountsObjects)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        State().now = 12500;
        EXPECT_EQ("12.5", Script("System.time"));
        const unsigned long before = util::Pointee::GetInstanceCount();
        EXPECT_GE(util::FromString<unsigned long>(Script("System.objectCurrent")), before);
        EXPECT_GE(util::FromString<unsigned long>(Script("System.objectTotal")), before);
        EXPECT_GE(util::FromString<unsigned long>(Script("System.objectHandleCurrent")), before);
    });
}

// Kept on purpose: swap control is not offered.
TEST_F(SubsystemTest, VSyncReadsFalseAfterAnyWrite)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Script("System.vSync = true");
        EXPECT_EQ("false", Script("System.vSync"));
        EXPECT_FALSE(System()->GetVSync());
        Script("System.vSync = {true}");
        EXPECT_EQ("false", Script("System.vSync"));
        System()->SetVSync(true);
        EXPECT_FALSE(System()->GetVSync());
    });
}

TEST_F(SubsystemTest, LogsToFileStandardErrorAndStandardOutputByLevel)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::Create();
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Log(1, "one");
        Log(6, "six");
        Log(8, "eight");
        Log(16, "sixteen");
        EXPECT_EQ("-- Warning: one\n!! ERROR: six\n", testing::internal::GetCapturedStderr());
        EXPECT_EQ("sixteen\n", testing::internal::GetCapturedStdout());
        const std::string file = test::Slurp(dir / "Logfile.txt");
        for (const char* line : {"Init SDL...", "one", "six", "eight", "sixteen"})
            EXPECT_NE(std::string::npos, file.find(line)) << line;
    });
}

TEST_F(SubsystemTest, StandardOutputCanBeLeftOut)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        testing::internal::CaptureStdout();
        Log(16, "sixteen");
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
        EXPECT_NE(std::string::npos, test::Slurp(dir / "Logfile.txt").find("sixteen"));
    });
}

TEST_F(SubsystemTest, AsksForX11UnlessADriverIsNamed)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        unsetenv("SDL_VIDEODRIVER");
        unsetenv("DISPLAY");
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::SetLogToStandardOutput(false);
        const std::string message = Message([] { Subsystem::Create(); });
        EXPECT_EQ(0u, message.find("Couldn't init SDL: ")) << message;
        EXPECT_STREQ("x11", getenv("SDL_VIDEODRIVER"));
    });
}

TEST_F(SubsystemTest, SetsTheAttributesOfTheWindowInOrder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        EXPECT_EQ((Lines{"SDL_GL_BUFFER_SIZE 32", "SDL_GL_RED_SIZE 8", "SDL_GL_GREEN_SIZE 8",
                         "SDL_GL_BLUE_SIZE 8", "SDL_GL_ALPHA_SIZE 8", "SDL_GL_DEPTH_SIZE 24",
                         "SDL_GL_STENCIL_SIZE 8"}),
                  State().attributes);

        State().attributes.clear();
        WindowParams all;
        all.antiAlias = 4;
        System()->CreateWindow(all);
        EXPECT_EQ("SDL_GL_MULTISAMPLEBUFFERS 1", State().attributes.at(7));
        EXPECT_EQ("SDL_GL_MULTISAMPLESAMPLES 4", State().attributes.at(8));
    });
}

TEST_F(SubsystemTest, AnotherDepthThan32SetsNoChannelSizesAndNoStencilIsNotAskedFor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        WindowParams params;
        params.depth = 16;
        params.stencil = 0;
        System()->CreateWindow(params);
        EXPECT_EQ((Lines{"SDL_GL_BUFFER_SIZE 16", "SDL_GL_DEPTH_SIZE 24"}), State().attributes);
    });
}

// Kept on purpose: multisampling is never switched off again.
TEST_F(SubsystemTest, AnAntiAliasOf0Or1LeavesTheMultisampleAttributesAlone)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const int antiAlias : {4, 1, 0, -1})
        {
            State().attributes.clear();
            WindowParams params;
            params.antiAlias = antiAlias;
            System()->CreateWindow(params);
            EXPECT_EQ(antiAlias == 4 ? 9u : 7u, State().attributes.size()) << antiAlias;
        }
    });
}

TEST_F(SubsystemTest, AnAttributeThatCannotBeSetStopsTheWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const struct
        {
            const char *attribute, *message;
        } cases[] = {
            {"SDL_GL_BUFFER_SIZE", "Couldn't set buffer depth"},
            {"SDL_GL_RED_SIZE", "Couldn't set buffer red depth"},
            {"SDL_GL_GREEN_SIZE", "Couldn't set buffer green depth"},
            {"SDL_GL_BLUE_SIZE", "Couldn't set buffer blue depth"},
            {"SDL_GL_ALPHA_SIZE", "Couldn't set buffer alpha depth"},
            {"SDL_GL_DEPTH_SIZE", "Couldn't set z-buffer depth"},
            {"SDL_GL_STENCIL_SIZE", "Couldn't set stencil-buffer depth"},
            {"SDL_GL_MULTISAMPLEBUFFERS", "Couldn't set the AA buffer"},
            {"SDL_GL_MULTISAMPLESAMPLES", "Couldn't set the AA samples"},
        };
        WindowParams params;
        params.antiAlias = 2;
        for (const auto& c : cases)
        {
            State().failingAttribute = c.attribute;
            EXPECT_EQ(c.message, Message([&] { System()->CreateWindow(params); }));
        }
        EXPECT_EQ(Lines(), State().modes);
    });
}

TEST_F(SubsystemTest, HoldsTheSizeOfTheWindowToReasonAndToTheDisplay)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const struct
        {
            int w, h, displayW, displayH;
            const char* size;
        } cases[] = {
            {5000, 20, 0, 0, "4096x20"}, // no display known
            {5000, 20, 3000, 2000, "3000x20"},
            {5000, 20, 5000, 2000, "4096x20"},
            {0, 768, 0, 0, "1x768"},
            {-7, -1, 0, 0, "1x1"},
            {1024, 768, 1000, 700, "1000x700"},
            {1024, 768, 1024, 768, "1024x768"},
        };
        for (const auto& c : cases)
        {
            State().modes.clear();
            State().displayWidth = c.displayW;
            State().displayHeight = c.displayH;
            os::NoteDisplaySize();
            WindowParams params;
            params.size = math::TVector2<int>(c.w, c.h);
            System()->CreateWindow(params);
            EXPECT_EQ(c.size + std::string(" bpp 0 opengl resizable"), State().modes.at(0));
        }
    });
}

TEST_F(SubsystemTest, TurnsTheParametersIntoFlags)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const struct
        {
            bool resizable, frame, fullscreen;
            const char* flags;
        } cases[] = {
            {false, true, false, " opengl"},
            {true, true, false, " opengl resizable"},
            {false, false, false, " opengl noframe"},
            {false, true, true, " opengl fullscreen"},
            {true, false, true, " opengl fullscreen resizable noframe"},
        };
        for (const auto& c : cases)
        {
            State().modes.clear();
            WindowParams params;
            params.resizable = c.resizable;
            params.frame = c.frame;
            params.fullscreen = c.fullscreen;
            System()->CreateWindow(params);
            EXPECT_EQ(std::string("1024x768 bpp 0") + c.flags, State().modes.at(0));
        }
    });
}

TEST_F(SubsystemTest, AModeThatCannotBeHadThrows)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::LogCapture log;
        State().modeFails = true;
        EXPECT_EQ("Couldn't set video mode, SDL-error: no such mode",
                  Message([] { System()->CreateWindow(WindowParams()); }));
        EXPECT_FALSE(log.Has("antiAlias"));

        WindowParams params;
        params.antiAlias = 16;
        EXPECT_EQ("Couldn't set video mode, SDL-error: no such mode",
                  Message([&] { System()->CreateWindow(params); }));
        EXPECT_TRUE(log.Has("!! ERROR: No window with System.antiAlias = 16")) << log.Text();
    });
}

TEST_F(SubsystemTest, OtherBuffersNeedAnotherWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        WindowParams params;
        System()->CreateWindow(params);
        const struct
        {
            int depth, zDepth, stencil, antiAlias;
            bool isOther;
        } cases[] = {
            {32, 24, 8, 1, false}, {32, 24, 8, 4, true},  {32, 24, 8, 1, false},
            {32, 24, 8, 8, true},  {16, 24, 8, 8, true},  {16, 16, 8, 8, true},
            {16, 16, 1, 8, true},  {16, 16, 1, 8, false},
        };
        for (const auto& c : cases)
        {
            SCOPED_TRACE(testing::Message()
                         << c.depth << " " << c.zDepth << " " << c.stencil << " " << c.antiAlias);
            State().modes.clear();
            params.depth = c.depth;
            params.zDepth = c.zDepth;
            params.stencil = c.stencil;
            params.antiAlias = c.antiAlias;
            System()->CreateWindow(params);
            // SDL keeps the window it has unless one without OpenGL comes in between.
            Lines expected = {"1024x768 bpp 0 opengl resizable"};
            if (c.isOther)
                expected.insert(expected.begin(), "1024x768 bpp 0 resizable");
            EXPECT_EQ(expected, State().modes);
        }
    });
}

TEST_F(SubsystemTest, AfterAFailureTheWindowIsMadeAgainAsItWas)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        CountingResource resource;
        State().attributes.clear();
        State().modes.clear();
        State().failingAttribute = "SDL_GL_MULTISAMPLESAMPLES";
        State().attributeFailures = 1;
        test::LogCapture log(7);
        Script("System.resolution = [300, 200]; System.antiAlias = 4; System.recreateWindow");
        EXPECT_TRUE(log.Has("Couldn't set the AA samples")) << log.Text();
        EXPECT_EQ((Lines{"1024x768 bpp 0 resizable", "1024x768 bpp 0 opengl resizable"}),
                  State().modes);
        const Lines& attributes = State().attributes;
        EXPECT_EQ(1,
                  std::count(attributes.begin(), attributes.end(), "SDL_GL_MULTISAMPLEBUFFERS 0"));
        EXPECT_EQ(1,
                  std::count(attributes.begin(), attributes.end(), "SDL_GL_MULTISAMPLESAMPLES 0"));
        EXPECT_EQ("1", Script("System.antiAlias"));
        EXPECT_EQ("[1024, 768]", Script("System.resolution"));
        EXPECT_EQ(1, resource.loads);
    });
}

TEST_F(SubsystemTest, WithoutAnyWindowTheLoopEndsInOrder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        test::LogCapture log(7);
        EachFrame(
            [](int frame)
            {
                State().modeFails = true;
                Script("System.antiAlias = 4; System.recreateWindow");
                if (frame == 3)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_TRUE(log.Has("!! ERROR: No window is left: Couldn't set video mode")) << log.Text();
        EXPECT_EQ(0, State().swaps) << "nothing is drawn without one";
        EXPECT_EQ("1", Script("System.antiAlias")) << "and what failed is not saved";
    });
}

TEST_F(SubsystemTest, AFailingGLEWThrows)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        State().glewResult = 1; // GLEW_ERROR_NO_GL_VERSION
        EXPECT_EQ("GLEW Error: Missing GL version",
                  Message([] { System()->CreateWindow(WindowParams()); }));
    });
}

// Kept on purpose: "You'r".
TEST_F(SubsystemTest, AnAlphaDepthThatCannotBeAskedForThrows)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        State().alphaBits = -1;
        EXPECT_EQ("You'r computer won't let me query the alpha bit depth",
                  Message([] { System()->CreateWindow(WindowParams()); }));
    });
}

TEST_F(SubsystemTest, AWindowWithoutAlphaIsAWarningOnly)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::LogCapture log(logging::LogWarning);
        State().alphaBits = 0;
        System()->CreateWindow(WindowParams());
        EXPECT_EQ(Lines{"-- Warning: Your computer doesn't support alpha framebuffers; water may "
                        "not be rendered correctly."},
                  log.Lines());
        log.Clear();
        State().alphaBits = 8;
        System()->CreateWindow(WindowParams());
        EXPECT_EQ(Lines(), log.Lines());
    });
}

TEST_F(SubsystemTest, ANewWindowIsKnownToEverybody)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        ASSERT_FALSE(rendering::HasGLLoaded());
        rendering::Renderer::GetInstancePtr()->SetColor4(1, 0, 0, 1);
        test::LogCapture log;
        WindowParams params;
        params.size = math::TVector2<int>(640, 480);
        System()->CreateWindow(params);

        EXPECT_TRUE(rendering::HasGLLoaded());
        EXPECT_EQ(640, System()->GetWidth());
        EXPECT_EQ(480, System()->GetHeight());
        EXPECT_EQ(math::Vec2(640, 480), gui::GUI::GetInstancePtr()->GetSize());
        EXPECT_EQ("[640, 480]", Script("System.resolution"));
        EXPECT_EQ(math::Vec4(1, 1, 1, 1), rendering::Renderer::GetInstancePtr()->GetColor4());
        // Which pictures the program has, and misses in this folder, is no matter of the window.
        Lines lines = log.Lines();
        lines.erase(std::remove_if(lines.begin(), lines.end(),
                                   [](const std::string& line)
                                   {
                                       return line.find("image") != std::string::npos ||
                                              line.find(" resources loaded") != std::string::npos;
                                   }),
                    lines.end());
        EXPECT_TRUE(log.Has(" resources loaded"));
        EXPECT_EQ((Lines{"Creating window...", "Destroying GL resources", "Setting up SDL",
                         "Setting video mode", "Init GLEW...", "Setting vsync", "Setting viewport",
                         "Checking for alpha framebuffer", "Loading all resources...",
                         util::String("Reloading ") + typeid(rendering::Texture).name(),
                         util::String("Reloading ") + typeid(rendering::Shader).name(),
                         "Loading the rest...", "Done loading resources.", "Window created."}),
                  lines);
    });
}

TEST_F(SubsystemTest, TheScreenshotCommandComesWithTheFirstWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        {
            test::LogCapture log(7);
            Script("System.screenshot");
            EXPECT_NE(0u, log.Lines().size()) << "there is no such name yet";
        }
        System()->CreateWindow(WindowParams());
        System()->CreateWindow(WindowParams());
        test::LogCapture log(7);
        Script("System.screenshot");
        EXPECT_EQ("", log.Text());
    });
}

TEST_F(SubsystemTest, SettingsComeIntoForceWithRecreateWindowOnly)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        State().modes.clear();
        Script(
            "System.resolution = [300, 200]; System.resizable = false; System.fullscreen = true");
        EXPECT_EQ(1024, System()->GetWidth());
        EXPECT_EQ(Lines(), State().modes);
        Script("System.recreateWindow");
        EXPECT_EQ(300, System()->GetWidth());
        EXPECT_EQ(Lines{"300x200 bpp 0 opengl fullscreen"}, State().modes);
    });
}

TEST_F(SubsystemTest, RecreateWindowWithUnchangedValuesRebuildsAllGLResources)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        CountingResource resource;
        System()->CreateWindow(WindowParams());
        EXPECT_EQ(1, resource.loads);
        Script("System.recreateWindow");
        EXPECT_EQ(2, resource.loads);
        EXPECT_EQ(2, resource.unloads);
    });
}

TEST_F(SubsystemTest, AResizeMakesTheWindowAnewAndShowsInTheSetting)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        Script("System.resolution = [300, 200]");
        const input::InputEvent event(Event(SDL_VIDEORESIZE, 500, 400));
        System()->OnOtherEvent(event);
        EXPECT_TRUE(event.IsHandled());
        EXPECT_EQ(500, System()->GetWidth());
        EXPECT_EQ("[500, 400]", Script("System.resolution"));
        EXPECT_EQ(2u, State().modes.size());
    });
}

TEST_F(SubsystemTest, AResizeToTheSizeInForceIsHandledWithoutANewWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        const input::InputEvent event(Event(SDL_VIDEORESIZE, 1024, 768));
        System()->OnOtherEvent(event);
        EXPECT_TRUE(event.IsHandled());
        EXPECT_EQ(1u, State().modes.size());
    });
}

TEST_F(SubsystemTest, LeavesOtherEventsAlone)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const input::InputEvent expose(Event(SDL_VIDEOEXPOSE));
        System()->OnOtherEvent(expose);
        EXPECT_FALSE(expose.IsHandled());
        const input::InputEvent quit(Event(SDL_QUIT));
        System()->OnOtherEvent(quit);
        EXPECT_TRUE(quit.IsHandled());
    });
}

TEST_F(SubsystemTest, AFrameGoesThroughItsStagesInOrder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        EachFrame(
            [](int frame)
            {
                if (frame == 2)
                    System()->Exit();
            });
        RecordStages();
        System()->Run();
        EXPECT_EQ((Lines{"Events", "GC", "Parser::Update", "Interp::Update", "GUI::Update", "Draw",
                         "Logger::Update", "Events", "GC", "Parser::Update", "Interp::Update",
                         "GUI::Update"}),
                  Stages())
            << "no frame is drawn after the GUI asked for the exit";
        EXPECT_EQ(1, State().swaps);
    });
}

TEST_F(SubsystemTest, CallbackSetsAreFlushedInEveryEleventhFrame)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        std::vector<int> flushed;
        EachFrame(
            [&](int frame)
            {
                for (const std::string& stage : Stages())
                    if (stage == "FlushCallbackSets")
                        flushed.push_back(frame);
                Stages().clear();
                if (frame == 40)
                    System()->Exit();
            });
        RecordStages();
        System()->Run();
        EXPECT_EQ((std::vector<int>{11, 22, 33}), flushed);
    });
}

TEST_F(SubsystemTest, AQuitAmongTheEventsSkipsAllLaterStages)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        EachFrame(
            [](int frame)
            {
                SDL_Event quit = Event(SDL_QUIT);
                if (frame == 1)
                    SDL_PushEvent(&quit);
            });
        RecordStages();
        System()->Run();
        EXPECT_EQ("Events", Stages().back());
        EXPECT_EQ(8u, Stages().size());
    });
}

TEST_F(SubsystemTest, AScriptThatExitsInParserUpdateSkipsTheDrawingOnly)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        static bool s_isArmed = false; // binding a formula runs it, too
        System()->AddVoidCmd("stopTest",
                             []
                             {
                                 if (s_isArmed)
                                     System()->Exit();
                             });
        Script("System.minFPS = {System.stopTest; 10.0}");
        s_isArmed = true;
        RecordStages();
        System()->Run();
        EXPECT_EQ("GUI::Update", Stages().back()) << "the GUI is updated, but no frame is drawn";
        EXPECT_EQ(0, State().swaps);
    });
}

TEST_F(SubsystemTest, UnloadsAllResourcesAtTheEndOfTheLoop)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        CountingResource resource;
        System()->Exit();
        System()->Run();
        EXPECT_EQ(1, resource.unloads);
    });
}

TEST_F(SubsystemTest, TheFramesAddUpToTheTimeThatPassed)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        unsigned start = 0;
        unsigned end = 0;
        const FramePtr frames = EachFrame(
            [&](int frame)
            {
                if (frame == 1)
                    start = State().now;
                State().now += 7;
                if (frame == 30)
                {
                    end = State().now - 7;
                    System()->Exit();
                }
            });
        System()->Run();
        float sum = 0;
        for (size_t i = 1; i < frames->dts.size(); ++i)
            sum += frames->dts[i];
        EXPECT_NEAR((end - start) / 1000.0, sum, 1e-4);
    });
}

// Kept on purpose: the sleep comes from the frame before, its own sleep included.
TEST_F(SubsystemTest, TheLimiterSleepsByTheFrameBeforeSleepIncluded)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Script("System.maxFPS = 50.0");
        EachFrame(
            [](int frame)
            {
                if (frame == 1)
                    State().delays.clear();
                State().now += 5;
                if (frame == 6)
                    System()->Exit();
            });
        System()->Run();
        // 20 ms are due and each frame works for 5. The first counts the 2 of the preparation and
        // sleeps 18. The second counts 18 + 5 and does not sleep, the third counts 5 and sleeps 15,
        // the fourth counts 20 and does not sleep, the fifth is like the third.
        EXPECT_EQ((std::vector<unsigned>{18, 15, 15}), State().delays);
    });
}

TEST(FrameSleep, IsTheNearestWholeMillisecondOfWhatTheFrameFellShort)
{
    const struct
    {
        float dt, maxFPS;
        unsigned expected;
    } cases[] = {
        {0.0f, 60, 17},     // 16.67
        {0.010f, 60, 7},    // 6.67
        {0.0163f, 60, 0},   // 0.37
        {0.0161f, 60, 1},   // 0.57
        {1.0f / 60, 60, 0}, // just long enough
        {0.5f, 60, 0},      // far too long
        {0.25f, 1, 750},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.dt << " s at " << c.maxFPS);
        EXPECT_EQ(c.expected, core::CalcFrameSleep(c.dt, c.maxFPS));
    }
}

TEST_F(SubsystemTest, AMaxFPSBelowOneIsRaisedToOneByTheLoop)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lines seen;
        EachFrame(
            [&](int frame)
            {
                seen.push_back(Script("System.maxFPS"));
                if (frame == 1)
                    Script("System.maxFPS = 0.0");
                if (frame == 2)
                    Script("System.maxFPS = 0.5");
                if (frame == 3)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_EQ((Lines{"60", "1", "1"}), seen);
    });
}

TEST_F(SubsystemTest, MeasuresItsRateFromTheFirstFrames)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        double early = 0;
        EXPECT_EQ(0, System()->GetFPS());
        EachFrame(
            [&](int frame)
            {
                if (frame == 5)
                    early = System()->GetFPS();
                State().now += 50;
                if (frame == 60)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_GT(early, 0);
        EXPECT_NEAR(20, System()->GetFPS(), 1);
    });
}

// Kept on purpose: the two are measured for the log alone.
TEST_F(SubsystemTest, LogsThePrecisionOfSleepAndTimer)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::LogCapture log(logging::LogInfo);
        System()->Exit();
        System()->Run();
        EXPECT_TRUE(log.Has("sleep precision=1ms, timer precision: 1ms")) << log.Text();
        EXPECT_TRUE(log.Has("Entering game loop"));
    });
}

TEST_F(SubsystemTest, MinFPSGivesTheSimulationItsBudgetInEveryFrame)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        std::vector<float> budgets;
        EachFrame(
            [&](int frame)
            {
                budgets.push_back(physics::Simulation::GetInstancePtr()->GetFrameBudget());
                Script("System.minFPS = 4.0");
                if (frame == 2)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_EQ((std::vector<float>{0.1f, 0.25f}), budgets);
    });
}

TEST_F(SubsystemTest, AnExceptionOutOfAStageIsLoggedOnItsWayAndEndsTheLoop)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::LogCapture log(logging::LogInfo);
        EachFrame([](int) { QUIB_THROW(std::runtime_error("broken")); });
        EXPECT_EQ("broken", Message([] { System()->Run(); }));
        EXPECT_TRUE(log.Has("Exception passed on at ")) << log.Text();
        EXPECT_TRUE(log.Has("void core::Subsystem::Run()")) << log.Text();
    });
}

TEST_F(SubsystemTest, TakesTheScreenshotAtTheEndOfTheNextDraw)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        std::vector<bool> exists;
        EachFrame(
            [&](int frame)
            {
                exists.push_back(boost::filesystem::exists(dir / "screenshots"));
                if (frame == 2)
                    Script("System.screenshot; System.screenshot");
                if (frame == 4)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_EQ((std::vector<bool>{false, false, true, true}), exists);
        const auto files =
            util::FileSystem::GetInstancePtr()->FilesInDir(dir / "screenshots", "quib_*_0000.tga");
        EXPECT_EQ(1u, files.size());
        EXPECT_EQ(1u,
                  util::FileSystem::GetInstancePtr()->FilesInDir(dir / "screenshots", "*").size())
            << "one frame, one picture";
    });
}

// A scene filled the disk, with hundreds of pictures of one frame or with one of each.
TEST_F(SubsystemTest, AScriptThatTakesScreenshotsWithoutEndIsStopped)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        test::LogCapture log(logging::LogWarning);
        EachFrame(
            [&](int frame)
            {
                if (frame == 1)
                    Script("System.minFPS = { System.screenshot; 20.0 }");
                if (frame == 5)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_TRUE(log.Has("minFPS was bound to bad type")) << log.Text();
        EXPECT_FALSE(boost::filesystem::exists(dir / "screenshots"));

        std::string text = "d0 = { System.screenshot };";
        for (int i = 1; i <= 8; ++i)
        {
            const std::string before = "d" + util::ToString(i - 1);
            text += "d" + util::ToString(i) + " = { " + before + "; " + before + " };";
        }
        Script(text + "d8");
        EXPECT_TRUE(log.Has("Failed to evaluate: d8, Script runs too long")) << log.Text();
    });
}

TEST_F(SubsystemTest, AFailingScreenshotIsLoggedAndTheProgramGoesOn)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        test::Spit(dir / "screenshots", "in the way");
        test::LogCapture log(7);
        EachFrame(
            [&](int frame)
            {
                if (frame == 1)
                    Script("System.screenshot");
                if (frame == 3)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_TRUE(log.Has("!! ERROR: The screenshot failed: ")) << log.Text();
        EXPECT_EQ(2, State().swaps);
    });
}

TEST_F(SubsystemTest, SigtermSigintAndSighupEndTheLoopInOrder)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        EXPECT_FINE_IN_FRESH_PROCESS({
            Start();
            std::signal(SIGHUP, SIG_DFL); // whatever these tests were started under
            Subsystem::HandleSignals();
            CountingResource resource;
            EachFrame([&](int) { raise(signal); });
            System()->Run();
            EXPECT_EQ(1, resource.unloads);
        });
}

TEST_F(SubsystemTest, AClosedTerminalDoesNotEndWhatWasStartedUnderNohup)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        std::signal(SIGHUP, SIG_IGN);
        Subsystem::HandleSignals();
        int frames = 0;
        EachFrame(
            [&](int frame)
            {
                frames = frame;
                raise(SIGHUP);
                if (frame == 3)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_EQ(3, frames);
    });
}

TEST_F(SubsystemTest, AReaderOfStandardOutputThatHasGoneEndsNothing)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Subsystem::HandleSignals();
        int ends[2];
        ASSERT_EQ(0, pipe(ends));
        close(ends[0]);
        EXPECT_EQ(-1, write(ends[1], "x", 1));
        EXPECT_EQ(EPIPE, errno);
    });
}

TEST_F(SubsystemTest, TakesItsIconFromTheWorkDirectory)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        SDL_Surface* picture = SDL_CreateRGBSurface(SDL_SWSURFACE, 16, 8, 24, 0, 0, 0, 0);
        ASSERT_EQ(0, SDL_SaveBMP(picture, (dir / "Quib.bmp").c_str()));
        Start();
        EXPECT_EQ(Lines{"16x8"}, State().icons);
    });
}

TEST_F(SubsystemTest, WithoutAnIconSDLKeepsItsOwn)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        test::LogCapture log(7);
        Start();
        EXPECT_EQ(Lines(), State().icons);
        EXPECT_EQ("", log.Text());
    });
}

TEST_F(SubsystemTest, AnIconThatIsNoneIsNamedAndSDLKeepsItsOwn)
{
    const std::string path = dir / "Quib.bmp";
    const std::function<void()> makers[] = {
        [&] { test::Spit(path, ""); },
        [&] { test::Spit(path, "BM but no picture"); },
        [&] { test::Spit(path, test::Slurp(QUIB_SOURCE_DIR "/Quib.bmp").substr(0, 1000)); },
        [&] { test::Spit(path, test::Slurp(QUIB_SOURCE_DIR "/Quib.bmp").replace(28, 1, "\7")); },
        [&] { // without pixels
            test::Spit(path, test::Slurp(QUIB_SOURCE_DIR "/Quib.bmp").replace(18, 4, 4, '\0'));
        },
        [&] { boost::filesystem::create_directory(path); },
        [&] { boost::filesystem::create_symlink(path, path); },
        [&] { EXPECT_EQ(0, ::mkfifo(path.c_str(), 0600)); }, // which would be waited for
    };
    for (const auto& make : makers)
    {
        make();
        EXPECT_FINE_IN_FRESH_PROCESS({
            test::LogCapture log(7);
            Start();
            EXPECT_EQ(Lines(), State().icons);
            ASSERT_EQ(1u, log.Lines().size()) << log.Text();
            EXPECT_EQ(0u, log.Text().find("-- Warning: Failed to load the icon \"" + path + "\": "))
                << log.Text();
        });
        boost::filesystem::remove_all(path);
    }
}

TEST_F(SubsystemTest, ASecondSigtermKillsWhatDoesNotReact)
{
    EXPECT_EQ(-1, RunInFreshProcess(
                      [&]
                      {
                          Start();
                          Subsystem::HandleSignals();
                          raise(SIGTERM);
                          raise(SIGTERM);
                      }));
}

TEST_F(SubsystemTest, Sigusr1TakesAScreenshotEachTime)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->CreateWindow(WindowParams());
        Subsystem::HandleSignals();
        EachFrame(
            [&](int frame)
            {
                if (frame <= 2)
                    raise(SIGUSR1);
                if (frame == 5)
                    System()->Exit();
            });
        System()->Run();
        EXPECT_EQ(2u,
                  util::FileSystem::GetInstancePtr()->FilesInDir(dir / "screenshots", "*").size());
    });
}

TEST_F(SubsystemTest, RendererAndInputGoBeforeTheGUIAndTheFilesAfterIt)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        rendering::Renderer::GetInstancePtr();
        rendering::TextureManager::GetInstancePtr();
        class LastWitness : public gui::Component
        {
        public:
            explicit LastWitness(Lines& seen)
                : m_seen(seen)
            {
            }
            ~LastWitness() override
            {
                m_seen = {rendering::Renderer::Exists() ? "Renderer" : "no Renderer",
                          input::Input::Exists() ? "Input" : "no Input",
                          rendering::TextureManager::Exists() ? "textures" : "no textures",
                          util::FileSystem::Exists() ? "FileSystem" : "no FileSystem",
                          SDL_WasInit(SDL_INIT_VIDEO) ? "SDL" : "no SDL"};
            }

        private:
            Lines& m_seen;
        };
        Lines seen;
        gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(QUIB_NEW LastWitness(seen));
        script::Parser::Destroy();
        Subsystem::Destroy();
        EXPECT_EQ((Lines{"no Renderer", "no Input", "textures", "FileSystem", "SDL"}), seen);
    });
}

TEST_F(SubsystemTest, TakesItsOwnServicesAlongAndLeavesTheOthers)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        core::ResourceManager::GetInstancePtr();
        physics::Simulation::GetInstancePtr();
        rendering::Renderer::GetInstancePtr();
        script::Parser::Destroy();
        Subsystem::Destroy();
        EXPECT_FALSE(rendering::Renderer::Exists());
        EXPECT_FALSE(input::Input::Exists());
        EXPECT_FALSE(gui::GUI::Exists());
        EXPECT_FALSE(rendering::TextureManager::Exists());
        EXPECT_FALSE(util::FileSystem::Exists());
        EXPECT_FALSE(script::Parser::Exists());
        EXPECT_EQ(0u, SDL_WasInit(SDL_INIT_VIDEO));
        // Deliberately never torn down.
        EXPECT_TRUE(core::ResourceManager::Exists());
        EXPECT_TRUE(physics::Simulation::Exists());
    });
}
