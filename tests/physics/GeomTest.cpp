#include "physics/Geom.h"

#include "GeomFixture.h"
#include "physics/WorldGeom.h"

#include <cmath>
#include <limits>

namespace physics
{
using math::Mat2D;
using math::Vec2;

namespace
{
const float inf = std::numeric_limits<float>::infinity();

class GeomTest : public GeomFixture
{
};
class CircleTest : public GeomFixture
{
};
class BoxTest : public GeomFixture
{
};
class PlaneTest : public GeomFixture
{
};
class WorldGeomTest : public GeomFixture
{
};
}

TEST_F(GeomTest, StartsWithTheSettingsOfTheSimulation)
{
    sim.m_defaultBodyDensity = 3.0f;
    sim.m_defaultBodyFriction = 0.25f;
    sim.m_defaultBodyRestitution = 0.75f;
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 1);
    sim.m_defaultBodyDensity = 2.0f;
    sim.m_defaultBodyFriction = 0.5f;
    sim.m_defaultBodyRestitution = 0.5f;
    EXPECT_EQ(3, circle->GetDensity());
    EXPECT_EQ(0.25f, circle->GetFriction());
    EXPECT_EQ(0.75f, circle->GetRestitution());
}

TEST_F(GeomTest, StartsWithoutBodyInTheFirstCollideSetAndTouchesWater)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 1);
    EXPECT_EQ(nullptr, circle->GetBodyPtr());
    EXPECT_EQ(nullptr, circle->GetBodyBodyPtr());
    EXPECT_FALSE(circle->GetBody());
    EXPECT_FALSE(circle->GetBodyBody());
    EXPECT_EQ(1, circle->GetCollideSet());
    EXPECT_TRUE(circle->GetWaterCollide());
    EXPECT_EQ(1, circle->GetAirFrictionMult());
    EXPECT_TRUE(circle->GetNoCollide().empty());
}

TEST_F(GeomTest, IdsCountUpAndTheWorldsIsZero)
{
    EXPECT_EQ(0u, sim.GetWorldGeom()->GetID());
    CirclePtr a = QUIB_NEW Circle(Vec2(), 1);
    BoxPtr b = QUIB_NEW Box(Vec2(1, 1), Vec2());
    EXPECT_EQ(a->GetID() + 1, b->GetID());
}

TEST_F(GeomTest, MassAndInertiaGoWithDensity)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2());
    box->SetDensity(3);
    EXPECT_FLOAT_EQ(6, box->Mass());
    EXPECT_FLOAT_EQ(6 * 5.0f / 12, box->Inertia());
}

TEST_F(GeomTest, TheBodysMassFollowsDensityAndSize)
{
    Box* box = AddBox(Vec2(2, 1), Vec2());
    Body* body = box->GetBodyBodyPtr();
    EXPECT_FLOAT_EQ(4, body->GetMass());
    box->SetDensity(5);
    EXPECT_FLOAT_EQ(10, body->GetMass());
    box->SetSize(Vec2(1, 1));
    EXPECT_FLOAT_EQ(5, body->GetMass());
    box->SetOBB(math::OBB2D(Vec2(), Vec2(1, 0), Vec2(0, 1), 1, 1));
    EXPECT_FLOAT_EQ(20, body->GetMass());
    Circle* circle = AddCircle(Vec2(), 1);
    circle->SetRadius(2);
    EXPECT_FLOAT_EQ(8 * math::PIf, circle->GetBodyBodyPtr()->GetMass());
}

TEST_F(GeomTest, HoldsOneReferenceOnItsBody)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 1);
    util::SharedPtr<AbstractBody> a = QUIB_NEW AbstractBody, b = QUIB_NEW AbstractBody;
    circle->SetBody(a.get());
    circle->SetBody(a.get());
    EXPECT_EQ(2u, a->GetHandle()->GetRefCount());
    EXPECT_EQ(a, circle->GetBody());
    EXPECT_EQ(nullptr, circle->GetBodyBodyPtr()) << "not a Body";
    circle->SetBody(b.get());
    EXPECT_EQ(1u, a->GetHandle()->GetRefCount());
    EXPECT_EQ(2u, b->GetHandle()->GetRefCount());
    circle = nullptr;
    EXPECT_EQ(1u, b->GetHandle()->GetRefCount()) << "released at the end";
}

