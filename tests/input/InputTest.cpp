#include "input/Input.h"

#include "TestSupport.h"
#include "input/ListenersForTest.h"
#include "input/ScreenFixture.h"

#include <SDL.h>
#include <SDL_syswm.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace input;

namespace
{
using Notes = std::vector<std::string>;

SDL_Event KeyOf(Uint8 type, SDLKey key)
{
    SDL_Event event = {};
    event.type = type;
    event.key.keysym.sym = key;
    return event;
}

SDL_Event Button(Uint8 type, Uint8 button, Uint16 x = 0, Uint16 y = 0)
{
    SDL_Event event = {};
    event.type = type;
    event.button.button = button;
    event.button.x = x;
    event.button.y = y;
    return event;
}

SDL_Event Resize(int w, int h)
{
    SDL_Event event = {};
    event.type = SDL_VIDEORESIZE;
    event.resize.w = w;
    event.resize.h = h;
    return event;
}

// Keeps what it last got.
class KeepingListener : public InputListener
{
public:
    KeepingListener()
        : InputListener(50)
    {
    }
    void OnKeyEvent(const KeyEvent& event) override
    {
        InputListener::OnKeyEvent(event);
        keys.push_back(event);
    }
    void OnMouseMove(const MouseEvent& event) override { moves.push_back(event); }
    void OnOtherEvent(const InputEvent& event) override { others.push_back(event.GetEvent()); }

    std::vector<KeyEvent> keys;
    std::vector<MouseEvent> moves;
    std::vector<SDL_Event> others;
};

class InputTest : public ScreenFixture
{
protected:
    static void SetUpTestSuite()
    {
        ScreenFixture::SetUpTestSuite();

        // The first typing of all: what it reports comes once in a program.
        test::LogCapture log(logging::LogWarning);
        SDL_EnableUNICODE(0);
        for (int i = 0; i < 2; ++i)
        {
            Input::GetInstancePtr()->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_c));
            Input::GetInstancePtr()->HandleEvent(KeyOf(SDL_KEYUP, SDLK_c));
        }
        s_firstLines = log.Lines();
        s_isUnicodeOn = SDL_EnableUNICODE(-1);
    }

    void SetUp() override
    {
        SDL_Event event;
        while (SDL_PollEvent(&event))
            ;
        input->AddListener(util::WeakPtr<InputListener>(listener.get()));
    }

    util::SharedPtr<KeepingListener> listener = QUIB_NEW KeepingListener;
    static Notes s_firstLines;
    static bool s_isUnicodeOn;
};
Notes InputTest::s_firstLines;
bool InputTest::s_isUnicodeOn = false;
}

TEST_F(InputTest, AKeyNeverSeenIsUp)
{
    EXPECT_FALSE(input->IsKeyDown(SDLK_F12));
}

TEST_F(InputTest, AKeyIsDownFromPressToRelease)
{
    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_LEFT));
    EXPECT_TRUE(input->IsKeyDown(SDLK_LEFT));
    EXPECT_TRUE(listener->IsKeyDown(SDLK_LEFT));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_LEFT));
    EXPECT_FALSE(input->IsKeyDown(SDLK_LEFT));
    EXPECT_FALSE(listener->IsKeyDown(SDLK_LEFT));
}

TEST_F(InputTest, AKeyThatAHigherListenerTookIsNotDownForTheLower)
{
    Notes notes;
    const util::SharedPtr<NotingListener> taker = QUIB_NEW NotingListener(90, "taker", &notes);
    taker->m_onKey = [](const KeyEvent& event) { event.SetHandled(true); };
    input->AddListener(util::WeakPtr<InputListener>(taker.get()));

    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_LEFT));
    EXPECT_TRUE(input->IsKeyDown(SDLK_LEFT));
    EXPECT_TRUE(taker->IsKeyDown(SDLK_LEFT));
    EXPECT_FALSE(listener->IsKeyDown(SDLK_LEFT));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_LEFT));
}

TEST_F(InputTest, AReleaseThatAHigherListenerTookStillCountsAsUp)
{
    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_RIGHT));
    ASSERT_TRUE(listener->IsKeyDown(SDLK_RIGHT));
    Notes notes;
    const util::SharedPtr<NotingListener> taker = QUIB_NEW NotingListener(90, "taker", &notes);
    taker->m_onKey = [](const KeyEvent& event) { event.SetHandled(true); };
    input->AddListener(util::WeakPtr<InputListener>(taker.get()));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_RIGHT));
    EXPECT_FALSE(listener->IsKeyDown(SDLK_RIGHT));
}

