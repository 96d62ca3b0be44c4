// The shaders that ship, and some that don't, with a real OpenGL: by their pixels.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/ResourceManager.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"
#include "rendering/ShaderVariable.h"
#include "util/FileSystem.h"
#include "window/PlainWindow.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

using math::Vec2;
using math::Vec3;
using math::Vec4;
using rendering::Shader;
using rendering::ShaderManager;
using rendering::ShaderProxy;

namespace
{
constexpr int Size = 64; // of the window; the world's origin is in its middle, y points up

const Vec4 Sky(0, 0, 1, 1), Red(1, 0, 0, 1), Green(0, 1, 0, 1), White(1, 1, 1, 1);
const float Zooms[] = {1.5f, 10, 3000}; // pixels per world unit

Vec4 Mix(const Vec4& a, const Vec4& b, float t)
{
    return a * (1 - t) + b * t;
}

class ShaderInContextTest : public testing::Test
{
protected:
    static void SetUpTestSuite() { s_server = new test::XServer("640x480x24"); }
    static void TearDownTestSuite()
    {
        delete s_server;
        s_server = nullptr;
    }

    /// Opens the window. The shaders that ship are there.
    void Start()
    {
        ASSERT_NO_FATAL_FAILURE(test::OpenPlainWindow(*s_server, Size, Size));
        util::FileSystem::GetInstancePtr()->SetWorkDir(std::string(QUIB_SOURCE_DIR) + "/");
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDepthFunc(GL_LESS);
        View(1);
    }

    /// An empty sky. All lengths that follow are in pixels.
    /// @param zoom    by which the world's lengths are smaller
    /// @param offset  of the world's origin, in pixels
    void View(float zoom, Vec2 offset = Vec2())
    {
        m_zoom = zoom;
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, Size, 0, Size, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslatef(Size / 2 + offset.x, Size / 2 + offset.y, 0);
        glScalef(zoom, zoom, 1);
        glClearColor(Sky.x, Sky.y, Sky.z, Sky.w);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    void SetColors(const ShaderProxy& shader, const Vec4& inside, const Vec4& border, float width)
    {
        shader->SetUniform("InsideColor", inside);
        shader->SetUniform("BorderColor", border);
        shader->SetUniform("BorderWidth", width / m_zoom);
        shader->SetUniform("PixelSize", 1 / m_zoom);
    }

    void DrawBox(const Vec2& halfSize, const Vec4& inside, const Vec4& border, float width)
    {
        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("box");
        const util::BindScope<Shader> scope(*shader.operator->());
        SetColors(shader, inside, border, width);
        const Vec2 half = halfSize / m_zoom;
        shader->SetUniform("HalfSize", half);
        glBegin(GL_QUADS);
        for (const Vec2& sign : {Vec2(-1, -1), Vec2(1, -1), Vec2(1, 1), Vec2(-1, 1)})
        {
            glTexCoord2f(sign.x * half.x, sign.y * half.y);
            glVertex2f(sign.x * half.x, sign.y * half.y);
        }
        glEnd();
    }

    void DrawCircle(float radius, const Vec4& inside, const Vec4& border, float width,
                    const Vec4& wedge)
    {
        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("circle");
        const util::BindScope<Shader> scope(*shader.operator->());
        SetColors(shader, inside, border, width);
        shader->SetUniform("Radius", radius / m_zoom);
        shader->SetUniform("SquareScale", 1.2f);
        shader->SetUniform("CakeSlizeColor", wedge);
        shader->SetUniform("CakeSize", 0.0625f);
        rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 2.4f * radius / m_zoom);
    }

