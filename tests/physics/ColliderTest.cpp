#include "physics/Collider.h"

#include "Dice.h"
#include "GeomFixture.h"
#include "PlainCollider.h"
#include "physics/BoundsList.h"
#include "physics/PointList.h"
#include "physics/SPH.h"
#include "physics/WorldGeom.h"
#include "util/ScopeProfiler.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace physics
{
using math::Mat2D;
using math::Vec2;
using math::Vec2List;

namespace
{
const float inf = std::numeric_limits<float>::infinity();
const float nan = std::numeric_limits<float>::quiet_NaN();

bool SameBits(const Vec2& a, const Vec2& b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}
bool SameBits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

class ColliderTest : public GeomFixture
{
protected:
    ~ColliderTest() override { sph.m_radius = 0.05f; }

    /// @return  how many contacts there were
    size_t ExpectSameAsPlain(const std::string& world)
    {
        Collide();
        PlainCollider plain;
        plain.Collide(bodies, particles);
        EXPECT_EQ(plain.found.size(), found.size()) << world;
        for (size_t i = 0; i < plain.found.size() && i < found.size(); ++i)
        {
            const PlainCollider::Found& expected = plain.found[i];
            const Contact& actual = *found[i];
            const bool isSame = ContactID(expected.g1->GetID(), expected.g2->GetID(),
                                          expected.id) == actual.GetContactID() &&
                                expected.g1->GetBodyPtr() == actual.GetBodyPtr(0) &&
                                expected.g2->GetBodyPtr() == actual.GetBodyPtr(1) &&
                                SameBits(expected.pos, actual.GetPos()) &&
                                SameBits(expected.normal, actual.GetNormal()) &&
                                SameBits(expected.depth, actual.GetDepth());
            EXPECT_TRUE(isSame) << world << ", contact " << i;
            if (!isSame)
                break;
        }
        return plain.found.size();
    }

    SPH& sph = *SPH::GetInstancePtr();

    /// A few outlines of every kind, made once: clones are cheap.
    static const std::vector<PolygonPtr>& Outlines()
    {
        static std::vector<PolygonPtr>* s_outlines = nullptr;
        if (!s_outlines)
        {
            s_outlines = new std::vector<PolygonPtr>;
            const auto add = [](const Vec2List& points)
            {
                PolygonPtr p = QUIB_NEW Polygon(points);
                s_outlines->push_back(p);
            };
            add({Vec2(-1, -1), Vec2(1, -1), Vec2(0, 1)});
            add({Vec2(-1, -1), Vec2(1, -1), Vec2(1, 0), Vec2(0, 0), Vec2(0, 1), Vec2(-1, 1)});
            add({Vec2(-2, -0.05f), Vec2(2, -0.05f), Vec2(2, 0.05f), Vec2(-2, 0.05f)});
            add({Vec2(-0.01f, -0.01f), Vec2(0.02f, 0), Vec2(0, 0.03f)});
            s_outlines->push_back(Polygon::CreateBox(Vec2(-1, -0.5f), Vec2(1, 0.5f), 0));
            Vec2List star;
            for (int i = 0; i < 40; ++i)
            {
                const float a = math::TwoPIf * i / 40, r = i % 2 ? 1.0f : 0.6f;
                star.push_back(Vec2(r * std::cos(a), r * std::sin(a)));
            }
            add(star);
        }
        return *s_outlines;
    }

    GeomPtr RandomGeom(test::Dice& dice, float spread, float size, Vec2 offset)
    {
        const Vec2 pos(offset.x + dice.Uniform(-spread, spread),
                       offset.y + dice.Uniform(-spread, spread));
        const float angle = dice.OneIn(3) ? 0 : dice.Uniform(-4, 4);
        GeomPtr geom;
        switch (dice.Int(0, 12))
        {
        case 0:
            geom = QUIB_NEW Plane(math::Plane2D(Vec2(std::cos(angle), std::sin(angle)),
                                                dice.Uniform(-spread, spread)));
            break;
        case 1:
        case 2:
        case 3:
            geom = QUIB_NEW Circle(pos, size * dice.Uniform(0.05f, 1));
            break;
        case 4:
        case 5:
        case 6:
            geom = Outlines()[dice.Int(0, static_cast<int>(Outlines().size()))]->Clone();
            geom->SetWorldPose(Mat2D::TranslationRotation(pos, angle));
            break;
        default:
            geom = QUIB_NEW Box(Vec2(size * dice.Uniform(0.05f, 2), size * dice.Uniform(0.05f, 2)),
                                pos);
            geom->SetWorldPose(Mat2D::TranslationRotation(pos, angle));
        }
        geom->SetCollideSet(dice.OneIn(4) ? dice.Int(0, 64) : 1);
        return geom;
    }

    void RandomWater(test::Dice& dice, int count, float spread, Vec2 offset)
    {
        for (int i = 0; i < count; ++i)
            AddParticle(offset +
                        Vec2(dice.Uniform(-spread, spread), dice.Uniform(-spread, spread)));
        for (const BodyPtr& body : bodies)
            for (const Body::BodyPart& part : body->GetParts())
                part.geom->SetWaterCollide(!dice.OneIn(4));
    }

    void RandomWorld(test::Dice& dice, int bodyCount, float spread, float size, Vec2 offset)
    {
        std::vector<GeomPtr> all;
        for (int i = 0; i < bodyCount; ++i)
        {
            BodyPtr body = QUIB_NEW Body;
            GeomSet set;
            const int n = dice.OneIn(5) ? dice.Int(1, 4) : 1;
            for (int k = 0; k < n; ++k)
            {
                all.push_back(RandomGeom(dice, spread, size, offset));
                set.insert(all.back());
            }
            body->SetGeoms(set);
            body->SetSuspended(dice.OneIn(6));
            bodies.push_back(body);
        }
        for (const GeomPtr& geom : all)
            if (dice.OneIn(5))
                geom->AddNoCollide(all[dice.Int(0, static_cast<int>(all.size()))].get());
    }
};
}

TEST_F(ColliderTest, AgreesWithThePlainLoopsInRandomWorlds)
{
    test::Dice dice;
    size_t contacts = 0;
    for (int round = 0; round < 800; ++round)
    {
        const float spread = std::pow(10.0f, dice.Uniform(-0.5f, 1.5f));
        RandomWorld(dice, dice.Int(2, 120), spread, 1, Vec2());
        if (dice.OneIn(3))
            RandomWater(dice, dice.Int(1, 80), 1.2f * spread, Vec2());
        contacts += ExpectSameAsPlain("round " + std::to_string(round));
        Forget();
        if (HasFailure())
            return;
    }
    EXPECT_GT(contacts, 50000u);
}

TEST_F(ColliderTest, AgreesWithThePlainLoopsInCrowdedWorlds)
{
    // Enough of each type for its grid.
    test::Dice dice(5);
    size_t contacts = 0;
    for (int round = 0; round < 25; ++round)
    {
        RandomWorld(dice, dice.Int(300, 700), 20, dice.Uniform(0.2f, 1.5f),
                    dice.OneIn(2) ? Vec2() : Vec2(-3e4f, 1e4f));
        if (dice.OneIn(2))
            RandomWater(dice, dice.Int(1, 700), 20, Vec2());
        // A few are nowhere, far off, or everywhere.
        for (const BodyPtr& body : bodies)
            for (const Body::BodyPart& part : body->GetParts())
                if (dice.OneIn(100) && part.geom->GetKind() != GeomKind::Plane)
                {
                    const float odd[] = {nan, inf, 1e9f, -3e38f};
                    Mat2D pose = part.geom->GetPose();
                    (dice.OneIn(2) ? pose.x : pose.sin) = odd[dice.Int(0, 4)];
                    part.geom->SetWorldPose(pose);
                }
        contacts += ExpectSameAsPlain("round " + std::to_string(round));
        Forget();
        if (HasFailure())
            return;
    }
    EXPECT_GT(contacts, 10000u);
}

TEST_F(ColliderTest, AgreesWithThePlainLoopsInHugeAndTinyWorlds)
{
    test::Dice dice(2);
    size_t contacts = 0;
    for (int round = 0; round < 1000; ++round)
    {
        const float size = std::pow(10.0f, dice.Uniform(-40, 38));
        const float far = dice.OneIn(2) ? 0 : size * std::pow(10.0f, dice.Uniform(0, 8));
        RandomWorld(dice, dice.Int(2, 60), 3, 1, Vec2());
        for (const BodyPtr& body : bodies)
            for (const Body::BodyPart& part : body->GetParts())
            {
                // Behind the body's back, which need not bear such masses.
                Geom& geom = *part.geom;
                geom.SetBody(nullptr);
                if (Circle* circle = dynamic_cast<Circle*>(&geom))
                    circle->SetRadius(size * circle->GetRadius());
                if (Box* box = dynamic_cast<Box*>(&geom))
                    box->SetSize(size * box->GetSize());
                geom.SetPos(size * geom.GetCenter() + Vec2(far, -far));
                geom.SetBody(body.get());
            }
        if (dice.OneIn(3))
        {
            sph.m_radius = 10 * size * dice.Uniform(0, 1);
            RandomWater(dice, dice.Int(1, 80), 4 * size, Vec2(far, -far));
        }
        contacts += ExpectSameAsPlain("round " + std::to_string(round));
        Forget();
        if (HasFailure())
            return;
    }
    EXPECT_GT(contacts, 50000u);
}

TEST_F(ColliderTest, AgreesWithThePlainLoopsWhereThingsJustTouch)
{
    // Edge to edge, up to a few last bits, far from the origin and turned together.
    test::Dice dice(3);
    size_t contacts = 0;
    for (int round = 0; round < 300; ++round)
    {
        const float far = std::pow(10.0f, dice.Uniform(-3, 6));
        const Mat2D turn =
            Mat2D::TranslationRotation(Vec2(far, -far), dice.OneIn(3) ? 0 : dice.Uniform(-3, 3));
        for (int x = 0; x < 6; ++x)
            for (int y = 0; y < 6; ++y)
            {
                const float jitter = 1 + dice.Int(-3, 4) * FLT_EPSILON;
                Vec2 pos = TransformCoordinate(turn, Vec2(x * jitter, y * jitter));
                if (dice.OneIn(3))
                {
                    AddCircle(pos, 0.5f);
                    continue;
                }
                BoxPtr box = QUIB_NEW Box(Vec2(1, 1), Vec2());
                box->SetWorldPose(Mat2D(turn.cos, turn.sin, pos.x, pos.y));
                Attach(box);
            }
        AddPlane(Vec2(turn.cos, turn.sin), 0);
        AddPlane(Vec2(0, 1), far + 0.5f);
        for (int i = 0; i < 30; ++i)
        {
            const float jitter = 1 + dice.Int(-3, 4) * FLT_EPSILON;
            AddParticle(TransformCoordinate(
                turn, Vec2(0.505f * jitter * dice.Int(-2, 12), 0.505f * dice.Int(-2, 12))));
        }
        contacts += ExpectSameAsPlain("round " + std::to_string(round));
        Forget();
        if (HasFailure())
            return;
    }
    EXPECT_GT(contacts, 10000u);
}

TEST_F(ColliderTest, AgreesWithThePlainLoopsOnStrangePosesAndShapes)
{
    test::Dice dice(4);
    const float strange[] = {nan, inf, -inf, 1e30f, -3e38f, 1e-40f, 0, -2, 0.5f, 1.0005f, 100};
    const auto anything = [&] { return strange[dice.Int(0, 11)]; };
    size_t contacts = 0;
    for (int round = 0; round < 1000; ++round)
    {
        RandomWorld(dice, dice.Int(2, 30), 3, 1, Vec2());
        for (const BodyPtr& body : bodies)
            for (const Body::BodyPart& part : body->GetParts())
            {
                if (!dice.OneIn(4) || (part.geom->GetKind() == GeomKind::Plane))
                    continue;
                Mat2D pose = part.geom->GetPose();
                float* numbers[] = {&pose.cos, &pose.sin, &pose.x, &pose.y};
                *numbers[dice.Int(0, 4)] = anything();
                part.geom->SetWorldPose(pose);
                if (dice.OneIn(2))
                    continue;
                if (Box* box = dynamic_cast<Box*>(part.geom.get()))
                {
                    box->SetBody(nullptr); // its body need not hear of this
                    box->SetOBB(math::OBB2D(Vec2(anything(), 0), Vec2(1, dice.Uniform(-1, 1)),
                                            Vec2(0, 1), anything(), anything()));
                    box->SetBody(body.get());
                }
                else if (Circle* circle = dynamic_cast<Circle*>(part.geom.get()))
                {
                    circle->SetBody(nullptr);
                    circle->SetRadius(anything());
                    circle->SetBody(body.get());
                }
            }
        if (dice.OneIn(3))
        {
            sph.m_radius = dice.OneIn(3) ? anything() : 0.5f;
            RandomWater(dice, dice.Int(1, 80), 4, Vec2());
            for (const ParticlePtr& particle : particles)
                if (dice.OneIn(20))
                    particle->SetPos(Vec2(anything(), dice.OneIn(2) ? anything() : 0));
        }
        contacts += ExpectSameAsPlain("round " + std::to_string(round));
        Forget();
        if (HasFailure())
            return;
    }
    EXPECT_GT(contacts, 5000u);
}

TEST_F(ColliderTest, FindsContactsInTheOrderOfTheTypes)
{
    // Everything lies on one spot. Added in an order that no loop follows.
    Box* box1 = AddBox(Vec2(2.2f, 2.2f), Vec2(0, 0));
    Circle* circle1 = AddCircle(Vec2(0.1f, 0), 1);
    Plane* plane = AddPlane(Vec2(0, 1), 0);
    Polygon* polygon1 = AddPolygon({Vec2(-1, -1), Vec2(1, -1), Vec2(0, 1)});
    Box* box2 = AddBox(Vec2(2, 2), Vec2(0.2f, 0.1f));
    Polygon* polygon2 = AddPolygon({Vec2(-1.1f, -0.9f), Vec2(0.9f, -0.9f), Vec2(0, 1)});
    Circle* circle2 = AddCircle(Vec2(0.2f, 0.1f), 1);
    Collide();

    const std::pair<Geom*, Geom*> expected[] = {
        {plane, circle1},    {plane, circle2},    {plane, polygon1},    {plane, polygon2},
        {plane, box1},       {plane, box2},       {polygon1, polygon2}, {circle1, circle2},
        {circle1, polygon1}, {circle1, polygon2}, {circle2, polygon1},  {circle2, polygon2},
        {box1, box2},        {box1, polygon1},    {box1, polygon2},     {box2, polygon1},
        {box2, polygon2},    {box1, circle1},     {box1, circle2},      {box2, circle1},
        {box2, circle2},
    };
    // Each pair once, however many contacts it has.
    std::vector<std::pair<unsigned, unsigned>> order;
    for (const Contact* contact : found)
    {
        const ContactID& id = contact->GetContactID();
        const std::pair<unsigned, unsigned> pair(id.GetLowGeom(), id.GetHighGeom());
        if (order.empty() || order.back() != pair)
            order.push_back(pair);
    }
    std::vector<std::pair<unsigned, unsigned>> expectedOrder;
    for (const auto& pair : expected)
        expectedOrder.push_back(std::minmax({pair.first->GetID(), pair.second->GetID()}));
    EXPECT_EQ(expectedOrder, order);
}

TEST_F(ColliderTest, WalksTheGeometriesOfABodyInOrderOfTheirIds)
{
    Box* floor = AddBox(Vec2(100, 2), Vec2(0, -1));
    std::vector<GeomPtr> wheels;
    for (int i = 0; i < 20; ++i)
    {
        wheels.push_back(QUIB_NEW Circle(Vec2(2.0f * i, 0.5f), 0.6f));
    }
    GeomSet set;
    for (size_t i = 0; i < wheels.size(); ++i)
        set.insert(wheels[(i * 7) % wheels.size()]);
    BodyPtr body = QUIB_NEW Body;
    body->SetGeoms(set);
    bodies.push_back(body);
    Collide();
    ASSERT_EQ(wheels.size(), found.size());
    for (size_t i = 0; i < wheels.size(); ++i)
        EXPECT_EQ(ContactID(floor->GetID(), wheels[i]->GetID(), 0), found[i]->GetContactID());
}

TEST_F(ColliderTest, SkipsTheWorldGeometry)
{
    BodyList all = {sim.GetWorldBody()};
    AddCircle(Vec2(0, 0), 1);
    all.push_back(bodies[0]);
    Collider collider;
    collider.AssignBodies(all, particles);
    collider.Collide(pool, found);
    EXPECT_TRUE(found.empty());
}

TEST_F(ColliderTest, WantsGeometriesThatKnowTheirBody)
{
    Circle* circle = AddCircle(Vec2(0, 0), 1);
    Body* body = circle->GetBodyBodyPtr();
    circle->SetBody(nullptr);
    {
        Collider collider;
        try
        {
            collider.AssignBodies(bodies, particles);
            ADD_FAILURE() << "no assertion";
        }
        catch (BadCoderException& e)
        {
            EXPECT_NE(std::string::npos, std::string(e.what()).find("\"(*g)->GetBody()\""))
                << e.what();
        }
    }
    circle->SetBody(body);
}

TEST_F(ColliderTest, ForgetsItsGeometriesWhenItGoes)
{
    AddCircle(Vec2(0, 0), 1);
    AddCircle(Vec2(0, 0), 1);
    EXPECT_EQ(1u, Collide().size());
    Collider fresh;
    fresh.Collide(pool, found);
    EXPECT_EQ(1u, found.size()) << "nothing assigned, nothing found";
    // Two at a time don't share their lists.
    Collider other;
    fresh.AssignBodies(bodies, particles);
    other.AssignBodies(BodyList(), ParticleList());
    fresh.Collide(pool, found);
    EXPECT_EQ(2u, found.size());
    other.Collide(pool, found);
    EXPECT_EQ(2u, found.size());
}

TEST_F(ColliderTest, TimesEachKindOfPairAndNoWaterWithoutParticles)
{
    AddCircle(Vec2(0, 0), 1);
    static std::vector<std::string> s_scopes;
    static int s_depth;
    const auto scopesOfCollide = [&]
    {
        s_scopes.clear();
        s_depth = 0;
        const auto begin = util::ScopeProfiler::s_begin;
        const auto end = util::ScopeProfiler::s_end;
        util::ScopeProfiler::s_begin = [](const char* name)
        { s_scopes.push_back(std::string(s_depth++, ' ') + name); };
        util::ScopeProfiler::s_end = [] { --s_depth; };
        Collide();
        util::ScopeProfiler::s_begin = begin;
        util::ScopeProfiler::s_end = end;
        EXPECT_EQ(0, s_depth);
        return s_scopes;
    };
    std::vector<std::string> expected = {"Collider::AssignBodies",
                                         "Collider::Collide",
                                         " Plane",
                                         " Polygon-Polygon",
                                         " Circle-Circle",
                                         " Circle-Polygon",
                                         " Box-Box",
                                         " Box-Polygon",
                                         " Box-Circle"};
    EXPECT_EQ(expected, scopesOfCollide());
    AddParticle(Vec2(5, 5));
    for (const char* scope : {" Water", "  Creating BB", "  Plane-Water", "  Circle-Water",
                              "  Poly-Water", "  Box-Water"})
        expected.push_back(scope);
    EXPECT_EQ(expected, scopesOfCollide());
}

TEST_F(ColliderTest, TakesAParticleForACircleOfATenthOfTheFluidsRadius)
{
    sph.m_radius = 1.0f;
    Plane* floor = AddPlane(Vec2(0, 1), 0);
    AddParticle(Vec2(3, 0.101f));
    Particle* drop = AddParticle(Vec2(4, 0.06f));
    Collide();
    ASSERT_EQ(1u, found.size());
    ExpectContact(*found[0], floor, drop->GetGeom(), 0, Vec2(4, 0.06f), Vec2(0, 1), 0.04f);
}

TEST_F(ColliderTest, LetsWaterTouchEveryKindOfGeometryInOrderOfTheTypes)
{
    Box* box = AddBox(Vec2(2, 2), Vec2(0, 0));
    Polygon* polygon = AddPolygon({Vec2(-1, -1), Vec2(1, -1), Vec2(1, 1), Vec2(-1, 1)});
    Circle* circle = AddCircle(Vec2(0, 0), 1);
    Plane* plane = AddPlane(Vec2(0, 1), -0.95f);
    for (Geom* geom : std::vector<Geom*>{box, polygon, circle, plane})
        geom->GetBodyPtr()->SetSuspended(true); // so that they leave each other alone
    Particle* a = AddParticle(Vec2(0, 0.9f));
    Particle* b = AddParticle(Vec2(0.1f, 0.9f));
    Collide();
    const std::vector<Geom*> order = {plane, circle, polygon, box};
    ASSERT_EQ(8u, found.size());
    for (size_t i = 0; i < 4; ++i)
    {
        ExpectContact(*found[2 * i], order[i], a->GetGeom(), 0, a->GetPos(),
                      order[i]->NormalWorld(a->GetPos()),
                      0.005f - order[i]->DistanceWorld(a->GetPos()));
        EXPECT_EQ(b, found[2 * i + 1]->GetBodyPtr(1));
    }
}

// Deliberate: only the flag for water has a say.
TEST_F(ColliderTest, AsksNoCollideSetsForWater)
{
    Box* box = AddBox(Vec2(2, 2), Vec2(0, 0));
    Circle* circle = AddCircle(Vec2(0, 0), 0.5f);
    AddParticle(Vec2(0, 0));
    box->SetCollideSet(0);
    circle->SetCollideSet(2);
    box->AddNoCollide(particles[0]->GetGeom());
    EXPECT_EQ(2u, Collide().size());

    box->SetWaterCollide(false);
    circle->SetCollideSet(1);
    box->SetCollideSet(1);
    Collide();
    ASSERT_EQ(2u, found.size()) << "it lets water through and still collides with bodies";
    ExpectContact(*found[0], box, circle, 0, found[0]->GetPos(), found[0]->GetNormal(),
                  found[0]->GetDepth());
    EXPECT_EQ(circle->GetBodyPtr(), found[1]->GetBodyPtr(0));
}

TEST_F(ColliderTest, LetsParticlesPassEachOther)
{
    AddParticle(Vec2(0, 0));
    AddParticle(Vec2(0, 0));
    EXPECT_EQ(0u, Collide().size());
}
}
