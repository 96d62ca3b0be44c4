#include "window/Hand.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace test
{
namespace
{
// A name that nothing has: its use is one line of the log, the same one twice in two frames is left out.
const char* const SyncNames[] = {"handSyncA", "handSyncB", "handSyncC"};
const char* const SyncKeys[] = {"F1", "F2", "F3"};
// Keys that mean nothing to Quib, as X and as scripts name them.
const char* const DoKeys[] = {"0",  "1",  "2",  "3",  "4",  "5",  "6",   "7",   "8",  "9",
                              "F4", "F5", "F6", "F7", "F8", "F9", "F10", "F11", "F12"};

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return text;
}

double ToNumber(const std::string& text)
{
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end == text.c_str())
        throw std::runtime_error("not a number: \"" + text + "\"");
    return number;
}

size_t CountIn(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

std::string WithoutSyncs(const std::string& log)
{
    std::istringstream lines(log);
    std::string rest;
    for (std::string line; std::getline(lines, line);)
        if (line.find("handSync") == std::string::npos)
            rest += line + "\n";
    return rest.substr(rest.size() - std::min<size_t>(rest.size(), 2000)); // the last of it
}

// What is still being written does not count.
size_t CountWholeLines(const std::string& text, const std::string& part)
{
    return CountIn(text.substr(0, text.rfind('\n') + 1), part);
}

// Of "[1.0, 2.0]".
Point ToPoint(const std::string& text)
{
    const size_t comma = text.find(',');
    if (text.empty() || text[0] != '[' || comma == std::string::npos)
        throw std::runtime_error("not a vector: \"" + text + "\"");
    return {ToNumber(text.substr(1)), ToNumber(text.substr(comma + 1))};
}

// Behind "name = " at the beginning of a line, blanks aside, up to the line's end or a semicolon.
std::string ValueOf(const std::string& text, const std::string& name)
{
    const std::string searched = name + " = ";
    for (size_t at = text.find(searched); at != std::string::npos; at = text.find(searched, at + 1))
        if (at == 0 || text[at - 1] == ' ' || text[at - 1] == '\n')
        {
            const size_t begin = at + searched.size();
            return text.substr(begin, text.find_first_of(";\n", begin) - begin);
        }
    return "";
}
}

double Distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

std::vector<Point> Round(Point centre, double radius, int count, double from)
{
    std::vector<Point> points;
    for (int i = 0; i < count; ++i)
    {
        const double angle = from + 2 * M_PI * i / count;
        points.push_back(centre + radius * Point{std::cos(angle), std::sin(angle)});
    }
    return points;
}

std::vector<Point> Straight(Point a, Point b, double step)
{
    const int count = std::max(1, int(std::ceil(Distance(a, b) / step)));
    std::vector<Point> points;
    for (int i = 0; i <= count; ++i)
        points.push_back((1 - double(i) / count) * a + double(i) / count * b);
    return points;
}

std::string SavedEntity::Value(const std::string& key) const
{
    return ValueOf(text, key);
}

double SavedEntity::Number(const std::string& key) const
{
    return ToNumber(Value(key));
}

Point SavedEntity::Vec(const std::string& key) const
{
    return ToPoint(Value(key));
}

SavedScene::SavedScene(const std::string& sceneText)
    : text(sceneText)
{
    const std::string begin = "Scene.add";
    for (size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1))
    {
        const size_t open = text.find('{', at), close = text.find("\n}", at);
        if (open == std::string::npos || close == std::string::npos)
            throw std::runtime_error("a scene that ends in the middle:\n" + text);
        const size_t kind = at + begin.size();
        const SavedEntity entity = {text.substr(kind, text.find_first_of("({ ", kind) - kind),
                                    text.substr(open + 1, close - open - 1)};
        if (entity.kind == "Group")
            groups.push_back(entity);
        else if (entity.kind != "Water" && entity.kind != "Widget")
            entities.push_back(entity);
    }
}

std::string SavedScene::Group(const std::string& name) const
{
    for (const SavedEntity& group : groups)
        if (group.Value("name") == "\"" + name + "\"")
        {
            const std::string ids = group.Value("entityIDs");
            return ids.substr(1, ids.size() - 2); // without the brackets
        }
    return "";
}

std::vector<SavedEntity> SavedScene::All(const std::string& kind) const
{
    std::vector<SavedEntity> found;
    for (const SavedEntity& entity : entities)
        if (entity.kind == kind)
            found.push_back(entity);
    return found;
}

SavedEntity SavedScene::One(const std::string& kind) const
{
    const std::vector<SavedEntity> found = All(kind);
    if (found.size() != 1)
        throw std::runtime_error(std::to_string(found.size()) + " of " + kind + " in\n" + text);
    return found[0];
}

std::string SavedScene::Setting(const std::string& name) const
{
    return ValueOf(text, name);
}

double SavedScene::Number(const std::string& name) const
{
    return ToNumber(Setting(name));
}

Point SavedScene::Vec(const std::string& name) const
{
    return ToPoint(Setting(name));
}

std::string HandSettings(const std::vector<std::string>& texts)
{
    std::string settings;
    const auto bind = [&settings](const char* key, const std::string& text)
    { settings += "Keys.bind(\"" + LowerCase(key) + "\", { " + text + " });\n"; };
    for (int i = 0; i < 3; ++i)
        bind(SyncKeys[i], SyncNames[i]);
    for (size_t i = 0; i < texts.size(); ++i)
        bind(DoKeys[i], texts[i]);
    return settings;
}

Hand::Hand(XServer& server, const WorkDir& dir, Program& program)
    : m_server(server)
    , m_dir(dir)
    , m_program(program)
{
    LookAgain();
}

