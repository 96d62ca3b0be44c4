#include "window/XServer.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace test
{
bool WaitFor(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

namespace
{
::Display* X(void* connection)
{
    return static_cast<::Display*>(connection);
}

// Windows come and go while we look at them.
int IgnoreXError(::Display*, XErrorEvent*)
{
    return 0;
}
}

XServer::XServer(const std::string& screen)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    m_pid = fork();
    if (m_pid == 0)
    {
        close(ends[0]);
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, 1);
        dup2(nowhere, 2);
        const std::string end = std::to_string(ends[1]);
        // A number of our own: a server that ends takes the socket of one along that has just chosen
        // the same.
        const std::string display = ":" + std::to_string(1000 + getpid() % 50000);
        // Without "-accessx", Shift held for eight seconds makes the server wait with each key that is
        // pressed until it has been down for a while.
        execlp("Xvfb", "Xvfb", display.c_str(), "-displayfd", end.c_str(), "-screen", "0",
               screen.c_str(), "-nolisten", "tcp", "-accessx", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    // It tells its number when it is ready.
    char c;
    std::string number;
    while (read(ends[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start: is it installed?");
    m_display = ":" + number;
    XSetErrorHandler(IgnoreXError);
    m_connection = XOpenDisplay(m_display.c_str());
    if (!m_connection)
        throw std::runtime_error("no connection to Xvfb on " + m_display);
}

XServer::~XServer()
{
    if (m_connection)
        XCloseDisplay(X(m_connection));
    kill(m_pid, SIGTERM);
    waitpid(m_pid, nullptr, 0);
}

WindowInfo XServer::FindWindow()
{
    ::Display* x = X(m_connection);
    Window root, parent, *children = nullptr;
    unsigned count = 0;
    WindowInfo found;
    if (!XQueryTree(x, DefaultRootWindow(x), &root, &parent, &children, &count))
        return found;
    for (unsigned i = 0; i < count; ++i)
    {
        XWindowAttributes attributes;
        char* name = nullptr;
        if (XGetWindowAttributes(x, children[i], &attributes) &&
            attributes.map_state == IsViewable && XFetchName(x, children[i], &name) && name)
        {
            found.id = children[i];
            found.title = name;
            found.x = attributes.x;
            found.y = attributes.y;
            found.width = attributes.width;
            found.height = attributes.height;
        }
        if (name)
            XFree(name);
    }
    if (children)
        XFree(children);
    return found;
}

WindowInfo XServer::WaitForWindow()
{
    WindowInfo window;
    if (!WaitFor(
            [&]
            {
                window = FindWindow();
                return window.id != 0;
            }))
        throw std::runtime_error("no window came up");
    return window;
}

bool XServer::WaitForSize(int width, int height)
{
    return WaitFor(
        [&]
        {
            const WindowInfo window = FindWindow();
            return window.width == width && window.height == height;
        });
}

void XServer::MovePointer(int x, int y)
{
    XTestFakeMotionEvent(X(m_connection), -1, x, y, CurrentTime);
    XSync(X(m_connection), False);
}

void XServer::Button(unsigned button, bool down)
{
    XTestFakeButtonEvent(X(m_connection), button, down, CurrentTime);
    XSync(X(m_connection), False);
}

void XServer::Key(const std::string& name, bool down)
{
    const KeySym symbol = XStringToKeysym(name.c_str());
    const KeyCode code = symbol == NoSymbol ? 0 : XKeysymToKeycode(X(m_connection), symbol);
    if (code == 0)
        throw std::runtime_error("the keyboard has no key " + name);
    XTestFakeKeyEvent(X(m_connection), code, down, CurrentTime);
    XSync(X(m_connection), False);
}

void XServer::Focus(unsigned long window)
{
    XSetInputFocus(X(m_connection), window ? window : static_cast<unsigned long>(PointerRoot),
                   RevertToPointerRoot, CurrentTime);
    XSync(X(m_connection), False);
}

unsigned long XServer::OpenOtherWindow()
{
    ::Display* x = X(m_connection);
    const int screen = DefaultScreen(x);
    const Window window = XCreateSimpleWindow(x, DefaultRootWindow(x), DisplayWidth(x, screen) - 20,
                                              DisplayHeight(x, screen) - 20, 20, 20, 0, 0, 0);
    XMapWindow(x, window);
    XSync(x, False);
    return window;
}

void XServer::CloseOtherWindow(unsigned long window)
{
    XDestroyWindow(X(m_connection), window);
    XSync(X(m_connection), False);
}

void XServer::PressButton(unsigned long window, unsigned button)
{
    XEvent event = {};
    event.xbutton.window = window;
    event.xbutton.root = DefaultRootWindow(X(m_connection));
    event.xbutton.button = button;
    event.xbutton.same_screen = True;
    for (const int type : {ButtonPress, ButtonRelease})
    {
        event.xbutton.type = type;
        XSendEvent(X(m_connection), window, False, NoEventMask, &event);
    }
    XFlush(X(m_connection));
}

void XServer::Resize(unsigned long window, int width, int height)
{
    XResizeWindow(X(m_connection), window, width, height);
    XFlush(X(m_connection));
}

void XServer::AskToClose(unsigned long window)
{
    ::Display* x = X(m_connection);
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(x, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(x, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(x, window, False, NoEventMask, &event);
    XFlush(x);
}

std::vector<unsigned char> XServer::ReadPixels(unsigned long window, int width, int height)
{
    std::vector<unsigned char> pixels;
    XImage* image = XGetImage(X(m_connection), window, 0, 0, static_cast<unsigned>(width),
                              static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (!image)
        return pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const unsigned long pixel = XGetPixel(image, x, y);
            pixels.push_back((pixel >> 16) & 0xFF);
            pixels.push_back((pixel >> 8) & 0xFF);
            pixels.push_back(pixel & 0xFF);
        }
    XDestroyImage(image);
    return pixels;
}
}
