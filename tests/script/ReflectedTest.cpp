#include "script/Reflected.h"

#include "ScriptFixture.h"

using namespace script;

namespace
{
using ReflectedScript = test::Script;

class Bell : public Reflected
{
public:
    Bell()
        : Reflected("Bell")
    {
        AddCmd("ring", &Bell::Ring);
        AddCmd("loudness", &Bell::GetLoudness);
        AddCmd("count", &Bell::GetCount);
        AddCmd("year", &Bell::GetYear);
        AddCmd("self", [this] { return ObjectPtr(ClassObjectPtr(this)); });
        AddVoidCmd("silence", [this] { m_count = 0; });
        AddCmd1("twice", [](const ObjectPtr& o) { return ObjectPtr(QUIB_NEW List({o, o})); });
        AddCmd2("pair",
                [](const ObjectPtr& a, const ObjectPtr& b) {
                    return ObjectPtr(QUIB_NEW List({a, b}));
                });
        AddVoidCmd2(
            "add", [this](const ObjectPtr& a, const ObjectPtr& b)
            { m_count += ObjectToValue<unsigned long>(a) + ObjectToValue<unsigned long>(b); });
    }

private:
    void Ring() { ++m_count; }
    double GetLoudness() { return 1.5; }
    unsigned long GetCount() const { return m_count; }
    static unsigned long GetYear() { return 1787; }

    unsigned long m_count = 0;
};
}

TEST_F(ReflectedScript, CommandsAreCalledFromScripts)
{
    const ReflectedPtr bell = QUIB_NEW Bell;
    bell->AddToRoot();
    EXPECT_EQ("Bell", Run("Bell"));
    EXPECT_EQ("void", Run("Bell.ring"));
    EXPECT_EQ("1", Run("Bell.count"));
    EXPECT_EQ("1.5", Run("Bell.loudness"));
    EXPECT_EQ("1787", Run("Bell.year"));
    EXPECT_EQ("Bell", Run("Bell.self"));
    EXPECT_EQ("1787", Run("Bell.self.year"));
    EXPECT_EQ("[3, 3]", Run("Bell.twice 3"));
    EXPECT_EQ("[3, 4]", Run("Bell.pair(3, 4)"));
    EXPECT_EQ("void", Run("Bell.add(3, 4)"));
    EXPECT_EQ("8", Run("Bell.count"));
    EXPECT_EQ("void", Run("Bell.silence"));
    EXPECT_EQ("0", Run("Bell.count"));
    EXPECT_EQ("Failed to evaluate: Bell.ring = 1, Cannot set constant variable ring",
              WarningOf("Bell.ring = 1"));
}

TEST_F(ReflectedScript, ChildrenOfOneNameAreNumbered)
{
    const ReflectedPtr parent = QUIB_NEW Reflected("parent");
    const ReflectedPtr children[] = {QUIB_NEW Reflected("x"), QUIB_NEW Reflected("x"),
                                     QUIB_NEW Reflected("x")};
    for (const ReflectedPtr& child : children)
        parent->AddReflectedChild(child);
    EXPECT_EQ("x", children[0]->GetReflectedName());
    EXPECT_EQ("x_2", children[1]->GetReflectedName());
    EXPECT_EQ("x_3", children[2]->GetReflectedName());
    EXPECT_EQ(children[1], parent->GetObject("x_2"));
    EXPECT_EQ(parent.get(), children[2]->GetOwner().GetUnlocked());

    parent->RemoveReflectedChild(children[0]);
    EXPECT_FALSE(parent->HasVariable("x"));
    EXPECT_TRUE(children[0]->GetOwner().IsNull());
}

TEST_F(ReflectedScript, AChildLeavesItsEarlierParent)
{
    const ReflectedPtr a = QUIB_NEW Reflected("a");
    const ReflectedPtr b = QUIB_NEW Reflected("b");
    const ReflectedPtr child = QUIB_NEW Reflected("child");
    b->AddVariable2("child", ValueToObject(1));
    a->AddReflectedChild(child);
    b->AddReflectedChild(child);
    EXPECT_FALSE(a->HasVariable("child"));
    EXPECT_EQ("child_2", child->GetReflectedName());
    EXPECT_EQ(child, b->GetObject("child_2"));
    EXPECT_EQ(b.get(), child->GetOwner().GetUnlocked());
}

