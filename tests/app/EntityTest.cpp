#include "AppFixture.h"

#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"

using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
using EntityTest = AppFixture;

TEST_F(EntityTest, HaveIdsThatRise)
{
    const auto a = Add("Scene.addBox { entityID = 77 }");
    const auto b = Add("Scene.addBox { entityID = 77; pos = [3.0, 0.0] }");
    EXPECT_EQ(a->GetID() + 1, b->GetID());
    EXPECT_NE(77u, a->GetID());
}

TEST_F(EntityTest, TakeTheirDefaultsFromTheSimulationAsItIs)
{
    Run("Sim.defaultBodyDensity = 3.0; Sim.defaultBodyFriction = 0.25; "
        "Sim.defaultBodyRestitution = 0.75; Sim.gravity = [3.0, -4.0]");
    const auto box = Add("Scene.addBox { }");
    Run("Sim.defaultBodyDensity = 2.0; Sim.defaultBodyFriction = 0.5; "
        "Sim.defaultBodyRestitution = 0.5; Sim.gravity = [0.0, -9.8]");
    EXPECT_EQ("3", Attribute(box, "density"));
    EXPECT_EQ("0.25", Attribute(box, "friction"));
    EXPECT_EQ("0.75", Attribute(box, "restitution"));
    EXPECT_EQ("6", Attribute(box, "controllerAcc"));
    EXPECT_EQ("1", Attribute(box, "airFrictionMult"));
    EXPECT_EQ("1", Attribute(box, "collideSet"));
    EXPECT_EQ("true", Attribute(box, "collideWater"));
    for (const char* name : {"controllerReverseXY", "controllerInvertX", "controllerInvertY"})
        EXPECT_EQ("false", Attribute(box, name)) << name;
}

TEST_F(EntityTest, PushTheirAttributesToTheGeometry)
{
    const auto box = Add("Scene.addBox { friction = 0.1; restitution = 0.2; collideWater = false; "
                         "collideSet = 6; density = 5.0; airFrictionMult = 7.0 }");
    ASSERT_TRUE(box);
    const physics::Geom& geom = GeomOf(box);
    EXPECT_EQ(0.1f, geom.GetFriction());
    EXPECT_EQ(0.2f, geom.GetRestitution());
    EXPECT_FALSE(geom.GetWaterCollide());
    EXPECT_EQ(6, geom.GetCollideSet());
    EXPECT_EQ(5, geom.GetDensity());
    EXPECT_EQ(7, geom.GetAirFrictionMult());
}

TEST_F(EntityTest, ChangeTheMassOfTheirBodyAtOnce)
{
    const auto box = Add("Scene.addBox { size = [1.0, 1.0] }");
    EXPECT_EQ(2, box->GetBody()->GetMass());
    box->GetVariable("density")->SetObject(script::ValueToObject(10.0f));
    EXPECT_EQ(10, box->GetBody()->GetMass());
}

TEST_F(EntityTest, FollowAFormula)
{
    Run("k = 0.5");
    const auto box = Add("Scene.addBox { friction = { k } }");
    EXPECT_EQ(0.5f, GeomOf(box).GetFriction());
    Run("k = 0.75");
    EXPECT_EQ(0.75f, GeomOf(box).GetFriction());
}

TEST_F(EntityTest, StandWhereTheFileSays)
{
    const auto box = Add("Scene.addBox { pos = [3.0, 4.0]; angle = 0.5; size = [1.0, 2.0] }");
    EXPECT_EQ(Vec2(3, 4), GeomOf(box).GetCenter());
    EXPECT_FLOAT_EQ(0.5f, GeomOf(box).GetPose().GetAngle());
    EXPECT_EQ(Vec2(1, 2), static_cast<const physics::Box&>(GeomOf(box)).GetSize());
    const auto turned = Add("Scene.addCircle { angle = 0.5 }");
    EXPECT_EQ(Vec2(0, 0), GeomOf(turned).GetCenter());
    EXPECT_EQ(1, static_cast<const physics::Circle&>(GeomOf(turned)).GetRadius());
}

