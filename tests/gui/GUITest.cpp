#include "gui/GUIFixture.h"

#include "AllocationCounter.h"
#include "gui/LookAndFeel.h"
#include "rendering/Texture.h"

#include <GL/gl.h>
#include <SDL.h>

#include <dlfcn.h>

using gui::Component;
using gui::ComponentPtr;
using gui::GUI;
using gui::Notes;
using gui::NotingComponent;
using gui::NotingPtr;
using math::Vec2;

namespace
{
unsigned s_milliseconds = 0;
std::vector<int> s_shown; // what SDL_ShowCursor was told

class GUITest : public gui::GUIFixture
{
protected:
    void TearDown() override
    {
        gui->SetCursor({});
        Script("GUI.forceOSCursor = false");
        GUIFixture::TearDown();
    }
    NotingPtr Make(const std::string& name) { return QUIB_NEW NotingComponent(name, &notes); }
    std::vector<int> DrawAndTakeShown()
    {
        s_shown.clear();
        gui->Draw();
        return s_shown;
    }
    static rendering::TextureProxy MakeTexture()
    {
        return rendering::TextureProxy(
            []
            {
                const rendering::ImageFloatPtr image = QUIB_NEW rendering::ImageFloat(1, 1);
                return new rendering::Texture(image, {GL_ALPHA});
            });
    }

    Notes notes;
};
}

void gui::SetMilliseconds(unsigned time)
{
    s_milliseconds = time;
}

// They stand before SDL's own.
extern "C" Uint32 SDL_GetTicks()
{
    return s_milliseconds;
}
extern "C" int SDL_ShowCursor(int toggle)
{
    s_shown.push_back(toggle);
    return toggle;
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

TEST_F(GUITest, TheRootHoldsTheMainContainerAndTheTooltipsWhichFillIt)
{
    EXPECT_TRUE(gui->GetRoot()->HasComponent(gui->GetMainContainer()));
    EXPECT_EQ("Root", gui->GetRoot()->GetReflectedName());
    EXPECT_EQ("Main", gui->GetMainContainer()->GetReflectedName());
    EXPECT_EQ("Main", Script("GUI.Root.Main"));
    EXPECT_EQ("Tooltips", Script("GUI.Root.Tooltips"));
    EXPECT_EQ((std::vector<ComponentPtr>{gui->GetMainContainer(), gui->GetTooltipLayer()}),
              gui->GetRoot()->GetComponents())
        << "the tooltips are in front";
    gui->OnNewWindowSize(300, 200);
    EXPECT_EQ(Vec2(300, 200), gui->GetTooltipLayer()->GetInnerSize());
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

TEST_F(GUITest, ClicksLeaveDragsPossibleWhateverAScriptSays)
{
    const struct
    {
        const char* written;
        float distance, time;
    } cases[] = {{"3.5", 3.5f, 3.5f}, {"0.0", 0, 0},    {"-1.0", 0, 0},
                 {"1.0e9", 100, 5},   {"+inf", 100, 5}, {"math.divide(0.0, 0.0)", 0, 0}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.written);
        Script(util::String("GUI.clickTolerance = ") + c.written);
        Script(util::String("GUI.clickTimeTolerance = ") + c.written);
        EXPECT_FLOAT_EQ(c.distance, gui->GetClickTolerance());
        EXPECT_FLOAT_EQ(c.time, gui->GetClickTimeTolerance());
    }
    Script("GUI.clickTolerance = 1.0e9");
    EXPECT_EQ("1e+09", Script("GUI.clickTolerance"));
    Script("GUI.clickTolerance = 3.5; GUI.clickTimeTolerance = 0.4");
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

TEST_F(GUITest, SeesTheMouseBeforeTheTreeDoes)
{
    class Looker : public Component
    {
    public:
        void OnMouseMove(const input::MouseEvent&) override { wasOver = IsMouseOverOuter(); }
        bool wasOver = false;
    };
    const util::SharedPtr<Looker> looker = QUIB_NEW Looker;
    Place(looker, Main(), 10, 10, 20, 20);
    MoveMouse(15, 15);
    EXPECT_TRUE(looker->wasOver);
}

TEST_F(GUITest, WhatIsAddedToTheRootLaterIsInFrontOfAll)
{
    const NotingPtr main = Make("main"), later = Make("later");
    Main()->AddComponent(main);
    gui->GetRoot()->AddComponent(later);
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"later key", "main key"}), notes);
    EXPECT_EQ(later, gui->GetRoot()->GetComponents().back());
    gui->GetRoot()->RemoveComponent(later);
}

