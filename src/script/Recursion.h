// Limits that keep a script from exhausting the stack, or time by calls that multiply.
//
// Code blocks go on with their next statement after a failure. Were a recursion stopped by an ordinary
// exception, each of its levels would do so and start the next descent: the time would double with
// every level. So the limits throw a CallUnwinder, which is no std::exception and passes all code
// blocks, and the outermost Function::Call turns it into a ScriptException.
#pragma once

#include <cstdint>

namespace script
{
const int MaxCallDepth = 256;
/// Nested blocks, lists, functions and infix operands.
const int MaxParseDepth = 1000;
/// For all calls below one outermost call. The language has no loops: only functions that call others
/// several times, level upon level, get there, and these would run for years.
const int MaxCallCost = 4 << 20;
/// What a failed statement counts for, as each leaves lines in the log.
const int FailureCost = 100;

struct CallUnwinder
{
    const char* message; // of the ScriptException to come
};

namespace internal
{
inline thread_local uintptr_t s_stackLimit = ~uintptr_t(0);
bool IsStackReallyLow();
}

/// True when so little stack is left that nothing must nest any deeper.
inline bool IsStackLow()
{
    const uintptr_t here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    return __builtin_expect(here < internal::s_stackLimit, 0) && internal::IsStackReallyLow();
}

/// "Script recursion too deep": unwinds to the outermost call, or throws the ScriptException itself
/// when no call is running.
[[noreturn]] void ThrowRecursionTooDeep();

/// For whatever nests while a script runs.
inline void CheckStack()
{
    if (IsStackLow())
        ThrowRecursionTooDeep();
}

/// To be told of every statement that failed and was logged.
void CountFailure();

// One per activation of a function.
class CallGuard
{
public:
    /// @throws CallUnwinder  when a limit is reached
    CallGuard();
    ~CallGuard();
    CallGuard(const CallGuard&) = delete;
    CallGuard& operator=(const CallGuard&) = delete;

    bool IsOutermost() const;
};
}
