#include "JointFixture.h"
#include "PlainEntity.h"

#include "app/Chain.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/WeldBatch.h"
#include "physics/Circle.h"

#include <functional>

using math::Mat2D;
using math::Mat3;

namespace app
{
namespace
{
class SceneEditingTest : public JointFixture
{
protected:
    static GroupPtr Everything() { return GroupOf(TheScene()->GetEntities()); }

    static Mat3 ScaleAbout(const Vec2& center, const Vec2& scale)
    {
        return Mat3::Translation2D(center) * Mat3::Scale2D(scale) * Mat3::Translation2D(-center);
    }

    static const physics::Geom& GeomAt(size_t place)
    {
        return *TheScene()->GetEntities()[place]->AsGeomEntity()->GetGeom();
    }
    static const physics::Body& BodyAt(size_t place)
    {
        return *TheScene()->GetEntities()[place]->AsGeomEntity()->GetBody();
    }
    template<typename T>
    static util::SharedPtr<T> At(size_t place)
    {
        return util::DynamicCast<T>(TheScene()->GetEntities()[place]);
    }

    static void ExpectNear(const Vec2& expected, const Vec2& actual, float tolerance = 1e-5f)
    {
        EXPECT_NEAR(expected.x, actual.x, tolerance);
        EXPECT_NEAR(expected.y, actual.y, tolerance);
    }
};

// Notes in which pass it is asked for what.
class NotingEntity final : public test::PlainEntity
{
public:
    explicit NotingEntity(util::String& notes)
        : m_notes(notes)
    {
    }
    void StartTransform() override { m_notes += "s"; }
    void Transform(const Mat2D&) override { m_notes += "t"; }
    void EndTransform() override { m_notes += "e"; }

private:
    util::String& m_notes;
};

// A circle that notes when it is moved.
class NotingCircle final : public FiniteGeomEntity
{
public:
    explicit NotingCircle(util::String& notes)
        : FiniteGeomEntity(QUIB_NEW physics::Circle(Vec2(), 1))
        , m_notes(notes)
    {
    }
    void Draw() const override {}
    GeomEntityPtr Clone() const override { return nullptr; }
    GeomEntityPtr ScaledClone(const Vec2&) const override { return nullptr; }
    void DrawBlack() const override {}
    bool ErasedBy(const physics::LinesegmentList&) const override { return false; }
    bool IsContainedBy(const physics::Polygon&) const override { return false; }
    void Transform(const Mat2D& matrix) override
    {
        m_notes += "t";
        FiniteGeomEntity::Transform(matrix);
    }

private:
    util::String& m_notes;
};

// --- moving ---

TEST_F(SceneEditingTest, MovesInThreePassesThatNeverMix)
{
    util::String notes;
    const Entities entities = {QUIB_NEW NotingEntity(notes), QUIB_NEW NotingEntity(notes),
                               QUIB_NEW NotingEntity(notes)};
    TheScene()->Transform(GroupOf(entities), Mat2D());
    EXPECT_EQ("sssttteee", notes);
}

TEST_F(SceneEditingTest, MovesGeometriesAsTheyWantToBeMoved)
{
    util::String notes;
    const util::SharedPtr<NotingCircle> circle = QUIB_NEW NotingCircle(notes);
    TheScene()->AddEntity(circle);
    TheScene()->Transform(GroupOf({circle}), Mat2D::Translation(Vec2(3, 0)));
    EXPECT_EQ("t", notes);
    EXPECT_EQ(Vec2(3, 0), circle->GetBody()->GetPos());
}

TEST_F(SceneEditingTest, MovesABodyOfManyGeometriesInNoTime)
{
    const int n = 3000;
    {
        WeldBatch welding;
        GeomEntityPtr previous;
        for (int i = 0; i < n; ++i)
        {
            const GeomEntityPtr box = Box(Vec2(float(i), 0), Vec2(1.5f, 1));
            if (previous)
                Join<FixJointEntity>(previous, box, Vec2(i - 0.5f, 0));
            previous = box;
        }
    }
    ASSERT_EQ(1u, BodyCount());
    const double start = Seconds();
    TheScene()->Transform(Everything(), Mat2D::Translation(Vec2(0, 7)));
    EXPECT_LT(Seconds() - start, 1);
    EXPECT_NEAR(7, BodyAt(0).GetPos().y, 1e-3f);
}

TEST_F(SceneEditingTest, MovesAndTurns)
{
    Add("Scene.addBox { pos = [2.0, 0.0] }");
    TheScene()->Transform(Everything(), Mat2D::TranslationRotation(Vec2(1, 1), math::PIf / 2));
    ExpectNear(Vec2(1, 3), GeomAt(0).GetCenter());
    EXPECT_NEAR(math::PIf / 2, GeomAt(0).GetPose().GetAngle(), 1e-6f);
    ExpectNear(Vec2(1, 3), BodyAt(0).GetPos());
}

TEST_F(SceneEditingTest, MovesWeldedBodiesWithoutBendingThem)
{
    for (int i = 0; i < 5; ++i)
        Add("Scene.addBox { pos = [" + util::ToString(i) + ".0, 0.0]; size = [1.5, 1.0] }");
    for (int i = 0; i < 4; ++i)
        Join<FixJointEntity>(Vec2(i + 0.5f, 0), Vec2(i + 0.5f, 0));
    ASSERT_EQ(1u, BodyCount());
    TheScene()->Transform(GroupOf({TheScene()->GetEntities()[2]}),
                          Mat2D::TranslationRotation(Vec2(0, 7), math::PIf / 2));
    for (int i = 0; i < 5; ++i)
        ExpectNear(Vec2(0, 7.0f + i), GeomAt(i).GetCenter());
    ExpectNear(Vec2(0, 9), BodyAt(0).GetPos());
    EXPECT_EQ(1u, BodyCount());
    TheScene()->Update(0.01f);
    EXPECT_EQ(9u, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, TellsJointsOnlyOnceAllIsInPlace)
{
    Add("Scene.addBox { size = [2.0, 2.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(0.5f, 0), Vec2(0.5f, 0));
    TheScene()->Transform(GroupOf({TheScene()->GetEntities()[0]}), Mat2D::Translation(Vec2(4, 0)));
    // The pin came along, and is at the same place of the box.
    ExpectNear(Vec2(4.5f, 0), hinge->GetWorldPoint(0));
    ExpectNear(Vec2(4.5f, 0), hinge->GetWorldPoint(1));
    ExpectNear(Vec2(0.5f, 0), hinge->GetLocalPoint(0));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), hinge->GetGeom(0));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
    EXPECT_TRUE(Sim()->HasConstraint(hinge->GetHinge()));
    EXPECT_EQ(1u, Sim()->GetHinges().size());
}

// --- scaling ---

TEST_F(SceneEditingTest, LeavesEverythingAsItIsForTheIdentity)
{
    const auto box = Add("Scene.addBox { }");
    TheScene()->Transform(GroupOf({box}), Mat3());
    EXPECT_TRUE(TheScene()->HasEntity(box));
}

TEST_F(SceneEditingTest, RefusesScalesThatLeaveNothing)
{
    const auto box = Add("Scene.addBox { }");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Vec2& scale :
         {Vec2(0, 1), Vec2(1, 0), Vec2(nan, 1), Vec2(INFINITY, 1), Vec2(1e20f, 1e20f)})
    {
        test::LogCapture log(logging::LogWarning);
        TheScene()->Transform(GroupOf({box}), Mat3::Scale2D(scale));
        EXPECT_TRUE(log.Has("Bad scale: it must be finite, and not 0 along an axis"));
        EXPECT_TRUE(TheScene()->HasEntity(box));
    }
}

TEST_F(SceneEditingTest, ReplacesWhatItScales)
{
    const auto below = Add("Scene.addBox { pos = [9.0, 0.0] }");
    const auto box = Add("Scene.addBox { pos = [2.0, 1.0]; angle = 0.5; size = [1.0, 2.0]; "
                         "color = [0.1, 0.2, 0.3, 0.4]; friction = 0.25; density = 7.0; "
                         "airFrictionMult = 3.0; collideWater = false; collideSet = 4 }");
    const auto above = Add("Scene.addBox { pos = [19.0, 0.0] }");
    const GroupPtr group = GroupOf({box});
    const GroupPtr named = TheScene()->GetOrCreateGroupByName("g");
    named->AddAll(GroupOf({below, box}));
    TheScene()->SetSelection(group);
    TheScene()->GetCamera()->SetTrackedGroup(GroupOf({box}));
    TheScene()->Transform(group, ScaleAbout(Vec2(1, 1), Vec2(3, 3)));

    EXPECT_FALSE(TheScene()->HasEntity(box));
    EXPECT_FALSE(box->IsAlive());
    ASSERT_EQ(3u, TheScene()->GetEntities().size());
    const auto scaled = At<BoxEntity>(1); // at the same place in the list
    ASSERT_TRUE(scaled);
    ExpectNear(Vec2(4, 1), scaled->GetGeom()->GetCenter());
    EXPECT_EQ(GeomOf(box).GetPose().cos, scaled->GetGeom()->GetPose().cos);
    ExpectNear(Vec2(3, 6), static_cast<const physics::Box&>(GeomAt(1)).GetSize());
    EXPECT_EQ(math::Vec4(0.1f, 0.2f, 0.3f, 0.4f), scaled->GetColor4());
    EXPECT_EQ(0.25f, scaled->GetGeom()->GetFriction());
    EXPECT_EQ(7, scaled->GetGeom()->GetDensity());
    EXPECT_EQ(3, scaled->GetGeom()->GetAirFrictionMult());
    EXPECT_FALSE(scaled->GetGeom()->GetWaterCollide());
    EXPECT_EQ(4, scaled->GetGeom()->GetCollideSet());
    EXPECT_TRUE(scaled->IsAlive());
    EXPECT_EQ(3u, BodyCount());
    // All groups hold the new one.
    EXPECT_EQ(Entities{scaled}, group->GetSorted());
    EXPECT_EQ((Entities{below, scaled}), named->GetSorted());
    EXPECT_EQ(Entities{scaled}, TheScene()->GetSelection()->GetSorted());
    EXPECT_EQ(Entities{scaled}, TheCamera()->GetTrackedGroup()->GetSorted());
    EXPECT_TRUE(TheScene()->HasEntity(above));
}

TEST_F(SceneEditingTest, GivesTheNewOneThePlaceInTheChain)
{
    const auto a = Add("Scene.addCircle { }"), b = Add("Scene.addCircle { pos = [3.0, 0.0] }");
    const ChainPtr chain = QUIB_NEW Chain;
    chain->AddEntity(2, a);
    chain->AddEntity(5, b);
    TheScene()->Transform(GroupOf({b}), Mat3::Scale2D(Vec2(2, 2)));
    EXPECT_EQ(5u, chain->IndexOf(*TheScene()->GetEntities()[1]));
    EXPECT_EQ((Entities{a, TheScene()->GetEntities()[1]}), chain->GetEntities());
    EXPECT_FALSE(b->GetChain());
}

TEST_F(SceneEditingTest, ScalesHingesWithWhatTheyHold)
{
    Add("Scene.addBox { size = [4.0, 2.0] }");
    Add("Scene.addBox { size = [4.0, 2.0]; pos = [3.0, 0.0] }");
    const auto inside = Join<HingeEntity>(Vec2(1.5f, 0.5f), Vec2(1.5f, 0.5f));
    const auto pin = Join<HingeEntity>(Vec2(-1, 0), Vec2(-1, 0));
    inside->GetVariable("motor")->SetObject(script::ValueToObject(true));
    const GroupPtr group =
        GroupOf({TheScene()->GetEntities()[0], TheScene()->GetEntities()[1], inside});
    TheScene()->Transform(group, ScaleAbout(Vec2(-1, 0), Vec2(2, 2)));

    ExpectNear(Vec2(4, 1), inside->GetWorldPoint(0));
    ExpectNear(Vec2(4, 1), inside->GetWorldPoint(1));
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), inside->GetGeom(0));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), inside->GetGeom(1));
    EXPECT_NEAR(0.4f, inside->GetSize(), 1e-6f);
    EXPECT_EQ("true", Attribute(inside, "motor"));
    // The pin was not in the group: it goes with the box, and keeps its size.
    ExpectNear(Vec2(-1, 0), pin->GetWorldPoint(0));
    EXPECT_TRUE(pin->IsAttachedToWorld());
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), pin->GetGeom(0));
    EXPECT_NEAR(0.2f, pin->GetSize(), 1e-6f);
    EXPECT_EQ(2u, Sim()->GetHinges().size());
    TheScene()->Update(0.01f);
    EXPECT_EQ(4u, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, TakesAPinOnTheBackgroundAlongWithItsBody)
{
    Add("Scene.addBox { size = [4.0, 2.0] }");
    const auto pin = Join<HingeEntity>(Vec2(1, 0), Vec2(1, 0));
    TheScene()->Transform(GroupOf({TheScene()->GetEntities()[0]}), Mat3::Scale2D(Vec2(2, 2)));
    ExpectNear(Vec2(2, 0), pin->GetWorldPoint(0));
    ExpectNear(Vec2(2, 0), pin->GetWorldPoint(1));
    EXPECT_TRUE(pin->IsAttachedToWorld());
}

