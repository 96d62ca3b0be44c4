#include "script/Attributes.h"

#include "ScriptFixture.h"

#include <limits>

using namespace script;

namespace
{
using Attributes = test::Script;

class Fan : public Reflected
{
public:
    Fan()
        : Reflected("Fan")
        , speed(this, "speed", 1.5f)
        , blades(this, "blades", 4)
        , on(this, "on", false)
        , id(this, "id", 7ul)
        , label(this, "label", "fan")
        , pos(this, "pos", math::Vec2(1, 2))
        , axis(this, "axis", math::Vec3(0, 0, 1))
        , color(this, "color", math::Vec4(1, 0, 0, 1))
        , angle(this, "angle", 0.5f, &Fan::GetAngle, &Fan::SetAngle)
        , locked(this, "locked", false, &Fan::IsLocked, &Fan::SetLocked)
        , size(this, "size", math::Vec2(1, 1), &Fan::GetSize, &Fan::SetSize)
    {
    }

    void CountChange() { ++changes; }

    AttribWrapper<float> speed;
    AttribWrapper<int> blades;
    AttribWrapper<bool> on;
    AttribWrapper<unsigned long> id;
    AttribWrapper<util::String> label;
    AttribWrapper<math::Vec2> pos;
    AttribWrapper<math::Vec3> axis;
    AttribWrapper<math::Vec4> color;
    AttribWrapper<float> angle;
    AttribWrapper<bool> locked;
    AttribWrapper<math::Vec2> size;

    int changes = 0;
    int angleWrites = 0;
    float storedAngle = 0.5f;

private:
    float GetAngle() const { return storedAngle; }
    void SetAngle(float value)
    {
        if (!math::IsFinite(value))
            throw BadDataException("no such angle");
        ++angleWrites;
        storedAngle = value;
    }
    bool IsLocked() const { return m_locked; }
    void SetLocked(bool value) { m_locked = value; }
    math::Vec2 GetSize() const { return m_size; }
    void SetSize(const math::Vec2& value) { m_size = value; }

    bool m_locked = false;
    math::Vec2 m_size = math::Vec2(1, 1);
};

util::SharedPtr<Fan> MakeFan()
{
    util::SharedPtr<Fan> fan = QUIB_NEW Fan;
    fan->AddToRoot();
    return fan;
}

void NextFrame()
{
    script::Parser::GetInstancePtr()->Update();
}
}

TEST_F(Attributes, AreOneWordInTheirOwner)
{
    static_assert(sizeof(AttribWrapper<float>) == sizeof(void*), "a handle and no more");
    static_assert(sizeof(AttribWrapper<math::Vec4>) == sizeof(void*), "a handle and no more");
    SUCCEED();
}

TEST_F(Attributes, AreReadAndWrittenFromBothSides)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    EXPECT_EQ(
        "[1.5, 4, false, 7, fan, [1, 2], [0, 0, 1], [1, 0, 0, 1], 0.5, false, [1, 1]]",
        Run("[Fan.speed, Fan.blades, Fan.on, Fan.id, Fan.label, Fan.pos, Fan.axis, Fan.color, "
            "Fan.angle, Fan.locked, Fan.size]"));
    Run("Fan.speed = 2.5; Fan.blades = 5; Fan.on = true; Fan.id = 8; Fan.label = \"x\";"
        "Fan.pos = [3, 4]; Fan.axis = [1, 0, 0]; Fan.color = [0, 0, 0, 0]; Fan.angle = 1.25;"
        "Fan.locked = true; Fan.size = [2, 3]");
    EXPECT_EQ(2.5f, fan->speed);
    EXPECT_EQ(5, fan->blades);
    EXPECT_EQ(true, fan->on);
    EXPECT_EQ(8ul, fan->id);
    EXPECT_EQ("x", fan->label.Get());
    EXPECT_EQ(math::Vec2(3, 4), fan->pos.Get());
    EXPECT_EQ(math::Vec3(1, 0, 0), fan->axis.Get());
    EXPECT_EQ(math::Vec4(0, 0, 0, 0), fan->color.Get());
    EXPECT_EQ(1.25f, fan->storedAngle);
    EXPECT_EQ(true, fan->locked);
    EXPECT_EQ(math::Vec2(2, 3), fan->size.Get());

    fan->speed = 9.0f;
    fan->angle = 3.0f;
    EXPECT_EQ("[9, 3]", Run("[Fan.speed, Fan.angle]"));
    EXPECT_EQ(3.0f, fan->storedAngle);
}

