#include "physics/ContactPool.h"

#include "SimulationFixture.h"

namespace physics
{
using math::Vec2;

class ContactPoolTest : public SimulationFixture
{
protected:
    ContactPoolTest()
        : a(AddBox(Vec2(1, 1), Vec2(0, 5)))
        , b(AddBox(Vec2(1, 1), Vec2(0, 6)))
    {
    }

    ContactPtr New(float depth = 0.25f)
    {
        return pool.New(GeomOf(a).get(), GeomOf(b).get(), 3, Vec2(0, 5.5f), Vec2(0, 1), depth);
    }

    BodyPtr a, b;
    ContactPool pool;
};

TEST_F(ContactPoolTest, UsesAContactAgainOnceNobodyHoldsIt)
{
    Contact* first;
    {
        const ContactPtr contact = New();
        first = contact.get();
        pool.Reclaim();
        EXPECT_EQ(0u, pool.GetFreeCount());
    }
    EXPECT_NE(first, New().get());
    pool.Reclaim();
    EXPECT_EQ(2u, pool.GetFreeCount());
    const ContactPtr x = New(), y = New();
    EXPECT_EQ(2u, pool.GetObjectCount());
    EXPECT_TRUE(x.get() == first || y.get() == first);
}

TEST_F(ContactPoolTest, LeavesAloneWhatOthersHold)
{
    const ContactPtr held = New(0.125f);
    for (int i = 0; i < 5; ++i)
    {
        New(0.5f);
        pool.Reclaim();
    }
    EXPECT_EQ(0.125f, held->GetDepth());
    EXPECT_EQ(2u, pool.GetObjectCount());
}

TEST_F(ContactPoolTest, GivesContactsAsFromTheConstructor)
{
    {
        const ContactPtr used = New();
        const Contact old(GeomOf(a).get(), GeomOf(b).get(), 3, Vec2(0, 5.5f), Vec2(0, 1), 0.5f);
        used->ReadFrom(old);
        used->SetDistScale(7);
        EXPECT_FALSE(used->IsNew());
    }
    pool.Reclaim();
    sim.SetSimTime(12);
    const ContactPtr again = New();
    EXPECT_EQ(1u, pool.GetObjectCount());
    EXPECT_TRUE(again->IsNew());
    EXPECT_EQ(12, again->GetStartTime());
    EXPECT_EQ(0, again->GetTotalN());
    EXPECT_EQ(0, again->GetTotalT());
    EXPECT_EQ(0, again->GetPriority());
    EXPECT_EQ(0.25f, again->GetDepth());
    EXPECT_EQ(3u, again->GetIndex());
}

TEST_F(ContactPoolTest, GivesObjectsOutInTheSameOrderAgain)
{
    std::vector<Contact*> order;
    for (int round = 0; round < 3; ++round)
    {
        std::vector<ContactPtr> held;
        for (int i = 0; i < 10; ++i)
            held.push_back(New());
        if (round == 0)
            for (const ContactPtr& contact : held)
                order.push_back(contact.get());
        else
            for (int i = 0; i < 10; ++i)
                EXPECT_EQ(order[i], held[i].get());
        held.clear();
        pool.Reclaim();
    }
}
}
