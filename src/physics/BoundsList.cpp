#include "physics/BoundsList.h"

#include <algorithm>
#include <limits>

namespace physics
{
using math::Vec2;

namespace
{
/// @param skew  how far the shape's axes are from unit length and right angles
Bounds GrownBounds(const Vec2& center, float halfX, float halfY, float skew)
{
    const float size = std::fabs(center.x) + std::fabs(center.y) + halfX + halfY;
    // Above 1e18 squares come near the end of the range.
    if (!(halfX >= 0 && halfY >= 0 && size < 1e18f && skew < 0.01f))
        return Bounds::Everything();
    // The tests round some ten times, by 6e-8 of numbers no larger than size, and the least of the
    // distances along two axes is at least 0.7 of the gap between two boxes. The constant is for
    // numbers so small that rounding does not shrink with them.
    const float margin = (4e-6f + 4 * skew) * size + 1e-18f;
    const Vec2 half(halfX + margin, halfY + margin);
    return Bounds{center - half, center + half};
}
}

Bounds Bounds::Around(const math::OBB2D& obb)
{
    const Vec2 &x = obb.GetAxis(0), &y = obb.GetAxis(1);
    const float hx = obb.GetHalf(0), hy = obb.GetHalf(1);
    if (!(hx >= 0 && hy >= 0))
        return Everything();
    const float skew =
        std::fabs(x.LengthSq() - 1) + std::fabs(y.LengthSq() - 1) + std::fabs(Dot(x, y));
    return GrownBounds(obb.GetCenter(), std::fabs(x.x) * hx + std::fabs(y.x) * hy,
                       std::fabs(x.y) * hx + std::fabs(y.y) * hy, skew);
}

Bounds Bounds::Around(const math::BoundingCircle& circle)
{
    return GrownBounds(circle.center, circle.radius, circle.radius, 0);
}

Bounds Bounds::Grown(float distance) const
{
    // Axes that are a little too long or too short measure distances as much too large or too small.
    const float grow = distance > 0 ? distance * 1.05f : 0;
    return Bounds{min - Vec2(grow, grow), max + Vec2(grow, grow)};
}

void BoundsList::Rows::Clear()
{
    minX.clear();
    minY.clear();
    maxX.clear();
    maxY.clear();
}

void BoundsList::Rows::Append(const Vec2& min, const Vec2& max)
{
    minX.append(min.x);
    minY.append(min.y);
    maxX.append(max.x);
    maxY.append(max.y);
}

void BoundsList::Rows::PadTo(size_t multiple)
{
    const float inf = std::numeric_limits<float>::infinity();
    while (size() % multiple != 0)
        Append(Vec2(inf, inf), Vec2(-inf, -inf));
}

void BoundsList::Clear()
{
    m_rows.Clear();
    m_blocks.Clear();
}

void BoundsList::Append(const Bounds& b)
{
    m_rows.Append(b.min, b.max);
}

void BoundsList::Finish()
{
    m_rows.PadTo(BlockSize);
    for (size_t i = 0; i < m_rows.size(); i += BlockSize)
    {
        const auto min = [i](const util::VectorPOD<float>& row)
        { return *std::min_element(row.begin() + i, row.begin() + i + BlockSize); };
        const auto max = [i](const util::VectorPOD<float>& row)
        { return *std::max_element(row.begin() + i, row.begin() + i + BlockSize); };
        m_blocks.Append(Vec2(min(m_rows.minX), min(m_rows.minY)),
                        Vec2(max(m_rows.maxX), max(m_rows.maxY)));
    }
    m_blocks.PadTo(4);
}
}