TEST_F(Attributes, TakeTheValueAndNotTheAttributeOfAnother)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    fan->angle = 8.0f;
    fan->speed = fan->angle;
    EXPECT_EQ(8.0f, fan->speed);
    fan->speed = 1.0f;
    EXPECT_EQ(8.0f, fan->angle);
}

TEST_F(Attributes, FollowAFormulaEveryFrame)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    Run("time = 1.0; Fan.speed = { time * 2.0 }");
    EXPECT_EQ(2.0f, fan->speed);
    Root().GetVariable("time")->SetObject(ValueToObject(4.0));
    EXPECT_EQ(2.0f, fan->speed);
    NextFrame();
    EXPECT_EQ(8.0f, fan->speed);
    // Every script run brings them up to date as well.
    Run("time = 5.0");
    EXPECT_EQ(10.0f, fan->speed);
    EXPECT_EQ("Fan.speed = {time * 2.0}", fan->GetVariable("speed")->ToExpression()->ToCode());
}

TEST_F(Attributes, LoseTheirFormulaWhenNativeCodeWrites)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    Run("Fan.speed = { 3.0 }");
    fan->speed = 7.0f;
    NextFrame();
    EXPECT_EQ(7.0f, fan->speed);
    EXPECT_EQ("Fan.speed = 7.0", fan->GetVariable("speed")->ToExpression()->ToCode());
}

TEST_F(Attributes, RefuseAWrongTypeOnceAndKeepTheirValue)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    const struct
    {
        const char *assignment, *warning, *object;
    } cases[] = {
        {"Fan.speed = \"fast\"", "speed was bound to bad type", "1.5"},
        {"Fan.speed = [1]", "speed was bound to bad type", "1.5"},
        {"Fan.speed = (a) => { 1.0 }", "speed was bound to bad type", "1.5"},
        {"Fan.speed = { \"fast\" }", "speed was bound to bad type", "1.5"},
        {"Fan.speed = math.pi", "speed was bound to bad type", "1.5"},
        {"Fan.blades = 4.0", "blades was bound to bad type", "4"},
        {"Fan.on = 1", "on was bound to bad type", "false"},
        {"Fan.id = \"7\"", "id was bound to bad type", "7"},
        {"Fan.label = 1", "label was bound to bad type", "fan"},
        {"Fan.pos = [1, 2, 3]", "pos was bound to bad type", "[1, 2]"},
        {"Fan.pos = [1, true]", "pos was bound to bad type", "[1, 2]"},
        {"Fan.axis = [1, 2]", "axis was bound to bad type", "[0, 0, 1]"},
        {"Fan.color = 1", "color was bound to bad type", "[1, 0, 0, 1]"},
        {"Fan.angle = \"x\"", "angle was bound to bad type", "0.5"},
        {"Fan.angle = +inf", "angle was bound to bad type", "0.5"},
        {"Fan.angle = { 0.0 / 0.0 }", "angle was bound to bad type", "0.5"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.assignment);
        EXPECT_EQ(std::vector<std::string>{c.warning}, WarningsOf(c.assignment));
        const std::string assignment = c.assignment;
        EXPECT_EQ(c.object,
                  fan->GetObject(assignment.substr(4, assignment.find(' ') - 4))->ToText());
        test::LogCapture log(logging::LogWarning);
        NextFrame();
        EXPECT_EQ("", log.Text());
    }
    EXPECT_EQ(1.5f, fan->speed);
    EXPECT_EQ(0.5f, fan->storedAngle);
}

TEST_F(Attributes, TakeAnIntForAFloat)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    EXPECT_EQ("", WarningOf("Fan.speed = 3"));
    EXPECT_EQ(3.0f, fan->speed);
}

