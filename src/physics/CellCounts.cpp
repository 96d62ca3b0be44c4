#include "physics/CellCounts.h"

#include <algorithm>
#include <cstring>

namespace physics
{
CellCounts::CellCounts()
{
    Resize(6);
}

void CellCounts::Clear()
{
    Resize(m_bits);
    m_occupied = 0;
    m_fullest = 0;
}

void CellCounts::Resize(int bits)
{
    m_bits = bits;
    m_entries.resize(size_t(1) << bits);
    std::memset(static_cast<void*>(m_entries.data()), 0, m_entries.size() * sizeof(Entry));
    m_last = m_entries.data();
}

// The entry of the cell, or the one that it is to have.
CellCounts::Entry& CellCounts::Find(uint64_t cell)
{
    // Knuth 1998, "The art of computer programming", volume 3, 6.4: multiplicative hashing and linear
    // probing.
    const size_t mask = m_entries.size() - 1;
    size_t i = cell * 0x9E3779B97F4A7C15u >> (64 - m_bits);
    while (m_entries.data()[i].count != 0 && m_entries.data()[i].cell != cell)
        i = (i + 1) & mask;
    return m_entries.data()[i];
}

void CellCounts::Add(int32_t x, int32_t y)
{
    const uint64_t cell = uint64_t(uint32_t(x)) << 32 | uint32_t(y);
    if (m_last->count == 0 || m_last->cell != cell)
    {
        m_last = &Find(cell);
        m_last->cell = cell;
    }
    m_fullest = std::max(m_fullest, ++m_last->count);
    if (m_last->count == 1 && 2 * ++m_occupied >= m_entries.size())
        Grow();
}

void CellCounts::Grow()
{
    util::VectorPOD<Entry> old;
    old.swap(m_entries);
    Resize(m_bits + 1);
    for (const Entry& e : old)
        if (e.count != 0)
            Find(e.cell) = e;
}
}
