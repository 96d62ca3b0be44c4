// usage: quib_monkey [--events N] [--seed S] [--keep FOLDER]
//
// A monkey at the mouse and the keyboard of a real Quib: N events by chance (3000), by real X events. It
// moves, clicks, drags, turns the wheel, types every key with every modifier (but for Ctrl Q, and for the
// key of the console), resizes the window and takes the keys away from it. Afterwards Quib must still run,
// must have seen everything, must have said nothing of a sanitizer, and must save a scene that gives the
// same text when it is loaded and saved again, and must end in order.
//
// A run is its seed: the same events in the same order, though not in the same frames. For the long run
// build with -DQUIB_SANITIZE=address,undefined and call it with --events 100000. What Quib was doing last
// is told when it fails; --keep leaves its whole work directory there.
#include "Dice.h"
#include "window/Hand.h"

#include <boost/filesystem.hpp>

#include <cmath>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <map>
#include <stdexcept>

namespace fs = boost::filesystem;
using test::Hand;
using test::Point;
using test::Program;
using test::WindowInfo;
using test::WorkDir;
using test::XServer;

namespace
{
const char* const Modifiers[] = {"Shift_L", "Shift_R", "Control_L", "Control_R",
                                 "Alt_L",   "Alt_R",   "Super_L"};

// All that a keyboard has, but for the modifiers, F1 to F5, which mean something to us, and the key left
// of the 1, behind which everything would be typing.
const char* const Keys[] = {"a",           "b",
                            "c",           "d",
                            "e",           "f",
                            "g",           "h",
                            "i",           "j",
                            "k",           "l",
                            "m",           "n",
                            "o",           "p",
                            "q",           "r",
                            "s",           "t",
                            "u",           "v",
                            "w",           "x",
                            "y",           "z",
                            "0",           "1",
                            "2",           "3",
                            "4",           "5",
                            "6",           "7",
                            "8",           "9",
                            "space",       "Escape",
                            "Delete",      "BackSpace",
                            "Return",      "Tab",
                            "Up",          "Down",
                            "Left",        "Right",
                            "Home",        "End",
                            "Prior",       "Next",
                            "Insert",      "F6",
                            "F7",          "F8",
                            "F9",          "F10",
                            "F11",         "F12",
                            "minus",       "equal",
                            "bracketleft", "bracketright",
                            "semicolon",   "apostrophe",
                            "comma",       "period",
                            "slash",       "backslash",
                            "KP_0",        "KP_5",
                            "KP_Enter",    "KP_Add",
                            "Caps_Lock",   "Num_Lock",
                            "Menu",        "Pause"};

// The keys that do most are hit more often.
const char* const BusyKeys[] = {"b", "k", "d", "p", "c",     "x",      "n",     "s",
                                "f", "h", "e", "r", "space", "Escape", "Delete"};
const char* const CtrlKeys[] = {"c", "v", "z", "y", "a", "s", "o", "g", "u"};

template<size_t N>
const char* Pick(test::Dice& dice, const char* const (&names)[N])
{
    return names[dice.Int(0, int(N))];
}

class Monkey
{
public:
    Monkey(XServer& server, Hand& hand, unsigned seed)
        : m_server(server)
        , m_hand(hand)
        , m_dice(seed)
    {
    }

    /// @throws std::runtime_error  when the program does not follow any more
    void Play(int events)
    {
        while (m_count < events)
        {
            const int before = m_count;
            DoSomething();
            // So that it never runs further ahead than a real hand could.
            if (before / 100 != m_count / 100)
                Sync();
            // All that is copied all over doubles: what has grown in this way is no use of a program.
            if ((before + 250) / 500 != (m_count + 250) / 500)
                TidyUp();
        }
        Calm();
    }

