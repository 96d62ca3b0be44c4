#include "app/tools/DragTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/tools/ToolDrawing.h"
#include "input/Input.h"
#include "physics/Geom.h"
#include "physics/Hinge.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"

#include <cmath>

using math::Vec2;

namespace app
{
namespace
{
const float TorquePerLength = 100; // of the wrench
const math::Vec4 LineColor(1, 1, 1, 0.5f);

physics::Simulation* Sim()
{
    return physics::Simulation::GetInstancePtr();
}
}

DragTool::DragTool()
    : m_mouseBody(QUIB_NEW physics::Body)
    , m_mouseGeom(QUIB_NEW physics::WorldGeom)
{
}

DragTool::~DragTool() = default;

void DragTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    const Vec2 pos = ToWorld(event.GetPosition());
    const physics::GeomPtr geom = Scene::GetInstancePtr()->GetGeomAt(pos);
    const physics::AbstractBody* body = geom->GetBodyPtr();
    if (!body || body->IsImmovable())
        return;
    Disband();
    m_before = Snapshot::TakeSnapshot();
    // Removing it from the simulation took its geometry away.
    m_mouseGeom->SetWorldPose(math::Mat2D());
    m_mouseBody->SetGeom(m_mouseGeom);
    Sim()->AddBody(m_mouseBody);
    PlaceMouseBody(pos);
    m_hinge = QUIB_NEW physics::Hinge(m_mouseGeom, geom, pos);
    // Soft: a heavy body lags behind.
    const float strength = App::GetInstancePtr()->GetDragToolStrength();
    m_hinge->SetDistScale(strength);
    m_hinge->SetWarmScale(strength);
    Sim()->AddConstraint(m_hinge);
    m_isDragged = false;
    SetInUse(true);
    event.SetHandled(true);
}

void DragTool::PlaceMouseBody(const Vec2& pos)
{
    m_pos = pos;
    // By way of the placement, as the setters refuse to move what is infinitely heavy.
    physics::Body::Placement placement = m_mouseBody->GetPlacement();
    placement.pos = pos;
    m_mouseBody->SetPlacement(placement);
}

bool DragTool::IsRotating()
{
    return input::Input::GetInstancePtr()->IsKeyDown(input::MouseRight);
}

Vec2 DragTool::GetWrench() const
{
    return GetMousePos() - m_hinge->GetPos();
}

float DragTool::GetMotorSpeed() const
{
    const Vec2 wrench = GetWrench();
    return wrench == Vec2() ? 0 : std::atan2(wrench.y, wrench.x);
}

float DragTool::GetMotorTorque() const
{
    return TorquePerLength * GetWrench().Length();
}

void DragTool::Update(float)
{
    if (!m_hinge)
        return;
    // The body may have been erased, or the world cleared. And somebody else may have taken the release,
    // or the window may have lost the mouse before it.
    if (!Sim()->HasConstraint(m_hinge) ||
        !input::Input::GetInstancePtr()->IsKeyDown(input::MouseLeft))
    {
        Disband();
        return;
    }
    const bool isRotating = IsRotating();
    m_hinge->SetMotor(isRotating);
    if (isRotating)
    {
        m_hinge->SetMotorSpeed(GetMotorSpeed());
        m_hinge->SetMotorTorque(GetMotorTorque());
    }
    PlaceMouseBody(isRotating ? m_pos : GetMousePos());
}

void DragTool::OnDragEnd(const input::DragEvent& event)
{
    if (IsFor(input::MouseLeft, event) && Disband())
        event.SetHandled(true);
}

bool DragTool::Disband()
{
    if (!m_hinge)
        return false;
    const physics::HingePtr hinge = m_hinge;
    m_hinge = nullptr;
    SetInUse(false);
    const SnapshotPtr before = m_before;
    m_before = nullptr;
    Sim()->RemoveConstraint(hinge);
    Sim()->RemoveBody(m_mouseBody);
    // Deliberate: nothing ever sets the flag. A drag is part of the run, not an edit, and leaves no step
    // of undo.
    if (m_isDragged)
        Undoer::GetInstancePtr()->AddUndo(before, "UndoDrag");
    return true;
}

void DragTool::Draw() const
{
    if (!m_hinge)
        return;
    Vec2 ends[2];
    m_hinge->GetWorldPoints(ends);
    if (IsRotating())
    {
        ends[0] = m_hinge->GetPos();
        ends[1] = m_pos;
    }
    DrawLineStrip({ends[0], ends[1]}, LineColor);
}

std::string_view DragTool::GetCursorName() const
{
    return IsInUse() ? "drag" : "";
}
}