Hand::~Hand()
{
    LetGoOfAll();
}

void Hand::LetGoOfAll()
{
    for (const std::string& key : m_heldKeys)
        m_server.Key(key, false);
    for (unsigned button : m_heldButtons)
        m_server.Button(button, false);
    m_heldKeys.clear();
    m_heldButtons.clear();
}

void Hand::LookAt(Point pan, double zoom)
{
    m_pan = pan;
    m_zoom = zoom;
}

void Hand::LookAgain()
{
    m_window = m_server.WaitForWindow();
    // There is no window manager that would do so.
    m_server.Focus(m_window.id);
}

void Hand::Resize(int width, int height)
{
    const char* const line = "Window created.";
    const size_t before = CountWholeLines(m_program.Out(), line);
    const bool isNew = width != m_window.width || height != m_window.height;
    m_server.Resize(m_window.id, width, height);
    const auto isMade = [&] { return CountWholeLines(m_program.Out(), line) > before; };
    if (!m_server.WaitForSize(width, height) || (isNew && !WaitFor(isMade)))
        throw std::runtime_error("the window does not follow:\n" + WithoutSyncs(m_program.Err()));
    LookAgain();
}

Point Hand::ToPixel(Point world) const
{
    return {m_window.width / 2.0 + (world.x - m_pan.x) * m_zoom,
            m_window.height / 2.0 - (world.y - m_pan.y) * m_zoom};
}

Point Hand::ToWorld(int x, int y) const
{
    return {m_pan.x + (x - m_window.width / 2.0) / m_zoom,
            m_pan.y - (y - m_window.height / 2.0) / m_zoom};
}

void Hand::MoveTo(Point p)
{
    const Point pixel = ToPixel(p);
    MoveToPixel(int(std::lround(pixel.x)), int(std::lround(pixel.y)));
}

void Hand::MoveToPixel(int x, int y)
{
    m_server.MovePointer(m_window.x + x, m_window.y + y);
}

void Hand::Press(unsigned button)
{
    m_heldButtons.push_back(button);
    m_server.Button(button, true);
}

void Hand::Release(unsigned button)
{
    m_heldButtons.erase(std::remove(m_heldButtons.begin(), m_heldButtons.end(), button),
                        m_heldButtons.end());
    m_server.Button(button, false);
}

void Hand::Click(Point p, unsigned button)
{
    MoveTo(p);
    Press(button);
    Release(button);
}

void Hand::PressAlong(const std::vector<Point>& points, unsigned button)
{
    MoveTo(points.at(0));
    Press(button);
    for (size_t i = 1; i < points.size(); ++i)
        MoveTo(points[i]);
}

void Hand::Drag(const std::vector<Point>& points, unsigned button)
{
    PressAlong(points, button);
    Release(button);
}

void Hand::Wheel(int notches)
{
    for (int i = 0; i < std::abs(notches); ++i)
    {
        m_server.Button(notches > 0 ? WheelUp : WheelDown, true);
        m_server.Button(notches > 0 ? WheelUp : WheelDown, false);
    }
}

void Hand::Hold(const std::string& key)
{
    if (IsHeld(key))
        return;
    if (key == m_lastTapped)
        std::this_thread::sleep_for(std::chrono::milliseconds(4)); // see Tap
    m_heldKeys.push_back(key);
    m_server.Key(key, true);
}

bool Hand::IsHeld(const std::string& key) const
{
    return std::find(m_heldKeys.begin(), m_heldKeys.end(), key) != m_heldKeys.end();
}

void Hand::LetGo(const std::string& key)
{
    m_heldKeys.erase(std::remove(m_heldKeys.begin(), m_heldKeys.end(), key), m_heldKeys.end());
    m_lastTapped = key;
    m_server.Key(key, false);
}

void Hand::Tap(const std::string& key)
{
    // No real hand is that fast: SDL takes a key that is down again within two milliseconds for one that
    // is held, and drops both.
    if (key == m_lastTapped)
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
    m_lastTapped = key;
    m_server.Key(key, true);
    m_server.Key(key, false);
}

void Hand::Tap(const std::string& modifier, const std::string& key)
{
    Hold(modifier);
    Tap(key);
    LetGo(modifier);
}

void Hand::Sync()
{
    const int i = m_syncs++ % 3;
    const std::string line = std::string(SyncNames[i]) + " not found in scope";
    const size_t before = CountIn(m_program.Err(), line);
    Tap(SyncKeys[i]);
    if (!WaitFor([&]
                 { return CountIn(m_program.Err(), line) > before || !m_program.IsRunning(); }) ||
        !m_program.IsRunning())
        throw std::runtime_error("the program sees no events any more:\n" +
                                 WithoutSyncs(m_program.Err()));
}

void Hand::Do(size_t text)
{
    if (text >= sizeof(DoKeys) / sizeof(*DoKeys))
        throw std::runtime_error("no key for this text");
    Tap(DoKeys[text]);
    Sync();
}

SavedScene Hand::Save()
{
    const std::string line = "Scene saved to ";
    const size_t before = CountWholeLines(m_program.Out(), line);
    Tap("Control_L", "s");
    const auto isSaved = [&] { return CountWholeLines(m_program.Out(), line) > before; };
    if (!WaitFor([&] { return isSaved() || !m_program.IsRunning(); }) || !isSaved())
        throw std::runtime_error("the program does not save:\n" + WithoutSyncs(m_program.Err()));
    const std::string out = m_program.Out();
    const size_t path = out.rfind(line) + line.size();
    return SavedScene(m_dir.Read(out.substr(path, out.find('\n', path) - path)));
}

std::vector<unsigned char> Hand::Look()
{
    return m_server.ReadPixels(m_window.id, m_window.width, m_window.height);
}
}
