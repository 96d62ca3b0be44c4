#include "app/CloudPicture.h"

#include "rendering/QuadBatch.h"
#include "rendering/Texture.h"

#include <algorithm>

using math::BoundingBox;
using math::Vec2;

namespace app
{
CloudPicture::CloudPicture(const rendering::TextureProxy& texture)
    : m_texture(texture)
{
}

CloudPicture::operator bool() const
{
    return m_texture;
}

float CloudPicture::GetAspect() const
{
    const math::Vec2i size = m_texture->GetSize();
    return float(size.y) / float(std::max(size.x, 1));
}

void CloudPicture::FollowTexture() const
{
    const rendering::AbstractImagePtr& image = m_texture->GetImage();
    if (image == m_image)
        return;
    m_image = image;
    if (const auto* pixels = dynamic_cast<const rendering::ImageRGBA32*>(image.get()))
        m_visible = FindVisible(*pixels);
    else
        m_visible = {BoundingBox(Vec2(0, 0), Vec2(1, 1))};
}

void CloudPicture::Draw(const BoundingBox& box, const BoundingBox& view) const
{
    FollowTexture();
    const Vec2 size = box.GetSize();
    m_texture->Bind();
    {
        rendering::QuadBatch batch;
        for (const BoundingBox& part : m_visible)
        {
            const Vec2 &t0 = part.GetMin(), &t1 = part.GetMax();
            // The texture's v points up, the GUI's y down.
            const float x0 = box.GetMin().x + t0.x * size.x, x1 = box.GetMin().x + t1.x * size.x;
            const float y0 = box.GetMax().y - t0.y * size.y, y1 = box.GetMax().y - t1.y * size.y;
            if (Intersects(BoundingBox(Vec2(x0, y0), Vec2(x1, y1)), view))
                batch.Add({t0, Vec2(x0, y0)}, {Vec2(t0.x, t1.y), Vec2(x0, y1)}, {t1, Vec2(x1, y1)},
                          {Vec2(t1.x, t0.y), Vec2(x1, y0)});
        }
    }
    m_texture->Unbind();
}

std::vector<BoundingBox> CloudPicture::FindVisible(const rendering::ImageRGBA32& image)
{
    const unsigned width = image.GetWidth(), height = image.GetHeight();
    const unsigned stripHeight = 16;
    // Neighbours bleed into one another where the picture is drawn smaller.
    const unsigned margin = 4;
    const unsigned char faintest = 2;

    std::vector<BoundingBox> strips;
    for (unsigned y = 0; y < height; y += stripHeight)
    {
        unsigned begin = width, end = 0;
        const unsigned last = std::min(height, y + stripHeight + margin);
        for (unsigned row = y > margin ? y - margin : 0; row < last; ++row)
            for (unsigned x = 0; x < width; ++x)
                if (image(x, row).w > faintest)
                {
                    begin = std::min(begin, x);
                    end = std::max(end, x + 1);
                }
        if (begin >= end)
            continue;
        begin = begin > margin ? begin - margin : 0;
        end = std::min(width, end + margin);
        strips.emplace_back(
            Vec2(float(begin) / width, float(y) / height),
            Vec2(float(end) / width, float(std::min(height, y + stripHeight)) / height));
    }
    return strips;
}
}
