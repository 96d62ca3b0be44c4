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

Group::Group() = default;

Group::Group(const util::String& name)
    : m_name(name)
{
}

Group::Group(const EntityPtr& entity)
{
    Add(entity);
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
    for (const EntityPtr& entity : entities)
        Add(entity);
}

void Group::Remove(const EntityPtr& entity)
{
    m_entities.erase(entity);
}

void Group::Clear()
{
    m_entities.clear();
}

void Group::Set(const GroupPtr& group)
{
    if (group.get() == this)
        return;
    m_entities.clear();
    AddAll(group);
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
