// Entities that are shown elsewhere than they lie, in a real OpenGL.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Startup.h"
#include "app/entities/BoxEntity.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "math/Matrix.h"
#include "physics/Box.h"
#include "physics/Simulation.h"
#include "util/FileSystem.h"
#include "window/XServer.h"

#include <GL/glew.h>

#include <gtest/gtest.h>

using math::Mat3;
using math::Vec2;

namespace
{
class DrawTransformTest : public testing::Test
{
protected:
    /// A window of 200 by 100 pixels, 10 of which are a world unit.
    void Start()
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        core::Subsystem::SetLogToStandardOutput(false);
        app::CreateServices();
        core::WindowParams params;
        params.size = math::TVector2<int>(200, 100);
        core::Subsystem::GetInstancePtr()->CreateWindow(params);
        Scene()->GetCamera()->SetPan(Vec2());
        Scene()->GetCamera()->SetZoom(10);
    }
    static app::Scene* Scene() { return app::Scene::GetInstancePtr(); }
    static app::EntityPtr AddRedBox(const Vec2& pos)
    {
        const app::EntityPtr box = QUIB_NEW app::BoxEntity(QUIB_NEW physics::Box(Vec2(4, 4), pos));
        box->SetColor4(math::Vec4(1, 0, 0, 1));
        Scene()->AddEntity(box);
        return box;
    }
    /// Draws, and looks there.
    static bool IsRedAt(const Vec2& pos)
    {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gui::GUI::GetInstancePtr()->Draw();
        const Vec2 pixel = Scene()->GetCamera()->WorldToGUI(pos);
        unsigned char c[3];
        glReadPixels(int(pixel.x), 99 - int(pixel.y), 1, 1, GL_RGB, GL_UNSIGNED_BYTE, c);
        return c[0] > 200 && c[1] < 20 && c[2] < 20;
    }

    test::XServer server{"640x480x24"};
    test::TempDir dir;
};

TEST_F(DrawTransformTest, AnEntityIsDrawnThroughItsTransform)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const app::EntityPtr box = AddRedBox(Vec2(0, 0)), other = AddRedBox(Vec2(0, -4));
        EXPECT_TRUE(IsRedAt(Vec2(1, 0)));
        EXPECT_FALSE(IsRedAt(Vec2(5, 0)));
        box->SetDrawTransform(Mat3::Translation2D(Vec2(-2, 0)) * Mat3::Scale2D(Vec2(4, 0.5f)) *
                              Mat3::Translation2D(Vec2(2, 0)));
        // From -2 to 14, and from -1 to 1.
        EXPECT_TRUE(IsRedAt(Vec2(7, 0)));
        EXPECT_FALSE(IsRedAt(Vec2(-3, 0)));
        EXPECT_FALSE(IsRedAt(Vec2(0, 1.5f)));
        // The next entity knows nothing of it.
        EXPECT_TRUE(IsRedAt(Vec2(1, -4)));
        EXPECT_FALSE(IsRedAt(Vec2(5, -4)));
    });
}

TEST_F(DrawTransformTest, OneThatHasATransformIsNeverCulled)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const app::EntityPtr box = AddRedBox(Vec2(500, 0));
        EXPECT_FALSE(IsRedAt(Vec2()));
        box->SetDrawTransform(Mat3::Translation2D(Vec2(-500, 0)));
        EXPECT_TRUE(IsRedAt(Vec2()));
        box->SetDrawTransform(Mat3());
        EXPECT_FALSE(IsRedAt(Vec2()));
    });
}
}
