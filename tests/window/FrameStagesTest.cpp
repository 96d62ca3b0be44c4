// What a frame of the whole program consists of.
#include "core/ResourceManager.h"
#include "physics/Simulation.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"
#include "window/PictureFixture.h"

#include <set>

namespace
{
// One of each, water, and a translucent body in it.
const char* const Everything =
    "Scene.addPlane { geomID = 1; pos = [0.0, -0.8]; angle = 1.5707963 };\n"
    "Scene.addBox { geomID = 2; pos = [-0.9, 0.0]; size = [0.6, 0.6]; color = [1.0, 0.0, 0.0, 0.5] "
    "};\n"
    "Scene.addCircle { geomID = 3; pos = [-0.2, 0.0]; radius = 0.3; color = [0.0, 1.0, 0.0, 1.0] "
    "};\n"
    "Scene.addPolygon { geomID = 4; pos = [0.5, 0.0]; color = [0.0, 0.0, 1.0, 1.0]; "
    "vecs = [[-0.3, -0.3], [0.3, -0.3], [0.0, 0.4]] };\n"
    "Scene.addBox { geomID = 5; pos = [1.0, 0.0]; size = [0.6, 0.6] };\n"
    "Scene.addBox { geomID = 6; pos = [1.2, 0.0]; size = [0.6, 0.6] };\n"
    "Scene.addHinge { geom0 = 2; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [-0.9, 0.0]; size = "
    "0.2 };\n"
    "Scene.addFixjoint { geom0 = 5; geom0pos = [0.1, 0.0]; geom1 = 6; geom1pos = [-0.1, 0.0]; size "
    "= 0.2 };\n"
    "Scene.addSpring { geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = 4; geom1pos = [0.0, 0.0]; size = "
    "0.1 };\n"
    "Scene.addPen { geom = 3; relPoint = [0.0, 0.0]; size = 0.2 };\n"
    "Scene.addWater { vecs = [[-0.7, 0.5], [-0.6, 0.5], [-0.65, 0.55]] };\n"
    "Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0; Sim.running = false;\n";

std::set<std::string>& Stages()
{
    static std::set<std::string> s_stages;
    return s_stages;
}

class FrameStagesTest : public test::PictureFixture
{
};
}

TEST_F(FrameStagesTest, AreProfiledUnderTheirNames)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run(Everything);
        Run("App.fadeColor = [0.1, 0.1, 0.1]");
        physics::Simulation::GetInstancePtr()->Step(0.01f);
        util::ScopeProfiler::s_begin = [](const char* name) { Stages().insert(name); };
        physics::Simulation::GetInstancePtr()->Step(0.01f);
        MoveMouse(10, 10);
        gui::GUI::GetInstancePtr()->Update(0.01f);
        Draw();
        for (const char* name : {"App::DrawComp",
                                 "Culling",
                                 "DrawMetaTex",
                                 "Drawing particles",
                                 "Drawing black bodies",
                                 "Texture::Copy",
                                 "Setup",
                                 "Water",
                                 "Entities",
                                 "Mouse-over",
                                 "Box::Draw",
                                 "Circle::Draw",
                                 "Poly::Draw",
                                 "Plane::Draw",
                                 "Hinge::Draw",
                                 "FixJoint::Draw",
                                 "Spring::Draw",
                                 "Pen::Draw",
                                 "Pen::OnSimUpdate",
                                 "GUI::Draw"})
            EXPECT_EQ(1u, Stages().count(name)) << name;
        std::set<std::string> often;
        for (auto* data = util::StaticProfilerData::GetFirst(); data; data = data->GetNext())
            often.insert(data->GetName());
        EXPECT_EQ(1u, often.count("Entity::Draw"));
        EXPECT_EQ(1u, often.count("DrawBlack"));
    });
}

// What is meant in GUI units and what in pixels is told apart everywhere.
TEST_F(FrameStagesTest, LookTheSameWithGUIUnitsOfTwoPixels)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run(Everything);
        for (const char* shaders : {"true", "false"})
        {
            Run(util::String("Resources.shaders = ") + shaders);
            Run("GUI.scale = 1.0; Scene.Camera.zoom = 100.0; App.fadeColor = [0.2, 0.2, 0.2]");
            Run("App.Background.skyColor = [0.0, 0.0, 1.0, 0.5]");
            Draw();
            Draw();
            const std::vector<test::Pixel> pixels = m_pixels;
            Run("GUI.scale = 2.0; Scene.Camera.zoom = 50.0");
            Draw();
            Draw();
            size_t different = 0;
            for (size_t i = 0; i < pixels.size(); ++i)
                different += !IsNear(m_pixels[i], pixels[i].r, pixels[i].g, pixels[i].b, 24);
            EXPECT_GT(pixels.size() / 200, different) << "shaders " << shaders;
        }
    });
}
