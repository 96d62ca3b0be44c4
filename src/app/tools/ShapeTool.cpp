#include "app/tools/ShapeTool.h"

#include "input/Key.h"

namespace app
{
ShapeTool::ShapeTool() = default;

ShapeTool::~ShapeTool() = default;

void ShapeTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    const math::Vec2 pos = ToWorld(event.GetPosition());
    if (!MayBeginShapeAt(pos))
        return;
    Disband();
    m_start = pos;
    SetInUse(true);
    Begin();
    event.SetHandled(true);
}

void ShapeTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    Stretch(ToWorld(event.GetPosition()));
    event.SetHandled(true);
}

void ShapeTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    Finish(ToWorld(event.GetPosition()));
    Disband();
    event.SetHandled(true);
}

void ShapeTool::Update(float)
{
    if (IsInUse())
        Stretch(GetMousePos());
}

bool ShapeTool::Disband()
{
    if (!IsInUse())
        return false;
    SetInUse(false);
    Forget();
    return true;
}
}
