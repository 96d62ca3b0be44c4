// What bodies look like with shaders and without, by the pixels of a real OpenGL.
#include "app/Group.h"
#include "app/entities/GeomEntity.h"
#include "core/ResourceManager.h"
#include "math/OBB2D.h"
#include "physics/Polygon.h"
#include "window/EntityPictureStage.h"

#include <boost/filesystem.hpp>

#include <cmath>

using math::Vec2;
using test::Color;

namespace
{
// A shape of each kind in the middle, with its right edge at (edge, 0).
const struct
{
    const char* name;
    std::string command;
    float edge;
} Kinds[] = {
    {"box", "Scene.addBox { size = [2.0, 2.0]; ", 1},
    {"circle", "Scene.addCircle { radius = 1.0; angle = 3.1; ", 1},
    {"polygon",
     "Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]]; pos = [0.0, "
     "0.0]; ",
     1},
    {"plane", "Scene.addPlane { pos = [1.0, 0.0]; ", 1},
};

class EntityPictureShaderTest : public test::EntityPictureStage
{
protected:
    /// How many pixels of that row show neither the one nor the other color.
    int CountBetween(int y, const Color& a, const Color& b) const
    {
        int count = 0;
        for (int x = 0; x < Width; ++x)
        {
            const Color c = GetColor(x, y);
            count += !IsNear(a, c) && !IsNear(b, c);
        }
        return count;
    }
    /// Whether a pixel about that place shows something.
    bool IsSeen(float x, float y) const
    {
        const float pixel = 1 / TheScene()->GetCamera()->GetZoom();
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx)
                if (!IsNear(Backdrop, At(x + float(dx) * pixel, y + float(dy) * pixel), 20))
                    return true;
        return false;
    }
    static void Select(size_t i)
    {
        const app::GroupPtr group = QUIB_NEW app::Group("selected");
        group->Add(Entity(i));
        TheScene()->SetSelection(group);
    }
    static Color Mix(const Color& a, const Color& b, float t)
    {
        const auto mix = [t](int x, int y)
        { return int(std::lround(float(x) + t * float(y - x))); };
        return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
    }
};
}

TEST_F(EntityPictureShaderTest, EachKindHasItsColorInsideAndHalfOfItAtTheBorder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const auto& kind : Kinds)
            {
                SCOPED_TRACE(testing::Message() << kind.name << (shaders ? " with shader" : ""));
                UseShaders(shaders);
                const bool isInk = shaders && std::string(kind.name) == "polygon";
                // Under the edge of a plane there is its lighter band.
                const bool isPlane = std::string(kind.name) == "plane";
                Lay(kind.command + AmberKeys + "}");
                EXPECT_COLOR(Amber, At(0, 0.3f));
                EXPECT_COLOR(isPlane ? Mix(Amber, {255, 255, 255}, 0.25f) : Amber,
                             At(kind.edge - 0.08f, 0.1f));
                // The border is 3.4 pixels wide. Ink is about 4, and runs out.
                if (isInk)
                {
                    const Color c = At(kind.edge - 0.005f, 0), d = At(kind.edge - 0.02f, 0);
                    EXPECT_NEAR(134, c.r, 30);
                    EXPECT_NEAR(180, d.r, 30);
                    EXPECT_GT(d.r, c.r + 20);
                }
                else
                    EXPECT_COLOR(AmberBorder, At(kind.edge - 0.015f, 0));
                EXPECT_COLOR(Backdrop, At(kind.edge + 0.025f, 0));
                EXPECT_COLOR(Backdrop, At(kind.edge + 0.7f, 0.7f));

                Run("App.borders = false");
                Draw();
                EXPECT_COLOR(Amber, At(kind.edge - 0.015f, 0));
                Run("App.borders = true");
            }
    });
}

