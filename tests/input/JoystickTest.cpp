#include "input/Joystick.h"

#include "TestSupport.h"
#include "input/DirInput.h"
#include "input/Input.h"
#include "input/InputEvent.h"
#include "input/JoysticksForTest.h"

#include <SDL.h>

#include <gtest/gtest.h>

using namespace input;

std::vector<TestJoystick>& input::PluggedIn()
{
    static std::vector<TestJoystick> s_joysticks;
    return s_joysticks;
}

namespace
{
TestJoystick* At(int index)
{
    return index >= 0 && index < int(PluggedIn().size()) ? &PluggedIn()[index] : nullptr;
}

TestJoystick* Of(SDL_Joystick* handle)
{
    return At(static_cast<int>(reinterpret_cast<intptr_t>(handle)) - 1);
}
}

extern "C"
{
    int SDL_NumJoysticks()
    {
        return int(PluggedIn().size());
    }
    const char* SDL_JoystickName(int index)
    {
        return At(index) ? At(index)->name.c_str() : nullptr;
    }
    SDL_Joystick* SDL_JoystickOpen(int index)
    {
        if (!At(index) || !At(index)->canBeOpened)
        {
            SDL_SetError("it is gone");
            return nullptr;
        }
        ++At(index)->opened;
        return reinterpret_cast<SDL_Joystick*>(intptr_t(index + 1));
    }
    int SDL_JoystickOpened(int index)
    {
        return At(index) && At(index)->opened > 0;
    }
    void SDL_JoystickClose(SDL_Joystick* handle)
    {
        if (Of(handle))
            --Of(handle)->opened;
    }
    int SDL_JoystickNumAxes(SDL_Joystick* handle)
    {
        return Of(handle) ? int(Of(handle)->axes.size()) : -1;
    }
    int SDL_JoystickNumButtons(SDL_Joystick* handle)
    {
        return Of(handle) ? Of(handle)->buttons : -1;
    }
    int SDL_JoystickNumBalls(SDL_Joystick* handle)
    {
        return Of(handle) ? Of(handle)->balls : -1;
    }
    int SDL_JoystickNumHats(SDL_Joystick* handle)
    {
        return Of(handle) ? Of(handle)->hats : -1;
    }
    Sint16 SDL_JoystickGetAxis(SDL_Joystick* handle, int axis)
    {
        return Of(handle) ? Sint16(Of(handle)->axes.at(axis)) : 0;
    }
}

namespace
{
using Lines = std::vector<std::string>;

class JoystickTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        ASSERT_EQ(0, SDL_Init(SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_NOPARACHUTE));
    }
    static void TearDownTestSuite() { SDL_Quit(); }
    void TearDown() override
    {
        PluggedIn().clear();
        input->LookForJoysticks();
    }

    void PlugIn(const TestJoystick& joystick)
    {
        PluggedIn().push_back(joystick);
        input->LookForJoysticks();
    }
    void Send(Uint8 type, Uint8 which, Uint8 number, Uint8 value)
    {
        SDL_Event event = {};
        event.type = type;
        if (type == SDL_JOYHATMOTION)
        {
            event.jhat.which = which;
            event.jhat.hat = number;
            event.jhat.value = value;
        }
        else
        {
            event.jbutton.which = which;
            event.jbutton.button = number;
        }
        input->HandleEvent(event);
    }

    Input* input = Input::GetInstancePtr();
};

class AxisListener final : public InputListener
{
public:
    AxisListener()
        : InputListener(50)
    {
    }
    void OnJoyAxisEvent(const JoyAxisEvent& event) override
    {
        joystick = event.GetJoystick();
        axis = event.GetAxis();
    }
    JoystickPtr joystick;
    int axis = -1;
};
}

TEST_F(JoystickTest, OnesThatAreFoundAreTold)
{
    PluggedIn().push_back({"Pad", {0, 0, 0}, 12, 1, 2});
    test::LogCapture log(logging::LogVerbose);
    input->LookForJoysticks();
    EXPECT_EQ((Lines{"Found 1 joystick\n---",
                     "Opened joystick 0\nName: Pad\nNumber of axes: 3\nNumber of buttons: 12\n"
                     "Number of balls: 1\nNumber of hats: 2\n--"}),
              log.Lines());
}

TEST_F(JoystickTest, NoneAreManyToo)
{
    test::LogCapture log(logging::LogVerbose);
    input->LookForJoysticks();
    EXPECT_EQ(Lines{"Found 0 joysticks\n---"}, log.Lines());
    EXPECT_FALSE(input->GetJoystick(0));
    EXPECT_FALSE(input->GetJoystick(-1));
}

