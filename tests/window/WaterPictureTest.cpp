// What water looks like.
#include "window/PictureFixture.h"

#include "core/ResourceManager.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "rendering/TextureManager.h"

using math::Vec2;
using test::Pixel;

namespace
{
class WaterPictureTest : public test::PictureFixture
{
protected:
    // Opaque red, and blobs that reach 100 pixels. The field of a drop alone falls below a half at 34
    // pixels, and below nine tenths at 26.
    void StartWithOneDrop(int depth = 32)
    {
        Start(300, 200, depth);
        Run("SPH.radius = 0.25; App.waterColor = [1.0, 0.0, 0.0, 1.0]; "
            "Scene.addWater { vecs = [[0.0, 0.0]] }");
    }
    static bool IsWhite(const Pixel& p) { return IsNear(p, 255, 255, 255); }
    static bool IsReddish(const Pixel& p) { return p.r > 100 && p.g < 90 && p.b < 90; }

    /// A pool from -1.2 to 1.2 in both axes, where red is deep.
    static void FillPool()
    {
        std::string vecs;
        for (int x = -10; x <= 10; ++x)
            for (int y = -10; y <= 10; ++y)
                vecs += (vecs.empty() ? "[" : ", [") + std::to_string(x * 0.12) + ", " +
                        std::to_string(y * 0.12) + "]";
        Run("SPH.radius = 0.1; App.waterColor = [1.0, 0.0, 0.0, 1.0]; Scene.addWater { vecs = [" +
            vecs + "] }");
    }
};

TEST_F(WaterPictureTest, WaterIsWhereTheFieldExceedsTheCutoff)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Draw();
        EXPECT_TRUE(IsReddish(At(0, 0))) << At(0, 0);
        EXPECT_TRUE(IsReddish(At(0.15f, 0.1f))) << At(0.15f, 0.1f);
        EXPECT_FALSE(IsWhite(At(0, 0.3f))) << At(0, 0.3f);
        for (const Vec2& dry : {Vec2(0.4f, 0), Vec2(0, -0.4f), Vec2(0.9f, 0), Vec2(1.4f, 0.9f)})
            EXPECT_TRUE(IsWhite(At(dry.x, dry.y))) << dry << At(dry.x, dry.y);
        Run("App.metaCutoff = 0.9");
        Draw();
        EXPECT_TRUE(IsReddish(At(0, 0)));
        EXPECT_TRUE(IsWhite(At(0, 0.3f))) << At(0, 0.3f);
        Run("App.metaCutoff = 0.2");
        Draw();
        EXPECT_FALSE(IsWhite(At(0.4f, 0))) << At(0.4f, 0);
        // Its alpha is how much of it covers the sky.
        Run("App.metaCutoff = 0.5; App.waterColor = [1.0, 0.0, 0.0, 0.0]");
        Draw();
        EXPECT_TRUE(IsWhite(At(0, 0))) << At(0, 0);
    });
}

TEST_F(WaterPictureTest, WithoutShadersItHasAHardEdgeAndIsOpaque)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Run("Resources.shaders = false");
        Draw();
        EXPECT_PIXEL(255, 0, 0, At(0, 0));
        EXPECT_TRUE(IsNear(At(0.3f, 0), 165, 0, 0, 12)) << At(0.3f, 0);
        EXPECT_TRUE(IsWhite(At(0.4f, 0))) << At(0.4f, 0);
        // Alpha counts for the threshold, and for nothing else.
        Run("App.waterColor = [1.0, 0.0, 0.0, 0.45]");
        Draw();
        EXPECT_TRUE(IsWhite(At(0, 0))) << At(0, 0);
        Run("App.metaCutoff = 0.4");
        Draw();
        EXPECT_PIXEL(255, 0, 0, At(0, 0));
        EXPECT_TRUE(IsWhite(At(0.3f, 0))) << At(0.3f, 0);
    });
}

