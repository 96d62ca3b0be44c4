// The water. Owned by the App.
//
// Before anything else is drawn each drop goes into the frame buffer as a soft blob, stretched along its
// way; they add up to a field, which a texture keeps. Later in the same frame one quad makes a surface of
// the field: water is where it exceeds a threshold. Translucent bodies are cut out of the field, or they
// would be filled with water.
//
// With Style::isSimple, and where the textures can't be had, each drop is a sprite of its own instead.
#pragma once

#include "app/FrameTexture.h"
#include "math/BoundingBox.h"
#include "physics/Particle.h"
#include "rendering/Image.h"
#include "rendering/TextureProxy.h"

#include <memory>
#include <vector>

namespace rendering
{
class Uniform;
}

namespace app
{
class Entity;

/// A pixel of a blob. Red, blue and alpha hold the field, 1 over the square of the distance, shifted so
/// that it is 0 at the rim. Green holds it `fanceyFactor` times as coarse.
/// @param x, y  0 to size - 1
rendering::PixelRGBA32 MetaColor(unsigned x, unsigned y, unsigned size, float fanceyFactor);

/// How many times longer than at rest, and thinner, a drop is.
/// @param speed         world units per second
/// @param elongation    seconds per world unit
/// @param maxElongation  the limit; below 1 it is a lower one
float CalcElongation(float speed, float elongation, float maxElongation);

/// How far beyond the view drops are still drawn.
/// @param size  of a blob at rest
float CalcBlobMargin(float size, float maxElongation);

class WaterDrawing
{
public:
    struct Style
    {
        bool isSimple;
        float cutoff; // of the field, 0 to 1
        math::Vec4 color;
        float elongation;
        float maxElongation;
    };

    WaterDrawing();
    ~WaterDrawing();

    /// First of all in a frame: builds the field. Leaves the frame clear.
    /// @param view     in the world
    /// @param visible  the entities in view
    void DrawMetaTex(const physics::ParticleList& particles, const math::BoundingBox& view,
                     const Style& style, const std::vector<util::SharedPtr<Entity>>& visible) const;
    /// In GUI coordinates, under the entities.
    /// @param size  of the component that fills the window
    void Draw(const physics::ParticleList& particles, const math::BoundingBox& view,
              const Style& style, const math::Vec2& size) const;

private:
    bool UsesSprites(const Style& style) const;
    void DrawBlobs(const physics::ParticleList& particles, math::BoundingBox view,
                   const Style& style) const;
    /// To the part of the view where there can be a surface. The caller lifts the limit.
    void LimitToField(const math::BoundingBox& view, const Style& style) const;
    void DrawSprites(const physics::ParticleList& particles, math::BoundingBox view,
                     const math::Vec4& color) const;
    void DrawSurfaceByShader(const Style& style, const math::Vec2& size) const;
    void DrawSurfaceByAlphaTest(const Style& style, const math::Vec2& size) const;

    FrameTexture m_metaTexture;        // the field
    mutable math::BoundingBox m_blobs; // in the field; in the world
    rendering::TextureProxy m_metaBallTexture;
    rendering::TextureProxy m_simpleWaterTexture;
    struct Surface;
    std::unique_ptr<Surface> m_surface;
};
}
