#include "JointFixture.h"

#include "app/EntitySerializer.h"
#include "math/Mat2D.h"

namespace app
{
namespace
{
using JointEntityTest = JointFixture;

void AttachAt(JointEntity& joint, const Vec2& p0, const Vec2& p1)
{
    const Vec2 points[2] = {p0, p1};
    joint.AttachAt(points);
}

TEST_F(JointEntityTest, AreGreyAtFirst)
{
    EXPECT_EQ(Vec4(0.5f, 0.5f, 0.5f, 1), HingeEntity(1).GetColor4());
    EXPECT_EQ(Vec4(0.5f, 0.5f, 0.5f, 1), SpringEntity(1).GetColor4());
    EXPECT_EQ(Vec4(0.5f, 0.5f, 0.5f, 1), FixJointEntity(1).GetColor4());
}

TEST_F(JointEntityTest, AttachAtTakesTheTwoTopmostGeometriesUnderAPoint)
{
    const auto bottom = Box(Vec2(0, 0)), middle = Box(Vec2(0.1f, 0)), top = Box(Vec2(0.2f, 0));
    const HingePtr hinge = QUIB_NEW HingeEntity(0.2f);
    AttachAt(*hinge, Vec2(0.3f, 0.1f), Vec2(0.3f, 0.1f));
    EXPECT_EQ(top->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(middle->GetGeom(), hinge->GetGeom(1));
    EXPECT_EQ(Vec2(0.3f, 0.1f), hinge->GetWorldPoint(0));
    EXPECT_NEAR(0.1f, hinge->GetLocalPoint(0).x, 1e-6f);
    EXPECT_NEAR(0.2f, hinge->GetLocalPoint(1).x, 1e-6f);
    EXPECT_FALSE(hinge->IsAttachedToWorld());
}

TEST_F(JointEntityTest, AttachAtTakesTheWorldForAnEndThatIsOnNothing)
{
    const auto box = Box(Vec2());
    const HingePtr hinge = QUIB_NEW HingeEntity(0.2f);
    AttachAt(*hinge, Vec2(), Vec2());
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(1));
    EXPECT_TRUE(hinge->IsAttachedToWorld());
}

TEST_F(JointEntityTest, WithBothEndsOnNothingIsDeadAndGoesAtTheNextUpdate)
{
    const HingePtr hinge = QUIB_NEW HingeEntity(0.2f);
    AttachAt(*hinge, Vec2(5, 5), Vec2(5, 5));
    EXPECT_FALSE(hinge->GetGeom(0));
    EXPECT_FALSE(hinge->GetGeom(1));
    EXPECT_FALSE(hinge->IsAlive());
    TheScene()->AddEntity(hinge);
    TheScene()->Update(0.01f);
    EXPECT_FALSE(IsThere(hinge));
}

TEST_F(JointEntityTest, AttachAtKeepsAnEndThatItsPointIsStillOn)
{
    const auto below = Box(Vec2());
    const auto hinge = Join<HingeEntity>(below->GetGeom(), WorldGeom());
    const auto above = Box(Vec2());
    // Both ends asked for anew: the box below is kept although another one lies over it now.
    AttachAt(*hinge, Vec2(0.2f, 0.2f), Vec2(0.2f, 0.2f));
    EXPECT_EQ(below->GetGeom(), hinge->GetGeom(0));
    // The world is never kept.
    EXPECT_EQ(above->GetGeom(), hinge->GetGeom(1));
}

TEST_F(JointEntityTest, AttachAtKeepsAnEndUpToAThousandthAway)
{
    const auto box = Box(Vec2()), other = Box(Vec2(1.2f, 0));
    const auto hinge = Join<HingeEntity>(box, other, Vec2(0.4f, 0));
    AttachAt(*hinge, Vec2(0.5009f, 0), Vec2(1, 0));
    EXPECT_EQ(box->GetGeom(), hinge->GetGeom(0));
    AttachAt(*hinge, Vec2(0.5011f, 0), Vec2(1, 0));
    EXPECT_EQ(WorldGeom(), hinge->GetGeom(0));
}

TEST_F(JointEntityTest, AttachAtLetsGoOfAGeometryThatHasLeftTheSimulation)
{
    const auto box = Box(Vec2());
    const auto hinge = Join<HingeEntity>(box->GetGeom(), WorldGeom());
    TheScene()->RemoveEntity(box);
    const auto other = Box(Vec2());
    AttachAt(*hinge, Vec2(), Vec2());
    EXPECT_EQ(other->GetGeom(), hinge->GetGeom(0));
}

TEST_F(JointEntityTest, FollowTheirGeometries)
{
    const auto box = Box(Vec2());
    const auto hinge = Join<HingeEntity>(box->GetGeom(), WorldGeom(), Vec2(0.25f, 0));
    box->GetGeom()->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(2, 0), math::PIf / 2));
    hinge->Update(0.01f);
    EXPECT_NEAR(2, hinge->GetWorldPoint(0).x, 1e-6f);
    EXPECT_NEAR(0.25f, hinge->GetWorldPoint(0).y, 1e-6f);
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetWorldPoint(1));
}

