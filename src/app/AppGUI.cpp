#include "app/AppGUI.h"

#include "app/App.h"
#include "app/Camera.h"
#include "app/Constants.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/SceneLoader.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "input/Input.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <SDL_keysym.h>
#include <SDL_mouse.h>

#include <algorithm>

namespace app
{
const util::String SceneEnding = ".qib";

namespace
{
const int WheelUpKey = input::FirstMouseKey + SDL_BUTTON_WHEELUP;
const int WheelDownKey = input::FirstMouseKey + SDL_BUTTON_WHEELDOWN;
}

AppGUI::AppGUI()
    : m_zoomFactor(this, "zoomFactor", 0.2f)
    , m_drawInside(this, "drawInside", false)
    , m_leftClickMenus(this, "leftClickMenus", false)
    , m_drawHingesWhenRunning(this, "drawHingesWhenRunning", true)
    , m_lastAutosave(util::Timer::GetCurrentTime())
{
    SetReflectedName("GUI");
    SetFillOwner(true);
    AddCmd("takeSnapshot", &AppGUI::TakeSnapshot);
}

void AppGUI::Update(float dt)
{
    util::ScopeProfiler profile("AppGUI::Update");
    Component::Update(dt);
    // A panel has nothing to show once its entities are gone.
    m_widgets.erase(std::remove_if(m_widgets.begin(), m_widgets.end(),
                                   [](const WidgetPtr& widget)
                                   { return widget->GetGroup() && widget->GetGroup()->IsEmpty(); }),
                    m_widgets.end());

    if (util::Timer::GetCurrentTime() - m_lastAutosave > App::GetInstancePtr()->GetAutosaveTime())
    {
        script::Parser::GetInstancePtr()->SaveConfig(
            util::FileSystem::GetInstancePtr()->ConfigDir() + CONFIG_AUTOSAVE);
        SaveSceneAs(Scene_Autosave, true);
        // Read again: what the saving cost is no waiting.
        m_lastAutosave = util::Timer::GetCurrentTime();
    }
}

void AppGUI::OnKeyEvent(const input::KeyEvent& event)
{
    Component::OnKeyEvent(event);
    const bool isUp = event.GetKey() == WheelUpKey;
    if (event.IsHandled() || !event.IsDown() || (!isUp && event.GetKey() != WheelDownKey))
        return;
    // With these the wheel does not mean the view.
    for (int modifier : {SDLK_LCTRL, SDLK_RCTRL, SDLK_LSHIFT, SDLK_RSHIFT})
        if (input::Input::GetInstancePtr()->IsKeyDown(modifier))
            return;
    // At the end of its range the view does not creep.
    Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    if (camera->GetZoom() == (isUp ? Camera::GetMaxZoom() : Camera::GetMinZoom()))
        return;
    camera->ZoomView(isUp ? 1 : -1, event.GetPosition());
    event.SetHandled(true);
}

bool AppGUI::LoadScene(util::String name, bool autosave)
{
    std::replace(name.begin(), name.end(), '\\', '/');
    const util::SharedPtr<SceneLoader> loader = QUIB_NEW SceneLoader(false, MakeLongFileName(name));
    if (!autosave)
        FileInfo::GetInstancePtr()->SetFileName(name);
    Undoer* undoer = Undoer::GetInstancePtr();
    undoer->Do(loader);
    // Deliberate: a scene that was loaded runs.
    undoer->Do(QUIB_NEW SimStart);
    return loader->IsLoaded();
}

void AppGUI::SaveSceneAs(const util::String& name, bool autosave)
{
    if (!autosave)
        FileInfo::GetInstancePtr()->SetFileName(name);
    const util::String path = MakeLongFileName(name);
    try
    {
        util::FileSystem::GetInstancePtr()->WriteFile(
            path, Serializer::GetInstancePtr()->SerializeScene());
        if (!autosave)
            Log(logging::LogVerbose, "Scene saved to " + path);
        return;
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

void AppGUI::Rebuild()
{
    RemoveAllComponents();
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