TEST_F(EntityTest, PlanesTakeANormalAndADistance)
{
    const auto floor = Add("Scene.addPlane { }");
    EXPECT_NEAR(3, GeomOf(floor).DistanceWorld(Vec2(7, 3)), 1e-5f);
    const auto wall = Add("Scene.addPlane { normal = [1.0, 0.0]; dist = 2.0 }");
    EXPECT_NEAR(7, GeomOf(wall).DistanceWorld(Vec2(5, 5)), 1e-5f);
    const auto posed = Add("Scene.addPlane { normal = [1.0, 0.0]; pos = [0.0, 1.0]; "
                           "angle = 1.5707964 }");
    EXPECT_NEAR(-1, GeomOf(posed).DistanceWorld(Vec2(3, 0)), 1e-5f);
    EXPECT_TRUE(posed->GetBody()->IsImmovable());
    // Deliberate: a place without an angle means the angle 0, and the normal then points to +x whatever
    // it was.
    const auto placed = Add("Scene.addPlane { normal = [0.0, 1.0]; pos = [0.0, 1.0] }");
    EXPECT_NEAR(3, GeomOf(placed).DistanceWorld(Vec2(3, 7)), 1e-5f);
    // The normal has any length. What it multiplies is the plane's foot, -dist times the normal.
    const auto slope = Add("Scene.addPlane { normal = [3.0, 4.0]; dist = 0.5 }");
    EXPECT_EQ(Vec2(-1.5f, -2), GeomOf(slope).GetCenter());
    EXPECT_NEAR(2.5f, GeomOf(slope).DistanceWorld(Vec2(0, 0)), 1e-5f);
    EXPECT_NEAR(7.5f, GeomOf(slope).DistanceWorld(Vec2(3, 4)), 1e-5f);
}

TEST_F(EntityTest, PolygonsKeepTheirLocalPoints)
{
    const auto poly = Add("Scene.addPolygon { pos = [5.0, 5.0]; "
                          "vecs = [[-1.0, -1.0], [1.0, -1.0], [1.0, 1.0], [-1.0, 1.0]] }");
    ASSERT_TRUE(poly);
    const auto& geom = static_cast<const physics::Polygon&>(GeomOf(poly));
    EXPECT_EQ((math::Vec2List{Vec2(-1, -1), Vec2(1, -1), Vec2(1, 1), Vec2(-1, 1)}),
              geom.GetVertices());
    EXPECT_EQ(Vec2(5, 5), geom.GetCenter());
}

TEST_F(EntityTest, ReadAnEarlierColorWithoutAlpha)
{
    FileInfo::GetInstancePtr()->SetVersion(1);
    const auto old = Add("Scene.addBox { color = [0.1, 0.2, 0.3] }");
    ASSERT_TRUE(old);
    EXPECT_EQ(Vec4(0.1f, 0.2f, 0.3f, 1), old->GetColor4());
    EXPECT_FALSE(Add("Scene.addBox { color = [0.1, 0.2, 0.3, 0.4] }"));
    FileInfo::GetInstancePtr()->SetVersion(2);
    EXPECT_FALSE(Add("Scene.addBox { color = [0.1, 0.2, 0.3] }"));
    EXPECT_EQ(Vec4(0.1f, 0.2f, 0.3f, 0.4f),
              Add("Scene.addBox { color = [0.1, 0.2, 0.3, 0.4] }")->GetColor4());
}

TEST_F(EntityTest, JoinTheGroupOfAnEarlierFile)
{
    const auto a = Add("Scene.addBox { group = 3 }");
    const auto b = Add("Scene.addBox { group = 3; pos = [3.0, 0.0] }");
    const GroupPtr group = TheScene()->GetGroupByName("group_3");
    ASSERT_TRUE(group);
    EXPECT_TRUE(group->Contains(a));
    EXPECT_TRUE(group->Contains(b));
}