TEST_F(WaterPictureTest, WithoutItsShaderItIsDrawnAsWithoutShadersAndTheLogTells)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        UnlinkData("shaders");
        test::LogCapture log;
        StartWithOneDrop();
        EXPECT_TRUE(log.Has("water.")) << log.Text();
        Draw();
        EXPECT_PIXEL(255, 0, 0, At(0, 0));
        EXPECT_TRUE(IsNear(At(0.3f, 0), 165, 0, 0, 12)) << At(0.3f, 0);
        EXPECT_TRUE(IsWhite(At(0.4f, 0)));
    });
}

TEST_F(WaterPictureTest, WithoutAnAlphaChannelTheFieldIsLostButForTheShader)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop(24);
        GLint bits = -1;
        glGetIntegerv(GL_ALPHA_BITS, &bits);
        ASSERT_EQ(0, bits);
        Draw();
        EXPECT_TRUE(IsReddish(At(0, 0))) << At(0, 0);
        EXPECT_TRUE(IsWhite(At(0.9f, 0))) << At(0.9f, 0);
        Run("Resources.shaders = false");
        Draw();
        for (const Vec2& place : {Vec2(0, 0), Vec2(0.4f, 0), Vec2(0.9f, 0)})
            EXPECT_TRUE(IsWhite(At(place.x, place.y))) << place << At(place.x, place.y);
        Run("App.simpleWater = true");
        Draw();
        EXPECT_FALSE(IsWhite(At(0, 0))) << "sprites need none";
    });
}

TEST_F(WaterPictureTest, AtACutoffOfNothingThereIsNoneWhereNoDropIs)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Run("App.metaCutoff = 0.0");
        for (const char* shaders : {"true", "false"})
        {
            Run(util::String("Resources.shaders = ") + shaders);
            Draw();
            EXPECT_FALSE(IsWhite(At(0.6f, 0))) << shaders;
            EXPECT_TRUE(IsWhite(At(1.2f, 0))) << shaders << At(1.2f, 0);
            EXPECT_TRUE(IsWhite(At(0.95f, 0.9f))) << shaders << " within the blob's square";
        }
    });
}

TEST_F(WaterPictureTest, SimpleWaterIsASpriteForEachDrop)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Run("App.simpleWater = true; System.clearColor = [0.0, 0.0, 0.0, 0.0]");
        Draw();
        EXPECT_GT(At(0, 0).r, 200);
        EXPECT_LT(At(0, 0).g, 130);
        // 100 pixels wide, and round.
        EXPECT_TRUE(IsWhite(At(0.52f, 0)));
        EXPECT_TRUE(IsWhite(At(0.45f, 0.45f)));
        const std::string picture = GetPicture();
        Run("App.metaCutoff = 0.99; App.waterFanceyFactor = 1000.0; Resources.reloadTextures");
        Draw();
        EXPECT_TRUE(picture == GetPicture());
        // The field is not built: the frame is not cleared either.
        Run("App.Background.skyColor = [1.0, 1.0, 1.0, 0.0]");
        Draw();
        EXPECT_PIXEL(255, 0, 255, At(1, 0));
    });
}

TEST_F(WaterPictureTest, TheFrameIsClearedToBlackWhereThereIsAnyWater)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run("App.Background.skyColor = [1.0, 1.0, 1.0, 0.0]");
        Draw();
        EXPECT_PIXEL(255, 0, 255, At(1, 0));
        // Kept: not to System.clearColor, and wherever the water is.
        Run("System.clearColor = [0.0, 1.0, 0.0, 1.0]; Scene.addWater { vecs = [[50.0, 50.0]] }");
        Draw();
        EXPECT_PIXEL(0, 0, 0, At(1, 0));
        EXPECT_EQ(0, At(1, 0).a);
    });
}

