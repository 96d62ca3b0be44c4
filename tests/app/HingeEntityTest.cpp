#include "JointFixture.h"

#include "app/EntitySerializer.h"
#include "app/Snapshot.h"

#include "../KeyEvents.h"

#include <SDL_keysym.h>

#include <limits>

namespace app
{
namespace
{
class HingeEntityTest : public JointFixture
{
protected:
    void TearDown() override
    {
        for (int key : {SDLK_RIGHT, SDLK_LEFT, SDLK_DOWN})
            test::SendKey(key, false);
        JointFixture::TearDown();
    }

    /// A box on a pin through its middle.
    static HingePtr Wheel()
    {
        const auto box = Box(Vec2());
        return Join<HingeEntity>(WorldGeom(), box->GetGeom());
    }

    template<typename T>
    static void Set(const HingePtr& hinge, const char* name, T value)
    {
        hinge->FindVariable(name)->SetObject(script::ValueToObject(value));
    }
};

TEST_F(HingeEntityTest, HasItsDefaults)
{
    const HingePtr hinge = Wheel();
    EXPECT_EQ("false", Attribute(hinge, "motor"));
    EXPECT_EQ("false", Attribute(hinge, "ccw"));
    EXPECT_FLOAT_EQ(1.5707963f, DefaultMotorSpeed);
    EXPECT_EQ(util::ToString(DefaultMotorSpeed), Attribute(hinge, "motorSpeed"));
    EXPECT_EQ("100", Attribute(hinge, "motorTorque"));
    TheScene()->Update(0.01f);
    EXPECT_EQ(std::numeric_limits<float>::infinity(), hinge->GetHinge()->GetImpulseLimit());
    EXPECT_EQ(std::numeric_limits<float>::infinity(), hinge->GetHinge()->GetDistanceLimit());
    EXPECT_FALSE(hinge->GetHinge()->IsMotor());
}

TEST_F(HingeEntityTest, EntersAndLeavesTheSimulationWithItsEntity)
{
    const HingePtr hinge = Wheel();
    EXPECT_TRUE(Sim()->HasConstraint(hinge->GetHinge()));
    EXPECT_TRUE(hinge->IsAlive());
    TheScene()->RemoveEntity(hinge);
    EXPECT_FALSE(Sim()->HasConstraint(hinge->GetHinge()));
    EXPECT_FALSE(hinge->IsAlive());
}

TEST_F(HingeEntityTest, HandsItsSettingsOverAtEachUpdate)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "motor", true);
    Set(hinge, "motorSpeed", 2.0f);
    Set(hinge, "motorTorque", 30.0f);
    Set(hinge, "impulseLimit", 40.0f);
    Set(hinge, "distanceLimit", 5.0f);
    TheScene()->Update(0.01f);
    EXPECT_TRUE(hinge->GetHinge()->IsMotor());
    EXPECT_EQ(2, hinge->GetHinge()->GetMotorSpeed());
    EXPECT_EQ(30, hinge->GetHinge()->GetMotorTorque());
    EXPECT_EQ(40, hinge->GetHinge()->GetImpulseLimit());
    EXPECT_EQ(5, hinge->GetHinge()->GetDistanceLimit());
    Set(hinge, "ccw", true);
    TheScene()->Update(0.01f);
    EXPECT_EQ(-2, hinge->GetHinge()->GetMotorSpeed());
}

TEST_F(HingeEntityTest, NegativeMotorSpeedTurnsPositiveAndFlipsTheDirection)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "motorSpeed", -3.0f);
    TheScene()->Update(0.01f);
    EXPECT_EQ("3", Attribute(hinge, "motorSpeed"));
    EXPECT_EQ("true", Attribute(hinge, "ccw"));
    EXPECT_EQ(-3, hinge->GetHinge()->GetMotorSpeed());
    Set(hinge, "motorSpeed", -3.0f);
    TheScene()->Update(0.01f);
    EXPECT_EQ("3", Attribute(hinge, "motorSpeed"));
    EXPECT_EQ("false", Attribute(hinge, "ccw"));
}

TEST_F(HingeEntityTest, MotorTurnsWhatHangsOnIt)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "motor", true);
    Frame(20);
    EXPECT_NEAR(DefaultMotorSpeed, hinge->GetGeom(1)->GetBodyPtr()->GetAngVel(), 0.01f);
}

