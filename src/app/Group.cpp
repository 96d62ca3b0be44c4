#include "app/Group.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "input/Input.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

namespace app
{
namespace
{
using GeomRefs = std::unordered_set<const physics::Geom*>;

// What a member weighs in the middle of its group.
const float MaxWeight = 1e10f;
const float PlaneWeight = 1e-6f;

/// How many ends of the joint are on one of the geometries.
int CountEnds(const JointEntity& joint, const GeomRefs& geoms)
{
    return int(geoms.count(joint.GetGeom(0).get())) + int(geoms.count(joint.GetGeom(1).get()));
}

/// Whether the joint pins one of the geometries to the world body.
bool IsPin(const JointEntity& joint, const GeomRefs& geoms)
{
    const physics::BodyPtr world = physics::Simulation::GetInstancePtr()->GetWorldBody();
    for (int i = 0; i < 2; ++i)
    {
        const physics::GeomPtr &here = joint.GetGeom(i), &there = joint.GetGeom(1 - i);
        if (here && there && geoms.count(here.get()) && there->GetBodyPtr() == world.get())
            return true;
    }
    return false;
}

math::Vec2 MiddleOf(const JointEntity& joint)
{
    return (joint.GetWorldPoint(0) + joint.GetWorldPoint(1)) * 0.5f;
}

void Append(std::vector<EntityPtr>& list, const EntitySet& entities)
{
    for (const EntityPtr& entity : SortedByID(entities))
        list.push_back(entity);
}
}

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
    const EntityPtr added = entity; // it may lie in the set, which may grow
    m_entities.insert(added);
    if (m_lowestID)
        m_lowestID = std::min(*m_lowestID, added->GetID());
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
    const EntityPtr removed = entity; // it may be the only handle
    m_entities.erase(removed);
    if (m_lowestID == removed->GetID())
        m_lowestID.reset();
}

void Group::RemoveAll(const EntitySet& entities)
{
    if (&entities == &m_entities)
        return Clear();
    // The smaller one is walked: many entities may leave many groups.
    if (entities.size() <= m_entities.size())
    {
        for (const EntityPtr& entity : entities)
            Remove(entity);
        return;
    }
    std::vector<EntityPtr> removed;
    for (const EntityPtr& entity : m_entities)
        if (entities.count(entity))
            removed.push_back(entity);
    for (const EntityPtr& entity : removed)
        Remove(entity);
}

void Group::RemoveAll(const GroupPtr& group)
{
    RemoveAll(group->m_entities);
}

void Group::Clear()
{
    m_entities.clear();
    m_lowestID.reset();
}

