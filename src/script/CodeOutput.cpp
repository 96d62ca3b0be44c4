// ToCode of all expressions: the language is its own save format.
#include "script/Parser.h"
#include "script/Recursion.h"
#include "util/SharedPtr.h"

#include <charconv>
#include <limits>

namespace script
{
namespace
{
const util::String StatementSeparator = ";\n";
// No statement is longer than MaxStringLength, but a file may hold many.
const size_t MaxCodeLength = size_t(1) << 30;
const size_t MaxWork = 4 * MaxStringLength;

// A value that no text would bring back. It is left out together with its statement, so that the rest of
// a file stays readable.
class Unprintable : public ScriptException
{
public:
    using ScriptException::ScriptException;
};

// Where the text now being made will stand.
struct Place
{
    int brackets =
        0; // blocks, lists, functions and infix declarations around it, as the parser counts
    int operands = 0;     // infixes around it within the innermost of these
    bool isValue = false; // of an assignment, or part of one

    bool IsTopLevel() const { return brackets == 0 && !isValue; }
};

Place s_place;
// Characters put together for the statement in progress. Each level of nesting copies what is in it.
size_t s_work = 0;
// Longer texts need not be completed, as their end will be cut off.
size_t s_enough = std::numeric_limits<size_t>::max();

class Enough
{
public:
    explicit Enough(size_t length) { s_enough = length; }
    ~Enough() { s_enough = std::numeric_limits<size_t>::max(); }
    Enough(const Enough&) = delete;
    Enough& operator=(const Enough&) = delete;
};

class InPlace
{
public:
    explicit InPlace(const Place& place)
        : m_previous(s_place)
    {
        if (place.brackets + place.operands > MaxParseDepth || IsStackLow())
            QUIB_THROW(Unprintable("Expression nested too deeply"));
        if (m_previous.IsTopLevel())
            s_work = 0;
        s_place = place;
    }
    ~InPlace() { s_place = m_previous; }
    InPlace(const InPlace&) = delete;
    InPlace& operator=(const InPlace&) = delete;

private:
    const Place m_previous;
};

Place Bracketed()
{
    return {s_place.brackets + 1, 0, s_place.isValue};
}

Place AsOperand()
{
    return {s_place.brackets, s_place.operands + 1, s_place.isValue};
}

Place AsValue()
{
    return {s_place.brackets, s_place.operands, true};
}

void CheckLength(const util::String& code)
{
    if (code.size() > MaxStringLength)
        QUIB_THROW(Unprintable("String too long"));
}

void CountWork(const util::String& code)
{
    s_work += code.size();
    if (s_work > MaxWork)
        QUIB_THROW(Unprintable("String too long"));
}

/// To be asked of whatever will stand where a statement begins.
void CheckStart(const Expression& expression, const util::String& code)
{
    const size_t quote = !code.empty() && code[0] == '"';
    const util::String keyword = KeywordInfix;
    if (code.compare(quote, keyword.size(), keyword) != 0)
        return;
    const size_t end = quote + keyword.size();
    const bool isWord = quote ? code.compare(end, 1, "\"") == 0
                              : end == code.size() || !Tokenizer::IsIDChar(code[end]);
    if (isWord && !dynamic_cast<const InfixDeclaration*>(&expression))
        QUIB_THROW(Unprintable("\"" + keyword + "\" would be read as a declaration"));
}

/// A word of punctuation would swallow the punctuation behind it.
bool EndsInPunctuation(const util::String& code)
{
    return !code.empty() && Tokenizer::IsPunctuation(code.back());
}

void AppendDot(util::String& code, const util::String& name)
{
    if (EndsInPunctuation(code))
        code += ' ';
    code += '.';
    if (!name.empty() && Tokenizer::IsPunctuation(name[0]))
        code += ' ';
}

util::String NameOf(const Expression& statement)
{
    const Assignment* assignment = statement.AsAssignment();
    return assignment ? assignment->GetTarget()->ToCode() : "a statement";
}

util::String ValueToCode(bool value)
{
    return util::ToString(value);
}

util::String ValueToCode(Int value)
{
    return util::ToString(value);
}

util::String ValueToCode(Float value)
{
    if (value > std::numeric_limits<Float>::max())
        return "+inf";
    if (value < -std::numeric_limits<Float>::max())
        return "-inf";
    char text[64];
    const auto result =
        std::to_chars(text, text + sizeof(text), value, std::chars_format::general, 16);
    util::String code(text, result.ptr);
    // Deliberate: no notice is taken of exponents and NaN, which give "1e+20.0" and "nan.0".
    if (code.find('.') == util::String::npos)
        code += ".0";
    return code;
}

util::String Quote(const util::String& value)
{
    util::String code = "\"";
    size_t backslashes = 0; // that stand directly before c
    for (char c : value)
    {
        // Deliberate: a backslash is not escaped, so that a string with one reads back differently. But
        // one that would take the quote away is, or nothing behind it could be read at all.
        if (c == '\n')
            code += "\\n";
        else if (c == '\t')
            code += "\\t";
        else if (c == '"')
            code += backslashes % 2 == 1 ? "\\\\\"" : "\\\"";
        else
            code += c;
        backslashes = c == '\\' ? backslashes + 1 : 0;
    }
    return code + (backslashes % 2 == 1 ? "\\\"" : "\"");
}

util::String ValueToCode(const util::String& value)
{
    if (EndsStatement(value))
        QUIB_THROW(Unprintable("The string \"" + value + "\" would end the statement"));
    return Quote(value.size() > s_enough ? value.substr(0, s_enough + 1) : value);
}

/// A word of an infix, as its declaration takes it: any token.
util::String WordToCode(const util::String& word)
{
    try
    {
        const TokenList tokens = Tokenizer::Tokenize(word);
        if (tokens.size() == 1 && tokens[0].text == word)
            return word;
    }
    catch (TokenException& e)
    {
        CatchException(e, QUIB_LOCATION);
    }
    return Quote(word);
}
}

util::String Indent(const util::String& text, const util::String& prefix)
{
    util::String indented = prefix;
    indented.reserve(text.size() + text.size() / 4);
    for (size_t begin = 0; begin < text.size();)
    {
        size_t end = text.find('\n', begin);
        end = end == util::String::npos ? text.size() : end + 1;
        indented.append(text, begin, end - begin);
        if (end < text.size())
            indented += prefix;
        if (indented.size() > MaxStringLength)
            QUIB_THROW(Unprintable("String too long"));
        begin = end;
    }
    return indented;
}

template<typename T>
util::String Literal<T>::ToCode() const
{
    return ValueToCode(m_value);
}

template util::String Literal<Int>::ToCode() const;
template util::String Literal<Float>::ToCode() const;
template util::String Literal<util::String>::ToCode() const;
template util::String Literal<bool>::ToCode() const;

util::String Identifier::ToCode() const
{
    if (!m_owner)
        return m_name;
    std::vector<const Identifier*> chain(1, this);
    const Expression* head = m_owner.get();
    while (const Identifier* name = head ? head->AsIdentifier() : nullptr)
    {
        chain.push_back(name);
        head = name->m_owner.get();
    }
    util::String code;
    if (head)
    {
        code = head->ToCode();
        AppendDot(code, chain.back()->m_name);
    }
    for (; !chain.empty() && code.size() <= s_enough; chain.pop_back())
    {
        code += chain.back()->m_name;
        if (chain.size() > 1)
            AppendDot(code, chain[chain.size() - 2]->m_name);
    }
    return code;
}

util::String CodeBlock::ToCode() const
{
    return ToCode(StatementSeparator);
}

util::String CodeBlock::ToCode(const util::String& separator) const
{
    const bool areStatements = separator == StatementSeparator;
    const size_t maxLength = s_place.IsTopLevel() ? MaxCodeLength : MaxStringLength;
    const InPlace place(s_place);
    util::String code;
    for (const ExpressionPtr& element : m_elements)
    {
        if (code.size() > s_enough)
            return code;
        try
        {
            util::String elementCode = element->ToCode();
            if (elementCode.empty())
                continue;
            CheckStart(*element, elementCode);
            if (areStatements && EndsInPunctuation(elementCode))
                elementCode += ' ';
            // A declaration brings an end of statement of its own.
            while (!areStatements && util::ends_with(elementCode, StatementSeparator))
                elementCode.resize(elementCode.size() - StatementSeparator.size());
            if (code.size() + elementCode.size() > maxLength)
                QUIB_THROW(Unprintable("String too long"));
            code += elementCode;
            code += separator;
        }
        catch (Unprintable& e)
        {
            // A value is printed whole or not at all: only a statement can be left out.
            if (!areStatements || s_place.isValue)
                throw;
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning, "Failed to print " + NameOf(*element) + ": " + e.what());
        }
        catch (std::exception& e)
        {
            util::LogContained(e.what(), QUIB_LOCATION);
        }
        catch (...)
        {
            util::LogContained(nullptr, QUIB_LOCATION);
        }
    }
    if (util::ends_with(code, separator))
        code.resize(code.size() - separator.size());
    return code;
}

