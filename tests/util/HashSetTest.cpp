#include "util/HashSet.h"

#include "util/HashMap.h"
#include "util/String.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using math::Vec2i;
using math::Vec2u;
using util::DefaultHasher;
using util::HashMap;
using util::HashSet;
using util::SharedPtr;
using util::String;

namespace
{
// The bucket can be seen from the key.
struct Same
{
    uint32_t operator()(int i) const { return static_cast<uint32_t>(i); }
};
using IntSet = HashSet<int, Same>;

std::vector<int> Elements(const IntSet& set)
{
    std::vector<int> all;
    for (int i : set)
        all.push_back(i);
    return all;
}
}

TEST(DefaultHasher, OfPointersMultipliesIn32Bit)
{
    const int* p = reinterpret_cast<const int*>(0x1234567800000010ull);
    EXPECT_EQ(0x10u * 0x8DA6B343u, DefaultHasher<const int*>()(p));
    EXPECT_EQ(0xDA6B3430u, DefaultHasher<const int*>()(p));
    EXPECT_EQ(0u, DefaultHasher<int*>()(nullptr));
}

TEST(DefaultHasher, OfHandlesIsThatOfTheObject)
{
    SharedPtr<util::Pointee> p = QUIB_NEW util::Pointee;
    EXPECT_EQ(DefaultHasher<util::Pointee*>()(p.get()),
              DefaultHasher<SharedPtr<util::Pointee>>()(p));
}

TEST(DefaultHasher, OfStringsIsTheShiftHashOfSignedBytes)
{
    EXPECT_EQ(0u, DefaultHasher<String>()(""));
    EXPECT_EQ(97u, DefaultHasher<String>()("a"));
    // 98 + 97 * (64 + 65536 - 1)
    EXPECT_EQ(98u + 97u * 65599u, DefaultHasher<String>()("ab"));
    EXPECT_EQ(99u + 65599u * (98u + 97u * 65599u), DefaultHasher<String>()("abc"));
    // A byte from 0x80 on counts as negative.
    EXPECT_EQ(static_cast<uint32_t>(-1), DefaultHasher<String>()("\xFF"));
    EXPECT_EQ(97u - 23u * 65599u, DefaultHasher<String>()("\xE9"
                                                          "a"));
}

TEST(DefaultHasher, OfCellsMixesBothCoordinates)
{
    EXPECT_EQ(0x8DA6B343u, DefaultHasher<Vec2u>()(Vec2u(1, 0)));
    EXPECT_EQ(0xD8163841u, DefaultHasher<Vec2u>()(Vec2u(0, 1)));
    EXPECT_EQ(3u * 0x8DA6B343u + 7u * 0xD8163841u, DefaultHasher<Vec2u>()(Vec2u(3, 7)));
    EXPECT_EQ(0u - 0x8DA6B343u, DefaultHasher<Vec2i>()(Vec2i(-1, 0)));
}

TEST(HashSet, TakesTheNextOddPrimeForItsBuckets)
{
    const struct
    {
        unsigned long capacity, buckets;
    } cases[] = {{0, 3},     {1, 3},     {2, 3},     {3, 3},       {4, 5},       {6, 7},
                 {8, 11},    {9, 11},    {10, 11},   {24, 29},     {25, 29},     {28, 29},
                 {100, 101}, {120, 127}, {121, 127}, {1000, 1009}, {7920, 7927}, {65536, 65537}};
    for (const auto& c : cases)
        EXPECT_EQ(c.buckets, IntSet(c.capacity).GetBucketCount()) << "capacity " << c.capacity;
}

TEST(HashSet, GrowsAtTheInsertionThatFindsItFull)
{
    IntSet set(0);
    for (int i = 0; i < 3; ++i)
        set.insert(i);
    EXPECT_EQ(3u, set.GetBucketCount());
    set.insert(3);
    EXPECT_EQ(7u, set.GetBucketCount());
    EXPECT_EQ(4u, set.size());
    for (int i = 4; i < 8; ++i)
        set.insert(i);
    EXPECT_EQ(17u, set.GetBucketCount()); // 14, to 15, to 17
}

TEST(HashSet, ChecksForGrowthEvenWhenTheValueIsThere)
{
    IntSet set(0);
    for (int i = 0; i < 3; ++i)
        set.insert(i);
    set.insert(1);
    EXPECT_EQ(3u, set.size());
    EXPECT_EQ(7u, set.GetBucketCount());
}

TEST(HashSet, NeverShrinks)
{
    IntSet set(25);
    set.SetCapacity(4);
    EXPECT_EQ(29u, set.GetBucketCount());
    set.SetCapacity(29);
    EXPECT_EQ(29u, set.GetBucketCount());
    set.SetCapacity(30);
    EXPECT_EQ(31u, set.GetBucketCount());
    set.insert(1);
    set.erase(1);
    set.clear();
    EXPECT_EQ(31u, set.GetBucketCount());
}

TEST(HashSet, IteratesByBucketThenByPosition)
{
    IntSet set(5);
    for (int i : {7, 3, 12, 0, 2}) // buckets 2, 3, 2, 0, 2
        set.insert(i);
    EXPECT_EQ((std::vector<int>{0, 7, 12, 2, 3}), Elements(set));
    // Erased: the bucket's last one takes its place.
    set.erase(7);
    EXPECT_EQ((std::vector<int>{0, 2, 12, 3}), Elements(set));
    set.erase(99);
    EXPECT_EQ(4u, set.size());
}

