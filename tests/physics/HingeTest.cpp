#include "physics/Hinge.h"

#include "SimulationFixture.h"
#include "physics/Particle.h"

#include <cmath>

namespace physics
{
using math::Vec2;

class HingeTest : public SimulationFixture
{
protected:
    HingeTest() { sim.m_airSwitch = false; }

    HingePtr AddHinge(const BodyPtr& a, const BodyPtr& b, Vec2 point)
    {
        HingePtr hinge = QUIB_NEW Hinge(GeomOf(a), GeomOf(b), point);
        sim.AddConstraint(hinge);
        return hinge;
    }
    HingePtr AddHingeToWorld(const BodyPtr& body, Vec2 point)
    {
        return AddHinge(sim.GetWorldBody(), body, point);
    }

    static float CalcGap(const HingePtr& hinge)
    {
        Vec2 p[2];
        hinge->GetWorldPoints(p);
        return math::Distance(p[0], p[1]);
    }
};

TEST_F(HingeTest, StartsWithoutMotorAndLimits)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    EXPECT_FALSE(hinge->IsMotor());
    EXPECT_EQ(0, hinge->GetMotorSpeed());
    EXPECT_EQ(1, hinge->GetMotorTorque());
    EXPECT_EQ(Inf, hinge->GetImpulseLimit());
    EXPECT_EQ(Inf, hinge->GetDistanceLimit());
    EXPECT_EQ(1, hinge->GetDistScale());
    EXPECT_EQ(1, hinge->GetWarmScale());
    EXPECT_FALSE(hinge->IsBroken());
    EXPECT_FALSE(hinge->IsContact());
}

TEST_F(HingeTest, KeepsItsAnchorsInTheSpaceOfEachGeometry)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(2, 5));
    Place(a, Vec2(0, 5), math::PIf / 2);
    const HingePtr hinge = AddHinge(a, b, Vec2(1, 5));
    EXPECT_VEC_NEAR(0, -1, hinge->GetLocal(0), 1e-6f);
    EXPECT_VEC_NEAR(-1, 0, hinge->GetLocal(1), 1e-6f);
    EXPECT_EQ(GeomOf(a), hinge->GetGeom(0));
    EXPECT_EQ(GeomOf(b), hinge->GetGeom(1));

    Place(a, Vec2(0, 6), 0);
    Vec2 p[2];
    hinge->GetWorldPoints(p);
    EXPECT_VEC_NEAR(0, 5, p[0], 1e-6f);
    EXPECT_VEC_NEAR(1, 5, p[1], 1e-6f);
    EXPECT_VEC_NEAR(0.5f, 5, hinge->GetPos(), 1e-6f);

    const Hinge local(GeomOf(a), GeomOf(b), Vec2(0.25f, 0), Vec2(0, -0.5f));
    local.GetWorldPoints(p);
    EXPECT_EQ(Vec2(0.25f, 6), p[0]);
    EXPECT_EQ(Vec2(2, 4.5f), p[1]);
}

TEST_F(HingeTest, NeedsTwoGeometries)
{
    const GeomPtr geom = GeomOf(AddBox(Vec2(1, 1), Vec2(0, 5)));
    EXPECT_ASSERTION(Hinge(nullptr, geom, Vec2()), "g0");
    EXPECT_ASSERTION(Hinge(geom, nullptr, Vec2(), Vec2()), "g1");
}

TEST_F(HingeTest, KeepsItsPairFromCollidingWhileItIsInTheSimulation)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(0.9f, 5));
    sim.CalcContacts();
    EXPECT_FALSE(sim.GetContacts().empty());
    const HingePtr hinge = AddHinge(a, b, Vec2(0.45f, 5));
    EXPECT_EQ(1u, GeomOf(a)->GetNoCollide().count(GeomOf(b).get()));
    EXPECT_EQ(1u, GeomOf(b)->GetNoCollide().count(GeomOf(a).get()));
    sim.CalcContacts();
    EXPECT_TRUE(sim.GetContacts().empty());
    sim.RemoveConstraint(hinge);
    EXPECT_TRUE(GeomOf(a)->GetNoCollide().empty());
    EXPECT_TRUE(GeomOf(b)->GetNoCollide().empty());
    sim.CalcContacts();
    EXPECT_FALSE(sim.GetContacts().empty());
}

