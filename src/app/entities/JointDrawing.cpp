#include "app/entities/JointDrawing.h"

#include "math/Mat2D.h"
#include "math/Scalar.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <vector>

using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
// Shapes are told by how far a point lies outside of them, negative inside, in a square from -1 to 1.
using Shape = float (*)(const Vec2& p);

float Disc(const Vec2& p, float radius)
{
    return p.Length() - radius;
}

float Annulus(const Vec2& p, float middle, float halfWidth)
{
    return std::fabs(p.Length() - middle) - halfWidth;
}

// Both diagonals, with rounded ends.
float Cross(const Vec2& p, float halfLength, float halfWidth)
{
    // Mirrored into the quarter around the diagonal to the upper right.
    const Vec2 q(std::fabs(p.x), std::fabs(p.y));
    const float along = std::min((q.x + q.y) * 0.5f, halfLength);
    return math::Distance(q, Vec2(along, along)) - halfWidth;
}

// clang-format off
float HingeOutline(const Vec2& p) { return Disc(p, 0.96f); }
float HingeFill(const Vec2& p) { return Annulus(p, 0.63f, 0.2f); }
float FixJointOutline(const Vec2& p) { return Cross(p, 0.62f, 0.34f); }
float FixJointFill(const Vec2& p) { return Cross(p, 0.62f, 0.2f); }
float PenOutline(const Vec2& p) { return Disc(p, 0.96f); }
float PenFill(const Vec2& p) { return Disc(p, 0.72f); }
float RingFill(const Vec2& p) { return Annulus(p, 0.9f, 0.07f); }
// clang-format on

// A coil seen from the side: x across, y along. Its windings run from the left to the right rim.
const int Windings = 10;

float SpringOutline(const Vec2& p)
{
    return std::fabs(p.x) - 0.8f;
}

float SpringFill(const Vec2& p)
{
    const float phase = (p.y * 0.5f + 0.5f) * Windings + p.x * 0.35f;
    const float band = std::fabs(phase - std::floor(phase) - 0.5f) - 0.28f;
    return std::max(std::fabs(p.x) - 0.66f, band);
}

rendering::ImageFloatPtr MakeImage(Shape shape, unsigned width, unsigned height)
{
    rendering::ImageFloatPtr image = QUIB_NEW rendering::ImageFloat(width, height);
    const float pixel = 2 / float(width);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
        {
            const Vec2 p((float(x) + 0.5f) * 2 / float(width) - 1,
                         (float(y) + 0.5f) * 2 / float(height) - 1);
            (*image)(x, y) = std::clamp(0.5f - shape(p) / pixel, 0.0f, 1.0f);
        }
    return image;
}

const rendering::TextureProxy* MakeTexture(Shape shape, unsigned height = 64)
{
    const unsigned width = 64;
    // All joints share them, and they are never destroyed.
    return new rendering::TextureProxy(
        [shape, height] {
            return new rendering::Texture(MakeImage(shape, width, height), {GL_ALPHA, true});
        });
}

Vec4 DarkOf(const Vec4& color)
{
    return Vec4(color.XYZ() * 0.3f, color.w);
}

Vec4 LightOf(const Vec4& color)
{
    return Vec4(math::Lerp(color.XYZ(), math::Vec3(1, 1, 1), 0.5f), color.w);
}

void DrawSquare(const rendering::TextureProxy* texture, const Vec2& center, float size,
                const Vec4& color)
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    (*texture)->Bind();
    renderer->DrawRect(center, size);
    (*texture)->Unbind();
}

// Without a depth test while it lives.
class NoDepthTest
{
public:
    NoDepthTest()
        : m_wasOn(glIsEnabled(GL_DEPTH_TEST))
    {
        glDisable(GL_DEPTH_TEST);
    }
    ~NoDepthTest()
    {
        if (m_wasOn)
            glEnable(GL_DEPTH_TEST);
    }
    NoDepthTest(const NoDepthTest&) = delete;
    NoDepthTest& operator=(const NoDepthTest&) = delete;

private:
    bool m_wasOn;
};

// The caps keep their form while what is between them stretches.
void DrawCoil(const rendering::TextureProxy* texture, const physics::Linesegment& line, float size,
              const Vec4& color)
{
    const float length = line.Length();
    const Vec2 along = math::Normalized(line.p1 - line.p0);
    const Vec2 side = math::Rot90CCW(along) * (size * 0.5f);
    const float cap = std::min(size * 0.5f, length * 0.5f);
    const float capShare = 1.0f / Windings;
    const float ends[4][2] = {{0, 0}, {cap, capShare}, {length - cap, 1 - capShare}, {length, 1}};

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    (*texture)->Bind();
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [distance, v] : ends)
    {
        const Vec2 p = line.p0 + along * distance;
        glTexCoord2f(0, v);
        renderer->Vertex(p + side);
        glTexCoord2f(1, v);
        renderer->Vertex(p - side);
    }
    glEnd();
    (*texture)->Unbind();
}
}

void DrawHinge(const Vec2& center, float size, const Vec4& color)
{
    static const rendering::TextureProxy* s_outline = MakeTexture(HingeOutline);
    static const rendering::TextureProxy* s_fill = MakeTexture(HingeFill);
    const NoDepthTest noDepthTest;
    DrawSquare(s_outline, center, size, DarkOf(color));
    DrawSquare(s_fill, center, size, LightOf(color));
}

void DrawFixJoint(const Vec2& center, float angle, float size, const Vec4& color)
{
    static const rendering::TextureProxy* s_outline = MakeTexture(FixJointOutline);
    static const rendering::TextureProxy* s_fill = MakeTexture(FixJointFill);
    const NoDepthTest noDepthTest;
    glPushMatrix();
    math::Mat2D::TranslationRotation(center, angle).MultToGL();
    DrawSquare(s_outline, Vec2(), size, DarkOf(color));
    DrawSquare(s_fill, Vec2(), size, LightOf(color));
    glPopMatrix();
}

void DrawPen(const Vec2& center, float size, const Vec4& color)
{
    static const rendering::TextureProxy* s_outline = MakeTexture(PenOutline);
    static const rendering::TextureProxy* s_fill = MakeTexture(PenFill);
    const NoDepthTest noDepthTest;
    DrawSquare(s_outline, center, size, DarkOf(color));
    DrawSquare(s_fill, center, size, color);
}

void DrawSpring(const physics::Linesegment& line, float size, const Vec4& color)
{
    static const rendering::TextureProxy* s_outline = MakeTexture(SpringOutline, 512);
    static const rendering::TextureProxy* s_fill = MakeTexture(SpringFill, 512);
    const NoDepthTest noDepthTest;
    DrawCoil(s_outline, line, size, DarkOf(color));
    DrawCoil(s_fill, line, size, LightOf(color));
}

void DrawRing(const Vec2& center, float size, const Vec4& color)
{
    DrawHandle(center, 1.3f * size, color);
}

void DrawHandle(const Vec2& center, float size, const Vec4& color)
{
    static const rendering::TextureProxy* s_fill = MakeTexture(RingFill);
    const NoDepthTest noDepthTest;
    DrawSquare(s_fill, center, size, color);
}
}