    /// A square polygon in a map that reaches 1.2 times as far.
    void DrawPolygon(float half, const Vec4& inside, const Vec4& border, float width)
    {
        const int cells = 64;
        const float reach = 1.2f * half;
        const float scale = 0.04f * 2 * reach;
        std::vector<float> map;
        for (int y = 0; y < cells; ++y)
            for (int x = 0; x < cells; ++x)
            {
                const float u = std::fabs((x + 0.5f) / cells * 2 - 1) * reach;
                const float v = std::fabs((y + 0.5f) / cells * 2 - 1) * reach;
                map.push_back((std::max(u, v) - half) / scale + 0.5f);
            }
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_ALPHA, cells, cells, 0, GL_ALPHA, GL_FLOAT, map.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        // With its transparent border, which would be inside.
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);

        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("polygon");
        const util::BindScope<Shader> scope(*shader.operator->());
        SetColors(shader, inside, border, width);
        shader->SetUniform("PixelSize", std::max(1.0f, width) / m_zoom);
        shader->SetUniform("DistSampler", 0);
        shader->SetUniform("DistScale", scale / m_zoom);
        rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 2 * reach / m_zoom);
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &texture);
    }

    /// Earth up to a line through the world's origin, seen in GUI units of so many pixels.
    void DrawPlane(const Vec4& inside, const Vec4& border, float width, const Vec2& normal,
                   float guiScale)
    {
        View(m_zoom);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, Size / guiScale, 0, Size / guiScale, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        const float middle = Size / 2 / guiScale;
        glTranslatef(middle, middle, 0);
        glScalef(m_zoom / guiScale, m_zoom / guiScale, 1);

        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("plane");
        const util::BindScope<Shader> scope(*shader.operator->());
        SetColors(shader, inside, border, width);
        shader->SetUniform("Plane", Vec3(normal.x, normal.y, -Dot(normal, Vec2(middle, middle))));
        const float half = Size / 2 / m_zoom;
        glBegin(GL_TRIANGLE_FAN);
        glVertex2f(-half, -half);
        glVertex2f(half, -half);
        glVertex2f(half, half);
        glVertex2f(-half, half);
        glEnd();
    }

    /// From left to right, so wide and a pixel.
    void DrawLine(const Vec4& color, float width, float from, float to)
    {
        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("line");
        const util::BindScope<Shader> scope(*shader.operator->());
        const float strip = (width + 1) / m_zoom, half = Size / 2 / m_zoom;
        shader->SetUniform("Color", color);
        shader->SetUniform("Width", strip);
        shader->SetUniform("PixelSize", 1 / m_zoom);
        glBegin(GL_TRIANGLE_STRIP);
        for (const int end : {-1, 1})
            for (const int side : {-1, 1})
            {
                glTexCoord2f(side < 0 ? 0 : strip, end < 0 ? from : to);
                glVertex2f(end * half, side * strip / 2);
            }
        glEnd();
    }

    enum Field
    {
        RisesToTheRight, // from 0 to nearly 1
        RisesDownwards,
        IsFullBelow, // 1 in the lower half at once
        IsFull
    };

    void DrawWater(const Vec4& color, float cutoff, unsigned char green,
                   Field shape = RisesToTheRight)
    {
        std::vector<unsigned char> field;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
            {
                const int value = shape == RisesToTheRight  ? 4 * x
                                  : shape == RisesDownwards ? 4 * (Size - 1 - y)
                                  : shape == IsFullBelow    ? 255 * (y < Size / 2)
                                                            : 255;
                for (const int channel : {value, int(green), value, value})
                    field.push_back(static_cast<unsigned char>(channel));
            }
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, Size, Size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     field.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);

        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("water");
        const util::BindScope<Shader> scope(*shader.operator->());
        shader->SetUniform("Cutoff", cutoff);
        shader->SetUniform("Color", color);
        rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), Size);
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &texture);
    }

    /// The pixel whose lower left corner is so far from the middle.
    static Vec4 At(int x, int y)
    {
        unsigned char rgba[4];
        glReadPixels(Size / 2 + x, Size / 2 + y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        return Vec4(rgba[0], rgba[1], rgba[2], 255) * (1 / 255.0f);
    }

    static void ExpectPixel(const Vec4& expected, int x, int y, int line, float tolerance = 0.012f)
    {
        const Vec4 found = At(x, y);
        EXPECT_TRUE(std::fabs(found.x - expected.x) < tolerance &&
                    std::fabs(found.y - expected.y) < tolerance &&
                    std::fabs(found.z - expected.z) < tolerance)
            << "line " << line << ", pixel " << x << ", " << y << ": " << found << " instead of "
            << expected;
    }

    static inline test::XServer* s_server = nullptr;
    float m_zoom = 1;
};

#define EXPECT_PIXEL(expected, x, y) ExpectPixel(expected, x, y, __LINE__)

