#include "script/Recursion.h"

#include "ScriptFixture.h"
#include "script/Attributes.h"

#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>

using namespace script;

namespace
{
using Limits = test::Script;

std::string Repeat(const std::string& text, int n)
{
    std::string all;
    all.reserve(text.size() * static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        all += text;
    return all;
}

// Of the processor's time, whatever else the machine does. What these tests let run would otherwise take
// hours or years: no figure here measures speed.
double SecondsFor(const std::function<void()>& what)
{
    const std::clock_t begin = std::clock();
    what();
    return double(std::clock() - begin) / CLOCKS_PER_SEC;
}

const double Hang = 120;

const int Many = 100000;
}

TEST_F(Limits, BracketsNestAThousandDeepAndNoDeeper)
{
    const struct
    {
        const char *open, *close;
    } kinds[] = {{"(", ")"}, {"[", "]"}, {"{", "}"}, {"(a) => {", "}"}, {"[{(", ")}]"}};
    for (const auto& kind : kinds)
    {
        SCOPED_TRACE(kind.open);
        const int each = kind.open == std::string("[{(") ? 3 : 1;
        const int fits = 1000 / each;
        EXPECT_TRUE(Parser().Parse(Repeat(kind.open, fits) + Repeat(kind.close, fits)));
        EXPECT_EQ("Parse error: Expression nested too deeply",
                  WarningOf(Repeat(kind.open, fits + 1) + Repeat(kind.close, fits + 1)));
        EXPECT_EQ("Parse error: Expression nested too deeply",
                  WarningOf(Repeat(kind.open, Many) + Repeat(kind.close, Many)));
        EXPECT_EQ("Parse error: Expression nested too deeply", WarningOf(Repeat(kind.open, Many)));
    }
}

TEST_F(Limits, ABracketedNumberIsEvaluatedAtFullDepth)
{
    EXPECT_EQ("7", Run(Repeat("(", 1000) + "7" + Repeat(")", 1000)));
    EXPECT_EQ(Repeat("[", 1000) + "7" + Repeat("]", 1000),
              Run(Repeat("[", 1000) + "7" + Repeat("]", 1000)));
}

TEST_F(Limits, OperandsNestAThousandDeepAndNoDeeper)
{
    EXPECT_EQ("1001", Run("1" + Repeat(" + 1", 1000)));
    EXPECT_EQ("Parse error: Expression nested too deeply", WarningOf("1" + Repeat(" + 1", 1001)));
    EXPECT_EQ("Parse error: Expression nested too deeply", WarningOf("1" + Repeat(" + 1", Many)));
    EXPECT_EQ("Parse error: Expression nested too deeply", WarningOf(Repeat("! ", Many) + "true"));
    EXPECT_EQ("Parse error: Expression nested too deeply",
              WarningOf(Repeat("infix 1 left: deeply => ", Many)));
}

TEST_F(Limits, LongChainsAreNoNesting)
{
    // a . b . b ...: evaluated, printed and freed without a word about depth.
    Run("a = math");
    const std::string chain = "a" + Repeat(".sin", Many);
    EXPECT_EQ(chain, Parser().Parse(chain)->ToCode());
    EXPECT_EQ("Failed to evaluate: " + chain.substr(0, 1000) + "..., ",
              WarningOf(chain).substr(0, 20 + 1000 + 5));

    // Items side by side call the one before.
    const std::string calls = "1" + Repeat("(2)", Many);
    EXPECT_EQ(calls, Parser().Parse(calls)->ToCode());
    EXPECT_EQ("Failed to evaluate: " + calls.substr(0, 1000) +
                  "..., Function call applied to non-function",
              WarningOf("1" + Repeat(" 2", Many)));
    Run("same = (x) => { same }");
    EXPECT_EQ("(x)=>{same}", Run("same" + Repeat(" 1", Many)));

    // Assignments that give one value to many names, two of them.
    EXPECT_EQ("5", Run(Repeat("b = c = ", Many / 2) + "5"));
    EXPECT_EQ("5", Run("b"));
    EXPECT_EQ("5", Run("c"));
    EXPECT_EQ(Repeat("b = c = ", Many / 2) + "5",
              Parser().Parse(Repeat("b = c = ", Many / 2) + "5")->ToCode());
}

TEST_F(Limits, CallsNestTwoHundredFiftySixDeepAndNoDeeper)
{
    // f1 calls f2 calls f3 ...: the language has no condition that could end a recursion.
    std::string chain;
    for (int i = 1; i < 256; ++i)
        chain += "f" + util::ToString(i) + " = { f" + util::ToString(i + 1) + " };";
    Run(chain + "f256 = { 42 }");
    EXPECT_EQ("42", Run("f1"));
    Run("f0 = { f1 }");
    EXPECT_EQ("Failed to evaluate: f0, Script recursion too deep", WarningOf("f0"));
    EXPECT_EQ("42", Run("f1"));
}

TEST_F(Limits, EndlessRecursionEndsInOneFailedStatement)
{
    const std::vector<std::string> warnings = WarningsOf("f = (a) => { f(a) }; f(1)");
    ASSERT_EQ(1u, warnings.size());
    EXPECT_EQ("Failed to evaluate: f(1), Script recursion too deep", warnings[0]);
    EXPECT_EQ("error", Run("f = (a) => { f(a) }; f(1)"));
    EXPECT_EQ("after", Run("f(1); \"after\""));
}

TEST_F(Limits, EndlessRecursionDoesNotGoOnWithTheNextStatementOfEachLevel)
{
    // Else 2 to the power of 256 calls.
    EXPECT_LT(SecondsFor([] { Run("f = (a) => { f(a); f(a); f(a) }; f(1)"); }), Hang);
    EXPECT_LT(SecondsFor([] { Run("g = { g; g }; g"); }), Hang);
    EXPECT_LT(SecondsFor([] { Run("h = (a) => { [h(a), h(a)]; x = h(a) + h(a) }; h(1)"); }), Hang);
}

TEST_F(Limits, CallsThatMultiplyEnd)
{
    std::string text = "d0 = 1;";
    for (int i = 1; i <= 60; ++i)
    {
        const std::string before = "d" + util::ToString(i - 1);
        text += "d" + util::ToString(i) + " = { " + before + "; " + before + " };";
    }
    Run(text);
    EXPECT_EQ("1", Run("d10"));
    // A whole run takes this test too long under the sanitizers.
    {
        const Allowance some(MaxRunCost / 16);
        EXPECT_EQ("Failed to evaluate: d60, Script runs too long", WarningOf("d60"));
    }
    EXPECT_EQ("1", Run("d10"));
    {
        // Statements of one text share theirs: after the first nothing is left, not even for a sum.
        const Allowance some(MaxRunCost / 16);
        EXPECT_EQ(4u, WarningsOf("d60; d59; 1 + 1; d0").size());
    }
    EXPECT_EQ("1", Run("d10"));
}

TEST_F(Limits, WorkThatMultipliesEnds)
{
    std::string levels;
    for (int i = 1; i <= 20; ++i)
    {
        const std::string before = "d" + util::ToString(i - 1);
        levels += "d" + util::ToString(i) + " = { " + before + "; " + before + " };";
    }
    Run(levels + "s = \"0123456789abcdef\"; l = [1, 2, 3, 4, 5, 6, 7, 8]");
    for (int i = 0; i < 21; ++i)
        Run("s = s + s");
    for (int i = 0; i < 15; ++i)
        Run("l = [l, l]");
    Run("long = {" + Repeat("1;", Many) + "}; text = { \"" + std::string(1000000, 'x') +
        "\" }; chain = { math" + Repeat(".math", Many) + " }");
    const ReflectedPtr owner = QUIB_NEW Reflected("worked");
    AttribWrapper<util::String> title(owner.get(), "title", "");
    owner->AddToRoot();
    for (const char* work : {"s + s", "[l + l]", "l * 2", "math.sin(l)", "[1, 2, 3] + \"\" + l",
                             "long", "text", "chain", "worked.title = s"})
    {
        SCOPED_TRACE(work);
        // A whole run takes this test too long under the sanitizers.
        const Allowance some(MaxRunCost / 16);
        Run(std::string("d0 = { ") + work + "; 1 }");
        EXPECT_LT(
            SecondsFor(
                [&]
                { EXPECT_EQ("Failed to evaluate: d20, Script runs too long", WarningOf("d20")); }),
            Hang);
        util::PointeeHandle::Flush();
    }
    // One allowance for a whole text.
    const Allowance some(MaxRunCost / 16);
    EXPECT_LT(SecondsFor([] { Run("d0 = { s + s; 1 };" + Repeat("d20;", 10000)); }), Hang);
    for (const char* name : {"s", "l", "long", "text", "chain"})
        Root().RemoveVariable(name);
}

TEST_F(Limits, AFormulaThatRunsTooLongIsUnbound)
{
    std::string levels = "d0 = { 1.0 + 1 };";
    for (int i = 1; i <= 20; ++i)
    {
        const std::string before = "d" + util::ToString(i - 1);
        levels += "d" + util::ToString(i) + " = { " + before + "; " + before + " };";
    }
    Run(levels);
    const ReflectedPtr owner = QUIB_NEW Reflected("busy");
    AttribWrapper<float> setting(owner.get(), "setting", 3.0f);
    owner->AddToRoot();
    EXPECT_EQ(std::vector<std::string>(), WarningsOf("busy.setting = { d10 }"));
    EXPECT_EQ(2.0f, setting);
    // From a statement, from a function, and when it became too long later on.
    EXPECT_EQ(std::vector<std::string>{"setting was bound to bad type"},
              WarningsOf("busy.setting = { d20 }"));
    EXPECT_EQ(std::vector<std::string>{"setting was bound to bad type"},
              WarningsOf("bind = { busy.setting = { d20 }; after = 1 }; bind"));
    EXPECT_EQ("1", Run("bind"));
    Run("busy.setting = { d10 }");
    EXPECT_EQ(
        std::vector<std::string>{"setting was bound to bad type"},
        WarningsOf("d10 = { d20 }; d0 = { 5.0 }; d11 = { d0; d0 }; d10 = d20; d10 = { d12; d12; "
                   "d12; d12; long }; long = {" +
                   Repeat("1;", 1000000) + "}"));
    EXPECT_EQ(2.0f, setting);
    EXPECT_TRUE(WarningsOf("1").empty());
    Root().RemoveVariable("long");
}

TEST_F(Limits, ManyFormulasDoNotStopTheProgram)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("crowd");
    owner->AddToRoot();
    const ObjectPtr formula = Evaluate("{ math" + Repeat(".math", Many) + "; 2.0 }");
    std::vector<std::unique_ptr<AttribWrapper<float>>> settings;
    for (int i = 0; i < 100; ++i)
    {
        settings.push_back(
            std::make_unique<AttribWrapper<float>>(owner.get(), "s" + util::ToString(i), 3.0f));
        // Each alone is quick enough.
        settings.back()->GetAttrib()->SetObject(formula);
        EXPECT_EQ(2.0f, *settings.back());
    }
    test::LogCapture log(logging::LogWarning);
    Parser().Update();
    EXPECT_LT(10u, log.Count("was bound to bad type"));
    EXPECT_GT(90u, log.Count("was bound to bad type"));
    EXPECT_EQ(formula, settings[0]->GetAttrib()->GetObject());
    EXPECT_NE(formula, settings[99]->GetAttrib()->GetObject());
    EXPECT_EQ(2.0f, *settings[99]);
    log.Clear();
    Parser().Update();
    EXPECT_EQ("", log.Text());
}