TEST_F(EntityTest, AreFollowedWhenAnEarlierFileSaysSo)
{
    Add("Scene.addBox { tracked = false }");
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
    const auto box = Add("Scene.addBox { tracked = true; pos = [3.0, 0.0] }");
    ASSERT_TRUE(TheCamera()->GetTrackedGroup());
    EXPECT_TRUE(TheCamera()->GetTrackedGroup()->Contains(box));
}

TEST_F(EntityTest, CollideWithNothingWhenAnEarlierFileSaysSo)
{
    EXPECT_EQ(0, GeomOf(Add("Scene.addBox { collide = false }")).GetCollideSet());
    EXPECT_EQ(1, GeomOf(Add("Scene.addBox { collide = true }")).GetCollideSet());
}

TEST_F(EntityTest, AreSuspendedNoMoreOnceTheyEnterTheWorld)
{
    const auto box = Add("Scene.addBox { }");
    box->GetBody()->SetSuspended(true);
    box->AddToSimulation();
    EXPECT_FALSE(box->GetBody()->IsSuspended());
}

TEST_F(EntityTest, LeaveTheSceneOnceTheirBodyHasFallenOutOfTheWorld)
{
    Run("Sim.fallLimit = 50.0; Sim.gravity = [0.0, -10.0]");
    const auto falling = Add("Scene.addBox { pos = [0.0, -49.99] }");
    const auto staying = Add("Scene.addBox { pos = [0.0, -30.0] }");
    const auto floor = Add("Scene.addPlane { pos = [0.0, -90.0]; angle = 1.5707964 }");
    falling->GetBody()->SetVel(Vec2(0, -10));
    Sim()->ClearTimeDebt();
    Sim()->Update(2 * Sim()->m_timeDelta);
    EXPECT_FALSE(falling->IsAlive());
    EXPECT_TRUE(TheScene()->HasEntity(falling)) << "until the next update";
    TheScene()->Update(0.01f);
    EXPECT_FALSE(TheScene()->HasEntity(falling));
    EXPECT_TRUE(TheScene()->HasEntity(staying));
    EXPECT_TRUE(TheScene()->HasEntity(floor));
    Run("Sim.fallLimit = 1000.0");
}

TEST_F(EntityTest, AreInViewWhenTheirBoxOverlapsIt)
{
    const auto box = Add("Scene.addBox { pos = [10.0, 0.0]; size = [2.0, 2.0] }");
    EXPECT_TRUE(box->IsInView(math::BoundingBox(Vec2(-5, -5), Vec2(9.5f, 5))));
    EXPECT_TRUE(box->IsInView(math::BoundingBox(Vec2(9.5f, -0.5f), Vec2(10.5f, 0.5f))));
    EXPECT_TRUE(box->IsInView(math::BoundingBox(Vec2(-50, -50), Vec2(50, 50))));
    EXPECT_FALSE(box->IsInView(math::BoundingBox(Vec2(-5, -5), Vec2(8.5f, 5))));
    EXPECT_FALSE(box->IsInView(math::BoundingBox(Vec2(-5, 1.5f), Vec2(50, 5))));
    EXPECT_TRUE(
        Add("Scene.addPlane { }")->IsInView(math::BoundingBox(Vec2(500, 500), Vec2(501, 501))));
}

TEST_F(EntityTest, AssertThatTheirBodyKnowsThem)
{
    const auto box = Add("Scene.addBox { }");
    const physics::GeomPtr geom = box->GetGeom();
    const physics::BodyPtr body = box->GetBody();
    body->SetGeoms(physics::GeomSet());
    geom->SetBody(body.get());
    test::LogCapture log;
    EXPECT_THROW(box->RemoveFromSimulation(), BadCoderException);
    EXPECT_TRUE(log.Has("geoms.count(m_geom)")) << log.Text();
    geom->SetBody(nullptr);
}

