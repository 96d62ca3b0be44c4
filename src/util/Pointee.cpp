#include "util/Pointee.h"

#include "logging/Log.h"
#include "util/SafeDelete.h"

#include <vector>

namespace util
{
namespace
{
size_t s_lastFullFlushCount = 0;
size_t s_lastSmallFlushCount = 0;

// An object that owns an object that owns an object, a hundred thousand deep, must not exhaust the
// stack when the first one goes: from this depth on deletions wait for the outermost one.
const int MaxDeleteDepth = 64;
int s_deleteDepth = 0;

std::vector<Pointee*>& WaitingForDeletion()
{
    static std::vector<Pointee*>* s_waiting = new std::vector<Pointee*>;
    return *s_waiting;
}
}

static_assert(sizeof(PointeeHandle) == 3 * sizeof(void*), "a control block is three words");

VectorPOD<PointeeHandle*>& PointeeHandle::Instances()
{
    static VectorPOD<PointeeHandle*>* s_instances = new VectorPOD<PointeeHandle*>;
    return *s_instances;
}

void PointeeHandle::DeleteObject()
{
    Pointee* object = m_ptr;
    m_ptr = nullptr;
    if (s_deleteDepth >= MaxDeleteDepth)
    {
        WaitingForDeletion().push_back(object);
        return;
    }

    ++s_deleteDepth;
    SafeDelete(object);
    if (s_deleteDepth == 1)
    {
        std::vector<Pointee*>& waiting = WaitingForDeletion();
        while (!waiting.empty())
        {
            object = waiting.back();
            waiting.pop_back();
            SafeDelete(object);
        }
    }
    --s_deleteDepth;
}

void PointeeHandle::Flush()
{
    VectorPOD<PointeeHandle*>& instances = Instances();
    const bool full = instances.size() > 2 * s_lastFullFlushCount;
    size_t i = full ? 0 : s_lastSmallFlushCount;
    while (i < instances.size())
    {
        PointeeHandle* handle = instances[i];
        if (handle->m_refCount == 0 && handle->m_weakCount == 0)
        {
            SafeDelete(handle);
            instances[i] = instances[instances.size() - 1];
            instances.pop_back();
        }
        else
            ++i;
    }
    s_lastSmallFlushCount = instances.size();
    if (full)
        s_lastFullFlushCount = instances.size();
}

Pointee::Pointee()
    : m_handle(new PointeeHandle(this))
    , m_id(s_nextId++)
{
    PointeeHandle::Instances().append(m_handle);
    ++s_instanceCount;
}

Pointee::~Pointee() noexcept(false)
{
    if (m_state != State_Alive)
    {
        Log(logging::LogWarning, "Called ~Pointee on a Pointee with m_state == State_Dead");
        return;
    }
    // Through volatile: the compiler drops what a destructor stores and nobody may read after it.
    const_cast<volatile int&>(m_state) = State_Dead;
    // An assertion that threw while another exception travels would end the program.
    if (std::uncaught_exceptions() == 0)
        CODE_ASSERT(m_handle);
    m_handle = nullptr;
    --s_instanceCount;
}
}
