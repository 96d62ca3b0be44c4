// Points in flat arrays, for the question which of many lie in an area: that of the particles near a
// geometry.
#pragma once

#include "math/BoundingBox.h"
#include "math/Plane.h"
#include "math/Simd.h"
#include "math/Vector.h"
#include "physics/BoundsList.h"
#include "util/VectorPOD.h"

#include <cstddef>

namespace physics
{
class PointList
{
public:
    /// Keeps the capacity.
    void Clear();
    void Append(const math::Vec2& p)
    {
        m_x.append(p.x);
        m_y.append(p.y);
    }
    /// To be called once all are in, before the list is asked.
    void Finish();

    size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }
    math::Vec2 operator[](size_t i) const { return math::Vec2(m_x.data()[i], m_y.data()[i]); }

    /// Around all points, but for coordinates that are not a number. With no other, all there is.
    math::BoundingBox CalcBounds() const;

    /// Calls visit(i) for each point nearer to the plane than that, by Plane2D::Distance, in rising
    /// order.
    template<typename Visit>
    void ForEachNearerThan(float distance, const math::Plane2D& plane, Visit visit) const
    {
        const math::Float4 nx = math::Splat4(plane.normal.x), ny = math::Splat4(plane.normal.y);
        const math::Float4 d = math::Splat4(plane.d), limit = math::Splat4(distance);
        for (size_t i = 0; i < m_x.size(); i += 4)
        {
            const math::Float4 x = math::Load4(m_x.data() + i), y = math::Load4(m_y.data() + i);
            for (unsigned hits = math::Mask4(nx * x + ny * y + d < limit); hits; hits &= hits - 1)
                visit(i + __builtin_ctz(hits));
        }
    }

    /// Calls visit(i) for each point in the box, its sides included, in rising order.
    template<typename Visit>
    void ForEachIn(const Bounds& b, Visit visit) const
    {
        const math::Float4 minX = math::Splat4(b.min.x), maxX = math::Splat4(b.max.x);
        const math::Float4 minY = math::Splat4(b.min.y), maxY = math::Splat4(b.max.y);
        for (size_t i = 0; i < m_x.size(); i += 4)
        {
            const math::Float4 x = math::Load4(m_x.data() + i), y = math::Load4(m_y.data() + i);
            for (unsigned hits = math::Mask4((x >= minX) & (x <= maxX) & (y >= minY) & (y <= maxY));
                 hits; hits &= hits - 1)
                visit(i + __builtin_ctz(hits));
        }
    }

private:
    util::VectorPOD<float> m_x, m_y; // padded to whole vectors with what lies nowhere
    size_t m_count = 0;
};
}
