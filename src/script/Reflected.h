// A named native object that scripts see: a node of the tree under the root closure. It declares its
// settings as attributes (script/Attributes.h) and its commands with AddCmd.
#pragma once

#include "script/ClassObject.h"
#include "script/ValueConversions.h"
#include "util/ClassTracker.h"

namespace script
{
class Reflected : public ClassObject, public util::ClassTracker<Reflected>
{
public:
    static const char* const RootName;

    explicit Reflected(util::String name);
    ~Reflected() override;

    /// The name.
    util::String ToText() const override;
    virtual util::String GetReflectedName() const { return m_name; }
    /// @throws BadCoderException  while an owner is attached
    void SetReflectedName(const util::String& name);

    // Commands are constant variables: scripts call them and cannot assign to them.

    void AddCmd(const util::String& name, boost::function<ObjectPtr()> function);
    /// The value of the command is a Void.
    void AddVoidCmd(const util::String& name, boost::function<void()> function);
    void AddCmd1(const util::String& name, boost::function<ObjectPtr(ObjectPtr)> function);
    void AddCmd2(const util::String& name,
                 boost::function<ObjectPtr(ObjectPtr, ObjectPtr)> function);
    void AddVoidCmd2(const util::String& name,
                     boost::function<void(ObjectPtr, ObjectPtr)> function);

    /// A member of this object, as a command without a value.
    template<typename C>
    void AddCmd(const util::String& name, void (C::*member)())
    {
        C* self = static_cast<C*>(this);
        AddVoidCmd(name, [self, member] { (self->*member)(); });
    }
    /// A getter, its result turned into an object.
    template<typename R>
    void AddCmd(const util::String& name, R (*getter)())
    {
        AddCmd(name, boost::function<ObjectPtr()>([getter] { return ValueToObject(getter()); }));
    }
    template<typename C, typename R>
    void AddCmd(const util::String& name, R (C::*getter)())
    {
        C* self = static_cast<C*>(this);
        AddCmd(name, boost::function<ObjectPtr()>([self, getter]
                                                  { return ValueToObject((self->*getter)()); }));
    }
    template<typename C, typename R>
    void AddCmd(const util::String& name, R (C::*getter)() const)
    {
        const C* self = static_cast<const C*>(this);
        AddCmd(name, boost::function<ObjectPtr()>([self, getter]
                                                  { return ValueToObject((self->*getter)()); }));
    }

    /// Takes the child from its earlier owner. When the name is taken here, the child is renamed: the
    /// second x becomes x_2.
    void AddReflectedChild(util::SharedPtr<Reflected> child);
    void RemoveReflectedChild(util::SharedPtr<Reflected> child);
    /// Becomes a child of the root closure, which makes it visible under its name everywhere.
    void AddToRoot();

    /// Publishes a statistic that scripts can read but not assign, and that is not saved.
    /// T: float, util::String.
    template<typename T>
    void Report(const util::String& name, const T& value);

private:
    util::String m_name;
};

using ReflectedPtr = util::SharedPtr<Reflected>;

extern template void Reflected::Report(const util::String&, const float&);
extern template void Reflected::Report(const util::String&, const util::String&);
}
