#include "script/Tokenizer.h"

#include <algorithm>

namespace script
{
namespace
{
using CharIt = const char*;

enum CharClass : unsigned char
{
    CharClass_White = 1,
    CharClass_Num = 2,
    CharClass_IDBeginner = 4,
    CharClass_SingleCharOperator = 8
};

// Of the C locale, whatever the locale in force. Bytes from 0x80 on belong to no class.
struct CharTable
{
    constexpr CharTable()
    {
        for (const char* p = " \t\n\v\f\r"; *p; ++p)
            classes[static_cast<unsigned char>(*p)] = CharClass_White;
        for (char c = '0'; c <= '9'; ++c)
            classes[static_cast<unsigned char>(c)] = CharClass_Num;
        for (char c = 'a'; c <= 'z'; ++c)
            classes[static_cast<unsigned char>(c)] = CharClass_IDBeginner;
        for (char c = 'A'; c <= 'Z'; ++c)
            classes[static_cast<unsigned char>(c)] = CharClass_IDBeginner;
        classes[static_cast<unsigned char>('_')] = CharClass_IDBeginner;
        for (const char* p = "{}()[],"; *p; ++p)
            classes[static_cast<unsigned char>(*p)] = CharClass_SingleCharOperator;
    }

    unsigned char classes[256] = {};
};

bool Is(char c, int charClass)
{
    static constexpr CharTable s_table;
    return s_table.classes[static_cast<unsigned char>(c)] & charClass;
}

bool IsWhite(char c)
{
    return Is(c, CharClass_White);
}
bool IsNum(char c)
{
    return Is(c, CharClass_Num);
}
bool IsIDBeginner(char c)
{
    return Is(c, CharClass_IDBeginner);
}
bool IsIDChar(char c)
{
    return Is(c, CharClass_IDBeginner | CharClass_Num);
}
bool IsSingleCharOperator(char c)
{
    return Is(c, CharClass_SingleCharOperator);
}
bool IsSign(char c)
{
    return c == '-' || c == '+';
}

bool IsInf(CharIt p, CharIt end)
{
    return end - p >= 3 && (p[0] | 0x20) == 'i' && (p[1] | 0x20) == 'n' && (p[2] | 0x20) == 'f';
}

CharIt SkipWhite(CharIt p, CharIt end)
{
    while (p != end && IsWhite(*p))
        ++p;
    return p;
}

CharIt SkipNums(CharIt p, CharIt end)
{
    while (p != end && IsNum(*p))
        ++p;
    return p;
}

class TextReader
{
public:
    explicit TextReader(const util::String& text)
        : m_it(text.data())
        , m_end(text.data() + text.size())
        , m_signsEnd(m_it)
    {
        // A word with the blank behind it rarely has fewer than four characters.
        m_tokens.reserve(std::min<size_t>(text.size() / 4 + 16, size_t(1) << 20));
    }

    TokenList ReadAll()
    {
        for (;;)
        {
            m_it = SkipWhite(m_it, m_end);
            if (m_it == m_end)
                return std::move(m_tokens);

            // The order is part of the language: the sign of a number is decided before any operator
            // is considered, so that "a-1" is a name and a number.
            const CharIt begin = m_it;
            if (*m_it == '"')
                ReadString();
            else if (IsIDBeginner(*m_it))
                ReadWord();
            else if (IsNumBeginner(m_it))
                ReadNum();
            else if (IsSingleCharOperator(*m_it))
            {
                ++m_it;
                Append(begin, TokenType_Identifier);
            }
            else if (*m_it == '/' && m_end - m_it > 1 && m_it[1] == '/')
            {
                while (m_it != m_end && *m_it != '\n')
                    ++m_it;
            }
            else
                ReadOperator();
        }
    }

private:
    void Append(CharIt begin, TokenType type)
    {
        m_tokens.emplace_back(util::String(begin, m_it), type);
    }

