#include "script/Attributes.h"

#include "script/Recursion.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <type_traits>

namespace script
{
namespace
{
// All attributes in order of creation. It is walked in every frame, so that it is kept flat; one that
// goes leaves a hole, by which a walk in progress sees that it is gone.
struct AttribList
{
    std::vector<AbstractAttrib*> attribs;
    size_t holes = 0;
    int walks = 0;
};

AttribList& AllAttribs()
{
    static AttribList* s_all = new AttribList;
    return *s_all;
}

// What is left for the formulas of the pass in progress; null outside all passes.
int64_t* s_frameLeft = nullptr;

class Walk
{
public:
    Walk()
        : m_outerLeft(s_frameLeft)
    {
        ++AllAttribs().walks;
        s_frameLeft = &m_left;
    }
    ~Walk()
    {
        --AllAttribs().walks;
        s_frameLeft = m_outerLeft;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

private:
    int64_t m_left = MaxFrameCost;
    int64_t* m_outerLeft;
};

class FormulaAllowance
{
public:
    FormulaAllowance()
        : m_allowance(s_frameLeft ? std::min(MaxFormulaCost, *s_frameLeft) : MaxFormulaCost)
    {
    }
    ~FormulaAllowance()
    {
        if (s_frameLeft)
            *s_frameLeft -= m_allowance.GetSpent();
    }
    FormulaAllowance(const FormulaAllowance&) = delete;
    FormulaAllowance& operator=(const FormulaAllowance&) = delete;

private:
    Allowance m_allowance;
};

// Taken off whatever the setter or a callback throws.
class UnbindingMark
{
public:
    explicit UnbindingMark(bool& flag)
        : m_flag(flag)
    {
        m_flag = true;
    }
    ~UnbindingMark() { m_flag = false; }
    UnbindingMark(const UnbindingMark&) = delete;
    UnbindingMark& operator=(const UnbindingMark&) = delete;

private:
    bool& m_flag;
};

// For the copy that is made of a string.
void ChargeValue(const ObjectPtr& object)
{
    if (const auto* string = As<Value<util::String>>(object))
        ChargeString(string->GetValue().size());
}

ObjectPtr RunFormula(const ObjectPtr& formula)
{
    try
    {
        const FormulaAllowance allowance;
        ObjectPtr result = ExpandObject(formula);
        ChargeValue(result);
        return result;
    }
    catch (const CallUnwinder& unwinder)
    {
        EndUnwinding(unwinder);
    }
}
}

AbstractAttrib::AbstractAttrib(util::String name, ObjectPtr object, bool constant)
    : Variable(std::move(name), std::move(object), constant)
{
    AttribList& all = AllAttribs();
    // Closing the holes when they are most of the list costs each attribute a step or two in its life.
    if (all.walks == 0 && all.holes > all.attribs.size() / 2)
    {
        unsigned n = 0;
        for (AbstractAttrib* attrib : all.attribs)
            if (attrib)
            {
                attrib->m_index = n;
                all.attribs[n++] = attrib;
            }
        all.attribs.resize(n);
        all.holes = 0;
    }
    m_index = static_cast<unsigned>(all.attribs.size());
    all.attribs.push_back(this);
}

AbstractAttrib::~AbstractAttrib()
{
    AttribList& all = AllAttribs();
    all.attribs[m_index] = nullptr;
    ++all.holes;
}

void AbstractAttrib::SetObject(ObjectPtr object)
{
    ChargeValue(object);
    Variable::SetObject(std::move(object));
    CalcValue();
}

void AbstractAttrib::CalcAll()
{
    QUIB_PROFILE("AbstractAttrib::CalcAll");
    const Walk walk;
    const AttribList& all = AllAttribs();

    QUIB_PROFILE("AbstractAttrib::CalcAll-Loop");
    // Formulas may make attributes, which wait for the next time, and destroy some.
    for (size_t i = 0, n = all.attribs.size(); i < n; ++i)
        if (AbstractAttrib* attrib = all.attribs[i])
        {
            QUIB_PROFILE("AbstractAttrib::CalcValue");
            attrib->CalcValue();
        }
}

template<typename T>
TAttrib<T>::TAttrib(util::String name, const T& defaultValue)
    : AbstractAttrib(std::move(name), ValueToObject(defaultValue), false)
    , m_default(defaultValue)
{
}

template<typename T>
TAttrib<T>::~TAttrib() = default;

template<typename T>
void TAttrib<T>::Set(const T& value)
{
    SetImpl(value);
    SetObject(ValueToObject(GetImpl()));
}

template<typename T>
void TAttrib<T>::AddChangeCallback(util::CallbackPtr callback)
{
    if (!m_callbacks)
        m_callbacks = std::make_unique<util::CallbackSet>();
    m_callbacks->Add(std::move(callback));
}

template<typename T>
boost::function<T()> TAttrib<T>::GetterFunction() const
{
    const util::SharedPtr<TAttrib> self(const_cast<TAttrib*>(this));
    return [self] { return self->Get(); };
}

template<typename T>
bool TAttrib<T>::HasDefaultValue() const
{
    return GetImpl() == m_default;
}

template<typename T>
void TAttrib<T>::CalcValue()
{
    const ObjectPtr& object = GetObject();
    if (object && object->IsFunction() && object->GetKind() != ObjectKind::List)
    {
        CalcFormula();
        return;
    }
    try
    {
        if (m_lastCalculated != object)
            m_lastCalculated = object;
        if (!IsStoredText(object))
            SetImpl(ObjectToValue<T>(object));
    }
    catch (std::exception& e)
    {
        Unbind(e, QUIB_LOCATION);
    }
}

template<typename T>
bool TAttrib<T>::IsStoredText(const ObjectPtr& object) const
{
    if constexpr (std::is_same_v<T, util::String>)
    {
        const auto* text = As<Value<util::String>>(object);
        const util::String* stored = GetStored();
        return text && stored && text->GetValue() == *stored;
    }
    return false;
}

template<typename T>
void TAttrib<T>::CalcFormula()
{
    // A formula may do anything, such as end the object whose setting it is.
    const util::LockPtr<TAttrib> keep{util::WeakPtr<TAttrib>(this)};
    const bool hadOwner = !GetOwner().IsNull();
    try
    {
        ObjectPtr result = RunFormula(GetObject());
        m_lastCalculated = result;
        if (hadOwner && GetOwner().IsNull())
            return;
        SetImpl(ObjectToValue<T>(result));
    }
    catch (std::exception& e)
    {
        Unbind(e, QUIB_LOCATION);
    }
}

template<typename T>
void TAttrib<T>::Unbind(std::exception& e, const char* location)
{
    CatchException(e, location);
    Log(logging::LogWarning, util::Shorten(GetLongName()) + " was bound to bad type");
    // A setter that refuses even the value that its getter gives would bring us back here for ever.
    if (m_isUnbinding)
        return;
    const UnbindingMark mark(m_isUnbinding);
    try
    {
        Set(Get());
    }
    catch (std::exception& again)
    {
        CatchException(again, QUIB_LOCATION);
    }
}

template<typename T>
Attrib<T>::Attrib(util::String name, const T& defaultValue)
    : TAttrib<T>(std::move(name), defaultValue)
    , m_value(defaultValue)
{
}

template<typename T>
void Attrib<T>::SetImpl(const T& value)
{
    if (value == m_value)
        return;
    m_value = value;
    this->CallChangeCallbacks();
}

template<typename T>
AttribGetSet<T>::AttribGetSet(util::String name, const T& defaultValue, Getter getter,
                              Setter setter)
    : TAttrib<T>(std::move(name), defaultValue)
    , m_getter(std::move(getter))
    , m_setter(std::move(setter))
{
}

template<typename T>
void AttribGetSet<T>::SetImpl(const T& value)
{
    if (value == GetImpl())
        return;
    m_setter(value);
    this->CallChangeCallbacks();
}

template<typename T>
AttribRemotePoker<T>::AttribRemotePoker(util::String name, T* remote)
    : TAttrib<T>(std::move(name), *remote)
    , m_remote(remote)
    , m_lastSeen(*remote)
{
}

template<typename T>
void AttribRemotePoker<T>::SetImpl(const T& value)
{
    if (value == GetImpl())
        return;
    *m_remote = value;
    m_lastSeen = value;
    this->CallChangeCallbacks();
}

template<typename T>
void AttribRemotePoker<T>::CalcValue()
{
    if (!(*m_remote == m_lastSeen))
    {
        m_lastSeen = *m_remote;
        this->Set(*m_remote);
        return;
    }
    TAttrib<T>::CalcValue();
}

template class TAttrib<bool>;
template class TAttrib<int>;
template class TAttrib<unsigned long>;
template class TAttrib<float>;
template class TAttrib<util::String>;
template class TAttrib<math::Vec2>;
template class TAttrib<math::Vec3>;
template class TAttrib<math::Vec4>;
template class TAttrib<math::Vec2i>;
template class Attrib<bool>;
template class Attrib<int>;
template class Attrib<unsigned long>;
template class Attrib<float>;
template class Attrib<util::String>;
template class Attrib<math::Vec2>;
template class Attrib<math::Vec3>;
template class Attrib<math::Vec4>;
template class AttribGetSet<bool>;
template class AttribGetSet<float>;
template class AttribGetSet<math::Vec2>;
template class AttribRemotePoker<bool>;
template class AttribRemotePoker<int>;
template class AttribRemotePoker<math::Vec2i>;
}
