// A recording of a session: all that the program has seen of the world outside, frame by frame. A text
// file of one record a line, so that it can be read, cut and written by hand:
//
//   quib recording 1                  the version of the format; always the first line
//   # anything                        a comment; empty lines are fine too
//   display 1280 1024                 the size of the screen in pixels
//   joystick 0 "Pad" 0 0 -32768       number, name and where each axis stands
//   window 1024 768                   the size of the window at the start, in pixels
//   frame 1520                        a frame begins: events below are read now. Milliseconds.
//   clock 3 1521                      from the third reading of the clock in this frame on it is 1521
//   mods 1                            the modifiers, as SDL counts them, from here on
//   keydown a 97                      key and what it types: 0, or a number in Unicode
//   keyup #7 0                        a key that has no name, by its number
//   press 1 400 300                   button of the mouse, and where, in pixels; 4 and 5 are the wheel
//   release 1 400 300
//   move 401 300 1 0 1                where to, by how much, and SDL's bits of the buttons held
//   axis 0 1 -200                     joystick, axis, where it stands now
//   hat 0 0 4                         joystick, hat, SDL's bits of the directions
//   joydown 0 3                       joystick, button
//   joyup 0 3
//   focus 0 2                         SDL's gain and state: 0 2 is the loss of the keyboard
//   resize 640 480                    the window has another size
//   expose                            the window was uncovered
//   mouse 401 300                     where it stands after this frame's events, from here on
//   paste "some text\n"               what the clipboard gave when it was asked in this frame
//   quit                              the session was ended in this frame, before anything moved
//
// Without the lines from "clock" to "quit" a frame brings nothing. A time never runs back.
#pragma once

#include "util/Failures.h"
#include "util/String.h"

#include <SDL_events.h>

#include <vector>

namespace input
{
// A recording that can't be read or written. Thrown without a line in the log, which is not there yet
// when the command line is read.
class BadRecording final : public BadDataException
{
public:
    using BadDataException::BadDataException;
};

struct RecordedEvent
{
    SDL_Event event;
    int mods; // SDL's modifiers as they were with it
};

struct RecordedFrame
{
    // What the clock says from one of its readings in the frame on.
    struct ClockChange
    {
        unsigned reading; // counts from 0
        unsigned time;    // milliseconds
    };

    unsigned time = 0; // milliseconds
    std::vector<ClockChange> clock;
    std::vector<RecordedEvent> events;
    int mods = 0; // after the events
    int mouseX = 0, mouseY = 0;
    std::vector<util::String> pastes;
    bool isQuit = false;
};

struct RecordedJoystick
{
    int index = 0; // SDL's
    util::String name;
    std::vector<int> axes; // as SDL reads them: -32768 to 32767
};

struct Recording
{
    int displayWidth = 0, displayHeight = 0; // pixels; 0 when unknown, as below
    int windowWidth = 0, windowHeight = 0;
    std::vector<RecordedJoystick> joysticks;
    RecordedFrame start; // what comes before the first frame: its clock only
    std::vector<RecordedFrame> frames;
};

/// @throws BadRecording  "line 12: " and what is wrong there. A last line that has no end is left out:
///                       there the recording program died.
Recording ParseRecording(const util::String& text);

// The lines, without their ends.

extern const char* const RecordingHead;
/// "" for what is not recorded.
util::String PrintEvent(const SDL_Event& event);
util::String PrintJoystick(const RecordedJoystick& joystick);
/// The text in double quotes: what does not print as \xHH, and \n, \t, \" and \\.
util::String Quote(const util::String& text);
}
