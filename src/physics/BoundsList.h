// Axis-aligned bounds of many shapes in flat arrays, for the cheap rejection in loops over all pairs.
//
// A common box stands around every sixteen of them. Shapes made together mostly lie together, so that
// most of them are rejected sixteen or sixty-four at a time.
#pragma once

#include "math/BoundingSphere.h"
#include "math/OBB2D.h"
#include "math/Simd.h"
#include "math/Vector.h"
#include "util/VectorPOD.h"

#include <cfloat>
#include <cstddef>

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
    void Append(const Bounds& b);
    /// To be called once all are in, before the list is asked.
    void Finish();

    /// Calls visit(i) for each i from begin on whose bounds touch b, in rising order.
    template<typename Visit>
    void ForEachTouching(const Bounds& b, size_t begin, Visit visit) const
    {
        const Query query(b);
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

private:
    static constexpr size_t BlockSize = 16;

    struct Rows
    {
        util::VectorPOD<float> minX, minY, maxX, maxY;

        size_t size() const { return minX.size(); }
        void Clear();
        void Append(const math::Vec2& min, const math::Vec2& max);
        /// With bounds that touch nothing.
        void PadTo(size_t multiple);
    };

    struct Query
    {
        explicit Query(const Bounds& b)
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

    Rows m_rows;   // padded to whole blocks
    Rows m_blocks; // around every block; padded to whole vectors
};
}
