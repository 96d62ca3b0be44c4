#include "app/WaterDrawing.h"

#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/entities/GeomEntity.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "physics/SPH.h"
#include "rendering/Pushers.h"
#include "rendering/QuadBatch.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderVariable.h"
#include "rendering/TextureFactories.h"
#include "rendering/TextureManager.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

using math::IsFinite;
using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
const unsigned BlobTextureSize = 64;
// A blob reaches so many particle radii.
const float BlobReach = 4;

const rendering::Texture::Quality ClampLinear(true, true, true, true, true);
const rendering::Texture::Quality RepeatLinear(false, false, true, true, true);

rendering::Texture* CreateMetaBallTexture()
{
    // Deliberate: read here, so that a change takes effect at the next Resources.reloadTextures.
    const float fanceyFactor = App::GetInstancePtr()->GetWaterFanceyFactor();
    const rendering::ImageRGBA32Ptr image =
        QUIB_NEW rendering::ImageRGBA32(BlobTextureSize, BlobTextureSize, "drop of water");
    for (unsigned y = 0; y < BlobTextureSize; ++y)
        for (unsigned x = 0; x < BlobTextureSize; ++x)
            (*image)(x, y) = MetaColor(x, y, BlobTextureSize, fanceyFactor);
    return rendering::TextureFromImage(image, {GL_RGBA, true, ClampLinear});
}

void MultByWorldToGUI()
{
    math::Mat4FromMat2D(Scene::GetInstancePtr()->GetCamera()->WorldToGUI()).MultToGL();
}

unsigned char WrapToByte(float value)
{
    if (!IsFinite(value))
        return 0;
    // Written so that no value is too large for it.
    const float wrapped = std::fmod(value, 256.0f);
    return static_cast<unsigned char>(wrapped < 0 ? wrapped + 256 : wrapped);
}
}

struct WaterDrawing::Surface
{
    rendering::ShaderProxy shader = rendering::ShaderManager::GetInstancePtr()->Load("water");
    util::SharedPtr<rendering::Uniform> cutoff = QUIB_NEW rendering::Uniform(shader, "Cutoff");
    util::SharedPtr<rendering::Uniform> color = QUIB_NEW rendering::Uniform(shader, "Color");
};

rendering::PixelRGBA32 MetaColor(unsigned x, unsigned y, unsigned size, float fanceyFactor)
{
    if (x == 0 || y == 0 || x >= size - 1 || y >= size - 1)
        return {0, 0, 0, 0};
    const float nx = float(x) / float(size - 1) * 2 * BlobReach - BlobReach;
    const float ny = float(y) / float(size - 1) * 2 * BlobReach - BlobReach;
    const float d = nx * nx + ny * ny;
    const float v = (1 / d - 0.0625f) / 0.9375f;
    const auto b = static_cast<unsigned char>(v < 0   ? 0.0f
                                              : v > 1 ? 255.0f
                                                      : std::floor(v * 255 + 0.5f));
    // Deliberate: it is not clamped and wraps around towards the centre.
    return {b, WrapToByte(std::floor(v * fanceyFactor + 0.5f)), b, b};
}

float CalcElongation(float speed, float elongation, float maxElongation)
{
    const float low = std::min(1.0f, maxElongation), high = std::max(1.0f, maxElongation);
    return std::clamp(1 + speed * elongation, low, high);
}

float CalcBlobMargin(float size, float maxElongation)
{
    // Deliberate: the square of that length, taken for a length itself.
    const float reach = size * 0.5f * maxElongation;
    return reach * reach;
}

WaterDrawing::WaterDrawing()
    : m_metaBallTexture(CreateMetaBallTexture)
    , m_simpleWaterTexture(rendering::TextureManager::GetInstancePtr()->Load(
          "simpleWater", {GL_RGBA, true, RepeatLinear}))
    , m_surface(std::make_unique<Surface>())
{
}

WaterDrawing::~WaterDrawing() = default;

bool WaterDrawing::UsesSprites(const Style& style) const
{
    return style.isSimple || !m_metaTexture || !m_metaBallTexture;
}

void WaterDrawing::DrawMetaTex(const physics::ParticleList& particles,
                               const math::BoundingBox& view, const Style& style,
                               const std::vector<util::SharedPtr<Entity>>& visible) const
{
    if (particles.empty() || UsesSprites(style))
        return;
    QUIB_PROFILE("DrawMetaTex");
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glPushMatrix();
    renderer->SetColor4(1, 1, 1, 1);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    MultByWorldToGUI();
    DrawBlobs(particles, view, style);
    {
        QUIB_PROFILE("Drawing black bodies");
        renderer->SetColor4(0, 0, 0, 1);
        // Whatever they draw becomes 0, alpha too: that is where the alpha test looks for water.
        glBlendFunc(GL_ZERO, GL_ZERO);
        for (const EntityPtr& entity : visible)
        {
            const GeomEntity* geomEntity = entity->AsGeomEntity();
            // An opaque one covers the water anyway.
            if (!geomEntity || !(geomEntity->GetColor4().w < 1))
                continue;
            QUIB_PROFILE_OFTEN("DrawBlack");
            geomEntity->DrawBlack();
        }
    }
    m_metaTexture.Copy();
    // Deliberate: to 0 again, and not to System.clearColor.
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glPopMatrix();
}