TEST_F(JoystickTest, OneThatCannotBeOpenedIsAWarningAndLeavesTheOthersTheirNumbers)
{
    PluggedIn().push_back({"Broken", {0}, 0, 0, 0, false});
    test::LogCapture log(logging::LogWarning);
    PlugIn({"Good", {0}});
    EXPECT_EQ(Lines{"-- Warning: Failed to open joystick it is gone"}, log.Lines());
    EXPECT_FALSE(input->GetJoystick(0));
    ASSERT_TRUE(input->GetJoystick(1));
    EXPECT_EQ("Good", input->GetJoystick(1)->GetName());
}

TEST_F(JoystickTest, AnAxisReachesFromMinusOneToOne)
{
    PlugIn({"Pad", {-32768, 32767, 0}});
    const JoystickPtr joystick = input->GetJoystick(0);
    EXPECT_EQ(-1, joystick->GetAxis(0));
    EXPECT_EQ(1, joystick->GetAxis(1));
    EXPECT_NEAR(0, joystick->GetAxis(2), 1e-4);
    EXPECT_EQ(0, joystick->GetAxis(3));
    EXPECT_EQ(0, joystick->GetAxis(-1));
}

TEST_F(JoystickTest, CalibratedItStandsAtItsCentreAndStaysWithinBounds)
{
    PlugIn({"Pad", {16384}});
    input->CalibrateJoysticks();
    const JoystickPtr joystick = input->GetJoystick(0);
    EXPECT_EQ(0, joystick->GetAxis(0));
    PluggedIn()[0].axes[0] = 32767;
    EXPECT_NEAR(0.5f, joystick->GetAxis(0), 1e-4);
    PluggedIn()[0].axes[0] = -32768;
    EXPECT_EQ(-1, joystick->GetAxis(0));
    input->CalibrateJoysticks();
    EXPECT_EQ(0, joystick->GetAxis(0)) << "the offset of before was taken along";
}

TEST_F(JoystickTest, TwoAxesAreADirectionOfAtMostOne)
{
    PlugIn({"Pad", {32767, 32767, 0}});
    const JoystickPtr joystick = input->GetJoystick(0);
    EXPECT_NEAR(1, joystick->GetAxis(0, 1).Length(), 1e-6);
    EXPECT_NEAR(1, joystick->GetAxis(0, 2).x, 1e-4);
}

TEST_F(JoystickTest, OneThatIsGoneIsClosedWithItsLastHandle)
{
    PlugIn({"Pad", {0}});
    JoystickPtr kept = input->GetJoystick(0);
    input->LookForJoysticks();
    EXPECT_EQ(2, PluggedIn()[0].opened);
    kept = nullptr;
    EXPECT_EQ(1, PluggedIn()[0].opened);
}

TEST_F(JoystickTest, ButtonsAreKeys)
{
    Send(SDL_JOYBUTTONDOWN, 1, 3, 0);
    EXPECT_TRUE(input->IsKeyDown(966));
    Send(SDL_JOYBUTTONUP, 1, 3, 0);
    EXPECT_FALSE(input->IsKeyDown(966));
    Send(SDL_JOYBUTTONDOWN, 32, 0, 0); // beyond the number space
    EXPECT_FALSE(input->IsKeyDown(KEYBUFFERSIZE));
}

TEST_F(JoystickTest, AHatIsFourKeys)
{
    Send(SDL_JOYHATMOTION, 0, 0, SDL_HAT_RIGHTDOWN);
    EXPECT_FALSE(input->IsKeyDown(835));
    EXPECT_TRUE(input->IsKeyDown(836));
    EXPECT_TRUE(input->IsKeyDown(837));
    EXPECT_FALSE(input->IsKeyDown(838));
    Send(SDL_JOYHATMOTION, 0, 0, SDL_HAT_LEFT);
    EXPECT_FALSE(input->IsKeyDown(836));
    EXPECT_FALSE(input->IsKeyDown(837));
    EXPECT_TRUE(input->IsKeyDown(838));
    Send(SDL_JOYHATMOTION, 0, 0, SDL_HAT_CENTERED);
    EXPECT_FALSE(input->IsKeyDown(838));
}

