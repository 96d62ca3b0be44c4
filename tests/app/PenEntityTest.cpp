#include "JointFixture.h"

#include "app/EntitySerializer.h"

#include "../AllocationCounter.h"

#include <limits>

namespace app
{
namespace
{
class PenEntityTest : public JointFixture
{
protected:
    static PenEntityPtr Pen(const GeomPtr& geom, const Vec2& local = Vec2())
    {
        const PenEntityPtr pen = QUIB_NEW PenEntity(0.2f);
        pen->AttachTo(geom, local);
        TheScene()->AddEntity(pen);
        return pen;
    }
    /// On a box that flies to the right by 1 unit per second.
    static PenEntityPtr FlyingPen()
    {
        const auto box = Box(Vec2());
        box->GetBody()->SetVel(Vec2(1, 0));
        return Pen(box->GetGeom());
    }
    /// One step as the simulation makes it, at the time given.
    static void StepAt(double seconds)
    {
        Sim()->SetSimTime(seconds);
        Sim()->Step(false);
    }
};

TEST_F(PenEntityTest, HasItsDefaults)
{
    const PenEntityPtr pen = QUIB_NEW PenEntity(0.2f);
    EXPECT_EQ("0.2", Attribute(pen, "size"));
    EXPECT_EQ("10", Attribute(pen, "fadeTime"));
    EXPECT_FALSE(pen->IsAlive());
}

TEST_F(PenEntityTest, RidesOnTheGeometryUnderThePoint)
{
    const auto box = Box(Vec2(1, 1));
    const PenEntityPtr pen = QUIB_NEW PenEntity(0.2f);
    pen->AttachAt(Vec2(1.25f, 1));
    EXPECT_EQ(box->GetGeom(), pen->GetGeom());
    EXPECT_EQ(Vec2(0.25f, 0), pen->GetLocalPoint());
    box->GetGeom()->SetWorldPose(math::Mat2D::TranslationRotation(Vec2(2, 0), math::PIf / 2));
    EXPECT_NEAR(2, pen->GetPos().x, 1e-6f);
    EXPECT_NEAR(0.25f, pen->GetPos().y, 1e-6f);

    pen->AttachAt(Vec2(9, 9));
    EXPECT_EQ(WorldGeom(), pen->GetGeom());
    EXPECT_EQ(Vec2(9, 9), pen->GetPos());
}

TEST_F(PenEntityTest, DiesWithItsBody)
{
    const auto box = Box(Vec2());
    const PenEntityPtr pen = Pen(box->GetGeom());
    EXPECT_TRUE(pen->IsAlive());
    TheScene()->RemoveEntity(box);
    EXPECT_FALSE(pen->IsAlive());
    TheScene()->Update(0.01f);
    EXPECT_FALSE(IsThere(pen));
}

TEST_F(PenEntityTest, TakesASampleInEachStepThatMovesIt)
{
    const PenEntityPtr pen = FlyingPen();
    Frame(11);
    // Time has not passed yet in the first step.
    ASSERT_EQ(10u, pen->GetTrail().size());
    for (size_t i = 1; i < pen->GetTrail().size(); ++i)
    {
        EXPECT_GT(pen->GetTrail()[i].time, pen->GetTrail()[i - 1].time);
        EXPECT_GT(pen->GetTrail()[i].pos.x, pen->GetTrail()[i - 1].pos.x);
        EXPECT_EQ(Vec2(0, 1), pen->GetTrail()[i].side);
    }
    EXPECT_EQ(Vec2(0, 1), pen->GetTrail()[0].side);
}

TEST_F(PenEntityTest, TakesOneSampleOnlyWhereItStandsStill)
{
    const PenEntityPtr pen = Pen(Box(Vec2())->GetGeom());
    Frame(10);
    ASSERT_EQ(1u, pen->GetTrail().size());
    EXPECT_EQ(Vec2(), pen->GetTrail()[0].side);
}

TEST_F(PenEntityTest, TrailSurvivesAPause)
{
    const PenEntityPtr pen = FlyingPen();
    Frame(5);
    const size_t before = pen->GetTrail().size();
    ASSERT_GT(before, 2u);
    Sim()->m_running = false;
    // Moved by hand: no sample is taken either, as time stands still. One is taken at first, of the
    // last step's time.
    Frame();
    const size_t paused = pen->GetTrail().size();
    for (int i = 0; i < 10; ++i)
    {
        pen->GetGeom()->GetBodyPtr()->SetPos(Vec2(float(i), 5));
        Frame();
    }
    EXPECT_EQ(paused, pen->GetTrail().size());
    Sim()->m_running = true;
    Frame(3);
    EXPECT_GT(pen->GetTrail().size(), paused);
}

TEST_F(PenEntityTest, TakesNoSampleWhenMadeInAPause)
{
    Sim()->m_running = false;
    const PenEntityPtr pen = FlyingPen();
    Frame(3);
    EXPECT_TRUE(pen->GetTrail().empty());
}

TEST_F(PenEntityTest, SidesAreCentralDifferences)
{
    const auto box = Box(Vec2());
    const PenEntityPtr pen = Pen(box->GetGeom());
    const double start = Sim()->GetSimTime();
    const Vec2 path[] = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)};
    const auto goTo = [&](int i)
    {
        box->GetGeom()->SetWorldPose(math::Mat2D::Translation(path[i]));
        box->GetBody()->OnGeomChange();
        StepAt(start + 1 + i);
    };
    goTo(0);
    EXPECT_EQ(Vec2(), pen->GetTrail()[0].side);
    goTo(1);
    EXPECT_EQ(Vec2(0, 1), pen->GetTrail()[0].side);
    EXPECT_EQ(Vec2(0, 1), pen->GetTrail()[1].side);
    goTo(2);
    EXPECT_EQ(Vec2(0, 1), pen->GetTrail()[0].side);
    EXPECT_NEAR(-std::sqrt(0.5f), pen->GetTrail()[1].side.x, 1e-6f);
    EXPECT_NEAR(std::sqrt(0.5f), pen->GetTrail()[1].side.y, 1e-6f);
    EXPECT_EQ(Vec2(-1, 0), pen->GetTrail()[2].side);
    goTo(3);
    EXPECT_NEAR(-std::sqrt(0.5f), pen->GetTrail()[2].side.x, 1e-6f);
    EXPECT_NEAR(-std::sqrt(0.5f), pen->GetTrail()[2].side.y, 1e-6f);
    EXPECT_EQ(Vec2(0, -1), pen->GetTrail()[3].side);
}

