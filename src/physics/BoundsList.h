// Axis-aligned bounds of many shapes, for the cheap rejection in loops over all pairs: which of them touch
// given bounds?
//
// Many shapes go to a uniform grid of cells as large as the shapes, each shape to the cell of its lower
// corner. The few shapes that are much larger than most are kept in a list of their own. The answer is
// sorted back into the order of the list.
//
// Few shapes, and those of which a grid would not part enough, have a common box around every sixteen.
// Shapes made together mostly lie together, so that most of them are rejected sixteen or sixty-four at a
// time.
#pragma once

#include "math/BoundingSphere.h"
#include "math/OBB2D.h"
#include "math/Simd.h"
#include "math/Vector.h"
#include "physics/CellTable.h"
#include "util/VectorPOD.h"

#include <cfloat>
#include <cstddef>
#include <cstdint>

namespace physics
{
// Around a shape, with a margin for what rounding can do to an exact test of the shape: where two
// bounds do not touch, every such test says that the shapes do not.
struct Bounds
{
    math::Vec2 min, max;

    static Bounds Everything()
    {
        return Bounds{math::Vec2(-FLT_MAX, -FLT_MAX), math::Vec2(FLT_MAX, FLT_MAX)};
    }
    /// Everything, for a shape whose numbers are not finite or not of reasonable size, and for a box
    /// whose axes are no longer at right angles and of unit length: only the exact tests know what
    /// they do with such shapes.
    static Bounds Around(const math::OBB2D& obb);
    static Bounds Around(const math::BoundingCircle& circle);

    /// What is nearer to the shape than that lies in these bounds, whatever rounding does to the
    /// distance. Less than 0 counts as 0.
    Bounds Grown(float distance) const;
};

class BoundsList
{
public:
    /// Keeps the capacity.
    void Clear();
    void Append(const Bounds& b) { m_bounds.append(b); }
    /// To be called once all are in, before the list is asked.
    void Finish();

    size_t size() const { return m_bounds.size(); }
    const Bounds& operator[](size_t i) const { return m_bounds.data()[i]; }

    /// Calls visit(i) for each i from begin on whose bounds touch b, in rising order.
    template<typename Visit>
    void ForEachTouching(const Bounds& b, size_t begin, Visit visit) const
    {
        if (m_hasGrid)
        {
            const uint32_t* end = FindInGrid(b, static_cast<uint32_t>(begin));
            for (const uint32_t* hit = m_hits.data(); hit != end; ++hit)
                visit(*hit);
        }
        else
            ForEachInBlocks(b, begin, visit);
    }

private:
    static constexpr size_t BlockSize = 16;

    // Bounds one quantity to an array.
    struct Rows
    {
        util::VectorPOD<float> minX, minY, maxX, maxY;

        size_t size() const { return minX.size(); }
        void Clear();
        void Append(const math::Vec2& min, const math::Vec2& max);
        /// With bounds that touch nothing.
        void PadTo(size_t multiple);
    };

    struct BlockQuery
    {
        explicit BlockQuery(const Bounds& b)
            : minX(math::Splat4(b.min.x))
            , minY(math::Splat4(b.min.y))
            , maxX(math::Splat4(b.max.x))
            , maxY(math::Splat4(b.max.y))
        {
        }

        /// Bit k tells of row i + k.
        unsigned Touching(const Rows& rows, size_t i) const
        {
            return math::Mask4((math::Load4(rows.minX.data() + i) <= maxX) &
                               (math::Load4(rows.maxX.data() + i) >= minX) &
                               (math::Load4(rows.minY.data() + i) <= maxY) &
                               (math::Load4(rows.maxY.data() + i) >= minY));
        }

        math::Float4 minX, minY, maxX, maxY;
    };

    template<typename Visit>
    void ForEachInBlocks(const Bounds& b, size_t begin, Visit visit) const
    {
        const BlockQuery query(b);
        for (size_t quad = begin / (4 * BlockSize); quad < m_blocks.size() / 4; ++quad)
            for (unsigned blocks = query.Touching(m_blocks, 4 * quad); blocks; blocks &= blocks - 1)
            {
                const size_t first = (4 * quad + __builtin_ctz(blocks)) * BlockSize;
                for (size_t i = first; i < first + BlockSize; i += 4)
                    for (unsigned hits = query.Touching(m_rows, i); hits; hits &= hits - 1)
                    {
                        const size_t hit = i + __builtin_ctz(hits);
                        if (hit >= begin)
                            visit(hit);
                    }
            }
    }

    // What the grid holds of a shape.
    struct Entry
    {
        math::Float4 ends; // of the bounds: min, then -max, so that one comparison does
        uint32_t index;
    };

    bool BuildGrid();
    bool ChooseCells();
    void BuildBlocks();
    /// @return  the end of the hits
    const uint32_t* FindInGrid(const Bounds& b, uint32_t begin) const;

    util::VectorPOD<Bounds> m_bounds;

    bool m_hasGrid = false;
    math::Float4 m_reach;   // how far a shape in the grid extends from its lower corner, twice
    math::Float4 m_perCell; // cells per unit of length on x and y, twice
    CellTable<Entry> m_cells;
    util::VectorPOD<Entry> m_large; // in rising order
    mutable util::VectorPOD<uint32_t> m_hits;

    Rows m_rows;   // padded to whole blocks
    Rows m_blocks; // around every block; padded to whole vectors
};
}
