// The component tree with a real OpenGL, by its pixels.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "gui/LookAndFeel.h"
#include "gui/components/WobbleComponent.h"
#include "input/Input.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "window/XServer.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

using core::Subsystem;
using gui::Component;
using gui::ComponentPtr;
using gui::GUI;
using gui::LookAndFeel;
using math::Vec2;
using math::Vec4;

namespace
{
const int Width = 200, Height = 100;

const Vec4 Red(1, 0, 0, 1), Green(0, 1, 0, 1), Blue(0, 0, 1, 1), Nothing(0, 0, 0, 0);

/// As "rrggbb", from the top left.
std::string Pixel(int x, int y)
{
    unsigned char c[3];
    char text[8];
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, Subsystem::GetInstancePtr()->GetHeight() - 1 - y, 1, 1, GL_RGB,
                 GL_UNSIGNED_BYTE, c);
    std::snprintf(text, sizeof(text), "%02x%02x%02x", c[0], c[1], c[2]);
    return text;
}

ComponentPtr Place(const ComponentPtr& owner, float x, float y, float w, float h,
                   const gui::BorderPtr& border)
{
    const ComponentPtr component = QUIB_NEW Component;
    component->SetOuterPos(x, y);
    component->SetInnerSize(w, h);
    component->SetBorder(border);
    owner->AddComponent(component);
    return component;
}

gui::BorderPtr Border(float width, const Vec4& frame, const Vec4& fill)
{
    return QUIB_NEW gui::SimpleBorder(width, frame, fill);
}

class GUIInContextTest : public testing::Test
{
protected:
    void Start()
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::SetLogToStandardOutput(false);
        Subsystem::Create();
        Subsystem::GetInstancePtr()->AddToRoot();
        GUI::GetInstancePtr()->AddToRoot();
        core::WindowParams params;
        params.size = math::TVector2<int>(Width, Height);
        Subsystem::GetInstancePtr()->CreateWindow(params);
        GUI::GetInstancePtr()->OnNewWindowSize(Width, Height);
        Script("GUI.opaqueness = 1.0");
        main = GUI::GetInstancePtr()->GetMainContainer();
    }
    static void Script(const util::String& code)
    {
        script::Parser::GetInstancePtr()->ExecuteToString(code);
    }
    /// @param background  grey, opaque
    static void Draw(float background = 0)
    {
        glClearColor(background, background, background, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        GUI::GetInstancePtr()->Draw();
        EXPECT_NO_THROW(rendering::CheckForGLError());
    }
    static void MoveMouse(int x, int y)
    {
        SDL_Event event = {};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = static_cast<Uint16>(x);
        event.motion.y = static_cast<Uint16>(y);
        input::Input::GetInstancePtr()->HandleEvent(event);
    }
    /// Of 2 x 2 pixels.
    /// @param alpha  the bottom row first
    static void SetCursor(std::array<float, 4> alpha)
    {
        const auto makeTexture = [alpha]
        {
            const rendering::ImageFloatPtr image = QUIB_NEW rendering::ImageFloat(2, 2);
            for (unsigned i = 0; i < 4; ++i)
                (*image)(i % 2, i / 2) = alpha[i];
            return new rendering::Texture(image, {GL_ALPHA8});
        };
        GUI::GetInstancePtr()->SetCursor(rendering::TextureProxy(makeTexture));
    }

    test::XServer server{"640x480x24"};
    test::TempDir dir;
    ComponentPtr main;
};
}

