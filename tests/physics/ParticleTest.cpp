#include "physics/Particle.h"

#include "SimulationFixture.h"
#include "physics/SPH.h"

namespace physics
{
using math::Vec2;

class ParticleTest : public SimulationFixture
{
};

TEST_F(ParticleTest, StartsWithTheAttributesOfTheFluid)
{
    const SPH& sph = *SPH::GetInstancePtr();
    const ParticlePtr particle = QUIB_NEW Particle(Vec2(1, 2), Vec2(3, 4));
    const float area = 0.05f * 0.05f * math::PIf;
    EXPECT_EQ(Vec2(1, 2), particle->GetPos());
    EXPECT_EQ(Vec2(3, 4), particle->GetVel());
    EXPECT_FLOAT_EQ(area, particle->GetArea());
    EXPECT_FLOAT_EQ(area, particle->GetMass());
    EXPECT_FLOAT_EQ(1 / area, particle->GetMassInv());
    EXPECT_EQ(0, particle->GetAge());
    EXPECT_EQ(sph.m_friction.Get(), particle->GetGeom()->GetFriction());
    EXPECT_EQ(sph.m_restitution.Get(), particle->GetGeom()->GetRestitution());
    EXPECT_EQ(sph.m_radius.Get(), particle->GetGeom()->GetRadius());
    EXPECT_EQ(particle.get(), particle->GetGeom()->GetBodyPtr());
    EXPECT_FALSE(particle->IsImmovable());
    EXPECT_TRUE(particle->GetNeighbors().empty());
}

TEST_F(ParticleTest, HasTheMassOfItsAreaAndThatForInertia)
{
    const ParticlePtr particle = QUIB_NEW Particle(Vec2(), Vec2());
    particle->SetAttribs(2, 3, 0.25f, 0.75f);
    EXPECT_FLOAT_EQ(4 * math::PIf, particle->GetArea());
    EXPECT_FLOAT_EQ(12 * math::PIf, particle->GetMass());
    EXPECT_EQ(particle->GetMass(), particle->GetInertia()); // and not half of it times 4
    EXPECT_EQ(1 / particle->GetMass(), particle->GetMassInv());
    EXPECT_EQ(particle->GetMassInv(), particle->GetInertiaInv());
    EXPECT_EQ(0.25f, particle->GetGeom()->GetFriction());
    EXPECT_EQ(0.75f, particle->GetGeom()->GetRestitution());
    EXPECT_EQ(0.05f, particle->GetGeom()->GetRadius()); // that of its creation
}

TEST_F(ParticleTest, IsNotKeptAliveByItsGeometry)
{
    ParticlePtr particle = QUIB_NEW Particle(Vec2(), Vec2());
    const util::WeakPtr<Particle> weak = particle;
    const util::SharedPtr<Particle::ParticleGeom> geom = particle->GetGeom();
    EXPECT_EQ(1u, particle->GetHandle()->GetRefCount());
    particle = ParticlePtr();
    EXPECT_TRUE(weak.IsNull());
    EXPECT_EQ(nullptr, geom->GetBodyPtr());
    EXPECT_FALSE(geom->GetBody());
}

TEST_F(ParticleTest, GoesWithTheWater)
{
    const unsigned long before = util::Pointee::GetInstanceCount();
    for (int i = 0; i < 10; ++i)
        sim.AddParticle(QUIB_NEW Particle(Vec2(0.1f * i, 0), Vec2()));
    sim.Step(true);
    EXPECT_LT(before, util::Pointee::GetInstanceCount());
    sim.EraseWater();
    sim.Step(true);
    // What the reports of the step have left is the same after every step.
    const unsigned long empty = util::Pointee::GetInstanceCount();
    for (int i = 0; i < 10; ++i)
        sim.AddParticle(QUIB_NEW Particle(Vec2(0.1f * i, 0), Vec2()));
    sim.Step(true);
    sim.EraseWater();
    sim.Step(true);
    EXPECT_EQ(empty, util::Pointee::GetInstanceCount());
}

TEST_F(ParticleTest, IsNoGeometryOfABody)
{
    const ParticlePtr particle = QUIB_NEW Particle(Vec2(5, 6), Vec2());
    EXPECT_EQ(GeomKind::Other, particle->GetGeom()->GetKind());
    EXPECT_FALSE(particle->GetGeom()->GetBodyBody());
    particle->ApplyPoseChange();
    EXPECT_EQ(Vec2(), particle->GetGeom()->GetCenter()); // deliberate: it stays behind
}

TEST_F(ParticleTest, IsBadWhenItsStateIsNotFinite)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Particle(Vec2(), Vec2()).IsBad());
    EXPECT_TRUE(Particle(Vec2(nan, 0), Vec2()).IsBad());
    EXPECT_TRUE(Particle(Vec2(0, Inf), Vec2()).IsBad());
    EXPECT_TRUE(Particle(Vec2(), Vec2(0, nan)).IsBad());
}
}