TEST_F(WaterPictureTest, ItLiesOverTheBackgroundAndUnderTheEntities)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        FillPool();
        Run("Scene.addBox { size = [0.4, 0.4]; color = [0.0, 1.0, 0.0, 1.0] }; "
            "Scene.addBox { pos = [0.7, 0.0]; size = [0.4, 0.4]; color = [0.0, 0.0, 1.0, 0.5] }; "
            "Scene.addCircle { pos = [-0.7, 0.0]; angle = 3.0; radius = 0.2; "
            "color = [0.0, 0.0, 1.0, 0.5] }; "
            "Scene.addPolygon { pos = [0.0, 0.65]; vecs = [[-0.2, -0.2], [0.2, -0.2], [0.2, 0.2], "
            "[-0.2, 0.2]]; color = [0.0, 0.0, 1.0, 0.5] }; "
            "Scene.addPlane { pos = [0.0, -0.9]; angle = 1.5707964; color = [0.0, 1.0, 0.0, 1.0] "
            "}; "
            "Scene.addPlane { pos = [0.0, 0.9]; angle = -1.5707964; color = [0.0, 0.0, 1.0, 0.5] "
            "}");
        for (const char* shaders : {"true", "false"})
        {
            SCOPED_TRACE(shaders);
            Run(util::String("Resources.shaders = ") + shaders);
            Draw();
            EXPECT_TRUE(IsReddish(At(0.3f, -0.6f))) << At(0.3f, -0.6f);
            EXPECT_PIXEL(0, 255, 0, At(0, 0.1f));
            EXPECT_TRUE(IsWhite(At(1.45f, 0)));
            // What is translucent is not filled with water: behind it is the sky.
            EXPECT_PIXEL(127, 127, 255, At(0.7f, 0.03f));
            EXPECT_PIXEL(127, 127, 255, At(-0.7f, 0.1f));
            EXPECT_PIXEL(127, 127, 255, At(0.05f, 0.65f));
            // Planes too, of which only the opaque one is not cut out.
            EXPECT_PIXEL(0, 255, 0, At(0.3f, -0.95f));
            EXPECT_PIXEL(127, 127, 255, At(-0.6f, 0.97f));
            EXPECT_TRUE(IsReddish(At(-0.6f, 0.8f))) << At(-0.6f, 0.8f);
        }
    });
}

TEST_F(WaterPictureTest, AFastDropIsAStreakAlongItsWay)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Run("Resources.shaders = false; App.metaCutoff = 0.5");
        const auto velocity = [](const Vec2& v)
        { physics::Simulation::GetInstancePtr()->GetParticles().front()->SetVel(v); };
        velocity(Vec2(0, 1e6f));
        Draw();
        // Twice as long and half as wide as a circle of 34 pixels.
        EXPECT_FALSE(IsWhite(At(0, 0.63f)));
        EXPECT_FALSE(IsWhite(At(0, -0.63f)));
        EXPECT_TRUE(IsWhite(At(0, 0.74f)));
        EXPECT_FALSE(IsWhite(At(0.14f, 0)));
        EXPECT_TRUE(IsWhite(At(0.21f, 0)));
        velocity(Vec2(-1e6f, 1e6f));
        Draw();
        EXPECT_FALSE(IsWhite(At(-0.44f, 0.44f)));
        EXPECT_FALSE(IsWhite(At(0.44f, -0.44f)));
        EXPECT_TRUE(IsWhite(At(0.2f, 0.2f)));
        Run("App.waterMaxElongation = 1.0");
        Draw();
        EXPECT_TRUE(IsWhite(At(-0.3f, 0.3f)));
        EXPECT_FALSE(IsWhite(At(0.2f, 0.2f)));
    });
}

