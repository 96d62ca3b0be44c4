#include "physics/SPH.h"

#include "Dice.h"
#include "PlainSPH.h"
#include "SimulationFixture.h"
#include "physics/SPHGrid.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace physics
{
using math::Vec2;

class SPHTest : public SimulationFixture
{
protected:
    SPHTest()
        : sph(*SPH::GetInstancePtr())
    {
        ResetFluid();
    }
    ~SPHTest() override { ResetFluid(); }

    void ResetFluid()
    {
        sph.m_radius = 0.05f;
        sph.m_influence = 2.0f;
        sph.m_specialPressure = true;
        sph.m_velocitySmoothing = true;
        sph.m_vaporizeTime = 5.0f;
        sph.m_friction = 0.01f;
        sph.m_restitution = 0.0f;
        sph.m_soundSpeed = 20.0f;
        sph.m_density = 1.0f;
        sph.m_viscosity = 0.5f;
        sph.m_pressMultiplier = 1.0f;
        sph.m_viscMultiplier = 1.0f;
        sph.m_surfaceTension = 0.0f;
        sph.m_jitter = 0.0f;
        sph.m_bucketSize = 2.0f;
        sph.SetInstructions(SPHKernels::Instructions::Best);
    }

    ParticlePtr AddDrop(Vec2 pos, Vec2 vel = Vec2())
    {
        ParticlePtr particle = QUIB_NEW Particle(pos, vel);
        sim.AddParticle(particle);
        return particle;
    }
    /// A block of columns by rows particles from a corner on.
    void AddBlock(Vec2 corner, int columns, int rows, float spacing)
    {
        for (int i = 0; i < columns * rows; ++i)
            AddDrop(corner + spacing * Vec2(float(i % columns), float(i / columns)));
    }
    /// The forces of the fluid alone.
    void UpdateFluid()
    {
        for (const ParticlePtr& particle : sim.GetParticles())
            particle->ClearForces();
        sph.Update(sim.GetParticles(), 0.01f);
    }
    float Uniform(float a, float b) { return dice.Uniform(a, b); }

    /// Both fail with the first difference.
    void ExpectSameAsPlain(float bucketSize);
    void ExpectSameNeighborsAsPlain(float bucketSize);

    SPH& sph;
    test::Dice dice;
};

void SPHTest::ExpectSameAsPlain(float bucketSize)
{
    PlainSPH plain(sim.GetParticles());
    plain.FindNeighbors(bucketSize);
    plain.CalcForces();
    UpdateFluid();
    for (size_t i = 0; i < plain.drops.size(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "particle " << i << " of " << plain.drops.size());
        const PlainSPH::Drop& drop = plain.drops[i];
        const Particle& particle = *sim.GetParticles()[i];
        ASSERT_EQ(drop.neighbors.size(), particle.GetNeighborCount());
        // Each question for neighbors walks all particles.
        if (plain.drops.size() < 200 || i % 37 == 0)
        {
            const std::vector<Particle::Neighbor> neighbors = particle.GetNeighbors();
            ASSERT_EQ(drop.neighbors.size(), neighbors.size());
            for (size_t k = 0; k < neighbors.size(); ++k)
            {
                ASSERT_EQ(sim.GetParticles()[drop.neighbors[k].particle].get(),
                          neighbors[k].particle)
                    << "entry " << k;
                ASSERT_EQ(Bits(drop.neighbors[k].distance), Bits(neighbors[k].distance));
                ASSERT_EQ(drop.neighbors[k].dx, neighbors[k].dx);
                ASSERT_EQ(drop.neighbors[k].dy, neighbors[k].dy);
            }
        }
        ASSERT_EQ(Bits(drop.density), Bits(particle.GetDensity()));
        ASSERT_EQ(Bits(drop.pressure), Bits(particle.GetPressure()));
        // 0 and -0 are the same force.
        ASSERT_EQ(drop.surfaceForce, particle.GetSurfaceForce());
        ASSERT_EQ(drop.force, particle.GetForce());
    }
}

void SPHTest::ExpectSameNeighborsAsPlain(float bucketSize)
{
    sph.m_bucketSize = bucketSize;
    PlainSPH plain(sim.GetParticles());
    plain.FindNeighbors(bucketSize);
    plain.CalcForces();
    UpdateFluid();
    for (size_t i = 0; i < plain.drops.size(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "particle " << i << ", bucketSize " << bucketSize);
        const PlainSPH::Drop& drop = plain.drops[i];
        const Particle& particle = *sim.GetParticles()[i];
        std::set<const Particle*> expected, found;
        for (const PlainSPH::Neighbor& neighbor : drop.neighbors)
            expected.insert(sim.GetParticles()[neighbor.particle].get());
        for (const Particle::Neighbor& neighbor : particle.GetNeighbors())
            found.insert(neighbor.particle);
        ASSERT_EQ(expected, found);
        ASSERT_EQ(expected.size(), particle.GetNeighborCount());
        ASSERT_NEAR(drop.density, particle.GetDensity(), 1e-5f * drop.density);
    }
}

// The size of the cells that SPH makes of its own, so that both have the same order.
const float OwnCells = 1.0625f;

TEST_F(SPHTest, HasItsSettingsUnderItsNameInOrder)
{
    EXPECT_EQ("SPH", sph.ToText());
    const struct
    {
        const char* name;
        float value;
    } floats[] = {{"radius", 0.05f},     {"influence", 2},      {"vaporizeTime", 5},
                  {"friction", 0.01f},   {"restitution", 0},    {"soundSpeed", 20},
                  {"density", 1},        {"viscosity", 0.5f},   {"pressMultiplier", 1},
                  {"viscMultiplier", 1}, {"surfaceTension", 0}, {"jitter", 0},
                  {"bucketSize", 2}};
    for (const auto& expected : floats)
    {
        const script::VariablePtr variable = sph.GetVariable(expected.name);
        ASSERT_TRUE(variable) << expected.name;
        const auto* attrib = dynamic_cast<script::TAttrib<float>*>(variable.get());
        ASSERT_TRUE(attrib) << expected.name;
        EXPECT_EQ(expected.value, attrib->Get()) << expected.name;
    }
    for (const char* name : {"specialPressure", "velocitySmoothing"})
    {
        const script::VariablePtr variable = sph.GetVariable(name);
        ASSERT_TRUE(variable) << name;
        const auto* attrib = dynamic_cast<script::TAttrib<bool>*>(variable.get());
        ASSERT_TRUE(attrib) << name;
        EXPECT_TRUE(attrib->Get()) << name;
    }
    // Statistics are constants. The order is that in which formulas are calculated.
    std::vector<script::VariablePtr> settings;
    for (const script::VariablePtr& variable : sph.GetVariables())
        if (!variable->IsConstant())
            settings.push_back(variable);
    std::sort(settings.begin(), settings.end(),
              [](const script::VariablePtr& a, const script::VariablePtr& b)
              { return a->GetPointeeID() < b->GetPointeeID(); });
    std::vector<std::string> names;
    for (const script::VariablePtr& variable : settings)
        names.push_back(variable->GetName());
    const std::vector<std::string> inOrder = {
        "radius",         "influence", "specialPressure", "velocitySmoothing",
        "vaporizeTime",   "friction",  "restitution",     "soundSpeed",
        "density",        "viscosity", "pressMultiplier", "viscMultiplier",
        "surfaceTension", "jitter",    "bucketSize",
    };
    EXPECT_EQ(inOrder, names);
}

TEST_F(SPHTest, IsThePlainFormToTheBit)
{
    for (int world = 0; world < 200; ++world)
    {
        SCOPED_TRACE(testing::Message() << "world " << world);
        sim.EraseWater();
        ResetFluid();
        sph.SetInstructions(world % 2 ? SPHKernels::Instructions::Baseline
                                      : SPHKernels::Instructions::Best);
        sph.m_specialPressure = world % 4 < 2;
        sph.m_surfaceTension = world % 8 < 4 ? 0.0f : 0.7f;
        sph.m_viscosity = Uniform(0, 2);
        sph.m_radius = Uniform(0.02f, 0.1f);
        sph.m_influence = Uniform(1, 3);
        sph.m_density = Uniform(0.5f, 2);
        const int n = 1 + static_cast<int>(Uniform(0, world % 10 == 0 ? 1000.0f : 150.0f));
        const float side = std::sqrt(float(n)) * sph.m_radius * Uniform(0.5f, 4);
        const Vec2 center(Uniform(-10, 10) * (world % 3), Uniform(-10, 10) * (world % 3));
        for (int i = 0; i < n; ++i)
            AddDrop(center + Vec2(Uniform(-side, side), Uniform(-side, side)),
                    Vec2(Uniform(-3, 3), Uniform(-3, 3)));
        ExpectSameAsPlain(OwnCells);
        if (HasFatalFailure())
            return;
    }
}

TEST_F(SPHTest, IsThePlainFormToTheBitOnALatticeAcrossTheOrigin)
{
    for (float spacing : {0.05f, 0.08f, 0.1f, 0.10625f, 0.2f})
    {
        sim.EraseWater();
        AddBlock(Vec2(-10, -10) * spacing, 21, 21, spacing);
        ExpectSameAsPlain(OwnCells);
    }
}

TEST_F(SPHTest, IsThePlainFormToTheBitForDropsFarAndWide)
{
    // Splashes in all directions: more cells than any table would hold.
    const float reach[] = {100, 1e4f, 1e7f, 1e12f};
    for (float r : reach)
    {
        sim.EraseWater();
        for (int i = 0; i < 60; ++i)
        {
            const Vec2 at(Uniform(-r, r), Uniform(-r, r));
            AddBlock(at, 2, 2, 0.06f);
        }
        AddBlock(Vec2(0, 0), 10, 10, 0.06f);
        ExpectSameAsPlain(OwnCells);
    }
}

TEST_F(SPHTest, IsThePlainFormToTheBitForMoreNeighborsThanAreHeldAtOnce)
{
    for (int i = 0; i < 1600; ++i)
        AddDrop(Vec2(Uniform(0, 1e-3f), Uniform(0, 1e-3f)), Vec2(Uniform(-1, 1), 0));
    ExpectSameAsPlain(OwnCells);
    EXPECT_EQ(1600u, sim.GetParticles()[0]->GetNeighborCount());
}

TEST_F(SPHTest, FindsTheSameNeighborsWithWideCells)
{
    for (int i = 0; i < 400; ++i)
        AddDrop(Vec2(Uniform(-1, 1), Uniform(-1, 1)));
    for (float bucketSize : {1.0f, 1.5f, 2.0f, 7.0f, 1e9f, -2.0f})
        ExpectSameNeighborsAsPlain(bucketSize);
}

TEST_F(SPHTest, MissesNeighborsWithCellsBelowTheInfluenceDistance)
{
    for (int i = 0; i < 400; ++i)
        AddDrop(Vec2(Uniform(-1, 1), Uniform(-1, 1)));
    UpdateFluid();
    size_t all = 0, some = 0;
    for (const ParticlePtr& particle : sim.GetParticles())
        all += particle->GetNeighborCount();
    for (float bucketSize : {0.9f, 0.5f, 0.2f, 0.01f, -0.3f})
        ExpectSameNeighborsAsPlain(bucketSize);
    sph.m_bucketSize = 0.2f;
    UpdateFluid();
    for (const ParticlePtr& particle : sim.GetParticles())
        some += particle->GetNeighborCount();
    EXPECT_LT(some, all / 2 + 200);
    // Nothing but the four quarters of the world.
    ExpectSameNeighborsAsPlain(0);
}

TEST_F(SPHTest, TruncatesCellsTowardZero)
{
    // The cells around the origin are twice as wide as others.
    EXPECT_EQ(0, SPHGrid::Cellify(-0.1f, 1 / 0.2f));
    EXPECT_EQ(0, SPHGrid::Cellify(0.1f, 1 / 0.2f));
    EXPECT_EQ(0, SPHGrid::Cellify(-0.19f, 1 / 0.2f));
    EXPECT_EQ(-1, SPHGrid::Cellify(-0.21f, 1 / 0.2f));
    EXPECT_EQ(1, SPHGrid::Cellify(0.21f, 1 / 0.2f));
    EXPECT_EQ(1000000000, SPHGrid::Cellify(Inf, 1));
    EXPECT_EQ(-1000000000, SPHGrid::Cellify(-1e30f, 1));
    EXPECT_EQ(-1000000000, SPHGrid::Cellify(std::numeric_limits<float>::quiet_NaN(), 1));
}

TEST_F(SPHTest, ALonelyDropIsItsOnlyNeighbor)
{
    const ParticlePtr drop = AddDrop(Vec2(3, 4));
    UpdateFluid();
    const std::vector<Particle::Neighbor> neighbors = drop->GetNeighbors();
    ASSERT_EQ(1u, neighbors.size());
    EXPECT_EQ(drop.get(), neighbors[0].particle);
    EXPECT_EQ(0, neighbors[0].distance);
    EXPECT_EQ(0, neighbors[0].dx);
    EXPECT_EQ(0, neighbors[0].dy);
    // 315 / (64 pi h^3) times the mass
    EXPECT_NEAR(315 / (64 * math::PIf * 0.001f) * drop->GetMass(), drop->GetDensity(), 1e-4f);
    EXPECT_NEAR(400 * (drop->GetDensity() - 1), drop->GetPressure(), 1e-2f);
    EXPECT_EQ(Vec2(), drop->GetForce());
}

TEST_F(SPHTest, ALonelyDropAgesAndGoes)
{
    const ParticlePtr drop = AddDrop(Vec2());
    sim.m_gravitySwitch = false;
    sim.m_timeDelta = 0.5f;
    for (int step = 1; step <= 10; ++step)
    {
        sim.Step(true);
        EXPECT_FLOAT_EQ(0.5f * step, drop->GetAge());
    }
    // 5 seconds are not above 5 seconds.
    sim.FlushBadBodies();
    EXPECT_EQ(1u, sim.GetParticles().size());
    sim.Step(true);
    EXPECT_EQ(1u, sim.GetParticles().size());
    sim.FlushBadBodies();
    EXPECT_EQ(0u, sim.GetParticles().size());
}

TEST_F(SPHTest, ANeighborMakesYoung)
{
    const ParticlePtr drop = AddDrop(Vec2());
    UpdateFluid();
    UpdateFluid();
    EXPECT_FLOAT_EQ(0.02f, drop->GetAge());
    const ParticlePtr other = AddDrop(Vec2(0.09f, 0));
    UpdateFluid();
    EXPECT_EQ(0, drop->GetAge());
    EXPECT_EQ(0, other->GetAge());
    EXPECT_EQ(2u, drop->GetNeighborCount());
    // Not a neighbor: as far as the influence reaches, and no nearer.
    other->SetPos(Vec2(0.1f, 0));
    UpdateFluid();
    EXPECT_FLOAT_EQ(0.01f, drop->GetAge());
}

TEST_F(SPHTest, PressurePushesApart)
{
    const ParticlePtr left = AddDrop(Vec2(0, 0)), right = AddDrop(Vec2(0.06f, 0));
    UpdateFluid();
    EXPECT_GT(left->GetPressure(), 0);
    EXPECT_LT(left->GetForce().x, 0);
    EXPECT_EQ(-left->GetForce().x, right->GetForce().x);
    EXPECT_EQ(0, left->GetForce().y);
}

TEST_F(SPHTest, ViscosityEvensVelocitiesOut)
{
    sph.m_soundSpeed = 0.0f;
    const ParticlePtr left = AddDrop(Vec2(0, 0), Vec2(0, 1));
    const ParticlePtr right = AddDrop(Vec2(0.06f, 0), Vec2(0, -1));
    UpdateFluid();
    EXPECT_LT(left->GetForce().y, 0);
    EXPECT_EQ(-left->GetForce().y, right->GetForce().y);
}

TEST_F(SPHTest, SurfaceTensionPullsTogetherAndIsTold)
{
    sph.m_soundSpeed = 0.0f;
    sph.m_surfaceTension = 2.0f;
    const ParticlePtr left = AddDrop(Vec2(0, 0)), right = AddDrop(Vec2(0.06f, 0));
    UpdateFluid();
    EXPECT_GT(left->GetSurfaceForce().x, 0);
    EXPECT_EQ(-left->GetSurfaceForce().x, right->GetSurfaceForce().x);
    EXPECT_EQ(left->GetSurfaceForce() * left->GetMass(), left->GetForce());
    sph.m_surfaceTension = 0.0f;
    UpdateFluid();
    EXPECT_EQ(Vec2(), left->GetSurfaceForce());
}

TEST_F(SPHTest, SpecialPressureChangesTheForcesButNotTheDensities)
{
    AddDrop(Vec2(0, 0));
    AddDrop(Vec2(0.05f, 0));
    AddDrop(Vec2(0.05f, 0.06f));
    UpdateFluid();
    std::vector<float> densities, pressures;
    std::vector<Vec2> forces;
    for (const ParticlePtr& particle : sim.GetParticles())
    {
        densities.push_back(particle->GetDensity());
        pressures.push_back(particle->GetPressure());
        forces.push_back(particle->GetForce());
    }
    sph.m_specialPressure = false;
    UpdateFluid();
    for (size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(densities[i], sim.GetParticles()[i]->GetDensity());
        EXPECT_EQ(pressures[i], sim.GetParticles()[i]->GetPressure());
        EXPECT_NE(forces[i], sim.GetParticles()[i]->GetForce());
    }
}

TEST_F(SPHTest, ReportsNothingWithoutParticles)
{
    const char* const names[] = {"hashInfo", "AVG_neighCount", "AVG_pressure", "AVG_density"};
    for (const char* name : names)
        if (sph.HasVariable(name))
            sph.RemoveVariable(name); // from an earlier test
    Steps(1);
    sph.Update(ParticleList(), 0.01f);
    for (const char* name : names)
        EXPECT_FALSE(sph.HasVariable(name)) << name;
    AddDrop(Vec2());
    Steps(1);
    for (const char* name : names)
        EXPECT_TRUE(sph.HasVariable(name)) << name;
}

TEST_F(SPHTest, ReportsAverages)
{
    AddDrop(Vec2(0, 0));
    AddDrop(Vec2(0.05f, 0));
    AddDrop(Vec2(5, 5));
    AddDrop(Vec2(5, 5.3f));
    UpdateFluid();
    float density = 0, pressure = 0;
    for (const ParticlePtr& particle : sim.GetParticles())
    {
        density += particle->GetDensity() / 4;
        pressure += particle->GetPressure() / 4;
    }
    const auto report = [&](const char* name)
    { return script::ObjectToValue<float>(sph.GetObject(name)); };
    EXPECT_EQ(1.5f, report("AVG_neighCount"));
    EXPECT_NEAR(density, report("AVG_density"), 1e-4f * density);
    EXPECT_NEAR(pressure, report("AVG_pressure"), 1e-4f * pressure);
    EXPECT_EQ("Number of elements:  3\nAverage bucket size: 1.33333\nMaximum bucket size: 2\n",
              script::ObjectToValue<util::String>(sph.GetObject("hashInfo")));
    EXPECT_TRUE(sph.GetVariable("AVG_density")->IsConstant());

    // Who has kept a statistic keeps its value.
    const script::ObjectPtr kept = sph.GetObject("AVG_neighCount");
    AddDrop(Vec2(5, 5.2f));
    AddDrop(Vec2(5, 5.1f));
    UpdateFluid();
    EXPECT_NE(1.5f, report("AVG_neighCount"));
    EXPECT_EQ(1.5f, script::ObjectToValue<float>(kept));
}

TEST_F(SPHTest, ReportsTheCellsThatItsSettingsAskFor)
{
    const auto expect = [&](const char* elements, const char* average, const char* maximum)
    {
        UpdateFluid();
        EXPECT_EQ(util::String("Number of elements:  ") + elements + "\nAverage bucket size: " +
                      average + "\nMaximum bucket size: " + maximum + "\n",
                  script::ObjectToValue<util::String>(sph.GetObject("hashInfo")))
            << sph.m_bucketSize;
    };
    // Cells of 0.2: those around the origin are twice as wide. Three and one.
    for (float x : {-0.15f, 0.05f, 0.15f, 0.25f})
        AddDrop(Vec2(x, 0));
    expect("2", "2", "3");
    sph.m_bucketSize = 1.0f; // -1, 0, 1, 2
    expect("4", "1", "1");
    sph.m_bucketSize = -1.0f; // the same seen from the other side
    expect("4", "1", "1");
    sph.m_bucketSize = 3.0f;
    expect("1", "4", "4");
    sph.m_bucketSize = 0.1f;
    expect("4", "1", "1");
    // All that is right of the origin, all that is left of it.
    sph.m_bucketSize = 0.0f;
    expect("2", "2", "3");

    // The counts of an update are its own.
    sph.m_bucketSize = 2.0f;
    sim.EraseWater();
    AddDrop(Vec2(100, -100));
    expect("1", "1", "1");
    AddBlock(Vec2(0.5f, -40.5f), 1, 300, 1);
    expect("301", "1", "1");
}

TEST_F(SPHTest, NewAttributesReachLivingParticlesInTheNextStep)
{
    const ParticlePtr drop = AddDrop(Vec2());
    Steps(1);
    sph.m_radius = 0.1f;
    sph.m_density = 3.0f;
    sph.m_friction = 0.5f;
    sph.m_restitution = 0.25f;
    EXPECT_FLOAT_EQ(0.05f * 0.05f * math::PIf, drop->GetMass());
    Steps(1);
    EXPECT_FLOAT_EQ(0.01f * math::PIf, drop->GetArea());
    EXPECT_FLOAT_EQ(0.03f * math::PIf, drop->GetMass());
    EXPECT_FLOAT_EQ(1 / drop->GetMass(), drop->GetMassInv());
    EXPECT_EQ(drop->GetMass(), drop->GetInertia());
    EXPECT_EQ(0.5f, drop->GetGeom()->GetFriction());
    EXPECT_EQ(0.25f, drop->GetGeom()->GetRestitution());
    EXPECT_EQ(0.05f, drop->GetGeom()->GetRadius());

    // And what somebody else has set lasts until then.
    drop->SetAttribs(1, 1, 1, 1);
    Steps(1);
    EXPECT_FLOAT_EQ(0.03f * math::PIf, drop->GetMass());
    EXPECT_EQ(0.5f, drop->GetGeom()->GetFriction());
}

TEST_F(SPHTest, DoesNotSmoothVelocities)
{
    // Deliberate: the list of particles is empty when it is time to smooth. All scenes are made for water
    // that keeps its velocities.
    sph.m_soundSpeed = 0.0f;
    sph.m_viscosity = 0.0f;
    sim.m_gravitySwitch = false;
    sim.m_airFrictionLinear = 0.0f;
    sim.m_rotFrictionLinear = 0.0f;
    ASSERT_TRUE(sph.m_velocitySmoothing);
    const ParticlePtr a = AddDrop(Vec2(0, 0), Vec2(1, 0)), b = AddDrop(Vec2(0, 0.05f), Vec2(-1, 2));
    Steps(1);
    EXPECT_EQ(Vec2(1, 0), a->GetVel());
    EXPECT_EQ(Vec2(-1, 2), b->GetVel());
    EXPECT_EQ(2u, a->GetNeighborCount());
}

TEST_F(SPHTest, JitterShakesAtRandom)
{
    sim.m_gravitySwitch = false;
    const int n = 400;
    for (int i = 0; i < n; ++i)
        AddDrop(Vec2(float(i), 0));
    UpdateFluid();
    for (const ParticlePtr& particle : sim.GetParticles())
        EXPECT_EQ(Vec2(), particle->GetForce());
    sph.m_jitter = 3.0f;
    UpdateFluid();
    Vec2 sum;
    float squares = 0;
    for (const ParticlePtr& particle : sim.GetParticles())
    {
        const Vec2 acceleration = particle->GetForce() * particle->GetMassInv();
        sum += acceleration / float(n);
        squares += acceleration.LengthSq() / n;
    }
    // Each component has the deviation 3.
    EXPECT_NEAR(0, sum.x, 0.6f);
    EXPECT_NEAR(0, sum.y, 0.6f);
    EXPECT_NEAR(18, squares, 4);
}

TEST_F(SPHTest, ABlobKeepsItsMomentum)
{
    sim.m_gravitySwitch = false;
    sim.m_airFrictionLinear = 0.0f;
    sim.m_rotFrictionLinear = 0.0f;
    sph.m_surfaceTension = 0.5f;
    for (int i = 0; i < 300; ++i)
        AddDrop(Vec2(Uniform(-0.6f, 0.6f), Uniform(-0.6f, 0.6f)),
                Vec2(1 + Uniform(-1, 1), 2 + Uniform(-1, 1)));
    const auto momentum = [&]
    {
        Vec2 sum;
        for (const ParticlePtr& particle : sim.GetParticles())
            sum += particle->GetMass() * particle->GetVel();
        return sum;
    };
    const Vec2 before = momentum();
    Steps(100);
    ASSERT_EQ(300u, sim.GetParticles().size());
    EXPECT_VEC_NEAR(before.x, before.y, momentum(), 1e-3f);
}

TEST_F(SPHTest, WaterComesToRestInABasin)
{
    // Of a floor and a wall that are planes, and of a box for the other wall. The box goes on below the
    // floor: between two surfaces that just touch, water is pressed in.
    AddFloor();
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(1, 0), 1.5f)));
    sim.GetWorldBody()->AddGeom(QUIB_NEW Box(Vec2(1, 5), Vec2(2, 1.5f)));
    AddBlock(Vec2(-1.4f, 0.05f), 15, 30, 0.09f);
    Steps(700);
    EXPECT_EQ(450u, sim.GetParticles().size());
    double energy = 0;
    for (const ParticlePtr& particle : sim.GetParticles())
    {
        EXPECT_GT(particle->GetPos().x, -1.55f);
        EXPECT_LT(particle->GetPos().x, 1.55f);
        EXPECT_GT(particle->GetPos().y, -0.05f);
        EXPECT_LT(particle->GetPos().y, 2.2f);
        energy += particle->GetVel().LengthSq() / 2 / 450;
    }
    EXPECT_LT(energy, 0.5); // a fall through the basin's half depth gives 7
}

