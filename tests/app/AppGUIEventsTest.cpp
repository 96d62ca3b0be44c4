#include "tools/ToolFixture.h"

#include "app/tools/BoxTool.h"
#include "app/tools/BrushTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/RotateTool.h"
#include "app/widgets/Popup.h"
#include "physics/Particle.h"

#include <SDL_keysym.h>

#include <stdexcept>

using math::Vec2;

namespace app
{
namespace
{
// A tool that tells what reached it.
class Recorder final : public Tool
{
public:
    void OnDragBegin(const input::DragEvent& event) override { Note("begin", event); }
    void OnDrag(const input::DragEvent& event) override { Note("drag", event); }
    void OnDragEnd(const input::DragEvent& event) override { Note("end", event); }
    void OnClick(const input::ClickEvent& event) override { Note("click", event); }
    void OnKeyEvent(const input::KeyEvent& event) override
    {
        // Who takes the press of a button takes its clicks and drags.
        if (!input::Key::IsMouseButton(event.GetKey()))
            Note("key", event);
    }
    bool Disband() override
    {
        m_seen += "disband ";
        return std::exchange(m_disbands, false);
    }
    void Update(float) override { m_seen += "update "; }

    util::String Take() { return std::exchange(m_seen, ""); }

    bool m_takes = false;
    bool m_fails = false;
    bool m_disbands = false; // once

private:
    template<typename Event>
    void Note(const char* what, const Event& event)
    {
        if (event.IsHandled())
            m_seen += "handled ";
        m_seen += util::String(what) + " ";
        if (m_fails)
            QUIB_THROW(std::runtime_error("broken pliers"));
        event.SetHandled(m_takes);
    }

    util::String m_seen;
};

// A panel that takes the events it is told to.
class Panel final : public gui::Component
{
public:
    void OnDragBegin(const input::DragEvent& event) override { Take("begin", event); }
    void OnDrag(const input::DragEvent& event) override { Take("drag", event); }
    void OnDragEnd(const input::DragEvent& event) override { Take("end", event); }
    void OnClick(const input::ClickEvent& event) override { Take("click", event); }
    void OnKeyEvent(const input::KeyEvent& event) override { Take("key", event); }

    util::String m_takes;

private:
    template<typename Event>
    void Take(const char* what, const Event& event)
    {
        if (m_takes.find(what) != util::String::npos)
            event.SetHandled(true);
    }
};

class AppGUIEventsTest : public ToolFixture
{
protected:
    void SetUp() override
    {
        ToolFixture::SetUp();
        m_recorder = QUIB_NEW Recorder;
        m_panel = QUIB_NEW Panel;
        TheGUI()->AddComponent(m_panel);
    }
    void TearDown() override
    {
        TheGUI()->RemoveComponent(m_panel);
        TheGUI()->ClosePopup();
        Run("App.GUI.leftClickMenus = false");
        input::Input::GetInstancePtr()->SetClipboardText("");
        ToolFixture::TearDown();
    }

    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }
    static const GroupPtr& Selection() { return TheScene()->GetSelection(); }
    /// The name of the popup that is open, "" for none.
    static util::String OpenPopup()
    {
        const gui::ComponentPtr popup = TheGUI()->GetPopup();
        return popup ? popup->GetReflectedName() : "";
    }
    template<typename T>
    static bool IsCurrent()
    {
        return TheTools()->GetTool() == ToolPtr(TheTools()->Get<T>());
    }
    /// Of those that a gesture may bring.
    static util::String CurrentTool()
    {
        return IsCurrent<MoveTool>()     ? "move"
               : IsCurrent<DragTool>()   ? "drag"
               : IsCurrent<BrushTool>()  ? "brush"
               : IsCurrent<RotateTool>() ? "rotate"
               : IsCurrent<PanTool>()    ? "pan"
               : IsCurrent<SketchTool>() ? "sketch"
                                         : "other";
    }
    /// Which one is current while the mouse is being dragged from there.
    static util::String ToolOfDrag(const Vec2& from, int button = input::MouseLeft)
    {
        MoveMouse(from);
        Button(true, button);
        MoveMouse(from + Vec2(0.2f, 0));
        const util::String tool = CurrentTool();
        Button(false, button);
        EXPECT_FALSE(TheTools()->HasActive());
        return tool;
    }
    static EntityPtr AddBox(float x, float y)
    {
        return Add("Scene.addBox { pos = [" + util::ToString(x) + ", " + util::ToString(y) +
                   "]; size = [1.0, 1.0] }");
    }
    static void Select(const Entities& entities) { TheScene()->SetSelection(GroupOf(entities)); }
    /// One notch.
    static void Wheel(int key)
    {
        Button(true, key);
        Button(false, key);
    }
    static void TapCtrl(int key)
    {
        const test::HeldKeys held({SDLK_LCTRL});
        Tap(key);
    }
    static bool IsTaken(int key)
    {
        const input::KeyEvent event(key, 0, true, Vec2());
        TheGUI()->OnKeyEvent(event);
        return event.IsHandled();
    }
    /// Pressed once and then repeated by the keyboard.
    static void HoldForRepeats(int key, int repeats)
    {
        for (int i = 0; i <= repeats; ++i)
            test::SendKey(key, true);
        test::SendKey(key, false);
    }

