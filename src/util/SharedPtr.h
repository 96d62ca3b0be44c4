// The handles to counted objects: SharedPtr keeps an object alive, WeakPtr does not and turns null
// when it goes, LockPtr is the only way to read a WeakPtr. OnNewCall records where an object was
// made.
#pragma once

#include "logging/Log.h"
#include "util/Failures.h"
#include "util/Pointee.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace util
{
namespace internal
{
[[noreturn]] void ThrowNullDereference(const char* handleKind, const char* location);
}

template<typename T>
class SharedPtr
{
public:
    SharedPtr() = default;
    SharedPtr(std::nullptr_t) {}
    SharedPtr(T* p) { Reset(p); }
    SharedPtr(const SharedPtr& o) { Reset(o.m_ptr); }
    SharedPtr(SharedPtr&& o) noexcept
        : m_ptr(o.m_ptr)
    {
        o.m_ptr = nullptr;
    }
    template<typename D, typename = std::enable_if_t<std::is_convertible<D*, T*>::value>>
    SharedPtr(const SharedPtr<D>& o)
    {
        Reset(o.get());
    }

    ~SharedPtr()
    {
        if (m_ptr)
            Release();
    }

    SharedPtr& operator=(const SharedPtr& o)
    {
        // The copy keeps o's object alive when only our old object holds it.
        SharedPtr copy(o);
        Reset(copy.m_ptr);
        return *this;
    }
    SharedPtr& operator=(SharedPtr&& o)
    {
        T* taken = o.m_ptr;
        o.m_ptr = nullptr;
        T* old = m_ptr;
        m_ptr = taken;
        if (old)
            old->GetHandle()->DecreaseRefCount();
        return *this;
    }

    /// Does nothing when p is held already. Else the old object is released first, which may delete
    /// it, then the pointer is stored, then counted.
    void Reset(T* p)
    {
        if (p == m_ptr)
            return;
        if (m_ptr)
            m_ptr->GetHandle()->DecreaseRefCount();
        m_ptr = p;
        if (!p)
            return;
        try
        {
            p->GetHandle()->IncreaseRefCount();
        }
        catch (...)
        {
            m_ptr = nullptr; // not counted, so not ours: the object is at its end
            throw;
        }
    }

    T* get() const { return m_ptr; }
    T* operator->() const
    {
        Check();
        return m_ptr;
    }
    T& operator*() const
    {
        Check();
        return *m_ptr;
    }
    explicit operator bool() const { return m_ptr != nullptr; }

    /// @throws std::runtime_error  when null
    void Check() const
    {
        if (__builtin_expect(!m_ptr, 0))
            internal::ThrowNullDereference("SharedPtr", QUIB_LOCATION);
    }

    void swap(SharedPtr& o) { std::swap(m_ptr, o.m_ptr); }

private:
    void Release()
    {
        try
        {
            Reset(nullptr);
        }
        catch (std::exception& e)
        {
            LogContained(e.what(), QUIB_LOCATION);
        }
        catch (...)
        {
            LogContained(nullptr, QUIB_LOCATION);
        }
    }

    T* m_ptr = nullptr;
};

template<typename T, typename U>
bool operator==(const SharedPtr<T>& a, const SharedPtr<U>& b)
{
    return a.get() == b.get();
}
template<typename T, typename U>
bool operator!=(const SharedPtr<T>& a, const SharedPtr<U>& b)
{
    return a.get() != b.get();
}
template<typename T>
bool operator==(const SharedPtr<T>& a, std::nullptr_t)
{
    return !a.get();
}
template<typename T>
bool operator!=(const SharedPtr<T>& a, std::nullptr_t)
{
    return a.get() != nullptr;
}
template<typename T>
bool operator<(const SharedPtr<T>& a, const SharedPtr<T>& b)
{
    return std::less<T*>()(a.get(), b.get());
}

template<typename T, typename U>
SharedPtr<T> DynamicCast(const SharedPtr<U>& p)
{
    return SharedPtr<T>(dynamic_cast<T*>(p.get()));
}

template<typename T>
class LockPtr;

template<typename T>
class WeakPtr
{
public:
    WeakPtr() = default;
    WeakPtr(std::nullptr_t) {}
    WeakPtr(T* p) { Reset(p); }
    WeakPtr(const SharedPtr<T>& p) { Reset(p.get()); }
    WeakPtr(const WeakPtr& o)
    {
        o.CheckAttachment();
        Attach(o.m_ptr, o.m_handle);
    }
    template<typename D, typename = std::enable_if_t<std::is_convertible<D*, T*>::value>>
    WeakPtr(const SharedPtr<D>& p)
    {
        Reset(p.get());
    }
    template<typename D, typename = std::enable_if_t<std::is_convertible<D*, T*>::value>>
    WeakPtr(const WeakPtr<D>& o)
    {
        o.CheckAttachment();
        Attach(o.m_ptr, o.m_handle);
    }
    ~WeakPtr()
    {
        if (m_handle)
            m_handle->DecreaseWeakCount();
    }

    WeakPtr& operator=(const WeakPtr& o)
    {
        o.CheckAttachment();
        if (m_handle == o.m_handle)
        {
            m_ptr = o.m_ptr;
            return *this;
        }
        if (m_handle)
            m_handle->DecreaseWeakCount();
        m_ptr = nullptr;
        m_handle = nullptr;
        Attach(o.m_ptr, o.m_handle);
        return *this;
    }

    void Reset(T* p)
    {
        // First of all: p may be a new object at the address of a dead one that we still point at.
        CheckAttachment();
        if (p == m_ptr)
            return;
        if (m_handle)
            m_handle->DecreaseWeakCount();
        m_ptr = nullptr;
        m_handle = nullptr;
        if (p)
            Attach(p, p->GetHandle());
    }

    /// Lets go of the control block of a dead object. Every read calls it first; it changes what is
    /// logically const.
    void CheckAttachment() const
    {
        if (m_handle && !m_handle->HasPtr())
        {
            m_handle->DecreaseWeakCount();
            m_ptr = nullptr;
            m_handle = nullptr;
        }
    }

    bool IsNull() const
    {
        CheckAttachment();
        return !m_ptr;
    }

    /// The object if it lives. For comparisons and quick walks on one thread; whoever calls into the
    /// object takes a LockPtr.
    T* GetUnlocked() const
    {
        CheckAttachment();
        return m_ptr;
    }

private:
    template<typename D>
    friend class WeakPtr;
    friend class LockPtr<T>;

    void Attach(T* p, PointeeHandle* handle)
    {
        // Counted before it is stored: on an object at its end this throws, and we stay null.
        if (handle)
            handle->IncreaseWeakCount();
        m_ptr = p;
        m_handle = handle;
    }

    mutable T* m_ptr = nullptr;
    mutable PointeeHandle* m_handle = nullptr;
};

template<typename T, typename U>
bool operator==(const WeakPtr<T>& a, const WeakPtr<U>& b)
{
    return a.GetUnlocked() == b.GetUnlocked();
}

// Keeps the object alive for its own lifetime. A lock on an object that no SharedPtr holds, one under
// construction or on the stack, never deletes it.
template<typename T>
class LockPtr
{
public:
    LockPtr(const WeakPtr<T>& weak)
    {
        weak.CheckAttachment();
        m_ptr = weak.m_ptr;
        m_handle = weak.m_handle;
        if (m_handle)
        {
            m_refCount = m_handle->GetRefCount();
            m_handle->IncreaseLockCount();
        }
    }
    LockPtr(const LockPtr&) = delete;
    LockPtr& operator=(const LockPtr&) = delete;
    ~LockPtr()
    {
        if (!m_handle)
            return;
        try
        {
            if (m_refCount != 0)
                m_handle->DecreaseRefCount();
            else
                m_handle->DecreaseLockCount();
        }
        catch (std::exception& e)
        {
            LogContained(e.what(), QUIB_LOCATION);
        }
        catch (...)
        {
            LogContained(nullptr, QUIB_LOCATION);
        }
    }

    T* get() const { return m_ptr; }
    T* operator->() const
    {
        Check();
        return m_ptr;
    }
    T& operator*() const
    {
        Check();
        return *m_ptr;
    }
    explicit operator bool() const { return m_ptr != nullptr; }

    /// @throws std::runtime_error  when null
    void Check() const
    {
        if (__builtin_expect(!m_ptr, 0))
            internal::ThrowNullDereference("LockPtr", QUIB_LOCATION);
    }

private:
    T* m_ptr = nullptr;
    PointeeHandle* m_handle = nullptr;
    size_t m_refCount = 0;
};

namespace internal
{
// The allocation marker: OnNewCall(location) % new T(...). The object is in a SharedPtr before the
// next statement, and knows where it came from.
class OnNewCall
{
public:
    explicit OnNewCall(const char* location)
        : m_location(location)
    {
    }

    template<typename T>
    SharedPtr<T> operator%(T* p) const
    {
        p->SetContext(m_location);
        return SharedPtr<T>(p);
    }

private:
    const char* m_location;
};
}
}

/// Makes a counted object: SharedPtr<Value> p = QUIB_NEW Value(1);
#define QUIB_NEW ::util::internal::OnNewCall(QUIB_LOCATION) % new