TEST_F(SPHTest, WaterPassesThroughWhatLetsItThrough)
{
    const BodyPtr floor = AddFloor();
    const ParticlePtr held = AddDrop(Vec2(0, 0.1f));
    Steps(60);
    EXPECT_GT(held->GetPos().y, -0.05f);
    GeomOf(floor)->SetWaterCollide(false);
    Steps(60);
    EXPECT_LT(held->GetPos().y, -1);
}

TEST_F(SPHTest, TheSameWaterRunsTheSameTwice)
{
    const auto run = [&]
    {
        Reset();
        ResetFluid();
        AddFloor();
        AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(1, 0), 1)));
        AddBodyWith(QUIB_NEW Plane(math::Plane2D(Vec2(-1, 0), 1)));
        AddBox(Vec2(0.4f, 0.4f), Vec2(0, 2.5f));
        AddBlock(Vec2(-0.9f, 0.05f), 15, 20, 0.08f);
        std::vector<uint32_t> bits;
        for (int step = 0; step < 150; ++step)
        {
            sim.Step(true);
            for (const ParticlePtr& p : sim.GetParticles())
                for (float x : {p->GetPos().x, p->GetPos().y, p->GetVel().x, p->GetVel().y,
                                p->GetDensity(), p->GetAge()})
                    bits.push_back(Bits(x));
        }
        return bits;
    };
    const std::vector<uint32_t> first = run();
    EXPECT_TRUE(first == run());
    EXPECT_EQ(150u * 300 * 6, first.size());
}