TEST_F(JointEntityTest, KeepTheirWorldPointsWhileTheyAreTransformed)
{
    const auto box = Box(Vec2());
    const auto hinge = Join<HingeEntity>(box->GetGeom(), WorldGeom());
    hinge->StartTransform();
    hinge->Transform(math::Mat2D::Translation(Vec2(0.25f, 0)));
    hinge->Update(0.01f);
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetWorldPoint(0));
    EXPECT_EQ(Vec2(0, 0), hinge->GetLocalPoint(0));
    hinge->EndTransform();
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetLocalPoint(0));
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetHinge()->GetLocal(0));
}

TEST_F(JointEntityTest, OfAWeldSnapBackWhenMovedAlone)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const auto weld = Join<FixJointEntity>(a, b);
    weld->StartTransform();
    weld->Transform(math::Mat2D::Translation(Vec2(0.25f, 0)));
    weld->EndTransform();
    weld->Update(0.01f);
    EXPECT_EQ(Vec2(), weld->GetWorldPoint(0));
}

TEST_F(JointEntityTest, OfAWeldGoWithTheGeometryThatWasMovedWithIt)
{
    for (int moved : {0, 1})
    {
        const auto box = Box(Vec2());
        const auto weld = moved == 0 ? Join<FixJointEntity>(box->GetGeom(), WorldGeom())
                                     : Join<FixJointEntity>(WorldGeom(), box->GetGeom());
        const math::Mat2D matrix = math::Mat2D::TranslationRotation(Vec2(0.25f, 2), 1);
        weld->StartTransform();
        for (const EntityPtr& entity : {EntityPtr(box), EntityPtr(weld)})
            entity->Transform(matrix);
        weld->EndTransform();
        weld->Update(0.01f);
        for (int i : {0, 1})
            EXPECT_LT(math::Distance(Vec2(0.25f, 2), weld->GetWorldPoint(i)), 1e-5f);
        EXPECT_EQ(Vec2(), weld->GetLocalPoint(moved)) << "not a bit of it was moved";
        EXPECT_TRUE(weld->IsAlive());
    }
}

TEST_F(JointEntityTest, DieWithTheBodyOfEitherEnd)
{
    const auto a = Box(Vec2()), b = Box(Vec2(3, 0));
    const EntityPtr joints[] = {Join<HingeEntity>(a, b), Join<SpringEntity>(a, b)};
    TheScene()->Update(0.01f);
    for (const EntityPtr& joint : joints)
        EXPECT_TRUE(IsThere(joint));
    TheScene()->RemoveEntity(b);
    for (const EntityPtr& joint : joints)
        EXPECT_FALSE(joint->IsAlive());
    TheScene()->Update(0.01f);
    for (const EntityPtr& joint : joints)
        EXPECT_FALSE(IsThere(joint));
}

TEST_F(JointEntityTest, ArePickedInACircleOfHalfTheirSizeAroundTheFirstEnd)
{
    const auto box = Box(Vec2());
    for (const JointEntityPtr& joint :
         {JointEntityPtr(QUIB_NEW HingeEntity(1)), JointEntityPtr(QUIB_NEW FixJointEntity(1))})
    {
        joint->AttachToWorld(box->GetGeom(), Vec2(), WorldGeom(), Vec2(3, 0));
        EXPECT_TRUE(joint->IsOnEntity(Vec2(0.49f, 0)));
        EXPECT_FALSE(joint->IsOnEntity(Vec2(0.5f, 0))); // strictly inside
        EXPECT_FALSE(joint->IsOnEntity(Vec2(3, 0)));
        EXPECT_EQ(Vec2(-0.5f, -0.5f), joint->GetAABB().GetMin());
        EXPECT_EQ(Vec2(0.5f, 0.5f), joint->GetAABB().GetMax());
    }
}

TEST_F(JointEntityTest, AreErasedByAStrokeThroughTheCircleAndNotByOneThatEndsInIt)
{
    const auto box = Box(Vec2());
    const auto hinge = Join<HingeEntity>(box->GetGeom(), WorldGeom());
    hinge->SetSize(1);
    EXPECT_TRUE(hinge->ErasedBy(Stroke(Vec2(-1, 0), Vec2(1, 0))));
    EXPECT_FALSE(hinge->ErasedBy(Stroke(Vec2(-1, 0), Vec2(0, 0))));
    EXPECT_FALSE(hinge->ErasedBy(Stroke(Vec2(-1, 0.6f), Vec2(1, 0.6f))));
    EXPECT_TRUE(hinge->ErasedBy({{Vec2(-1, 0), Vec2(0, 0)}, {Vec2(0, 0), Vec2(0, 1)}}));
}

