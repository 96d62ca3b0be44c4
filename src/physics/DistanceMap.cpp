// How a polygon computes its maps: signed distance, position along the outline, and normal, at the
// center of each of 64 x 64 cells.
#include "physics/DistanceMap.h"

#include "physics/Polygon.h"
#include "util/Failures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>

namespace physics
{
using math::Vec2;
using util::Array2D;

namespace
{
struct BuildCell
{
    const Linesegment* closest = nullptr; // the nearest line known so far
    float distSq = std::numeric_limits<float>::infinity();
    bool isDone = false;
    Vec2 pos; // of the cell's center, polygon space
};

// Cells in the order in which they are settled: by squared distance, then by place in the grid. An
// entry is one number: the bits of a float that is not negative sort as the float does. A cell that
// finds a nearer line gets a second entry, the old one stays.
class CellQueue
{
public:
    explicit CellQueue(size_t capacity) { m_heap.reserve(capacity); }

    bool IsEmpty() const { return m_heap.empty(); }
    void Push(float distSq, uint32_t cell)
    {
        uint32_t bits;
        std::memcpy(&bits, &distSq, sizeof(bits));
        m_heap.push_back(static_cast<uint64_t>(bits) << 32 | cell);
        std::push_heap(m_heap.begin(), m_heap.end(), std::greater<uint64_t>());
    }
    uint32_t Pop()
    {
        std::pop_heap(m_heap.begin(), m_heap.end(), std::greater<uint64_t>());
        const uint32_t cell = static_cast<uint32_t>(m_heap.back());
        m_heap.pop_back();
        return cell;
    }

private:
    std::vector<uint64_t> m_heap;
};

/// The cell of a map coordinate on one axis. The outline lies inside the map by construction; the
/// clamp is for what rounding makes of strange outlines.
int CellOf(float v, unsigned count)
{
    const float cell = std::floor(v + 0.5f);
    return cell >= 0 ? static_cast<int>(std::min(cell, static_cast<float>(count - 1))) : 0;
}

/// One component of the gradient at i of count values, which stand stride apart. One-sided and doubled
/// at the two ends.
float Gradient(const float* values, unsigned i, unsigned count, unsigned stride)
{
    if (i == 0)
        return 2 * (values[stride] - values[0]);
    if (i + 1 == count)
        return 2 * (values[i * stride] - values[(i - 1) * stride]);
    return values[(i + 1) * stride] - values[(i - 1) * stride];
}
}

/// The signed distance transform of the outline: a propagation of nearest edges from the outline
/// outward, in order of distance as in Dijkstra 1959, "A note on two problems in connexion with
/// graphs". Like the vector distance transform of Danielsson 1980, "Euclidean distance mapping", it
/// carries along what is nearest rather than a distance, so that each cell ends with the exact distance
/// to the edge it was given. The sign comes from the edge's side or, at a vertex, from the mean normal
/// of its two edges.
void Polygon::CalcDistMap()
{
    const unsigned w = m_mapWidth, h = m_mapHeight;
    std::vector<BuildCell> cells(static_cast<size_t>(w) * h);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x)
            cells[y * w + x].pos = MapToWorld(math::Vec2u(x, y));

    CellQueue queue(4 * cells.size());
    const auto updateQueue = [&](uint32_t index, const Linesegment* line)
    {
        BuildCell& cell = cells[index];
        const float d = line->DistanceSq(cell.pos);
        if (d < cell.distSq)
        {
            cell.closest = line;
            cell.distSq = d;
            queue.Push(d, index);
        }
    };

    for (const Linesegment& line : m_lines)
    {
        const Vec2 p0 = PolygonToMap(line.p0), p1 = PolygonToMap(line.p1);
        DATA_ASSERT(p0 != p1);
        Bresenham(CellOf(p0.x, w), CellOf(p0.y, h), CellOf(p1.x, w), CellOf(p1.y, h),
                  [&](int x, int y) { updateQueue(y * w + x, &line); });
    }
    while (!queue.IsEmpty())
    {
        const uint32_t index = queue.Pop();
        BuildCell& cell = cells[index];
        if (cell.isDone)
            continue;
        cell.isDone = true;
        DATA_ASSERT(cell.closest);
        const unsigned x = index % w, y = index / w;
        for (unsigned ny = y > 0 ? y - 1 : 0; ny <= y + 1 && ny < h; ++ny)
            for (unsigned nx = x > 0 ? x - 1 : 0; nx <= x + 1 && nx < w; ++nx)
            {
                // Mostly another neighbour has handed on the same line already.
                const BuildCell& neighbour = cells[ny * w + nx];
                if (!neighbour.isDone && neighbour.closest != cell.closest)
                    updateQueue(ny * w + nx, cell.closest);
            }
    }

