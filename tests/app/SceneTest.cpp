#include "AppFixture.h"
#include "HeldKeys.h"
#include "PlainEntity.h"

#include "app/Undoer.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/WorldGeom.h"

#include <SDL_video.h>

using math::Vec2;

namespace test
{
extern size_t g_allocations; // the counter stands with the tests of pens
}

namespace app
{
namespace
{
using SceneTest = AppFixture;

TEST_F(SceneTest, PicksTheEntityOnTop)
{
    const auto below = Add("Scene.addBox { size = [2.0, 2.0] }");
    const auto above = Add("Scene.addCircle { radius = 0.5 }");
    EXPECT_EQ(above.get(), TheScene()->GetEntityAt(Vec2(0, 0)).get());
    EXPECT_EQ(below.get(), TheScene()->GetEntityAt(Vec2(0.9f, 0.9f)).get());
    EXPECT_FALSE(TheScene()->GetEntityAt(Vec2(5, 5)));
    const std::vector<EntityPtr> all = TheScene()->GetEntitiesAt(Vec2(0, 0));
    ASSERT_EQ(2u, all.size());
    EXPECT_EQ(above.get(), all[0].get());
    EXPECT_EQ(below.get(), all[1].get());
}

TEST_F(SceneTest, CountsTheOutlineToTheEntity)
{
    Add("Scene.addBox { size = [2.0, 2.0] }");
    EXPECT_TRUE(TheScene()->GetEntityAt(Vec2(1, 0)));
    EXPECT_FALSE(TheScene()->GetEntityAt(Vec2(1.001f, 0)));
}

TEST_F(SceneTest, PicksAnEntityWithItsGroups)
{
    const auto a = Add("Scene.addBox { entityID = 1 }");
    const auto b = Add("Scene.addBox { entityID = 2; pos = [5.0, 0.0] }");
    const auto c = Add("Scene.addBox { entityID = 3; pos = [9.0, 0.0] }");
    Run("Scene.addGroup { name = \"pair\"; entityIDs = [1, 2] }");
    Run("Scene.addGroup { name = \"selected\"; entityIDs = [1, 3] }");
    Run("Scene.addGroup { name = \"tracked\"; entityIDs = [1, 3] }");
    const GroupPtr picked = TheScene()->GetSelectionAt(Vec2(0, 0));
    EXPECT_TRUE(picked->Contains(a));
    EXPECT_TRUE(picked->Contains(b));
    // Neither the selection nor what the camera follows is a group to be picked.
    EXPECT_FALSE(picked->Contains(c));
    EXPECT_TRUE(TheScene()->GetSelectionAt(Vec2(-5, 0))->IsEmpty());
}

TEST_F(SceneTest, PicksASingleEntityWithAltHeld)
{
    const auto a = Add("Scene.addBox { entityID = 1 }");
    Add("Scene.addBox { entityID = 2; pos = [5.0, 0.0] }");
    Run("Scene.addGroup { name = \"pair\"; entityIDs = [1, 2] }");
    for (int key : {SDLK_LALT, SDLK_RALT})
    {
        const auto pick = [] { return TheScene()->GetSelectionAt(Vec2(0, 0))->GetSorted(); };
        {
            const test::HeldKeys alt{key};
            EXPECT_EQ(std::vector<EntityPtr>{a}, pick());
        }
        EXPECT_EQ(2u, pick().size());
    }
}

TEST_F(SceneTest, GivesGeometriesFromTopToBottomAndTheWorldLast)
{
    const physics::GeomPtr world = Sim()->GetWorldGeom();
    EXPECT_EQ(std::vector<physics::GeomPtr>{world}, TheScene()->GetGeomsAt(Vec2(0, 0)));
    EXPECT_EQ(world, TheScene()->GetGeomAt(Vec2(0, 0)));
    const auto below = Add("Scene.addBox { size = [2.0, 2.0] }");
    const auto above = Add("Scene.addCircle { radius = 0.5 }");
    EXPECT_EQ((std::vector<physics::GeomPtr>{above->GetGeom(), below->GetGeom(), world}),
              TheScene()->GetGeomsAt(Vec2(0, 0)));
    EXPECT_EQ(above->GetGeom(), TheScene()->GetGeomAt(Vec2(0, 0)));
    EXPECT_EQ(below->GetGeom(), TheScene()->GetGeomAt(Vec2(0.9f, 0.9f)));
    EXPECT_EQ(world, TheScene()->GetGeomAt(Vec2(5, 5)));
}

TEST_F(SceneTest, FindsTheGeometryUnderTheMouse)
{
    const Vec2 mouse = App::GetInstancePtr()->GetMousePos();
    EXPECT_EQ(physics::GeomPtr(Sim()->GetWorldGeom()), TheScene()->GetGeomAtMousePos());
    const auto box = Add("Scene.addBox { }");
    TheScene()->Transform(QUIB_NEW Group(box), math::Mat2D::Translation(mouse));
    EXPECT_EQ(box->GetGeom(), TheScene()->GetGeomAtMousePos());
}

TEST_F(SceneTest, GivesTheGeometriesOfAllThatLives)
{
    const auto alive = Add("Scene.addBox { }");
    const auto dead = Add("Scene.addBox { pos = [5.0, 0.0] }");
    Sim()->RemoveBody(dead->GetBody());
    const physics::GeomSet geoms = TheScene()->GetAllGeoms();
    EXPECT_EQ(2u, geoms.size());
    EXPECT_EQ(1u, geoms.count(alive->GetGeom()));
    EXPECT_EQ(1u, geoms.count(Sim()->GetWorldGeom()));
}

TEST_F(SceneTest, KnowsWhatIsItsOwn)
{
    const auto box = Add("Scene.addBox { }");
    EXPECT_TRUE(TheScene()->HasEntity(box));
    TheScene()->RemoveEntity(box);
    EXPECT_FALSE(TheScene()->HasEntity(box));
    TheScene()->AddEntity(box);
    EXPECT_TRUE(TheScene()->HasEntity(box));
    TheScene()->ClearScene();
    EXPECT_FALSE(TheScene()->HasEntity(box));
}

TEST_F(SceneTest, IsWetWhereAParticleIsNearerThanItsReach)
{
    const float reach = 2.2f * physics::SPH::GetInstancePtr()->m_radius;
    EXPECT_FALSE(TheScene()->IsWaterAt(Vec2(0, 0)));
    Run("Scene.addWater { vecs = [[0.0, 0.0], [9.0, 9.0]] }");
    EXPECT_TRUE(TheScene()->IsWaterAt(Vec2(reach * 0.999f, 0)));
    EXPECT_FALSE(TheScene()->IsWaterAt(Vec2(reach, 0)));
    EXPECT_TRUE(TheScene()->IsWaterAt(Vec2(9, 9)));
    Run("Scene.EraseWater");
    EXPECT_FALSE(TheScene()->IsWaterAt(Vec2(9, 9)));
    EXPECT_TRUE(Sim()->GetParticles().empty());
}

TEST_F(SceneTest, IgnoresANullEntity)
{
    TheScene()->AddEntity(nullptr);
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    EXPECT_FALSE(TheScene()->HasEntity(nullptr));
}

TEST_F(SceneTest, TakesARemovedEntityOutOfGroupsAndWorld)
{
    const auto a = Add("Scene.addBox { entityID = 1 }");
    const auto b = Add("Scene.addBox { entityID = 2; pos = [5.0, 0.0] }");
    Run("Scene.addGroup { name = \"pair\"; entityIDs = [1, 2] }");
    Run("Scene.addGroup { name = \"selected\"; entityIDs = [1] }");
    TheScene()->RemoveEntity(a);
    EXPECT_FALSE(TheScene()->HasEntity(a));
    EXPECT_TRUE(TheScene()->HasEntity(b));
    EXPECT_FALSE(TheScene()->GetGroupByName("pair")->Contains(a));
    EXPECT_FALSE(TheScene()->IsSelected(a));
    EXPECT_FALSE(a->IsAlive());
    EXPECT_EQ(1u, BodyCount());
}

TEST_F(SceneTest, AsksForNoMemoryInAFrame)
{
    for (int i = 0; i < 100; ++i)
        Add("Scene.addBox { pos = [" + util::ToString(i) + ".0, 0.0]; entityID = " +
            util::ToString(i + 1) + "; geomID = " + util::ToString(i + 1) + " }");
    Run("Scene.addPlane { }; Scene.addCircle { pos = [0.0, 9.0] }");
    Run("Scene.addHinge { size = 0.2; geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = 0; "
        "geom1pos = [0.0, 0.0] }");
    Run("Scene.addSpring { size = 0.2; geom0 = 2; geom0pos = [0.0, 0.0]; geom1 = 0; "
        "geom1pos = [5.0, 5.0] }");
    Run("Scene.addFixjoint { size = 0.2; geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = 4; "
        "geom1pos = [0.0, 0.0] }");
    Run("Scene.addGroup { name = \"g\"; entityIDs = [1, 2, 3] }");
    Run("Scene.addGroup { name = \"tracked\"; entityIDs = [1, 2, 3] }");
    ASSERT_EQ(105u, TheScene()->GetEntities().size());
    const auto frame = []
    {
        TheScene()->Update(0.01f);
        TheCamera()->Update(0.01f);
    };
    frame();
    const size_t before = test::g_allocations;
    for (int i = 0; i < 10; ++i)
        frame();
    EXPECT_EQ(before, test::g_allocations);
    EXPECT_EQ(105u, TheScene()->GetEntities().size());
}

TEST_F(SceneTest, RemovesManyAsItRemovesThemOneByOne)
{
    std::vector<EntityPtr> boxes;
    for (int i = 0; i < 6; ++i)
        boxes.push_back(Add("Scene.addBox { pos = [" + util::ToString(i) + ".0, 0.0] }"));
    const auto bodyOf = [](const EntityPtr& entity) { return entity->AsGeomEntity()->GetBody(); };
    // The first four are one body.
    for (int i = 1; i < 4; ++i)
        bodyOf(boxes[0])->AddGeom(boxes[i]->AsGeomEntity()->GetGeom());
    const physics::BodyPtr body = bodyOf(boxes[0]);
    for (const EntityPtr& box : boxes)
        TheScene()->GetOrCreateGroupByName("g")->Add(box);
    TheScene()->FlushBodies();
    TheScene()->RemoveEntities({boxes[4], boxes[0], boxes[2]});
    EXPECT_EQ((std::vector<EntityPtr>{boxes[1], boxes[3], boxes[5]}), TheScene()->GetEntities());
    EXPECT_EQ(3u, TheScene()->GetGroupByName("g")->GetEntities().size());
    EXPECT_EQ(body, bodyOf(boxes[1]));
    EXPECT_EQ(2u, body->GetGeoms().size());
    EXPECT_EQ(Vec2(2, 0), body->GetPos());
    EXPECT_EQ(2u, BodyCount());
    EXPECT_FALSE(boxes[0]->IsAlive());
    EXPECT_FALSE(TheScene()->HasEntity(boxes[0]));
    TheScene()->RemoveEntities(TheScene()->GetEntities());
    EXPECT_EQ(0u, BodyCount());
    EXPECT_TRUE(TheScene()->GetEntities().empty());
}

TEST_F(SceneTest, KeepsASharedBodyForTheOtherGeometry)
{
    const auto a = Add("Scene.addBox { }");
    const auto b = Add("Scene.addBox { pos = [1.0, 0.0] }");
    a->GetBody()->AddGeom(b->GetGeom());
    TheScene()->FlushBodies();
    EXPECT_EQ(1u, BodyCount());
    TheScene()->RemoveEntity(a);
    EXPECT_EQ(1u, BodyCount());
    EXPECT_TRUE(b->IsAlive());
    EXPECT_EQ(1u, b->GetBody()->GetGeoms().size());
}

TEST_F(SceneTest, RemovesBodiesThatNoEntityHolds)
{
    Add("Scene.addBox { }");
    physics::BodyPtr stray = QUIB_NEW physics::Body;
    Sim()->AddBody(stray);
    EXPECT_EQ(2u, BodyCount());
    TheScene()->FlushBodies();
    EXPECT_EQ(1u, BodyCount());
    EXPECT_FALSE(Sim()->HasBody(stray));
    EXPECT_TRUE(Sim()->HasBody(Sim()->GetWorldBody()));
}

TEST_F(SceneTest, RemovesWhatFellOutOfTheWorld)
{
    const auto falling = Add("Scene.addCircle { pos = [0.0, -2000.0] }");
    Add("Scene.addCircle { }");
    Sim()->FlushBadBodies();
    TheScene()->Update(0.01f);
    EXPECT_FALSE(TheScene()->HasEntity(falling));
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
}

// Fails in its update, as long as it is told to.
class FailingEntity final : public test::PlainEntity
{
public:
    void Update(float) override
    {
        ++updates;
        if (fails)
            QUIB_THROW(BadDataException("no more"));
    }
    void AddToSimulation() override
    {
        if (failsToAdd)
            QUIB_THROW(BadDataException("not here"));
    }
    void RemoveFromSimulation() override
    {
        if (failsToGo)
            QUIB_THROW(BadDataException("not gone"));
    }

