#include "AppFixture.h"

#include "input/Input.h"
#include "util/Callback.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

using math::Vec2;

namespace app
{
namespace
{
class AppGUITest : public AppFixture
{
protected:
    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }
    static void Sleep(int milliseconds)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
    static bool Exists(const std::string& name) { return boost::filesystem::exists(Dir() / name); }
    void TearDown() override
    {
        Run("App.autosaveTime = 30.0");
        AppFixture::TearDown();
    }
};

const char* const Autosave = "scenes/_AUTOSAVE.qib";
const char* const ConfigAutosave = "config.autosave.cfg";

TEST_F(AppGUITest, SavesWhenTheAutosaveTimeIsOver)
{
    boost::filesystem::remove(Dir() / Autosave);
    boost::filesystem::remove(Dir() / ConfigAutosave);
    Run("App.autosaveTime = 0.1");
    TheGUI()->PostponeAutosave();
    TheGUI()->Update(0.01f);
    EXPECT_FALSE(Exists(Autosave));
    Sleep(150);
    TheGUI()->Update(0.01f);
    EXPECT_TRUE(Exists(Autosave));
    EXPECT_TRUE(Exists(ConfigAutosave));
    // And not again before it is over again.
    boost::filesystem::remove(Dir() / Autosave);
    TheGUI()->Update(0.01f);
    EXPECT_FALSE(Exists(Autosave));
}

TEST_F(AppGUITest, SavesEveryFrameAtAnAutosaveTimeOf0)
{
    Run("App.autosaveTime = 0.0");
    for (int frame = 0; frame < 3; ++frame)
    {
        boost::filesystem::remove(Dir() / Autosave);
        Sleep(5);
        TheGUI()->Update(0.01f);
        EXPECT_TRUE(Exists(Autosave)) << frame;
    }
}

TEST_F(AppGUITest, DoesNotTakeAnAutosaveForTheCurrentScene)
{
    FileInfo::GetInstancePtr()->SetFileName("mine.qib");
    TheGUI()->SaveSceneAs("_AUTOSAVE.qib", true);
    TheGUI()->LoadScene("_AUTOSAVE.qib", true);
    EXPECT_EQ("mine.qib", FileInfo::GetInstancePtr()->GetFileName());
    TheGUI()->SaveSceneAs("other", false);
    EXPECT_EQ("other", FileInfo::GetInstancePtr()->GetFileName());
    TheGUI()->LoadScene("mine.qib", false);
    EXPECT_EQ("mine.qib", FileInfo::GetInstancePtr()->GetFileName());
}

TEST_F(AppGUITest, AfterALoadThatFailedASaveWritesOverNeitherScene)
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    const std::string mine = "Scene.addBox { pos = [0.0, 0.0] };",
                      torn = "Scene.addBox { pos = [0.0, ";
    files->WriteFile(Dir() / "scenes/mine.qib", mine);
    files->WriteFile(Dir() / "scenes/torn.qib", torn);
    ASSERT_TRUE(TheGUI()->LoadScene("mine.qib", false));
    EXPECT_FALSE(TheGUI()->LoadScene("torn", false));
    TheGUI()->OnSceneSave();
    EXPECT_EQ(torn, test::Slurp(Dir() / "scenes/torn.qib"));
    EXPECT_EQ(mine, test::Slurp(Dir() / "scenes/mine.qib"));
    // Who goes back to the scene goes back to its file.
    Undoer::GetInstancePtr()->Undo();
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ("mine.qib", FileInfo::GetInstancePtr()->GetFileName());
}

TEST_F(AppGUITest, ALoadThatDidNotEvenBeginLeavesTheSceneItsFile)
{
    FileInfo::GetInstancePtr()->SetFileName("mine.qib");
    boost::filesystem::create_directories(Dir() / "scenes/folder.qib");
    EXPECT_FALSE(TheGUI()->LoadScene("folder", false));
    EXPECT_EQ("mine.qib", FileInfo::GetInstancePtr()->GetFileName());
    boost::filesystem::remove(Dir() / "scenes/folder.qib");
}

TEST_F(AppGUITest, MakesLongNames)
{
    const std::string scenes = Dir() / "scenes/";
    EXPECT_EQ(scenes + "a.qib", MakeLongFileName("a"));
    EXPECT_EQ(scenes + "a.QIB", MakeLongFileName("a.QIB"));
    EXPECT_EQ("./a.qib", MakeLongFileName("./a"));
    EXPECT_EQ("/x/a.qib", MakeLongFileName("/x/a.qib"));
}

