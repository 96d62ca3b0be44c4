// Settings: typed variables that native code reads as plain members and scripts read and assign.
//
// An attribute holds any script object. When that is a function of no arguments, a formula, it is run
// again in every frame and its result becomes the value; a write from native code replaces it.
#pragma once

#include "script/Reflected.h"
#include "util/Callback.h"

#include <memory>

namespace script
{
class AbstractAttrib : public Variable, public util::ClassTracker<AbstractAttrib>
{
public:
    AbstractAttrib(util::String name, ObjectPtr object, bool constant);
    ~AbstractAttrib() override;

    /// Binds the attribute to the object and brings the value up to date.
    void SetObject(ObjectPtr object) override;

    /// The value equals the default, whatever the attribute is bound to.
    virtual bool HasDefaultValue() const = 0;
    /// Brings the value up to date with the object. A failure is logged once and replaces the object
    /// by the value as it was.
    virtual void CalcValue() = 0;

    /// CalcValue on every attribute that exists at the start, in order of creation. One that is
    /// destroyed meanwhile is left out.
    static void CalcAll();

private:
    unsigned m_index; // into the list of all attributes
};

template<typename T>
class TAttrib : public AbstractAttrib
{
public:
    TAttrib(util::String name, const T& defaultValue);
    ~TAttrib() override;

    /// The value where it is stored.
    virtual T GetImpl() const = 0;
    /// Stores the value and calls the change callbacks, unless it is the one that is stored. The binding
    /// stays as it is.
    virtual void SetImpl(const T& value) = 0;

    T Get() const { return GetImpl(); }
    /// The native write: the last writer wins, so that a formula goes.
    void Set(const T& value);
    void AddChangeCallback(util::CallbackPtr callback);
    /// Get, as a function that keeps the attribute alive.
    boost::function<T()> GetterFunction() const;

    bool HasDefaultValue() const override;
    /// For a default that depends on something else. The value stays.
    void SetDefault(const T& value) { m_default = value; }
    void CalcValue() override;

protected:
    void CallChangeCallbacks() const
    {
        if (m_callbacks)
            m_callbacks->CallAll();
    }

private:
    /// Null where Get makes the value.
    virtual const T* GetStored() const { return nullptr; }
    /// Asked before a text is copied, in every frame. False for all other types.
    bool IsStoredText(const ObjectPtr& object) const;
    void CalcFormula();
    void Unbind(std::exception& e, const char* location);

    ObjectPtr m_lastCalculated;                     // keeps alive what CalcValue produced
    std::unique_ptr<util::CallbackSet> m_callbacks; // made at the first AddChangeCallback
    T m_default;
    bool m_isUnbinding = false;
};

/// Stores the value itself.
template<typename T>
class Attrib final : public TAttrib<T>
{
public:
    Attrib(util::String name, const T& defaultValue);

    T GetImpl() const override { return m_value; }
    void SetImpl(const T& value) override;

private:
    const T* GetStored() const override { return &m_value; }

    T m_value;
};

/// Stores nothing: a getter and a setter reach the value.
template<typename T>
class AttribGetSet final : public TAttrib<T>
{
public:
    using Getter = boost::function<T()>;
    using Setter = boost::function<void(const T&)>;

    AttribGetSet(util::String name, const T& defaultValue, Getter getter, Setter setter);

    T GetImpl() const override { return m_getter(); }
    void SetImpl(const T& value) override;

private:
    Getter m_getter;
    Setter m_setter;
};

/// Watches a T that native code writes directly. An outside write wins over any binding at the next
/// CalcValue.
template<typename T>
class AttribRemotePoker final : public TAttrib<T>
{
public:
    /// @param remote  must outlive the attribute; what it holds now is the default
    AttribRemotePoker(util::String name, T* remote);

    T GetImpl() const override { return *m_remote; }
    void SetImpl(const T& value) override;
    void CalcValue() override;

private:
    T* m_remote;
    T m_lastSeen;
};

// What a class declares as a member. Not the attribute but a handle to it, which reads and writes
// like a T.
template<typename T>
class AttribWrapper
{
public:
    AttribWrapper(Reflected* owner, util::String name, const T& defaultValue)
        : m_attrib(QUIB_NEW Attrib<T>(std::move(name), defaultValue))
    {
        owner->AddVariable(m_attrib);
    }
    /// The value lives with the owner, behind two of its members: T getter() const and
    /// void setter(const T&), or what converts to these.
    template<typename C, typename G, typename S>
    AttribWrapper(C* owner, util::String name, const T& defaultValue, G getter, S setter)
        : m_attrib(QUIB_NEW AttribGetSet<T>(
              std::move(name), defaultValue, [owner, getter]() -> T { return (owner->*getter)(); },
              [owner, setter](const T& value) { (owner->*setter)(value); }))
    {
        owner->AddVariable(m_attrib);
    }
    AttribWrapper(const AttribWrapper&) = delete;

    operator T() const { return m_attrib->GetImpl(); }
    /// The value, whatever it is bound to.
    T Get() const { return m_attrib->GetImpl(); }
    AttribWrapper& operator=(const T& value)
    {
        m_attrib->Set(value);
        return *this;
    }
    /// Takes the value only; the two attributes stay distinct.
    AttribWrapper& operator=(const AttribWrapper& o) { return *this = o.Get(); }

    /// The attribute itself, for change callbacks and controls.
    const util::SharedPtr<TAttrib<T>>& GetAttrib() const { return m_attrib; }
    TAttrib<T>* operator->() const { return m_attrib.operator->(); }

private:
    util::SharedPtr<TAttrib<T>> m_attrib;
};

extern template class TAttrib<bool>;
extern template class TAttrib<int>;
extern template class TAttrib<unsigned long>;
extern template class TAttrib<float>;
extern template class TAttrib<util::String>;
extern template class TAttrib<math::Vec2>;
extern template class TAttrib<math::Vec3>;
extern template class TAttrib<math::Vec4>;
extern template class TAttrib<math::Vec2i>;
extern template class Attrib<bool>;
extern template class Attrib<int>;
extern template class Attrib<unsigned long>;
extern template class Attrib<float>;
extern template class Attrib<util::String>;
extern template class Attrib<math::Vec2>;
extern template class Attrib<math::Vec3>;
extern template class Attrib<math::Vec4>;
extern template class AttribGetSet<bool>;
extern template class AttribGetSet<float>;
extern template class AttribGetSet<math::Vec2>;
extern template class AttribRemotePoker<bool>;
extern template class AttribRemotePoker<int>;
extern template class AttribRemotePoker<math::Vec2i>;
}
