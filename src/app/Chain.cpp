#include "app/Chain.h"

#include "app/Scene.h"
#include "app/entities/Entity.h"

namespace app
{
unsigned long Chain::s_idCounter = 1;

Chain::Chain()
    : m_id(s_idCounter++)
{
}

Chain::~Chain() = default;

void Chain::AddEntity(const EntityPtr& entity)
{
    AddEntity(m_entities.empty() ? 0 : m_entities.rbegin()->first + 1, entity);
}

void Chain::AddEntity(size_t index, const EntityPtr& entity)
{
    DATA_ASSERT(index < 100000);
    if (const ChainPtr before = entity->GetChain())
        before->m_entities.erase(entity->GetChainIndex());
    util::WeakPtr<Entity>& slot = m_entities[index];
    // This chain lives by its entities: the new one holds it before the old one lets go.
    entity->SetChain(this, index);
    Entity* displaced = slot.GetUnlocked();
    slot = util::WeakPtr<Entity>(entity);
    if (displaced)
        displaced->SetChain(nullptr, 0);
}

size_t Chain::IndexOf(const Entity& entity) const
{
    return entity.GetChain().get() == this ? entity.GetChainIndex() : NotFound;
}

std::vector<EntityPtr> Chain::GetEntities() const
{
    std::vector<EntityPtr> entities;
    for (const auto& [index, weak] : m_entities)
        if (!weak.IsNull())
            entities.push_back(weak.GetUnlocked());
    return entities;
}

void Chain::Detach()
{
    // The last of its entities may hold the last handle on the chain.
    const ChainPtr keep = this;
    for (const EntityPtr& entity : GetEntities())
        entity->SetChain(nullptr, 0);
    m_entities.clear();
}

EntitySet Chain::GetNeighbors(const EntityPtr& ent, bool withEnds) const
{
    CODE_ASSERT(ent);
    std::vector<Entity*> list;
    GetNeighbors(*ent, withEnds, list);
    EntitySet neighbors;
    for (Entity* neighbor : list)
        neighbors.insert(neighbor);
    return neighbors;
}

void Chain::GetNeighbors(const Entity& entity, bool withEnds, std::vector<Entity*>& neighbors) const
{
    // Kept for its memory.
    static std::vector<Entity*> s_living;
    s_living.clear();
    for (const auto& slot : m_entities)
        if (Entity* living = slot.second.GetUnlocked())
            s_living.push_back(living);
    const std::vector<Entity*>& entities = s_living;
    const size_t size = entities.size();
    size_t i = 0;
    while (i < size && entities[i] != &entity)
        ++i;
    // Deliberate: an end has no neighbours. It is what the chain is fastened to.
    if (i == size || i == 0 || i == size - 1)
        return;

    // Deliberate: next to an end that end alone, whether ends are asked for or not.
    if (i == 1)
        neighbors.push_back(entities.front());
    if (i == size - 2)
        neighbors.push_back(entities.back());
    if (i == 1 || i == size - 2)
        return;

    const Scene* scene = Scene::GetInstancePtr();
    const auto follows = [](const Entity* a, const Entity* b)
    { return a->GetChainIndex() + 1 == b->GetChainIndex(); };
    const size_t first = withEnds ? 0 : 1, behindLast = withEnds ? size : size - 1;
    for (size_t k = i + 1;
         k < behindLast && follows(entities[k - 1], entities[k]) && scene->HasEntity(entities[k]);
         ++k)
        neighbors.push_back(entities[k]);
    for (size_t k = i;
         k-- > first && follows(entities[k], entities[k + 1]) && scene->HasEntity(entities[k]);)
        neighbors.push_back(entities[k]);
}
}