// Every bad value costs its own statement, with a line that tells what was wrong, and leaves nothing.
TEST_F(EntityTest, WithBadValuesCostTheirOwnStatementOnly)
{
    const struct
    {
        const char *code, *line;
    } cases[] = {
        {"Scene.addBox { size = [0.0, 1.0] }", "Bad size: both sides must be above 0"},
        {"Scene.addBox { size = [-1.0, -1.0] }", "Bad size: both sides must be above 0"},
        {"Scene.addBox { size = [+inf, 1.0] }", "Bad size: both sides must be above 0"},
        {"Scene.addBox { size = [1.0e30, 1.0e30] }",
         "Bad geometry: mass and inertia are out of range"},
        {"Scene.addBox { size = [1.0e-20, 1.0e-20] }", "Bad geometry: mass"},
        {"Scene.addBox { size = \"big\" }", "Not a vector"},
        {"Scene.addBox { size = [1.0, 2.0, 3.0] }", "Not a vector"},
        {"Scene.addBox { size = { [1.0, 1.0] } }", "Not a vector"},
        {"Scene.addBox { pos = [math.divide(0.0, 0.0), 0.0] }", "Bad pos"},
        {"Scene.addBox { angle = -inf }", "Bad angle"},
        {"Scene.addBox { angle = true }", "Not a float"},
        {"Scene.addBox { color = [1.0, 0.0, 0.0, +inf] }", "Bad color"},
        {"Scene.addBox { color = 1.0 }", "Not a vector"},
        {"Scene.addBox { zDepth = math.divide(0.0, 0.0) }", "Bad zDepth"},
        {"Scene.addBox { density = 0.0 }", "Bad geometry: mass, area and inertia must be above 0"},
        {"Scene.addBox { density = -2.0 }", "Bad geometry: mass, area and inertia must be above 0"},
        {"Scene.addBox { density = math.divide(0.0, 0.0) }", "Bad geometry: mass"},
        {"Scene.addBox { density = 1.0e38; size = [10.0, 10.0] }", "out of range"},
        {"Scene.addBox { friction = +inf }", "Bad friction"},
        {"Scene.addBox { restitution = math.divide(0.0, 0.0) }", "Bad restitution"},
        {"Scene.addBox { airFrictionMult = -inf }", "Bad airFrictionMult"},
        {"Scene.addBox { controllerAcc = +inf }", "Bad controllerAcc"},
        {"Scene.addBox { controllerAcc = math.divide(0.0, 0.0) }", "Bad controllerAcc"},
        {"Scene.addBox { entityID = 1.5 }", "Not an integer"},
        {"Scene.addBox { geomID = \"a\" }", "Not an integer"},
        {"Scene.addBox { collide = 1 }", "Not a bool"},
        {"Scene.addBox { group = \"a\" }", "Not an integer"},
        {"Scene.addBox { tracked = 3 }", "Not a bool"},
        {"Scene.addBox { forceController = 3 }", "Not a string"},
        {"Scene.addCircle { radius = 0.0 }", "Bad radius: it must be above 0"},
        {"Scene.addCircle { radius = -1.0 }", "Bad radius: it must be above 0"},
        {"Scene.addCircle { radius = +inf }", "Bad radius: it must be above 0"},
        {"Scene.addCircle { radius = [1.0] }", "Not a float"},
        {"Scene.addCircle { radius = 1.0e25 }", "out of range"},
        {"Scene.addPolygon { }", "Missing key \"vecs\""},
        {"Scene.addPolygon { vecs = [] }", "Bad polygon"},
        {"Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 1.0]] }", "Bad polygon"},
        {"Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [+inf, 1.0]] }", "Bad polygon"},
        {"Scene.addPolygon { vecs = [[0.0, 1.0], [0.588, -0.809], [-0.951, 0.309], [0.951, 0.309], "
         "[-0.588, -0.809]] }",
         "Self-intersecting polygon"},
        {"Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [2.0, 0.0]] }", ""},
        {"Scene.addPolygon { vecs = [1.0, 2.0, 3.0] }", "Not a vector"},
        {"Scene.addPolygon { vecs = 3 }", "Not a list"},
        {"Scene.addPolygon { vecs = [[0.0, 0.0], [1.0e30, 0.0], [0.0, 1.0e30]] }", ""},
        {"Scene.addPolygon { vecs = [[0.0, 0.0], [1.0e-30, 0.0], [0.0, 1.0e-30]] }", ""},
        {"Scene.addPlane { normal = [0.0, 0.0] }", "Bad normal: it must have a direction"},
        {"Scene.addPlane { normal = [+inf, 0.0] }", "Bad normal: it must have a direction"},
        {"Scene.addPlane { normal = [1.0e30, 0.0]; dist = 1.0e30 }",
         "Bad geometry: its place is not finite"},
        {"Scene.addPlane { dist = math.divide(0.0, 0.0) }", "Bad dist"},
        {"Scene.addPlane { pos = [0.0, +inf] }", "Bad pos"},
        {"Scene.addBox 1",
         "Bad argument to scene creator function, must be an inline function with "
         "zero arguments (i.e.: {...} )"},
        {"Scene.addBox [{ }](0); Scene.addBox (f = { })", "Bad argument to scene creator function"},
        {"Scene.addBox math.sin", "Bad argument to scene creator function"},
        {"Scene.addBox (a) => { pos = [0.0, 0.0] }", "Bad argument to scene creator function"},
        {"Scene.addGroup { name = 3; entityIDs = [1] }", "Not a string"},
        {"Scene.addGroup { entityIDs = [1.0] }", "Not an integer"},
        {"Scene.addGroup { entityIDs = 1 }", "Not a list"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.code);
        const size_t groups = TheScene()->GetGroups().size();
        test::LogCapture log(logging::LogWarning);
        Run(util::String(c.code) + "; Scene.addCircle { pos = [50.0, 0.0] }");
        EXPECT_TRUE(log.Has("Failed to evaluate: ")) << log.Text();
        EXPECT_TRUE(log.Has(c.line)) << log.Text();
        // The next statement ran, and nothing of this one is left.
        EXPECT_EQ(1u, TheScene()->GetEntities().size());
        EXPECT_EQ(1u, BodyCount());
        EXPECT_EQ(groups, TheScene()->GetGroups().size());
        EXPECT_FALSE(TheCamera()->GetTrackedGroup());
        Reset();
    }
}