void WaterDrawing::DrawBlobs(const physics::ParticleList& particles, math::BoundingBox view,
                             const Style& style) const
{
    QUIB_PROFILE("Drawing particles");
    const float size = 2 * physics::SPH::GetInstancePtr()->m_radius * BlobReach;
    const float half = size * 0.5f;
    view.Grow(CalcBlobMargin(size, style.maxElongation));

    m_blobs = math::BoundingBox::Empty();
    float reach = 0; // of the blob that reaches farthest from its middle
    m_metaBallTexture->Bind();
    {
        rendering::QuadBatch batch;
        for (const physics::ParticlePtr& particle : particles)
        {
            const Vec2& pos = particle->GetPos();
            if (!view.Contains(pos))
                continue;
            const Vec2& vel = particle->GetVel();
            const float speed = vel.Length();
            const float e = CalcElongation(speed, style.elongation, style.maxElongation);
            // Neither finite where a script has set what is no elongation.
            const float length = half * e, width = half / e;
            if (!IsFinite(length) || !IsFinite(width))
                continue;
            // The picture turned by the angle of the velocity, without the angle.
            const Vec2 along = speed > 0 && IsFinite(speed) ? vel / speed : Vec2(1, 0);
            batch.AddAround(pos, along * length, Vec2(-along.y, along.x) * width);
            m_blobs.Include(pos);
            reach = std::max(reach, std::fabs(length) + std::fabs(width));
        }
    }
    m_metaBallTexture->Unbind();
    m_blobs.Grow(reach);
}

// The surface is looked for in every pixel: of water that lies in a corner, most of them in vain.
void WaterDrawing::LimitToField(const math::BoundingBox& view, const Style& style) const
{
    // Below a cutoff of 0 there is water where nothing is. Written so that a NaN is one of those.
    if (!(style.cutoff >= 0))
        return;
    if (m_blobs.GetMin().x > m_blobs.GetMax().x)
    {
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, 0, 0);
        return;
    }
    // A view can be as far away as to have no size.
    const Vec2 size = view.GetSize();
    if (!(size.x > 0) || !(size.y > 0) || !IsFinite(m_blobs.GetSize()))
        return;
    glEnable(GL_SCISSOR_TEST);
    const math::Vec2i viewport = rendering::Renderer::GetInstancePtr()->GetViewportSize();
    const Vec2 scale(float(viewport.x) / size.x, float(viewport.y) / size.y);
    // Two more on each side, so that no rounding and no slope between two pixels is cut off.
    const auto toPixel = [](float x, float margin, int limit)
    { return static_cast<int>(std::clamp(std::floor(x) + margin, 0.0f, float(limit))); };
    const Vec2 low = Vec2::Mul(m_blobs.GetMin() - view.GetMin(), scale);
    const Vec2 high = Vec2::Mul(m_blobs.GetMax() - view.GetMin(), scale);
    const int x = toPixel(low.x, -2, viewport.x), y = toPixel(low.y, -2, viewport.y);
    glScissor(x, y, toPixel(high.x, 3, viewport.x) - x, toPixel(high.y, 3, viewport.y) - y);
}

void WaterDrawing::Draw(const physics::ParticleList& particles, const math::BoundingBox& view,
                        const Style& style, const Vec2& size) const
{
    if (particles.empty())
        return;
    QUIB_PROFILE("Water");
    if (UsesSprites(style))
    {
        DrawSprites(particles, view, style.color);
        return;
    }
    LimitToField(view, style);
    if (core::ResourceManager::GetInstancePtr()->GetShaders() && m_surface->shader)
        DrawSurfaceByShader(style, size);
    else
        DrawSurfaceByAlphaTest(style, size);
    glDisable(GL_SCISSOR_TEST);
}

void WaterDrawing::DrawSprites(const physics::ParticleList& particles, math::BoundingBox view,
                               const Vec4& color) const
{
    const float r2 = physics::SPH::GetInstancePtr()->m_radius * 2;
    view.Grow(r2);

    glPushMatrix();
    MultByWorldToGUI();
    rendering::Renderer::GetInstancePtr()->SetColor4(color);
    m_simpleWaterTexture->Bind();
    {
        rendering::QuadBatch batch;
        for (const physics::ParticlePtr& particle : particles)
            if (view.Contains(particle->GetPos()))
                batch.AddAround(particle->GetPos(), Vec2(r2, 0), Vec2(0, r2));
    }
    m_simpleWaterTexture->Unbind();
    glPopMatrix();
}

void WaterDrawing::DrawSurfaceByShader(const Style& style, const Vec2& size) const
{
    const rendering::ShaderProxy& shader = m_surface->shader;
    const util::BindScope<rendering::Shader> bound(*shader.operator->());
    m_surface->cutoff->Set(style.cutoff);
    m_surface->color->Set(style.color);
    m_metaTexture.Draw(size);
}

void WaterDrawing::DrawSurfaceByAlphaTest(const Style& style, const Vec2& size) const
{
    // A window without alpha has lost the field: all of it would be water.
    if (!core::Subsystem::GetInstancePtr()->HasAlpha())
        return;
    rendering::Renderer::GetInstancePtr()->SetColor4(style.color);
    glDisable(GL_BLEND);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, style.cutoff);
    m_metaTexture.Draw(size);
    glDisable(GL_ALPHA_TEST);
    glEnable(GL_BLEND);
}
}
