#include "JointFixture.h"

#include "app/Action.h"
#include "app/Snapshot.h"
#include "app/entities/WeldBatch.h"

#include "../Dice.h"

#include <memory>

namespace app
{
namespace
{
class FixJointEntityTest : public JointFixture
{
protected:
    static FixJointPtr Weld(const GeomEntityPtr& a, const GeomEntityPtr& b)
    {
        return Join<FixJointEntity>(a, b);
    }
    static FixJointPtr WeldToWorld(const GeomEntityPtr& a)
    {
        return Join<FixJointEntity>(a->GetGeom(), WorldGeom());
    }
    static bool AreOne(const GeomEntityPtr& a, const GeomEntityPtr& b)
    {
        return a->GetBody() && a->GetBody() == b->GetBody();
    }
    static std::vector<GeomEntityPtr> Row(int n)
    {
        std::vector<GeomEntityPtr> row;
        for (int i = 0; i < n; ++i)
            row.push_back(Box(Vec2(float(i), 0)));
        return row;
    }
};

TEST_F(FixJointEntityTest, MergesTwoBodiesIntoTheOlder)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const BodyPtr older = a->GetBody(), younger = b->GetBody();
    older->SetVel(Vec2(1, 0));
    younger->SetVel(Vec2(0, 5));
    const auto weld = Weld(b, a);
    EXPECT_EQ(older, a->GetBody());
    EXPECT_EQ(older, b->GetBody());
    EXPECT_EQ(1u, BodyCount());
    EXPECT_FALSE(Sim()->HasBody(younger));
    EXPECT_EQ(Vec2(0.5f, 0), older->GetPos());
    EXPECT_FLOAT_EQ(4, older->GetMass());
    EXPECT_EQ(Vec2(1, 0), older->GetVel());
    EXPECT_TRUE(weld->IsAlive());
    EXPECT_EQ(0u, Sim()->GetHinges().size());
}

TEST_F(FixJointEntityTest, OfTheWorldMakesABodyPartOfTheWorldBody)
{
    const auto a = Box(Vec2());
    WeldToWorld(a);
    EXPECT_EQ(WorldBody(), a->GetBody());
    EXPECT_EQ(0u, BodyCount());
    EXPECT_TRUE(WorldBody()->IsImmovable());
}

TEST_F(FixJointEntityTest, OfGeometriesWithoutABodyMakesOne)
{
    const GeomPtr a = QUIB_NEW physics::Box(Vec2(1, 1), Vec2());
    const GeomPtr b = QUIB_NEW physics::Box(Vec2(1, 1), Vec2(1, 0));
    const auto weld = Join<FixJointEntity>(a, b);
    ASSERT_TRUE(a->GetBody());
    EXPECT_EQ(a->GetBody(), b->GetBody());
    EXPECT_TRUE(Sim()->HasBody(a->GetBody()));
    EXPECT_TRUE(weld->IsAlive());
}

TEST_F(FixJointEntityTest, GivesAGeometryWithoutABodyThatOfTheOther)
{
    for (const bool isFirst : {false, true})
    {
        const auto box = Box(Vec2());
        const BodyPtr body = box->GetBody();
        const GeomPtr bare = QUIB_NEW physics::Box(Vec2(1, 1), Vec2(1, 0));
        Join<FixJointEntity>(isFirst ? bare : box->GetGeom(), isFirst ? box->GetGeom() : bare);
        EXPECT_EQ(body, bare->GetBodyBody());
        EXPECT_EQ(body, box->GetBody());
    }
}

TEST_F(FixJointEntityTest, WithoutGeometriesDoesNothing)
{
    const FixJointPtr weld = QUIB_NEW FixJointEntity(0.2f);
    TheScene()->AddEntity(weld);
    EXPECT_FALSE(weld->GetWelded(0));
    TheScene()->RemoveEntity(weld);
    EXPECT_EQ(0u, BodyCount());
}

TEST_F(FixJointEntityTest, RemovedSplitsTheBodyAndBothKeepItsVelocity)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const auto weld = Weld(b, a);
    const BodyPtr body = a->GetBody();
    body->SetVel(Vec2(1, 2));
    body->SetAngVel(3);
    TheScene()->RemoveEntity(weld);
    EXPECT_FALSE(AreOne(a, b));
    // The first geometry of the weld stays.
    EXPECT_EQ(body, b->GetBody());
    EXPECT_GT(a->GetBody()->GetID(), body->GetID());
    EXPECT_EQ(2u, BodyCount());
    EXPECT_TRUE(a->IsAlive());
    for (const auto& box : {a, b})
    {
        EXPECT_EQ(Vec2(1, 2), box->GetBody()->GetVel());
        EXPECT_EQ(3, box->GetBody()->GetAngVel());
        EXPECT_FLOAT_EQ(2, box->GetBody()->GetMass());
        EXPECT_EQ(box->GetGeom()->GetCenter(), box->GetBody()->GetPos());
    }
    EXPECT_FALSE(weld->IsAlive());
}

