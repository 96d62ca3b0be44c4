#include "physics/PointList.h"

#include <algorithm>
#include <limits>

namespace physics
{
using math::Float4;
using math::Int4;
using math::Vec2;

void PointList::Clear()
{
    m_x.clear();
    m_y.clear();
    m_count = 0;
    m_cellsPerUnit = 0;
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

void PointList::BuildGrid(float cellSize)
{
    m_cellsPerUnit = 0;
    const float cellsPerUnit = 1 / cellSize;
    if (!(cellsPerUnit > 0 && cellsPerUnit < std::numeric_limits<float>::infinity()))
        return;
    m_cellsPerUnit = cellsPerUnit;
    const uint32_t n = static_cast<uint32_t>(m_count);
    m_cells.Reset(n, n);
    for (uint32_t i = 0; i < n; ++i)
    {
        const Int4 cell = m_cells.Floor(Float4{m_x.data()[i], m_y.data()[i]} * cellsPerUnit);
        m_cells.Place(i, cell[0], cell[1]);
    }
    m_cells.Count();
    m_cells.Fill([&](uint32_t i) { return Entry{m_x.data()[i], m_y.data()[i], i}; });
    m_hits.resize(n);
}

const uint32_t* PointList::FindInGrid(const Bounds& b) const
{
    if (m_cellsPerUnit == 0)
        return nullptr;
    // Scaling and rounding down keep the order of numbers: no cell is missed.
    const Int4 cells = m_cells.Floor(Float4{b.min.x, b.min.y, b.max.x, b.max.y} * m_cellsPerUnit);
    uint32_t* const hits = m_hits.data();
    uint32_t* end = hits;
    if (cells[2] < cells[0] || cells[3] < cells[1])
        return end;
    const uint32_t columns = cells[2] - cells[0] + 1u, rows = cells[3] - cells[1] + 1u;
    if (columns > m_cells.MostCells || rows > m_cells.MostCells)
        return nullptr;

    const auto scan = [&](const Entry* entry, const Entry* entriesEnd)
    {
        for (; entry != entriesEnd; ++entry)
        {
            *end = entry->index;
            end += (entry->x >= b.min.x) & (entry->x <= b.max.x) & (entry->y >= b.min.y) &
                   (entry->y <= b.max.y);
        }
    };
    m_cells.ScanCells(cells[0], cells[1], columns, rows, scan);
    std::sort(hits, end);
    return end;
}
}
