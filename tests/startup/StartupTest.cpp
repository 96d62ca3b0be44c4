#include "app/Startup.h"

#include "FreshProcess.h"
#include "KeyEvents.h"
#include "TestSupport.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "app/tools/Tools.h"
#include "core/RecordedSDL.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <SDL_keysym.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <unistd.h>

namespace fs = boost::filesystem;

namespace
{
using Lines = std::vector<std::string>;

const char* const PlaneScene = "Scene.addPlane { normal = [0.0, 1.0]; dist = 0.0 };\n";
const char* const Broken = "{{{ this is no script";

// Each stands behind the one before it.
void ExpectInOrder(const std::string& text, const Lines& parts)
{
    size_t at = 0;
    for (const std::string& part : parts)
    {
        const size_t found = text.find(part, at);
        if (found == std::string::npos)
        {
            ADD_FAILURE() << "\"" << part << "\" is missing or out of order in:\n" << text;
            return;
        }
        at = found + part.size();
    }
}

// A run of the whole program, from SDL_main to its last _exit, in a process and a work directory of its
// own. It ends in order when it has shown a frame.
class WholeProgramTest : public testing::Test
{
protected:
    WholeProgramTest()
    {
        fs::create_directory(dir / "data");
        fs::create_directory(dir / "scenes");
    }

    void Write(const std::string& name, const std::string& text) { test::Spit(dir / name, text); }
    std::string Read(const std::string& name) { return test::Slurp(dir / name); }
    bool Has(const std::string& name) { return fs::exists(fs::symlink_status(dir / name)); }
    /// For what is seen in the midst of the run.
    static void Note(const std::string& line)
    {
        std::ofstream("notes", std::ios::app) << line << "\n";
    }

    /// @param prepare  called in the new process
    /// @return         the exit code; -1 when it died or hung
    int Run(
        const std::function<void()>& prepare = [] {}, Lines arguments = {"quib"})
    {
        for (const char* name : {"out", "err", "notes", "Logfile.txt"})
            fs::remove(dir / name);
        const int exitCode = RunInFreshProcess(
            [&]
            {
                alarm(60); // what waits for ever dies
                fs::current_path(dir.Path());
                setenv("SDL_VIDEODRIVER", "dummy", 1);
                std::freopen("out", "w", stdout);
                std::freopen("err", "w", stderr);
                recorded::State().onSwap = [] { core::Subsystem::GetInstancePtr()->Exit(); };
                std::vector<char*> argv;
                for (std::string& argument : arguments)
                    argv.push_back(&argument[0]);
                argv.push_back(nullptr);
                prepare();
                SDL_main(static_cast<int>(arguments.size()), argv.data());
            });
        out = Read("out");
        err = Read("err");
        log = Read("Logfile.txt");
        return exitCode;
    }
    bool IsLoaded(const std::string& scene)
    {
        return out.find("Loaded scene " + scene) != std::string::npos;
    }

    test::TempDir dir;
    std::string out, err, log; // of the last run
};

// In a program of its own: the tests of app have the services running when these start them.
class StartupTest : public testing::Test
{
protected:
    // To be called in a fresh process.
    void Start()
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        core::Subsystem::SetLogToStandardOutput(false);
        app::CreateServices();
    }

    test::TempDir dir;
};

util::String ScenePath(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "quib");
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(&argument[0]);
    return app::ScenePathFromArguments(static_cast<int>(argv.size()), argv.data());
}

bool ChooseDebug(const util::String&, const util::String&)
{
    return false;
}
bool ChooseCancel(const util::String&, const util::String&)
{
    return true;
}
}

TEST_F(StartupTest, ShowsTheServicesToScripts)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        script::Parser* parser = script::Parser::GetInstancePtr();
        for (const char* name :
             {"System", "Resources", "Sim", "SPH", "GUI", "App", "Scene", "FileInfo", "Keys"})
            EXPECT_EQ(name, parser->ExecuteToString(name));
        EXPECT_TRUE(app::Serializer::Exists());
    });
}