TEST_F(FixJointEntityTest, OfATriangleSplitsNothing)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0)), c = Box(Vec2(0, 1));
    const auto ab = Weld(a, b);
    Weld(b, c);
    Weld(c, a);
    TheScene()->RemoveEntity(ab);
    EXPECT_TRUE(AreOne(a, b));
    EXPECT_TRUE(AreOne(b, c));
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(FixJointEntityTest, TheOneWeldToTheWorldLeavesABodyFreeWithItsVelocity)
{
    const auto a = Box(Vec2());
    const auto weld = WeldToWorld(a);
    TheScene()->RemoveEntity(weld);
    ASSERT_NE(WorldBody(), a->GetBody());
    EXPECT_TRUE(a->IsAlive());
    EXPECT_EQ(WorldBody()->GetVel(), a->GetBody()->GetVel());
    EXPECT_FALSE(a->GetBody()->IsImmovable());
    Run("Sim.gravitySwitch = true");
    Frame(10);
    EXPECT_LT(a->GetGeom()->GetCenter().y, -0.01f);
}

TEST_F(FixJointEntityTest, ThePartThatReachesTheWorldStaysOnTheWorldBody)
{
    for (const bool isFirst : {false, true})
    {
        const auto a = Box(Vec2()), b = Box(Vec2(1, 0)), other = Box(Vec2(9, 0));
        WeldToWorld(a);
        WeldToWorld(other);
        const auto weld = isFirst ? Weld(a, b) : Weld(b, a);
        ASSERT_EQ(WorldBody(), b->GetBody());
        TheScene()->RemoveEntity(weld);
        EXPECT_EQ(WorldBody(), a->GetBody());
        EXPECT_NE(WorldBody(), b->GetBody());
        EXPECT_EQ(WorldBody(), other->GetBody());
        EXPECT_TRUE(WorldBody()->GetGeoms().count(WorldGeom()));
        TheScene()->ClearScene();
    }
}

TEST_F(FixJointEntityTest, BothPartsThatReachTheWorldStayOnTheWorldBody)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    WeldToWorld(a);
    WeldToWorld(b);
    const auto weld = Weld(a, b);
    TheScene()->RemoveEntity(weld);
    EXPECT_EQ(WorldBody(), a->GetBody());
    EXPECT_EQ(WorldBody(), b->GetBody());
}

TEST_F(FixJointEntityTest, APlaneCountsAsTheWorld)
{
    const auto plane = Plane(-1);
    ASSERT_EQ(WorldBody(), plane->GetBody());
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const auto toPlane = Weld(plane, a);
    const auto ab = Weld(b, a);
    ASSERT_EQ(WorldBody(), b->GetBody());
    TheScene()->RemoveEntity(ab);
    EXPECT_EQ(WorldBody(), a->GetBody());
    EXPECT_NE(WorldBody(), b->GetBody());
    TheScene()->RemoveEntity(toPlane);
    EXPECT_NE(WorldBody(), a->GetBody());
    EXPECT_EQ(WorldBody(), plane->GetBody());
}

TEST_F(FixJointEntityTest, DiesWhenItsGeometriesAreOnTwoBodies)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const auto weld = Weld(a, b);
    const BodyPtr alone = QUIB_NEW physics::Body;
    alone->SetGeom(b->GetGeom());
    Sim()->AddBody(alone);
    EXPECT_FALSE(weld->IsAlive());
    TheScene()->Update(0.01f);
    EXPECT_FALSE(IsThere(weld));
    EXPECT_TRUE(IsThere(a));
    EXPECT_TRUE(IsThere(b));
}

TEST_F(FixJointEntityTest, WhatHungOnAnErasedBodyComesApart)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0)), c = Box(Vec2(-1, 0)), d = Box(Vec2(-2, 0));
    const FixJointPtr welds[] = {Weld(a, b), Weld(a, c), Weld(c, d)};
    TheScene()->RemoveEntity(a);
    TheScene()->Update(0.01f);
    EXPECT_FALSE(IsThere(welds[0]));
    EXPECT_FALSE(IsThere(welds[1]));
    EXPECT_TRUE(IsThere(welds[2]));
    EXPECT_FALSE(AreOne(b, c));
    EXPECT_TRUE(AreOne(c, d));
    EXPECT_EQ(2u, BodyCount());
    for (const auto& box : {b, c, d})
        EXPECT_TRUE(box->IsAlive());
}

