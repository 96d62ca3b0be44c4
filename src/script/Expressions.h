// The nodes of a parsed program. A tree is immutable once built and may be shared.
//
// Chains that grow with the length of a statement (a.b.c, f a b c, a = b = c) are walked in loops, so
// that only true nesting costs stack.
#pragma once

#include "script/Infix.h"
#include "script/Scope.h"

namespace script
{
class Identifier;
class Block;
class CodeBlock;

using ExpressionList = std::vector<ExpressionPtr>;
using ExpressionIt = ExpressionList::const_iterator;
using BlockPtr = util::SharedPtr<Block>;
using CodeBlockPtr = util::SharedPtr<CodeBlock>;

class Expression : public util::Pointee, public util::InSmallBlocks
{
public:
    ~Expression() override;

    virtual ObjectPtr Evaluate(const ClosurePtr& closure) const = 0;
    /// The text of the tree. Reading it gives an equal tree, but for a few kept oddities.
    virtual util::String ToCode() const = 0;

    // The node as what the parser and the chain walks look for, else null.
    virtual const Identifier* AsIdentifier() const { return nullptr; }
    virtual const Block* AsBlock() const { return nullptr; }
    virtual const class FunctionCall* AsFunctionCall() const { return nullptr; }
    virtual const class Assignment* AsAssignment() const { return nullptr; }
};

// T: Int, Float, util::String, bool.
template<typename T>
class Literal final : public Expression
{
public:
    explicit Literal(T value)
        : m_value(std::move(value))
    {
    }

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    const T& GetValue() const { return m_value; }

private:
    T m_value;
};

class Identifier final : public Expression
{
public:
    /// @param owner  null for a plain name
    Identifier(ExpressionPtr owner, util::String name);

    /// A name that refers to a function of no arguments is a call of it.
    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    const Identifier* AsIdentifier() const override { return this; }

    const util::String& GetName() const { return m_name; }
    const ExpressionPtr& GetOwnerExpression() const { return m_owner; }

    /// What the name refers to, looked for outward.
    ObjectPtr GetValue(const ClosurePtr& closure) const;
    /// Writes to the scope at hand only.
    void SetValue(const ClosurePtr& closure, const ObjectPtr& value) const;

private:
    /// The object in which the name is looked up.
    ClassObjectPtr GetOwner(const ClosurePtr& closure) const;

    ExpressionPtr m_owner;
    util::String m_name;
};

// Statements. Each fails on its own: a failure is logged and the next one runs.
class CodeBlock : public Expression
{
public:
    CodeBlock() = default;

    /// Null is ignored.
    void Add(ExpressionPtr expression);
    const ExpressionList& GetElements() const { return m_elements; }

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    /// The values of the elements, in order. Unlike Evaluate it lets a failure through.
    ObjectList EvaluateToList(const ClosurePtr& closure) const;
    util::String ToCode(const util::String& separator) const;

protected:
    /// Keeps nulls: an empty element is an element.
    explicit CodeBlock(ExpressionList elements)
        : m_elements(std::move(elements))
    {
    }

private:
    ExpressionList m_elements;
};

// ( ... ): the arguments of a call, a bracketed expression, or a list.
class Block final : public CodeBlock
{
public:
    Block() = default;
    explicit Block(ExpressionList elements)
        : CodeBlock(std::move(elements))
    {
    }

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    using CodeBlock::ToCode;
    const Block* AsBlock() const override { return this; }
};

// [ ... ]
class ListDeclaration final : public CodeBlock
{
public:
    ListDeclaration() = default;
    explicit ListDeclaration(ExpressionList elements)
        : CodeBlock(std::move(elements))
    {
    }

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    using CodeBlock::ToCode;
};

// { ... } or (a, b) => { ... }
class FunctionDeclaration final : public Expression
{
public:
    FunctionDeclaration(std::vector<util::String> argNames, CodeBlockPtr body);
    ~FunctionDeclaration() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;

    const std::vector<util::String>& GetArgNames() const { return m_argNames; }
    const ExpressionPtr& GetBody() const { return m_body; }

private:
    std::vector<util::String> m_argNames;
    ExpressionPtr m_body;
};

class FunctionCall final : public Expression
{
public:
    FunctionCall(ExpressionPtr function, BlockPtr args);
    ~FunctionCall() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    const FunctionCall* AsFunctionCall() const override { return this; }

    const ExpressionPtr& GetFunction() const { return m_function; }

private:
    ExpressionPtr m_function;
    BlockPtr m_args;
};

class InfixFunctionCall final : public Expression
{
public:
    InfixFunctionCall(InfixPtr infix, ExpressionList args);
    ~InfixFunctionCall() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;

private:
    InfixPtr m_infix;
    ExpressionList m_args;
};

class Assignment final : public Expression
{
public:
    Assignment(IdentifierPtr target, ExpressionPtr value);
    ~Assignment() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;
    const Assignment* AsAssignment() const override { return this; }

    const IdentifierPtr& GetTarget() const { return m_target; }
    const ExpressionPtr& GetValue() const { return m_value; }

private:
    IdentifierPtr m_target;
    ExpressionPtr m_value;
};

class InfixDeclaration final : public Expression
{
public:
    explicit InfixDeclaration(InfixPtr infix);
    ~InfixDeclaration() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) const override;
    util::String ToCode() const override;

private:
    InfixPtr m_infix;
};

/// ToCode for messages: about the first 1,000 characters, and no more is printed than these need.
util::String PrintShortened(const Expression& expression);

/// Puts the prefix before the text and after each newline that is not its last character.
util::String Indent(const util::String& text, const util::String& prefix);
}