TEST_F(PenEntityTest, ForgetsAfterAnHour)
{
    const auto box = Box(Vec2());
    const PenEntityPtr pen = Pen(box->GetGeom());
    const double start = Sim()->GetSimTime() + 1;
    StepAt(start);
    ASSERT_EQ(1u, pen->GetTrail().size());
    StepAt(start + 3600);
    EXPECT_EQ(1u, pen->GetTrail().size());
    StepAt(start + 3600.5);
    // The old one went, and one of where it stands came.
    ASSERT_EQ(1u, pen->GetTrail().size());
    EXPECT_EQ(start + 3600.5, pen->GetTrail()[0].time);
}

TEST_F(PenEntityTest, KeepsAMillionElementsAndOneMore)
{
    const PenEntityPtr pen = Pen(Box(Vec2())->GetGeom());
    const double now = Sim()->GetSimTime();
    pen->SetTrail(PenEntity::Trail(1000010, {now, Vec2(), Vec2()}));
    StepAt(now);
    EXPECT_EQ(1000000u, pen->GetTrail().size());
}

TEST_F(PenEntityTest, DrawsNoMoreOnceOutOfTheScene)
{
    const size_t before = Sim()->OnStep().size();
    const PenEntityPtr pen = FlyingPen();
    EXPECT_EQ(before + 1, Sim()->OnStep().size());
    Frame(3);
    const size_t length = pen->GetTrail().size();
    TheScene()->RemoveEntity(pen);
    EXPECT_EQ(before, Sim()->OnStep().size());
    Frame(3);
    EXPECT_EQ(length, pen->GetTrail().size());

    TheScene()->AddEntity(pen);
    EXPECT_EQ(before + 1, Sim()->OnStep().size());
    TheScene()->ClearScene();
    EXPECT_EQ(before, Sim()->OnStep().size());
}

TEST_F(PenEntityTest, IsPickedErasedAndContainedAsACircle)
{
    const PenEntityPtr pen = Pen(Box(Vec2())->GetGeom());
    pen->SetSize(1);
    EXPECT_TRUE(pen->IsOnEntity(Vec2(0.49f, 0)));
    EXPECT_FALSE(pen->IsOnEntity(Vec2(0.5f, 0)));
    EXPECT_TRUE(pen->ErasedBy(Stroke(Vec2(-1, 0), Vec2(1, 0))));
    EXPECT_FALSE(pen->ErasedBy(Stroke(Vec2(-1, 0), Vec2(0, 0))));
    EXPECT_TRUE(pen->IsContainedBy(*Square(0.6f)));
    EXPECT_FALSE(pen->IsContainedBy(*Square(0.4f)));
    EXPECT_EQ(Vec2(0.5f, 0.5f), pen->GetAABB().GetMax());
    EXPECT_TRUE(pen->IsInView(math::BoundingBox(Vec2(100, 100), Vec2(101, 101))));
}

TEST_F(PenEntityTest, ClonesRideOnTheSameGeometryWithoutATrail)
{
    const PenEntityPtr pen = FlyingPen();
    Frame(5);
    const PenEntityPtr clone = pen->Clone();
    EXPECT_EQ(pen->GetGeom(), clone->GetGeom());
    EXPECT_EQ(pen->GetLocalPoint(), clone->GetLocalPoint());
    EXPECT_EQ(pen->GetSize(), clone->GetSize());
    EXPECT_TRUE(clone->GetTrail().empty());
    EXPECT_FALSE(IsThere(clone));
}

TEST_F(PenEntityTest, LeavesTheSimulationAtOnceHoweverOftenItWasAdded)
{
    const PenEntityPtr pen = FlyingPen();
    pen->AddToSimulation();
    Frame(3);
    pen->RemoveFromSimulation();
    const size_t length = pen->GetTrail().size();
    ASSERT_GT(length, 0u);
    Frame(3);
    EXPECT_EQ(length, pen->GetTrail().size());
}

TEST_F(PenEntityTest, RefusesSettingsThatAreNoNumbers)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const auto& [name, value] :
         {std::pair<const char*, float>("size", nan), std::pair<const char*, float>("size", -1),
          std::pair<const char*, float>("fadeTime", nan)})
    {
        EntitySerializer bag;
        bag.Set(name, value);
        PenEntity pen(1);
        EXPECT_THROW(pen.Deserialize(bag), BadDataException) << name;
    }
}

TEST_F(PenEntityTest, StepsAllocateNothingButForTheTrail)
{
    const PenEntityPtr pen = Pen(Box(Vec2())->GetGeom());
    Frame(10);
    const size_t before = test::g_allocations;
    for (int i = 0; i < 100; ++i)
        Sim()->Step(true);
    EXPECT_EQ(0u, test::g_allocations - before);
}
}
}