TEST_F(GeomTest, KeepsItsBodyAlive)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 1);
    util::SharedPtr<AbstractBody> body = QUIB_NEW AbstractBody;
    util::WeakPtr<AbstractBody> weak = body;
    circle->SetBody(body.get());
    body = nullptr;
    EXPECT_FALSE(weak.IsNull());
    circle->SetBody(nullptr);
    EXPECT_TRUE(weak.IsNull());
    EXPECT_EQ(nullptr, circle->GetBodyPtr());
}

TEST_F(GeomTest, SetPosMovesAndKeepsTheRotation)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2(5, 5));
    box->SetWorldPose(Mat2D::TranslationRotation(Vec2(5, 5), math::PIf / 2));
    box->SetPos(Vec2(-1, 2));
    EXPECT_EQ(Vec2(-1, 2), box->GetCenter());
    EXPECT_FLOAT_EQ(math::PIf / 2, box->GetPose().GetAngle());
    EXPECT_EQ(Vec2(-1, 2), box->GetWorldBox().GetCenter());
    EXPECT_NEAR(1, std::fabs(box->GetWorldBox().GetAxis(0).y), 1e-6f);
}

TEST_F(GeomTest, SetWorldPoseKeepsTheInverseAndTheCenter)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 1);
    const Mat2D pose = Mat2D::TranslationRotation(Vec2(3, 4), 1);
    circle->SetWorldPose(pose);
    EXPECT_EQ(pose, circle->GetPose());
    EXPECT_EQ(Inverted(pose), circle->GetPoseInv());
    EXPECT_EQ(Vec2(3, 4), circle->GetCenter());
}

TEST_F(GeomTest, NoCollideSetHasNoCount)
{
    CirclePtr a = QUIB_NEW Circle(Vec2(), 1), b = QUIB_NEW Circle(Vec2(), 1);
    a->AddNoCollide(b.get());
    a->AddNoCollide(b.get());
    EXPECT_EQ(1u, a->GetNoCollide().count(b.get()));
    // Deliberate: two that part the same pair lose it with the first that leaves.
    a->RemoveNoCollide(b.get());
    EXPECT_EQ(0u, a->GetNoCollide().count(b.get()));
}

namespace
{
// What every clone does alike.
template<typename T>
util::SharedPtr<T> ExpectProperClone(T* original)
{
    original->SetDensity(7);
    original->SetFriction(0.1f);
    original->SetRestitution(0.2f);
    original->SetCollideSet(6);
    original->SetWaterCollide(false);
    original->SetAirFrictionMult(3);
    original->AddNoCollide(original);
    util::SharedPtr<T> clone = original->Clone();
    EXPECT_NE(original->GetID(), clone->GetID());
    EXPECT_EQ(nullptr, clone->GetBodyPtr());
    EXPECT_EQ(7, clone->GetDensity());
    EXPECT_EQ(0.1f, clone->GetFriction());
    EXPECT_EQ(0.2f, clone->GetRestitution());
    EXPECT_EQ(6, clone->GetCollideSet());
    EXPECT_FALSE(clone->GetWaterCollide());
    EXPECT_EQ(original->GetPose(), clone->GetPose());
    EXPECT_EQ(original->GetPoseInv(), clone->GetPoseInv());
    EXPECT_EQ(original->GetCenter(), clone->GetCenter());
    EXPECT_EQ(original->GetKind(), clone->GetKind());
    // Deliberate: these two start afresh.
    EXPECT_EQ(1, clone->GetAirFrictionMult());
    EXPECT_TRUE(clone->GetNoCollide().empty());
    return clone;
}
}

