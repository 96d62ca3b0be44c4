// What a frame of the whole program consists of.
#include "core/ResourceManager.h"
#include "physics/Simulation.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"
#include "window/PictureFixture.h"

#include <set>

namespace
{
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
        Run(test::EverythingScene);
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
        Run(test::EverythingScene);
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
