// A named scope for the profiler, placed at the head of each timed stage. The light part that
// everything may include: it knows nothing of the profiler that listens.
#pragma once

namespace util
{
/// Stages are marked with QUIB_PROFILE; the class itself takes names that somebody else keeps apart.
class ScopeProfiler
{
public:
    using BeginFunction = void (*)(const char* name);
    using EndFunction = void (*)();

    /// @param name  lives for ever and belongs to one place: scopes are told apart by its address
    explicit ScopeProfiler(const char* name)
    {
        if (__builtin_expect(s_begin != nullptr, 0))
            s_begin(name);
    }
    ~ScopeProfiler()
    {
        if (__builtin_expect(s_end != nullptr, 0))
            s_end();
    }
    ScopeProfiler(const ScopeProfiler&) = delete;
    ScopeProfiler& operator=(const ScopeProfiler&) = delete;

    /// Set by the profiler while it is active, outside of every scope; null means that nobody
    /// listens, and a scope then costs the test of a pointer.
    static inline BeginFunction s_begin = nullptr;
    static inline EndFunction s_end = nullptr;
};
}

#define QUIB_PROFILE_JOINED(a, b) a##b
#define QUIB_PROFILE_JOIN(a, b) QUIB_PROFILE_JOINED(a, b)

/// Times the rest of the enclosing block under `name`, a literal. The array gives every place a name
/// of its own: the compiler may make equal literals one, but never two named arrays.
#define QUIB_PROFILE(name)                                                                         \
    static const char QUIB_PROFILE_JOIN(profiledName, __LINE__)[] = name;                          \
    const util::ScopeProfiler QUIB_PROFILE_JOIN(profiledScope, __LINE__)(                          \
        QUIB_PROFILE_JOIN(profiledName, __LINE__))
