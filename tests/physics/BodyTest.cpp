#include "physics/Body.h"

#include "SimulationFixture.h"
#include "TestSupport.h"

#include <memory>
#include <vector>

namespace physics
{
using math::Vec2;

using BodyTest = SimulationFixture;

TEST_F(BodyTest, TakesMassAndInertiaFromItsGeometry)
{
    // 2 x 1 with density 2: mass 4, inertia 4 * (4 + 1) / 12
    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(3, 4));
    EXPECT_FLOAT_EQ(4, body->GetMass());
    EXPECT_FLOAT_EQ(0.25f, body->GetMassInv());
    EXPECT_FLOAT_EQ(5.0f / 3, body->GetInertia());
    EXPECT_FLOAT_EQ(0.6f, body->GetInertiaInv());
    EXPECT_FLOAT_EQ(2, body->GetArea());
    EXPECT_EQ(Vec2(3, 4), body->GetPos());
    EXPECT_FALSE(body->IsImmovable());
}

TEST_F(BodyTest, SitsAtTheCommonCenterOfMass)
{
    // Two boxes of 1 x 1: mass 2 at (0, 0), mass 6 at (4, 0).
    GeomPtr light = QUIB_NEW Box(Vec2(1, 1), Vec2(0, 0));
    GeomPtr heavy = QUIB_NEW Box(Vec2(1, 1), Vec2(4, 0));
    heavy->SetDensity(6);
    GeomSet geoms;
    geoms.insert(heavy);
    geoms.insert(light);
    const BodyPtr body = QUIB_NEW Body;
    body->SetGeoms(geoms);

    EXPECT_FLOAT_EQ(8, body->GetMass());
    EXPECT_FLOAT_EQ(2, body->GetArea());
    EXPECT_VEC_NEAR(3, 0, body->GetPos(), 1e-6f);
    // Own inertias 2/6 and 6/6, then 2 * 3^2 and 6 * 1^2.
    EXPECT_FLOAT_EQ(8.0f / 6 + 24, body->GetInertia());
    body->SetGeoms(GeomSet());
}

TEST_F(BodyTest, KeepsItsPartsInOrderOfGeometryId)
{
    std::vector<GeomPtr> geoms;
    for (int i = 0; i < 20; ++i)
        geoms.push_back(QUIB_NEW Box(Vec2(1, 1), Vec2(i, 0)));
    const BodyPtr body = QUIB_NEW Body;
    GeomSet set;
    for (int i = 19; i >= 0; --i)
        set.insert(geoms[i]);
    body->SetGeoms(set);
    ASSERT_EQ(20u, body->GetParts().size());
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(geoms[i], body->GetParts()[i].geom);
    EXPECT_EQ(20u, body->GetGeoms().size());
    body->SetGeoms(GeomSet());
}

TEST_F(BodyTest, RestartsItsRotationAndKeepsItsVelocityWhenGeometriesChange)
{
    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(3, 4));
    body->SetVel(Vec2(1, 2));
    body->SetAngVel(3);
    body->SetRot(0.5f);
    body->ApplyPoseChange();
    GeomOf(body)->SetDensity(4);
    EXPECT_EQ(0, body->GetRot());
    EXPECT_EQ(Vec2(1, 2), body->GetVel());
    EXPECT_EQ(3, body->GetAngVel());
    EXPECT_FLOAT_EQ(8, body->GetMass());
    // The geometry itself stays turned.
    EXPECT_NEAR(0.5f, GeomOf(body)->GetPose().GetAngle(), 1e-6f);
}

