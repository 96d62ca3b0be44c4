// What entities look like: pixels of the real program's window.
#include "window/Program.h"
#include "window/XServer.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>

using test::Program;
using test::WindowInfo;
using test::WorkDir;
using test::XServer;

namespace
{
struct Color
{
    int r, g, b;
};

std::ostream& operator<<(std::ostream& out, const Color& c)
{
    return out << "(" << c.r << ", " << c.g << ", " << c.b << ")";
}

const Color Amber = {240, 160, 60}, AmberBorder = {120, 80, 30}, AmberWedge = {180, 120, 45};
const Color Sea = {46, 134, 171}, SeaBorder = {23, 67, 85}, SeaWedge = {35, 100, 128};

// A scene that stands still, with 100 GUI units to a world unit and the world's origin in the middle.
class EntityPictureTest : public testing::Test
{
protected:
    void Show(const std::string& entities, const std::string& settings = "")
    {
        m_dir.Write("autoexec.cfg",
                    "App.autosaveTime = 1.0e9; System.clearColor = [0.0, 0.0, 0.0, 1.0]; "
                    "Resources.shaders = false");
        m_dir.Write("scenes/a.qib",
                    "FileInfo.version = 2; Sim.timeFactor = 0.0; Scene.Camera.pan = [0.0, 0.0]; "
                    "Scene.Camera.zoom = 100.0; App.Background.drawClouds = false; "
                    "App.Background.skyColor = [0.0, 0.0, 1.0, 1.0]; " +
                        settings + entities);
        m_server.MovePointer(900, 5); // off the entities: what it points at has another border
        m_program = std::make_unique<Program>(m_dir, m_server.Display(),
                                              std::vector<std::string>{"scenes/a.qib"});
        ASSERT_TRUE(m_program->WaitUntilItSays("Running program..."));
        m_window = m_server.WaitForWindow();
        // The scene is there once the frame is: its middle is never the window's first black.
        ASSERT_TRUE(WaitForPicture([this] { return GetPixel(m_window.width - 1, 0).b > 200; }));
        EXPECT_EQ(std::string::npos, m_program->Err().find("evaluate")) << m_program->Err();
    }

    /// Looks again and again until it is so. @return whether it came to be
    template<typename F>
    bool WaitForPicture(F isThere)
    {
        return test::WaitFor(
            [&]
            {
                m_pixels = m_server.ReadPixels(m_window.id, m_window.width, m_window.height);
                return isThere();
            });
    }

    /// To a place in the world.
    void MovePointerTo(float x, float y)
    {
        m_server.MovePointer(int(m_window.width / 2 + x * 100), int(m_window.height / 2 - y * 100));
    }

    Color GetPixel(int x, int y) const
    {
        const unsigned char* p = m_pixels.data() + 3 * (size_t(y) * m_window.width + x);
        return {p[0], p[1], p[2]};
    }
    /// At a place in the world.
    Color At(float x, float y) const
    {
        return GetPixel(int(m_window.width / 2 + x * 100), int(m_window.height / 2 - y * 100));
    }

    static void ExpectColor(const Color& expected, const Color& found, int line)
    {
        EXPECT_TRUE(std::abs(expected.r - found.r) <= 3 && std::abs(expected.g - found.g) <= 3 &&
                    std::abs(expected.b - found.b) <= 3)
            << "line " << line << ": " << found << " instead of " << expected;
    }
    static bool IsSky(const Color& c) { return c.r == c.g && c.b == 255; }