    bool fails = false, failsToAdd = false, failsToGo = false;
    int updates = 0;
};

TEST_F(SceneTest, LosesOnlyTheEntityWhoseUpdateFails)
{
    util::SharedPtr<FailingEntity> bad = QUIB_NEW FailingEntity, good = QUIB_NEW FailingEntity;
    bad->fails = true;
    TheScene()->AddEntity(bad);
    TheScene()->AddEntity(good);
    test::LogCapture log(logging::LogWarning);
    TheScene()->Update(0.01f);
    EXPECT_TRUE(log.Has("Entity update error:no more")) << log.Text();
    EXPECT_FALSE(TheScene()->HasEntity(bad));
    EXPECT_TRUE(TheScene()->HasEntity(good));
    EXPECT_EQ(1, good->updates);
}

TEST_F(SceneTest, PassesOnWhatFailsOutsideOfUpdates)
{
    const auto run = [](const char* name, auto update)
    {
        SCOPED_TRACE(name);
        const util::SharedPtr<FailingEntity> bad = QUIB_NEW FailingEntity;
        TheScene()->AddEntity(bad);
        bad->fails = bad->failsToGo = true;
        test::LogCapture log(logging::LogInfo);
        EXPECT_THROW(update(), BadDataException);
        EXPECT_TRUE(log.Has("Exception passed on at ")) << log.Text();
        EXPECT_TRUE(log.Has(name)) << log.Text();
    };
    run("Scene::Update", [] { TheScene()->Update(0.01f); });
    run("App::Update", [] { App::GetInstancePtr()->Update(0.01f); });
}

TEST_F(SceneTest, RemovesTheOthersWhenOneFailsToGo)
{
    const util::SharedPtr<FailingEntity> bad = QUIB_NEW FailingEntity;
    TheScene()->AddEntity(bad);
    bad->failsToGo = true;
    const auto box = Add("Scene.addBox { }");
    EXPECT_THROW(TheScene()->RemoveEntities({bad, box}), BadDataException);
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    EXPECT_EQ(0u, BodyCount());
}

TEST_F(SceneTest, KeepsNothingOfAnEntityThatCannotEnterTheWorld)
{
    util::SharedPtr<FailingEntity> bad = QUIB_NEW FailingEntity;
    bad->failsToAdd = true;
    TheScene()->GetOrCreateGroupByName("g")->Add(bad);
    EXPECT_THROW(TheScene()->AddEntity(bad), BadDataException);
    EXPECT_FALSE(TheScene()->HasEntity(bad));
    EXPECT_TRUE(TheScene()->GetGroupByName("g")->IsEmpty());
}

TEST_F(SceneTest, LogsAKindOfEntityThatNoFileCanHold)
{
    TheScene()->AddEntity(QUIB_NEW FailingEntity);
    test::LogCapture log(logging::LogWarning);
    const util::String text = Serializer::GetInstancePtr()->SerializeScene();
    EXPECT_TRUE(log.Has("Bad Entity"));
    EXPECT_EQ(util::String::npos, text.find("entityID "));
}

TEST_F(SceneTest, DropsEmptyGroupsButNotTheSelection)
{
    const auto box = Add("Scene.addBox { entityID = 1 }");
    Run("Scene.addGroup { name = \"g\"; entityIDs = [1] }");
    TheScene()->RemoveEntity(box);
    EXPECT_TRUE(TheScene()->GetGroupByName("g"));
    TheScene()->Update(0.01f);
    EXPECT_FALSE(TheScene()->GetGroupByName("g"));
    EXPECT_EQ(TheScene()->GetSelection(), TheScene()->GetGroupByName(SelectedName));
    TheScene()->RemoveGroup(TheScene()->GetSelection());
    EXPECT_TRUE(TheScene()->GetGroupByName("selected"));
}

TEST_F(SceneTest, DissolvesAGroupNamedSelectedIntoTheSelection)
{
    const GroupPtr selection = TheScene()->GetSelection();
    const auto box = Add("Scene.addBox { entityID = 1 }");
    Run("Scene.addGroup { name = \"selected\"; entityIDs = [1] }");
    EXPECT_EQ(selection, TheScene()->GetSelection());
    EXPECT_TRUE(TheScene()->IsSelected(box));
    EXPECT_EQ(1u, TheScene()->GetGroups().size());
}

TEST_F(SceneTest, GivesGroupsByNameAndThenByTheirLowestId)
{
    for (int i = 1; i <= 3; ++i)
        Add("Scene.addBox { entityID = " + util::ToString(i) + "; pos = [0.0, " +
            util::ToString(i * 10) + ".0] }");
    Run("Scene.addGroup { name = \"z\"; entityIDs = [1] }");
    Run("Scene.addGroup { name = \"a\"; entityIDs = [3] }");
    Run("Scene.addGroup { name = \"a\"; entityIDs = [2, 3] }");
    const std::vector<GroupPtr> groups = TheScene()->GetGroups();
    ASSERT_EQ(4u, groups.size());
    EXPECT_EQ("a", groups[0]->GetName());
    EXPECT_EQ(2u, groups[0]->GetEntities().size());
    EXPECT_EQ(1u, groups[1]->GetEntities().size());
    EXPECT_EQ("selected", groups[2]->GetName());
    EXPECT_EQ("z", groups[3]->GetName());
}

TEST_F(SceneTest, GivesOfGroupsOfOneNameTheSameInEveryRun)
{
    // In the order of their addresses it would be this one once in thirty times.
    for (int i = 1; i <= 30; ++i)
        Add("Scene.addBox { entityID = " + util::ToString(i) + "; pos = [0.0, " +
            util::ToString(i * 10) + ".0] }");
    for (int i = 30; i >= 1; --i)
        Run("Scene.addGroup { name = \"a\"; entityIDs = [" + util::ToString(i) + "] }");
    EXPECT_EQ(TheScene()->GetGroups()[0], TheScene()->GetGroupByName("a"));
    EXPECT_TRUE(TheScene()->GetGroupByName("a")->Contains(TheScene()->GetEntities()[0]));
    // Of groups of the same members too: the oldest.
    std::vector<GroupPtr> groups;
    for (int i = 0; i < 30; ++i)
    {
        groups.push_back(QUIB_NEW Group("b"));
        groups.back()->Add(TheScene()->GetEntities()[0]);
    }
    for (const GroupPtr& group : groups)
        TheScene()->AddGroup(group);
    EXPECT_EQ(groups[0], TheScene()->GetGroupByName("b"));
    const std::vector<GroupPtr> all = TheScene()->GetGroups();
    EXPECT_TRUE(std::equal(groups.begin(), groups.end(), all.begin() + 30));
}

TEST_F(SceneTest, FindsLargeGroupsOfOneNameInNoTime)
{
    Entities members;
    for (int i = 0; i < 2000; ++i)
        members.push_back(QUIB_NEW test::PlainEntity);
    for (int i = 0; i < 100; ++i)
    {
        const GroupPtr group = QUIB_NEW Group("a");
        group->AddAll(GroupOf(members));
        TheScene()->AddGroup(group);
    }
    const double start = Seconds();
    for (int i = 0; i < 1500; ++i)
        ASSERT_TRUE(TheScene()->GetGroupByName("a"));
    EXPECT_LT(Seconds() - start, 0.5);
}

TEST_F(SceneTest, SortsByDepthAndKeepsTheOrderOfEqualDepths)
{
    std::vector<EntityPtr> boxes;
    for (float depth : {2.0f, 1.0f, 2.0f, 1.0f})
    {
        boxes.push_back(Add("Scene.addBox { }"));
        boxes.back()->SetZDepth(depth);
    }
    TheScene()->SortByDepth();
    EXPECT_EQ((std::vector<EntityPtr>{boxes[1], boxes[3], boxes[0], boxes[2]}),
              TheScene()->GetEntities());
    TheScene()->DepthTagEntities();
    EXPECT_EQ(0, boxes[1]->GetZDepth());
    EXPECT_EQ(3, boxes[2]->GetZDepth());
}

TEST_F(SceneTest, ZoomsToWhatIsFinite)
{
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    Add("Scene.addPlane { }");
    Add("Scene.addBox { pos = [3.0, 2.0]; size = [10.0, 1.0] }");
    TheScene()->ZoomToScene();
    EXPECT_NEAR(3, TheCamera()->GetPan().x, 1e-4f);
    EXPECT_NEAR(2, TheCamera()->GetPan().y, 1e-4f);
    EXPECT_NEAR(screen.x / 11, TheCamera()->GetZoom(), 1e-2f);
}

TEST_F(SceneTest, ResetsTheViewWhenThereIsNothingToZoomTo)
{
    TheCamera()->SetPan(Vec2(4, 4));
    TheScene()->ZoomToScene();
    EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());
    TheCamera()->SetPan(Vec2(4, 4));
    Add("Scene.addPlane { }");
    TheScene()->ZoomToScene();
    EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan());
    EXPECT_EQ(150, TheCamera()->GetZoom());
}

