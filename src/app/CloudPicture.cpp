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

// The texture's v points up, the GUI's y down.
BoundingBox CloudPicture::CalcPartBox(const BoundingBox& box, const BoundingBox& part) const
{
    const Vec2 size = box.GetSize();
    const Vec2 &t0 = part.GetMin(), &t1 = part.GetMax();
    return BoundingBox(Vec2(box.GetMin().x + t0.x * size.x, box.GetMax().y - t1.y * size.y),
                       Vec2(box.GetMin().x + t1.x * size.x, box.GetMax().y - t0.y * size.y));
}

void CloudPicture::Draw(const BoundingBox& box, const BoundingBox& view) const
{
    FollowTexture();
    const auto isInView = [&](const BoundingBox& part)
    { return Intersects(CalcPartBox(box, part), view); };
    if (std::none_of(m_visible.begin(), m_visible.end(), isInView))
        return;
    m_texture->Bind();
    rendering::QuadBatch batch;
    for (const BoundingBox& part : m_visible)
        if (isInView(part))
        {
            const BoundingBox place = CalcPartBox(box, part);
            const Vec2 &t0 = part.GetMin(), &t1 = part.GetMax();
            const Vec2 &low = place.GetMin(), &high = place.GetMax();
            batch.Add({t0, Vec2(low.x, high.y)}, {Vec2(t0.x, t1.y), low}, {t1, Vec2(high.x, low.y)},
                      {Vec2(t1.x, t0.y), high});
        }
}

void CloudPicture::Unbind() const
{
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
