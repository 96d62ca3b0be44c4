#include "ScriptFixture.h"
#include "script/WordSet.h"

using namespace script;

namespace
{
using ParserScript = test::Script;

// The words of operators outlive the test, in a root scope that never forgets.
std::string FreshWord()
{
    static int s_count = 0;
    return "word" + util::ToString(++s_count) + "x";
}
}

TEST_F(ParserScript, PrintsWhatItParses)
{
    const struct
    {
        const char *text, *code;
    } cases[] = {
        {"", ""},
        {"; ;", ""},
        {"a=b=1", "a = b = 1"},
        {"f a b", "f(a)(b)"},
        {"f(x).y", "f((x).y)"},
        {"Scene.addBox { density = 2.0; geomID = 5 };",
         "Scene.addBox({\n    density = 2.0;\n    geomID = 5\n})"},
        {"a - b - c", "a - b - c"},
        {"!a + b", " ! a + b"},
        {"(a, b)", "(a, b)"},
        {"(a,b)=>{}", "(a, b)=>{}"},
        {"a.b.c = [1, (2), {3}]", "a.b.c = [1, (2), {3}]"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.text);
        const CodeBlockPtr block = Parser().Parse(std::string(c.text));
        ASSERT_TRUE(block);
        EXPECT_EQ(c.code, block->ToCode());
        const CodeBlockPtr again = Parser().Parse(block->ToCode());
        ASSERT_TRUE(again);
        EXPECT_EQ(c.code, again->ToCode());
    }
}

TEST_F(ParserScript, GroupsEveryInfixToTheRight)
{
    // Deliberate, whatever the associativity says.
    for (const char* associativity : {"left", "right"})
    {
        SCOPED_TRACE(associativity);
        const std::string word = FreshWord();
        Run(std::string("infix 3 ") + associativity + ": _ " + word + " _ => math.subtract");
        EXPECT_EQ("4", Run("5 " + word + " 2 " + word + " 1"));
    }
}

TEST_F(ParserScript, AnInfixCountsFromItsDeclarationOn)
{
    const std::string word = FreshWord();
    EXPECT_EQ("Failed to evaluate: 1(" + word + ")(2), Function call applied to non-function",
              WarningOf("1 " + word + " 2; infix 3 left: _ " + word + " _ => math.add"));
    EXPECT_EQ("3", Run("1 " + word + " 2"));
}

TEST_F(ParserScript, AnInfixOfABlockCountsInTheRestOfItAndInWhatIsNested)
{
    const std::string word = FreshWord();
    const std::string use = "1 " + word + " 2";
    EXPECT_EQ("3",
              Run("f = { infix 3 left: _ " + word + " _ => math.add; g = {" + use + "}; g }; f"));
    EXPECT_EQ("Failed to evaluate: 1(" + word + ")(2), Function call applied to non-function",
              WarningOf(use));
}

TEST_F(ParserScript, AnInfixStaysWhenTheRestOfTheTextFails)
{
    const std::string word = FreshWord();
    EXPECT_EQ("Parse error: Missing )",
              WarningOf("infix 3 left: _ " + word + " _ => math.add; (1"));
    EXPECT_EQ("3", Run("1 " + word + " 2"));
}

TEST_F(ParserScript, TheSameInfixTwiceIsAmbiguous)
{
    const std::string word = FreshWord();
    Run("infix 3 left: _ " + word + " _ => math.add");
    Run("infix 3 left: _ " + word + " _ => math.add");
    EXPECT_EQ("Parse error: Multiple mathcing infix functions found",
              WarningOf("1 " + word + " 2"));
    // One that binds more weakly hides both.
    Run("infix 1 left: _ " + word + " _ => math.multiply");
    EXPECT_EQ("2", Run("1 " + word + " 2"));
}

