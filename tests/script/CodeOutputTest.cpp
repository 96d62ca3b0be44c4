#include "ScriptFixture.h"

#include <algorithm>
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

TEST_F(CodeOutput, ABackslashDoesNotTakeAQuoteAway)
{
    const struct
    {
        const char *text, *code;
    } cases[] = {
        {"a\\", "\"a\\\\\""},
        {"\\", "\"\\\\\""},
        {"a\\\"b", "\"a\\\\\\\"b\""},
        {"a\\\\\\", "\"a\\\\\\\\\""},
        // These were readable, and stay as they were.
        {"a\\\\", "\"a\\\\\""},
        {"\\\\\"", "\"\\\\\\\"\""},
        {"\\\n", "\"\\\\n\""},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.code, CodeOf(ValueToObject(c.text)));
        Root().AddVariable2("s", ValueToObject(c.text));
        Run("z = 1");
        EXPECT_TRUE(Parser().Parse(Parser().ToCode()));
        Root().RemoveVariable("s");
    }
    for (const char* text : {"a\\", "\\", "a\\\"b"})
        EXPECT_EQ(text, Run(CodeOf(ValueToObject(text))));
}

TEST_F(CodeOutput, AStringOfPunctuationIsAValue)
{
    for (const char* text : {".", "=", "(", "[", "{", "=>", "_", ":"})
    {
        SCOPED_TRACE(text);
        const std::string code = "\"" + std::string(text) + "\"";
        EXPECT_EQ(text, Run("s = " + code));
        EXPECT_EQ("s = " + code, Parser().ToCode());
        EXPECT_EQ(text, Run(Parser().ToCode()));
        EXPECT_EQ("[" + std::string(text) + ", 1]", Run("[" + code + ", 1]"));
        EXPECT_EQ(text, Run("f = (a) => { a }; f(" + code + ")"));
        EXPECT_EQ("[1]", Run("g = (1, " + code + "); h = (a) => { [1] }; h(2)"));
        for (const char* name : {"s", "f", "g", "h"})
            Root().RemoveVariable(name);
    }
    EXPECT_EQ("Parse error: You can only assign to an identifier", WarningOf("\"=\" = 1"));
}

TEST_F(CodeOutput, AStringThatWouldEndItsStatementIsLeftOutWithIt)
{
    for (const char* text : {")", "]", "}", ";", ",", "infix"})
    {
        SCOPED_TRACE(text);
        Run("a = 1; z = 2");
        Root().AddVariable2("s", ValueToObject(text));
        Root().AddVariable2("t", QUIB_NEW List({ValueToObject(1), ValueToObject(text)}));
        test::LogCapture log(logging::LogWarning);
        EXPECT_EQ("a = 1;\nz = 2", Parser().ToCode());
        EXPECT_EQ(2u, log.Lines().size());
        EXPECT_EQ(1u, log.Count("Failed to print s: "));
        EXPECT_EQ(1u, log.Count("Failed to print t: "));
        Root().RemoveVariable("s");
        Root().RemoveVariable("t");
    }
    // Away from the start of a statement the keyword is a text like any other.
    Run("f = { \"an\" + \"infix\" }; a = 0; z = 0");
    EXPECT_EQ("a = 0;\nf = {\"an\" + \"infix\"};\nz = 0", Parser().ToCode());

    // Of a block that is no value, one statement is lost.
    const CodeBlockPtr body = QUIB_NEW CodeBlock;
    const auto assign = [&](const char* name, const char* text)
    {
        body->Add(QUIB_NEW Assignment(QUIB_NEW Identifier(nullptr, name),
                                      QUIB_NEW Literal<util::String>(text)));
    };
    assign("title", ";");
    assign("author", "me");
    const BlockPtr args = QUIB_NEW Block;
    args->Add(QUIB_NEW FunctionDeclaration({}, body));
    const ExpressionPtr call = QUIB_NEW FunctionCall(QUIB_NEW Identifier(nullptr, "add"), args);
    EXPECT_EQ("add({author = \"me\"})", call->ToCode());
}

TEST_F(CodeOutput, LeavesOutWhatIsTooDeepToBeRead)
{
    const auto repeat = [](const char* text, int n)
    {
        std::string all;
        while (n-- > 0)
            all += text;
        return all;
    };
    for (int levels : {20, 21})
    {
        SCOPED_TRACE(levels);
        Run("a = 1; z = 2; l = " + repeat("{", 980) + "1" + repeat("}", 980));
        Root().GetVariable("l")->SetObject(
            Evaluate("{" + repeat("{", 979) + "1" + repeat("}", 980)));
        for (int i = 0; i < levels; ++i)
            Root().GetVariable("l")->SetObject(QUIB_NEW List({Root().GetObject("l")}));
        test::LogCapture log(logging::LogWarning);
        const std::string code = Parser().ToCode();
        EXPECT_TRUE(Parser().Parse(code));
        EXPECT_EQ(levels == 20, code.find("\nl = ") != std::string::npos);
        EXPECT_NE(std::string::npos, code.find("z = 2"));
        EXPECT_EQ(levels == 20 ? 0u : 1u, log.Lines().size()) << log.Text();
        EXPECT_EQ(levels != 20, log.Has("Failed to print l: Expression nested too deeply"));
    }
    // Operands count as they do for the parser: what stands in brackets was read before.
    const std::string sum =
        "f = {" + repeat("1 + ", 999) + repeat("(", 999) + "1" + repeat(")", 999) + "}";
    ASSERT_TRUE(Parser().Parse(sum));
    Run("l = 1;" + sum);
    EXPECT_NE(std::string::npos, Parser().ToCode().find(sum));
    Run("f = 1");
}