TEST_F(BodyTest, CarriesItsGeometriesAlong)
{
    GeomPtr a = QUIB_NEW Box(Vec2(1, 1), Vec2(-1, 0));
    GeomPtr b = QUIB_NEW Box(Vec2(1, 1), Vec2(1, 0));
    const BodyPtr body = AddBodyWith(a);
    body->AddGeom(b);
    EXPECT_VEC_NEAR(0, 0, body->GetPos(), 1e-6f);
    body->SetPos(Vec2(5, 5));
    body->SetRot(math::PIf / 2);
    body->ApplyPoseChange();
    EXPECT_VEC_NEAR(5, 4, a->GetCenter(), 1e-5f);
    EXPECT_VEC_NEAR(5, 6, b->GetCenter(), 1e-5f);
    EXPECT_VEC_NEAR(0, 0, TransformCoordinate(body->GetPoseInv(), Vec2(5, 5)), 1e-5f);
}

TEST_F(BodyTest, WrapsItsRotation)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2());
    body->SetRot(4);
    body->ApplyPoseChange();
    EXPECT_FLOAT_EQ(4 - math::TwoPIf, body->GetRot());
}

// Looks like a mistake and is required: what is welded to a plane is a part of something infinite.
TEST_F(BodyTest, WithInfiniteMassSitsAtTheOrigin)
{
    GeomPtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0, 1), 7));
    const BodyPtr body = AddBodyWith(plane);
    EXPECT_EQ(Vec2(0, 0), body->GetPos());
    EXPECT_EQ(Inf, body->GetMass());
    EXPECT_EQ(Inf, body->GetInertia());
    EXPECT_EQ(0, body->GetMassInv());
    EXPECT_EQ(0, body->GetInertiaInv());
    EXPECT_TRUE(body->IsImmovable());

    GeomPtr circle = QUIB_NEW Circle(Vec2(3, 3), 1);
    body->AddGeom(circle);
    EXPECT_EQ(Vec2(0, 0), body->GetPos());
    EXPECT_EQ(Inf, body->GetInertia());
    EXPECT_EQ(Vec2(3, 3), circle->GetCenter());
}

// Looks like a mistake and is required: the next flush removes such a body.
TEST_F(BodyTest, WithoutGeometriesHasUnitMassUntilTheFlush)
{
    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(0, 5));
    const GeomPtr geom = GeomOf(body);
    body->RemoveGeom(geom);
    EXPECT_EQ(1, body->GetMass());
    EXPECT_EQ(1, body->GetMassInv());
    EXPECT_EQ(1, body->GetInertia());
    EXPECT_EQ(1, body->GetInertiaInv());
    EXPECT_EQ(nullptr, geom->GetBodyPtr());
    EXPECT_TRUE(body->IsBad());
    EXPECT_TRUE(sim.HasBody(body));
    sim.Step(true);
    EXPECT_FALSE(sim.HasBody(body));
}

TEST_F(BodyTest, SkipsBadGeometriesWithAWarning)
{
    const test::LogCapture log;
    GeomPtr empty = QUIB_NEW Box(Vec2(0, 1), Vec2());
    GeomPtr massless = QUIB_NEW Box(Vec2(1, 1), Vec2());
    massless->SetDensity(0);
    GeomPtr lost = QUIB_NEW Box(Vec2(1, 1), Vec2(Inf, 0));
    GeomPtr good = QUIB_NEW Box(Vec2(1, 1), Vec2());
    for (const GeomPtr& bad : {empty, massless, lost})
    {
        const BodyPtr body = QUIB_NEW Body;
        GeomSet geoms;
        geoms.insert(bad);
        geoms.insert(good);
        body->SetGeoms(geoms);
        EXPECT_EQ(1u, body->GetParts().size());
        EXPECT_EQ(1u, body->GetGeoms().size());
        EXPECT_EQ(nullptr, bad->GetBodyPtr());
        EXPECT_FLOAT_EQ(2, body->GetMass());
        body->SetGeoms(GeomSet());
    }
    EXPECT_TRUE(log.Has("-- Warning: Bad geometry in Body::AddGeoms"));

    const BodyPtr body = QUIB_NEW Body;
    body->SetGeom(massless);
    EXPECT_EQ(1, body->GetMass());
    EXPECT_TRUE(body->IsBad());
}