// What each shader is given. Nothing else may stay unset.
struct Listed
{
    const char* shader;
    std::map<std::string, GLenum> uniforms;
};
const Listed AllListed[] = {
    {"box",
     {{"InsideColor", GL_FLOAT_VEC4_ARB},
      {"BorderColor", GL_FLOAT_VEC4_ARB},
      {"BorderWidth", GL_FLOAT},
      {"PixelSize", GL_FLOAT},
      {"HalfSize", GL_FLOAT_VEC2_ARB}}},
    {"circle",
     {{"InsideColor", GL_FLOAT_VEC4_ARB},
      {"BorderColor", GL_FLOAT_VEC4_ARB},
      {"BorderWidth", GL_FLOAT},
      {"PixelSize", GL_FLOAT},
      {"Radius", GL_FLOAT},
      {"SquareScale", GL_FLOAT},
      {"CakeSlizeColor", GL_FLOAT_VEC4_ARB}, // the spelling stays
      {"CakeSize", GL_FLOAT}}},
    {"polygon",
     {{"InsideColor", GL_FLOAT_VEC4_ARB},
      {"BorderColor", GL_FLOAT_VEC4_ARB},
      {"BorderWidth", GL_FLOAT},
      {"PixelSize", GL_FLOAT},
      {"DistSampler", GL_SAMPLER_2D_ARB},
      {"DistScale", GL_FLOAT}}},
    {"plane",
     {{"InsideColor", GL_FLOAT_VEC4_ARB},
      {"BorderColor", GL_FLOAT_VEC4_ARB},
      {"BorderWidth", GL_FLOAT},
      {"PixelSize", GL_FLOAT},
      {"Plane", GL_FLOAT_VEC3_ARB}}},
    {"line", {{"Color", GL_FLOAT_VEC4_ARB}, {"Width", GL_FLOAT}, {"PixelSize", GL_FLOAT}}},
    {"water", {{"Cutoff", GL_FLOAT}, {"Color", GL_FLOAT_VEC4_ARB}, {"Field", GL_SAMPLER_2D_ARB}}},
};
}

TEST_F(ShaderInContextTest, EachShaderThatShipsIsMadeWithoutAWordAndUsesWhatItIsGiven)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const Listed& listed : AllListed)
        {
            SCOPED_TRACE(listed.shader);
            test::LogCapture log;
            const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load(listed.shader);
            ASSERT_TRUE(shader) << log.Text();
            for (const auto& uniform : listed.uniforms)
                EXPECT_LE(0, shader->GetUniformLocation(uniform.first));
            EXPECT_EQ("", log.Text());

            const util::BindScope<Shader> scope(*shader.operator->());
            const GLhandleARB program = glGetHandleARB(GL_PROGRAM_OBJECT_ARB);
            GLint count = 0;
            glGetObjectParameterivARB(program, GL_OBJECT_ACTIVE_UNIFORMS_ARB, &count);
            std::map<std::string, GLenum> active;
            for (GLint i = 0; i < count; ++i)
            {
                char name[64];
                GLsizei length = 0;
                GLint size = 0;
                GLenum type = 0;
                glGetActiveUniformARB(program, GLuint(i), sizeof(name), &length, &size, &type,
                                      name);
                if (std::string(name).compare(0, 3, "gl_") != 0) // of the fixed functions
                    active[name] = type;
            }
            EXPECT_EQ(listed.uniforms, active);
            GLint attributes = 0;
            glGetObjectParameterivARB(program, GL_OBJECT_ACTIVE_ATTRIBUTES_ARB, &attributes);
            for (GLint i = 0; i < attributes; ++i)
            {
                char name[64];
                GLsizei length = 0;
                GLint size = 0;
                GLenum type = 0;
                glGetActiveAttribARB(program, GLuint(i), sizeof(name), &length, &size, &type, name);
                EXPECT_EQ("gl_", std::string(name).substr(0, 3)) << name;
            }
        }
    });
}

