// Limits that keep a script from exhausting the stack, and from running for hours by calls that multiply.
//
// The language has no loops: the work of a text is in proportion to its length, but for functions that
// call others several times, level upon level. So all work is charged against an allowance: one for all
// that is run by one Parser::Execute, a smaller one for each formula, and one for all formulas of a frame.
//
// Code blocks go on with their next statement after a failure. Were a recursion stopped by an ordinary
// exception, each of its levels would do so and start the next descent: the time would double with
// every level. So the limits throw a CallUnwinder, which is no std::exception and passes all code
// blocks, and the outermost Function::Call turns it into a ScriptException.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace script
{
const int MaxCallDepth = 256;
/// Nested blocks, lists, functions and infix operands.
const int MaxParseDepth = 1000;

// A unit of cost is about 10 nanoseconds, and a run is over within seconds. The text of 50,000 boxes
// needs a fifteenth of it.
const int64_t MaxRunCost = int64_t(1) << 28;
const int64_t MaxFormulaCost = MaxRunCost / 128;
const int64_t MaxFrameCost = MaxRunCost / 8;
const int64_t StatementCost = 8;
const int64_t CallCost = 16;
const int64_t ElementCost = 8;  // of a list that is made
const int64_t BytesPerUnit = 4; // of a string that is made
/// Each leaves lines in the log.
const int64_t FailureCost = 2000;

struct CallUnwinder
{
    const char* message; // of the ScriptException to come
};

namespace internal
{
inline thread_local uintptr_t s_stackLimit = ~uintptr_t(0);
inline int64_t s_costLeft = std::numeric_limits<int64_t>::max() / 2; // negative when used up
bool IsStackReallyLow();
[[noreturn]] void ThrowRunsTooLong();
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

/// For whatever costs time or memory while a script runs.
/// @throws CallUnwinder  (ScriptException outside all calls) "Script runs too long"
inline void Charge(int64_t cost)
{
    internal::s_costLeft -= cost;
    if (__builtin_expect(internal::s_costLeft < 0, 0))
        internal::ThrowRunsTooLong();
}

/// For a string of that length, which is about to be made. Short ones go with what makes them.
inline void ChargeString(size_t length)
{
    if (__builtin_expect(length > 256, 0))
        Charge(static_cast<int64_t>(length) / BytesPerUnit);
}

// What may be spent during its life. Within another allowance it counts towards that, and ends with it.
class Allowance
{
public:
    /// @param isOwn  all of it, though the one around it may be nearly used up, for what must not stop
    ///               halfway. That one is charged with it all the same.
    explicit Allowance(int64_t cost, bool isOwn = false);
    ~Allowance();
    Allowance(const Allowance&) = delete;
    Allowance& operator=(const Allowance&) = delete;

    int64_t GetSpent() const { return m_atStart - internal::s_costLeft; }

private:
    int64_t m_outerLeft;
    int64_t m_atStart;
};

/// To be asked where an allowance has ended within the run of a script: turns the unwinding into a
/// ScriptException if nothing but that allowance is used up, else lets it go on.
[[noreturn]] void EndUnwinding(const CallUnwinder& unwinder);

/// To be told of every statement that failed and was logged.
void CountFailure();

// One per activation of a function.
class CallGuard
{
public:
    /// @throws CallUnwinder  when a limit is reached; ScriptException outside all calls
    CallGuard();
    ~CallGuard();
    CallGuard(const CallGuard&) = delete;
    CallGuard& operator=(const CallGuard&) = delete;

    bool IsOutermost() const;

private:
    Allowance m_allowance; // of a call from outside all scripts
};
}