TEST_F(InputTest, ADelegatorKnowsTheKeysThatItsListenersLeft)
{
    const util::SharedPtr<InputDelegator> delegator = QUIB_NEW InputDelegator(50);
    Notes notes;
    const util::SharedPtr<NotingListener> child = QUIB_NEW NotingListener(50, "child", &notes);
    delegator->AddListener(util::WeakPtr<InputListener>(child.get()));
    input->AddListener(util::WeakPtr<InputListener>(delegator.get()));

    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_UP));
    EXPECT_TRUE(delegator->IsKeyDown(SDLK_UP));
    child->m_onKey = [](const KeyEvent& event) { event.SetHandled(true); };
    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_DOWN));
    EXPECT_FALSE(delegator->IsKeyDown(SDLK_DOWN));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_UP));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_DOWN));
}

TEST_F(InputTest, MouseButtonsAreKeysFrom324On)
{
    const struct
    {
        Uint8 button;
        int key;
    } cases[] = {{1, 324}, {2, 325}, {3, 326}, {4, 327}, {5, 328}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "button " << int(c.button));
        input->HandleEvent(Button(SDL_MOUSEBUTTONDOWN, c.button));
        EXPECT_TRUE(input->IsKeyDown(c.key));
        input->HandleEvent(Button(SDL_MOUSEBUTTONUP, c.button));
        EXPECT_FALSE(input->IsKeyDown(c.key));
    }
    EXPECT_EQ(10u, listener->keys.size());
}

TEST_F(InputTest, PositionsGoThroughTheConversionOfTheGUI)
{
    input->SetPosFromPixel([](int x, int y) { return math::Vec2(x / 2.0f, y / 4.0f); });
    input->HandleEvent(Button(SDL_MOUSEBUTTONDOWN, 1, 100, 80));
    input->HandleEvent(Button(SDL_MOUSEBUTTONUP, 1));
    SDL_Event move = {};
    move.type = SDL_MOUSEMOTION;
    move.motion.state = 5;
    move.motion.x = 10;
    move.motion.y = 20;
    move.motion.xrel = -2;
    move.motion.yrel = 8;
    input->HandleEvent(move);
    input->SetPosFromPixel([](int x, int y) { return math::Vec2(float(x), float(y)); });

    EXPECT_EQ(math::Vec2(50, 20), listener->keys.at(0).GetPosition());
    ASSERT_EQ(1u, listener->moves.size());
    EXPECT_EQ(math::Vec2(5, 5), listener->moves[0].GetPosition());
    EXPECT_EQ(math::Vec2(-1, 2), listener->moves[0].GetRelative());
    EXPECT_EQ(5, listener->moves[0].GetButtons());
}

TEST_F(InputTest, PumpingReadsTheMouse)
{
    SDL_WarpMouse(123, 45);
    input->PumpEvents();
    EXPECT_EQ(math::Vec2(123, 45), input->GetMousePos());
}

TEST_F(InputTest, DuringAnEventTheMouseIsWhereItWasThen)
{
    SDL_Event move = {};
    move.type = SDL_MOUSEMOTION;
    move.motion.x = 10;
    move.motion.y = 20;
    input->HandleEvent(move);
    EXPECT_EQ(math::Vec2(10, 20), input->GetMousePos());
    SDL_Event press = {};
    press.type = SDL_MOUSEBUTTONDOWN;
    press.button.button = 3;
    press.button.x = 30;
    press.button.y = 40;
    input->HandleEvent(press);
    EXPECT_EQ(math::Vec2(30, 40), input->GetMousePos());
    press.type = SDL_MOUSEBUTTONUP;
    input->HandleEvent(press);
}

