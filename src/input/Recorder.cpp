#include "input/Recorder.h"

#include "logging/Log.h"
#include "util/Timer.h"

#include <cerrno>
#include <cstring>

namespace input
{
namespace
{
Recorder* s_recorder = nullptr;
}

Recorder* Recorder::Get()
{
    return s_recorder;
}

Recorder::Recorder(const util::String& path)
    : m_path(path)
    , m_file(std::fopen(path.c_str(), "we"))
{
    if (!m_file)
        throw BadRecording("can't write " + path + ": " + std::strerror(errno));
    std::setvbuf(m_file, nullptr, _IOLBF, 1 << 16);
    s_recorder = this;
    Write(RecordingHead);
    util::Timer::SetSource(ReadClock);
}

Recorder::~Recorder()
{
    util::Timer::SetSource(nullptr);
    s_recorder = nullptr;
    if (m_file)
        std::fclose(m_file);
}

void Recorder::Write(const util::String& line)
{
    if (!m_file)
        return;
    std::fputs((line + "\n").c_str(), m_file);
    if (!std::ferror(m_file))
        return;
    // What is there so far can be played.
    std::fclose(m_file);
    m_file = nullptr;
    Log(logging::LogError, "Failed to write the recording " + m_path + ": it ends here");
}

void Recorder::NoteDisplay(int width, int height)
{
    Write("display " + util::ToString(width) + " " + util::ToString(height));
}

void Recorder::NoteJoystick(const RecordedJoystick& joystick)
{
    Write(PrintJoystick(joystick));
}

void Recorder::NoteWindow(int width, int height)
{
    Write("window " + util::ToString(width) + " " + util::ToString(height));
}

void Recorder::BeginFrame()
{
    m_isFrameBegun = true;
}

unsigned Recorder::ReadClock(unsigned real)
{
    s_recorder->NoteClock(real);
    return real;
}

void Recorder::NoteClock(unsigned time)
{
    if (m_isFrameBegun)
    {
        m_isFrameBegun = false;
        m_reading = 0;
        m_time = time;
        Write("frame " + util::ToString(time));
    }
    else if (time != m_time)
    {
        m_time = time;
        Write("clock " + util::ToString(m_reading) + " " + util::ToString(time));
    }
    ++m_reading;
}

void Recorder::NoteMods(int mods)
{
    if (mods == m_mods)
        return;
    m_mods = mods;
    Write("mods " + util::ToString(mods));
}

void Recorder::NoteEvent(const SDL_Event& event, int mods)
{
    const util::String line = PrintEvent(event);
    if (line.empty())
        return;
    NoteMods(mods);
    Write(line);
}

void Recorder::NoteState(int mods, int mouseX, int mouseY)
{
    NoteMods(mods);
    if (mouseX == m_mouseX && mouseY == m_mouseY)
        return;
    m_mouseX = mouseX;
    m_mouseY = mouseY;
    Write("mouse " + util::ToString(mouseX) + " " + util::ToString(mouseY));
}

void Recorder::NotePaste(const util::String& text)
{
    Write("paste " + Quote(text));
}

void Recorder::NoteQuit()
{
    Write("quit");
}
}