TEST_F(SceneTest, ZoomsToSpecksAndWorldsWithinItsRange)
{
    const auto speck = Add("Scene.addCircle { radius = 0.00001; pos = [7.0, 0.0] }");
    ASSERT_TRUE(speck);
    TheScene()->ZoomToScene();
    EXPECT_EQ(3000, TheCamera()->GetZoom());
    EXPECT_NEAR(7, TheCamera()->GetPan().x, 1e-3f);
    Add("Scene.addBox { size = [1.0, 1.0]; pos = [1.0e30, 1.0e30] }");
    TheScene()->ZoomToScene();
    EXPECT_EQ(1.5f, TheCamera()->GetZoom());
}

TEST_F(SceneTest, ResetsTheViewWhenThereIsNoPlaceToZoomTo)
{
    // Finite boxes whose middle, or whose place on the screen, is not.
    for (const char* pos : {"[3.0e38, 3.0e38]", "[-1.6e38, 0.0]"})
    {
        TheCamera()->SetPan(Vec2(4, 4));
        Add(util::String("Scene.addBox { pos = ") + pos + " }");
        ASSERT_TRUE(TheScene()->GetEntities()[0]->GetAABB().IsFinite()) << pos;
        TheScene()->ZoomToScene();
        EXPECT_EQ(Vec2(0, 0), TheCamera()->GetPan()) << pos;
        EXPECT_EQ(150, TheCamera()->GetZoom()) << pos;
        Reset();
    }
}

