#include "physics/CellTable.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace physics
{
namespace
{
struct Entry
{
    int x, y;
    uint32_t index;
};
using Table = CellTable<Entry>;
}

TEST(CellTable, RoundsDownAndLimits)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const math::Int4 a = Table::Floor(math::Float4{-0.5f, 0.5f, -1, 2});
    EXPECT_EQ(-1, a[0]);
    EXPECT_EQ(0, a[1]);
    EXPECT_EQ(-1, a[2]);
    EXPECT_EQ(2, a[3]);
    const math::Int4 b = Table::Floor(math::Float4{-1e30f, 1e30f, nan, -0.0f});
    EXPECT_EQ(-1000000000, b[0]);
    EXPECT_EQ(1000000000, b[1]);
    EXPECT_EQ(0, b[3]);
}

TEST(CellTable, CountsWhoSharesACellWithWhom)
{
    Table table;
    for (int run = 0; run < 2; ++run) // nothing is left of the first
    {
        table.Reset(5, 0);
        for (uint32_t i = 0; i < 3; ++i)
            table.Place(i, -7, 1000000000);
        table.Place(3, -6, 1000000000);
        table.LeaveOut(4);
        EXPECT_EQ(9u + 1, table.Count());
    }
}

TEST(CellTable, FindsAllEntriesOfCellsAndNoneTwice)
{
    test::Dice dice;
    Table table;
    for (const uint32_t n : {0u, 1u, 700u, 3000u})
        for (const int offset : {0, -1000000000, 999999960})
        {
            SCOPED_TRACE(testing::Message() << n << " around " << offset);
            std::vector<Entry> entries;
            table.Reset(n, n);
            for (uint32_t i = 0; i < n; ++i)
            {
                entries.push_back(Entry{offset + dice.Int(-20, 21), dice.Int(-20, 21), i});
                if (i % 10 == 0)
                    table.LeaveOut(i);
                else
                    table.Place(i, entries[i].x, entries[i].y);
            }
            table.Count();
            table.Fill([&](uint32_t i) { return entries[i]; });
            for (int question = 0; question < 100; ++question)
            {
                const int x = offset + dice.Int(-25, 20), y = dice.Int(-25, 20);
                const uint32_t columns = dice.Int(1, Table::MostCells + 1);
                const uint32_t rows = dice.Int(1, Table::MostCells + 1);
                std::vector<int> found(n);
                table.ScanCells(x, y, columns, rows,
                                [&](const Entry* entry, const Entry* end)
                                {
                                    for (; entry != end; ++entry)
                                        ++found[entry->index];
                                });
                for (const Entry& e : entries)
                {
                    const bool isIn = e.index % 10 != 0 && e.x >= x && e.x - x < int(columns) &&
                                      e.y >= y && e.y - y < int(rows);
                    // Others may be found, too; but no one twice.
                    ASSERT_LE(isIn ? 1 : 0, found[e.index]);
                    ASSERT_LE(found[e.index], e.index % 10 == 0 ? 0 : 1);
                }
            }
        }
}
}