TEST_F(InputTest, OfSeveralResizesOnlyTheLastIsDeliveredAndAfterAllElse)
{
    SDL_Event events[] = {Resize(100, 100), KeyOf(SDL_KEYDOWN, SDLK_a), Resize(200, 150),
                          KeyOf(SDL_KEYUP, SDLK_a)};
    SDL_Event expose = {};
    expose.type = SDL_VIDEOEXPOSE;
    for (SDL_Event& event : events)
        ASSERT_EQ(0, SDL_PushEvent(&event));
    ASSERT_EQ(0, SDL_PushEvent(&expose));
    input->PumpEvents();

    EXPECT_EQ(2u, listener->keys.size());
    ASSERT_EQ(2u, listener->others.size());
    EXPECT_EQ(SDL_VIDEOEXPOSE, listener->others[0].type);
    EXPECT_EQ(SDL_VIDEORESIZE, listener->others[1].type);
    EXPECT_EQ(200, listener->others[1].resize.w);
    EXPECT_EQ(150, listener->others[1].resize.h);
}

TEST_F(InputTest, QuitAndWindowEventsReachTheListenersRaw)
{
    const Uint8 types[] = {SDL_ACTIVEEVENT, SDL_QUIT,        SDL_SYSWMEVENT,
                           SDL_VIDEORESIZE, SDL_VIDEOEXPOSE, SDL_USEREVENT};
    for (const Uint8 type : types)
    {
        SDL_Event event = {};
        event.type = type;
        input->HandleEvent(event);
        ASSERT_FALSE(listener->others.empty());
        EXPECT_EQ(type, listener->others.back().type);
    }
}

TEST_F(InputTest, AnEventOfAnUnknownTypeIsAWarning)
{
    test::LogCapture log(logging::LogWarning);
    SDL_Event event = {};
    event.type = 99;
    input->HandleEvent(event);
    EXPECT_EQ(Notes{"-- Warning: Unknown Event from SDL"}, log.Lines());
}

TEST_F(InputTest, TextInputTurnsKeyRepeatOnWithHalfASecondOfDelay)
{
    int delay = -1, interval = -1;
    SetTextInput(true);
    SDL_GetKeyRepeat(&delay, &interval);
    EXPECT_EQ(500, delay);
    EXPECT_EQ(30, interval);
    EXPECT_EQ(1, SDL_EnableUNICODE(-1));

    SetTextInput(false);
    SDL_GetKeyRepeat(&delay, &interval);
    EXPECT_EQ(0, delay);
    EXPECT_EQ(0, SDL_EnableUNICODE(-1));
    SetTextInput(true);
}

TEST_F(InputTest, WindowSystemEventsAreAskedFor)
{
    EXPECT_EQ(SDL_ENABLE, SDL_EventState(SDL_SYSWMEVENT, SDL_QUERY));
}

TEST_F(InputTest, AListenerIsUnnamedUntilItTakesAName)
{
    EXPECT_EQ("unnamed", listener->GetReflectedName());
}

TEST_F(InputTest, AModifierHoldsWhenSDLAndTheKeysAgree)
{
    const struct
    {
        Modifier modifier;
        int mask;
        std::vector<int> keys; // any of them
    } cases[] = {
        {ModShift, KMOD_LSHIFT, {304, 303}}, {ModShift, KMOD_RSHIFT, {304, 303}},
        {ModLeftShift, KMOD_LSHIFT, {304}},  {ModRightShift, KMOD_RSHIFT, {303}},
        {ModCtrl, KMOD_LCTRL, {306, 305}},   {ModCtrl, KMOD_RCTRL, {306, 305}},
        {ModCtrl, KMOD_LMETA, {310, 309}},   {ModCtrl, KMOD_RMETA, {310, 309}},
        {ModLeftCtrl, KMOD_LCTRL, {306}},    {ModLeftCtrl, KMOD_LMETA, {310}},
        {ModRightCtrl, KMOD_RCTRL, {305}},   {ModRightCtrl, KMOD_RMETA, {309}},
        {ModAlt, KMOD_LALT, {308, 307}},     {ModAlt, KMOD_RALT, {308, 307}},
        {ModLeftAlt, KMOD_LALT, {308}},      {ModMeta, KMOD_LMETA, {310, 309}},
        {ModMeta, KMOD_RMETA, {310, 309}},   {ModLeftMeta, KMOD_LMETA, {310}},
        {ModRightMeta, KMOD_RMETA, {309}},   {ModNumLock, KMOD_NUM, {300}},
        {ModCapsLock, KMOD_CAPS, {301}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.modifier << ", " << c.mask);
        for (int key = 300; key < 313; ++key)
        {
            const bool isOneOfThem = std::count(c.keys.begin(), c.keys.end(), key) != 0;
            input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLKey(key)));
            SDL_SetModState(SDLMod(c.mask));
            EXPECT_EQ(isOneOfThem, input->CheckModifier(c.modifier) != 0) << key;
            // Held as the events have it, but not for SDL.
            SDL_SetModState(KMOD_NONE);
            EXPECT_FALSE(input->CheckModifier(c.modifier)) << key;
            input->HandleEvent(KeyOf(SDL_KEYUP, SDLKey(key)));
        }
    }
}

