// Into full screen and back, with a real window.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Startup.h"
#include "core/Subsystem.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "window/XServer.h"

using core::Subsystem;

namespace
{
class FullscreenTest : public testing::Test
{
protected:
    void Start(bool isFullscreen)
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::SetLogToStandardOutput(false);
        app::CreateServices();
        core::WindowParams params;
        params.size = isFullscreen ? math::TVector2<int>(640, 480) : math::TVector2<int>(200, 100);
        params.fullscreen = isFullscreen;
        Subsystem::GetInstancePtr()->CreateWindow(params);
    }
    static void Toggle() { app::App::GetInstancePtr()->GetAppGUI()->ToggleFullscreen(); }
    static void ExpectWindow(bool isFullscreen, int width, int height)
    {
        EXPECT_EQ(isFullscreen ? "true" : "false",
                  script::Parser::GetInstancePtr()->ExecuteToString("System.fullscreen"));
        EXPECT_EQ(isFullscreen, Subsystem::GetInstancePtr()->GetConfigParams().fullscreen);
        EXPECT_EQ(width, Subsystem::GetInstancePtr()->GetWidth());
        EXPECT_EQ(height, Subsystem::GetInstancePtr()->GetHeight());
    }

    test::XServer server{"640x480x24"};
    test::TempDir dir;
};

TEST_F(FullscreenTest, FillsTheScreenAndComesBackAsItWas)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start(false);
        Toggle();
        ExpectWindow(true, 640, 480);
        Toggle();
        ExpectWindow(false, 200, 100);
    });
}

TEST_F(FullscreenTest, AProgramThatBeganInFullScreenHasAWindowToo)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start(true);
        Toggle();
        ExpectWindow(false, 640, 480); // the usual window, as far as the screen has room for it
        Toggle();
        ExpectWindow(true, 640, 480);
    });
}
}
