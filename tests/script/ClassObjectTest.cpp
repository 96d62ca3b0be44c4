#include "script/ClassObject.h"

#include "ScriptFixture.h"
#include "script/ValueConversions.h"

using namespace script;

namespace
{
using ClassObjects = test::Script;

std::string NamesOf(const ClassObject& object)
{
    std::string names;
    for (const VariablePtr& variable : object.GetVariables())
        names += variable->GetName() + " ";
    return names;
}

VariablePtr MakeVariable(const char* name, ObjectPtr object, bool constant = false)
{
    return QUIB_NEW Variable(name, object, constant);
}
}

TEST_F(ClassObjects, KeepVariablesInNameOrder)
{
    const ClassObjectPtr object = QUIB_NEW ClassObject;
    for (const char* name : {"b", "a", "B", "_", "a1"})
        object->AddVariable2(name, ValueToObject(name));
    EXPECT_EQ("B _ a a1 b ", NamesOf(*object));
    EXPECT_TRUE(object->HasVariable("a1"));
    EXPECT_FALSE(object->HasVariable("A1"));
    EXPECT_EQ("a1", object->GetObject("a1")->ToText());
    EXPECT_FALSE(object->GetObject("c"));
    EXPECT_FALSE(object->GetVariable("c"));
    object->RemoveVariable("a");
    object->RemoveVariable("missing");
    EXPECT_EQ("B _ a1 b ", NamesOf(*object));
}

TEST_F(ClassObjects, RefuseASecondVariableOfAName)
{
    const ClassObjectPtr object = QUIB_NEW ClassObject;
    object->AddVariable2("a", ValueToObject(1));
    try
    {
        object->AddVariable2("a", ValueToObject(2));
        FAIL();
    }
    catch (BadCoderException& e)
    {
        EXPECT_EQ(0u, std::string(e.what()).find(
                          "Code assertion failed: \"!HasVariable(var->GetName())\""));
    }
    EXPECT_EQ("1", object->GetObject("a")->ToText());
}

TEST_F(ClassObjects, LookOutwardForNames)
{
    const ClassObjectPtr outer = QUIB_NEW ClassObject;
    const ClassObjectPtr inner = QUIB_NEW ClassObject;
    outer->AddVariable2("inner", inner);
    outer->AddVariable2("x", ValueToObject(1));
    EXPECT_EQ("1", inner->LookupObject("x")->ToText());
    EXPECT_FALSE(inner->GetObject("x"));
    inner->AddVariable2("x", ValueToObject(2));
    EXPECT_EQ("2", inner->LookupObject("x")->ToText());
    try
    {
        inner->LookupVariable("y");
        FAIL();
    }
    catch (ScriptException& e)
    {
        EXPECT_STREQ("y not found in scope", e.what());
    }
}

TEST_F(ClassObjects, OwnersFollowTheLatestVariable)
{
    const ClassObjectPtr a = QUIB_NEW ClassObject;
    const ClassObjectPtr b = QUIB_NEW ClassObject;
    const ObjectPtr value = ValueToObject(1);
    a->AddVariable2("x", value);
    EXPECT_EQ(a.get(), value->GetOwner().GetUnlocked());
    b->AddVariable2("y", value);
    EXPECT_EQ(b.get(), value->GetOwner().GetUnlocked());

    // Another object in its place: the value goes without an owner, if it was this variable's.
    a->GetVariable("x")->SetObject(ValueToObject(2));
    EXPECT_EQ(b.get(), value->GetOwner().GetUnlocked());
    b->GetVariable("y")->SetObject(ValueToObject(3));
    EXPECT_TRUE(value->GetOwner().IsNull());

    const VariablePtr y = b->GetVariable("y");
    b->RemoveVariable("y");
    EXPECT_TRUE(y->GetOwner().IsNull());
    EXPECT_TRUE(y->GetObject()->GetOwner().IsNull());

    EXPECT_EQ(a.get(), MakeVariable("z", a->GetObject("x"))->GetOwner().GetUnlocked());
}

TEST_F(ClassObjects, ReturnToTheirHomeWhenAnotherVariableLetsGo)
{
    const ReflectedPtr world = QUIB_NEW Reflected("HomeWorld");
    const ReflectedPtr other = QUIB_NEW Reflected("HomeOther");
    world->AddVariable2("x", ValueToObject(1));
    world->AddToRoot();
    other->AddToRoot();
    const std::string code = "HomeWorld.x = 1";
    const auto expectHome = [&]
    {
        EXPECT_EQ(&Root(), world->GetOwner().GetUnlocked());
        EXPECT_EQ("HomeWorld", world->AsIdentifier()->ToCode());
        EXPECT_EQ(code, world->ToExpression()->ToCode());
        EXPECT_EQ("7", Run("outer = 7; HomeWorld.outer"));
    };
    Run("s = HomeWorld; s = 1");
    expectHome();
    Run("HomeOther.s = HomeWorld");
    EXPECT_EQ(other.get(), world->GetOwner().GetUnlocked());
    Run("HomeOther.s = 1");
    expectHome();
    Run("HomeOther.t = HomeWorld");
    other->RemoveVariable("t");
    expectHome();
    // While a call has it, and when the call is gone, it has its name.
    Run("f = (world) => { 1 }; f(HomeWorld)");
    EXPECT_EQ(code, world->ToExpression()->ToCode());
    Run("f(1)");
    EXPECT_EQ(code, world->ToExpression()->ToCode());
    Run("f = 1");
    EXPECT_EQ(code, world->ToExpression()->ToCode());
    // A new home.
    other->AddReflectedChild(world);
    Run("s = HomeOther.HomeWorld; s = 1");
    EXPECT_EQ(other.get(), world->GetOwner().GetUnlocked());
    other->RemoveReflectedChild(world);
    EXPECT_TRUE(world->GetOwner().IsNull());
    EXPECT_FALSE(world->AsIdentifier());
    Run("m = math; m = 1");
    EXPECT_EQ("math",
              static_cast<ClassObject&>(*Root().GetObject("math")).AsIdentifier()->ToCode());
}

