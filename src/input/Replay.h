// Plays a recording: in place of the world outside it tells the program the time and what the user did.
// When it is over the world is back, and time goes on from where the recording ended.
#pragma once

#include "input/Recording.h"

namespace input
{
class Replay
{
public:
    /// From here on the program's clock is that of the recording, so: before all services.
    /// @param quitAfter  the program is to end where the recording does
    /// @param isPaced    its frames last as long as they did; else no longer than they must
    Replay(Recording recording, bool quitAfter, bool isPaced = true);
    ~Replay();
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    /// The one there is, over or not; null when there is none.
    static Replay* Get();

    const Recording& GetRecording() const { return m_recording; }
    /// Goes on to the next frame. @return false when there is none, and the replay is over
    bool NextFrame();
    bool IsOver() const { return m_isOver; }
    /// Of the frame that is played; the first NextFrame makes one.
    const RecordedFrame& GetFrame() const { return m_recording.frames[m_frame]; }

    bool HasPaste() const;
    /// What the clipboard gave next in this frame.
    const util::String& TakePaste();

    bool WantsQuit() const;
    /// Milliseconds until the next frame's turn, so that all runs as fast as it did.
    unsigned GetTimeToNextFrame() const;

private:
    static unsigned ReadClock(unsigned real);
    unsigned ReadClockOfFrame();

    Recording m_recording;
    bool m_quitAfter;
    bool m_isPaced;
    bool m_isStarted = false; // frames are played
    bool m_isOver = false;
    size_t m_frame = 0;
    unsigned m_realStart = 0; // milliseconds; of the machine at the first frame
    // The clock in this frame.
    unsigned m_reading = 0;
    size_t m_change = 0;
    unsigned m_time = 0;
    unsigned m_offset = 0; // from the machine's clock to the program's, when it is over
    size_t m_paste = 0;
};
}