TEST_F(CodeOutput, WordsOfPunctuationDoNotRunTogether)
{
    for (const char* text :
         {"math . + = 3", "f = { + ; 1 }", "f = { a . .. . b }", "f = { x = =>; 2 }",
          "f = { infix 3 left: _ \"a b\" \"//\" \"\\\"\" _ => + ; 1 }",
          "f = { infix \"1e+20\" left: _ x2 _ => + ; 1 }", "f = { x = ; 1 }",
          "f = { [infix 3 left: _ yy _ => math.add, 2] }", "f = { infix 3 left: a => ; }"})
    {
        SCOPED_TRACE(text);
        const CodeBlockPtr block = Parser().Parse(std::string(text));
        ASSERT_TRUE(block);
        const std::string code = block->ToCode();
        const CodeBlockPtr again = Parser().Parse(code);
        ASSERT_TRUE(again) << code;
        EXPECT_EQ(code, again->ToCode());
    }
    EXPECT_EQ("math. + = 3", Parser().Parse(std::string("math . + = 3"))->ToCode());
}

TEST_F(CodeOutput, IsReadableWhateverWasParsed)
{
    // Soups of tokens; what parses is printed, and that must parse and print the same.
    const std::vector<std::string> words = {"a",      "b",
                                            "+",      "-",
                                            "!",      "=",
                                            "=>",     ".",
                                            "..",     "/",
                                            ";",      ",",
                                            "(",      ")",
                                            "[",      "]",
                                            "{",      "}",
                                            "{",      "}",
                                            "(",      ")",
                                            "[",      "]",
                                            "1",      "-2",
                                            "0.5",    "-inf",
                                            "true",   "\"\"",
                                            "\".\"",  "\"=\"",
                                            "\"(\"",  "\"q\\\"\"",
                                            "\"=>\"", "\"infix\"",
                                            "infix",  "infix 3 left: _ so _ => a ;",
                                            "so",     "\xE4",
                                            "_",      "(a, +) => {",
                                            "} ;",    "{ a",
                                            "x ="};
    unsigned bits = 1;
    const auto random = [&](size_t n)
    {
        bits = bits * 1664525u + 1013904223u;
        return static_cast<size_t>((bits >> 8) % n);
    };
    int parsed = 0;
    for (int i = 0; i < 100000; ++i)
    {
        std::string text = "f = {";
        for (size_t n = 1 + random(9); n-- > 0;)
            text += " " + words[random(words.size())];
        const CodeBlockPtr block = Parser().Parse(text + " }");
        if (!block)
            continue;
        ++parsed;
        const std::string code = block->ToCode();
        const CodeBlockPtr again = Parser().Parse(code);
        ASSERT_TRUE(again) << text << "\n" << code;
        ASSERT_EQ(code, again->ToCode()) << text;
    }
    EXPECT_GT(parsed, 5000);
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
    EXPECT_EQ("a = b = ", Parser().Parse(std::string("a = b = ;"))->ToCode());
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
    // The text, a line feed, the place, a line feed.
    ASSERT_EQ(2u, log.Lines().size());
    for (const char* start : {"Error: can't\n", "Fail\n"})
    {
        const std::string& line = log.Lines()[*start == 'F'];
        SCOPED_TRACE(line);
        EXPECT_EQ(0u, line.find(std::string(start) + "src/script/CodeOutput.cpp:"));
        EXPECT_NE(std::string::npos, line.find(": util::String script::CodeBlock::ToCode("));
        EXPECT_EQ('\n', line.back());
        EXPECT_EQ(2, std::count(line.begin(), line.end(), '\n'));
    }
}

TEST_F(CodeOutput, CountsTheArgumentsOfAnInfix)
{
    const ExpressionPtr one = QUIB_NEW Literal<Int>(1);
    const InfixPtr infix = QUIB_NEW Infix(1.0, Associativity_Left, {"", "op", ""}, one);
    EXPECT_EQ("op", infix->GetName());
    EXPECT_EQ(2, infix->GetArgCount());
    EXPECT_EQ("infix 1 left: _ op _ => 1;\n", infix->DeclarationCode());
    test::LogCapture log(logging::LogInfo);
    EXPECT_THROW(InfixFunctionCall(infix, {one}), BadCoderException);
    EXPECT_TRUE(
        log.Has("Code assertion failed: \"m_infix->GetArgCount() == args.size()\" in function"));
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
