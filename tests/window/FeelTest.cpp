// Nothing sticks: a real mouse and a real keyboard at a window that loses the keys, the mouse, or itself.
#include "FreshProcess.h"
#include "input/InputEvent.h"
#include "window/InputWindow.h"
#include "window/XServer.h"

#include <SDL_syswm.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <gtest/gtest.h>

using input::Input;
using test::InputWindow;

namespace
{
using Notes = std::vector<std::string>;

class GestureNotes final : public input::InputListener
{
public:
    GestureNotes()
        : InputListener(50)
    {
    }
    void OnClick(const input::ClickEvent&) override { notes.push_back("click"); }
    void OnDragBegin(const input::DragEvent&) override { notes.push_back("begin"); }
    void OnDrag(const input::DragEvent& event) override { last = event.GetPosition(); }
    void OnDragEnd(const input::DragEvent& event) override
    {
        notes.push_back("end");
        last = event.GetPosition();
    }
    void OnOtherEvent(const input::InputEvent& event) override
    {
        if (event.GetEvent().type == SDL_VIDEORESIZE)
            newSize = math::Vec2(event.GetEvent().resize.w, event.GetEvent().resize.h);
    }

    Notes notes;
    math::Vec2 last;
    math::Vec2 newSize;
};

SDL_SysWMinfo GetWMInfo()
{
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    EXPECT_EQ(1, SDL_GetWMInfo(&info));
    return info;
}

Window FindSDLWindow()
{
    return GetWMInfo().info.x11.wmwindow;
}

// Mouse and keyboard, on a connection of their own.
class Hands
{
public:
    explicit Hands(const std::string& display)
        : m_display(XOpenDisplay(display.c_str()))
        , m_other(XCreateSimpleWindow(m_display, DefaultRootWindow(m_display), 500, 400, 50, 50, 0,
                                      0, 0))
    {
        XMapWindow(m_display, m_other);
        Focus(FindSDLWindow());
    }
    ~Hands() { XCloseDisplay(m_display); }

    void Focus(Window window)
    {
        XSetInputFocus(m_display, window, RevertToPointerRoot, CurrentTime);
        XSync(m_display, False);
    }
    void FocusElsewhere() { Focus(m_other); }
    void Key(KeySym key, bool down)
    {
        XTestFakeKeyEvent(m_display, XKeysymToKeycode(m_display, key), down, CurrentTime);
        XSync(m_display, False);
    }
    void Button(unsigned button, bool down)
    {
        XTestFakeButtonEvent(m_display, button, down, CurrentTime);
        XSync(m_display, False);
    }
    void Move(int x, int y)
    {
        XTestFakeMotionEvent(m_display, -1, x, y, CurrentTime);
        XSync(m_display, False);
    }
    void Resize(int width, int height)
    {
        XResizeWindow(m_display, FindSDLWindow(), width, height);
        XSync(m_display, False);
    }
    /// The part of the window that gets the mouse.
    void HideAndShow()
    {
        const Window inner = GetWMInfo().info.x11.window;
        XUnmapWindow(m_display, inner);
        XMapWindow(m_display, inner);
        XSync(m_display, False);
    }
    /// A press that only the window hears of.
    void PretendPress(unsigned button)
    {
        const Window window = FindSDLWindow();
        XEvent event = {};
        event.xbutton.type = ButtonPress;
        event.xbutton.window = window;
        event.xbutton.root = DefaultRootWindow(m_display);
        event.xbutton.button = button;
        event.xbutton.same_screen = True;
        XSendEvent(m_display, window, False, NoEventMask, &event);
        XSync(m_display, False);
    }

private:
    Display* m_display;
    Window m_other;
};

class FeelTest : public testing::Test
{
protected:
    /// To be called in the fresh process.
    void Open()
    {
        window = std::make_unique<InputWindow>(server.Display());
        input = Input::GetInstancePtr();
        listener = QUIB_NEW GestureNotes;
        input->AddListener(util::WeakPtr<input::InputListener>(listener.get()));
        input->SetClickLimits([] { return Input::ClickLimits{100, 3.5f}; });
        hands = std::make_unique<Hands>(server.Display());
        hands->Move(50, 40);
        window->RunUntil([this] { return input->GetMousePos() == math::Vec2(50, 40); });
    }
    void BeginDrag()
    {
        hands->Button(1, true);
        hands->Move(70, 40);
        window->RunUntil([this] { return listener->last == math::Vec2(70, 40); });
    }
    void PumpSomeTimes()
    {
        for (int i = 0; i < 20; ++i)
        {
            input->PumpEvents();
            SDL_Delay(5);
        }
    }

