// Joints, hinges and water in the simulation: how they come and go.

#include "physics/Simulation.h"

#include "SimulationFixture.h"
#include "TestSupport.h"
#include "physics/Hinge.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/SpringJoint.h"

#include <cmath>
#include <string>

namespace physics
{
using math::Vec2;

class SimulationJointsTest : public SimulationFixture
{
protected:
    // Notes what the simulation does with it.
    class Note : public Joint
    {
    public:
        Note(const BodyPtr& a, const BodyPtr& b, std::string& log, char name)
            : Joint(GeomOf(a), GeomOf(b))
            , m_log(log)
            , m_name(name)
        {
        }
        void Activate() override { m_log += std::string("+") + m_name; }
        void Deactivate() override { m_log += std::string("-") + m_name; }
        void ApplyForce() override
        {
            m_log += m_name;
            force = GetGeom(0)->GetBodyPtr()->GetForce();
        }
        bool IsGood() const override { return isGood && Joint::IsGood(); }

        bool isGood = true;
        Vec2 force;

    private:
        std::string& m_log;
        char m_name;
    };

    SimulationJointsTest()
        : a(AddBox(Vec2(1, 1), Vec2(0, 5)))
        , b(AddBox(Vec2(1, 1), Vec2(5, 5)))
    {
    }

    ~SimulationJointsTest() override { sim.Clear(); } // the joints write to the log

    util::SharedPtr<Note> MakeNote(char name) { return QUIB_NEW Note(a, b, log, name); }

    std::string log;
    BodyPtr a, b;
};

TEST_F(SimulationJointsTest, ActivatesAJointOnceAndDeactivatesItAtEveryRemoval)
{
    const auto joint = MakeNote('a');
    EXPECT_FALSE(sim.HasJoint(joint));
    sim.AddJoint(joint);
    sim.AddJoint(joint);
    EXPECT_TRUE(sim.HasJoint(joint));
    EXPECT_EQ(1u, sim.GetJoints().size());
    EXPECT_EQ("+a", log);
    sim.RemoveJoint(joint);
    EXPECT_FALSE(sim.HasJoint(joint));
    // Deliberate: also when it is not there.
    sim.RemoveJoint(joint);
    EXPECT_EQ("+a-a-a", log);
    EXPECT_FALSE(sim.HasJoint(nullptr));
    sim.RemoveJoint(nullptr);
}

TEST_F(SimulationJointsTest, EntersAHingeOnceAndDeactivatesItAtEveryRemoval)
{
    const HingePtr hinge = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), Vec2(2.5f, 5));
    const HingePtr other = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), Vec2(2.5f, 5));
    EXPECT_FALSE(sim.HasConstraint(hinge));
    sim.AddConstraint(hinge);
    sim.AddConstraint(hinge);
    EXPECT_TRUE(sim.HasConstraint(hinge));
    EXPECT_FALSE(sim.HasConstraint(other));
    EXPECT_EQ(1u, sim.GetHinges().size());
    EXPECT_EQ(1u, GeomOf(a)->GetNoCollide().size());
    // Deliberate: to remove one that is not there parts the pair all the same.
    sim.RemoveConstraint(other);
    EXPECT_EQ(0u, GeomOf(a)->GetNoCollide().size());
    EXPECT_TRUE(sim.HasConstraint(hinge));
    sim.RemoveConstraint(hinge);
    EXPECT_FALSE(sim.HasConstraint(hinge));
    EXPECT_FALSE(sim.HasConstraint(nullptr));
    sim.RemoveConstraint(nullptr);
}

TEST_F(SimulationJointsTest, AssertsThatThereIsSomethingToAdd)
{
    EXPECT_ASSERTION(sim.AddJoint(nullptr), "joint");
    EXPECT_ASSERTION(sim.AddConstraint(nullptr), "constraint");
}

