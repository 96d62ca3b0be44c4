#include "script/ClassObject.h"

#include "script/Expressions.h"

namespace script
{
namespace
{
// No chain of owners in use is as long; only objects stored in one another could make such.
const int MaxOwnerSteps = 100;

// What the values in the tree being made take, roughly, in bytes. A value that a thousand variables share
// stands in the tree a thousand times.
const size_t MaxTreeSize = size_t(1) << 29;
const size_t ElementSize = 32;
size_t s_treeSize = 0;
int s_treeDepth = 0;

void CountInTree(const ObjectPtr& value)
{
    size_t size = 0;
    if (const auto* string = As<Value<util::String>>(value))
        size = string->GetValue().size();
    else if (const List* list = As<List>(value))
        size = ElementSize * list->GetDeepSize() + list->GetDeepBytes();
    if (s_treeDepth == 0)
        return;
    if (s_treeSize + size > MaxTreeSize)
        QUIB_THROW(ScriptException("String too long"));
    s_treeSize += size;
}

// Marks an object as being printed for as long as it lives.
class PrintMark
{
public:
    explicit PrintMark(bool& flag)
        : m_flag(flag)
    {
        m_flag = true;
        if (s_treeDepth++ == 0)
            s_treeSize = 0;
    }
    ~PrintMark()
    {
        m_flag = false;
        --s_treeDepth;
    }
    PrintMark(const PrintMark&) = delete;
    PrintMark& operator=(const PrintMark&) = delete;

private:
    bool& m_flag;
};
}

Variable::Variable(util::String name, ObjectPtr object, bool constant)
    : m_name(std::move(name))
    , m_object(std::move(object))
    , m_constant(constant)
{
    if (m_object)
        m_owner = m_object->GetOwner();
}

Variable::~Variable() = default;

void Variable::SetObject(ObjectPtr object)
{
    // The end of the old object may run anything, so that it comes last.
    const ObjectPtr old = std::move(m_object);
    m_object = std::move(object);
    if (old && old->GetOwner() == m_owner)
        old->LoseOwner();
    if (m_object)
        m_object->SetOwner(m_owner);
}

void Variable::SetOwner(const util::WeakPtr<ClassObject>& owner)
{
    m_owner = owner;
    if (m_object)
        m_object->SetOwner(owner);
}

ExpressionPtr Variable::ToExpression() const
{
    const util::LockPtr<ClassObject> owner(m_owner);
    return ToExpression(owner ? owner->AsIdentifier() : IdentifierPtr());
}

ExpressionPtr Variable::ToExpression(const IdentifierPtr& owner) const
{
    if (!m_object)
        return ExpressionPtr();
    if (m_object->GetKind() == ObjectKind::Class)
        return m_object->ToExpression();
    // Statistics and commands are no settings.
    if (m_constant)
        return ExpressionPtr();
    CountInTree(m_object);
    const ExpressionPtr value = m_object->ToExpression();
    if (!value)
        return ExpressionPtr();
    return QUIB_NEW Assignment(QUIB_NEW Identifier(owner, m_name), value);
}

bool ClassObject::NameLess::operator()(const VariablePtr& a, const VariablePtr& b) const
{
    return a->GetName() < b->GetName();
}

bool ClassObject::NameLess::operator()(const VariablePtr& a, const util::String& b) const
{
    return a->GetName() < b;
}

bool ClassObject::NameLess::operator()(const util::String& a, const VariablePtr& b) const
{
    return a < b->GetName();
}

ClassObject::ClassObject()
    : Object(ObjectKind::Class)
{
}

ClassObject::~ClassObject() = default;

ExpressionPtr ClassObject::ToExpression() const
{
    // Two objects can hold each other.
    if (m_isPrinting)
        return ExpressionPtr();
    const PrintMark mark(m_isPrinting);

    CodeBlockPtr block = QUIB_NEW CodeBlock;
    const IdentifierPtr self = AsIdentifier();
    for (const VariablePtr& variable : GetVariables())
    {
        try
        {
            block->Add(variable->ToExpression(self));
        }
        catch (std::exception& e)
        {
            // One value that is too long to print costs the others nothing.
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning,
                "Failed to print " + util::Shorten(variable->GetName()) + ": " + e.what());
        }
    }
    return block;
}

