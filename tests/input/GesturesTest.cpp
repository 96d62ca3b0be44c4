// Clicks and drags from presses, releases and motion.
#include "input/Input.h"

#include "MouseEvents.h"
#include "input/InputEvent.h"
#include "input/ScreenFixture.h"
#include "util/Timer.h"

#include <SDL.h>

#include <gtest/gtest.h>

using namespace input;
using math::Vec2;

namespace
{
std::string Text(const Vec2& v)
{
    return util::ToString(v.x) + "," + util::ToString(v.y);
}

// Writes down each gesture as "what button start delta position".
class GestureListener final : public InputListener
{
public:
    explicit GestureListener(int priority = 50)
        : InputListener(priority)
    {
    }

    void OnKeyEvent(const KeyEvent& event) override
    {
        InputListener::OnKeyEvent(event);
        if (event.IsDown() ? takesPresses : takesReleases)
            event.SetHandled(true);
        keyHandled = event.IsHandled();
    }
    void OnMouseMove(const MouseEvent& event) override
    {
        if (takesMoves)
            event.SetHandled(true);
    }
    void OnClick(const ClickEvent& event) override
    {
        notes.push_back("click " + util::ToString(event.GetButton()) + " " +
                        Text(event.GetPosition()) + " x" + util::ToString(event.GetClickCount()));
        event.SetHandled(takesGestures);
    }
    void OnDragBegin(const DragEvent& event) override { Note("begin", event); }
    void OnDrag(const DragEvent& event) override { Note("drag", event); }
    void OnDragEnd(const DragEvent& event) override { Note("end", event); }

    bool takesPresses = false, takesReleases = false, takesMoves = false, takesGestures = false;
    bool keyHandled = false;
    std::vector<std::string> notes;

private:
    void Note(const char* what, const DragEvent& event)
    {
        notes.push_back(what + (" " + util::ToString(event.GetButton())) + " from " +
                        Text(event.GetStart()) + " by " + Text(event.GetDelta()) + " to " +
                        Text(event.GetPosition()));
        event.SetHandled(takesGestures);
    }
};

using Notes = std::vector<std::string>;
const float TimeLimit = 0.05f;

class GesturesTest : public ScreenFixture
{
protected:
    void SetUp() override
    {
        input->SetClickLimits([] { return Input::ClickLimits{TimeLimit, 3.5f}; });
        MoveMouse(0, 0);
        listener = QUIB_NEW GestureListener;
        input->AddListener(util::WeakPtr<InputListener>(listener.get()));
    }
    void TearDown() override
    {
        for (Uint8 button = 1; button <= 5; ++button)
            Release(button, 0, 0);
    }

    /// The mouse as SDL has it, without a word to the input.
    void MoveMouse(int x, int y)
    {
        const SDL_EventFilter filter = SDL_GetEventFilter();
        SDL_SetEventFilter(nullptr);
        SDL_WarpMouse(x, y);
        SDL_SetEventFilter(filter); // empties the queue
    }
    void Press(Uint8 button, int x, int y)
    {
        input->HandleEvent(test::ButtonEvent(true, button, x, y));
    }
    void Release(Uint8 button, int x, int y)
    {
        input->HandleEvent(test::ButtonEvent(false, button, x, y));
    }
    bool Move(int x, int y, int dx, int dy)
    {
        const MouseEvent event(0, Vec2(x, y), Vec2(dx, dy));
        input->OnMouseMove(event);
        return event.IsHandled();
    }
    void WaitOutTheClick()
    {
        const double end = util::Timer::GetCurrentTime() + TimeLimit + 0.01;
        while (util::Timer::GetCurrentTime() < end)
            SDL_Delay(5);
        input->PumpEvents();
    }

    util::SharedPtr<GestureListener> listener;
};
}

TEST_F(GesturesTest, APressAndReleaseInOnePlaceAreOneClickAndNoDrag)
{
    Press(1, 100, 50);
    Release(1, 102, 51);
    EXPECT_EQ(Notes{"click 324 100,50 x1"}, listener->notes);
}