TEST_F(EntityPictureShaderTest, WhatIsPointedAtOrSelectedHasAnotherBorder)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const Color colors[2][2] = {{AmberBorder, {51, 51, 51}},
                                    {{255, 255, 255}, {204, 204, 204}}};
        for (const bool shaders : {false, true})
            for (const auto& kind : Kinds)
            {
                UseShaders(shaders);
                const bool isInk = shaders && std::string(kind.name) == "polygon";
                Lay(kind.command + AmberKeys + "}");
                for (int selected = 0; selected < 2; ++selected)
                    for (int pointedAt = 0; pointedAt < 2; ++pointedAt)
                    {
                        SCOPED_TRACE(testing::Message()
                                     << kind.name << (shaders ? " with shader" : "")
                                     << (selected ? " selected" : "") << (pointedAt ? " hot" : ""));
                        Run(selected || pointedAt ? "App.borders = false" : "App.borders = true");
                        if (selected)
                            Select(0);
                        Entity(0)->SetMouseOver(pointedAt);
                        Draw();
                        const Color expected = colors[selected][pointedAt];
                        if (isInk)
                            EXPECT_TRUE(
                                IsNear(Mix(expected, Amber, 0.12f), At(kind.edge - 0.005f, 0), 20))
                                << At(kind.edge - 0.005f, 0);
                        else
                            EXPECT_COLOR(expected, At(kind.edge - 0.015f, 0));
                        EXPECT_COLOR(Amber, At(0, 0.3f));
                    }
            }
    });
}

TEST_F(EntityPictureShaderTest, WithShadersTheBorderOfGlassDoesNotShineThroughItsInside)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const auto& kind : Kinds)
        {
            SCOPED_TRACE(kind.name);
            Lay(kind.command + GlassKeys + "}");
            EXPECT_COLOR((Color{128, 0, 128}), At(0, 0.3f));
            const Color border = At(kind.edge - 0.015f, 0);
            EXPECT_NEAR(128, border.b, 3);
            const int tolerance = std::string(kind.name) == "polygon" ? 40 : 3; // its ink runs out
            EXPECT_NEAR(64, border.r, tolerance);
            EXPECT_COLOR(Backdrop, At(kind.edge + 0.025f, 0));
        }
    });
}

TEST_F(EntityPictureShaderTest, TheWedgeOfACircleTurnsWithItsBody)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const bool isGlass : {false, true})
                for (const float angle : {0.0f, 1.0f, -2.5f})
                {
                    SCOPED_TRACE(testing::Message() << shaders << isGlass << angle);
                    UseShaders(shaders);
                    Lay("Scene.addCircle { radius = 1.0; angle = " + std::to_string(angle) + "; " +
                        (isGlass ? GlassKeys : AmberKeys) + "}");
                    const auto around = [&](float turned) {
                        return At(0.8f * std::cos(angle + turned), 0.8f * std::sin(angle + turned));
                    };
                    const Color inside = isGlass ? Color{128, 0, 128} : Amber;
                    const Color wedge = isGlass ? Color{96, 0, 128} : AmberWedge;
                    for (const float turned : {-0.15f, 0.0f, 0.15f})
                        EXPECT_COLOR(wedge, around(turned)) << turned;
                    for (const float turned : {-0.25f, 0.25f, 1.5f, 3.1f})
                        EXPECT_COLOR(inside, around(turned)) << turned;
                }
    });
}

TEST_F(EntityPictureShaderTest, ACircleTooLargeForItsTextureKeepsItsLook)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const float radius : {5.0f, 5.15f}) // 1000 and 1030 pixels across
            {
                SCOPED_TRACE(testing::Message() << shaders << ", " << radius);
                UseShaders(shaders);
                Lay("Scene.addCircle { pos = [" + std::to_string(-radius) +
                    ", 0.0]; angle = 0.22; radius = " + std::to_string(radius) + "; " + AmberKeys +
                    "}");
                const auto expectLook = [&](const Color& border)
                {
                    EXPECT_COLOR(Amber, At(-0.1f, 0));
                    EXPECT_COLOR(border, At(-0.015f, 0));
                    EXPECT_COLOR(Backdrop, At(0.025f, 0));
                    for (const float turned : {-0.17f, 0.0f, 0.17f})
                        EXPECT_COLOR(AmberWedge, At(-radius + 3.8f * std::cos(0.22f + turned),
                                                    3.8f * std::sin(0.22f + turned)));
                    EXPECT_COLOR(Amber, At(-radius + 4 * std::cos(-0.05f), 4 * std::sin(-0.05f)));
                };
                expectLook(AmberBorder);
                Entity(0)->SetMouseOver(true);
                Draw();
                expectLook({51, 51, 51});
                Entity(0)->SetMouseOver(false);
                Select(0);
                Draw();
                expectLook({255, 255, 255});
            }
    });
}

