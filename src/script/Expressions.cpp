#include "script/Expressions.h"

#include "script/Recursion.h"
#include "util/ScopeProfiler.h"

#include <type_traits>

namespace script
{
namespace
{
ObjectPtr Apply(const ObjectPtr& callee, const ExpressionList& args, const ClosurePtr& closure)
{
    if (!callee || !callee->IsFunction())
        QUIB_THROW(ScriptException("Function call applied to non-function"));
    const AbstractFunctionPtr function(static_cast<AbstractFunction*>(callee.get()));

    Charge(CallCost);
    ObjectList values;
    {
        QUIB_PROFILE("Argument eval");
        values.reserve(args.size());
        for (const ExpressionPtr& arg : args)
            values.push_back(arg->Evaluate(closure));
    }
    QUIB_PROFILE("Actual call");
    return function->Call(values);
}

ClassObjectPtr AsOwner(const ObjectPtr& object)
{
    const ClassObjectPtr owner(As<ClassObject>(object));
    DATA_ASSERT(owner);
    return owner;
}

ObjectPtr GetValueIn(const ClassObject& owner, const util::String& name)
{
    ObjectPtr object = owner.LookupObject(name);
    if (!object)
        QUIB_THROW(ScriptException("Cannot find identifier " + util::Shorten(name) + " in " +
                                   util::Shorten(owner.ToText())));
    return object;
}

// What failed, for the log. The text must not become a failure of its own.
util::String DescribeStatement(const Expression& statement)
{
    try
    {
        return PrintShortened(statement);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        return "a statement that can't be printed";
    }
}
}

Expression::~Expression() = default;

template<typename T>
ObjectPtr Literal<T>::Evaluate(const ClosurePtr&) const
{
    if constexpr (std::is_same_v<T, util::String>)
        ChargeString(m_value.size());
    return QUIB_NEW Value<T>(m_value);
}

template class Literal<Int>;
template class Literal<Float>;
template class Literal<util::String>;
template class Literal<bool>;

Identifier::Identifier(ExpressionPtr owner, util::String name)
    : m_owner(std::move(owner))
    , m_name(std::move(name))
{
}

ClassObjectPtr Identifier::GetOwner(const ClosurePtr& closure) const
{
    if (!m_owner)
        return closure;

    // Down the dots to the head of the chain, and back up.
    std::vector<const Identifier*> chain;
    const Expression* head = m_owner.get();
    while (const Identifier* name = head->AsIdentifier())
    {
        chain.push_back(name);
        head = name->m_owner.get();
        if (!head)
            break;
    }
    Charge(StatementCost * static_cast<int64_t>(chain.size()));
    ClassObjectPtr owner = head ? AsOwner(head->Evaluate(closure)) : ClassObjectPtr(closure);
    for (; !chain.empty(); chain.pop_back())
        owner = AsOwner(ExpandObject(GetValueIn(*owner, chain.back()->m_name)));
    return owner;
}

ObjectPtr Identifier::GetValue(const ClosurePtr& closure) const
{
    // Deliberate: a dotted name is looked for outward as well: a.b finds a b around a.
    return GetValueIn(*GetOwner(closure), m_name);
}

void Identifier::SetValue(const ClosurePtr& closure, const ObjectPtr& value) const
{
    const ClassObjectPtr owner = GetOwner(closure);
    const VariablePtr variable = owner->GetVariable(m_name);
    if (!variable)
    {
        owner->AddVariable2(m_name, value);
        return;
    }
    if (variable->IsConstant())
        QUIB_THROW(ScriptException("Cannot set constant variable " + util::Shorten(m_name)));
    variable->SetObject(value);
}

ObjectPtr Identifier::Evaluate(const ClosurePtr& closure) const
{
    return ExpandObject(GetValue(closure));
}

void CodeBlock::Add(ExpressionPtr expression)
{
    if (expression)
        m_elements.push_back(std::move(expression));
}

ObjectPtr CodeBlock::Evaluate(const ClosurePtr& closure) const
{
    ObjectPtr result;
    for (const ExpressionPtr& element : m_elements)
    {
        try
        {
            Charge(StatementCost);
            result = element->Evaluate(closure);
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning,
                "Failed to evaluate: " + DescribeStatement(*element) + ", " + e.what());
            result = QUIB_NEW ErrorObject;
            CountFailure();
        }
    }
    if (m_elements.empty())
        return QUIB_NEW Void;
    return result;
}