TEST_F(ShaderInContextTest, ABoxHasItsBorderInsideItsEdgeAtAnyZoom)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const float zoom : Zooms)
        {
            SCOPED_TRACE(zoom);
            View(zoom);
            DrawBox(Vec2(20, 10), Red, Green, 3);
            EXPECT_PIXEL(Red, 0, 0);
            EXPECT_PIXEL(Red, 16, 0);
            EXPECT_PIXEL(Green, 17, 0);
            EXPECT_PIXEL(Green, 19, 0);
            EXPECT_PIXEL(Sky, 20, 0);
            EXPECT_PIXEL(Green, -20, -10);
            EXPECT_PIXEL(Sky, -21, 0);
            EXPECT_PIXEL(Red, 0, 6);
            EXPECT_PIXEL(Green, 0, 7);
            EXPECT_PIXEL(Sky, 0, 10);

            // All edges go through the middles of pixels.
            View(zoom, Vec2(0.5f, 0.5f));
            DrawBox(Vec2(20, 10), Red, Green, 3);
            EXPECT_PIXEL(Mix(Sky, Green, 0.5f), 20, 0);
            EXPECT_PIXEL(Mix(Sky, Green, 0.5f), -20, 0);
            EXPECT_PIXEL(Mix(Sky, Green, 0.25f), 20, 10);
            EXPECT_PIXEL(Mix(Green, Red, 0.5f), 17, 0);
            EXPECT_PIXEL(Sky, 21, 0);
        }
    });
}

TEST_F(ShaderInContextTest, ABoxMayHaveNoBorderAndNeverNothingElse)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        View(10, Vec2(0.5f, 0.5f));
        DrawBox(Vec2(20, 10), Red, Green, 0);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_PIXEL(Red, 19, 0);
        EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 20, 0); // and no fringe of the border's color

        View(10);
        DrawBox(Vec2(20, 10), Red, Green, 100);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_PIXEL(Red, 14, 4);
        EXPECT_PIXEL(Green, 15, 5);
        EXPECT_PIXEL(Green, 19, 9);
        // A plank of four pixels.
        View(10);
        DrawBox(Vec2(20, 2), Red, Green, 3);
        EXPECT_PIXEL(Green, 0, 1);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_PIXEL(Red, 0, -1);
        EXPECT_PIXEL(Green, 0, -2);

        // Thinner than a pixel: as much as it covers.
        View(10);
        DrawBox(Vec2(0.125f, 10), Red, Red, 3);
        EXPECT_PIXEL(Mix(Sky, Red, 0.125f), 0, 0);
        EXPECT_PIXEL(Mix(Sky, Red, 0.125f), -1, 0);
        View(10, Vec2(0.5f, 0));
        DrawBox(Vec2(0.125f, 10), Red, Red, 3);
        EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, 0);
    });
}

TEST_F(ShaderInContextTest, BorderAndInsideOfATranslucentBoxKeepTheirOwnOpacity)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        View(10);
        DrawBox(Vec2(20, 10), Vec4(1, 0, 0, 0.25f), Vec4(0, 1, 0, 0.75f), 3);
        EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, 0);
        EXPECT_PIXEL(Mix(Sky, Green, 0.75f), 18, 0);

        // Half of each: the colors mix as if one pixel of each had been drawn and both had run together.
        View(10, Vec2(0.5f, 0.5f));
        DrawBox(Vec2(20, 10), Vec4(1, 0, 0, 0.25f), Vec4(0, 1, 0, 0.75f), 3);
        EXPECT_PIXEL(Mix(Mix(Sky, Red, 0.25f), Mix(Sky, Green, 0.75f), 0.5f), 17, 0);

        // Nothing of a color that isn't to be seen.
        View(10, Vec2(0.5f, 0.5f));
        DrawBox(Vec2(20, 10), Vec4(1, 0, 0, 0), Green, 3);
        EXPECT_PIXEL(Mix(Sky, Green, 0.5f), 17, 0);
        EXPECT_PIXEL(Sky, 0, 0);
    });
}

TEST_F(ShaderInContextTest, ACircleHasItsBorderInsideAndAWedgeAtAnyZoom)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const float zoom : Zooms)
        {
            SCOPED_TRACE(zoom);
            View(zoom, Vec2(0.5f, 0.5f)); // in the middle of a pixel
            DrawCircle(20, Red, Green, 3, White);
            EXPECT_PIXEL(Red, -1, 0);
            EXPECT_PIXEL(Red, 0, 16);
            EXPECT_PIXEL(Mix(Green, Red, 0.5f), 0, 17);
            EXPECT_PIXEL(Green, -18, 0);
            EXPECT_PIXEL(Green, 0, -19);
            EXPECT_PIXEL(Mix(Sky, Green, 0.5f), 0, 20);
            EXPECT_PIXEL(Mix(Sky, Green, 0.5f), -20, 0);
            EXPECT_PIXEL(Sky, 0, 21);
            EXPECT_PIXEL(Sky, 15, 15);

            // 11.25 degrees to either side of the x axis, up to the border.
            EXPECT_PIXEL(White, 16, 0);
            EXPECT_PIXEL(Green, 18, 0);
            EXPECT_PIXEL(White, 14, 1);
            EXPECT_PIXEL(Red, 14, 4);
            EXPECT_PIXEL(Red, 14, -4);
            EXPECT_PIXEL(Red, -14, 0);
            // Near the tip it is thinner than a pixel.
            EXPECT_PIXEL(Mix(Red, White, 2 * std::sin(0.0625f * math::PIf)), 1, 0);
            // An edge through the middle of a pixel, but for 0.017 of it.
            const float depth =
                (10 * std::sin(0.0625f * math::PIf) - 2 * std::cos(0.0625f * math::PIf)) + 0.5f;
            EXPECT_PIXEL(Mix(Red, White, depth), 10, 2);
        }
    });
}