// By the matrix the end would lie beside the other box, and be fastened to the background.
TEST_F(SceneEditingTest, LeavesTheEndsOnBodiesThatAreNotScaled)
{
    Add("Scene.addBox { size = [4.0, 2.0] }");
    const auto outside = Add("Scene.addBox { size = [1.0, 1.0]; pos = [1.5, 0.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(1.5f, 0), Vec2(1.5f, 0));
    TheScene()->Transform(GroupOf({TheScene()->GetEntities()[0]}), Mat3::Scale2D(Vec2(2, 2)));
    EXPECT_EQ(outside->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), hinge->GetGeom(1));
    ExpectNear(Vec2(1.5f, 0), hinge->GetWorldPoint(0));
    ExpectNear(Vec2(3, 0), hinge->GetWorldPoint(1));
}

// Deliberate: a pin is fastened anew, and so to whatever lies where it comes to lie.
TEST_F(SceneEditingTest, FastensAPinOnTheBackgroundToABodyThatItComesToLieOn)
{
    const auto box = Add("Scene.addBox { size = [4.0, 2.0] }");
    const auto other = Add("Scene.addBox { size = [1.0, 1.0]; pos = [2.0, 0.0] }");
    const auto pin = Join<HingeEntity>(Vec2(1, 0), Vec2(1, 0));
    ASSERT_TRUE(pin->IsAttachedToWorld());
    TheScene()->Transform(GroupOf({box}), Mat3::Scale2D(Vec2(2, 2)));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), pin->GetGeom(0));
    EXPECT_EQ(other->GetGeom(), pin->GetGeom(1));
    EXPECT_FALSE(pin->IsAttachedToWorld());
    ExpectNear(Vec2(2, 0), pin->GetWorldPoint(0));
    ExpectNear(Vec2(2, 0), pin->GetWorldPoint(1));
}

