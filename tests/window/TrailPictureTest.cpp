// What the trail, the entities and the overlays look like in a frame.
#include "window/PictureFixture.h"

#include "app/entities/Entity.h"
#include "physics/Contact.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"

using math::Vec2;

namespace
{
class TrailPictureTest : public test::PictureFixture
{
protected:
    /// A green square from -0.2 to 0.2 at the place, before a sky that lets half of the frame through.
    void StartWithASquare(const char* pos)
    {
        Start();
        Run(util::String("App.fadeColor = [1.0, 1.0, 1.0]; App.fadeScale = [1.0, 1.0]; "
                         "App.Background.skyColor = [0.0, 0.0, 0.0, 0.5]; Scene.addBox { "
                         "size = [0.4, 0.4]; color = [0.0, 1.0, 0.0, 1.0]; pos = ") +
            pos + " }");
    }
    static void RemoveSquare()
    {
        app::Scene* scene = app::Scene::GetInstancePtr();
        scene->RemoveEntity(scene->GetEntities().back());
    }
    void DrawFrame() { DrawOver(0, 0, 0); }
    /// Of green. The sky is black at the top and a quarter as light as it could be at the bottom.
    static physics::Simulation* Sim() { return physics::Simulation::GetInstancePtr(); }
    int GreenAt(float x, float y) const { return At(x, y).g - At(x, y).r; }
};

TEST_F(TrailPictureTest, TheFrameBeforeShowsThroughATranslucentSky)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithASquare("[0.0, 0.0]");
        DrawFrame();
        EXPECT_EQ(0, GreenAt(0.5f, 0)) << "at first there is none";
        EXPECT_EQ(255, GreenAt(0, 0));
        RemoveSquare();
        DrawFrame();
        EXPECT_NEAR(127, GreenAt(0, 0), 2);
        EXPECT_NEAR(127, GreenAt(0.19f, 0.19f), 2);
        EXPECT_NEAR(0, GreenAt(0.22f, 0), 2);
        DrawFrame();
        EXPECT_NEAR(64, GreenAt(0, 0), 2);
        // Its colour dims it.
        Run("App.fadeColor = [0.5, 0.5, 0.5]");
        DrawFrame();
        EXPECT_NEAR(16, GreenAt(0, 0), 2);
        // Black turns it off, and what was kept stays as it is.
        Run("App.fadeColor = [0.0, 0.0, 0.0]");
        DrawFrame();
        EXPECT_EQ(0, GreenAt(0, 0));
        DrawFrame();
        Run("App.fadeColor = [1.0, 1.0, 1.0]");
        DrawFrame();
        EXPECT_NEAR(8, GreenAt(0, 0), 2);
    });
}

TEST_F(TrailPictureTest, AnOpaqueSkyHidesIt)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithASquare("[0.0, 0.0]");
        Run("App.Background.skyColor = [0.0, 0.0, 0.0, 1.0]");
        DrawFrame();
        RemoveSquare();
        DrawFrame();
        EXPECT_EQ(0, GreenAt(0, 0));
    });
}

TEST_F(TrailPictureTest, ItMovesTurnsAndShrinksAroundTheMiddle)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithASquare("[0.8, 0.0]");
        DrawFrame();
        RemoveSquare();
        // GUI units: to the left, and up.
        Run("App.fadeTranslate = [-50.0, -20.0]");
        DrawFrame();
        EXPECT_NEAR(127, GreenAt(0.3f, 0.2f), 2);
        EXPECT_NEAR(0, GreenAt(0.3f, -0.02f), 2);
        EXPECT_NEAR(0, GreenAt(0.6f, 0), 2);
        Run("App.fadeTranslate = [0.0, 0.0]; App.fadeScale = [2.0, 1.0]");
        DrawFrame();
        EXPECT_NEAR(64, GreenAt(0.6f, 0.2f), 2);
        EXPECT_NEAR(64, GreenAt(0.9f, 0.2f), 2);
        Run("App.fadeScale = [1.0, 1.0]; App.fadeRotate = 90.0");
        DrawFrame();
        // Clockwise, as y points down.
        EXPECT_NEAR(32, GreenAt(0.2f, -0.6f), 2);
        EXPECT_NEAR(0, GreenAt(0.6f, 0.2f), 2);
    });
}

TEST_F(TrailPictureTest, ItIsGoneInANewWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithASquare("[0.0, 0.0]");
        DrawFrame();
        RemoveSquare();
        Run("System.recreateWindow");
        DrawFrame();
        EXPECT_EQ(0, GreenAt(0, 0));
        DrawFrame();
        EXPECT_EQ(0, GreenAt(0, 0));
    });
}