TEST_F(SimulationJointsTest, AppliesJointsInOrderOfCreationAfterTheForcesOnBodies)
{
    std::vector<util::SharedPtr<Note>> made;
    for (char name = 'a'; name < 'i'; ++name)
        made.push_back(MakeNote(name));
    for (int i = 0; i < 8; ++i)
        sim.AddJoint(made[i * 3 % 8]);
    log.clear();
    sim.Step(true);
    EXPECT_EQ("abcdefgh", log);
    EXPECT_LT(made[0]->force.y, -9); // gravity was there
    log.clear();
    sim.Step(false);
    EXPECT_EQ("", log);
}

TEST_F(SimulationJointsTest, FlushesJointsAndHingesThatAreNotGood)
{
    const auto bad = MakeNote('b'), good = MakeNote('g');
    sim.AddJoint(bad);
    sim.AddJoint(good);
    const HingePtr badHinge = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), Vec2(2.5f, 5));
    const HingePtr goodHinge = QUIB_NEW Hinge(GeomOf(a), sim.GetWorldGeom(), Vec2(0, 5));
    sim.AddConstraint(badHinge);
    sim.AddConstraint(goodHinge);
    badHinge->SetImpulseLimit(0);
    b->SetVel(Vec2(1, 0));
    sim.Step(true);
    bad->isGood = false;
    log.clear();
    sim.FlushBadBodies();
    EXPECT_EQ("-b", log);
    EXPECT_FALSE(sim.HasJoint(bad));
    EXPECT_TRUE(sim.HasJoint(good));
    EXPECT_FALSE(sim.HasConstraint(badHinge));
    EXPECT_TRUE(sim.HasConstraint(goodHinge));
}

TEST_F(SimulationJointsTest, WhatHangsOnABodyThatFallsOutGoesInTheSameFlush)
{
    const auto joint = MakeNote('j');
    sim.AddJoint(joint);
    const SpringJointPtr spring =
        QUIB_NEW SpringJoint(GeomOf(b), Vec2(5, 5), sim.GetWorldGeom(), Vec2(5, 8));
    sim.AddJoint(spring);
    const HingePtr hinge = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), Vec2(2.5f, 5));
    sim.AddConstraint(hinge);
    const GeomPtr geomA = GeomOf(a), geomB = GeomOf(b);
    b->SetPos(Vec2(0, -1000.5f));
    b->ApplyPoseChange();
    sim.FlushBadBodies();
    EXPECT_FALSE(sim.HasBody(b));
    EXPECT_FALSE(geomB->GetBody());
    EXPECT_TRUE(sim.HasBody(a));
    EXPECT_TRUE(sim.GetJoints().empty());
    EXPECT_TRUE(sim.GetHinges().empty());
    EXPECT_TRUE(geomA->GetNoCollide().empty());
}

TEST_F(SimulationJointsTest, ClearDeactivatesAllJointsAndHinges)
{
    const auto joint = MakeNote('j');
    sim.AddJoint(joint);
    const HingePtr hinge = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), Vec2(2.5f, 5));
    sim.AddConstraint(hinge);
    sim.AddParticle(QUIB_NEW Particle(Vec2(0, 9), Vec2()));
    const GeomPtr geomA = GeomOf(a);
    sim.Clear();
    EXPECT_EQ("+j-j", log);
    EXPECT_TRUE(geomA->GetNoCollide().empty());
    EXPECT_FALSE(sim.HasJoint(joint));
    EXPECT_FALSE(sim.HasConstraint(hinge));
    EXPECT_TRUE(sim.GetParticles().empty());
    // The solver has forgotten them too.
    sim.Step(true);
    EXPECT_EQ("+j-j", log);
}

TEST_F(SimulationJointsTest, CountsThemInItsStatistics)
{
    sim.AddJoint(MakeNote('a'));
    sim.AddJoint(MakeNote('b'));
    sim.AddConstraint(QUIB_NEW Hinge(GeomOf(a), sim.GetWorldGeom(), Vec2(0, 5)));
    for (int i = 0; i < 3; ++i)
        sim.AddParticle(QUIB_NEW Particle(Vec2(i, 20), Vec2()));
    sim.m_running = false;
    sim.Update(0.01);
    EXPECT_EQ("Frozen\n2 bodies\n2 geometries\n3 particles\n0 contacts\n2 springs\n1 hinges\n"
              "Running at 100 Hz\n",
              sim.GetStatusText());
}