namespace
{
// What a refused change must leave alone.
std::vector<uint32_t> StateOf(const Body& body)
{
    std::vector<uint32_t> bits;
    for (float value : {body.GetMass(), body.GetMassInv(), body.GetInertia(), body.GetInertiaInv(),
                        body.GetArea(), body.GetPos().x, body.GetPos().y, body.GetRot(),
                        body.GetPose().GetAngle()})
        bits.push_back(Bits(value));
    for (const Body::BodyPart& part : body.GetParts())
    {
        bits.push_back(part.geom->GetID());
        bits.push_back(part.geom->GetBodyPtr() == &body);
        bits.push_back(Bits(part.geomToBody.GetTranslation().x));
    }
    bits.push_back(static_cast<uint32_t>(body.GetGeoms().size()));
    return bits;
}

#define EXPECT_MASS_REFUSED(statement)                                                             \
    EXPECT_ASSERTION(statement, "IsFinite(m_massInv) && m_massInv>=0")
#define EXPECT_INERTIA_REFUSED(statement)                                                          \
    EXPECT_ASSERTION(statement, "IsFinite(m_inertiaInv) && m_inertiaInv>=0")
}

TEST_F(BodyTest, StaysAsItIsWhenNewGeometriesAreTooLight)
{
    // Masses, or inertias, above 0 without a finite inverse.
    GeomPtr light = QUIB_NEW Box(Vec2(1, 1), Vec2(3, 3));
    light->SetDensity(1e-40f);
    GeomPtr tiny = QUIB_NEW Box(Vec2(0.01f, 0.01f), Vec2(3, 3));
    tiny->SetDensity(1e-31f);

    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(0, 5));
    body->SetRot(0.3f);
    body->ApplyPoseChange();
    const GeomPtr geom = GeomOf(body);
    const std::vector<uint32_t> before = StateOf(*body);
    EXPECT_MASS_REFUSED(body->SetGeom(light));
    EXPECT_EQ(before, StateOf(*body));
    EXPECT_INERTIA_REFUSED(body->SetGeom(tiny));
    EXPECT_EQ(before, StateOf(*body));
    EXPECT_EQ(nullptr, light->GetBodyPtr());
    EXPECT_EQ(nullptr, tiny->GetBodyPtr());
    EXPECT_FALSE(body->IsBad());

    // Beside a heavier one they are welcome.
    body->AddGeom(light);
    EXPECT_EQ(2u, body->GetParts().size());
    const std::vector<uint32_t> both = StateOf(*body);
    EXPECT_MASS_REFUSED(body->RemoveGeom(geom));
    EXPECT_EQ(both, StateOf(*body));
}

TEST_F(BodyTest, StaysAsItIsWhenItsGeometryBecomesTooLight)
{
    GeomPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2(0, 5));
    GeomPtr circle = QUIB_NEW Circle(Vec2(4, 5), 1);
    const BodyPtr boxBody = AddBodyWith(box), circleBody = AddBodyWith(circle);
    const std::vector<uint32_t> before = StateOf(*boxBody), beforeCircle = StateOf(*circleBody);

    EXPECT_MASS_REFUSED(box->SetDensity(1e-40f));
    EXPECT_EQ(2, box->GetDensity());
    EXPECT_EQ(before, StateOf(*boxBody));

    Box& asBox = static_cast<Box&>(*box);
    EXPECT_MASS_REFUSED(asBox.SetSize(Vec2(1e-40f, 1)));
    EXPECT_MASS_REFUSED(asBox.SetOBB(math::OBB2D(Vec2(), Vec2(1, 0), Vec2(0, 1), 1e-40f, 0.5f)));
    EXPECT_EQ(Vec2(2, 1), asBox.GetSize());
    EXPECT_EQ(Vec2(1, 0.5f), asBox.GetWorldBox().GetHalfSize());
    EXPECT_EQ(Vec2(0, 5), asBox.GetWorldBox().GetCenter());
    EXPECT_EQ(before, StateOf(*boxBody));

    EXPECT_INERTIA_REFUSED(static_cast<Circle&>(*circle).SetRadius(1e-10f));
    EXPECT_EQ(1, static_cast<Circle&>(*circle).GetRadius());
    EXPECT_EQ(beforeCircle, StateOf(*circleBody));
    EXPECT_FALSE(boxBody->IsBad());
    EXPECT_FALSE(circleBody->IsBad());
}

