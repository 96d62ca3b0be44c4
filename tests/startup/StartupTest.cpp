#include "app/Startup.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "app/App.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <gtest/gtest.h>

namespace
{
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
