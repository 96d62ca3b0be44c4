#include "app/WaterDrawing.h"

#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "rendering/Renderer.h"
#include "rendering/Texture.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

using math::Vec2;

namespace app
{
namespace
{
const unsigned TextureSize = 64;

// Full in the middle, and nothing at the rim.
rendering::ImageFloatPtr MakeDropImage()
{
    rendering::ImageFloatPtr image = QUIB_NEW rendering::ImageFloat(TextureSize, TextureSize);
    for (unsigned y = 0; y < TextureSize; ++y)
        for (unsigned x = 0; x < TextureSize; ++x)
        {
            const Vec2 p((float(x) + 0.5f) * 2 / TextureSize - 1,
                         (float(y) + 0.5f) * 2 / TextureSize - 1);
            const float t = std::clamp((1 - p.Length()) * 2.5f, 0.0f, 1.0f);
            (*image)(x, y) = t * t * (3 - 2 * t);
        }
    return image;
}

const rendering::TextureProxy& GetDropTexture()
{
    // Never destroyed: all drops share it.
    static auto* s_texture = new rendering::TextureProxy(
        [] {
            return new rendering::Texture(MakeDropImage(), {GL_ALPHA, true});
        });
    return *s_texture;
}
}

void DrawWater(const math::BoundingBox& view, const math::Vec4& color)
{
    const physics::ParticleList& particles = physics::Simulation::GetInstancePtr()->GetParticles();
    if (particles.empty())
        return;
    QUIB_PROFILE("Water");
    const float r2 = physics::SPH::GetInstancePtr()->m_radius * 2;
    math::BoundingBox grown = view;
    grown.Grow(r2);

    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    GetDropTexture()->Bind();
    // All in one: a drop takes four corners and nothing else.
    glBegin(GL_QUADS);
    for (const physics::ParticlePtr& particle : particles)
    {
        const Vec2& pos = particle->GetPos();
        if (!grown.Contains(pos))
            continue;
        for (const Vec2& corner : {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)})
        {
            glTexCoord2f(corner.x, corner.y);
            renderer->Vertex(pos + (corner * 2.0f - Vec2(1, 1)) * r2);
        }
    }
    glEnd();
    GetDropTexture()->Unbind();
}
}