TEST_F(SceneTest, CanBeClearedForATime)
{
    Add("Scene.addBox { }");
    Run("Scene.title = \"Door\"");
    TheScene()->ClearSceneUndoable();
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    ASSERT_TRUE(Undoer::GetInstancePtr()->GetNextUndo());
    EXPECT_STREQ("UndoClear", Undoer::GetInstancePtr()->GetNextUndo()->GetNameKey());
    Undoer::GetInstancePtr()->Undo();
    EXPECT_EQ(1u, TheScene()->GetEntities().size());
    Undoer::GetInstancePtr()->Redo();
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    ForgetUndo();
}

TEST_F(SceneTest, LeavesNothingWhenCleared)
{
    Add("Scene.addBox { entityID = 1 }");
    Run("Scene.addGroup { name = \"selected\"; entityIDs = [1] }");
    Run("Scene.addGroup { name = \"g\"; entityIDs = [1] }");
    Run("Scene.title = \"t\"; Scene.author = \"a\"; Scene.description = \"d\"");
    Run("Scene.Camera.zoom = 20.0");
    Run("Scene.Clear");
    EXPECT_TRUE(TheScene()->GetEntities().empty());
    EXPECT_EQ(1u, TheScene()->GetGroups().size());
    EXPECT_TRUE(TheScene()->GetSelection()->IsEmpty());
    EXPECT_EQ("", TheScene()->GetTitle());
    EXPECT_EQ("", TheScene()->GetAuthor());
    EXPECT_EQ("", TheScene()->GetDescription());
    EXPECT_EQ(150, TheCamera()->GetZoom());
    EXPECT_EQ(0u, BodyCount());
}

