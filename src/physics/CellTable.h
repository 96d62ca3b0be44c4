// Entries by the cell of a uniform grid that they lie in, for lists that answer questions about areas.
//
// The cells are hashed (Teschner et al. 2003, "Optimized spatial hashing for collision detection of
// deformable objects"), so that it does not matter where they are; with a linear hash, by which cells side
// by side stay so. What is found in a cell may therefore lie in another one, and is to be tested.
#pragma once

#include "math/Simd.h"
#include "util/VectorPOD.h"

#include <cstdint>
#include <cstring>

namespace physics
{
template<typename Entry>
class CellTable
{
public:
    /// A question for more columns or rows has to be answered without the table: rows might overlap.
    static constexpr uint32_t MostCells = 16;

    /// Rounds down, and keeps the order of numbers; a NaN gives some cell.
    static math::Int4 Floor(math::Float4 v)
    {
        const math::Float4 limit = math::Splat4(1e9f);
        v = v < limit ? v : limit;
        v = v > -limit ? v : -limit;
        const math::Int4 i = __builtin_convertvector(v, math::Int4);
        return i + (v < __builtin_convertvector(i, math::Float4));
    }

    /// To begin with. Each of n entries is then placed or left out, before all are filled in.
    /// @param leastCells  of the table
    void Reset(uint32_t n, uint32_t leastCells)
    {
        uint32_t size = 1024; // in which rows of MostCells by MostCells have no cell in common
        while (size < leastCells)
            size *= 2;
        m_mask = size - 1;
        // The golden ratio keeps rows apart from each other as well as can be.
        m_rowStride = static_cast<uint32_t>(0.6180339887 * size) | 1;
        m_starts.resize(size + 1);
        std::memset(m_starts.data(), 0, m_starts.size() * sizeof(uint32_t));
        m_cellOf.resize(n);
    }
    void Place(uint32_t i, int x, int y)
    {
        const uint32_t cell = CellOf(x, y);
        m_cellOf.data()[i] = cell;
        ++m_starts.data()[cell];
    }
    void LeaveOut(uint32_t i) { m_cellOf.data()[i] = NoCell; }

    /// To be called once all are placed.
    /// @return  how many entries share a cell with how many
    uint64_t Count()
    {
        uint32_t* const starts = m_starts.data();
        uint64_t pairs = 0;
        uint32_t sum = 0;
        for (uint32_t cell = 0; cell <= m_mask; ++cell)
        {
            pairs += uint64_t(starts[cell]) * starts[cell];
            sum += starts[cell];
            starts[cell] = sum;
        }
        starts[m_mask + 1] = sum;
        return pairs;
    }
    /// After Count.
    /// @param make  gives entry i
    template<typename Make>
    void Fill(Make make)
    {
        const uint32_t* const cellOf = m_cellOf.data();
        uint32_t* const starts = m_starts.data();
        m_entries.resize(starts[m_mask + 1]);
        Entry* const entries = m_entries.data();
        // Each cell from its end to its start.
        for (uint32_t i = static_cast<uint32_t>(m_cellOf.size()); i-- > 0;)
            if (cellOf[i] != NoCell)
                entries[--starts[cellOf[i]]] = make(i);
    }

    /// Calls scan(begin, end) for the entries of these cells, some at a time.
    /// @param columns, rows  from x and y on, MostCells at most
    template<typename Scan>
    void ScanCells(int x, int y, uint32_t columns, uint32_t rows, Scan scan) const
    {
        const Entry* const entries = m_entries.data();
        const uint32_t* const starts = m_starts.data();
        const uint32_t mask = m_mask, stride = m_rowStride;
        uint32_t row = CellOf(x, y);
        for (uint32_t i = 0; i < rows; ++i, row += stride)
        {
            const uint32_t first = row & mask, last = first + columns;
            if (last <= mask + 1)
                scan(entries + starts[first], entries + starts[last]);
            else
            {
                scan(entries + starts[first], entries + starts[mask + 1]);
                scan(entries, entries + starts[last & mask]);
            }
        }
    }

private:
    static constexpr uint32_t NoCell = ~0u;

    uint32_t CellOf(int x, int y) const
    {
        return (uint32_t(x) + uint32_t(y) * m_rowStride) & m_mask;
    }

    uint32_t m_mask = 0;                // cells in the table, a power of 2, less 1
    uint32_t m_rowStride = 0;           // from a cell of the table to that above it
    util::VectorPOD<uint32_t> m_cellOf; // by entry
    util::VectorPOD<uint32_t> m_starts; // by cell of the table: its first entry
    util::VectorPOD<Entry> m_entries;
};
}
