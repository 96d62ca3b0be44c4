// One window that shows one scene of entities after the other. To be used in a fresh process.
#pragma once

#include "app/entities/Entity.h"
#include "math/Matrix.h"
#include "window/PictureFixture.h"

#include <cstdlib>
#include <ostream>
#include <string>

namespace test
{
struct Color
{
    int r, g, b;

    friend std::ostream& operator<<(std::ostream& out, const Color& c)
    {
        return out << "(" << c.r << ", " << c.g << ", " << c.b << ")";
    }
};

/// Within the rounding of a driver.
inline bool IsNear(const Color& a, const Color& b, int tolerance = 3)
{
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance;
}

inline testing::AssertionResult IsColor(const char*, const char* text, const Color& expected,
                                        const Color& found)
{
    if (IsNear(expected, found))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << text << " is " << found << " instead of " << expected;
}
#define EXPECT_COLOR(expected, found) EXPECT_PRED_FORMAT2(test::IsColor, expected, found)

class EntityPictureStage : public PictureFixture
{
protected:
    static constexpr int Width = 400, Height = 300;
    static constexpr Color Backdrop = {0, 0, 255};
    static constexpr Color Amber = {240, 160, 60}, AmberBorder = {120, 80, 30},
                           AmberWedge = {180, 120, 45};
    static constexpr Color Sea = {46, 134, 171}, SeaBorder = {23, 67, 85};
    static constexpr const char* AmberKeys = "color = [0.9411765, 0.627451, 0.2352941, 1.0]; ";
    static constexpr const char* SeaKeys = "color = [0.1803922, 0.5254902, 0.6705882, 1.0]; ";
    // Half translucent.
    static constexpr const char* GlassKeys = "color = [1.0, 0.0, 0.0, 0.5]; ";

    EntityPictureStage()
        : PictureFixture("640x480x24")
    {
    }

    void Start()
    {
        PictureFixture::Start(Width, Height);
        Run("App.Background.skyColor = [0.0, 0.0, 0.0, 0.0]; App.borders = true");
    }
    static void UseShaders(bool on)
    {
        Run(on ? "Resources.shaders = true" : "Resources.shaders = false");
    }
    /// These and nothing else, with the world's origin in the middle.
    /// @param zoom  pixels to a world unit
    void Lay(const std::string& entities, float zoom = 100)
    {
        Run("Scene.Clear; FileInfo.version = 2; App.Background.skyColor = [0.0, 0.0, 0.0, 0.0]; "
            "App.Background.drawClouds = false; " +
            entities);
        TheScene()->GetCamera()->SetPan(math::Vec2());
        TheScene()->GetCamera()->SetZoom(zoom);
        for (const app::EntityPtr& entity : TheScene()->GetEntities())
            entity->Update(0);
        Draw();
    }
    void Draw() { DrawOver(0, 0, 1); }

    Color GetColor(int x, int y) const
    {
        const Pixel p = GetPixel(x, y);
        return {p.r, p.g, p.b};
    }
    /// At a place in the world.
    Color At(float x, float y) const
    {
        const Pixel p = PictureFixture::At(x, y);
        return {p.r, p.g, p.b};
    }
    static bool IsNear(const Color& a, const Color& b, int tolerance = 3)
    {
        return test::IsNear(a, b, tolerance);
    }

    static app::Scene* TheScene() { return app::Scene::GetInstancePtr(); }
    static const app::EntityPtr& Entity(size_t i) { return TheScene()->GetEntities()[i]; }
};
}