TEST_F(GeomTest, ClonesDropTheAirFrictionMultiplierAndTheNoCollideSet)
{
    Circle* circle = AddCircle(Vec2(1, 2), 3);
    EXPECT_EQ(3, ExpectProperClone(circle)->GetRadius());
    Box* box = AddBox(Vec2(1, 2), Vec2(3, 4), 0.5f);
    EXPECT_EQ(Vec2(1, 2), ExpectProperClone(box)->GetSize());
    Plane* plane = AddPlane(Vec2(0, 1), -2);
    EXPECT_EQ(plane->GetPlane().d, ExpectProperClone(plane)->GetPlane().d);
    Polygon* polygon = AddPolygon({Vec2(0, 0), Vec2(2, 0), Vec2(1, 2)});
    util::SharedPtr<Polygon> clone = ExpectProperClone(polygon);
    EXPECT_EQ(polygon->GetVertices(), clone->GetVertices());
    EXPECT_EQ(polygon->GetWorldVertices(), clone->GetWorldVertices());
    EXPECT_EQ(polygon->GetDistMap()(10, 20), clone->GetDistMap()(10, 20));
    EXPECT_EQ(polygon->GetDistMap().data(), clone->GetDistMap().data()) << "one map for all clones";
    EXPECT_NE(polygon->GetDistMap().data(), polygon->Scale(Vec2(2, 2))->GetDistMap().data());
}

TEST_F(CircleTest, AnswersForARoundShape)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(1, 2), 2);
    EXPECT_EQ(Vec2(1, 2), circle->GetCenter());
    EXPECT_FLOAT_EQ(3, circle->DistanceWorld(Vec2(6, 2)));
    EXPECT_FLOAT_EQ(-2, circle->DistanceWorld(Vec2(1, 2)));
    ExpectNear(Vec2(0.6f, 0.8f), circle->NormalWorld(Vec2(4, 6)));
    EXPECT_FLOAT_EQ(math::PIf * 4, circle->Area());
    EXPECT_FLOAT_EQ(2, circle->InertiaSansMass());
    ExpectNear(Vec2(2.2f, 3.6f), circle->GetClosestEdge(Vec2(4, 6)));
    EXPECT_EQ(math::BoundingBox(Vec2(-1, 0), Vec2(3, 4)), circle->GetAABBWorld());
    EXPECT_EQ(Vec2(1, 2), circle->GetOBBWorld().GetCenter());
    EXPECT_EQ(Vec2(2, 2), circle->GetOBBWorld().GetHalfSize());
    EXPECT_EQ(Vec2(1, 2), circle->GetBCWorld().center);
    EXPECT_EQ(2, circle->GetBCWorld().radius);
}

TEST_F(CircleTest, HasNoNormalAtItsCenterAndThePointToTheRightForAnEdge)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(1, 2), 2);
    EXPECT_EQ(Vec2(0, 0), circle->NormalWorld(Vec2(1, 2)));
    EXPECT_EQ(Vec2(3, 2), circle->GetClosestEdge(Vec2(1, 2)));
}

TEST_F(CircleTest, CountsCrossingsWithItsOutline)
{
    CirclePtr circle = QUIB_NEW Circle(Vec2(), 2);
    const Linesegment inside(Vec2(-1, 0), Vec2(1, 0)), ending(Vec2(-3, 0), Vec2(1, 0)),
        through(Vec2(-3, 0), Vec2(3, 0)), beside(Vec2(-3, 2.5f), Vec2(3, 2.5f)),
        tangent(Vec2(-3, 2), Vec2(3, 2));
    EXPECT_EQ(0, circle->IntersectCountWorld(inside));
    EXPECT_EQ(1, circle->IntersectCountWorld(ending));
    EXPECT_EQ(2, circle->IntersectCountWorld(through));
    EXPECT_EQ(0, circle->IntersectCountWorld(beside));
    EXPECT_EQ(0, circle->IntersectCountWorld(tangent));
    EXPECT_EQ(3, circle->IntersectCountWorld({inside, ending, through, beside}));
    // An end on the outline counts as outside.
    EXPECT_EQ(2, circle->IntersectCountWorld(Linesegment(Vec2(2, 0), Vec2(-2, 0))));
}

