// A user at the mouse and the keyboard of a running Quib, and the scene that comes of it.
//
// All of it goes through the X server, as a real hand's work does. Sync and Save wait until the program
// has seen everything up to them; nothing else waits. Whoever makes a Hand has written HandSettings into
// autoexec.cfg first.
#pragma once

#include "window/Program.h"
#include "window/XServer.h"

#include <string>
#include <vector>

namespace test
{
struct Point
{
    double x = 0, y = 0;
};

inline Point operator+(Point a, Point b)
{
    return {a.x + b.x, a.y + b.y};
}
inline Point operator*(double f, Point p)
{
    return {f * p.x, f * p.y};
}
double Distance(Point a, Point b);

/// Count points evenly on a circle, counter-clockwise from the right, the first one not again at the end.
std::vector<Point> Round(Point centre, double radius, int count, double from = 0);
/// From a to b in steps of at most this; both ends included.
std::vector<Point> Straight(Point a, Point b, double step = 0.1);

// An entity as the file has it.
struct SavedEntity
{
    std::string kind; // "Box" of Scene.addBox
    std::string text; // what stands in its block

    bool Has(const std::string& key) const { return !Value(key).empty(); }
    /// The text behind "key = "; "" when there is none.
    std::string Value(const std::string& key) const;
    double Number(const std::string& key) const;
    Point Vec(const std::string& key) const;
};

struct SavedScene
{
    explicit SavedScene(const std::string& text);

    std::vector<SavedEntity> All(const std::string& kind) const;
    size_t Count(const std::string& kind) const { return All(kind).size(); }
    /// The one of its kind. @throws std::runtime_error  when there are none or more
    SavedEntity One(const std::string& kind) const;
    /// The numbers in the group of this name, as "1, 2"; "" when there is no such group. The selection is
    /// the group "selected".
    std::string Group(const std::string& name) const;
    /// The value of a setting such as "Scene.Camera.zoom".
    std::string Setting(const std::string& name) const;
    double Number(const std::string& name) const;
    Point Vec(const std::string& name) const;

    std::string text;
    std::vector<SavedEntity> entities; // bodies from back to front, then what fastens them
    std::vector<SavedEntity> groups;
};

/// Script text: the keys that Sync uses, and one more key for each of the texts, at most 19, that
/// Hand::Do runs.
std::string HandSettings(const std::vector<std::string>& texts);

class Hand
{
public:
    enum
    {
        Left = 1,
        Middle = 2,
        Right = 3,
        WheelUp = 4,
        WheelDown = 5
    };

    /// @param program  is running, with its window open
    Hand(XServer& server, const WorkDir& dir, Program& program);
    /// Lets go of everything that is held.
    ~Hand();
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;

    /// The view, as Scene.Camera has it, by which world points become pixels.
    void LookAt(Point pan, double zoom);
    /// A window has another size or place now, or somebody else the keys.
    void LookAgain();
    /// Of the window, as by its edge. Waits until the program has made its picture anew.
    /// @throws std::runtime_error  when it doesn't
    void Resize(int width, int height);
    const WindowInfo& Window() const { return m_window; }

    // The mouse. Points are in the world but for those in pixels of the window.

    Point ToPixel(Point world) const;
    Point ToWorld(int x, int y) const;
    void MoveTo(Point p);
    void MoveToPixel(int x, int y);
    void Press(unsigned button = Left);
    void Release(unsigned button = Left);
    void Click(Point p, unsigned button = Left);
    /// Presses at the first point and moves on from one to the next.
    void PressAlong(const std::vector<Point>& points, unsigned button = Left);
    /// And lets go at the last one.
    void Drag(const std::vector<Point>& points, unsigned button = Left);
    /// Notches, upwards when positive.
    void Wheel(int notches);

    // The keyboard: names as X has them.

    void Hold(const std::string& key); // one that is held already stays so
    bool IsHeld(const std::string& key) const;
    void LetGo(const std::string& key);
    void Tap(const std::string& key);
    /// The first held, the second tapped.
    void Tap(const std::string& modifier, const std::string& key);
    /// Of keys and buttons alike.
    void LetGoOfAll();

    /// Waits until the program has seen all that was done. @throws std::runtime_error  when it doesn't
    void Sync();
    /// Runs one of the texts of HandSettings. @throws std::runtime_error
    void Do(size_t text);
    /// Ctrl S, and what the program has written by that. @throws std::runtime_error
    SavedScene Save();

    /// What the window shows: red, green and blue, row by row.
    std::vector<unsigned char> Look();

private:
    XServer& m_server;
    const WorkDir& m_dir;
    Program& m_program;
    WindowInfo m_window;
    Point m_pan;
    double m_zoom = 100;
    int m_syncs = 0;
    std::string m_lastTapped;
    std::vector<std::string> m_heldKeys;
    std::vector<unsigned> m_heldButtons;
};
}
