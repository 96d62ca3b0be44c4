// Many quads of one texture, sent to GL a thousand at a time instead of one by one. On the stack, around
// the loop that makes them; one at a time, as all use the same memory.
#pragma once

#include "math/Vector.h"

#include <cstddef>

namespace rendering
{
class QuadBatch
{
public:
    QuadBatch();
    /// Sends what is left.
    ~QuadBatch();
    QuadBatch(const QuadBatch&) = delete;
    QuadBatch& operator=(const QuadBatch&) = delete;

    struct Corner
    {
        math::Vec2 tex;
        math::Vec2 pos;
    };

    /// In GL's present colour, texture and matrix, which must stay until the batch is gone. Quads are
    /// drawn in the order in which they come.
    void Add(const Corner& a, const Corner& b, const Corner& c, const Corner& d)
    {
        if (m_size == Capacity)
            Flush();
        Corner* corner = &s_corners[m_size];
        corner[0] = a;
        corner[1] = b;
        corner[2] = c;
        corner[3] = d;
        m_size += 4;
    }

    /// The whole texture, on a parallelogram around its centre.
    /// @param right, up  from the centre to the middle of a side
    void AddAround(const math::Vec2& center, const math::Vec2& right, const math::Vec2& up)
    {
        Add({{0, 0}, center - right - up}, {{0, 1}, center - right + up},
            {{1, 1}, center + right + up}, {{1, 0}, center + right - up});
    }

    void Flush();

private:
    static constexpr size_t Capacity = 4 * 1024;

    static Corner s_corners[Capacity];
    size_t m_size = 0;
};
}