// Looks like a mistake and is required: nobody counts the hinges of a pair.
TEST_F(HingeTest, OfTwoOnOnePairTheFirstToGoMakesThePairCollide)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(0.9f, 5));
    const HingePtr first = AddHinge(a, b, Vec2(0.45f, 5));
    const HingePtr second = AddHinge(a, b, Vec2(0.45f, 5.2f));
    sim.RemoveConstraint(first);
    EXPECT_TRUE(sim.HasConstraint(second));
    sim.CalcContacts();
    EXPECT_FALSE(sim.GetContacts().empty());
}

TEST_F(HingeTest, IsGoodWhileBothBodiesAreThere)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = QUIB_NEW Body;
    const GeomPtr geom = QUIB_NEW Box(Vec2(1, 1), Vec2(2, 5));
    const HingePtr hinge = QUIB_NEW Hinge(GeomOf(a), geom, Vec2(1, 5));
    EXPECT_FALSE(hinge->IsGood()); // no body
    b->SetGeom(geom);
    EXPECT_FALSE(hinge->IsGood()); // a body outside
    sim.AddBody(b);
    EXPECT_TRUE(hinge->IsGood());
    const HingePtr toWorld = QUIB_NEW Hinge(sim.GetWorldGeom(), geom, Vec2(1, 5));
    EXPECT_TRUE(toWorld->IsGood());
    sim.RemoveBody(b);
    EXPECT_FALSE(hinge->IsGood());
    EXPECT_FALSE(toWorld->IsGood());
}

TEST_F(HingeTest, AParticleIsNoBodyToHangOn)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const ParticlePtr particle = QUIB_NEW Particle(Vec2(0, 6), Vec2());
    sim.AddParticle(particle);
    const GeomPtr geom = particle->GetGeom();
    EXPECT_FALSE(Hinge(GeomOf(a), geom, Vec2(0, 6)).IsGood());
}

TEST_F(HingeTest, TakesNoPartWithoutTwoBodiesOfWhichOneMoves)
{
    sim.SetupSolver();
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(1, 5));
    const GeomPtr loose = QUIB_NEW Box(Vec2(1, 1), Vec2(2, 5));
    EXPECT_FALSE(Hinge(GeomOf(a), loose, Vec2(1, 5)).SolveInit());
    EXPECT_FALSE(Hinge(GeomOf(a), GeomOf(a), Vec2(1, 5)).SolveInit());
    EXPECT_FALSE(Hinge(sim.GetWorldGeom(), GeomOf(AddFloor()), Vec2(1, 5)).SolveInit());
    Hinge hinge(GeomOf(a), GeomOf(b), Vec2(0.5f, 5));
    EXPECT_TRUE(hinge.SolveInit());
    a->SetSuspended(true);
    EXPECT_TRUE(hinge.SolveInit());
    b->SetSuspended(true);
    EXPECT_FALSE(hinge.SolveInit());
}

TEST_F(HingeTest, FindsItsBodiesAnewInEverySolve)
{
    sim.SetupSolver();
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(1, 5));
    const BodyPtr c = AddBox(Vec2(1, 1), Vec2(2, 5));
    const GeomPtr geom = GeomOf(b);
    Hinge hinge(GeomOf(a), geom, Vec2(0.5f, 5));
    EXPECT_TRUE(hinge.SolveInit());
    EXPECT_EQ(b.get(), hinge.GetBodyPtr(1));
    c->AddGeom(geom); // as welding does
    EXPECT_TRUE(hinge.SolveInit());
    EXPECT_EQ(c.get(), hinge.GetBodyPtr(1));
}

