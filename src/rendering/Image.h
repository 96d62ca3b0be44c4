// Pixels in main memory, on their way to a texture or back from one. The first row is the bottom one,
// as GL wants it.
#pragma once

#include "math/Vector.h"
#include "util/Array2D.h"
#include "util/SharedPtr.h"
#include "util/String.h"

struct SDL_Surface;

namespace rendering
{
/// Of any kind that SDL_image knows, but for those whose readers trust the file.
/// @return  for SDL_FreeSurface; null for what is missing, broken or no file, and SDL_GetError tells why
SDL_Surface* LoadSurface(const util::String& path);

class AbstractImage : public util::Pointee
{
public:
    /// @param name  what it is called in messages; "" for one without
    AbstractImage(unsigned width, unsigned height, const util::String& name);
    ~AbstractImage() override;

    /// The pixels, row by row without gaps.
    virtual const void* GetDataVoidPtr() const = 0;
    virtual bool HasAlpha() const = 0;
    /// GL's words for what a pixel is, such as GL_RGBA and GL_UNSIGNED_BYTE.
    virtual unsigned GetFormat() const = 0;
    virtual unsigned GetType() const = 0;

    unsigned GetWidth() const { return m_width; }
    unsigned GetHeight() const { return m_height; }
    const util::String& GetName() const { return m_name; }

private:
    unsigned m_width;
    unsigned m_height;
    util::String m_name;
};
using AbstractImagePtr = util::SharedPtr<AbstractImage>;

template<typename T>
class TImage : public AbstractImage
{
public:
    /// The pixels are not initialised.
    TImage(unsigned width, unsigned height, const util::String& name = "")
        : AbstractImage(width, height, name)
        , m_pixels(width, height)
    {
    }

    const void* GetDataVoidPtr() const override { return m_pixels.data(); }

    T& operator()(unsigned x, unsigned y) { return m_pixels(x, y); }
    const T& operator()(unsigned x, unsigned y) const { return m_pixels(x, y); }
    T* data() { return m_pixels.data(); }
    const T* data() const { return m_pixels.data(); }

private:
    util::Array2D<T> m_pixels;
};

using PixelRGBA32 = math::TVector4<unsigned char>;

class ImageRGBA32;
using ImageRGBA32Ptr = util::SharedPtr<ImageRGBA32>;

class ImageRGBA32 final : public TImage<PixelRGBA32>
{
public:
    enum RAWFormat
    {
        RAWAlpha, // one byte a pixel; red, green and blue are 255
        RAWRGB,   // three bytes a pixel; alpha is 255
        RAWRGBA
    };

    using TImage::TImage;

    bool HasAlpha() const override { return m_hasAlpha; }
    unsigned GetFormat() const override;
    unsigned GetType() const override;
    void SetHasAlpha(bool hasAlpha) { m_hasAlpha = hasAlpha; }

    /// Of any kind that SDL_image knows. One that ends in ".raw" is square and alpha only.
    /// @throws FileReadException  for a file that is no picture, or a broken, truncated or huge one
    static ImageRGBA32Ptr LoadFile(const util::String& path);
    /// A square picture and nothing else: its size follows from that of the file.
    /// @throws FileReadException
    static ImageRGBA32Ptr LoadRAW(const util::String& path, RAWFormat format);
    /// What the file holds beyond the picture is left out.
    /// @throws FileReadException
    static ImageRGBA32Ptr LoadRAW(const util::String& path, RAWFormat format, unsigned width,
                                  unsigned height);

private:
    bool m_hasAlpha = true;
};

// One float per pixel, which becomes the alpha of a texture.
class ImageFloat final : public TImage<float>
{
public:
    using TImage::TImage;

    bool HasAlpha() const override { return true; }
    unsigned GetFormat() const override;
    unsigned GetType() const override;
};
using ImageFloatPtr = util::SharedPtr<ImageFloat>;
}