TEST_F(EntityPictureShaderTest, ShadersSmoothTheEdges)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const std::string turned[] = {"Scene.addBox { size = [2.0, 2.0]; angle = 0.3; ",
                                      "Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [1.3, "
                                      "1.0], [-1.3, 1.0]]; pos = [0.0, 0.0]; ",
                                      "Scene.addPlane { angle = 0.3; pos = [0.5, 0.0]; "};
        Run("App.borders = false");
        for (const std::string& command : turned)
            for (const bool shaders : {false, true})
            {
                SCOPED_TRACE(testing::Message() << shaders << ": " << command);
                UseShaders(shaders);
                Lay(command + AmberKeys + "}");
                int count = 0;
                for (int y = Height / 2 - 20; y < Height / 2 + 20; ++y)
                    count += CountBetween(y, Amber, Backdrop);
                if (shaders)
                    EXPECT_GT(count, 20);
                else
                    EXPECT_EQ(0, count);
            }
    });
}

TEST_F(EntityPictureShaderTest, ASmallPolygonIsMarkedAsALargeOneIs)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        // 24 pixels across, and of other shapes as small.
        const std::string commands[] = {
            "Scene.addPolygon { vecs = [[-0.12, -0.12], [0.12, -0.12], [0.12, 0.12], [-0.12, "
            "0.12]]; ",
            "Scene.addPolygon { vecs = [[-0.12, -0.06], [0.12, -0.06], [0.12, 0.06], [-0.12, "
            "0.06]]; "};
        for (const bool shaders : {false, true})
            for (const std::string& command : commands)
            {
                SCOPED_TRACE(testing::Message() << shaders << ": " << command);
                UseShaders(shaders);
                Lay(command + "pos = [0.0, 0.0]; " + AmberKeys + "}");
                const auto expectBorder = [&](const Color& border)
                {
                    const Color c = At(0.115f, 0);
                    if (shaders) // its ink runs out
                        EXPECT_TRUE(IsNear(Mix(border, Amber, 0.15f), c, 20)) << c;
                    else
                        EXPECT_COLOR(border, c);
                    EXPECT_TRUE(IsNear(Amber, At(0, 0), 10)) << At(0, 0);
                    EXPECT_COLOR(Backdrop, At(0.135f, 0));
                };
                expectBorder(AmberBorder);
                Entity(0)->SetMouseOver(true);
                Draw();
                expectBorder({51, 51, 51});
                Entity(0)->SetMouseOver(false);
                Select(0);
                Draw();
                expectBorder({255, 255, 255});
                // A clone that shares what was made for it.
                TheScene()->AddEntity(Entity(0)->AsGeomEntity()->Clone());
                TheScene()->RemoveEntity(Entity(0));
                Draw();
                expectBorder(AmberBorder);
            }
    });
}

TEST_F(EntityPictureShaderTest, AThinPolygonKeepsItsColorAlongTheMiddle)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const float half : {0.02f, 0.03f, 0.045f, 0.07f})
            {
                SCOPED_TRACE(testing::Message() << shaders << ", " << half);
                UseShaders(shaders);
                const std::string top = std::to_string(half), bottom = std::to_string(-half);
                Lay("Scene.addPolygon { angle = 0.2; pos = [0.0, 0.0]; vecs = [[-1.5, " + bottom +
                    "], [1.5, " + bottom + "], [1.5, " + top + "], [-1.5, " + top + "]]; " +
                    AmberKeys + "}");
                int dark = 0;
                for (float along = -1.4f; along < 1.4f; along += 0.01f)
                    dark += At(along * std::cos(0.2f), along * std::sin(0.2f)).r < 190;
                EXPECT_EQ(0, dark);
                // And the border is there.
                const float out = half - 0.009f, c = std::cos(0.2f), s = std::sin(0.2f);
                EXPECT_LT(At(-s * out, c * out).r, 200);
            }
    });
}

