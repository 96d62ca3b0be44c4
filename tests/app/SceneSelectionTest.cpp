#include "AppFixture.h"
#include "HeldKeys.h"

#include "app/Chain.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"

using math::Vec2;

namespace test
{
extern size_t g_allocations; // AllocationCounter.h, which one source of the program includes
}

namespace app
{
namespace
{
class SceneSelectionTest : public AppFixture
{
protected:
    /// Circles of radius 1 at x = 0, 3, 6, ..., in the scene.
    static Entities AddCircles(int count)
    {
        Entities circles;
        for (int i = 0; i < count; ++i)
            circles.push_back(
                Add("Scene.addCircle { pos = [" + util::ToString(3 * i) + ".0, 0.0] }"));
        return circles;
    }

    static Entities Selected() { return TheScene()->GetSelection()->GetSorted(); }

    static physics::PolygonPtr Lasso(float x0, float y0, float x1, float y1)
    {
        return physics::Polygon::CreateBox(Vec2(x0, y0), Vec2(x1, y1), 1);
    }
};

TEST_F(SceneSelectionTest, TakesWhatIsPickedAsCtrlAndShiftSay)
{
    const Entities e = AddCircles(4);
    const struct
    {
        Entities before;
        bool ctrl, shift;
        Entities after;
    } cases[] = {
        // Picked are 1 and 2.
        {{}, false, false, {e[1], e[2]}},
        {{}, true, false, {e[1], e[2]}},
        {{}, false, true, {e[1], e[2]}},
        {{}, true, true, {e[1], e[2]}},
        {{e[0], e[1]}, false, false, {e[1], e[2]}},
        {{e[0], e[1]}, false, true, {e[0]}},
        {{e[0], e[1]}, true, false, {e[0], e[1], e[2]}},
        {{e[0], e[1]}, true, true, {e[0], e[2]}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << c.before.size() << " selected, ctrl " << c.ctrl << ", shift " << c.shift);
        TheScene()->SetSelection(GroupOf(c.before));
        const test::HeldKeys ctrl(c.ctrl ? std::initializer_list<int>{SDLK_LCTRL}
                                         : std::initializer_list<int>{});
        const test::HeldKeys shift(c.shift ? std::initializer_list<int>{SDLK_RSHIFT}
                                           : std::initializer_list<int>{});
        TheScene()->OnNewSelection(GroupOf({e[1], e[2]}));
        EXPECT_EQ(c.after, Selected());
    }
}

TEST_F(SceneSelectionTest, SurvivesBeingSelected)
{
    const Entities e = AddCircles(2);
    const GroupPtr selection = TheScene()->GetSelection();
    TheScene()->SetSelection(GroupOf(e));
    TheScene()->SetSelection(selection);
    EXPECT_EQ(e, Selected());
    TheScene()->OnNewSelection(selection);
    EXPECT_EQ(e, Selected());
    TheScene()->AddGroup(selection);
    EXPECT_EQ(e, Selected());
    for (int key : {SDLK_LCTRL, SDLK_LSHIFT})
    {
        const test::HeldKeys held{key};
        TheScene()->OnNewSelection(selection);
        EXPECT_EQ(e, Selected());
    }
    EXPECT_EQ(selection, TheScene()->GetSelection());
}

TEST_F(SceneSelectionTest, ClicksOnNothingSelectNothing)
{
    const Entities e = AddCircles(1);
    EXPECT_TRUE(TheScene()->SelectAt(Vec2(0, 0)));
    EXPECT_EQ(e, Selected());
    EXPECT_FALSE(TheScene()->SelectAt(Vec2(0, 5)));
    EXPECT_TRUE(TheScene()->GetSelection()->IsEmpty());
}

TEST_F(SceneSelectionTest, ClicksTurnTheSelectionOverWithCtrlAndShift)
{
    const Entities e = AddCircles(2);
    TheScene()->SelectAt(Vec2(0, 0));
    const test::HeldKeys both{SDLK_LCTRL, SDLK_LSHIFT};
    EXPECT_TRUE(TheScene()->SelectAt(Vec2(3, 0)));
    EXPECT_EQ(e, Selected());
    EXPECT_TRUE(TheScene()->SelectAt(Vec2(0, 0)));
    EXPECT_EQ(Entities{e[1]}, Selected());
    EXPECT_FALSE(TheScene()->SelectAt(Vec2(3, 0)));
}

TEST_F(SceneSelectionTest, PicksALinkWithItsChain)
{
    const Entities e = AddCircles(6);
    const ChainPtr chain = QUIB_NEW Chain;
    for (const EntityPtr& link : e)
        chain->AddEntity(link);
    EXPECT_EQ((Entities{e[1], e[2], e[3], e[4]}),
              TheScene()->GetSelectionAt(Vec2(6, 0))->GetSorted());
    EXPECT_EQ(Entities{e[0]}, TheScene()->GetSelectionAt(Vec2(0, 0))->GetSorted());
    const test::HeldKeys alt{SDLK_LALT};
    EXPECT_EQ(Entities{e[2]}, TheScene()->GetSelectionAt(Vec2(6, 0))->GetSorted());
}

TEST_F(SceneSelectionTest, PicksNoEndOfAChainThatWasErased)
{
    const Entities e = AddCircles(5);
    const ChainPtr chain = QUIB_NEW Chain;
    for (const EntityPtr& link : e)
        chain->AddEntity(link);
    TheScene()->RemoveEntity(e[0]); // and kept here, as an undo would
    EXPECT_TRUE(TheScene()->SelectAt(Vec2(3, 0)));
    EXPECT_EQ(Entities{e[1]}, Selected());
}

TEST_F(SceneSelectionTest, PicksGroupsOfTheEntityOnlyAndNotOfItsChain)
{
    const Entities e = AddCircles(7);
    const ChainPtr chain = QUIB_NEW Chain;
    for (int i = 0; i < 5; ++i)
        chain->AddEntity(e[i]);
    TheScene()->GetOrCreateGroupByName("a")->AddAll(GroupOf({e[2], e[5]}));
    TheScene()->GetOrCreateGroupByName("b")->AddAll(GroupOf({e[3], e[6]}));
    EXPECT_EQ((Entities{e[1], e[2], e[3], e[5]}),
              TheScene()->GetSelectionAt(Vec2(6, 0))->GetSorted());
}

TEST_F(SceneSelectionTest, FillsAListWithTheSameWithoutAllocating)
{
    const Entities e = AddCircles(7);
    const ChainPtr chain = QUIB_NEW Chain;
    for (int i = 0; i < 5; ++i)
        chain->AddEntity(e[i]);
    TheScene()->GetOrCreateGroupByName("a")->AddAll(GroupOf({e[2], e[5]}));
    std::vector<Entity*> picked;
    TheScene()->GetSelectionAt(Vec2(6, 0), picked);
    const GroupPtr group = QUIB_NEW Group;
    for (Entity* entity : picked)
        group->Add(entity);
    EXPECT_EQ((Entities{e[1], e[2], e[3], e[5]}), group->GetSorted());
    const size_t allocations = test::g_allocations;
    picked.clear();
    TheScene()->GetSelectionAt(Vec2(6, 0), picked);
    TheScene()->GetSelectionAt(Vec2(1000, 0), picked);
    EXPECT_EQ(allocations, test::g_allocations);
    EXPECT_EQ(5u, picked.size()) << "the link itself once more, by its group";
}

TEST_F(SceneSelectionTest, LassosWhatLiesInsideInWhole)
{
    const Entities e = AddCircles(3);
    Add("Scene.addPlane { }");
    EXPECT_TRUE(TheScene()->IsSelection(*Lasso(-2, -2, 5, 2)));
    EXPECT_EQ((Entities{e[0], e[1]}), Selected());
    // Nothing caught leaves the selection alone.
    EXPECT_FALSE(TheScene()->IsSelection(*Lasso(20, 20, 30, 30)));
    EXPECT_EQ((Entities{e[0], e[1]}), Selected());
    const test::HeldKeys ctrl{SDLK_RCTRL};
    EXPECT_TRUE(TheScene()->IsSelection(*Lasso(4.5f, -2, 8, 2)));
    EXPECT_EQ(e, Selected());
}

TEST_F(SceneSelectionTest, SelectsOfTheGivenOnlyWhatIsChainedAndInTheScene)
{
    const Entities e = AddCircles(4);
    const ChainPtr chain = QUIB_NEW Chain;
    for (int i = 0; i < 3; ++i)
        chain->AddEntity(e[i]);
    TheScene()->RemoveEntity(e[1]);
    TheScene()->SetSelection(GroupOf({e[3]}));
    TheScene()->SelectChain(GroupOf(e)->GetEntities());
    EXPECT_EQ((Entities{e[0], e[2]}), Selected());
    TheScene()->SelectChain(TheScene()->GetSelection()->GetEntities());
    EXPECT_EQ((Entities{e[0], e[2]}), Selected());
}

TEST_F(SceneSelectionTest, HoldsSelectedBodiesStill)
{
    const Entities e = AddCircles(2);
    const auto bodyOf = [](const EntityPtr& entity) { return entity->AsGeomEntity()->GetBody(); };
    for (const EntityPtr& entity : e)
    {
        bodyOf(entity)->SetVel(Vec2(1, 2));
        bodyOf(entity)->SetAngVel(3);
    }
    TheScene()->SetSelection(GroupOf({e[0]}));
    TheScene()->SuspendSelected(true);
    EXPECT_TRUE(bodyOf(e[0])->IsSuspended());
    EXPECT_EQ(Vec2(0, 0), bodyOf(e[0])->GetVel());
    EXPECT_EQ(0, bodyOf(e[0])->GetAngVel());
    EXPECT_FALSE(bodyOf(e[1])->IsSuspended());
    EXPECT_EQ(Vec2(1, 2), bodyOf(e[1])->GetVel());
    EXPECT_EQ(3, bodyOf(e[1])->GetAngVel());
}

// Deliberate.
TEST_F(SceneSelectionTest, ReleasesEveryBodyWhetherSelectedOrNot)
{
    const Entities e = AddCircles(3);
    const auto bodyOf = [](const EntityPtr& entity) { return entity->AsGeomEntity()->GetBody(); };
    for (const EntityPtr& entity : e)
        bodyOf(entity)->SetSuspended(true);
    TheScene()->SetSelection(GroupOf({e[0]}));
    TheScene()->SuspendSelected(false);
    for (const EntityPtr& entity : e)
        EXPECT_FALSE(bodyOf(entity)->IsSuspended());
}

TEST_F(SceneSelectionTest, MovesGroupsToFrontAndBack)
{
    const Entities e = AddCircles(5);
    TheScene()->MoveToFront(GroupOf({e[3], e[1]}));
    EXPECT_EQ((Entities{e[0], e[2], e[4], e[1], e[3]}), TheScene()->GetEntities());
    TheScene()->MoveToBack(GroupOf({e[4], e[3]}));
    EXPECT_EQ((Entities{e[4], e[3], e[0], e[2], e[1]}), TheScene()->GetEntities());
}
}
}