TEST_F(Attributes, GiveOneBurstOfWarningsForABadFormula)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    const std::vector<std::string> expected = {
        "Failed to evaluate: nothing, nothing not found in scope", "speed was bound to bad type"};
    EXPECT_EQ(expected, WarningsOf("Fan.speed = { nothing }"));
    EXPECT_EQ(1.5f, fan->speed);
    EXPECT_TRUE(WarningsOf("1").empty());
}

TEST_F(Attributes, SurviveASetterThatRefusesEverything)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("Stubborn");
    owner->AddToRoot();
    const auto refuse = [](const float&) { throw std::runtime_error("never"); };
    float next = 0;
    owner->AddVariable(QUIB_NEW AttribGetSet<float>(
        "odd", 0.0f, [&] { return ++next; }, refuse));
    const std::vector<std::string> warnings = WarningsOf("Stubborn.odd = 5.0");
    ASSERT_GE(warnings.size(), 1u);
    EXPECT_LE(warnings.size(), 3u);
    EXPECT_EQ("odd was bound to bad type", warnings[0]);
    owner->RemoveVariable("odd");
}

TEST_F(Attributes, AreUnboundAgainAfterAStrangeFailure)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("Strange");
    owner->AddToRoot();
    bool isStrange = false;
    float stored = 1;
    // The value that the getter gives differs from the last one, so that the setter is asked.
    owner->AddVariable(QUIB_NEW AttribGetSet<float>(
        "odd", 1.0f, [&] { return stored += 1; },
        [&](const float&)
        {
            if (isStrange)
                throw 5;
        }));
    isStrange = true;
    EXPECT_THROW(owner->GetVariable("odd")->SetObject(ValueToObject("x")), int);
    isStrange = false;
    owner->GetVariable("odd")->SetObject(ValueToObject("x"));
    EXPECT_NE("x", owner->GetObject("odd")->ToText());
    owner->RemoveVariable("odd");
}

TEST_F(Attributes, LetAStrangeFailurePassThrough)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("Passing");
    owner->AddToRoot();
    bool isStrange = false;
    owner->AddVariable(QUIB_NEW AttribGetSet<float>(
        "odd", 1.0f, [] { return 1.0f; },
        [&](const float&)
        {
            if (isStrange)
                throw 5;
        }));
    owner->GetVariable("odd")->SetObject(ValueToObject(2.0f));
    isStrange = true;
    EXPECT_THROW(AbstractAttrib::CalcAll(), int);
    EXPECT_THROW(Parser().Update(), int);
    owner->RemoveVariable("odd");
}

TEST_F(Attributes, TellOfChangesOnly)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    fan->speed->AddChangeCallback(util::MakeCallback(&Fan::CountChange, fan.get()));
    fan->angle.GetAttrib()->AddChangeCallback(util::MakeCallback(&Fan::CountChange, fan.get()));
    fan->speed = 1.5f;
    Run("Fan.speed = 1.5");
    EXPECT_EQ(0, fan->changes);
    fan->speed = 2.0f;
    EXPECT_EQ(1, fan->changes);
    Run("Fan.speed = { 3.0 }");
    EXPECT_EQ(2, fan->changes);
    for (int i = 0; i < 10; ++i)
        NextFrame();
    EXPECT_EQ(2, fan->changes);
    Run("Fan.angle = 2.0");
    EXPECT_EQ(3, fan->changes);
    EXPECT_EQ(1, fan->angleWrites);
    NextFrame();
    EXPECT_EQ(1, fan->angleWrites);
}

TEST_F(Attributes, KnowWhetherTheyHaveTheirDefault)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    const auto hasDefault = [&]
    { return dynamic_cast<AbstractAttrib&>(*fan->GetVariable("speed")).HasDefaultValue(); };
    EXPECT_TRUE(hasDefault());
    fan->speed = 2.0f;
    EXPECT_FALSE(hasDefault());
    // Deliberate: the value counts, whatever it comes from.
    Run("Fan.speed = { 1.5 }");
    EXPECT_TRUE(hasDefault());
    Run("Fan.speed = { 2.5 }");
    EXPECT_FALSE(hasDefault());
    fan->speed = 1.5f;
    EXPECT_TRUE(hasDefault());
    Run("Fan.angle = 0.25");
    EXPECT_FALSE(dynamic_cast<AbstractAttrib&>(*fan->GetVariable("angle")).HasDefaultValue());
}

