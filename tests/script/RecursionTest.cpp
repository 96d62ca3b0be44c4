#include "script/Recursion.h"

#include "ScriptFixture.h"
#include "script/Attributes.h"

#include <chrono>

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

double SecondsFor(const std::function<void()>& what)
{
    const auto begin = std::chrono::steady_clock::now();
    what();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

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
    EXPECT_EQ("Failed to evaluate: a" + Repeat(".sin", Many) + ", ",
              WarningOf("a" + Repeat(".sin", Many)).substr(0, 21 + 4 * Many + 2));

    // Items side by side call the one before.
    EXPECT_EQ("Failed to evaluate: 1" + Repeat("(2)", Many) +
                  ", Function call applied to non-function",
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
    EXPECT_LT(SecondsFor([] { Run("f = (a) => { f(a); f(a); f(a) }; f(1)"); }), 5);
    EXPECT_LT(SecondsFor([] { Run("g = { g; g }; g"); }), 5);
    EXPECT_LT(SecondsFor([] { Run("h = (a) => { [h(a), h(a)]; x = h(a) + h(a) }; h(1)"); }), 5);
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
    EXPECT_EQ("Failed to evaluate: d60, Script runs too long", WarningOf("d60"));
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
    EXPECT_LT(SecondsFor([&] { code = Parser().ToCode(); }), 20);
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
    const double limit = 20;
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

    std::string names, infixes;
    for (int i = 0; i < Many; ++i)
    {
        const std::string n = util::ToString(i);
        names += "name" + n + " = " + n + ";";
        infixes += "infix 3 left: _ word" + n + " _ => math.add; x = 1 word" + n + " 2;";
    }
    EXPECT_LT(SecondsFor([&] { Run(names); }), limit);
    EXPECT_LT(SecondsFor([&] { Parser().Parse("{" + infixes + "}"); }), limit);
}
