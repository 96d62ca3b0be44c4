// A texture on the graphics card. It dies with the GL context and is built again from its source for
// the next one, so that its owner need not care.
#pragma once

#include "math/Vector.h"
#include "rendering/GraphicsResource.h"
#include "rendering/Image.h"
#include "util/SharedPtr.h"

#include <functional>

namespace rendering
{
class Texture final : public util::Pointee, public GraphicsResource
{
public:
    struct ImageType
    {
        unsigned format;      // GL's internal format, such as GL_ALPHA16
        bool mipmaps = false; // filtering is linear, also between them; edges are clamped
    };

    using Source = std::function<ImageFloatPtr()>;

    /// @param source  makes the image each time the texture is built; it is not kept
    Texture(Source source, const ImageType& type);
    ~Texture() override;

    void Load() override;
    void Unload() override;
    unsigned long MemoryUsage() const override;

    /// Any number of pixels; (0, 0) before it is loaded.
    const math::Vec2i& GetSize() const { return m_size; }
    void Bind() const;
    void Unbind() const;

private:
    Source m_source;
    ImageType m_type;
    math::Vec2i m_size;
    unsigned m_name = 0; // GL's; 0 when unloaded
};
using TexturePtr = util::SharedPtr<Texture>;
}
