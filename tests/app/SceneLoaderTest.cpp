#include "app/SceneLoader.h"

#include "AppFixture.h"
#include "app/Action.h"
#include "math/Vector.h"
#include "script/ValueConversions.h"

namespace app
{
using math::Vec2;

class SceneLoaderTest : public AppFixture
{
protected:
    static Undoer* TheUndoer() { return Undoer::GetInstancePtr(); }
    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }

    static void Write(const util::String& name, const util::String& text)
    {
        util::FileSystem::GetInstancePtr()->WriteFile(
            util::FileSystem::GetInstancePtr()->SceneDir() + name, text);
    }
};

// Deliberate: a scene that was loaded runs, and the first undo takes back no more than that.
TEST_F(SceneLoaderTest, LoadingStartsTheSimulation)
{
    Write("loaded.qib", "FileInfo.version = 2; Scene.addBox { pos = [1, 2] }");
    const auto old = Add("Scene.addCircle {}");
    Sim()->m_running = false;
    ASSERT_TRUE(TheGUI()->LoadScene("loaded.qib", true));
    EXPECT_TRUE(Sim()->m_running);
    EXPECT_FALSE(TheScene()->HasEntity(old));
    const util::String loaded = Save();
    const EntityPtr box = TheScene()->GetEntities()[0];
    Sim()->Step(true);
    EXPECT_NE(loaded, Save());

    EXPECT_STREQ("UndoSimStart", TheUndoer()->GetNextUndo()->GetNameKey());
    TheUndoer()->Undo();
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_EQ(loaded, Save());
    EXPECT_STREQ("UndoLoadScene", TheUndoer()->GetNextUndo()->GetNameKey());
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(old));
    EXPECT_FALSE(TheScene()->HasEntity(box));
}

TEST_F(SceneLoaderTest, UndoBringsBackTheWholeSceneBefore)
{
    Write("first.qib", "FileInfo.version = 2; FileInfo.title = \"First\"; Sim.gravity = [0, -1];"
                       "Scene.Camera.pan = [1, 2]; Scene.Camera.zoom = 77; Scene.addBox {}");
    Write("second.qib", "FileInfo.version = 2; FileInfo.author = \"Me\"; Sim.gravity = [3, 4];"
                        "Sim.airSwitch = false; App.borders = false; App.fadeColor = [1, 0, 0];"
                        "App.fadeRotate = 5; Scene.addCircle { color = [0.1, 0.2, 0.3, 1.0] }");
    TheGUI()->LoadScene("first.qib", false);
    const util::String first = Save();
    TheGUI()->LoadScene("second.qib", false);
    const util::String second = Save();
    EXPECT_EQ("second.qib", FileInfo::GetInstancePtr()->GetFileName());
    TheUndoer()->Undo();
    EXPECT_EQ(second, Save());
    TheUndoer()->Undo();
    EXPECT_EQ(first, Save());
    EXPECT_EQ("First", TheScene()->GetTitle());
    EXPECT_EQ("", TheScene()->GetAuthor());
    EXPECT_EQ("first.qib", FileInfo::GetInstancePtr()->GetFileName())
        << "saving must not write it over the second";
    // Loaded once more.
    TheUndoer()->Redo();
    EXPECT_EQ(second, Save());
    EXPECT_EQ("second.qib", FileInfo::GetInstancePtr()->GetFileName());
    TheUndoer()->Undo();
    EXPECT_EQ(first, Save());
    // No file tells of a trail that is not shown.
    EXPECT_EQ("0", Run("App.fadeRotate"));
}

TEST_F(SceneLoaderTest, UndoBringsBackTheTrailThoughNoneWasShown)
{
    Run("App.fadeScale = [0.5, 0.5]; App.fadeTranslate = [3.0, 4.0]; App.fadeRotate = 7.0");
    Write("trail.qib", "FileInfo.version = 2; App.fadeColor = [1, 0, 0]; App.fadeScale = [2, 2];"
                       "App.fadeTranslate = [1, 1]; App.fadeRotate = 5; Scene.addBox {}");
    for (bool isImport : {false, true})
    {
        TheUndoer()->Do(QUIB_NEW SceneLoader(isImport, "trail.qib"));
        ASSERT_EQ("5", Run("App.fadeRotate"));
        TheUndoer()->Undo();
        EXPECT_EQ("[0, 0, 0]", Run("App.fadeColor"));
        EXPECT_EQ("[0.5, 0.5]", Run("App.fadeScale"));
        EXPECT_EQ("[3, 4]", Run("App.fadeTranslate"));
        EXPECT_EQ("7", Run("App.fadeRotate"));
    }
    // Files say nothing of it, still.
    EXPECT_EQ(util::String::npos, Save().find("fade", Save().find("fadeColor") + 9));
    Run("App.fadeTranslate = [0.0, 0.0]; App.fadeRotate = 0.0");
    // As a number of a script it would be another.
    App::GetInstancePtr()
        ->FindVariable("fadeScale")
        ->SetObject(script::ValueToObject(Vec2(0.95f, 0.95f)));
}