TEST_F(HingeTest, HoldsAnAnchorAtItsPlaceInTheWorld)
{
    const BodyPtr box = AddBox(Vec2(1, 0.2f), Vec2(0.5f, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    float lowest = 0;
    for (int i = 0; i < 500; ++i)
    {
        sim.Step(true);
        ASSERT_LT(CalcGap(hinge), 5e-3f) << "step " << i;
        lowest = std::min(lowest, box->GetPos().y - 5);
    }
    // It swings through below.
    EXPECT_NEAR(-0.5f, lowest, 0.01f);
    EXPECT_TRUE(sim.HasConstraint(hinge));
}

TEST_F(HingeTest, HoldsTwoBodiesTogether)
{
    sim.m_gravitySwitch = false;
    const BodyPtr a = AddBox(Vec2(1, 0.2f), Vec2(-0.5f, 5));
    const BodyPtr b = AddBox(Vec2(1, 0.5f), Vec2(0.5f, 5));
    a->SetAngVel(3);
    b->SetVel(Vec2(0, 1));
    const HingePtr hinge = AddHinge(a, b, Vec2(0, 5));
    const float before = b->GetMass() * 1;
    for (int i = 0; i < 300; ++i)
    {
        sim.Step(true);
        EXPECT_LT(CalcGap(hinge), 2e-3f) << "step " << i;
    }
    EXPECT_NEAR(before, a->GetMass() * a->GetVel().y + b->GetMass() * b->GetVel().y, 1e-4f);
}

TEST_F(HingeTest, OneIncrementGivesTheWantedVelocityChange)
{
    // A projection: what is wanted is the drift of the anchors over the time step.
    sim.m_adHocSolver = true;
    sim.m_leapFrog = false;
    sim.SetupSolver();
    const BodyPtr a = AddBox(Vec2(1, 0.3f), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(0.7f, 2), Vec2(1.3f, 5.2f));
    Hinge hinge(GeomOf(a), GeomOf(b), Vec2(0.4f, 5.1f));
    Place(a, Vec2(0.02f, 5.01f), 0.3f);
    ASSERT_TRUE(hinge.SolveInit());
    Vec2 p[2];
    hinge.GetWorldPoints(p);
    a->SetVelChange(Vec2(0.1f, -0.2f), 0.3f);
    b->SetVelChange(Vec2(-0.5f, 0.1f), -0.2f);
    hinge.CalcDesiredImpulse();
    hinge.ApplyImpulse();
    const auto changeAt = [](const BodyPtr& body, Vec2 point)
    { return body->GetVelChange() + math::Cross(body->GetAngVelChange(), point - body->GetPos()); };
    const Vec2 change = changeAt(b, p[1]) - changeAt(a, p[0]);
    const Vec2 wanted = (p[0] - p[1]) / 0.01f;
    EXPECT_VEC_NEAR(wanted.x, wanted.y, change, 1e-4f);
    // And nothing is left to want.
    hinge.CalcDesiredImpulse();
    EXPECT_LT(hinge.GetPriority(), 1e-9f);
}

TEST_F(HingeTest, WantsWhatDriftVelocityAndForcesAskFor)
{
    sim.SetupSolver();
    const ConstraintParams params = Hinge::s_params;
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5)); // of mass 2
    Hinge hinge(sim.GetWorldGeom(), GeomOf(box), Vec2(0, 5));
    Place(box, Vec2(0.03f, 4.96f)); // 0.05 away
    box->SetVel(Vec2(0.1f, 0.2f));
    box->AddForce(Vec2(4, -6));
    const auto solveOnce = [&]
    {
        box->SetVelChange(Vec2(), 0);
        EXPECT_TRUE(hinge.SolveInit());
        hinge.CalcDesiredImpulse();
        hinge.ApplyImpulse();
        return box->GetVelChange() * (0.5f + params.reg) / 0.5f; // mass and softness taken out
    };
    sim.m_warmStart = false;
    sim.SetupSolver();
    EXPECT_VEC_NEAR(-(2 * params.acc + 0.03f * params.dist + 0.1f * params.vel),
                    -(-3 * params.acc - 0.04f * params.dist + 0.2f * params.vel), solveOnce(),
                    1e-5f);
    hinge.SetDistScale(0.25f);
    EXPECT_VEC_NEAR(-(2 * params.acc + 0.25f * 0.03f * params.dist + 0.1f * params.vel),
                    -(-3 * params.acc - 0.25f * 0.04f * params.dist + 0.2f * params.vel),
                    solveOnce(), 1e-5f);
    hinge.SetDistScale(1);
    sim.m_maxPositionCorrection = 0.01f; // along (0.6, -0.8)
    sim.SetupSolver();
    EXPECT_VEC_NEAR(-(2 * params.acc + 0.006f * params.dist + 0.1f * params.vel),
                    -(-3 * params.acc - 0.008f * params.dist + 0.2f * params.vel), solveOnce(),
                    1e-5f);
}

