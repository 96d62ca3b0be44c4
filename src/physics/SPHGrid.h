// Puts the particles of the fluid in the order of a grid, and tells where the neighbors of each may be.
//
// No table of all cells is kept: particles that are few for their spread are sorted by radix, and the cells
// beside are found by walking along. So a drop that has splashed a mile off costs as much as any other.
#pragma once

#include "physics/SPHKernels.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <cstdint>

namespace physics
{
class SPHGrid
{
public:
    /// The cell along one axis, truncated toward zero: the cells around the origin are twice as wide as
    /// the others. Held to +-1e9; -1e9 for what is not a number.
    static int32_t Cellify(float x, float cellSizeInv);

    /// @param x, y  positions, with seven elements more, which repeat the last
    /// @param cellSize  particles less than that apart are in cells that touch
    void Sort(const SPHKernels& kernels, const float* x, const float* y, size_t n, float cellSize);

    /// The place of each particle in grid order.
    const util::VectorPOD<uint32_t>& GetPlaces() const { return m_places; }
    /// After Sort, by place.
    void FindRanges(SPHArrays& arrays) const;

private:
    struct Record
    {
        uint64_t key;
        uint32_t particle;
    };

    void SortByCounting();
    void SortByRadix();

    util::VectorPOD<int32_t> m_cellX, m_cellY;
    int32_t m_minX = 0, m_minY = 0;
    uint64_t m_width = 0, m_height = 0; // one row more than are in use, so that columns don't touch
    bool m_isDense = false;
    util::VectorPOD<uint32_t> m_places;
    util::VectorPOD<uint64_t> m_keys;  // x * height + y, in grid order
    util::VectorPOD<uint32_t> m_table; // when dense, per key: where the next one starts
    util::VectorPOD<Record> m_records, m_recordsBuffer;
};
}
