// What entities look like: pixels of the real program's window.
#include "window/Program.h"
#include "window/XServer.h"

#include <gtest/gtest.h>

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

const Color Amber = {240, 160, 60}, AmberBorder = {120, 80, 30};
const Color Sea = {46, 134, 171}, SeaBorder = {23, 67, 85};

// A scene that stands still, with 100 GUI units to a world unit and the world's origin in the middle.
class EntityPictureTest : public testing::Test
{
protected:
    void Show(const std::string& entities, const std::string& settings = "")
    {
        m_dir.Write("autoexec.cfg",
                    "App.autosaveTime = 1.0e9; System.clearColor = [0.0, 0.0, 0.0, 1.0]");
        m_dir.Write("scenes/a.qib",
                    "FileInfo.version = 2; Sim.timeFactor = 0.0; Scene.Camera.pan = [0.0, 0.0]; "
                    "Scene.Camera.zoom = 100.0; App.Background.skyColor = [0.0, 0.0, 1.0, 1.0]; " +
                        settings + entities);
        m_server.MovePointer(900, 5); // off the entities: what it points at has another border
        m_program = std::make_unique<Program>(m_dir, m_server.Display(),
                                              std::vector<std::string>{"scenes/a.qib"});
        ASSERT_TRUE(m_program->WaitUntilItSays("Running program..."));
        m_window = m_server.WaitForWindow();
        // The scene is there once the frame is: its middle is never the window's first black.
        ASSERT_TRUE(test::WaitFor(
            [this]
            {
                m_pixels = m_server.ReadPixels(m_window.id, m_window.width, m_window.height);
                return GetPixel(m_window.width - 1, 0).b > 200;
            }));
        EXPECT_EQ(std::string::npos, m_program->Err().find("evaluate")) << m_program->Err();
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
    EXPECT_COLOR(AmberBorder, At(-2 + 0.6f, 0));
    EXPECT_COLOR(Amber, At(-2, 0.6f));
    EXPECT_COLOR(Amber, At(-2 - 0.6f, 0));
    EXPECT_COLOR(AmberBorder, At(-2 - 0.98f, 0));
    EXPECT_TRUE(IsSky(At(-2 - 0.75f, 0.75f)));
    EXPECT_COLOR(AmberBorder, At(2, 0.6f));
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
    EXPECT_COLOR(AmberBorder, At(-6 + 2.0f, 3.12f));
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
}
