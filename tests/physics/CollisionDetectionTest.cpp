#include "physics/CollisionDetection.h"

#include "GeomFixture.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>

namespace physics
{
using math::Mat2D;
using math::Vec2;
using math::Vec2List;

namespace
{
const float inf = std::numeric_limits<float>::infinity();
const float nan = std::numeric_limits<float>::quiet_NaN();

// A square of side 4 around the origin, and an L of side 4 with the notch at the top right.
const Vec2List square = {Vec2(-2, -2), Vec2(2, -2), Vec2(2, 2), Vec2(-2, 2)};
const Vec2List corner = {Vec2(-2, -2), Vec2(2, -2), Vec2(2, 0),
                         Vec2(0, 0),   Vec2(0, 2),  Vec2(-2, 2)};

class ShouldCollideTest : public GeomFixture
{
};
class CollisionDetection : public GeomFixture
{
};
}

TEST_F(ShouldCollideTest, WantsACommonBitOfTheFiveCollideSets)
{
    Circle *a = AddCircle(Vec2(), 1), *b = AddCircle(Vec2(), 1);
    const struct
    {
        int a, b;
        bool expected;
    } cases[] = {
        {1, 1, true},        {2, 1, false},  {3, 1, true},
        {0, 1, false},       {16, 16, true}, {32, 32, false}, // above the fifth bit
        {0x21, 0x20, false}, {-1, 8, true},  {-1, 0xFE0, false},
    };
    for (const auto& c : cases)
    {
        a->SetCollideSet(c.a);
        b->SetCollideSet(c.b);
        EXPECT_EQ(c.expected, ShouldCollide(a, b)) << c.a << " and " << c.b;
        EXPECT_EQ(c.expected, !Collide().empty()) << c.a << " and " << c.b;
    }
    EXPECT_EQ(1u, Geom::COLLIDE_DEFAULT_GROUP);
    EXPECT_EQ(0x1Fu, Geom::COLLIDE_MASK);
    EXPECT_EQ(5u, Geom::COLLIDE_SET_COUNT);
    EXPECT_EQ(0xFFFFFFFFu, Geom::COLLIDE_ALL);
}

TEST_F(ShouldCollideTest, WantsTwoBodies)
{
    CirclePtr free = QUIB_NEW Circle(Vec2(), 1);
    Circle* a = AddCircle(Vec2(), 1);
    EXPECT_FALSE(ShouldCollide(free.get(), a));
    EXPECT_FALSE(ShouldCollide(a, free.get()));
    CirclePtr other = QUIB_NEW Circle(Vec2(0.5f, 0), 1);
    a->GetBodyBodyPtr()->AddGeom(other);
    EXPECT_FALSE(ShouldCollide(a, other.get())) << "of the same body";
    EXPECT_TRUE(Collide().empty());
}

TEST_F(ShouldCollideTest, WantsOneBodyThatCanMove)
{
    Circle *a = AddCircle(Vec2(), 1), *b = AddCircle(Vec2(), 1);
    a->GetBodyPtr()->SetSuspended(true);
    EXPECT_TRUE(ShouldCollide(a, b));
    EXPECT_EQ(1u, Collide().size());
    b->GetBodyPtr()->SetSuspended(true);
    EXPECT_FALSE(ShouldCollide(a, b));
    EXPECT_TRUE(Collide().empty());
    EXPECT_FALSE(ShouldCollide(AddPlane(Vec2(0, 1), 0), AddPlane(Vec2(1, 0), 0)));
}

TEST_F(ShouldCollideTest, LooksInTheNoCollideSetOfTheFirst)
{
    Circle *a = AddCircle(Vec2(), 1), *b = AddCircle(Vec2(), 1);
    a->AddNoCollide(b);
    EXPECT_FALSE(ShouldCollide(a, b));
    EXPECT_TRUE(ShouldCollide(b, a));
    EXPECT_TRUE(Collide().empty());
    a->RemoveNoCollide(b);
    EXPECT_EQ(1u, Collide().size());
}

TEST_F(ShouldCollideTest, WaterCollisionHasNoSayBetweenBodies)
{
    Circle *a = AddCircle(Vec2(), 1), *b = AddCircle(Vec2(), 1);
    a->SetWaterCollide(false);
    b->SetWaterCollide(false);
    EXPECT_EQ(1u, Collide().size());
}

TEST(AABBvcBC, TellsWhetherACircleTouchesABox)
{
    const math::BoundingBox box(Vec2(0, 0), Vec2(4, 2));
    const struct
    {
        Vec2 c;
        float r;
        bool expected;
    } cases[] = {
        {Vec2(2, 1), 0.5f, true},  // inside
        {Vec2(5, 1), 0.9f, false}, // beside
        {Vec2(5, 1), 1.1f, true},
        {Vec2(5, 1), 1, true},  // just touching a side
        {Vec2(7, 6), 5, false}, // just touching a corner
        {Vec2(7, 6), 5.01f, true},
        {Vec2(7, 6), 4.5f, false}, // both sides within reach, the corner not
        {Vec2(-0.5f, -0.5f), 0.6f, false},
        {Vec2(-0.5f, -0.5f), 0.8f, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.expected, AABBvcBC(box, math::BoundingCircle(c.c, c.r))) << c.c << c.r;
}

TEST_F(CollisionDetection, DropsContactsThatAreNotFinite)
{
    Circle *a = AddCircle(Vec2(), 1), *b = AddCircle(Vec2(), 1);
    ContactOutput out{pool, found};
    test::LogCapture log;
    const struct
    {
        Vec2 pos, normal;
        float depth;
    } cases[] = {
        {Vec2(nan, 0), Vec2(1, 0), 1}, {Vec2(0, inf), Vec2(1, 0), 1},
        {Vec2(0, 0), Vec2(0, nan), 1}, {Vec2(0, 0), Vec2(1, 0), -inf},
        {Vec2(0, 0), Vec2(1, 0), nan},
    };
    for (const auto& c : cases)
        AddContact(out, *a, *b, 0, c.pos, c.normal, c.depth);
    EXPECT_TRUE(found.empty());
    EXPECT_TRUE(log.Has("!! ERROR: Collision detection reported bad contact")) << log.Text();
    AddContact(out, *a, *b, 3, Vec2(1, 2), Vec2(0, 1), 0.5f);
    ASSERT_EQ(1u, found.size());
    ExpectContact(*found[0], a, b, 3, Vec2(1, 2), Vec2(0, 1), 0.5f);
}

TEST_F(CollisionDetection, PlaneAndCircle)
{
    Plane* plane = AddPlane(Vec2(0, 1), 0);
    Circle* circle = AddCircle(Vec2(3, 0.75f), 1);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], plane, circle, 0, Vec2(3, -0.25f), Vec2(0, 1), 0.25f);
    circle->SetPos(Vec2(3, 1.0001f));
    EXPECT_TRUE(Collide().empty());
    circle->SetPos(Vec2(3, -50));
    ASSERT_EQ(1u, Collide().size()) << "deep inside too";
    EXPECT_NEAR(51, found[0]->GetDepth(), 1e-4f);
}