    util::SharedPtr<Recorder> m_recorder;
    util::SharedPtr<Panel> m_panel;
};

// Drags.

TEST_F(AppGUIEventsTest, HandsADragToTheCurrentTool)
{
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    MouseDrag({Vec2(0, 0), Vec2(1, 0), Vec2(2, 0)});
    EXPECT_EQ("begin drag drag end ", m_recorder->Take());
    MouseDrag({Vec2(0, 0), Vec2(1, 0)}, input::MouseRight);
    EXPECT_EQ("begin drag end ", m_recorder->Take());
}

TEST_F(AppGUIEventsTest, ADragThatTheToolLeavesIsAGestureOfItsButton)
{
    AddBox(0, 0);
    const struct
    {
        Vec2 from;
        int button;
        const char* tool;
    } cases[] = {
        {Vec2(0, 0), input::MouseLeft, "move"},    {Vec2(3, 0), input::MouseLeft, "brush"},
        {Vec2(0, 0), input::MouseRight, "rotate"}, {Vec2(3, 0), input::MouseRight, "pan"},
        {Vec2(0, 0), input::MouseMiddle, "other"}, {Vec2(3, 0), input::MouseMiddle, "other"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.from.x << " by button " << c.button);
        TheTools()->Select(m_recorder);
        EXPECT_EQ(c.tool, ToolOfDrag(c.from, c.button));
        EXPECT_NE(util::String::npos, m_recorder->Take().find("begin "));
        EXPECT_EQ(ToolPtr(m_recorder), TheTools()->GetTool());
    }
}

TEST_F(AppGUIEventsTest, ADragOfTheSelectedMovesItOrGrabsItWhileTheWorldRuns)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(3, 0),
                    plane = Add("Scene.addPlane { normal = [0.0, 1.0]; dist = 2.0 }");
    const struct
    {
        Entities selected;
        Vec2 from;
        bool running;
        const char* tool;
    } cases[] = {
        {{a}, Vec2(0, 0), false, "move"},      {{a}, Vec2(0, 0), true, "drag"},
        {{a, b}, Vec2(0, 0), true, "move"},    {{plane}, Vec2(0, -3), true, "move"},
        {{plane}, Vec2(0, -3), false, "move"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << c.selected.size() << " from " << c.from.x << (c.running ? " running" : ""));
        Select(c.selected);
        Sim()->m_running = c.running;
        EXPECT_EQ(c.tool, ToolOfDrag(c.from));
        EXPECT_TRUE(IsCurrent<SketchTool>());
    }
    Sim()->m_running = false;
}

TEST_F(AppGUIEventsTest, OnlyTheSketchToolYieldsToTheSelected)
{
    Select({AddBox(0, 0)});
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    EXPECT_EQ("other", ToolOfDrag(Vec2(0, 0)));
    EXPECT_EQ("begin drag end ", m_recorder->Take());
    // And to the left button only.
    TheTools()->Select(TheTools()->Get<SketchTool>());
    EXPECT_EQ("rotate", ToolOfDrag(Vec2(0, 0), input::MouseRight));
}

TEST_F(AppGUIEventsTest, ADragThatBeginsOnAPanelReachesNoTool)
{
    AddBox(0, 0);
    TheTools()->Select(m_recorder);
    m_recorder->Take();
    m_panel->m_takes = "begin";
    EXPECT_EQ("other", ToolOfDrag(Vec2(0, 0)));
    EXPECT_EQ("other", ToolOfDrag(Vec2(0, 0), input::MouseRight));
    EXPECT_EQ("", m_recorder->Take());
}

TEST_F(AppGUIEventsTest, WhatAPanelTakesOfADragTheToolDoesNotSee)
{
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    m_panel->m_takes = "drag";
    MouseDrag({Vec2(0, 0), Vec2(1, 0), Vec2(2, 0)});
    EXPECT_EQ("begin end ", m_recorder->Take());
}

TEST_F(AppGUIEventsTest, AnEndThatAPanelTakesBreaksTheGestureOff)
{
    m_panel->m_takes = "end";
    TheTools()->SetActive(m_recorder);
    m_recorder->m_takes = true;
    MouseDrag({Vec2(0, 0), Vec2(1, 0)});
    EXPECT_EQ(0u, m_recorder->Take().find("begin drag disband "));
    EXPECT_FALSE(TheTools()->HasActive());
    // Not only a tool for one gesture: nothing sticks to the mouse.
    TheTools()->Select(m_recorder);
    m_recorder->Take();
    MouseDrag({Vec2(0, 0), Vec2(1, 0)});
    EXPECT_EQ("begin drag disband ", m_recorder->Take());
}

TEST_F(AppGUIEventsTest, ADragStaysWithItsToolWhenAKeyLendsAnother)
{
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(1, 0));
    test::SendKey('c', true);
    EXPECT_EQ("begin drag disband ", m_recorder->Take());
    MoveMouse(Vec2(2, 0));
    Button(false);
    EXPECT_EQ("drag end ", m_recorder->Take());
    test::SendKey('c', false);
}

TEST_F(AppGUIEventsTest, AGestureWorksWhileAToolKeyIsHeld)
{
    AddBox(0, 0);
    test::SendKey('h', true);
    const Vec2 pan = TheCamera()->GetPan();
    MouseDrag({Vec2(3, 0), Vec2(3, 1), Vec2(3, 2)}, input::MouseRight);
    EXPECT_NE(pan, TheCamera()->GetPan());
    test::SendKey('h', false);
    EXPECT_FALSE(TheTools()->HasActive());
}

TEST_F(AppGUIEventsTest, ADragOfWhatIsNotSelectedIsAStroke)
{
    AddBox(0, 0);
    EXPECT_EQ("sketch", ToolOfDrag(Vec2(0, 0)));
}

// Failures.