TEST_F(SceneEditingTest, ScalesSpringsAndTheirLength)
{
    const auto box = Add("Scene.addBox { }");
    const auto inside = Join<SpringEntity>(Vec2(0.25f, 0), Vec2(4, 0));
    const auto outside = Join<SpringEntity>(Vec2(0, 0.25f), Vec2(0, 4));
    inside->SetTargetLength(2);
    outside->SetTargetLength(2);
    TheScene()->Transform(GroupOf({box, inside}), Mat3::Scale2D(Vec2(3, 3)));
    ExpectNear(Vec2(0.75f, 0), inside->GetWorldPoint(0));
    ExpectNear(Vec2(12, 0), inside->GetWorldPoint(1));
    EXPECT_FLOAT_EQ(6, inside->GetTargetLength());
    EXPECT_FLOAT_EQ(0.6f, inside->GetSize());
    // The other one's end on the background is a place of its own.
    ExpectNear(Vec2(0, 0.75f), outside->GetWorldPoint(0));
    ExpectNear(Vec2(0, 4), outside->GetWorldPoint(1));
    EXPECT_FLOAT_EQ(2, outside->GetTargetLength());
    EXPECT_FLOAT_EQ(0.2f, outside->GetSize());
}

TEST_F(SceneEditingTest, WeldsAnewWhatItScales)
{
    const auto a = Add("Scene.addBox { }"), b = Add("Scene.addBox { pos = [0.75, 0.0] }"),
               c = Add("Scene.addBox { pos = [1.5, 0.0] }");
    Join<FixJointEntity>(Vec2(0.4f, 0), Vec2(0.4f, 0));
    Join<FixJointEntity>(Vec2(1.1f, 0), Vec2(1.1f, 0));
    ASSERT_EQ(1u, BodyCount());
    TheScene()->Transform(GroupOf({a, b}), ScaleAbout(Vec2(1.1f, 0), Vec2(2, 2)));
    EXPECT_EQ(1u, BodyCount());
    EXPECT_EQ(3u, BodyAt(0).GetGeoms().size());
    EXPECT_EQ(c->GetBody(), At<BoxEntity>(0)->GetBody());
    TheScene()->Update(0.01f);
    EXPECT_EQ(5u, TheScene()->GetEntities().size());
    // And they come apart when their welds go.
    TheScene()->RemoveEntity(TheScene()->GetEntities()[3]);
    TheScene()->RemoveEntity(TheScene()->GetEntities()[3]);
    EXPECT_EQ(3u, BodyCount());
}

TEST_F(SceneEditingTest, FindsJointsWhereTheirGeometriesAreNow)
{
    Add("Scene.addBox { }");
    Add("Scene.addBox { pos = [0.75, 0.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(0.4f, 0), Vec2(0.4f, 0));
    // Within one frame: the joint is told in the next one.
    TheScene()->Transform(Everything(), Mat2D::Translation(Vec2(9, 0)));
    TheScene()->Transform(Everything(), ScaleAbout(Vec2(9, 0), Vec2(2, 2)));
    ExpectNear(Vec2(9.8f, 0), hinge->GetWorldPoint(0));
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), hinge->GetGeom(1));
}