TEST_F(CollisionDetection, PlaneAndBox)
{
    Plane* plane = AddPlane(Vec2(0, 1), -1); // a floor at y = 1
    Box* box = AddBox(Vec2(4, 2), Vec2(0, 1.9f));
    // Corners in the order ++, +-, --, -+: the two lower ones are 1 and 2.
    ASSERT_EQ(2u, Collide().size());
    ExpectContact(*found[0], plane, box, 1, Vec2(2, 0.9f), Vec2(0, 1), 0.1f);
    ExpectContact(*found[1], plane, box, 2, Vec2(-2, 0.9f), Vec2(0, 1), 0.1f);
    box->SetPos(Vec2(0, 2.1f));
    EXPECT_TRUE(Collide().empty());
    // On one corner: the half diagonal of a square of side 2.
    Forget();
    plane = AddPlane(Vec2(0, 1), -1);
    box = AddBox(Vec2(2, 2), Vec2(5, 2.4f), math::PIf / 4);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], plane, box, 2, Vec2(5, 2.4f - std::sqrt(2.0f)), Vec2(0, 1),
                  std::sqrt(2.0f) - 1.4f);
}

TEST_F(CollisionDetection, PlaneAndPolygon)
{
    Plane* plane = AddPlane(Vec2(0, 1), 0);
    Polygon* polygon = AddPolygon({Vec2(-1, 2), Vec2(-1, -0.5f), Vec2(1, -0.25f), Vec2(1, 2)});
    // Vertices are numbered from 0.
    ASSERT_EQ(2u, Collide().size());
    ExpectContact(*found[0], plane, polygon, 1, Vec2(-1, -0.5f), Vec2(0, 1), 0.5f);
    ExpectContact(*found[1], plane, polygon, 2, Vec2(1, -0.25f), Vec2(0, 1), 0.25f);
    polygon->SetPos(polygon->GetCenter() + Vec2(0, 0.6f));
    EXPECT_TRUE(Collide().empty());
}