TEST_F(EntityPictureShaderTest, TheSmallestAreSeenFromFarAwayWhereverTheyLie)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const std::string commands[] = {
            "Scene.addBox { size = [1.0, 1.0]; ",
            "Scene.addBox { size = [0.4, 0.4]; ",
            "Scene.addBox { size = [40.0, 0.1]; angle = 0.1; ",
            "Scene.addCircle { radius = 0.5; ",
            "Scene.addCircle { radius = 0.2; ",
            "Scene.addPolygon { vecs = [[-0.5, -0.5], [0.5, -0.5], [0.5, 0.5], [-0.5, 0.5]]; ",
            "Scene.addPolygon { vecs = [[-0.3, -0.3], [0.3, -0.3], [0.0, 0.5]]; ",
        };
        for (const bool shaders : {false, true})
        {
            UseShaders(shaders);
            std::string scene;
            int row = 0;
            for (const std::string& command : commands)
            {
                for (int i = 0; i < 7; ++i)
                    scene += command + "pos = [" + std::to_string(-120.0f + 40.13f * float(i)) +
                             ", " + std::to_string(-60.0f + 20.1f * float(row)) + "]; " +
                             AmberKeys + "}; ";
                ++row;
            }
            Lay(scene, 1.5f);
            for (int y = 0; y < row; ++y)
                for (int i = 0; i < 7; ++i)
                    EXPECT_TRUE(IsSeen(-120.0f + 40.13f * float(i), -60.0f + 20.1f * float(y)))
                        << commands[y] << ", " << i << (shaders ? " with shader" : "");
        }
    });
}

TEST_F(EntityPictureShaderTest, TheBorderIsAsWideOnTheScreenFromNearby)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const float pixel = 1.0f / 3000;
        for (const bool shaders : {false, true})
            for (const auto& kind : Kinds)
            {
                // The middle of the right edge, to which a polygon's map is a few pixels exact.
                SCOPED_TRACE(testing::Message() << kind.name << (shaders ? " with shader" : ""));
                const bool isPolygon = std::string(kind.name) == "polygon";
                UseShaders(shaders);
                Lay(kind.command + AmberKeys + "}", 3000);
                TheScene()->GetCamera()->SetPan(Vec2(kind.edge, 0));
                Draw();
                EXPECT_COLOR(Backdrop, At(kind.edge + 8 * pixel, 0));
                EXPECT_TRUE(
                    IsNear(AmberBorder, At(kind.edge - 1.5f * pixel, 0), isPolygon ? 80 : 3))
                    << At(kind.edge - 1.5f * pixel, 0);
                EXPECT_TRUE(IsNear(Amber, At(kind.edge - 190 * pixel, 0), isPolygon ? 8 : 3))
                    << At(kind.edge - 190 * pixel, 0);
            }
    });
}

TEST_F(EntityPictureShaderTest, ALaterEntityCoversAnEarlierOneWhateverTheirKinds)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const auto& lower : Kinds)
                for (const auto& upper : Kinds)
                {
                    SCOPED_TRACE(testing::Message() << upper.name << " on " << lower.name
                                                    << (shaders ? " with shaders" : ""));
                    UseShaders(shaders);
                    Lay(lower.command + "zDepth = 0.0; " + SeaKeys + "}; " + upper.command +
                        "zDepth = 1.0; " + AmberKeys + "}");
                    EXPECT_COLOR(Amber, At(-0.3f, 0.3f));
                }
    });
}