TEST_F(HingeTest, HasItsOwnDamping)
{
    sim.m_solveDcontacts = 3.0f;
    sim.m_solveDconstraints = 1.0f;
    sim.m_solveVelFactor = 0.5f;
    sim.SetupSolver();
    EXPECT_FLOAT_EQ(4 / (0.01f * 5), Hinge::s_params.dist);
    EXPECT_FLOAT_EQ(0.5f * 0.8f, Hinge::s_params.vel);
    EXPECT_FLOAT_EQ(0.5f * 12.0f / 13, Contact::s_params.vel);
    sim.m_adHocSolver = true;
    sim.SetupSolver();
    EXPECT_FLOAT_EQ(100, Hinge::s_params.dist);
    EXPECT_EQ(0, Hinge::s_params.vel);
    EXPECT_EQ(0, Hinge::s_params.reg);
    EXPECT_FLOAT_EQ(0.01f, Hinge::s_params.dt);
}

TEST_F(HingeTest, StartsFromAShareOfItsLastImpulses)
{
    const BodyPtr box = AddBox(Vec2(1, 0.2f), Vec2(0.5f, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetMotor(true);
    hinge->SetMotorSpeed(2);
    Steps(20);
    const Vec2 total = hinge->GetTotalImpulse();
    const float motorTotal = hinge->GetMotorTotal();
    ASSERT_NE(Vec2(), total);
    ASSERT_NE(0, motorTotal);

    sim.SetupSolver();
    const auto init = [&](float expected)
    {
        box->SetVelChange(Vec2(), 0);
        const Vec2 oldTotal = hinge->GetTotalImpulse();
        const float oldMotor = hinge->GetMotorTotal();
        ASSERT_TRUE(hinge->SolveInit());
        const Vec2 impulse = oldTotal * expected;
        EXPECT_VEC_NEAR(impulse.x, impulse.y, hinge->GetTotalImpulse(), 1e-7f);
        EXPECT_FLOAT_EQ(expected * oldMotor, hinge->GetMotorTotal());
        EXPECT_VEC_NEAR(impulse.x * box->GetMassInv(), impulse.y * box->GetMassInv(),
                        box->GetVelChange(), 1e-6f);
        Vec2 p[2];
        hinge->GetWorldPoints(p);
        EXPECT_NEAR(box->GetInertiaInv() *
                        (math::Cross(p[1] - box->GetPos(), impulse) + expected * oldMotor),
                    box->GetAngVelChange(), 1e-5f);
    };
    init(0.5f);
    hinge->SetWarmScale(0.25f);
    init(0.125f);
    sim.m_warmStartFactor = 0.8f;
    sim.SetupSolver();
    init(0.2f);
    sim.m_warmStart = false;
    sim.SetupSolver();
    init(0);
    EXPECT_EQ(0, hinge->GetMotorTotal());
}

TEST_F(HingeTest, BreaksOnTheFirstImpulseWithALimitOfZero)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetImpulseLimit(0);
    sim.m_gravitySwitch = false;
    Steps(3);
    EXPECT_FALSE(hinge->IsBroken());
    sim.m_gravitySwitch = true;
    sim.Step(true);
    EXPECT_TRUE(hinge->IsBroken());
    // It has held nothing, not even in the step in which it broke.
    EXPECT_FLOAT_EQ(-9.8f * 0.01f, box->GetVel().y);
}

TEST_F(HingeTest, BreaksBeyondItsImpulseLimitOnly)
{
    // Gravity wants 2 * 9.8 * 0.01 of it in every step.
    for (const float limit : {0.19f, 0.21f})
    {
        Reset();
        sim.m_airSwitch = false;
        const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
        const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
        hinge->SetImpulseLimit(limit);
        Steps(50);
        EXPECT_EQ(limit < 0.2f, hinge->IsBroken());
        EXPECT_EQ(limit < 0.2f, box->GetPos().y < 4.5f);
    }
}

TEST_F(HingeTest, BreaksAsSoonAsItsAnchorsDifferWithALimitOfZero)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetDistanceLimit(0);
    sim.m_gravitySwitch = false;
    Steps(3);
    EXPECT_FALSE(hinge->IsBroken());
    Place(box, Vec2(0.001f, 5));
    sim.Step(true);
    EXPECT_TRUE(hinge->IsBroken());
    EXPECT_EQ(Vec2(), box->GetVel());
}