TEST_F(CollisionDetection, CircleAndCircle)
{
    Circle* a = AddCircle(Vec2(0, 0), 2);
    Circle* b = AddCircle(Vec2(2.5f, 0), 1);
    // Overlap 0.5, its middle at 1.75.
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], a, b, 0, Vec2(1.75f, 0), Vec2(1, 0), 0.5f);
    b->SetPos(Vec2(1.8f, 2.4f));
    EXPECT_TRUE(Collide().empty()) << "just touching";
    b->SetPos(Vec2(1.5f, 2));
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], a, b, 0, Vec2(0.6f, 0.8f) * 1.75f, Vec2(0.6f, 0.8f), 0.5f);
    b->SetPos(Vec2(0, 0));
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], a, b, 0, Vec2(0, 0), Vec2(0, 0), 3);
}

TEST_F(CollisionDetection, CircleBesideAPolygonsEdge)
{
    Polygon* polygon = AddPolygon(square);
    Circle* circle = AddCircle(Vec2(2.75f, 0.5f), 1);
    // Lines are numbered from 1: the right side is the second.
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], circle, polygon, 2, Vec2(2, 0.5f), Vec2(-1, 0), 0.25f);
    circle->SetPos(Vec2(3.01f, 0.5f));
    EXPECT_TRUE(Collide().empty());
}

TEST_F(CollisionDetection, CircleAtAPolygonsVertex)
{
    Polygon* polygon = AddPolygon(square);
    Circle* circle = AddCircle(Vec2(2.3f, 2.4f), 1);
    // Vertices are numbered on from the lines: 4 lines, so the third vertex has 7. The nearest points
    // of both its edges are that vertex, and count once.
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], circle, polygon, 7, Vec2(2, 2), Vec2(-0.6f, -0.8f), 0.5f, 1e-4f);
}

TEST_F(CollisionDetection, CircleInANotchTouchesBothSides)
{
    Polygon* polygon = AddPolygon(corner);
    Circle* circle = AddCircle(Vec2(0.5f, 0.75f), 0.9f);
    // Line 3 is the notch's floor, line 4 its wall. The notch's vertex (0, 0) lies 0.9014 away.
    ASSERT_EQ(2u, Collide().size());
    ExpectContact(*found[0], circle, polygon, 3, Vec2(0.5f, 0), Vec2(0, -1), 0.15f);
    ExpectContact(*found[1], circle, polygon, 4, Vec2(0, 0.75f), Vec2(-1, 0), 0.4f);
    circle->SetRadius(1);
    ASSERT_EQ(3u, Collide().size()) << "and its vertex";
    const float d = std::sqrt(0.25f + 0.5625f);
    ExpectContact(*found[2], circle, polygon, 6 + 4, Vec2(0, 0), Vec2(-0.5f, -0.75f) / d, 1 - d,
                  1e-4f);
}

TEST_F(CollisionDetection, CircleInsideAPolygonHasOneContactFromTheMap)
{
    Polygon* polygon = AddPolygon(square);
    Circle* circle = AddCircle(Vec2(1.5f, 0.25f), 0.1f);
    ASSERT_EQ(1u, Collide().size());
    const Vec2 normal = polygon->NormalWorld(Vec2(1.5f, 0.25f));
    ExpectNear(Vec2(1, 0), normal, 1e-3f);
    ExpectContact(*found[0], circle, polygon, 0xFFFFFFFF, Vec2(1.5f, 0.25f), -normal,
                  0.1f - polygon->DistanceWorld(Vec2(1.5f, 0.25f)));
    EXPECT_NEAR(0.6f, found[0]->GetDepth(), 0.01f);
}

TEST_F(CollisionDetection, PolygonsTouchWithTheirVertices)
{
    Polygon* a = AddPolygon(square);
    // A tip from the right, 0.25 deep in the square.
    Polygon* b = AddPolygon({Vec2(1.75f, 0.5f), Vec2(4, -1), Vec2(4, 1.5f)});
    // b's vertices are numbered on from a's four. The square's map gives the normal, so it is first.
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], a, b, 5, Vec2(1.75f, 0.5f), Vec2(1, 0), 0.25f, 5e-3f);
    EXPECT_EQ(-a->DistanceWorld(b->GetWorldVertices()[0]), found[0]->GetDepth());
    EXPECT_EQ(a->NormalWorld(b->GetWorldVertices()[0]), found[0]->GetNormal());
}

