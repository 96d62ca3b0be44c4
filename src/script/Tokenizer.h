// Cuts a text into tokens. Knows no operators: any run of punctuation is a word like any name, so that
// scripts can declare operators of their own.
#pragma once

#include "script/Exceptions.h"
#include "util/String.h"

#include <vector>

namespace script
{
enum TokenType
{
    TokenType_Bool = 0,
    TokenType_Float = 1,
    TokenType_Int = 2,
    TokenType_String = 3,
    TokenType_Identifier = 4
};

// A name, a number, a string or a run of punctuation. Knows nothing of its place in the text.
struct Token
{
    Token(util::String text_, TokenType type_)
        : text(std::move(text_))
        , type(type_)
    {
    }

    bool IsFloat() const { return type == TokenType_Float; }
    bool IsInt() const { return type == TokenType_Int; }
    bool IsString() const { return type == TokenType_String; }
    bool IsIdentifier() const { return type == TokenType_Identifier; }

    util::String text; // of a string: without quotes, escapes resolved
    TokenType type;
};

using TokenList = std::vector<Token>;

class Tokenizer
{
public:
    /// One pass, linear in the length of the text.
    /// @throws TokenException  Bad \-escape in string, Unmatched quote (")
    static TokenList Tokenize(const util::String& text);

    /// True for what a name goes on with.
    static bool IsIDChar(char c);
    /// True for what runs together with punctuation beside it to one token.
    static bool IsPunctuation(char c);
};
}