TEST_F(EntityPictureShaderTest, ARebuiltShaderDrawsTheSamePicture)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lay(std::string("Scene.addPlane { pos = [0.0, -1.0]; angle = 1.7; ") + AmberKeys +
            "}; Scene.addBox { pos = [-1.0, 0.0]; " + SeaKeys + "}; Scene.addBox { angle = 0.5; " +
            GlassKeys + "}; Scene.addCircle { radius = 0.5; pos = [1.0, 0.0]; " + GlassKeys +
            "}; Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]]; " + SeaKeys + "}");
        const std::string before = GetPicture();
        Run("Resources.loadAll");
        const auto vram = core::ResourceManager::GetInstancePtr()->GetVRAMUsage();
        for (const char* command :
             {"Resources.reloadShaders", "Resources.reloadAll", "Resources.unloadAll",
              "Resources.shaders = false; Resources.shaders = true"})
        {
            Run(command);
            Draw();
            EXPECT_TRUE(before == GetPicture()) << command;
            Run("Resources.loadAll"); // what is not in the picture
            EXPECT_EQ(vram, core::ResourceManager::GetInstancePtr()->GetVRAMUsage()) << command;
        }
        core::WindowParams params;
        params.size = math::TVector2<int>(Width, Height);
        core::Subsystem::GetInstancePtr()->CreateWindow(params);
        Draw();
        EXPECT_TRUE(before == GetPicture()) << "a new window";
    });
}

TEST_F(EntityPictureShaderTest, WithoutTheFileOfAShaderItsKindIsDrawnAsWithoutShaders)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        namespace fs = boost::filesystem;
        UnlinkData("shaders");
        const fs::path shaders = m_dir / "data/shaders/default";
        fs::create_directories(shaders);
        fs::copy_file(QUIB_SOURCE_DIR "/data/shaders/default/box.vert", shaders / "box.vert");
        fs::copy_file(QUIB_SOURCE_DIR "/data/shaders/default/box.frag", shaders / "box.frag");
        // A broken one is as good as none.
        test::Spit((shaders / "circle.vert").string(), "void main() {");
        test::Spit((shaders / "circle.frag").string(), "void main() {}");
        Start();
        for (const auto& kind : Kinds)
        {
            SCOPED_TRACE(kind.name);
            UseShaders(false);
            Lay(kind.command + GlassKeys + "}");
            const std::string without = GetPicture();
            UseShaders(true);
            Draw();
            const bool isBox = std::string(kind.name) == "box";
            EXPECT_NE(isBox, without == GetPicture());
        }
    });
}

TEST_F(EntityPictureShaderTest, WithoutMultitexturingPolygonsAreDrawnAsWithoutShaders)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const auto& kind : Kinds)
        {
            SCOPED_TRACE(kind.name);
            const bool isPolygon = std::string(kind.name) == "polygon";
            UseShaders(false);
            Lay(kind.command + GlassKeys + "}");
            const std::string without = GetPicture();
            UseShaders(true);
            __GLEW_ARB_multitexture = GL_FALSE;
            Draw();
            __GLEW_ARB_multitexture = GL_TRUE;
            EXPECT_EQ(isPolygon, without == GetPicture());
        }
    });
}

TEST_F(EntityPictureShaderTest, APlaneThatIsShownElsewhereFillsTheScreenBelowItsEdge)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        using math::Mat3;
        for (const bool shaders : {false, true})
        {
            UseShaders(shaders);
            Lay(std::string("Scene.addPlane { angle = 1.5707964; ") + AmberKeys + "}");
            Entity(0)->SetDrawTransform(Mat3::Translation2D(Vec2(0, -1)) *
                                        Mat3::Scale2D(Vec2(0.2f, 0.2f)));
            Draw();
            for (const float x : {-1.95f, 0.0f, 1.95f})
            {
                SCOPED_TRACE(testing::Message() << shaders << ", " << x);
                EXPECT_COLOR(Backdrop, At(x, -0.97f));
                EXPECT_FALSE(IsNear(Backdrop, At(x, -1.02f)));
                EXPECT_COLOR(Amber, At(x, -1.45f));
            }
            Entity(0)->SetDrawTransform(Mat3());
        }
    });
}

