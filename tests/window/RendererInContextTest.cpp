// The renderer with a real OpenGL: what tests/rendering sees of its calls, here by its pixels.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "WhatOf.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "window/PlainWindow.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

using math::Vec2;
using math::Vec4;
using rendering::Renderer;

namespace
{
constexpr int Width = 62, Height = 40; // rows that are no multiple of four bytes

Vec4 CurrentGLColor()
{
    Vec4 color;
    glGetFloatv(GL_CURRENT_COLOR, &color.x);
    return color;
}

/// As "rrggbb", y upward.
std::string Pixel(int x, int y)
{
    unsigned char rgb[4];
    char text[8];
    glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
    std::snprintf(text, sizeof(text), "%02x%02x%02x", rgb[0], rgb[1], rgb[2]);
    return text;
}

class RendererInContextTest : public testing::Test
{
protected:
    void Start()
    {
        ASSERT_NO_FATAL_FAILURE(test::OpenPlainWindow(server, Width, Height));
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, Width, 0, Height, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glClear(GL_COLOR_BUFFER_BIT);
        r = Renderer::GetInstancePtr();
    }

    test::XServer server{"640x480x24"};
    Renderer* r = nullptr;
};
}

TEST_F(RendererInContextTest, TheCacheAndGLAgreeAboutTheColor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        r->SetColor4(0.5f, 0.25f, 1, 0.5f);
        EXPECT_EQ(r->GetColor4(), CurrentGLColor());
        {
            rendering::AttribPusher pusher;
            r->SetColor4(1, 0, 0, 1);
            EXPECT_EQ(r->GetColor4(), CurrentGLColor());
        }
        EXPECT_EQ(Vec4(0.5f, 0.25f, 1, 0.5f), CurrentGLColor());
        EXPECT_EQ(r->GetColor4(), CurrentGLColor());
        {
            // Who goes past the renderer does it inside such a scope.
            rendering::AttribPusher pusher;
            glColor4f(0, 1, 0, 1);
        }
        EXPECT_EQ(r->GetColor4(), CurrentGLColor());
        r->ResetColor();
        EXPECT_EQ(Vec4(1, 1, 1, 1), CurrentGLColor());
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}

TEST_F(RendererInContextTest, FillsARectangleAndNothingBeside)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        r->SetColor4(1, 0, 0, 1);
        r->DrawRect(10, 10, 20, 5, 1, 1);
        EXPECT_EQ("ff0000", Pixel(10, 10));
        EXPECT_EQ("ff0000", Pixel(29, 14));
        EXPECT_EQ("000000", Pixel(9, 10));
        EXPECT_EQ("000000", Pixel(30, 14));
        EXPECT_EQ("000000", Pixel(10, 15));
    });
}

TEST_F(RendererInContextTest, AFrameLiesInsideItsRectangleAndLeavesItsInsideFree)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        r->SetColor4(0, 1, 0, 1);
        r->DrawFrame(Vec2(10, 10), Vec2(20, 20), 3);
        for (const int edge : {10, 12, 27, 29})
        {
            EXPECT_EQ("00ff00", Pixel(edge, 20)) << edge;
            EXPECT_EQ("00ff00", Pixel(20, edge)) << edge;
        }
        for (const int outside : {9, 13, 20, 26, 30})
            EXPECT_EQ("000000", Pixel(outside, 20)) << outside;
    });
}

TEST_F(RendererInContextTest, AGLErrorIsThrownByItsName)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        glEnable(0xFFFF);
        EXPECT_EQ("GL-Error: invalid enumerant",
                  test::WhatOf<std::runtime_error>(rendering::CheckForGLError));
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}

TEST_F(RendererInContextTest, AScreenshotHoldsThePixelsOfARowThatIsNoMultipleOfFour)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        r->SetColor4(1, 0, 0, 1);
        r->DrawRect(0, 0, 1, Height, 1, 1); // the left column
        r->SetColor4(0, 0, 1, 1);
        r->DrawRect(Width - 1, 0, 1, Height, 1, 1); // and the right one
        test::TempDir dir;
        r->ScreenShotToFile(dir / "a.tga");
        const std::string file = test::Slurp(dir / "a.tga");
        ASSERT_EQ(18u + Width * Height * 3, file.size());
        for (int y = 0; y < Height; ++y)
        {
            const char* row = file.data() + 18 + y * Width * 3;
            EXPECT_EQ(std::string("\0\0\xff", 3), std::string(row, 3)) << "row " << y;
            EXPECT_EQ(std::string("\xff\0\0", 3), std::string(row + (Width - 1) * 3, 3))
                << "row " << y;
        }
        GLint alignment = 0;
        glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
        EXPECT_EQ(4, alignment);
    });
}
