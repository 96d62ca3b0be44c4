// Whole sessions of the program that are recorded and replayed: the same scene must come of them, with a
// world that moves.
#include "window/Program.h"
#include "window/XServer.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

using test::Program;
using test::WorkDir;
using test::XServer;

namespace
{
const char* const Running = "Running program...";

// Things that fall, roll and collide, so that a frame more or less shows.
const char* const Scene = "Scene.Camera.zoom = 100.0;\n"
                          "Scene.Camera.pan = [0.0, 1.0];\n"
                          "Scene.addPlane { normal = [0.0, 1.0]; dist = -1.0 };\n"
                          "Scene.addBox { pos = [0.0, 3.0]; size = [1.0, 1.0]; angle = 0.3 };\n"
                          "Scene.addCircle { pos = [0.3, 5.0]; radius = 0.5 };\n"
                          "Scene.addBox { pos = [0.5, 7.0]; size = [1.0, 1.0]; angle = 0.7 };\n";

class Hands
{
public:
    explicit Hands(const std::string& display)
        : m_display(XOpenDisplay(display.c_str()))
    {
    }
    ~Hands() { XCloseDisplay(m_display); }

    void Key(KeySym key, bool down)
    {
        XTestFakeKeyEvent(m_display, XKeysymToKeycode(m_display, key), down, CurrentTime);
        XSync(m_display, False);
    }
    void Click(unsigned button)
    {
        XTestFakeButtonEvent(m_display, button, True, CurrentTime);
        XTestFakeButtonEvent(m_display, button, False, CurrentTime);
        XSync(m_display, False);
    }
    void Drag(int x, int y, int dx, int dy)
    {
        Move(x, y);
        XTestFakeButtonEvent(m_display, 1, True, CurrentTime);
        for (int i = 1; i <= 10; ++i)
        {
            Move(x + dx * i / 10, y + dy * i / 10);
            Wait(10);
        }
        XTestFakeButtonEvent(m_display, 1, False, CurrentTime);
        XSync(m_display, False);
    }
    void Move(int x, int y)
    {
        XTestFakeMotionEvent(m_display, -1, x, y, CurrentTime);
        XSync(m_display, False);
    }
    static void Wait(int milliseconds)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }

private:
    Display* m_display;
};

class RecordingInWindowTest : public testing::Test
{
protected:
    RecordingInWindowTest()
    {
        first.Write("scenes/welcome.qib", Scene);
        second.Write("scenes/welcome.qib", Scene);
        first.Write("config.cfg", "System.resolution = [500, 400]");
    }

    /// Plays about.
    void Act()
    {
        Hands hands(server.Display());
        hands.Move(200, 150);
        hands.Click(4);
        hands.Click(4);
        hands.Key(XK_Left, true);
        Hands::Wait(200);
        hands.Key(XK_Left, false);
        hands.Drag(100, 100, 150, 80);
        hands.Click(5);
        Hands::Wait(200);
    }
    /// In the second folder. @return the exit code
    int Replay(const std::vector<std::string>& options)
    {
        std::vector<std::string> arguments = {"--replay", first / "session"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Program program(second, server.Display(), arguments);
        const int result = program.Wait();
        err = program.Err();
        return result;
    }

    XServer server;
    WorkDir first, second;
    std::string err;
};
}

TEST_F(RecordingInWindowTest, TheSameSceneComesOfTheSameSession)
{
    {
        Program program(first, server.Display(), {"--record", "session"});
        ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
        const test::WindowInfo window = server.WaitForWindow();
        Act();
        server.AskToClose(window.id);
        EXPECT_EQ(0, program.Wait()) << program.Err();
    }
    EXPECT_EQ(0, Replay({"--quit-after-replay"})) << err;
    const std::string scene = first.Read("scenes/_ONEXITSAVE.qib");
    EXPECT_EQ(scene, second.Read("scenes/_ONEXITSAVE.qib"));
    // Something has come of it, or the test shows nothing.
    EXPECT_EQ(std::string::npos, scene.find("pos = [0.0, 3.0]"));
    EXPECT_EQ(std::string::npos, scene.find("Scene.Camera.zoom = 100.0;"));
    EXPECT_NE(std::string::npos, second.Read("config.cfg").find("System.resolution = [500, 400]"))
        << "the window was as large as that of the session";
}