TEST_F(BoxTest, MeasuresTheDistanceToItsSidesAndCorners)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2());
    EXPECT_FLOAT_EQ(2, box->DistanceWorld(Vec2(3, 0)));
    EXPECT_FLOAT_EQ(std::sqrt(2.0f), box->DistanceWorld(Vec2(2, 1.5f)));
    EXPECT_FLOAT_EQ(-0.5f, box->DistanceWorld(Vec2(0, 0)));
    EXPECT_FLOAT_EQ(-0.1f, box->DistanceWorld(Vec2(0.9f, 0)));
}

TEST_F(BoxTest, NormalIsThatOfTheNearestFace)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2());
    EXPECT_EQ(Vec2(0, 1), box->NormalWorld(Vec2(0.8f, 0.45f))) << "inside, nearer to the top";
    EXPECT_EQ(Vec2(1, 0), box->NormalWorld(Vec2(0.95f, 0.2f))) << "inside, nearer to the side";
    EXPECT_EQ(Vec2(-1, 0), box->NormalWorld(Vec2(-0.95f, 0.2f)));
    EXPECT_EQ(Vec2(0, -1), box->NormalWorld(Vec2(0.1f, -0.4f)));
    EXPECT_EQ(Vec2(0, 1), box->NormalWorld(Vec2(4, 0.6f)))
        << "outside, still by the nearer face line";
    EXPECT_EQ(Vec2(0, 1), box->NormalWorld(Vec2(0, 0))) << "0 counts as positive";
}

TEST_F(BoxTest, AnswersForARectangle)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2(3, 4));
    EXPECT_EQ(2, box->Area());
    EXPECT_FLOAT_EQ(5.0f / 12, box->InertiaSansMass());
    EXPECT_EQ(Vec2(2, 1), box->GetSize());
    EXPECT_EQ(math::BoundingBox(Vec2(2, 3.5f), Vec2(4, 4.5f)), box->GetAABBWorld());
    EXPECT_EQ(Vec2(3, 4), box->GetBCWorld().center);
    EXPECT_FLOAT_EQ(std::sqrt(1.25f), box->GetBCWorld().radius);
    ExpectNear(Vec2(3.2f, 4.5f), box->GetClosestEdge(Vec2(3.2f, 4.4f)));
    ExpectNear(Vec2(4, 4.1f), box->GetClosestEdge(Vec2(4.3f, 4.1f)));
}

TEST_F(BoxTest, TurnsWithItsPose)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2());
    box->SetWorldPose(Mat2D::TranslationRotation(Vec2(10, 0), math::PIf / 2));
    ExpectNear(Vec2(9.5f, -1), box->GetAABBWorld().GetMin());
    ExpectNear(Vec2(10.5f, 1), box->GetAABBWorld().GetMax());
    ExpectNear(Vec2(0, 1), box->NormalWorld(Vec2(10, 0.9f)));
    EXPECT_NEAR(1, box->DistanceWorld(Vec2(10, 2)), 1e-5f);
    EXPECT_EQ(Vec2(0, 0), box->GetLocalBox().GetCenter());
}

TEST_F(BoxTest, SetSizeAndSetOBBKeepThePose)
{
    BoxPtr box = QUIB_NEW Box(Vec2(2, 1), Vec2(3, 4));
    box->SetSize(Vec2(4, 6));
    EXPECT_EQ(Vec2(2, 3), box->GetLocalBox().GetHalfSize());
    EXPECT_EQ(Vec2(2, 3), box->GetOBBWorld().GetHalfSize());
    EXPECT_EQ(Vec2(3, 4), box->GetOBBWorld().GetCenter());
    box->SetOBB(math::OBB2D(Vec2(1, 0), Vec2(0, 1), Vec2(-1, 0), 2, 1));
    EXPECT_EQ(Vec2(4, 4), box->GetOBBWorld().GetCenter());
    EXPECT_EQ(Vec2(0, 1), box->GetOBBWorld().GetAxis(0));
    EXPECT_EQ(Vec2(3, 4), box->GetCenter());
}