util::String ClassObject::ToText() const
{
    return "ClassObject";
}

void ClassObject::SetOwner(const util::WeakPtr<ClassObject>& owner)
{
    for (const ClassObject* o = owner.GetUnlocked(); o; o = o->GetOwner().GetUnlocked())
        if (o == this)
            return;
    Object::SetOwner(owner);
    if (m_home.IsNull())
        m_home = owner;
}

void ClassObject::LoseOwner()
{
    Object::LoseOwner();
    if (GetHome())
        SetOwner(m_home);
}

bool ClassObject::Holds(const ClassObject* object) const
{
    for (const VariablePtr& variable : m_variables)
        if (variable->GetObject().get() == object)
            return true;
    return false;
}

ClassObject* ClassObject::GetHome() const
{
    ClassObject* home = m_home.GetUnlocked();
    return home && home->Holds(this) ? home : nullptr;
}

bool ClassObject::IsNamed() const
{
    const ClassObject* o = this;
    for (int steps = 0; steps < MaxOwnerSteps; ++steps)
    {
        const ClassObject* owner = o->GetOwner().GetUnlocked();
        if (!owner)
            return true;
        if (!owner->Holds(o))
            return false;
        o = owner;
    }
    return false;
}

Variable* ClassObject::FindVariable(const util::String& name) const
{
    const auto it = m_variables.find(name);
    return it == m_variables.end() ? nullptr : it->get();
}

VariablePtr ClassObject::GetVariable(const util::String& name) const
{
    return VariablePtr(FindVariable(name));
}

ObjectPtr ClassObject::GetObject(const util::String& name) const
{
    const Variable* variable = FindVariable(name);
    return variable ? variable->GetObject() : ObjectPtr();
}

VariablePtr ClassObject::LookupVariable(const util::String& name) const
{
    for (const ClassObject* o = this; o; o = o->GetOwner().GetUnlocked())
        if (Variable* variable = o->FindVariable(name))
            return VariablePtr(variable);
    QUIB_THROW(ScriptException(util::Shorten(name) + " not found in scope"));
}

ObjectPtr ClassObject::LookupObject(const util::String& name) const
{
    return LookupVariable(name)->GetObject();
}

void ClassObject::AddVariable(VariablePtr var)
{
    const bool isNew = m_variables.insert(var).second;
    if (!isNew)
        CODE_ASSERT(!HasVariable(var->GetName()));
    var->SetOwner(util::WeakPtr<ClassObject>(this));
}

void ClassObject::AddVariable2(const util::String& name, ObjectPtr object)
{
    AddVariable(QUIB_NEW Variable(name, std::move(object), false));
}

void ClassObject::AddConstant(const util::String& name, ObjectPtr object)
{
    AddVariable(QUIB_NEW Variable(name, std::move(object), true));
}

void ClassObject::RemoveVariable(const util::String& name)
{
    const auto it = m_variables.find(name);
    if (it == m_variables.end())
        return;
    const VariablePtr variable = *it;
    m_variables.erase(it);
    if (variable->GetOwner().GetUnlocked() != this)
        return;
    variable->SetOwner(util::WeakPtr<ClassObject>());
    if (variable->GetObject())
        variable->GetObject()->LoseOwner();
}

std::vector<VariablePtr> ClassObject::GetVariables() const
{
    return std::vector<VariablePtr>(m_variables.begin(), m_variables.end());
}

VariablePtr ClassObject::GetVariableByObject(const ObjectPtr& object) const
{
    for (const VariablePtr& variable : m_variables)
        if (variable->GetObject() == object)
            return variable;
    return VariablePtr();
}

IdentifierPtr ClassObject::AsIdentifier() const
{
    return AsIdentifierAt(0);
}

IdentifierPtr ClassObject::AsIdentifierAt(int depth) const
{
    const ClassObject* owner = GetOwner().GetUnlocked();
    if (!owner || !owner->IsNamed())
        if (const ClassObject* home = GetHome())
            owner = home;
    if (!owner || depth >= MaxOwnerSteps)
        return IdentifierPtr();
    for (const VariablePtr& variable : owner->m_variables)
        if (variable->GetObject().get() == this)
            return QUIB_NEW Identifier(owner->AsIdentifierAt(depth + 1), variable->GetName());
    return IdentifierPtr();
}
}