TEST_F(AppGUIEventsTest, AToolThatFailsIsBrokenOffAndTheLogSaysWhy)
{
    AddBox(0, 0);
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    const auto fail = [this](const char* seen, const auto& act)
    {
        SCOPED_TRACE(seen);
        m_recorder->Take();
        m_recorder->m_fails = true;
        test::LogCapture log(logging::LogError);
        act();
        m_recorder->m_fails = false;
        EXPECT_EQ(1u, log.Count("Tool failed: broken pliers")) << log.Text();
        EXPECT_EQ(seen, m_recorder->Take());
        EXPECT_FALSE(TheTools()->HasActive());
    };
    MoveMouse(Vec2(0, 0));
    Button(true);
    fail("begin disband ",
         [this]
         {
             const input::DragEvent event(GUIPos(Vec2()), Vec2(), GUIPos(Vec2()), input::MouseLeft);
             TheGUI()->OnDragBegin(event);
             EXPECT_TRUE(event.IsHandled());
         });
    MoveMouse(Vec2(1, 0));
    fail("drag disband ", [] { MoveMouse(Vec2(2, 0)); });
    fail("end disband ", [] { Button(false); });
    fail("click disband ", [] { MouseClick(Vec2(0, 0)); });
    EXPECT_TRUE(Selection()->IsEmpty());
    fail("key disband ", [] { test::SendKey('m', true); });
    test::SendKey('m', false);
}

TEST_F(AppGUIEventsTest, UpdatesTheToolsOnceAFrame)
{
    TheTools()->Select(m_recorder);
    m_recorder->Take();
    TheGUI()->Update(0.01f);
    EXPECT_EQ("update ", m_recorder->Take());
}

// Clicks.

TEST_F(AppGUIEventsTest, AClickSelectsAndClosesThePopup)
{
    const EntityPtr box = AddBox(0, 0);
    MoveMouse(Vec2(-4, 3));
    TheGUI()->OpenMenu();
    EXPECT_NE("", OpenPopup());
    MouseClick(Vec2(0, 0));
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ("", OpenPopup());
    MouseClick(Vec2(3, 0));
    EXPECT_TRUE(Selection()->IsEmpty());
}

TEST_F(AppGUIEventsTest, AClickThatTheToolOrAPanelTakesSelectsNothing)
{
    AddBox(0, 0);
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    m_recorder->Take();
    MouseClick(Vec2(0, 0));
    EXPECT_EQ("click ", m_recorder->Take());
    m_panel->m_takes = "click";
    MouseClick(Vec2(0, 0), input::MouseRight);
    EXPECT_EQ("", m_recorder->Take());
    EXPECT_TRUE(Selection()->IsEmpty());
    EXPECT_EQ("", OpenPopup());
}

TEST_F(AppGUIEventsTest, ARightClickOpensTheMenuOfWhatIsThere)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(3, 0);
    MouseClick(Vec2(0, 0), input::MouseRight);
    EXPECT_TRUE(TheScene()->IsSelected(a));
    EXPECT_EQ("EntityOptions", OpenPopup());
    // What is selected stays so.
    Select({a, b});
    MouseClick(Vec2(3, 0), input::MouseRight);
    EXPECT_EQ(2u, Selection()->GetEntities().size());
    // The menu of the selection, wherever the mouse is.
    MouseClick(Vec2(0, 3), input::MouseRight);
    EXPECT_EQ("EntityOptions", OpenPopup());
    Selection()->Clear();
    MouseClick(Vec2(-0.5f, 3), input::MouseRight);
    EXPECT_EQ("BackgroundMenu", OpenPopup());
    Run("Scene.addWater { vecs = [[-3.0, 3.0]] }");
    MouseClick(Vec2(-3, 3), input::MouseRight);
    EXPECT_EQ("WaterMenu", OpenPopup());
}

TEST_F(AppGUIEventsTest, ALeftClickOpensTheMenuForWhoHasChosenSo)
{
    const EntityPtr box = AddBox(0, 0);
    Run("App.GUI.leftClickMenus = true");
    MouseClick(Vec2(0, 0));
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ("EntityOptions", OpenPopup());
}

TEST_F(AppGUIEventsTest, AClickThatCountsTwoOpensTheMenuThoughNoneDoes)
{
    // Nothing makes such a click; that it would open the menu stays.
    const EntityPtr box = AddBox(0, 0);
    const input::ClickEvent event(GUIPos(Vec2(0, 0)), input::MouseLeft, 2);
    MoveMouse(Vec2(0, 0));
    TheGUI()->OnClick(event);
    EXPECT_TRUE(event.IsHandled());
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ("EntityOptions", OpenPopup());
}

TEST_F(AppGUIEventsTest, AMiddleClickDoesNothing)
{
    AddBox(0, 0);
    const input::ClickEvent event(GUIPos(Vec2(0, 0)), input::MouseMiddle, 1);
    TheGUI()->OnClick(event);
    EXPECT_FALSE(event.IsHandled());
    EXPECT_TRUE(Selection()->IsEmpty());
    EXPECT_EQ("", OpenPopup());
}

// The popup.

TEST_F(AppGUIEventsTest, ThePopupIsAtTheMouseAndOnTheScreen)
{
    const Vec2 screen = TheGUI()->GetInnerSize();
    for (const Vec2& mouse : {Vec2(200, 100), Vec2(1020, 100), Vec2(200, 760), Vec2(1023, 767)})
    {
        MouseClick(TheCamera()->GUIToWorld(mouse), input::MouseRight);
        const math::BoundingBox box = TheGUI()->GetPopup()->GetOuterBB();
        EXPECT_TRUE(math::BoundingBox(Vec2(), screen).Contains(box.GetMin()));
        EXPECT_TRUE(math::BoundingBox(Vec2(), screen).Contains(box.GetMax()));
        EXPECT_TRUE(box.Contains(mouse)) << mouse.x << " " << mouse.y;
    }
    MouseClick(TheCamera()->GUIToWorld(Vec2(200, 100)), input::MouseRight);
    EXPECT_EQ(Vec2(200, 100), TheGUI()->GetPopup()->GetOuterPos());
}

