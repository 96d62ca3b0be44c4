// The picture of a cloud, and which parts of it are worth drawing: most of its pixels are transparent, and
// a large cloud has very many. Owned by the Background.
#pragma once

#include "math/BoundingBox.h"
#include "rendering/Image.h"
#include "rendering/TextureProxy.h"

#include <vector>

namespace app
{
class CloudPicture
{
public:
    explicit CloudPicture(const rendering::TextureProxy& texture);

    /// False where the texture could not be loaded.
    explicit operator bool() const;
    /// In the renderer's colour. Leaves the texture bound when anything was to be drawn.
    /// @param box  in GUI coordinates
    /// @param view  what lies outside of it need not be drawn
    void Draw(const math::BoundingBox& box, const math::BoundingBox& view) const;
    void Unbind() const;
    /// Height by width.
    float GetAspect() const;

    /// Boxes in texture coordinates that hold all that can be seen of an image, and are small.
    static std::vector<math::BoundingBox> FindVisible(const rendering::ImageRGBA32& image);

private:
    void FollowTexture() const;
    math::BoundingBox CalcPartBox(const math::BoundingBox& box,
                                  const math::BoundingBox& part) const;

    rendering::TextureProxy m_texture;
    mutable rendering::AbstractImagePtr m_image;      // of which m_visible tells
    mutable std::vector<math::BoundingBox> m_visible; // strips, from the bottom
};
}