TEST_F(StartupTest, TheApplicationFillsTheMainContainerOfTheGUI)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        gui::GUI* gui = gui::GUI::GetInstancePtr();
        app::App* application = app::App::GetInstancePtr();
        EXPECT_EQ(gui->GetMainContainer().get(), application->GetOwnerComponent());
        gui->OnNewWindowSize(320, 200);
        EXPECT_EQ(math::Vec2(320, 200), application->GetInnerSize());
    });
}

TEST_F(StartupTest, NeedsNoWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        gui::GUI::GetInstancePtr()->Update(0.01f);
        script::Parser::GetInstancePtr()->Update();
    });
}

TEST_F(StartupTest, TheLogOfACleanStartHoldsNeitherWarningNorError)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        app::PrepareSceneDir();
        const std::string log = test::Slurp(dir / "Logfile.txt");
        EXPECT_EQ(std::string::npos, log.find("-- Warning")) << log;
        EXPECT_EQ(std::string::npos, log.find("!! ERROR")) << log;
    });
}

TEST_F(StartupTest, MakesTheSceneFolders)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        app::PrepareSceneDir();
        EXPECT_TRUE(boost::filesystem::is_directory(dir / "scenes/quiblets"));
        app::PrepareSceneDir();
    });
}

TEST_F(StartupTest, SceneFoldersThatCannotBeMadeAreAWarning)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        test::Spit(dir / "scenes", "a file in the way");
        test::LogCapture log(logging::LogWarning);
        app::PrepareSceneDir();
        EXPECT_TRUE(log.Has("Failed to make the folder " + (dir / "scenes/quiblets/")))
            << log.Text();
    });
}

TEST_F(StartupTest, TakesTheSceneFromTheCommandLine)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        test::InDirectory in(dir.Path());
        util::FileSystem::GetInstancePtr()->SetWorkDir("");
        test::Spit("here.qib", "");
        test::Spit("two words.qib", "");
        EXPECT_EQ("", ScenePath({}));
        EXPECT_EQ("", ScenePath({"here.qib", "x"}));
        EXPECT_EQ("", ScenePath({"qib"}));
        EXPECT_EQ("./here.qib", ScenePath({"here.qib"}));
        EXPECT_EQ("elsewhere.qib", ScenePath({"elsewhere.qib"}));
        EXPECT_EQ("elsewhere.QiB", ScenePath({"elsewhere.QiB"}));
        EXPECT_EQ("/tmp/here.qib", ScenePath({"/tmp/here.qib"}));
        EXPECT_EQ("a/here.qib", ScenePath({"a/here.qib"}));
        // Deliberate: all arguments are one path.
        EXPECT_EQ("./two words.qib", ScenePath({"two", "words.qib"}));
        EXPECT_EQ("-x here.qib", ScenePath({"-x", "here.qib"}));
        EXPECT_EQ("my folder/a b.qib", ScenePath({"my", "folder/a", "b.qib"}));
    });
}

// Kept on purpose, both: "Debug" is the one that ends in silence, "Cancel" the one that throws on.
TEST_F(StartupTest, DebugEndsWithExitCode1)
{
    EXPECT_EQ(1, RunInFreshProcess(
                     []
                     {
                         try
                         {
                             QUIB_THROW(std::runtime_error("broken"));
                         }
                         catch (std::exception& e)
                         {
                             app::EndAfterFailure("Exception caught", e.what(), ChooseDebug);
                         }
                     }));
}

TEST_F(StartupTest, CancelThrowsOnWhatWasCaught)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        const std::logic_error* thrown = nullptr;
        try
        {
            try
            {
                throw std::logic_error("broken");
            }
            catch (std::exception& e)
            {
                thrown = static_cast<std::logic_error*>(&e);
                app::EndAfterFailure("Exception caught", e.what(), ChooseCancel);
            }
            FAIL() << "nothing thrown";
        }
        catch (std::logic_error& e)
        {
            EXPECT_EQ(thrown, &e);
        }
    });
}

