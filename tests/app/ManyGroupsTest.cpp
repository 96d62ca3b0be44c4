// Scenes of thousands of groups, as a text can make them: what is done for each entity must not be done for
// each group too.
#include "PlainEntity.h"
#include "SerializerFixture.h"

#include "app/widgets/Widget.h"

namespace app
{
namespace
{
class ManyGroupsTest : public SerializerFixture
{
protected:
    static constexpr int Count = 10000;

    static util::String NameOf(int i) { return "group_" + util::ToString(i); }

    /// Each entity in a group of its own.
    static void MakeGroups(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            TheScene()->AddEntity(QUIB_NEW test::PlainEntity);
            TheScene()->GetOrCreateGroupByName(NameOf(i))->Add(TheScene()->GetEntities().back());
        }
    }

    template<typename F>
    static double SecondsFor(F&& run)
    {
        const double start = Seconds();
        run();
        return Seconds() - start;
    }

    // Done the long way, each of these takes seconds.
    static constexpr double Hang = 0.7;
};

TEST_F(ManyGroupsTest, AreFoundByName)
{
    MakeGroups(Count);
    const auto lookUp = []
    {
        for (int i = 0; i < 5 * Count; ++i)
            EXPECT_EQ(i < Count, bool(TheScene()->GetGroupByName(NameOf(i))));
    };
    EXPECT_LT(SecondsFor(lookUp), Hang);
    EXPECT_EQ(Count + 1u, TheScene()->GetGroups().size());
    EXPECT_TRUE(TheScene()->GetGroupByName(NameOf(77))->Contains(TheScene()->GetEntities()[77]));
    TheScene()->RemoveGroup(TheScene()->GetGroupByName(NameOf(77)));
    EXPECT_FALSE(TheScene()->GetGroupByName(NameOf(77)));
    EXPECT_EQ(Count + 0u, TheScene()->GetGroups().size());
}

TEST_F(ManyGroupsTest, LoseTheirMembersWhenTheseLeaveTheScene)
{
    MakeGroups(Count);
    const std::vector<EntityPtr> all = TheScene()->GetEntities();
    const std::vector<EntityPtr> most(all.begin() + 3, all.end());
    EXPECT_LT(SecondsFor([&] { TheScene()->RemoveEntities(most); }), Hang);
    EXPECT_FALSE(TheScene()->GetGroupByName(NameOf(2))->IsEmpty());
    EXPECT_TRUE(TheScene()->GetGroupByName(NameOf(3))->IsEmpty());
    EXPECT_LT(SecondsFor([] { TheScene()->Update(0.01f); }), Hang);
    EXPECT_EQ(4u, TheScene()->GetGroups().size());
    EXPECT_FALSE(TheScene()->GetGroupByName(NameOf(3)));
}

TEST_F(ManyGroupsTest, AreNotSortedForEachWidget)
{
    MakeGroups(3000);
    const GroupPtr namesake = QUIB_NEW Group(NameOf(5));
    TheScene()->AddGroup(namesake);
    const WidgetPtr widget = QUIB_NEW Widget("GeomOptions", TheScene()->GetGroupByName(NameOf(4)));
    const double seconds = SecondsFor(
        [&]
        {
            script::CodeBlock block;
            for (int i = 0; i < 3000; ++i)
                TheSerializer()->SerializeWidget(block, *widget);
        });
    EXPECT_LT(seconds, Hang);
    // Only the name of one of its kind tells which group it is.
    script::CodeBlock block;
    TheSerializer()->SerializeWidget(block, *widget);
    EXPECT_TRUE(Has(block.ToCode(), "groupID = \"group_4\""));
    const WidgetPtr twin = QUIB_NEW Widget("GeomOptions", namesake);
    TheSerializer()->SerializeWidget(block, *twin);
    EXPECT_TRUE(Has(block.ToCode(), "groupID = \"\""));
    const WidgetPtr outsider = QUIB_NEW Widget("GeomOptions", QUIB_NEW Group(NameOf(4)));
    TheSerializer()->SerializeWidget(block, *outsider);
    EXPECT_EQ(2u, SerializerFixture::Count(block.ToCode(), "groupID = \"\""));
}
}
}
