// Shows what the places cost that are passed very often, as a flat list.
//
// A listener of the input, which lies above util: nothing in util includes this header but its own
// source. Places are marked by the light util/StaticProfilerData.h. The numeric pad's "*" switches it;
// while it is off the places count nothing.
#pragma once

#include "input/InputListener.h"
#include "util/Singleton.h"

namespace util
{
class StaticProfilerData;

class Profiler2 final : public input::InputListener, public Singleton<Profiler2>
{
public:
    Profiler2();
    ~Profiler2() override;

    /// At the end of each frame.
    /// @param dt  real seconds since the last call
    void Update(double dt);
    /// Makes the text of what was counted.
    void UpdateOutput();
    /// Starts a new interval: clears the places, the frames and the time.
    void Reset();
    /// Clears the counters of all places.
    void Clear();
    /// Takes effect in the next Update.
    void SetActive(bool active) { m_wantsActive = active; }
    bool IsActive() const { return m_active; }
    /// What there is to show, in Latin-1.
    const String& GetOutput() const;

    void OnKeyEvent(const input::KeyEvent& event) override;

private:
    void Switch();

    bool m_active = false;
    bool m_wantsActive = false; // from the next Update on
    unsigned m_frameCount = 0;
    double m_time = 0;           // seconds; of these frames
    double m_outputInterval = 1; // seconds
    bool m_forceOutput = false;
    String m_output; // empty before the first interval
};

/// The order of the output: descending by total time.
struct ProfilerComp
{
    bool operator()(const StaticProfilerData* a, const StaticProfilerData* b) const;
};
}
