#include "gui/GUI.h"

#include "input/Input.h"
#include "script/Parser.h"

#include <SDL_events.h>

#include <gtest/gtest.h>

using gui::GUI;
using math::Vec2;

namespace
{
class GUITest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (GUI::GetInstancePtr()->GetOwner().IsNull())
            GUI::GetInstancePtr()->AddToRoot();
    }
    void TearDown() override
    {
        Script("GUI.scale = 1.0");
        GUI::GetInstancePtr()->OnNewWindowSize(0, 0);
    }

    util::String Script(const util::String& code)
    {
        return script::Parser::GetInstancePtr()->ExecuteToString(code);
    }

    GUI* gui = GUI::GetInstancePtr();
};
}

TEST_F(GUITest, OffersItsSettingsToScripts)
{
    const struct
    {
        const char *name, *value;
    } cases[] = {
        {"clickTolerance", "3.5"},  {"clickTimeTolerance", "0.4"},
        {"forceOSCursor", "false"}, {"font", "arial_black"},
        {"crispFonts", "false"},    {"crispFontFactor", "0.5"},
        {"fontShadow", "true"},     {"scale", "1"},
        {"opaqueness", "0.9"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.value, Script(util::String("GUI.") + c.name));
    }
    EXPECT_EQ("[0.0625, 0.0625]", Script("GUI.fontShadowOffset"));
}

TEST_F(GUITest, TheRootHoldsTheMainContainerWhichFillsIt)
{
    EXPECT_TRUE(gui->GetRoot()->HasComponent(gui->GetMainContainer()));
    EXPECT_EQ("Root", gui->GetRoot()->GetReflectedName());
    EXPECT_EQ("Main", gui->GetMainContainer()->GetReflectedName());
    EXPECT_EQ("Main", Script("GUI.Root.Main"));
    gui->OnNewWindowSize(300, 200);
    EXPECT_EQ(Vec2(300, 200), gui->GetRoot()->GetInnerSize());
    EXPECT_EQ(Vec2(300, 200), gui->GetMainContainer()->GetInnerSize());
}

TEST_F(GUITest, AScaleOfTwoHalvesItsUnits)
{
    gui->OnNewWindowSize(300, 200);
    Script("GUI.scale = 2.0");
    EXPECT_EQ(Vec2(50, 25), gui->PosFromPixel(100, 50));
    EXPECT_EQ(Vec2(100, 50), gui->PixelFromPos(Vec2(50, 25)));
    EXPECT_EQ(Vec2(150, 100), gui->GetSize());
    EXPECT_EQ(Vec2(150, 100), gui->GetMainContainer()->GetInnerSize())
        << "the tree follows at once";
}

TEST_F(GUITest, ConversionsHoldTheScaleWithinReasonAndTheSettingKeepsWhatWasWritten)
{
    const struct
    {
        const char* scale;
        float held;
    } cases[] = {{"0.0", 0.1f}, {"-3.0", 0.1f}, {"0.01", 0.1f}, {"0.5", 0.5f},
                 {"10.0", 10},  {"1000.0", 10}, {"+inf", 10},   {"-inf", 0.1f}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.scale);
        Script(util::String("GUI.scale = ") + c.scale);
        EXPECT_FLOAT_EQ(c.held, gui->GetScale());
        EXPECT_FLOAT_EQ(100 / c.held, gui->PosFromPixel(100, 0).x);
    }
    Script("GUI.scale = 1000.0");
    EXPECT_EQ("1000", Script("GUI.scale"));
}

TEST_F(GUITest, TheMouseIsMeasuredInItsUnits)
{
    Script("GUI.scale = 2.0");
    class Keeper : public input::InputListener
    {
    public:
        Keeper()
            : InputListener(50)
        {
        }
        void OnKeyEvent(const input::KeyEvent& event) override { position = event.GetPosition(); }
        Vec2 position;
    };
    const util::SharedPtr<Keeper> keeper = QUIB_NEW Keeper;
    input::Input::GetInstancePtr()->AddListener(util::WeakPtr<input::InputListener>(keeper.get()));
    SDL_Event event = {};
    event.type = SDL_MOUSEBUTTONDOWN;
    event.button.button = 1;
    event.button.x = 40;
    event.button.y = 20;
    input::Input::GetInstancePtr()->HandleEvent(event);
    EXPECT_EQ(Vec2(20, 10), keeper->position);
}

TEST_F(GUITest, PassesUpdatesAndEventsToTheTree)
{
    class Counter : public gui::Component
    {
    public:
        void Update(float dt) override { seconds += dt; }
        void OnMouseMove(const input::MouseEvent&) override { ++moves; }
        float seconds = 0;
        int moves = 0;
    };
    const util::SharedPtr<Counter> counter = QUIB_NEW Counter;
    gui->GetMainContainer()->AddComponent(counter);
    gui->Update(0.25f);
    SDL_Event event = {};
    event.type = SDL_MOUSEMOTION;
    input::Input::GetInstancePtr()->HandleEvent(event);
    EXPECT_EQ(0.25f, counter->seconds);
    EXPECT_EQ(1, counter->moves);
    gui->GetMainContainer()->RemoveComponent(counter);
}