TEST_F(Limits, BigScenesStayFarBelow)
{
    const ReflectedPtr scene = QUIB_NEW Reflected("BigScene");
    int boxes = 0;
    scene->AddCmd1("addBox",
                   [&](const ObjectPtr& o)
                   {
                       const FunctionPtr function = ObjectToValue<FunctionPtr>(o);
                       function->Call({});
                       ObjectToValue<math::Vec2>(function->GetCallClosure()->GetObject("pos"));
                       ++boxes;
                       return ObjectPtr(QUIB_NEW Void);
                   });
    scene->AddToRoot();
    const std::string box =
        "BigScene.addBox({\n    airFrictionMult = 1.0;\n    angle = 0.5;\n    angvel = 0.0;\n"
        "    body = 7;\n    collideSet = 1;\n    color = [0.5, 0.25, 1.0, 1.0];\n    density = "
        "2.0;\n"
        "    entityID = 12;\n    friction = 0.5;\n    geomID = 13;\n    pos = [1.5, -2.0];\n"
        "    restitution = 0.5;\n    size = [1.0, 1.0];\n    textureMatrix = [1.0, 0.0, 0.0, 0.0, "
        "1.0, 0.0, 0.0, 0.0, 1.0];\n    vel = [0.0, 0.0];\n    zDepth = 14.0\n});\n";
    std::string polygon = "p = [";
    for (int i = 0; i < 10000; ++i)
        polygon += "[" + util::ToString(i) + ".5, -1.25], ";
    polygon += "];\n";
    {
        const Allowance aTenth(MaxRunCost / 10);
        EXPECT_TRUE(WarningsOf(Repeat(box, 50000)).empty());
    }
    EXPECT_EQ(50000, boxes);
    {
        const Allowance aTenth(MaxRunCost / 10);
        EXPECT_TRUE(WarningsOf(Repeat(polygon, 100)).empty());
    }
    Root().RemoveVariable("p");
}

