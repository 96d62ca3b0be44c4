// The part of the scene that selects, and what works on the selection.
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/Scene.h"
#include "app/entities/GeomEntity.h"
#include "input/Input.h"

#include <algorithm>

using math::Vec2;

namespace app
{
void Scene::SetSelection(const GroupPtr& group)
{
    m_selection->Set(group);
}

GroupPtr Scene::GetSelectionAt(const Vec2& pos) const
{
    std::vector<Entity*> picked;
    GetSelectionAt(pos, picked);
    const GroupPtr group = QUIB_NEW Group;
    for (Entity* entity : picked)
        group->Add(entity);
    return group;
}

void Scene::GetSelectionAt(const Vec2& pos, std::vector<Entity*>& picked) const
{
    const EntityPtr entity = GetEntityAt(pos);
    if (!entity)
        return;
    picked.push_back(entity.get());
    if (input::Input::GetInstancePtr()->CheckModifier(input::ModAlt))
        return;
    if (entity->GetChain())
    {
        const size_t first = picked.size();
        entity->GetChain()->GetNeighbors(*entity, false, picked);
        // An end of the chain may have been erased, and an undo may keep it.
        picked.erase(std::remove_if(picked.begin() + first, picked.end(),
                                    [](const Entity* neighbor) { return !neighbor->m_isInScene; }),
                     picked.end());
    }
    for (const GroupPtr& group : m_groups)
        if (group != m_selection && group != m_camera->GetTrackedGroup() && group->Contains(entity))
            for (const EntityPtr& member : group->GetEntities())
                picked.push_back(member.get());
}

bool Scene::SelectAt(const Vec2& pos)
{
    OnNewSelection(GetSelectionAt(pos));
    return !m_selection->IsEmpty();
}

void Scene::OnNewSelection(const GroupPtr& picked)
{
    // The selection must survive being selected.
    if (picked == m_selection)
        return;
    const input::Input* input = input::Input::GetInstancePtr();
    const bool ctrl = input->CheckModifier(input::ModCtrl);
    const bool shift = input->CheckModifier(input::ModShift);
    if (m_selection->IsEmpty())
        m_selection->AddAll(picked);
    else if (ctrl && shift)
        m_selection->Set(Group::XOR(m_selection, picked));
    else if (ctrl)
        m_selection->AddAll(picked);
    else if (shift)
        m_selection->RemoveAll(picked);
    else
        m_selection->Set(picked);
}

bool Scene::IsSelection(const physics::Polygon& lasso)
{
    const GroupPtr caught = QUIB_NEW Group;
    for (const EntityPtr& entity : m_entities)
        if (entity->IsContainedBy(lasso))
            caught->Add(entity);
    if (caught->IsEmpty())
        return false;
    OnNewSelection(caught);
    return true;
}

void Scene::SelectChain(const EntitySet& entities)
{
    const EntitySet wanted = entities; // it may be the selection's own
    m_selection->Clear();
    for (const EntityPtr& entity : wanted)
        if (entity->GetChain() && HasEntity(entity))
            m_selection->Add(entity);
}

void Scene::SuspendSelected(bool suspend)
{
    for (const EntityPtr& entity : m_entities)
    {
        // Deliberate: false releases all bodies.
        if (suspend && !m_selection->Contains(entity))
            continue;
        const GeomEntity* geomEntity = entity->AsGeomEntity();
        const physics::BodyPtr body = geomEntity ? geomEntity->GetBody() : nullptr;
        if (!body)
            continue;
        if (suspend)
        {
            body->SetVel(Vec2());
            body->SetAngVel(0);
        }
        body->SetSuspended(suspend);
    }
}

void Scene::MoveToFront(const GroupPtr& group)
{
    std::stable_partition(m_entities.begin(), m_entities.end(),
                          [&group](const EntityPtr& entity) { return !group->Contains(entity); });
}

void Scene::MoveToBack(const GroupPtr& group)
{
    std::stable_partition(m_entities.begin(), m_entities.end(),
                          [&group](const EntityPtr& entity) { return group->Contains(entity); });
}
}
