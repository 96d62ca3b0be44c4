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
    struct Quality
    {
        Quality() {}
        Quality(bool clampS, bool clampT, bool linearMin, bool linearMag, bool linearMip)
            : m_clampS(clampS)
            , m_clampT(clampT)
            , m_linearMin(linearMin)
            , m_linearMag(linearMag)
            , m_linearMip(linearMip)
        {
        }

        bool m_clampS = true; // or repeat, in each direction
        bool m_clampT = true;
        bool m_linearMin = true; // or take the nearest pixel, when it is shrunk
        bool m_linearMag = true; // and when it is enlarged
        bool m_linearMip = true; // blend between levels, where there are mipmaps
    };

    struct ImageType
    {
        unsigned m_format; // GL's internal format, one of those that MemoryUsage knows
        bool m_mipmaps = false;
        Quality m_quality = Quality();
    };

    /// Without GL (HasGLLoaded) it remembers what it is and is nothing.
    /// @throws std::runtime_error  when GL refuses it, as one that is too large; the log names the image
    Texture(const AbstractImagePtr& image, const ImageType& type);
    /// One that is nothing with GL too: where it is bound, there is no texture.
    static Texture* CreateEmpty(const AbstractImagePtr& image, const ImageType& type);
    ~Texture() override;

    /// @throws BadCoderException  for a format whose bytes nobody knows
    unsigned long MemoryUsage() const override;

    /// Pixels.
    const math::Vec2i& GetSize() const { return m_size; }
    bool HasAlpha() const { return m_image->HasAlpha(); }
    /// What it was made from.
    const AbstractImagePtr& GetImage() const { return m_image; }
    const ImageType& GetImageType() const { return m_type; }

    /// For the unit that is active. Works on every driver.
    void Bind() const;
    void Unbind() const;
    /// Makes that unit the active one and leaves it so.
    /// @param unit  from 0 on, below GL_MAX_TEXTURE_UNITS
    /// @throws BadCoderException  without HasMultiTexturing
    void Bind(int unit) const;
    void Unbind(int unit) const;

    void SetQuality(const Quality& quality);

    /// The lower left corner of the frame buffer into that of the texture, on the card. What of it lies
    /// outside of the window is undefined.
    void Copy();
    /// Pixels. No larger than the texture.
    void Copy(int w, int h);

    /// Its pixels, fetched from the card. Slow.
    ImageRGBA32Ptr ReadRGBA() const;

private:
    Texture(const AbstractImagePtr& image, const ImageType& type, unsigned internalFormat);
    void Upload();
    void CommitQuality();

    AbstractImagePtr m_image;
    math::Vec2i m_size;
    ImageType m_type;
    unsigned m_internalFormat; // that of the type, or what it became to save memory
    unsigned m_name = 0;       // GL's; 0 without GL
};

/// Whether textures can be bound to units.
bool HasMultiTexturing();
}
