#include "app/Action.h"

#include "AppFixture.h"
#include "app/Snapshot.h"
#include "physics/Particle.h"

namespace app
{
using math::Vec2;

class ActionTest : public AppFixture
{
protected:
    static Undoer* TheUndoer() { return Undoer::GetInstancePtr(); }
    static AppGUI* TheGUI() { return App::GetInstancePtr()->GetAppGUI().get(); }

    static void Step(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            Sim()->ClearTimeDebt();
            Sim()->Update(0.01);
            TheScene()->Update(0.01f);
        }
    }
};

TEST_F(ActionTest, IsCalledByItsKeyInTheLanguageFiles)
{
    const ActionPtr actions[] = {QUIB_NEW SnapshotAction, QUIB_NEW SimStart,
                                 QUIB_NEW EraseEntities(EntitySet()),
                                 QUIB_NEW SnapshotRestorer(nullptr, "UndoScale", nullptr)};
    const char* const names[] = {"UndoSnapshot", "UndoSimStart", "UndoErase", "UndoScale"};
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(names[i], actions[i]->GetNameKey());
}

TEST_F(ActionTest, SnapshotActionIsAPointToComeBackTo)
{
    const auto box = Add("Scene.addBox {}");
    TheUndoer()->Do(QUIB_NEW SnapshotAction);
    EXPECT_TRUE(TheScene()->HasEntity(box)) << "doing it does nothing";
    TheScene()->RemoveEntity(box);
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(box));
    TheScene()->RemoveEntity(box);
    TheUndoer()->Redo();
    EXPECT_TRUE(TheScene()->HasEntity(box)) << "doing it again leads to the same point";
}

TEST_F(ActionTest, ScriptsCanSetAPointToComeBackTo)
{
    const auto box = Add("Scene.addBox {}");
    Run("App.GUI.takeSnapshot");
    ASSERT_TRUE(TheUndoer()->GetNextUndo());
    EXPECT_STREQ("UndoSnapshot", TheUndoer()->GetNextUndo()->GetNameKey());
    TheScene()->RemoveEntity(box);
    Run("App.undo");
    EXPECT_TRUE(TheScene()->HasEntity(box));
}

TEST_F(ActionTest, SnapshotRestorerLeadsToAndFro)
{
    const SnapshotPtr empty = Snapshot::TakeSnapshot();
    const auto box = Add("Scene.addBox {}");
    TheUndoer()->AddUndo(empty, "UndoBox");
    TheUndoer()->Undo();
    EXPECT_FALSE(TheScene()->HasEntity(box));
    TheUndoer()->Redo();
    EXPECT_TRUE(TheScene()->HasEntity(box)) << "the very same";
}

// Deliberate: there is no other reset.
TEST_F(ActionTest, UndoAfterPlayIsTheReset)
{
    const auto box = Add("Scene.addBox { pos = [0, 50] }");
    Run("Scene.addWater { vecs = [[9, 9]] }");
    box->GetBody()->SetVel(Vec2(1, 2));
    box->GetBody()->SetAngVel(3);
    Sim()->m_running = false;
    TheGUI()->TogglePlaying();
    EXPECT_TRUE(Sim()->m_running);
    Step(20);
    ASSERT_NE(Vec2(0, 50), box->GetBody()->GetPos());
    TheUndoer()->Undo();
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_EQ(Vec2(0, 50), box->GetBody()->GetPos());
    EXPECT_EQ(Vec2(1, 2), box->GetBody()->GetVel());
    EXPECT_EQ(3, box->GetBody()->GetAngVel());
    EXPECT_EQ(Vec2(9, 9), Sim()->GetParticles()[0]->GetPos());
    EXPECT_EQ(Vec2(), Sim()->GetParticles()[0]->GetVel());
    // Again from the same state, and on.
    box->GetBody()->SetVel(Vec2());
    TheUndoer()->Redo();
    EXPECT_TRUE(Sim()->m_running);
    EXPECT_EQ(Vec2(1, 2), box->GetBody()->GetVel());
}

TEST_F(ActionTest, PauseIsNoAction)
{
    Sim()->m_running = false;
    TheGUI()->TogglePlaying();
    const ActionPtr start = TheUndoer()->GetNextUndo();
    ASSERT_TRUE(start);
    EXPECT_STREQ("UndoSimStart", start->GetNameKey());
    TheGUI()->TogglePlaying();
    EXPECT_FALSE(Sim()->m_running);
    EXPECT_EQ(start, TheUndoer()->GetNextUndo());
    // What is edited while paused stands on top of the start.
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    const auto box = Add("Scene.addBox {}");
    TheUndoer()->AddUndo(before, "UndoBox");
    TheUndoer()->Undo();
    EXPECT_EQ(start, TheUndoer()->GetNextUndo());
}

