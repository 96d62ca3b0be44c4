#include "app/AppGUI.h"

#include "app/App.h"
#include "app/Constants.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/Scene.h"
#include "app/SceneLoader.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/tools/Tools.h"
#include "app/widgets/Popup.h"
#include "core/Subsystem.h"
#include "input/Input.h"
#include "os/Platform.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <boost/format.hpp>

#include <algorithm>
#include <utility>

namespace app
{
const util::String SceneEnding = ".qib";

const char* const EntityMenuID = "EntityOptions";
const char* const WaterMenuID = "WaterMenu";
const char* const BackgroundMenuID = "BackgroundMenu";

namespace
{
const char* const UnnamedScene = "unnamed.qib";

/// "Options for Box", as the language puts it.
util::String MakePopupTitle(const Group& group)
{
    const util::String pattern = Language::GetInstancePtr()->Get("PopupTitle");
    const util::String name = Language::GetInstancePtr()->Get(group.GetDescriptiveName());
    if (pattern.find("%1%") == util::String::npos)
        return pattern + " " + name;
    boost::format format;
    // A translator's slip is no reason to show no menu.
    format.exceptions(boost::io::no_error_bits);
    format.parse(pattern);
    return (format % name).str();
}

/// The name for a scene that has none. One that was saved under it before, perhaps in another session, gets
/// a name of its own.
util::String TakeUnnamed()
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    const util::String path = MakeLongFileName(UnnamedScene);
    if (!files->FileExists(path))
        return UnnamedScene;
    util::String other;
    for (int i = 1; other.empty() || files->FileExists(MakeLongFileName(other)); ++i)
        other = "unnamed" + util::ToString(i) + ".qib";
    files->RenameFile(path, MakeLongFileName(other));
    if (files->FileExists(path))
        return other; // the log says why
    Log(logging::LogWarning,
        "What was saved in " + path + " is in " + MakeLongFileName(other) + " now");
    return UnnamedScene;
}
}

AppGUI::AppGUI()
    : m_zoomFactor(this, "zoomFactor", 0.2f)
    , m_drawInside(this, "drawInside", false)
    , m_leftClickMenus(this, "leftClickMenus", false)
    , m_drawHingesWhenRunning(this, "drawHingesWhenRunning", true)
    , m_trapUser(this, "trapUser", false)
    , m_simpleMode(this, "simpleMode", false)
    , m_popupHolder(QUIB_NEW gui::Component)
    , m_windowedSize(core::WindowParams().size)
    , m_lastAutosave(util::Timer::GetCurrentTime())
{
    SetReflectedName("GUI");
    SetFillOwner(true);
    AddCmd("takeSnapshot", &AppGUI::TakeSnapshot);
    m_popupHolder->SetReflectedName("Popup");
    AddComponent(m_popupHolder);
}

AppGUI::~AppGUI() = default;

void AppGUI::Update(float dt)
{
    QUIB_PROFILE("AppGUI::Update");
    Component::Update(dt);
    // A panel has nothing to show once its entities are gone.
    m_widgets.erase(std::remove_if(m_widgets.begin(), m_widgets.end(),
                                   [](const WidgetPtr& widget)
                                   { return widget->GetGroup() && widget->GetGroup()->IsEmpty(); }),
                    m_widgets.end());

    if (m_autosaves &&
        util::Timer::GetCurrentTime() - m_lastAutosave > App::GetInstancePtr()->GetAutosaveTime())
    {
        script::Parser::GetInstancePtr()->SaveConfig(
            util::FileSystem::GetInstancePtr()->ConfigDir() + CONFIG_AUTOSAVE);
        SaveSceneAs(Scene_Autosave, true);
        // Read again: what the saving cost is no waiting.
        m_lastAutosave = util::Timer::GetCurrentTime();
    }
    Tools::GetInstancePtr()->Update(dt);
}

const GroupPtr& AppGUI::GetSelection() const
{
    return Scene::GetInstancePtr()->GetSelection();
}