TEST_F(ShaderInContextTest, ACircleMayHaveNoBorderAndNeverNothingElse)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        View(10, Vec2(0.5f, 0.5f));
        DrawCircle(20, Red, Green, 0, White);
        EXPECT_PIXEL(Red, 0, 19);
        EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 0, 20);
        EXPECT_PIXEL(White, 19, 0);

        View(10, Vec2(0.5f, 0.5f));
        DrawCircle(20, Red, Green, 100, White);
        EXPECT_PIXEL(Red, -13, 0);
        EXPECT_PIXEL(White, 13, 0);
        EXPECT_PIXEL(Green, 0, 15);

        View(10, Vec2(0.5f, 0.5f));
        DrawCircle(20, Vec4(1, 0, 0, 0.25f), Vec4(0, 1, 0, 0.75f), 3, Vec4(1, 1, 1, 0.5f));
        EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, 10);
        EXPECT_PIXEL(Mix(Sky, Green, 0.75f), 0, 18);
        EXPECT_PIXEL(Mix(Sky, White, 0.5f), 14, 0);

        // Its square is 0.2 pixels larger here, and leaves no room to fade.
        View(10, Vec2(0.5f, 0.5f));
        DrawCircle(1, Red, Red, 0, Red);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 1, 0);
        EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 0, -1);
        View(10, Vec2(0.2f, 0.5f));
        DrawCircle(1, Red, Red, 0, Red);
        EXPECT_PIXEL(Mix(Sky, Red, 0.2f), 1, 0);
    });
}

TEST_F(ShaderInContextTest, WhereAShapeIsNotItWritesNoDepth)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const auto expectDepth = [](bool isWritten, int x, int y)
        {
            float depth = 0;
            glReadPixels(Size / 2 + x, Size / 2 + y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
            EXPECT_EQ(isWritten, depth < 0.9f) << x << ", " << y;
        };
        glEnable(GL_DEPTH_TEST);
        View(10);
        DrawCircle(20, Red, Green, 3, White);
        expectDepth(true, 0, 0);
        expectDepth(true, 0, 19);
        expectDepth(false, 18, 18); // a corner of its square
        View(10);
        DrawPolygon(20, Red, Green, 3);
        expectDepth(true, 0, 0);
        expectDepth(false, 22, 22);
        View(10);
        DrawBox(Vec2(20, 10), Vec4(), Vec4(), 3);
        expectDepth(false, 0, 0);
        DrawPlane(Red, Green, 3, Vec2(0, 1), 1);
        expectDepth(true, 0, -5);
        expectDepth(false, 0, 5);
    });
}

TEST_F(ShaderInContextTest, APolygonHasASharpOutlineWithInkThatRunsOutInwards)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const float zoom : Zooms)
        {
            SCOPED_TRACE(zoom);
            View(zoom);
            DrawPolygon(25, Red, Green, 1.15f); // half of the map's scale of 2.4 would be too much
            EXPECT_PIXEL(Red, 0, 0);
            EXPECT_PIXEL(Red, 23, 0);
            const Vec4 ink = At(24, 0);
            EXPECT_LT(0.4f, ink.y);
            EXPECT_EQ(0, ink.z) << "the outline is sharp";
            EXPECT_PIXEL(Sky, 25, 0);

            // The map ends 0.1 pixels beyond the middle of one. At its end it is half inside.
            View(zoom, Vec2(0.4f, 0.4f));
            DrawPolygon(25, Red, Green, 1.15f);
            for (int i = 27; i < Size / 2; ++i)
            {
                EXPECT_PIXEL(Sky, i, 0);
                EXPECT_PIXEL(Sky, -i, 3);
                EXPECT_PIXEL(Sky, 3, -i);
                EXPECT_PIXEL(Sky, -i, -i);
            }

            View(zoom, Vec2(0.5f, 0.5f));
            DrawPolygon(25, Red, Red, 1.15f);
            ExpectPixel(Mix(Sky, Red, 0.5f), 25, 0, __LINE__, 0.03f);
        }
    });
}

