// Sessions that are recorded and played again.
#include "input/Replay.h"

#include "MouseEvents.h"
#include "TestSupport.h"
#include "input/InputEvent.h"
#include "input/JoysticksForTest.h"
#include "input/Recorder.h"
#include "input/ScreenFixture.h"
#include "util/Timer.h"

#include <SDL.h>

#include <gtest/gtest.h>

using namespace input;
using util::Timer;

namespace
{
using Notes = std::vector<std::string>;

std::string Text(const math::Vec2& v)
{
    return util::ToString(v.x) + "," + util::ToString(v.y);
}

// Writes down all that it is told, and the time with it.
class TimedListener final : public InputListener
{
public:
    TimedListener()
        : InputListener(50)
    {
    }

    void OnKeyEvent(const KeyEvent& event) override
    {
        InputListener::OnKeyEvent(event);
        Note((event.IsDown() ? "down " : "up ") + util::ToString(event.GetKey()) + " '" +
             event.GetCharacter() + "' " + Text(event.GetPosition()) +
             (event.IsShiftDown() ? " shift" : "") + (event.IsCtrlDown() ? " ctrl" : "") +
             (event.IsRepeat() ? " repeat" : ""));
        if (onKey)
            onKey(event);
    }
    void OnMouseMove(const MouseEvent& event) override
    {
        Note("move " + Text(event.GetPosition()) + " by " + Text(event.GetRelative()) + " with " +
             util::ToString(int(event.GetButtons())));
    }
    void OnOtherEvent(const InputEvent& event) override
    {
        Note("other " + util::ToString(int(event.GetEvent().type)));
    }
    void OnDragBegin(const DragEvent& event) override { Note("begin " + Text(event.GetStart())); }
    void OnDrag(const DragEvent& event) override { Note("drag " + Text(event.GetDelta())); }
    void OnDragEnd(const DragEvent& event) override { Note("end " + Text(event.GetPosition())); }
    void OnClick(const ClickEvent& event) override { Note("click " + Text(event.GetPosition())); }
    void OnJoyAxisEvent(const JoyAxisEvent& event) override
    {
        Note("axis " + util::ToString(event.GetJoystick() ? event.GetJoystick()->GetAxis(0) : -9));
    }

    std::function<void(const KeyEvent&)> onKey;
    Notes notes;

private:
    void Note(const std::string& text)
    {
        notes.push_back(util::ToString(Timer::GetCurrentTime()) + ": " + text);
    }
};

class ReplayTest : public ScreenFixture
{
protected:
    void SetUp() override
    {
        SDL_WarpMouse(0, 0); // where a program believes it to be when it starts
        Drain();
        Listen();
    }
    void TearDown() override
    {
        listener = nullptr;
        recorder.reset();
        replay.reset();
        PluggedIn().clear();
        input->LookForJoysticks();
        SDL_SetModState(KMOD_NONE);
        // Whatever is down.
        for (int key = 0; key < KEYBUFFERSIZE; ++key)
            if (input->IsKeyDown(key))
                input->OnKeyEvent(KeyEvent(key, 0, false, math::Vec2()));
    }

    void Listen()
    {
        listener = QUIB_NEW TimedListener;
        input->AddListener(util::WeakPtr<InputListener>(listener.get()));
    }
    /// What came in so far.
    Notes Take()
    {
        Notes notes;
        std::swap(notes, listener->notes);
        return notes;
    }
    void Drain()
    {
        SDL_Event event;
        while (SDL_PollEvent(&event))
            ;
        input->PumpEvents();
    }

    void StartRecorder() { recorder = std::make_unique<Recorder>(dir / "rec"); }
    void StartReplay(bool quitAfter = false)
    {
        recorder.reset();
        replay = std::make_unique<Replay>(ParseRecording(test::Slurp(dir / "rec")), quitAfter);
    }
    void Play(const std::string& lines, bool quitAfter = false)
    {
        test::Spit(dir / "rec", RecordingHead + ("\n" + lines));
        StartReplay(quitAfter);
    }

    // As the window system brings them.
    void Send(const SDL_Event& event) { SDL_GetEventFilter()(&event); }
    void SendKey(bool down, SDLKey key, int unicode = 0)
    {
        SDL_Event event = {};
        event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
        event.key.keysym.sym = key;
        event.key.keysym.unicode = unicode;
        Send(event);
    }
    void SendButton(bool down, Uint8 button, int x, int y)
    {
        Send(test::ButtonEvent(down, button, x, y));
    }
    void SendMove(int x, int y, int dx, int dy)
    {
        SDL_Event event = test::MotionEvent(x, y, dx, dy);
        event.motion.state = 1;
        Send(event);
    }
    void SendOther(Uint8 type)
    {
        SDL_Event event = {};
        event.type = type;
        event.resize.w = 100;
        event.resize.h = 50;
        Send(event);
    }
    /// A frame of the program: it pumps, and looks at the clock some times.
    void Frame(int readings = 3)
    {
        input->PumpEvents();
        for (int i = 0; i < readings; ++i)
        {
            listener->notes.push_back("clock " + util::ToString(Timer::GetCurrentTime()));
            SDL_Delay(2);
        }
        listener->notes.push_back("mouse " + Text(input->GetMousePos()) + " shift " +
                                  util::ToString(input->CheckModifier(ModShift)));
    }

