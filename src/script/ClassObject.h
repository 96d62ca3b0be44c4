// Named variables, and the objects that hold them: closures, scopes, and everything reflected.
#pragma once

#include "script/Objects.h"

#include <set>

namespace script
{
class Identifier;
class Variable;

using IdentifierPtr = util::SharedPtr<Identifier>;
using VariablePtr = util::SharedPtr<Variable>;

class Variable : public util::Pointee, public util::InSmallBlocks
{
public:
    /// The owner starts as the object's owner.
    Variable(util::String name, ObjectPtr object, bool constant);
    ~Variable() override;

    virtual void SetObject(ObjectPtr object);

    const util::String& GetName() const { return m_name; }
    const util::String& GetLongName() const { return m_name; }
    const ObjectPtr& GetObject() const { return m_object; }
    const util::WeakPtr<ClassObject>& GetOwner() const { return m_owner; }
    /// Passes the owner on to the object.
    void SetOwner(const util::WeakPtr<ClassObject>& owner);
    /// Scripts cannot assign to it.
    bool IsConstant() const { return m_constant; }

    /// The assignment that would set the variable again, with the path from the root as its target;
    /// for a class object the block of all its variables. Null when there is nothing to save.
    ExpressionPtr ToExpression() const;

private:
    friend class ClassObject;
    ExpressionPtr ToExpression(const IdentifierPtr& owner) const;

    util::WeakPtr<ClassObject> m_owner;
    util::String m_name;
    ObjectPtr m_object;
    bool m_constant;
};

class ClassObject : public Object
{
public:
    ClassObject();
    ~ClassObject() override;

    ExpressionPtr ToExpression() const override;
    util::String ToText() const override;
    /// Does nothing when the owner is this object or lies below it: no ring of owners comes about. The
    /// first owner becomes the home.
    void SetOwner(const util::WeakPtr<ClassObject>& owner) override;
    void LoseOwner() override;
    /// Where the object belongs, whatever variables take it for a while. It is the owner again when they
    /// let go, and names the object when the owner has no name itself, as the call of a function has.
    void SetHome(const util::WeakPtr<ClassObject>& home) { m_home = home; }
    /// Null when there is none any more, or when it no longer holds the object.
    ClassObject* GetHome() const;

    bool HasVariable(const util::String& name) const { return FindVariable(name) != nullptr; }
    /// Null when missing.
    VariablePtr GetVariable(const util::String& name) const;
    /// Null when missing.
    ObjectPtr GetObject(const util::String& name) const;
    /// Here, or else in the owner, and so on outward.
    /// @throws ScriptException  name not found in scope
    VariablePtr LookupVariable(const util::String& name) const;
    ObjectPtr LookupObject(const util::String& name) const;
    /// @throws BadCoderException  when there is a variable of that name
    void AddVariable(VariablePtr var);
    void AddVariable2(const util::String& name, ObjectPtr object);
    /// One that scripts cannot assign to, and that is not saved.
    void AddConstant(const util::String& name, ObjectPtr object);
    /// A missing name is ignored.
    void RemoveVariable(const util::String& name);
    /// In name order.
    std::vector<VariablePtr> GetVariables() const;
    bool HasVariables() const { return !m_variables.empty(); }
    /// The first in name order that holds this very object; null if none does.
    VariablePtr GetVariableByObject(const ObjectPtr& object) const;
    /// The path of names from the root; null for the root itself, and for what no name leads to.
    IdentifierPtr AsIdentifier() const;

    /// GetVariable without the handle.
    Variable* FindVariable(const util::String& name) const;

private:
    struct NameLess
    {
        using is_transparent = void;
        bool operator()(const VariablePtr& a, const VariablePtr& b) const;
        bool operator()(const VariablePtr& a, const util::String& b) const;
        bool operator()(const util::String& a, const VariablePtr& b) const;
    };

    IdentifierPtr AsIdentifierAt(int depth) const;
    bool Holds(const ClassObject* object) const;
    bool IsNamed() const;

    util::WeakPtr<ClassObject> m_home;
    std::set<VariablePtr, NameLess> m_variables;
    mutable bool m_isPrinting = false;
};
}