TEST_F(StartupTest, TheServicesComeIntoBeingInOrder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const std::pair<const char*, unsigned> services[] = {
            {"FileSystem", util::FileSystem::GetInstancePtr()->GetPointeeID()},
            {"Subsystem", core::Subsystem::GetInstancePtr()->GetPointeeID()},
            {"Logger", logging::Logger::GetInstancePtr()->GetPointeeID()},
            {"Input", input::Input::GetInstancePtr()->GetPointeeID()},
            {"Parser", script::Parser::GetInstancePtr()->GetPointeeID()},
            {"ResourceManager", core::ResourceManager::GetInstancePtr()->GetPointeeID()},
            {"Simulation", physics::Simulation::GetInstancePtr()->GetPointeeID()},
            {"SPH", physics::SPH::GetInstancePtr()->GetPointeeID()},
            {"GUI", gui::GUI::GetInstancePtr()->GetPointeeID()},
            {"App", app::App::GetInstancePtr()->GetPointeeID()},
            {"Scene", app::Scene::GetInstancePtr()->GetPointeeID()},
            {"Tools", app::Tools::GetInstancePtr()->GetPointeeID()},
            {"Undoer", app::Undoer::GetInstancePtr()->GetPointeeID()},
            {"Serializer", app::Serializer::GetInstancePtr()->GetPointeeID()},
        };
        for (size_t i = 1; i < std::size(services); ++i)
            EXPECT_LT(services[i - 1].second, services[i].second)
                << services[i - 1].first << ", " << services[i].first;
    });
}

TEST_F(WholeProgramTest, StartsInOrder)
{
    Write("scenes/old.cfg", "");
    Write("autoexec.cfg", "");
    Write("config.cfg", "");
    Write("scenes/welcome.qib", PlaneScene);
    EXPECT_EQ(0, Run()) << err;
    ExpectInOrder(log, {"Init SDL...", "Renaming old .cfg files to .qib...", "Application created",
                        "Parsing autoexec.cfg...", "Parsing config.cfg...", "Creating window...",
                        "Window created.", "Loaded scene scenes/welcome.qib", "Running program...",
                        "sleep precision=", "Entering game loop",
                        "Subsystem::Run returned, saving config..."});
}

TEST_F(WholeProgramTest, RecoversInsteadOfReadingTheSettingsOfAnEarlierEnd)
{
    Write("config.cfg", "App.DPI = 90.0");
    Write("config.autosave.cfg", "App.lineWidth = 7.0");
    EXPECT_EQ(0, Run()) << err;
    ExpectInOrder(log,
                  {"Parsing autoexec.cfg...", "Recovering config.autosave.cfg from previous crash",
                   "Parsing config.autosave.cfg...", "Creating window..."});
    EXPECT_EQ(std::string::npos, log.find("Parsing config.cfg..."));
    EXPECT_NE(std::string::npos, Read("config.cfg").find("App.lineWidth = 7.0"));
    EXPECT_EQ(std::string::npos, Read("config.cfg").find("App.DPI = 90"));
}

// With something in the way of a file its step leaves a line.
TEST_F(WholeProgramTest, EndsInOrder)
{
    EXPECT_EQ(0, Run(
                     []
                     {
                         recorded::State().onSwap = []
                         {
                             for (const char* name :
                                  {"config.autosave.cfg", "scenes/_AUTOSAVE.qib"})
                                 fs::create_directories(fs::path(name) / "in the way");
                             core::Subsystem::GetInstancePtr()->Exit();
                         };
                         recorded::State().onQuit = [] { Log(logging::LogInfo, "SDL_Quit"); };
                     }));
    ExpectInOrder(log, {"Destroying GL resources", "Subsystem::Run returned, saving config...",
                        "Failed to erase \"config.autosave.cfg\": ",
                        "Failed to erase \"scenes/_AUTOSAVE.qib\": ", "Destroying subsystem",
                        "SDL_Quit", "Returning 0 from main\n"});
    EXPECT_EQ("Returning 0 from main\n", log.substr(log.size() - 22)) << "nothing comes after it";
}

TEST_F(WholeProgramTest, WhatCanNotBeSavedCostsNoAutosave)
{
    EXPECT_EQ(0, Run(
                     []
                     {
                         recorded::State().onSwap = []
                         {
                             for (const char* name : {"config.cfg", "scenes/_ONEXITSAVE.qib"})
                                 fs::create_directories(fs::path(name) / "in the way");
                             for (const char* name :
                                  {"config.autosave.cfg", "scenes/_AUTOSAVE.qib"})
                                 test::Spit(name, "");
                             core::Subsystem::GetInstancePtr()->Exit();
                         };
                     }));
    ExpectInOrder(log, {"Subsystem::Run returned, saving config...",
                        "Failed saving config file: Failed to write file \"config.cfg\"",
                        "Failed to write file \"scenes/_ONEXITSAVE.qib\"",
                        "Failed to save scene to scenes/_ONEXITSAVE.qib", "Destroying subsystem"});
    EXPECT_TRUE(Has("config.autosave.cfg"));
    EXPECT_TRUE(Has("scenes/_AUTOSAVE.qib"));
}

