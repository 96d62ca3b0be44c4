#include "HeldKeys.h"
#include "JointFixture.h"

#include "app/entities/CircleEntity.h"

#include <cmath>

namespace app
{
namespace
{
class GroupTest : public JointFixture
{
protected:
    static EntityPtr Pin(const Vec2& pos) { return Join<HingeEntity>(pos, pos); }
    static EntityPtr Weld(const Vec2& pos) { return Join<FixJointEntity>(pos, pos); }

    static Vec2 Mouse() { return App::GetInstancePtr()->GetMousePos(); }
};

TEST_F(GroupTest, GivesItsIdsInAscendingOrder)
{
    GroupPtr group = QUIB_NEW Group;
    std::vector<unsigned long> ids;
    for (int i = 0; i < 40; ++i)
    {
        const auto entity = Add("Scene.addCircle { }");
        ids.push_back(entity->GetID());
    }
    for (size_t i = TheScene()->GetEntities().size(); i-- > 0;)
        group->Add(TheScene()->GetEntities()[i]);
    EXPECT_EQ(ids, group->GetEnityIDs());
}

TEST_F(GroupTest, HoldsAnEntityOnce)
{
    const auto circle = Add("Scene.addCircle { }");
    GroupPtr group = QUIB_NEW Group(circle);
    group->Add(circle);
    EXPECT_EQ(1u, group->GetEntities().size());
    group->Remove(circle);
    EXPECT_TRUE(group->IsEmpty());
}

TEST_F(GroupTest, KeepsItsMembersWhenSetToItself)
{
    GroupPtr group = QUIB_NEW Group(Add("Scene.addCircle { }"));
    group->Set(group);
    EXPECT_EQ(1u, group->GetEntities().size());
}

TEST_F(GroupTest, LeavesPlanesOutOfItsBox)
{
    GroupPtr group = QUIB_NEW Group(Add("Scene.addPlane { }"));
    EXPECT_FALSE(group->CalcFiniteAABB().IsFinite());
    group->Add(Add("Scene.addCircle { pos = [3.0, 4.0]; radius = 2.0 }"));
    EXPECT_EQ(math::Vec2(1, 2), group->CalcFiniteAABB().GetMin());
    EXPECT_EQ(math::Vec2(5, 6), group->CalcFiniteAABB().GetMax());
}

TEST_F(GroupTest, HasTheCenterOfItsOnlyGeometry)
{
    GroupPtr group = QUIB_NEW Group(Add("Scene.addPlane { pos = [3.0, 4.0]; angle = 1.0 }"));
    EXPECT_EQ(math::Vec2(3, 4), GetGroupCenter(group));
}

TEST_F(GroupTest, HasTheCenterOfItsBox)
{
    GroupPtr group = QUIB_NEW Group(Add("Scene.addCircle { pos = [1.0, 0.0]; radius = 1.0 }"));
    group->Add(Add("Scene.addCircle { pos = [6.0, 0.0]; radius = 2.0 }"));
    EXPECT_EQ(math::Vec2(4, 0), GetGroupCenter(group));
}

TEST_F(GroupTest, OfAJointHasTheCenterOfTheJointsBox)
{
    const EntityPtr pin = Pin(Vec2(3, 4));
    EXPECT_NEAR(3, GetGroupCenter(GroupOf({pin})).x, 1e-5f);
    EXPECT_NEAR(4, GetGroupCenter(GroupOf({pin})).y, 1e-5f);
}

TEST_F(GroupTest, HasNoCenterWithoutAFiniteBox)
{
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(nullptr).x));
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(QUIB_NEW Group).y));
    GroupPtr planes = QUIB_NEW Group(Add("Scene.addPlane { }"));
    planes->Add(Add("Scene.addPlane { }"));
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(planes).x));
}

// Deliberate: a name that is never mended.
TEST_F(GroupTest, KeepsTheSpellingOfGetEnityIDs)
{
    EXPECT_TRUE((std::is_same<std::vector<unsigned long>,
                              decltype(std::declval<const Group&>().GetEnityIDs())>::value));
}

