#include "util/Profiler2.h"

#include "util/StaticProfilerData.h"

#include <SDL_keysym.h>
#include <boost/format.hpp>

#include <algorithm>
#include <vector>

namespace util
{
namespace
{
double Ratio(double part, double whole)
{
    return whole > 0 ? part / whole : 0;
}

template<typename F>
void ForEachPlace(F act)
{
    for (StaticProfilerData* data = StaticProfilerData::GetFirst(); data; data = data->GetNext())
        act(data);
}
}

bool ProfilerComp::operator()(const StaticProfilerData* a, const StaticProfilerData* b) const
{
    return a->GetTotalTime() > b->GetTotalTime();
}

Profiler2::Profiler2()
    : InputListener(50)
{
}

Profiler2::~Profiler2()
{
    StaticProfilerData::s_isListening = false;
}

void Profiler2::Update(double dt)
{
    if (m_active != m_wantsActive)
    {
        Switch();
        return;
    }
    if (!m_active)
        return;
    ++m_frameCount;
    m_time += dt;
    ForEachPlace([](StaticProfilerData* data) { data->EndFrame(); });
    if (m_time >= m_outputInterval || (m_forceOutput && m_time > 0))
    {
        UpdateOutput();
        Reset();
        m_forceOutput = false;
    }
}

void Profiler2::Switch()
{
    m_active = m_wantsActive;
    StaticProfilerData::s_isListening = m_active;
    m_output.clear();
    m_forceOutput = m_forceOutput && m_active;
    Reset();
}

void Profiler2::Reset()
{
    Clear();
    m_frameCount = 0;
    m_time = 0;
}

void Profiler2::Clear()
{
    ForEachPlace([](StaticProfilerData* data) { data->Clear(); });
}

void Profiler2::UpdateOutput()
{
    std::vector<const StaticProfilerData*> places;
    size_t nameWidth = 1;
    ForEachPlace(
        [&](const StaticProfilerData* data)
        {
            places.push_back(data);
            nameWidth = std::max(nameWidth, data->GetName().size());
        });
    std::stable_sort(places.begin(), places.end(), ProfilerComp());

    m_output = (boost::format("FPS: %04.2f\n\n") % Ratio(m_frameCount, m_time)).str();
    String name = " Name";
    name.resize(std::max(name.size(), nameWidth + 1), ' ');
    m_output += name + "   %total" + "   \xB5s/frame" + "  frame-spike" + "  call-spike" +
                "   \xB5s/call" + "   calls/frame" + "\n";
    boost::format row(" %-" + ToString(nameWidth) +
                      "s  %5.1f %%     %6.0f     %5.0f ms    %5.0f ms     %5.0f   %7.1f\n");
    for (const StaticProfilerData* data : places)
    {
        const double total = data->GetTotalTime() / 1000.0;
        row % data->GetName() % (100 * Ratio(total, m_time)) %
            (total * 1000000 / std::max(1u, m_frameCount)) % double(data->GetFrameSpike()) %
            double(data->GetCallSpike()) % (1000000 * Ratio(total, data->GetCalls())) %
            Ratio(data->GetCalls(), m_frameCount);
        m_output += row.str();
    }
}

const String& Profiler2::GetOutput() const
{
    static const String s_unactive = "Unactive";
    static const String s_nothingYet = "No output generated yet.";
    if (!m_active)
        return s_unactive;
    return m_output.empty() ? s_nothingYet : m_output;
}

void Profiler2::OnKeyEvent(const input::KeyEvent& event)
{
    if (event.GetKey() != SDLK_KP_MULTIPLY || !event.IsDown() || event.IsRepeat() ||
        event.IsHandled())
        return;
    SetActive(!m_wantsActive);
    m_forceOutput = true;
    event.SetHandled(true);
}
}