util::String Block::ToCode() const
{
    const InPlace place(Bracketed());
    return "(" + ToCode(", ") + ")";
}

util::String ListDeclaration::ToCode() const
{
    const InPlace place(Bracketed());
    return "[" + ToCode(", ") + "]";
}

util::String FunctionDeclaration::ToCode() const
{
    const InPlace place(Bracketed());
    util::String code = m_body->ToCode();
    if (code.find('\n') != util::String::npos)
        code = "\n" + Indent(code, "    ") + "\n";
    CheckLength(code);
    CountWork(code);
    if (m_argNames.empty())
        return "{" + code + "}";
    return "(" + util::Join(m_argNames, ", ") + ")=>{" + code + "}";
}

util::String FunctionCall::ToCode() const
{
    std::vector<const FunctionCall*> calls(1, this);
    while (const FunctionCall* inner = calls.back()->m_function->AsFunctionCall())
        calls.push_back(inner);
    util::String code = calls.back()->m_function->ToCode();
    for (; !calls.empty() && code.size() <= s_enough; calls.pop_back())
    {
        const util::String args = calls.back()->m_args->ToCode();
        if (!util::starts_with(args, "("))
            code += ' ';
        code += args;
        CheckLength(code);
    }
    return code;
}

util::String InfixFunctionCall::ToCode() const
{
    util::String code;
    size_t arg = 0;
    for (const util::String& entry : m_infix->GetPattern())
    {
        if (code.size() > s_enough)
            return code;
        if (!entry.empty())
        {
            code += " " + entry + " ";
            continue;
        }
        if (arg == m_args.size())
            QUIB_THROW(ParseException("Too few arguments to infix function " +
                                      util::Shorten(m_infix->GetName())));
        // An operand that is missing in the source prints as nothing.
        if (m_args[arg])
        {
            const InPlace place(AsOperand());
            code += m_args[arg]->ToCode();
        }
        ++arg;
        CheckLength(code);
    }
    if (arg != m_args.size())
        QUIB_THROW(ParseException("Too many arguments to infix function " +
                                  util::Shorten(m_infix->GetName())));
    return code;
}

