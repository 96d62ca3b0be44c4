#include "app/tools/MoveTool.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "input/Input.h"
#include "physics/Simulation.h"

namespace app
{
MoveTool::MoveTool() = default;

MoveTool::~MoveTool() = default;

void MoveTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event) || !SelectAt(ToWorld(event.GetPosition())))
        return;
    event.SetHandled(true);
    RememberScene();
    m_isCloning = input::Input::GetInstancePtr()->CheckModifier(input::ModCtrl);
    if (m_isCloning)
    {
        // The clones lie in what they were cloned from.
        physics::Simulation::GetInstancePtr()->m_running = false;
        Scene* scene = Scene::GetInstancePtr();
        scene->SetSelection(scene->CreateClone(scene->GetSelection()));
    }
    TakeInHand();
}

void MoveTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    TransformHeld(math::Mat2D::Translation(camera->GUIToWorldNormal(event.GetDelta())));
    event.SetHandled(true);
}

void MoveTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    LetGo();
    event.SetHandled(true);
}

const char* MoveTool::GetUndoName() const
{
    return m_isCloning ? "UndoClone" : "UndoMove";
}

bool MoveTool::Disband()
{
    if (IsInUse())
        BreakOff();
    return false;
}

std::string_view MoveTool::GetCursorName() const
{
    if (!IsInUse())
        return "";
    return m_isCloning ? "clone" : "move";
}
}