TEST_F(HingeEntityTest, ButtonsSwitchTheMotorOnWhileTheyAreHeld)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "motorSpeed", 2.0f);
    hinge->GetButtonForward().Assign(SDLK_RIGHT);
    hinge->GetButtonBack().Assign(SDLK_LEFT);
    hinge->GetButtonBreak().Assign(SDLK_DOWN);
    const struct
    {
        bool right, left, down, motor;
        float speed;
    } cases[] = {
        {false, false, false, false, 2}, {true, false, false, true, 2},
        {false, true, false, true, -2},  {true, true, false, true, 2}, // forward before back
        {false, false, true, true, 0},   {true, true, true, true, 0},  // break before all
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.right << c.left << c.down);
        test::SendKey(SDLK_RIGHT, c.right);
        test::SendKey(SDLK_LEFT, c.left);
        test::SendKey(SDLK_DOWN, c.down);
        TheScene()->Update(0.01f);
        EXPECT_EQ(c.motor, hinge->GetHinge()->IsMotor());
        EXPECT_EQ(c.speed, hinge->GetHinge()->GetMotorSpeed());
    }
    Set(hinge, "ccw", true);
    test::SendKey(SDLK_DOWN, false);
    test::SendKey(SDLK_LEFT, false);
    TheScene()->Update(0.01f);
    EXPECT_EQ(-2, hinge->GetHinge()->GetMotorSpeed());
}

TEST_F(HingeEntityTest, BrokenByItsImpulseLimitGoesAtTheNextUpdate)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "impulseLimit", 0.0f);
    Frame();
    EXPECT_TRUE(IsThere(hinge));
    Run("Sim.gravitySwitch = true");
    Frame(3);
    EXPECT_TRUE(hinge->GetHinge()->IsBroken());
    EXPECT_FALSE(IsThere(hinge));
    EXPECT_TRUE(Sim()->GetHinges().empty());
}

TEST_F(HingeEntityTest, BrokenByItsImpulseLimitComesBackWithAnUndo)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "impulseLimit", 0.0f);
    Frame();
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    Run("Sim.gravitySwitch = true");
    Frame(3);
    ASSERT_FALSE(IsThere(hinge));
    before->Restore();
    ASSERT_TRUE(IsThere(hinge));
    EXPECT_TRUE(hinge->IsAlive());
    EXPECT_FALSE(hinge->GetHinge()->IsBroken());
    EXPECT_EQ("0", Attribute(hinge, "impulseLimit"));
}

TEST_F(HingeEntityTest, OnceBrokenIsWholeAgainWhenItIsFastenedAnew)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "distanceLimit", 0.0f);
    Frame();
    hinge->GetGeom(1)->GetBodyPtr()->SetVel(Vec2(10, 0));
    Frame(5);
    ASSERT_FALSE(IsThere(hinge));
    ASSERT_TRUE(hinge->GetHinge()->IsBroken());
    hinge->AttachToLocal(hinge->GetGeom(0), hinge->GetGeom(1)->GetCenter(), hinge->GetGeom(1),
                         Vec2());
    EXPECT_FALSE(hinge->GetHinge()->IsBroken());
    EXPECT_EQ(0, hinge->GetHinge()->GetDistanceLimit());
    // It waits to be added.
    EXPECT_FALSE(Sim()->HasConstraint(hinge->GetHinge()));
    TheScene()->AddEntity(hinge);
    EXPECT_TRUE(hinge->IsAlive());
}

TEST_F(HingeEntityTest, FastenedAnewReplacesTheOldHingeInTheSimulation)
{
    const HingePtr hinge = Wheel();
    Set(hinge, "motor", true);
    Set(hinge, "motorTorque", 30.0f);
    Set(hinge, "impulseLimit", 40.0f);
    TheScene()->Update(0.01f);
    const physics::HingePtr old = hinge->GetHinge();
    const Vec2 points[2] = {Vec2(0.25f, 0), Vec2(0.25f, 0)};
    hinge->AttachAt(points);
    EXPECT_NE(old, hinge->GetHinge());
    EXPECT_FALSE(Sim()->HasConstraint(old));
    EXPECT_TRUE(Sim()->HasConstraint(hinge->GetHinge()));
    EXPECT_EQ(1u, Sim()->GetHinges().size());
    EXPECT_TRUE(hinge->GetHinge()->IsMotor());
    EXPECT_EQ(30, hinge->GetHinge()->GetMotorTorque());
    EXPECT_EQ(40, hinge->GetHinge()->GetImpulseLimit());
    EXPECT_TRUE(hinge->IsAlive());
}

TEST_F(HingeEntityTest, MovedByATransformHoldsAtItsNewPlace)
{
    const HingePtr hinge = Wheel();
    hinge->StartTransform();
    hinge->Transform(math::Mat2D::Translation(Vec2(0.25f, 0.25f)));
    hinge->EndTransform();
    Run("Sim.gravitySwitch = true");
    Frame(50);
    Vec2 points[2];
    hinge->GetHinge()->GetWorldPoints(points);
    EXPECT_NEAR(0.25f, points[0].x, 0.01f);
    EXPECT_NEAR(0.25f, points[1].x, 0.01f);
    EXPECT_NEAR(0.25f, points[1].y, 0.01f);
}