TEST_F(JointEntityTest, AreContainedWithTheirWholeCircle)
{
    const auto box = Box(Vec2());
    const auto hinge = Join<HingeEntity>(box->GetGeom(), WorldGeom());
    hinge->SetSize(1);
    EXPECT_TRUE(hinge->IsContainedBy(*Square(0.6f)));
    EXPECT_FALSE(hinge->IsContainedBy(*Square(0.4f)));
}

TEST_F(JointEntityTest, TakeGeometriesOverWithTheirLocalPoints)
{
    const auto a = Box(Vec2()), b = Box(Vec2(5, 0));
    const auto hinge = Join<HingeEntity>(a->GetGeom(), WorldGeom(), Vec2(0.25f, 0));
    const GeomPtr geoms[2] = {b->GetGeom(), WorldGeom()};
    hinge->SetGeoms(geoms);
    EXPECT_EQ(Vec2(0.25f, 0), hinge->GetLocalPoint(0));
    EXPECT_EQ(Vec2(5.25f, 0), hinge->GetWorldPoint(0));
    EXPECT_EQ(b->GetGeom(), hinge->GetHinge()->GetGeom(0));
}

TEST_F(JointEntityTest, GiveTheBodiesOfTheirEnds)
{
    const auto a = Box(Vec2()), b = Box(Vec2(5, 0));
    const auto hinge = Join<HingeEntity>(a, b);
    BodyPtr bodies[2];
    hinge->GetBodies(bodies);
    EXPECT_EQ(a->GetBody(), bodies[0]);
    EXPECT_EQ(b->GetBody(), bodies[1]);
    HingeEntity(1).GetBodies(bodies);
    EXPECT_FALSE(bodies[0]);
    EXPECT_FALSE(bodies[1]);
}

TEST_F(JointEntityTest, ClonesAreFastenedAlikeAndInNoScene)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const JointEntityPtr joints[] = {Join<HingeEntity>(a, b, Vec2(0.5f, 0)),
                                     Join<SpringEntity>(a, b, Vec2(0.5f, 0)),
                                     Join<FixJointEntity>(a, b, Vec2(0.5f, 0))};
    for (const JointEntityPtr& joint : joints)
    {
        const JointEntityPtr clone = joint->Clone();
        EXPECT_EQ(typeid(*joint), typeid(*clone));
        EXPECT_NE(joint->GetID(), clone->GetID());
        EXPECT_FALSE(IsThere(clone));
        EXPECT_EQ(joint->GetSize(), clone->GetSize());
        for (int i = 0; i < 2; ++i)
        {
            EXPECT_EQ(joint->GetGeom(i), clone->GetGeom(i));
            EXPECT_EQ(joint->GetLocalPoint(i), clone->GetLocalPoint(i));
            EXPECT_EQ(joint->GetWorldPoint(i), clone->GetWorldPoint(i));
        }
    }
    EXPECT_EQ(1u, Sim()->GetHinges().size());
    EXPECT_EQ(1u, Sim()->GetJoints().size());
}

TEST_F(JointEntityTest, HaveBothEndsOrNone)
{
    const auto a = Box(Vec2()), b = Box(Vec2(0.5f, 0));
    const auto expectNone = [](const HingePtr& hinge)
    {
        EXPECT_FALSE(hinge->GetGeom(0));
        EXPECT_FALSE(hinge->GetGeom(1));
        EXPECT_FALSE(hinge->IsAlive());
    };
    const HingePtr first = Join<HingeEntity>(a, b), second = Join<HingeEntity>(a, b);
    const GeomPtr half[2] = {a->GetGeom(), nullptr};
    first->SetGeoms(half);
    expectNone(first);
    second->AttachToWorld(nullptr, Vec2(), b->GetGeom(), Vec2());
    expectNone(second);
}

TEST_F(JointEntityTest, WriteAndReadTheirSize)
{
    EntitySerializer bag;
    HingeEntity(0.75f).SerializeTo(bag);
    HingeEntity read(1);
    read.Deserialize(bag);
    EXPECT_EQ(0.75f, read.GetSize());
    for (const float bad :
         {-1.0f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
    {
        bag.Set("size", bad);
        EXPECT_THROW(read.Deserialize(bag), BadDataException);
        EXPECT_EQ(0.75f, read.GetSize());
    }
}
}
}