TEST_F(GUITest, TheOneWithTheKeyboardGetsKeysFirstAndThenInItsPlace)
{
    const NotingPtr a = Make("a"), b = Make("b");
    Main()->AddComponent(a);
    Main()->AddComponent(b);
    gui->ClaimKeyboard(a);
    EXPECT_TRUE(gui->HasKeyboard(a.get()));
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"a key", "b key", "a key"}), notes);
    gui->ClaimKeyboard(b);
    EXPECT_FALSE(gui->HasKeyboard(a.get()));
    gui->ReleaseKeyboard(a); // no longer its own
    EXPECT_TRUE(gui->HasKeyboard(b.get()));
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"b key", "b key", "a key"}), notes);
    gui->ReleaseKeyboard(b);
    EXPECT_FALSE(gui->HasKeyboard(b.get()));
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"b key", "a key"}), notes);
}

TEST_F(GUITest, TheConsolesPlaceIsBeforeTheKeyboard)
{
    const NotingPtr a = Make("a"), console = Make("console");
    Main()->AddComponent(a);
    gui->GetRoot()->AddComponent(console);
    gui->ClaimKeyboard(a);
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"console key", "a key", "a key"}), notes);
    gui->GetRoot()->RemoveComponent(console);
    gui->ReleaseKeyboard(a);
}

TEST_F(GUITest, ButtonsOfTheMouseAreNoMatterOfTheKeyboard)
{
    const NotingPtr a = Make("a");
    Main()->AddComponent(a);
    gui->ClaimKeyboard(a);
    for (const int key : {324, 327, 400})
    {
        notes.clear();
        gui->GetRoot()->OnKeyEvent(Press(key));
        EXPECT_EQ(Notes{"a key"}, notes) << key;
    }
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press(322));
    EXPECT_EQ((Notes{"a key", "a key"}), notes);
    gui->ReleaseKeyboard(a);
}

TEST_F(GUITest, OutsideOfTheTreeTheKeyboardIsOfNoUse)
{
    NotingPtr a = Make("a");
    const ComponentPtr owner = QUIB_NEW Component;
    owner->AddComponent(a);
    gui->ClaimKeyboard(a);
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ(Notes(), notes);
    Main()->AddComponent(owner);
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ((Notes{"a key", "a key"}), notes);
    owner->RemoveAllComponents();
    a = nullptr;
    notes.clear();
    gui->GetRoot()->OnKeyEvent(Press('a'));
    EXPECT_EQ(Notes(), notes) << "it is gone";
    EXPECT_FALSE(gui->HasKeyboard(nullptr));
}

TEST_F(GUITest, TellsSDLOfTheCursorOnlyWhenThatChanges)
{
    EXPECT_EQ(std::vector<int>{1}, DrawAndTakeShown()) << "a new window may have forgotten";
    EXPECT_EQ(std::vector<int>(), DrawAndTakeShown());
    gui->SetCursor(MakeTexture());
    EXPECT_EQ(std::vector<int>{0}, DrawAndTakeShown());
    EXPECT_EQ(std::vector<int>(), DrawAndTakeShown());
    Script("GUI.forceOSCursor = true");
    EXPECT_EQ(std::vector<int>{1}, DrawAndTakeShown());
    Script("GUI.forceOSCursor = false");
    EXPECT_EQ(std::vector<int>{0}, DrawAndTakeShown());
    gui->OnNewWindowSize(400, 300);
    EXPECT_EQ(std::vector<int>{0}, DrawAndTakeShown());
    gui->SetCursor({});
    EXPECT_EQ(std::vector<int>{1}, DrawAndTakeShown());
}

TEST_F(GUITest, AFrameAllocatesNothing)
{
    const ComponentPtr window = Place(Main(), 10, 10, 100, 100);
    window->SetBorder(gui::LookAndFeel::GetDefault()->GetWindowBorder());
    const ComponentPtr a = Place(window, 0, 0, 50, 50), b = Place(window, 20, 20, 50, 50);
    a->SetTooltip(QUIB_NEW Component);
    gui->SetCursor(MakeTexture());
    size_t allocations = 0;
    const auto frame = [&](int x)
    {
        MoveMouse(x, 15); // the input copies its listeners for each event
        const size_t before = test::g_allocations;
        gui->OnMouseMove(input::MouseEvent(0, Vec2(float(x), 15), Vec2()));
        gui->Update(0.02f);
        gui->Draw();
        allocations += test::g_allocations - before;
    };
    frame(15);
    SetSeconds(101);
    frame(15); // the tooltip comes
    ASSERT_EQ(1u, gui->GetTooltipLayer()->GetComponents().size());
    allocations = 0;
    frame(16);
    frame(200);
    frame(40);
    EXPECT_EQ(0u, allocations);
}