TEST_F(SceneTest, LeaksNothingOfWhatIsClearedOrErased)
{
    util::PointeeHandle::Flush();
    const unsigned long before = util::Pointee::GetInstanceCount();
    const auto fill = []
    {
        Run("Scene.addBox { entityID = 1; geomID = 1 }; Scene.addBox { entityID = 1; geomID = 1 }; "
            "Scene.addBox { entityID = 2 }; Scene.addBox { }");
        EXPECT_EQ(4u, TheScene()->GetEntities().size());
    };
    fill();
    TheScene()->ClearScene();
    EXPECT_EQ(before, util::Pointee::GetInstanceCount());
    fill();
    while (!TheScene()->GetEntities().empty())
        TheScene()->RemoveEntity(TheScene()->GetEntities()[0]);
    EXPECT_EQ(before, util::Pointee::GetInstanceCount());
}

TEST_F(SceneTest, ShowsItsTitleInTheWindow)
{
    char* title = nullptr;
    Run("Scene.title = \"Door\"");
    SDL_WM_GetCaption(&title, nullptr);
    EXPECT_STREQ("Quib beta 4.0 - Door", title);
    Run("Scene.title = \"\"");
    SDL_WM_GetCaption(&title, nullptr);
    EXPECT_STREQ("Quib beta 4.0", title);
}