TEST_F(HingeTest, BreaksBeyondItsDistanceLimitOnly)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    Hinge hinge(sim.GetWorldGeom(), GeomOf(box), Vec2(0, 5));
    hinge.SetDistanceLimit(0.1f);
    Place(box, Vec2(0.099f, 5));
    EXPECT_TRUE(hinge.SolveInit());
    EXPECT_FALSE(hinge.IsBroken());
    Place(box, Vec2(0, 5.101f));
    EXPECT_FALSE(hinge.SolveInit());
    EXPECT_TRUE(hinge.IsBroken());
}

TEST_F(HingeTest, StaysBroken)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetDistanceLimit(0.1f);
    Place(box, Vec2(1, 5));
    sim.Step(true);
    EXPECT_TRUE(hinge->IsBroken());
    hinge->SetDistanceLimit(Inf);
    Place(box, Vec2(0, 5));
    EXPECT_FALSE(hinge->IsGood());
    box->SetVelChange(Vec2(), 0);
    hinge->CalcDesiredImpulse();
    hinge->ApplyImpulse();
    EXPECT_EQ(0, hinge->GetPriority());
    EXPECT_EQ(Vec2(), box->GetVelChange());
    EXPECT_TRUE(hinge->IsBroken());
}

TEST_F(HingeTest, BrokenItGoesWithTheNextFlushAndItsPairCollidesAgain)
{
    for (const bool prioritized : {false, true})
    {
        Reset();
        sim.m_prioritizedSolver = prioritized;
        const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
        const BodyPtr b = AddBox(Vec2(1, 1), Vec2(0.9f, 5));
        b->SetVel(Vec2(3, 0));
        const HingePtr hinge = AddHinge(a, b, Vec2(0.45f, 5));
        hinge->SetImpulseLimit(0.01f);
        sim.Step(true);
        EXPECT_TRUE(hinge->IsBroken());
        EXPECT_TRUE(sim.HasConstraint(hinge));
        EXPECT_TRUE(sim.GetContacts().empty());
        sim.Step(true);
        EXPECT_FALSE(sim.HasConstraint(hinge));
        EXPECT_FALSE(sim.GetContacts().empty());
    }
}