TEST_F(ParserScript, AWordThatIsAlsoAVariableIsTheWordWhereTheInfixFits)
{
    const std::string word = FreshWord();
    Run(word + " = 7");
    Run("infix 3 left: _ " + word + " _ => math.add");
    EXPECT_EQ("3", Run("1 " + word + " 2"));
    // The last name behind a dot counts as well.
    EXPECT_EQ("Parse error: Missing keyword " + word,
              WarningOf("f = { infix 1 left: " + word + " _ => g; 1 math." + word + "}"));
}

TEST_F(ParserScript, AnInfixWithoutWordsFitsEverywhere)
{
    // The operand is a statement that it fits as well, and so on.
    EXPECT_EQ("Parse error: Expression nested too deeply",
              WarningOf("f = { infix 1 left: _ => g; 7 }"));
    EXPECT_EQ("Parse error: Could not find infix function keyword ",
              WarningOf("f = { infix 1 left: _ _ => g; 7 }"));
}

TEST_F(ParserScript, ATextThatDoesNotParseIsReportedTwice)
{
    // Deliberate: first by the parser, then where nothing is evaluated.
    const std::vector<std::string> expected = {
        "Parse error: Missing )", "Tree evaluation error: Tried to dereference a NULL SharedPtr"};
    EXPECT_EQ(expected, WarningsOf("(1"));
    const std::vector<std::string> untokenized = {
        "Tokenizer error: Unmatched quote (\")",
        "Tree evaluation error: Tried to dereference a NULL SharedPtr"};
    EXPECT_EQ(untokenized, WarningsOf("\""));
    EXPECT_EQ("error", Run("(1"));
}

TEST_F(ParserScript, NothingOfATextThatDoesNotParseIsRun)
{
    Run("a = 1; (");
    EXPECT_FALSE(Root().HasVariable("a"));
    EXPECT_FALSE(Parser().Parse(std::string("a = 1; (")));
    EXPECT_FALSE(Parser().Parse(std::string("\"")));
}

TEST_F(ParserScript, ParsesTokens)
{
    EXPECT_EQ("3", Parser().Execute(Tokenizer::Tokenize("1 + 2"))->ToText());
    EXPECT_EQ("void", Parser().Execute(TokenList())->ToText());
}

TEST_F(ParserScript, AnArgumentTwiceIsRefused)
{
    EXPECT_EQ(0u, WarningOf("(a, a) => { a }")
                      .find("Parse error: Code assertion failed: "
                            "\"!HasVariable(var->GetName())\""));
}

TEST_F(ParserScript, ReportsWhatIsNoException)
{
    Root().AddVoidCmd("throwNumber", [] { throw 5; });
    EXPECT_EQ("Parser threw unknown excpetion.", WarningOf("throwNumber"));
    EXPECT_EQ("error", Run("throwNumber"));
}

TEST_F(ParserScript, SurvivesAnything)
{
    // Truncated, binary, with NUL bytes: contained, and the parser works on.
    const std::string text =
        "Scene.addBox {\n pos = [1.5, -2.0e3]; name = \"a\\\"b\"; f = (a, b) => { a + b } };\n"
        "infix 3 left: _ xor _ => math.add; x.y.z = ! true;\n";
    for (size_t i = 0; i < text.size(); ++i)
    {
        // In a function, so that no operator stays behind.
        Run("{" + text.substr(0, i));
        std::string damaged = text;
        damaged[i] = '\0';
        Run("{" + damaged + "}");
        damaged[i] = static_cast<char>(0xFF);
        Run("{" + damaged + "}");
        damaged.erase(i, 1);
        Run("{" + damaged + "}");
    }
    EXPECT_EQ("error", Run(std::string("\0\0\0", 3)));
    EXPECT_EQ("2", Run("1 + 1"));
}

TEST_F(ParserScript, TheRootsAreThere)
{
    EXPECT_EQ("[ROOT]", Root().ToText());
    EXPECT_EQ("ROOT_SCOPE", Parser().GetRootScope()->ToText());
    EXPECT_TRUE(util::DynamicCast<KeyBinder>(Root().GetObject("Keys")));
    EXPECT_EQ("Keys", Run("Keys"));
    EXPECT_EQ("Failed to evaluate: Keys = 1, Cannot set constant variable Keys",
              WarningOf("Keys = 1"));
}

