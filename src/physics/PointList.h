// Points in flat arrays, for the question which of many lie in an area: that of the particles near a
// geometry.
//
// A few questions walk all points, four at a time. When many are to be asked, a grid is made first, and what
// it finds is put back into the order of the list.
#pragma once

#include "math/BoundingBox.h"
#include "math/Plane.h"
#include "math/Simd.h"
#include "math/Vector.h"
#include "physics/BoundsList.h"
#include "physics/CellTable.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <cstdint>

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

    /// Makes the grid, for many calls of ForEachIn. Linear.
    /// @param cellSize  about as large as the boxes that will be asked for; any number will do
    void BuildGrid(float cellSize);

    /// Calls visit(i) for each point in the box, its sides included, in rising order.
    template<typename Visit>
    void ForEachIn(const Bounds& b, Visit visit) const
    {
        if (const uint32_t* end = FindInGrid(b))
        {
            for (const uint32_t* hit = m_hits.data(); hit != end; ++hit)
                visit(*hit);
            return;
        }
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
    struct Entry
    {
        float x, y;
        uint32_t index;
    };

    /// @return  the end of the hits; null when the list should be walked
    const uint32_t* FindInGrid(const Bounds& b) const;

    util::VectorPOD<float> m_x, m_y; // padded to whole vectors with what lies nowhere
    size_t m_count = 0;

    float m_cellsPerUnit = 0; // 0: no grid
    CellTable<Entry> m_cells;
    mutable util::VectorPOD<uint32_t> m_hits;
};
}
