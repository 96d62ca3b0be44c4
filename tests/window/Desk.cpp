#include "window/Desk.h"

namespace test
{
namespace
{
const char* const Rest =
    "Scene.Clear; Sim.running = false; Sim.gravitySwitch = true; Scene.Camera.pan = [0.0, 0.0]; "
    "Scene.Camera.zoom = 100.0; GUI.clickTimeTolerance = 0.4; App.GUI.drawInside = false; "
    "App.GUI.leftClickMenus = false; System.maxFPS = 200.0; ";

std::string BoxText(int id, const char* pos, const char* size, const char* color)
{
    return "Scene.addBox({ geomID = " + std::to_string(id) + "; entityID = " + std::to_string(id) +
           "; pos = " + pos + "; size = " + size + "; color = " + color + " }); ";
}

// In the order of Desk's enumerations.
std::vector<std::string> Texts()
{
    const char *const red = "[0.5, 0.0, 0.0, 1.0]", *const blue = "[0.0, 0.0, 1.0, 1.0]",
                      *const green = "[0.0, 0.5, 0.0, 1.0]", *const one = "[1.0, 1.0]",
                      *const middle = "[0.0, 0.0]";
    const std::string nothing = Rest;
    return {
        nothing,
        nothing + BoxText(1, middle, one, red),
        nothing + BoxText(1, "[-1.0, 0.0]", one, blue) + BoxText(2, "[1.0, 0.0]", one, green),
        nothing + BoxText(1, middle, "[2.0, 2.0]", blue) + BoxText(2, middle, one, green),
        nothing +
            "Scene.addPlane({ geomID = 9; entityID = 9; angle = 1.5707963; pos = [0.0, -1.0] }); " +
            BoxText(1, "[0.0, -0.5]", one, red),
        nothing + "GUI.clickTimeTolerance = 0.05; ",
        "App.GUI.drawInside = true",
        "App.GUI.leftClickMenus = true",
        "Sim.running = true",
        "System.minFPS = 1.0; System.maxFPS = 10.0",
    };
}

// Made for the first test and there for the last one; a program that a test has brought down is replaced.
struct Furniture
{
    Furniture()
    {
        // The mouse often is where a test looks, and clouds drift there.
        dir.Write("autoexec.cfg", HandSettings(Texts()) +
                                      "App.autosaveTime = 1.0e9; GUI.forceOSCursor = true; "
                                      "App.Background.drawClouds = false;\n");
        dir.Write("config.cfg", "System.resolution = [640, 480]");
        dir.Write("scenes/welcome.qib", "FileInfo.version = 2; Sim.running = false;");
    }

    void Start()
    {
        hand.reset();
        program = std::make_unique<Program>(dir, server.Display());
        if (!program->WaitUntilItSays("Running program..."))
            throw std::runtime_error("Quib does not start:\n" + program->Err());
        hand = std::make_unique<Hand>(server, dir, *program);
    }

    WorkDir dir;
    XServer server;
    std::unique_ptr<Program> program;
    std::unique_ptr<Hand> hand;
};

Furniture& TheFurniture()
{
    static Furniture s_furniture;
    return s_furniture;
}
}

void Desk::SetUp()
{
    Furniture& furniture = TheFurniture();
    if (!furniture.program || !furniture.program->IsRunning())
        furniture.Start();
    hand = furniture.hand.get();
    hand->LookAgain();
    hand->LookAt({0, 0}, Zoom);
    hand->MoveTo({0, 2});
    hand->Tap("Escape");
    hand->Tap("k");
    Lay(Nothing);
}

void Desk::TearDown()
{
    hand->LetGoOfAll();
    EXPECT_TRUE(TheProgram().IsRunning()) << TheProgram().Err();
}

WorkDir& Desk::Dir()
{
    return TheFurniture().dir;
}

XServer& Desk::Server()
{
    return TheFurniture().server;
}

Program& Desk::TheProgram()
{
    return *TheFurniture().program;
}

Desk::Color Desk::At(Point world) const
{
    const Point pixel = hand->ToPixel(world);
    const WindowInfo& window = hand->Window();
    const int x = int(pixel.x), y = int(pixel.y);
    const size_t at = 3 * (size_t(y) * window.width + x);
    if (x < 0 || x >= window.width || y < 0 || y >= window.height || at + 2 >= pixels.size())
        return {-1, -1, -1};
    return {pixels[at], pixels[at + 1], pixels[at + 2]};
}

std::string Desk::Kinds(const SavedScene& scene)
{
    std::string kinds;
    for (const SavedEntity& entity : scene.entities)
        kinds += (kinds.empty() ? "" : " ") + entity.kind;
    return kinds;
}

testing::AssertionResult IsAt(const char*, const char* text, Point expected, Point found)
{
    if (Distance(expected, found) <= 0.015)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << text << " is (" << found.x << ", " << found.y << ") instead of (" << expected.x
           << ", " << expected.y << ")";
}
}