TEST(HashSet, MovesItsElementsInTheOrderOfIterationWhenItGrows)
{
    IntSet set(3);
    for (int i : {14, 7, 0}) // buckets 2, 1, 0 of 3; all in bucket 0 of 7
        set.insert(i);
    set.SetCapacity(7);
    EXPECT_EQ((std::vector<int>{0, 7, 14}), Elements(set));
}

TEST(HashSet, FindsWhatItHolds)
{
    HashSet<String> set;
    set.insert("one");
    set.insert("two");
    set.insert("one");
    EXPECT_EQ(2u, set.size());
    ASSERT_TRUE(set.find("one") != set.end());
    EXPECT_EQ("one", *set.find("one"));
    EXPECT_EQ(3u, set.find("two")->size());
    EXPECT_TRUE(set.find("three") == set.end());
    EXPECT_EQ(1u, set.count("two"));
    EXPECT_EQ(0u, set.count("three"));
}

TEST(HashSet, WithoutElementsBeginsAtItsEnd)
{
    IntSet set(10);
    EXPECT_TRUE(set.begin() == set.end());
    EXPECT_TRUE(set.empty());
}

TEST(HashSet, RefusesToCompareIteratorsOfTwoTables)
{
    IntSet a, b;
    try
    {
        (void)(a.begin() == b.begin());
        FAIL();
    }
    catch (BadDataException& e)
    {
        const std::string text = e.what();
        EXPECT_EQ(0u,
                  text.find("Data assertion failed: \"&lhs.m_table == &rhs.m_table\" in function "))
            << text;
    }
}

TEST(HashSet, Swaps)
{
    IntSet a, b(25);
    a.insert(1);
    a.swap(b);
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(29u, a.GetBucketCount());
    EXPECT_EQ((std::vector<int>{1}), Elements(b));
}

TEST(HashSet, ErasesAnElementWhoseEndLooksAtTheSet)
{
    static HashSet<SharedPtr<util::Pointee>>* s_set;
    static size_t s_sizeSeen;
    struct Looks : util::Pointee
    {
        ~Looks() override
        {
            s_sizeSeen = 0;
            for (const auto& p : *s_set)
                s_sizeSeen += p->GetPointeeID() != 0xFFFFFFFF;
        }
    };
    HashSet<SharedPtr<util::Pointee>> set;
    s_set = &set;
    SharedPtr<util::Pointee> p = QUIB_NEW Looks;
    util::Pointee* plain = p.get();
    set.insert(p);
    set.insert(QUIB_NEW util::Pointee);
    p = nullptr;
    set.erase(SharedPtr<util::Pointee>(plain));
    EXPECT_EQ(1u, set.size());
    EXPECT_EQ(1u, s_sizeSeen);
    s_set = nullptr;
}

TEST(HashSet, HoldsTenThousandAgainstTheStandardSet)
{
    IntSet set;
    std::set<int> expected;
    uint32_t x = 1;
    for (int i = 0; i < 30000; ++i)
    {
        x = x * 1664525u + 1013904223u;
        const int value = static_cast<int>(x >> 18);
        if (x & 0x100)
        {
            set.insert(value);
            expected.insert(value);
        }
        else
        {
            set.erase(value);
            expected.erase(value);
        }
    }
    std::vector<int> all = Elements(set);
    EXPECT_EQ(expected.size(), set.size());
    EXPECT_LE(set.size(), set.GetBucketCount());
    EXPECT_EQ(expected, std::set<int>(all.begin(), all.end()));
    EXPECT_EQ(expected.size(), all.size());
}

TEST(HashMap, InsertsADefaultValueUnderAnUnknownKey)
{
    HashMap<String, int> map;
    EXPECT_EQ(0, map["a"]);
    map["a"] = 4;
    ++map["a"];
    EXPECT_EQ(5, map["a"]);
    EXPECT_EQ(1u, map.size());
}

TEST(HashMap, FindsWithoutInserting)
{
    HashMap<String, int> map;
    map["a"] = 1;
    EXPECT_EQ(nullptr, map.Find("b"));
    ASSERT_TRUE(map.Find("a"));
    EXPECT_EQ(1, *map.Find("a"));
    EXPECT_TRUE(map.find("b") == map.end());
    EXPECT_EQ(1, map.find("a")->second);
    EXPECT_EQ(1u, map.size());
}

TEST(HashMap, InsertLeavesAKnownKeyAlone)
{
    HashMap<String, int> map;
    map.insert({"a", 1});
    map.insert({"a", 2});
    EXPECT_EQ(1, map["a"]);
    EXPECT_EQ(1u, map.size());
    map.erase("a");
    EXPECT_TRUE(map.empty());
}

TEST(HashMap, GrowsLikeASet)
{
    HashMap<int, int, Same> map(0);
    for (int i = 0; i < 4; ++i)
        map[i] = i * i;
    EXPECT_EQ(7u, map.GetBucketCount());
    int i = 0;
    for (const auto& pair : map)
    {
        EXPECT_EQ(i, pair.first);
        EXPECT_EQ(i * i, pair.second);
        ++i;
    }
    HashMap<int, int, Same> other;
    other.swap(map);
    EXPECT_EQ(4u, other.size());
    EXPECT_TRUE(map.empty());
}
