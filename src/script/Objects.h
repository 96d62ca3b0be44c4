// The run-time values of the script language, and what can be called.
//
// Values are immutable and shared freely: one stored in two variables is the same object. Whatever
// holds an ObjectPtr keeps the value alive.
#pragma once

#include "script/Exceptions.h"
#include "util/SharedPtr.h"
#include "util/SmallBlocks.h"
#include "util/String.h"

#include <boost/function.hpp>

#include <vector>

namespace script
{
class Object;
class ClassObject;
class AbstractFunction;
class Function;
class List;
class Closure;
class Expression;
class FunctionDeclaration;

using Int = int;
using Float = double;

using ObjectPtr = util::SharedPtr<Object>;
using ObjectList = std::vector<ObjectPtr>;
using ClassObjectPtr = util::SharedPtr<ClassObject>;
using AbstractFunctionPtr = util::SharedPtr<AbstractFunction>;
using FunctionPtr = util::SharedPtr<Function>;
using ListPtr = util::SharedPtr<List>;
using ClosurePtr = util::SharedPtr<Closure>;
using ExpressionPtr = util::SharedPtr<Expression>;
using FunctionDeclarationPtr = util::SharedPtr<FunctionDeclaration>;

/// A longer string is refused with a ScriptException, whatever makes it.
const size_t MaxStringLength = size_t(64) << 20;
/// A longer list is refused with a ScriptException. Elements of elements count.
const size_t MaxListLength = size_t(16) << 20;
/// A list whose strings are longer in total is refused likewise.
const size_t MaxListBytes = size_t(1) << 30;
/// Lists deeper than this are cut short where they are printed.
const int MaxPrintDepth = 1000;

// Tells the classes apart without a cast: evaluation asks this of every value it meets.
enum class ObjectKind : unsigned char
{
    Other,
    Bool,
    Int,
    Float,
    String,
    Class,
    Intrinsic, // from here on an AbstractFunction
    Function,
    List
};

class Object : public util::Pointee, public util::InSmallBlocks
{
public:
    explicit Object(ObjectKind kind = ObjectKind::Other)
        : m_kind(kind)
    {
    }
    ~Object() override;

    /// The expression that would make the value again; null when there is none.
    virtual ExpressionPtr ToExpression() const = 0;
    /// @throws ScriptException  when the text would be longer than MaxStringLength
    virtual util::String ToText() const = 0;
    virtual void SetOwner(const util::WeakPtr<ClassObject>& owner) { m_owner = owner; }
    /// The variable that gave the owner holds the object no longer.
    virtual void LoseOwner() { m_owner = util::WeakPtr<ClassObject>(); }

    const util::WeakPtr<ClassObject>& GetOwner() const { return m_owner; }
    ObjectKind GetKind() const { return m_kind; }
    bool IsFunction() const { return m_kind >= ObjectKind::Intrinsic; }

private:
    util::WeakPtr<ClassObject> m_owner; // the class object of the latest variable that took it
    ObjectKind m_kind;
};

// T: bool, Int, Float, util::String.
template<typename T>
class Value final : public Object
{
public:
    explicit Value(T value);

    ExpressionPtr ToExpression() const override;
    util::String ToText() const override;
    const T& GetValue() const { return m_value; }
    /// Only for who knows that nobody else holds it.
    void SetValue(const T& value) { m_value = value; }

private:
    T m_value;
};
extern template class Value<bool>;
extern template class Value<Int>;
extern template class Value<Float>;
extern template class Value<util::String>;

// What stands where there is no value. Not saved.
class BadObject : public Object
{
public:
    ExpressionPtr ToExpression() const override;
};

class Void final : public BadObject
{
public:
    util::String ToText() const override;
};

/// The argument of a function while the function is parsed.
class Unbound final : public BadObject
{
public:
    util::String ToText() const override;
};

/// The value of a statement that failed.
class ErrorObject final : public BadObject
{
public:
    util::String ToText() const override;
};

class AbstractFunction : public Object
{
public:
    explicit AbstractFunction(ObjectKind kind)
        : Object(kind)
    {
    }

