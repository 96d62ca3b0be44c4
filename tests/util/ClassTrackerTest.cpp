#include "util/ClassTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{
struct Padding
{
    virtual ~Padding() noexcept(false) {}
    int x = 0;
};

// Not the first base, so that the tracker's address is not the object's.
struct Tracked : Padding, util::ClassTracker<Tracked>
{
    int value = 5;
};
}

TEST(ClassTracker, KnowsAllLivingInstances)
{
    EXPECT_EQ(0u, Tracked::GetClassInstanceCount());
    Tracked a;
    {
        Tracked b, copy(a);
        util::VectorPOD<Tracked*> all = Tracked::GetAllClassInstances();
        EXPECT_EQ(3u, all.size());
        EXPECT_EQ(1, std::count(all.begin(), all.end(), &a));
        EXPECT_EQ(1, std::count(all.begin(), all.end(), &b));
        EXPECT_EQ(1, std::count(all.begin(), all.end(), &copy));
        for (Tracked* t : all)
            EXPECT_EQ(5, t->value);
        EXPECT_TRUE(Tracked::IsClassInstance(&b));
    }
    EXPECT_EQ(1u, Tracked::GetClassInstanceCount());
}

TEST(ClassTracker, HandsOutACopyThatReservesExactlyEnough)
{
    std::vector<std::unique_ptr<Tracked>> objects;
    for (int i = 0; i < 10; ++i)
        objects.push_back(std::make_unique<Tracked>());
    util::VectorPOD<Tracked*> all = Tracked::GetAllClassInstances();
    EXPECT_EQ(10u, all.capacity());
    // Instances may come into being during a walk.
    for (Tracked* t : all)
    {
        EXPECT_EQ(5, t->value);
        objects.push_back(std::make_unique<Tracked>());
    }
    EXPECT_EQ(20u, Tracked::GetClassInstanceCount());
    EXPECT_EQ(10u, all.size());
}

TEST(ClassTracker, TellsWhetherAnInstanceIsStillThere)
{
    auto t = std::make_unique<Tracked>();
    Tracked* p = t.get();
    EXPECT_TRUE(Tracked::IsClassInstance(p));
    t = nullptr;
    EXPECT_FALSE(Tracked::IsClassInstance(p));
}
