#include "app/tools/AttachTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/entities/Entity.h"
#include "gui/GUI.h"
#include "input/Key.h"
#include "util/Timer.h"

namespace app
{
AttachTool::AttachTool(const char* undoName)
    : m_undoName(undoName)
{
}

AttachTool::~AttachTool() = default;

void AttachTool::OnClick(const input::ClickEvent& event)
{
    if (!IsFor(input::MouseLeft, event) || event.GetClickCount() != 1)
        return;
    const math::Vec2 pos = ToWorld(event.GetPosition());
    if (!Scene::GetInstancePtr()->GetEntityAt(pos))
        return;
    event.SetHandled(true);
    const double now = util::Timer::GetCurrentTime();
    if (IsSecondOfTwo(event.GetPosition(), now))
        return;
    const EntityPtr entity = Make(pos, App::GetInstancePtr()->GetDefaultJointSize());
    if (!entity)
        return;
    AddEntityUndoable(entity, m_undoName);
    m_last = entity;
    m_lastTime = now;
    m_lastPos = event.GetPosition();
}

bool AttachTool::IsSecondOfTwo(const math::Vec2& pos, double time) const
{
    // Who has undone it meanwhile means another one.
    const EntityPtr last(m_last.GetUnlocked());
    if (!last || !Scene::GetInstancePtr()->HasEntity(last))
        return false;
    const gui::GUI* gui = gui::GUI::GetInstancePtr();
    return time - m_lastTime <= gui->GetClickTimeTolerance() &&
           math::Distance(pos, m_lastPos) <= gui->GetClickTolerance();
}
}