TEST_F(SceneEditingTest, MovesJointsFromWhereTheirGeometriesAreNow)
{
    Add("Scene.addBox { }");
    Add("Scene.addBox { pos = [0.75, 0.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(0.4f, 0), Vec2(0.4f, 0));
    // Within one frame: the hinge follows its boxes in the next one.
    TheScene()->Transform(Everything(), Mat2D::Translation(Vec2(9, 0)));
    TheScene()->Transform(GroupOf({hinge}), Mat2D::Translation(Vec2(0, 0.25f)));
    ExpectNear(Vec2(9.4f, 0.25f), hinge->GetWorldPoint(0));
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), hinge->GetGeom(1));
}

TEST_F(SceneEditingTest, MovesPensToTheNewGeometry)
{
    const auto box = Add("Scene.addBox { size = [2.0, 2.0]; pos = [1.0, 0.0]; angle = 1.0 }");
    const auto inside = AddPen(Vec2(1.5f, 0.25f)), outside = AddPen(Vec2(0.5f, 0.25f));
    TheScene()->Transform(GroupOf({box, inside}), Mat3::Scale2D(Vec2(2, 2)));
    ExpectNear(Vec2(3, 0.5f), inside->GetPos());
    ExpectNear(Vec2(1, 0.5f), outside->GetPos());
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), inside->GetGeom());
    EXPECT_EQ(At<BoxEntity>(0)->GetGeom(), outside->GetGeom());
    EXPECT_FLOAT_EQ(0.4f, inside->GetSize());
    EXPECT_FLOAT_EQ(0.2f, outside->GetSize());
}

TEST_F(SceneEditingTest, TakesTheGeometricMeanOfBothAxesForSizes)
{
    const auto box = Add("Scene.addBox { size = [2.0, 2.0] }");
    const auto pen = AddPen(Vec2(0.5f, 0.25f));
    TheScene()->Transform(GroupOf({box, pen}), Mat3::Scale2D(Vec2(8, 2)));
    EXPECT_FLOAT_EQ(0.8f, pen->GetSize());
}

TEST_F(SceneEditingTest, Mirrors)
{
    Add("Scene.addBox { pos = [3.0, 1.0]; angle = 0.5; size = [2.0, 1.0] }");
    Add("Scene.addCircle { pos = [5.0, 1.0]; angle = 0.5; radius = 0.5 }");
    Add("Scene.addPolygon { pos = [8.0, 0.0]; vecs = [[0.0, 0.0], [3.0, 0.0], [0.0, 1.0]] }");
    Add("Scene.addPlane { pos = [10.0, 0.0]; angle = 0.5 }");
    const Vec2 onTip = GeomAt(2).GetCenter() + Vec2(1.8f, -0.3f);
    ASSERT_LT(GeomAt(2).DistanceWorld(onTip), 0);
    TheScene()->Transform(Everything(), ScaleAbout(Vec2(2, 0), Vec2(-1, 1)));

    ASSERT_TRUE(At<BoxEntity>(0));
    ExpectNear(Vec2(1, 1), GeomAt(0).GetCenter());
    ExpectNear(Vec2(2, 1), static_cast<const physics::Box&>(GeomAt(0)).GetSize());
    EXPECT_NEAR(-0.5f, std::atan(std::tan(GeomAt(0).GetPose().GetAngle())), 1e-5f);
    ASSERT_TRUE(At<CircleEntity>(1));
    ExpectNear(Vec2(-1, 1), GeomAt(1).GetCenter());
    EXPECT_NEAR(math::PIf - 0.5f, GeomAt(1).GetPose().GetAngle(), 1e-5f);
    const Vec2 mirroredTip(4 - onTip.x, onTip.y);
    EXPECT_LT(GeomAt(2).DistanceWorld(mirroredTip), 0);
    EXPECT_GT(GeomAt(2).DistanceWorld(Vec2(2 * GeomAt(2).GetCenter().x - mirroredTip.x, onTip.y)),
              0);
    const auto& plane = static_cast<const physics::Plane&>(GeomAt(3));
    ExpectNear(Vec2(-std::cos(0.5f), std::sin(0.5f)), plane.GetPlane().normal);
    EXPECT_NEAR(0, plane.DistanceWorld(Vec2(-6, 0)), 1e-5f);
    EXPECT_EQ(0u, BodyAt(3).GetID());
}

TEST_F(SceneEditingTest, LeavesWhatCannotBeScaledSoFar)
{
    const auto box = Add("Scene.addBox { }");
    const auto circle = Add("Scene.addCircle { pos = [5.0, 0.0]; density = 1.0e10 }");
    test::LogCapture log(logging::LogInfo);
    TheScene()->Transform(GroupOf({box, circle}), Mat3::Scale2D(Vec2(1e9f, 1e9f)));
    EXPECT_TRUE(log.Has("Bad polygon")) << log.Text();
    EXPECT_TRUE(TheScene()->HasEntity(circle));
    EXPECT_FALSE(TheScene()->HasEntity(box));
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
}

// --- cloning ---

TEST_F(SceneEditingTest, PutsEachCloneDirectlyAboveItsOriginal)
{
    const auto a = Add("Scene.addBox { }"), b = Add("Scene.addBox { pos = [3.0, 0.0] }"),
               c = Add("Scene.addBox { pos = [6.0, 0.0] }");
    const GroupPtr group = QUIB_NEW Group("some");
    group->AddAll(GroupOf({c, a}));
    const GroupPtr clones = TheScene()->CreateClone(group);
    const Entities& all = TheScene()->GetEntities();
    ASSERT_EQ(5u, all.size());
    EXPECT_EQ(a, all[0]);
    EXPECT_EQ(b, all[2]);
    EXPECT_EQ(c, all[3]);
    EXPECT_EQ((Entities{all[1], all[4]}), clones->GetSorted());
    EXPECT_EQ("some", clones->GetName());
    EXPECT_EQ(GeomAt(0).GetCenter(), GeomAt(1).GetCenter());
    EXPECT_EQ(GeomAt(3).GetCenter(), GeomAt(4).GetCenter());
    EXPECT_EQ(5u, BodyCount());
    EXPECT_EQ(2u, group->GetEntities().size());
}