TEST_F(GroupTest, GivesTheOneWithTheLowestIdFirst)
{
    EXPECT_FALSE((QUIB_NEW Group)->GetFirst());
    const GroupPtr group = QUIB_NEW Group;
    Entities all;
    for (int i = 0; i < 30; ++i)
        all.push_back(Add("Scene.addCircle { }"));
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(), group->GetLowestID());
    for (size_t i = all.size(); i-- > 0;)
    {
        group->Add(all[i]);
        EXPECT_EQ(all[i], group->GetFirst());
        EXPECT_EQ(all[i]->GetID(), group->GetLowestID());
    }
    EXPECT_EQ(all, group->GetSorted());
    for (const EntityPtr& entity : all)
    {
        EXPECT_EQ(entity->GetID(), group->GetLowestID());
        group->Remove(entity);
    }
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(), group->GetLowestID());
    EntityMap map;
    map[all[5]] = all[3];
    group->Set(GroupOf({all[5], all[9]}));
    EXPECT_EQ(all[5]->GetID(), group->GetLowestID());
    group->Update(map);
    EXPECT_EQ(all[3]->GetID(), group->GetLowestID());
    group->Clear();
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(), group->GetLowestID());
}

TEST_F(GroupTest, AddsAndRemovesSets)
{
    Entities e;
    for (int i = 0; i < 4; ++i)
        e.push_back(Add("Scene.addCircle { }"));
    const GroupPtr group = GroupOf({e[0], e[1]});
    group->AddAll(GroupOf({e[1], e[2]}));
    EXPECT_EQ((Entities{e[0], e[1], e[2]}), group->GetSorted());
    group->RemoveAll(GroupOf({e[1], e[3]}));
    EXPECT_EQ((Entities{e[0], e[2]}), group->GetSorted());
    group->Set(GroupOf({e[3]})->GetEntities());
    EXPECT_EQ(Entities{e[3]}, group->GetSorted());
    EXPECT_EQ(Entities{e[3]}, (QUIB_NEW Group(group->GetEntities()))->GetSorted());
    group->Clear();
    EXPECT_TRUE(group->IsEmpty());
}

TEST_F(GroupTest, MayBeItsOwnArgument)
{
    Entities e;
    for (int i = 0; i < 3; ++i)
        e.push_back(Add("Scene.addCircle { }"));
    const GroupPtr group = GroupOf(e);
    group->AddAll(group);
    group->AddAll(group->GetEntities());
    group->Set(group->GetEntities());
    EXPECT_EQ(e, group->GetSorted());
    for (int i = 0; i < 100; ++i) // it grows meanwhile
    {
        group->Add(*group->GetEntities().begin());
        group->Add(Add("Scene.addCircle { }"));
    }
    EXPECT_EQ(103u, group->GetEntities().size());
    while (!group->IsEmpty())
        group->Remove(*group->GetEntities().begin());
    const GroupPtr second = GroupOf(e), third = GroupOf(e);
    second->RemoveAll(second);
    EXPECT_TRUE(second->IsEmpty());
    third->RemoveAll(third->GetEntities());
    EXPECT_TRUE(third->IsEmpty());
}

TEST_F(GroupTest, AnswersForSets)
{
    const auto a = Add("Scene.addCircle { }"), b = Add("Scene.addBox { }");
    const GroupPtr group = GroupOf({a});
    EXPECT_TRUE(group->ContainsAny(GroupOf({a, b})->GetEntities()));
    EXPECT_FALSE(group->ContainsAny(GroupOf({b})->GetEntities()));
    EXPECT_FALSE(group->ContainsAny(EntitySet()));
    EXPECT_FALSE(group->ContainsAll(GroupOf({a, b})->GetEntities()));
    EXPECT_TRUE(group->ContainsAll(GroupOf({a})->GetEntities()));
    EXPECT_TRUE(group->ContainsAll(EntitySet()));
}

TEST_F(GroupTest, AnswersForKinds)
{
    const GroupPtr group = QUIB_NEW Group;
    EXPECT_FALSE(group->AreAll<Entity>());
    EXPECT_FALSE(group->ContainsAny<Entity>());
    group->Add(Add("Scene.addBox { }"));
    EXPECT_TRUE(group->AreAll<BoxEntity>());
    EXPECT_FALSE(group->ContainsAny<CircleEntity>());
    group->Add(Add("Scene.addCircle { }"));
    EXPECT_FALSE(group->AreAll<BoxEntity>());
    EXPECT_TRUE(group->ContainsAny<BoxEntity>());
    EXPECT_TRUE(group->AreAll<FiniteGeomEntity>());
}