    int Probes() const { return m_probes; }
    int Count() const { return m_count; }
    /// The last things done, the latest last.
    std::string Story() const
    {
        std::string story;
        for (const std::string& line : m_story)
            story += line + "\n";
        return story;
    }
    const std::map<std::string, int>& Kinds() const { return m_kinds; }

private:
    void DoSomething()
    {
        const int what = m_dice.Int(0, 1000);
        if (what < 300)
            Move();
        else if (what < 420)
            Button();
        else if (what < 560)
            Drag();
        else if (what < 640)
            Note(
                "click", [&] { m_hand.Click(Somewhere(), unsigned(m_dice.Int(1, 4))); }, 3);
        else if (what < 700)
            Note("wheel", [&] { m_hand.Wheel(m_dice.Int(-3, 4)); });
        else if (what < 860)
            Key();
        else if (what < 900)
            Shortcut();
        else if (what < 960)
            Modifier();
        else if (what < 990)
            Probe();
        else if (what < 995)
            Resize();
        else
            LoseFocus();
    }

    template<typename F>
    void Note(const std::string& what, F action, int events = 1)
    {
        m_story.push_back(std::to_string(m_count) + " " + what);
        if (m_story.size() > 60)
            m_story.pop_front();
        m_kinds[what.substr(0, what.find(' '))] += events;
        m_count += events;
        action();
    }

    /// In the window, or a little outside.
    Point Somewhere()
    {
        const WindowInfo& w = m_hand.Window();
        return m_hand.ToWorld(m_dice.Int(-20, w.width + 20), m_dice.Int(-20, w.height + 20));
    }

    void Move()
    {
        const Point to = Somewhere();
        Note("move", [&] { m_hand.MoveTo(to); });
    }

    // One button, and up or down as it comes.
    void Button()
    {
        const unsigned button = unsigned(m_dice.Int(1, 4));
        const bool down = m_dice.OneIn(2);
        Note("button " + std::to_string(button) + (down ? " down" : " up"),
             [&] { down ? m_hand.Press(button) : m_hand.Release(button); });
    }

    // A stroke that turns at random: sometimes a shape, sometimes a mess.
    void Drag()
    {
        const int count = m_dice.Int(2, 20);
        const double step = m_dice.Uniform(0.05f, 0.3f), turn = m_dice.Uniform(-0.5f, 0.5f);
        double angle = m_dice.Uniform(0, 6.28f);
        std::vector<Point> points = {Somewhere()};
        for (int i = 0; i < count; ++i)
        {
            angle += turn + m_dice.Uniform(-0.3f, 0.3f);
            points.push_back(points.back() + step * Point{std::cos(angle), std::sin(angle)});
        }
        const unsigned button = m_dice.OneIn(4) ? Hand::Right : Hand::Left;
        Note(
            "drag " + std::to_string(button), [&] { m_hand.Drag(points, button); }, count + 2);
    }

    void Key()
    {
        const std::string key = m_dice.OneIn(2) ? Pick(m_dice, BusyKeys) : Pick(m_dice, Keys);
        if (key == "q" &&
            (m_hand.IsHeld("Control_L") || m_hand.IsHeld("Control_R") || m_hand.IsHeld("Super_L")))
            return;
        if (m_dice.OneIn(4))
            Note("hold " + key, [&] { m_hand.Hold(key); });
        else
            Note(
                "key " + key, [&] { m_hand.Tap(key); }, 2);
    }

    void Shortcut()
    {
        const std::string key = Pick(m_dice, CtrlKeys);
        const std::string ctrl = m_dice.OneIn(2) ? "Control_L" : "Control_R";
        Note(
            "ctrl " + key, [&] { m_hand.Tap(ctrl, key); }, 4);
    }

    void Modifier()
    {
        const std::string key = Pick(m_dice, Modifiers);
        if (m_hand.IsHeld(key))
            Note("up " + key, [&] { m_hand.LetGo(key); });
        else if (m_dice.OneIn(3))
            Note("up all", [&] { m_hand.LetGoOfAll(); });
        else
            Note("down " + key, [&] { m_hand.Hold(key); });
    }

