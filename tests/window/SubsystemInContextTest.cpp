// The frame loop with a real window and a real OpenGL, looked at from inside: what stands in the frame
// buffer at the moment it is shown, and what of the user's hands arrives.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "rendering/Renderer.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/Mentor.h"
#include "window/XServer.h"

#include <GL/glew.h>
#include <SDL.h>
#include <SDL_syswm.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <GL/glx.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

using core::Subsystem;
using core::WindowParams;
using math::Vec2;
using math::Vec4;
using rendering::Renderer;

namespace
{
std::function<void()>& OnSwap()
{
    static std::function<void()> s_onSwap;
    return s_onSwap;
}

int s_windowDepth = 32;
}

// Stands before Xlib's own: Xvfb gives windows of 24 bits only.
extern "C" Status XGetWindowAttributes(Display* display, Window window,
                                       XWindowAttributes* attributes)
{
    static const auto s_real =
        reinterpret_cast<decltype(&XGetWindowAttributes)>(dlsym(RTLD_NEXT, "XGetWindowAttributes"));
    const Status status = s_real(display, window, attributes);
    attributes->depth = s_windowDepth;
    return status;
}

// Stands before SDL's own: the last moment at which a frame can be read.
extern "C" void SDL_GL_SwapBuffers()
{
    if (OnSwap())
        OnSwap()();
    static const auto s_real = reinterpret_cast<void (*)()>(dlsym(RTLD_NEXT, "SDL_GL_SwapBuffers"));
    s_real();
}

namespace
{
Subsystem* System()
{
    return Subsystem::GetInstancePtr();
}

/// As "rrggbbaa", from the top left.
std::string Pixel(int x, int y)
{
    unsigned char c[4];
    char text[12];
    glReadPixels(x, System()->GetHeight() - 1 - y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, c);
    std::snprintf(text, sizeof(text), "%02x%02x%02x%02x", c[0], c[1], c[2], c[3]);
    return text;
}

class ActingComponent : public gui::Component
{
public:
    void DrawComp() const override
    {
        if (m_onDraw)
            m_onDraw();
    }
    void Update(float dt) override
    {
        Component::Update(dt);
        if (m_onUpdate)
            m_onUpdate(++m_frame);
    }

    std::function<void()> m_onDraw;
    std::function<void(int frame)> m_onUpdate;

private:
    int m_frame = 0;
};

class SubsystemInContextTest : public testing::Test
{
protected:
    void Start()
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        Subsystem::SetLogToStandardOutput(false);
        Subsystem::Create();
        System()->AddToRoot();
        gui::GUI::GetInstancePtr()->AddToRoot();
        WindowParams params;
        params.size = math::TVector2<int>(200, 100);
        System()->CreateWindow(params);
        component = QUIB_NEW ActingComponent;
        component->SetFillOwner(true);
        gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(component);
    }

    /// Runs until something was looked at in the first frame that is shown.
    void LookAtOneFrame(std::function<void()> look)
    {
        bool hasLooked = false;
        OnSwap() = [&]
        {
            if (!hasLooked)
                look();
            hasLooked = true;
            System()->Exit();
        };
        System()->Run();
        EXPECT_TRUE(hasLooked);
    }

    test::XServer server{"640x480x24"};
    test::TempDir dir;
    util::SharedPtr<ActingComponent> component;
};
}

TEST_F(SubsystemInContextTest, AnEmptyFrameHasTheClearColor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        script::Parser::GetInstancePtr()->ExecuteToString(
            "System.clearColor = [1.0, 0.0, 0.2, 0.5]");
        LookAtOneFrame([] { EXPECT_EQ("ff0033ff", Pixel(50, 50)); });
    });
}

TEST_F(SubsystemInContextTest, AFrameIsOpaqueWhenItIsShownHoweverItWasDrawn)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        component->m_onDraw = []
        {
            glDisable(GL_BLEND);
            Renderer::GetInstancePtr()->SetColor4(0, 1, 0, 0.25f);
            Renderer::GetInstancePtr()->DrawRect(0, 0, 100, 100, 1, 1);
            EXPECT_EQ("00ff0040", Pixel(50, 50)) << "the window has alpha";
        };
        LookAtOneFrame(
            []
            {
                EXPECT_EQ("00ff00ff", Pixel(50, 50));
                EXPECT_EQ("000000ff", Pixel(150, 50));
                GLboolean mask[4];
                glGetBooleanv(GL_COLOR_WRITEMASK, mask);
                EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3])
                    << "colours can be drawn again";
            });
    });
}

// Nobody else gets to see its alpha then.
TEST_F(SubsystemInContextTest, TheAlphaOfAWindowOf24BitsIsLeftAlone)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        s_windowDepth = 24;
        Start();
        component->m_onDraw = []
        {
            glDisable(GL_BLEND);
            Renderer::GetInstancePtr()->SetColor4(0, 1, 0, 0.25f);
            Renderer::GetInstancePtr()->DrawRect(0, 0, 100, 100, 1, 1);
        };
        LookAtOneFrame([] { EXPECT_EQ("00ff0040", Pixel(50, 50)); });
    });
}

