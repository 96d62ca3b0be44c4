// What a user sees: things stack, bounce, slide and come to rest as they should.

#include "SimulationFixture.h"

#include <cmath>

namespace physics
{
using math::Vec2;

class BehaviourTest : public SimulationFixture
{
protected:
    BehaviourTest() { sim.m_airSwitch = false; }

    /// Kinetic and potential energy of everything movable.
    double CalcEnergy() const
    {
        double energy = 0;
        for (const BodyPtr& body : sim.GetBodies())
            if (!body->IsImmovable())
                energy += 0.5 * body->GetMass() * body->GetVel().LengthSq() +
                          0.5 * body->GetInertia() * body->GetAngVel() * body->GetAngVel() -
                          body->GetMass() * Dot(sim.GetGravity(), body->GetPos());
        return energy;
    }

    std::vector<uint32_t> CalcBits() const
    {
        std::vector<uint32_t> bits;
        for (const BodyPtr& body : sim.GetBodies())
            for (float x : {body->GetPos().x, body->GetPos().y, body->GetRot(), body->GetVel().x,
                            body->GetVel().y, body->GetAngVel()})
                bits.push_back(Bits(x));
        for (const ContactPtr& contact : sim.GetContacts())
            for (float x : {contact->GetTotalN(), contact->GetTotalT(), contact->GetPos().x})
                bits.push_back(Bits(x));
        return bits;
    }

