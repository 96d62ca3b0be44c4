#include "app/FrameTexture.h"

#include "rendering/Renderer.h"
#include "rendering/TextureFactories.h"

#include <GL/glew.h>

#include <algorithm>

using math::Vec2;
using math::Vec2i;

namespace app
{
namespace
{
const unsigned BigTextureSize = 2048;

/// One for all, as each takes 16 megabytes. It goes with the last texture that was made from it.
rendering::ImageRGBA32Ptr GetEmptyImage()
{
    static util::WeakPtr<rendering::ImageRGBA32> s_image;
    const util::LockPtr<rendering::ImageRGBA32> image(s_image);
    if (image.get())
        return rendering::ImageRGBA32Ptr(image.get());
    const rendering::ImageRGBA32Ptr fresh =
        QUIB_NEW rendering::ImageRGBA32(BigTextureSize, BigTextureSize, "frame");
    std::fill_n(fresh->data(), size_t(BigTextureSize) * BigTextureSize, rendering::PixelRGBA32());
    s_image = util::WeakPtr<rendering::ImageRGBA32>(fresh);
    return fresh;
}
}

rendering::Texture* CreateBigTexture()
{
    const rendering::Texture::Quality repeatLinear(false, false, true, true, true);
    return rendering::TextureFromImage(GetEmptyImage(), {GL_RGBA, false, repeatLinear});
}

FrameTexture::FrameTexture()
    : m_texture(CreateBigTexture)
{
}

FrameTexture::operator bool() const
{
    return m_texture;
}

void FrameTexture::Copy() const
{
    if (!m_texture)
        return;
    const Vec2i viewport = rendering::Renderer::GetInstancePtr()->GetViewportSize();
    const Vec2i pixels = CalcCoverage(Vec2(), viewport, m_texture->GetSize()).pixels;
    m_texture->Copy(pixels.x, pixels.y);
}

void FrameTexture::Draw(const Vec2& size) const
{
    if (!m_texture)
        return;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Coverage coverage = CalcCoverage(size, renderer->GetViewportSize(), m_texture->GetSize());
    m_texture->Bind();
    renderer->DrawRectGUI(coverage.pos, coverage.size, coverage.texSize);
    m_texture->Unbind();
}

FrameTexture::Coverage FrameTexture::CalcCoverage(const Vec2& size, const Vec2i& viewport,
                                                  const Vec2i& textureSize)
{
    Coverage c;
    c.pixels = Vec2i(std::min(viewport.x, textureSize.x), std::min(viewport.y, textureSize.y));
    c.size = Vec2(size.x * float(c.pixels.x) / float(viewport.x),
                  size.y * float(c.pixels.y) / float(viewport.y));
    c.pos = Vec2(0, size.y - c.size.y);
    c.texSize =
        Vec2(float(c.pixels.x) / float(textureSize.x), float(c.pixels.y) / float(textureSize.y));
    return c;
}
}
