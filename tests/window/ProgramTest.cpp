// Whole runs of the program, from the command line to its last file.
#include "window/Program.h"
#include "window/XServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

using test::Program;
using test::WindowInfo;
using test::WorkDir;
using test::XServer;

namespace
{
using Names = std::vector<std::string>;

const char* const Running = "Running program...";

// A world in which nothing moves, so that two pictures of it are the same.
const char* const StandStill = "Sim.timeFactor = 0.0\n";

// Draws a plane across the lower half.
const char* const PlaneScene = "Scene.addPlane { normal = [0.0, 1.0]; dist = 0.0 };\n";
const char* const BoxScene = "Scene.addBox {};\n";

size_t Count(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// What stands in the picture, as XServer::ReadPixels gives it; empty when it is no picture.
std::vector<unsigned char> ReadTGA(const std::string& file, int& width, int& height)
{
    std::vector<unsigned char> pixels;
    if (file.size() < 18)
        return pixels;
    const unsigned char* data = reinterpret_cast<const unsigned char*>(file.data());
    width = data[12] + 256 * data[13];
    height = data[14] + 256 * data[15];
    if (file.size() != 18 + size_t(width) * height * 3)
        return pixels;
    for (int y = height - 1; y >= 0; --y)
        for (int x = 0; x < width; ++x)
        {
            const unsigned char* bgr = data + 18 + (size_t(y) * width + x) * 3;
            pixels.insert(pixels.end(), {bgr[2], bgr[1], bgr[0]});
        }
    return pixels;
}

class ProgramTest : public testing::Test
{
protected:
    // Starts, waits for the loop, and closes the window as a user does.
    void RunOnce(XServer& server, std::vector<std::string> arguments = {})
    {
        Program program(dir, server.Display(), std::move(arguments));
        ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
        server.AskToClose(server.WaitForWindow().id);
        EXPECT_EQ(0, program.Wait()) << program.Err();
        out = program.Out();
        err = program.Err();
    }
    // Lets it save itself, and kills it.
    void CrashAfterAutosave(XServer& server)
    {
        Program program(dir, server.Display());
        ASSERT_TRUE(test::WaitFor(
            [&] { return dir.Has("config.autosave.cfg") && dir.Has("scenes/_AUTOSAVE.qib"); }))
            << program.Err();
        program.Signal(SIGKILL);
        EXPECT_EQ(-SIGKILL, program.Wait());
    }

    WorkDir dir;
    std::string out, err; // of RunOnce
};
}

TEST_F(ProgramTest, OpensAWindowUnderItsNameAndSavesAllWhenThatIsClosed)
{
    XServer server;
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    const WindowInfo window = server.WaitForWindow();
    EXPECT_EQ("Quib beta 4.0 by Aldo Vesk", window.title);
    EXPECT_EQ(1024, window.width);
    EXPECT_EQ(768, window.height);
    EXPECT_TRUE(dir.Has("scenes/quiblets"));
    EXPECT_FALSE(dir.Has("config.cfg"));

    server.AskToClose(window.id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
    EXPECT_TRUE(dir.Has("config.cfg"));
    EXPECT_EQ((Names{"_ONEXITSAVE.qib", "quiblets"}), dir.List("scenes"));
    EXPECT_FALSE(dir.Has("config.autosave.cfg"));
    const std::string log = dir.Read("Logfile.txt");
    for (const char* line : {"Init SDL...", "Application created", "Window created.",
                             "Available OpenGL extensions: ", Running, "Entering game loop",
                             "Subsystem::Run returned, saving config...", "Destroying subsystem",
                             "Returning 0 from main"})
        EXPECT_NE(std::string::npos, log.find(line)) << line;
    EXPECT_FALSE(dir.Has("Unlogged.txt"));
}

TEST_F(ProgramTest, TheNextStartGoesOnWhereTheLastOneEnded)
{
    XServer server;
    RunOnce(server);
    EXPECT_EQ(std::string::npos, out.find("Loaded scene"));
    dir.Write("config.cfg", dir.Read("config.cfg") + ";\nSystem.resolution = [400, 300]");
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_ONEXITSAVE.qib")) << out;
    EXPECT_NE(std::string::npos, dir.Read("config.cfg").find("System.resolution = [400, 300]"));
}

TEST_F(ProgramTest, AFirstWindowLeavesRoomOnASmallDisplay)
{
    XServer server("800x600x24");
    Program program(dir, server.Display());
    const WindowInfo window = server.WaitForWindow();
    EXPECT_EQ(736, window.width);
    EXPECT_EQ(536, window.height);
}

TEST_F(ProgramTest, AFirstWindowDoesNotGrowWithALargeDisplay)
{
    XServer server("2000x1500x24");
    Program program(dir, server.Display());
    const WindowInfo window = server.WaitForWindow();
    EXPECT_EQ(1024, window.width);
    EXPECT_EQ(768, window.height);
}

TEST_F(ProgramTest, AUsersStartUpScriptDoesNotMakeItLessOfAFirstRun)
{
    XServer server("800x600x24");
    dir.Write("autoexec.cfg", "System.resolution = [300, 200]");
    {
        Program program(dir, server.Display());
        EXPECT_EQ(736, server.WaitForWindow().width) << "the size of a first run";
    }
    dir.Write("config.cfg", "App.DPI = 90.0");
    Program program(dir, server.Display());
    EXPECT_EQ(300, server.WaitForWindow().width) << "the script's wish";
}

TEST_F(ProgramTest, AnImpossibleSizeIsHeldToTheDisplay)
{
    XServer server;
    dir.Write("config.cfg", "System.resolution = [5000, 20]");
    {
        Program program(dir, server.Display());
        const WindowInfo window = server.WaitForWindow();
        EXPECT_EQ(1280, window.width);
        EXPECT_EQ(20, window.height);
    }
    dir.Write("config.cfg", "System.resolution = [0, 400]");
    Program program(dir, server.Display());
    EXPECT_TRUE(server.WaitForSize(1, 400));
    EXPECT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
}

TEST_F(ProgramTest, AKilledRunIsRecoveredFromItsAutosaveUntilOneEndsInOrder)
{
    XServer server;
    dir.Write("scenes/welcome.qib", PlaneScene);
    dir.Write("autoexec.cfg", "App.autosaveTime = 0.0");
    RunOnce(server); // leaves config.cfg and an exit scene
    CrashAfterAutosave(server);
    CrashAfterAutosave(server);

    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Recovering config.autosave.cfg from previous crash\n"));
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_AUTOSAVE.qib")) << out;
    EXPECT_FALSE(dir.Has("config.autosave.cfg"));
    EXPECT_FALSE(dir.Has("scenes/_AUTOSAVE.qib"));

    RunOnce(server);
    EXPECT_EQ(std::string::npos, out.find("Recovering"));
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_ONEXITSAVE.qib")) << out;
}

TEST_F(ProgramTest, ARecoveryIsNoFirstRun)
{
    XServer server("800x600x24");
    dir.Write("config.autosave.cfg", "System.resolution = [300, 200]");
    Program program(dir, server.Display());
    EXPECT_EQ(300, server.WaitForWindow().width);
    EXPECT_TRUE(program.Says("Recovering config.autosave.cfg from previous crash\n"));
}

TEST_F(ProgramTest, AKillBeforeTheFirstAutosaveLeavesNothingToRecover)
{
    XServer server;
    {
        Program program(dir, server.Display());
        ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
        program.Signal(SIGKILL);
        program.Wait();
    }
    EXPECT_FALSE(dir.Has("config.autosave.cfg"));
    EXPECT_EQ((Names{"quiblets"}), dir.List("scenes"));
}

TEST_F(ProgramTest, TheAutosavedSceneWinsOverTheExitSceneAndThatOverTheWelcomeScene)
{
    XServer server;
    dir.Write("scenes/welcome.qib", PlaneScene);
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/welcome.qib")) << out;
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_ONEXITSAVE.qib")) << out;
    dir.Write("scenes/_AUTOSAVE.qib", PlaneScene);
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_AUTOSAVE.qib")) << out;
}

TEST_F(ProgramTest, FollowsTheWindowsSize)
{
    XServer server;
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    const WindowInfo window = server.WaitForWindow();
    server.Resize(window.id, 500, 401);
    EXPECT_TRUE(test::WaitFor([&] { return Count(program.Out(), "Window created.") >= 2; }));
    program.Signal(SIGUSR1);
    EXPECT_TRUE(program.WaitUntilItSays("Screenshot saved to "));
    server.AskToClose(window.id);
    EXPECT_EQ(0, program.Wait()) << program.Err();

    int width = 0, height = 0;
    ReadTGA(dir.Read("screenshots/" + dir.List("screenshots").at(0)), width, height);
    EXPECT_EQ(500, width);
    EXPECT_EQ(401, height);
    EXPECT_NE(std::string::npos, dir.Read("config.cfg").find("System.resolution = [500, 401]"));
}

TEST_F(ProgramTest, AWindowDraggedThroughManySizesEndsUpWithTheLast)
{
    XServer server;
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    const WindowInfo window = server.WaitForWindow();
    for (int i = 1; i <= 100; ++i)
        server.Resize(window.id, 1024 - 5 * i, 768 - 3 * i);
    EXPECT_TRUE(server.WaitForSize(524, 468));
    EXPECT_TRUE(test::WaitFor([&] { return Count(program.Out(), "Window created.") >= 2; }));
    server.AskToClose(window.id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
    EXPECT_NE(std::string::npos, dir.Read("config.cfg").find("System.resolution = [524, 468]"));
    EXPECT_LT(Count(program.Out(), "Window created."), 90u) << "most sizes are passed over";
}

TEST_F(ProgramTest, AVersionInAnyArgumentIsAnsweredWithoutWindowOrLog)
{
    // Deliberate: anywhere, in a path too. No display, as none is needed.
    const std::vector<std::vector<std::string>> cases = {
        {"--version"}, {"-version"}, {"x/version"}, {"scene.qib", "the-versions.qib"}};
    for (const auto& arguments : cases)
    {
        SCOPED_TRACE(arguments.back());
        Program program(dir, ":77777", arguments);
        EXPECT_EQ(0, program.Wait());
        EXPECT_EQ("workdir =  \nQuib beta 4.0\n", program.Out());
        EXPECT_EQ("", program.Err());
        EXPECT_FALSE(dir.Has("Logfile.txt"));
        EXPECT_FALSE(dir.Has("Unlogged.txt"));
        EXPECT_FALSE(dir.Has("scenes"));
    }
}

TEST_F(ProgramTest, LoadsASceneFromTheDirectoryItWasCalledIn)
{
    XServer server;
    dir.Write("a.qib", PlaneScene);
    RunOnce(server, {"a.qib"});
    EXPECT_NE(std::string::npos, out.find("Loading argument ./a.qib\n")) << out;
    EXPECT_NE(std::string::npos, out.find("Loaded scene ./a.qib")) << out;
}

TEST_F(ProgramTest, ABareNameThatLiesInTheSceneFolderOnlyIsFoundThere)
{
    XServer server;
    dir.Write("scenes/a.qib", PlaneScene);
    RunOnce(server, {"a.qib"});
    EXPECT_NE(std::string::npos, out.find("Loading argument a.qib\n")) << out;
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/a.qib")) << out;
}

// Kept on purpose: all arguments are one path.
TEST_F(ProgramTest, ArgumentsAreJoinedWhichPutsAPathWithBlanksTogetherAgain)
{
    XServer server;
    dir.Write("my first scene.QIB", PlaneScene);
    RunOnce(server, {"my", "first", "scene.QIB"});
    EXPECT_NE(std::string::npos, out.find("Loading argument ./my first scene.QIB\n")) << out;
    EXPECT_NE(std::string::npos, out.find("Loaded scene ./my first scene.QIB")) << out;
}

TEST_F(ProgramTest, ArgumentsThatDoNotEndInQibAreIgnored)
{
    XServer server;
    dir.Write("scenes/welcome.qib", PlaneScene);
    dir.Write("a.qib", PlaneScene);
    RunOnce(server, {"a.qib", "--fast"});
    EXPECT_EQ(std::string::npos, out.find("Loading argument"));
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/welcome.qib")) << out;
}

TEST_F(ProgramTest, ASceneOnTheCommandLineGoesBeforeRecoveryOfTheSceneButNotOfTheSettings)
{
    XServer server;
    dir.Write("a.qib", PlaneScene);
    dir.Write("scenes/_AUTOSAVE.qib", PlaneScene);
    dir.Write("config.autosave.cfg", "App.DPI = 90.0");
    RunOnce(server, {dir / "a.qib"});
    EXPECT_NE(std::string::npos, out.find("Recovering config.autosave.cfg")) << out;
    EXPECT_NE(std::string::npos, out.find("Loaded scene " + (dir / "a.qib"))) << out;
}

TEST_F(ProgramTest, AMissingSceneIsALogLineAndTheProgramGoesOn)
{
    XServer server;
    RunOnce(server, {"nowhere/at/all.qib"});
    const std::string log = dir.Read("Logfile.txt");
    EXPECT_NE(std::string::npos, log.find("Tried to load non-existing file: nowhere/at/all.qib"));
}

TEST_F(ProgramTest, ScenesOfOldGetTheirNewExtension)
{
    XServer server;
    dir.Write("scenes/old.cfg", "// from long ago");
    dir.Write("scenes/both.cfg", "// the old one");
    dir.Write("scenes/both.qib", "// the new one");
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Renaming old .cfg files to .qib...\n"));
    EXPECT_EQ("// from long ago", dir.Read("scenes/old.qib"));
    EXPECT_FALSE(dir.Has("scenes/old.cfg"));
    EXPECT_EQ("// the new one", dir.Read("scenes/both.qib")) << "nothing is written over";
    EXPECT_EQ("// the old one", dir.Read("scenes/both.cfg"));
    EXPECT_NE(std::string::npos,
              err.find("Failed to rename \"scenes/both.cfg\" to \"scenes/both.qib\": file exists"))
        << err;
}

TEST_F(ProgramTest, ASecondCopyInTheSameDirectoryWarnsAndGoesOn)
{
    XServer server, another;
    Program first(dir, server.Display());
    ASSERT_TRUE(first.WaitUntilItSays(Running)) << first.Err();
    Program second(dir, another.Display());
    ASSERT_TRUE(second.WaitUntilItSays(Running)) << second.Err();
    EXPECT_EQ(std::string::npos, first.Err().find("Another Quib"));
    EXPECT_NE(std::string::npos,
              second.Err().find("-- Warning: Another Quib runs in this directory"));
    second.Signal(SIGKILL);
    second.Wait();
    first.Signal(SIGKILL);
    first.Wait();
    Program third(dir, server.Display());
    ASSERT_TRUE(third.WaitUntilItSays(Running)) << third.Err();
    EXPECT_EQ(std::string::npos, third.Err().find("Another Quib"))
        << "a killed copy locks nobody out";
}

TEST_F(ProgramTest, AFullDiskAtTheEndCostsTheNewFilesOnly)
{
    XServer server;
    dir.Write("config.cfg", "App.DPI = 90.0");
    dir.Write("config.autosave.cfg", "App.DPI = 91.0");
    dir.Write("scenes/_ONEXITSAVE.qib", PlaneScene);
    dir.Write("scenes/_AUTOSAVE.qib", BoxScene);
    Program::Options options;
    options.fileLimitIsError = true;
    Program program(dir, server.Display(), options);
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    program.LimitFileSize(0);
    server.AskToClose(server.WaitForWindow().id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
    EXPECT_EQ("App.DPI = 90.0", dir.Read("config.cfg"));
    EXPECT_EQ(PlaneScene, dir.Read("scenes/_ONEXITSAVE.qib"));
    EXPECT_EQ((Names{"_AUTOSAVE.qib", "_ONEXITSAVE.qib", "quiblets"}), dir.List("scenes"))
        << "no half files, and what the next start can take up";
    EXPECT_EQ(BoxScene, dir.Read("scenes/_AUTOSAVE.qib"));
    EXPECT_EQ("App.DPI = 91.0", dir.Read("config.autosave.cfg"));
}

TEST_F(ProgramTest, AReadOnlyDirectoryCostsTheNewFilesOnly)
{
    XServer server;
    dir.Write("config.cfg", "App.DPI = 90.0");
    dir.Write("config.autosave.cfg", "App.DPI = 91.0");
    dir.Write("scenes/_ONEXITSAVE.qib", PlaneScene);
    dir.Write("scenes/quiblets/x", "");
    dir.Write("Logfile.txt", ""); // this one file can be written to
    namespace fs = boost::filesystem;
    for (const char* name : {"", "scenes", "scenes/quiblets"})
        fs::permissions(dir / name,
                        fs::owner_read | fs::owner_exe | fs::others_read | fs::others_exe);
    fs::permissions(dir / "Logfile.txt", fs::all_all);
    Program::Options options;
    options.asNobody = geteuid() == 0; // nothing is read-only to root
    Program program(dir, server.Display(), options);
    const bool started = program.WaitUntilItSays(Running);
    if (started)
        server.AskToClose(server.WaitForWindow().id);
    const int result = program.Wait();
    for (const char* name : {"", "scenes", "scenes/quiblets"})
        fs::permissions(dir / name, fs::owner_all);
    if (options.asNobody && !started && (result == 126 || result == 127))
        GTEST_SKIP() << "others than root can't run the program where it lies";

    ASSERT_TRUE(started) << program.Err();
    EXPECT_EQ(0, result) << program.Err();
    EXPECT_EQ("App.DPI = 90.0", dir.Read("config.cfg"));
    EXPECT_EQ(PlaneScene, dir.Read("scenes/_ONEXITSAVE.qib"));
    EXPECT_NE(std::string::npos, program.Err().find("config.cfg")) << "a line names the file";
    EXPECT_NE(std::string::npos,
              dir.Read("Logfile.txt").find("Failed to write file \"scenes/_ONEXITSAVE.qib\""));
    EXPECT_NE(std::string::npos, program.Err().find("Failed to save scene to ")) << program.Err();
    EXPECT_EQ("App.DPI = 91.0", dir.Read("config.autosave.cfg"));
}

TEST_F(ProgramTest, AFailureInTheLoopEndsWithItsTextAndLeavesTheAutosave)
{
    XServer server;
    dir.Write("autoexec.cfg", "App.autosaveTime = 0.0");
    {
        Program::Options options;
        options.program = QUIB_FAULTY_PROGRAM;
        Program program(dir, server.Display(), options);
        EXPECT_EQ(1, program.Wait());
        EXPECT_NE(
            std::string::npos,
            program.Err().find("!! ERROR: Exception caught in main: GL-Error: invalid operation\n"
                               "Exception caught: GL-Error: invalid operation\n"))
            << program.Err();
    }
    EXPECT_FALSE(dir.Has("config.cfg")) << "no clean-up runs";
    EXPECT_FALSE(dir.Has("scenes/_ONEXITSAVE.qib"));
    EXPECT_TRUE(dir.Has("config.autosave.cfg"));
    EXPECT_TRUE(dir.Has("scenes/_AUTOSAVE.qib"));
    const std::string log = dir.Read("Logfile.txt");
    EXPECT_NE(std::string::npos, log.find("Exception passed on at "));
    EXPECT_NE(std::string::npos, log.find(": int SDL_main(int, char**)\n"));
    RunOnce(server);
    EXPECT_NE(std::string::npos, out.find("Recovering config.autosave.cfg from previous crash\n"));
}

TEST_F(ProgramTest, AMissingDisplayEndsWithAnErrorText)
{
    Program program(dir, ":77777");
    EXPECT_EQ(1, program.Wait());
    EXPECT_NE(std::string::npos, program.Err().find("Exception caught: Couldn't init SDL: "))
        << program.Err();
}

TEST_F(ProgramTest, AMultisampleCountThatCannotBeHadNamesItsSetting)
{
    XServer server;
    dir.Write("config.cfg", "System.antiAlias = 64");
    Program program(dir, server.Display());
    EXPECT_EQ(1, program.Wait());
    EXPECT_NE(std::string::npos, program.Err().find("System.antiAlias = 64")) << program.Err();
    EXPECT_NE(std::string::npos,
              program.Err().find("Exception caught: Couldn't set video mode, SDL-error: "));
    EXPECT_EQ("System.antiAlias = 64", dir.Read("config.cfg"));
}

TEST_F(ProgramTest, AScriptThatAsksForAnImpossibleWindowCostsNothing)
{
    XServer server;
    dir.Write("scenes/welcome.qib", PlaneScene + std::string("System.antiAlias = 64;\n"
                                                             "System.recreateWindow;\n"));
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    EXPECT_NE(std::string::npos, program.Err().find("System.antiAlias = 64")) << program.Err();
    program.Signal(SIGUSR1);
    EXPECT_TRUE(program.WaitUntilItSays("Screenshot saved to ")) << program.Err();
    server.AskToClose(server.WaitForWindow().id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
    EXPECT_EQ(std::string::npos, dir.Read("config.cfg").find("antiAlias = 64"));
    RunOnce(server);
}

TEST_F(ProgramTest, NoWidthOfLinesOrSizeOfPointsEndsTheProgram)
{
    XServer server;
    dir.Write("scenes/welcome.qib", PlaneScene);
    for (const std::string value : {"-3.0", "0.0", "0.0 / 0.0", "1.0 / 0.0", "-1.0 / 0.0"})
    {
        SCOPED_TRACE(value);
        for (const std::string name : {"lineWidth", "pointSize"})
        {
            boost::filesystem::remove(dir / "config.cfg");
            dir.Write("autoexec.cfg", "App." + name + " = " + value);
            {
                Program program(dir, server.Display());
                ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
                program.Signal(SIGUSR1);
                EXPECT_TRUE(program.WaitUntilItSays("Screenshot saved to ")) << "a frame is drawn";
                program.Signal(SIGTERM);
                EXPECT_EQ(0, program.Wait()) << program.Err();
            }
            EXPECT_NE(std::string::npos, dir.Read("config.cfg").find("App." + name + " = "))
                << "the setting keeps what was written";
            boost::filesystem::remove(dir / "autoexec.cfg");
            RunOnce(server);
        }
    }
}

TEST_F(ProgramTest, SigtermEndsInOrderAsClosingTheWindowDoes)
{
    XServer server;
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    program.Signal(SIGTERM);
    EXPECT_EQ(0, program.Wait()) << program.Err();
    EXPECT_TRUE(dir.Has("config.cfg"));
    EXPECT_TRUE(dir.Has("scenes/_ONEXITSAVE.qib"));
}

TEST_F(ProgramTest, AScreenshotShowsWhatTheWindowShows)
{
    XServer server;
    // Clouds drift from the one picture to the other.
    dir.Write("autoexec.cfg", std::string("App.Background.drawClouds = false; ") + StandStill);
    dir.Write("config.cfg", "System.resolution = [301, 203]");
    dir.Write("scenes/welcome.qib", PlaneScene);
    Program program(dir, server.Display());
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    const WindowInfo window = server.WaitForWindow();
    program.Signal(SIGUSR1);
    ASSERT_TRUE(program.WaitUntilItSays("Screenshot saved to \"screenshots/quib_"));

    int width = 0, height = 0;
    const auto picture =
        ReadTGA(dir.Read("screenshots/" + dir.List("screenshots").at(0)), width, height);
    ASSERT_EQ(301, width);
    ASSERT_EQ(203, height);
    EXPECT_EQ(picture, server.ReadPixels(window.id, width, height));
    std::set<std::vector<unsigned char>> colors;
    for (size_t i = 0; i + 2 < picture.size(); i += 3)
        colors.insert({picture[i], picture[i + 1], picture[i + 2]});
    EXPECT_GT(colors.size(), 3u) << "a plane below a sky";
}

TEST_F(ProgramTest, BrokenSettingsAreLogLinesAndTheProgramGoesOn)
{
    XServer server;
    const char bytes[] = "\x7f"
                         "ELF\0\1\2\xff{{{[[[(((\"";
    const std::string binary(bytes, sizeof(bytes));
    const struct
    {
        const char* what;
        std::string text;
    } cases[] = {
        {"binary", binary},
        {"truncated", "System.resolution = [30"},
        {"garbage", "1 2 3 ;;; } } }"},
    };
    for (const auto& c : cases)
        for (const std::string name : {"autoexec.cfg", "config.cfg"})
        {
            SCOPED_TRACE(name + ", " + c.what);
            for (const char* left : {"Logfile.txt", "autoexec.cfg", "config.cfg"})
                boost::filesystem::remove(dir / left);
            dir.Write(name, c.text);
            RunOnce(server);
            const std::string log = dir.Read("Logfile.txt");
            const size_t named = log.find("Parsing " + name + "...\n");
            ASSERT_NE(std::string::npos, named) << log;
            const size_t end =
                std::min(log.find("Parsing ", named + 1), log.find("Creating window..."));
            EXPECT_LT(log.find("-- Warning: ", named), end) << log;
        }
}

TEST_F(ProgramTest, ABrokenSceneIsNamedAndTheProgramGoesOn)
{
    XServer server;
    for (const std::string text : {"\x7f"
                                   "ELF\1\2\xff{{{[[[(((\"",
                                   "Scene.addBox { pos = [3", "1 2 3 ;;; } } }"})
    {
        dir.Write("scenes/_ONEXITSAVE.qib", text);
        RunOnce(server);
        EXPECT_NE(std::string::npos,
                  err.find("!! ERROR: Failed to load scene scenes/_ONEXITSAVE.qib\n"))
            << err;
        EXPECT_EQ(text, dir.Read("scenes/_ONEXITSAVE.qib.broken"));
        boost::filesystem::remove(dir / "scenes/_ONEXITSAVE.qib.broken");
    }
}

TEST_F(ProgramTest, EmptySettingsAndAnEmptySceneAreFine)
{
    XServer server;
    for (const char* name : {"config.cfg", "autoexec.cfg", "scenes/_ONEXITSAVE.qib"})
        dir.Write(name, "");
    RunOnce(server);
    EXPECT_EQ("", err);
    EXPECT_NE(std::string::npos, out.find("Loaded scene scenes/_ONEXITSAVE.qib")) << out;
}

TEST_F(ProgramTest, SettingsThatCannotBeReadAreNamedAndTheProgramGoesOn)
{
    XServer server;
    boost::filesystem::create_directories(dir / "config.cfg/x");
    RunOnce(server);
    for (const char* line :
         {"!! ERROR: Failed loading config file: Failed to open file \"autoexec.cfg\"",
          "-- Warning: Not a file: \"config.cfg\""})
        EXPECT_NE(std::string::npos, err.find(line)) << err;
    EXPECT_TRUE(dir.Has("config.cfg/x"));

    boost::filesystem::remove_all(dir / "config.cfg");
    dir.Write("config.cfg", "App.DPI = 90.0");
    boost::filesystem::permissions(dir / "config.cfg", boost::filesystem::no_perms);
    for (const char* name : {"", "scenes", "scenes/quiblets", "Logfile.txt"})
        boost::filesystem::permissions(dir / name, boost::filesystem::all_all);
    Program::Options options;
    options.asNobody = geteuid() == 0; // everything can be read by root
    Program program(dir, server.Display(), options);
    const bool started = program.WaitUntilItSays(Running);
    program.Signal(SIGTERM);
    const int result = program.Wait();
    if (options.asNobody && !started && (result == 126 || result == 127))
        GTEST_SKIP() << "others than root can't run the program where it lies";
    EXPECT_EQ(0, result) << program.Err();
    EXPECT_NE(std::string::npos, program.Err().find("!! ERROR: Failed loading config file: Failed "
                                                    "to open file \"config.cfg\""))
        << program.Err();
    boost::filesystem::permissions(dir / "config.cfg", boost::filesystem::owner_all);
    EXPECT_EQ("App.DPI = 90.0", dir.Read("config.cfg")) << "nor is it written over";
}

TEST_F(ProgramTest, AKillAtAnyMomentLeavesWholeFiles)
{
    XServer server;
    // It saves all the time, and each save takes a while.
    std::string scene;
    for (int i = 0; i < 1000; ++i)
        scene += "Scene.addBox { pos = [" + std::to_string(2 * i) + ".0, 0.0] };\n";
    dir.Write("scenes/welcome.qib", scene + "Sim.gravitySwitch = false;\n");
    dir.Write("autoexec.cfg",
              "App.autosaveTime = 0.0; System.resolution = [64, 64];\n" + std::string(StandStill));
    std::string config, world; // whole
    std::srand(20);
    for (int i = 0; i < 12; ++i)
    {
        SCOPED_TRACE(i);
        Program program(dir, server.Display());
        ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
        EXPECT_EQ(i > 0, program.Says("Recovering config.autosave.cfg from previous crash\n"));
        EXPECT_EQ(i > 0, program.Says("Loaded scene scenes/_AUTOSAVE.qib")) << program.Out();
        ASSERT_TRUE(test::WaitFor([&] { return dir.Has("scenes/_AUTOSAVE.qib"); }));
        usleep(std::rand() % 200000);
        program.Signal(SIGKILL);
        EXPECT_EQ(-SIGKILL, program.Wait());
        // Nothing moves: each save is like the first.
        if (i == 0)
        {
            config = dir.Read("config.autosave.cfg");
            world = dir.Read("scenes/_AUTOSAVE.qib");
            EXPECT_EQ(1000u, Count(world, "Scene.addBox"));
        }
        EXPECT_EQ(config.size(), dir.Read("config.autosave.cfg").size());
        EXPECT_EQ(1000u, Count(dir.Read("scenes/_AUTOSAVE.qib"), "Scene.addBox"));
    }
    RunOnce(server);
    EXPECT_EQ((Names{"_ONEXITSAVE.qib", "quiblets", "welcome.qib"}), dir.List("scenes"));
    EXPECT_FALSE(dir.Has("config.autosave.cfg"));
    EXPECT_FALSE(dir.Has("config.autosave.cfg.tmp"));
}

// One entity of each kind and water: no stage may get more parts than the profiler takes.
TEST_F(ProgramTest, TwoKeysOfTheNumericPadLogWhereAFrameGoes)
{
    dir.Write("all.qib",
              std::string(PlaneScene) +
                  "Scene.addBox { pos = [0.0, 1.0]; geomID = 11 };"
                  "Scene.addBox { pos = [2.0, 1.0]; geomID = 12 };"
                  "Scene.addCircle { pos = [-2.0, 1.0] };"
                  "Scene.addPolygon { pos = [-1.0, 1.0]; vecs = [[0.0, 0.0], [1.0, 0.0], "
                  "[0.0, 1.0]] };"
                  "Scene.addHinge { size = 0.2; geom0 = 11; geom0pos = [0.0, 0.0]; geom1 = 0; "
                  "geom1pos = [0.0, 1.0] };"
                  "Scene.addSpring { size = 0.2; geom0 = 11; geom0pos = [0.0, 0.0]; geom1 = 12; "
                  "geom1pos = [0.0, 0.0] };"
                  "Scene.addFixjoint { size = 0.2; geom0 = 12; geom0pos = [0.0, 0.0]; geom1 = 0; "
                  "geom1pos = [2.0, 1.0] };"
                  "Scene.addPen { size = 0.2; geom = 12; relPoint = [0.0, 0.0] };"
                  "Scene.addWater { vecs = [[0.0, 3.0], [0.1, 3.0]] }");
    XServer server;
    Program program(dir, server.Display(), {"all.qib"});
    ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
    const WindowInfo window = server.WaitForWindow();
    server.MovePointer(window.x + window.width / 2, window.y + window.height / 4);
    for (const char* key : {"KP_Divide", "KP_Multiply"})
    {
        server.Key(key, true);
        server.Key(key, false);
    }
    std::string log;
    EXPECT_TRUE(test::WaitFor(
        [&]
        {
            log = dir.Read("Logfile.txt");
            // The keys force the first ones, of a single frame.
            return Count(log, "Profile data for ") >= 3 && Count(log, "\n Entity::Draw ") >= 2;
        }));
    EXPECT_EQ(0u, Count(log, "before any profiling can be done")) << log;
    const std::string profile = log.substr(std::min(log.size(), log.rfind("Profile data for ")));
    for (const char* row : {"\n Main ",
                            "\n   Events ",
                            "\n   FlushCallbackSets ",
                            "\n   GC ",
                            "\n   Parser::Update ",
                            "\n   Interp::Update ",
                            "\n   GUI::Update ",
                            "\n     App::Update ",
                            "\n       Simulation::Update ",
                            "\n         Simu::Step ",
                            "\n   Draw ",
                            "\n     glClear ",
                            "\n     GUI::Draw ",
                            "\n       App::DrawComp ",
                            "\n         Water ",
                            "\n         Entities ",
                            "\n           Mouse-over ",
                            "\n           Box::Draw ",
                            "\n           Circle::Draw ",
                            "\n           Poly::Draw ",
                            "\n           Plane::Draw ",
                            "\n           Hinge::Draw ",
                            "\n           Spring::Draw ",
                            "\n           FixJoint::Draw ",
                            "\n           Pen::Draw ",
                            "\n       Profiler output ",
                            "\n     SDL_GL_SwapBuffers ",
                            "\n   Logger::Update ",
                            "\n   Frame limiter "})
        EXPECT_EQ(1u, Count(profile, row)) << row << "\n" << profile;
    server.AskToClose(window.id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
}