TEST_F(JoystickTest, AnAxisEventNamesItsJoystick)
{
    PlugIn({"Pad", {0, 0}});
    const util::SharedPtr<AxisListener> listener = QUIB_NEW AxisListener;
    input->AddListener(util::WeakPtr<InputListener>(listener.get()));
    SDL_Event event = {};
    event.type = SDL_JOYAXISMOTION;
    event.jaxis.which = 0;
    event.jaxis.axis = 1;
    input->HandleEvent(event);
    EXPECT_EQ(input->GetJoystick(0), listener->joystick);
    EXPECT_EQ(1, listener->axis);
    event.jaxis.which = 7;
    input->HandleEvent(event);
    EXPECT_FALSE(listener->joystick);
}

TEST_F(JoystickTest, ABallIsIgnored)
{
    test::LogCapture log(logging::LogWarning);
    SDL_Event event = {};
    event.type = SDL_JOYBALLMOTION;
    input->HandleEvent(event);
    EXPECT_EQ(Lines(), log.Lines());
}

TEST_F(JoystickTest, ADirectionIsTheStickOfTheJoystickOrOfTheFirstThereIs)
{
    PlugIn({"Pad", {32767, 0}});
    for (const char* text : {"joy 0 axis 0 1", "joy 5 axis 0 1"})
    {
        const DirInputPtr dir = DirInput::Deserialize(text);
        ASSERT_TRUE(dir) << text;
        EXPECT_NEAR(1, dir->GetDir().x, 1e-4);
        // What a file asked for is what it gets back, whatever is plugged in here.
        EXPECT_EQ(text, dir->Serialize());
    }
}

TEST_F(JoystickTest, ADirectionIsAHatByItsKeys)
{
    PlugIn({"Pad", {}, 0, 0, 1});
    const DirInputPtr dir = DirInput::Deserialize("joy 3 hat 0");
    ASSERT_TRUE(dir);
    EXPECT_EQ("joy 3 hat 0", dir->Serialize());
    Send(SDL_JOYHATMOTION, 0, 0, SDL_HAT_RIGHTUP);
    EXPECT_NEAR(0.70710678f, dir->GetDir().x, 1e-6);
    EXPECT_NEAR(0.70710678f, dir->GetDir().y, 1e-6);
    Send(SDL_JOYHATMOTION, 0, 0, SDL_HAT_CENTERED);
    EXPECT_EQ(math::Vec2(0, 0), dir->GetDir());
}

TEST_F(JoystickTest, WithoutAnyAJoystickTextIsAWarning)
{
    test::LogCapture log(logging::LogWarning);
    EXPECT_FALSE(DirInput::Deserialize("joy 0 axis 0 1"));
    EXPECT_EQ(Lines{"-- Warning: No joystick connected, cannot find DirInput \"joy 0 axis 0 1\""},
              log.Lines());
}

TEST_F(JoystickTest, AJoystickTextThatNamesNothingIsAWarning)
{
    PlugIn({"Pad", {0, 0}});
    for (const char* text : {"joy", "joy x axis 0 1", "joy 0 axis 0", "joy 0 stick 1",
                             "joy 0 hat 32", "joy 0 hat -1", "joy 0 axis a b"})
    {
        test::LogCapture log(logging::LogWarning);
        EXPECT_FALSE(DirInput::Deserialize(text));
        EXPECT_EQ(Lines{"-- Warning: Failed to find DirInput \"" + std::string(text) + "\""},
                  log.Lines());
    }
}

TEST_F(JoystickTest, OneThatIsUnpluggedWhileItIsUsedIsHarmlessAndKeepsItsText)
{
    PlugIn({"Pad", {32767, 0}, 4, 0, 1});
    const DirInputPtr stick = DirInput::Deserialize("joy 0 axis 0 1");
    const DirInputPtr hat = DirInput::Deserialize("joy 0 hat 0");
    ASSERT_TRUE(stick && hat);
    PluggedIn().clear();
    for (const bool isLookedFor : {false, true})
    {
        if (isLookedFor)
            input->LookForJoysticks();
        EXPECT_NEAR(0, stick->GetDir().Length(), 1e-4f);
        EXPECT_EQ(math::Vec2(0, 0), hat->GetDir());
        EXPECT_EQ("joy 0 axis 0 1", stick->Serialize());
        EXPECT_EQ("joy 0 hat 0", hat->Serialize());
        // What it still had to say.
        Send(SDL_JOYBUTTONDOWN, 0, 3, 0);
        Send(SDL_JOYBUTTONUP, 0, 3, 0);
        SDL_Event event = {};
        event.type = SDL_JOYAXISMOTION;
        input->HandleEvent(event);
    }
}