TEST_F(SceneEditingTest, ClonesWithColorAttributesAndMotion)
{
    const auto box = Add("Scene.addBox { pos = [1.0, 2.0]; angle = 0.5; size = [1.0, 2.0]; "
                         "color = [0.1, 0.2, 0.3, 0.4]; friction = 0.25; restitution = 0.75; "
                         "density = 7.0; airFrictionMult = 3.0; collideWater = false; "
                         "collideSet = 4; controllerAcc = 5.0; controllerInvertX = true; "
                         "controllerInvertY = true; controllerReverseXY = true; "
                         "forceController = \"keys up right down left\" }");
    box->GetBody()->SetVel(Vec2(3, 4));
    box->GetBody()->SetAngVel(5);
    TheScene()->CreateClone(GroupOf({box}));
    const auto clone = At<BoxEntity>(1);
    EXPECT_NE(box->GetID(), clone->GetID());
    EXPECT_NE(box->GetGeom()->GetID(), clone->GetGeom()->GetID());
    EXPECT_NE(box->GetBody()->GetID(), clone->GetBody()->GetID());
    for (const char* name :
         {"friction", "restitution", "density", "airFrictionMult", "collideWater", "collideSet",
          "controllerAcc", "controllerInvertX", "controllerInvertY", "controllerReverseXY"})
        EXPECT_EQ(Attribute(box, name), Attribute(clone, name)) << name;
    EXPECT_EQ(3, clone->GetGeom()->GetAirFrictionMult());
    EXPECT_FALSE(clone->GetGeom()->GetWaterCollide());
    EXPECT_EQ(box->GetColor4(), clone->GetColor4());
    EXPECT_EQ(box->GetGeom()->GetPose(), clone->GetGeom()->GetPose());
    EXPECT_EQ(Vec2(3, 4), clone->GetBody()->GetVel());
    EXPECT_EQ(5, clone->GetBody()->GetAngVel());
    EXPECT_EQ(box->GetBody()->GetMass(), clone->GetBody()->GetMass());
    EXPECT_EQ(util::DynamicCast<BoxEntity>(box)->GetForceController(), clone->GetForceController());
    EXPECT_TRUE(clone->GetForceController());
}

TEST_F(SceneEditingTest, ClonesJoinTheGroupsOfTheirOriginals)
{
    const auto a = Add("Scene.addBox { }"), b = Add("Scene.addBox { pos = [3.0, 0.0] }");
    TheScene()->GetOrCreateGroupByName("g")->AddAll(GroupOf({a, b}));
    TheScene()->GetOrCreateGroupByName("h")->Add(b);
    TheScene()->SetSelection(GroupOf({a}));
    // The selection itself, which grows meanwhile.
    TheScene()->CreateClone(TheScene()->GetSelection());
    const EntityPtr clone = TheScene()->GetEntities()[1];
    EXPECT_EQ((Entities{a, b, clone}), TheScene()->GetGroupByName("g")->GetSorted());
    EXPECT_EQ(Entities{b}, TheScene()->GetGroupByName("h")->GetSorted());
    EXPECT_EQ((Entities{a, clone}), TheScene()->GetSelection()->GetSorted());
    EXPECT_EQ(3u, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, ClonesOfWeldedGeometriesShareABody)
{
    const auto a = Add("Scene.addBox { }"), b = Add("Scene.addBox { pos = [0.75, 0.0] }"),
               c = Add("Scene.addBox { pos = [1.5, 0.0] }");
    const auto weld = Join<FixJointEntity>(Vec2(0.4f, 0), Vec2(0.4f, 0));
    Join<FixJointEntity>(Vec2(1.1f, 0), Vec2(1.1f, 0));
    a->GetBody()->SetVel(Vec2(1, 2));
    TheScene()->CreateClone(GroupOf({a, b, weld}));
    EXPECT_EQ(2u, BodyCount());
    const auto cloneA = At<BoxEntity>(1), cloneB = At<BoxEntity>(3);
    EXPECT_EQ(cloneA->GetBody(), cloneB->GetBody());
    EXPECT_NE(cloneA->GetBody(), a->GetBody());
    EXPECT_EQ(2u, cloneA->GetBody()->GetGeoms().size());
    EXPECT_EQ(3u, c->GetBody()->GetGeoms().size());
    EXPECT_EQ(Vec2(1, 2), cloneA->GetBody()->GetVel());
    TheScene()->Update(0.01f);
    EXPECT_EQ(8u, TheScene()->GetEntities().size());
    // Without the weld too.
    const Entities clones = TheScene()->CreateClone(GroupOf({a, b}))->GetSorted();
    ASSERT_EQ(2u, clones.size());
    EXPECT_EQ(3u, BodyCount());
    EXPECT_EQ(clones[0]->AsGeomEntity()->GetBody(), clones[1]->AsGeomEntity()->GetBody());
    EXPECT_EQ(2u, clones[0]->AsGeomEntity()->GetBody()->GetGeoms().size());
}

TEST_F(SceneEditingTest, PutsClonesOfPlanesOnTheWorldBody)
{
    const auto plane = Add("Scene.addPlane { dist = 5.0 }");
    const size_t geoms = Sim()->GetWorldBody()->GetGeoms().size();
    TheScene()->CreateClone(GroupOf({plane}));
    const auto clone = At<PlaneEntity>(1);
    EXPECT_EQ(0u, clone->GetBody()->GetID());
    EXPECT_EQ(geoms + 1, Sim()->GetWorldBody()->GetGeoms().size());
    EXPECT_EQ(0u, BodyCount());
    EXPECT_TRUE(clone->IsAlive());
    EXPECT_EQ(Vec2(0, -5), clone->GetGeom()->GetCenter());
}

TEST_F(SceneEditingTest, FreesAWeldedCloneOfTheWorldUnlessItsWeldIsClonedToo)
{
    const auto box = Add("Scene.addBox { }");
    const auto weld = Join<FixJointEntity>(Vec2(0, 0), Vec2(0, 0));
    ASSERT_EQ(0u, box->GetBody()->GetID());
    TheScene()->CreateClone(GroupOf({box}));
    const auto free = At<BoxEntity>(1);
    EXPECT_NE(0u, free->GetBody()->GetID());
    EXPECT_EQ(1u, free->GetBody()->GetGeoms().size());
    EXPECT_FALSE(free->GetBody()->IsImmovable());
    EXPECT_EQ(free->GetGeom()->Mass(), free->GetBody()->GetMass());
    TheScene()->CreateClone(GroupOf({box, weld}));
    const auto fixed = At<BoxEntity>(1);
    EXPECT_NE(free, fixed);
    EXPECT_EQ(0u, fixed->GetBody()->GetID());
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(SceneEditingTest, ClonesJointsWithTheirSettings)
{
    const auto a = Add("Scene.addBox { size = [4.0, 2.0] }");
    const auto b = Add("Scene.addBox { size = [4.0, 2.0]; pos = [3.0, 0.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(1.5f, 0.5f), Vec2(1.5f, 0.5f));
    const auto spring = Join<SpringEntity>(Vec2(-1, 0), Vec2(4.5f, 0));
    hinge->SetSize(0.7f);
    hinge->SetColor4(math::Vec4(0.1f, 0.2f, 0.3f, 1));
    hinge->GetVariable("motor")->SetObject(script::ValueToObject(true));
    hinge->GetVariable("motorSpeed")->SetObject(script::ValueToObject(8.0f));
    spring->SetTargetLength(2);
    spring->SetStrengthFactor(0.5f);
    // A version that knew no alpha must not spoil what no file holds.
    FileInfo::GetInstancePtr()->SetVersion(1);
    TheScene()->CreateClone(Everything());
    ASSERT_EQ(8u, TheScene()->GetEntities().size());
    const auto hingeClone = At<HingeEntity>(5);
    ASSERT_TRUE(hingeClone);
    EXPECT_EQ(At<BoxEntity>(3)->GetGeom(), hingeClone->GetGeom(0));
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), hingeClone->GetGeom(1));
    EXPECT_EQ(hinge->GetLocalPoint(0), hingeClone->GetLocalPoint(0));
    EXPECT_EQ(hinge->GetColor4(), hingeClone->GetColor4());
    EXPECT_EQ(0.7f, hingeClone->GetSize());
    for (const char* name : {"motor", "motorSpeed"})
        EXPECT_EQ(Attribute(hinge, name), Attribute(hingeClone, name)) << name;
    EXPECT_TRUE(Sim()->HasConstraint(hingeClone->GetHinge()));
    EXPECT_EQ(2u, Sim()->GetHinges().size());
    const auto springClone = At<SpringEntity>(7);
    ASSERT_TRUE(springClone);
    EXPECT_EQ(2, springClone->GetTargetLength());
    EXPECT_EQ(0.5f, springClone->GetStrengthFactor());
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), springClone->GetGeom(0));
    EXPECT_EQ(2u, Sim()->GetJoints().size());
    EXPECT_TRUE(TheScene()->HasEntity(a) && TheScene()->HasEntity(b));
}