TEST_F(HingeEntityTest, MadeForTwoGeometriesIsFastenedAtThePoint)
{
    const auto a = Box(Vec2()), b = Box(Vec2(1, 0));
    const HingeEntity hinge(a->GetGeom(), b->GetGeom(), Vec2(0.5f, 0), 0.3f);
    EXPECT_EQ(0.3f, hinge.GetSize());
    EXPECT_EQ(Vec2(0.5f, 0), hinge.GetLocalPoint(0));
    EXPECT_EQ(Vec2(-0.5f, 0), hinge.GetLocalPoint(1));
    EXPECT_TRUE(hinge.GetHinge());
}

TEST_F(HingeEntityTest, WritesButtonsThatAreBound)
{
    HingeEntity hinge(1);
    EntitySerializer none;
    hinge.SerializeTo(none);
    for (const char* key : {"buttonForward", "buttonBack", "buttonBreak"})
        EXPECT_FALSE(none.Has(key)) << key;

    hinge.GetButtonForward().Assign(SDLK_RIGHT);
    hinge.GetButtonBreak().Deserialize("toggle left_ctrl a");
    EntitySerializer bag;
    hinge.SerializeTo(bag);
    EXPECT_EQ("right", bag.Get<util::String>("buttonForward"));
    EXPECT_FALSE(bag.Has("buttonBack"));
    EXPECT_EQ("toggle left_ctrl a", bag.Get<util::String>("buttonBreak"));

    HingeEntity read(1);
    read.Deserialize(bag);
    EXPECT_EQ("right", read.GetButtonForward().AsString());
    EXPECT_FALSE(read.GetButtonBack().IsBound());
    EXPECT_EQ("toggle left_ctrl a", read.GetButtonBreak().AsString());
}

TEST_F(HingeEntityTest, WritesUnboundButtonsToo_WhenDefaultsAreKept)
{
    HingeEntity hinge(1);
    EntitySerializer bag(EntitySerializer::Defaults::Keep);
    hinge.SerializeTo(bag);
    EXPECT_EQ("", bag.Get<util::String>("buttonForward"));
    hinge.GetButtonForward().Assign(SDLK_RIGHT);
    hinge.Deserialize(bag);
    EXPECT_FALSE(hinge.GetButtonForward().IsBound());
}

TEST_F(HingeEntityTest, ReadsTheArrowKeysOfOldFiles)
{
    EntitySerializer bag;
    bag.Set("controller", util::String("arrowkeys"));
    HingeEntity hinge(1);
    hinge.Deserialize(bag);
    EXPECT_EQ(std::vector<int>{275}, hinge.GetButtonForward().GetKeySet());
    EXPECT_EQ(std::vector<int>{276}, hinge.GetButtonBack().GetKeySet());
    EXPECT_EQ(std::vector<int>{274}, hinge.GetButtonBreak().GetKeySet());
    EXPECT_EQ("true", hinge.GetObject("motor")->ToText());

    bag.Set("controller", util::String("somethingelse"));
    HingeEntity other(1);
    other.Deserialize(bag);
    EXPECT_FALSE(other.GetButtonForward().IsBound());
    EXPECT_EQ("false", other.GetObject("motor")->ToText());
}

TEST_F(HingeEntityTest, ChangesNothingWhenAButtonHasNoSuchKey)
{
    HingeEntity hinge(1);
    hinge.GetButtonForward().Assign(SDLK_RIGHT);
    EntitySerializer bag;
    bag.Set("size", 2.0f);
    bag.Set("buttonForward", util::String("left"));
    bag.Set("buttonBreak", util::String("nokey"));
    EXPECT_THROW(hinge.Deserialize(bag), BadDataException);
    EXPECT_EQ("right", hinge.GetButtonForward().AsString());
    EXPECT_EQ(1, hinge.GetSize());
}

TEST_F(HingeEntityTest, RefusesSettingsThatAreNoNumbers)
{
    ExpectRefusesNaN<HingeEntity>({"motorSpeed", "motorTorque", "impulseLimit", "distanceLimit"});
}

TEST_F(HingeEntityTest, IsGoneFromTheSimulationWithTheScene)
{
    const HingePtr hinge = Wheel();
    const GeomPtr box = hinge->GetGeom(1);
    EXPECT_EQ(1u, box->GetNoCollide().size());
    TheScene()->ClearScene();
    EXPECT_FALSE(Sim()->HasConstraint(hinge->GetHinge()));
    EXPECT_EQ(0u, box->GetNoCollide().size());
}
}
}