TEST_F(EntityPictureShaderTest, TheBoxesAroundAPolygonShow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        UseShaders(false);
        Lay(std::string("Scene.addPolygon { vecs = [[-1.0, -0.7], [1.0, -0.3], [0.2, 0.9]]; pos = "
                        "[0.0, 0.0]; angle = 0.2; ") +
            AmberKeys + "}");
        const auto& polygon =
            static_cast<const physics::Polygon&>(*Entity(0)->AsGeomEntity()->GetGeom());
        const auto expectBox = [&](const math::OBB2D& box)
        {
            Vec2 corners[4];
            box.CalcCorners(corners);
            int missing = 0;
            for (int i = 0; i < 4; ++i)
                for (float t = 0.02f; t < 1; t += 0.02f)
                {
                    const Vec2 p = TransformCoordinate(
                        polygon.GetPose(), math::Lerp(corners[i], corners[(i + 1) % 4], t));
                    if (polygon.DistanceWorld(p) < 0.05f)
                        continue;
                    // A grey that is added to the sky, and a pixel wide.
                    bool isThere = false;
                    for (const Vec2& d : {Vec2(0, 0), Vec2(0.01f, 0), Vec2(-0.01f, 0),
                                          Vec2(0, 0.01f), Vec2(0, -0.01f)})
                        isThere |= IsNear({128, 128, 255}, At(p.x + d.x, p.y + d.y));
                    missing += !isThere;
                }
            EXPECT_EQ(0, missing);
        };
        const auto countGrey = [this]
        {
            int count = 0;
            for (int y = 0; y < Height; ++y)
                for (int x = 0; x < Width; ++x)
                    count += IsNear({128, 128, 255}, GetColor(x, y));
            return count;
        };
        EXPECT_EQ(0, countGrey());
        Run("App.drawOBBs = true");
        Draw();
        expectBox(polygon.GetOBB());
        const int count = countGrey();
        EXPECT_GT(3000, count) << "lines, and no areas";
        Run("App.drawOBBs = false; App.drawMapOBBs = true");
        Draw();
        expectBox(polygon.GetMapOBB());
        EXPECT_LT(count, countGrey())
            << "the map goes all around, where the box touches the polygon";
        Run("App.drawMapOBBs = false");
        Draw();
        EXPECT_EQ(0, countGrey());
    });
}

TEST_F(EntityPictureShaderTest, ACloneOfAPolygonSharesItsTexture)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lay(Kinds[2].command + AmberKeys + "}");
        const auto vram = core::ResourceManager::GetInstancePtr()->GetVRAMUsage();
        const app::GeomEntityPtr clone = Entity(0)->AsGeomEntity()->Clone();
        const app::GeomEntityPtr larger = Entity(0)->AsGeomEntity()->ScaledClone(Vec2(0.5f, 0.5f));
        TheScene()->RemoveEntity(Entity(0));
        TheScene()->AddEntity(clone);
        Draw();
        EXPECT_COLOR(Amber, At(0, 0.3f));
        EXPECT_COLOR(Backdrop, At(1.025f, 0));
        EXPECT_EQ(vram, core::ResourceManager::GetInstancePtr()->GetVRAMUsage());
        // Another shape has another.
        TheScene()->AddEntity(larger);
        Draw();
        EXPECT_LT(vram, core::ResourceManager::GetInstancePtr()->GetVRAMUsage());
    });
}