TEST_F(CollisionDetection, TheMapsOwnerIsTheFirstGeometryOfAPolygonContact)
{
    // The tip first: now its vertex is the first of its own four... and its partner owns the map.
    Polygon* a = AddPolygon({Vec2(1.75f, 0.5f), Vec2(4, -1), Vec2(4, 1.5f)});
    Polygon* b = AddPolygon(square);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], b, a, 1, Vec2(1.75f, 0.5f), Vec2(1, 0), 0.25f, 5e-3f);
}

TEST_F(CollisionDetection, EdgesOfPolygonsCrossUnseenBetweenVertices)
{
    // A cross of two bars: no vertex lies inside the other one.
    AddPolygon({Vec2(-3, -0.5f), Vec2(3, -0.5f), Vec2(3, 0.5f), Vec2(-3, 0.5f)});
    AddPolygon({Vec2(-0.5f, -3), Vec2(0.5f, -3), Vec2(0.5f, 3), Vec2(-0.5f, 3)});
    EXPECT_TRUE(Collide().empty());
    // With sample points on the sides they are seen.
    Forget();
    Attach(Polygon::CreateBox(Vec2(-3, -0.5f), Vec2(3, 0.5f), 0));
    Attach(Polygon::CreateBox(Vec2(-0.5f, -3), Vec2(0.5f, 3), 0));
    EXPECT_EQ(4u, Collide().size());
}

TEST_F(CollisionDetection, AVertexOutsideTheOthersMapMakesNoContact)
{
    Polygon* a = AddPolygon(square);
    Polygon* b = AddPolygon({Vec2(2.5f, 0), Vec2(4, -1), Vec2(4, 1)});
    EXPECT_TRUE(Collide().empty());
    EXPECT_GT(a->DistanceWorld(b->GetWorldVertices()[0]), 0);
    EXPECT_FALSE(RoughIntersectTest(*a, *b));
}

TEST_F(CollisionDetection, RoughIntersectTestAsksCirclesBoxesAndMaps)
{
    Polygon* a = AddPolygon(square);
    Polygon* b = AddPolygon(square);
    const struct
    {
        Vec2 pos;
        bool expected;
    } cases[] = {
        {Vec2(0, 0), true},       {Vec2(3.9f, 0), true},
        {Vec2(4.1f, 0), false},                              // the boxes don't meet, the circles do
        {Vec2(3.9f, 3.9f), true}, {Vec2(4.1f, 4.1f), false}, // neither
        {Vec2(50, 0), false},
    };
    for (const auto& c : cases)
    {
        b->SetPos(c.pos);
        EXPECT_EQ(c.expected, RoughIntersectTest(*a, *b)) << c.pos;
        EXPECT_EQ(c.expected, RoughIntersectTest(*b, *a)) << c.pos;
    }
    // A small one in the notch of the L: circles and boxes meet, the L's map keeps them apart.
    Polygon* l = AddPolygon(corner);
    Polygon* small = AddPolygon({Vec2(1, 1), Vec2(1.25f, 1), Vec2(1, 1.25f)});
    EXPECT_TRUE(Intersects(l->GetBCWorld(), small->GetBCWorld()));
    EXPECT_TRUE(Intersects(l->GetOBBWorld(), small->GetOBBWorld()));
    EXPECT_FALSE(RoughIntersectTest(*l, *small));
    EXPECT_FALSE(RoughIntersectTest(*small, *l));
}

TEST_F(CollisionDetection, BoxAndPolygonByTheVerticesOfBoth)
{
    // The polygon's upper tip stands in the box's floor; the box's corner 2 stands in the polygon.
    Box* box = AddBox(Vec2(4, 2), Vec2(0, 0));
    Polygon* polygon = AddPolygon({Vec2(0, -4), Vec2(0.5f, -0.75f), Vec2(-1, -2)});
    ASSERT_EQ(1u, Collide().size());
    // Vertices are numbered from 1.
    ExpectContact(*found[0], box, polygon, 2, Vec2(0.5f, -0.75f), Vec2(0, -1), 0.25f, 1e-4f);

    Forget();
    box = AddBox(Vec2(4, 2), Vec2(0, 0));
    polygon = AddPolygon({Vec2(-6, -4), Vec2(2.5f, -4), Vec2(2.5f, -0.75f), Vec2(-6, -0.75f)});
    // The polygon's top between its vertices: only the box's two lower corners are in it, numbered on
    // from the polygon's four vertices: corner 1 (right) has 6, corner 2 (left) has 7.
    ASSERT_EQ(2u, Collide().size());
    ExpectContact(*found[0], polygon, box, 6, Vec2(2, -1), Vec2(0, 1), 0.25f, 0.02f);
    ExpectContact(*found[1], polygon, box, 7, Vec2(-2, -1), Vec2(0, 1), 0.25f, 0.02f);
    EXPECT_EQ(-polygon->DistanceWorld(Vec2(-2, -1)), found[1]->GetDepth());
}

