#include "ScriptFixture.h"

#include <limits>

using namespace script;

namespace
{
using CodeOutput = test::Script;

std::string CodeOf(const ObjectPtr& object)
{
    return object->ToExpression()->ToCode();
}
}

TEST_F(CodeOutput, PrintsNumbersSoThatTheyReadBack)
{
    const double values[] = {0.0,  1.0,   -1.5,   0.1,     100000.0,   123456789.0,
                             1e-7, 1e-30, 2.5e10, 1.0 / 3, 3.14159265, 1e15};
    for (double value : values)
    {
        const std::string code = CodeOf(ValueToObject(value));
        SCOPED_TRACE(code);
        EXPECT_NE(std::string::npos, code.find('.'));
    }
    EXPECT_EQ("1.0", CodeOf(ValueToObject(1.0)));
    EXPECT_EQ("1.5", CodeOf(ValueToObject(1.5)));
    EXPECT_EQ("-0.25", CodeOf(ValueToObject(-0.25)));
    EXPECT_EQ("100000.0", CodeOf(ValueToObject(100000.0)));
    EXPECT_EQ("0.3333333333333333", CodeOf(ValueToObject(1.0 / 3)));
    EXPECT_EQ("0.1000000014901161", CodeOf(ValueToObject(0.1f)));
    EXPECT_EQ("+inf", CodeOf(ValueToObject(std::numeric_limits<double>::infinity())));
    EXPECT_EQ("-inf", CodeOf(ValueToObject(-std::numeric_limits<double>::infinity())));
    EXPECT_EQ("inf", Run("+inf"));
    EXPECT_EQ("-2147483648", CodeOf(ValueToObject(-2147483647 - 1)));
    EXPECT_EQ("true", CodeOf(ValueToObject(true)));
    EXPECT_EQ("false", CodeOf(ValueToObject(false)));
}

TEST_F(CodeOutput, BringsEveryFloatBack)
{
    unsigned bits = 1;
    for (int i = 0; i < 20000; ++i)
    {
        bits = bits * 1664525u + 1013904223u;
        const float value = (static_cast<float>(bits) / 4294967296.0f - 0.5f) * 2000.0f;
        const ObjectPtr again = Evaluate(CodeOf(ValueToObject(value)));
        ASSERT_EQ(value, ObjectToValue<float>(again)) << CodeOf(ValueToObject(value));
    }
}