math::Vec2 AppGUI::GetMousePos() const
{
    return App::GetInstancePtr()->GetMousePos();
}

bool AppGUI::LoadScene(util::String name, bool autosave)
{
    std::replace(name.begin(), name.end(), '\\', '/');
    const util::String path = MakeLongFileName(name);
    const util::SharedPtr<SceneLoader> loader = QUIB_NEW SceneLoader(false, path);
    FileInfo* info = FileInfo::GetInstancePtr();
    const util::String nameBefore = info->GetFileName();
    if (!autosave)
    {
        info->SetFileName(name);
        ClosePopup();
    }
    Undoer* undoer = Undoer::GetInstancePtr();
    undoer->Do(loader);
    // Deliberate: a scene that was loaded runs.
    undoer->Do(QUIB_NEW SimStart);
    // The next save must write neither over a file that is there and could not be read, nor what is left
    // of it over that of the scene before.
    if (!loader->IsLoaded() && util::FileSystem::GetInstancePtr()->FileExists(path))
        info->SetFileName(loader->HasCleared() ? "" : nameBefore);
    return loader->IsLoaded();
}

bool AppGUI::SaveSceneAs(const util::String& name, bool autosave)
{
    if (!autosave)
    {
        FileInfo::GetInstancePtr()->SetFileName(name);
        ClosePopup();
    }
    const util::String path = MakeLongFileName(name);
    try
    {
        util::FileSystem::GetInstancePtr()->WriteFile(
            path, Serializer::GetInstancePtr()->SerializeScene());
        if (!autosave)
            Log(logging::LogVerbose, "Scene saved to " + path);
        return true;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogInfo, util::String("Error: ") + e.what() + "\n");
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogInfo, "Fail\n");
    }
    // The line above reaches the log file only. Who saved by name hears of the loss.
    if (!autosave)
        Log(logging::LogError, "Failed to save scene to " + path);
    return false;
}

void AppGUI::OnSceneSave()
{
    const util::String name = FileInfo::GetInstancePtr()->GetFileName();
    SaveSceneAs(name.empty() ? TakeUnnamed() : name, false);
}

void AppGUI::OnSceneLoad()
{
    const gui::ComponentPtr dialog = QUIB_NEW Popup("LoadSceneMenu", "");
    PositionInCenter(*dialog);
    SetPopup(dialog);
}

void AppGUI::TogglePlaying()
{
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    if (simulation->m_running)
        simulation->m_running = false;
    else
        Undoer::GetInstancePtr()->Do(QUIB_NEW SimStart);
}

void AppGUI::TakeSnapshot()
{
    Undoer::GetInstancePtr()->Do(QUIB_NEW SnapshotAction);
}

void AppGUI::EraseWater()
{
    Scene::GetInstancePtr()->EraseWater();
}

void AppGUI::InvertSelection()
{
    ClosePopup();
    const GroupPtr others = QUIB_NEW Group;
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
        if (!GetSelection()->Contains(entity))
            others->Add(entity);
    GetSelection()->Set(others);
}

void AppGUI::AssignToEmptyGroup(const GroupPtr& entities)
{
    if (entities->IsEmpty())
        return;
    BreakOffDrag();
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    Scene::GetInstancePtr()->AddGroup(QUIB_NEW Group(entities->GetEntities()));
    Undoer::GetInstancePtr()->AddUndo(before, "UndoGroupAssignment");
}

void AppGUI::ToggleFullscreen()
{
    core::Subsystem* subsystem = core::Subsystem::GetInstancePtr();
    core::WindowParams params = subsystem->GetConfigParams();
    params.fullscreen = !params.fullscreen;
    if (params.fullscreen)
    {
        m_windowedSize = params.size;
        // No change of the screen's mode, and so nothing to bring back after a crash.
        os::GetDisplaySize(params.size);
    }
    else
        params.size = m_windowedSize;
    subsystem->SetConfigParams(params);
    subsystem->ApplyParserConfig();
}