TEST_F(AppGUIEventsTest, ThePopupStaysInAWindowThatShrinks)
{
    MouseClick(TheCamera()->GUIToWorld(Vec2(1000, 700)), input::MouseRight);
    gui::GUI::GetInstancePtr()->OnNewWindowSize(640, 480);
    EXPECT_TRUE(math::BoundingBox(Vec2(), Vec2(640, 480))
                    .Contains(TheGUI()->GetPopup()->GetOuterBB().GetMax()));
    gui::GUI::GetInstancePtr()->OnNewWindowSize(1024, 768);
}

TEST_F(AppGUIEventsTest, APopupThatDoesNotFitShowsItsTopLeft)
{
    const gui::ComponentPtr large = QUIB_NEW gui::Component;
    large->SetInnerSize(Vec2(3000, 100));
    TheGUI()->PositionInCenter(*large);
    EXPECT_EQ(0, large->GetOuterPos().x);
    EXPECT_EQ((768 - large->GetOuterBB().GetSize().y) / 2, large->GetOuterPos().y);
}

TEST_F(AppGUIEventsTest, ThePopupTakesWhatTheMouseDoesInItAndNothingElse)
{
    TheTools()->Select(m_recorder);
    const EntityPtr box = AddBox(0, 0);
    const Vec2 corner = TheCamera()->WorldToGUI(Vec2(-0.3f, 0.3f));
    MouseClick(TheCamera()->GUIToWorld(corner), input::MouseRight);
    Selection()->Clear();
    m_recorder->Take();
    const Vec2 inside = TheCamera()->GUIToWorld(corner + Vec2(20, 20));
    MouseClick(inside);
    MouseClick(inside, input::MouseRight);
    EXPECT_EQ("other", ToolOfDrag(inside));
    EXPECT_EQ("", m_recorder->Take());
    EXPECT_TRUE(Selection()->IsEmpty());
    EXPECT_EQ("EntityOptions", OpenPopup());

    const float zoom = TheCamera()->GetZoom();
    Wheel(input::MouseWheelUp);
    EXPECT_NE(zoom, TheCamera()->GetZoom());
    TheCamera()->SetZoom(zoom);
    Tap(SDLK_SPACE);
    EXPECT_TRUE(Sim()->m_running);
    Sim()->m_running = false;
    m_recorder->m_takes = true;
    m_recorder->Take();
    MouseDrag({Vec2(-3, 0), Vec2(-2, 0)});
    EXPECT_EQ("begin drag end ", m_recorder->Take());
    EXPECT_EQ("EntityOptions", OpenPopup());
}

TEST_F(AppGUIEventsTest, ThePopupIsCalledByItsLanguageAndByScripts)
{
    Select({AddBox(0, 0)});
    TheGUI()->OpenMenu();
    const auto popup = util::DynamicCast<Popup>(TheGUI()->GetPopup());
    ASSERT_TRUE(popup);
    EXPECT_EQ("[PopupTitle] [Box]", popup->GetTitle());
    EXPECT_EQ("EntityOptions", popup->GetID());
    EXPECT_FALSE(Parser()->ExecuteToString("App.GUI.Popup.EntityOptions").empty());
}

TEST_F(AppGUIEventsTest, OnePopupIsOpenAtATime)
{
    TheGUI()->OpenMenu();
    TheGUI()->OnSceneLoad();
    EXPECT_EQ("LoadSceneMenu", OpenPopup());
    TheGUI()->ClosePopup();
    EXPECT_EQ("", OpenPopup());
    TheGUI()->ClosePopup();
}

// Keys.

TEST_F(AppGUIEventsTest, TheWheelWithCtrlUndoesAndRedoesOneStepANotch)
{
    for (int i = 0; i < 3; ++i)
        TheGUI()->AssignToEmptyGroup(GroupOf({AddBox(float(i), 0)}));
    const float zoom = TheCamera()->GetZoom();
    const size_t groups = TheScene()->GetGroups().size();
    const test::HeldKeys held({SDLK_LCTRL});
    Wheel(input::MouseWheelDown);
    EXPECT_EQ(groups - 1, TheScene()->GetGroups().size());
    Wheel(input::MouseWheelDown);
    EXPECT_EQ(groups - 2, TheScene()->GetGroups().size());
    Wheel(input::MouseWheelUp);
    EXPECT_EQ(groups - 1, TheScene()->GetGroups().size());
    EXPECT_EQ(zoom, TheCamera()->GetZoom());
}

TEST_F(AppGUIEventsTest, TheWheelWithShiftMovesToFrontAndBack)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(1, 0), c = AddBox(2, 0);
    Select({b});
    const float zoom = TheCamera()->GetZoom();
    const test::HeldKeys held({SDLK_RSHIFT});
    Wheel(input::MouseWheelUp);
    EXPECT_EQ((Entities{a, c, b}), TheScene()->GetEntities());
    Wheel(input::MouseWheelDown);
    EXPECT_EQ((Entities{b, a, c}), TheScene()->GetEntities());
    EXPECT_EQ(zoom, TheCamera()->GetZoom());
}