util::String Assignment::ToCode() const
{
    util::String code = m_target->ToCode();
    const Assignment* assignment = this;
    while (const Assignment* inner =
               assignment->m_value ? assignment->m_value->AsAssignment() : nullptr)
    {
        if (code.size() > s_enough)
            return code;
        assignment = inner;
        code += " = " + assignment->m_target->ToCode();
    }
    code += " = ";
    // So does a value that is missing.
    if (!assignment->m_value)
        return code;
    const InPlace place(AsValue());
    const util::String value = assignment->m_value->ToCode();
    CheckStart(*assignment->m_value, value);
    return code + value;
}

util::String Infix::DeclarationCode() const
{
    util::String code = "infix " + WordToCode(util::ToString(m_precedence)) + " " +
                        (m_associativity == Associativity_Left ? "left" : "right") + ": ";
    for (const util::String& entry : m_pattern)
        code += (entry.empty() ? "_" : WordToCode(entry)) + " ";
    code += "=> ";
    if (m_function)
    {
        const InPlace place(Bracketed());
        const util::String function = m_function->ToCode();
        CheckStart(*m_function, function);
        code += function;
        if (EndsInPunctuation(function))
            code += ' ';
    }
    return code + StatementSeparator;
}

util::String PrintShortened(const Expression& expression)
{
    const size_t length = 1000;
    const Enough enough(length);
    return util::Shorten(expression.ToCode(), length);
}

util::String InfixDeclaration::ToCode() const
{
    return m_infix->DeclarationCode();
}
}
