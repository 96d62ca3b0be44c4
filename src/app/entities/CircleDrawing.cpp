#include "app/entities/CircleDrawing.h"

#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

using math::Vec2;

namespace app
{
namespace
{
const int OutlineSteps = 128;
// On each side of the x axis, of the wedge.
const int OpenSteps = int(CircleCakeSize * OutlineSteps * 0.5f + 0.5f);

/// From one step around to another, with the origin.
void DrawFan(float r, int from, int to)
{
    if (r <= 0)
        return;
    static const auto* const s_vecs = new math::Vec2List(CalcVecs(OutlineSteps));
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_TRIANGLE_FAN);
    renderer->Vertex(Vec2());
    for (int i = from; i <= to; ++i)
        renderer->Vertex((*s_vecs)[i > OutlineSteps ? i - OutlineSteps : i] * r);
    glEnd();
}

rendering::TextureProxy CreateTexture(bool cake)
{
    return rendering::ComputedTexture([cake] { return MakeCircleImage(cake); }, {GL_ALPHA, true});
}
}

float Smooth(float w, float x)
{
    return std::clamp(x / w + 0.5f, 0.0f, 1.0f);
}

math::Vec2List CalcVecs(int n)
{
    math::Vec2List vecs;
    for (int i = 0; i < n; ++i)
    {
        const float angle = -math::TwoPIf * float(i) / float(n);
        vecs.push_back(Vec2(std::cos(angle), std::sin(angle)));
    }
    vecs.push_back(vecs.front());
    return vecs;
}

rendering::ImageFloatPtr MakeCircleImage(bool cake)
{
    rendering::ImageFloatPtr image =
        QUIB_NEW rendering::ImageFloat(CircleTexSize, CircleTexSize, "circle");
    const float pixel = 2 * CircleSquareScale / CircleTexSize;
    for (unsigned y = 0; y < CircleTexSize; ++y)
        for (unsigned x = 0; x < CircleTexSize; ++x)
        {
            const float u = (float(x) + 0.5f) * pixel - CircleSquareScale;
            const float v = (float(y) + 0.5f) * pixel - CircleSquareScale;
            const float d = std::sqrt(u * u + v * v);
            float coverage = Smooth(pixel, 1 - d);
            if (cake && coverage > 0)
                coverage *=
                    Smooth(pixel / d, std::fabs(std::atan2(v, u)) - CircleCakeSize * math::PIf);
            (*image)(x, y) = coverage;
        }
    return image;
}

const rendering::TextureProxy& GetCircleTex(bool cake)
{
    static const auto* const s_textures =
        new rendering::TextureProxy[2]{CreateTexture(false), CreateTexture(true)};
    return s_textures[cake];
}

void DrawCircleRect(float r)
{
    if (r > 0)
        rendering::Renderer::GetInstancePtr()->DrawRect(Vec2(), 2 * CircleSquareScale * r);
}

void DrawCakeTriangle(float r)
{
    if (r <= 0)
        return;
    const auto corner = [r](float x, float y)
    {
        glTexCoord2f(0.5f + 0.5f / CircleSquareScale * x, 0.5f + 0.5f / CircleSquareScale * y);
        glVertex2f(x * r, y * r);
    };
    // With room for what is blurred in a small circle.
    glBegin(GL_TRIANGLES);
    corner(-0.3f, 0);
    corner(CircleSquareScale, -0.5f);
    corner(CircleSquareScale, 0.5f);
    glEnd();
}

void DrawCircle(float r, bool cake)
{
    const int open = cake ? OpenSteps : 0;
    DrawFan(r, open, OutlineSteps - open);
}

void DrawCake(float r)
{
    DrawFan(r, OutlineSteps - OpenSteps, OutlineSteps + OpenSteps);
}
}
