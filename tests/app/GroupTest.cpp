#include "AppFixture.h"

#include "app/EntitySerializer.h"

#include <cmath>

namespace app
{
namespace
{
using GroupTest = AppFixture;

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

TEST_F(GroupTest, HasNoCenterWithoutAFiniteBox)
{
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(nullptr).x));
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(QUIB_NEW Group).y));
    GroupPtr planes = QUIB_NEW Group(Add("Scene.addPlane { }"));
    planes->Add(Add("Scene.addPlane { }"));
    EXPECT_TRUE(math::IsNaN(GetGroupCenter(planes).x));
}
}
}
