#include "physics/CellCounts.h"

#include "Dice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <utility>

namespace physics
{
TEST(CellCounts, StartEmpty)
{
    const CellCounts counts;
    EXPECT_EQ(0u, counts.GetOccupied());
    EXPECT_EQ(0u, counts.GetFullest());
}

TEST(CellCounts, TellEveryCellFromEveryOther)
{
    CellCounts counts;
    for (int x : {INT_MIN, -1, 0, 1, INT_MAX})
        for (int y : {INT_MIN, -1, 0, 1, INT_MAX})
            counts.Add(x, y);
    EXPECT_EQ(25u, counts.GetOccupied());
    EXPECT_EQ(1u, counts.GetFullest());
    counts.Add(-1, INT_MAX);
    EXPECT_EQ(25u, counts.GetOccupied());
    EXPECT_EQ(2u, counts.GetFullest());
    counts.Clear();
    EXPECT_EQ(0u, counts.GetOccupied());
    EXPECT_EQ(0u, counts.GetFullest());
    counts.Add(-1, INT_MAX);
    EXPECT_EQ(1u, counts.GetOccupied());
    EXPECT_EQ(1u, counts.GetFullest());
}

TEST(CellCounts, AgreeWithAMap)
{
    test::Dice dice;
    CellCounts counts;
    for (const int spread : {1, 5, 40, 2000})
        for (const int stride : {1, 4096, 1 << 20})
        {
            SCOPED_TRACE(testing::Message() << spread << " cells, " << stride << " apart");
            counts.Clear();
            std::map<std::pair<int, int>, size_t> cells;
            size_t fullest = 0;
            for (int i = 0; i < 3000; ++i)
            {
                const int x =
                    static_cast<int>(dice.Uniform(-float(spread), float(spread))) * stride;
                const int y =
                    static_cast<int>(dice.Uniform(-float(spread), float(spread))) * stride;
                counts.Add(x, y);
                fullest = std::max(fullest, ++cells[{x, y}]);
            }
            EXPECT_EQ(cells.size(), counts.GetOccupied());
            EXPECT_EQ(fullest, counts.GetFullest());
        }
}
}
