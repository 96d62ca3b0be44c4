#include "physics/ContactID.h"

#include <gtest/gtest.h>

using physics::ContactID;
using physics::ContactIDHasher;

TEST(ContactID, DoesNotCareForTheOrderOfThePair)
{
    EXPECT_EQ(ContactID(3, 7, 2), ContactID(7, 3, 2));
    EXPECT_EQ(ContactIDHasher()(ContactID(3, 7, 2)), ContactIDHasher()(ContactID(7, 3, 2)));
    EXPECT_EQ(3u, ContactID(7, 3, 2).GetLowGeom());
    EXPECT_EQ(7u, ContactID(7, 3, 2).GetHighGeom());
    EXPECT_EQ(2u, ContactID(7, 3, 2).GetIndex());
}

TEST(ContactID, DiffersByEachOfItsFields)
{
    EXPECT_NE(ContactID(3, 7, 2), ContactID(4, 7, 2));
    EXPECT_NE(ContactID(3, 7, 2), ContactID(3, 8, 2));
    EXPECT_NE(ContactID(3, 7, 2), ContactID(3, 7, 3));
}

TEST(ContactID, HashesInThirtyTwoBits)
{
    // 3 * 0x8DA6B343 + 7 * 0xD8163841 + 2 * 0xCB1AB31F, modulo 2^32
    const uint64_t sum = 3ull * 0x8DA6B343ull + 7ull * 0xD8163841ull + 2ull * 0xCB1AB31Full;
    EXPECT_EQ(static_cast<uint32_t>(sum & 0xFFFFFFFFull), ContactID(7, 3, 2).GetHash());
}
