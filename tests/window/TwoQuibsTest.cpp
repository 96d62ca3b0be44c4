// Two running Quibs, each in its own folder, on one desktop.
#include "window/Program.h"
#include "window/XServer.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <gtest/gtest.h>

using test::Program;
using test::WorkDir;
using test::XServer;

namespace
{
const char* const Running = "Running program...";

class Keyboard
{
public:
    explicit Keyboard(const std::string& display)
        : m_display(XOpenDisplay(display.c_str()))
    {
    }
    ~Keyboard() { XCloseDisplay(m_display); }

    /// Where the keys go from now on.
    void Focus(unsigned long window)
    {
        XSetInputFocus(m_display, window, RevertToPointerRoot, CurrentTime);
        XSync(m_display, False);
    }
    void TapWithCtrl(KeySym key)
    {
        const unsigned ctrl = XKeysymToKeycode(m_display, XK_Control_L);
        const unsigned code = XKeysymToKeycode(m_display, key);
        XTestFakeKeyEvent(m_display, ctrl, True, CurrentTime);
        XTestFakeKeyEvent(m_display, code, True, CurrentTime);
        XTestFakeKeyEvent(m_display, code, False, CurrentTime);
        XTestFakeKeyEvent(m_display, ctrl, False, CurrentTime);
        XSync(m_display, False);
    }
    bool HasClipboard()
    {
        return XGetSelectionOwner(m_display, XInternAtom(m_display, "CLIPBOARD", False)) != None;
    }

private:
    Display* m_display;
};
}

TEST(TwoQuibs, WhatIsCopiedInOneIsPastedInTheOther)
{
    XServer server;
    Keyboard keyboard(server.Display());
    WorkDir first, second;
    // More than 1 MB of boxes, and one with a name of its own.
    std::string scene = "Scene.addBox { pos = [0.0, 3.0]; size = [1.25, 0.75] };\n";
    for (int i = 0; i < 4500; ++i)
        scene +=
            "Scene.addBox { pos = [" + std::to_string(2 * i) + ".0, 20.0]; size = [1.0, 1.0] };\n";
    first.Write("scenes/welcome.qib", scene);
    for (const WorkDir* dir : {&first, &second})
        dir->Write("autoexec.cfg", "App.autosaveTime = 0.5; Sim.timeFactor = 0.0");

    Program copier(first, server.Display());
    ASSERT_TRUE(copier.WaitUntilItSays(Running)) << copier.Err();
    const unsigned long copierWindow = server.WaitForWindow().id;
    Program paster(second, server.Display());
    ASSERT_TRUE(paster.WaitUntilItSays(Running)) << paster.Err();
    unsigned long pasterWindow = 0;
    ASSERT_TRUE(test::WaitFor(
        [&]
        {
            pasterWindow = server.FindWindow().id;
            return pasterWindow != copierWindow;
        }));

    keyboard.Focus(copierWindow);
    keyboard.TapWithCtrl(XK_a);
    keyboard.TapWithCtrl(XK_c);
    ASSERT_TRUE(test::WaitFor([&] { return keyboard.HasClipboard(); }));
    keyboard.Focus(pasterWindow);
    keyboard.TapWithCtrl(XK_v);
    EXPECT_TRUE(test::WaitFor(
        [&]
        { return second.Read("scenes/_AUTOSAVE.qib").find("1.25, 0.75") != std::string::npos; }))
        << paster.Err();
    EXPECT_GT(second.Read("scenes/_AUTOSAVE.qib").size(), size_t(1) << 20);
    EXPECT_TRUE(copier.IsRunning());
    EXPECT_TRUE(paster.IsRunning());
}
