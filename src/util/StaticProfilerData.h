// Counters for a place that is passed so often that a scope in the tree of the profiler would cost too
// much. The light part that everything may include: it knows nothing of util::Profiler2, which reads all
// of them.
#pragma once

#include "util/ScopeProfiler.h"
#include "util/String.h"
#include "util/Timer.h"

namespace util
{
/// One for each place: QUIB_PROFILE_OFTEN makes it. Stands in the list of all while it lives. Times are
/// real ones, in milliseconds.
class StaticProfilerData
{
public:
    explicit StaticProfilerData(const String& name);
    ~StaticProfilerData();
    StaticProfilerData(const StaticProfilerData&) = delete;
    StaticProfilerData& operator=(const StaticProfilerData&) = delete;

    /// @return  the time, for End
    unsigned Begin() const { return Timer::GetRealMilliseconds(); }
    void End(unsigned start)
    {
        const unsigned elapsed = Timer::GetRealMilliseconds() - start;
        m_frameTime += elapsed;
        if (elapsed > m_callSpike)
            m_callSpike = elapsed;
        ++m_calls;
    }
    /// Takes what came together since the last call of this into the total and the spike.
    void EndFrame();
    /// Back to 0, all of it.
    void Clear();

    const String& GetName() const { return m_name; }
    unsigned GetFrameTime() const { return m_frameTime; }
    unsigned GetTotalTime() const { return m_totalTime; }
    unsigned GetFrameSpike() const { return m_frameSpike; }
    unsigned GetCallSpike() const { return m_callSpike; }
    unsigned GetCalls() const { return m_calls; }

    /// The list of all, the latest first; null at its end.
    static StaticProfilerData* GetFirst() { return s_first; }
    StaticProfilerData* GetNext() const { return m_next; }

    /// Set by the profiler while it is active: else a place costs the test of this.
    static inline bool s_isListening = false;

private:
    static inline StaticProfilerData* s_first = nullptr;

    StaticProfilerData* m_next; // null: the last
    String m_name;
    unsigned m_frameTime = 0;  // since the last EndFrame
    unsigned m_totalTime = 0;  // of whole frames
    unsigned m_frameSpike = 0; // the most in one frame
    unsigned m_callSpike = 0;  // the most in one call
    unsigned m_calls = 0;
};

/// One pass of a place. Counts when somebody listens as it begins.
class StaticProfilerScope
{
public:
    explicit StaticProfilerScope(StaticProfilerData& data)
    {
        if (__builtin_expect(StaticProfilerData::s_isListening, 0))
        {
            m_data = &data;
            m_start = data.Begin();
        }
    }
    ~StaticProfilerScope()
    {
        if (__builtin_expect(m_data != nullptr, 0))
            m_data->End(m_start);
    }
    StaticProfilerScope(const StaticProfilerScope&) = delete;
    StaticProfilerScope& operator=(const StaticProfilerScope&) = delete;

private:
    StaticProfilerData* m_data = nullptr; // null: nobody listens
    unsigned m_start = 0;                 // milliseconds
};
}

/// Times the rest of the enclosing block under `name`, in the flat list and not in the tree.
#define QUIB_PROFILE_OFTEN(name)                                                                   \
    static util::StaticProfilerData QUIB_PROFILE_JOIN(profiledPlace, __LINE__)(name);              \
    const util::StaticProfilerScope QUIB_PROFILE_JOIN(profiledPass, __LINE__)(                     \
        QUIB_PROFILE_JOIN(profiledPlace, __LINE__))