TEST_F(Limits, MessagesAreShort)
{
    Run("s = \"0123456789abcdef\"");
    for (int i = 0; i < 16; ++i)
        Run("s = s + s");
    Run("l = [s, s]");
    const std::string name(Many, 'n');
    for (const std::string& text :
         {std::string("true - s"), std::string("true * l"), "true - \"" + name + "\"", name,
          name + " = nothing", "math." + name, std::string("math.sin = 1; true / s"),
          "f = {" + Repeat("nothing;", Many) + "nothing }; 1(f)", "[" + Repeat("1, ", Many) + "x]",
          "x" + name + " y " + name + " = 1", "(" + name, "1) " + name, Repeat("9", Many),
          "infix " + name, Repeat("x = ", Many) + "nothing",
          "1" + Repeat(" + 1", 900) + " + nothing", "1 + \"" + name + "\" + nothing",
          "infix 1 left: " + name + " _ _ => " + name + "; " + name})
    {
        SCOPED_TRACE(text.substr(0, 100));
        test::LogCapture log;
        Run(text);
        for (const std::string& line : log.Lines())
            EXPECT_LT(line.size(), 5000u) << line.substr(0, 200);
    }
    EXPECT_EQ("Failed to evaluate: true - s, Failed: Subtract(true, " +
                  ObjectToValue<util::String>(Root().GetObject("s")).substr(0, 1000) + "...)",
              WarningOf("true - s"));
    EXPECT_EQ("Failed to evaluate: true - [1, 2], Failed: Subtract(true, [1, 2])",
              WarningOf("true - [1, 2]"));
}