TEST_F(EntityTest, WithBadValuesStayOutOfGroups)
{
    test::LogCapture log(logging::LogWarning);
    Run("Scene.addBox { group = 3; tracked = true; density = -1.0 }");
    EXPECT_TRUE(log.Has("Bad geometry")) << log.Text();
    EXPECT_FALSE(TheScene()->GetGroupByName("group_3"));
    EXPECT_FALSE(TheCamera()->GetTrackedGroup());
}

TEST_F(EntityTest, SayWhichKeyIsBad)
{
    test::LogCapture log(logging::LogWarning);
    Run("Scene.addBox { size = [1.0, 1.0]; pos = \"here\" }");
    EXPECT_TRUE(log.Has("Bad value of key \"pos\"")) << log.Text();
}

TEST_F(EntityTest, SurviveAbsurdPlacesAndIds)
{
    for (const char* code :
         {"Scene.addBox { pos = [1.0e30, 1.0e30]; entityID = -1; geomID = -2147483648 }",
          "Scene.addCircle { pos = [-3.0e38, 3.0e38]; entityID = 2147483647 }",
          "Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]]; pos = [1.0e20, 0.0] }",
          "Scene.addPlane { pos = [3.0e38, 3.0e38]; angle = 1.0e10 }",
          "Scene.addPlane { normal = [1.0e-30, 1.0e-30]; dist = 1.0e30 }",
          "Scene.addBox { zDepth = -1.0e38; collideSet = -1; friction = -1.0e30; "
          "restitution = 1.0e30 }"})
        Run(code);
    for (int i = 0; i < 5; ++i)
        EXPECT_NO_THROW(gui::GUI::GetInstancePtr()->Update(0.02f));
    Serializer::GetInstancePtr()->SerializeScene();
}
}
}