TEST_F(CollisionDetection, BoxAndCircleFromOutside)
{
    Box* box = AddBox(Vec2(4, 2), Vec2(0, 0));
    Circle* circle = AddCircle(Vec2(0.5f, 1.75f), 1);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(0.5f, 1), Vec2(0, 1), 0.25f);
    // At a corner: 0.3 and 0.4 beyond it.
    circle->SetPos(Vec2(2.3f, 1.4f));
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(2, 1), Vec2(0.6f, 0.8f), 0.5f);
    // Within reach on both axes, but not of the corner.
    circle->SetPos(Vec2(2.8f, 1.8f));
    EXPECT_TRUE(Collide().empty());
    circle->SetPos(Vec2(3, 0));
    EXPECT_TRUE(Collide().empty()) << "just touching";
}

TEST_F(CollisionDetection, BoxAndCircleFromInside)
{
    Box* box = AddBox(Vec2(4, 2), Vec2(0, 0));
    Circle* circle = AddCircle(Vec2(1.5f, 0.25f), 0.5f);
    // The right side is nearer: 0.5 to go, plus the radius. The contact is on the circle's far side.
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(1, 0.25f), Vec2(1, 0), 1);
    circle->SetPos(Vec2(0.5f, -0.25f));
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(0.5f, 0.25f), Vec2(0, -1), 1.25f);
    // At the center of a square: the first axis, and not its positive side.
    box->SetSize(Vec2(2, 2));
    circle->SetPos(Vec2(0, 0));
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(0.5f, 0), Vec2(-1, 0), 1.5f);
}

TEST_F(CollisionDetection, BoxAndCircleInTheBoxesFrame)
{
    Box* box = AddBox(Vec2(4, 2), Vec2(10, 0), math::PIf / 2);
    Circle* circle = AddCircle(Vec2(10, 2.75f), 1);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], box, circle, 0, Vec2(10, 2), Vec2(0, 1), 0.25f);
}

TEST_F(CollisionDetection, ABoxFlatOnABoxHasTwoContactsNumberedFromTheLeft)
{
    Box* floor = AddBox(Vec2(10, 2), Vec2(0, 0));
    Box* box = AddBox(Vec2(2, 2), Vec2(1, 1.9f));
    // y separates by -0.1 on both boxes' axes. The later box wins and is the reference: its lower face,
    // normal down. The floor's top edge is cut to the face's width.
    ASSERT_EQ(2u, Collide().size());
    const unsigned left = found[0]->GetPos().x < found[1]->GetPos().x ? 0 : 1;
    ExpectContact(*found[left], box, floor, 0, Vec2(0, 1), Vec2(0, -1), 0.1f);
    ExpectContact(*found[1 - left], box, floor, 1, Vec2(2, 1), Vec2(0, -1), 0.1f);
}

TEST_F(CollisionDetection, ContactsOfRestingBoxesKeepTheirIds)
{
    AddBox(Vec2(10, 2), Vec2(0, 0));
    Box* box = AddBox(Vec2(2, 2), Vec2(1, 1.9f));
    for (float angle : {-0.01f, -0.001f, 0.0f, 0.001f, 0.01f})
    {
        box->SetWorldPose(Mat2D::TranslationRotation(Vec2(1, 1.9f), angle));
        ASSERT_EQ(2u, Collide().size()) << angle;
        const unsigned left = found[0]->GetPos().x < found[1]->GetPos().x ? 0 : 1;
        EXPECT_EQ(0u, found[left]->GetIndex()) << angle;
        EXPECT_EQ(1u, found[1 - left]->GetIndex()) << angle;
        EXPECT_NEAR(0, found[left]->GetPos().x, 0.05f);
        EXPECT_NEAR(2, found[1 - left]->GetPos().x, 0.05f);
        EXPECT_NEAR(1, std::fabs(found[0]->GetNormal().y), 1e-3f);
    }
}