TEST_F(HingeTest, AStrongMotorReachesItsSpeedWithinAFewSteps)
{
    const BodyPtr box = AddBox(Vec2(1, 0.4f), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetMotor(true);
    hinge->SetMotorSpeed(1);
    hinge->SetMotorTorque(1000);
    Steps(5);
    EXPECT_NEAR(1, box->GetAngVel(), 1e-3f);
    hinge->SetMotorSpeed(-2);
    Steps(5);
    EXPECT_NEAR(-2, box->GetAngVel(), 1e-3f);
}

TEST_F(HingeTest, AMotorTurnsBodiesAgainstEachOther)
{
    sim.m_gravitySwitch = false;
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr b = AddBox(Vec2(1, 1), Vec2(0, 5));
    const HingePtr hinge = AddHinge(a, b, Vec2(0, 5));
    hinge->SetMotor(true);
    hinge->SetMotorSpeed(1);
    hinge->SetMotorTorque(1000);
    Steps(10);
    EXPECT_NEAR(-0.5f, a->GetAngVel(), 1e-3f);
    EXPECT_NEAR(0.5f, b->GetAngVel(), 1e-3f);
}

TEST_F(HingeTest, AMotorWithoutTorqueDoesNothing)
{
    const BodyPtr box = AddBox(Vec2(1, 0.4f), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetMotor(true);
    hinge->SetMotorSpeed(1);
    hinge->SetMotorTorque(0);
    Steps(5);
    EXPECT_EQ(0, hinge->GetMotorTotal());
    EXPECT_EQ(0, box->GetAngVel());
}

// Looks like a mistake and is required: a light and a heavy wheel take the same time to get going.
TEST_F(HingeTest, AMotorsTorqueLimitsAcceleration)
{
    for (const float density : {0.5f, 50.0f})
    {
        Reset();
        const BodyPtr box = AddBox(Vec2(1, 0.4f), Vec2(0, 5));
        GeomOf(box)->SetDensity(density);
        const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
        hinge->SetMotor(true);
        hinge->SetMotorSpeed(100);
        hinge->SetMotorTorque(20);
        Steps(10);
        EXPECT_NEAR(20 * 0.1f, box->GetAngVel(), 0.01f) << density;
    }
}

TEST_F(HingeTest, AMotorHoldsAgainstAKnownTorque)
{
    // The torque of this step is foreseen: the wheel stands.
    const BodyPtr box = AddBox(Vec2(1, 0.4f), Vec2(0, 5));
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    hinge->SetMotor(true);
    hinge->SetMotorTorque(1000);
    for (int i = 0; i < 50; ++i)
    {
        box->AddTorque(0.5f);
        sim.Step(true);
    }
    EXPECT_NEAR(0, box->GetAngVel(), 3e-3f); // a step of that torque alone gives 0.065
    EXPECT_NEAR(-0.5f * 0.01f, hinge->GetMotorTotal(), 2e-4f);
}

TEST_F(HingeTest, HoldsBodiesWhoseMassSquaredIsBeyondSinglePrecision)
{
    sim.m_adHocSolver = true;
    sim.m_leapFrog = false;
    sim.SetupSolver();
    for (const float density : {1e30f, 1e-25f})
    {
        const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5));
        GeomOf(box)->SetDensity(density);
        Hinge hinge(sim.GetWorldGeom(), GeomOf(box), Vec2(0, 5));
        Place(box, Vec2(0.01f, 4.98f));
        ASSERT_TRUE(hinge.SolveInit());
        hinge.CalcDesiredImpulse();
        hinge.ApplyImpulse();
        EXPECT_VEC_NEAR(-1, 2, box->GetVelChange(), 1e-4f);
    }
}