TEST_F(SubsystemInContextTest, ComponentsDrawInTheirOwnCoordinatesFromTheTopLeft)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        script::Parser::GetInstancePtr()->ExecuteToString("GUI.opaqueness = 1.0");
        const util::SharedPtr<ActingComponent> inner = QUIB_NEW ActingComponent;
        inner->SetOuterPos(Vec2(20, 30));
        inner->SetInnerSize(Vec2(10, 5));
        inner->m_onDraw = [] { Renderer::GetInstancePtr()->DrawRect(0, 0, 10, 5, 1, 1); };
        inner->SetColor(Vec4(1, 0, 0, 1));
        component->AddComponent(inner);
        LookAtOneFrame(
            []
            {
                EXPECT_EQ("ff0000ff", Pixel(20, 30));
                EXPECT_EQ("ff0000ff", Pixel(29, 34));
                EXPECT_EQ("000000ff", Pixel(19, 30));
                EXPECT_EQ("000000ff", Pixel(20, 35));
                EXPECT_EQ("000000ff", Pixel(30, 34));
            });
    });
}

TEST_F(SubsystemInContextTest, TheScaleEnlargesAndTheOpaquenessPales)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        script::Parser::GetInstancePtr()->ExecuteToString("GUI.scale = 2.0; GUI.opaqueness = 0.6");
        component->m_onDraw = [] { Renderer::GetInstancePtr()->DrawRect(10, 20, 5, 5, 1, 1); };
        LookAtOneFrame(
            []
            {
                EXPECT_EQ("999999ff", Pixel(20, 40));
                EXPECT_EQ("999999ff", Pixel(29, 49));
                EXPECT_EQ("000000ff", Pixel(19, 40));
                EXPECT_EQ("000000ff", Pixel(30, 49));
            });
    });
}

TEST_F(SubsystemInContextTest, DrawingLeavesMatricesAndStateAsTheyWere)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        int depths[2] = {0, 0};
        component->m_onDraw = [] { glEnable(GL_LIGHTING); };
        LookAtOneFrame(
            [&]
            {
                glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depths[0]);
                glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depths[1]);
                EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
                EXPECT_FALSE(glIsEnabled(GL_BLEND));
                Vec4 color;
                glGetFloatv(GL_CURRENT_COLOR, &color.x);
                EXPECT_EQ(Renderer::GetInstancePtr()->GetColor4(), color);
            });
        EXPECT_EQ(1, depths[0]);
        EXPECT_EQ(1, depths[1]);
    });
}

TEST_F(SubsystemInContextTest, ANewWindowStartsWithCacheAndGLInWhite)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Renderer::GetInstancePtr()->SetColor4(1, 0, 0, 1);
        WindowParams params = System()->GetConfigParams();
        params.size = math::TVector2<int>(300, 150);
        System()->CreateWindow(params);
        Vec4 color;
        glGetFloatv(GL_CURRENT_COLOR, &color.x);
        EXPECT_EQ(Vec4(1, 1, 1, 1), color);
        EXPECT_EQ(Vec4(1, 1, 1, 1), Renderer::GetInstancePtr()->GetColor4());
        EXPECT_EQ(math::TVector2<int>(300, 150), Renderer::GetInstancePtr()->GetViewportSize());
    });
}

namespace
{
class List : public util::AbstractMentor
{
public:
    void Load() override
    {
        if (m_name != 0 || !rendering::HasGLLoaded())
            return;
        m_name = glGenLists(1);
        glNewList(m_name, GL_COMPILE);
        glEndList();
        context = glXGetCurrentContext();
    }
    void Unload() override
    {
        if (m_name == 0)
            return;
        EXPECT_EQ(context, glXGetCurrentContext()) << "unloaded in another context";
        EXPECT_TRUE(glIsList(m_name));
        glDeleteLists(m_name, 1);
        m_name = 0;
        ++unloads;
    }
    const std::type_info& GetType() const override { return typeid(List); }

    unsigned m_name = 0;
    int unloads = 0;
    GLXContext context = nullptr;
};

// The test's own connection to the server belongs to the parent process.
SDL_SysWMinfo GetWMInfo()
{
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    EXPECT_EQ(1, SDL_GetWMInfo(&info));
    return info;
}

unsigned long GetWindow()
{
    return GetWMInfo().info.x11.window;
}

math::TVector2<int> GetSizeOnScreen()
{
    const SDL_SysWMinfo info = GetWMInfo();
    XWindowAttributes attributes = {};
    info.info.x11.lock_func();
    XGetWindowAttributes(info.info.x11.display, info.info.x11.window, &attributes);
    info.info.x11.unlock_func();
    return math::TVector2<int>(attributes.width, attributes.height);
}

int GetSamples()
{
    int samples = -1;
    glGetIntegerv(GL_SAMPLES, &samples);
    return samples;
}

util::String Script(const util::String& code)
{
    return script::Parser::GetInstancePtr()->ExecuteToString(code);
}
}