TEST_F(AppGUITest, SavesAndLoadsAScene)
{
    Add("Scene.addBox { pos = [1.0, 2.0] }");
    {
        test::LogCapture log(logging::LogVerbose);
        TheGUI()->SaveSceneAs("saved", false);
        EXPECT_TRUE(log.Has("Scene saved to " + (Dir() / "scenes/saved.qib"))) << log.Text();
    }
    TheScene()->ClearScene();
    Sim()->m_running = false;
    test::LogCapture log(logging::LogVerbose);
    TheGUI()->LoadScene("saved.qib", false);
    EXPECT_TRUE(log.Has("Loaded scene " + (Dir() / "scenes/saved.qib"))) << log.Text();
    ASSERT_EQ(1u, TheScene()->GetEntities().size());
    EXPECT_TRUE(Sim()->m_running);
}

TEST_F(AppGUITest, TakesABackslashForASlash)
{
    boost::filesystem::create_directories(Dir() / "deep");
    test::Spit(Dir() / "deep/a.qib", "Scene.addBox { }");
    util::String path = Dir() / "deep/a.qib";
    std::replace(path.begin(), path.end(), '/', '\\');
    TheGUI()->LoadScene(path, true);
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(AppGUITest, SaysThatASceneIsMissingAndKeepsTheOneThatIsThere)
{
    Add("Scene.addBox { }");
    test::LogCapture log(logging::LogError);
    TheGUI()->LoadScene("nowhere", true);
    EXPECT_TRUE(log.Has("Tried to load non-existing file: " + (Dir() / "scenes/nowhere.qib")))
        << log.Text();
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(AppGUITest, NamesAFileThatItCannotLoad)
{
    const struct
    {
        const char *name, *text;
    } files[] = {
        {"truncated", "Scene.addBox { pos = [1.0, 2.0"},
        {"binary", "\x01\x02\x7f\x45\x4c\x46\xff\xfe{[("},
        {"garbage", "))))"},
    };
    for (const auto& file : files)
    {
        SCOPED_TRACE(file.name);
        const std::string path = Dir() / "scenes/" + file.name + ".qib";
        test::Spit(path, file.text);
        test::LogCapture log(logging::LogError);
        TheGUI()->LoadScene(file.name, true);
        EXPECT_TRUE(
            log.Has("Exception caught while loading scene: The text is not a valid scene or "
                    "Quiblet"))
            << log.Text();
        EXPECT_TRUE(log.Has(path)) << log.Text();
        EXPECT_TRUE(TheScene()->GetEntities().empty());
    }
}

TEST_F(AppGUITest, LoadsAnEmptyFileAsAnEmptyScene)
{
    test::Spit(Dir() / "scenes/empty.qib", "");
    Add("Scene.addBox { }");
    test::LogCapture log(logging::LogVerbose);
    TheGUI()->LoadScene("empty", true);
    EXPECT_TRUE(log.Has("Loaded scene " + (Dir() / "scenes/empty.qib")));
    EXPECT_TRUE(TheScene()->GetEntities().empty());
}

TEST_F(AppGUITest, KeepsTheSceneWhenAFileCannotBeRead)
{
    boost::filesystem::create_directories(Dir() / "scenes/folder.qib");
    Add("Scene.addBox { }");
    test::LogCapture log(logging::LogError);
    TheGUI()->LoadScene("folder", true);
    EXPECT_TRUE(log.Has(Dir() / "scenes/folder.qib")) << log.Text();
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

TEST_F(AppGUITest, ZoomsToASceneWithoutAView)
{
    test::Spit(Dir() / "scenes/a.qib", "Scene.addBox { pos = [5.0, 5.0] }");
    TheGUI()->LoadScene("a", true);
    EXPECT_NEAR(5, TheCamera()->GetPan().x, 1e-3f);
    test::Spit(Dir() / "scenes/a.qib",
               "Scene.Camera.pan = [1.0, 0.0]; Scene.addBox { pos = [5.0, 5.0] }");
    TheGUI()->LoadScene("a", true);
    EXPECT_EQ(Vec2(1, 0), TheCamera()->GetPan());
}

TEST_F(AppGUITest, ShowsTheDefaultViewWhenNothingElseCanBeShown)
{
    for (const char* text : {"))))", "Scene.addBox { pos = [3.0e38, 3.0e38] }",
                             "Scene.addBox { pos = [1.6e38, 1.0] }", ""})
    {
        SCOPED_TRACE(text);
        test::Spit(Dir() / "scenes/a.qib", text);
        TheCamera()->SetPan(Vec2(3, 4));
        TheGUI()->LoadScene("a", true);
        EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());
        EXPECT_EQ(150, TheCamera()->GetZoom());
    }
}

TEST_F(AppGUITest, WarnsOfNulBytesInASceneAndInAConfiguration)
{
    const std::string text = std::string(300, '\0') + "Scene.addBox { };" + std::string(1, '\0');
    test::Spit(Dir() / "scenes/nul.qib", text);
    test::Spit(Dir() / "nul.cfg", text);
    test::LogCapture log(logging::LogWarning);
    TheGUI()->LoadScene("nul", true);
    EXPECT_TRUE(log.Has("\"" + (Dir() / "scenes/nul.qib") + "\" holds NUL bytes")) << log.Text();
    log.Clear();
    Parser()->LoadConfig(Dir() / "nul.cfg");
    EXPECT_TRUE(log.Has("\"" + (Dir() / "nul.cfg") + "\" holds NUL bytes")) << log.Text();
}

// What no std::exception tells of.
class OddFunction final : public script::AbstractFunction
{
public:
    OddFunction()
        : AbstractFunction(script::ObjectKind::Intrinsic)
    {
    }
    script::ObjectPtr Call(const script::ObjectList&) override { return QUIB_NEW script::Void; }
    int GetArgCount() override { return 1; }
    script::ExpressionPtr ToExpression() const override { throw 17; }
    util::String ToText() const override { return "odd"; }
};

TEST_F(AppGUITest, SurvivesALoadAndASaveThatFailInAnUnknownWay)
{
    test::Spit(Dir() / "scenes/odd.qib", "old");
    bool fails = true;
    const util::SharedPtr<util::Pointee> owner = QUIB_NEW util::Pointee;
    const auto fail = [&fails]
    {
        if (std::exchange(fails, false))
            throw 17;
    };
    util::DynamicCast<script::TAttrib<Vec2>>(TheCamera()->GetVariable("pan"))
        ->AddChangeCallback(QUIB_NEW util::Callback(fail, owner.get()));
    test::LogCapture log;
    TheGUI()->LoadScene("odd", true);
    EXPECT_TRUE(
        log.Has("An unknown error occurred while loading the scene " + (Dir() / "scenes/odd.qib")))
        << log.Text();
    EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());

    const script::VariablePtr setting = Sim()->GetVariable("airSwitch");
    const script::ObjectPtr before = setting->GetObject();
    setting->script::Variable::SetObject(QUIB_NEW OddFunction);
    TheGUI()->SaveSceneAs("odd", true);
    setting->SetObject(before);
    EXPECT_TRUE(std::count(log.Lines().begin(), log.Lines().end(), "Fail\n") ||
                std::count(log.Lines().begin(), log.Lines().end(), "Fail"))
        << log.Text();
    EXPECT_EQ("old", test::Slurp(Dir() / "scenes/odd.qib"));
}

void TurnWheel(int key, const Vec2& pos)
{
    for (bool down : {true, false})
        input::Input::GetInstancePtr()->OnKeyEvent(input::KeyEvent(key, 0, down, pos));
}

TEST_F(AppGUITest, ZoomsAroundTheMouseWithTheWheel)
{
    const Vec2 mouse(100, 50);
    const Vec2 before = TheCamera()->GUIToWorld(mouse);
    TurnWheel(327, mouse);
    EXPECT_FLOAT_EQ(150 * std::exp2(0.2f), TheCamera()->GetZoom());
    EXPECT_NEAR(before.x, TheCamera()->GUIToWorld(mouse).x, 1e-3f);
    EXPECT_NEAR(before.y, TheCamera()->GUIToWorld(mouse).y, 1e-3f);
    TurnWheel(328, mouse);
    TurnWheel(328, mouse);
    EXPECT_FLOAT_EQ(150 * std::exp2(-0.2f), TheCamera()->GetZoom());
    EXPECT_NEAR(before.x, TheCamera()->GUIToWorld(mouse).x, 1e-3f);
}

TEST_F(AppGUITest, DoesNotZoomPastTheEndsNorMoveThere)
{
    for (int key : {327, 328})
    {
        TheCamera()->SetZoom(key == 327 ? Camera::GetMaxZoom() : Camera::GetMinZoom());
        TheCamera()->SetPan(Vec2(1, 2));
        TurnWheel(key, Vec2(3, 3));
        EXPECT_EQ(Vec2(1, 2), TheCamera()->GetPan());
        TurnWheel(key == 327 ? 328 : 327, Vec2(3, 3));
        EXPECT_NE(Vec2(1, 2), TheCamera()->GetPan());
    }
}

TEST_F(AppGUITest, LeavesTheWheelToWhoHasTakenIt)
{
    class Taker final : public gui::Component
    {
    public:
        void OnKeyEvent(const input::KeyEvent& event) override { event.SetHandled(true); }
    };
    const gui::ComponentPtr taker = QUIB_NEW Taker;
    TheGUI()->AddComponent(taker);
    TurnWheel(327, Vec2(3, 3));
    TheGUI()->RemoveComponent(taker);
    EXPECT_EQ(150, TheCamera()->GetZoom());
}

TEST_F(AppGUITest, TakesTheTextsOfTheFileForTheScene)
{
    test::Spit(Dir() / "scenes/a.qib",
               "FileInfo.title = \"T\"; FileInfo.author = \"A\"; FileInfo.description = \"D\"");
    TheGUI()->LoadScene("a", true);
    EXPECT_EQ("T", TheScene()->GetTitle());
    EXPECT_EQ("A", TheScene()->GetAuthor());
    EXPECT_EQ("D", TheScene()->GetDescription());
    // A file without texts does not keep those of the one before.
    test::Spit(Dir() / "scenes/a.qib", "");
    TheGUI()->LoadScene("a", true);
    EXPECT_EQ("", TheScene()->GetTitle());
    EXPECT_EQ("", FileInfo::GetInstancePtr()->GetTitle());
}

TEST_F(AppGUITest, SaysThatASceneWasNotSavedAndLeavesTheOldFileWhole)
{
    const std::string folder = Dir() / "nofolder";
    test::LogCapture log(logging::LogError);
    TheGUI()->SaveSceneAs(folder + "/a", false);
    EXPECT_TRUE(log.Has("Failed to save scene to " + folder + "/a.qib")) << log.Text();
    log.Clear();
    // Nobody asked for an autosave, so nobody is bothered.
    TheGUI()->SaveSceneAs(folder + "/a", true);
    EXPECT_TRUE(log.Lines().empty()) << log.Text();

    // A folder stands where the text would be written first.
    test::Spit(Dir() / "scenes/old.qib", "old");
    boost::filesystem::create_directories(Dir() / "scenes/old.qib.tmp/x");
    TheGUI()->SaveSceneAs("old", false);
    EXPECT_EQ("old", test::Slurp(Dir() / "scenes/old.qib"));
    EXPECT_TRUE(log.Has("Failed to save scene to " + (Dir() / "scenes/old.qib"))) << log.Text();
    boost::filesystem::remove_all(Dir() / "scenes/old.qib.tmp");
}

TEST_F(AppGUITest, SavesItsSettings)
{
    for (const char* name : {"drawInside", "leftClickMenus", "trapUser", "simpleMode"})
    {
        SCOPED_TRACE(name);
        const util::String setting = util::String("App.GUI.") + name;
        EXPECT_EQ("false", Run(setting));
        Run(setting + " = true");
        Parser()->SaveConfig(Dir() / "settings.cfg");
        Run(setting + " = false");
        Parser()->LoadConfig(Dir() / "settings.cfg");
        EXPECT_EQ("true", Run(setting));
        Run(setting + " = false");
    }
}

TEST_F(AppGUITest, FindsAPanelByItsKind)
{
    EXPECT_FALSE(TheGUI()->GetWidget("Toolbar"));
    const WidgetPtr first = QUIB_NEW Widget("Toolbar", nullptr),
                    second = QUIB_NEW Widget("Toolbar", nullptr);
    TheGUI()->AddWidget(first);
    TheGUI()->AddWidget(second);
    EXPECT_EQ(first, TheGUI()->GetWidget("Toolbar"));
    TheGUI()->RemoveWidget(first);
    EXPECT_EQ(second, TheGUI()->GetWidget("Toolbar"));
    TheGUI()->RemoveWidget(second);
}

TEST_F(AppGUITest, LogsWhyASaveFailedForTheFileOnly)
{
    test::LogCapture log(logging::LogInfo);
    TheGUI()->SaveSceneAs(Dir() / "nofolder/a", true);
    EXPECT_TRUE(log.Has("Error: Failed to write file \"" + (Dir() / "nofolder/a.qib") + "\""))
        << log.Text();
}
}
}
