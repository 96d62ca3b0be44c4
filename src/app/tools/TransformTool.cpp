#include "app/tools/TransformTool.h"

#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/Entity.h"

namespace app
{
TransformTool::TransformTool() = default;

TransformTool::~TransformTool() = default;

bool TransformTool::SelectAt(const math::Vec2& pos)
{
    // Somebody else has taken the end of the one before.
    if (IsInUse())
        LetGo();
    Scene* scene = Scene::GetInstancePtr();
    const EntityPtr entity = scene->GetEntityAt(pos);
    if (!entity)
        return false;
    if (!scene->IsSelected(entity))
        scene->SelectAt(pos);
    return true;
}

void TransformTool::RememberScene()
{
    m_before = Snapshot::TakeSnapshot();
    SetInUse(true);
}

void TransformTool::TakeInHand()
{
    Scene* scene = Scene::GetInstancePtr();
    m_held = scene->GetSelection()->GetTransformEntities();
    m_isInHand = true;
    scene->SuspendSelected(true);
    for (const EntityPtr& entity : m_held)
        entity->StartTransform();
}

// One that has left the scene meanwhile has no body, and nothing that moves.
void TransformTool::TransformHeld(const math::Mat2D& matrix)
{
    Scene::TransformEach(m_held, matrix);
}

/// Leaves nothing behind, so that it is over when what comes next asks the tools to break off: a scene
/// that is brought back does.
SnapshotPtr TransformTool::Release()
{
    SetInUse(false);
    std::vector<EntityPtr> held;
    held.swap(m_held);
    SnapshotPtr before;
    before.swap(m_before);
    if (!m_isInHand)
        return nullptr;
    m_isInHand = false;
    Scene::GetInstancePtr()->SuspendSelected(false);
    for (const EntityPtr& entity : held)
        entity->EndTransform();
    return before;
}

void TransformTool::LetGo()
{
    if (const SnapshotPtr before = Release())
        Undoer::GetInstancePtr()->AddUndo(before, GetUndoName());
}

void TransformTool::BreakOff()
{
    if (const SnapshotPtr before = Release())
        before->Restore();
}
}