    void TidyUp()
    {
        Note("tidy", [&] { m_hand.LetGoOfAll(); });
        m_hand.Tap("Escape");
        m_hand.Tap("Control_L", "a");
        m_hand.Tap("Delete");
    }

    // Together with Ctrl and Alt the X server keeps the function keys for itself.
    void FreeFunctionKeys()
    {
        if (m_hand.IsHeld("Control_L") || m_hand.IsHeld("Control_R"))
            for (const char* alt : {"Alt_L", "Alt_R"})
                if (m_hand.IsHeld(alt))
                    Note(std::string("up ") + alt, [&] { m_hand.LetGo(alt); });
    }

    void Sync()
    {
        FreeFunctionKeys();
        m_hand.Sync();
    }

    // What tells in the end whether everything was seen.
    void Probe()
    {
        FreeFunctionKeys();
        Note(
            "probe", [&] { m_hand.Tap("F5"); }, 2);
        ++m_probes;
    }

    void Resize()
    {
        const int width = m_dice.Int(200, 900), height = m_dice.Int(150, 700);
        Note("resize " + std::to_string(width) + " x " + std::to_string(height),
             [&] { m_hand.Resize(width, height); });
        Sync();
    }

    void LoseFocus()
    {
        Note("focus", [] {});
        const unsigned long other = m_server.OpenOtherWindow();
        m_server.Focus(other);
        if (m_dice.OneIn(2))
            m_hand.LetGoOfAll();
        m_server.CloseOtherWindow(other);
        m_hand.LookAgain();
    }

    /// Nothing held, no drag, no lent tool.
    void Calm()
    {
        m_hand.LetGoOfAll();
        m_hand.Tap("Escape");
        m_hand.Tap("Escape");
        m_hand.Sync();
    }

