// Pixels in main memory, on their way to a texture.
#pragma once

#include "util/Array2D.h"
#include "util/SharedPtr.h"

namespace rendering
{
// One float per pixel, which becomes the alpha of a texture. The first row is the bottom one.
class ImageFloat : public util::Pointee
{
public:
    ImageFloat(unsigned width, unsigned height)
        : m_pixels(width, height)
    {
    }

    unsigned GetWidth() const { return m_pixels.GetWidth(); }
    unsigned GetHeight() const { return m_pixels.GetHeight(); }
    float& operator()(unsigned x, unsigned y) { return m_pixels(x, y); }
    const float* data() const { return m_pixels.data(); }

private:
    util::Array2D<float> m_pixels;
};
using ImageFloatPtr = util::SharedPtr<ImageFloat>;
}