TEST_F(ShaderInContextTest, APolygonMayHaveNoBorderAndNeverNothingElse)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        View(10);
        DrawPolygon(25, Red, Green, 0);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_PIXEL(Red, 24, 0);
        View(10, Vec2(0.5f, 0.5f));
        DrawPolygon(25, Red, Green, 0);
        EXPECT_LT(At(25, 0).y, 0.02f) << "no fringe";

        // The map doesn't know how deep the inside is: beyond half its scale it is inside.
        View(10);
        DrawPolygon(25, Red, Green, 10);
        EXPECT_PIXEL(Red, 0, 0);
        EXPECT_LT(0.4f, At(24, 0).y);

        View(10);
        DrawPolygon(25, Vec4(1, 0, 0, 0.25f), Vec4(0, 1, 0, 0.75f), 1.15f);
        EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, 0);
    });
}

TEST_F(ShaderInContextTest, APlaneIsEarthUnderALighterBandWhateverAGUIUnitIs)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const float zoom : Zooms)
            for (const float guiScale : {0.5f, 1.0f, 2.0f})
            {
                SCOPED_TRACE(testing::Message() << zoom << ", " << guiScale);
                m_zoom = zoom;
                DrawPlane(Red, Green, 3, Vec2(0, 1), guiScale);
                EXPECT_PIXEL(Sky, 0, 0);
                EXPECT_PIXEL(Sky, 20, 20);
                EXPECT_PIXEL(Green, 0, -1);
                EXPECT_PIXEL(Green, -20, -3);
                const Vec4 light = Mix(Red, White, 0.25f);
                EXPECT_PIXEL(light, 0, -4);
                EXPECT_PIXEL(light, 0, -15);
                EXPECT_PIXEL(Red, 0, -16);
                EXPECT_PIXEL(Red, 0, -32);
            }

        m_zoom = 10;
        DrawPlane(Red, Green, 0, Vec2(0, 1), 1);
        EXPECT_PIXEL(Sky, 0, 0);
        EXPECT_PIXEL(Red, 0, -1);

        // The edge goes through the corners of these pixels, and cuts them in half.
        DrawPlane(Red, Green, 0, Vec2(std::sqrt(0.5f), std::sqrt(0.5f)), 1);
        EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 5, -6);
        EXPECT_PIXEL(Sky, 5, -4);
        EXPECT_PIXEL(Red, 5, -8);

        DrawPlane(Vec4(1, 0, 0, 0.25f), Vec4(0, 1, 0, 0.75f), 3, Vec2(0, 1), 1);
        EXPECT_PIXEL(Mix(Sky, Green, 0.75f), 0, -2);
        EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, -20);
    });
}

TEST_F(ShaderInContextTest, ALineHasSoftSidesAndFades)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const float zoom : Zooms)
        {
            SCOPED_TRACE(zoom);
            View(zoom);
            DrawLine(Red, 6, 1, 1);
            EXPECT_PIXEL(Red, 0, 0);
            EXPECT_PIXEL(Red, 0, 2);
            EXPECT_PIXEL(Red, 0, -3);
            EXPECT_PIXEL(Sky, 0, 3);
            EXPECT_PIXEL(Sky, 0, -4);
            View(zoom, Vec2(0, 0.5f));
            DrawLine(Red, 6, 1, 1);
            EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 0, 3);
            EXPECT_PIXEL(Mix(Sky, Red, 0.5f), 0, -3);

            View(zoom);
            DrawLine(Vec4(1, 0, 0, 0.5f), 6, 0, 1);
            for (const int x : {-32, -16, 0, 16, 31})
                EXPECT_PIXEL(Mix(Sky, Red, 0.5f * (float(x) + 32.5f) / Size), x, 0);

            View(zoom, Vec2(0, 0.5f));
            DrawLine(Red, 0.25f, 1, 1);
            EXPECT_PIXEL(Mix(Sky, Red, 0.25f), 0, 0); // thinner than a pixel
        }
    });
}