// Kept: flags that are lowered when the mouse leaves would be another program.
TEST_F(TrailPictureTest, WhatTheMouseWasOnStaysMarkedWhileItIsElsewhere)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithASquare("[0.0, 0.0]");
        const app::EntityPtr square = app::Scene::GetInstancePtr()->GetEntities().back();
        MoveMouse(150, 100);
        DrawFrame();
        EXPECT_TRUE(square->IsMouseOver());
        MoveMouse(5000, 5000);
        DrawFrame();
        EXPECT_TRUE(square->IsMouseOver());
        MoveMouse(20, 20);
        DrawFrame();
        EXPECT_FALSE(square->IsMouseOver());
        MoveMouse(5000, 5000);
        DrawFrame();
        EXPECT_FALSE(square->IsMouseOver());
        // One out of view is not asked.
        MoveMouse(150, 100);
        DrawFrame();
        EXPECT_TRUE(square->IsMouseOver());
        Run("Scene.Camera.pan = [50.0, 0.0]");
        MoveMouse(20, 20);
        DrawFrame();
        EXPECT_TRUE(square->IsMouseOver());
    });
}

TEST_F(TrailPictureTest, DebugOverlaysShowCentersSpeedsAndContacts)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run("App.lineWidth = 6.0; App.pointSize = 8.0; App.waterColor = [0.0, 0.0, 0.0, 0.0]; "
            "App.drawBodyCenters = true; Scene.addWater { vecs = [[-1.0, 0.5]] }; Scene.addCircle "
            "{ "
            "pos = [0.0, 0.5]; radius = 0.1; color = [0.0, 0.0, 0.0, 1.0] }");
        Sim()->GetBodies().back()->SetVel(Vec2(40, 0));
        Draw();
        // Velocities for a fortieth of a second, over the white sky.
        EXPECT_PIXEL(127, 255, 127, At(0.5f, 0.5f));
        EXPECT_PIXEL(127, 255, 127, At(0.95f, 0.5f));
        EXPECT_PIXEL(255, 255, 255, At(1.05f, 0.5f));
        EXPECT_PIXEL(117, 255, 117, At(-1, 0.5f));
        Run("App.drawBodyCenters = false; App.drawParticleCenters = true");
        Draw();
        EXPECT_PIXEL(255, 0, 0, At(-1, 0.5f));
        EXPECT_PIXEL(255, 255, 255, At(0.5f, 0.5f));
        Sim()->GetParticles().back()->SetVel(Vec2(0, 16));
        Draw();
        EXPECT_PIXEL(255, 127, 127, At(-1, 0.7f));
        EXPECT_PIXEL(255, 127, 127, At(-1, 0.87f));
        EXPECT_PIXEL(255, 255, 255, At(-1, 0.95f));

        Run("App.drawCollisions = true; Scene.addBox { pos = [1.0, -0.5]; size = [0.5, 0.5]; "
            "friction = 0.0; color = [0.0, 0.0, 0.0, 1.0] }; Scene.addPlane { pos = [0.0, -0.6]; "
            "angle = 1.5707964; color = [0.0, 0.0, 0.0, 1.0] }");
        Sim()->GetBodies().back()->SetVel(Vec2(0, -1));
        Sim()->Step(true);
        app::App::GetInstancePtr()->Update(0);
        ASSERT_FALSE(Sim()->GetContacts().empty());
        const Vec2 touch = Sim()->GetContacts().front()->GetPos();
        Draw();
        EXPECT_PIXEL(255, 255, 255, At(touch.x, touch.y));
        // From it, over black, go the impulse and as much of the normal as the two overlap.
        physics::Contact& contact = *Sim()->GetContacts().front();
        const auto at = [&](float along)
        {
            // On the box, whose edge goes through the touch.
            const Vec2 start =
                contact.GetPos() + Vec2(contact.GetPos().x < 1 ? 0.015f : -0.015f, 0);
            const Vec2 end = start + contact.GetNormal() * along;
            return At(end.x, end.y);
        };
        const float depth = contact.GetDepth();
        const float impulse = Dot(contact.GetTotalImpulse(), contact.GetNormal());
        ASSERT_GT(depth, 0.1f);
        ASSERT_GT(impulse, depth + 0.1f);
        ASSERT_LT(impulse, 0.4f) << "out of the box";
        EXPECT_PIXEL(32, 127, 0, at(depth - 0.03f));
        EXPECT_PIXEL(64, 0, 0, at(depth + 0.03f));
        EXPECT_PIXEL(64, 0, 0, at(impulse - 0.03f));
        EXPECT_PIXEL(0, 0, 0, at(impulse + 0.03f));
        // A touch that lasts turns red.
        Sim()->SetSimTime(Sim()->GetSimTime() + 0.6);
        Draw();
        EXPECT_PIXEL(255, 0, 0, At(touch.x, touch.y));
    });
}
}
