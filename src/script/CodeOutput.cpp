// ToCode of all expressions: the language is its own save format.
#include "script/Expressions.h"
#include "script/Recursion.h"
#include "util/SharedPtr.h"

#include <charconv>
#include <limits>

namespace script
{
namespace
{
class TextTooLong : public ScriptException
{
public:
    TextTooLong()
        : ScriptException("String too long")
    {
    }
};

void CheckLength(const util::String& code)
{
    if (code.size() > MaxStringLength)
        QUIB_THROW(TextTooLong());
}

void CheckNesting()
{
    if (IsStackLow())
        QUIB_THROW(ScriptException("Expression nested too deeply"));
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

util::String ValueToCode(const util::String& value)
{
    util::String code = "\"";
    for (char c : value)
    {
        // Deliberate: a backslash is not escaped, so that a string with one reads back differently.
        if (c == '\n')
            code += "\\n";
        else if (c == '\t')
            code += "\\t";
        else if (c == '"')
            code += "\\\"";
        else
            code += c;
    }
    return code + "\"";
}
}

util::String Indent(const util::String& text, const util::String& prefix)
{
    util::String indented = prefix;
    indented.reserve(text.size() + text.size() / 4);
    for (size_t i = 0; i < text.size(); ++i)
    {
        indented += text[i];
        if (text[i] == '\n' && i + 1 < text.size())
        {
            indented += prefix;
            CheckLength(indented);
        }
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
    util::String code = head ? head->ToCode() + "." : "";
    for (; !chain.empty(); chain.pop_back())
    {
        code += chain.back()->m_name;
        if (chain.size() > 1)
            code += '.';
    }
    return code;
}

util::String CodeBlock::ToCode() const
{
    return ToCode(";\n");
}

util::String CodeBlock::ToCode(const util::String& separator) const
{
    CheckNesting();
    util::String code;
    for (const ExpressionPtr& element : m_elements)
    {
        try
        {
            const util::String elementCode = element->ToCode();
            if (elementCode.empty())
                continue;
            code += elementCode;
            code += separator;
        }
        catch (TextTooLong& e)
        {
            // A value is printed whole or not at all: only a statement can be left out.
            if (separator != ";\n")
                throw;
            util::internal::LogEscapedFromHandle(e.what(), QUIB_LOCATION);
        }
        catch (std::exception& e)
        {
            util::internal::LogEscapedFromHandle(e.what(), QUIB_LOCATION);
        }
        catch (...)
        {
            util::internal::LogEscapedFromHandle(nullptr, QUIB_LOCATION);
        }
        CheckLength(code);
    }
    if (util::ends_with(code, separator))
        code.resize(code.size() - separator.size());
    return code;
}

util::String Block::ToCode() const
{
    return "(" + ToCode(", ") + ")";
}

util::String ListDeclaration::ToCode() const
{
    return "[" + ToCode(", ") + "]";
}

util::String FunctionDeclaration::ToCode() const
{
    util::String code = m_body->ToCode();
    if (code.find('\n') != util::String::npos)
        code = "\n" + Indent(code, "    ") + "\n";
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
    for (; !calls.empty(); calls.pop_back())
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
    CheckNesting();
    util::String code;
    size_t arg = 0;
    for (const util::String& entry : m_infix->GetPattern())
    {
        if (!entry.empty())
        {
            code += " " + entry + " ";
            continue;
        }
        if (arg == m_args.size())
            QUIB_THROW(ParseException("Too few arguments to infix function " + m_infix->GetName()));
        // An operand that is missing in the source prints as nothing.
        if (m_args[arg])
            code += m_args[arg]->ToCode();
        ++arg;
        CheckLength(code);
    }
    if (arg != m_args.size())
        QUIB_THROW(ParseException("Too many arguments to infix function " + m_infix->GetName()));
    return code;
}

util::String Assignment::ToCode() const
{
    util::String code = m_target->ToCode();
    const Assignment* assignment = this;
    while (const Assignment* inner = assignment->m_value->AsAssignment())
    {
        assignment = inner;
        code += " = " + assignment->m_target->ToCode();
    }
    return code + " = " + assignment->m_value->ToCode();
}

util::String InfixDeclaration::ToCode() const
{
    return m_infix->DeclarationCode();
}
}