TEST_F(ShaderInContextTest, WaterIsThereAboveTheCutoffWithARimOfLight)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const Vec4 blue(0.1f, 0.1f, 1, 0.75f);
        glClearColor(0, 0, 0, 1);
        for (const float cutoff : {0.25f, 0.5f})
        {
            SCOPED_TRACE(cutoff);
            glClear(GL_COLOR_BUFFER_BIT);
            DrawWater(blue, cutoff, 0);
            const int edge = int(cutoff * Size) - Size / 2;
            EXPECT_PIXEL(Vec4(), -32, 0);
            EXPECT_PIXEL(Vec4(), edge - 2, 0);
            EXPECT_PIXEL(blue * 0.75f, edge + 6, 0);
            EXPECT_PIXEL(blue * 0.75f, 31, 0);
            EXPECT_LT(0.3f, At(edge + 1, 0).x) << "the rim is lighter";
            EXPECT_GT(0.3f, At(edge + 4, 0).x) << "and some three pixels wide";
        }

        // Darker with depth, of which green tells.
        float before = 1;
        for (const unsigned char green : {0, 8, 16, 32})
        {
            glClear(GL_COLOR_BUFFER_BIT);
            DrawWater(blue, 0.5f, green);
            const float depth = At(20, 0).z;
            EXPECT_LT(depth, before);
            EXPECT_LT(0.4f, depth) << "but a little";
            before = depth;
        }
        // All of it within a few pixels of the surface: from there on green shows the single drops.
        for (const unsigned char green : {32, 100, 255})
        {
            glClear(GL_COLOR_BUFFER_BIT);
            DrawWater(blue, 0.5f, green);
            EXPECT_NEAR(0.75f * 0.84f, At(20, 0).z, 0.01f);
        }

        // The light comes from above.
        glClear(GL_COLOR_BUFFER_BIT);
        DrawWater(blue, 0.5f, 0, RisesDownwards);
        const float above = At(0, -2).x;
        glScalef(1, -1, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        DrawWater(blue, 0.5f, 0, RisesDownwards);
        EXPECT_LT(At(0, 1).x + 0.2f, above);
        glScalef(1, -1, 1);

        // As wide where the field, as from afar, has no slope.
        glClear(GL_COLOR_BUFFER_BIT);
        DrawWater(blue, 0.5f, 0, IsFullBelow);
        EXPECT_PIXEL(Vec4(), 0, 1);
        for (const int y : {-1, -2, -3})
            EXPECT_LT(0.6f, At(0, y).x) << y;
        EXPECT_PIXEL(blue * 0.75f, 0, -5);
        EXPECT_PIXEL(blue * 0.75f, 0, -32);

        // Far from the surface the field is flat, and the edges of the window are no surface.
        glClear(GL_COLOR_BUFFER_BIT);
        DrawWater(blue, 0.5f, 0, IsFull);
        for (const Vec2& at : {Vec2(0, 0), Vec2(0, 31), Vec2(-32, 31), Vec2(31, -32)})
            EXPECT_PIXEL(blue * 0.75f, int(at.x), int(at.y));

        // What isn't to be seen has no rim.
        glClear(GL_COLOR_BUFFER_BIT);
        DrawWater(Vec4(0.1f, 0.1f, 1, 0), 0.5f, 0);
        EXPECT_PIXEL(Vec4(), 1, 0);
    });
}

