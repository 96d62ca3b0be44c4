#include "app/widgets/Popup.h"

#include "gui/LookAndFeel.h"

using math::Vec2;

namespace app
{
namespace
{
const Vec2 EmptySize(160, 120); // GUI units
}

Popup::Popup(const util::String& id, const util::String& title)
    : m_id(id)
    , m_title(title)
{
    SetReflectedName(id);
    SetBorder(gui::LookAndFeel::GetDefault()->GetWindowBorder());
    SetOuterSize(EmptySize);
}

bool Popup::IsInside(const Vec2& pos) const
{
    return GetOuterBBLocal().Contains(GUIToLocal(pos));
}

void Popup::OnDragBegin(const input::DragEvent& event)
{
    Component::OnDragBegin(event);
    if (IsInside(event.GetPosition()))
        event.SetHandled(true);
}

void Popup::OnClick(const input::ClickEvent& event)
{
    Component::OnClick(event);
    if (IsInside(event.GetPosition()))
        event.SetHandled(true);
}
}