    test::TempDir dir;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<Replay> replay;
    util::SharedPtr<TimedListener> listener;
};
}

TEST_F(ReplayTest, TellsTheProgramAllThatTheSessionDidAndTheSameTimes)
{
    StartRecorder();
    listener->notes.push_back("clock " + util::ToString(Timer::GetCurrentTime()));
    const auto session = [this](bool isLive)
    {
        for (int frame = 0; frame < 6; ++frame)
        {
            if (isLive && frame == 0)
            {
                SDL_SetModState(KMOD_LSHIFT);
                SendKey(true, SDLK_LSHIFT);
                SendKey(true, SDLK_a, 'A');
                SendKey(true, SDLK_a, 'A'); // a repeat
                SendKey(false, SDLK_a);
            }
            if (isLive && frame == 1)
            {
                SendButton(true, 1, 10, 20);
                SendMove(30, 40, 20, 20);
                SDL_SetModState(KMOD_NONE);
                SendKey(false, SDLK_LSHIFT);
                SendMove(31, 40, 1, 0);
            }
            if (isLive && frame == 2)
            {
                SendOther(SDL_VIDEORESIZE);
                SendButton(false, 1, 31, 41);
                SDL_WarpMouse(77, 88);
            }
            if (isLive && frame == 3)
            {
                SendButton(true, 4, 5, 5);
                SendButton(false, 4, 5, 5);
                SendOther(SDL_ACTIVEEVENT);
                SendOther(SDL_VIDEOEXPOSE);
            }
            if (isLive && frame == 4)
            {
                SendButton(true, 3, 1, 1);
                SendButton(false, 3, 1, 1);
            }
            Frame();
        }
    };
    session(true);
    const Notes recorded = Take();
    EXPECT_LT(30u, recorded.size());

    recorder.reset();
    SDL_WarpMouse(0, 0);
    Drain();
    Take();
    StartReplay();
    listener->notes.push_back("clock " + util::ToString(Timer::GetCurrentTime()));
    session(false);
    EXPECT_EQ(recorded, Take());
    EXPECT_FALSE(replay->IsOver());
    input->PumpEvents();
    EXPECT_TRUE(replay->IsOver());
}

TEST_F(ReplayTest, AnEventIsInTheFileBeforeTheProgramActsOnIt)
{
    // The event may be the one that brings the program down.
    StartRecorder();
    std::string seen;
    listener->onKey = [&](const KeyEvent&) { seen = test::Slurp(dir / "rec"); };
    SendKey(true, SDLK_F5);
    Frame(0);
    EXPECT_NE(std::string::npos, seen.find("\nkeydown f5 0\n")) << seen;
    EXPECT_LT(seen.find("\nframe "), seen.find("\nkeydown"));
}

TEST_F(ReplayTest, ARecordingThatCanNotBeWrittenSaysSoAtOnce)
{
    try
    {
        Recorder nowhere(dir / "no/folder");
        ADD_FAILURE();
    }
    catch (BadRecording& e)
    {
        EXPECT_EQ("can't write " + (dir / "no/folder") + ": No such file or directory",
                  util::String(e.what()));
    }
    EXPECT_FALSE(Recorder::Get());
}

TEST_F(ReplayTest, AFullDiskEndsTheRecordingWithOneLineInTheLog)
{
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "there is no /dev/full";
    test::LogCapture log(logging::LogError);
    Recorder full("/dev/full");
    full.NoteDisplay(1, 1);
    full.NoteDisplay(1, 1);
    EXPECT_EQ(Notes{"!! ERROR: Failed to write the recording /dev/full: it ends here"},
              log.Lines());
}

TEST_F(ReplayTest, TheProgramsClockIsTheRecordings)
{
    Play("clock 0 15\nclock 2 17\nframe 1000\nclock 2 1001\nclock 4 1500\nframe 2000\n");
    const auto read = [](int count)
    {
        std::vector<double> times;
        for (int i = 0; i < count; ++i)
            times.push_back(Timer::GetCurrentTime());
        return times;
    };
    EXPECT_EQ((std::vector<double>{0.015, 0.015, 0.017, 0.017}), read(4));
    input->PumpEvents(); // reads it once
    EXPECT_EQ(1, input->GetPumpTime());
    EXPECT_EQ((std::vector<double>{1, 1.001, 1.001, 1.5, 1.5}), read(5));
    input->PumpEvents();
    EXPECT_EQ((std::vector<double>{2, 2}), read(2)) << "each frame finds its own time";
}