TEST_F(ShaderInContextTest, WhatIsWrongWithAShaderIsInTheLogAndTheFixedFunctionsDraw)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::TempDir dir;
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        boost::filesystem::create_directories(dir / "data/shaders/default");
        const std::string vertex = "#version 120\nvarying float v;\nvoid main()\n{\n    v = 1.0;\n"
                                   "    gl_Position = ftransform();\n}\n";
        const std::string fragment = "#version 120\nvarying float v;\nvoid main()\n{\n"
                                     "    gl_FragColor = vec4(v);\n}\n";
        const struct
        {
            const char* name;
            std::string vertex;
            std::string fragment;
            const char* results;
            const char* said;
            const char* error;
        } cases[] = {
            {"badVertex", "#version 120\nvoid main()\n{\n    gl_Position = nonsense;\n}\n",
             fragment, "-- Compilation results for shader: badVertex\n", "0:4",
             "Failed to compile shader"},
            {"badFragment", vertex, "#version 120\nvoid main()\n{\n\n    oops\n}\n",
             "-- Compilation results for shader: badFragment\n", "0:6", "Failed to compile shader"},
            {"apart", vertex,
             "#version 120\nvarying vec3 v;\nvoid main()\n{\n    gl_FragColor = v.xyzz;\n}\n",
             "-- Linking results for program: apart\n", "v", "Failed to link shader"},
        };
        for (const auto& c : cases)
        {
            SCOPED_TRACE(c.name);
            test::Spit(dir / "data/shaders/default/" + c.name + ".vert", c.vertex);
            test::Spit(dir / "data/shaders/default/" + c.name + ".frag", c.fragment);
            test::LogCapture log;
            const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load(c.name);
            EXPECT_FALSE(shader);
            EXPECT_TRUE(std::any_of(log.Lines().begin(), log.Lines().end(),
                                    [&](const std::string& line)
                                    {
                                        return line.find(c.results) == 0 &&
                                               line.find(c.said) != std::string::npos &&
                                               line.compare(line.size() - 2, 2, "--") == 0;
                                    }))
                << log.Text();
            EXPECT_TRUE(log.Has(std::string("!! ERROR: ") + c.error)) << log.Text();
            EXPECT_TRUE(log.Has(std::string("!! ERROR: Failed to load shader ") + c.name));

            View(1);
            {
                const util::BindScope<Shader> scope(*shader.operator->());
                shader->SetUniform("v", 1.0f);
                glColor4f(1, 0, 0, 1);
                rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 10);
            }
            EXPECT_PIXEL(Red, 0, 0);
            EXPECT_NO_THROW(rendering::CheckForGLError());
        }
        // What a full disk leaves.
        test::Spit(dir / "data/shaders/default/empty.vert", "");
        test::Spit(dir / "data/shaders/default/empty.frag", "");
        test::LogCapture log(logging::LogError);
        EXPECT_FALSE(ShaderManager::GetInstancePtr()->Load("empty"));
        EXPECT_TRUE(log.Has("Failed to load shader empty")) << log.Text();
    });
}

TEST_F(ShaderInContextTest, AfterAReloadUniformsAreAskedForAnew)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        test::TempDir dir;
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        boost::filesystem::create_directories(dir / "data/shaders/default");
        const auto write = [&](const std::string& uniforms, const std::string& color)
        {
            test::Spit(dir / "data/shaders/default/a.vert",
                       "#version 120\nvoid main() { gl_Position = ftransform(); }\n");
            test::Spit(dir / "data/shaders/default/a.frag",
                       "#version 120\n" + uniforms + "void main() { gl_FragColor = vec4(" + color +
                           ", 1.0); }\n");
        };
        write("uniform float R; uniform float G;\n", "R, G, 0.0");
        const ShaderProxy shader = ShaderManager::GetInstancePtr()->Load("a");
        const rendering::Uniform r(shader, "R"), g(shader, "G"), b(shader, "B");
        const auto draw = [&]
        {
            View(1);
            const util::BindScope<Shader> scope(*shader.operator->());
            r.Set(1.0f);
            g.Set(0.5f);
            b.Set(0.25f);
            rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 10);
        };
        test::LogCapture log(6);
        draw();
        EXPECT_PIXEL(Vec4(1, 0.5f, 0, 1), 0, 0);
        draw();
        EXPECT_EQ(1u, log.Count("Uniform \"B\" not found in shader")) << log.Text();

        write("uniform float B; uniform float G; uniform float R;\n", "R, G, B");
        core::ResourceManager::GetInstancePtr()->LoadClass<Shader>(true);
        draw();
        EXPECT_PIXEL(Vec4(1, 0.5f, 0.25f, 1), 0, 0);

        // Broken, the fixed functions draw, in white; then it is mended.
        write("nonsense\n", "R, G, B");
        core::ResourceManager::GetInstancePtr()->LoadClass<Shader>(true);
        glColor4f(1, 1, 1, 1);
        draw();
        EXPECT_PIXEL(White, 0, 0);
        write("uniform float R; uniform float G; uniform float B;\n", "G, R, B");
        core::ResourceManager::GetInstancePtr()->LoadClass<Shader>(true);
        draw();
        EXPECT_PIXEL(Vec4(0.5f, 1, 0.25f, 1), 0, 0);
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}
