#include "app/Undoer.h"

#include "AppFixture.h"
#include "app/Language.h"
#include "app/Snapshot.h"

namespace app
{
namespace
{
// Tells what is asked of it.
class Note : public Action
{
public:
    explicit Note(util::String* log, const char* name = "UndoMove")
        : Action(name)
        , m_log(log)
    {
    }

    void Do() override { *m_log += "do "; }
    void Undo() override { *m_log += "undo "; }

private:
    util::String* m_log;
};

class Failing : public Action
{
public:
    Failing()
        : Action("UndoMove")
    {
    }

    void Do() override { QUIB_THROW(BadDataException("no way")); }
    void Undo() override { QUIB_THROW(BadDataException("no way back")); }
};

class Listener : public util::Pointee
{
public:
    void Hear() { ++m_count; }
    int m_count = 0;
};
}

class UndoerTest : public AppFixture
{
protected:
    static Undoer* TheUndoer() { return Undoer::GetInstancePtr(); }

    ActionPtr MakeNote(const char* name = "UndoMove") { return QUIB_NEW Note(&m_log, name); }

    static size_t CountUndos()
    {
        size_t count = 0;
        for (; TheUndoer()->GetNextUndo(); ++count)
            TheUndoer()->Undo();
        return count;
    }

    void TearDown() override
    {
        Run("App.maxUndo = 25");
        AppFixture::TearDown();
    }