TEST_F(ReplayTest, AfterwardsTimeGoesOnFromThere)
{
    Play("frame 1000000\n");
    input->PumpEvents();
    EXPECT_EQ(1000, Timer::GetCurrentTime());
    input->PumpEvents();
    EXPECT_NEAR(1000, Timer::GetCurrentTime(), 0.5);
    const double before = Timer::GetCurrentTime();
    SDL_Delay(20);
    EXPECT_LT(before, Timer::GetCurrentTime());
}

TEST_F(ReplayTest, MeanwhileTheUsersOwnInputPassesBy)
{
    Play("frame 0\nframe 10\nmods 1\nmouse 3 4\n");
    SendKey(true, SDLK_a, 'a');
    SDL_WarpMouse(50, 60);
    SDL_SetModState(KMOD_LCTRL);
    input->PumpEvents();
    EXPECT_EQ(math::Vec2(0, 0), input->GetMousePos());
    EXPECT_EQ(0, input->CheckModifier(static_cast<Modifier>(99))) << "the mask as it is";
    input->PumpEvents();
    EXPECT_EQ(math::Vec2(3, 4), input->GetMousePos());
    EXPECT_EQ(1, input->CheckModifier(static_cast<Modifier>(99)));
    EXPECT_EQ(Notes(), listener->notes);

    SendKey(true, SDLK_b, 'b');
    input->PumpEvents(); // over
    EXPECT_TRUE(input->IsKeyDown(SDLK_b));
    EXPECT_EQ(math::Vec2(50, 60), input->GetMousePos());
    EXPECT_EQ(KMOD_LCTRL, input->CheckModifier(static_cast<Modifier>(99)));
}

TEST_F(ReplayTest, MeanwhileTheWindowCanBeClosedAndOtherProgramsPaste)
{
    Play("frame 0\nframe 10\n");
    SendOther(SDL_QUIT);
    input->PumpEvents();
    ASSERT_EQ(1u, listener->notes.size());
    EXPECT_EQ("0: other 12", listener->notes[0]);
}

TEST_F(ReplayTest, AWindowThatWasResizedMeanwhileIsHeardOfAfterwards)
{
    Play("frame 0\nframe 10\n");
    SendOther(SDL_VIDEORESIZE);
    input->PumpEvents();
    input->PumpEvents();
    EXPECT_EQ(Notes(), listener->notes);
    input->PumpEvents();
    ASSERT_EQ(1u, listener->notes.size());
    EXPECT_NE(std::string::npos, listener->notes[0].find(": other 16"));
}

TEST_F(ReplayTest, AfterwardsNothingIsHeldDown)
{
    Play("frame 0\nkeydown a 97\npress 1 10 10\nmove 30 10 20 0 1\n");
    input->PumpEvents();
    EXPECT_TRUE(input->IsKeyDown(SDLK_a));
    Take();
    input->PumpEvents();
    EXPECT_FALSE(input->IsKeyDown(SDLK_a));
    EXPECT_FALSE(input->IsKeyDown(MouseLeft));
    ASSERT_FALSE(listener->notes.empty());
    EXPECT_NE(std::string::npos, listener->notes.back().find("end 0,0")) << "the drag is over";
}

TEST_F(ReplayTest, CanEndTheProgramWhereTheSessionEnded)
{
    Play("frame 0\nframe 10\nkeydown a 97\nquit\n", true);
    EXPECT_FALSE(replay->WantsQuit());
    input->PumpEvents();
    EXPECT_FALSE(replay->WantsQuit());
    input->PumpEvents();
    EXPECT_TRUE(replay->WantsQuit());
    EXPECT_TRUE(input->IsKeyDown(SDLK_a));
}

TEST_F(ReplayTest, CanEndTheProgramWhenTheFramesAreOverAndThenMovesNothing)
{
    Play("frame 0\nkeydown a 97\n", true);
    input->PumpEvents();
    EXPECT_FALSE(replay->WantsQuit());
    SendKey(true, SDLK_b, 'b');
    Take();
    input->PumpEvents();
    EXPECT_TRUE(replay->WantsQuit());
    EXPECT_EQ(Notes(), listener->notes);
    EXPECT_TRUE(input->IsKeyDown(SDLK_a)) << "as it was";
}

TEST_F(ReplayTest, GoesOnUnlessItWasAskedToEndTheProgram)
{
    Play("frame 0\nquit\n");
    input->PumpEvents();
    input->PumpEvents();
    EXPECT_TRUE(replay->IsOver());
    EXPECT_FALSE(replay->WantsQuit());
}