TEST_F(AppGUIEventsTest, TheWheelZoomsAroundTheMouse)
{
    MoveMouse(Vec2(2, 1));
    const Vec2 mouse = input::Input::GetInstancePtr()->GetMousePos();
    const Vec2 before = TheCamera()->GUIToWorld(mouse);
    Wheel(input::MouseWheelUp);
    EXPECT_FLOAT_EQ(100 * std::exp2(0.2f), TheCamera()->GetZoom());
    EXPECT_NEAR(before.x, TheCamera()->GUIToWorld(mouse).x, 1e-3f);
    EXPECT_NEAR(before.y, TheCamera()->GUIToWorld(mouse).y, 1e-3f);
    Run("App.GUI.zoomFactor = 1.0");
    Wheel(input::MouseWheelDown);
    Run("App.GUI.zoomFactor = 0.2");
    EXPECT_FLOAT_EQ(50 * std::exp2(0.2f), TheCamera()->GetZoom());
}

TEST_F(AppGUIEventsTest, TheWheelTurnedRoundZoomsBackFromTheEndOfTheRange)
{
    Run("App.GUI.zoomFactor = -0.2");
    TheCamera()->SetZoom(Camera::GetMaxZoom());
    Wheel(input::MouseWheelDown);
    EXPECT_EQ(Camera::GetMaxZoom(), TheCamera()->GetZoom());
    Wheel(input::MouseWheelUp);
    EXPECT_LT(TheCamera()->GetZoom(), Camera::GetMaxZoom());
    Run("App.GUI.zoomFactor = 0.2");
}

TEST_F(AppGUIEventsTest, SpacePlaysAndPauses)
{
    Tap(SDLK_SPACE);
    EXPECT_TRUE(Sim()->m_running);
    EXPECT_EQ("UndoSimStart", NextUndo());
    ForgetUndo();
    Tap(SDLK_SPACE);
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, CopiesAndPastesAtTheMouse)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(2, 0);
    AddBox(0, 3);
    Select({a, b});
    TapCtrl('c');
    const util::String text = input::Input::GetInstancePtr()->GetClipboardText();
    EXPECT_EQ(Serializer::GetInstancePtr()->SerializeQuiblet(Selection()), text);
    const util::String before = Save();
    MoveMouse(Vec2(3, 3));
    TapCtrl('v');
    ASSERT_EQ(5u, EntityCount());
    EXPECT_EQ(2u, Selection()->GetEntities().size());
    EXPECT_FALSE(TheScene()->IsSelected(a));
    EXPECT_NEAR(3, Selection()->CalcFiniteAABB().GetCenter().x, 1e-4f);
    EXPECT_NEAR(3, Selection()->CalcFiniteAABB().GetCenter().y, 1e-4f);
    EXPECT_EQ("UndoCodePaste", NextUndo());
    const util::String after = Save();
    TapCtrl('z');
    EXPECT_EQ(before, Save());
    TapCtrl('y');
    EXPECT_EQ(after, Save());
}

TEST_F(AppGUIEventsTest, CopiesNothingOfNothing)
{
    input::Input::GetInstancePtr()->SetClipboardText("kept");
    TapCtrl('c');
    TapCtrl('x');
    EXPECT_EQ("kept", input::Input::GetInstancePtr()->GetClipboardText());
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, CutsByCopyingAndErasing)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(2, 0);
    Select({a});
    const util::String quiblet = Serializer::GetInstancePtr()->SerializeQuiblet(Selection());
    TapCtrl('x');
    EXPECT_EQ(Entities{b}, TheScene()->GetEntities());
    EXPECT_EQ(quiblet, input::Input::GetInstancePtr()->GetClipboardText());
    EXPECT_EQ("UndoErase", NextUndo());
    TapCtrl('z');
    EXPECT_EQ((Entities{a, b}), TheScene()->GetEntities());
}

TEST_F(AppGUIEventsTest, AnEmptyClipboardPastesNothing)
{
    const EntityPtr box = AddBox(0, 0);
    Select({box});
    TapCtrl('v');
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, ATextThatDoesNotParsePastesNothing)
{
    Select({AddBox(0, 0)});
    input::Input::GetInstancePtr()->SetClipboardText("Scene.addBox { pos = [1.0, ");
    test::LogCapture log(logging::LogError);
    TapCtrl('v');
    EXPECT_TRUE(
        log.Has("An error occurred while pasting: The text is not a valid scene or Quiblet"))
        << log.Text();
    EXPECT_EQ(1u, EntityCount());
    EXPECT_TRUE(Selection()->IsEmpty());
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, APastedTextIsRunWhateverItIs)
{
    input::Input::GetInstancePtr()->SetClipboardText("App.autosaveTime = 77.0; nobody.knows = 1.0; "
                                                     "Scene.addBox { pos = [5.0, 5.0] }");
    TapCtrl('v');
    EXPECT_EQ(77, App::GetInstancePtr()->GetAutosaveTime());
    Run("App.autosaveTime = 30.0");
    // A statement that fails costs itself only.
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ("UndoCodePaste", NextUndo());
}

TEST_F(AppGUIEventsTest, APasteDoesNotRenameTheSceneAndIsUndoneWithItsSettings)
{
    AddBox(0, 0);
    Run("FileInfo.title = \"Mine\"; FileInfo.author = \"me\"");
    const util::String before = Save();
    input::Input::GetInstancePtr()->SetClipboardText(
        "FileInfo.title = \"Other\"; FileInfo.author = \"another\";"
        "FileInfo.description = \"what it is\"; FileInfo.version = 2; Sim.gravity = [1.0, 2.0];"
        "Scene.addBox { pos = [5.0, 5.0] }");
    TapCtrl('v');
    const util::String after = Save();
    EXPECT_NE(util::String::npos, after.find("title = \"Mine\"")) << after;
    EXPECT_NE(util::String::npos, after.find("author = \"me\"")) << after;
    EXPECT_EQ(util::String::npos, after.find("what it is")) << after;
    EXPECT_EQ(Vec2(1, 2), Sim()->GetGravity());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
    TapCtrl('y');
    EXPECT_EQ(after, Save());
    TapCtrl('z');
    FileInfo::GetInstancePtr()->ClearTexts();
}