TEST_F(GUIInContextTest, ABorderFillsAndFramesTheOuterBox)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Place(main, 10, 20, 30, 10, Border(2, Red, Green)); // 34 x 14 with its border
        Draw();
        for (const int x : {10, 11, 42, 43})
            EXPECT_EQ("ff0000", Pixel(x, 25)) << x;
        for (const int y : {20, 21, 32, 33})
            EXPECT_EQ("ff0000", Pixel(25, y)) << y;
        for (const Vec2& corner : {Vec2(10, 20), Vec2(43, 20), Vec2(10, 33), Vec2(43, 33)})
            EXPECT_EQ("ff0000", Pixel(int(corner.x), int(corner.y))) << corner;
        for (const int x : {12, 25, 41})
            EXPECT_EQ("00ff00", Pixel(x, 25)) << x;
        for (const Vec2& outside : {Vec2(9, 25), Vec2(44, 25), Vec2(25, 19), Vec2(25, 34)})
            EXPECT_EQ("000000", Pixel(int(outside.x), int(outside.y))) << outside;
    });
}

TEST_F(GUIInContextTest, ChildrenLieInTheInnerAreaOfTheirOwnerAndInFrontOfIt)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const ComponentPtr owner = Place(main, 10, 10, 80, 60, Border(4, Red, Green));
        Place(owner, 0, 0, 10, 10, Border(1, Blue, Nothing)); // from (14, 14) to (26, 26)
        Place(owner, 6, 6, 10, 10, Border(0, Nothing, Blue)); // on top of it
        Draw();
        EXPECT_EQ("ff0000", Pixel(13, 13));
        EXPECT_EQ("0000ff", Pixel(14, 14));
        EXPECT_EQ("00ff00", Pixel(15, 15)) << "no fill";
        EXPECT_EQ("0000ff", Pixel(25, 14));
        EXPECT_EQ("00ff00", Pixel(26, 14));
        EXPECT_EQ("0000ff", Pixel(20, 20));
        EXPECT_EQ("0000ff", Pixel(29, 29));
        EXPECT_EQ("00ff00", Pixel(30, 30));
    });
}

TEST_F(GUIInContextTest, AFrameOfTheToolkitIsOnePixelAtEveryScale)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        // A light frame over the fill, which the frame of white at a quarter lets through.
        Place(main, 10, 10, 20, 20, Border(1, Vec4(1, 1, 1, 0.25f), Vec4(0, 0, 0, 1)));
        Draw(1);
        EXPECT_EQ("404040", Pixel(10, 20));
        EXPECT_EQ("000000", Pixel(11, 20));
        EXPECT_EQ("404040", Pixel(31, 20));
        EXPECT_EQ("ffffff", Pixel(32, 20));
        Script("GUI.scale = 2.0");
        Draw(1);
        EXPECT_EQ("404040", Pixel(20, 40));
        EXPECT_EQ("404040", Pixel(21, 40));
        EXPECT_EQ("000000", Pixel(22, 40));
    });
}

TEST_F(GUIInContextTest, AnEmptyBorderDrawsNothing)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        class Plain : public Component
        {
        public:
            void DrawComp() const override
            {
                glDisable(GL_BLEND);
                Component::DrawComp();
            }
        };
        const ComponentPtr component = QUIB_NEW Plain;
        component->SetInnerSize(50, 50);
        main->AddComponent(component);
        Draw(1);
        EXPECT_EQ("ffffff", Pixel(20, 20));
    });
}

TEST_F(GUIInContextTest, TheColorOfAComponentFadesItsBordersAndItsChildren)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const ComponentPtr owner = Place(main, 10, 10, 40, 40, Border(2, Red, Nothing));
        Place(owner, 10, 10, 10, 10, Border(0, Nothing, Vec4(1, 1, 1, 1)));
        owner->SetColor(Vec4(1, 1, 0, 0.6f));
        Draw();
        EXPECT_EQ("990000", Pixel(10, 30));
        EXPECT_EQ("999900", Pixel(25, 25));
    });
}

TEST_F(GUIInContextTest, WhatADrawingLeavesBehindDoesNotReachTheCursor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        class Rude : public Component
        {
        public:
            void DrawComp() const override
            {
                glColorMask(false, false, false, false);
                glTranslatef(50, 50, 0);
            }
        };
        main->AddComponent(QUIB_NEW Rude);
        SetCursor({1, 1, 1, 1});
        MoveMouse(50, 50);
        Draw();
        EXPECT_EQ("ffffff", Pixel(50, 50));
    });
}