    void AddMixedWorld()
    {
        AddPyramid(5);
        for (int i = 0; i < 10; ++i)
            AddCircle(Vec2(0.7f * i - 3, 7 + 0.3f * i), 0.3f);
        for (int i = 0; i < 5; ++i)
        {
            const Vec2 p(1.1f * i - 3, 11);
            GeomPtr arm = QUIB_NEW Box(Vec2(1, 0.2f), p);
            GeomPtr head =
                QUIB_NEW Polygon({p + Vec2(0.5f, -0.3f), p + Vec2(1, 0), p + Vec2(0.5f, 0.3f)});
            AddBodyWith(arm)->AddGeom(head);
        }
    }
};

TEST_F(BehaviourTest, APyramidOfTenRowsStands)
{
    const std::vector<BodyPtr> pyramid = AddPyramid(10);
    std::vector<Vec2> start;
    for (const BodyPtr& body : pyramid)
        start.push_back(body->GetPos());
    Steps(1000);
    for (size_t i = 0; i < pyramid.size(); ++i)
    {
        EXPECT_NEAR(start[i].x, pyramid[i]->GetPos().x, 0.02f);
        EXPECT_NEAR(start[i].y, pyramid[i]->GetPos().y, 0.03f);
        EXPECT_NEAR(0, pyramid[i]->GetRot(), 0.02f);
        EXPECT_LT(pyramid[i]->GetVel().Length(), 0.01f);
    }
}

TEST_F(BehaviourTest, ATallColumnStands)
{
    AddFloor();
    BodyPtr top;
    for (int i = 0; i < 10; ++i)
        top = AddBox(Vec2(1, 1), Vec2(0, i + 0.5f));
    Steps(1000);
    EXPECT_NEAR(9.5f, top->GetPos().y, 0.03f);
    // Friction holds velocities, not places: the column creeps a little.
    EXPECT_NEAR(0, top->GetPos().x, 0.2f);
}

TEST_F(BehaviourTest, ABallBouncesByItsRestitution)
{
    for (float restitution : {0.0f, 0.25f, 0.5f, 0.8f})
    {
        Reset();
        sim.m_airSwitch = false;
        AddFloor();
        const BodyPtr ball = AddCircle(Vec2(0, 3), 0.5f);
        for (const BodyPtr& body : sim.GetBodies())
            for (const Body::BodyPart& part : body->GetParts())
                part.geom->SetRestitution(restitution);
        float before = 0;
        for (int i = 0; i < 200 && sim.GetContacts().empty(); ++i)
        {
            before = ball->GetVel().y;
            sim.Step(true);
        }
        // Two half steps of gravity lie between the two velocities.
        EXPECT_NEAR(-7, before, 0.15f);
        EXPECT_NEAR(-restitution * before, ball->GetVel().y, 9.8f * 0.01f) << restitution;
    }
}

TEST_F(BehaviourTest, ABoxSlidesAsFarAsFrictionLetsIt)
{
    // v^2 / (2 mu g) = 25 / 9.8 with mu = 0.5.
    AddFloor();
    const BodyPtr box = AddBox(Vec2(2, 0.5f), Vec2(0, 0.249f));
    Steps(100);
    const float start = box->GetPos().x;
    box->SetVel(Vec2(5, 0));
    Steps(200);
    EXPECT_NEAR(25 / 9.8f, box->GetPos().x - start, 0.03f * 25 / 9.8f);
    EXPECT_NEAR(0, box->GetVel().x, 1e-3f);
}

TEST_F(BehaviourTest, ABoxHoldsOnASlopeBelowTheFrictionAngleAndSlidesAbove)
{
    // mu = 0.5: the slope may rise by 0.5.
    for (float rise : {0.4f, 0.7f})
    {
        Reset();
        sim.m_airSwitch = false;
        const float angle = std::atan(rise);
        const Vec2 along(std::cos(angle), std::sin(angle)), n = math::Rot90CCW(along);
        AddBodyWith(QUIB_NEW Plane(math::Plane2D(n, 0)));
        const BodyPtr box = AddBox(Vec2(2, 0.5f), 0.249f * n);
        box->SetRot(angle);
        box->ApplyPoseChange();
        Steps(50);
        const float speed = Dot(box->GetVel(), along);
        Steps(100);
        const float gained = Dot(box->GetVel(), along) - speed;
        if (rise < 0.5f)
            EXPECT_NEAR(0, gained, 1e-2f);
        else
            EXPECT_NEAR(-9.8f * (std::sin(angle) - 0.5f * std::cos(angle)), gained, 0.05f);
    }
}

TEST_F(BehaviourTest, ABallRollsDownASlope)
{
    // A disc that rolls without slipping: a = 2/3 g sin(angle).
    const float angle = 0.2f;
    const Vec2 along(std::cos(angle), std::sin(angle)), n = math::Rot90CCW(along);
    AddBodyWith(QUIB_NEW Plane(math::Plane2D(n, 0)));
    const BodyPtr ball = AddCircle(0.5f * n, 0.5f);
    Steps(200);
    const float expected = 2 * 9.8f * std::sin(angle) * 2 / 3;
    EXPECT_NEAR(-expected, Dot(ball->GetVel(), along), 0.05f * expected);
    EXPECT_NEAR(expected, 0.5f * ball->GetAngVel(), 0.05f * expected);
}

TEST_F(BehaviourTest, HeadOnImpactKeepsMomentum)
{
    sim.m_gravitySwitch = false;
    const BodyPtr a = AddCircle(Vec2(-2, 0), 0.5f);
    const BodyPtr b = AddCircle(Vec2(2, 0), 0.5f);
    GeomOf(b)->SetDensity(6);
    a->SetVel(Vec2(3, 0));
    b->SetVel(Vec2(-1, 0));
    Steps(200);
    // Masses 1 to 3, e = 0.5: the center of mass rests; each comes back with half its speed.
    EXPECT_NEAR(-1.5f, a->GetVel().x, 1e-3f);
    EXPECT_NEAR(0.5f, b->GetVel().x, 1e-3f);
}

TEST_F(BehaviourTest, EnergyDoesNotGrow)
{
    AddMixedWorld();
    double last = CalcEnergy();
    const double first = last;
    for (int i = 0; i < 40; ++i)
    {
        Steps(25);
        const double now = CalcEnergy();
        EXPECT_LT(now, last + 0.002 * std::fabs(first)) << "after step " << 25 * (i + 1);
        last = now;
    }
    EXPECT_LT(last, first);
}

TEST_F(BehaviourTest, TheSameSceneGivesTheSameBits)
{
    std::vector<uint32_t> runs[2];
    std::vector<void*> litter;
    for (auto& run : runs)
    {
        Reset();
        AddMixedWorld();
        Steps(400);
        run = CalcBits();
        // The second run's objects get other addresses.
        for (int i = 0; i < 1000; ++i)
            litter.push_back(std::malloc(16 + i % 600));
    }
    for (void* block : litter)
        std::free(block);
    EXPECT_GT(runs[0].size(), 200u);
    EXPECT_EQ(runs[0], runs[1]);
}

TEST_F(BehaviourTest, ManyBodiesAreAddedInLinearTime)
{
    // Twenty thousand, a search through all for each of which would take seconds.
    std::vector<BodyPtr> bodies;
    for (int i = 0; i < 20000; ++i)
        bodies.push_back(AddBox(Vec2(1, 1), Vec2(3 * i, 5)));
    for (const BodyPtr& body : bodies)
        sim.AddBody(body);
    EXPECT_EQ(20001u, sim.GetBodies().size());
}
}
