#include "script/KeyBinder.h"

#include "KeyEvents.h"
#include "TestSupport.h"
#include "input/InputListener.h"
#include "script/Attributes.h"
#include "script/Parser.h"

#include <SDL_keysym.h>

#include <gtest/gtest.h>

using input::InputListener;

namespace
{
// What the bound code counts in: its own scope goes with each call.
class Counter final : public script::Reflected
{
public:
    Counter()
        : Reflected("Counter")
        , a(this, "a", 0)
        , b(this, "b", 0)
    {
    }

    script::AttribWrapper<int> a;
    script::AttribWrapper<int> b;
};

// Takes every key, or tells whether the last one was taken.
class KeyListener final : public InputListener
{
public:
    KeyListener(int priority, bool takes)
        : InputListener(priority)
        , m_takes(takes)
    {
    }
    void OnKeyEvent(const input::KeyEvent& event) override
    {
        isHandled = event.IsHandled();
        if (m_takes)
            event.SetHandled(true);
    }

    bool isHandled = false;

private:
    bool m_takes;
};

class KeyBinderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        input::Input::Create();
        counter->AddToRoot();
    }
    void TearDown() override
    {
        // There is no unbinding.
        for (const char* key : {"f5", "f6", "a", "mouse_wheel_up", "joy_0_b1"})
            Run("Keys.bind(\"" + std::string(key) + "\", { 0 })");
        for (int key : {int(SDLK_F5), int(SDLK_F6), int(SDLK_a)})
            test::SendKey(key, false);
        Root().RemoveReflectedChild(counter);
    }

    static script::Closure& Root() { return *script::Parser::GetInstancePtr()->GetRootClosure(); }
    static void Run(const std::string& code) { script::Parser::GetInstancePtr()->Execute(code); }
    static std::string Failure(const std::string& code)
    {
        test::LogCapture log(logging::LogWarning);
        Run(code);
        return log.Text();
    }
    util::SharedPtr<KeyListener> Listen(int priority, bool takes)
    {
        const util::SharedPtr<KeyListener> listener = QUIB_NEW KeyListener(priority, takes);
        input::Input::GetInstancePtr()->AddListener(util::WeakPtr<InputListener>(listener.get()));
        return listener;
    }

    util::SharedPtr<Counter> counter = QUIB_NEW Counter;
};
}

TEST_F(KeyBinderTest, RunsTheCodeAtEachPressItsRepeatsIncluded)
{
    Run("Keys.bind(\"f5\", { Counter.a = Counter.a + 1 })");
    EXPECT_EQ(0, counter->a);
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(1, counter->a);
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(2, counter->a);
    test::SendKey(SDLK_F5, false);
    test::SendKey(SDLK_F6, true);
    EXPECT_EQ(2, counter->a);
}

TEST_F(KeyBinderTest, TakesTheKeysThatItKnowsAndNoOthers)
{
    const auto below = Listen(10, false);
    Run("Keys.bind(\"f5\", { 0 })");
    test::SendKey(SDLK_F5, true);
    EXPECT_TRUE(below->isHandled);
    test::SendKey(SDLK_F5, false);
    EXPECT_FALSE(below->isHandled);
    test::SendKey(SDLK_LEFT, true);
    EXPECT_FALSE(below->isHandled);
    test::SendKey(SDLK_LEFT, false);
}

TEST_F(KeyBinderTest, LeavesAKeyThatATextBoxHasTaken)
{
    const auto textBox = Listen(50, true);
    Run("Keys.bind(\"a\", { Counter.a = 1 })");
    test::SendKey(SDLK_a, true);
    EXPECT_EQ(0, counter->a);
}

TEST_F(KeyBinderTest, AKeyBoundTwiceKeepsTheLaterFunction)
{
    Run("Keys.bind(\"f5\", { Counter.a = 1 }); Keys.bind(\"F5\", { Counter.b = 1 })");
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(0, counter->a);
    EXPECT_EQ(1, counter->b);
}

TEST_F(KeyBinderTest, CodeMayBindItsOwnKeyAnew)
{
    Run("Keys.bind(\"f5\", { Keys.bind(\"f5\", { Counter.b = 1 }); Counter.a = 1 })");
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(1, counter->a);
    EXPECT_EQ(0, counter->b);
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(1, counter->b);
}