TEST_F(GUIInContextTest, TheCursorIsDrawnAroundTheMouseWholeAndUpright)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Script("GUI.opaqueness = 0.5");
        SetCursor({0, 0, 1, 0}); // the top left alone
        MoveMouse(60, 50);
        Draw();
        EXPECT_EQ("ffffff", Pixel(45, 35)) << "whatever the opaqueness";
        EXPECT_EQ("ffffff", Pixel(50, 40));
        EXPECT_EQ("000000", Pixel(43, 35)) << "16 from the mouse";
        EXPECT_EQ("000000", Pixel(45, 33));
        EXPECT_EQ("000000", Pixel(74, 64));
        EXPECT_EQ("000000", Pixel(74, 36));
        EXPECT_EQ(0, SDL_ShowCursor(-1));
        Script("GUI.forceOSCursor = true");
        Draw();
        EXPECT_EQ("000000", Pixel(50, 40));
        EXPECT_EQ(1, SDL_ShowCursor(-1));
    });
}

TEST_F(GUIInContextTest, AWobblingComponentIsDrawnBentFromItsTop)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const util::SharedPtr<gui::WobbleComponent> component = QUIB_NEW gui::WobbleComponent;
        component->SetBorder(Border(5, Red, Green));
        component->SetWobble(false);
        component->SetOuterPos(60, 10);
        component->SetInnerSize(40, 70); // 50 x 80
        main->AddComponent(component);
        component->SetWobble(true);
        component->SetOuterPos(100, 10);
        component->Update(0);
        Draw();
        EXPECT_EQ("ff0000", Pixel(102, 11)) << "the top is where it is";
        EXPECT_EQ("ff0000", Pixel(148, 11));
        EXPECT_EQ("00ff00", Pixel(105, 50)) << "the middle half-way";
        EXPECT_EQ("000000", Pixel(140, 50));
        EXPECT_EQ("ff0000", Pixel(63, 88)) << "the bottom where it was";
        EXPECT_EQ("000000", Pixel(115, 88));
        component->SetWobble(false);
        Draw();
        EXPECT_EQ("ff0000", Pixel(103, 88));
        EXPECT_EQ("000000", Pixel(63, 88));
    });
}

TEST_F(GUIInContextTest, TheBordersOfTheToolkitTellThemselvesFromASky)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const LookAndFeel* look = LookAndFeel::GetDefault().get();
        const ComponentPtr window = Place(main, 5, 5, 188, 88, look->GetWindowBorder());
        Place(window, 2, 2, 180, 18, look->GetWindowTitleBorder());
        Place(window, 6, 28, 50, 20, look->GetButtonBorder());
        Place(window, 62, 28, 50, 20, look->GetTextBoxBorder());
        Place(window, 118, 28, 50, 20, look->GetSmallBorder());
        Place(window, 6, 58, 50, 20, look->GetDefaultBorder());
        Place(GUI::GetInstancePtr()->GetTooltipLayer(), 70, 60, 80, 20, look->GetTooltipBorder());
        Draw(0.7f);
        const auto level = [](int x, int y)
        { return std::stoi(Pixel(x, y).substr(2, 2), nullptr, 16); };
        EXPECT_EQ("b2b2b2", Pixel(2, 50));
        EXPECT_LT(level(10, 90), 40) << "the fill of a window is dark";
        EXPECT_GT(level(5, 50), level(10, 90) + 40) << "and its frame lighter";
        EXPECT_GT(level(12, 45), level(20, 45) + 20) << "so is that of a button";
        if (const char* picture = std::getenv("QUIB_TEST_PICTURE"))
            rendering::Renderer::GetInstancePtr()->ScreenShotToFile(picture);
    });
}
