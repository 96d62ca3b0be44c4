// What joints and pens look like, by the pixels of a real OpenGL.
#include "app/Group.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "physics/Simulation.h"
#include "window/EntityPictureStage.h"

#include <boost/filesystem.hpp>

#include <cmath>

using math::Vec2;
using physics::Simulation;
using test::Color;

namespace
{
class EntityPictureJointTest : public test::EntityPictureStage
{
protected:
    // The pictures are white with a dark outline, times this.
    static constexpr const char* RedKeys = "color = [1.0, 0.0, 0.0, 1.0]; size = 1.0; ";
    static constexpr Color Fill = {255, 0, 0}, Outline = {16, 0, 0}, PenRim = {74, 0, 0};

    /// Something on the middle of a big box; it is the second entity.
    void LayOnBox(const std::string& command, const std::string& boxKeys = "")
    {
        Lay("Scene.addBox { geomID = 1; size = [3.0, 2.5]; " + boxKeys + AmberKeys + "}; " +
            command + " { " + RedKeys +
            "geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [0.0, 0.0] }");
        ASSERT_EQ(2u, TheScene()->GetEntities().size());
    }
    static void Select(const app::EntityPtr& entity)
    {
        const app::GroupPtr group = QUIB_NEW app::Group("selected");
        if (entity)
            group->Add(entity);
        TheScene()->SetSelection(group);
    }
    /// A pen at (-1, 0) that has come straight from (1, 0), in ten seconds.
    void LayPen(const std::string& fadeTime, float size = 0.5f)
    {
        Lay("Scene.addBox { geomID = 1; size = [0.1, 0.1]; pos = [-1.0, 0.0]; " +
            std::string(AmberKeys) +
            "}; Scene.addPen { color = [1.0, 0.0, 0.0, 1.0]; geom = 1; relPoint = [0.0, 0.0]; "
            "size = " +
            std::to_string(size) + "; fadeTime = " + fadeTime + " }");
        ASSERT_EQ(2u, TheScene()->GetEntities().size());
        const double now = Simulation::GetInstancePtr()->GetSimTime();
        app::PenEntity::Trail trail;
        for (int i = 0; i <= 20; ++i)
            trail.push_back({now - 10 + 0.5 * i, Vec2(1 - 0.1f * float(i), 0), Vec2(0, -1)});
        Entity(1)->ToPenEntity()->SetTrail(trail);
        Draw();
    }
};
}

TEST_F(EntityPictureJointTest, AHingeIsASteelRingAroundADarkHubInTheMiddleOfItsEnds)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        LayOnBox("Scene.addHinge");
        EXPECT_COLOR((Color{26, 0, 0}), At(0.13f, 0));
        EXPECT_COLOR((Color{238, 0, 0}), At(0.31f, 0)); // its steel is darker below
        EXPECT_LT(At(0, -0.31f).r, At(0, 0.31f).r - 10);
        EXPECT_COLOR(Outline, At(0.44f, 0));
        EXPECT_COLOR(Amber, At(0.6f, 0));

        // Pulled apart, it is drawn in the middle.
        Run("Sim.running = false");
        Lay(std::string("Scene.addBox { geomID = 1; pos = [-1.0, 0.0]; size = [0.2, 0.2]; ") +
            SeaKeys + "}; Scene.addHinge { " + RedKeys +
            "geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [1.0, 0.0] }");
        EXPECT_COLOR((Color{238, 0, 0}), At(0.31f, 0));
        EXPECT_COLOR(Backdrop, At(0.8f, 0));
        EXPECT_COLOR(Sea, At(-1, 0.02f));
    });
}

TEST_F(EntityPictureJointTest, AJointIsInViewWhileItsPictureIs)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        // The first end, by which it is picked, is far away to the left.
        Lay(std::string("Scene.addBox { geomID = 1; pos = [-9.0, 0.0]; size = [0.2, 0.2] }; "
                        "Scene.addHinge { ") +
            RedKeys + "geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [9.0, 0.0] }");
        EXPECT_COLOR((Color{238, 0, 0}), At(0.31f, 0));
        const math::BoundingBox box = Entity(1)->GetAABB();
        EXPECT_EQ(Vec2(-9, 0), box.GetCenter()) << "where it is picked";
        const auto isInView = [](float x)
        { return Entity(1)->IsInView(math::BoundingBox(Vec2(x - 1, -1), Vec2(x + 1, 1))); };
        EXPECT_TRUE(isInView(1.6f)) << "the ring of one that is selected";
        EXPECT_FALSE(isInView(1.75f));
        EXPECT_FALSE(isInView(-9));

        Lay(std::string("Scene.addBox { geomID = 1; pos = [-9.0, 0.0]; size = [0.2, 0.2] }; "
                        "Scene.addSpring { ") +
            RedKeys + "geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [3.0, 0.0] }");
        EXPECT_TRUE(isInView(0));
        EXPECT_TRUE(isInView(4.6f));
        EXPECT_FALSE(isInView(4.75f));
    });
}