// Kept: a length that is squared once too often. Blobs of less than half a unit miss their last pixels.
TEST_F(WaterPictureTest, ADropOutOfTheViewIsSeenAsFarAsTheSquareOfItsReach)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        // It reaches 0.4 to each side, and the square of that is 0.16.
        Run("SPH.radius = 0.05; App.waterColor = [1.0, 0.0, 0.0, 1.0]; App.metaCutoff = 0.02; "
            "Scene.addWater { vecs = [[1.65, 0.0]] }");
        const auto& drop = physics::Simulation::GetInstancePtr()->GetParticles().front();
        drop->SetVel(Vec2(1e6f, 0));
        Draw();
        EXPECT_FALSE(IsWhite(At(1.48f, 0))) << At(1.48f, 0);
        drop->SetPos(Vec2(1.7f, 0));
        Draw();
        EXPECT_TRUE(IsWhite(At(1.48f, 0))) << At(1.48f, 0);
    });
}

TEST_F(WaterPictureTest, WhereTheCardRefusesTheTexturesDropsAreSpritesAndThereIsNoTrail)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Run("App.Background.skyColor = [1.0, 1.0, 1.0, 0.0]; App.fadeColor = [1.0, 1.0, 1.0]");
        test::LogCapture log;
        Run("Resources.unloadAll");
        // The one that stands in is there.
        rendering::TextureManager::GetInstancePtr()
            ->Load("no such picture", {GL_RGBA, true})
            ->Bind();
        // Any other is taken from a buffer that is too small for it.
        GLuint buffer = 0;
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
        glBufferData(GL_PIXEL_UNPACK_BUFFER, 1, nullptr, GL_STATIC_DRAW);
        Draw();
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        EXPECT_TRUE(log.Has("Failed to make a texture of image frame")) << log.Text();
        for (int i = 0; i < 2; ++i)
        {
            Draw();
            const Pixel sprite = At(0.1f, 0.1f);
            EXPECT_FALSE(IsNear(sprite, 255, 0, 255)) << sprite;
            EXPECT_PIXEL(255, 0, 255, At(1, 0.5f));
        }
        Run("Resources.reloadTextures");
        DrawOver(0, 0, 0);
        EXPECT_TRUE(IsReddish(At(0.15f, 0.1f))) << At(0.15f, 0.1f);
        EXPECT_PIXEL(0, 0, 0, At(1, 0.5f));
    });
}

TEST_F(WaterPictureTest, TheFanceyFactorCountsWhenTheTexturesAreReloaded)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        // Without a shader green comes from it.
        Run("Resources.shaders = false; App.waterColor = [1.0, 1.0, 1.0, 1.0]; "
            "App.waterFanceyFactor = 0.0");
        Draw();
        EXPECT_NEAR(7, At(0.3f, 0).g, 2);
        Run("Resources.reloadTextures");
        Draw();
        EXPECT_EQ(0, At(0.3f, 0).g);
    });
}

TEST_F(WaterPictureTest, ItIsThereAgainInANewWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        Draw();
        const std::string picture = GetPicture();
        core::ResourceManager* resources = core::ResourceManager::GetInstancePtr();
        const unsigned long memory = resources->GetVRAMUsage();
        EXPECT_GT(memory, 2ul * 2048 * 2048 * 4);
        for (int i = 0; i < 2; ++i)
        {
            Run("System.recreateWindow");
            Draw();
            EXPECT_TRUE(IsReddish(At(0, 0)));
            EXPECT_TRUE(picture == GetPicture());
            EXPECT_EQ(memory, resources->GetVRAMUsage());
        }
    });
}