TEST_F(Attributes, GiveTheirGetterAway)
{
    boost::function<float()> getter;
    {
        const util::SharedPtr<Fan> fan = QUIB_NEW Fan;
        getter = fan->speed->GetterFunction();
        fan->speed = 4.0f;
        EXPECT_EQ(4.0f, getter());
    }
    EXPECT_EQ(4.0f, getter());
}

TEST_F(Attributes, PokeAVariableElsewhere)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("Poked");
    owner->AddToRoot();
    int remote = 5;
    bool flag = true;
    math::Vec2i size(3, 4);
    owner->AddVariable(QUIB_NEW AttribRemotePoker<int>("number", &remote));
    owner->AddVariable(QUIB_NEW AttribRemotePoker<bool>("flag", &flag));
    owner->AddVariable(QUIB_NEW AttribRemotePoker<math::Vec2i>("size", &size));
    AbstractAttrib& number = dynamic_cast<AbstractAttrib&>(*owner->GetVariable("number"));

    EXPECT_EQ("[5, true, [3, 4]]", Run("[Poked.number, Poked.flag, Poked.size]"));
    EXPECT_TRUE(number.HasDefaultValue());
    Run("Poked.number = 6; Poked.flag = false; Poked.size = [7, 8]");
    EXPECT_EQ(6, remote);
    EXPECT_FALSE(flag);
    EXPECT_EQ(math::Vec2i(7, 8), size);
    EXPECT_FALSE(number.HasDefaultValue());

    // An outside write wins over the binding, which it drops.
    Run("Poked.number = { 10 }");
    EXPECT_EQ(10, remote);
    remote = 11;
    EXPECT_EQ("10", ExpandObject(owner->GetObject("number"))->ToText());
    NextFrame();
    EXPECT_EQ(11, remote);
    EXPECT_EQ("11", owner->GetObject("number")->ToText());
    EXPECT_EQ("number was bound to bad type", WarningOf("Poked.number = 1.0"));
    EXPECT_EQ(11, remote);
    for (const char* name : {"number", "flag", "size"})
        owner->RemoveVariable(name);
}

TEST_F(Attributes, TellOfChangesElsewhereOnceTheyAreSeen)
{
    const util::SharedPtr<Fan> observer = QUIB_NEW Fan;
    const ReflectedPtr owner = QUIB_NEW Reflected("Watched");
    owner->AddToRoot();
    int remote = 5;
    const util::SharedPtr<AttribRemotePoker<int>> attrib =
        QUIB_NEW AttribRemotePoker<int>("number", &remote);
    owner->AddVariable(attrib);
    attrib->AddChangeCallback(util::MakeCallback(&Fan::CountChange, observer.get()));
    Run("Watched.number = 5");
    EXPECT_EQ(0, observer->changes);
    Run("Watched.number = 6");
    EXPECT_EQ(1, observer->changes);
    attrib->Set(7);
    EXPECT_EQ(2, observer->changes);
    // What native code has written there is no change of the attribute's own: it finds its value in place.
    remote = 8;
    NextFrame();
    EXPECT_EQ(2, observer->changes);
    EXPECT_EQ("8", Run("Watched.number"));
    Run("Watched.number = { 9 }");
    EXPECT_EQ(3, observer->changes);
    NextFrame();
    EXPECT_EQ(3, observer->changes);
    owner->RemoveVariable("number");
}