TEST_F(GesturesTest, EveryRealButtonClicksAndNoOtherDoes)
{
    for (Uint8 button : {2, 3, 4, 5, 6})
    {
        Press(button, 5, 6);
        Release(button, 5, 6);
    }
    EXPECT_EQ((Notes{"click 325 5,6 x1", "click 326 5,6 x1"}), listener->notes);
}

TEST_F(GesturesTest, TwoQuickClicksAreTwoOfCountOne)
{
    for (int i = 0; i < 2; ++i)
    {
        Press(1, 5, 5);
        Release(1, 5, 5);
    }
    EXPECT_EQ((Notes{"click 324 5,5 x1", "click 324 5,5 x1"}), listener->notes);
}

TEST_F(GesturesTest, ADragHasTheWholeWayFirstAndThenTheStepsAndEndsWithout)
{
    Press(1, 100, 50);
    Move(101, 50, 1, 0);
    Move(110, 50, 9, 0);
    Move(110, 55, 0, 5);
    Release(1, 110, 56);
    EXPECT_EQ(
        (Notes{"begin 324 from 100,50 by 0,0 to 100,50", "drag 324 from 100,50 by 10,0 to 110,50",
               "drag 324 from 100,50 by 0,5 to 110,55", "end 324 from 100,50 by 0,0 to 110,56"}),
        listener->notes);
}

TEST_F(GesturesTest, MotionOfExactlyTheToleranceIsAClickStill)
{
    input->SetClickLimits([] { return Input::ClickLimits{TimeLimit, 3.0f}; });
    Press(1, 100, 50);
    Move(103, 50, 3, 0);
    Release(1, 103, 50);
    EXPECT_EQ(Notes{"click 324 100,50 x1"}, listener->notes);
    Press(1, 100, 50);
    Move(104, 50, 4, 0);
    EXPECT_EQ(3u, listener->notes.size());
}

TEST_F(GesturesTest, APressHeldStillBecomesADragWithoutMotion)
{
    MoveMouse(30, 40);
    Press(3, 30, 40);
    WaitOutTheClick();
    EXPECT_EQ(Notes{"begin 326 from 30,40 by 0,0 to 30,40"}, listener->notes);
    Release(3, 30, 40);
    EXPECT_EQ("end 326 from 30,40 by 0,0 to 30,40", listener->notes.back());
    EXPECT_EQ(2u, listener->notes.size());
}

TEST_F(GesturesTest, APressHeldAndMovedALittleBecomesADragByThatMuch)
{
    MoveMouse(32, 41);
    Press(1, 30, 40);
    WaitOutTheClick();
    EXPECT_EQ(
        (Notes{"begin 324 from 30,40 by 0,0 to 30,40", "drag 324 from 30,40 by 2,1 to 32,41"}),
        listener->notes);
}

TEST_F(GesturesTest, BeforeTheTimeIsUpNothingHappens)
{
    input->SetClickLimits([] { return Input::ClickLimits{1000, 3.5f}; });
    Press(1, 30, 40);
    input->PumpEvents();
    EXPECT_EQ(Notes(), listener->notes);
}

TEST_F(GesturesTest, APressThatSomebodyTakesMakesNeitherClickNorDrag)
{
    listener->takesPresses = true;
    const util::SharedPtr<GestureListener> below = QUIB_NEW GestureListener(10);
    input->AddListener(util::WeakPtr<InputListener>(below.get()));
    Press(1, 30, 40);
    EXPECT_FALSE(below->IsKeyDown(MouseLeft));
    Move(130, 40, 100, 0);
    WaitOutTheClick();
    Release(1, 130, 40);
    EXPECT_EQ(Notes(), listener->notes);
}

