#include "script/Intrinsics.h"

#include "script/Parser.h"
#include "script/Recursion.h"
#include "script/ValueConversions.h"

#include <cmath>
#include <cstdint>

namespace script
{
const char* const IntrinsicsName = "math";

namespace
{
using BinaryFunction = ObjectPtr (*)(const ObjectPtr&, const ObjectPtr&);
using FloatFunction = Float (*)(Float);

// Int arithmetic wraps: it is done unsigned.
Int AddInt(Int a, Int b)
{
    return static_cast<Int>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

Float AddFloat(Float a, Float b)
{
    return a + b;
}

Int SubInt(Int a, Int b)
{
    return static_cast<Int>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

Float SubFloat(Float a, Float b)
{
    return a - b;
}

Int MulInt(Int a, Int b)
{
    return static_cast<Int>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

Float MulFloat(Float a, Float b)
{
    return a * b;
}

Int DivInt(Int a, Int b)
{
    if (b == 0)
        QUIB_THROW(ScriptException("Division by zero"));
    // -2147483648 / -1 wraps to itself; the machine's division would trap.
    if (b == -1)
        return SubInt(0, a);
    return a / b;
}

Float DivFloat(Float a, Float b)
{
    return a / b;
}

bool Negator(bool value)
{
    return !value;
}

double GetPi()
{
    return 3.141592653589793;
}

util::String Concatenate(const util::String& a, const util::String& b)
{
    if (a.size() + b.size() > MaxStringLength)
        QUIB_THROW(ScriptException("String too long"));
    ChargeString(a.size() + b.size());
    return a + b;
}

/// The rule for numbers; null when a is no number.
ObjectPtr NumFun(const ObjectPtr& a, const ObjectPtr& b, Int (*intFn)(Int, Int),
                 Float (*floatFn)(Float, Float), const char* verb)
{
    if (const auto* i = As<Value<Int>>(a))
    {
        if (const auto* j = As<Value<Int>>(b))
            return ValueToObject(intFn(i->GetValue(), j->GetValue()));
        if (const auto* f = As<Value<Float>>(b))
            return ValueToObject(floatFn(i->GetValue(), f->GetValue()));
        QUIB_THROW(ScriptException(util::String("Cannot ") + verb + " an int to a non-number"));
    }
    // Deliberate: the right operand of a float is rounded to single precision by the conversion, the
    // left one is not.
    if (const auto* f = As<Value<Float>>(a))
        return ValueToObject(floatFn(f->GetValue(), ObjectToValue<double>(b)));
    return ObjectPtr();
}

/// The rule for lists; null when a is no list.
ObjectPtr ListRecurse(const ObjectPtr& a, const ObjectPtr& b, BinaryFunction fn, const char* verb)
{
    const List* left = As<List>(a);
    if (!left)
        return ObjectPtr();
    const List* right = As<List>(b);
    if (!right)
        QUIB_THROW(ScriptException(util::String("Cannot ") + verb + " list and no-list"));
    if (left->size() != right->size())
        QUIB_THROW(ScriptException(util::String("Cannot ") + verb + " lists of different size"));
    CheckStack();
    ObjectList elements;
    elements.reserve(left->size());
    for (size_t i = 0; i < left->size(); ++i)
        elements.push_back(fn(left->GetElements()[i], right->GetElements()[i]));
    return QUIB_NEW List(std::move(elements));
}

ObjectPtr PerElement(const List& list, const ObjectPtr& other, BinaryFunction fn)
{
    CheckStack();
    ObjectList elements;
    elements.reserve(list.size());
    for (const ObjectPtr& element : list.GetElements())
        elements.push_back(fn(element, other));
    return QUIB_NEW List(std::move(elements));
}

[[noreturn]] void ThrowFailed(const char* name, const ObjectPtr& a, const ObjectPtr& b)
{
    QUIB_THROW(ScriptException(util::String("Failed: ") + name + "(" + util::Shorten(a->ToText()) +
                               ", " + util::Shorten(b->ToText()) + ")"));
}

ObjectPtr UnaryFloat(FloatFunction fn, const ObjectPtr& o)
{
    const List* list = As<List>(o);
    if (!list)
        return ValueToObject(fn(ObjectToValue<double>(o)));
    CheckStack();
    ObjectList elements;
    elements.reserve(list->size());
    for (const ObjectPtr& element : list->GetElements())
        elements.push_back(UnaryFloat(fn, element));
    return QUIB_NEW List(std::move(elements));
}

template<typename R, typename A>
ObjectPtr UnaryWrapper(R (*fn)(A), const ObjectPtr& o)
{
    return ValueToObject(fn(ObjectToValue<A>(o)));
}

void AddBinFun(Parser& parser, const ClosurePtr& math, const IdentifierPtr& mathName,
               const util::String& name, const util::String& op, BinaryFunction fn)
{
    math->AddConstant(name, QUIB_NEW IntrinsicCmd2(fn));
    parser.AddInfix(
        QUIB_NEW Infix(2.0, Associativity_Left, {"", op, ""}, QUIB_NEW Identifier(mathName, name)));
}

void AddNegeator(Parser& parser, const ClosurePtr& math, const IdentifierPtr& mathName)
{
    math->AddConstant("negate",
                      QUIB_NEW IntrinsicCmd1([](const ObjectPtr& o)
                                             { return UnaryWrapper<bool, bool>(Negator, o); }));
    parser.AddInfix(QUIB_NEW Infix(5.0, Associativity_Right, {"!", ""},
                                   QUIB_NEW Identifier(mathName, "negate")));
}

void AddUnary(const ClosurePtr& math, const util::String& name, FloatFunction fn)
{
    math->AddConstant(
        name, QUIB_NEW IntrinsicCmd1([fn](const ObjectPtr& o) { return UnaryFloat(fn, o); }));
}
}

ObjectPtr Add(const ObjectPtr& a, const ObjectPtr& b)
{
    if (const auto* s = As<Value<util::String>>(a))
        return ValueToObject(Concatenate(s->GetValue(), b->ToText()));
    if (const auto* s = As<Value<util::String>>(b))
        return ValueToObject(Concatenate(a->ToText(), s->GetValue()));
    if (ObjectPtr result = NumFun(a, b, AddInt, AddFloat, "add"))
        return result;
    if (ObjectPtr result = ListRecurse(a, b, Add, "add"))
        return result;
    ThrowFailed("Add", a, b);
}

ObjectPtr Subtract(const ObjectPtr& a, const ObjectPtr& b)
{
    if (ObjectPtr result = NumFun(a, b, SubInt, SubFloat, "subtract"))
        return result;
    if (ObjectPtr result = ListRecurse(a, b, Subtract, "subtract"))
        return result;
    ThrowFailed("Subtract", a, b);
}

ObjectPtr Multiply(const ObjectPtr& a, const ObjectPtr& b)
{
    const List* left = As<List>(a);
    const List* right = As<List>(b);
    if (left && right)
        return ListRecurse(a, b, Multiply, "multiply");
    if (left)
        return PerElement(*left, b, Multiply);
    if (right)
        return PerElement(*right, a, Multiply);
    if (ObjectPtr result = NumFun(a, b, MulInt, MulFloat, "multiply"))
        return result;
    ThrowFailed("Multiply", a, b);
}

ObjectPtr Divide(const ObjectPtr& a, const ObjectPtr& b)
{
    const List* left = As<List>(a);
    if (left && As<List>(b))
        return ListRecurse(a, b, Divide, "divide");
    if (left)
        return PerElement(*left, b, Divide);
    if (ObjectPtr result = NumFun(a, b, DivInt, DivFloat, "divide"))
        return result;
    ThrowFailed("Divide", a, b);
}

void AddIntrinsics(Parser& parser)
{
    const ClosurePtr math = QUIB_NEW Closure;
    parser.GetRootClosure()->AddVariable2(IntrinsicsName, math);
    const IdentifierPtr mathName = QUIB_NEW Identifier(ExpressionPtr(), IntrinsicsName);

    AddBinFun(parser, math, mathName, "add", "+", Add);
    AddBinFun(parser, math, mathName, "subtract", "-", Subtract);
    AddBinFun(parser, math, mathName, "multiply", "*", Multiply);
    AddBinFun(parser, math, mathName, "divide", "/", Divide);
    AddNegeator(parser, math, mathName);
    AddUnary(math, "sin", std::sin);
    AddUnary(math, "cos", std::cos);
    AddUnary(math, "tan", std::tan);
    AddUnary(math, "asin", std::asin);
    AddUnary(math, "acos", std::acos);
    AddUnary(math, "atan", std::atan);
    // Deliberate: the value is dropped, so that math.pi is void.
    math->AddVoidCmd("pi", GetPi);
}
}
