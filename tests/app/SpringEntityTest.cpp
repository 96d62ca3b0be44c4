#include "JointFixture.h"

#include "app/EntitySerializer.h"

#include <limits>

namespace app
{
namespace
{
class SpringEntityTest : public JointFixture
{
protected:
    /// Between the centres of two boxes that are so far apart.
    static SpringPtr Spring(float distance = 4)
    {
        const auto a = Box(Vec2()), b = Box(Vec2(distance, 0));
        const SpringPtr spring = QUIB_NEW SpringEntity(0.2f);
        spring->AttachToWorld(a->GetGeom(), Vec2(), b->GetGeom(), Vec2(distance, 0));
        TheScene()->AddEntity(spring);
        return spring;
    }
    static physics::SpringJoint& JointOf(const SpringPtr&)
    {
        return static_cast<physics::SpringJoint&>(**Sim()->GetJoints().begin());
    }
};

TEST_F(SpringEntityTest, HasItsDefaults)
{
    const SpringPtr spring = Spring();
    EXPECT_EQ("0.05", Attribute(spring, "strengthFactor"));
    EXPECT_EQ("0.1", Attribute(spring, "dampingFactor"));
    EXPECT_EQ(4, spring->GetTargetLength());
    EXPECT_EQ(0.05f, JointOf(spring).GetStrengthFactor());
    EXPECT_EQ(0.1f, JointOf(spring).GetDampingFactor());
}

TEST_F(SpringEntityTest, EntersAndLeavesTheSimulationWithItsEntity)
{
    const SpringPtr spring = Spring();
    EXPECT_EQ(1u, Sim()->GetJoints().size());
    TheScene()->RemoveEntity(spring);
    EXPECT_TRUE(Sim()->GetJoints().empty());
}

TEST_F(SpringEntityTest, PassesItsFactorsToTheJoint)
{
    const SpringPtr spring = Spring();
    spring->SetStrengthFactor(0.5f);
    spring->SetDampingFactor(0.75f);
    EXPECT_EQ(0.5f, spring->GetStrengthFactor());
    EXPECT_EQ(0.5f, JointOf(spring).GetStrengthFactor());
    EXPECT_EQ(0.75f, spring->GetDampingFactor());
    EXPECT_EQ(0.75f, JointOf(spring).GetDampingFactor());
    spring->FindVariable("strengthFactor")->SetObject(script::ValueToObject(0.25f));
    EXPECT_EQ(0.25f, JointOf(spring).GetStrengthFactor());
}

TEST_F(SpringEntityTest, PullsToItsTargetLength)
{
    const SpringPtr spring = Spring();
    spring->SetTargetLength(2);
    EXPECT_EQ(2, JointOf(spring).GetRestLength());
    spring->SetDampingFactor(1);
    Frame(500);
    EXPECT_NEAR(2, spring->GetLine().Length(), 0.01f);
    EXPECT_NEAR(2, spring->GetWorldPoint(0).x + spring->GetLine().Length() / 2, 0.01f);
}

TEST_F(SpringEntityTest, KeepsItsTargetLengthWhenFastenedElsewhere)
{
    const SpringPtr spring = Spring();
    spring->SetTargetLength(3);
    spring->SetStrengthFactor(0.5f);
    const Vec2 points[2] = {Vec2(0.25f, 0), Vec2(4.25f, 0)};
    spring->AttachAt(points);
    EXPECT_EQ(3, spring->GetTargetLength());
    ASSERT_EQ(1u, Sim()->GetJoints().size());
    EXPECT_EQ(3, JointOf(spring).GetRestLength());
    EXPECT_EQ(0.5f, JointOf(spring).GetStrengthFactor());
    Vec2 ends[2];
    JointOf(spring).GetWorldPoints(ends);
    EXPECT_NEAR(0.25f, ends[0].x, 1e-6f);

    spring->StartTransform();
    spring->Transform(math::Mat2D::Translation(Vec2(0, 0.25f)));
    spring->EndTransform();
    EXPECT_EQ(3, spring->GetTargetLength());
    // The joint is another one, at the new place.
    ASSERT_EQ(1u, Sim()->GetJoints().size());
    EXPECT_EQ(3, JointOf(spring).GetRestLength());
    JointOf(spring).GetWorldPoints(ends);
    EXPECT_NEAR(0.25f, ends[0].y, 1e-6f);
    EXPECT_NEAR(0.25f, ends[1].y, 1e-6f);
    EXPECT_NEAR(0.25f, spring->GetLocalPoint(0).y, 1e-6f);
}

TEST_F(SpringEntityTest, OfATurnedBodyIsFastenedWhereItWasPut)
{
    const auto box = Box(Vec2(1, 2));
    box->GetGeom()->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(1, 2), 1));
    box->GetBody()->OnGeomChange();
    const SpringPtr spring = QUIB_NEW SpringEntity(0.2f);
    spring->AttachToWorld(box->GetGeom(), Vec2(1.25f, 2), WorldGeom(), Vec2(1.25f, 5));
    TheScene()->AddEntity(spring);
    EXPECT_FLOAT_EQ(3, spring->GetTargetLength());
    Vec2 ends[2];
    JointOf(spring).GetWorldPoints(ends);
    EXPECT_NEAR(1.25f, ends[0].x, 1e-6f);
    EXPECT_NEAR(2, ends[0].y, 1e-6f);
}