TEST_F(AppGUIEventsTest, UndoOfAPasteThatSetsNothingLeavesTheSettingsAlone)
{
    Select({AddBox(0, 0)});
    TapCtrl('c');
    TapCtrl('v');
    Run("Sim.gravity = [3.0, 4.0]");
    TapCtrl('z');
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ(Vec2(3, 4), Sim()->GetGravity());
    TapCtrl('y');
    EXPECT_EQ(Vec2(3, 4), Sim()->GetGravity());
}

TEST_F(AppGUIEventsTest, AHeldEscapeLeavesWhatBeginsMeanwhileAlone)
{
    TheTools()->Select(TheTools()->Get<BoxTool>());
    test::SendKey(SDLK_ESCAPE, true);
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(1, 1));
    ASSERT_TRUE(TheTools()->Get<BoxTool>()->IsInUse());
    test::SendKey(SDLK_ESCAPE, true);
    EXPECT_TRUE(TheTools()->Get<BoxTool>()->IsInUse());
    test::SendKey(SDLK_ESCAPE, false);
    test::SendKey(SDLK_ESCAPE, true);
    EXPECT_FALSE(TheTools()->Get<BoxTool>()->IsInUse());
    test::SendKey(SDLK_ESCAPE, false);
    Button(false);
}

TEST_F(AppGUIEventsTest, WhatEditsNothingLeavesTheDragAlone)
{
    TheTools()->Select(TheTools()->Get<BoxTool>());
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(1, 1));
    Tap(SDLK_DELETE);
    TapCtrl('z');
    TapCtrl('v');
    EXPECT_TRUE(TheTools()->Get<BoxTool>()->IsInUse());
    Button(false);
    EXPECT_EQ(1u, EntityCount());
}

TEST_F(AppGUIEventsTest, APastedPlaneStaysWhereItIs)
{
    Select({Add("Scene.addPlane { normal = [0.0, 1.0]; dist = 2.0 }")});
    TapCtrl('c');
    MoveMouse(Vec2(3, 3));
    TapCtrl('v');
    ASSERT_EQ(2u, EntityCount());
    EXPECT_EQ(Vec2(0, -2), TheScene()->GetEntities()[1]->AsGeomEntity()->GetGeom()->GetCenter());
}

TEST_F(AppGUIEventsTest, UndoesAndRedoesAsLongAsTheKeysAreHeld)
{
    for (int i = 0; i < 4; ++i)
        TheGUI()->AssignToEmptyGroup(GroupOf({AddBox(float(i), 0)}));
    const size_t groups = TheScene()->GetGroups().size();
    const test::HeldKeys held({SDLK_LCTRL});
    HoldForRepeats('z', 2);
    EXPECT_EQ(groups - 3, TheScene()->GetGroups().size());
    HoldForRepeats('y', 1);
    EXPECT_EQ(groups - 1, TheScene()->GetGroups().size());
}

TEST_F(AppGUIEventsTest, SelectsAll)
{
    AddBox(0, 0);
    AddBox(2, 0);
    TapCtrl('a');
    EXPECT_EQ(2u, Selection()->GetEntities().size());
}

TEST_F(AppGUIEventsTest, SavesUnderTheNameOfTheScene)
{
    AddBox(0, 0);
    FileInfo::GetInstancePtr()->SetFileName("");
    {
        test::LogCapture log(logging::LogVerbose);
        TapCtrl('s');
        EXPECT_TRUE(log.Has("Scene saved to " + (Dir() / "scenes/unnamed.qib"))) << log.Text();
    }
    EXPECT_EQ("unnamed.qib", FileInfo::GetInstancePtr()->GetFileName());
    AddBox(2, 0);
    TapCtrl('s');
    EXPECT_EQ(Save(), test::Slurp(Dir() / "scenes/unnamed.qib"));
    EXPECT_FALSE(boost::filesystem::exists(Dir() / "scenes/unnamed1.qib")) << "the same scene";
    // Another one must not be the end of that.
    const util::String former = Save();
    FileInfo::GetInstancePtr()->SetFileName("");
    AddBox(4, 0);
    TapCtrl('s');
    EXPECT_EQ(Save(), test::Slurp(Dir() / "scenes/unnamed.qib"));
    EXPECT_EQ(former, test::Slurp(Dir() / "scenes/unnamed1.qib"));
    FileInfo::GetInstancePtr()->SetFileName("mine");
    TapCtrl('s');
    EXPECT_EQ(Save(), test::Slurp(Dir() / "scenes/mine.qib"));
    FileInfo::GetInstancePtr()->SetFileName("");
}

TEST_F(AppGUIEventsTest, OpensThePlaceToLoadAndLosesNothing)
{
    AddBox(0, 0);
    TapCtrl('o');
    EXPECT_EQ("LoadSceneMenu", OpenPopup());
    EXPECT_EQ(1u, EntityCount());
    Tap(SDLK_ESCAPE);
    EXPECT_EQ("", OpenPopup());
}