TEST_F(Limits, AFailureCostsNoMoreThanItsMessage)
{
    // Printed in full, the statement would be a text of a megabyte each time.
    Run("f = {" + Repeat("x([" + Repeat("1, ", 300000) + "2]);", 1) + "}");
    std::string many = "g = {" + Repeat("f;", 2000) + "}; g";
    EXPECT_LT(SecondsFor([&] { Run(many); }), Hang);
}

TEST_F(Limits, DeepBlocksArePrintedOrLeftOut)
{
    // Every level puts four blanks before every line of what is in it.
    Run("a = 1; f = " + Repeat("{ 0; ", 990) + Repeat("1;", 15000) + Repeat("}", 990) + "; z = 1");
    std::string code;
    EXPECT_LT(SecondsFor([&] { code = Parser().ToCode(); }), Hang);
    EXPECT_EQ("a = 1;\nz = 1", code);
}

TEST_F(Limits, DeepExpressionsInDeepCallsStayOnTheStack)
{
    const std::string open = Repeat("(", 990), close = Repeat(")", 990);
    EXPECT_EQ("Failed to evaluate: f(1), Script recursion too deep",
              WarningOf("f = (a) => { " + open + "f(a)" + close + " }; f(1)"));
    EXPECT_EQ("Failed to evaluate: f(1), Script recursion too deep",
              WarningOf("f = (a) => { 1" + Repeat(" + 1", 990) + " + f(a) }; f(1)"));
}

TEST_F(Limits, OperatorsThatAreMadeOfOperatorsStayOnTheStack)
{
    // Each is evaluated inside the next one, without any call. The root scope never forgets them, so
    // that their names are new in every round.
    static int s_round = 0;
    const std::string op = "round" + util::ToString(++s_round) + "op";
    std::string text = "first = (a, b) => { a }; infix 3 left: _ " + op + "0 _ => first;";
    for (int i = 1; i <= 50000; ++i)
        text += "infix 3 left: _ " + op + util::ToString(i) + " _ => (first " + op +
                util::ToString(i - 1) + " 2);";
    Run(text);
    EXPECT_EQ("1", Run("1 " + op + "100 2"));
    EXPECT_EQ("Failed to evaluate: 3 " + op + "50000 4, Script recursion too deep",
              WarningOf("3 " + op + "50000 4"));
}