TEST_F(RecordingInWindowTest, ASessionThatWasKilledIsReplayedUpToThere)
{
    {
        Program program(first, server.Display(), {"--record", "session"});
        ASSERT_TRUE(program.WaitUntilItSays(Running)) << program.Err();
        server.WaitForWindow();
        Act();
        program.Signal(SIGKILL);
        EXPECT_EQ(-SIGKILL, program.Wait());
    }
    EXPECT_EQ(std::string::npos, first.Read("session").find("\nquit\n"));
    EXPECT_NE(std::string::npos, first.Read("session").find("\nrelease 5 250 180\n"));
    EXPECT_EQ(0, Replay({"--quit-after-replay"})) << err;
    EXPECT_EQ(std::string::npos,
              second.Read("scenes/_ONEXITSAVE.qib").find("Scene.Camera.zoom = 100.0;"));
}

TEST_F(RecordingInWindowTest, AfterTheReplayTheUserGoesOn)
{
    // A gesture as a person writes it.
    first.Write("session", "quib recording 1\n"
                           "window 500 400\n"
                           "frame 0\n"
                           "frame 50\n"
                           "press 4 250 200\n"
                           "release 4 250 200\n"
                           "frame 100\n");
    second.Write("autoexec.cfg", "App.autosaveTime = 0.0");
    Program program(second, server.Display(), {"--replay", first / "session"});
    ASSERT_TRUE(program.WaitUntilItSays("The replay is over")) << program.Err();
    const test::WindowInfo window = server.WaitForWindow();
    EXPECT_EQ(500, window.width);
    EXPECT_EQ(400, window.height);
    const auto zoom = [this]
    {
        const std::string scene = second.Read("scenes/_AUTOSAVE.qib");
        const std::string name = "Scene.Camera.zoom = ";
        const size_t at = scene.find(name);
        return at == std::string::npos ? 0 : std::atof(scene.c_str() + at + name.size());
    };
    EXPECT_TRUE(test::WaitFor([&] { return zoom() > 101; })) << zoom();
    const double before = zoom();
    Hands hands(server.Display());
    hands.Move(250, 200);
    hands.Click(4);
    EXPECT_TRUE(test::WaitFor([&] { return zoom() > before * 1.05; })) << zoom();
    server.AskToClose(window.id);
    EXPECT_EQ(0, program.Wait()) << program.Err();
}

TEST_F(RecordingInWindowTest, WhatCannotBeReplayedIsSaidWithoutAWindow)
{
    first.Write("session", "quib recording 1\nframe 10\njump 3\n");
    first.Write("scene", "FileInfo.version = 2;\n");
    const struct
    {
        std::vector<std::string> arguments;
        int result;
        std::string err;
    } cases[] = {
        {{"--replay", "session"}, 1, "quib: session: line 3: \"jump\" is not known\n"},
        {{"--replay", "scene"}, 1, "quib: scene: line 1: this is no recording\n"},
        {{"--replay", "nowhere"}, 1, "quib: nowhere: it can't be read\n"},
        {{"--replay", "scenes"}, 1, "quib: scenes: it can't be read\n"},
        {{"--record", "no/folder"}, 1, "quib: can't write no/folder: No such file or directory\n"},
        {{"--record"}, 2, "quib: --record needs a file\n"},
        {{"--record", "scenes/welcome.qib"},
         2,
         "quib: --record needs a file, and \"scenes/welcome.qib\" is a scene\n"},
    };
    for (const auto& c : cases)
    {
        Program program(first, ":77777", c.arguments);
        EXPECT_EQ(c.result, program.Wait());
        EXPECT_EQ(c.err, program.Err());
        EXPECT_FALSE(first.Has("Logfile.txt"));
        EXPECT_FALSE(first.Has("Unlogged.txt"));
    }
    EXPECT_EQ(Scene, first.Read("scenes/welcome.qib"));
}

TEST_F(RecordingInWindowTest, HelpNeedsNoDisplay)
{
    Program program(first, ":77777", {"--help"});
    EXPECT_EQ(0, program.Wait());
    EXPECT_TRUE(program.Says("--record FILE")) << program.Out();
    EXPECT_EQ("", program.Err());
}