    util::String m_log;
};

TEST_F(UndoerTest, DoesUndoesAndRedoesInTurn)
{
    const ActionPtr first = MakeNote(), second = MakeNote();
    TheUndoer()->Do(first);
    TheUndoer()->Do(second);
    EXPECT_EQ(second, TheUndoer()->GetNextUndo());
    TheUndoer()->Undo();
    EXPECT_EQ(first, TheUndoer()->GetNextUndo());
    EXPECT_EQ(second, TheUndoer()->GetNextRedo());
    TheUndoer()->Redo();
    EXPECT_EQ(second, TheUndoer()->GetNextUndo());
    EXPECT_FALSE(TheUndoer()->GetNextRedo());
    // Unless an action says otherwise, doing it again is doing it.
    EXPECT_EQ("do do undo do ", m_log);
}

TEST_F(UndoerTest, DoesNothingWhenThereIsNothingToUndo)
{
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
    TheUndoer()->Undo();
    TheUndoer()->Redo();
    EXPECT_EQ("", m_log);
}

TEST_F(UndoerTest, RemembersWhatWasDoneElsewhereWithoutDoingIt)
{
    const ActionPtr note = MakeNote();
    TheUndoer()->AddUndo(note);
    EXPECT_EQ("", m_log);
    EXPECT_EQ(note, TheUndoer()->GetNextUndo());
}

TEST_F(UndoerTest, LosesWhatCouldBeRedoneAtANewEdit)
{
    const auto undoOne = [this]
    {
        TheUndoer()->Do(MakeNote());
        TheUndoer()->Undo();
        ASSERT_TRUE(TheUndoer()->GetNextRedo());
    };
    undoOne();
    TheUndoer()->Do(MakeNote());
    EXPECT_FALSE(TheUndoer()->GetNextRedo());
    undoOne();
    TheUndoer()->AddUndo(MakeNote());
    EXPECT_FALSE(TheUndoer()->GetNextRedo());
    undoOne();
    TheUndoer()->AddUndo(Snapshot::TakeSnapshot(), "UndoMove");
    EXPECT_FALSE(TheUndoer()->GetNextRedo());
}

TEST_F(UndoerTest, ForgetsAnActionThatFails)
{
    test::LogCapture log;
    TheUndoer()->Do(MakeNote());
    TheUndoer()->Undo();
    TheUndoer()->Do(QUIB_NEW Failing);
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
    EXPECT_FALSE(TheUndoer()->GetNextRedo()) << "what could be redone is lost all the same";
    EXPECT_TRUE(log.Has("Caught exception: no way, ")) << log.Text();
    EXPECT_TRUE(log.Has("\"UndoMove\" failed: no way")) << log.Text();

    TheUndoer()->AddUndo(QUIB_NEW Failing);
    TheUndoer()->Undo();
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
    EXPECT_FALSE(TheUndoer()->GetNextRedo());
    EXPECT_TRUE(log.Has("\"UndoMove\" failed: no way back")) << log.Text();
}

TEST_F(UndoerTest, TellsOfEachChange)
{
    const util::SharedPtr<Listener> listener = QUIB_NEW Listener;
    TheUndoer()->AddOnChangeCallback(util::MakeCallback(&Listener::Hear, listener.get()));
    int expected = 0;
    TheUndoer()->Do(MakeNote());
    EXPECT_EQ(++expected, listener->m_count);
    TheUndoer()->AddUndo(MakeNote());
    EXPECT_EQ(++expected, listener->m_count);
    TheUndoer()->AddUndo(Snapshot::TakeSnapshot(), "UndoMove");
    EXPECT_EQ(++expected, listener->m_count);
    TheUndoer()->Undo();
    EXPECT_EQ(++expected, listener->m_count);
    TheUndoer()->Redo();
    EXPECT_EQ(++expected, listener->m_count);
    while (TheUndoer()->GetNextUndo())
        TheUndoer()->Undo();
    listener->m_count = 0;
    TheUndoer()->Undo();
    EXPECT_EQ(0, listener->m_count) << "nothing has changed";
}

TEST_F(UndoerTest, KeepsTwentyFiveActions)
{
    for (int i = 0; i < 30; ++i)
        TheUndoer()->Do(MakeNote());
    EXPECT_EQ(25u, CountUndos());
}

TEST_F(UndoerTest, TrimsBothStacksAtTheirOldEndsWhenTheLimitSinks)
{
    std::vector<ActionPtr> notes;
    for (int i = 0; i < 8; ++i)
    {
        notes.push_back(MakeNote());
        TheUndoer()->Do(notes.back());
    }
    for (int i = 0; i < 4; ++i)
        TheUndoer()->Undo();
    // 0 to 3 can be undone, 4 to 7 redone.
    Run("App.maxUndo = 2");
    EXPECT_EQ(notes[3], TheUndoer()->GetNextUndo());
    EXPECT_EQ(notes[4], TheUndoer()->GetNextRedo());
    m_log = "";
    TheUndoer()->Redo();
    TheUndoer()->Redo();
    TheUndoer()->Redo();
    EXPECT_EQ("do do ", m_log) << "6 and 7 were the oldest";
    EXPECT_EQ(2u, CountUndos());
}

TEST_F(UndoerTest, RemembersNothingAtALimitOfNothing)
{
    Run("App.maxUndo = 0");
    TheUndoer()->Do(MakeNote());
    EXPECT_EQ("do ", m_log);
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
    TheUndoer()->AddUndo(Snapshot::TakeSnapshot(), "UndoMove");
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
}

TEST_F(UndoerTest, TakesALimitBelowNothingForNothing)
{
    TheUndoer()->Do(MakeNote());
    Run("App.maxUndo = -1");
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
    TheUndoer()->Do(MakeNote());
    EXPECT_FALSE(TheUndoer()->GetNextUndo());
}

TEST_F(UndoerTest, ObeysScripts)
{
    TheUndoer()->Do(MakeNote());
    Run("App.undo");
    EXPECT_EQ("do undo ", m_log);
    Run("App.redo");
    EXPECT_EQ("do undo do ", m_log);
}

TEST_F(UndoerTest, KeepsOneSnapshotBeforeAndOneAfterAnEdit)
{
    const auto box = Add("Scene.addBox { pos = [1, 2] }");
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    box->SetColor4(math::Vec4(1, 0, 0, 1));
    TheUndoer()->AddUndo(before, "UndoRandomColor");
    EXPECT_STREQ("UndoRandomColor", TheUndoer()->GetNextUndo()->GetNameKey());
    const math::Vec4 red = box->GetColor4();
    TheUndoer()->Undo();
    EXPECT_NE(red, box->GetColor4());
    TheUndoer()->Redo();
    EXPECT_EQ(red, box->GetColor4());
}

TEST_F(UndoerTest, OutlivesTheLoadingOfAScene)
{
    const ActionPtr note = MakeNote();
    TheUndoer()->Do(note);
    TheScene()->ClearScene();
    EXPECT_EQ(note, TheUndoer()->GetNextUndo());
}

TEST_F(UndoerTest, ShowsNamesInTheLanguageOfTheProgram)
{
    test::LogCapture log;
    EXPECT_EQ("[nothing]", Language::GetInstancePtr()->Get("nothing"));
    EXPECT_TRUE(log.Has("English and English translation missing for nothing")) << log.Text();
    EXPECT_EQ("[UndoClone]", MakeNote("UndoClone")->Name());
}
}