TEST_F(SimulationJointsTest, KeepsAStableOrderOfSolvingHinges)
{
    // Two hinges that fight for one box: with one iteration the last one wins. Which is last is told by
    // their creation, not by the order in which they come in.
    sim.m_solvePreSortConstraints = false;
    sim.m_solveIter = 1;
    sim.m_gravitySwitch = false;
    std::vector<Vec2> velocities;
    for (const bool turned : {false, true})
    {
        Reset();
        sim.m_solvePreSortConstraints = false;
        sim.m_solveIter = 1;
        sim.m_gravitySwitch = false;
        const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
        const HingePtr first = QUIB_NEW Hinge(sim.GetWorldGeom(), GeomOf(box), Vec2(-1, 5), Vec2());
        const HingePtr second = QUIB_NEW Hinge(sim.GetWorldGeom(), GeomOf(box), Vec2(1, 5), Vec2());
        sim.AddConstraint(turned ? second : first);
        sim.AddConstraint(turned ? first : second);
        sim.Step(true);
        velocities.push_back(box->GetVel());
    }
    EXPECT_GT(velocities[0].x, 1);
    EXPECT_EQ(velocities[0], velocities[1]);
}

// --- water ---

class SimulationWaterTest : public SimulationFixture
{
protected:
    ParticlePtr AddParticle(Vec2 pos, Vec2 vel = Vec2())
    {
        ParticlePtr particle = QUIB_NEW Particle(pos, vel);
        sim.AddParticle(particle);
        return particle;
    }

    /// Without what particles do to each other.
    void CalcForces()
    {
        sim.m_running = false;
        sim.CalcForces();
    }

    SPH& sph = *SPH::GetInstancePtr();
};

TEST_F(SimulationWaterTest, ParticlesFallAndAreIntegratedWithTheBodies)
{
    sim.m_airFrictionLinear = 0.0f;
    sim.m_rotFrictionLinear = 0.0f;
    sim.m_airDensity = 0.0f;
    const ParticlePtr particle = AddParticle(Vec2(0, 5), Vec2(1, 0));
    sim.Step(true);
    EXPECT_FLOAT_EQ(1, particle->GetVel().x);
    EXPECT_FLOAT_EQ(-0.098f, particle->GetVel().y);
    EXPECT_VEC_NEAR(0.01f, 5 - 0.00098f, particle->GetPos(), 1e-6f);
    EXPECT_EQ(Vec2(), particle->GetForce());
    sim.Step(false);
    EXPECT_FLOAT_EQ(-0.098f, particle->GetVel().y);
}

TEST_F(SimulationWaterTest, TheSameParticleMayBeThereTwice)
{
    const ParticlePtr particle = AddParticle(Vec2(0, 5));
    sim.AddParticle(particle);
    EXPECT_EQ(2u, sim.GetParticles().size());
    // A particle is not among the bodies.
    EXPECT_FALSE(sim.HasBody(particle));
}

// Looks like a mistake and is required: the settings tell the weight, not the particle.
TEST_F(SimulationWaterTest, WeightFollowsTheSettings)
{
    sim.m_airFrictionLinear = 0.0f;
    sim.m_rotFrictionLinear = 0.0f;
    sim.m_airDensity = 0.0f;
    const ParticlePtr particle = AddParticle(Vec2(0, 5));
    const float mass = particle->GetMass();
    sph.m_density = 3.0f;
    sph.m_radius = 0.1f;
    CalcForces();
    sph.m_density = 1.0f;
    sph.m_radius = 0.05f;
    EXPECT_FLOAT_EQ(-9.8f * 3 * 0.01f * math::PIf, particle->GetForce().y);
    EXPECT_EQ(mass, particle->GetMass());
}