TEST_F(EntityPictureJointTest, AHingeHidesWhileTheSimulationRunsUnlessItIsPointedAtOrSelected)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        LayOnBox("Scene.addHinge", "pos = [0.0, 0.0]; ");
        const auto isShown = [this]
        {
            Draw();
            return At(0.31f, 0).g < 10;
        };
        Run("App.GUI.drawHingesWhenRunning = false");
        Simulation::GetInstancePtr()->m_running = false;
        EXPECT_TRUE(isShown());
        Simulation::GetInstancePtr()->m_running = true;
        EXPECT_FALSE(isShown());
        Entity(1)->SetMouseOver(true);
        EXPECT_TRUE(isShown());
        Entity(1)->SetMouseOver(false);
        EXPECT_FALSE(isShown());
        Select(Entity(1));
        EXPECT_TRUE(isShown());
        Select(nullptr);
        Run("App.GUI.drawHingesWhenRunning = true");
        EXPECT_TRUE(isShown());
    });
}

TEST_F(EntityPictureJointTest, ARingLiesAroundWhatIsPointedAtOrSelected)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const char* command :
             {"Scene.addHinge", "Scene.addFixjoint", "Scene.addPen", "Scene.addSpring"})
        {
            SCOPED_TRACE(command);
            const bool isSpring = std::string(command) == "Scene.addSpring";
            Lay(std::string("Scene.addBox { geomID = 1; size = [3.0, 2.5]; ") + SeaKeys + "}; " +
                command + " { " + RedKeys +
                "geom = 1; relPoint = [0.0, 0.0]; geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; "
                "geom1pos = " +
                (isSpring ? "[1.7, 0.0] }" : "[0.0, 0.0] }"));
            ASSERT_EQ(2u, TheScene()->GetEntities().size());
            // 0.65 in radius; its line is the middle of the picture's 26.5 of 32 parts.
            const float x = isSpring ? -0.538f : 0.538f;
            EXPECT_COLOR(Sea, At(x, 0));
            Entity(1)->SetMouseOver(true);
            Draw();
            EXPECT_COLOR((Color{51, 51, 51}), At(x, 0));
            Select(Entity(1));
            Draw();
            EXPECT_COLOR((Color{204, 204, 204}), At(x, 0));
            Entity(1)->SetMouseOver(false);
            Draw();
            EXPECT_COLOR((Color{255, 255, 255}), At(x, 0));
            Select(nullptr);
            Draw();
            EXPECT_COLOR(Sea, At(x, 0));
        }
    });
}

TEST_F(EntityPictureJointTest, AWeldIsADiagonalCrossThatTurnsWithItsBody)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        LayOnBox("Scene.addFixjoint");
        EXPECT_COLOR(Fill, At(0, 0));
        EXPECT_COLOR(Fill, At(0.25f, 0.25f));
        EXPECT_COLOR(Fill, At(-0.25f, 0.25f));
        EXPECT_COLOR(Amber, At(0.4f, 0));
        LayOnBox("Scene.addFixjoint", "angle = 0.7853982; ");
        EXPECT_COLOR(Fill, At(0.35f, 0));
        EXPECT_COLOR(Fill, At(0, -0.35f));
        EXPECT_COLOR(Amber, At(0.3f, 0.3f));
    });
}

