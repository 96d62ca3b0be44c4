#include "AppFixture.h"

#include "app/Chain.h"

using math::Vec2;

namespace app
{
namespace
{
class ChainTest : public AppFixture
{
protected:
    /// So many circles in the scene, in a chain.
    ChainPtr MakeChain(int size)
    {
        const ChainPtr chain = QUIB_NEW Chain;
        m_links.clear();
        for (int i = 0; i < size; ++i)
        {
            m_links.push_back(
                Add("Scene.addCircle { pos = [" + util::ToString(3 * i) + ".0, 0.0] }"));
            chain->AddEntity(m_links.back());
        }
        return chain;
    }

    /// The places in the chain of the link's neighbours.
    std::vector<size_t> Neighbors(const ChainPtr& chain, size_t link, bool withEnds) const
    {
        const EntitySet neighbors = chain->GetNeighbors(m_links[link], withEnds);
        std::vector<size_t> places;
        for (size_t i = 0; i < m_links.size(); ++i)
            if (m_links[i] && neighbors.count(m_links[i]))
                places.push_back(i);
        EXPECT_EQ(neighbors.size(), places.size());
        return places;
    }

    std::vector<EntityPtr> m_links;
};

using Places = std::vector<size_t>;

TEST_F(ChainTest, CountsItsIdsUp)
{
    const ChainPtr a = QUIB_NEW Chain, b = QUIB_NEW Chain;
    EXPECT_EQ(a->GetID() + 1, b->GetID());
    EXPECT_LE(1u, a->GetID());
}

TEST_F(ChainTest, IsKnownToItsEntities)
{
    const ChainPtr chain = MakeChain(3);
    EXPECT_EQ(m_links, chain->GetEntities());
    for (size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(chain, m_links[i]->GetChain());
        EXPECT_EQ(i, chain->IndexOf(*m_links[i]));
    }
    EXPECT_EQ(size_t(Chain::NotFound), chain->IndexOf(*Add("Scene.addBox { }")));
}

TEST_F(ChainTest, HasHolesWhereNobodyIsYet)
{
    const ChainPtr chain = QUIB_NEW Chain;
    const auto last = Add("Scene.addBox { }"), first = Add("Scene.addBox { pos = [5.0, 0.0] }");
    chain->AddEntity(4, last);
    EXPECT_EQ(std::vector<EntityPtr>{last}, chain->GetEntities());
    chain->AddEntity(1, first);
    EXPECT_EQ((std::vector<EntityPtr>{first, last}), chain->GetEntities());
    EXPECT_EQ(4u, chain->IndexOf(*last));
    EXPECT_EQ(1u, chain->IndexOf(*first));
    const auto behind = Add("Scene.addBox { pos = [9.0, 0.0] }");
    chain->AddEntity(behind);
    EXPECT_EQ(5u, chain->IndexOf(*behind));
}

TEST_F(ChainTest, RefusesIndicesThatOnlyABadFileHas)
{
    const ChainPtr chain = QUIB_NEW Chain;
    const auto box = Add("Scene.addBox { }");
    chain->AddEntity(99999, box);
    EXPECT_EQ(99999u, chain->IndexOf(*box));
    test::LogCapture log;
    EXPECT_THROW(chain->AddEntity(100000, box), BadDataException);
    EXPECT_TRUE(log.Has("index < 100000")) << log.Text();
    EXPECT_EQ(99999u, chain->IndexOf(*box));
}

TEST_F(ChainTest, ForgetsEntitiesThatAreGone)
{
    const ChainPtr chain = MakeChain(3);
    TheScene()->RemoveEntity(m_links[1]);
    EXPECT_EQ(3u, chain->GetEntities().size());
    m_links.erase(m_links.begin() + 1);
    EXPECT_EQ(m_links, chain->GetEntities());
    EXPECT_EQ(2u, chain->IndexOf(*m_links[1]));
}

TEST_F(ChainTest, SetsAllFreeWhenDetached)
{
    ChainPtr chain = MakeChain(3);
    const util::WeakPtr<Chain> weak = chain;
    chain = nullptr;
    EXPECT_FALSE(weak.IsNull());
    // Nothing but the entities holds it by now.
    m_links[1]->GetChain()->Detach();
    for (const EntityPtr& link : m_links)
        EXPECT_FALSE(link->GetChain());
    EXPECT_TRUE(weak.IsNull());
}

TEST_F(ChainTest, LeavesThoseAloneThatHaveJoinedAnother)
{
    const ChainPtr chain = MakeChain(2), other = QUIB_NEW Chain;
    other->AddEntity(m_links[1]);
    chain->Detach();
    EXPECT_FALSE(m_links[0]->GetChain());
    EXPECT_EQ(other, m_links[1]->GetChain());
    EXPECT_TRUE(chain->GetEntities().empty());
}

TEST_F(ChainTest, GivesAllLinksBetweenTheEndsAsNeighbors)
{
    const ChainPtr chain = MakeChain(7);
    EXPECT_EQ((Places{1, 2, 4, 5}), Neighbors(chain, 3, false));
    EXPECT_EQ((Places{0, 1, 2, 4, 5, 6}), Neighbors(chain, 3, true));
    EXPECT_EQ((Places{1, 3, 4, 5}), Neighbors(chain, 2, false));
}

// Deliberate: what is at an end, or beside one, does not lead into the chain.
TEST_F(ChainTest, HasNoNeighborsForItsEnds)
{
    const ChainPtr chain = MakeChain(5);
    for (bool withEnds : {false, true})
    {
        EXPECT_EQ(Places{}, Neighbors(chain, 0, withEnds));
        EXPECT_EQ(Places{}, Neighbors(chain, 4, withEnds));
        EXPECT_EQ(Places{0}, Neighbors(chain, 1, withEnds));
        EXPECT_EQ(Places{4}, Neighbors(chain, 3, withEnds));
    }
    const ChainPtr three = MakeChain(3);
    EXPECT_EQ((Places{0, 2}), Neighbors(three, 1, false));
    EXPECT_EQ(Places{}, Neighbors(MakeChain(1), 0, true));
    EXPECT_EQ(Places{}, Neighbors(MakeChain(2), 1, true));
}

// Deliberate: also when it is erased and somebody holds it. Who picks asks the scene for it.
TEST_F(ChainTest, GivesAnErasedEndToWhoIsBesideIt)
{
    const ChainPtr chain = MakeChain(5);
    TheScene()->RemoveEntity(m_links[0]);
    TheScene()->RemoveEntity(m_links[4]);
    EXPECT_EQ(Places{0}, Neighbors(chain, 1, false));
    EXPECT_EQ(Places{4}, Neighbors(chain, 3, true));
}

TEST_F(ChainTest, StopsAtTheGapWhereALinkWasErased)
{
    const ChainPtr chain = MakeChain(9);
    TheScene()->RemoveEntity(m_links[6]);
    // m_links keeps it alive, as a snapshot would.
    EXPECT_EQ((Places{1, 2, 3, 5}), Neighbors(chain, 4, false));
    EXPECT_EQ((Places{0, 1, 2, 3, 5}), Neighbors(chain, 4, true));
    TheScene()->RemoveEntity(m_links[3]);
    EXPECT_EQ(Places{5}, Neighbors(chain, 4, true));
}

TEST_F(ChainTest, StopsAtTheGapAlsoWhenNobodyHoldsTheErasedLinkAnyMore)
{
    const ChainPtr chain = MakeChain(9);
    TheScene()->RemoveEntity(m_links[6]);
    m_links[6] = nullptr;
    ASSERT_EQ(8u, chain->GetEntities().size());
    EXPECT_EQ((Places{1, 2, 3, 5}), Neighbors(chain, 4, false));
    EXPECT_EQ((Places{0, 1, 2, 3, 5}), Neighbors(chain, 4, true));
    // Loaded again, the gap is a hole.
    const util::String text = Serializer::GetInstancePtr()->SerializeScene();
    m_links.clear();
    TheScene()->ClearScene();
    Serializer::GetInstancePtr()->Deserialize(text);
    m_links = TheScene()->GetEntities();
    ASSERT_EQ(8u, m_links.size());
    EXPECT_EQ((Places{1, 2, 3, 5}), Neighbors(m_links[4]->GetChain(), 4, false));
}

TEST_F(ChainTest, LosesWhoIsDisplaced)
{
    const ChainPtr chain = MakeChain(3);
    const auto late = Add("Scene.addBox { pos = [50.0, 0.0] }");
    chain->AddEntity(1, late);
    EXPECT_FALSE(m_links[1]->GetChain());
    EXPECT_EQ((std::vector<EntityPtr>{m_links[0], late, m_links[2]}), chain->GetEntities());
    // And who moves leaves no place behind, here or elsewhere.
    chain->AddEntity(7, m_links[0]);
    EXPECT_EQ((std::vector<EntityPtr>{late, m_links[2], m_links[0]}), chain->GetEntities());
    const ChainPtr other = QUIB_NEW Chain;
    other->AddEntity(late);
    EXPECT_EQ((std::vector<EntityPtr>{m_links[2], m_links[0]}), chain->GetEntities());
    // The same place again.
    other->AddEntity(0, late);
    EXPECT_EQ(other, late->GetChain());
    EXPECT_EQ(std::vector<EntityPtr>{late}, other->GetEntities());
}

TEST_F(ChainTest, TakesNoMemoryForHoles)
{
    util::String text;
    for (int i = 0; i < 2000; ++i)
        text += "Scene.addBox { pos = [" + util::ToString(i) +
                ".0, 0.0]; chain = " + util::ToString(i) + "; chainNr = 99999 };\n";
    Run(text + "x = 0");
    ASSERT_EQ(2000u, TheScene()->GetEntities().size());
    for (const EntityPtr& entity : TheScene()->GetEntities())
        ASSERT_EQ(1u, entity->GetChain()->GetSlots().size());
}

TEST_F(ChainTest, HasNoNeighborsForWhoIsNotInIt)
{
    const ChainPtr chain = MakeChain(4);
    EXPECT_TRUE(chain->GetNeighbors(Add("Scene.addBox { }"), true).empty());
    test::LogCapture log;
    EXPECT_THROW(chain->GetNeighbors(nullptr, true), BadCoderException);
    EXPECT_TRUE(log.Has("\"ent\"") || log.Has(" ent")) << log.Text();
}
}
}