    void ReadString()
    {
        util::String text;
        for (++m_it;;)
        {
            const CharIt plain = m_it;
            while (m_it != m_end && *m_it != '"' && *m_it != '\\')
                ++m_it;
            text.append(plain, m_it);
            if (m_it == m_end)
                QUIB_THROW(TokenException("Unmatched quote (\")"));
            if (*m_it++ == '"')
                break;
            if (m_it == m_end)
                QUIB_THROW(TokenException("Bad \\-escape in string"));
            const char c = *m_it++;
            text += c == 'n' ? '\n' : c == 't' ? '\t' : c;
        }
        m_tokens.emplace_back(std::move(text), TokenType_String);
    }

    void ReadWord()
    {
        const CharIt begin = m_it;
        while (m_it != m_end && IsIDChar(*m_it))
            ++m_it;
        Append(begin, TokenType_Identifier);
        Token& token = m_tokens.back();
        if (token.text == "true" || token.text == "false")
            token.type = TokenType_Bool;
    }

    /// Any number of signs may stand before the digits. All positions in one run of signs have the
    /// same answer, which is kept: else a run of n signs would cost n squared steps.
    bool IsNumBeginner(CharIt p)
    {
        if (p == m_end)
            return false;
        if (!IsSign(*p))
            return IsUnsignedNumBeginner(p);
        if (p >= m_signsEnd)
        {
            for (m_signsEnd = p; m_signsEnd != m_end && IsSign(*m_signsEnd);)
                ++m_signsEnd;
            m_signsBeginNum = IsUnsignedNumBeginner(m_signsEnd);
        }
        return m_signsBeginNum;
    }

    bool IsUnsignedNumBeginner(CharIt p) const
    {
        if (p == m_end)
            return false;
        return IsNum(*p) || IsInf(p, m_end) || (*p == '.' && m_end - p > 1 && IsNum(p[1]));
    }

    // Deliberate: only one sign is taken, so that "--5" gives the int token "-" and the int token
    // "-5"; an exponent exists only behind a fraction; a trailing point is no part of a number.
    void ReadNum()
    {
        const CharIt begin = m_it;
        if (IsSign(*m_it))
            ++m_it;
        if (IsInf(m_it, m_end))
        {
            m_it += 3;
            Append(begin, TokenType_Float);
            return;
        }
        m_it = SkipNums(m_it, m_end);
        if (m_end - m_it < 2 || *m_it != '.' || !IsNum(m_it[1]))
        {
            Append(begin, TokenType_Int);
            return;
        }
        m_it = SkipNums(m_it + 1, m_end);
        if (m_it != m_end && (*m_it == 'e' || *m_it == 'E'))
        {
            ++m_it;
            if (m_it != m_end && IsSign(*m_it))
                ++m_it;
            m_it = SkipNums(m_it, m_end);
        }
        Append(begin, TokenType_Float);
    }

    // Deliberate: ";" is an operator character like any other, so that ";;" is one token, and a
    // comment is only seen where a run begins.
    void ReadOperator()
    {
        const CharIt begin = m_it;
        do
            ++m_it;
        while (m_it != m_end && !IsWhite(*m_it) && !IsIDBeginner(*m_it) && !IsNumBeginner(m_it) &&
               !IsSingleCharOperator(*m_it) && *m_it != '"');
        Append(begin, TokenType_Identifier);
    }

    CharIt m_it;
    CharIt m_end;
    TokenList m_tokens;
    CharIt m_signsEnd;            // of the run of signs met last
    bool m_signsBeginNum = false; // a number follows that run
};
}

TokenList Tokenizer::Tokenize(const util::String& text)
{
    return TextReader(text).ReadAll();
}

bool Tokenizer::IsIDChar(char c)
{
    return script::IsIDChar(c);
}

bool Tokenizer::IsPunctuation(char c)
{
    return c != '"' && !Is(c, CharClass_White | CharClass_Num | CharClass_IDBeginner |
                                  CharClass_SingleCharOperator);
}
}