TEST_F(KeyBinderTest, CodeThatFailsIsLoggedAndHasTakenTheKeyAllTheSame)
{
    const auto below = Listen(10, false);
    Run("Keys.bind(\"f5\", { noSuchName; Counter.a = 1 })");
    test::LogCapture log(logging::LogWarning);
    test::SendKey(SDLK_F5, true);
    EXPECT_TRUE(log.Has("noSuchName")) << log.Text();
    EXPECT_EQ(1, counter->a) << "the next statement runs";
    EXPECT_TRUE(below->isHandled);
}

// What fails in a statement stops there. This one takes all of the code with it.
TEST_F(KeyBinderTest, AFailureOutsideTheCodeGoesThroughTheEvent)
{
    Run("Keys.bind(\"f5\", { g = (n) => { g(n + 1) }; g(0); Counter.a = 1 }); "
        "Keys.bind(\"f6\", { Counter.b = 1 })");
    EXPECT_THROW(test::SendKey(SDLK_F5, true), script::ScriptException);
    EXPECT_EQ(0, counter->a);
    test::SendKey(SDLK_F6, true);
    EXPECT_EQ(1, counter->b) << "the next one is as good as any";
}

TEST_F(KeyBinderTest, WhatIsRefusedLeavesTheOldBinding)
{
    Run("Keys.bind(\"f5\", { Counter.a = Counter.a + 1 })");
    for (const char* code : {"Keys.bind(\"f5\", (x) => { x })", "Keys.bind(\"f5\", 1)"})
        Failure(code);
    test::SendKey(SDLK_F5, true);
    EXPECT_EQ(1, counter->a);
}

TEST_F(KeyBinderTest, ButtonsOfMouseAndJoystickAreKeysToo)
{
    Run("Keys.bind(\"mouse_wheel_up\", { Counter.a = Counter.a + 1 }); "
        "Keys.bind(\"joy_0_b1\", { Counter.b = Counter.b + 1 })");
    for (const int key : {int(input::MouseWheelUp), input::Key::GetJoystickKey(0, 1)})
    {
        test::SendKey(key, true);
        test::SendKey(key, false);
    }
    EXPECT_EQ(1, counter->a);
    EXPECT_EQ(1, counter->b);
}

TEST_F(KeyBinderTest, RefusesWhatIsNoKeyAndWhatIsNoCode)
{
    const struct
    {
        const char* code;
        const char* failure;
    } cases[] = {
        {"Keys.bind(\"nokey\", { 0 })", "\"nokey\" is not a valid key name"},
        {"Keys.bind(3, { 0 })", "Not a string"},
        {"Keys.bind(\"a\", (x) => { x })",
         "The second argument should be a function taking no arguments"},
        {"Keys.bind(\"a\", 1)", "The second argument should be a function taking no arguments"},
    };
    for (const auto& c : cases)
        EXPECT_NE(std::string::npos, Failure(c.code).find(c.failure)) << Failure(c.code);
}

TEST_F(KeyBinderTest, IsSavedInTheOrderOfTheKeysWithTheirOwnNames)
{
    Run("Keys.bind(\"JOY_0_B1\", { Counter.a = 3 }); Keys.bind(\"Mouse_Wheel_Up\", { Counter.a = 2 "
        "}); "
        "Keys.bind(\"F6\", { Counter.a = 1 })");
    const std::string saved = script::Parser::GetInstancePtr()->ToCode();
    const size_t f6 = saved.find("Keys.bind(\"f6\", {Counter.a = 1})");
    const size_t wheel = saved.find("Keys.bind(\"mouse_wheel_up\", {Counter.a = 2})");
    const size_t joystick = saved.find("Keys.bind(\"joy_0_b1\", {Counter.a = 3})");
    EXPECT_LT(f6, wheel) << saved;
    EXPECT_LT(wheel, joystick) << saved;
    ASSERT_NE(std::string::npos, joystick) << saved;

    Run("Keys.bind(\"f6\", { 0 })");
    Run(saved);
    test::SendKey(SDLK_F6, true);
    EXPECT_EQ(1, counter->a);
}