TEST_F(ClassObjects, NeverBecomeARing)
{
    const ClassObjectPtr a = QUIB_NEW ClassObject;
    const ClassObjectPtr b = QUIB_NEW ClassObject;
    const ClassObjectPtr c = QUIB_NEW ClassObject;
    a->AddVariable2("b", b);
    b->AddVariable2("c", c);
    a->AddVariable2("self", a);
    c->AddVariable2("a", a);
    EXPECT_TRUE(a->GetOwner().IsNull());
    EXPECT_EQ(a.get(), b->GetOwner().GetUnlocked());
    EXPECT_EQ(b.get(), c->GetOwner().GetUnlocked());
    EXPECT_THROW(c->LookupVariable("nothing"), ScriptException);
    // Printing ends as well.
    c->AddVariable2("x", ValueToObject(1));
    EXPECT_EQ("b.c.x = 1", a->ToExpression()->ToCode());
    for (const ClassObjectPtr& object : {a, b, c})
        for (const VariablePtr& variable : object->GetVariables())
            object->RemoveVariable(variable->GetName());
}

TEST_F(ClassObjects, StoredInThemselvesByScriptsDoNoHarm)
{
    const ReflectedPtr outer = QUIB_NEW Reflected("RingOuter");
    const ReflectedPtr inner = QUIB_NEW Reflected("RingInner");
    outer->AddReflectedChild(inner);
    outer->AddToRoot();
    inner->AddVariable2("x", ValueToObject(1));
    Run("RingOuter.RingInner.back = RingOuter; RingOuter.me = RingOuter; math.me = math");
    EXPECT_EQ("1", Run("RingOuter.RingInner.back.me.me.RingInner.x"));
    EXPECT_EQ("Failed to evaluate: RingOuter.RingInner.nothing, nothing not found in scope",
              WarningOf("RingOuter.RingInner.nothing"));
    EXPECT_EQ("RingOuter.RingInner.x = 1", Parser().ToCode());
    std::string line = "ringouter.me.me.me.ringinner.x";
    Parser().Expand(line);
    EXPECT_EQ("RingOuter.me.me.me.RingInner.x", line);
    Run("math.me = 1");
    static_cast<ClassObject&>(*Root().GetObject("math")).RemoveVariable("me");
    inner->RemoveVariable("back");
    outer->RemoveVariable("me");
    EXPECT_EQ("[closure]", Run("math"));
}

TEST_F(ClassObjects, KnowTheirPathFromTheRoot)
{
    const ReflectedPtr outer = QUIB_NEW Reflected("PathOuter");
    const ReflectedPtr inner = QUIB_NEW Reflected("PathInner");
    outer->AddReflectedChild(inner);
    EXPECT_EQ("PathInner", inner->AsIdentifier()->ToCode());
    EXPECT_FALSE(outer->AsIdentifier());
    outer->AddToRoot();
    EXPECT_EQ("PathOuter.PathInner", inner->AsIdentifier()->ToCode());
    EXPECT_FALSE(Root().AsIdentifier());
    // The first variable in name order that holds the object gives the name.
    Root().AddVariable(MakeVariable("AAlias", outer, true));
    EXPECT_EQ("AAlias.PathInner", inner->AsIdentifier()->ToCode());
    EXPECT_EQ("AAlias", Root().GetVariableByObject(outer)->GetName());
    EXPECT_FALSE(Root().GetVariableByObject(ValueToObject(1)));
    // An owner that no longer has the object leads nowhere.
    const ClosurePtr nameless = QUIB_NEW Closure("nameless", util::WeakPtr<Closure>(&Root()));
    EXPECT_FALSE(nameless->AsIdentifier());
}

TEST_F(ClassObjects, AssignmentChecksForConstants)
{
    Root().AddVariable(MakeVariable("fixed", ValueToObject(1), true));
    EXPECT_EQ("Failed to evaluate: fixed = 2, Cannot set constant variable fixed",
              WarningOf("fixed = 2"));
    EXPECT_EQ("1", Run("fixed"));
}

TEST_F(ClassObjects, AVariableThatHoldsNothingIsReportedWithItsOwner)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("EmptyOwner");
    owner->AddToRoot();
    owner->AddVariable2("empty", ObjectPtr());
    EXPECT_EQ("Failed to evaluate: EmptyOwner.empty, Cannot find identifier empty in EmptyOwner",
              WarningOf("EmptyOwner.empty"));
    EXPECT_EQ("", Parser().ToCode());
}

TEST_F(ClassObjects, OnlyTheyOwnNames)
{
    Run("x = 1");
    const std::string warning = WarningOf("x.y");
    EXPECT_NE(std::string::npos,
              warning.find("Failed to evaluate: x.y, Data assertion failed: \"owner\""));
}
