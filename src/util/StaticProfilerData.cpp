#include "util/StaticProfilerData.h"

#include <algorithm>

namespace util
{
StaticProfilerData::StaticProfilerData(const String& name)
    : m_next(s_first)
    , m_name(name)
{
    s_first = this;
}

StaticProfilerData::~StaticProfilerData()
{
    StaticProfilerData** place = &s_first;
    while (*place != this)
        place = &(*place)->m_next;
    *place = m_next;
}

void StaticProfilerData::EndFrame()
{
    m_totalTime += m_frameTime;
    m_frameSpike = std::max(m_frameSpike, m_frameTime);
    m_frameTime = 0;
}

void StaticProfilerData::Clear()
{
    m_frameTime = 0;
    m_totalTime = 0;
    m_frameSpike = 0;
    m_callSpike = 0;
    m_calls = 0;
}
}