TEST_F(EntityPictureJointTest, ASpringIsACoilFromEndToEndWhoseCapsKeepTheirForm)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        std::vector<Color> cap;
        for (const float length : {2.0f, 3.4f})
        {
            SCOPED_TRACE(length);
            Lay(std::string("Scene.addBox { geomID = 1; pos = [-1.7, 0.0]; size = [0.02, 0.02]; ") +
                AmberKeys + "}; Scene.addSpring { " + RedKeys +
                "geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [" +
                std::to_string(-1.7f + length) + ", 0.0] }");
            ASSERT_EQ(2u, TheScene()->GetEntities().size());
            int dark = 0, light = 0;
            for (float x = -1.6f; x < -1.8f + length; x += 0.01f)
            {
                const Color c = At(x, 0);
                dark += c.r < 150 && c.g < 10 && c.b < 10;
                light += c.r > 250 && c.g < 10;
            }
            EXPECT_GT(dark, 30);
            EXPECT_GT(light, 50);
            EXPECT_COLOR(Backdrop, At(-0.7f, 0.48f));
            EXPECT_COLOR(Backdrop, At(-1.73f, 0));
            EXPECT_COLOR(Backdrop, At(-1.67f + length, 0));
            // Half as long as the spring is wide.
            std::vector<Color> column;
            for (int x = 0; x < 45; ++x)
                column.push_back(At(-1.68f + 0.01f * float(x), 0.2f));
            if (cap.empty())
                cap = column;
            for (size_t i = 0; i < cap.size(); ++i)
                EXPECT_TRUE(IsNear(cap[i], column[i], 8)) << i;
        }
    });
}

TEST_F(EntityPictureJointTest, APenIsADotWithADarkerRim)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Lay(std::string("Scene.addBox { geomID = 1; size = [3.0, 2.5]; ") + AmberKeys +
            "}; Scene.addPen { " + RedKeys + "geom = 1; relPoint = [0.5, 0.0] }");
        EXPECT_COLOR(Fill, At(0.5f, 0));
        EXPECT_COLOR(PenRim, At(0.91f, 0));
        EXPECT_COLOR(Amber, At(1.1f, 0));
        EXPECT_COLOR(Amber, At(-0.2f, 0));
    });
}

TEST_F(EntityPictureJointTest, TheTrailOfAPenFades)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool shaders : {false, true})
        {
            SCOPED_TRACE(shaders);
            UseShaders(shaders);
            LayPen("10.0");
            // 0.05 per element, from right to left.
            EXPECT_TRUE(IsNear({128, 0, 128}, At(0.005f, 0), 8)) << At(0.005f, 0);
            EXPECT_TRUE(IsNear({191, 0, 64}, At(-0.495f, 0), 8)) << At(-0.495f, 0);
            EXPECT_TRUE(IsNear({26, 0, 230}, At(0.805f, 0), 8)) << At(0.805f, 0);
            EXPECT_COLOR(Backdrop, At(1.03f, 0));
            // 0.7 of the pen's size in width.
            EXPECT_FALSE(IsNear(Backdrop, At(0, 0.16f), 60));
            EXPECT_FALSE(IsNear(Backdrop, At(0, -0.16f), 60));
            EXPECT_COLOR(Backdrop, At(0, 0.2f));
            EXPECT_COLOR(Backdrop, At(0, -0.2f));

            // What is older than that is not drawn.
            LayPen("5.0");
            EXPECT_COLOR(Backdrop, At(0.1f, 0));
            EXPECT_TRUE(IsNear({128, 0, 128}, At(-0.495f, 0), 8)) << At(-0.495f, 0);
            LayPen("0.0");
            EXPECT_COLOR(Backdrop, At(-0.6f, 0));
        }
    });
}

TEST_F(EntityPictureJointTest, WhereShadersAreWantedTheTrailIsAPixelWider)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        UnlinkData("shaders"); // they are wanted, but not there
        Start();
        const auto countRows = [this]
        {
            int count = 0;
            for (int y = 0; y < Height; ++y)
                count += !IsNear(Backdrop, GetColor(Width / 2, y));
            return count;
        };
        UseShaders(false);
        LayPen("1000.0", 20 / 0.7f / 100);
        EXPECT_EQ(20, countRows());
        UseShaders(true);
        Draw();
        EXPECT_NEAR(21, countRows(), 1);
        EXPECT_NE(20, countRows());
    });
}

TEST_F(EntityPictureJointTest, WithoutItsTextureAJointShowsTheCheckeredOne)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        UnlinkData("textures");
        Start();
        LayOnBox("Scene.addHinge");
        // Magenta in two quarters, and green, which the red hinge takes away, in the other two.
        const Color a = At(0.25f, 0.25f), b = At(-0.25f, 0.25f), c = At(-0.25f, -0.25f);
        EXPECT_TRUE(IsNear({255, 0, 0}, a) || IsNear({255, 0, 0}, b)) << a << b;
        EXPECT_FALSE(IsNear(a, b));
        EXPECT_COLOR(a, c);
        EXPECT_COLOR(Amber, At(0.6f, 0));
    });
}