TEST_F(SceneLoaderTest, UndoOfALoadThatFailedKeepsWhatWasSetInstead)
{
    Write("gone.qib", "FileInfo.version = 2; FileInfo.title = \"Gone\"; Scene.addBox {}");
    Run("Sim.gravity = [0.0, -1.0]");
    TheUndoer()->Do(QUIB_NEW SceneLoader(false, "gone.qib"));
    TheUndoer()->Undo();
    Run("Sim.gravity = [0.0, -2.0]; FileInfo.author = \"Me\"");
    boost::filesystem::remove(Dir() / "scenes/gone.qib");
    test::LogCapture log;
    TheUndoer()->Redo();
    EXPECT_TRUE(log.Has("Tried to load non-existing file: ")) << log.Text();
    TheUndoer()->Undo();
    EXPECT_EQ(Vec2(0, -2), Sim()->GetGravity());
    EXPECT_EQ("Me", FileInfo::GetInstancePtr()->GetAuthor());
}

TEST_F(SceneLoaderTest, RedoReadsTheFileAgain)
{
    Write("changing.qib", "FileInfo.version = 2; Scene.addBox {}");
    TheUndoer()->Do(QUIB_NEW SceneLoader(false, "changing.qib"));
    TheUndoer()->Undo();
    EXPECT_EQ(0u, TheScene()->GetEntities().size());
    Write("changing.qib",
          "FileInfo.version = 2; Scene.addBox {}; Scene.addCircle { pos = [3, 0] }");
    TheUndoer()->Redo();
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
}

TEST_F(SceneLoaderTest, AMissingFileChangesNothing)
{
    const auto old = Add("Scene.addCircle {}");
    test::LogCapture log;
    EXPECT_FALSE(TheGUI()->LoadScene("nowhere.qib", true));
    EXPECT_TRUE(log.Has("Tried to load non-existing file: " +
                        util::FileSystem::GetInstancePtr()->SceneDir() + "nowhere.qib"))
        << log.Text();
    EXPECT_TRUE(TheScene()->HasEntity(old));
    TheUndoer()->Undo();
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(old));
}

TEST_F(SceneLoaderTest, UndoBringsBackWhatAFailedLoadHasTaken)
{
    Write("broken.qib", "Scene.addBox { pos = ");
    const auto old = Add("Scene.addCircle {}");
    const util::String before = Save();
    test::LogCapture log;
    EXPECT_FALSE(TheGUI()->LoadScene("broken.qib", true));
    EXPECT_TRUE(log.Has("Exception caught while loading scene: The text is not a valid scene or "
                        "Quiblet"))
        << log.Text();
    EXPECT_TRUE(log.Has("Failed to load scene ")) << log.Text();
    TheUndoer()->Undo();
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(old));
    EXPECT_EQ(before, Save());
}

// Deliberate: a pan that no file will hold tells whether the file had a view.
TEST_F(SceneLoaderTest, ZoomsToASceneWithoutAView)
{
    Write("a.qib", "FileInfo.version = 2; Scene.addBox { pos = [100, 50]; size = [4, 4] }");
    TheGUI()->LoadScene("a.qib", true);
    EXPECT_NEAR(100, TheCamera()->GetPan().x, 1e-3f);
    EXPECT_NEAR(50, TheCamera()->GetPan().y, 1e-3f);
    Write("b.qib",
          "FileInfo.version = 2; Scene.Camera.pan = [5, 6]; Scene.addBox { pos = [9, 9] }");
    TheGUI()->LoadScene("b.qib", true);
    EXPECT_EQ(Vec2(5, 6), TheCamera()->GetPan());
    Write("c.qib", "FileInfo.version = 2; Scene.Camera.pan = [1337.42, -42.1337];"
                   "Scene.addBox { pos = [9, 9] }");
    TheGUI()->LoadScene("c.qib", true);
    EXPECT_NEAR(9, TheCamera()->GetPan().x, 1e-3f) << "this one view can't be saved";
}

TEST_F(SceneLoaderTest, ImportsAQuibletToTheMouse)
{
    Write("wheel.qib", "FileInfo.version = 2; Scene.addBox { pos = [40, 50]; zDepth = 0 };"
                       "Scene.addCircle { pos = [42, 50]; zDepth = 1 }");
    const auto old = Add("Scene.addCircle { pos = [0, 0] }");
    TheScene()->SetSelection(QUIB_NEW Group(EntityPtr(old)));
    const util::String before = Save();
    const Vec2 pan = TheCamera()->GetPan();
    test::LogCapture log;
    TheUndoer()->Do(QUIB_NEW SceneLoader(true, "wheel.qib"));
    EXPECT_TRUE(
        log.Has("Imported quiblet " + util::FileSystem::GetInstancePtr()->SceneDir() + "wheel.qib"))
        << log.Text();
    EXPECT_STREQ("UndoImportQuiblet", TheUndoer()->GetNextUndo()->GetNameKey());
    ASSERT_EQ(3u, TheScene()->GetEntities().size());
    EXPECT_EQ(old, TheScene()->GetEntities()[0]) << "what comes in lies in front";
    EXPECT_FALSE(TheScene()->IsSelected(old));
    EXPECT_EQ(2u, TheScene()->GetSelection()->GetEntities().size());
    EXPECT_EQ(pan, TheCamera()->GetPan());
    const Vec2 center = TheScene()->GetSelection()->CalcFiniteAABB().GetCenter();
    const Vec2 mouse = App::GetInstancePtr()->GetMousePos();
    EXPECT_NEAR(mouse.x, center.x, 1e-4f);
    EXPECT_NEAR(mouse.y, center.y, 1e-4f);
    TheUndoer()->Undo();
    EXPECT_EQ(before, Save());
    TheUndoer()->Redo();
    EXPECT_EQ(3u, TheScene()->GetEntities().size());
}