    test::XServer server{"640x480x24"};
    std::unique_ptr<InputWindow> window;
    std::unique_ptr<Hands> hands;
    Input* input = nullptr;
    util::SharedPtr<GestureNotes> listener;
};
}

TEST_F(FeelTest, KeysThatAreHeldWhenTheWindowLosesThemComeUp)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        hands->Key(XK_Shift_L, true);
        hands->Key(XK_Left, true);
        window->RunUntil([this] { return input->IsKeyDown(SDLK_LEFT); });
        EXPECT_TRUE(input->CheckModifier(input::ModShift));
        EXPECT_TRUE(listener->IsKeyDown(SDLK_LEFT));

        hands->FocusElsewhere();
        window->RunUntil([this] { return !input->IsKeyDown(SDLK_LEFT); });
        EXPECT_FALSE(input->IsKeyDown(SDLK_LSHIFT));
        EXPECT_FALSE(input->CheckModifier(input::ModShift));
        EXPECT_FALSE(listener->IsKeyDown(SDLK_LEFT));

        hands->Key(XK_Shift_L, false); // somebody else's release
        hands->Key(XK_Left, false);
        hands->Focus(FindSDLWindow());
        hands->Key(XK_a, true);
        window->RunUntil([this] { return input->IsKeyDown(SDLK_a); });
        EXPECT_FALSE(input->CheckModifier(input::ModShift));
        hands->Key(XK_a, false);
        window->RunUntil([this] { return !input->IsKeyDown(SDLK_a); });
    });
}

TEST_F(FeelTest, ADragThatLeavesTheWindowGoesOnAndEndsOutside)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        BeginDrag();
        hands->Move(300, 200);
        hands->Button(1, false);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end"}), listener->notes);
    });
}

TEST_F(FeelTest, ADragOverALossOfTheKeysGoesOnToItsEnd)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        BeginDrag();
        hands->FocusElsewhere();
        hands->Move(80, 40);
        window->RunUntil([this] { return listener->last == math::Vec2(80, 40); });
        hands->Button(1, false);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end"}), listener->notes);
    });
}

TEST_F(FeelTest, AWindowMadeAnewDuringADragEndsTheDrag)
{
    // Another size is another window as SDL has it, which lets go of all buttons.
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        BeginDrag();
        hands->Resize(300, 200);
        window->RunUntil([this] { return listener->newSize == math::Vec2(300, 200); });
        window->SetSize(300, 200);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end"}), listener->notes);
        hands->Button(1, false);
        hands->Move(50, 40);
        window->RunUntil([this] { return input->GetMousePos() == math::Vec2(50, 40); });

        BeginDrag();
        hands->Move(250, 150);
        window->RunUntil([this] { return listener->last == math::Vec2(250, 150); });
        hands->Button(1, false);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end", "begin", "end"}), listener->notes);
    });
}

TEST_F(FeelTest, AButtonWhoseReleaseWentElsewhereComesUpAndItsDragEnds)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        BeginDrag();
        // The window loses the mouse, and so does not get a release outside of it.
        hands->HideAndShow();
        PumpSomeTimes();
        EXPECT_TRUE(input->IsKeyDown(input::MouseLeft)) << "it is held still";
        hands->Move(400, 300);
        hands->Button(1, false);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end"}), listener->notes);
        EXPECT_FALSE(input->IsMouseButtonDown());

        // And the next one is as any other.
        hands->Move(50, 40);
        BeginDrag();
        hands->Button(1, false);
        window->RunUntil([this] { return !input->IsKeyDown(input::MouseLeft); });
        EXPECT_EQ((Notes{"begin", "end", "begin", "end"}), listener->notes);
    });
}

TEST_F(FeelTest, APressThatAProgramMadeUpLastsUntilItsRelease)
{
    // The desktop knows nothing of it, and must not be asked.
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        hands->PretendPress(1);
        window->RunUntil([this] { return input->IsKeyDown(input::MouseLeft); });
        PumpSomeTimes();
        EXPECT_TRUE(input->IsKeyDown(input::MouseLeft));
    });
}

TEST_F(FeelTest, AtTenFramesPerSecondNothingIsLost)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Open();
        for (int frame = 0; frame < 5; ++frame)
        {
            hands->Button(1, true); // a click shorter than a frame
            hands->Button(1, false);
            hands->Button(1, true); // and a drag
            for (int x = 51; x < 90; ++x)
                hands->Move(x, 40);
            hands->Button(1, false);
            hands->Move(50, 40);
            SDL_Delay(100);
            input->PumpEvents();
        }
        window->RunUntil([this] { return listener->notes.size() >= 15; });
        Notes expected;
        for (int frame = 0; frame < 5; ++frame)
            expected.insert(expected.end(), {"click", "begin", "end"});
        EXPECT_EQ(expected, listener->notes);
    });
}