ObjectList CodeBlock::EvaluateToList(const ClosurePtr& closure) const
{
    CheckStack();
    ObjectList values;
    values.reserve(m_elements.size());
    for (const ExpressionPtr& element : m_elements)
        values.push_back(element->Evaluate(closure));
    return values;
}

ObjectPtr Block::Evaluate(const ClosurePtr& closure) const
{
    ObjectList values = EvaluateToList(closure);
    if (values.size() == 1)
        return values[0];
    return QUIB_NEW List(std::move(values));
}

ObjectPtr ListDeclaration::Evaluate(const ClosurePtr& closure) const
{
    QUIB_PROFILE("ListDeclaration::Evaluate");
    return QUIB_NEW List(EvaluateToList(closure));
}

FunctionDeclaration::FunctionDeclaration(std::vector<util::String> argNames, CodeBlockPtr body)
    : m_argNames(std::move(argNames))
    , m_body(std::move(body))
{
}

FunctionDeclaration::~FunctionDeclaration() = default;

ObjectPtr FunctionDeclaration::Evaluate(const ClosurePtr& closure) const
{
    // The tree is immutable, so that the function shares it.
    return QUIB_NEW Function(closure,
                             FunctionDeclarationPtr(const_cast<FunctionDeclaration*>(this)));
}

FunctionCall::FunctionCall(ExpressionPtr function, BlockPtr args)
    : m_function(std::move(function))
    , m_args(std::move(args))
{
}

FunctionCall::~FunctionCall() = default;

ObjectPtr FunctionCall::Evaluate(const ClosurePtr& closure) const
{
    CheckStack();
    const FunctionCall* inner = m_function->AsFunctionCall();
    if (!inner)
        return Apply(m_function->Evaluate(closure), m_args->GetElements(), closure);

    // f a b c is ((f a) b) c.
    std::vector<const FunctionCall*> calls(1, this);
    for (; inner; inner = inner->m_function->AsFunctionCall())
        calls.push_back(inner);
    ObjectPtr value = calls.back()->m_function->Evaluate(closure);
    for (; !calls.empty(); calls.pop_back())
        value = Apply(value, calls.back()->m_args->GetElements(), closure);
    return value;
}

InfixFunctionCall::InfixFunctionCall(InfixPtr infix, ExpressionList args)
    : m_infix(std::move(infix))
    , m_args(std::move(args))
{
    const bool fits = static_cast<size_t>(m_infix->GetArgCount()) == m_args.size();
    // Not by the macro: the text is fixed, and the types in it do not compare.
    if (!fits)
        AssertionFailed("m_infix->GetArgCount() == args.size()", true, true, __PRETTY_FUNCTION__,
                        __FILE__, __LINE__);
}

InfixFunctionCall::~InfixFunctionCall() = default;

ObjectPtr InfixFunctionCall::Evaluate(const ClosurePtr& closure) const
{
    CheckStack();
    return Apply(m_infix->GetFunction()->Evaluate(closure), m_args, closure);
}

Assignment::Assignment(IdentifierPtr target, ExpressionPtr value)
    : m_target(std::move(target))
    , m_value(std::move(value))
{
}

Assignment::~Assignment() = default;

ObjectPtr Assignment::Evaluate(const ClosurePtr& closure) const
{
    const Assignment* inner = m_value->AsAssignment();
    if (!inner)
    {
        ObjectPtr value = m_value->Evaluate(closure);
        m_target->SetValue(closure, value);
        return value;
    }

    // a = b = c sets b, then a.
    std::vector<const Assignment*> assignments(1, this);
    for (; inner; inner = inner->m_value->AsAssignment())
        assignments.push_back(inner);
    Charge(StatementCost * static_cast<int64_t>(assignments.size()));
    ObjectPtr value = assignments.back()->m_value->Evaluate(closure);
    for (; !assignments.empty(); assignments.pop_back())
        assignments.back()->m_target->SetValue(closure, value);
    return value;
}

InfixDeclaration::InfixDeclaration(InfixPtr infix)
    : m_infix(std::move(infix))
{
}

InfixDeclaration::~InfixDeclaration() = default;

ObjectPtr InfixDeclaration::Evaluate(const ClosurePtr& closure) const
{
    closure->AddInfix(m_infix);
    return QUIB_NEW Void;
}
}
