#include "app/tools/SpringTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/entities/SpringEntity.h"
#include "input/Key.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "rendering/Pushers.h"

using math::Vec2;

namespace app
{
SpringTool::SpringTool() = default;

SpringTool::~SpringTool() = default;

void SpringTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    const Vec2 pos = ToWorld(event.GetPosition());
    const Scene* scene = Scene::GetInstancePtr();
    m_geom = scene->GetGeomAt(pos);
    m_localPoint = TransformCoordinate(m_geom->GetPoseInv(), pos);
    m_preview = QUIB_NEW SpringEntity(App::GetInstancePtr()->GetDefaultJointSize());
    m_preview->AttachToWorld(m_geom, pos, physics::Simulation::GetInstancePtr()->GetWorldGeom(),
                             pos);
    SetInUse(true);
    event.SetHandled(true);
}

/// The second end. The spring is at rest, whatever the way that the mouse took.
void SpringTool::AttachTo(const physics::GeomPtr& geom, const Vec2& pos)
{
    const Vec2 start = TransformCoordinate(m_geom->GetPose(), m_localPoint);
    m_preview->AttachToWorld(m_geom, start, geom, pos);
    m_preview->SetTargetLength(math::Distance(start, pos));
}

void SpringTool::Update(float)
{
    if (IsInUse())
        AttachTo(Scene::GetInstancePtr()->GetGeomAtMousePos(), GetMousePos());
}

void SpringTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    const Vec2 pos = ToWorld(event.GetPosition());
    AttachTo(Scene::GetInstancePtr()->GetGeomAt(pos), pos);
    // It is the scene's from here on, and no preview that Disband would take away.
    const util::SharedPtr<SpringEntity> spring = m_preview;
    m_preview = nullptr;
    // Between two points of one body, or of one that has gone meanwhile, there is nothing to pull at.
    if (spring->IsAlive())
        AddEntityUndoable(spring, "UndoSpring");
    Disband();
    event.SetHandled(true);
}

void SpringTool::Draw() const
{
    if (!m_preview)
        return;
    const rendering::AttribPusher attribs; // an entity leaves the depth test on
    m_preview->Draw();
}

bool SpringTool::Disband()
{
    const util::SharedPtr<SpringEntity> preview = m_preview;
    m_preview = nullptr;
    m_geom = nullptr;
    SetInUse(false);
    if (!preview)
        return false;
    preview->RemoveFromSimulation();
    return true;
}
}
