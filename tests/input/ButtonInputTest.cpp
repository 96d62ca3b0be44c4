#include "input/ButtonInput.h"

#include "input/Input.h"
#include "util/Failures.h"

#include "../KeyEvents.h"

#include <SDL_keysym.h>

#include <gtest/gtest.h>

#include <ctime>
#include <memory>

namespace input
{
namespace
{
class ButtonInputTest : public testing::Test
{
protected:
    void TearDown() override
    {
        for (int key : {SDLK_a, SDLK_b, SDLK_LCTRL})
            Release(key);
    }
    static void Press(int key) { test::SendKey(key, true); }
    static void Release(int key) { test::SendKey(key, false); }
};

TEST_F(ButtonInputTest, IsOnWhileItsKeyIsDown)
{
    ButtonInput button;
    EXPECT_FALSE(button.IsBound());
    button.Assign(SDLK_a);
    EXPECT_TRUE(button.IsBound());
    Press(SDLK_b);
    EXPECT_FALSE(button.IsOn());
    Press(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Release(SDLK_b);
    EXPECT_TRUE(button.IsOn());
    Release(SDLK_a);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, AChordIsPressedByItsLastKeyAndReleasedByAny)
{
    ButtonInput button;
    button.AddKey(SDLK_LCTRL);
    button.AddKey(SDLK_a);
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
    EXPECT_FALSE(button.AreAllMykeysDown());
    Press(SDLK_LCTRL);
    EXPECT_TRUE(button.IsOn());
    EXPECT_TRUE(button.AreAllMykeysDown());
    Release(SDLK_a);
    EXPECT_FALSE(button.IsOn());
    Release(SDLK_LCTRL);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, AHandledPressDoesNotCountButItsReleaseDoes)
{
    ButtonInput button;
    button.Assign(SDLK_a);
    test::SendKey(SDLK_a, true, true);
    EXPECT_FALSE(button.IsOn());
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn()) << "the repeat of a press that is another's";
    Release(SDLK_a);
    Press(SDLK_a);
    ASSERT_TRUE(button.IsOn());
    test::SendKey(SDLK_a, false, true);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, TheRepeatsOfItsKeyDoNotSwitchItOnAgain)
{
    ButtonInput button;
    button.Assign(SDLK_a);
    Press(SDLK_a);
    button.SetOn(false);
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, AToggleChangesWithEachPress)
{
    ButtonInput button;
    button.Assign(SDLK_a);
    button.SetToggle(true);
    EXPECT_TRUE(button.GetToggle());
    Press(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Release(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
    button.SetOn(true);
    EXPECT_TRUE(button.IsOn());
}

TEST_F(ButtonInputTest, AHeldKeyInvertsAToggleOnce)
{
    ButtonInput button;
    button.Deserialize("toggle a");
    // A key that is held repeats its press.
    for (int i = 0; i < 4; ++i)
    {
        Press(SDLK_a);
        EXPECT_TRUE(button.IsOn());
    }
    Release(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    for (int i = 0; i < 4; ++i)
    {
        Press(SDLK_a);
        EXPECT_FALSE(button.IsOn());
    }
}

TEST_F(ButtonInputTest, TheRepeatsOfAHandledPressInvertNothing)
{
    ButtonInput button;
    button.Deserialize("toggle a");
    test::SendKey(SDLK_a, true, true);
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
    test::SendKey(SDLK_a, false, true);
    Press(SDLK_a);
    EXPECT_TRUE(button.IsOn());
}

TEST_F(ButtonInputTest, TheRepeatsOfAKeyThatIsHeldWhileItIsBoundInvertNothing)
{
    ButtonInput read, assigned, copied;
    assigned.SetToggle(true);
    Press(SDLK_a);
    read.Deserialize("toggle a");
    assigned.Assign(SDLK_a);
    copied = read;
    Press(SDLK_a);
    for (const ButtonInput* button : {&read, &assigned, &copied})
        EXPECT_FALSE(button->IsOn());
    Release(SDLK_a);
    Press(SDLK_a);
    for (const ButtonInput* button : {&read, &assigned, &copied})
        EXPECT_TRUE(button->IsOn());
}

TEST_F(ButtonInputTest, AToggledChordIsInvertedByItsLastKey)
{
    ButtonInput button;
    button.Deserialize("toggle left_ctrl a");
    Press(SDLK_LCTRL);
    EXPECT_FALSE(button.IsOn());
    Press(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Release(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
    Release(SDLK_LCTRL);
    Release(SDLK_a);
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn()) << "half of the chord";
}

TEST_F(ButtonInputTest, AReleaseDoesNotCountWhileAnotherKeyOfTheChordIsUp)
{
    ButtonInput button;
    button.Deserialize("left_ctrl a");
    button.SetOn(true);
    Press(SDLK_a);
    Release(SDLK_a);
    EXPECT_TRUE(button.IsOn());
    Press(SDLK_LCTRL);
    Press(SDLK_a);
    Release(SDLK_a);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, NewKeysSwitchItOff)
{
    // Nothing else would: the release of the old key is none of its own, or not of the whole chord.
    ButtonInput assigned, added;
    assigned.Assign(SDLK_a);
    added.AddKey(SDLK_a);
    Press(SDLK_a);
    ASSERT_TRUE(assigned.IsOn());
    added.AddKey(SDLK_a);
    EXPECT_TRUE(added.IsOn()) << "it had that key";
    assigned.Assign(SDLK_b);
    added.AddKey(SDLK_b);
    EXPECT_FALSE(assigned.IsOn());
    EXPECT_FALSE(added.IsOn());
    Release(SDLK_a);
    Press(SDLK_b);
    EXPECT_TRUE(assigned.IsOn());
    EXPECT_FALSE(added.IsOn());
}

TEST_F(ButtonInputTest, ThousandsAreBoundAndGoInNoTime)
{
    // A large machine with keys; an undo makes as many again. By a search or a sort for each button it
    // would be half a minute.
    const std::clock_t start = std::clock();
    for (int round = 0; round < 2; ++round)
    {
        std::vector<ButtonInput> buttons(20000);
        for (ButtonInput& button : buttons)
            button.Assign(SDLK_a);
        Press(SDLK_a);
        for (const ButtonInput& button : buttons)
            ASSERT_TRUE(button.IsOn());
        Release(SDLK_a);
    }
    Press(SDLK_b);
    EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, 5);
}

TEST_F(ButtonInputTest, KeysAreAddedOnceAndReplacedByAssign)
{
    ButtonInput button;
    button.AddKey(SDLK_a);
    button.AddKey(SDLK_b);
    button.AddKey(SDLK_a);
    EXPECT_EQ((std::vector<int>{SDLK_a, SDLK_b}), button.GetKeySet());
    EXPECT_TRUE(button.HasKey(SDLK_b));
    button.Assign(SDLK_LCTRL);
    EXPECT_EQ((std::vector<int>{SDLK_LCTRL}), button.GetKeySet());
    EXPECT_FALSE(button.HasKey(SDLK_b));
}

TEST_F(ButtonInputTest, RoundTripsItsText)
{
    for (const char* text : {"toggle left_ctrl a", "right", "joy_3_h1_up", "mouse_left space", ""})
    {
        ButtonInput button;
        button.Deserialize(text);
        EXPECT_EQ(text, button.AsString());
        EXPECT_EQ(text, button.Serialize());
    }
}

TEST_F(ButtonInputTest, EmptyTextUnbindsAndSwitchesOff)
{
    ButtonInput button;
    button.Deserialize("toggle a");
    Press(SDLK_a);
    ASSERT_TRUE(button.IsOn());
    button.Deserialize("");
    EXPECT_FALSE(button.IsBound());
    EXPECT_FALSE(button.GetToggle());
    EXPECT_FALSE(button.IsOn());
    EXPECT_EQ("", button.AsString());
    Release(SDLK_a);
    Press(SDLK_a);
    EXPECT_FALSE(button.IsOn());
}

TEST_F(ButtonInputTest, WritesNothingForAToggleWithoutKeys)
{
    ButtonInput button;
    button.SetToggle(true);
    EXPECT_EQ("", button.AsString());
}

TEST_F(ButtonInputTest, KeepsWhatItHadWhenATextNamesNoKey)
{
    ButtonInput button;
    button.Deserialize("toggle a");
    EXPECT_THROW(button.Deserialize("b nokey"), BadDataException);
    EXPECT_EQ("toggle a", button.AsString());
}

TEST_F(ButtonInputTest, IsBoundToATextThatHasBeenParsedBefore)
{
    const ButtonInput::Binding binding = ButtonInput::ParseText(" toggle  b a a");
    EXPECT_TRUE(binding.toggle);
    EXPECT_EQ((std::vector<int>{SDLK_b, SDLK_a, SDLK_a}), binding.keys);
    ButtonInput button;
    button.Deserialize("left_ctrl");
    button.SetOn(true);
    button.Bind(binding);
    EXPECT_EQ("toggle b a", button.AsString());
    EXPECT_FALSE(button.IsOn());
    EXPECT_THROW(ButtonInput::ParseText("b nokey"), BadDataException);
}

TEST_F(ButtonInputTest, CopiesAreBoundAndWorkOnTheirOwn)
{
    auto button = std::make_unique<ButtonInput>();
    button->Assign(SDLK_a);
    Press(SDLK_a);
    ButtonInput copy(*button), assigned;
    assigned = *button;
    EXPECT_FALSE(copy.IsOn());
    EXPECT_FALSE(assigned.IsOn());
    button.reset();
    Release(SDLK_a);
    Press(SDLK_a);
    EXPECT_TRUE(copy.IsOn());
    EXPECT_TRUE(assigned.IsOn());
}

TEST_F(ButtonInputTest, MayGoDuringAnEvent)
{
    auto button = std::make_unique<ButtonInput>();
    button->Assign(SDLK_a);
    // The last added gets the event first, and the button is gone when its turn would come.
    class Killer : public InputListener
    {
    public:
        explicit Killer(std::unique_ptr<ButtonInput>& button)
            : InputListener(50)
            , m_button(button)
        {
        }
        void OnKeyEvent(const KeyEvent&) override { m_button.reset(); }

    private:
        std::unique_ptr<ButtonInput>& m_button;
    };
    const util::SharedPtr<Killer> killer = QUIB_NEW Killer(button);
    Input::GetInstancePtr()->AddListener(util::WeakPtr<InputListener>(killer.get()));
    Press(SDLK_a);
    EXPECT_FALSE(button);
}
}
}