TEST_F(SceneEditingTest, LeavesTheEndsOfClonedJointsThatLieOutside)
{
    const auto box = Add("Scene.addBox { size = [4.0, 2.0] }");
    const auto other = Add("Scene.addBox { size = [4.0, 2.0]; pos = [3.0, 0.0] }");
    const auto hinge = Join<HingeEntity>(Vec2(1.5f, 0.5f), Vec2(1.5f, 0.5f));
    const auto pin = Join<HingeEntity>(Vec2(-1, 0), Vec2(-1, 0));
    TheScene()->CreateClone(GroupOf({box, hinge, pin}));
    const auto boxClone = At<BoxEntity>(1);
    const auto hingeClone = At<HingeEntity>(4), pinClone = At<HingeEntity>(6);
    ASSERT_TRUE(boxClone && hingeClone && pinClone);
    EXPECT_EQ(other->GetGeom(), hingeClone->GetGeom(0));
    EXPECT_EQ(boxClone->GetGeom(), hingeClone->GetGeom(1));
    EXPECT_EQ(boxClone->GetGeom(), pinClone->GetGeom(0));
    EXPECT_TRUE(pinClone->IsAttachedToWorld());
}

TEST_F(SceneEditingTest, ClonesPensWithoutTheirTrail)
{
    const auto box = Add("Scene.addBox { }");
    const auto pen = AddPen(Vec2(0.25f, 0));
    pen->GetVariable("fadeTime")->SetObject(script::ValueToObject(3.0f));
    TheScene()->CreateClone(GroupOf({box, pen}));
    const auto penClone = At<PenEntity>(3);
    ASSERT_TRUE(penClone);
    EXPECT_EQ(At<BoxEntity>(1)->GetGeom(), penClone->GetGeom());
    EXPECT_EQ(pen->GetLocalPoint(), penClone->GetLocalPoint());
    EXPECT_EQ("3", Attribute(penClone, "fadeTime"));
    TheScene()->CreateClone(GroupOf({pen}));
    EXPECT_EQ(box->GetGeom(), At<PenEntity>(3)->GetGeom());
}

TEST_F(SceneEditingTest, ClonesChains)
{
    const auto a = Add("Scene.addCircle { }"), b = Add("Scene.addCircle { pos = [3.0, 0.0] }"),
               c = Add("Scene.addCircle { pos = [6.0, 0.0] }");
    const ChainPtr chain = QUIB_NEW Chain;
    for (const auto& link : {a, b, c})
        chain->AddEntity(link);
    TheScene()->CreateClone(GroupOf({b, c}));
    const EntityPtr cloneB = TheScene()->GetEntities()[2], cloneC = TheScene()->GetEntities()[4];
    ASSERT_TRUE(cloneB->GetChain());
    EXPECT_NE(chain, cloneB->GetChain());
    EXPECT_EQ(cloneB->GetChain(), cloneC->GetChain());
    EXPECT_EQ(1u, cloneB->GetChain()->IndexOf(*cloneB));
    EXPECT_EQ(2u, cloneB->GetChain()->IndexOf(*cloneC));
    EXPECT_EQ((Entities{a, b, c}), chain->GetEntities());
}

TEST_F(SceneEditingTest, ClonesTheSameInEveryRun)
{
    // Ids are given in the order in which things are made; those of addresses would mix them.
    for (int i = 0; i < 40; ++i)
        Add("Scene.addBox { pos = [" + util::ToString(2 * i) + ".0, 0.0] }");
    TheScene()->CreateClone(Everything());
    for (size_t i = 1; i < 79; i += 2)
    {
        const auto clone = At<BoxEntity>(i), next = At<BoxEntity>(i + 2);
        EXPECT_EQ(clone->GetID() + 1, next->GetID());
        EXPECT_EQ(clone->GetGeom()->GetID() + 1, next->GetGeom()->GetID());
        EXPECT_EQ(clone->GetBody()->GetID() + 1, next->GetBody()->GetID());
    }
}

