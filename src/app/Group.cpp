#include "app/Group.h"

#include "app/EntitySerializer.h"
#include "app/entities/GeomEntity.h"
#include "physics/Geom.h"

#include <algorithm>
#include <limits>

namespace app
{
const char* const SelectedName = "selected";
const char* const TrackedName = "tracked";

std::vector<EntityPtr> SortedByID(const EntitySet& entities)
{
    std::vector<EntityPtr> sorted(entities.begin(), entities.end());
    std::sort(sorted.begin(), sorted.end(),
              [](const EntityPtr& a, const EntityPtr& b) { return a->GetID() < b->GetID(); });
    return sorted;
}

Group::Group() = default;

Group::Group(const util::String& name)
    : m_name(name)
{
}

Group::Group(const EntityPtr& entity)
{
    Add(entity);
}

Group::Group(const EntitySet& entities)
    : m_entities(entities)
{
}

Group::~Group() = default;

bool Group::Contains(const EntityPtr& entity) const
{
    return m_entities.count(entity) != 0;
}

void Group::Add(const EntityPtr& entity)
{
    m_entities.insert(entity);
}

void Group::AddAll(const EntitySet& entities)
{
    if (&entities == &m_entities)
        return;
    for (const EntityPtr& entity : entities)
        Add(entity);
}

void Group::AddAll(const GroupPtr& group)
{
    AddAll(group->m_entities);
}

void Group::Remove(const EntityPtr& entity)
{
    m_entities.erase(entity);
}

void Group::RemoveAll(const EntitySet& entities)
{
    if (&entities == &m_entities)
        return Clear();
    for (const EntityPtr& entity : entities)
        Remove(entity);
}

void Group::RemoveAll(const GroupPtr& group)
{
    RemoveAll(group->m_entities);
}

void Group::Clear()
{
    m_entities.clear();
}

void Group::Set(const EntitySet& entities)
{
    if (&entities == &m_entities)
        return;
    m_entities.clear();
    AddAll(entities);
}

void Group::Set(const GroupPtr& group)
{
    Set(group->m_entities);
}

void Group::Update(const EntityMap& map)
{
    EntitySet updated(m_entities.size());
    for (const EntityPtr& entity : m_entities)
    {
        const EntityPtr* replacement = map.Find(entity);
        updated.insert(replacement ? *replacement : entity);
    }
    m_entities.swap(updated);
}

bool Group::ContainsAny(const EntitySet& entities) const
{
    return std::any_of(entities.begin(), entities.end(),
                       [this](const EntityPtr& entity) { return Contains(entity); });
}

bool Group::ContainsAll(const EntitySet& entities) const
{
    return std::all_of(entities.begin(), entities.end(),
                       [this](const EntityPtr& entity) { return Contains(entity); });
}

EntityPtr Group::GetFirst() const
{
    EntityPtr first;
    for (const EntityPtr& entity : m_entities)
        if (!first || entity->GetID() < first->GetID())
            first = entity;
    return first;
}

std::vector<EntityPtr> Group::GetSorted() const
{
    return SortedByID(m_entities);
}

GroupPtr Group::ShallowClone() const
{
    const GroupPtr clone = QUIB_NEW Group(m_name);
    clone->AddAll(m_entities);
    return clone;
}

GroupPtr Group::XOR(const GroupPtr& a, const GroupPtr& b)
{
    const GroupPtr different = QUIB_NEW Group;
    for (const EntityPtr& entity : a->m_entities)
        if (!b->Contains(entity))
            different->Add(entity);
    for (const EntityPtr& entity : b->m_entities)
        if (!a->Contains(entity))
            different->Add(entity);
    return different;
}

std::vector<unsigned long> Group::GetEnityIDs() const
{
    std::vector<unsigned long> ids;
    ids.reserve(m_entities.size());
    for (const EntityPtr& entity : m_entities)
        ids.push_back(entity->GetID());
    std::sort(ids.begin(), ids.end());
    return ids;
}

math::BoundingBox Group::CalcFiniteAABB() const
{
    math::BoundingBox all;
    for (const EntityPtr& entity : m_entities)
    {
        const math::BoundingBox box = entity->GetAABB();
        if (box.IsFinite())
            all.Include(box);
    }
    return all;
}

void Group::SerializeTo(EntitySerializer& serializer) const
{
    serializer.Set("name", m_name);
}

void Group::Deserialize(const EntitySerializer& serializer)
{
    if (serializer.Has("name"))
        m_name = serializer.Get<util::String>("name");
}

math::Vec2 GetGroupCenter(const GroupPtr& group)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    if (!group)
        return math::Vec2(nan, nan);
    if (group->GetEntities().size() == 1)
        if (const GeomEntity* geomEntity = (*group->GetEntities().begin())->AsGeomEntity())
            return geomEntity->GetGeom()->GetCenter();
    const math::BoundingBox box = group->CalcFiniteAABB();
    if (!box.IsFinite())
        return math::Vec2(nan, nan);
    return box.GetCenter();
}
}
