// The part of the scene that moves, scales, mirrors and clones.
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/EntitySerializer.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/entities/WeldBatch.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>

using math::Vec2;
using physics::BodyPtr;
using physics::GeomPtr;

namespace app
{
namespace
{
// From the geometries of originals to those that stand for them.
using GeomMap = std::unordered_map<const physics::Geom*, GeomPtr>;

GeomPtr Find(const GeomMap& map, const physics::Geom* geom)
{
    const auto it = map.find(geom);
    return it != map.end() ? it->second : nullptr;
}

bool IsFinite(const math::Mat3& m)
{
    for (const auto& row : m.m)
        for (float e : row)
            if (!math::IsFinite(e))
                return false;
    return true;
}

/// How much the matrix stretches along the axes of the world; negative along an axis that it mirrors.
Vec2 ScaleOf(const math::Mat3& matrix)
{
    return Vec2(std::copysign(matrix.GetColumn2(0).Length(), matrix[0][0]),
                std::copysign(matrix.GetColumn2(1).Length(), matrix[1][1]));
}

using ClonePairs = std::vector<std::pair<EntityPtr, EntityPtr>>; // the original and its clone

/// An end on a geometry that is not cloned stays there.
GeomPtr CloneOrSelf(const GeomMap& newGeoms, const GeomPtr& geom)
{
    const GeomPtr newGeom = Find(newGeoms, geom.get());
    return newGeom ? newGeom : geom;
}

void CopySettings(const Entity& from, Entity& to)
{
    EntitySerializer settings(EntitySerializer::Defaults::Keep);
    from.SerializeTo(settings);
    to.Deserialize(settings);
}

EntityPtr CloneJoint(const JointEntity& original, const GeomMap& newGeoms)
{
    const JointEntityPtr clone = original.Clone();
    CopySettings(original, *clone);
    const GeomPtr geoms[2] = {CloneOrSelf(newGeoms, original.GetGeom(0)),
                              CloneOrSelf(newGeoms, original.GetGeom(1))};
    clone->SetGeoms(geoms);
    return clone;
}

EntityPtr ClonePen(const PenEntity& original, const GeomMap& newGeoms)
{
    const PenEntityPtr clone = original.Clone();
    CopySettings(original, *clone);
    clone->AttachTo(CloneOrSelf(newGeoms, original.GetGeom()), original.GetLocalPoint());
    return clone;
}

/// Geometries that shared a body share one again, which moves as that one does.
void CloneBodies(const ClonePairs& pairs)
{
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const BodyPtr worldBody = simulation->GetWorldBody();
    std::map<unsigned, std::pair<BodyPtr, physics::GeomSet>> copies; // by id of the original
    for (const auto& [original, clone] : pairs)
    {
        if (!original->AsGeomEntity())
            continue;
        const GeomPtr& geom = original->AsGeomEntity()->GetGeom();
        const BodyPtr body = geom->GetBodyBody();
        // A plane goes to the world body itself as soon as it enters the world. What was welded to that
        // is not part of it any more, until its weld enters the world.
        if (!body || (body == worldBody && geom->GetKind() == physics::GeomKind::Plane))
            continue;
        auto& copy = copies[body->GetID()];
        copy.first = body;
        copy.second.insert(clone->AsGeomEntity()->GetGeom());
    }
    for (const auto& copy : copies)
    {
        const BodyPtr body = QUIB_NEW physics::Body(*copy.second.first);
        body->SetGeoms(copy.second.second);
        simulation->AddBody(body);
    }
}

void CloneChains(const ClonePairs& pairs)
{
    std::unordered_map<const Chain*, ChainPtr> newChains;
    for (const auto& [original, clone] : pairs)
        if (const ChainPtr& chain = original->GetChain())
        {
            ChainPtr& newChain = newChains[chain.get()];
            if (!newChain)
                newChain = QUIB_NEW Chain;
            newChain->AddEntity(original->GetChainIndex(), clone);
        }
}

// What a scale does to one joint.
struct ScaledJoint
{
    JointEntityPtr joint;
    GeomPtr geoms[2];
    Vec2 points[2]; // in the world
};

/// @return  joint is null when the scale leaves it alone
ScaledJoint ScaleJoint(const JointEntityPtr& joint, const GeomMap& newGeoms, bool isInGroup,
                       const math::Mat3& matrix)
{
    ScaledJoint scaled;
    bool moves[2];
    for (int i = 0; i < 2; ++i)
    {
        const GeomPtr newGeom = Find(newGeoms, joint->GetGeom(i).get());
        moves[i] = isInGroup || newGeom;
        scaled.geoms[i] = newGeom ? newGeom : joint->GetGeom(i);
    }
    if (!scaled.geoms[0] || (!moves[0] && !moves[1]))
        return scaled;
    // A pin goes with what it holds. A spring's end on the background is a place of its own, and so is a
    // body that is not scaled: by the matrix its end could come to lie beside it, and would be fastened
    // to something else.
    const GeomPtr world = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    const bool isPin = !joint->AsSpringEntity();
    for (int i = 0; i < 2; ++i)
    {
        // Not the joint's own notion of it, which is that of the last frame.
        const Vec2 point =
            TransformCoordinate(joint->GetGeom(i)->GetPose(), joint->GetLocalPoint(i));
        const bool goes = moves[i] || (isPin && scaled.geoms[i] == world);
        scaled.points[i] = goes ? TransformCoordinate(matrix, point) : point;
    }
    scaled.joint = joint;
    return scaled;
}

// Welds hold bodies together, which are about to be others.
void Unweld(const std::vector<ScaledJoint>& joints)
{
    WeldBatch unwelding;
    for (const ScaledJoint& scaled : joints)
        if (scaled.joint->AsFixJointEntity())
            scaled.joint->RemoveFromSimulation();
}
}

void Scene::Transform(const GroupPtr& group, const math::Mat2D& matrix)
{
    const std::vector<EntityPtr> entities = group->GetTransformEntities();
    for (const EntityPtr& entity : entities)
        entity->StartTransform();
    TransformEach(entities, matrix);
    for (const EntityPtr& entity : entities)
        entity->EndTransform();
}

void Scene::TransformEach(const std::vector<EntityPtr>& entities, const math::Mat2D& matrix)
{
    // A body looks at all its geometries when one of them has moved: each is told once.
    std::map<unsigned, BodyPtr> bodies;
    size_t i = 0;
    {
        physics::Body::GeomChangeHold hold;
        for (; i < entities.size() && entities[i]->AsGeomEntity(); ++i)
        {
            entities[i]->Transform(matrix);
            if (const BodyPtr body = entities[i]->AsGeomEntity()->GetBody())
                bodies.emplace(body->GetID(), body);
        }
    }
    for (const auto& body : bodies)
        body.second->OnGeomChange();
    for (; i < entities.size(); ++i)
        entities[i]->Transform(matrix);
}

void Scene::Transform(const GroupPtr& group, const math::Mat3& matrix)
{
    if (matrix == math::Mat3())
        return;
    const Vec2 scale = ScaleOf(matrix);
    const float factor = std::sqrt(std::fabs(scale.x * scale.y));
    if (!IsFinite(matrix) || !math::IsFinite(factor) || !(factor > 0))
    {
        Log(logging::LogWarning, "Bad scale: it must be finite, and not 0 along an axis");
        return;
    }
    const GroupPtr scaledGroup = group; // it may be the camera's, which a formula can clear
    const EntitySet members = scaledGroup->GetEntities();
    // A formula among the settings that are copied is run, and may do anything to the scene.
    const std::vector<EntityPtr> originals = m_entities;

    // Everything new is made before anything is changed.
    ClonePairs pairs;
    for (const EntityPtr& entity : originals)
        if (const GeomEntity* old = entity->AsGeomEntity())
            if (members.count(entity))
                if (const GeomEntityPtr clone = old->ScaledClone(scale))
                    pairs.emplace_back(entity, clone);
    // From here on no formula runs. What they have taken out of the scene has no place any more.
    pairs.erase(std::remove_if(pairs.begin(), pairs.end(),
                               [this](const auto& pair) { return !HasEntity(pair.first); }),
                pairs.end());
    DepthTagEntities();
    EntityMap newEntities(members.size());
    GeomMap newGeoms;
    for (const auto& [original, clone] : pairs)
    {
        clone->SetZDepth(original->GetZDepth());
        const GeomPtr& oldGeom = original->AsGeomEntity()->GetGeom();
        const GeomPtr& newGeom = clone->AsGeomEntity()->GetGeom();
        newGeom->SetPos(TransformCoordinate(matrix, oldGeom->GetCenter()));
        newEntities[original] = clone;
        newGeoms[oldGeom.get()] = newGeom;
    }
    std::vector<ScaledJoint> joints;
    std::vector<std::pair<PenEntity*, Vec2>> pens; // and where they come to lie in the world
    for (const EntityPtr& entity : m_entities)
        if (JointEntity* joint = entity->ToJointEntity())
        {
            const ScaledJoint scaled =
                ScaleJoint(joint, newGeoms, members.count(entity) != 0, matrix);
            if (scaled.joint)
                joints.push_back(scaled);
        }
        else if (PenEntity* pen = entity->ToPenEntity())
            if (newGeoms.count(pen->GetGeom().get()) || members.count(entity))
                pens.emplace_back(pen, TransformCoordinate(matrix, pen->GetPos()));

    Unweld(joints);
    scaledGroup->Update(newEntities);
    ReplaceEntities(newEntities);

    {
        WeldBatch welding;
        for (const ScaledJoint& scaled : joints)
        {
            scaled.joint->SetGeoms(scaled.geoms);
            scaled.joint->AttachAt(scaled.points);
            if (scaled.joint->AsFixJointEntity())
                scaled.joint->AddToSimulation();
            if (!members.count(scaled.joint.get()))
                continue;
            scaled.joint->SetSize(scaled.joint->GetSize() * factor);
            if (SpringEntity* spring = scaled.joint->ToSpringEntity())
                spring->SetTargetLength(spring->GetTargetLength() * factor);
        }
    }
    for (const auto& [pen, pos] : pens)
    {
        if (const GeomPtr geom = Find(newGeoms, pen->GetGeom().get()))
            pen->AttachTo(geom, TransformCoordinate(geom->GetPoseInv(), pos));
        if (members.count(pen))
            pen->SetSize(pen->GetSize() * factor);
    }
    SortByDepth();
}

void Scene::ReplaceGeoms(const GroupPtr& group, const EntityMap& map)
{
    DepthTagEntities();
    GeomMap newGeoms;
    for (const EntityPtr& entity : m_entities)
        if (const EntityPtr* found = map.Find(entity))
        {
            (*found)->SetZDepth(entity->GetZDepth());
            newGeoms[entity->AsGeomEntity()->GetGeom().get()] = (*found)->AsGeomEntity()->GetGeom();
        }
    std::vector<ScaledJoint> joints;
    for (const EntityPtr& entity : m_entities)
        if (JointEntity* joint = entity->ToJointEntity())
            if (const ScaledJoint moved = ScaleJoint(joint, newGeoms, false, math::Mat3());
                moved.joint)
                joints.push_back(moved);

    Unweld(joints);
    group->Update(map);
    ReplaceEntities(map);

    WeldBatch welding;
    for (const ScaledJoint& moved : joints)
    {
        moved.joint->AttachToWorld(moved.geoms[0], moved.points[0], moved.geoms[1],
                                   moved.points[1]);
        if (moved.joint->AsFixJointEntity())
            moved.joint->AddToSimulation();
    }
    for (const EntityPtr& entity : m_entities)
        if (PenEntity* pen = entity->ToPenEntity())
            if (const GeomPtr geom = Find(newGeoms, pen->GetGeom().get()))
            {
                const Vec2 pos = pen->GetPos();
                pen->AttachTo(geom, TransformCoordinate(geom->GetPoseInv(), pos));
            }
}

void Scene::ReplaceEntities(const EntityMap& map)
{
    // The groups first: what leaves the scene leaves its groups.
    for (const GroupPtr& group : m_groups)
        group->Update(map);
    if (const GroupPtr& tracked = m_camera->GetTrackedGroup())
        tracked->Update(map);
    // Each at the place of the one it replaces: taking out one after the other would be a search each.
    std::vector<EntityPtr> replaced;
    std::vector<const GeomEntity*> leaving;
    for (EntityPtr& place : m_entities)
        if (const EntityPtr* found = map.Find(place))
        {
            const EntityPtr old = place, clone = *found;
            if (const ChainPtr chain = old->GetChain())
                chain->AddEntity(old->GetChainIndex(), clone);
            place = clone;
            clone->m_isInScene = true;
            clone->AddToSimulation();
            Forget(old); // the groups know it no more
            leaving.push_back(old->AsGeomEntity());
            replaced.push_back(old);
        }
    GeomEntity::RemoveFromSimulation(leaving);
}

GroupPtr Scene::CreateClone(const GroupPtr& group)
{
    const EntitySet members = group->GetEntities();
    const GroupPtr clones = QUIB_NEW Group(group->GetName());
    // A formula among the settings that are copied is run, and may do anything to the scene, and to the
    // handle on the group.
    const std::vector<EntityPtr> originals = m_entities;

    // Everything new is made before anything is changed. Geometries come first, then joints and pens,
    // which hang on them.
    ClonePairs pairs;
    pairs.reserve(members.size());
    GeomMap newGeoms;
    for (const EntityPtr& entity : originals)
        if (const GeomEntity* original = entity->AsGeomEntity())
            if (members.count(entity))
            {
                const GeomEntityPtr clone = original->Clone();
                newGeoms[original->GetGeom().get()] = clone->GetGeom();
                pairs.emplace_back(entity, clone);
            }
    for (const EntityPtr& entity : originals)
        if (const JointEntity* original = entity->AsJointEntity())
            if (members.count(entity))
                pairs.emplace_back(entity, CloneJoint(*original, newGeoms));
    for (const EntityPtr& entity : originals)
        if (const PenEntity* original = entity->AsPenEntity())
            if (members.count(entity))
                pairs.emplace_back(entity, ClonePen(*original, newGeoms));

    // From here on no formula runs.
    DepthTagEntities();
    CloneBodies(pairs);
    CloneChains(pairs);
    // Asking each group for each entity would take the product of both numbers.
    std::unordered_map<const Entity*, std::vector<GroupPtr>> groupsOf;
    for (const GroupPtr& other : m_groups)
        for (const EntityPtr& member : other->GetEntities())
            if (members.count(member))
                groupsOf[member.get()].push_back(other);
    WeldBatch welding;
    for (const auto& [original, clone] : pairs)
    {
        clone->SetZDepth(original->GetZDepth());
        for (const GroupPtr& other : groupsOf[original.get()])
            other->Add(clone);
        AddEntity(clone);
        clones->Add(clone);
    }
    SortByDepth();
    return clones;
}
}