TEST_F(GesturesTest, AReleaseThatSomebodyTakesEndsTheDragAllTheSame)
{
    Press(1, 0, 0);
    Move(10, 0, 10, 0);
    listener->takesReleases = true;
    Release(1, 10, 0);
    ASSERT_EQ(3u, listener->notes.size());
    EXPECT_EQ("end 324 from 0,0 by 0,0 to 10,0", listener->notes[2]);
    listener->takesReleases = false;
    Move(20, 0, 10, 0);
    EXPECT_EQ(3u, listener->notes.size());
}

TEST_F(GesturesTest, AReleaseThatSomebodyTakesIsNoClickAndDisarms)
{
    Press(1, 0, 0);
    listener->takesReleases = true;
    Release(1, 0, 0);
    listener->takesReleases = false;
    Move(100, 0, 100, 0);
    WaitOutTheClick();
    EXPECT_EQ(Notes(), listener->notes);
    Press(3, 1, 1);
    Release(3, 1, 1);
    EXPECT_EQ(Notes{"click 326 1,1 x1"}, listener->notes);
}

TEST_F(GesturesTest, OtherButtonsDuringADragChangeNothing)
{
    Press(1, 0, 0);
    Move(10, 0, 10, 0);
    Press(3, 10, 0);
    Release(3, 10, 0);
    Move(11, 0, 1, 0);
    EXPECT_EQ((Notes{"begin 324 from 0,0 by 0,0 to 0,0", "drag 324 from 0,0 by 10,0 to 10,0",
                     "drag 324 from 0,0 by 1,0 to 11,0"}),
              listener->notes);
}

TEST_F(GesturesTest, AnotherButtonsReleaseDoesNotEndAnArmedPress)
{
    Press(1, 0, 0);
    Press(3, 0, 0);
    Release(3, 0, 0);
    EXPECT_EQ(Notes(), listener->notes);
    Release(1, 0, 0);
    EXPECT_EQ(Notes{"click 324 0,0 x1"}, listener->notes);
}

TEST_F(GesturesTest, AGestureThatIsTakenMakesItsMouseEventTaken)
{
    listener->takesGestures = true;
    Press(1, 0, 0);
    EXPECT_FALSE(Move(1, 0, 1, 0));
    EXPECT_TRUE(Move(10, 0, 9, 0));
    EXPECT_TRUE(Move(11, 0, 1, 0));
    const KeyEvent release(MouseLeft, 0, false, Vec2(11, 0));
    input->OnKeyEvent(release);
    EXPECT_TRUE(release.IsHandled());

    input->OnKeyEvent(KeyEvent(MouseLeft, 0, true, Vec2(0, 0)));
    const KeyEvent click(MouseLeft, 0, false, Vec2(0, 0));
    input->OnKeyEvent(click);
    EXPECT_TRUE(click.IsHandled());
}

TEST_F(GesturesTest, AMotionThatSomebodyTakesDragsNothing)
{
    listener->takesMoves = true;
    Press(1, 0, 0);
    Move(100, 0, 100, 0);
    EXPECT_EQ(Notes(), listener->notes);
    listener->takesMoves = false;
    Move(101, 0, 1, 0);
    EXPECT_EQ("drag 324 from 0,0 by 101,0 to 101,0", listener->notes.back());
}

namespace
{
// As the window system brings them: they wait for the next frame.
class SlowFrameTest : public GesturesTest
{
protected:
    void Wait(const SDL_Event& event) { SDL_GetEventFilter()(&event); }
    void WaitPress(Uint8 button, int x, int y) { Wait(test::ButtonEvent(true, button, x, y)); }
    void WaitRelease(Uint8 button, int x, int y) { Wait(test::ButtonEvent(false, button, x, y)); }
    void WaitMove(int x, int y, int dx, int dy) { Wait(test::MotionEvent(x, y, dx, dy)); }
};
}

TEST_F(SlowFrameTest, AClickShorterThanAFrameIsOne)
{
    WaitPress(1, 5, 6);
    WaitRelease(1, 5, 6);
    input->PumpEvents();
    EXPECT_EQ(Notes{"click 324 5,6 x1"}, listener->notes);
}