    const size_t n = m_vertices.size();
    // Outward on a counter-clockwise ring.
    std::vector<Vec2> vertexNormals(n);
    for (size_t i = 0; i < n; ++i)
    {
        const Vec2 a = Normalized(m_vertices[i + 1 < n ? i + 1 : 0] - m_vertices[i]);
        const Vec2 b = Normalized(m_vertices[i] - m_vertices[i > 0 ? i - 1 : n - 1]);
        vertexNormals[i] = math::Rot90CW(Normalized(a + b));
    }
    std::vector<float> edgeStarts(n + 1);
    for (size_t i = 0; i < n; ++i)
        edgeStarts[i + 1] = edgeStarts[i] + m_lines[i].Length();
    m_perimeter = edgeStarts[n];

    CODE_ASSERT(m_lines.size() == m_vertices.size());
    Array2D<float>& distMap = m_maps->dist;
    distMap = Array2D<float>(w, h);
    m_maps->edgePos = Array2D<float>(w, h);
    for (unsigned x = 0; x < w; ++x)
        for (unsigned y = 0; y < h; ++y)
        {
            const BuildCell& cell = cells[y * w + x];
            DATA_ASSERT(cell.closest);
            const Linesegment& line = *cell.closest;
            const size_t i = cell.closest - m_lines.data();
            float t;
            const Vec2 c = line.ClosestPoint(cell.pos, t);
            float d = Distance(c, cell.pos);
            bool isInside;
            if (c == line.p0 || c == line.p1)
            {
                const size_t vertex = c == line.p0 ? i : (i + 1 < n ? i + 1 : 0);
                isInside = Dot(cell.pos - c, vertexNormals[vertex]) < 0;
            }
            else
                isInside = line.IsPointOnTheLeft(cell.pos);
            distMap(x, y) = isInside ? -d : d;
            m_maps->edgePos(x, y) = (1 - t) * edgeStarts[i] + t * edgeStarts[i + 1];
        }

    // The map's corner lies outside of any sound outline.
    if (!(distMap(0, 0) > 0))
        QUIB_THROW(Exception("Bad distance map generated"));
}

/// The unit gradient of the distance by central differences, brought back from map space, whose axes
/// are scaled differently.
void Polygon::CalcNormalMap()
{
    const unsigned w = m_mapWidth, h = m_mapHeight;
    m_maps->normal = Array2D<Vec2>(w, h);
    const float* distances = m_maps->dist.data();
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x)
        {
            const Vec2 gradient(Gradient(distances + y * w, x, w, 1),
                                Gradient(distances + x, y, h, w));
            m_maps->normal(x, y) = Normalized(TransformNormal2D(m_mapToPoly, gradient));
        }
}

/// A bilinear sample blends four cells with shares that are not negative, so that one of them must be
/// negative if the sample is.
void Polygon::CalcInsideBounds()
{
    const float inf = std::numeric_limits<float>::infinity();
    m_insideMin = Vec2(inf, inf);
    m_insideMax = Vec2(-inf, -inf);
    for (unsigned y = 0; y < m_mapHeight; ++y)
        for (unsigned x = 0; x < m_mapWidth; ++x)
            if (m_maps->dist(x, y) < 0)
            {
                const Vec2 cell(static_cast<float>(x), static_cast<float>(y));
                m_insideMin.x = std::min(m_insideMin.x, cell.x - 1);
                m_insideMin.y = std::min(m_insideMin.y, cell.y - 1);
                m_insideMax.x = std::max(m_insideMax.x, cell.x + 1);
                m_insideMax.y = std::max(m_insideMax.y, cell.y + 1);
            }
}
}