TEST_F(InputTest, TheRightAltKeyIsNotAsked)
{
    SDL_SetModState(KMOD_RALT);
    EXPECT_TRUE(input->CheckModifier(ModRightAlt));
    EXPECT_FALSE(input->CheckModifier(ModAlt));
    SDL_SetModState(KMOD_LALT);
    EXPECT_FALSE(input->CheckModifier(ModRightAlt));
    SDL_SetModState(KMOD_NONE);
}

TEST_F(InputTest, NoModifierIsHeldWhenSDLSaysSo)
{
    SDL_SetModState(KMOD_NONE);
    EXPECT_TRUE(input->CheckModifier(ModNone));
    SDL_SetModState(KMOD_MODE);
    EXPECT_FALSE(input->CheckModifier(ModNone));
    SDL_SetModState(KMOD_NONE);
}

TEST_F(InputTest, WhatIsNoModifierGivesSDLsMask)
{
    SDL_SetModState(SDLMod(KMOD_LSHIFT | KMOD_CAPS));
    EXPECT_EQ(0x2001, input->CheckModifier(static_cast<Modifier>(15)));
    SDL_SetModState(KMOD_NONE);
}

namespace
{
SDL_Event Typed(Uint8 type, int key, int unicode)
{
    SDL_Event event = KeyOf(type, SDLKey(key));
    event.key.keysym.unicode = unicode;
    return event;
}
}

TEST_F(InputTest, AKeyTypesWhatSDLSays)
{
    input->HandleEvent(Typed(SDL_KEYDOWN, SDLK_a, 'q'));
    input->HandleEvent(Typed(SDL_KEYUP, SDLK_a, 'q'));
    input->HandleEvent(Typed(SDL_KEYDOWN, SDLK_WORLD_70, 0xE6));
    input->HandleEvent(Typed(SDL_KEYUP, SDLK_WORLD_70, 0xE6));
    EXPECT_EQ('q', listener->keys.at(0).GetCharacter());
    EXPECT_EQ('\xE6', listener->keys.at(2).GetCharacter());
}

TEST_F(InputTest, BeyondLatin1AKeyTypesNothing)
{
    input->HandleEvent(Typed(SDL_KEYDOWN, SDLK_a, 0x20AC));
    input->HandleEvent(Typed(SDL_KEYUP, SDLK_a, 0x20AC));
    EXPECT_EQ(0, listener->keys.at(0).GetCharacter());
}

TEST_F(InputTest, WithoutAWordFromSDLAKeyTypesWhatItIsCalled)
{
    const struct
    {
        int key;
        char character;
    } cases[] = {{SDLK_SPACE, ' '},
                 {SDLK_RETURN, '\n'},
                 {SDLK_TAB, '\t'},
                 {SDLK_KP0, '0'},
                 {SDLK_KP9, '9'},
                 {SDLK_b, 'b'},
                 {SDLK_F1, 0},
                 {SDLK_KP_PLUS, 0},
                 {SDLK_LEFT, 0},
                 {SDLK_MINUS, '-'},
                 {5, 0}};
    for (const auto& c : cases)
    {
        input->HandleEvent(Typed(SDL_KEYUP, c.key, 0));
        EXPECT_EQ(c.character, listener->keys.back().GetCharacter()) << c.key;
    }
    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_LSHIFT));
    SDL_SetModState(KMOD_LSHIFT);
    input->HandleEvent(Typed(SDL_KEYUP, SDLK_b, 0));
    EXPECT_EQ('B', listener->keys.back().GetCharacter());
    SDL_SetModState(KMOD_NONE);
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_LSHIFT));
}

