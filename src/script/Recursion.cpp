#include "script/Recursion.h"

#include "script/Exceptions.h"

#include <pthread.h>

#include <algorithm>

namespace script
{
namespace
{
const char* const TooDeep = "Script recursion too deep";
const char* const TooLong = "Script runs too long";

// What native commands, and the log lines on the way out, may still need.
const uintptr_t StackReserve = uintptr_t(1) << 20;
// Where the stack may grow without end, scripts still must not eat the memory.
const uintptr_t MaxStack = uintptr_t(64) << 20;
// Where the system doesn't tell the size of the stack.
const uintptr_t AssumedStack = uintptr_t(512) << 10;

int s_callDepth = 0;

uintptr_t CalcStackLimit()
{
    const uintptr_t here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return here - AssumedStack;
    void* bottom = nullptr;
    size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &bottom, &size) == 0 && size != 0;
    pthread_attr_destroy(&attributes);
    if (!known)
        return here - AssumedStack;

    const uintptr_t usable = std::min<uintptr_t>(size, MaxStack);
    const uintptr_t top = reinterpret_cast<uintptr_t>(bottom) + size;
    return top - usable + std::min(StackReserve, usable / 4);
}
}

namespace internal
{
bool IsStackReallyLow()
{
    if (s_stackLimit == ~uintptr_t(0))
        s_stackLimit = CalcStackLimit();
    return reinterpret_cast<uintptr_t>(__builtin_frame_address(0)) < s_stackLimit;
}

void ThrowRunsTooLong()
{
    if (s_callDepth > 0)
        throw CallUnwinder{TooLong};
    QUIB_THROW(ScriptException(TooLong));
}
}

Allowance::Allowance(int64_t cost, bool isOwn)
    : m_outerLeft(internal::s_costLeft)
    , m_atStart(isOwn ? cost : std::min(cost, m_outerLeft))
{
    internal::s_costLeft = m_atStart;
}

Allowance::~Allowance()
{
    internal::s_costLeft = m_outerLeft - GetSpent();
}

void EndUnwinding(const CallUnwinder& unwinder)
{
    if (unwinder.message == TooLong && internal::s_costLeft >= 0)
        QUIB_THROW(ScriptException(TooLong));
    throw unwinder;
}

void ThrowRecursionTooDeep()
{
    if (s_callDepth > 0)
        throw CallUnwinder{TooDeep};
    QUIB_THROW(ScriptException(TooDeep));
}

void CountFailure()
{
    if (s_callDepth > 0)
        Charge(FailureCost);
}

CallGuard::CallGuard()
    : m_allowance(MaxRunCost)
{
    if (s_callDepth >= MaxCallDepth)
        throw CallUnwinder{TooDeep};
    Charge(CallCost);
    ++s_callDepth;
}

CallGuard::~CallGuard()
{
    --s_callDepth;
}

bool CallGuard::IsOutermost() const
{
    return s_callDepth == 1;
}
}