TEST_F(WaterPictureTest, NoSettingEndsTheProgram)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithOneDrop();
        FillPool();
        physics::Simulation::GetInstancePtr()->GetParticles().front()->SetVel(Vec2(1e30f, 1));
        Run("App.Background.skyColor = [1.0, 1.0, 1.0, 0.5]; nan = math.divide(0.0, 0.0)");
        for (const char* value : {"+inf", "-inf", "nan", "1.0e38", "-1.0e38", "0.0", "-1.0"})
            for (const char* code :
                 {"App.metaCutoff = V; Resources.shaders = false", "Resources.shaders = true",
                  "App.metaCutoff = 0.5; App.waterMaxElongation = V", "App.waterElongation = V",
                  "App.waterMaxElongation = 2.0", "App.waterElongation = 0.05",
                  "App.waterColor = [V, V, V, V]", "App.simpleWater = true",
                  "App.simpleWater = false", "App.waterFanceyFactor = V; Resources.reloadTextures",
                  "App.Background.cloudOpacity = V; App.Background.drawClouds = true",
                  "App.Background.skyColor = [V, V, V, V]", "App.fadeColor = [V, V, V]",
                  "App.fadeColor = [1.0, 1.0, 1.0]; App.fadeScale = [V, V]",
                  "App.fadeScale = [1.0, 1.0]; App.fadeTranslate = [V, V]",
                  "App.fadeTranslate = [0.0, 0.0]; App.fadeRotate = V", "SPH.radius = V"})
            {
                SCOPED_TRACE(util::String(code) + ", " + value);
                Run(util::String("V = ") + value + "; " + code);
                Draw();
            }
        // So far away that the view has no size, and beside one of some size.
        Run("SPH.radius = 0.1; App.simpleWater = false; App.metaCutoff = 0.5");
        for (const char* pan : {"[1.0e9, 0.0]", "[1.0e9, 1.0e9]", "[3.0e38, 1.0]"})
        {
            Run(util::String("Scene.Camera.pan = ") + pan + "; Scene.addWater { vecs = [" + pan +
                "] }");
            Draw();
        }
    });
}

class LargeWindowTest : public test::PictureFixture
{
protected:
    LargeWindowTest()
        : PictureFixture("2300x2200x24")
    {
    }
};

TEST_F(LargeWindowTest, WaterAndTrailCoverTheLowerLeftOfIt)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start(2200, 2150);
        Run("SPH.radius = 0.25; App.waterColor = [1.0, 0.0, 0.0, 1.0]; Scene.addWater { vecs = "
            "[[0.0, 0.0], [10.9, 0.0], [0.0, 10.6], [-10.8, -10.6], [9.0, -10.6]] }");
        Draw();
        const auto isWater = [this](float x, float y)
        { return At(x, y).r > 100 && At(x, y).g < 90 && At(x, y).b < 90; };
        EXPECT_TRUE(isWater(0, 0));
        EXPECT_TRUE(isWater(-10.8f, -10.6f));
        EXPECT_TRUE(isWater(9, -10.6f));
        // 2048 pixels from the left and from below there is none, nor anything else.
        for (float y = -10.7f; y < 10.7f; y += 0.1f)
            ASSERT_TRUE(IsNear(At(9.6f, y), 255, 255, 255)) << y;
        for (float x = -10.9f; x < 10.9f; x += 0.1f)
            ASSERT_TRUE(IsNear(At(x, 9.9f), 255, 255, 255)) << x;
        EXPECT_FALSE(isWater(10.9f, 0));
        EXPECT_FALSE(isWater(0, 10.6f));

        Run("Scene.EraseWater; App.Background.skyColor = [0.0, 0.0, 0.0, 0.0]; "
            "App.fadeColor = [1.0, 1.0, 1.0]; App.fadeScale = [1.0, 1.0]; "
            "Scene.addBox { color = [0.0, 1.0, 0.0, 1.0]; size = [30.0, 30.0] }");
        Draw();
        EXPECT_PIXEL(0, 255, 0, At(10.9f, 0));
        app::Scene* scene = app::Scene::GetInstancePtr();
        scene->RemoveEntity(scene->GetEntities().back());
        DrawOver(0, 0, 0.5f);
        EXPECT_PIXEL(0, 255, 127, At(0, 0));
        EXPECT_PIXEL(0, 255, 127, At(-10.9f, -10.7f));
        EXPECT_PIXEL(0, 255, 127, At(9.4f, 9.6f));
        EXPECT_PIXEL(0, 0, 127, At(9.6f, 0));
        EXPECT_PIXEL(0, 0, 127, At(0, 9.8f));
    });
}
}
