// Counted objects with a separate control block. An object is reached through SharedPtr, WeakPtr and
// LockPtr (util/SharedPtr.h). Single-threaded by design: no count is atomic.
#pragma once

#include "util/Failures.h"
#include "util/SmallBlocks.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <limits>

namespace util
{
class Pointee;

// The control block of one object. It outlives the object for as long as weak references stand, and
// is freed by the sweep in Flush, not at the object's end.
class PointeeHandle : public InSmallBlocks
{
public:
    explicit PointeeHandle(Pointee* ptr)
        : m_ptr(ptr)
    {
    }

    bool HasPtr() const { return m_ptr != nullptr; }
    size_t GetRefCount() const { return m_refCount; }
    size_t GetWeakCount() const { return m_weakCount; }

    void IncreaseRefCount()
    {
        CODE_ASSERT(HasPtr());
        CODE_ASSERT(m_refCount < std::numeric_limits<size_t>::max());
        ++m_refCount;
    }

    /// At 0 the object is deleted; its weak references read as null from before its destructor runs.
    void DecreaseRefCount()
    {
        CODE_ASSERT(HasPtr());
        CODE_ASSERT(m_refCount > 0);
        if (--m_refCount == 0)
            DeleteObject();
    }

    void IncreaseLockCount() { IncreaseRefCount(); }

    /// Never deletes the object.
    void DecreaseLockCount()
    {
        CODE_ASSERT(HasPtr());
        CODE_ASSERT(m_refCount > 0);
        --m_refCount;
    }

    void IncreaseWeakCount()
    {
        CODE_ASSERT(HasPtr());
        CODE_ASSERT(m_weakCount < std::numeric_limits<size_t>::max());
        ++m_weakCount;
    }

    /// A weak reference outlives the object, so that HasPtr is not asserted.
    void DecreaseWeakCount()
    {
        CODE_ASSERT(m_weakCount > 0);
        --m_weakCount;
    }

    /// The frame-wise sweep of dead control blocks: those appended since the last sweep, and all of
    /// them once their number has doubled since the last full sweep.
    static void Flush();

    /// The number of control blocks in existence, dead ones that no sweep has met included.
    static size_t GetInstanceCount() { return Instances().size(); }

private:
    friend class Pointee;

    void DeleteObject();
    static VectorPOD<PointeeHandle*>& Instances();

    Pointee* m_ptr;
    size_t m_refCount = 0;
    size_t m_weakCount = 0;
};

// Base class of all counted objects. One on the stack or a member works, as nothing deletes it so
// long as no SharedPtr takes it to a count of 1 and back.
class Pointee
{
public:
    Pointee();
    /// A copy is an object of its own: fresh control block, fresh id.
    Pointee(const Pointee&)
        : Pointee()
    {
    }
    Pointee& operator=(const Pointee&) { return *this; }
    virtual ~Pointee() noexcept(false);

    PointeeHandle* GetHandle() const { return m_handle; }
    /// Serial number, unique over the process and rising with the order of creation.
    unsigned GetPointeeID() const { return m_id; }
    /// Where the object was allocated, or "".
    const char* GetContext() const { return m_context; }
    void SetContext(const char* context) { m_context = context; }

    static unsigned long GetAllocateCount() { return s_nextId; }
    static unsigned long GetInstanceCount() { return s_instanceCount; }

private:
    enum State
    {
        State_Alive = 0xBEEF,
        State_Dead = 0xDEAD
    };

    PointeeHandle* m_handle;
    int m_state = State_Alive;
    unsigned m_id;
    const char* m_context = "";

    static inline unsigned s_nextId = 0;
    static inline unsigned long s_instanceCount = 0;
};
}
