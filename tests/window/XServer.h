// An X server of our own, without a window manager, and what a user's hands do there.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace test
{
/// Asks again and again, for at most 30 seconds. @return whether it came true
bool WaitFor(const std::function<bool()>& condition);

struct WindowInfo
{
    unsigned long id = 0; // 0: there is no such window
    std::string title;
    int x = 0, y = 0; // over the screen
    int width = 0, height = 0;
};

class XServer
{
public:
    /// @throws std::runtime_error  when Xvfb can't be started
    explicit XServer(const std::string& screen = "1280x1024x24");
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// As DISPLAY has it.
    const std::string& Display() const { return m_display; }

    /// The one mapped window of a program.
    WindowInfo FindWindow();
    /// Waits for it. @throws std::runtime_error
    WindowInfo WaitForWindow();
    bool WaitForSize(int width, int height);

    void Resize(unsigned long window, int width, int height);
    // The server's own mouse and keyboard. What they do has gone to the program when these return.

    /// Where it is over the screen.
    void MovePointer(int x, int y);
    /// Buttons 1 to 3 are left, middle, right; 4 and 5 are the wheel, up and down.
    void Button(unsigned button, bool down);
    /// @param name  as X has it: "a", "F1", "Control_L", "space"
    /// @throws std::runtime_error  when no key has that name
    void Key(const std::string& name, bool down);
    /// Who gets the keys. 0: who the pointer is over, as at the start.
    void Focus(unsigned long window);
    /// A small window of our own that somebody else could have opened, at the screen's lower right.
    unsigned long OpenOtherWindow();
    void CloseOtherWindow(unsigned long window);

    /// Tells the window of a press and release of a button where the pointer is: 4 and 5 are the wheel.
    void PressButton(unsigned long window, unsigned button);
    /// What a window manager sends when its close box is pressed.
    void AskToClose(unsigned long window);
    /// Red, green and blue of each pixel, row by row from the top.
    std::vector<unsigned char> ReadPixels(unsigned long window, int width, int height);

private:
    pid_t m_pid = 0;
    std::string m_display;
    void* m_connection = nullptr; // Xlib's Display: its name would clash
};
}