TEST_F(BodyTest, TakesNothingFromABodyThatCanNotSpareIt)
{
    const BodyPtr poor = AddBox(Vec2(1, 1), Vec2(0, 5));
    const GeomPtr heavy = GeomOf(poor);
    GeomPtr light = QUIB_NEW Box(Vec2(1, 1), Vec2(1, 5));
    light->SetDensity(1e-40f);
    poor->AddGeom(light);
    const BodyPtr rich = AddBox(Vec2(1, 1), Vec2(5, 5));
    const BodyPtr taker = AddBox(Vec2(1, 1), Vec2(9, 5));

    const std::vector<uint32_t> states[] = {StateOf(*poor), StateOf(*rich), StateOf(*taker)};
    GeomSet geoms;
    geoms.insert(GeomOf(rich));
    geoms.insert(heavy);
    EXPECT_MASS_REFUSED(taker->AddGeoms(geoms));
    EXPECT_ASSERTION(taker->AddGeom(sim.GetWorldGeom()), "worldGeomCount == 1");
    EXPECT_EQ(states[0], StateOf(*poor));
    EXPECT_EQ(states[1], StateOf(*rich));
    EXPECT_EQ(states[2], StateOf(*taker));
    EXPECT_EQ(1u, sim.GetWorldBody()->GetParts().size());

    // All of it is a different matter.
    geoms.insert(light);
    taker->AddGeoms(geoms);
    EXPECT_EQ(4u, taker->GetParts().size());
    EXPECT_TRUE(poor->GetParts().empty());
    EXPECT_TRUE(rich->GetParts().empty());
    EXPECT_EQ(1, poor->GetMass());
}

TEST_F(BodyTest, TakesAGeometryFromItsFormerBody)
{
    const BodyPtr first = AddBox(Vec2(1, 1), Vec2(0, 5));
    const GeomPtr geom = GeomOf(first);
    const BodyPtr second = AddBox(Vec2(1, 1), Vec2(2, 5));
    second->AddGeom(geom);
    EXPECT_EQ(second.get(), geom->GetBodyPtr());
    EXPECT_EQ(2u, second->GetParts().size());
    EXPECT_TRUE(first->GetParts().empty());
    EXPECT_FALSE(second->IsBad());
    EXPECT_TRUE(first->IsBad());
}

TEST_F(BodyTest, LeavesAloneWhatItDoesNotHold)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(0, 5));
    const BodyPtr other = AddBox(Vec2(1, 1), Vec2(2, 5));
    body->RemoveGeom(GeomOf(other));
    EXPECT_EQ(1u, body->GetParts().size());
    EXPECT_EQ(other.get(), GeomOf(other)->GetBodyPtr());
    EXPECT_ASSERTION(body->RemoveGeom(sim.GetWorldGeom()), "geom->GetID() != 0");
}

TEST_F(BodyTest, TakesItsOwnSetAgain)
{
    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(0, 5));
    body->SetGeoms(body->GetGeoms());
    EXPECT_EQ(1u, body->GetParts().size());
    EXPECT_FLOAT_EQ(4, body->GetMass());
    body->OnGeomChange();
    EXPECT_FLOAT_EQ(4, body->GetMass());
}

TEST_F(BodyTest, IgnoresNullGeometries)
{
    GeomSet geoms;
    geoms.insert(GeomPtr());
    geoms.insert(GeomPtr(QUIB_NEW Box(Vec2(1, 1), Vec2())));
    const BodyPtr body = QUIB_NEW Body;
    body->SetGeoms(geoms);
    EXPECT_EQ(1u, body->GetParts().size());
    body->SetGeoms(GeomSet());
}

