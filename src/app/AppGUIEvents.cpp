// What the AppGUI makes of input: which tool gets it, and the shortcuts.
#include "app/AppGUI.h"

#include "app/Action.h"
#include "app/App.h"
#include "app/Camera.h"
#include "app/EntityActions.h"
#include "app/FileInfo.h"
#include "app/PasteAction.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/FiniteGeomEntity.h"
#include "app/tools/BrushTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/Tools.h"
#include "core/Subsystem.h"
#include "input/Input.h"
#include "physics/Simulation.h"

#include <SDL_keysym.h>

#include <exception>
#include <utility>

using math::Vec2;

namespace app
{
namespace
{
Vec2 ToWorld(const Vec2& pos)
{
    return Scene::GetInstancePtr()->GetCamera()->GUIToWorld(pos);
}

/// The one that handles the selected entity under the mouse in place of the sketch tool.
ToolPtr ToolForSelected(const Tools& tools, const EntityPtr& entity)
{
    if (physics::Simulation::GetInstancePtr()->m_running && entity->AsFiniteGeomEntity() &&
        Scene::GetInstancePtr()->GetSelection()->GetEntities().size() == 1)
        return tools.Get<DragTool>();
    return tools.Get<MoveTool>();
}

/// What a drag means that no tool wants; null for nothing.
ToolPtr GestureTool(const Tools& tools, int button, bool isOnEntity)
{
    if (button == input::MouseLeft)
        return isOnEntity ? ToolPtr(tools.Get<MoveTool>()) : ToolPtr(tools.Get<BrushTool>());
    if (button == input::MouseRight)
        return isOnEntity ? ToolPtr(tools.Get<RotateTool>()) : ToolPtr(tools.Get<PanTool>());
    return nullptr;
}
}

/// What a tool throws costs its gesture, not the program. @return whether it went well
template<typename Call>
bool AppGUI::Try(Call call)
{
    try
    {
        call();
        return true;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Tool failed: ") + e.what());
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogError, "Tool failed: unknown exception");
    }
    return false;
}

template<typename Event>
void AppGUI::HandTo(const ToolPtr& tool, const Event& event,
                    void (input::InputListener::*handler)(const Event&))
{
    if (Try([&] { (tool.get()->*handler)(event); }))
        return;
    Try([&] { tool->Disband(); });
    // Nor is it a matter for another one.
    event.SetHandled(true);
}

void AppGUI::OnDragBegin(const input::DragEvent& event)
{
    Component::OnDragBegin(event);
    m_dragTool = nullptr;
    if (event.IsHandled())
        return;
    Tools* tools = Tools::GetInstancePtr();
    const Scene* scene = Scene::GetInstancePtr();
    const Vec2 pos = ToWorld(event.GetPosition());

    if (tools->GetTool() == tools->Get<SketchTool>() && event.GetButton() == input::MouseLeft)
        if (const EntityPtr entity = scene->GetEntityAt(pos); scene->IsSelected(entity))
            Try([&] { tools->SetActive(ToolForSelected(*tools, entity)); });
    m_dragTool = tools->GetTool();
    HandTo(m_dragTool, event, &InputListener::OnDragBegin);
    if (event.IsHandled())
        return;

    const ToolPtr tool = GestureTool(*tools, event.GetButton(), bool(scene->GetEntityAt(pos)));
    if (!tool)
        return;
    Try([&] { tools->SetActive(tool); });
    m_dragTool = tool;
    HandTo(tool, event, &InputListener::OnDragBegin);
}

void AppGUI::OnDrag(const input::DragEvent& event)
{
    Component::OnDrag(event);
    const ToolPtr tool = m_dragTool;
    if (tool && !event.IsHandled())
        HandTo(tool, event, &InputListener::OnDrag);
}

void AppGUI::OnDragEnd(const input::DragEvent& event)
{
    Component::OnDragEnd(event);
    if (const ToolPtr tool = std::exchange(m_dragTool, nullptr))
    {
        if (!event.IsHandled())
            HandTo(tool, event, &InputListener::OnDragEnd);
        else
            // It will not hear of the end.
            Try([&] { tool->Disband(); });
    }
    Tools* tools = Tools::GetInstancePtr();
    if (tools->HasActive())
        Try([&] { tools->SetActive(nullptr); });
}