TEST_F(SpringEntityTest, IsAliveOnlyBetweenTwoBodies)
{
    const SpringPtr spring = Spring();
    EXPECT_TRUE(spring->IsAlive());
    Join<FixJointEntity>(spring->GetGeom(0), spring->GetGeom(1));
    EXPECT_FALSE(spring->IsAlive());
    TheScene()->Update(0.01f);
    EXPECT_FALSE(IsThere(spring));
}

TEST_F(SpringEntityTest, IsPickedAlongItsLine)
{
    const SpringPtr spring = Spring();
    spring->SetSize(1);
    EXPECT_TRUE(spring->IsOnEntity(Vec2(2, 0.49f)));
    EXPECT_FALSE(spring->IsOnEntity(Vec2(2, 0.5f)));
    EXPECT_TRUE(spring->IsOnEntity(Vec2(4.49f, 0)));
    EXPECT_FALSE(spring->IsOnEntity(Vec2(4.51f, 0)));
    EXPECT_EQ(Vec2(-0.5f, -0.5f), spring->GetAABB().GetMin());
    EXPECT_EQ(Vec2(4.5f, 0.5f), spring->GetAABB().GetMax());
}

TEST_F(SpringEntityTest, IsErasedByOneCrossing)
{
    const SpringPtr spring = Spring();
    EXPECT_TRUE(spring->ErasedBy(Stroke(Vec2(2, -1), Vec2(2, 1))));
    EXPECT_FALSE(spring->ErasedBy(Stroke(Vec2(2, 0.01f), Vec2(2, 1))));
}

TEST_F(SpringEntityTest, IsContainedWithBothEnds)
{
    const SpringPtr spring = Spring();
    EXPECT_TRUE(spring->IsContainedBy(*Square(5)));
    EXPECT_FALSE(spring->IsContainedBy(*Square(3)));
}

TEST_F(SpringEntityTest, HasTheEnergyOfItsJoint)
{
    const SpringPtr spring = Spring();
    EXPECT_EQ(0, spring->CalcEnergy());
    spring->SetTargetLength(3);
    EXPECT_GT(spring->CalcEnergy(), 0);
    EXPECT_EQ(JointOf(spring).CalcEnergy(), spring->CalcEnergy());
    EXPECT_EQ(0, SpringEntity(1).CalcEnergy());
}

