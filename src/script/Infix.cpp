#include "script/Infix.h"

#include "script/Expressions.h"

#include <algorithm>

namespace script
{
Infix::Infix(double precedence, Associativity associativity, std::vector<util::String> pattern,
             ExpressionPtr function)
    : m_precedence(precedence)
    , m_associativity(associativity)
    , m_pattern(std::move(pattern))
    , m_function(std::move(function))
    , m_argCount(static_cast<int>(std::count(m_pattern.begin(), m_pattern.end(), util::String())))
{
}

Infix::~Infix() = default;

util::String Infix::GetName() const
{
    return util::Join(m_pattern, "");
}
}
