#include "script/Reflected.h"

#include "script/Parser.h"

namespace script
{
const char* const Reflected::RootName = "[ROOT]";

namespace
{
ObjectPtr VoidWrapper(const boost::function<void()>& function)
{
    function();
    return QUIB_NEW Void;
}
}

Reflected::Reflected(util::String name)
    : m_name(std::move(name))
{
}

Reflected::~Reflected() = default;

util::String Reflected::ToText() const
{
    return m_name;
}

void Reflected::SetReflectedName(const util::String& name)
{
    CODE_ASSERT(GetOwner().IsNull());
    m_name = name;
}

void Reflected::AddCmd(const util::String& name, boost::function<ObjectPtr()> function)
{
    AddConstant(name, QUIB_NEW IntrinsicCmd(std::move(function)));
}

void Reflected::AddVoidCmd(const util::String& name, boost::function<void()> function)
{
    AddConstant(name, QUIB_NEW IntrinsicCmd([function = std::move(function)]
                                            { return VoidWrapper(function); }));
}

void Reflected::AddCmd1(const util::String& name, boost::function<ObjectPtr(ObjectPtr)> function)
{
    AddConstant(name, QUIB_NEW IntrinsicCmd1(std::move(function)));
}

void Reflected::AddCmd2(const util::String& name,
                        boost::function<ObjectPtr(ObjectPtr, ObjectPtr)> function)
{
    AddConstant(name, QUIB_NEW IntrinsicCmd2(std::move(function)));
}

void Reflected::AddVoidCmd2(const util::String& name,
                            boost::function<void(ObjectPtr, ObjectPtr)> function)
{
    AddConstant(name, QUIB_NEW IntrinsicCmd2(
                          [function = std::move(function)](ObjectPtr a, ObjectPtr b)
                          {
                              function(std::move(a), std::move(b));
                              return ObjectPtr(QUIB_NEW Void);
                          }));
}

void Reflected::AddReflectedChild(util::SharedPtr<Reflected> child)
{
    // Not where a script has put it meanwhile, but where it was a child.
    ClassObject* home = child->GetHome();
    if (ClassObject* owner = home ? home : child->GetOwner().GetUnlocked())
    {
        // By the object: a script may hold another one there under the child's name.
        const VariablePtr named = owner->GetVariable(child->GetReflectedName());
        const VariablePtr variable =
            named && named->GetObject() == child ? named : owner->GetVariableByObject(child);
        if (variable)
            owner->RemoveVariable(variable->GetName());
    }
    // Under another name it may still be there; it belongs here from now on.
    child->SetHome(this);
    child->SetOwner(util::WeakPtr<ClassObject>());

    const util::String base = child->GetReflectedName();
    util::String name = base;
    for (int n = 2; HasVariable(name); ++n)
        name = base + "_" + util::ToString(n);
    child->SetReflectedName(name);
    AddConstant(name, child);
}

void Reflected::RemoveReflectedChild(util::SharedPtr<Reflected> child)
{
    RemoveVariable(child->GetReflectedName());
}

void Reflected::AddToRoot()
{
    Parser::GetInstancePtr()->GetRootClosure()->AddReflectedChild(this);
}

template<typename T>
void Reflected::Report(const util::String& name, const T& value)
{
    // Constants are protected from scripts, not from us.
    const VariablePtr variable = GetVariable(name);
    if (!variable)
    {
        AddConstant(name, ValueToObject(value));
        return;
    }
    // Reports come with every step: a value that nobody else has got hold of is written over.
    using Stored = Value<std::conditional_t<std::is_same<T, float>::value, Float, T>>;
    if (variable->GetObject() && variable->GetObject()->GetHandle()->GetRefCount() == 1)
        if (Stored* old = As<Stored>(variable->GetObject()))
        {
            old->SetValue(value);
            return;
        }
    variable->SetObject(ValueToObject(value));
}

template void Reflected::Report(const util::String&, const float&);
template void Reflected::Report(const util::String&, const util::String&);
}