TEST_F(SceneEditingTest, SurvivesFormulasThatChangeTheSceneWhileItIsCloned)
{
    // Run whenever the setting is handed over: the list of entities grows under the copying.
    for (int i = 0; i < 5; ++i)
        Run("Scene.addPen { pos = [0.0, 0.0]; fadeTime = { Scene.addBox { pos = [9.0, 9.0] }; 3.0 "
            "} }");
    const auto countPens = []
    {
        size_t n = 0;
        for (const EntityPtr& entity : TheScene()->GetEntities())
            n += entity->AsPenEntity() != nullptr;
        return n;
    };
    const size_t before = TheScene()->GetEntities().size();
    EXPECT_EQ(5u, countPens());
    EXPECT_LE(10u, before);
    const GroupPtr clones = TheScene()->CreateClone(Everything());
    EXPECT_EQ(before, clones->GetEntities().size());
    EXPECT_EQ(10u, countPens());
    EXPECT_LE(2 * before + 5, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, SurvivesAFormulaThatClearsTheSceneWhileItIsCloned)
{
    Run("harmless = (x) => { x }; harmful = (x) => { Scene.Clear }; go = harmless; "
        "Scene.addBox { size = [9.0, 9.0] }");
    for (int i = 0; i < 5; ++i)
        Run("Scene.addPen { pos = [0.0, 0.0]; fadeTime = { go(1); 3.0 } }");
    ASSERT_EQ(6u, TheScene()->GetEntities().size());
    TheCamera()->SetTrackedGroup(Everything());
    // Not as a statement: behind that all formulas are run.
    const script::ClosurePtr root = Parser()->GetRootClosure();
    root->FindVariable("go")->SetObject(root->GetObject("harmful"));
    const GroupPtr clones = TheScene()->CreateClone(TheCamera()->GetTrackedGroup());
    root->FindVariable("go")->SetObject(root->GetObject("harmless"));
    // What there was is gone, and the clones are there.
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    EXPECT_EQ(6u, clones->GetEntities().size());
    EXPECT_TRUE(clones->ContainsAll(GroupOf(TheScene()->GetEntities())->GetEntities()));
    EXPECT_EQ(6u, TheScene()->GetEntities().size());
    TheScene()->Update(0.01f);
    EXPECT_EQ(6u, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, SurvivesAFormulaThatClearsTheSceneWhileItIsScaled)
{
    Run("harmless = (x) => { x }; harmful = (x) => { Scene.Clear }; go = harmless; "
        "Scene.addBox { friction = { go(1); 0.5 } }");
    // The camera's own handle is null behind that.
    TheCamera()->SetTrackedGroup(Everything());
    const script::ClosurePtr root = Parser()->GetRootClosure();
    root->FindVariable("go")->SetObject(root->GetObject("harmful"));
    TheScene()->Transform(TheCamera()->GetTrackedGroup(), Mat3::Scale2D(Vec2(2, 2)));
    root->FindVariable("go")->SetObject(root->GetObject("harmless"));
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    EXPECT_EQ(0u, TheScene()->GetEntities().size());
}

TEST_F(SceneEditingTest, KeepsTheFormulasOfWhatItClonesAndScales)
{
    Run("k = 0.5");
    const char* const names[] = {"friction", "restitution", "density", "airFrictionMult",
                                 "controllerAcc"};
    const auto expectAll = [&](float value)
    {
        for (const EntityPtr& entity : TheScene()->GetEntities())
            for (const char* name : names)
            {
                const auto* attrib =
                    dynamic_cast<const script::TAttrib<float>*>(entity->FindVariable(name));
                ASSERT_TRUE(attrib);
                EXPECT_EQ(value, attrib->Get()) << name;
                EXPECT_EQ("{k}", Attribute(entity, name)) << name;
            }
    };
    const util::String settings = "friction = { k }; restitution = { k }; density = { k }; "
                                  "airFrictionMult = { k }; controllerAcc = { k }";
    Add("Scene.addBox { angle = 0.5; " + settings + " }");
    Add("Scene.addCircle { pos = [5.0, 0.0]; " + settings + " }");
    Add("Scene.addPolygon { pos = [9.0, 0.0]; vecs = [[0.0, 0.0], [3.0, 0.0], [0.0, 1.0]]; " +
        settings + " }");
    Run("k = 0.625");
    TheScene()->CreateClone(Everything());
    ASSERT_EQ(6u, TheScene()->GetEntities().size());
    Run("k = 0.75");
    expectAll(0.75f);
    EXPECT_EQ(0.75f, GeomAt(1).GetFriction());
    // To other kinds, too.
    TheScene()->Transform(Everything(), Mat3::Scale2D(Vec2(2, 3)));
    ASSERT_TRUE(At<PolyEntity>(0));
    Run("k = 0.25");
    expectAll(0.25f);
    EXPECT_EQ(0.25f, GeomAt(0).GetDensity());
    const util::String text = Serializer::GetInstancePtr()->SerializeScene();
    size_t formulas = 0;
    for (size_t i = text.find("friction = {"); i != util::String::npos;
         i = text.find("friction = {", i + 1))
        ++formulas;
    EXPECT_EQ(6u, formulas) << text;
}

TEST_F(SceneEditingTest, ScalesAllThatIsLeftWhenAFormulaTakesOneAway)
{
    std::vector<EntityPtr> boxes;
    for (int i = 0; i < 5; ++i)
        boxes.push_back(Add("Scene.addBox { size = [1.0, 1.0]; pos = [" + util::ToString(3 * i) +
                            ".0, 0.0] }"));
    bool isArmed = false;
    boxes[2]
        ->GetVariable("friction")
        ->SetObject(QUIB_NEW script::IntrinsicCmd(
            [&]
            {
                if (isArmed)
                    TheScene()->RemoveEntity(boxes[0]);
                return script::ValueToObject(0.5f);
            }));
    const GroupPtr all = Everything();
    isArmed = true;
    TheScene()->Transform(all, Mat3::Scale2D(Vec2(2, 2)));
    isArmed = false;
    ASSERT_EQ(4u, TheScene()->GetEntities().size());
    for (size_t i = 0; i < 4; ++i)
    {
        EXPECT_FLOAT_EQ(4, GeomAt(i).Area()) << i;
        EXPECT_NEAR(6.0f * float(i + 1), GeomAt(i).GetCenter().x, 1e-4f);
    }
    EXPECT_FLOAT_EQ(1, GeomOf(util::DynamicCast<GeomEntity>(boxes[0])).Area());
    TheScene()->ClearScene();
}

TEST_F(SceneEditingTest, SurvivesFormulasThatAddAndClearWhileItClonesAndScales)
{
    for (const bool isScaled : {false, true})
        for (const bool isCleared : {false, true})
        {
            SCOPED_TRACE(testing::Message() << isScaled << isCleared);
            TheScene()->ClearScene();
            std::vector<EntityPtr> boxes;
            for (int i = 0; i < 20; ++i)
                boxes.push_back(
                    Add("Scene.addBox { pos = [" + util::ToString(3 * i) + ".0, 0.0] }"));
            Join<HingeEntity>(Vec2(0, 0), Vec2(0, 0));
            Join<FixJointEntity>(Vec2(57, 0), Vec2(57, 0));
            AddPen(Vec2(3, 0));
            const GroupPtr all = Everything();
            int runs = 0;
            bool isArmed = false;
            const script::ObjectPtr formula = QUIB_NEW script::IntrinsicCmd(
                [&]
                {
                    if (isArmed && runs++ == 0)
                    {
                        if (isCleared)
                            TheScene()->ClearScene();
                        for (int i = 0; i < 100; ++i)
                            Run("Scene.addCircle { pos = [0.0, 9.0] }");
                    }
                    return script::ValueToObject(0.5f);
                });
            boxes[10]->GetVariable("friction")->SetObject(formula);
            isArmed = true;
            if (isScaled)
                TheScene()->Transform(all, Mat3::Scale2D(Vec2(2, 2)));
            else
                TheScene()->CreateClone(all);
            isArmed = false;
            EXPECT_LE(1, runs);
            // What has left has no place where it could be replaced. Its clones are there.
            const size_t kept = isCleared ? 0 : 23, clones = isScaled ? 0 : 23;
            const Entities entities = TheScene()->GetEntities();
            ASSERT_EQ(kept + clones + 100, entities.size());
            // What came meanwhile lies above all that was there.
            for (size_t i = 0; i < entities.size() && !isCleared; ++i)
                EXPECT_EQ(i >= kept + clones, bool(util::DynamicCast<CircleEntity>(entities[i])));
            TheScene()->Update(0.01f);
            EXPECT_EQ(entities.size(), TheScene()->GetEntities().size());
            if (isScaled && !isCleared)
            {
                EXPECT_NEAR(60, GeomAt(10).GetCenter().x, 1e-4f);
            }
            boxes[10]->GetVariable("friction")->SetObject(script::ValueToObject(0.5f));
            TheScene()->ClearScene();
        }
}

TEST_F(SceneEditingTest, ClonesAndScalesManyPlanesInNoTime)
{
    const double start = Seconds();
    for (int i = 0; i < 1500; ++i)
        TheScene()->AddEntity(
            QUIB_NEW PlaneEntity(QUIB_NEW physics::Plane(math::Plane2D(Vec2(0, 1), 10.0f + i))));
    ASSERT_EQ(1501u, Sim()->GetWorldBody()->GetGeoms().size());
    TheScene()->CreateClone(Everything());
    EXPECT_EQ(3001u, Sim()->GetWorldBody()->GetGeoms().size());
    TheScene()->Transform(Everything(), Mat3::Scale2D(Vec2(2, 2)));
    EXPECT_EQ(3001u, Sim()->GetWorldBody()->GetGeoms().size());
    TheScene()->Update(0.01f);
    EXPECT_EQ(3000u, TheScene()->GetEntities().size());
    EXPECT_NEAR(-20, GeomAt(0).GetCenter().y, 1e-4f);
    TheScene()->RemoveEntities(TheScene()->GetEntities());
    EXPECT_EQ(1u, Sim()->GetWorldBody()->GetGeoms().size());
    EXPECT_LT(Seconds() - start, 2);
}

TEST_F(SceneEditingTest, ClonesJoinWhatTheCameraFollows)
{
    const auto box = Add("Scene.addBox { entityID = 1 }");
    Run("Scene.addGroup { name = \"tracked\"; entityIDs = [1] }");
    TheScene()->CreateClone(GroupOf({box}));
    EXPECT_EQ(TheScene()->GetEntities(), TheCamera()->GetTrackedGroup()->GetSorted());
}

TEST_F(SceneEditingTest, LeaksNothing)
{
    const auto build = []
    {
        Add("Scene.addBox { }");
        Add("Scene.addBox { pos = [0.75, 0.0] }");
        Join<HingeEntity>(Vec2(0.4f, 0), Vec2(0.4f, 0));
        Join<FixJointEntity>(Vec2(0.4f, 0.1f), Vec2(0.4f, 0.1f));
        Join<SpringEntity>(Vec2(0, 0), Vec2(5, 5));
        AddPen(Vec2(0, 0));
    };
    build();
    TheScene()->ClearScene();
    util::AbstractCallbackSet::FlushCallbackSets(); // pens leave a callback
    util::PointeeHandle::Flush();
    const unsigned long before = util::Pointee::GetInstanceCount();
    const std::function<void()> edits[] = {
        [] { TheScene()->CreateClone(Everything()); },
        [] { TheScene()->Transform(Everything(), Mat3::Scale2D(Vec2(2, 1.5f))); },
        [] { TheScene()->Transform(Everything(), Mat2D::Translation(Vec2(2, 1.5f))); },
    };
    for (const auto& edit : edits)
    {
        build();
        edit();
        TheScene()->ClearScene();
        util::AbstractCallbackSet::FlushCallbackSets(); // pens leave a callback
        util::PointeeHandle::Flush();
        EXPECT_EQ(before, util::Pointee::GetInstanceCount());
    }
}
}
}