TEST_F(SceneTest, IsTitledByTheShortNameOfItsFile)
{
    test::LogCapture log(logging::LogWarning);
    TheScene()->SetTitle("Door");
    EXPECT_EQ("Door", TheScene()->GetTitle());
    EXPECT_FALSE(log.Has("Wuut?")) << log.Text();
}

// Deliberate, word and all.
TEST_F(SceneTest, WondersAboutTitlesThatAreNoShortNames)
{
    for (const char* name : {"Door.qib", "Door.QIB"})
    {
        test::LogCapture log(logging::LogWarning);
        TheScene()->SetTitle(name);
        EXPECT_EQ("Door", TheScene()->GetTitle());
        EXPECT_TRUE(log.Has("Wuut?")) << log.Text();
    }
    test::LogCapture log(logging::LogWarning);
    TheScene()->SetTitle(util::FileSystem::GetInstancePtr()->SceneDir() + "Door.qib");
    EXPECT_EQ("Door", TheScene()->GetTitle());
    EXPECT_TRUE(log.Has("Wuut?")) << log.Text();
}

TEST_F(SceneTest, ZoomsToWaterTooButNotToStrayDrops)
{
    Add("Scene.addBox { size = [10.0, 10.0] }");
    // Twice the area at most: the water is part of the view.
    Run("Scene.addWater { vecs = [[15.0, 0.0]] }");
    TheScene()->ZoomToScene();
    EXPECT_NEAR(5, TheCamera()->GetPan().x, 1e-4f);
    Run("Scene.addWater { vecs = [[15.1, 0.0]] }");
    TheScene()->ZoomToScene();
    EXPECT_NEAR(0, TheCamera()->GetPan().x, 1e-4f);
    Run("Scene.EraseWater; Scene.addWater { vecs = [[1.0, 400.0]] }");
    TheScene()->ZoomToScene();
    EXPECT_NEAR(0, TheCamera()->GetPan().y, 1e-4f);
}

TEST_F(SceneTest, ZoomsToWaterAlone)
{
    Run("Scene.addWater { vecs = [[10.0, 4.0], [14.0, 6.0]] }");
    TheScene()->ZoomToScene();
    EXPECT_NEAR(12, TheCamera()->GetPan().x, 1e-4f);
    EXPECT_NEAR(5, TheCamera()->GetPan().y, 1e-4f);
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    EXPECT_NEAR(std::min(screen.x / 4.4f, screen.y / 2.2f), TheCamera()->GetZoom(), 1e-2f);
    // One that lies nowhere leaves the view to the entities.
    Sim()->AddParticle(QUIB_NEW physics::Particle(Vec2(INFINITY, 0), Vec2()));
    TheScene()->ZoomToScene();
    EXPECT_EQ(150, TheCamera()->GetZoom());
}
}
}
