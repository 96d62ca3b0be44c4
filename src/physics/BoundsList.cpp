#include "physics/BoundsList.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace physics
{
using math::Float4;
using math::Int4;
using math::Vec2;

namespace
{
// Found by bench/collide: below, the blocks are as fast.
const size_t LeastForGrid = 64;
// Of n shapes, 8 and every 512th may be large.
const size_t LeastLarge = 8, LargeShare = 512;
// A shape of less than twice the size of the median is not large. In buckets of the histogram.
const uint32_t MuchLarger = 4;
const int BucketShift = 21;
const uint32_t SizeBuckets = 0x7F800000u >> BucketShift;
// The grid pays when a shape shares its cell with no more than this part of all.
const size_t WorstSharing = 64;
const float CellsAcross = 4, CellsUp = 2;

uint32_t SizeBucket(float size)
{
    uint32_t bits;
    std::memcpy(&bits, &size, sizeof(bits));
    return std::min(bits >> BucketShift, SizeBuckets - 1);
}

Float4 LoadBounds(const Bounds& b)
{
    static_assert(sizeof(Bounds) == sizeof(Float4), "read as one vector");
    return math::Load4(&b.min.x);
}

Float4 EndsOf(const Bounds& b)
{
    return Float4{b.min.x, b.min.y, -b.max.x, -b.max.y};
}

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
    m_bounds.clear();
    m_rows.Clear();
    m_blocks.Clear();
}

void BoundsList::Finish()
{
    m_hasGrid = m_bounds.size() >= LeastForGrid && BuildGrid();
    if (!m_hasGrid)
        BuildBlocks();
}

void BoundsList::BuildBlocks()
{
    for (const Bounds& b : m_bounds)
        m_rows.Append(b.min, b.max);
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

/// Chooses cells that hold all shapes but the few that are much larger than the median.
/// @return false when too many are huge
bool BoundsList::ChooseCells()
{
    // A histogram of the sizes on either axis. The bits of positive numbers are in the order of their
    // values; four buckets to an octave.
    uint32_t counts[2][SizeBuckets] = {};
    for (const Bounds& b : m_bounds)
    {
        const Vec2 size = b.max - b.min;
        ++counts[0][SizeBucket(size.x)];
        ++counts[1][SizeBucket(size.y)];
    }
    const size_t n = m_bounds.size(), fewest = n - (LeastLarge + n / LargeShare);
    float cell[2];
    for (int axis = 0; axis < 2; ++axis)
    {
        size_t count = 0;
        uint32_t bucket = 0, median = 0;
        for (;; ++bucket)
        {
            count += counts[axis][bucket];
            if (count <= n / 2)
                median = bucket + 1;
            if (count >= fewest && bucket >= median + MuchLarger)
                break;
            if (bucket == SizeBuckets - 1)
                return false;
        }
        const uint32_t bits = ((bucket + 1) << BucketShift) - 1;
        std::memcpy(&cell[axis], &bits, sizeof(bits));
        if (!(cell[axis] < FLT_MAX))
            return false;
    }
    m_reach = Float4{cell[0], cell[1], 0, 0};
    const Vec2 perCell(CellsAcross / cell[0], 1 / (CellsUp * cell[1]));
    m_perCell = Float4{perCell.x, perCell.y, perCell.x, perCell.y};
    return true;
}

bool BoundsList::BuildGrid()
{
    if (!ChooseCells())
        return false;
    const uint32_t n = static_cast<uint32_t>(m_bounds.size());
    m_cells.Reset(n, 2 * n);
    m_large.clear();
    for (uint32_t i = 0; i < n; ++i)
    {
        const Bounds& b = m_bounds.data()[i];
        const Vec2 size = b.max - b.min;
        if (!(size.x <= m_reach[0] && size.y <= m_reach[1]))
        {
            m_large.append(Entry{EndsOf(b), i});
            m_cells.LeaveOut(i);
            continue;
        }
        const Int4 cell = m_cells.Floor(LoadBounds(b) * m_perCell);
        m_cells.Place(i, cell[0], cell[1]);
    }
    if (m_cells.Count() > uint64_t(n) * n / WorstSharing)
        return false;
    m_cells.Fill([&](uint32_t i) { return Entry{EndsOf(m_bounds.data()[i]), i}; });
    m_hits.resize(n);
    return true;
}

const uint32_t* BoundsList::FindInGrid(const Bounds& b, uint32_t begin) const
{
    // What touches b has its lower corner no more than the reach below b's. Subtracting, scaling and
    // rounding down keep the order of numbers, whatever is lost in them: no cell is missed.
    const Float4 box = LoadBounds(b);
    const Int4 cells = m_cells.Floor((box - m_reach) * m_perCell);
    const uint32_t columns = cells[2] - cells[0] + 1u, rows = cells[3] - cells[1] + 1u;

    // a.min <= b.max, and -a.max <= -b.min.
    const Float4 limits = Float4{b.max.x, b.max.y, -b.min.x, -b.min.y};
    uint32_t* const hits = m_hits.data();
    uint32_t* end = hits;
    const auto scan = [&](const Entry* entry, const Entry* entriesEnd)
    {
        for (; entry != entriesEnd; ++entry)
        {
            // Without a branch that nobody can foresee: there is room for all.
            *end = entry->index;
            end += (math::Mask4(entry->ends <= limits) == 0xF) & (entry->index >= begin);
        }
    };

    if (columns > m_cells.MostCells || rows > m_cells.MostCells)
    {
        const uint32_t n = static_cast<uint32_t>(m_bounds.size());
        for (uint32_t i = begin; i < n; ++i)
        {
            *end = i;
            end += math::Mask4(EndsOf(m_bounds.data()[i]) <= limits) == 0xF;
        }
        return end;
    }

    m_cells.ScanCells(cells[0], cells[1], columns, rows, scan);
    scan(m_large.begin(), m_large.end());

    const size_t count = end - hits;
    if (count > 32)
        std::sort(hits, end);
    else
        for (size_t i = 1; i < count; ++i)
        {
            const uint32_t hit = hits[i];
            size_t k = i;
            for (; k > 0 && hits[k - 1] > hit; --k)
                hits[k] = hits[k - 1];
            hits[k] = hit;
        }
    return end;
}
}
