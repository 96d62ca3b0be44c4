#include "physics/PointList.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace physics
{
using math::Float4;
using math::Vec2;

namespace
{
// In the smallest table the rows of MostCells by MostCells have no cell in common.
const uint32_t LeastTable = 1024, MostCells = 16;

/// Rounds down; a NaN gives some cell.
int CellFloor(float v)
{
    v = v < 1e9f ? v : 1e9f;
    v = v > -1e9f ? v : -1e9f;
    const int i = static_cast<int>(v);
    return i - (v < static_cast<float>(i));
}
}

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
    const uint32_t n = static_cast<uint32_t>(m_count);
    uint32_t tableSize = LeastTable;
    while (tableSize < n)
        tableSize *= 2;
    m_tableMask = tableSize - 1;
    m_rowStride = static_cast<uint32_t>(0.6180339887 * tableSize) | 1;
    m_cellsPerUnit = cellsPerUnit;

    m_starts.resize(tableSize + 1);
    uint32_t* starts = m_starts.data();
    std::memset(starts, 0, m_starts.size() * sizeof(uint32_t));
    m_cellOf.resize(n);
    uint32_t* cellOf = m_cellOf.data();
    for (uint32_t i = 0; i < n; ++i)
    {
        cellOf[i] = CellOf(CellFloor(m_x.data()[i] * cellsPerUnit),
                           CellFloor(m_y.data()[i] * cellsPerUnit));
        ++starts[cellOf[i]];
    }
    uint32_t sum = 0;
    for (uint32_t cell = 0; cell <= tableSize; ++cell)
        starts[cell] = sum += cell < tableSize ? starts[cell] : 0;
    m_entries.resize(n);
    for (uint32_t i = n; i-- > 0;)
        m_entries.data()[--starts[cellOf[i]]] = Entry{m_x.data()[i], m_y.data()[i], i};
    m_hits.resize(n);
}

const uint32_t* PointList::FindInGrid(const Bounds& b) const
{
    if (m_cellsPerUnit == 0)
        return nullptr;
    // Scaling and rounding down keep the order of numbers: no cell is missed.
    const int x0 = CellFloor(b.min.x * m_cellsPerUnit), x1 = CellFloor(b.max.x * m_cellsPerUnit);
    const int y0 = CellFloor(b.min.y * m_cellsPerUnit), y1 = CellFloor(b.max.y * m_cellsPerUnit);
    uint32_t* const hits = m_hits.data();
    uint32_t* end = hits;
    if (x1 < x0 || y1 < y0)
        return end;
    const uint32_t columns = uint32_t(x1) - uint32_t(x0) + 1,
                   rows = uint32_t(y1) - uint32_t(y0) + 1;
    if (columns > MostCells || rows > MostCells)
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
    const Entry* entries = m_entries.data();
    const uint32_t* starts = m_starts.data();
    for (uint32_t row = 0; row < rows; ++row)
    {
        const uint32_t first = CellOf(x0, y0 + static_cast<int>(row)), last = first + columns;
        if (last <= m_tableMask + 1)
            scan(entries + starts[first], entries + starts[last]);
        else
        {
            scan(entries + starts[first], entries + starts[m_tableMask + 1]);
            scan(entries, entries + starts[last & m_tableMask]);
        }
    }
    std::sort(hits, end);
    return end;
}
}