void Group::Set(const EntitySet& entities)
{
    if (&entities == &m_entities)
        return;
    Clear();
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
    m_lowestID.reset();
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

unsigned long Group::GetLowestID() const
{
    if (!m_lowestID)
    {
        m_lowestID = std::numeric_limits<unsigned long>::max();
        for (const EntityPtr& entity : m_entities)
            m_lowestID = std::min(*m_lowestID, entity->GetID());
    }
    return *m_lowestID;
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

util::String Group::GetDescriptiveName() const
{
    if (IsEmpty())
        return "EmptyGroup";
    if (AreAll<BoxEntity>())
        return "Box";
    if (AreAll<CircleEntity>())
        return "Circle";
    if (AreAll<PolyEntity>())
        return "Polygon";
    if (AreAll<PlaneEntity>())
        return "Plane";
    if (AreAll<GeomEntity>())
        return "Geom";
    if (AreAll<FixJointEntity>())
        return "FixJoint";
    if (AreAll<HingeEntity>())
        return "Hinge";
    if (AreAll<SpringEntity>())
        return "Spring";
    if (AreAll<PenEntity>())
        return "Pen";
    return "Entity";
}

math::Vec2 Group::CalcCenterByWeight() const
{
    const math::Vec2 mouse = App::GetInstancePtr()->GetMousePos();
    float weightSum = 0;
    math::Vec2 center;
    // In order of id: sums of floats hang on the order.
    for (const EntityPtr& entity : GetSorted())
    {
        const GeomEntity* geomEntity = entity->AsGeomEntity();
        if (!geomEntity)
            continue;
        // Deliberate: by area, whatever the density. A plane has no middle, so that it stands at the
        // mouse, and counts for nothing as soon as there is something else.
        const physics::Geom& geom = *geomEntity->GetGeom();
        const bool isFinite = entity->AsFiniteGeomEntity();
        const float weight = isFinite ? std::clamp(geom.Area(), 0.0f, MaxWeight) : PlaneWeight;
        weightSum += weight;
        center += weight * (isFinite ? geom.GetCenter() : mouse);
    }
    if (weightSum > 0 && math::IsFinite(weightSum))
        return center / weightSum;
    const math::BoundingBox box = CalcFiniteAABB();
    if (math::IsFinite(box.GetSize()) && box.GetSize() != math::Vec2())
        return box.GetCenter();
    return mouse;
}

std::optional<math::Vec2> Group::CalcScaleCenter() const
{
    if (m_entities.size() == 1)
    {
        const EntityPtr only = GetFirst();
        const JointEntity* joint = only->AsJointEntity();
        if ((joint && !joint->AsSpringEntity()) || only->AsPenEntity())
            return CalcCenterByWeight();
    }
    GeomRefs geoms;
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
            geoms.insert(geomEntity->GetGeom().get());
    std::vector<const JointEntity*> attached, holding;
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
    {
        const JointEntity* joint = entity->AsJointEntity();
        if (!joint || joint->AsSpringEntity())
            continue;
        const int ends = CountEnds(*joint, geoms);
        if (ends > 0)
            attached.push_back(joint);
        if (ends == 1)
            holding.push_back(joint);
    }
    if (holding.size() == 1)
        return MiddleOf(*holding[0]);
    if (attached.size() == 1)
        return MiddleOf(*attached[0]);
    return std::nullopt;
}

math::Vec2 Group::CalcRotationCenter() const
{
    const std::optional<math::Vec2> center = CalcScaleCenter();
    return center ? *center : CalcCenterByWeight();
}

std::vector<EntityPtr> Group::GetTransformEntities() const
{
    const bool alt = input::Input::GetInstancePtr()->CheckModifier(input::ModAlt);
    std::unordered_set<const physics::AbstractBody*> bodies;
    GeomRefs geoms;
    EntitySet geomEntities(m_entities.size()), joints, others;
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
        {
            if (const physics::AbstractBody* body = geomEntity->GetGeom()->GetBodyPtr())
                bodies.insert(body);
            geoms.insert(geomEntity->GetGeom().get());
            geomEntities.insert(entity);
        }
    for (const EntityPtr& entity : m_entities)
    {
        const JointEntity* joint = entity->AsJointEntity();
        // One with both ends here follows its geometries by itself.
        if (joint && CountEnds(*joint, geoms) <= 1)
            joints.insert(entity);
        if (!joint && !entity->AsGeomEntity())
            others.insert(entity);
    }
    const physics::BodyPtr world = physics::Simulation::GetInstancePtr()->GetWorldBody();
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
        {
            // A welded body moves as a whole, but with Alt, which takes the members alone.
            const physics::AbstractBody* body = geomEntity->GetGeom()->GetBodyPtr();
            if (!alt && body && body != world.get() && bodies.count(body))
                geomEntities.insert(entity);
        }
        else if (const JointEntity* joint = entity->AsJointEntity())
        {
            // A pin on the background comes along.
            if (!joint->AsSpringEntity() && IsPin(*joint, geoms))
                joints.insert(entity);
        }

    std::vector<EntityPtr> all;
    all.reserve(geomEntities.size() + joints.size() + others.size());
    Append(all, geomEntities);
    Append(all, joints);
    Append(all, others);
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
