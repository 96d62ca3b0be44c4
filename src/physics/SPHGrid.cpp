#include "physics/SPHGrid.h"

#include <cstring>

namespace physics
{
int32_t SPHGrid::Cellify(float x, float cellSizeInv)
{
    const float in[8] = {x, x, x, x, x, x, x, x};
    int32_t out[8], range[2];
    SPHKernels::Get(SPHKernels::Instructions::Baseline).calcCells(in, 1, cellSizeInv, out, range);
    return out[0];
}

void SPHGrid::Sort(const SPHKernels& kernels, const float* x, const float* y, size_t n,
                   float cellSize)
{
    m_places.resize(n);
    m_keys.resize(n);
    m_cellX.resize(n + 8);
    m_cellY.resize(n + 8);
    int32_t rangeX[2], rangeY[2];
    kernels.calcCells(x, n, 1 / cellSize, m_cellX.data(), rangeX);
    kernels.calcCells(y, n, 1 / cellSize, m_cellY.data(), rangeY);
    m_minX = rangeX[0];
    m_minY = rangeY[0];
    m_width = uint64_t(int64_t(rangeX[1]) - rangeX[0]) + 1;
    m_height = uint64_t(int64_t(rangeY[1]) - rangeY[0]) + 2;
    m_isDense = m_width * m_height <= 8 * n + 1024;
    if (m_isDense)
        SortByCounting();
    else
        SortByRadix();
}

void SPHGrid::SortByCounting()
{
    const size_t n = m_places.size();
    // Behind the last column lies another one, of which the last column asks the rows beside its own.
    const size_t size = m_width * m_height + m_height + 2;
    m_table.resize(size + 1);
    std::memset(m_table.data(), 0, (size + 1) * sizeof(uint32_t));
    uint32_t* const starts = m_table.data() + 1;
    uint32_t* const keys = reinterpret_cast<uint32_t*>(m_cellX.data()); // over the cells, as we go
    const uint32_t height = static_cast<uint32_t>(m_height);
    for (size_t i = 0; i < n; ++i)
    {
        keys[i] = static_cast<uint32_t>(m_cellX.data()[i] - m_minX) * height +
                  static_cast<uint32_t>(m_cellY.data()[i] - m_minY);
        ++starts[keys[i]];
    }
    uint32_t sum = 0;
    for (size_t k = 0; k < size; ++k)
    {
        const uint32_t count = starts[k];
        starts[k] = sum;
        sum += count;
    }
    for (size_t i = 0; i < n; ++i)
    {
        const uint32_t place = starts[keys[i]]++;
        m_places.data()[i] = place;
        m_keys.data()[place] = keys[i];
    }
    // Every start has moved on to the next one's, which makes the table one of ends; with the zero in
    // front it is one of starts again.
}

// From the low digit up, which is stable: Knuth 1998, "The art of computer programming", volume 3, 5.2.5.
void SPHGrid::SortByRadix()
{
    const size_t n = m_places.size();
    m_records.resize(n);
    m_recordsBuffer.resize(n);
    for (size_t i = 0; i < n; ++i)
        m_records.data()[i] = {uint64_t(int64_t(m_cellX.data()[i]) - m_minX) * m_height +
                                   uint64_t(int64_t(m_cellY.data()[i]) - m_minY),
                               static_cast<uint32_t>(i)};
    const int digit = 11;
    const uint64_t mask = (1u << digit) - 1;
    const uint64_t largest = m_width * m_height - 1;
    for (int shift = 0; shift < 64 && largest >> shift != 0; shift += digit)
    {
        uint32_t starts[1u << digit] = {};
        for (const Record& r : m_records)
            ++starts[r.key >> shift & mask];
        uint32_t sum = 0;
        for (uint32_t& start : starts)
        {
            const uint32_t count = start;
            start = sum;
            sum += count;
        }
        for (const Record& r : m_records)
            m_recordsBuffer.data()[starts[r.key >> shift & mask]++] = r;
        m_records.swap(m_recordsBuffer);
    }
    for (size_t place = 0; place < n; ++place)
    {
        const Record& r = m_records.data()[place];
        m_places.data()[r.particle] = static_cast<uint32_t>(place);
        m_keys.data()[place] = r.key;
    }
}

void SPHGrid::FindRanges(SPHArrays& arrays) const
{
    const size_t n = m_keys.size();
    const uint64_t* const keys = m_keys.data();
    uint32_t* const columnEnd = arrays.columnEnd.data();
    uint32_t* const nextBegin = arrays.nextBegin.data();
    uint32_t* const nextEnd = arrays.nextEnd.data();
    if (m_isDense)
    {
        const uint32_t* const starts = m_table.data();
        const uint64_t height = m_height;
        for (size_t i = 0; i < n; ++i)
        {
            const uint32_t* const own = starts + keys[i];
            columnEnd[i] = own[2];
            nextBegin[i] = own[height - 1];
            nextEnd[i] = own[height + 2];
        }
        return;
    }
    size_t a = 0, b = 0, c = 0;
    for (size_t i = 0; i < n; ++i)
    {
        const uint64_t key = keys[i];
        while (a < n && keys[a] <= key + 1)
            ++a;
        while (b < n && keys[b] < key + m_height - 1)
            ++b;
        while (c < n && keys[c] <= key + m_height + 1)
            ++c;
        columnEnd[i] = static_cast<uint32_t>(a);
        nextBegin[i] = static_cast<uint32_t>(b);
        nextEnd[i] = static_cast<uint32_t>(c);
    }
}
}