TEST_F(BodyTest, OfTheWorldKeepsItsWorldGeometry)
{
    const BodyPtr world = sim.GetWorldBody();
    EXPECT_ASSERTION(world->SetGeoms(GeomSet()), "worldGeomCount == 1");
    EXPECT_ASSERTION(world->RemoveGeom(sim.GetWorldGeom()), "worldGeomCount == 1");
    // There is one only, and no other takes its place.
    GeomPtr second = QUIB_NEW WorldGeom;
    EXPECT_ASSERTION(world->AddGeom(second), "(*g)->GetID() == 0");
    EXPECT_EQ(1u, world->GetParts().size());

    GeomPtr welded = QUIB_NEW Box(Vec2(1, 1), Vec2(3, 0));
    world->AddGeom(welded);
    EXPECT_EQ(2u, world->GetParts().size());
    EXPECT_EQ(Vec2(), world->GetPos());
    EXPECT_TRUE(world->IsImmovable());
    EXPECT_EQ(Vec2(3, 0), welded->GetCenter());
    world->RemoveGeom(welded);
    EXPECT_EQ(1u, world->GetParts().size());
}

TEST_F(BodyTest, OfTheWorldIsTheSameHoweverItsGeometriesCame)
{
    const BodyPtr world = sim.GetWorldBody();
    std::vector<GeomPtr> geoms;
    for (int i = 0; i < 6; ++i)
        geoms.push_back(QUIB_NEW Box(Vec2(1, 0.1f * (i + 1)), Vec2(3.3f * i, 0.7f)));
    // The third comes late: the parts stand in order of id all the same.
    for (int i : {0, 1, 3, 4, 2, 5})
        world->AddGeom(geoms[i]);
    ASSERT_EQ(7u, world->GetParts().size());
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(geoms[i], world->GetParts()[i + 1].geom);
    const float area = world->GetArea();
    const math::Mat2D pose = geoms[5]->GetPose();
    world->OnGeomChange();
    EXPECT_EQ(area, world->GetArea());
    EXPECT_EQ(pose, geoms[5]->GetPose());
    for (const GeomPtr& geom : geoms)
    {
        EXPECT_EQ(world.get(), geom->GetBodyPtr());
        world->RemoveGeom(geom);
    }
}

TEST_F(BodyTest, CopyHasItsOwnIdAndNoGeometries)
{
    const BodyPtr body = AddBox(Vec2(2, 1), Vec2(0, 5));
    body->SetVel(Vec2(1, 2));
    const BodyPtr copy = QUIB_NEW Body(*body);
    EXPECT_GT(copy->GetID(), body->GetID());
    EXPECT_NE(copy->GetPointeeID(), body->GetPointeeID());
    EXPECT_TRUE(copy->GetParts().empty());
    EXPECT_TRUE(copy->GetGeoms().empty());
    EXPECT_EQ(Vec2(1, 2), copy->GetVel());
    EXPECT_EQ(4, copy->GetMass());
    EXPECT_FALSE(sim.HasBody(copy));
    EXPECT_EQ(body.get(), GeomOf(body)->GetBodyPtr());
}

TEST_F(BodyTest, IsBadWhenItsStateIsNotFinite)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2());
    EXPECT_FALSE(body->IsBad());
    for (float bad : {nan, -nan, Inf, -Inf, std::sqrt(-1.0f)})
    {
        body->SetVel(Vec2(0, bad));
        EXPECT_TRUE(body->IsBad()) << bad;
        body->SetVel(Vec2());
        body->SetPos(Vec2(bad, 0));
        EXPECT_TRUE(body->IsBad()) << bad;
        body->SetPos(Vec2());
        body->SetAngVel(bad);
        EXPECT_TRUE(body->IsBad()) << bad;
        body->SetAngVel(0);
        body->SetRot(bad);
        EXPECT_TRUE(body->IsBad()) << bad;
        body->SetRot(0);
    }
    EXPECT_FALSE(body->IsBad());
}