TEST_F(ParserScript, TheKeywordIsANameAwayFromTheStartOfAStatement)
{
    Run("f = (infix) => { 1 + infix }; math.infix = 5");
    EXPECT_EQ("8", Run("f(7)"));
    EXPECT_EQ("5", Run("math.infix"));
    EXPECT_EQ("Parse error: Unexpected end of infix declaration", WarningOf("infix"));
    EXPECT_EQ("Parse error: Bad lexical cast: \"]\"", WarningOf("[infix]"));
    // Compared by text like all that a statement may begin or end with.
    EXPECT_EQ("Parse error: Unexpected end of infix declaration", WarningOf("\"infix\""));
    EXPECT_EQ("an infix", Run("\"an \" + \"infix\""));
}

TEST_F(ParserScript, AnInfixOfNativeCodeReachesBothRoots)
{
    const std::string word = FreshWord();
    const ExpressionPtr add = QUIB_NEW Identifier(QUIB_NEW Identifier(nullptr, "math"), "add");
    EXPECT_EQ("error", Run("1 " + word + " 2"));
    Parser().AddInfix(QUIB_NEW Infix(3.0, Associativity_Left, {"", word, ""}, add));
    EXPECT_EQ("3", Run("1 " + word + " 2"));
    WordPositions positions;
    positions.Add(word, 1);
    const WordSet words(positions, 0, 3);
    EXPECT_TRUE(Parser().GetRootScope()->GetInfix(words));
    EXPECT_EQ(Parser().GetRootScope()->GetInfix(words), Root().GetInfix(words));
}

TEST_F(ParserScript, AnUnknownKindOfTokenIsRefused)
{
    TokenList tokens;
    tokens.emplace_back("odd", static_cast<TokenType>(7));
    test::LogCapture log(logging::LogWarning);
    EXPECT_FALSE(Parser().Parse(tokens));
    EXPECT_TRUE(log.Has("Parse error: Unknown token \"odd\""));
}

TEST_F(ParserScript, AStatementAtTheTopLeavesItsVariableInTheRoot)
{
    EXPECT_EQ("1", Run("x = 1; x"));
    EXPECT_EQ("1", Root().GetObject("x")->ToText());
}

TEST_F(ParserScript, ADotBindsToTheItemBeforeIt)
{
    Run("math.y = 6");
    EXPECT_EQ("6", Run("(math).y"));
    EXPECT_EQ("6", Run("f = (a) => { a }; f(math).y"));
}

TEST_F(ParserScript, AssigningToAnArgumentFailsInTheBodyOnly)
{
    EXPECT_EQ(std::vector<std::string>{"Failed to evaluate: a = 2, Cannot set constant variable a"},
              WarningsOf("f = (a) => { a = 2 }; r = [f(1)]"));
    EXPECT_EQ("[error]", Run("r"));
}

TEST_F(ParserScript, TheIntrinsicsMayBeReplacedAndTheirMembersNot)
{
    EXPECT_FALSE(Root().GetVariable("math")->IsConstant());
    const ObjectPtr math = Root().GetObject("math");
    for (const char* name : {"add", "subtract", "multiply", "divide", "negate", "sin", "cos", "tan",
                             "asin", "acos", "atan", "pi"})
        EXPECT_TRUE(As<ClassObject>(math)->GetVariable(name)->IsConstant()) << name;
    EXPECT_EQ("", WarningOf("math = 5; 1"));
    Root().GetVariable("math")->SetObject(math);
}

TEST_F(ParserScript, TheSineOfAnIntIsAFloat)
{
    EXPECT_EQ(ObjectKind::Float, Evaluate("math.sin(0)")->GetKind());
    const ObjectPtr list = Evaluate("math.sin([0, 0])");
    ASSERT_EQ(2u, As<List>(list)->size());
    for (const ObjectPtr& element : As<List>(list)->GetElements())
        EXPECT_EQ(ObjectKind::Float, element->GetKind());
}