    XServer m_server;
    WorkDir m_dir;
    std::unique_ptr<Program> m_program;
    WindowInfo m_window;
    std::vector<unsigned char> m_pixels;
};

#define EXPECT_COLOR(expected, found) ExpectColor(expected, found, __LINE__)

const char* const AmberKeys = "color = [0.9411765, 0.627451, 0.2352941, 1.0]; ";
const char* const SeaKeys = "color = [0.1803922, 0.5254902, 0.6705882, 1.0]; ";

TEST_F(EntityPictureTest, TheSkyIsHalfWayToWhiteAtTheBottom)
{
    Show("");
    EXPECT_COLOR((Color{0, 0, 255}), GetPixel(m_window.width - 1, 0));
    EXPECT_COLOR((Color{64, 64, 255}), GetPixel(5, m_window.height / 2));
    EXPECT_COLOR((Color{127, 127, 255}), GetPixel(5, m_window.height - 1));
}

// The border is 0.1 cm, 3.4 pixels, wide.
TEST_F(EntityPictureTest, ABoxHasItsColorInsideAndHalfOfItAtTheBorder)
{
    Show(std::string("Scene.addBox { size = [2.0, 1.0]; ") + AmberKeys + "}");
    EXPECT_COLOR(Amber, At(0, 0));
    EXPECT_COLOR(Amber, At(0.94f, 0.44f));
    EXPECT_COLOR(AmberBorder, At(0.98f, 0));
    EXPECT_COLOR(AmberBorder, At(0, -0.48f));
    EXPECT_TRUE(IsSky(At(1.03f, 0)));
    EXPECT_TRUE(IsSky(At(0, 0.53f)));
}

TEST_F(EntityPictureTest, ATurnedBoxIsDrawnTurned)
{
    Show(std::string("Scene.addBox { size = [2.0, 0.5]; angle = 1.5707964; ") + AmberKeys + "}");
    EXPECT_COLOR(Amber, At(0, 0.9f));
    EXPECT_TRUE(IsSky(At(0.9f, 0)));
}

TEST_F(EntityPictureTest, ACircleShowsAWedgeThatTellsItsRotation)
{
    Show(std::string("Scene.addCircle { pos = [-2.0, 0.0]; radius = 1.0; ") + AmberKeys +
         "}; Scene.addCircle { pos = [2.0, 0.0]; radius = 1.0; angle = 1.5707964; " + AmberKeys +
         "}");
    EXPECT_COLOR(AmberWedge, At(-2 + 0.6f, 0));
    EXPECT_COLOR(Amber, At(-2, 0.6f));
    EXPECT_COLOR(Amber, At(-2 - 0.6f, 0));
    EXPECT_COLOR(AmberBorder, At(-2 - 0.98f, 0));
    EXPECT_TRUE(IsSky(At(-2 - 0.75f, 0.75f)));
    EXPECT_COLOR(AmberWedge, At(2, 0.6f));
    EXPECT_COLOR(Amber, At(2 + 0.6f, 0));
}

TEST_F(EntityPictureTest, ACircleTooLargeForItsTextureLooksTheSame)
{
    // 1,200 pixels across.
    Show(std::string("Scene.addCircle { pos = [-6.0, 0.0]; radius = 6.0; angle = 1.0; ") +
         AmberKeys + "}");
    EXPECT_COLOR(Amber, At(-0.1f, 0));
    EXPECT_COLOR(AmberBorder, At(-0.02f, 0));
    EXPECT_TRUE(IsSky(At(0.04f, 0)));
    // Its wedge points away from the middle, up at 57 degrees.
    EXPECT_COLOR(AmberWedge, At(-6 + 2.0f, 3.12f));
}

TEST_F(EntityPictureTest, APolygonHasItsColorInsideAndHalfOfItAtTheBorder)
{
    Show(
        std::string("Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [0.0, 0.0], "
                    "[-1.0, 1.0]]; pos = [0.0, 0.0]; ") +
        AmberKeys + "}");
    // The points are moved so that their centroid, 2/9 below the notch, comes to the middle.
    const float up = 2.0f / 9;
    EXPECT_COLOR(Amber, At(0, -0.5f + up));
    EXPECT_COLOR(Amber, At(-0.9f, 0.5f + up));
    EXPECT_COLOR(AmberBorder, At(0, -0.98f + up));
    EXPECT_COLOR(AmberBorder, At(0.98f, 0.2f + up));
    EXPECT_TRUE(IsSky(At(0, 0.15f + up)));
    EXPECT_TRUE(IsSky(At(0, -1.05f + up)));
}

TEST_F(EntityPictureTest, APlaneIsSolidBelowWithALighterBandUnderItsEdge)
{
    Show(std::string("Scene.addPlane { ") + AmberKeys + "}");
    EXPECT_TRUE(IsSky(At(3, 0.03f)));
    EXPECT_COLOR(AmberBorder, At(3, -0.02f));
    EXPECT_COLOR((Color{244, 184, 109}), At(3, -0.1f));
    EXPECT_COLOR(Amber, At(3, -0.3f));
    EXPECT_COLOR(Amber, At(-3, -3));
}

TEST_F(EntityPictureTest, ALaterEntityCoversAnEarlierOneWhateverTheirKinds)
{
    Show(std::string("Scene.addPlane { zDepth = 0.0; ") + AmberKeys +
         "}; Scene.addBox { zDepth = 1.0; size = [2.0, 2.0]; " + SeaKeys +
         "}; Scene.addCircle { zDepth = 2.0; radius = 0.5; pos = [-0.5, 0.0]; angle = 3.0; " +
         AmberKeys +
         "}; Scene.addPolygon { zDepth = 3.0; vecs = [[-0.3, -0.3], [0.3, -0.3], [0.3, 0.3], "
         "[-0.3, 0.3]]; pos = [-0.1, 0.0]; " +
         SeaKeys + "}");
    EXPECT_COLOR(Sea, At(0, 0));
    EXPECT_COLOR(Amber, At(-0.6f, -0.25f));
    EXPECT_COLOR(Sea, At(0.8f, -0.8f));
    EXPECT_COLOR(SeaBorder, At(0.98f, 0));
    EXPECT_COLOR(Amber, At(2, -2));
}

TEST_F(EntityPictureTest, ATranslucentBodyShowsWhatIsBehindIt)
{
    const std::string glass = "color = [1.0, 0.0, 0.0, 0.5]; ";
    Show("Scene.addCircle { pos = [-2.0, 0.0]; angle = 3.1; " + glass +
             "}; Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]; "
             "pos = [2.0, 0.0]; " +
             glass + "}",
         "App.borders = false; ");
    for (float x : {-2.0f, 2.0f})
    {
        const Color c = At(x, 0.3f);
        EXPECT_NEAR(127 + 30, c.r, 6) << x;
        EXPECT_NEAR(30, c.g, 6) << x;
        EXPECT_NEAR(127, c.b, 6) << x;
    }
}

// The border lies under the inside of a box and of a polygon, and shines through; around that of a
// circle, and does not.
TEST_F(EntityPictureTest, ATranslucentBodyHasATranslucentBorder)
{
    const std::string glass = "color = [1.0, 0.0, 0.0, 0.5]; ";
    Show("Scene.addBox { pos = [-3.0, 0.0]; size = [2.0, 2.0]; " + glass +
         "}; Scene.addCircle { angle = 3.1; radius = 1.0; " + glass +
         "}; Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]; "
         "pos = [3.0, 0.0]; " +
         glass + "}");
    const auto over = [](const Color& front, const Color& back) {
        return Color{(front.r + back.r) / 2, (front.g + back.g) / 2, (front.b + back.b) / 2};
    };
    const Color sky = At(-1.5f, 0), red = {255, 0, 0}, dark = {127, 0, 0};
    for (float x : {-3.0f, 0.0f, 3.0f})
    {
        SCOPED_TRACE(x);
        EXPECT_COLOR(over(dark, sky), At(x - 0.985f, 0));
        EXPECT_COLOR(over(red, x == 0 ? sky : over(dark, sky)), At(x, 0.05f));
    }
}

TEST_F(EntityPictureTest, WhatTheMouseIsOnHasADarkGreyBorderWithBordersOffToo)
{
    Show(std::string("Scene.addBox { ") + AmberKeys + "}; Scene.addBox { pos = [2.0, 0.0]; " +
             AmberKeys + "entityID = 1 }; Scene.addGroup { name = \"selected\"; entityIDs = [1] }",
         "App.borders = false; ");
    MovePointerTo(0, 0);
    ASSERT_TRUE(WaitForPicture([this] { return At(0.48f, 0.3f).r < 100; }));
    EXPECT_COLOR((Color{51, 51, 51}), At(0.48f, 0.3f));
    EXPECT_COLOR(Amber, At(0, 0.3f));
    EXPECT_COLOR((Color{255, 255, 255}), At(2.48f, 0.3f));
    // In the selection it is a light grey, and what the mouse has left is as before.
    MovePointerTo(2, 0);
    ASSERT_TRUE(WaitForPicture([this] { return At(2.48f, 0.3f).r < 250; }));
    EXPECT_COLOR((Color{204, 204, 204}), At(2.48f, 0.3f));
    EXPECT_COLOR(Amber, At(0.48f, 0.3f));
}

TEST_F(EntityPictureTest, TheWheelZoomsAroundTheMouse)
{
    Show(std::string("Scene.addBox { size = [2.0, 2.0]; pos = [1.0, 0.0]; ") + AmberKeys + "}");
    MovePointerTo(0, 0);
    ASSERT_TRUE(WaitForPicture([this] { return At(0.02f, 0).r < 100; }));
    EXPECT_TRUE(IsSky(At(2.1f, 0)));
    m_server.PressButton(m_window.id, 4);
    // Its left side stays under the mouse, its right one goes to 2 times 2 to the power of 0.2.
    ASSERT_TRUE(WaitForPicture([this] { return !IsSky(At(2.1f, 0)); }));
    EXPECT_COLOR(Amber, At(2.24f, 0));
    EXPECT_TRUE(IsSky(At(2.34f, 0)));
    EXPECT_COLOR((Color{51, 51, 51}), At(0.02f, 0));
    EXPECT_TRUE(IsSky(At(-0.03f, 0)));
    for (int i = 0; i < 2; ++i)
        m_server.PressButton(m_window.id, 5);
    ASSERT_TRUE(WaitForPicture([this] { return IsSky(At(1.78f, 0)); }));
    EXPECT_COLOR(Amber, At(1.68f, 0));
    EXPECT_COLOR((Color{51, 51, 51}), At(0.02f, 0));
}

// What the pixels show must be what the world did, told by the scene that it leaves.
TEST_F(EntityPictureTest, TheWedgeOfACircleTurnsAsItRolls)
{
    Show(std::string("Scene.addPlane { angle = 1.2 }; Scene.addPlane { angle = 1.9415926; ") +
             AmberKeys + "}; Scene.addCircle { pos = [-2.0, 3.0]; radius = 1.0; " + SeaKeys + "}",
         "Sim.timeFactor = 1.0; Sim.rotFrictionLinear = 5.0; Sim.airFrictionLinear = 5.0; ");
    // It rolls down to the middle, and hardly moves there.
    std::vector<unsigned char> before;
    int still = 0;
    ASSERT_TRUE(WaitForPicture(
        [&]
        {
            before.resize(m_pixels.size());
            const auto moved = std::inner_product(before.begin(), before.end(), m_pixels.begin(), 0,
                                                  std::plus<>(), std::not_equal_to<>());
            before = m_pixels;
            still = moved < 200 && !IsSky(At(0, 1.9f)) ? still + 1 : 0;
            return still == 10;
        }));
    m_server.AskToClose(m_window.id);
    ASSERT_EQ(0, m_program->Wait());
    const std::string saved = m_dir.Read("scenes/_ONEXITSAVE.qib");
    const std::string circle = saved.substr(saved.find("Scene.addCircle"));
    float x = 0, y = 0, angle = 0;
    ASSERT_EQ(2, std::sscanf(circle.c_str() + circle.find("pos = "), "pos = [%f, %f]", &x, &y));
    ASSERT_EQ(1, std::sscanf(circle.c_str() + circle.find("angle = "), "angle = %f", &angle));
    ASSERT_GT(std::fabs(angle), 0.5f) << "it has not rolled";
    const auto around = [&](float turned)
    { return At(x + 0.6f * std::cos(angle + turned), y + 0.6f * std::sin(angle + turned)); };
    EXPECT_COLOR(SeaWedge, around(0));
    // The wedge is 11 degrees to each side.
    EXPECT_COLOR(SeaWedge, around(0.14f));
    EXPECT_COLOR(SeaWedge, around(-0.14f));
    EXPECT_COLOR(Sea, around(0.26f));
    EXPECT_COLOR(Sea, around(-0.26f));
    EXPECT_COLOR(Sea, around(3.14f));
}

TEST_F(EntityPictureTest, SaysWhenThereIsNoWayToDrawATranslucentPolygon)
{
    // A driver as of 2001.
    setenv("MESA_EXTENSION_OVERRIDE", "-GL_EXT_blend_color", 1);
    setenv("MESA_GL_VERSION_OVERRIDE", "1.3", 1);
    Show("Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]; "
         "color = [1.0, 0.0, 0.0, 0.5] }");
    unsetenv("MESA_EXTENSION_OVERRIDE");
    unsetenv("MESA_GL_VERSION_OVERRIDE");
    const auto count = [this]
    {
        const std::string err = m_program->Err(),
                          text = "Polygon transparency not supported by your computer";
        size_t n = 0;
        for (size_t at = err.find(text); at != std::string::npos; at = err.find(text, at + 1))
            ++n;
        return n;
    };
    EXPECT_TRUE(test::WaitFor([&] { return count() > 0; })) << m_program->Err();
    usleep(300000);
    EXPECT_EQ(1u, count());
    EXPECT_COLOR((Color{255, 0, 0}), At(0, 0)); // opaque, rather than not there
}

TEST_F(EntityPictureTest, APolygonOfNoOpacityIsNotDrawn)
{
    Show("Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]; "
         "color = [1.0, 0.0, 0.0, 0.0] }");
    EXPECT_TRUE(IsSky(At(0, 0)));
    EXPECT_TRUE(IsSky(At(0.98f, 0)));
}

TEST_F(EntityPictureTest, WithoutBordersTheColorGoesToTheEdge)
{
    Show(std::string("Scene.addBox { ") + AmberKeys + "}", "App.borders = false; ");
    EXPECT_COLOR(Amber, At(0.48f, 0));
}

TEST_F(EntityPictureTest, ASelectionHasAWhiteBorderWithBordersOffToo)
{
    Show(std::string("Scene.addBox { entityID = 1; ") + AmberKeys +
             "}; Scene.addGroup { name = \"selected\"; entityIDs = [1] }",
         "App.borders = false; ");
    EXPECT_COLOR(Amber, At(0, 0));
    EXPECT_COLOR((Color{255, 255, 255}), At(0.48f, 0.3f));
}

TEST_F(EntityPictureTest, APlaneBehindTheViewerIsNotSeen)
{
    Show(std::string("Scene.addPlane { pos = [0.0, -50.0]; angle = 1.5707964; ") + AmberKeys + "}");
    EXPECT_TRUE(IsSky(At(0, -3.5f)));
}

TEST_F(EntityPictureTest, DebugDrawingsShow)
{
    Show(std::string("Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], "
                     "[-1.0, 1.0]]; ") +
             AmberKeys + "}",
         "App.drawBodyCenters = true; App.drawVertices = true; App.drawCollisions = true; "
         "App.drawOBBs = true; App.drawBCs = true; App.drawMapOBBs = true; ");
    // The point of the body, nine tenths opaque.
    EXPECT_COLOR((Color{116, 246, 98}), At(0, 0));
    EXPECT_COLOR((Color{255, 255, 255}), At(0.99f, 0.99f));
    // The circle around, added to the sky.
    const Color circle = At(0, 1.414f);
    EXPECT_GT(circle.r, 100);
}

TEST_F(EntityPictureTest, APenLeavesATrail)
{
    // A wheel of a turn per second, so that a trail of half a second covers half of the way around.
    Show(std::string("Scene.addCircle { geomID = 1; radius = 2.0; ") + AmberKeys +
             "}; Scene.addHinge { size = 0.1; geom0 = 0; geom0pos = [0.0, 0.0]; geom1 = 1; "
             "geom1pos = [0.0, 0.0]; motor = true; motorSpeed = 6.2831853 }; Scene.addPen { "
             "color = [1.0, 0.0, 0.0, 1.0]; size = 1.0; fadeTime = 1.0e6; geom = 1; relPoint = "
             "[1.0, 0.0] }",
         "Sim.timeFactor = 1.0; ");
    const auto isTrail = [this](float x, float y)
    {
        const Color c = At(x, y);
        return c.r > 245 && c.g < 20 && c.b < 20;
    };
    EXPECT_TRUE(WaitForPicture(
        [&] {
            return isTrail(0.8f, 0) && isTrail(-0.8f, 0) && isTrail(0, 0.8f) && isTrail(0, -0.8f);
        }));
}

TEST_F(EntityPictureTest, TheCentersOfWaterShow)
{
    Show("Scene.addWater { vecs = [[2.0, 0.0]] }",
         "App.waterColor = [0.0, 0.0, 0.0, 0.0]; App.drawParticleCenters = true; ");
    EXPECT_COLOR((Color{255, 0, 0}), At(2, 0));
}
}
