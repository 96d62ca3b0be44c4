// A copy of the frame as drawn so far, to be drawn again: the field of the water, and the picture that
// becomes the trail of the next frame.
//
// It covers 2048 x 2048 pixels of the window, from the lower left. What lies beyond in a larger window has
// no part in the effect.
#pragma once

#include "math/Vector.h"
#include "rendering/TextureProxy.h"

namespace app
{
/// 2048 x 2048 transparent pixels.
rendering::Texture* CreateBigTexture();

class FrameTexture
{
public:
    FrameTexture();

    /// False where the graphics card has no such texture. Copy and Draw then do nothing.
    explicit operator bool() const;

    /// From the frame buffer.
    void Copy() const;
    /// In GUI coordinates, where it was copied from, in the renderer's colour.
    /// @param size  of the component that fills the window
    void Draw(const math::Vec2& size) const;

    // Which part of a component a texture of the frame covers.
    struct Coverage
    {
        math::Vec2i pixels; // of the frame, from its lower left
        math::Vec2 pos;     // in the component, whose y points down
        math::Vec2 size;    // the same
        math::Vec2 texSize; // as a fraction of the texture
    };
    /// @param size         of the component, which fills the viewport
    /// @param viewport     pixels
    /// @param textureSize  pixels
    static Coverage CalcCoverage(const math::Vec2& size, const math::Vec2i& viewport,
                                 const math::Vec2i& textureSize);

private:
    rendering::TextureProxy m_texture;
};
}
