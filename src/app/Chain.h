// The entities of one chain in their order, so that it can be selected and cut as a whole. Each of its
// entities keeps it alive; it knows them by weak handles.
#pragma once

#include "app/Group.h"

#include <cstddef>
#include <map>
#include <vector>

namespace app
{
class Chain;
using ChainPtr = util::SharedPtr<Chain>;

class Chain : public util::Pointee
{
public:
    Chain();
    ~Chain() override;

    /// Counted up from 1. In a file it only tells which entities belong to a chain.
    unsigned long GetID() const { return m_id; }

    /// At the end.
    void AddEntity(const EntityPtr& entity);
    /// Who was at the index leaves the chain, and the entity its place of before; indices that nobody
    /// has are holes.
    /// @throws BadDataException  for an index that only a bad file can have
    void AddEntity(size_t index, const EntityPtr& entity);
    /// Holes count.
    /// @return NotFound for one that is not here
    size_t IndexOf(const Entity& entity) const;
    static constexpr size_t NotFound = static_cast<size_t>(-1);

    /// By index. Those that live no more are null.
    const std::map<size_t, util::WeakPtr<Entity>>& GetSlots() const { return m_entities; }
    /// Those that live, in order.
    std::vector<EntityPtr> GetEntities() const;
    /// Sets all members free; the chain is empty then.
    void Detach();

    /// What hangs together with the entity, without it: up to the gaps on both sides, where an index has
    /// nobody or one that is not in the scene. The two ends of the chain count with withEnds only. For
    /// an end itself nothing.
    EntitySet GetNeighbors(const EntityPtr& entity, bool withEnds) const;
    /// The same for every frame, added to a list that the caller keeps.
    void GetNeighbors(const Entity& entity, bool withEnds, std::vector<Entity*>& neighbors) const;

private:
    static unsigned long s_idCounter;

    unsigned long m_id;
    // By index, which a file may choose at will. Who is here knows this chain and this index, and nobody
    // else does.
    std::map<size_t, util::WeakPtr<Entity>> m_entities;
};
}
