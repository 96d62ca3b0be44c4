#include "app/Action.h"

#include "app/Language.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/entities/GeomEntity.h"
#include "physics/Simulation.h"

#include <algorithm>
#include <vector>

namespace app
{
namespace
{
void SetRunning(bool running)
{
    physics::Simulation::GetInstancePtr()->m_running = running;
}
}

util::String Action::Name() const
{
    return Language::GetInstancePtr()->Get(m_name);
}

SnapshotAction::SnapshotAction()
    : Action("UndoSnapshot")
    , m_snapshot(Snapshot::TakeSnapshot())
{
}

SnapshotAction::~SnapshotAction() = default;

void SnapshotAction::Undo()
{
    m_snapshot->Restore();
}

void SnapshotAction::Redo()
{
    m_snapshot->Restore();
}

SnapshotRestorer::SnapshotRestorer(SnapshotPtr before, const char* name, SnapshotPtr after)
    : Action(name)
    , m_before(std::move(before))
    , m_after(std::move(after))
{
}

SnapshotRestorer::~SnapshotRestorer() = default;

void SnapshotRestorer::Do()
{
    m_after->Restore();
}

void SnapshotRestorer::Undo()
{
    m_before->Restore();
}

SimStart::SimStart()
    : Action("UndoSimStart")
    , m_snapshot(Snapshot::TakeSnapshot())
{
}

SimStart::~SimStart() = default;

void SimStart::Do()
{
    SetRunning(true);
}

// Deliberate: this is the reset.
void SimStart::Undo()
{
    m_snapshot->Restore();
    SetRunning(false);
}

void SimStart::Redo()
{
    m_snapshot->Restore();
    SetRunning(true);
}

EraseEntities::EraseEntities(EntitySet entities)
    : Action("UndoErase")
    , m_entities(std::move(entities))
{
}

EraseEntities::EraseEntities(const GroupPtr& group)
    : EraseEntities(group->GetEntities())
{
}

EraseEntities::~EraseEntities() = default;

void EraseEntities::Do()
{
    m_snapshot = Snapshot::TakeSnapshot();
    Scene* scene = Scene::GetInstancePtr();
    // In the order of the scene, which the set does not have.
    std::vector<EntityPtr> erased;
    for (const EntityPtr& entity : scene->GetEntities())
        if (m_entities.count(entity))
            erased.push_back(entity);
    scene->RemoveEntities(erased);
}

void EraseEntities::Undo()
{
    m_snapshot->Restore();
}
}
