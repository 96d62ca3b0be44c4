#include "app/tools/PanTool.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "input/Key.h"

namespace app
{
PanTool::PanTool() = default;

PanTool::~PanTool() = default;

void PanTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseRight, event))
        return;
    SetInUse(true);
    event.SetHandled(true);
}

void PanTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseRight, event))
        return;
    Scene::GetInstancePtr()->GetCamera()->PanView(event.GetDelta());
    event.SetHandled(true);
}

void PanTool::OnDragEnd(const input::DragEvent& event)
{
    if (IsFor(input::MouseRight, event) && Disband())
        event.SetHandled(true);
}

bool PanTool::Disband()
{
    const bool wasInUse = IsInUse();
    SetInUse(false);
    return wasInUse;
}

std::string_view PanTool::GetCursorName() const
{
    return IsInUse() ? "pan" : "";
}
}