void AppGUI::OnSliderBegin()
{
    m_beforeSlider = Snapshot::TakeSnapshot();
}

void AppGUI::OnSliderEnd()
{
    if (const SnapshotPtr before = std::exchange(m_beforeSlider, nullptr))
        Undoer::GetInstancePtr()->AddUndo(before, "UndoSliderChange");
}

void AppGUI::OpenMenu()
{
    gui::ComponentPtr menu;
    if (!GetSelection()->IsEmpty())
        menu = QUIB_NEW Popup(EntityMenuID, MakePopupTitle(*GetSelection()));
    else if (Scene::GetInstancePtr()->IsWaterAt(GetMousePos()))
        menu = QUIB_NEW Popup(WaterMenuID, "");
    else
        menu = QUIB_NEW Popup(BackgroundMenuID, "");
    PositionAtMouse(*menu);
    SetPopup(menu);
}

void AppGUI::SetPopup(const gui::ComponentPtr& popup)
{
    ClosePopup();
    m_popupHolder->AddComponent(popup);
}

void AppGUI::ClosePopup()
{
    m_popupHolder->RemoveAllComponents();
}

gui::ComponentPtr AppGUI::GetPopup() const
{
    const std::vector<gui::ComponentPtr>& popups = m_popupHolder->GetComponents();
    return popups.empty() ? nullptr : popups.front();
}

void AppGUI::PositionAtMouse(gui::Component& component) const
{
    Place(component, input::Input::GetInstancePtr()->GetMousePos());
}

void AppGUI::PositionInCenter(gui::Component& component) const
{
    Place(component, (GetInnerSize() - component.GetOuterSize()) * 0.5f);
}

void AppGUI::Place(gui::Component& component, const math::Vec2& pos) const
{
    const math::Vec2 room = GetInnerSize() - component.GetOuterSize();
    // What does not fit shows its top left.
    component.SetOuterPos(math::Vec2(std::max(0.0f, std::min(pos.x, room.x)),
                                     std::max(0.0f, std::min(pos.y, room.y))));
}

void AppGUI::OnFormChange()
{
    Component::OnFormChange();
    // In a smaller window it must still be in reach.
    if (const gui::ComponentPtr popup = m_popupHolder ? GetPopup() : nullptr)
        Place(*popup, popup->GetOuterPos());
}

void AppGUI::Rebuild()
{
    ClosePopup();
}

WidgetPtr AppGUI::GetWidget(const util::String& id) const
{
    const auto found =
        std::find_if(m_widgets.begin(), m_widgets.end(),
                     [&id](const WidgetPtr& widget) { return widget->GetID() == id; });
    return found != m_widgets.end() ? *found : nullptr;
}

void AppGUI::RemoveWidget(const WidgetPtr& widget)
{
    m_widgets.erase(std::remove(m_widgets.begin(), m_widgets.end(), widget), m_widgets.end());
}

void AppGUI::RemoveGroupWidgets()
{
    m_widgets.erase(std::remove_if(m_widgets.begin(), m_widgets.end(),
                                   [](const WidgetPtr& widget)
                                   { return bool(widget->GetGroup()); }),
                    m_widgets.end());
}

void AppGUI::PostponeAutosave()
{
    m_lastAutosave = util::Timer::GetCurrentTime();
}

util::String AppGUI::MakeShortFileName(util::String name)
{
    if (util::iends_with(name, SceneEnding))
        name.erase(name.size() - SceneEnding.size());
    const util::String folder = util::FileSystem::GetInstancePtr()->SceneDir();
    if (util::starts_with(name, folder))
        name.erase(0, folder.size());
    return name;
}

util::String MakeLongFileName(util::String name)
{
    if (!util::iends_with(name, SceneEnding))
        name += SceneEnding;
    if (name.find('/') == util::String::npos)
        name = util::FileSystem::GetInstancePtr()->SceneDir() + name;
    return name;
}
}
