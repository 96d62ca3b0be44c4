#include "input/Replay.h"

#include "util/Failures.h"
#include "util/Timer.h"

#include <algorithm>

namespace input
{
namespace
{
Replay* s_replay = nullptr;
const unsigned LongestWait = 1000; // milliseconds: nobody waits for a machine that slept
}

Replay* Replay::Get()
{
    return s_replay;
}

Replay::Replay(Recording recording, bool quitAfter, bool isPaced)
    : m_recording(std::move(recording))
    , m_quitAfter(quitAfter)
    , m_isPaced(isPaced)
{
    s_replay = this;
    util::Timer::SetSource(ReadClock);
}

Replay::~Replay()
{
    util::Timer::SetSource(nullptr);
    s_replay = nullptr;
}

unsigned Replay::ReadClock(unsigned real)
{
    return s_replay->m_isOver ? real + s_replay->m_offset : s_replay->ReadClockOfFrame();
}

unsigned Replay::ReadClockOfFrame()
{
    const RecordedFrame& frame = m_isStarted ? GetFrame() : m_recording.start;
    while (m_change < frame.clock.size() && frame.clock[m_change].reading <= m_reading)
        m_time = frame.clock[m_change++].time;
    ++m_reading;
    return m_time;
}

bool Replay::NextFrame()
{
    if (m_isOver)
        return false;
    const size_t next = m_isStarted ? m_frame + 1 : 0;
    if (next == m_recording.frames.size())
    {
        m_isOver = true;
        m_offset = m_time - util::Timer::GetRealMilliseconds();
        return false;
    }
    if (!m_isStarted)
        m_realStart = util::Timer::GetRealMilliseconds();
    m_isStarted = true;
    m_frame = next;
    m_time = GetFrame().time;
    m_reading = 0;
    m_change = 0;
    m_paste = 0;
    return true;
}

bool Replay::HasPaste() const
{
    return m_isStarted && !m_isOver && m_paste < GetFrame().pastes.size();
}

const util::String& Replay::TakePaste()
{
    CODE_ASSERT(HasPaste());
    return GetFrame().pastes[m_paste++];
}

bool Replay::WantsQuit() const
{
    return m_quitAfter && (m_isOver || (m_isStarted && GetFrame().isQuit));
}

unsigned Replay::GetTimeToNextFrame() const
{
    if (!m_isPaced || m_isOver || !m_isStarted || m_frame + 1 == m_recording.frames.size())
        return 0;
    const unsigned due = m_recording.frames[m_frame + 1].time - m_recording.frames[0].time;
    const unsigned passed = util::Timer::GetRealMilliseconds() - m_realStart;
    return due > passed ? std::min(due - passed, LongestWait) : 0;
}
}