void AppGUI::OnClick(const input::ClickEvent& event)
{
    Component::OnClick(event);
    if (event.IsHandled())
        return;
    HandTo(Tools::GetInstancePtr()->GetTool(), event, &InputListener::OnClick);
    if (event.IsHandled())
        return;

    Scene* scene = Scene::GetInstancePtr();
    const Vec2 pos = ToWorld(event.GetPosition());
    const bool isLeft = event.GetButton() == input::MouseLeft;
    // Deliberate: no click counts 2 as long as a click need not wait for a second one.
    if (event.GetButton() == input::MouseRight ||
        (isLeft && (event.GetClickCount() == 2 || m_leftClickMenus)))
    {
        if (const EntityPtr entity = scene->GetEntityAt(pos); entity && !scene->IsSelected(entity))
            scene->SelectAt(pos);
        OpenMenu();
        event.SetHandled(true);
    }
    else if (isLeft && event.GetClickCount() == 1)
    {
        scene->SelectAt(pos);
        ClosePopup();
        event.SetHandled(true);
    }
}

void AppGUI::OnKeyEvent(const input::KeyEvent& event)
{
    Component::OnKeyEvent(event);
    const bool isPress = event.IsDown() && !event.IsRepeat();
    if (isPress && event.GetKey() == m_shortcutKey)
        m_shortcutKey = 0;
    if (event.IsHandled())
        return;
    const bool isWheel = event.IsDown() && OnWheel(event);
    if (isWheel || (event.IsDown() && OnShortcut(event)))
    {
        if (isPress && !isWheel)
            m_shortcutKey = event.GetKey();
        event.SetHandled(true);
        return;
    }
    Tools* tools = Tools::GetInstancePtr();
    Try([&] { tools->OnKeyEvent(event); });
    if (!event.IsHandled())
        HandTo(tools->GetTool(), event, &InputListener::OnKeyEvent);
    // One that is lent may hide that of the gesture, which must hear of Shift all the same.
    if (!event.IsHandled() && m_dragTool && m_dragTool != tools->GetTool())
        HandTo(m_dragTool, event, &InputListener::OnKeyEvent);
}

bool AppGUI::OnWheel(const input::KeyEvent& event)
{
    const bool isUp = event.GetKey() == input::MouseWheelUp;
    if (!isUp && event.GetKey() != input::MouseWheelDown)
        return false;
    Scene* scene = Scene::GetInstancePtr();
    Camera* camera = scene->GetCamera().get();
    if (event.IsCtrlDown())
        isUp ? Redo() : Undo();
    else if (event.IsShiftDown())
        isUp ? scene->MoveToFront(GetSelection()) : scene->MoveToBack(GetSelection());
    else
    {
        const bool isZoomIn = isUp == (m_zoomFactor >= 0);
        // At the end of its range the view does not creep.
        if (camera->GetZoom() != (isZoomIn ? Camera::GetMaxZoom() : Camera::GetMinZoom()))
            camera->ZoomView(isUp ? 1 : -1, event.GetPosition());
    }
    return true;
}

