// A world in which nothing is added or removed and all touches persist asks for no memory.

#include "AllocationCounter.h"
#include "SimulationFixture.h"
#include "physics/Particle.h"
#include "physics/Hinge.h"
#include "physics/SpringJoint.h"

namespace physics
{
using math::Vec2;

class AllocationTest : public SimulationFixture
{
protected:
    size_t CountAllocations(int steps)
    {
        const size_t before = test::g_allocations;
        Steps(steps);
        return test::g_allocations - before;
    }
};

TEST_F(AllocationTest, TheCounterCounts)
{
    const size_t before = test::g_allocations;
    int* volatile a = new int(1);
    void* volatile b = std::malloc(10);
    EXPECT_EQ(before + 2, test::g_allocations);
    delete a;
    std::free(b);
}

TEST_F(AllocationTest, ASettledStackAllocatesNothing)
{
    AddPyramid(10);
    Steps(300);
    const size_t contacts = sim.GetContacts().size();
    EXPECT_EQ(0u, CountAllocations(200));
    EXPECT_EQ(contacts, sim.GetContacts().size());
    EXPECT_EQ(contacts, sim.GetMatchedContacts());
}

TEST_F(AllocationTest, ASettledHeapOfAllShapesAllocatesNothing)
{
    AddFloor();
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(1, 0), 4)));
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(-1, 0), 4)));
    for (int i = 0; i < 60; ++i)
    {
        const Vec2 p(1.2f * (i % 6) - 3, 0.6f + 1.1f * (i / 6));
        if (i % 3 == 0)
            AddBox(Vec2(0.8f, 0.6f), p);
        else if (i % 3 == 1)
            AddCircle(p, 0.4f);
        else
            AddBodyWith(QUIB_NEW Polygon({p + Vec2(-0.4f, -0.3f), p + Vec2(0.4f, -0.3f),
                                          p + Vec2(0.1f, 0), p + Vec2(0.3f, 0.4f)}));
    }
    // Touches come and go while it settles: capacities reach what the heap ever needs.
    Steps(1500);
    EXPECT_EQ(0u, CountAllocations(200));
}

TEST_F(AllocationTest, HingesAndSpringsAllocateNothing)
{
    AddFloor();
    for (int chain = 0; chain < 3; ++chain)
    {
        GeomPtr last = sim.GetWorldGeom();
        for (int i = 0; i < 20; ++i)
        {
            const Vec2 pos(0.2f * i + 0.1f, 6.0f + chain);
            const GeomPtr geom = GeomOf(AddCircle(pos, 0.1f));
            const HingePtr hinge = QUIB_NEW Hinge(last, geom, pos - Vec2(0.1f, 0));
            hinge->SetMotor(i % 4 == 0);
            hinge->SetImpulseLimit(i % 3 == 0 ? 1000 : Inf);
            sim.AddConstraint(hinge);
            sim.AddJoint(QUIB_NEW SpringJoint(sim.GetWorldGeom(), pos + Vec2(0, 1), geom, pos));
            last = geom;
        }
    }
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(8, 0.5f));
    sim.AddJoint(QUIB_NEW SpringJoint(sim.GetWorldGeom(), Vec2(8, 3), GeomOf(box), Vec2(8, 1)));
    Steps(300);
    for (const bool prioritized : {false, true})
    {
        sim.m_prioritizedSolver = prioritized;
        Steps(300);
        EXPECT_EQ(0u, CountAllocations(100)) << prioritized;
    }
    EXPECT_EQ(60u, sim.GetHinges().size());
    EXPECT_EQ(61u, sim.GetJoints().size());
}

TEST_F(AllocationTest, ThePrioritisedSolverKeepsItsMemory)
{
    sim.m_prioritizedSolver = true;
    AddFloor();
    AddBox(Vec2(1, 1), Vec2(0, 0.5f));
    AddBox(Vec2(1, 1), Vec2(0, 1.5f));
    Steps(100);
    EXPECT_EQ(0u, CountAllocations(100));
}

TEST_F(AllocationTest, WaterAllocatesNothing)
{
    AddFloor();
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(1, 0), 6)));
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(-1, 0), 6)));
    AddBox(Vec2(1, 1), Vec2(0, 9));
    for (int i = 0; i < 10000; ++i)
        sim.AddParticle(
            QUIB_NEW Particle(Vec2(-5.95f + 0.09f * (i % 132), 0.05f + 0.09f * (i / 132)), Vec2()));
    // By then it has fallen into itself, and no later step has more contacts or neighbors.
    Steps(180);
    EXPECT_EQ(0u, CountAllocations(20));
    EXPECT_EQ(10000u, sim.GetParticles().size());
    EXPECT_LT(200u, sim.GetContacts().size());
}

TEST_F(AllocationTest, APausedWorldAllocatesNothing)
{
    AddPyramid(5);
    Steps(100);
    const size_t before = test::g_allocations;
    for (int i = 0; i < 100; ++i)
        sim.Step(false);
    EXPECT_EQ(before, test::g_allocations);
}
}