    virtual ObjectPtr Call(const ObjectList& args) = 0;
    virtual int GetArgCount() = 0;
};

// A native command. Not saved. A wrong number of arguments fails an assertion.
class AbstractIntrinsic : public AbstractFunction
{
public:
    AbstractIntrinsic()
        : AbstractFunction(ObjectKind::Intrinsic)
    {
    }
    ExpressionPtr ToExpression() const override;
    util::String ToText() const override;
};

class IntrinsicCmd final : public AbstractIntrinsic
{
public:
    explicit IntrinsicCmd(boost::function<ObjectPtr()> function);
    ObjectPtr Call(const ObjectList& args) override;
    int GetArgCount() override { return 0; }

private:
    boost::function<ObjectPtr()> m_function;
};

class IntrinsicCmd1 final : public AbstractIntrinsic
{
public:
    explicit IntrinsicCmd1(boost::function<ObjectPtr(ObjectPtr)> function);
    ObjectPtr Call(const ObjectList& args) override;
    int GetArgCount() override { return 1; }

private:
    boost::function<ObjectPtr(ObjectPtr)> m_function;
};

class IntrinsicCmd2 final : public AbstractIntrinsic
{
public:
    explicit IntrinsicCmd2(boost::function<ObjectPtr(ObjectPtr, ObjectPtr)> function);
    ObjectPtr Call(const ObjectList& args) override;
    int GetArgCount() override { return 2; }

private:
    boost::function<ObjectPtr(ObjectPtr, ObjectPtr)> m_function;
};

// A function written in the language, bound to the closure that it was written in.
class Function final : public AbstractFunction
{
public:
    Function(ClosurePtr closure, FunctionDeclarationPtr declaration);
    ~Function() override;

    ExpressionPtr ToExpression() const override;
    util::String ToText() const override;
    /// Runs the body in a new closure.
    /// @throws ScriptException  for a wrong number of arguments, and for recursion deeper than
    ///     MaxCallDepth (script/Recursion.h)
    ObjectPtr Call(const ObjectList& args) override;
    int GetArgCount() override;

    const std::vector<util::String>& GetArgNames() const;
    const ExpressionPtr& GetBody() const;
    /// The closure that the function was defined in.
    const ClosurePtr& GetClosure() const { return m_closure; }
    /// The closure of the latest call, with everything that the body assigned; null before the first.
    const ClosurePtr& GetCallClosure() const { return m_callClosure; }

private:
    ClosurePtr m_closure;
    FunctionDeclarationPtr m_declaration; // argument names and body
    ClosurePtr m_callClosure;
};

// An immutable sequence, and a function of one argument: called with an index it gives the element.
class List final : public AbstractFunction
{
public:
    /// @throws ScriptException  past MaxListLength and MaxListBytes
    explicit List(ObjectList elements);

    ExpressionPtr ToExpression() const override;
    util::String ToText() const override;
    ObjectPtr Call(const ObjectList& args) override;
    int GetArgCount() override { return 1; }

    const ObjectList& GetElements() const { return m_elements; }
    size_t size() const { return m_elements.size(); }
    /// The elements of this list and of all lists in it.
    size_t GetDeepSize() const { return m_deepSize; }
    /// The lengths of the strings in this list and in all lists in it.
    size_t GetDeepBytes() const { return m_deepBytes; }

private:
    ExpressionPtr ToExpressionAt(int depth, size_t& textLength) const;
    void AppendText(util::String& text, int depth) const;

    ObjectList m_elements;
    size_t m_deepSize;
    size_t m_deepBytes = 0;
};

namespace internal
{
template<typename T>
constexpr ObjectKind KindOf = ObjectKind::Other;
template<>
inline constexpr ObjectKind KindOf<Value<bool>> = ObjectKind::Bool;
template<>
inline constexpr ObjectKind KindOf<Value<Int>> = ObjectKind::Int;
template<>
inline constexpr ObjectKind KindOf<Value<Float>> = ObjectKind::Float;
template<>
inline constexpr ObjectKind KindOf<Value<util::String>> = ObjectKind::String;
template<>
inline constexpr ObjectKind KindOf<ClassObject> = ObjectKind::Class;
template<>
inline constexpr ObjectKind KindOf<Function> = ObjectKind::Function;
template<>
inline constexpr ObjectKind KindOf<List> = ObjectKind::List;
}

/// The object as what it is, without a cast at run time; null when it is something else, or null.
/// T: Value of any type, ClassObject, Function, List.
template<typename T>
T* As(const ObjectPtr& object)
{
    static_assert(internal::KindOf<T> != ObjectKind::Other, "not a class that has a kind");
    Object* o = object.get();
    return o && o->GetKind() == internal::KindOf<T> ? static_cast<T*>(o) : nullptr;
}

/// A function of no arguments is called; everything else, null included, stays what it is.
ObjectPtr ExpandObject(const ObjectPtr& object);

/// @throws ScriptException  with the message when the object is no T
template<typename T>
util::SharedPtr<T> ThrowCast(const ObjectPtr& object, const char* message)
{
    T* cast = dynamic_cast<T*>(object.get());
    if (!cast)
        QUIB_THROW(ScriptException(message));
    return util::SharedPtr<T>(cast);
}
}