TEST_F(HingeTest, HoldsALittleBodyByALongLever)
{
    for (const float lever : {100.0f, 300.0f, 1000.0f})
        for (const bool isFirst : {false, true})
        {
            SCOPED_TRACE(lever);
            Reset();
            sim.m_airSwitch = false;
            const BodyPtr box = AddBox(Vec2(0.1f, 0.1f), Vec2(0, 0));
            const BodyPtr world = sim.GetWorldBody();
            const HingePtr hinge =
                AddHinge(isFirst ? box : world, isFirst ? world : box, Vec2(lever, lever));
            for (int i = 0; i < 300; ++i)
            {
                sim.Step(true);
                ASSERT_LT(CalcGap(hinge), 0.01f) << "step " << i;
            }
            // It slides down a slope of nearly 45 degrees all the time.
            EXPECT_LT(box->GetPos().y, -17);
            EXPECT_GT(box->GetPos().x, 20);
            EXPECT_LT(box->GetPos().x, 24);
        }
}

TEST_F(HingeTest, HarmsNobodyByAnyLever)
{
    for (const float lever : {1e4f, 1e6f, 1e9f, 1e15f, 1e18f, 1e19f, 1e30f, 3e38f, Inf})
        for (const bool isAdHoc : {false, true})
            for (const bool isMotor : {false, true})
            {
                SCOPED_TRACE(lever);
                Reset();
                sim.m_adHocSolver = isAdHoc;
                const BodyPtr box = AddBox(Vec2(0.1f, 0.1f), Vec2(0, 0));
                const BodyPtr other = AddBox(Vec2(0.1f, 0.1f), Vec2(1, 0));
                box->SetVel(Vec2(1, -2));
                const HingePtr hinge = AddHinge(box, sim.GetWorldBody(), Vec2(lever, lever));
                hinge->SetMotor(isMotor);
                AddHinge(other, box, Vec2(-lever, 2 * lever));
                EXPECT_NO_THROW(Steps(50));
                sim.FlushBadBodies();
                for (const BodyPtr& body : sim.GetBodies())
                    EXPECT_FALSE(body->IsBad());
            }
}

TEST_F(HingeTest, DoesNothingInAStepInWhichItsMassHasNoInverse)
{
    const BodyPtr box = AddBox(Vec2(1, 1), Vec2(0, 5)); // inverse mass 1/2
    const HingePtr hinge = AddHingeToWorld(box, Vec2(0, 5));
    sim.SetupSolver();
    for (const float reg : {-0.5f, Inf, -Inf, std::numeric_limits<float>::quiet_NaN()})
    {
        Hinge::s_params.reg = reg;
        EXPECT_FALSE(hinge->SolveInit()) << reg;
        EXPECT_FALSE(hinge->IsBroken());
        EXPECT_EQ(Vec2(), box->GetVelChange());
    }
    // As a scene may bring it about; and the next step takes it up again.
    sim.m_solveConstant = 0.0f;
    for (const bool prioritized : {false, true})
    {
        sim.m_prioritizedSolver = prioritized;
        Steps(1);
    }
    EXPECT_FLOAT_EQ(-2 * 9.8f * 0.01f, box->GetVel().y);
    sim.m_solveConstant = 1e8f;
    Steps(20);
    EXPECT_NEAR(0, box->GetVel().y, 1e-3f);
    EXPECT_LT(CalcGap(hinge), 1e-3f);
}

TEST_F(HingeTest, MayBeMadeLaterAndStillBeSolvedInOrderOfCreation)
{
    const BodyPtr a = AddBox(Vec2(1, 1), Vec2(0, 5));
    std::vector<HingePtr> made;
    for (int i = 0; i < 20; ++i)
        made.push_back(QUIB_NEW Hinge(sim.GetWorldGeom(), GeomOf(a), Vec2(0, 5)));
    for (int i = 0; i < 20; ++i)
        sim.AddConstraint(made[i * 7 % 20]);
    EXPECT_TRUE(
        std::equal(made.begin(), made.end(), sim.GetHinges().begin(), sim.GetHinges().end()));
}
}