    XServer& m_server;
    Hand& m_hand;
    test::Dice m_dice;
    std::deque<std::string> m_story;
    std::map<std::string, int> m_kinds; // how many events of each
    int m_count = 0;
    int m_probes = 0;
};

// What a run is told and what it leaves.
struct Run
{
    int events = 3000;
    unsigned seed = 1;
    std::string keep;
};

// Quib counts the probes by a setting that plays no part here.
const int FirstProbe = 10000;
const char* const ProbeName = "App.maxSPHSpawn";

const char* const Start =
    "FileInfo.version = 2; Sim.running = true; Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = "
    "100.0;\n"
    "Scene.addPlane({ geomID = 1; entityID = 1; angle = 1.5707963; pos = [0.0, -2.0] });\n"
    "Scene.addBox({ geomID = 2; entityID = 2; pos = [-1.0, 0.0]; size = [1.0, 0.5] });\n"
    "Scene.addCircle({ geomID = 3; entityID = 3; pos = [1.0, 0.0]; radius = 0.4 });\n"
    "Scene.addBox({ geomID = 4; entityID = 4; pos = [1.0, 0.2]; size = [1.5, 0.3] });\n"
    "Scene.addHinge({ entityID = 5; size = 0.2; geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = 4; "
    "geom1pos = [0.0, -0.2]; motor = true; buttonForward = \"right\" });\n";

void Require(bool condition, const std::string& what)
{
    if (!condition)
        throw std::runtime_error(what);
}

/// The number that a configuration has for it, at the beginning of a line.
int ValueIn(const std::string& config, const std::string& name)
{
    const std::string line = "\n" + name + " = ";
    const size_t at = config.find(line);
    return at == std::string::npos ? 0 : std::atoi(config.c_str() + at + line.size());
}

void RequireNoReport(const Program& program)
{
    for (const char* report :
         {"runtime error", "AddressSanitizer", "LeakSanitizer", "Exception caught in main"})
        Require(program.Err().find(report) == std::string::npos, program.Err());
}

// Ends it as a user does, and is told by the exit code whether it has ended well.
void Close(XServer& server, Program& program)
{
    server.AskToClose(server.WaitForWindow().id);
    const int result = program.Wait();
    Require(result == 0, "Quib ended with " + std::to_string(result) + ":\n" + program.Err());
    RequireNoReport(program);
}

/// What the text becomes when it is loaded and saved again.
std::string LoadAndSave(XServer& server, const std::string& text)
{
    WorkDir dir;
    dir.Write("autoexec.cfg", test::HandSettings({}));
    dir.Write("scenes/unnamed.qib", text);
    Program program(dir, server.Display(), {"scenes/unnamed.qib"});
    Require(program.WaitUntilItSays("Running program..."), program.Err());
    Hand hand(server, dir, program);
    // A scene that was loaded runs; the undo takes it back to as it was.
    hand.Tap("Control_L", "z");
    const std::string again = hand.Save().text;
    Close(server, program);
    return again;
}

void Play(const Run& run, WorkDir& dir)
{
    dir.Write(
        "autoexec.cfg",
        test::HandSettings({}) + "Keys.bind(\"f5\", { " + ProbeName + " = " + ProbeName +
            " + 1 });\nApp.GUI.trapUser = true; App.autosaveTime = 5.0; System.maxFPS = 200.0;\n");
    dir.Write("config.cfg", "System.resolution = [640, 480]");
    dir.Write("scenes/welcome.qib", Start);
    XServer server;
    std::string scene;
    {
        Program program(dir, server.Display());
        Require(program.WaitUntilItSays("Running program..."), program.Err());
        Hand hand(server, dir, program);
        Monkey monkey(server, hand, run.seed);
        try
        {
            monkey.Play(run.events);
            hand.Tap("Control_L", "a"); // the selection is in the file, and must come back too
            scene = hand.Save().text;
        }
        catch (std::exception& e)
        {
            const bool runs = program.IsRunning();
            throw std::runtime_error(std::string(e.what()) + "\nQuib " +
                                     (runs ? "still runs" : "has ended") + "; " +
                                     std::to_string(monkey.Count()) +
                                     " events were done, the last ones:\n" + monkey.Story());
        }
        Close(server, program);
        std::cout << monkey.Count() << " events:";
        for (const auto& kind : monkey.Kinds())
            std::cout << " " << kind.second << " " << kind.first;
        std::cout << "\n";
        const int seen = ValueIn(dir.Read("config.cfg"), ProbeName) - FirstProbe;
        std::cout << seen << " of " << monkey.Probes() << " probes were seen\n";
        Require(seen == monkey.Probes(), "events were lost");
        size_t failures = 0;
        const std::string err = program.Err();
        for (size_t at = err.find("Tool failed: "); at != std::string::npos;
             at = err.find("Tool failed: ", at + 1))
            ++failures, std::cout << err.substr(at, err.find('\n', at) - at) << "\n";
        Require(failures == 0, "tools failed");
    }
    std::cout << scene.size() << " bytes of scene\n";
    const std::string again = LoadAndSave(server, scene);
    if (again != scene)
    {
        dir.Write("saved.qib", scene);
        dir.Write("saved_again.qib", again);
        throw std::runtime_error(
            "the scene is another after loading: see saved.qib and saved_again.qib");
    }
}
}

int main(int argc, char** argv)
{
    Run run;
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const std::string option = argv[i];
        if (option == "--events")
            run.events = std::atoi(argv[i + 1]);
        else if (option == "--seed")
            run.seed = unsigned(std::atoi(argv[i + 1]));
        else if (option == "--keep")
            run.keep = argv[i + 1];
    }
    std::cout << "seed " << run.seed << std::endl;
    WorkDir dir;
    int result = 0;
    try
    {
        Play(run, dir);
        std::cout << "All is well.\n";
    }
    catch (std::exception& e)
    {
        std::cerr << "FAILED with seed " << run.seed << ": " << e.what() << "\n";
        result = 1;
    }
    if (!run.keep.empty())
        fs::copy(dir.Path(), run.keep,
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    return result;
}