TEST_F(EntityPictureShaderTest, ForTheWaterEachKindIsSolidBlack)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
            for (const auto& kind : Kinds)
            {
                SCOPED_TRACE(kind.name);
                UseShaders(shaders);
                Lay(kind.command + GlassKeys + "angle = 0.5; }");
                glClearColor(1, 1, 1, 1);
                glClear(GL_COLOR_BUFFER_BIT);
                glMatrixMode(GL_PROJECTION);
                glLoadIdentity();
                glOrtho(0, Width, Height, 0, -1, 1);
                glMatrixMode(GL_MODELVIEW);
                glLoadIdentity();
                math::Mat4FromMat2D(TheScene()->GetCamera()->WorldToGUI()).MultToGL();
                glEnable(GL_TEXTURE_2D);
                glDisable(GL_DEPTH_TEST);
                glDisable(GL_BLEND);
                // Nobody applies it around this.
                Entity(0)->SetDrawTransform(math::Mat3::Scale2D(Vec2(2, 2)));
                Entity(0)->AsGeomEntity()->DrawBlack();
                EXPECT_FALSE(glIsEnabled(GL_BLEND));
                EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
                EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
                glReadPixels(0, 0, Width, Height, GL_RGBA, GL_UNSIGNED_BYTE, m_pixels.data());
                EXPECT_COLOR((Color{0, 0, 0}), At(0, 0.3f));
                if (std::string(kind.name) == "plane")
                {
                    const Vec2 corner = TheScene()->GetCamera()->GUIToWorld(Vec2(3, Height - 3));
                    EXPECT_COLOR((Color{0, 0, 0}), At(corner.x, corner.y));
                }
                const float c = std::cos(0.5f), s = std::sin(0.5f);
                const bool isPlane = std::string(kind.name) == "plane";
                const Vec2 foot = isPlane ? Vec2(1, 0) : Vec2();
                const float edge = isPlane ? 0 : 1;
                EXPECT_COLOR((Color{0, 0, 0}),
                             At(foot.x + c * (edge - 0.03f), foot.y + s * (edge - 0.03f)));
                EXPECT_COLOR((Color{255, 255, 255}),
                             At(foot.x + c * (edge + 0.03f), foot.y + s * (edge + 0.03f)));
            }
    });
}

TEST_F(EntityPictureShaderTest, EachLeavesGLAsItFoundIt)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        std::vector<std::string> commands = {
            "Scene.addHinge { geom0 = 0; geom0pos = [0.0, 0.0]; geom1 = 1; geom1pos = [0.0, 0.0]; ",
            "Scene.addSpring { geom0 = 0; geom0pos = [0.0, 0.0]; geom1 = 1; geom1pos = [0.0, "
            "0.0]; ",
            "Scene.addPen { geom = 1; relPoint = [0.0, 0.0]; "};
        for (const auto& kind : Kinds)
            commands.push_back(kind.command);
        for (const bool shaders : {false, true})
            for (const std::string& command : commands)
                for (const char* color : {AmberKeys, GlassKeys})
                {
                    SCOPED_TRACE(testing::Message() << command << shaders << color);
                    UseShaders(shaders);
                    Lay("Scene.addBox { geomID = 1; zDepth = 0.0 }; " + command + color +
                        "zDepth = 1.0 }");
                    ASSERT_EQ(2u, TheScene()->GetEntities().size());
                    glMatrixMode(GL_MODELVIEW);
                    glEnable(GL_TEXTURE_2D);
                    glEnable(GL_BLEND);
                    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
                    glEnable(GL_DEPTH_TEST);
                    glDepthFunc(GL_LESS);
                    Entity(1)->SetMouseOver(true);
                    Entity(1)->Draw();
                    const auto get = [](GLenum what)
                    {
                        GLint value = -1;
                        glGetIntegerv(what, &value);
                        return value;
                    };
                    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
                    EXPECT_TRUE(glIsEnabled(GL_BLEND));
                    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
                    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
                    EXPECT_EQ(GL_LESS, get(GL_DEPTH_FUNC));
                    EXPECT_EQ(GL_SRC_ALPHA, get(GL_BLEND_SRC));
                    EXPECT_EQ(GL_ONE_MINUS_SRC_ALPHA, get(GL_BLEND_DST));
                    EXPECT_EQ(0, get(GL_TEXTURE_BINDING_2D));
                    EXPECT_EQ(GL_TEXTURE0, get(GL_ACTIVE_TEXTURE));
                    EXPECT_EQ(0, get(GL_CURRENT_PROGRAM));
                    EXPECT_EQ(1, get(GL_MODELVIEW_STACK_DEPTH));
                }
    });
}
