#include "physics/ContactCache.h"

#include <gtest/gtest.h>

#include <vector>

using physics::Contact;
using physics::ContactCache;
using physics::ContactID;

namespace
{
// The cache never looks at what it points to.
Contact* Fake(size_t i)
{
    return reinterpret_cast<Contact*>(16 * (i + 1));
}
}

TEST(ContactCache, FindsWhatWasPutIn)
{
    ContactCache cache;
    cache[ContactID(1, 2, 0)] = Fake(0);
    cache[ContactID(1, 2, 1)] = Fake(1);
    EXPECT_EQ(Fake(0), cache[ContactID(2, 1, 0)]);
    EXPECT_EQ(Fake(1), cache[ContactID(1, 2, 1)]);
    EXPECT_EQ(2u, cache.size());
}

TEST(ContactCache, ALookupInsertsAnEmptySlot)
{
    ContactCache cache;
    EXPECT_EQ(nullptr, cache[ContactID(1, 2, 0)]);
    EXPECT_EQ(1u, cache.size());
    EXPECT_EQ(nullptr, cache[ContactID(1, 2, 0)]);
    EXPECT_EQ(1u, cache.size());
}

TEST(ContactCache, ALaterContactReplacesAnEarlierOneWithTheSameId)
{
    ContactCache cache;
    cache[ContactID(1, 2, 0)] = Fake(0);
    cache[ContactID(2, 1, 0)] = Fake(1);
    EXPECT_EQ(Fake(1), cache[ContactID(1, 2, 0)]);
    EXPECT_EQ(1u, cache.size());
}

TEST(ContactCache, HoldsManyIdsAndForgetsThemAll)
{
    ContactCache cache;
    for (int round = 0; round < 3; ++round)
    {
        for (unsigned i = 0; i < 5000; ++i)
            cache[ContactID(i % 50, 100 + i / 50 + round, i % 3)] = Fake(i);
        EXPECT_EQ(5000u, cache.size());
        for (unsigned i = 0; i < 5000; ++i)
            ASSERT_EQ(Fake(i), cache[ContactID(i % 50, 100 + i / 50 + round, i % 3)]) << i;
        cache.clear();
        EXPECT_EQ(0u, cache.size());
        EXPECT_EQ(nullptr, cache[ContactID(0, 100 + round, 0)]);
        cache.clear();
    }
}