// Kept on purpose: what has no Destroy outlives even SDL.
TEST_F(WholeProgramTest, TakesDownWhatIsToBeTakenDownAndNothingElse)
{
    EXPECT_EQ(0, Run(
                     []
                     {
                         recorded::State().onQuit = []
                         {
                             Note(rendering::Renderer::Exists() || input::Input::Exists() ||
                                          gui::GUI::Exists() || util::FileSystem::Exists() ||
                                          script::Parser::Exists()
                                      ? "some are left"
                                      : "all gone");
                             Note(app::App::Exists() && app::Scene::Exists() &&
                                          app::Serializer::Exists() && app::FileInfo::Exists() &&
                                          physics::Simulation::Exists() && physics::SPH::Exists() &&
                                          core::ResourceManager::Exists()
                                      ? "all there"
                                      : "some are missing");
                         };
                     }));
    EXPECT_EQ("all gone\nall there\n", Read("notes"));
}

TEST_F(WholeProgramTest, TheApplicationKnowsAFirstRun)
{
    const struct
    {
        const char *file, *expected;
    } cases[] = {
        {"autoexec.cfg", "first\n"},
        {"config.cfg", "not the first\n"},
        {"config.autosave.cfg", "not the first\n"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.file);
        for (const auto& other : cases)
            fs::remove(dir / other.file);
        Write(c.file, "App.DPI = 90.0");
        EXPECT_EQ(0, Run(
                         []
                         {
                             recorded::State().onMode = [] {
                                 Note(app::App::GetInstancePtr()->GetAppGUI()->WantsDefaults()
                                          ? "first"
                                          : "not the first");
                             };
                         }));
        EXPECT_EQ(c.expected, Read("notes"));
    }
}

TEST_F(WholeProgramTest, AnOpenGLThatDoesNotTellItsExtensionsIsNoFailure)
{
    // There is none behind the tape, and so there is no text.
    EXPECT_EQ(0, Run()) << err;
    EXPECT_EQ(std::string::npos, log.find("Available OpenGL extensions"));
}

TEST_F(WholeProgramTest, AnExceptionEndsItWithItsTextAndWithoutSDL)
{
    EXPECT_EQ(1, Run(
                     []
                     {
                         recorded::State().modeFails = true;
                         recorded::State().onQuit = [] { Note("SDL_Quit"); };
                     }));
    ExpectInOrder(err,
                  {"!! ERROR: Exception caught in main: Couldn't set video mode, SDL-error: no "
                   "such mode\n",
                   "Exception caught: Couldn't set video mode, SDL-error: no such mode\n"});
    EXPECT_EQ("SDL_Quit\n", Read("notes")) << "a full-screen mode must not outlive it";
    EXPECT_FALSE(Has("config.cfg")) << "nothing else is cleaned up";
}

TEST_F(WholeProgramTest, WhatIsNoExceptionAtAllEndsItToo)
{
    EXPECT_EQ(1, Run(
                     []
                     {
                         recorded::State().onMode = [] { throw 42; };
                         recorded::State().onQuit = [] { Note("SDL_Quit"); };
                     }));
    ExpectInOrder(err, {"!! ERROR: Unknown exception caught in main.\n",
                        "Unknown exception caught: Badness\n"});
    ExpectInOrder(log, {": int SDL_main(int, char**)", "Unknown exception caught in main."});
    EXPECT_EQ("SDL_Quit\n", Read("notes"));
    EXPECT_FALSE(Has("config.cfg"));
}

TEST_F(WholeProgramTest, NeedsNoNameOfItsOwn)
{
    EXPECT_EQ(0, Run([] {}, {})) << err;
}

