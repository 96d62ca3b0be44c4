#include "AppFixture.h"
#include "HeldKeys.h"

#include "app/EntitySerializer.h"
#include "app/Snapshot.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "input/DirInput.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"

#include <algorithm>
#include <ctime>
#include <limits>

using math::Vec2;
using physics::Linesegment;
using physics::LinesegmentList;

namespace app
{
namespace
{
class GeomEntityTest : public AppFixture
{
protected:
    static LinesegmentList Stroke(const std::vector<Vec2>& points)
    {
        LinesegmentList stroke;
        for (size_t i = 1; i < points.size(); ++i)
            stroke.push_back(Linesegment(points[i - 1], points[i]));
        return stroke;
    }
    static physics::PolygonPtr Lasso(float x0, float y0, float x1, float y1)
    {
        return physics::Polygon::CreateBox(Vec2(x0, y0), Vec2(x1, y1), 1);
    }
    static util::SharedPtr<FiniteGeomEntity> AddFinite(const util::String& code)
    {
        return util::DynamicCast<FiniteGeomEntity>(Add(code));
    }
    /// Above 0 when they go round counter-clockwise.
    static float SignedArea(const math::Vec2List& points)
    {
        float twice = 0;
        for (size_t i = 0; i < points.size(); ++i)
        {
            const Vec2 &a = points[i], &b = points[(i + 1) % points.size()];
            twice += a.x * b.y - a.y * b.x;
        }
        return twice / 2;
    }
    static void ExpectNear(const Vec2& expected, const Vec2& actual, float tolerance = 1e-5f)
    {
        EXPECT_NEAR(expected.x, actual.x, tolerance);
        EXPECT_NEAR(expected.y, actual.y, tolerance);
    }
};

// --- erasing ---

// Deliberate: in exactly two places, and not in two or more as the other kinds.
TEST_F(GeomEntityTest, BoxesAreErasedByExactlyTwoCrossings)
{
    const auto box = Add("Scene.addBox { size = [2.0, 2.0] }");
    const struct
    {
        const char* what;
        std::vector<Vec2> points;
        bool isErased;
    } cases[] = {
        {"misses a corner", {{0.5f, 2}, {2, 0.5f}}, false},
        {"through a corner", {{0.5f, 1.5f}, {1.5f, 0.5f}}, true},
        {"turns on a corner", {{0, 2}, {1, 1}, {2, 1.5f}}, true},
        {"along the diagonal", {{-2, -2}, {2, 2}}, true},
        {"along the diagonal, in two strokes", {{-2, 2}, {-1, 1}, {2, -2}}, true},
        {"along the diagonal, and back", {{-2, -2}, {2, 2}, {-2, -2}}, false},
        {"from a corner to a side", {{-3, -2}, {3, 1}}, true},
        {"from within a corner to another", {{1, 1}, {-1, -1}}, true},
        {"touches a side and turns back", {{-2, 0.5f}, {-1, 0.25f}, {-2, 0}}, false},
        {"turns on a side and leaves", {{-2, 0.5f}, {-1, 0.25f}, {2, 0.5f}}, true},
        {"turns on a side and ends inside", {{-2, 0.5f}, {-1, 0.25f}, {0, 0.5f}}, false},
        {"leaves straight, with a point on the side", {{0, 0}, {0, 0.5f}, {0, 1}, {0, 2}}, false},
        {"enters straight, with a point on the side", {{2, 0}, {1, 0}, {0, 0}}, false},
        {"ends on a side", {{0, 0}, {1, 0}}, false},
        {"ends on a corner from within", {{0, 0}, {1, 1}}, false},
        {"ends on a corner from without", {{2, 2}, {1, 1}}, false},
        {"passes straight, with a point on a side", {{-2, 0}, {-1, 0}, {0, 0}, {2, 0}}, true},
        {"passes straight, with points on both sides", {{-2, 0}, {-1, 0}, {1, 0}, {2, 0}}, true},
        {"leaves through a corner", {{0, 0}, {2, 2}}, true},
        {"leaves through a corner, with a point on it", {{0, 0}, {1, 1}, {2, 2}}, true},
        {"passes and comes back the same way", {{-2, 0.25f}, {2, 0.25f}, {-2, 0.25f}}, false},
        {"across a corner", {{0, 1.5f}, {1.5f, 0}}, true},
        {"through the middle, slanted", {{-2, -1.5f}, {2, 1.7f}}, true},
        {"ends inside", {{-2, 0}, {0, 0.1f}}, false},
        {"lies inside", {{-0.5f, 0}, {0.5f, 0.1f}}, false},
        {"passes by", {{-2, 3}, {2, 3}}, false},
        {"enters and leaves", {{-2, 0.1f}, {0, 0.2f}, {0.1f, 2}}, true},
        {"enters and leaves twice", {{-2, 0.1f}, {2, 0.2f}, {2, 0.5f}, {-2, 0.6f}}, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.isErased, box->ErasedBy(Stroke(c.points))) << c.what;
}

TEST_F(GeomEntityTest, BoxesGiveTheirSidesInTheOrderOfTheCorners)
{
    const auto box =
        util::DynamicCast<BoxEntity>(Add("Scene.addBox { size = [2.0, 4.0]; pos = [1.0, 1.0] }"));
    const LinesegmentList sides = box->GetSides();
    ASSERT_EQ(4u, sides.size());
    Vec2 corners[4];
    box->GetGeom()->GetOBBWorld().CalcCorners(corners);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(corners[i], sides[i].p0);
        EXPECT_EQ(corners[(i + 1) % 4], sides[i].p1);
    }
}

TEST_F(GeomEntityTest, CirclesAreErasedByMoreThanOneCrossing)
{
    const auto circle = Add("Scene.addCircle { }");
    EXPECT_TRUE(circle->ErasedBy(Stroke({{-2, 0.5f}, {2, 0.5f}})));
    EXPECT_TRUE(circle->ErasedBy(Stroke({{-2, 0.5f}, {2, 0.5f}, {-2, 0}})));
    EXPECT_TRUE(circle->ErasedBy(Stroke({{-2, 0}, {0, 0}, {2, 0}})));
    EXPECT_FALSE(circle->ErasedBy(Stroke({{-2, 0}, {0, 0}})));
    EXPECT_FALSE(circle->ErasedBy(Stroke({{-2, 2}, {2, 2}})));
    // One that only leaves may have a point on the edge.
    const float r = circle->GetAABB().GetMax().x;
    EXPECT_FALSE(circle->ErasedBy(Stroke({{0, 0}, {r, 0}, {2 * r, 0}})));
    EXPECT_TRUE(circle->ErasedBy(Stroke({{-2 * r, 0}, {-r, 0}, {r, 0}, {2 * r, 0}})));
}

TEST_F(GeomEntityTest, PolygonsAreErasedByMoreThanOneCrossing)
{
    const auto poly = Add("Scene.addPolygon { "
                          "vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]] }");
    EXPECT_TRUE(poly->ErasedBy(Stroke({{-2, 0}, {2, 0.1f}})));
    EXPECT_TRUE(poly->ErasedBy(Stroke({{-2, 0.1f}, {2, 0.2f}, {2, 0.5f}, {-2, 0.6f}})));
    EXPECT_FALSE(poly->ErasedBy(Stroke({{-2, 0}, {0, 0.1f}})));
    // One that only leaves may have a point on the edge.
    EXPECT_FALSE(poly->ErasedBy(Stroke({{0, 0}, {0, 1}, {0, 2}})));
    EXPECT_TRUE(poly->ErasedBy(Stroke({{0, -2}, {0, -1}, {0, 1}, {0, 2}})));
    EXPECT_TRUE(poly->ErasedBy(Stroke({{0.5f, 1.5f}, {1.5f, 0.5f}}))) << "through a corner";
}

TEST_F(GeomEntityTest, PlanesAreErasedByASegmentThatChangesSides)
{
    const auto plane = Add("Scene.addPlane { }");
    EXPECT_TRUE(plane->ErasedBy(Stroke({{0, 2}, {0, 1}, {1, -1}})));
    EXPECT_FALSE(plane->ErasedBy(Stroke({{0, 2}, {5, 1}, {1, 1}})));
    EXPECT_FALSE(plane->ErasedBy(Stroke({{0, -2}, {5, -1}})));
}

// --- the lasso ---

TEST_F(GeomEntityTest, LassosCatchWhatLiesInsideInWhole)
{
    const physics::PolygonPtr lasso = Lasso(-2, -2, 2, 2);
    const struct
    {
        const char* code;
        bool isContained;
    } cases[] = {
        {"Scene.addBox { size = [2.0, 2.0] }", true},
        {"Scene.addBox { size = [2.0, 2.0]; pos = [1.5, 0.0] }", false},
        {"Scene.addBox { size = [2.0, 2.0]; pos = [9.0, 0.0] }", false},
        {"Scene.addBox { size = [9.0, 9.0] }", false},
        {"Scene.addBox { size = [6.0, 0.5] }", false},
        {"Scene.addCircle { radius = 1.5 }", true},
        {"Scene.addCircle { radius = 1.5; pos = [1.0, 0.0] }", false},
        {"Scene.addCircle { radius = 1.0; pos = [9.0, 0.0] }", false},
        {"Scene.addPolygon { vecs = [[-1.0, -1.0], [1.0, -1.0], [0.0, 1.0]] }", true},
        {"Scene.addPolygon { pos = [1.5, 0.0]; vecs = [[-1.0, -1.0], [1.0, -1.0], [0.0, 1.0]] }",
         false},
        {"Scene.addPlane { }", false},
        {"Scene.addPlane { dist = -100.0 }", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.isContained, Add(c.code)->IsContainedBy(*lasso)) << c.code;
}

TEST_F(GeomEntityTest, ABoxWithASpikeOfTheLassoInItIsNotCaught)
{
    // All four corners are inside; a notch of the outline cuts into the upper side.
    const physics::PolygonPtr lasso =
        QUIB_NEW physics::Polygon({Vec2(-3, -3), Vec2(3, -3), Vec2(3, 3), Vec2(0.4f, 3), Vec2(0, 0),
                                   Vec2(-0.4f, 3), Vec2(-3, 3)});
    EXPECT_FALSE(Add("Scene.addBox { size = [3.0, 3.0] }")->IsContainedBy(*lasso));
    EXPECT_TRUE(Add("Scene.addBox { size = [1.0, 1.0]; pos = [1.5, 0.0] }")->IsContainedBy(*lasso));
}

// --- clones ---

TEST_F(GeomEntityTest, CloneEachKind)
{
    for (const char* code : {"Scene.addBox { size = [2.0, 3.0]; pos = [1.0, 2.0]; angle = 0.5 }",
                             "Scene.addCircle { radius = 2.0; pos = [1.0, 2.0]; angle = 0.5 }",
                             "Scene.addPolygon { pos = [1.0, 2.0]; angle = 0.5; "
                             "vecs = [[-1.0, -1.0], [1.0, -1.0], [0.0, 1.0]] }",
                             "Scene.addPlane { pos = [1.0, 2.0]; angle = 0.5 }"})
    {
        SCOPED_TRACE(code);
        const auto entity = Add(code);
        const GeomEntityPtr clone = entity->Clone();
        EXPECT_EQ(typeid(*entity), typeid(*clone));
        EXPECT_NE(entity->GetGeom(), clone->GetGeom());
        EXPECT_FALSE(clone->GetBody());
        EXPECT_FALSE(TheScene()->HasEntity(clone));
        EXPECT_EQ(GeomOf(entity).GetPose(), GeomOf(clone).GetPose());
        EXPECT_EQ(GeomOf(entity).Area(), GeomOf(clone).Area());
        EXPECT_EQ(entity->GetColor4(), clone->GetColor4());
        const GeomEntityPtr same = entity->ScaledClone(Vec2(1, 1));
        EXPECT_EQ(typeid(*entity), typeid(*same));
        EXPECT_EQ(GeomOf(entity).Area(), GeomOf(same).Area());
        EXPECT_EQ(GeomOf(entity).GetPose(), GeomOf(same).GetPose());
    }
}

TEST_F(GeomEntityTest, BoxesStayBoxesWhenTheirAxesStayPerpendicular)
{
    const struct
    {
        float angle;
        Vec2 scale, size;
        bool isBox;
    } cases[] = {
        {0, {3, 5}, {6, 5}, true},          {math::PIf / 2, {3, 5}, {10, 3}, true},
        {0.5f, {3, 3}, {6, 3}, true},       {0.5f, {-3, 3}, {6, 3}, true},
        {0, {-3, 5}, {6, 5}, true},         {0.5f, {3, 5}, {}, false},
        {math::PIf / 4, {2, 1}, {}, false}, {0.5f, {-3, 5}, {}, false},
        {0.5f, {3, -5}, {}, false},         {0.5f, {-3, -5}, {}, false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.angle << ", " << c.scale.x << ", " << c.scale.y);
        const auto box = Add("Scene.addBox { size = [2.0, 1.0]; pos = [7.0, 1.0]; angle = " +
                             util::ToString(c.angle) + " }");
        const GeomEntityPtr scaled = box->ScaledClone(c.scale);
        ASSERT_TRUE(scaled);
        ExpectNear(Vec2(7, 1), GeomOf(scaled).GetCenter());
        const float area = 2 * std::fabs(c.scale.x * c.scale.y);
        EXPECT_NEAR(area, GeomOf(scaled).Area(), area * 1e-4f);
        const auto asBox = util::DynamicCast<BoxEntity>(scaled);
        ASSERT_EQ(c.isBox, bool(asBox));
        if (c.isBox)
            ExpectNear(c.size, static_cast<const physics::Box&>(GeomOf(scaled)).GetSize(), 1e-4f);
        else
            EXPECT_EQ(16u,
                      static_cast<const physics::Polygon&>(GeomOf(scaled)).GetVertices().size());
    }
}

TEST_F(GeomEntityTest, SkewBoxesBecomeThePolygonOfTheirCorners)
{
    const auto box = Add("Scene.addBox { size = [2.0, 1.0]; pos = [7.0, 1.0]; angle = 0.5; "
                         "friction = 0.125; density = 3.0 }");
    // Mirrored, the corners come the other way round.
    for (const Vec2& scale : {Vec2(3, 0.5f), Vec2(-3, 0.5f), Vec2(3, -0.5f), Vec2(-3, -0.5f)})
    {
        SCOPED_TRACE(testing::Message() << scale.x << ", " << scale.y);
        const GeomEntityPtr scaled = box->ScaledClone(scale);
        ASSERT_TRUE(util::DynamicCast<PolyEntity>(scaled));
        EXPECT_EQ(0.125f, GeomOf(scaled).GetFriction());
        EXPECT_EQ(3, GeomOf(scaled).GetDensity());
        EXPECT_LT(GeomOf(scaled).DistanceWorld(Vec2(7, 1)), 0);
        EXPECT_GT(GeomOf(scaled).DistanceWorld(Vec2(7, 3)), 0);
        Vec2 corners[4];
        GeomOf(box).GetOBBWorld().CalcCorners(corners);
        const auto& polygon = static_cast<const physics::Polygon&>(GeomOf(scaled));
        const auto& vertices = polygon.GetWorldVertices();
        for (const Vec2& corner : corners)
        {
            const Vec2 wanted = Vec2(7, 1) + Vec2::Mul(scale, corner - Vec2(7, 1));
            EXPECT_TRUE(std::any_of(vertices.begin(), vertices.end(),
                                    [&](const Vec2& v) { return Distance(v, wanted) < 1e-4f; }));
        }
        EXPECT_GT(SignedArea(vertices), 0);
    }
}

TEST_F(GeomEntityTest, MirroredPolygonsKeepTheirWinding)
{
    const auto poly = Add("Scene.addPolygon { pos = [7.0, 1.0]; angle = 0.5; "
                          "vecs = [[-1.0, -1.0], [2.0, -1.0], [-1.0, 1.0]] }");
    const float area = GeomOf(poly).Area();
    for (const Vec2& scale : {Vec2(-1, 1), Vec2(1, -1), Vec2(-2, 0.5f), Vec2(-1, -1)})
    {
        SCOPED_TRACE(testing::Message() << scale.x << ", " << scale.y);
        const GeomEntityPtr scaled = poly->ScaledClone(scale);
        ASSERT_TRUE(scaled);
        const auto& polygon = static_cast<const physics::Polygon&>(GeomOf(scaled));
        EXPECT_GT(SignedArea(polygon.GetWorldVertices()), 0);
        EXPECT_NEAR(area, polygon.Area(), area * 1e-4f);
        EXPECT_LT(polygon.DistanceWorld(polygon.GetCenter()), 0);
    }
}

TEST_F(GeomEntityTest, TheRatioOfACircleRisesAndFalls)
{
    const struct
    {
        float x, y, expected;
    } cases[] = {{0, 4, 0}, {1, 4, 0.5f}, {2, 4, 1}, {3, 4, 0.5f}, {4, 4, 0}, {-1, -4, 0.5f}};
    for (const auto& c : cases)
        EXPECT_FLOAT_EQ(c.expected, CircConverter(c.x, c.y)) << c.x;
    test::LogCapture log;
    for (const Vec2& bad : {Vec2(5, 4), Vec2(-1, 4), Vec2(0, 0)})
        EXPECT_THROW(CircConverter(bad.x, bad.y), BadCoderException);
    EXPECT_TRUE(log.Has("0 <= c && c <= 2")) << log.Text();
}

TEST_F(GeomEntityTest, CirclesBecomeEllipses)
{
    const auto circle = Add("Scene.addCircle { radius = 2.0; pos = [7.0, 1.0]; density = 3.0 }");
    for (const Vec2& scale : {Vec2(3, 3), Vec2(-3, 3), Vec2(3, -3)})
    {
        const GeomEntityPtr round = circle->ScaledClone(scale);
        ASSERT_TRUE(util::DynamicCast<CircleEntity>(round));
        EXPECT_EQ(6, static_cast<const physics::Circle&>(GeomOf(round)).GetRadius());
    }
    const GeomEntityPtr ellipse = circle->ScaledClone(Vec2(3, 0.5f));
    ASSERT_TRUE(util::DynamicCast<PolyEntity>(ellipse));
    EXPECT_NEAR(math::PIf * 6, GeomOf(ellipse).Area(), 0.05f);
    ExpectNear(Vec2(7, 1), GeomOf(ellipse).GetCenter(), 1e-4f);
    EXPECT_NEAR(13, GeomOf(ellipse).GetAABBWorld().GetMax().x, 1e-3f);
    EXPECT_NEAR(2, GeomOf(ellipse).GetAABBWorld().GetMax().y, 1e-3f);
    EXPECT_EQ(3, GeomOf(ellipse).GetDensity());
}

TEST_F(GeomEntityTest, PlanesTurnWithWhatRestsOnThem)
{
    const auto plane = Add("Scene.addPlane { normal = [-0.6, 0.8]; dist = 0.0 }");
    const GeomEntityPtr scaled = plane->ScaledClone(Vec2(2, 1));
    const auto& geom = static_cast<const physics::Plane&>(GeomOf(scaled));
    ExpectNear(Normalized(Vec2(-0.3f, 0.8f)), geom.GetPlane().normal);
    // A point of the old edge, stretched, lies on the new one.
    EXPECT_NEAR(0, geom.DistanceWorld(Vec2(8 * 2, 6)), 1e-5f);
    const GeomEntityPtr mirrored = plane->ScaledClone(Vec2(-1, 1));
    ExpectNear(Vec2(0.6f, 0.8f),
               static_cast<const physics::Plane&>(GeomOf(mirrored)).GetPlane().normal);
}

TEST_F(GeomEntityTest, CannotBeScaledToNothing)
{
    for (const char* code :
         {"Scene.addBox { }", "Scene.addBox { angle = 0.5 }", "Scene.addCircle { }",
          "Scene.addPlane { }", "Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]] }"})
    {
        const auto entity = Add(code);
        test::LogCapture log(logging::LogInfo);
        EXPECT_FALSE(entity->ScaledClone(Vec2(0, 0))) << code;
        EXPECT_TRUE(log.Has("Bad polygon")) << log.Text();
    }
}

TEST_F(GeomEntityTest, CopyFromTakesWhatTheTwoHaveInCommon)
{
    const auto box =
        AddFinite("Scene.addBox { friction = 0.125; density = 5.0; controllerAcc = 2.0; "
                  "collideSet = 3; forceController = \"joy 1\" }");
    box->SetZDepth(17);
    const auto circle = AddFinite("Scene.addCircle { }");
    circle->CopyFrom(box.get());
    EXPECT_EQ(box->GetColor4(), circle->GetColor4());
    EXPECT_EQ(17, circle->GetZDepth());
    for (const char* name : {"friction", "density", "controllerAcc", "collideSet"})
        EXPECT_EQ(Attribute(box, name), Attribute(circle, name)) << name;
    const auto plane = Add("Scene.addPlane { }");
    plane->CopyFrom(box.get());
    EXPECT_EQ("0.125", Attribute(plane, "friction"));
    EXPECT_EQ(17, plane->GetZDepth());
    circle->CopyFrom(plane.get());
    EXPECT_EQ("5", Attribute(circle, "density"));
}

// --- moving ---

TEST_F(GeomEntityTest, DoesNotMoveWithoutABody)
{
    const GeomEntityPtr clone = Add("Scene.addBox { }")->Clone();
    clone->Transform(math::Mat2D::Translation(Vec2(3, 0)));
    EXPECT_EQ(Vec2(0, 0), GeomOf(clone).GetCenter());
}

TEST_F(GeomEntityTest, MovesAloneWithinItsBody)
{
    const auto a = Add("Scene.addBox { size = [1.0, 1.0] }");
    const auto b = Add("Scene.addBox { size = [1.0, 1.0]; pos = [1.0, 0.0] }");
    a->GetBody()->AddGeom(b->GetGeom());
    b->Transform(math::Mat2D::Translation(Vec2(2, 0)));
    ExpectNear(Vec2(0, 0), GeomOf(a).GetCenter());
    ExpectNear(Vec2(3, 0), GeomOf(b).GetCenter());
    ExpectNear(Vec2(1.5f, 0), a->GetBody()->GetPos());
}

TEST_F(GeomEntityTest, PlanesArePartOfTheWorldBody)
{
    const auto plane = Add("Scene.addPlane { }");
    EXPECT_EQ(Sim()->GetWorldBody(), plane->GetBody());
    EXPECT_EQ(1u, Sim()->GetBodies().size());
    TheScene()->FlushBodies();
    EXPECT_TRUE(plane->IsAlive());
    TheScene()->RemoveEntity(plane);
    EXPECT_FALSE(plane->GetBody());
    EXPECT_EQ(1u, Sim()->GetWorldBody()->GetGeoms().size());
    EXPECT_TRUE(Sim()->HasBody(Sim()->GetWorldBody()));
}

// --- energy ---

TEST_F(GeomEntityTest, HasTheEnergyOfItsMotionAndItsHeight)
{
    Run("Sim.gravity = [0.0, -10.0]");
    const auto box =
        AddFinite("Scene.addBox { size = [2.0, 1.0]; pos = [3.0, 4.0]; density = 2.0 }");
    const float mass = 4, inertia = mass * 5 / 12;
    EXPECT_FLOAT_EQ(mass * 10 * 4, box->CalcEnergy());
    box->GetBody()->SetVel(Vec2(3, 4));
    box->GetBody()->SetAngVel(2);
    EXPECT_FLOAT_EQ(mass * 40 + 0.5f * mass * 25 + 0.5f * inertia * 4, box->CalcEnergy());
    Run("Sim.gravitySwitch = false");
    EXPECT_FLOAT_EQ(0.5f * mass * 25 + 0.5f * inertia * 4, box->CalcEnergy());
    TheScene()->RemoveEntity(box);
    EXPECT_EQ(0, box->CalcEnergy());
    EXPECT_EQ(0, Add("Scene.addPlane { }")->CalcEnergy());
}

TEST_F(GeomEntityTest, MovesAtTheSpeedOfItsOwnPlaceInTheBody)
{
    Run("Sim.gravitySwitch = false");
    const auto a = AddFinite("Scene.addBox { size = [1.0, 1.0]; density = 1.0 }");
    const auto b = AddFinite("Scene.addBox { size = [1.0, 1.0]; pos = [4.0, 0.0]; density = 1.0 }");
    a->GetBody()->AddGeom(b->GetGeom());
    a->GetBody()->SetAngVel(3);
    // Each is 2 away from the middle: at speed 6, and turning by itself.
    const float one = 0.5f * 36 + 0.5f * 9 / 6;
    EXPECT_NEAR(one, a->CalcEnergy(), 1e-4f);
    EXPECT_NEAR(2 * one, a->CalcEnergy() + b->CalcEnergy(), 1e-4f);
    const physics::Body& body = *a->GetBody();
    EXPECT_NEAR(2 * one, 0.5f * body.GetInertia() * 9, 1e-3f);
}

// --- water ---

TEST_F(GeomEntityTest, LiquifiesToAsManyParticlesAsFit)
{
    const float r = physics::SPH::GetInstancePtr()->m_radius;
    const int limit = App::GetInstancePtr()->GetMaxSPHSpawn();
    // 12 by 12 of them, each with half a radius squared of room.
    const float side = 12 * r * std::sqrt(0.5f) * 1.0001f;
    const auto box = AddFinite("Scene.addBox { size = [" + util::ToString(side) + ", " +
                               util::ToString(side) + "]; pos = [3.0, 2.0] }");
    ASSERT_GE(limit, 144);
    const std::vector<Vec2> points = box->GetEquidistantPoints();
    EXPECT_EQ(144u, points.size());
    for (const Vec2& p : points)
        EXPECT_LT(GeomOf(box).DistanceWorld(p), 0);
    // Half a spacing inside.
    EXPECT_NEAR(3 - side / 2 + side / 24, points[0].x, 1e-3f);
    EXPECT_NEAR(2 - side / 2 + side / 24, points[0].y, 1e-3f);
    EXPECT_NEAR(side / 12, points[1].x - points[0].x, 1e-3f);
}

TEST_F(GeomEntityTest, LiquifiesWithoutHoles)
{
    // By its area 76, while whole rows of that spacing are 9 of 9.
    EXPECT_EQ(81u,
              AddFinite("Scene.addBox { size = [0.31, 0.31] }")->GetEquidistantPoints().size());
}

TEST_F(GeomEntityTest, SpreadsTheWaterWhenThereWouldBeTooMuch)
{
    const auto limit = static_cast<size_t>(App::GetInstancePtr()->GetMaxSPHSpawn());
    // Whole rows of thin ones would be too many, or none at all.
    for (const char* settings :
         {"size = [20.0, 20.0]; angle = 0.5", "size = [1000.0, 0.7]; angle = 0.5",
          "size = [0.7, 1000.0]; angle = 0.5", "size = [10000.0, 0.102]; angle = 0.5",
          "size = [1.0e6, 0.001]", "size = [1.0e8, 1.0e-5]"})
    {
        SCOPED_TRACE(settings);
        const auto box =
            AddFinite(util::String("Scene.addBox { density = 1.0e-10; ") + settings + " }");
        ASSERT_TRUE(box);
        const std::vector<Vec2> points = box->GetEquidistantPoints();
        EXPECT_LE(points.size(), limit);
        EXPECT_GE(points.size(), limit - limit / 10);
        // As much in each tenth of its length, to the end.
        const math::OBB2D obb = GeomOf(box).GetOBBWorld();
        const int axis = obb.GetHalf(0) > obb.GetHalf(1) ? 0 : 1;
        std::vector<size_t> tenths(10);
        for (const Vec2& p : points)
        {
            const float part = Dot(p - obb.GetCenter(), obb.GetAxis(axis)) / obb.GetHalf(axis);
            ++tenths[std::clamp(int((part + 1) * 5), 0, 9)];
        }
        for (const size_t tenth : tenths)
            EXPECT_NEAR(0.1, double(tenth) / double(points.size()), 0.02);
    }
}

TEST_F(GeomEntityTest, MakesWaterOfWhateverHoldsAParticle)
{
    // One particle of half a radius squared: too thin for any square grid, or an L around its box's
    // empty middle.
    for (const char* code : {"Scene.addBox { size = [1.3, 0.001] }",
                             "Scene.addBox { size = [0.001, 1.3]; angle = 1.0 }",
                             "Scene.addPolygon { vecs = [[0.0, 0.0], [0.5, 0.0], [0.5, 0.01], "
                             "[0.01, 0.01], [0.01, 0.5], "
                             "[0.0, 0.5]] }"})
    {
        const auto entity = AddFinite(code);
        ASSERT_TRUE(entity) << code;
        const std::vector<Vec2> points = entity->GetEquidistantPoints();
        EXPECT_FALSE(points.empty()) << code;
        for (const Vec2& p : points)
            EXPECT_LT(GeomOf(entity).DistanceWorld(p), 0) << code;
    }
}

TEST_F(GeomEntityTest, LooksForPlacesOfWaterWithinReason)
{
    // Long arms around an empty box: the full grid would have up to 1e13 points.
    for (const char* length : {"1.0e3", "1.0e6", "1.0e7"})
    {
        SCOPED_TRACE(length);
        const util::String l = length;
        const auto entity = AddFinite(
            "Scene.addPolygon { density = 1.0e-10; vecs = [[0.0, 0.0], [" + l + ", 0.0], [" + l +
            ", 1.0], [1.0, 1.0], [1.0, " + l + "], [0.0, " + l + "]] }");
        ASSERT_TRUE(entity);
        const std::clock_t start = std::clock();
        const std::vector<Vec2> points = entity->GetEquidistantPoints();
        EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, 3);
        EXPECT_FALSE(points.empty());
    }
}

TEST_F(GeomEntityTest, TellsOfAShapeWithoutAPlaceForWater)
{
    // It has an area, but nothing lies inside.
    const auto box = AddFinite("Scene.addBox { }");
    box->GetGeom()->SetPos(Vec2(std::numeric_limits<float>::quiet_NaN(), 0));
    test::LogCapture log(logging::LogWarning);
    EXPECT_TRUE(box->GetEquidistantPoints().empty());
    EXPECT_TRUE(log.Has("Found no place for water in the shape")) << log.Text();
}

TEST_F(GeomEntityTest, LeavesOutWhatLiesOutsideTheShape)
{
    const auto circle = AddFinite("Scene.addCircle { radius = 1.0 }");
    const std::vector<Vec2> points = circle->GetEquidistantPoints();
    EXPECT_FALSE(points.empty());
    for (const Vec2& p : points)
        EXPECT_LT(p.Length(), 1);
}

TEST_F(GeomEntityTest, MakesNoWaterOfASpeck)
{
    EXPECT_TRUE(
        AddFinite("Scene.addBox { size = [0.001, 0.001] }")->GetEquidistantPoints().empty());
}

// --- controllers ---

TEST_F(GeomEntityTest, IsPushedByItsController)
{
    const auto box =
        AddFinite("Scene.addBox { size = [1.0, 1.0]; density = 2.0; "
                  "controllerAcc = 3.0; forceController = \"keys up right down left\" }");
    ASSERT_TRUE(box->GetForceController());
    const auto force = [&]
    {
        box->GetBody()->ClearForces();
        TheScene()->Update(0.01f);
        return box->GetBody()->GetForce();
    };
    const auto set = [&](const char* name, bool value)
    { box->GetVariable(name)->SetObject(script::ValueToObject(value)); };
    EXPECT_EQ(Vec2(0, 0), force());
    {
        const test::HeldKeys held{SDLK_RIGHT};
        EXPECT_EQ(Vec2(6, 0), force());
        set("controllerReverseXY", true);
        EXPECT_EQ(Vec2(0, 6), force());
        // The inversions come after the swap.
        set("controllerInvertX", true);
        EXPECT_EQ(Vec2(0, 6), force());
        set("controllerInvertY", true);
        EXPECT_EQ(Vec2(0, -6), force());
    }
    EXPECT_EQ(Vec2(0, 0), force());
    box->SetForceController(nullptr);
    const test::HeldKeys held{SDLK_RIGHT};
    EXPECT_EQ(Vec2(0, 0), force());
}

TEST_F(GeomEntityTest, PushesWithItsOwnMassAtItsOwnPlace)
{
    const auto a =
        AddFinite("Scene.addBox { size = [1.0, 1.0]; density = 2.0; controllerAcc = 3.0; "
                  "forceController = \"keys up right down left\" }");
    const auto b = AddFinite("Scene.addBox { size = [1.0, 1.0]; density = 2.0; pos = [4.0, 0.0] }");
    a->GetBody()->AddGeom(b->GetGeom());
    a->GetBody()->ClearForces();
    const test::HeldKeys held{SDLK_UP};
    TheScene()->Update(0.01f);
    EXPECT_EQ(Vec2(0, 6), a->GetBody()->GetForce());
    EXPECT_FLOAT_EQ(-12, a->GetBody()->GetTorque());
}

TEST_F(GeomEntityTest, KeepsPushingWhilePausedButDoesNotMove)
{
    Sim()->m_running = false;
    const auto box = AddFinite("Scene.addBox { forceController = \"keys up right down left\" }");
    const test::HeldKeys held{SDLK_RIGHT};
    App::GetInstancePtr()->Update(0.02f);
    EXPECT_LT(0, box->GetBody()->GetForce().x);
    App::GetInstancePtr()->Update(0.02f);
    EXPECT_EQ(Vec2(0, 0), GeomOf(box).GetCenter());
    EXPECT_EQ(Vec2(0, 0), box->GetBody()->GetVel());
}

TEST_F(GeomEntityTest, KeepsAControllerThatCannotBeBoundHere)
{
    const auto box = AddFinite("Scene.addBox { forceController = \"joy 3 0 1\" }");
    EXPECT_FALSE(box->GetForceController());
    EXPECT_NE(util::String::npos, Serializer::GetInstancePtr()->SerializeScene().find(
                                      "forceController = \"joy 3 0 1\""));
    box->SetForceController(input::DirInput::Deserialize("keys up right down left"));
    EXPECT_NE(util::String::npos, Serializer::GetInstancePtr()->SerializeScene().find(
                                      "forceController = \"keys up right down left\""));
    box->SetForceController(nullptr);
    EXPECT_EQ(util::String::npos,
              Serializer::GetInstancePtr()->SerializeScene().find("forceController"));
}

TEST_F(GeomEntityTest, SaysOnceOnlyThatAControllerCannotBeBoundHere)
{
    test::LogCapture log(logging::LogWarning);
    const auto box = AddFinite("Scene.addBox { forceController = \"joy 0 axis 0 1\" }");
    EXPECT_EQ(1u, log.Count("No joystick connected"));
    TheScene()->CreateClone(QUIB_NEW Group(EntityPtr(box)));
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    for (int i = 0; i < 3; ++i)
    {
        box->SetForceController(input::DirInput::Deserialize("keys up right down left"));
        box->SetForceController(nullptr);
        TheScene()->RemoveEntity(box);
        before->Restore();
        // Not to be taken for a repetition, which is left out.
        logging::Logger::GetInstancePtr()->Update();
        logging::Logger::GetInstancePtr()->Update();
    }
    log.Clear();
    before->Restore();
    EXPECT_EQ(0u, log.Lines().size()) << log.Text();
    EXPECT_NE(util::String::npos, Serializer::GetInstancePtr()->SerializeScene().find(
                                      "forceController = \"joy 0 axis 0 1\""));
}

TEST_F(GeomEntityTest, KeepsTheControllerThatItHas)
{
    const auto box = AddFinite("Scene.addBox { forceController = \"keys up right down left\" }");
    const input::DirInputPtr controller = box->GetForceController();
    EntitySerializer bag;
    box->SerializeTo(bag);
    box->Deserialize(bag);
    EXPECT_EQ(controller, box->GetForceController());
    bag.Set("forceController", util::String("keys a right down left"));
    box->Deserialize(bag);
    EXPECT_EQ("keys a right down left", box->GetForceController()->Serialize());
}

TEST_F(GeomEntityTest, IsUnboundByAnEmptyTextWithoutAWord)
{
    const auto box = AddFinite("Scene.addBox { forceController = \"keys up right down left\" }");
    EntitySerializer bag(EntitySerializer::Defaults::Keep);
    AddFinite("Scene.addBox { }")->SerializeTo(bag);
    EXPECT_EQ("", bag.Get<util::String>("forceController"));
    test::LogCapture log(logging::LogWarning);
    box->Deserialize(bag);
    EXPECT_FALSE(box->GetForceController());
    EXPECT_EQ(0u, log.Lines().size()) << log.Text();
}

// --- defaults ---

TEST_F(GeomEntityTest, WritesWhatANewEntityWouldNotHave)
{
    // Made of a geometry that differs from what is new.
    const physics::BoxPtr geom = QUIB_NEW physics::Box(Vec2(1, 1), Vec2());
    geom->SetFriction(0.125f);
    geom->SetDensity(7);
    geom->SetAirFrictionMult(3);
    geom->SetCollideSet(6);
    geom->SetWaterCollide(false);
    const util::SharedPtr<BoxEntity> box = QUIB_NEW BoxEntity(geom);
    EXPECT_EQ("0.125", Attribute(box, "friction"));
    TheScene()->AddEntity(box);
    const util::String text = Serializer::GetInstancePtr()->SerializeScene();
    for (const char* line : {"friction = 0.125", "density = 7.0", "airFrictionMult = 3.0",
                             "collideSet = 6", "collideWater = false"})
        EXPECT_NE(util::String::npos, text.find(line)) << line;
    EXPECT_EQ(util::String::npos, text.find("restitution"));
    // What is loaded from that says the same.
    TheScene()->ClearScene();
    Serializer::GetInstancePtr()->Deserialize(text);
    EXPECT_EQ(text, Serializer::GetInstancePtr()->SerializeScene());
}

TEST_F(GeomEntityTest, TakesTheGravityAtHandForTheDefaultOfTheController)
{
    Run("Sim.gravity = [0.0, -9.0]");
    const auto box = Add("Scene.addBox { }");
    const auto writes = []
    {
        const util::String text = Serializer::GetInstancePtr()->SerializeScene();
        return text.find("controllerAcc") != util::String::npos;
    };
    EXPECT_EQ("10", Attribute(box, "controllerAcc"));
    EXPECT_FALSE(writes());
    Run("Sim.gravity = [3.0, -4.0]");
    EXPECT_EQ("10", Attribute(box, "controllerAcc"));
    EXPECT_TRUE(writes());
    box->GetVariable("controllerAcc")->SetObject(script::ValueToObject(6.0f));
    EXPECT_FALSE(writes());
}
}
}
