// Callbacks bound to an owner, and the sets that a subject keeps of them. Nobody unregisters: a
// callback whose owner is gone stays in its set, does nothing, and leaves at the next sweep.
#pragma once

#include "util/ClassTracker.h"
#include "util/SharedPtr.h"

#include <boost/function.hpp>

#include <exception>
#include <list>
#include <memory>
#include <vector>

namespace util
{
class Callback : public Pointee
{
public:
    Callback(boost::function<void()> function, Pointee* owner);
    ~Callback() override;

    /// Calls the function while the owner lives, and keeps the owner alive meanwhile.
    /// @return false, without a call, when the owner is gone
    bool operator()() const;

    bool HasOwner() const { return !m_owner.IsNull(); }

private:
    boost::function<void()> m_function;
    WeakPtr<Pointee> m_owner;
};
using CallbackPtr = SharedPtr<Callback>;

template<typename A>
class CallbackArg : public Pointee
{
public:
    CallbackArg(boost::function<void(A)> function, Pointee* owner)
        : m_function(std::move(function))
        , m_owner(owner)
    {
    }

    bool operator()(const A& argument) const
    {
        LockPtr<Pointee> owner(m_owner);
        if (!owner)
            return false;
        m_function(argument);
        return true;
    }

    bool HasOwner() const { return !m_owner.IsNull(); }

private:
    boost::function<void(A)> m_function;
    WeakPtr<Pointee> m_owner;
};

/// The member of the object, bound to the object's life.
template<typename C, typename T>
CallbackPtr MakeCallback(void (C::*member)(), T* object)
{
    return QUIB_NEW Callback([member, object] { (object->*member)(); }, object);
}
/// The same with one argument, stored by value.
template<typename C, typename P, typename T, typename A>
CallbackPtr MakeCallback(void (C::*member)(P), T* object, A argument)
{
    return QUIB_NEW Callback([member, object, argument] { (object->*member)(argument); }, object);
}
template<typename C, typename T>
SharedPtr<CallbackArg<float>> MakeCallback(void (C::*member)(float), T* object)
{
    return QUIB_NEW CallbackArg<float>([member, object](float a) { (object->*member)(a); }, object);
}

namespace internal
{
/// Removes those whose owners are gone. They are released only after the walk, as their end may change
/// the list or be that of its owner; what was thrown meanwhile travels on when this is done.
template<typename Entry, typename R>
void FlushDead(const std::list<Entry>& callbacks, R remove)
{
    std::exception_ptr failure;
    {
        std::list<Entry> dead;
        try
        {
            for (const Entry& callback : callbacks)
                if (!callback->HasOwner())
                    dead.push_back(callback);
            for (const Entry& callback : dead)
                remove(callback);
        }
        catch (...)
        {
            failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}
}

class AbstractCallbackSet : public ClassTracker<AbstractCallbackSet>
{
public:
    ~AbstractCallbackSet() noexcept(false) override;

    /// Drops the callbacks whose owners are gone.
    virtual void Flush() const = 0;

    /// Flush on every set in existence.
    static void FlushCallbackSets();
};

class CallbackSet : public AbstractCallbackSet
{
public:
    /// Null is ignored.
    void Add(CallbackPtr callback);
    void Remove(CallbackPtr callback) const;
    /// In order of addition. A std::exception from one is logged and skips the rest of this pass.
    void CallAll() const;
    void Flush() const override;
    size_t size() const { return m_callbacks ? m_callbacks->size() : 0; }

private:
    // Made at the first Add: most attributes of an entity never have a listener.
    mutable std::unique_ptr<std::list<CallbackPtr>> m_callbacks;
};

template<typename A>
class CallbackArgSet : public AbstractCallbackSet
{
public:
    using Entry = SharedPtr<CallbackArg<A>>;

    void Add(Entry callback)
    {
        if (callback)
            m_callbacks.push_back(callback);
    }
    void Remove(Entry callback) const
    {
        for (auto it = m_callbacks.begin(); it != m_callbacks.end(); ++it)
            if (*it == callback)
            {
                m_callbacks.erase(it);
                return;
            }
    }
    /// Deliberate: unlike CallbackSet::CallAll there is no guard, an exception goes through at once.
    void CallAll(const A& argument) const
    {
        // A copy, as a callback may change the list; in memory that is kept from call to call. A call
        // from within one finds that taken, and makes its own.
        std::vector<Entry> copy;
        copy.swap(m_copy);
        copy.assign(m_callbacks.begin(), m_callbacks.end());
        for (const Entry& callback : copy)
            (*callback)(argument);
        copy.clear();
        copy.swap(m_copy);
    }
    void Flush() const override
    {
        internal::FlushDead(m_callbacks, [this](const Entry& callback) { Remove(callback); });
    }
    size_t size() const { return m_callbacks.size(); }

private:
    mutable std::list<Entry> m_callbacks;
    mutable std::vector<Entry> m_copy; // empty but during CallAll
};

// No class derives from it; the frame stage is kept and runs empty.
class InterpolatorBase : public ClassTracker<InterpolatorBase>
{
public:
    virtual void Update() = 0;

    static void UpdateAll();
};
}
