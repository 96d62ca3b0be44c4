// How many things lie in each cell of a grid that may reach far: counts alone, for statistics.
//
// An open table with as many entries as there are occupied cells, or some more, wherever they are. Whoever
// counts again and again keeps one: it keeps its capacity.
#pragma once

#include "util/VectorPOD.h"

#include <cstddef>
#include <cstdint>

namespace physics
{
class CellCounts
{
public:
    CellCounts();
    CellCounts(const CellCounts&) = delete;
    CellCounts& operator=(const CellCounts&) = delete;

    void Clear();
    /// Quick when a thing lies in the cell of the one before.
    void Add(int32_t x, int32_t y);

    /// Cells with something in them.
    size_t GetOccupied() const { return m_occupied; }
    /// Things in the fullest one.
    size_t GetFullest() const { return m_fullest; }

private:
    struct Entry
    {
        uint64_t cell;
        uint32_t count; // 0 where there is no cell
    };

    Entry& Find(uint64_t cell);
    /// Empties all entries.
    void Resize(int bits);
    void Grow();

    util::VectorPOD<Entry> m_entries; // at most half of them with a cell
    Entry* m_last;                    // of the latest addition; after Resize any
    int m_bits = 0;                   // of their number
    size_t m_occupied = 0;
    uint32_t m_fullest = 0;
};
}