TEST_F(AppGUIEventsTest, LoadingAndSavingClosesThePopup)
{
    TheGUI()->OnSceneLoad();
    TheGUI()->SaveSceneAs("popup", true);
    EXPECT_EQ("LoadSceneMenu", OpenPopup());
    TheGUI()->SaveSceneAs("popup", false);
    EXPECT_EQ("", OpenPopup());
    TheGUI()->OnSceneLoad();
    TheGUI()->LoadScene("popup", true);
    EXPECT_EQ("LoadSceneMenu", OpenPopup());
    TheGUI()->LoadScene("popup", false);
    EXPECT_EQ("", OpenPopup());
    FileInfo::GetInstancePtr()->SetFileName("");
}

TEST_F(AppGUIEventsTest, AfterALoadOneUndoPausesAndTwoBringBackTheSceneBefore)
{
    test::Spit(Dir() / "scenes/two.qib", "Scene.addBox { }; Scene.addBox { pos = [3.0, 0.0] }");
    AddBox(0, 0);
    const util::String before = Save();
    TheGUI()->LoadScene("two", true);
    const util::String loaded = Save();
    EXPECT_TRUE(Sim()->m_running);
    TapCtrl('z');
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_EQ(loaded, Save());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
}

TEST_F(AppGUIEventsTest, QuitsWithCtrlQ)
{
    EXPECT_FALSE(core::Subsystem::GetInstancePtr()->IsExiting());
    Tap('q');
    EXPECT_FALSE(core::Subsystem::GetInstancePtr()->IsExiting());
    TapCtrl('q');
    EXPECT_TRUE(core::Subsystem::GetInstancePtr()->IsExiting());
}

TEST_F(AppGUIEventsTest, GroupsTheSelection)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(2, 0);
    TapCtrl('g');
    EXPECT_EQ("", NextUndo());
    Select({a, b});
    const size_t groups = TheScene()->GetGroups().size();
    const util::String before = Save();
    TapCtrl('g');
    ASSERT_EQ(groups + 1, TheScene()->GetGroups().size());
    const GroupPtr group = TheScene()->GetGroupByName("");
    ASSERT_TRUE(group);
    EXPECT_TRUE(group->Contains(a) && group->Contains(b));
    EXPECT_EQ("UndoGroupAssignment", NextUndo());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
}

TEST_F(AppGUIEventsTest, TakesTheSelectionOutOfItsGroups)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(2, 0), c = AddBox(4, 0);
    TapCtrl('u');
    EXPECT_EQ("", NextUndo());
    TheGUI()->AssignToEmptyGroup(GroupOf({a, b}));
    const GroupPtr other = QUIB_NEW Group("wheels");
    other->Add(a);
    other->Add(c);
    TheScene()->AddGroup(other);
    Select({a, b});
    const util::String before = Save();
    TapCtrl('u');
    EXPECT_FALSE(TheScene()->GetGroupByName(""));
    EXPECT_EQ(1u, other->GetEntities().size());
    EXPECT_TRUE(other->Contains(c));
    EXPECT_TRUE(TheScene()->IsSelected(a));
    EXPECT_EQ("UndoGroupRemoval", NextUndo());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
}

TEST_F(AppGUIEventsTest, DeleteErasesTheSelection)
{
    const EntityPtr a = AddBox(0, 0);
    AddBox(2, 0);
    Tap(127);
    EXPECT_EQ("", NextUndo());
    Select({a});
    const util::String before = Save();
    Tap(127);
    EXPECT_EQ(1u, EntityCount());
    EXPECT_EQ("UndoErase", NextUndo());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
}

TEST_F(AppGUIEventsTest, EscapeDoesOneThing)
{
    TheGUI()->OpenMenu();
    TheTools()->Select(m_recorder);
    m_recorder->Take();
    m_recorder->m_disbands = true;
    Tap(SDLK_ESCAPE);
    EXPECT_EQ("BackgroundMenu", OpenPopup());
    EXPECT_EQ("disband key ", m_recorder->Take()); // the key is its release
    Tap(SDLK_ESCAPE);
    EXPECT_EQ("", OpenPopup());
    EXPECT_EQ("disband key ", m_recorder->Take());
    Tap(SDLK_ESCAPE);
    EXPECT_EQ("disband key key ", m_recorder->Take());
}

TEST_F(AppGUIEventsTest, EscapeBreaksOffTheDragUnderWay)
{
    TheTools()->Select(m_recorder);
    m_recorder->m_takes = true;
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(1, 0));
    m_recorder->m_disbands = true;
    m_recorder->Take();
    EXPECT_TRUE(IsTaken(SDLK_ESCAPE));
    EXPECT_EQ("disband ", m_recorder->Take());
    Button(false);
}

TEST_F(AppGUIEventsTest, TheRepeatsOfAKeyGoWhereItsPressWent)
{
    TheTools()->Select(m_recorder);
    ASSERT_EQ("", OpenPopup());
    m_recorder->Take();
    HoldForRepeats(SDLK_ESCAPE, 2);
    EXPECT_EQ("disband key key key key ", m_recorder->Take()) << "press, two repeats, release";
    // An undo whose Ctrl is let go first.
    {
        const test::HeldKeys held({SDLK_LCTRL});
        test::SendKey('z', true);
    }
    m_recorder->Take();
    test::SendKey('z', true);
    EXPECT_EQ("", m_recorder->Take());
    test::SendKey('z', false);
    test::SendKey('z', true);
    EXPECT_EQ("key key ", m_recorder->Take()) << "release and press";
    test::SendKey('z', false);
}

