// A grid of values in row order.
#pragma once

#include "util/Failures.h"
#include "util/VectorPOD.h"

#include <cmath>

namespace util
{
template<typename T, typename V = VectorPOD<T>>
class Array2D
{
public:
    Array2D() = default;
    /// With VectorPOD the elements are not initialised.
    Array2D(unsigned width, unsigned height)
        : m_width(width)
        , m_height(height)
        , m_data(static_cast<size_t>(width) * height)
    {
    }

    unsigned GetWidth() const { return m_width; }
    unsigned GetHeight() const { return m_height; }
    T* data() { return m_data.data(); }
    const T* data() const { return m_data.data(); }

    T& operator()(unsigned x, unsigned y)
    {
        CODE_ASSERT(x < m_width && y < m_height);
        return m_data.data()[y * m_width + x];
    }
    const T& operator()(unsigned x, unsigned y) const
    {
        CODE_ASSERT(x < m_width && y < m_height);
        return m_data.data()[y * m_width + x];
    }

    /// Both coordinates are brought into the grid first.
    const T& Clamped(int x, int y) const
    {
        x = x < 0 ? 0 : (x >= int(m_width) ? int(m_width) - 1 : x);
        y = y < 0 ? 0 : (y >= int(m_height) ? int(m_height) - 1 : y);
        return (*this)(x, y);
    }

    /// Bilinear. Grid values sit at whole coordinates; beyond the grid the border goes on. x and y
    /// must be finite and fit an int.
    T Sample(float x, float y) const
    {
        const float fx = std::floor(x), fy = std::floor(y);
        const int x0 = static_cast<int>(fx), y0 = static_cast<int>(fy);
        const float tx = x - fx, ty = y - fy;
        const T top = Clamped(x0, y0) * (1.0f - tx) + Clamped(x0 + 1, y0) * tx;
        const T bottom = Clamped(x0, y0 + 1) * (1.0f - tx) + Clamped(x0 + 1, y0 + 1) * tx;
        return top * (1.0f - ty) + bottom * ty;
    }

private:
    unsigned m_width = 0;
    unsigned m_height = 0;
    V m_data;
};
}
