#include "physics/ContactCache.h"

#include <gtest/gtest.h>

#include <utility>
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

TEST(ContactCache, FindsWhatStayedAmongWhatCameAndWent)
{
    // The same order in both rounds, but for a few that go and a few that come.
    ContactCache cache;
    std::vector<ContactID> last, now;
    for (unsigned i = 0; i < 3000; ++i)
    {
        const ContactID id(i / 3, 5000 + i / 7, i % 3);
        if (i % 10 != 3)
            last.push_back(id);
        if (i % 7 != 2)
            now.push_back(id);
    }
    for (size_t i = 0; i < last.size(); ++i)
        cache[last[i]] = Fake(i);
    for (size_t i = 0; i < now.size(); i += 400) // and a few in another place
        std::swap(now[i], now[(7 * i + 100) % now.size()]);
    size_t found = 0;
    for (const ContactID& id : now)
    {
        Contact* expected = nullptr;
        for (unsigned i = 0, k = 0; i < 3000; ++i)
            if (i % 10 != 3)
            {
                if (ContactID(i / 3, 5000 + i / 7, i % 3) == id)
                    expected = Fake(k);
                ++k;
            }
        ASSERT_EQ(expected, cache[id]);
        found += expected != nullptr;
    }
    EXPECT_GT(found, 2000u);
    EXPECT_GT(now.size(), found);
}
