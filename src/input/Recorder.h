// Writes a recording while the program runs: see input/Recording.h. Each line is in the file before the
// program goes on, so that a crash leaves all that led to it.
#pragma once

#include "input/Recording.h"

#include <cstdio>

namespace input
{
class Recorder
{
public:
    /// From here on the program's clock is recorded too, so: before all services.
    /// @throws BadRecording  when the file can't be written
    explicit Recorder(const util::String& path);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// The one at work; null when there is none.
    static Recorder* Get();

    void NoteDisplay(int width, int height);
    void NoteJoystick(const RecordedJoystick& joystick);
    void NoteWindow(int width, int height);

    /// The next reading of the clock is its time.
    void BeginFrame();
    /// To be told before the program acts on it.
    void NoteEvent(const SDL_Event& event, int mods);
    /// How all stands after the frame's events.
    void NoteState(int mods, int mouseX, int mouseY);
    void NotePaste(const util::String& text);
    /// The program ends in this frame, after its events and before anything else.
    void NoteQuit();

private:
    static unsigned ReadClock(unsigned real);
    void NoteClock(unsigned time);
    void NoteMods(int mods);
    void Write(const util::String& line);

    util::String m_path;
    std::FILE* m_file;
    bool m_isFrameBegun = false; // its time is not known yet
    unsigned m_reading = 0;      // of the clock in this frame
    unsigned m_time = 0;         // milliseconds; as last written
    int m_mods = 0, m_mouseX = 0, m_mouseY = 0;
};
}