TEST_F(SpringEntityTest, HasNoEnergyBetweenEndsThatDoNotMove)
{
    const SpringPtr spring = Spring();
    const auto suspend = [&](int i, bool suspended)
    { spring->GetGeom(i)->GetBodyPtr()->SetSuspended(suspended); };
    for (const float length : {4.0f, 3.0f}) // at rest and stretched
    {
        spring->SetTargetLength(length);
        suspend(0, true);
        EXPECT_EQ(JointOf(spring).CalcEnergy(), spring->CalcEnergy());
        EXPECT_EQ(length == 3, spring->CalcEnergy() > 0);
        suspend(1, true);
        EXPECT_EQ(0, spring->CalcEnergy());
        suspend(0, false);
        EXPECT_EQ(JointOf(spring).CalcEnergy(), spring->CalcEnergy());
        suspend(1, false);
    }

    const auto box = Box(Vec2(0, 3));
    const SpringPtr toWorld = QUIB_NEW SpringEntity(0.2f);
    toWorld->AttachToWorld(WorldGeom(), Vec2(0, 6), box->GetGeom(), Vec2(0, 3));
    TheScene()->AddEntity(toWorld);
    toWorld->SetTargetLength(1);
    EXPECT_GT(toWorld->CalcEnergy(), 0);
    box->GetGeom()->GetBodyPtr()->SetSuspended(true);
    EXPECT_EQ(0, toWorld->CalcEnergy());
}

TEST_F(SpringEntityTest, PullsNothingWhileItsEndsAreHeldAndGoesOnWhenTheyAreReleased)
{
    const SpringPtr spring = Spring();
    spring->SetTargetLength(3);
    const auto suspend = [&](bool suspended)
    {
        for (int i = 0; i < 2; ++i)
            spring->GetGeom(i)->GetBodyPtr()->SetSuspended(suspended);
    };
    suspend(true);
    Frame(50);
    for (int i = 0; i < 2; ++i)
    {
        const physics::AbstractBody& body = *spring->GetGeom(i)->GetBodyPtr();
        EXPECT_EQ(Vec2(4.0f * i, 0), body.GetPos());
        EXPECT_EQ(Vec2(), body.GetVel());
        EXPECT_EQ(0, body.GetAngVel());
    }
    suspend(false);
    Frame(50);
    EXPECT_LT(spring->GetLine().Length(), 3.9f);
    EXPECT_GT(spring->GetLine().Length(), 2.0f);
}

TEST_F(SpringEntityTest, WritesAndReadsItsLength)
{
    const SpringPtr spring = Spring();
    spring->SetTargetLength(2.5f);
    EntitySerializer bag;
    spring->SerializeTo(bag);
    EXPECT_EQ(2.5f, bag.Get<float>("length"));

    // Read before it is fastened, as in a clone: nothing is lost.
    SpringEntity clone(0.2f);
    clone.Deserialize(bag);
    EXPECT_EQ(2.5f, clone.GetTargetLength());
    clone.AttachToWorld(spring->GetGeom(0), Vec2(), spring->GetGeom(1), Vec2(4, 0));
    EXPECT_EQ(2.5f, clone.GetTargetLength());
    // And after.
    bag.Set("length", 1.5f);
    clone.Deserialize(bag);
    EXPECT_EQ(1.5f, clone.GetTargetLength());
}

TEST_F(SpringEntityTest, RefusesSettingsThatAreNoNumbers)
{
    ExpectRefusesNaN<SpringEntity>({"length", "strengthFactor", "dampingFactor"});
}

TEST_F(SpringEntityTest, ClonesKeepTheTargetLength)
{
    const SpringPtr spring = Spring();
    spring->SetTargetLength(3);
    const JointEntityPtr clone = spring->Clone();
    EXPECT_EQ(3, util::DynamicCast<SpringEntity>(clone)->GetTargetLength());
    TheScene()->AddEntity(clone);
    EXPECT_EQ(2u, Sim()->GetJoints().size());
    EXPECT_EQ(3, util::DynamicCast<SpringEntity>(clone)->GetTargetLength());
}
}
}
