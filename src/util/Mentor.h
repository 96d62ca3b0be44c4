// Keeps a resource that dies with the GL context and can be built again at any time: a mentor owns it
// and the function that makes it, everybody else holds a proxy to the mentor. core::ResourceManager
// drives all mentors together.
#pragma once

#include "logging/Log.h"
#include "util/Callback.h"
#include "util/ClassTracker.h"
#include "util/Failures.h"
#include "util/SharedPtr.h"

#include <functional>
#include <typeinfo>

namespace util
{
class AbstractMentor : public Pointee, public ClassTracker<AbstractMentor>
{
public:
    /// Builds the resource, or takes the default's where that fails. Does nothing when it is there.
    virtual void Load() = 0;
    /// Lets go of the resource. Does nothing when there is none.
    virtual void Unload() = 0;
    /// Of the resource.
    virtual const std::type_info& GetType() const = 0;
};

template<typename T>
class Mentor final : public AbstractMentor
{
public:
    /// Makes a new resource. What it throws is logged; then, as when it gives null, it has failed.
    using Factory = std::function<T*()>;

    explicit Mentor(Factory factory)
        : m_factory(std::move(factory))
    {
    }

    void Load() override
    {
        if (!m_resource)
            Build();
    }

    void Unload() override
    {
        if (!m_resource)
            return;
        m_onDestroy.CallAll();
        m_resource = nullptr;
    }

    const std::type_info& GetType() const override { return typeid(T); }

    /// Builds the resource where it is not there. Null only when the default has failed too.
    const SharedPtr<T>& GetPtr()
    {
        Load();
        return m_resource;
    }

    /// After the resource has been built, each time. Not for the default's.
    void AddCreateCallback(const CallbackPtr& callback) { m_onCreate.Add(callback); }
    /// Before the resource goes, the default's too.
    void AddDestroyCallback(const CallbackPtr& callback) { m_onDestroy.Add(callback); }

    /// Whose resource stands in for one that could not be built. Set by whoever hands out the mentors.
    static inline SharedPtr<Mentor> s_default;

private:
    void Build()
    {
        try
        {
            m_resource = m_factory();
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogError, e.what());
        }
        catch (...)
        {
            CatchException(QUIB_LOCATION);
            Log(logging::LogError, std::string("Unknown error while loading ") + typeid(T).name());
        }
        if (m_resource)
            m_onCreate.CallAll();
        else if (s_default && s_default.get() != this)
            m_resource = s_default->GetPtr();
    }

    Factory m_factory;
    SharedPtr<T> m_resource; // its own, or the default's
    CallbackSet m_onCreate;
    CallbackSet m_onDestroy;
};

// A handle to a resource that survives a new GL context. Its true type is that of a pointer to the
// resource: it tests false when there is no mentor or when the default stands in, though what it points
// at can then be used all the same.
template<typename T>
class MentorProxy
{
public:
    MentorProxy() = default;
    MentorProxy(const SharedPtr<Mentor<T>>& mentor)
        : m_mentor(mentor)
    {
    }
    /// On a new mentor.
    explicit MentorProxy(typename Mentor<T>::Factory factory)
        : m_mentor(QUIB_NEW Mentor<T>(std::move(factory)))
    {
    }

    /// Builds the resource where it is not there.
    /// @throws std::runtime_error  when there is no mentor, or when its resource and the default failed
    T* operator->() const
    {
        m_mentor.Check();
        const SharedPtr<T>& resource = m_mentor->GetPtr();
        resource.Check();
        return resource.get();
    }

    operator void*() const
    {
        if (!m_mentor)
            return nullptr;
        T* resource = m_mentor->GetPtr().get();
        const SharedPtr<Mentor<T>>& standIn = Mentor<T>::s_default;
        return standIn && resource == standIn->GetPtr().get() ? nullptr : resource;
    }

    const SharedPtr<Mentor<T>>& GetMentor() const { return m_mentor; }

private:
    SharedPtr<Mentor<T>> m_mentor;
};
}