TEST_F(PlaneTest, IsAFloorBelowPointsOfPositiveDistance)
{
    PlanePtr floor = QUIB_NEW Plane(math::Plane2D(Vec2(0, 1), 0));
    EXPECT_NEAR(3, floor->DistanceWorld(Vec2(7, 3)), 1e-5f);
    EXPECT_NEAR(-3, floor->DistanceWorld(Vec2(7, -3)), 1e-5f);
    ExpectNear(Vec2(0, 1), floor->NormalWorld(Vec2(7, 3)));
    ExpectNear(Vec2(7, 0), floor->GetClosestEdge(Vec2(7, 3)));
}

TEST_F(PlaneTest, IsInfinite)
{
    PlanePtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0, 1), 0));
    EXPECT_EQ(inf, plane->Area());
    EXPECT_EQ(inf, plane->InertiaSansMass());
    EXPECT_EQ(inf, plane->Mass());
    EXPECT_EQ(math::BoundingBox::Everything(), plane->GetAABBWorld());
    EXPECT_EQ(inf, plane->GetOBBWorld().GetHalf(0));
    EXPECT_EQ(inf, plane->GetBCWorld().radius);
}

TEST_F(PlaneTest, MakesItsBodyImmovable)
{
    Plane* plane = AddPlane(Vec2(0, 1), 0);
    EXPECT_TRUE(plane->GetBodyPtr()->IsImmovable());
}

TEST_F(PlaneTest, SitsAtItsPointNearestToTheOrigin)
{
    // 0.6 x + 0.8 y = 5
    PlanePtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0.6f, 0.8f), -5));
    ExpectNear(Vec2(3, 4), plane->GetCenter());
    EXPECT_NEAR(std::atan2(0.8f, 0.6f), plane->GetPose().GetAngle(), 1e-6f);
    ExpectNear(Vec2(0.6f, 0.8f), plane->GetPlane().normal);
    EXPECT_NEAR(-5, plane->GetPlane().d, 1e-5f);
}

TEST_F(PlaneTest, FollowsItsPose)
{
    PlanePtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0, 1), 0));
    plane->SetWorldPose(Mat2D::TranslationRotation(Vec2(2, 0), math::PIf));
    // The image of x < 0: everything right of x = 2.
    ExpectNear(Vec2(-1, 0), plane->GetPlane().normal);
    EXPECT_NEAR(2, plane->GetPlane().d, 1e-5f);
    EXPECT_NEAR(-1, plane->DistanceWorld(Vec2(3, 9)), 1e-5f);
}

TEST_F(PlaneTest, WithoutNormalLooksAlongX)
{
    PlanePtr plane = QUIB_NEW Plane(math::Plane2D(Vec2(0, 0), 3));
    EXPECT_EQ(Vec2(1, 0), plane->GetPlane().normal);
    EXPECT_EQ(Vec2(0, 0), plane->GetCenter());
}

TEST_F(WorldGeomTest, HasNoShapeAndInfiniteMass)
{
    util::SharedPtr<WorldGeom> world = sim.GetWorldGeom();
    EXPECT_EQ(-1, world->DistanceWorld(Vec2(100, 100)));
    EXPECT_EQ(Vec2(0, 0), world->NormalWorld(Vec2(1, 0)));
    EXPECT_EQ(inf, world->Area());
    EXPECT_EQ(inf, world->InertiaSansMass());
    EXPECT_EQ(Vec2(3, 4), world->GetClosestEdge(Vec2(3, 4)));
    EXPECT_EQ(math::BoundingBox::Empty(), world->GetAABBWorld());
    EXPECT_EQ(-inf, world->GetOBBWorld().GetHalf(0));
    EXPECT_EQ(-inf, world->GetBCWorld().radius);
}
}
