// quib --screenshot: the built program takes a picture of a scene.
#include "rendering/Image.h"
#include "window/Program.h"
#include "window/XServer.h"

#include <gtest/gtest.h>

using rendering::ImageRGBA32;
using rendering::ImageRGBA32Ptr;
using test::Program;
using test::WorkDir;
using test::XServer;

namespace
{
// A red box falls out of the picture within a second.
const char* const FallingBox = "App.Background.skyColor = [0.0, 0.0, 1.0, 1.0];\n"
                               "App.Background.drawClouds = false;\n"
                               "Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 150.0;\n"
                               "Sim.gravity = [0.0, -9.8];\n"
                               "Scene.addBox { pos = [0.0, 0.0]; size = [1.0, 1.0];"
                               " color = [1.0, 0.0, 0.0, 1.0] };\n";

class PictureOptionTest : public testing::Test
{
protected:
    int Run(std::vector<std::string> arguments)
    {
        Program program(dir, server.Display(), std::move(arguments));
        const int result = program.Wait();
        err = program.Err();
        return result;
    }
    bool IsRedInTheMiddle(const std::string& name)
    {
        const ImageRGBA32Ptr image = ImageRGBA32::LoadFile(dir / name);
        const rendering::PixelRGBA32 pixel =
            (*image)(image->GetWidth() / 2, image->GetHeight() / 2);
        return pixel.x > 200 && pixel.z < 50;
    }

    WorkDir dir;
    XServer server;
    std::string err;
};
}

TEST_F(PictureOptionTest, ShowsTheSceneAfterItsTimeAndTheSameEachTime)
{
    dir.Write("a.qib", FallingBox);
    EXPECT_EQ(0, Run({"--screenshot", "0.png", "a.qib", "--after", "0"})) << err;
    EXPECT_TRUE(IsRedInTheMiddle("0.png"));
    EXPECT_EQ(0, Run({"--screenshot", "1.png", "--after", "1.5", "a.qib"})) << err;
    EXPECT_FALSE(IsRedInTheMiddle("1.png"));

    dir.Write("slow.qib", std::string(FallingBox) + "Sim.gravity = [0.0, -0.1];\n");
    EXPECT_EQ(0, Run({"--screenshot", "2.png", "--after", "0.7", "slow.qib"})) << err;
    EXPECT_EQ(0, Run({"--screenshot", "3.png", "--after", "0.7", "slow.qib"})) << err;
    EXPECT_TRUE(dir.Read("2.png") == dir.Read("3.png"));
    EXPECT_FALSE(dir.Read("0.png") == dir.Read("2.png"));
}

// They are those of a user who is not here.
TEST_F(PictureOptionTest, LeavesSettingsAndScenesAlone)
{
    dir.Write("a.qib", FallingBox);
    dir.Write("autoexec.cfg", "App.autosaveTime = 0.01\n");
    dir.Write("config.cfg", "not (( a script");
    dir.Write("config.autosave.cfg", "App.lineWidth = ((\n");
    dir.Write("scenes/old.cfg", "// three\n");
    dir.Write("scenes/_AUTOSAVE.qib", "// one\n");
    dir.Write("scenes/_ONEXITSAVE.qib", "// two\n");
    EXPECT_EQ(0, Run({"--screenshot", "a.png", "a.qib"})) << err;
    EXPECT_TRUE(dir.Has("a.png"));
    EXPECT_EQ("not (( a script", dir.Read("config.cfg"));
    EXPECT_EQ("App.lineWidth = ((\n", dir.Read("config.autosave.cfg"));
    EXPECT_EQ("// three\n", dir.Read("scenes/old.cfg"));
    EXPECT_EQ("// one\n", dir.Read("scenes/_AUTOSAVE.qib"));
    EXPECT_EQ("// two\n", dir.Read("scenes/_ONEXITSAVE.qib"));
}

TEST_F(PictureOptionTest, WithoutAPictureTheProgramFails)
{
    EXPECT_EQ(2, Run({"--screenshot", "a.png"}));
    EXPECT_NE(std::string::npos, err.find("quib: --screenshot needs a scene\n")) << err;
    EXPECT_EQ(1, Run({"--screenshot", "a.png", "missing.qib"}));
    EXPECT_NE(std::string::npos, err.find("No picture was taken")) << err;
    EXPECT_FALSE(dir.Has("a.png"));
    dir.Write("a.qib", FallingBox);
    EXPECT_EQ(1, Run({"--screenshot", "no such/a.png", "a.qib", "--after", "0"}));
    EXPECT_NE(std::string::npos, err.find("no such/a.png")) << err;
}