TEST_F(WholeProgramTest, WhatAKilledAutosaveHasLeftGoesAtAnOrderlyEnd)
{
    Write("config.autosave.cfg.tmp", "half");
    Write("scenes/_AUTOSAVE.qib.tmp", "half");
    EXPECT_EQ(0, Run()) << err;
    EXPECT_FALSE(Has("config.autosave.cfg.tmp"));
    EXPECT_FALSE(Has("scenes/_AUTOSAVE.qib.tmp"));
}

TEST_F(WholeProgramTest, ASceneThatCannotBeRecoveredIsPutAsideAndTheOneBeforeItIsLoaded)
{
    Write("scenes/_AUTOSAVE.qib", Broken);
    Write("scenes/_AUTOSAVE.qib.broken", "an earlier one");
    Write("scenes/_ONEXITSAVE.qib", PlaneScene);
    Write("scenes/welcome.qib", "");
    EXPECT_EQ(0, Run()) << err;
    EXPECT_TRUE(IsLoaded("scenes/_ONEXITSAVE.qib")) << out;
    EXPECT_NE(std::string::npos,
              err.find("-- Warning: \"scenes/_AUTOSAVE.qib\" can't be used and becomes "
                       "\"scenes/_AUTOSAVE.qib.broken2\"\n"))
        << err;
    EXPECT_EQ(Broken, Read("scenes/_AUTOSAVE.qib.broken2"));
    EXPECT_EQ("an earlier one", Read("scenes/_AUTOSAVE.qib.broken"));
    EXPECT_NE(std::string::npos, Read("scenes/_ONEXITSAVE.qib").find("addPlane"))
        << "not an empty world";
}

TEST_F(WholeProgramTest, AnExitSceneThatCannotBeLoadedIsNotSavedOver)
{
    Write("scenes/_ONEXITSAVE.qib", Broken);
    Write("scenes/welcome.qib", PlaneScene);
    EXPECT_EQ(0, Run()) << err;
    EXPECT_TRUE(IsLoaded("scenes/welcome.qib")) << out;
    EXPECT_EQ(Broken, Read("scenes/_ONEXITSAVE.qib.broken"));
    Write("scenes/welcome.qib", Broken);
    fs::remove(dir / "scenes/_ONEXITSAVE.qib");
    EXPECT_EQ(0, Run()) << err;
    EXPECT_EQ(Broken, Read("scenes/welcome.qib")) << "this one nobody writes over";
}

TEST_F(WholeProgramTest, SettingsThatCannotBeRecoveredArePutAsideAndTheOnesBeforeThemAreRead)
{
    Write("config.autosave.cfg", Broken);
    Write("config.cfg", "App.DPI = 90.0");
    EXPECT_EQ(0, Run()) << err;
    EXPECT_EQ(Broken, Read("config.autosave.cfg.broken"));
    EXPECT_NE(std::string::npos, err.find("becomes \"config.autosave.cfg.broken\"")) << err;
    EXPECT_NE(std::string::npos, Read("config.cfg").find("App.DPI = 90.0"));
}

TEST_F(WholeProgramTest, SettingsThatCannotBeReadArePutAsideBeforeOthersAreWritten)
{
    Write("config.cfg", Broken);
    EXPECT_EQ(0, Run()) << err;
    EXPECT_EQ(Broken, Read("config.cfg.broken"));
    EXPECT_NE(std::string::npos, err.find("\"config.cfg\" can't be used")) << err;
    EXPECT_NE(std::string::npos, Read("config.cfg").find("App.DPI"));
}

