#include "script/Tokenizer.h"

#include <gtest/gtest.h>

#include <type_traits>

#include <algorithm>

using namespace script;

namespace
{
// "a b" as "id:a id:b".
std::string Cut(const std::string& text)
{
    const char* const kinds[] = {"bool", "float", "int", "string", "id"};
    std::string all;
    for (const Token& token : Tokenizer::Tokenize(text))
        all += (all.empty() ? "" : " ") + std::string(kinds[token.type]) + ":" + token.text;
    return all;
}

std::string ErrorOf(const std::string& text)
{
    try
    {
        Tokenizer::Tokenize(text);
    }
    catch (TokenException& e)
    {
        return e.what();
    }
    return "nothing thrown";
}
}

TEST(Tokenizer, FindsNothingInBlanksAndComments)
{
    EXPECT_EQ("", Cut(""));
    EXPECT_EQ("", Cut(" \t\n\v\f\r"));
    EXPECT_EQ("", Cut(" // only a comment"));
    EXPECT_EQ("", Cut("// one\n// two\n"));
    EXPECT_EQ("id:a", Cut("// one\na // two"));
}

TEST(Tokenizer, ReadsStrings)
{
    EXPECT_EQ("string:a\"b", Cut("\"a\\\"b\""));
    EXPECT_EQ("string:", Cut("\"\""));
    EXPECT_EQ("string:a\nb\tc\\dq", Cut("\"a\\nb\\tc\\\\d\\q\""));
    EXPECT_EQ("string:one\ntwo // no comment", Cut("\"one\ntwo // no comment\""));
    EXPECT_EQ("string:\xE4\x80\xFF", Cut("\"\xE4\x80\xFF\""));
    EXPECT_EQ("string:true", Cut("\"true\""));
    EXPECT_EQ("string:a string:b", Cut("\"a\"\"b\""));
    EXPECT_EQ("id:x string:a id:y", Cut("x\"a\"y"));
    EXPECT_EQ("id:+ string:a", Cut("+\"a\""));
}

TEST(Tokenizer, RefusesStringsThatDoNotEnd)
{
    EXPECT_EQ("Unmatched quote (\")", ErrorOf("\"a"));
    EXPECT_EQ("Unmatched quote (\")", ErrorOf("\""));
    EXPECT_EQ("Unmatched quote (\")", ErrorOf("\"a\\\""));
    EXPECT_EQ("Bad \\-escape in string", ErrorOf("\"a\\"));
}

TEST(Tokenizer, KnowsTwoWordsOnly)
{
    EXPECT_EQ("bool:true bool:false", Cut("true false"));
    EXPECT_EQ("id:truest id:True id:_true id:infix id:left", Cut("truest True _true infix left"));
    EXPECT_EQ("id:a1_B id:_ id:__1", Cut("a1_B _ __1"));
}

TEST(Tokenizer, ReadsNumbers)
{
    EXPECT_EQ("int:1 float:1.5 float:.5 int:007", Cut("1 1.5 .5 007"));
    EXPECT_EQ("int:-1 int:+1 float:-.5 float:+2.25", Cut("-1 +1 -.5 +2.25"));
    EXPECT_EQ("float:1.0e5 float:1.0E-5 float:1.0e+5 float:1.0e", Cut("1.0e5 1.0E-5 1.0e+5 1.0e"));
    EXPECT_EQ("float:1.5 float:.5", Cut("1.5.5"));
    EXPECT_EQ("float:-inf float:+Inf float:-INF", Cut("-inf +Inf -INF"));
    EXPECT_EQ("id:inf id:Inf", Cut("inf Inf"));
    EXPECT_EQ("id:- id:in id:in", Cut("-in in"));
    EXPECT_EQ("float:-inf id:ormation", Cut("-information"));
}

// These look like mistakes and are the language.
TEST(Tokenizer, KnowsExponentsOnlyBehindAFraction)
{
    EXPECT_EQ("int:1 id:e5", Cut("1e5"));
    EXPECT_EQ("int:1 id:. id:e5", Cut("1.e5"));
}

TEST(Tokenizer, LeavesATrailingPointToTheNextToken)
{
    EXPECT_EQ("int:1 id:.", Cut("1."));
    EXPECT_EQ("id:a id:. id:b", Cut("a.b"));
    EXPECT_EQ("id:a float:.5", Cut("a.5"));
}