TEST_F(GroupTest, IsNothingAgainstItself)
{
    const auto a = Add("Scene.addCircle { }"), b = Add("Scene.addBox { }"),
               c = Add("Scene.addBox { }");
    const GroupPtr group = GroupOf({a, b});
    EXPECT_TRUE(Group::XOR(group, group)->IsEmpty());
    EXPECT_EQ((Entities{a, c}), Group::XOR(group, GroupOf({b, c}))->GetSorted());
    EXPECT_EQ((Entities{a, b}), Group::XOR(group, QUIB_NEW Group)->GetSorted());
}

TEST_F(GroupTest, KeepsMembersThatNothingReplaces)
{
    const auto a = Add("Scene.addCircle { }"), b = Add("Scene.addBox { }"),
               c = Add("Scene.addBox { }"), d = Add("Scene.addBox { }");
    EntityMap map;
    map[b] = c;
    map[d] = a;
    const GroupPtr group = GroupOf({a, b});
    group->Update(map);
    EXPECT_EQ((Entities{a, c}), group->GetSorted());
}

TEST_F(GroupTest, ClonesItsNameAndMembersOnly)
{
    const auto a = Add("Scene.addCircle { }");
    const GroupPtr group = QUIB_NEW Group("g");
    group->Add(a);
    const GroupPtr clone = group->ShallowClone();
    EXPECT_EQ("g", clone->GetName());
    EXPECT_EQ(Entities{a}, clone->GetSorted());
    clone->Clear();
    EXPECT_EQ(1u, group->GetEntities().size());
}

TEST_F(GroupTest, IsCalledByWhatItHolds)
{
    const auto box = Add("Scene.addBox { }"), circle = Add("Scene.addCircle { }"),
               plane = Add("Scene.addPlane { dist = -50.0 }"),
               poly = Add("Scene.addPolygon { vecs = [[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]] }");
    const EntityPtr hinge = Pin(Vec2(0, 0)), weld = Weld(Vec2(0, 0)), pen = AddPen(Vec2(0, 0)),
                    spring = Join<SpringEntity>(Vec2(0, 0), Vec2(9, 9));
    EXPECT_EQ("EmptyGroup", GroupOf({})->GetDescriptiveName());
    EXPECT_EQ("Box", GroupOf({box})->GetDescriptiveName());
    EXPECT_EQ("Circle", GroupOf({circle})->GetDescriptiveName());
    EXPECT_EQ("Polygon", GroupOf({poly})->GetDescriptiveName());
    EXPECT_EQ("Plane", GroupOf({plane})->GetDescriptiveName());
    EXPECT_EQ("Geom", GroupOf({plane, box})->GetDescriptiveName());
    EXPECT_EQ("FixJoint", GroupOf({weld})->GetDescriptiveName());
    EXPECT_EQ("Hinge", GroupOf({hinge})->GetDescriptiveName());
    EXPECT_EQ("Spring", GroupOf({spring})->GetDescriptiveName());
    EXPECT_EQ("Pen", GroupOf({pen})->GetDescriptiveName());
    EXPECT_EQ("Entity", GroupOf({pen, hinge})->GetDescriptiveName());
    EXPECT_EQ("Entity", GroupOf({box, hinge})->GetDescriptiveName());
}

TEST_F(GroupTest, WeighsItsMiddleByAreaAndNotByMass)
{
    const auto small = Add("Scene.addBox { size = [1.0, 1.0]; density = 500.0 }");
    const auto large = Add("Scene.addBox { size = [1.0, 3.0]; pos = [4.0, 8.0] }");
    const Vec2 center = GroupOf({small, large})->CalcCenterByWeight();
    EXPECT_NEAR(3, center.x, 1e-5f);
    EXPECT_NEAR(6, center.y, 1e-5f);
}