TEST_F(SPHTest, BadParticlesHarmNobodyAndGo)
{
    sim.m_gravitySwitch = false;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    AddBlock(Vec2(0, 0), 10, 10, 0.09f);
    for (float x : {nan, Inf, -Inf, 1e38f, -1e38f, 1e30f})
    {
        AddDrop(Vec2(x, 0));
        AddDrop(Vec2(0, x));
        AddDrop(Vec2(x, x));
        AddDrop(Vec2(0.4f, 0.4f), Vec2(x, x));
    }
    UpdateFluid();
    Steps(10);
    for (const ParticlePtr& particle : sim.GetParticles())
        EXPECT_TRUE(math::IsFinite(particle->GetPos()));
    sim.EraseWater();

    // A particle that is nowhere has no neighbors.
    const ParticlePtr good = AddDrop(Vec2()), bad = AddDrop(Vec2(nan, nan));
    UpdateFluid();
    EXPECT_EQ(1u, good->GetNeighborCount());
    EXPECT_EQ(1u, bad->GetNeighborCount());
    Steps(1);
    EXPECT_EQ(1u, sim.GetParticles().size());
}

TEST_F(SPHTest, NoSettingStopsTheWorld)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float values[] = {0,    -0.0f, -1,     1e-30f, -1e-30f, 1e-5f,
                            1e5f, 1e30f, -1e30f, Inf,    -Inf,    nan};
    script::AttribWrapper<float>* const settings[] = {
        &sph.m_radius,          &sph.m_influence,      &sph.m_vaporizeTime,   &sph.m_friction,
        &sph.m_restitution,     &sph.m_soundSpeed,     &sph.m_density,        &sph.m_viscosity,
        &sph.m_pressMultiplier, &sph.m_viscMultiplier, &sph.m_surfaceTension, &sph.m_jitter,
        &sph.m_bucketSize};
    for (script::AttribWrapper<float>* setting : settings)
        for (float value : values)
        {
            SCOPED_TRACE(testing::Message() << (*setting)->GetName() << " = " << value);
            Reset();
            ResetFluid();
            AddFloor(-0.05f);
            AddBlock(Vec2(-0.3f, 0), 8, 8, 0.07f);
            Steps(1);
            *setting = value;
            AddBlock(Vec2(-0.3f, 1), 4, 4, 0.07f); // some that are born with it
            Steps(3);
            sim.FlushBadBodies();
            for (const ParticlePtr& particle : sim.GetParticles())
                ASSERT_FALSE(particle->IsBad());
        }
}

TEST_F(SPHTest, AnswersForTheParticlesOfTheLastUpdateOnly)
{
    const ParticlePtr drop = AddDrop(Vec2());
    UpdateFluid();
    EXPECT_EQ(1u, drop->GetNeighbors().size());
    sim.EraseWater();
    const ParticlePtr other = AddDrop(Vec2());
    EXPECT_TRUE(other->GetNeighbors().empty());
    UpdateFluid();
    EXPECT_EQ(1u, other->GetNeighbors().size());
    EXPECT_TRUE(drop->GetNeighbors().empty());
}
}