TEST(Tokenizer, TakesSignsGreedily)
{
    EXPECT_EQ("id:a int:-1", Cut("a-1"));
    EXPECT_EQ("id:a id:- int:1", Cut("a - 1"));
    EXPECT_EQ("id:a id:= int:-1", Cut("a=-1"));
    EXPECT_EQ("int:1 int:+2", Cut("1+2"));
    EXPECT_EQ("id:x int:+ int:-1", Cut("x+-1"));
    EXPECT_EQ("int:- int:-5", Cut("--5"));
    EXPECT_EQ("int:- int:+ float:-.5", Cut("-+-.5"));
    EXPECT_EQ("int:- float:-inf", Cut("--inf"));
    EXPECT_EQ("id:-- id:x", Cut("--x"));
}

TEST(Tokenizer, TakesRunsOfPunctuationAsOneWord)
{
    EXPECT_EQ("id:( id:a id:, id:b id:) id:=> id:{", Cut("(a,b)=>{"));
    EXPECT_EQ("id:== id:!= id:<> id:%&", Cut("== != <> %&"));
    EXPECT_EQ("id:[ id:] id:{ id:} id:( id:) id:,", Cut("[]{}(),"));
    EXPECT_EQ("id:; id:;", Cut("; ;"));
    EXPECT_EQ("id:a id:\xE4\xF6 id:b", Cut("a\xE4\xF6"
                                           "b"));
}

TEST(Tokenizer, TakesTwoSemicolonsAsOneToken)
{
    EXPECT_EQ("id:;;", Cut(";;"));
}

TEST(Tokenizer, SeesCommentsOnlyWhereARunBegins)
{
    EXPECT_EQ("id:a id:= int:1 id:;// id:note", Cut("a = 1;// note"));
    EXPECT_EQ("id:a id:= int:1 id:;", Cut("a = 1; // note"));
    EXPECT_EQ("id:a", Cut("a// note"));
    EXPECT_EQ("id:)", Cut(")// note"));
    EXPECT_EQ("id:/ id:a", Cut("/a"));
    EXPECT_EQ("id:/", Cut("/"));
}

TEST(Tokenizer, TakesNulBytesForPunctuation)
{
    EXPECT_EQ(std::string("id:a id:\0\0 id:b", 15), Cut(std::string("a\0\0b", 4)));
}

TEST(Tokenizer, TakesAnyBytes)
{
    std::string all;
    for (int round = 0; round < 3; ++round)
        for (int i = 0; i < 256; ++i)
            if (i != '"')
                all += static_cast<char>((i * (2 * round + 1)) & 255);
    all.erase(std::remove(all.begin(), all.end(), '"'), all.end());
    EXPECT_FALSE(Tokenizer::Tokenize(all).empty());
}

TEST(Tokenizer, NumbersItsKinds)
{
    EXPECT_EQ(0, TokenType_Bool);
    EXPECT_EQ(1, TokenType_Float);
    EXPECT_EQ(2, TokenType_Int);
    EXPECT_EQ(3, TokenType_String);
    EXPECT_EQ(4, TokenType_Identifier);
    const TokenList tokens = Tokenizer::Tokenize("true 1.5 2 \"s\" name");
    ASSERT_EQ(5u, tokens.size());
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(i, tokens[static_cast<size_t>(i)].type);
        EXPECT_EQ(i == 1, tokens[static_cast<size_t>(i)].IsFloat());
        EXPECT_EQ(i == 2, tokens[static_cast<size_t>(i)].IsInt());
        EXPECT_EQ(i == 3, tokens[static_cast<size_t>(i)].IsString());
        EXPECT_EQ(i == 4, tokens[static_cast<size_t>(i)].IsIdentifier());
    }
}

TEST(Exceptions, AreBadData)
{
    static_assert(std::is_base_of<BadDataException, TokenException>::value, "");
    static_assert(std::is_base_of<BadDataException, ParseException>::value, "");
    static_assert(std::is_base_of<BadDataException, ScriptException>::value, "");
    EXPECT_THROW(Tokenizer::Tokenize("\""), BadDataException);
}
