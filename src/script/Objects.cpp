#include "script/Objects.h"

#include "script/Expressions.h"
#include "script/Recursion.h"
#include "script/ValueConversions.h"
#include "util/ScopeProfiler.h"

#include <type_traits>

namespace script
{
Object::~Object() = default;

template<typename T>
Value<T>::Value(T value)
    : Object(internal::KindOf<Value>)
    , m_value(std::move(value))
{
}

template<typename T>
ExpressionPtr Value<T>::ToExpression() const
{
    return QUIB_NEW Literal<T>(m_value);
}

template<typename T>
util::String Value<T>::ToText() const
{
    if constexpr (std::is_same_v<T, util::String>)
        ChargeString(m_value.size());
    return util::ToString(m_value);
}

template class Value<bool>;
template class Value<Int>;
template class Value<Float>;
template class Value<util::String>;

ExpressionPtr BadObject::ToExpression() const
{
    return ExpressionPtr();
}

util::String Void::ToText() const
{
    return "void";
}

util::String Unbound::ToText() const
{
    return "unbound";
}

util::String ErrorObject::ToText() const
{
    return "error";
}

ExpressionPtr AbstractIntrinsic::ToExpression() const
{
    return ExpressionPtr();
}

util::String AbstractIntrinsic::ToText() const
{
    return "intrinsic function";
}

IntrinsicCmd::IntrinsicCmd(boost::function<ObjectPtr()> function)
    : m_function(std::move(function))
{
}

ObjectPtr IntrinsicCmd::Call(const ObjectList& args)
{
    DATA_ASSERT(args.empty());
    return m_function();
}

IntrinsicCmd1::IntrinsicCmd1(boost::function<ObjectPtr(ObjectPtr)> function)
    : m_function(std::move(function))
{
}

ObjectPtr IntrinsicCmd1::Call(const ObjectList& args)
{
    DATA_ASSERT(args.size() == 1);
    return m_function(args[0]);
}

IntrinsicCmd2::IntrinsicCmd2(boost::function<ObjectPtr(ObjectPtr, ObjectPtr)> function)
    : m_function(std::move(function))
{
}

ObjectPtr IntrinsicCmd2::Call(const ObjectList& args)
{
    DATA_ASSERT(args.size() == 2);
    return m_function(args[0], args[1]);
}

Function::Function(ClosurePtr closure, FunctionDeclarationPtr declaration)
    : AbstractFunction(ObjectKind::Function)
    , m_closure(std::move(closure))
    , m_declaration(std::move(declaration))
{
}

Function::~Function() = default;

ExpressionPtr Function::ToExpression() const
{
    return m_declaration;
}

util::String Function::ToText() const
{
    util::String text = m_declaration->ToCode();
    ChargeString(text.size());
    return text;
}

int Function::GetArgCount()
{
    return static_cast<int>(m_declaration->GetArgNames().size());
}

const std::vector<util::String>& Function::GetArgNames() const
{
    return m_declaration->GetArgNames();
}

const ExpressionPtr& Function::GetBody() const
{
    return m_declaration->GetBody();
}

ObjectPtr Function::Call(const ObjectList& args)
{
    QUIB_PROFILE("Function::Call");

    const std::vector<util::String>& names = m_declaration->GetArgNames();
    if (args.size() != names.size())
        QUIB_THROW(ScriptException("Wrong number of arguments to function"));

    CallGuard guard;
    CheckStack();
    // The body may let go of this function, or call it again.
    const FunctionDeclarationPtr declaration = m_declaration;
    const ClosurePtr closure = QUIB_NEW Closure(declaration, m_closure);
    m_callClosure = closure;
    for (size_t i = 0; i < args.size(); ++i)
        closure->AddVariable(QUIB_NEW Variable(names[i], args[i], true));

    if (!guard.IsOutermost())
        return declaration->GetBody()->Evaluate(closure);
    try
    {
        return declaration->GetBody()->Evaluate(closure);
    }
    catch (const CallUnwinder& unwinder)
    {
        QUIB_THROW(ScriptException(unwinder.message));
    }
}

List::List(ObjectList elements)
    : AbstractFunction(ObjectKind::List)
    , m_elements(std::move(elements))
    , m_deepSize(m_elements.size())
{
    for (const ObjectPtr& element : m_elements)
    {
        if (const List* list = As<List>(element))
        {
            m_deepSize += list->m_deepSize;
            m_deepBytes += list->m_deepBytes;
        }
        else if (const auto* string = As<Value<util::String>>(element))
            m_deepBytes += string->GetValue().size();
    }
    if (m_deepSize > MaxListLength || m_deepBytes > MaxListBytes)
        QUIB_THROW(ScriptException("List too long"));
    Charge(ElementCost * static_cast<int64_t>(m_elements.size()));
}

ExpressionPtr List::ToExpression() const
{
    size_t textLength = 0;
    return ToExpressionAt(1, textLength);
}

ExpressionPtr List::ToExpressionAt(int depth, size_t& textLength) const
{
    CheckStack();
    if (depth > MaxPrintDepth)
        return ExpressionPtr();
    util::SharedPtr<ListDeclaration> declaration = QUIB_NEW ListDeclaration;
    for (const ObjectPtr& element : m_elements)
    {
        if (const List* list = As<List>(element))
        {
            declaration->Add(list->ToExpressionAt(depth + 1, textLength));
            continue;
        }
        // One string that stands in a list a thousand times is a thousand strings in the tree.
        if (const auto* string = As<Value<util::String>>(element))
            textLength += string->GetValue().size();
        if (textLength > MaxStringLength)
            QUIB_THROW(ScriptException("String too long"));
        declaration->Add(element->ToExpression());
    }
    return declaration;
}

util::String List::ToText() const
{
    util::String text;
    AppendText(text, 1);
    return text;
}

void List::AppendText(util::String& text, int depth) const
{
    CheckStack();
    if (depth > MaxPrintDepth)
    {
        text += "[...]";
        return;
    }
    Charge(ElementCost * static_cast<int64_t>(m_elements.size()));
    text += '[';
    for (size_t i = 0; i < m_elements.size(); ++i)
    {
        if (i)
            text += ", ";
        const ObjectPtr& element = m_elements[i];
        if (const List* list = As<List>(element))
            list->AppendText(text, depth + 1);
        else
            text += element->ToText();
        if (text.size() > MaxStringLength)
            QUIB_THROW(ScriptException("String too long"));
    }
    text += ']';
}

ObjectPtr List::Call(const ObjectList& args)
{
    QUIB_PROFILE("List::Call");

    const int index = ObjectToValue<int>(args.empty() ? ObjectPtr() : args[0]);
    if (index < 0 || static_cast<size_t>(index) >= m_elements.size())
        QUIB_THROW(ScriptException("List index out of bounds"));
    return m_elements[static_cast<size_t>(index)];
}

ObjectPtr ExpandObject(const ObjectPtr& object)
{
    if (!object || !object->IsFunction() || object->GetKind() == ObjectKind::List)
        return object;
    // A copy: the call may replace the object where the reference points to.
    const AbstractFunctionPtr function(static_cast<AbstractFunction*>(object.get()));
    if (function->GetArgCount() != 0)
        return object;
    static const ObjectList s_none;
    return function->Call(s_none);
}
}
