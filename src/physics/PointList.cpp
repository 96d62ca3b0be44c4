#include "physics/PointList.h"

#include <algorithm>
#include <limits>

namespace physics
{
using math::Float4;
using math::Vec2;

void PointList::Clear()
{
    m_x.clear();
    m_y.clear();
    m_count = 0;
}

void PointList::Finish()
{
    m_count = m_x.size();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    while (m_x.size() % 4 != 0)
        Append(Vec2(nan, nan));
}

math::BoundingBox PointList::CalcBounds() const
{
    const float inf = std::numeric_limits<float>::infinity();
    Float4 minX = math::Splat4(inf), minY = minX, maxX = -minX, maxY = -minX;
    for (size_t i = 0; i < m_x.size(); i += 4)
    {
        const Float4 x = math::Load4(m_x.data() + i), y = math::Load4(m_y.data() + i);
        minX = x < minX ? x : minX;
        minY = y < minY ? y : minY;
        maxX = x > maxX ? x : maxX;
        maxY = y > maxY ? y : maxY;
    }
    Vec2 min(inf, inf), max(-inf, -inf);
    for (int lane = 0; lane < 4; ++lane)
    {
        min = Vec2(std::min(min.x, minX[lane]), std::min(min.y, minY[lane]));
        max = Vec2(std::max(max.x, maxX[lane]), std::max(max.y, maxY[lane]));
    }
    return math::BoundingBox(min, max);
}
}