TEST_F(Attributes, AreCalculatedInOrderOfCreation)
{
    std::vector<int> order;
    const ReflectedPtr owner = QUIB_NEW Reflected("Order");
    const auto add = [&](int n)
    {
        owner->AddVariable(QUIB_NEW AttribGetSet<float>(
            "n" + util::ToString(n), 0.0f,
            [&order, n]
            {
                order.push_back(n);
                return 0.0f;
            },
            [](const float&) {}));
    };
    for (int n : {5, 1, 4, 2, 3})
        add(n);
    owner->RemoveVariable("n4");
    add(6);
    order.clear();
    AbstractAttrib::CalcAll();
    EXPECT_EQ((std::vector<int>{5, 1, 2, 3, 6}), order);
    // Many come and go: the order of those that stay stands.
    for (int i = 0; i < 1000; ++i)
        const ReflectedPtr fan = QUIB_NEW Fan;
    add(7);
    order.clear();
    AbstractAttrib::CalcAll();
    EXPECT_EQ((std::vector<int>{5, 1, 2, 3, 6, 7}), order);
    for (int n : {1, 2, 3, 5, 6, 7})
        owner->RemoveVariable("n" + util::ToString(n));
}

TEST_F(Attributes, MayBeDestroyedAndMadeByAFormula)
{
    static util::SharedPtr<Fan> s_victim;
    static std::vector<util::SharedPtr<Fan>> s_made;
    Root().AddVoidCmd("destroy", [] { s_victim.Reset(nullptr); });
    Root().AddVoidCmd("make", [] { s_made.push_back(QUIB_NEW Fan); });

    // Another one, earlier and later than the formula.
    for (bool isEarlier : {true, false})
    {
        if (isEarlier)
            s_victim = QUIB_NEW Fan;
        const util::SharedPtr<Fan> fan = MakeFan();
        if (!isEarlier)
            s_victim = QUIB_NEW Fan;
        fan->GetVariable("speed")->SetObject(Evaluate("{ destroy; make; 5.0 }"));
        NextFrame();
        NextFrame();
        EXPECT_FALSE(s_victim);
        EXPECT_EQ(5.0f, fan->speed);
        Root().RemoveReflectedChild(fan);
    }

    // Its own object, getter and setter included.
    for (const char* name : {"speed", "angle"})
    {
        s_victim = QUIB_NEW Fan;
        test::LogCapture log(logging::LogWarning);
        s_victim->GetVariable(name)->SetObject(Evaluate("{ destroy; 5.0 }"));
        NextFrame();
        EXPECT_FALSE(s_victim);
        EXPECT_EQ("", log.Text());
    }
    EXPECT_FALSE(s_made.empty());
    s_made.clear();
    for (const char* name : {"destroy", "make"})
        Root().RemoveVariable(name);
}

TEST_F(Attributes, MayBeBoundAnewByTheirOwnFormula)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    Run("Fan.speed = { Fan.speed = 4.0; 5.0 }");
    NextFrame();
    EXPECT_EQ(4.0f, fan->speed);
}

TEST_F(Attributes, AllInstancesAreKnown)
{
    const size_t before = AbstractAttrib::GetClassInstanceCount();
    {
        const util::SharedPtr<Fan> fan = QUIB_NEW Fan;
        EXPECT_EQ(before + 11, AbstractAttrib::GetClassInstanceCount());
    }
    EXPECT_EQ(before, AbstractAttrib::GetClassInstanceCount());
}

TEST_F(Attributes, ChangeCallbacksOfADeadObserverLeaveAtTheSweep)
{
    const util::SharedPtr<Fan> fan = MakeFan();
    {
        const util::SharedPtr<Fan> observer = QUIB_NEW Fan;
        fan->speed->AddChangeCallback(util::MakeCallback(&Fan::CountChange, observer.get()));
        fan->speed = 2.0f;
        EXPECT_EQ(1, observer->changes);
    }
    fan->speed = 3.0f;
    util::AbstractCallbackSet::FlushCallbackSets();
    fan->speed = 4.0f;
    EXPECT_EQ(4.0f, fan->speed);
}

TEST_F(Attributes, CostNoCallbackSetBeforeSomeoneListens)
{
    const size_t before = util::AbstractCallbackSet::GetClassInstanceCount();
    const util::SharedPtr<Fan> fan = MakeFan();
    EXPECT_EQ(before, util::AbstractCallbackSet::GetClassInstanceCount());
    fan->speed->AddChangeCallback(util::MakeCallback(&Fan::CountChange, fan.get()));
    EXPECT_EQ(before + 1, util::AbstractCallbackSet::GetClassInstanceCount());
}