TEST_F(SlowFrameTest, TwoClicksInAFrameAreTwo)
{
    for (int i = 0; i < 2; ++i)
    {
        WaitPress(1, 5, 6);
        WaitRelease(1, 5, 6);
    }
    input->PumpEvents();
    EXPECT_EQ((Notes{"click 324 5,6 x1", "click 324 5,6 x1"}), listener->notes);
}

TEST_F(SlowFrameTest, AWholeDragInAFrameKeepsAllItsSteps)
{
    WaitPress(1, 100, 50);
    WaitMove(110, 50, 10, 0);
    WaitMove(110, 55, 0, 5);
    WaitRelease(1, 110, 55);
    WaitMove(200, 200, 90, 145);
    input->PumpEvents();
    EXPECT_EQ(
        (Notes{"begin 324 from 100,50 by 0,0 to 100,50", "drag 324 from 100,50 by 10,0 to 110,50",
               "drag 324 from 100,50 by 0,5 to 110,55", "end 324 from 100,50 by 0,0 to 110,55"}),
        listener->notes);
}

TEST_F(SlowFrameTest, AReleaseThatWaitedOutTheClicksTimeIsAClickStill)
{
    // The frame was slow, and not the hand.
    WaitPress(1, 5, 6);
    input->PumpEvents();
    WaitRelease(1, 5, 6);
    SDL_Delay(int(TimeLimit * 1000) + 10);
    input->PumpEvents();
    EXPECT_EQ(Notes{"click 324 5,6 x1"}, listener->notes);
}

TEST_F(SlowFrameTest, HundredsOfStepsOfAStrokeAllArriveInOrder)
{
    WaitPress(1, 0, 0);
    for (int i = 1; i <= 600; ++i)
        WaitMove(10 * i, 0, 10, 0);
    WaitRelease(1, 6000, 0);
    input->PumpEvents();
    ASSERT_EQ(602u, listener->notes.size());
    for (int i = 1; i <= 600; ++i)
        ASSERT_EQ("drag 324 from 0,0 by 10,0 to " + util::ToString(10 * i) + ",0",
                  listener->notes[i]);
}

TEST_F(SlowFrameTest, EachEventHasTheModifiersOfItsTime)
{
    // Shift was down for the first key and up for the second, long before anybody looked.
    std::vector<bool> shifts;
    class ShiftListener final : public InputListener
    {
    public:
        explicit ShiftListener(std::vector<bool>* shifts)
            : InputListener(50)
            , m_shifts(shifts)
        {
        }
        void OnKeyEvent(const KeyEvent& event) override
        {
            if (event.GetKey() == SDLK_a && event.IsDown())
                m_shifts->push_back(event.IsShiftDown());
        }

    private:
        std::vector<bool>* m_shifts;
    };
    const util::SharedPtr<ShiftListener> shiftListener = QUIB_NEW ShiftListener(&shifts);
    input->AddListener(util::WeakPtr<InputListener>(shiftListener.get()));
    const auto key = [](Uint8 type, SDLKey sym)
    {
        SDL_Event event = {};
        event.type = type;
        event.key.keysym.sym = sym;
        event.key.keysym.unicode = 'A';
        SDL_GetEventFilter()(&event);
    };
    SDL_SetModState(KMOD_LSHIFT);
    key(SDL_KEYDOWN, SDLK_LSHIFT);
    key(SDL_KEYDOWN, SDLK_a);
    key(SDL_KEYUP, SDLK_a);
    SDL_SetModState(KMOD_NONE);
    key(SDL_KEYUP, SDLK_LSHIFT);
    key(SDL_KEYDOWN, SDLK_a);
    key(SDL_KEYUP, SDLK_a);
    input->PumpEvents();
    EXPECT_EQ((std::vector<bool>{true, false}), shifts);
}