TEST_F(SubsystemInContextTest, ResourcesAreUnloadedInTheOldContextAndLoadedInTheNew)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        List list;
        list.Load();
        ASSERT_EQ(0, GetSamples());
        Script("System.antiAlias = 4; System.recreateWindow");
        EXPECT_EQ(1, list.unloads);
        EXPECT_TRUE(glIsList(list.m_name));
        EXPECT_EQ(glXGetCurrentContext(), list.context);
        EXPECT_EQ(4, GetSamples()) << "another context";
    });
}

TEST_F(SubsystemInContextTest, AntiAliasComesIntoForceWithRecreateWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        EXPECT_EQ(0, GetSamples());
        const unsigned long window = GetWindow();
        Script("System.antiAlias = 4; System.recreateWindow");
        EXPECT_EQ(4, GetSamples());
        EXPECT_NE(window, GetWindow());
        LookAtOneFrame([] { EXPECT_EQ("000000ff", Pixel(50, 50)); });
    });
}

TEST_F(SubsystemInContextTest, AWindowWithTheSameBuffersStays)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const unsigned long window = GetWindow();
        const GLXContext context = glXGetCurrentContext();
        Script("System.resolution = [300, 150]; System.recreateWindow");
        EXPECT_EQ(window, GetWindow());
        EXPECT_EQ(context, glXGetCurrentContext());
        EXPECT_EQ(math::TVector2<int>(300, 150), GetSizeOnScreen());
    });
}

TEST_F(SubsystemInContextTest, AMultisampleCountThatCannotBeHadLeavesTheWindowAsItWas)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        List list;
        list.Load();
        test::LogCapture log(7);
        Script("System.resolution = [300, 150]; System.antiAlias = 64; System.recreateWindow");
        EXPECT_TRUE(log.Has("System.antiAlias = 64")) << log.Text();
        EXPECT_TRUE(log.Has("Couldn't set video mode, SDL-error: ")) << log.Text();
        EXPECT_EQ("1", Script("System.antiAlias"));
        EXPECT_EQ("[200, 100]", Script("System.resolution"));
        EXPECT_EQ(0, GetSamples());
        EXPECT_TRUE(glIsList(list.m_name));
        LookAtOneFrame([] { EXPECT_EQ("000000ff", Pixel(150, 50)); });
        EXPECT_EQ(math::TVector2<int>(200, 100), GetSizeOnScreen());
    });
}

TEST_F(SubsystemInContextTest, WhatTheUserHasSetOfTheKeyboardSurvivesANewWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        System()->SetTitle("a title");
        Script("System.antiAlias = 4; System.recreateWindow");
        char* title = nullptr;
        SDL_WM_GetCaption(&title, nullptr);
        EXPECT_STREQ("a title", title);
        EXPECT_EQ(1, SDL_EnableUNICODE(-1));
        int delay = 0, interval = 0;
        SDL_GetKeyRepeat(&delay, &interval);
        EXPECT_EQ(500, delay);
        EXPECT_EQ(30, interval);
        EXPECT_EQ(SDL_ENABLE, SDL_EventState(SDL_SYSWMEVENT, SDL_QUERY));
        EXPECT_EQ(SDL_GRAB_OFF, SDL_WM_GrabInput(SDL_GRAB_QUERY));
    });
}

TEST_F(SubsystemInContextTest, TheMouseAndTheKeysArriveFromTheWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        script::Parser::GetInstancePtr()->ExecuteToString("GUI.scale = 2.0");
        bool hasArrived = false;
        component->m_onUpdate = [&](int frame)
        {
            const SDL_SysWMinfo info = GetWMInfo();
            if (frame == 1)
            {
                SDL_WarpMouse(120, 80);
                XEvent event = {};
                event.xkey.type = KeyPress;
                event.xkey.display = info.info.x11.display;
                event.xkey.window = info.info.x11.window;
                event.xkey.root = DefaultRootWindow(event.xkey.display);
                event.xkey.same_screen = True;
                event.xkey.keycode = XKeysymToKeycode(event.xkey.display, XK_Left);
                info.info.x11.lock_func();
                XSendEvent(event.xkey.display, event.xkey.window, True, KeyPressMask, &event);
                info.info.x11.unlock_func();
            }
            hasArrived = input::Input::GetInstancePtr()->GetMousePos() == Vec2(60, 40) &&
                         component->IsKeyDown(SDLK_LEFT);
            if (hasArrived || frame == 300)
                System()->Exit();
        };
        System()->Run();
        EXPECT_TRUE(hasArrived) << input::Input::GetInstancePtr()->GetMousePos();
        EXPECT_TRUE(component->IsKeyDown(SDLK_LEFT));
    });
}