TEST_F(Limits, AFormulaThatRecursWithoutEndIsUnbound)
{
    const ReflectedPtr owner = QUIB_NEW Reflected("deepOwner");
    AttribWrapper<float> setting(owner.get(), "setting", 3.0f);
    owner->AddToRoot();
    const std::vector<std::string> warnings =
        WarningsOf("f = (a) => { f(a) }; deepOwner.setting = { f(1) }");
    EXPECT_EQ(1u, std::count(warnings.begin(), warnings.end(), "setting was bound to bad type"));
    EXPECT_EQ(3.0f, setting);
    EXPECT_TRUE(WarningsOf("1").empty());
}

TEST_F(Limits, DoublingAStringEndsAt64Megabytes)
{
    Run("s = \"0123456789abcdef\"");
    for (int i = 0; i < 22; ++i)
        ASSERT_EQ("", WarningOf("s = s + s; 1"));
    EXPECT_EQ(MaxStringLength, ObjectToValue<util::String>(Root().GetObject("s")).size());
    EXPECT_EQ("Failed to evaluate: s = s + s, String too long", WarningOf("s = s + s"));
    EXPECT_EQ("Failed to evaluate: s = s + 1, String too long", WarningOf("s = s + 1"));
    EXPECT_EQ("Failed to evaluate: s = 1 + s, String too long", WarningOf("s = 1 + s"));
    EXPECT_EQ(MaxStringLength, ObjectToValue<util::String>(Root().GetObject("s")).size());

    // The text of a list is a string like any other.
    Run("l = [s, s]");
    EXPECT_EQ("Tree evaluation error: String too long", WarningOf("l"));
    EXPECT_EQ("error", Run("l"));
}

TEST_F(Limits, DoublingAListEndsAt16MillionElements)
{
    Run("l = [1, 2, 3, 4, 5, 6, 7, 8]");
    for (int i = 0; i < 40; ++i)
        Run("l = [l, l]");
    EXPECT_EQ("Failed to evaluate: l = [l, l], List too long", WarningOf("l = [l, l]"));
    EXPECT_EQ("Failed to evaluate: l = (l, l), List too long", WarningOf("l = (l, l)"));
    const ListPtr list = util::DynamicCast<List>(Root().GetObject("l"));
    EXPECT_LE(list->GetDeepSize(), MaxListLength);
    EXPECT_GT(list->GetDeepSize(), MaxListLength / 4);
}

TEST_F(Limits, TheStringsOfAListEndAtAGigabyte)
{
    Run("s = \"0123456789abcdef\"");
    for (int i = 0; i < 21; ++i)
        Run("s = s + s");
    Run("l = []");
    int rounds = 0;
    while (rounds < 100 && WarningOf("l = [l, s + \"a\"]; 1").empty())
        ++rounds;
    EXPECT_EQ(31, rounds);
    EXPECT_EQ("Failed to evaluate: l = [l, s + \"a\"], List too long",
              WarningOf("l = [l, s + \"a\"]; 1"));
    Run("l = 1");
}

TEST_F(Limits, ManyNamesOfOneStringAreSavedAsFarAsMemoryGoes)
{
    const ObjectPtr text = ValueToObject(util::String(MaxStringLength / 2, 'x'));
    for (int i = 10; i < 50; ++i)
        Root().AddVariable2("s" + util::ToString(i), text);
    Run("z = 1");
    test::LogCapture log(logging::LogWarning);
    const std::string code = Parser().ToCode();
    EXPECT_LT(code.size(), size_t(600) << 20);
    EXPECT_EQ(24u, log.Count("Failed to print s"));
    EXPECT_TRUE(util::ends_with(code, "z = 1"));
}

TEST_F(Limits, AListThatIsTooLongToPrintIsLeftOutOfTheCode)
{
    Run("s = \"0123456789abcdef\"");
    for (int i = 0; i < 20; ++i)
        Run("s = s + s");
    Run("a = 1; l = [s, s]");
    for (int i = 0; i < 10; ++i)
        Run("l = [l, l]");
    Run("s = 2; z = 3");
    std::string code;
    EXPECT_LT(SecondsFor([&] { code = Parser().ToCode(); }), Hang);
    EXPECT_EQ("a = 1;\ns = 2;\nz = 3", code);
}

