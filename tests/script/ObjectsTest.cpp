#include "script/Objects.h"

#include "ScriptFixture.h"
#include "script/Attributes.h"
#include "script/ValueConversions.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <functional>

using namespace script;

namespace
{
using Objects = test::Script;

std::string ErrorOf(const std::function<void()>& what)
{
    try
    {
        what();
    }
    catch (std::exception& e)
    {
        return e.what();
    }
    return "nothing thrown";
}

std::vector<std::string>& Zones()
{
    static std::vector<std::string> s_zones;
    return s_zones;
}
}

TEST_F(Objects, HaveTexts)
{
    EXPECT_EQ("true", ValueToObject(true)->ToText());
    EXPECT_EQ("-5", ValueToObject(-5)->ToText());
    EXPECT_EQ("0.1", ValueToObject(0.1f)->ToText());
    EXPECT_EQ("1e+20", ValueToObject(1e20)->ToText());
    EXPECT_EQ("a \"b\"", ValueToObject("a \"b\"")->ToText());
    EXPECT_EQ("void", Void().ToText());
    EXPECT_EQ("unbound", Unbound().ToText());
    EXPECT_EQ("error", ErrorObject().ToText());
    EXPECT_EQ("ClassObject", ClassObject().ToText());
    EXPECT_EQ("intrinsic function", Evaluate("math.add")->ToText());
    EXPECT_EQ("(a)=>{a}", Evaluate("(a) => {a}")->ToText());
    EXPECT_EQ("[1, x, [true]]", Evaluate("[1, \"x\", [true]]")->ToText());
}

TEST_F(Objects, WithoutAValueAreNotSaved)
{
    EXPECT_FALSE(Void().ToExpression());
    EXPECT_FALSE(Unbound().ToExpression());
    EXPECT_FALSE(ErrorObject().ToExpression());
    EXPECT_FALSE(Evaluate("math.add")->ToExpression());
}

TEST_F(Objects, AreExpandedWhenTheyAreFunctionsWithoutArguments)
{
    EXPECT_EQ("42", ExpandObject(Evaluate("{42}"))->ToText());
    EXPECT_EQ("(a)=>{42}", ExpandObject(Evaluate("(a)=>{42}"))->ToText());
    EXPECT_EQ("[1]", ExpandObject(Evaluate("[1]"))->ToText());
    EXPECT_EQ("7", ExpandObject(ValueToObject(7))->ToText());
    EXPECT_FALSE(ExpandObject(ObjectPtr()));
}

TEST_F(Objects, CommandsAssertTheNumberOfTheirArguments)
{
    const std::string assertion = "Failed to evaluate: math.sin(1, 2), Data assertion failed: ";
    EXPECT_EQ(0u, WarningOf("math.sin(1, 2)").find(assertion + "\"args.size() == 1\""));
    EXPECT_NE(std::string::npos, WarningOf("math.add(1)").find("\"args.size() == 2\""));
    EXPECT_NE(std::string::npos, WarningOf("math.add(1, 2, 3)").find("\"args.size() == 2\""));
    const AbstractFunctionPtr pi = util::DynamicCast<AbstractFunction>(
        static_cast<ClassObject&>(*Evaluate("math")).GetObject("pi"));
    EXPECT_EQ(0, pi->GetArgCount());
    EXPECT_THROW(pi->Call({ValueToObject(1)}), BadDataException);
}

TEST_F(Objects, ThrowCastSaysTheGivenText)
{
    EXPECT_EQ("Not what I want",
              ErrorOf([] { ThrowCast<List>(ValueToObject(1), "Not what I want"); }));
    EXPECT_EQ("Not what I want", ErrorOf([] { ThrowCast<List>(ObjectPtr(), "Not what I want"); }));
    EXPECT_EQ("[1]", ThrowCast<List>(Evaluate("[1]"), "Not what I want")->ToText());
}

TEST_F(Objects, AFunctionKeepsTheClosureOfItsLatestCall)
{
    const FunctionPtr function = ObjectToValue<FunctionPtr>(Evaluate("{ density = 2.0; id = 5 }"));
    EXPECT_FALSE(function->GetCallClosure());
    EXPECT_EQ(0, function->GetArgCount());
    function->Call(ObjectList());
    const ClosurePtr first = function->GetCallClosure();
    EXPECT_EQ("2", first->GetObject("density")->ToText());
    EXPECT_EQ("5", first->GetObject("id")->ToText());
    EXPECT_EQ(first->GetOwner().GetUnlocked(), &Root());
    function->Call(ObjectList());
    EXPECT_NE(first, function->GetCallClosure());
    EXPECT_EQ(&Root(), function->GetClosure().get());
}

TEST_F(Objects, TheNameOfACallIsTheWholeSource)
{
    // Deliberate.
    const FunctionPtr function = ObjectToValue<FunctionPtr>(Evaluate("(a, b) => { x = a; x + b }"));
    function->Call({ValueToObject(1), ValueToObject(2)});
    EXPECT_EQ("[function closure: (a, b)=>{\n    x = a;\n    x + b\n}]",
              function->GetCallClosure()->ToText());
    EXPECT_EQ(function->GetCallClosure()->ToText(), function->GetCallClosure()->GetReflectedName());
}

TEST_F(Objects, NobodyPaysForTheNameOfACall)
{
    // Printed, the body would be a text of 60 megabytes.
    std::string body;
    for (int i = 0; i < 500; ++i)
        body += "a;";
    std::string text = body;
    for (int depth = 0; depth < 300; ++depth)
        text = "{" + text + "}";
    const FunctionPtr function = ObjectToValue<FunctionPtr>(Evaluate("(a)=>{" + text + "}"));
    const ObjectList args = {ValueToObject(1)};
    const unsigned long before = util::Pointee::GetAllocateCount();
    for (int i = 0; i < 100000; ++i)
        function->Call(args);
    // Closure, argument and the function that is the value: no text of any size would fit in the time
    // of a test, 100,000 times.
    EXPECT_EQ(3u * 100000, util::Pointee::GetAllocateCount() - before);
}

TEST_F(Objects, ActivationsOfOneFunctionDoNotDisturbOneAnother)
{
    // A function that is running may be called again; each activation keeps its own closure.
    EXPECT_EQ(
        "[1, 2, 1]",
        Run("f = (a, again) => { [a, again(a), a] }; g = (a) => { h = f(2, (b) => { b }); h(0) };"
            "f(1, g)"));
}

TEST_F(Objects, ReportTheirStagesToTheProfiler)
{
    Zones().clear();
    const ReflectedPtr owner = QUIB_NEW Reflected("zoned");
    const AttribWrapper<float> setting(owner.get(), "setting", 1.0f);
    util::ScopeProfiler::s_begin = [](const char* name) { Zones().push_back(name); };
    Run("f = (a) => { [a](0) }; f(1)");
    util::ScopeProfiler::s_begin = nullptr;
    for (const char* zone : {"Function::Call", "List::Call", "Argument eval", "Actual call",
                             "ListDeclaration::Evaluate", "AbstractAttrib::CalcAll",
                             "AbstractAttrib::CalcAll-Loop", "AbstractAttrib::CalcValue"})
        EXPECT_EQ(1, std::count(Zones().begin(), Zones().end(), zone) > 0) << zone;
}
