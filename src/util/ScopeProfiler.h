// A named scope for the profiler, placed at the head of each timed stage. The light part that
// everything may include: it knows nothing of the profiler that listens.
#pragma once

namespace util
{
class ScopeProfiler
{
public:
    using BeginFunction = void (*)(const char* name);
    using EndFunction = void (*)();

    /// @param name  a literal: scopes are told apart by its address
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

    /// Set once at start by the profiler; null means that nobody listens.
    static inline BeginFunction s_begin = nullptr;
    static inline EndFunction s_end = nullptr;
};
}