TEST_F(BodyTest, AssertsThatItsGeometriesPointBack)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(0, 5));
    const GeomPtr geom = GeomOf(body);
    // Nothing but a body may do this.
    geom->SetBody(nullptr);
    EXPECT_ASSERTION(body->IsBad(), "bp->geom->GetBodyPtr() == this");
    geom->SetBody(body.get());
    EXPECT_FALSE(body->IsBad());
}

TEST_F(BodyTest, TurnsUnderAForceOffItsCenter)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(1, 1));
    body->ApplyForce(Vec2(0, 2), Vec2(4, 1));
    EXPECT_EQ(Vec2(0, 2), body->GetForce());
    EXPECT_FLOAT_EQ(6, body->GetTorque());
    body->AddForce(Vec2(1, 1));
    EXPECT_EQ(Vec2(1, 3), body->GetForce());
    EXPECT_FLOAT_EQ(6, body->GetTorque());
}

TEST_F(BodyTest, KnowsTheVelocityOfEachOfItsPoints)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(1, 1));
    body->SetVel(Vec2(1, 0));
    body->SetAngVel(2);
    EXPECT_VEC_NEAR(-1, 6, body->GetVelAtWorld(Vec2(4, 2)), 1e-6f);
}

TEST_F(BodyTest, IntegratesForcesAndVelocities)
{
    // Mass 2, inertia 1/3.
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2());
    body->AddForce(Vec2(4, 0));
    body->AddTorque(1);
    body->IntegrateVelocity(0.5f);
    EXPECT_VEC_NEAR(1, 0, body->GetVel(), 1e-6f);
    EXPECT_NEAR(1.5f, body->GetAngVel(), 1e-6f);
    body->IntegratePosition(0.5f);
    EXPECT_VEC_NEAR(0.5f, 0, body->GetPos(), 1e-6f);
    EXPECT_NEAR(0.75f, body->GetRot(), 1e-6f);
    EXPECT_VEC_NEAR(0.5f, 0, GeomOf(body)->GetCenter(), 1e-6f);
}

TEST_F(BodyTest, StandsStillWhileSuspended)
{
    const BodyPtr body = AddBox(Vec2(1, 1), Vec2(0, 5));
    body->SetVel(Vec2(1, 2));
    body->SetAngVel(3);
    body->SetSuspended(true);
    body->AddForce(Vec2(9, 9));
    body->ApplyForce(Vec2(9, 9), Vec2(7, 7));
    body->AddTorque(9);
    body->SetVel(Vec2(9, 9));
    body->SetAngVel(9);
    body->SetPos(Vec2(9, 9));
    body->SetRot(1);
    EXPECT_EQ(Vec2(), body->GetForce());
    EXPECT_EQ(0, body->GetTorque());
    Steps(5);
    EXPECT_EQ(Vec2(1, 2), body->GetVel());
    EXPECT_EQ(3, body->GetAngVel());
    EXPECT_EQ(Vec2(0, 5), body->GetPos());
    EXPECT_EQ(0, body->GetRot());
    EXPECT_EQ(0, body->GetSolverMassInv());
    EXPECT_EQ(0, body->GetSolverInertiaInv());

    body->SetSuspended(false);
    sim.Step(true);
    EXPECT_NE(Vec2(0, 5), body->GetPos());
}

TEST_F(BodyTest, StaysAliveUntilItsGeometriesAreTakenAway)
{
    GeomPtr geom = QUIB_NEW Box(Vec2(1, 1), Vec2());
    util::WeakPtr<Body> weak;
    {
        const BodyPtr body = QUIB_NEW Body;
        weak = body;
        body->SetGeom(geom);
    }
    // Only the geometry holds it now, and lets go of it inside SetGeoms.
    ASSERT_FALSE(weak.IsNull());
    geom->GetBodyBodyPtr()->SetGeoms(GeomSet());
    EXPECT_TRUE(weak.IsNull());
    EXPECT_EQ(nullptr, geom->GetBodyPtr());
}
}