TEST_F(ReflectedScript, AChildThatAScriptHasMovedCanStillBeAdded)
{
    const ReflectedPtr parent = QUIB_NEW Reflected("parent");
    const ReflectedPtr child = QUIB_NEW Reflected("child");
    parent->AddVariable2("byScript", child);
    const ReflectedPtr other = QUIB_NEW Reflected("other");
    other->AddReflectedChild(child);
    EXPECT_EQ(other.get(), child->GetOwner().GetUnlocked());
}

TEST_F(ReflectedScript, AChildThatMovesTakesNoOtherVariableAway)
{
    const ReflectedPtr a = QUIB_NEW Reflected("a");
    const ReflectedPtr b = QUIB_NEW Reflected("b");
    const ReflectedPtr child = QUIB_NEW Reflected("child");
    a->AddVariable2("byScript", child);
    a->AddVariable2("child", ValueToObject(1));
    b->AddReflectedChild(child);
    EXPECT_EQ("1", a->GetObject("child")->ToText());
    EXPECT_FALSE(a->HasVariable("byScript"));
    EXPECT_EQ(child, b->GetObject("child"));
    EXPECT_EQ(b.get(), child->GetOwner().GetUnlocked());
}

TEST_F(ReflectedScript, AChildLeavesItsParentWhereverAScriptHasStoredIt)
{
    const ReflectedPtr a = QUIB_NEW Reflected("a");
    const ReflectedPtr b = QUIB_NEW Reflected("b");
    const ReflectedPtr other = QUIB_NEW Reflected("other");
    const ReflectedPtr child = QUIB_NEW Reflected("child");
    a->AddReflectedChild(child);
    other->AddVariable2("s", child);
    EXPECT_EQ(other.get(), child->GetOwner().GetUnlocked());
    b->AddReflectedChild(child);
    EXPECT_FALSE(a->HasVariable("child"));
    EXPECT_EQ(b.get(), child->GetOwner().GetUnlocked());
    EXPECT_EQ("child", child->AsIdentifier()->ToCode());
}

TEST_F(ReflectedScript, TheNameStandsWhileThereIsAnOwner)
{
    const ReflectedPtr parent = QUIB_NEW Reflected("parent");
    const ReflectedPtr child = QUIB_NEW Reflected("child");
    child->SetReflectedName("renamed");
    EXPECT_EQ("renamed", child->ToText());
    parent->AddReflectedChild(child);
    EXPECT_THROW(child->SetReflectedName("again"), BadCoderException);
    EXPECT_EQ("renamed", child->ToText());
}

TEST_F(ReflectedScript, StatisticsAreReadableAndNotWritable)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("Stats");
    owner->AddToRoot();
    owner->Report("fps", 60.5f);
    owner->Report("state", util::String("fine"));
    EXPECT_EQ("60.5", Run("Stats.fps"));
    owner->Report("fps", 30.0f);
    EXPECT_EQ("[30, fine]", Run("[Stats.fps, Stats.state]"));
    EXPECT_EQ("Failed to evaluate: Stats.fps = 1, Cannot set constant variable fps",
              WarningOf("Stats.fps = 1"));
    // And they are no settings.
    EXPECT_EQ("", Parser().ToCode());
}

TEST_F(ReflectedScript, AllInstancesAreKnown)
{
    const size_t before = Reflected::GetClassInstanceCount();
    {
        const ReflectedPtr a = QUIB_NEW Reflected("a");
        const ClosurePtr b = QUIB_NEW Closure;
        EXPECT_EQ(before + 2, Reflected::GetClassInstanceCount());
    }
    EXPECT_EQ(before, Reflected::GetClassInstanceCount());
}