TEST_F(CodeOutput, TakesNoNoticeOfExponentsAndNaN)
{
    // Deliberate: these do not read back.
    EXPECT_EQ("1e+20.0", CodeOf(ValueToObject(1e20)));
    EXPECT_EQ("1e-07.0", CodeOf(ValueToObject(1e-7)));
    EXPECT_EQ("1.5e+20", CodeOf(ValueToObject(1.5e20)));
    EXPECT_EQ("nan.0", CodeOf(ValueToObject(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_EQ("error", Run("1e+20.0"));
}

TEST_F(CodeOutput, EscapesThreeCharactersAndNoBackslash)
{
    EXPECT_EQ("\"a\\nb\\tc\\\"d\"", CodeOf(ValueToObject("a\nb\tc\"d")));
    EXPECT_EQ("a\nb\tc\"d", Run(CodeOf(ValueToObject("a\nb\tc\"d"))));
    EXPECT_EQ("\"\xE4\"", CodeOf(ValueToObject("\xE4")));
    // Deliberate: a string with a backslash does not come back.
    EXPECT_EQ("\"a\\b\"", CodeOf(ValueToObject("a\\b")));
    EXPECT_EQ("ab", Run(CodeOf(ValueToObject("a\\b"))));
}

TEST_F(CodeOutput, PrintsFunctions)
{
    Run("f = (a, b) => { a + b }");
    EXPECT_EQ("f = (a, b)=>{a + b}", Parser().ToCode());
    Run("f = { x = 1; { y = 2; { 3; 4 } } }");
    EXPECT_EQ("f = {\n"
              "    x = 1;\n"
              "    {\n"
              "        y = 2;\n"
              "        {\n"
              "            3;\n"
              "            4\n"
              "        }\n"
              "    }\n"
              "}",
              Parser().ToCode());
    const std::string code = Parser().ToCode();
    Run(code);
    EXPECT_EQ(code, Parser().ToCode());
}

TEST_F(CodeOutput, PrintsListsAndCalls)
{
    EXPECT_EQ("[[1, 2], [3, 4]]", CodeOf(Evaluate("[[1, 2], [3, 4]]")));
    EXPECT_EQ("[]", CodeOf(Evaluate("[]")));
    EXPECT_EQ("f({1})", Parser().Parse(std::string("f {1}"))->ToCode());
    EXPECT_EQ(" ! a", Parser().Parse(std::string("! a"))->ToCode());
    EXPECT_EQ("a + (b - c)", Parser().Parse(std::string("a + (b - c)"))->ToCode());
    // An empty operand prints as nothing; an empty element adds nothing.
    EXPECT_EQ(" - x", Parser().Parse(std::string("- x"))->ToCode());
    EXPECT_EQ("[1]", Parser().Parse(std::string("[, 1]"))->ToCode());
}

TEST_F(CodeOutput, PrintsInfixDeclarations)
{
    // In a function, so that the operator goes with its scope. It brings an end of statement of its own.
    const std::string text = "{infix 2.5 right: _ joined with _ => (a, b) => {a}}";
    EXPECT_EQ("{\n    infix 2.5 right: _ joined with _ => (a, b)=>{a};\n\n}",
              Parser().Parse(text)->ToCode());
}

TEST_F(CodeOutput, DoesNotSaveInfixDeclarations)
{
    // Deliberate: they belong in autoexec.cfg.
    Run("infix 3 left: _ unsaved _ => math.add");
    EXPECT_EQ("", Parser().ToCode());
}

TEST_F(CodeOutput, LeavesOutWhatHasNoValue)
{
    Run("a = math.pi; b = nothing; c = [1, math.sin, 2]; d = math.sin");
    EXPECT_EQ("c = [1, 2]", Parser().ToCode());
}

TEST_F(CodeOutput, AFailureCostsItsOwnElementOnly)
{
    class Unprintable : public Expression
    {
    public:
        ObjectPtr Evaluate(const ClosurePtr&) const override { return ObjectPtr(); }
        util::String ToCode() const override { throw std::runtime_error("can't"); }
    };
    class Stranger : public Unprintable
    {
    public:
        util::String ToCode() const override { throw 5; }
    };
    const CodeBlockPtr block = QUIB_NEW CodeBlock;
    block->Add(QUIB_NEW Literal<Int>(1));
    block->Add(QUIB_NEW Unprintable);
    block->Add(QUIB_NEW Stranger);
    block->Add(QUIB_NEW CodeBlock);
    block->Add(QUIB_NEW Literal<Int>(2));
    test::LogCapture log(logging::LogInfo);
    EXPECT_EQ("1;\n2", block->ToCode());
    EXPECT_EQ(1u, log.Count("Error: can't\n"));
    EXPECT_EQ(1u, log.Count("Fail\n"));
}

TEST_F(CodeOutput, CountsTheArgumentsOfAnInfix)
{
    const ExpressionPtr one = QUIB_NEW Literal<Int>(1);
    const InfixPtr infix = QUIB_NEW Infix(1.0, Associativity_Left, {"", "op", ""}, one);
    EXPECT_EQ("op", infix->GetName());
    EXPECT_EQ(2, infix->GetArgCount());
    EXPECT_EQ("infix 1 left: _ op _ => 1;\n", infix->DeclarationCode());
    EXPECT_THROW(InfixFunctionCall(infix, {one}), BadCoderException);
    EXPECT_EQ("1 op 1", InfixFunctionCall(infix, {one, one}).ToCode());
}

TEST_F(CodeOutput, IndentsAllLinesButAnEmptyLast)
{
    EXPECT_EQ("  a", Indent("a", "  "));
    EXPECT_EQ("  a\n  b", Indent("a\nb", "  "));
    EXPECT_EQ("  a\n  b\n", Indent("a\nb\n", "  "));
    EXPECT_EQ("  \n  \n", Indent("\n\n", "  "));
    EXPECT_EQ("  ", Indent("", "  "));
}