TEST_F(ActionTest, ErasesJointsBeforeWhatTheyHold)
{
    Run("Scene.addBox { geomID = 11 }; Scene.addBox { pos = [0.5, 0]; geomID = 12 };"
        "Scene.addFixjoint { size = 0.2; geom0 = 11; geom0pos = [0, 0]; geom1 = 12; "
        "geom1pos = [-0.5, 0] };"
        "Scene.addHinge { size = 0.2; geom0 = 11; geom0pos = [0, 0]; geom1 = 0; geom1pos = [0, 0] "
        "};"
        "Scene.addPen { size = 0.2; geom = 12; relPoint = [0, 0] }");
    const std::vector<EntityPtr> all = TheScene()->GetEntities();
    ASSERT_EQ(5u, all.size());
    TheScene()->MoveToFront(QUIB_NEW Group(all[0]));
    const util::String before = Serializer::GetInstancePtr()->SerializeScene();
    const GroupPtr group = QUIB_NEW Group;
    for (const EntityPtr& entity : all)
        group->Add(entity);
    for (int i = 0; i < 2; ++i)
    {
        test::LogCapture log;
        TheUndoer()->Do(QUIB_NEW EraseEntities(group));
        EXPECT_EQ("", log.Text());
        EXPECT_EQ(0u, TheScene()->GetEntities().size());
        EXPECT_EQ(1u, Sim()->GetBodies().size());
        EXPECT_EQ(0u, Sim()->GetHinges().size());
        TheUndoer()->Undo();
        EXPECT_EQ(before, Serializer::GetInstancePtr()->SerializeScene());
    }
    TheUndoer()->Redo();
    EXPECT_EQ(0u, TheScene()->GetEntities().size());
}

// Deliberate: it is done again, to what has become of the scene since.
TEST_F(ActionTest, RedoErasesFromTheSceneAsItIsThen)
{
    const auto a = Add("Scene.addBox {}"), b = Add("Scene.addBox { pos = [3, 0] }");
    TheUndoer()->Do(QUIB_NEW EraseEntities(QUIB_NEW Group(EntityPtr(a))));
    TheUndoer()->Undo();
    b->Transform(math::Mat2D::Translation(Vec2(0, 5)));
    TheUndoer()->Redo();
    EXPECT_FALSE(TheScene()->HasEntity(a));
    EXPECT_EQ(Vec2(3, 5), b->GetGeom()->GetCenter());
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(a));
    EXPECT_EQ(Vec2(3, 5), b->GetGeom()->GetCenter());
}

TEST_F(ActionTest, ClearingTheSceneCanBeUndone)
{
    const auto box = Add("Scene.addBox {}");
    Run("Scene.title = \"Mill\"; Scene.addWater { vecs = [[3, 3]] }");
    TheScene()->ClearSceneUndoable();
    EXPECT_EQ(0u, TheScene()->GetEntities().size());
    EXPECT_EQ(0u, Sim()->GetParticles().size());
    EXPECT_STREQ("UndoClear", TheUndoer()->GetNextUndo()->GetNameKey());
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(box));
    EXPECT_EQ(1u, Sim()->GetParticles().size());
    EXPECT_EQ("Mill", TheScene()->GetTitle());
    TheUndoer()->Redo();
    EXPECT_FALSE(TheScene()->HasEntity(box));
    EXPECT_EQ("", TheScene()->GetTitle());
}

TEST_F(ActionTest, ErasesWhatIsStillThere)
{
    const auto a = Add("Scene.addBox {}"), b = Add("Scene.addBox { pos = [3, 0] }");
    const GroupPtr both = QUIB_NEW Group(EntityPtr(a));
    both->Add(b);
    const ActionPtr erase = QUIB_NEW EraseEntities(both);
    TheScene()->RemoveEntity(a);
    TheUndoer()->Do(erase);
    EXPECT_EQ(0u, TheScene()->GetEntities().size());
    TheUndoer()->Undo();
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
    EXPECT_TRUE(TheScene()->HasEntity(b));
}

TEST_F(ActionTest, BringsBackAHingeThatBroke)
{
    Run("Scene.addBox { geomID = 11; pos = [0, 5] };"
        "Scene.addHinge { size = 0.2; geom0 = 11; geom0pos = [0.5, 0]; geom1 = 0; "
        "geom1pos = [0.5, 5]; impulseLimit = 0.0001 }");
    const EntityPtr hinge = TheScene()->GetEntities()[1];
    Sim()->m_running = false;
    TheGUI()->TogglePlaying();
    Step(20);
    ASSERT_FALSE(TheScene()->HasEntity(hinge)) << "it should have broken";
    TheUndoer()->Undo();
    EXPECT_TRUE(TheScene()->HasEntity(hinge));
    EXPECT_TRUE(hinge->IsAlive());
    Step(1);
    EXPECT_TRUE(TheScene()->HasEntity(hinge));
}
}
