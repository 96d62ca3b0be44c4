#include "util/Profiler.h"

#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"
#include "util/Timer.h"

#include <SDL_keysym.h>
#include <boost/format.hpp>

#include <algorithm>
#include <cstring>

namespace util
{
namespace
{
const int IndentWidth = 2;
const char* const MissingTime = "MISSING TIME";

// Whom the scopes call: a singleton's own pointer is tested at each use.
Profiler* s_listener = nullptr;

void OnBegin(const char* name)
{
    s_listener->Begin(name);
}
void OnEnd()
{
    s_listener->End();
}

double Seconds(unsigned milliseconds)
{
    return milliseconds / 1000.0;
}

double Ratio(double part, double whole)
{
    return whole > 0 ? part / whole : 0;
}

// What the rows of nodes and of missing time have in common: the name, % of the owner, % of all, and
// microseconds in a frame.
String RowHead(int depth, const char* name, int nameWidth, double time, double ownerTime,
               double elapsed, unsigned frames)
{
    const String indented = String(depth * IndentWidth, ' ') + name;
    const String padding(std::max(0, nameWidth - static_cast<int>(indented.size())), ' ');
    return (boost::format("%c%s   %s   %5.1f %%   %5.1f %%     %6.0f") % ' ' % indented % padding %
            (100 * Ratio(time, ownerTime)) % (100 * Ratio(time, elapsed)) %
            (1e6 * Ratio(time, frames)))
        .str();
}
}

Profiler::Node::Node(const char* name, Node* parent)
    : m_name(name)
    , m_parent(parent)
{
}

Profiler::Node* Profiler::Node::GetChild(const char* name)
{
    for (const std::unique_ptr<Node>& child : m_children)
        if (child->m_name == name)
            return child.get();
    if (m_children.size() > 8)
        return nullptr;
    m_children.push_back(std::make_unique<Node>(name, this));
    return m_children.back().get();
}

void Profiler::Node::Add(double time, unsigned frame)
{
    if (m_frame != frame)
        m_frameTime = 0;
    m_frame = frame;
    m_frameTime += time;
    m_largestTime = std::max(m_largestTime, m_frameTime);
    m_totalTime += time;
    ++m_calls;
}

void Profiler::Node::Clear()
{
    m_totalTime = 0;
    m_largestTime = 0;
    m_frameTime = 0;
    m_calls = 0;
    for (const std::unique_ptr<Node>& child : m_children)
        child->Clear();
}

int Profiler::Node::CalcNameWidth(int depth) const
{
    int width = depth * IndentWidth + static_cast<int>(std::strlen(m_name));
    if (!m_children.empty())
        width =
            std::max(width, (depth + 1) * IndentWidth + static_cast<int>(std::strlen(MissingTime)));
    for (const std::unique_ptr<Node>& child : m_children)
        width = std::max(width, child->CalcNameWidth(depth + 1));
    return width;
}

String Profiler::Node::GetOutput(int depth, int nameWidth, double elapsed) const
{
    const Node* root = this;
    while (root->m_parent)
        root = root->m_parent;
    String text;
    AppendRows(text, depth, nameWidth, elapsed, root->m_calls);
    return text;
}

void Profiler::Node::AppendRows(String& text, int depth, int nameWidth, double elapsed,
                                unsigned frames) const
{
    const double ownerTime = m_parent ? m_parent->m_totalTime : elapsed;
    text += RowHead(depth, m_name, nameWidth, m_totalTime, ownerTime, elapsed, frames);
    text += (boost::format("        %5.0f     %5.0f   %5.1f\n") % (1e6 * m_largestTime) %
             (1e6 * Ratio(m_totalTime, m_calls)) % Ratio(m_calls, frames))
                .str();
    if (m_children.empty())
        return;
    double missing = m_totalTime;
    for (const std::unique_ptr<Node>& child : m_children)
    {
        child->AppendRows(text, depth + 1, nameWidth, elapsed, frames);
        missing -= child->m_totalTime;
    }
    // The clock counts whole milliseconds: less is rounding.
    if (missing > 0.0005)
        text += RowHead(depth + 1, MissingTime, nameWidth, missing, m_totalTime, elapsed, frames) +
                "\n";
}

Profiler::Profiler()
    : InputListener(50)
    , m_root(std::make_unique<Node>("Main", nullptr))
    , m_current(m_root.get())
{
}

Profiler::~Profiler()
{
    Listen(false);
}

void Profiler::Begin(const char* name)
{
    if (!m_active || !m_error.empty())
        return;
    QUIB_PROFILE_OFTEN("Profiler::Begin");
    Node* child = m_current->GetChild(name);
    if (!child)
    {
        Fail(String("Too many children of node ") + m_current->m_name);
        return;
    }
    m_current = child;
    child->m_entryTime = Timer::GetRealMilliseconds();
}

void Profiler::End()
{
    if (!m_active || !m_error.empty())
        return;
    const unsigned now = Timer::GetRealMilliseconds();
    QUIB_PROFILE_OFTEN("Profiler::End");
    if (m_current == m_root.get())
    {
        Fail("Too many calls to End()");
        return;
    }
    m_current->Add(Seconds(now - m_current->m_entryTime), m_frame);
    m_current = m_current->m_parent;
}

void Profiler::Update()
{
    if (m_active != m_wantsActive)
    {
        Switch();
        return;
    }
    if (!m_active || !m_error.empty())
        return;
    if (m_current != m_root.get())
    {
        Fail("Profiler::Update() called within begin and end (fix code)");
        m_current = m_root.get();
        return;
    }
    const unsigned now = Timer::GetRealMilliseconds();
    m_root->Add(Seconds(now - m_frameStart), m_frame);
    m_frameStart = now;
    ++m_frame;
    ++m_frameCount;
    const double elapsed = Seconds(now - m_lastOutput);
    if (elapsed >= m_outputInterval || (m_forceOutput && elapsed > 0))
    {
        UpdateOutput(elapsed);
        m_forceOutput = false;
        m_lastOutput = now;
    }
}

void Profiler::Switch()
{
    m_active = m_wantsActive;
    m_forceOutput = m_forceOutput && m_active;
    if (m_active)
        DropNodes();
    Listen(m_active && m_error.empty());
}

void Profiler::Reset()
{
    m_error.clear();
    DropNodes();
    Listen(m_active);
}

void Profiler::DropNodes()
{
    m_root = std::make_unique<Node>("Main", nullptr);
    m_current = m_root.get();
    m_frameCount = 0;
    m_output.clear();
    m_frameStart = m_lastOutput = Timer::GetRealMilliseconds();
}

void Profiler::Clear()
{
    m_root->Clear();
    m_frameCount = 0;
}

void Profiler::Listen(bool listen)
{
    // Who listens in its place, while it does not, goes on.
    if (listen == (s_listener == this))
        return;
    s_listener = listen ? this : nullptr;
    ScopeProfiler::s_begin = listen ? OnBegin : nullptr;
    ScopeProfiler::s_end = listen ? OnEnd : nullptr;
}

void Profiler::Fail(const String& message)
{
    m_error =
        "ERROR: " + message + "\nThis problem must be fixed before any profiling can be done.";
    // Scopes that are open now are not heard of when they end.
    Listen(false);
}

void Profiler::UpdateOutput(double elapsed)
{
    const int nameWidth = m_root->CalcNameWidth(0);
    m_output = (boost::format("FPS: %04.2f\n\n") % Ratio(m_frameCount, elapsed)).str();
    m_output += (boost::format("Profile data for %.3f s\n") % elapsed).str();
    // As wide as the names' column of the rows, and one more: the column behind it is narrower here.
    String name = " Name";
    name.resize(std::max<size_t>(name.size(), nameWidth + 5), ' ');
    m_output += name + "   %owner" + "    %total" + "   \xB5s/frame" + "  frame-spike" +
                "   \xB5s/call" + "   calls/frame" + "\n";
    m_output += m_root->GetOutput(0, nameWidth, elapsed);
    Clear();
}

const String& Profiler::GetOutput() const
{
    static const String s_unactive = "Unactive";
    static const String s_nothingYet = "No output generated yet.";
    if (!m_active)
        return s_unactive;
    if (!m_error.empty())
        return m_error;
    return m_output.empty() ? s_nothingYet : m_output;
}

void Profiler::OnKeyEvent(const input::KeyEvent& event)
{
    if (event.GetKey() != SDLK_KP_DIVIDE || !event.IsDown() || event.IsRepeat() ||
        event.IsHandled())
        return;
    SetActive(!m_wantsActive);
    m_forceOutput = true;
    event.SetHandled(true);
}
}