TEST_F(AppGUIEventsTest, AnEditBreaksOffTheDragUnderWay)
{
    const EntityPtr box = AddBox(0, 0);
    Select({box});
    const util::String before = Save();
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(0, 1));
    MoveMouse(Vec2(0, 2));
    ASSERT_EQ("move", CurrentTool());
    Tap(SDLK_DELETE);
    EXPECT_EQ(0u, EntityCount());
    Button(false);
    EXPECT_EQ("UndoErase", NextUndo());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, AGestureHearsOfKeysThoughAnotherToolIsLent)
{
    m_recorder->m_takes = true;
    TheTools()->Select(m_recorder);
    MoveMouse(Vec2(0, 0));
    Button(true);
    MoveMouse(Vec2(1, 0));
    test::SendKey('h', true);
    m_recorder->Take();
    test::SendKey(SDLK_LSHIFT, false);
    EXPECT_EQ("key ", m_recorder->Take());
    test::SendKey('h', false);
    Button(false);
}

TEST_F(AppGUIEventsTest, AHeldKeyActsOnce)
{
    Select({AddBox(0, 0)});
    HoldForRepeats(SDLK_SPACE, 3);
    EXPECT_TRUE(Sim()->m_running);
    Sim()->m_running = false;
    TheTools()->Select(m_recorder);
    ForgetUndo();
    m_recorder->Take();
    {
        const test::HeldKeys held({SDLK_LCTRL});
        m_recorder->Take();
        HoldForRepeats('g', 3);
        // A repeat is taken where the press is; what the tool sees are releases.
        EXPECT_EQ("key ", m_recorder->Take());
    }
    TapCtrl('z');
    EXPECT_EQ("", NextUndo());

    TheGUI()->OpenMenu();
    test::SendKey(SDLK_ESCAPE, true);
    EXPECT_EQ("", OpenPopup());
    TheGUI()->OpenMenu();
    m_recorder->Take();
    test::SendKey(SDLK_ESCAPE, true);
    EXPECT_EQ("EntityOptions", OpenPopup());
    EXPECT_EQ("", m_recorder->Take());
    test::SendKey(SDLK_ESCAPE, false);
}

TEST_F(AppGUIEventsTest, AKeyThatAPanelTakesIsNoShortcut)
{
    m_panel->m_takes = "key";
    Tap(SDLK_SPACE);
    Tap('c');
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_TRUE(IsCurrent<SketchTool>());
}

TEST_F(AppGUIEventsTest, AKeyThatIsNoShortcutChoosesAToolOrGoesToIt)
{
    Tap('c');
    EXPECT_TRUE(IsCurrent<CircleTool>());
    Tap('x');
    EXPECT_TRUE(IsCurrent<BoxTool>());
    TheTools()->Select(m_recorder);
    m_recorder->Take();
    Tap('m');
    EXPECT_EQ("key key ", m_recorder->Take());
    TapCtrl('a');
    EXPECT_EQ("key key key ", m_recorder->Take()); // Ctrl itself, and the release
    EXPECT_EQ(ToolPtr(m_recorder), TheTools()->GetTool());
}

TEST_F(AppGUIEventsTest, ThePlainLettersOfShortcutsAreNone)
{
    AddBox(0, 0);
    Select({});
    for (char key : util::String("vzyaogu"))
        Tap(key);
    EXPECT_TRUE(Selection()->IsEmpty());
    EXPECT_EQ("", OpenPopup());
    EXPECT_EQ("", NextUndo());
}

// What menus call.

TEST_F(AppGUIEventsTest, InvertsTheSelection)
{
    const EntityPtr a = AddBox(0, 0), b = AddBox(2, 0);
    Select({a});
    TheGUI()->OpenMenu();
    TheGUI()->InvertSelection();
    EXPECT_FALSE(TheScene()->IsSelected(a));
    EXPECT_TRUE(TheScene()->IsSelected(b));
    EXPECT_EQ("", OpenPopup());
}

TEST_F(AppGUIEventsTest, ErasesWater)
{
    Run("Scene.addWater { vecs = [[-3.0, 3.0]] }");
    TheGUI()->EraseWater();
    EXPECT_TRUE(Sim()->GetParticles().empty());
}

TEST_F(AppGUIEventsTest, TheMoveOfASliderIsOneStep)
{
    const EntityPtr box = AddBox(0, 0);
    const util::String before = Save();
    TheGUI()->OnSliderBegin();
    for (float density : {2.0f, 3.0f, 4.0f})
        box->FindVariable("density")->SetObject(script::ValueToObject(density));
    TheGUI()->OnSliderEnd();
    EXPECT_EQ("UndoSliderChange", NextUndo());
    EXPECT_NE(before, Save());
    TapCtrl('z');
    EXPECT_EQ(before, Save());
    EXPECT_EQ("", NextUndo());
    // An end without a beginning.
    TheGUI()->OnSliderEnd();
    EXPECT_EQ("", NextUndo());
}

TEST_F(AppGUIEventsTest, AnswersWhereTheMouseIsAndWhatIsSelected)
{
    MoveMouse(Vec2(2, 1));
    EXPECT_NEAR(2, TheGUI()->GetMousePos().x, 1e-3f);
    EXPECT_NEAR(1, TheGUI()->GetMousePos().y, 1e-3f);
    EXPECT_EQ(Selection(), TheGUI()->GetSelection());
}

TEST_F(AppGUIEventsTest, ANewLanguageClosesThePopup)
{
    TheGUI()->OpenMenu();
    Run("App.ChangeLanguage(\"Deutsch\")");
    EXPECT_EQ("Deutsch", Run("App.language"));
    EXPECT_EQ("", OpenPopup());
    Run("App.ChangeLanguage(\"English\")");
}
}
}
