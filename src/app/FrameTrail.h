// The trail effect: each frame begins with the one before it, moved and dimmed. Owned by the App.
//
// It is added to the black frame before the background is drawn, so that it shows only where the
// background is translucent.
#pragma once

#include "app/FrameTexture.h"
#include "math/Vector.h"

namespace app
{
class FrameTrail
{
public:
    struct Style
    {
        math::Vec3 color;     // black: none
        math::Vec2 scale;     // around the middle of the view
        math::Vec2 translate; // GUI units
        float rotate;         // degrees, around the same
    };

    /// The frame before. One that a script has moved out of all bounds is not drawn.
    /// @param size  of the component that fills the window
    void Draw(const Style& style, const math::Vec2& size) const;
    /// The frame as drawn so far is what the next Draw shows.
    void Keep(const Style& style) const;

private:
    FrameTexture m_frame;
};
}