TEST_F(Limits, ACodeOfManyLongStatementsIsPrinted)
{
    // Only a single statement is limited to 64 megabytes.
    const std::string text(MaxStringLength / 2, 'x');
    for (const char* name : {"a", "b", "c"})
        Root().AddVariable2(name, ValueToObject(text));
    const std::string code = Parser().ToCode();
    EXPECT_EQ("a = \"" + text + "\";\nb = \"" + text + "\";\nc = \"" + text + "\"", code);
    EXPECT_TRUE(Parser().Parse(code));
}

TEST_F(Limits, AListNestedAHundredThousandDeepIsUsedAndFreed)
{
    Run("l = [1]");
    const CodeBlockPtr wrap = Parser().Parse(Repeat("l = [l];", 1000));
    for (int i = 0; i < Many / 1000; ++i)
        Parser().Execute(wrap);

    const std::string text = Run("l");
    EXPECT_EQ(Repeat("[", 1000) + "[...]" + Repeat("]", 1000), text);
    EXPECT_EQ("l = " + Repeat("[", 1000) + Repeat("]", 1000), Parser().ToCode());
    EXPECT_TRUE(Parser().Parse(Parser().ToCode()));
    // Either it works, or it is refused in order.
    Run("m = l + l; n = l * 2; math.sin(l)");
    Run("l = 1; m = 1; n = 1");
}

TEST_F(Limits, LongTextsTakeLinearTime)
{
    // Far below what quadratic work would need, and far above what a slow machine does.
    const double limit = Hang;
    EXPECT_LT(SecondsFor([] { Tokenizer::Tokenize(Repeat("-", 20 * Many) + "5"); }), limit);
    EXPECT_LT(SecondsFor([] { Tokenizer::Tokenize(Repeat("-+", 10 * Many) + "x"); }), limit);
    EXPECT_LT(SecondsFor([] { Tokenizer::Tokenize(Repeat("+-*", 10 * Many)); }), limit);
    EXPECT_LT(SecondsFor([] { Parser().Parse(Repeat("(", Many)); }), limit);
    EXPECT_LT(SecondsFor([] { Parser().Parse(Repeat("(", 900) + Repeat("(1);", 10 * Many)); }),
              limit);
    EXPECT_LT(
        SecondsFor(
            []
            { Parser().Parse(Repeat("(", 900) + Repeat("(1),", 10 * Many) + Repeat(")", 900)); }),
        limit);
    EXPECT_LT(SecondsFor([] { Run(Repeat("v = 1;", Many)); }), limit);
    EXPECT_LT(SecondsFor([] { Parser().Parse("1" + Repeat(" + 1", Many)); }), limit);
    EXPECT_LT(SecondsFor([] { Parser().Parse("1" + Repeat(" + 1 - 2", Many)); }), limit);

    std::string names, infixes, sharing, ranked, longInfix, longUse, oneWord;
    for (int i = 0; i < Many; ++i)
    {
        const std::string n = util::ToString(i);
        names += "name" + n + " = " + n + ";";
        sharing += "infix 3 left: _ shared _ own" + n + " _ => f; x shared y;";
        ranked += "infix " + util::ToString(Many - i) + " left: _ shared _ => f; x shared y;";
        longInfix += " _ part" + n;
        longUse += " 1 part" + n;
        oneWord += " shared _";
        infixes += "infix 3 left: _ word" + n + " _ => math.add; x = 1 word" + n + " 2;";
    }
    EXPECT_LT(SecondsFor([&] { Run(names); }), limit);
    EXPECT_LT(SecondsFor([&] { Parser().Parse("{" + infixes + "}"); }), limit);
    EXPECT_LT(SecondsFor([&] { EXPECT_TRUE(Parser().Parse("{" + sharing + "}")); }), limit);
    EXPECT_LT(SecondsFor([&] { EXPECT_TRUE(Parser().Parse("{" + ranked + "}")); }), limit);
    EXPECT_LT(SecondsFor(
                  [&] {
                      EXPECT_TRUE(Parser().Parse("{infix 3 left:" + longInfix + " _ => f;" +
                                                 longUse + " 1}"));
                  }),
              limit);
    EXPECT_LT(SecondsFor(
                  [&]
                  {
                      Parser().Parse("{infix 3 left: _" + oneWord + " other => f;" +
                                     Repeat("x shared y;", Many) + "}");
                  }),
              limit);
}