TEST_F(SceneLoaderTest, AnImportDoesNotRenameTheScene)
{
    Write("wheel.qib", "FileInfo.version = 2; FileInfo.title = \"Wheel\"; Scene.addBox {}");
    FileInfo::GetInstancePtr()->SetTitle("Mine");
    TheUndoer()->Do(QUIB_NEW SceneLoader(true, "wheel.qib"));
    EXPECT_EQ("Mine", FileInfo::GetInstancePtr()->GetTitle());
    FileInfo::GetInstancePtr()->ClearTexts();
}

TEST_F(SceneLoaderTest, UndoOfAnImportTakesBackSettings)
{
    Write("odd.qib", "FileInfo.version = 2; Sim.gravity = [0.0, 0.0]; Scene.addBox {}");
    const util::String before = Save();
    TheUndoer()->Do(QUIB_NEW SceneLoader(true, "odd.qib"));
    ASSERT_NE(before, Save());
    TheUndoer()->Undo();
    EXPECT_EQ(before, Save());
}

TEST_F(SceneLoaderTest, AnImportLeavesTheFileOfTheSceneAlone)
{
    Write("home.qib", "FileInfo.version = 2; Scene.addBox {}");
    Write("wheel.qib", "FileInfo.version = 2; Scene.addCircle {}");
    TheGUI()->LoadScene("home.qib", false);
    const auto fileName = [] { return FileInfo::GetInstancePtr()->GetFileName(); };
    TheUndoer()->Do(QUIB_NEW SceneLoader(true, "wheel.qib"));
    EXPECT_EQ("home.qib", fileName());
    TheUndoer()->Undo();
    EXPECT_EQ("home.qib", fileName());
    TheUndoer()->Redo();
    EXPECT_EQ("home.qib", fileName());
}

// Deliberate: it is done again, to what has become of the scene since.
TEST_F(SceneLoaderTest, RedoOfAnImportBringsItIntoTheSceneAsItIsThen)
{
    Write("wheel.qib", "FileInfo.version = 2; Scene.addCircle {}");
    const auto old = Add("Scene.addBox {}");
    TheUndoer()->Do(QUIB_NEW SceneLoader(true, "wheel.qib"));
    TheUndoer()->Undo();
    old->Transform(math::Mat2D::Translation(Vec2(5, 0)));
    const util::String moved = Save();
    TheUndoer()->Redo();
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_EQ(Vec2(5, 0), old->GetGeom()->GetCenter());
    TheUndoer()->Undo();
    EXPECT_EQ(moved, Save());
}

TEST_F(SceneLoaderTest, TellsWhichSceneItHasLoaded)
{
    Write("told.qib", "FileInfo.version = 2; Scene.addBox {}");
    test::LogCapture progress(logging::LogVerbose);
    TheUndoer()->Do(QUIB_NEW SceneLoader(false, "told.qib"));
    EXPECT_TRUE(
        progress.Has("Loaded scene " + util::FileSystem::GetInstancePtr()->SceneDir() + "told.qib"))
        << progress.Text();
}

TEST_F(SceneLoaderTest, AFileCanNotUndoItsOwnLoading)
{
    const auto old = Add("Scene.addCircle {}");
    TheUndoer()->Do(QUIB_NEW SnapshotAction);
    const ActionPtr point = TheUndoer()->GetNextUndo();
    Write("sly.qib", "FileInfo.version = 2; Scene.addBox {}; App.undo; App.GUI.takeSnapshot;"
                     "Scene.addBox { pos = [3, 0]; friction = { App.undo; 0.5 } }");
    test::LogCapture log;
    TheUndoer()->Do(QUIB_NEW SceneLoader(false, "sly.qib"));
    EXPECT_TRUE(log.Has("Nothing can be done, undone or redone while an action is under way"));
    EXPECT_EQ(2u, TheScene()->GetEntities().size());
    EXPECT_FALSE(TheScene()->HasEntity(old));
    EXPECT_STREQ("UndoLoadScene", TheUndoer()->GetNextUndo()->GetNameKey());
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(old));
    EXPECT_EQ(point, TheUndoer()->GetNextUndo());
}
}