// A pipe that nobody writes to, and a device without an end, would be waited for for ever.
TEST_F(WholeProgramTest, PipesDevicesFoldersAndLinksToThemselvesAreNoFiles)
{
    const std::pair<const char*, std::function<void(const char*)>> kinds[] = {
        {"pipe", [](const char* path) { ASSERT_EQ(0, mkfifo(path, 0666)); }},
        {"device", [](const char* path) { ASSERT_EQ(0, symlink("/dev/zero", path)); }},
        {"folder", [](const char* path) { fs::create_directories(fs::path(path) / "x"); }},
        {"loop",
         [](const char* path) { ASSERT_EQ(0, symlink(fs::path(path).filename().c_str(), path)); }},
    };
    for (const auto& kind : kinds)
        for (const char* name :
             {"autoexec.cfg", "config.cfg", "config.autosave.cfg", "scenes/_AUTOSAVE.qib",
              "scenes/_ONEXITSAVE.qib", "scenes/welcome.qib", "argument.qib"})
        {
            SCOPED_TRACE(std::string(name) + " is a " + kind.first);
            for (const fs::directory_entry& entry : fs::directory_iterator(dir.Path()))
                fs::remove_all(entry);
            fs::create_directory(dir / "data");
            fs::create_directory(dir / "scenes");
            kind.second((dir / name).c_str());
            EXPECT_EQ(0, Run([] {}, {"quib", util::starts_with(name, "argument") ? name : "none"}))
                << err;
            EXPECT_NE(std::string::npos, err.find(name)) << "a line names it: " << err;
        }
}

TEST_F(WholeProgramTest, AFolderOfScenesThatMayNotBeReadIsALogLine)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can be somebody else";
    fs::permissions(dir.Path(), fs::all_all);
    fs::permissions(dir / "scenes", fs::no_perms);
    EXPECT_EQ(0, Run([] { ASSERT_EQ(0, setuid(65534)); })) << err;
    EXPECT_NE(std::string::npos, err.find("-- Warning: Failed to read the folder scenes/: "))
        << err;
    EXPECT_NE(std::string::npos,
              err.find("-- Warning: Failed to look at \"scenes/_AUTOSAVE.qib\": "))
        << err;
    EXPECT_TRUE(Has("config.cfg"));
    fs::permissions(dir / "scenes", fs::owner_all);
}

// Time passes where a frame is shown, and nearly nowhere else.
TEST_F(WholeProgramTest, TheNumericPadsDivideLogsWhereAFrameGoes)
{
    Write("scenes/welcome.qib", PlaneScene);
    EXPECT_EQ(0, Run(
                     []
                     {
                         recorded::State().onSwap = []
                         {
                             static int s_frame = 0;
                             recorded::State().now += 50;
                             if (++s_frame == 1)
                                 test::SendKey(SDLK_KP_DIVIDE, true);
                             if (s_frame == 2)
                                 test::SendKey(SDLK_KP_MULTIPLY, true);
                             if (s_frame == 60)
                                 core::Subsystem::GetInstancePtr()->Exit();
                         };
                     }))
        << err;
    EXPECT_EQ(std::string::npos, log.find("before any profiling can be done")) << log;
    ExpectInOrder(log, {"Profiler output:\nNo output generated yet.\n",
                        "Profiler output:\nFPS: ", "Profile data for 0.0", // the key forced it
                        "Profiler output:\nFPS: ", "Profile data for 1.0"});
    const std::string profile = log.substr(log.rfind("Profile data for "));
    ExpectInOrder(profile, {" Name ",
                            "\n Main ",
                            "\n   Logger::Update ", // the switching comes before it
                            "\n   Frame limiter ",
                            "\n   Events ",
                            "\n     Event handling ",
                            "\n       Joystick update ",
                            "\n       Poll loop ",
                            "\n   GC ",
                            "\n   Parser::Update ",
                            "\n   Interp::Update ",
                            "\n   GUI::Update ",
                            "\n     App::Update ",
                            "\n       AppGUI::Update ",
                            "\n       Simulation::Update ",
                            "\n         Simu::Step ",
                            "\n       Scene::Update ",
                            "\n   Draw ",
                            "\n     glClear ",
                            "\n     GUI::Draw ",
                            "\n       App::DrawComp ",
                            "\n         Culling ",
                            "\n         Setup ",
                            "\n         Entities ",
                            "\n       Profiler output ",
                            "\n     SDL_GL_SwapBuffers ",
                            "\n   FlushCallbackSets "});
    EXPECT_NE(std::string::npos, log.find("\n Entity::Draw "));
    const size_t at = profile.find("     SDL_GL_SwapBuffers ");
    ASSERT_NE(std::string::npos, at) << profile;
    const std::string row = profile.substr(at, profile.find('\n', at) - at);
    EXPECT_NE(std::string::npos, row.find("   100.0 %   ")) << row;
    EXPECT_NE(std::string::npos, row.find(" 50000        50000     50000     1.0")) << row;
}