TEST_F(InputTest, AFailingTranslationIsReportedOnceAndTurnedOnAgain)
{
    EXPECT_EQ(Notes{"-- Warning: SDL unicode doesn't work"}, s_firstLines);
    EXPECT_TRUE(s_isUnicodeOn);
}

TEST_F(InputTest, AKeyEventKnowsItsModifiers)
{
    const struct
    {
        SDLKey key;
        int mask;
        bool alt, ctrl, shift;
    } cases[] = {{SDLK_LALT, KMOD_LALT, true, false, false},
                 {SDLK_RCTRL, KMOD_RCTRL, false, true, false},
                 {SDLK_LMETA, KMOD_LMETA, false, true, false},
                 {SDLK_RSHIFT, KMOD_RSHIFT, false, false, true}};
    for (const auto& c : cases)
    {
        input->HandleEvent(KeyOf(SDL_KEYDOWN, c.key));
        SDL_SetModState(SDLMod(c.mask));
        const KeyEvent event(SDLK_a, 'a', true, math::Vec2(0, 0));
        EXPECT_EQ(c.alt, event.IsAltDown()) << c.key;
        EXPECT_EQ(c.ctrl, event.IsCtrlDown()) << c.key;
        EXPECT_EQ(c.shift, event.IsShiftDown()) << c.key;
        SDL_SetModState(KMOD_NONE);
        input->HandleEvent(KeyOf(SDL_KEYUP, c.key));
    }
}

TEST_F(InputTest, APressOfAKeyThatIsDownIsARepeat)
{
    for (int i = 0; i < 3; ++i)
        input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_d));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_d));
    input->HandleEvent(KeyOf(SDL_KEYDOWN, SDLK_d));
    input->HandleEvent(KeyOf(SDL_KEYUP, SDLK_d));
    std::vector<bool> repeats;
    for (const KeyEvent& event : listener->keys)
        repeats.push_back(event.IsRepeat());
    EXPECT_EQ((std::vector<bool>{false, true, true, false, false, false}), repeats);
}

TEST_F(InputTest, TheWheelCountsItsNotches)
{
    const int before = input->GetWheel();
    for (Uint8 button : {4, 4, 4, 5})
    {
        input->HandleEvent(Button(SDL_MOUSEBUTTONDOWN, button));
        input->HandleEvent(Button(SDL_MOUSEBUTTONUP, button));
    }
    EXPECT_EQ(2, input->GetWheel() - before);
}

TEST_F(InputTest, HundredsOfEventsInOneFrameAllArrive)
{
    // As the window system brings them: through SDL's filter, before its queue of 128.
    const SDL_EventFilter filter = SDL_GetEventFilter();
    ASSERT_TRUE(filter);
    for (int i = 0; i < 500; ++i)
    {
        const SDL_Event event = KeyOf(i % 2 ? SDL_KEYUP : SDL_KEYDOWN, SDLKey(SDLK_a + i / 2 % 26));
        EXPECT_EQ(0, filter(&event)) << "SDL would keep it a second time";
    }
    input->PumpEvents();
    ASSERT_EQ(500u, listener->keys.size());
    for (int i = 0; i < 500; ++i)
        ASSERT_EQ(SDLK_a + i / 2 % 26, listener->keys[i].GetKey());
}

TEST_F(InputTest, HundredsOfMessagesOfTheWindowSystemArriveWithWhatTheySay)
{
    class Reader : public InputListener
    {
    public:
        Reader()
            : InputListener(50)
        {
        }
        void OnOtherEvent(const InputEvent& event) override
        {
            said.push_back(event.GetEvent().syswm.msg->version.major);
        }
        std::vector<int> said;
    };
    const util::SharedPtr<Reader> reader = QUIB_NEW Reader;
    input->AddListener(util::WeakPtr<InputListener>(reader.get()));
    SDL_SysWMmsg message = {}; // SDL has one for all of them
    SDL_Event event = {};
    event.type = SDL_SYSWMEVENT;
    event.syswm.msg = &message;
    for (int i = 0; i < 250; ++i)
    {
        message.version.major = static_cast<Uint8>(i);
        EXPECT_EQ(0, SDL_GetEventFilter()(&event));
    }
    message.version.major = 251;
    input->PumpEvents();
    ASSERT_EQ(250u, reader->said.size());
    for (int i = 0; i < 250; ++i)
        EXPECT_EQ(i, reader->said[i]);
}