TEST_F(FixJointEntityTest, WithOneEndErasedRemovesABodyThatIsLeftEmpty)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const auto weld = Weld(a, b);
    TheScene()->RemoveEntity(a);
    TheScene()->RemoveEntity(weld);
    EXPECT_EQ(1u, BodyCount());
    EXPECT_TRUE(b->IsAlive());
    EXPECT_FALSE(a->GetBody());
}

TEST_F(FixJointEntityTest, HandedToOtherGeometriesWeldsThoseAndLetsGoOfTheOld)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0)), c = Box(Vec2(5, 0));
    const auto weld = Weld(a, b);
    const GeomPtr geoms[2] = {a->GetGeom(), c->GetGeom()};
    weld->SetGeoms(geoms);
    EXPECT_FALSE(AreOne(a, b));
    EXPECT_TRUE(AreOne(a, c));
    EXPECT_TRUE(weld->IsAlive());
    // The same once more changes nothing.
    const BodyPtr body = a->GetBody();
    weld->SetGeoms(geoms);
    EXPECT_EQ(body, a->GetBody());
}

TEST_F(FixJointEntityTest, HandedToOtherGeometriesWhileInNoSceneWeldsNothing)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const FixJointPtr weld = QUIB_NEW FixJointEntity(0.2f);
    weld->AttachToWorld(a->GetGeom(), Vec2(), b->GetGeom(), Vec2());
    EXPECT_FALSE(AreOne(a, b));
}

// What a batch leaves against what one weld after the other leaves.

// The bodies of a scene, as lists of boxes in the order of the simulation.
using Outcome = std::vector<std::vector<int>>;

class WeldBatchTest : public FixJointEntityTest
{
protected:
    /// Builds boxes and welds from the seed, and undoes some of them.
    static Outcome Play(unsigned seed, bool isBatch)
    {
        TheScene()->ClearScene();
        test::Dice dice(seed);
        const int n = 2 + dice.Int(0, 20);
        std::vector<GeomEntityPtr> boxes = Row(n);
        boxes.push_back(Plane(-1));
        std::vector<FixJointPtr> welds;
        {
            std::unique_ptr<WeldBatch> batch(isBatch ? new WeldBatch : nullptr);
            for (int i = dice.Int(0, 2 * n); i > 0; --i)
            {
                const auto& a = boxes[dice.Int(0, n + 1)];
                const auto& b = boxes[dice.Int(0, n + 1)];
                if (dice.OneIn(10))
                    welds.push_back(WeldToWorld(a));
                else if (a != b)
                    welds.push_back(Weld(a, b));
            }
        }
        Check(boxes);
        int speed = 0;
        for (const BodyPtr& body : Sim()->GetBodies())
            body->SetVel(Vec2(float(++speed), 0));
        {
            std::unique_ptr<WeldBatch> batch(isBatch ? new WeldBatch : nullptr);
            // Now and then a box goes first, and what hung on it comes apart.
            if (dice.OneIn(4))
                TheScene()->RemoveEntity(boxes[dice.Int(0, n)]);
            for (int i = dice.Int(0, int(welds.size()) + 1); i > 0; --i)
            {
                const int k = dice.Int(0, int(welds.size()));
                TheScene()->RemoveEntity(welds[k]);
                welds.erase(welds.begin() + k);
            }
        }
        Check(boxes);

        Outcome outcome;
        for (const BodyPtr& body : Sim()->GetBodies())
        {
            std::vector<int> members;
            for (int i = 0; i < int(boxes.size()); ++i)
                if (boxes[i]->GetBody() == body)
                    members.push_back(i);
            members.push_back(int(body->GetVel().x));
            outcome.push_back(members);
        }
        return outcome;
    }

    static void Check(const std::vector<GeomEntityPtr>& boxes)
    {
        for (const BodyPtr& body : Sim()->GetBodies())
        {
            EXPECT_FALSE(body->GetGeoms().empty());
            for (const GeomPtr& geom : body->GetGeoms())
                EXPECT_EQ(body, geom->GetBodyBody());
        }
        for (const auto& box : boxes)
            if (IsThere(box))
            {
                EXPECT_TRUE(box->IsAlive());
            }
    }
};