/// @return whether the key is one, whatever it did
bool AppGUI::OnShortcut(const input::KeyEvent& event)
{
    static const struct
    {
        int key;
        bool withCtrl;
        bool repeats; // while the key is held
        void (AppGUI::*act)();
    } shortcuts[] = {
        {SDLK_SPACE, false, false, &AppGUI::TogglePlaying},
        {SDLK_c, true, false, &AppGUI::Copy},
        {SDLK_x, true, false, &AppGUI::Cut},
        {SDLK_v, true, false, &AppGUI::Paste},
        {SDLK_z, true, true, &AppGUI::Undo},
        {SDLK_y, true, true, &AppGUI::Redo},
        {SDLK_a, true, false, &AppGUI::SelectAll},
        {SDLK_s, true, false, &AppGUI::OnSceneSave},
        {SDLK_o, true, false, &AppGUI::OnSceneLoad},
        {SDLK_q, true, false, &AppGUI::Quit},
        {SDLK_g, true, false, &AppGUI::GroupSelection},
        {SDLK_u, true, false, &AppGUI::UngroupSelection},
        {SDLK_DELETE, false, false, &AppGUI::EraseSelection},
    };
    // The repeats of a key are for whom its press was for. A held Escape must not break off what begins next.
    if (event.IsRepeat() && event.GetKey() != m_shortcutKey)
        return false;
    if (event.GetKey() == SDLK_ESCAPE)
        return event.IsRepeat() || OnEscape();
    for (const auto& shortcut : shortcuts)
        if (event.GetKey() == shortcut.key && (!shortcut.withCtrl || event.IsCtrlDown()))
        {
            if (shortcut.repeats || !event.IsRepeat())
                (this->*shortcut.act)();
            return true;
        }
    return event.IsRepeat(); // Ctrl was let go first
}

/// A gesture that goes on over an edit would make its step of undo after that, from a state before it.
void AppGUI::BreakOffDrag()
{
    if (m_dragTool)
        Try([&] { m_dragTool->Disband(); });
}

bool AppGUI::OnEscape()
{
    bool isBrokenOff = false;
    const ToolPtr tool = m_dragTool ? m_dragTool : Tools::GetInstancePtr()->GetTool();
    Try([&] { isBrokenOff = tool->Disband(); });
    if (isBrokenOff)
        return true;
    if (!GetPopup())
        return false;
    ClosePopup();
    return true;
}

void AppGUI::Undo()
{
    if (Undoer::GetInstancePtr()->GetNextUndo())
        BreakOffDrag();
    Undoer::GetInstancePtr()->Undo();
}

void AppGUI::Redo()
{
    if (Undoer::GetInstancePtr()->GetNextRedo())
        BreakOffDrag();
    Undoer::GetInstancePtr()->Redo();
}

void AppGUI::Copy()
{
    if (!GetSelection()->IsEmpty())
        input::Input::GetInstancePtr()->SetClipboardText(
            Serializer::GetInstancePtr()->SerializeQuiblet(GetSelection()));
}

void AppGUI::Cut()
{
    Copy();
    EraseSelection();
}

void AppGUI::Paste()
{
    const util::String text = input::Input::GetInstancePtr()->GetClipboardText();
    if (text.empty())
        return;
    BreakOffDrag();
    const util::SharedPtr<PasteAction> paste = QUIB_NEW PasteAction;
    Scene* scene = Scene::GetInstancePtr();
    try
    {
        const FileTextsKept kept;
        // Deliberate: whatever script it is, it is run.
        scene->SetSelection(Serializer::GetInstancePtr()->Deserialize(text));
        MoveToMouse(GetSelection());
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("An error occurred while pasting: ") + e.what());
        GetSelection()->Clear();
        return;
    }
    paste->NoteResult();
    Undoer::GetInstancePtr()->AddUndo(paste);
}

void AppGUI::EraseSelection()
{
    if (GetSelection()->IsEmpty())
        return;
    BreakOffDrag();
    Undoer::GetInstancePtr()->Do(QUIB_NEW EraseEntities(GetSelection()));
}

void AppGUI::SelectAll()
{
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        GetSelection()->Add(entity);
}

void AppGUI::GroupSelection()
{
    AssignToEmptyGroup(GetSelection());
}

void AppGUI::UngroupSelection()
{
    if (GetSelection()->IsEmpty())
        return;
    BreakOffDrag();
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    Scene* scene = Scene::GetInstancePtr();
    for (const GroupPtr& group : scene->GetGroups())
    {
        if (group == GetSelection())
            continue;
        group->RemoveAll(GetSelection());
        if (group->IsEmpty())
            scene->RemoveGroup(group);
    }
    Undoer::GetInstancePtr()->AddUndo(before, "UndoGroupRemoval");
}

void AppGUI::Quit()
{
    core::Subsystem::GetInstancePtr()->Exit();
}
}