// Deliberate.
TEST_F(GroupTest, WeighsAPlaneByAMillionthAtTheMouse)
{
    const auto plane = Add("Scene.addPlane { pos = [50.0, 50.0]; angle = 0.5 }");
    ASSERT_NE(Vec2(50, 50), Mouse());
    const Vec2 alone = GroupOf({plane})->CalcCenterByWeight();
    EXPECT_NEAR(Mouse().x, alone.x, 1e-5f);
    EXPECT_NEAR(Mouse().y, alone.y, 1e-5f);
    // Two of them and a box of a thousandth of a unit: the mouse counts 2e-6 against 1e-6.
    const auto second = Add("Scene.addPlane { }");
    const auto box = Add("Scene.addBox { size = [0.001, 0.001]; pos = [600.0, -300.0] }");
    const Vec2 mixed = GroupOf({plane, second, box})->CalcCenterByWeight();
    EXPECT_NEAR((2 * Mouse().x + 600) / 3, mixed.x, 1e-3f);
    EXPECT_NEAR((2 * Mouse().y - 300) / 3, mixed.y, 1e-3f);
}

TEST_F(GroupTest, HasTheMiddleOfItsBoxWhenNothingWeighs)
{
    const EntityPtr a = Pin(Vec2(1, 2)), b = Pin(Vec2(3, 2));
    const Vec2 center = GroupOf({a, b})->CalcCenterByWeight();
    EXPECT_NEAR(2, center.x, 1e-5f);
    EXPECT_NEAR(2, center.y, 1e-5f);
    EXPECT_EQ(Mouse(), (QUIB_NEW Group)->CalcCenterByWeight());
}

TEST_F(GroupTest, HoldsTheWeightOfAMemberToTenBillion)
{
    const auto huge = Add("Scene.addBox { size = [1.0e6, 1.0e6]; pos = [0.0, 0.0] }");
    const auto equal = Add("Scene.addBox { size = [1.0e5, 1.0e5]; pos = [8.0, 0.0] }");
    EXPECT_NEAR(4, GroupOf({huge, equal})->CalcCenterByWeight().x, 1e-4f);
}

TEST_F(GroupTest, TurnsAboutTheOneHingeThatItHangsBy)
{
    const auto box = Add("Scene.addBox { size = [4.0, 1.0]; pos = [1.0, 0.0] }");
    const GroupPtr group = GroupOf({box});
    EXPECT_FALSE(group->CalcScaleCenter());
    EXPECT_NEAR(1, group->CalcRotationCenter().x, 1e-5f);
    // A spring holds nothing.
    Join<SpringEntity>(Vec2(2, 0), Vec2(5, 5));
    EXPECT_FALSE(group->CalcScaleCenter());
    Pin(Vec2(-0.5f, 0.25f));
    ASSERT_TRUE(group->CalcScaleCenter());
    EXPECT_EQ(Vec2(-0.5f, 0.25f), *group->CalcScaleCenter());
    EXPECT_EQ(Vec2(-0.5f, 0.25f), group->CalcRotationCenter());
    Weld(Vec2(2.5f, 0));
    EXPECT_FALSE(group->CalcScaleCenter());
    EXPECT_NEAR(1, group->CalcRotationCenter().x, 1e-5f);
    EXPECT_NEAR(0, group->CalcRotationCenter().y, 1e-5f);
}

TEST_F(GroupTest, TurnsAboutTheOneJointInsideWhenNoneHoldsIt)
{
    const auto below = Add("Scene.addBox { size = [4.0, 1.0] }");
    const auto above = Add("Scene.addBox { size = [4.0, 1.0]; pos = [3.0, 0.0] }");
    Pin(Vec2(1.5f, 0.25f));
    const GroupPtr both = GroupOf({below, above});
    ASSERT_TRUE(both->CalcScaleCenter());
    EXPECT_EQ(Vec2(1.5f, 0.25f), *both->CalcScaleCenter());
    // What holds it comes first, and not what lies inside.
    Pin(Vec2(-1.5f, 0));
    EXPECT_EQ(Vec2(-1.5f, 0), *both->CalcScaleCenter());
}

