// A texture on the graphics card. It dies with the GL context; its mentor makes a new one for the next.
#pragma once

#include "math/Vector.h"
#include "rendering/GraphicsResource.h"
#include "rendering/Image.h"
#include "rendering/TextureProxy.h"

namespace rendering
{
class Texture final : public GraphicsResource
{
public:
    struct ImageType
    {
        unsigned format;      // GL's internal format, such as GL_ALPHA16
        bool mipmaps = false; // filtering is linear, also between them; edges are clamped
    };

    Texture(const ImageFloatPtr& image, const ImageType& type);
    ~Texture() override;

    unsigned long MemoryUsage() const override;

    const math::Vec2i& GetSize() const { return m_size; }
    void Bind() const;
    void Unbind() const;

private:
    ImageType m_type;
    math::Vec2i m_size;
    unsigned m_name = 0; // GL's; 0 without GL
};
}
