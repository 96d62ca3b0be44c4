#include "app/tools/Tool.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/Entity.h"
#include "input/Input.h"
#include "logging/Log.h"
#include "util/Failures.h"

#include <SDL_keysym.h>

#include <cmath>

namespace app
{
Tool::Tool()
    : InputListener(50)
{
}

Tool::~Tool() = default;

void Tool::Update(float) {}

void Tool::Draw() const {}

bool Tool::Disband()
{
    return false;
}

std::string_view Tool::GetCursorName() const
{
    return "";
}

void Tool::OnKeyEvent(const input::KeyEvent& event)
{
    InputListener::OnKeyEvent(event);
    // A held key must not break off what begins next.
    const bool isPress = event.IsDown() && !event.IsRepeat();
    if (!event.IsHandled() && isPress && event.GetKey() == SDLK_ESCAPE && Disband())
        event.SetHandled(true);
}

math::Vec2 Tool::ToWorld(const math::Vec2& pos)
{
    return Scene::GetInstancePtr()->GetCamera()->GUIToWorld(pos);
}

math::Vec2 Tool::GetMousePos()
{
    return App::GetInstancePtr()->GetMousePos();
}

bool Tool::IsShiftDown()
{
    return input::Input::GetInstancePtr()->CheckModifier(input::ModShift) != 0;
}

float Tool::SnapAngle(float angle)
{
    const float step = 0.2617994f;
    return std::floor(angle / step + 0.5f) * step;
}

bool Tool::MayBeginShapeAt(const math::Vec2& pos)
{
    return App::GetInstancePtr()->GetAppGUI()->GetDrawInside() ||
           !Scene::GetInstancePtr()->GetEntityAt(pos);
}

void Tool::AddEntityUndoable(const EntityPtr& entity, const char* name)
{
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    Scene::GetInstancePtr()->AddEntity(entity);
    Undoer::GetInstancePtr()->AddUndo(before, name);
}

void Tool::LogCaught(const char* location)
{
    try
    {
        throw;
    }
    catch (std::exception& e)
    {
        CatchException(e, location);
        Log(logging::LogInfo, util::String("Error: ") + e.what() + "\n");
    }
    catch (...)
    {
        CatchException(location);
        Log(logging::LogInfo, "Fail\n");
    }
}
}