TEST_F(GroupTest, OfAJointAloneTurnsAboutItsMiddle)
{
    Add("Scene.addBox { size = [4.0, 1.0] }");
    const EntityPtr pin = Pin(Vec2(1, 0)), weld = Weld(Vec2(-1, 0)), pen = AddPen(Vec2(0.5f, 0));
    const EntityPtr spring = Join<SpringEntity>(Vec2(0, 0), Vec2(5, 5));
    const struct
    {
        EntityPtr entity;
        float x;
    } cases[] = {{pin, 1}, {weld, -1}, {pen, 0.5f}};
    for (const auto& c : cases)
    {
        ASSERT_TRUE(GroupOf({c.entity})->CalcScaleCenter());
        EXPECT_NEAR(c.x, GroupOf({c.entity})->CalcScaleCenter()->x, 1e-5f);
        EXPECT_NEAR(0, GroupOf({c.entity})->CalcScaleCenter()->y, 1e-5f);
    }
    EXPECT_FALSE(GroupOf({spring})->CalcScaleCenter());
    EXPECT_FALSE(GroupOf({pin, pen})->CalcScaleCenter());
}

TEST_F(GroupTest, MovesWeldedBodiesAsAWhole)
{
    const auto a = Add("Scene.addBox { }"), b = Add("Scene.addBox { pos = [0.75, 0.0] }"),
               c = Add("Scene.addBox { pos = [9.0, 0.0] }");
    const EntityPtr weld = Weld(Vec2(0.4f, 0));
    ASSERT_EQ(a->GetBody(), b->GetBody());
    EXPECT_EQ((Entities{a, b}), GroupOf({a})->GetTransformEntities());
    EXPECT_EQ((Entities{a, b, c, weld}), GroupOf({weld, c, b})->GetTransformEntities());
    const test::HeldKeys alt{SDLK_LALT};
    EXPECT_EQ(Entities{a}, GroupOf({a})->GetTransformEntities());
}

TEST_F(GroupTest, MovesGeometriesThenJointsThenPens)
{
    Entities geoms, joints, pens;
    const GroupPtr group = QUIB_NEW Group;
    for (int i = 0; i < 10; ++i)
    {
        const Vec2 pos(3.0f * i, 0);
        pens.push_back(AddPen(pos));
        geoms.push_back(Add("Scene.addCircle { pos = [" + util::ToString(3 * i) + ".0, 0.0] }"));
        joints.push_back(Join<SpringEntity>(pos, pos + Vec2(0, 9)));
        group->AddAll(GroupOf({pens[i], geoms[i], joints[i]}));
    }
    Entities all = geoms;
    all.insert(all.end(), joints.begin(), joints.end());
    all.insert(all.end(), pens.begin(), pens.end());
    EXPECT_EQ(all, group->GetTransformEntities());
}

TEST_F(GroupTest, LeavesJointsThatFollowByThemselves)
{
    const auto a = Add("Scene.addBox { size = [2.0, 1.0] }");
    const auto b = Add("Scene.addBox { size = [2.0, 1.0]; pos = [1.5, 0.0] }");
    const EntityPtr hinge = Pin(Vec2(0.75f, 0));
    EXPECT_EQ((Entities{a, b}), GroupOf({a, b, hinge})->GetTransformEntities());
    EXPECT_EQ((Entities{a, hinge}), GroupOf({a, hinge})->GetTransformEntities());
    EXPECT_EQ(Entities{a}, GroupOf({a})->GetTransformEntities());
    EXPECT_EQ(Entities{hinge}, GroupOf({hinge})->GetTransformEntities());
}

TEST_F(GroupTest, TakesPinsOnTheBackgroundAlongButNoSprings)
{
    const auto box = Add("Scene.addBox { }");
    const EntityPtr pin = Pin(Vec2(0.25f, 0));
    Join<SpringEntity>(Vec2(0, 0), Vec2(5, 5));
    EXPECT_EQ((Entities{box, pin}), GroupOf({box})->GetTransformEntities());
    const test::HeldKeys alt{SDLK_LALT};
    EXPECT_EQ((Entities{box, pin}), GroupOf({box})->GetTransformEntities());
}

TEST_F(GroupTest, LeavesTheRestOfTheWorldBody)
{
    const auto plane = Add("Scene.addPlane { dist = 20.0 }");
    const auto other = Add("Scene.addPlane { dist = 30.0 }");
    const auto box = Add("Scene.addBox { }");
    const EntityPtr weld = Weld(Vec2(0, 0));
    ASSERT_EQ(0u, box->GetBody()->GetID());
    ASSERT_EQ(0u, other->GetBody()->GetID());
    EXPECT_EQ(Entities{plane}, GroupOf({plane})->GetTransformEntities());
    EXPECT_EQ((Entities{box, weld}), GroupOf({box})->GetTransformEntities());
}
}
}