TEST_F(ReplayTest, ARecordingWithoutFramesIsOverAtOnce)
{
    Play("");
    EXPECT_EQ(0, Timer::GetCurrentTime());
    EXPECT_EQ(0u, replay->GetTimeToNextFrame());
    input->PumpEvents();
    EXPECT_TRUE(replay->IsOver());
}

TEST_F(ReplayTest, WhatWasPastedComesFromTheRecording)
{
    input->SetClipboardText("mine");
    StartRecorder();
    Frame(0);
    EXPECT_EQ("mine", input->GetClipboardText());
    input->SetClipboardText("caf\xe9\n");
    EXPECT_EQ("caf\xe9\n", input->GetClipboardText());
    Frame(0);
    StartReplay();
    input->SetClipboardText("another");
    EXPECT_EQ("another", input->GetClipboardText()) << "before the first frame";
    Frame(0);
    EXPECT_EQ("mine", input->GetClipboardText());
    EXPECT_EQ("caf\xe9\n", input->GetClipboardText());
    EXPECT_EQ("another", input->GetClipboardText()) << "nothing more was recorded";
    Frame(0);
    EXPECT_EQ("another", input->GetClipboardText());
    input->SetClipboardText("");
}

TEST_F(ReplayTest, JoysticksNeedNotBeThere)
{
    ASSERT_EQ(0, SDL_InitSubSystem(SDL_INIT_JOYSTICK));
    PluggedIn().push_back({"First", {}, 0, 0, 0, false}); // can't be opened
    PluggedIn().push_back({"Pad", {8192, 0}, 4, 0, 1});
    StartRecorder();
    input->InitializeSDL();
    const auto frames = [this](bool isLive)
    {
        for (int value : {0, 32767, -32768})
        {
            if (isLive)
            {
                PluggedIn()[1].axes[0] = value;
                SDL_Event event = {};
                event.type = SDL_JOYAXISMOTION;
                event.jaxis.which = 1;
                event.jaxis.axis = 0;
                event.jaxis.value = value;
                Send(event);
            }
            Frame(0);
            listener->notes.push_back(input->GetJoystick(1)->GetName() +
                                      Text(input->GetJoystick(1)->GetAxis(0, 1)));
        }
    };
    frames(true);
    const Notes recorded = Take();
    PluggedIn().clear();
    SDL_QuitSubSystem(SDL_INIT_JOYSTICK);

    StartReplay();
    input->InitializeSDL();
    EXPECT_FALSE(input->GetJoystick(0));
    ASSERT_TRUE(input->GetJoystick(1));
    EXPECT_EQ(0, input->GetJoystick(1)->GetAxis(0)) << "its centre is where it stood";
    frames(false);
    EXPECT_EQ(recorded, Take());
}

TEST_F(ReplayTest, FramesComeAsFastAsTheyDid)
{
    Play("frame 500\nframe 540\nframe 100000\n");
    EXPECT_EQ(0u, replay->GetTimeToNextFrame());
    input->PumpEvents();
    const unsigned first = replay->GetTimeToNextFrame();
    EXPECT_LE(first, 40u);
    EXPECT_GT(first, 20u);
    SDL_Delay(45);
    EXPECT_EQ(0u, replay->GetTimeToNextFrame()) << "late already";
    input->PumpEvents();
    EXPECT_EQ(1000u, replay->GetTimeToNextFrame()) << "nobody waits for a machine that slept";
    input->PumpEvents();
    EXPECT_EQ(0u, replay->GetTimeToNextFrame());
}

TEST_F(ReplayTest, AnEventThatFailsIsLoggedAndTheNextOnesArrive)
{
    listener->onKey = [](const KeyEvent& event)
    {
        if (event.GetKey() == SDLK_a)
            throw std::runtime_error("no such thing");
    };
    test::LogCapture log(logging::LogError);
    SendKey(true, SDLK_a);
    SendKey(true, SDLK_b);
    input->PumpEvents();
    EXPECT_TRUE(log.Has("!! ERROR: An event failed: no such thing")) << log.Text();
    EXPECT_EQ(2u, listener->notes.size());
}

TEST_F(ReplayTest, AFrameEndsThoughEventsComeAsFastAsTheyAreHandled)
{
    int handled = 0;
    listener->onKey = [&](const KeyEvent&)
    {
        // As many as a hand makes: it stops in the end, or the test would not.
        if (++handled < 1000)
            SendKey(handled % 2, SDLK_a);
    };
    SendKey(true, SDLK_a);
    input->PumpEvents();
    EXPECT_EQ(1, handled);
    input->PumpEvents();
    EXPECT_EQ(2, handled) << "what came meanwhile is not lost";
}
