// An operator declared by a script or by the program: a pattern of words and holes, and a function for
// what stands in the holes.
#pragma once

#include "script/Objects.h"

namespace script
{
enum Associativity
{
    Associativity_Left = 0,
    Associativity_Right = 1
};

class Infix final : public util::Pointee
{
public:
    /// @param precedence  lower binds more weakly
    /// @param associativity  printed back and nothing else: every infix groups to the right
    /// @param pattern  the words, with "" for a hole
    /// @param function  yields the function to call
    Infix(double precedence, Associativity associativity, std::vector<util::String> pattern,
          ExpressionPtr function);
    ~Infix() override;

    double GetPrecedence() const { return m_precedence; }
    const std::vector<util::String>& GetPattern() const { return m_pattern; }
    const ExpressionPtr& GetFunction() const { return m_function; }
    /// The number of holes.
    int GetArgCount() const { return m_argCount; }
    /// The words, joined.
    util::String GetName() const;
    /// The statement that declares it, with its end.
    util::String DeclarationCode() const;

private:
    double m_precedence;
    Associativity m_associativity;
    std::vector<util::String> m_pattern;
    ExpressionPtr m_function;
    int m_argCount;
};

using InfixPtr = util::SharedPtr<Infix>;
}