// Looks like a mistake and is required: the switch is for bodies.
TEST_F(SimulationWaterTest, AirBrakesAndLiftsParticlesWhateverTheSwitch)
{
    for (const bool on : {false, true})
    {
        Reset();
        sim.m_airSwitch = on;
        sim.m_airFrictionLinear = 0.02f;
        sim.m_airFrictionQuadratic = 0.01f;
        sim.m_airDensity = 0.5f;
        const ParticlePtr particle = AddParticle(Vec2(0, 5), Vec2(3, 4));
        CalcForces();
        const float area = 0.05f * 0.05f * math::PIf;
        const float drag = (5 * 0.01f + 0.02f) * 0.1f; // of the width 2 r
        EXPECT_FLOAT_EQ(-drag * 3, particle->GetForce().x);
        EXPECT_NEAR(-drag * 4 - 9.8f * area * (1 - 0.5f), particle->GetForce().y, 1e-6f);
        EXPECT_EQ(0, particle->GetTorque());
    }
}

TEST_F(SimulationWaterTest, TheLastParticleMovesIntoTheHole)
{
    std::vector<ParticlePtr> made;
    for (int i = 0; i < 6; ++i)
        made.push_back(AddParticle(Vec2(i, 5)));
    test::LogCapture log;
    made[1]->SetPos(Vec2(0, -1000.5f));
    made[4]->SetVel(Vec2(std::numeric_limits<float>::quiet_NaN(), 0));
    made[5]->SetPos(Vec2(0, -2000));
    sim.FlushBadBodies();
    EXPECT_EQ((ParticleList{made[0], made[3], made[2]}), sim.GetParticles());
    EXPECT_EQ(0u, log.Count("Removing bad object"));
}

TEST_F(SimulationWaterTest, ParticlesFallToTheLimitAndNoFarther)
{
    AddParticle(Vec2(0, -1000));
    AddParticle(Vec2(0, 5000));
    sim.FlushBadBodies();
    EXPECT_EQ(2u, sim.GetParticles().size());
    sim.m_gravity = Vec2(0, 9.8f);
    sim.FlushBadBodies();
    EXPECT_EQ(1u, sim.GetParticles().size());
    sim.m_gravitySwitch = false;
    AddParticle(Vec2(0, 1e6f));
    sim.FlushBadBodies();
    EXPECT_EQ(2u, sim.GetParticles().size());
}

TEST_F(SimulationWaterTest, ALonelyParticleVaporizesAfterItsTime)
{
    AddParticle(Vec2(0, 5));
    sim.m_gravitySwitch = false;
    sim.m_timeDelta = 0.1f;
    Steps(49);
    EXPECT_EQ(1u, sim.GetParticles().size());
    Steps(5);
    EXPECT_TRUE(sim.GetParticles().empty());
}

TEST_F(SimulationWaterTest, EraseWaterTakesTheParticlesOnly)
{
    AddFloor();
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 0.49f));
    AddParticle(Vec2(0, 1.02f));
    sim.Step(true);
    const size_t contacts = sim.GetContacts().size();
    sim.EraseWater();
    EXPECT_TRUE(sim.GetParticles().empty());
    EXPECT_EQ(contacts, sim.GetContacts().size());
    EXPECT_TRUE(sim.HasBody(box));
    Steps(2);
    EXPECT_EQ(2u, sim.GetContacts().size());
}

TEST_F(SimulationWaterTest, WaterDoesNotMoveOrAgeWhilePaused)
{
    const ParticlePtr particle = AddParticle(Vec2(0, 5), Vec2(1, 0));
    sim.m_running = false;
    for (int i = 0; i < 20; ++i)
        sim.Update(0.1);
    EXPECT_EQ(0, particle->GetAge());
    EXPECT_EQ(Vec2(0, 5), particle->GetPos());
}
}