TEST_F(WeldBatchTest, LeavesWhatOneWeldAfterTheOtherLeaves)
{
    for (unsigned seed = 1; seed <= 300; ++seed)
    {
        SCOPED_TRACE(seed);
        const Outcome oneByOne = Play(seed, false);
        EXPECT_EQ(oneByOne, Play(seed, true));
        if (HasFailure())
            break;
    }
}

TEST_F(WeldBatchTest, LetsBodiesBeUntilTheOutermostEnds)
{
    const auto boxes = Row(3);
    {
        WeldBatch outer;
        {
            WeldBatch inner;
            Weld(boxes[0], boxes[1]);
        }
        EXPECT_FALSE(AreOne(boxes[0], boxes[1]));
        Weld(boxes[1], boxes[2]);
    }
    EXPECT_TRUE(AreOne(boxes[0], boxes[1]));
    EXPECT_TRUE(AreOne(boxes[1], boxes[2]));
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(WeldBatchTest, SettlesWeldsBeforeTheyAreUndone)
{
    const auto boxes = Row(3);
    {
        WeldBatch batch;
        const auto first = Weld(boxes[0], boxes[1]);
        Weld(boxes[1], boxes[2]);
        TheScene()->RemoveEntity(first);
        Weld(boxes[0], boxes[2]);
    }
    EXPECT_TRUE(AreOne(boxes[0], boxes[2]));
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(WeldBatchTest, WeldsNothingInASceneThatWasClearedMeanwhile)
{
    std::vector<GeomEntityPtr> boxes = Row(2);
    {
        WeldBatch batch;
        Weld(boxes[0], boxes[1]);
        TheScene()->ClearScene();
    }
    EXPECT_EQ(0u, BodyCount());
}

// Each of these took many seconds weld by weld.

TEST_F(WeldBatchTest, ThousandsThatAreOneBodyAreMadeAndClearedInNoTime)
{
    const int n = 5000;
    double start = Seconds();
    {
        WeldBatch batch;
        const auto boxes = Row(n);
        for (int i = 1; i < n; ++i)
            Weld(boxes[i - 1], boxes[i]);
    }
    EXPECT_EQ(1u, BodyCount());
    EXPECT_LT(Seconds() - start, 2);
    start = Seconds();
    TheScene()->ClearScene();
    EXPECT_LT(Seconds() - start, 2);
}

TEST_F(WeldBatchTest, ThousandsThatAreOneBodyComeApartInNoTime)
{
    const int n = 5000;
    std::vector<GeomEntityPtr> boxes;
    std::vector<EntityPtr> welds;
    {
        WeldBatch batch;
        boxes = Row(n);
        for (int i = 1; i < n; ++i)
            welds.push_back(Weld(boxes[i - 1], boxes[i]));
    }
    const SnapshotPtr welded = Snapshot::TakeSnapshot();
    double start = Seconds();
    TheScene()->RemoveEntities(welds);
    EXPECT_LT(Seconds() - start, 2);
    EXPECT_EQ(size_t(n), BodyCount());
    start = Seconds();
    welded->Restore();
    EXPECT_LT(Seconds() - start, 2);
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(WeldBatchTest, ThousandsThatAreOneBodyAreLoadedErasedAndUndoneInNoTime)
{
    const int n = 5000;
    util::String text;
    for (int i = 0; i < n; ++i)
    {
        const util::String id = util::ToString(i + 1), x = util::ToString(i);
        text += "Scene.addBox { geomID = " + id + "; pos = [" + x + ".0, 0.0] };\n";
    }
    for (int i = 1; i < n; ++i)
        text += "Scene.addFixjoint { size = 0.1; geom0 = " + util::ToString(i) +
                "; geom0pos = [0.5, 0.0]; geom1 = " + util::ToString(i + 1) +
                "; geom1pos = [-0.5, 0.0] };\n";
    double start = Seconds();
    const GroupPtr loaded = Serializer::GetInstancePtr()->Deserialize(text);
    EXPECT_LT(Seconds() - start, 2);
    ASSERT_EQ(size_t(2 * n - 1), TheScene()->GetEntities().size());
    EXPECT_EQ(1u, BodyCount());

    const util::SharedPtr<EraseEntities> erase = QUIB_NEW EraseEntities(loaded);
    start = Seconds();
    erase->Do();
    EXPECT_LT(Seconds() - start, 2);
    EXPECT_EQ(0u, BodyCount());
    start = Seconds();
    erase->Undo();
    EXPECT_LT(Seconds() - start, 2);
    EXPECT_EQ(1u, BodyCount());
}
}
}