TEST_F(CollisionDetection, ABoxOnItsCornerHasOneContact)
{
    Box* floor = AddBox(Vec2(10, 2), Vec2(0, 0));
    Box* box = AddBox(Vec2(2, 2), Vec2(1, 2.4f), math::PIf / 4);
    const float half = std::sqrt(2.0f);
    ASSERT_EQ(1u, Collide().size());
    ExpectContact(*found[0], floor, box, 0, Vec2(1, 2.4f - half), Vec2(0, 1), half - 1.4f);
}

TEST_F(CollisionDetection, ATiltedBoxIsCutAtTheSidesOfTheReferenceFace)
{
    // A long box, tilted a little, lies across a short one: both ends are cut at the short one's sides.
    Box* shortBox = AddBox(Vec2(2, 2), Vec2(0, 0));
    Box* longBox = AddBox(Vec2(10, 1), Vec2(0, 1.4f));
    longBox->SetWorldPose(Mat2D::TranslationRotation(Vec2(0, 1.4f), 0.05f));
    // Separations: on the short one's y 1.4 - (1 + 5 sin 0.05 + 0.5 cos 0.05) = -0.349; on the long
    // one's y 1.4 cos 0.05 - (0.5 + sin 0.05 + cos 0.05) = -0.151: the long one is the reference, and
    // the short one's top edge lies within its length.
    ASSERT_EQ(2u, Collide().size());
    const Vec2 n(std::sin(0.05f), -std::cos(0.05f));
    for (int i = 0; i < 2; ++i)
    {
        const Vec2 pos = found[i]->GetPos();
        EXPECT_NEAR(1, pos.y, 1e-5f);
        const float depth = 0.5f - Dot(pos - Vec2(0, 1.4f), n);
        ExpectContact(*found[i], longBox, shortBox, pos.x < 0 ? 0 : 1, Vec2(pos.x < 0 ? -1 : 1, 1),
                      n, depth);
    }

    // Upright across its side: cut at both of the reference's ends.
    Forget();
    shortBox = AddBox(Vec2(2, 2), Vec2(0, 0));
    longBox = AddBox(Vec2(1, 10), Vec2(1.4f, 0), 0);
    ASSERT_EQ(2u, Collide().size());
    // Both separate by -0.1; the later one is the reference, and the short one's edge lies within it.
    for (int i = 0; i < 2; ++i)
        ExpectContact(*found[i], longBox, shortBox, found[i]->GetIndex(),
                      Vec2(1, found[i]->GetPos().y < 0 ? -1 : 1), Vec2(-1, 0), 0.1f);
}

TEST_F(CollisionDetection, TheIncidentEdgeIsCutAtBothEndsWithItsDepths)
{
    // The reference is narrow, the incident box long and tilted, and the reference wins since it comes
    // last on equal values: boxes of the same tilt.
    const float a = 0.1f;
    const Mat2D turn = Mat2D::Rotation(a);
    Box* incident = AddBox(Vec2(10, 1), TransformCoordinate(turn, Vec2(1, -0.9f)), a);
    Box* reference = AddBox(Vec2(2, 1), Vec2(0, 0), a);
    ASSERT_EQ(2u, Collide().size());
    const Vec2 n = TransformNormal(turn, Vec2(0, -1));
    for (int i = 0; i < 2; ++i)
    {
        const float x = found[i]->GetPos().x < 0 ? -1.0f : 1.0f;
        ExpectContact(*found[i], reference, incident, x < 0 ? 0 : 1,
                      TransformCoordinate(turn, Vec2(x, -0.4f)), n, 0.1f, 1e-4f);
    }
}

TEST_F(CollisionDetection, BoxesApartHaveNoContact)
{
    AddBox(Vec2(2, 2), Vec2(0, 0));
    Box* box = AddBox(Vec2(2, 2), Vec2(2.001f, 0));
    EXPECT_TRUE(Collide().empty());
    box->SetPos(Vec2(0, -2.001f));
    EXPECT_TRUE(Collide().empty());
    // Their bounds overlap, but a turned axis separates.
    box->SetWorldPose(Mat2D::TranslationRotation(Vec2(1.8f, 1.8f), math::PIf / 4));
    EXPECT_TRUE(Collide().empty());
    box->SetWorldPose(Mat2D::TranslationRotation(Vec2(1.7f, 1.7f), math::PIf / 4));
    EXPECT_EQ(1u, Collide().size());
}
}
