#include "app/App.h"

#include "app/AppGUI.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/Constants.h"
#include "app/FrameTrail.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/WaterDrawing.h"
#include "app/entities/Entity.h"
#include "app/tools/Tools.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Contact.h"
#include "physics/Simulation.h"
#include "util/Callback.h"
#include "util/Color.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"

#include <SDL_keysym.h>

#include <algorithm>
#include <cmath>

using math::IsFinite;
using math::Vec2;
using math::Vec3;
using math::Vec4;

namespace app
{
namespace
{
/// What is built with a setting must have a size. The attribute keeps what was written.
float Positive(float value, float otherwise)
{
    return value > 0 && IsFinite(value) ? value : otherwise;
}
}

App::App()
    : m_language(this, "language", "English")
    , m_lineWidth(this, "lineWidth", 4)
    , m_pointSize(this, "pointSize", 4)
    , m_drawOBBs(this, "drawOBBs", false)
    , m_drawMapOBBs(this, "drawMapOBBs", false)
    , m_drawBCs(this, "drawBCs", false)
    , m_drawVertices(this, "drawVertices", false)
    , m_drawCollisions(this, "drawCollisions", false)
    , m_drawParticleCenters(this, "drawParticleCenters", false)
    , m_drawBodyCenters(this, "drawBodyCenters", false)
    , m_polyTCFactor(this, "polyTCFactor", Vec2(10, 10))
    , m_selectColor(this, "selectColor", Vec3(1, 0.5f, 0.5f))
    , m_fadeColor(this, "fadeColor", Vec3(0, 0, 0))
    , m_fadeScale(this, "fadeScale", Vec2(0.95f, 0.95f))
    , m_fadeTranslate(this, "fadeTranslate", Vec2(0, 0))
    , m_fadeRotate(this, "fadeRotate", 0)
    , m_minPointDist(this, "minPointDist", 0.2f)
    , m_maxPointDist(this, "maxPointDist", 0.5f)
    , m_DPI(this, "DPI", 86)
    , m_maxSPHSpawn(this, "maxSPHSpawn", 10000)
    , m_waterElongation(this, "waterElongation", 0.05f)
    , m_waterMaxElongation(this, "waterMaxElongation", 2)
    , m_metaCutoff(this, "metaCutoff", 0.5f)
    , m_borderWidth(this, "borderWidth", 0.1f)
    , m_maxUndo(this, "maxUndo", 25)
    , m_autosaveTime(this, "autosaveTime", 30)
    , m_chainDensityFactor(this, "chainDensityFactor", 20)
    , m_dragToolStrength(this, "dragToolStrength", 0.25f)
    , m_waterColor(this, "waterColor", Vec4(0.1f, 0.1f, 1, 0.7f))
    , m_simpleWater(this, "simpleWater", false)
    , m_waterFanceyFactor(this, "waterFanceyFactor", 10)
    , m_borders(this, "borders", true)
    , m_trail(std::make_unique<FrameTrail>())
    , m_water(std::make_unique<WaterDrawing>())
{
    SetReflectedName("App");
    SetFillOwner(true);
    m_language->AddChangeCallback(util::MakeCallback(&App::CreateGUI, this));
    AddVoidCmd("undo", [] { Undoer::GetInstancePtr()->Undo(); });
    AddVoidCmd("redo", [] { Undoer::GetInstancePtr()->Redo(); });
    AddCmd1("ChangeLanguage", [this](script::ObjectPtr name) { return ChangeLanguage(name); });

    // Until there is a window, and where there never is one, views are those of the window asked for.
    const core::Subsystem* subsystem = core::Subsystem::GetInstancePtr();
    gui::GUI::GetInstancePtr()->OnNewWindowSize(subsystem->GetWidth(), subsystem->GetHeight());

    m_background = QUIB_NEW Background;
    AddComponent(m_background);
    // Before the interface, which works on it; its camera asks for the size of this component.
    Scene* scene = Scene::GetInstancePtr();
    Tools::GetInstancePtr();
    Undoer::Create();
    m_appGUI = QUIB_NEW AppGUI;
    AddComponent(m_appGUI);
    scene->GetCamera()->Reset();
}

App::~App() = default;

script::ObjectPtr App::ChangeLanguage(const script::ObjectPtr& name)
{
    m_language = script::ObjectToValue<util::String>(name);
    return QUIB_NEW script::Void;
}

void App::CreateGUI()
{
    m_appGUI->Rebuild();
}

unsigned long App::GetMaxUndo() const
{
    // A script's integer below 0 arrives as a huge number: it would be no limit.
    return static_cast<unsigned long>(std::max(0, static_cast<int>(m_maxUndo.Get())));
}

void App::AddOnMaxUndoChange(const util::CallbackPtr& callback)
{
    m_maxUndo->AddChangeCallback(callback);
}

void App::OnShutdown()
{
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    // The last copy that there is goes only when there is a better one.
    if (m_appGUI->SaveSceneAs(Scene_Last, true))
        files->EraseFileIfPossible(files->SceneDir() + Scene_Autosave);
    else
        Log(logging::LogError, "Failed to save scene to " + files->SceneDir() + Scene_Last);
}

void App::SetFirstTimeRunning()
{
    m_firstTimeRunning = true;
    m_appGUI->SetUpDefaults();
}

void App::Update(float dt)
{
    QUIB_PROFILE("App::Update");
    Component::Update(dt);

    Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    if (dt > 0)
    {
        // As this component saw them: keys that move the cursor in a text do not pan.
        const float x = float(IsKeyDown(SDLK_RIGHT)) - float(IsKeyDown(SDLK_LEFT));
        const float y = float(IsKeyDown(SDLK_DOWN)) - float(IsKeyDown(SDLK_UP));
        if (x != 0 || y != 0)
            camera->PanView(Vec2(x * dt * -400, y * dt * -400));
    }

    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    QUIB_PASS_ON(simulation->Update(dt));
    QUIB_PASS_ON(Scene::GetInstancePtr()->Update(dt));
    camera->Update(dt);

    // Handles keep contacts from being used again, so they are held only while somebody looks.
    if (m_drawCollisions)
        m_contacts = simulation->GetContacts();
    else
        m_contacts.clear();

    CODE_ASSERT(IsFinite(GetMousePos()));
}

Vec2 App::GetMousePos() const
{
    return Scene::GetInstancePtr()->GetCamera()->GUIToWorld(
        input::Input::GetInstancePtr()->GetMousePos());
}

float App::GetPixelSize() const
{
    return Scene::GetInstancePtr()->GetCamera()->GUIToWorld()[0][0] /
           gui::GUI::GetInstancePtr()->GetScale();
}

float App::GetScreenCM() const
{
    return GetPixelSize() * Positive(m_DPI, 86) / 2.54f;
}

float App::GetChainDensityFactor() const
{
    return Positive(m_chainDensityFactor, 20);
}

float App::GetDefaultJointSize() const
{
    return GetScreenCM() * 0.66667f;
}

float App::GetObjectBorderWidth() const
{
    return GetScreenCM() * m_borderWidth;
}

float App::GetMinimumPointDist() const
{
    return GetScreenCM() * m_minPointDist;
}

float App::GetMaximumPointDist() const
{
    return GetScreenCM() * m_maxPointDist;
}

Vec4 App::GetBorderColor(const Entity* entity) const
{
    if (entity->IsSelected())
        return entity->IsMouseOver() ? Vec4(0.8f, 0.8f, 0.8f, 1) : Vec4(1, 1, 1, 1);
    if (entity->IsMouseOver())
        return Vec4(0.2f, 0.2f, 0.2f, 1);
    const Vec4& color = entity->GetColor4();
    return Vec4(color.XYZ() * 0.5f, color.w);
}

Vec3 App::RandomColor3()
{
    float lightness = std::cbrt(m_random.GetUniform()) * 0.5f;
    if (m_random.GetUniformInt(0, 2) == 1)
        lightness = 1 - lightness;
    const Vec2 p = m_random.GetPointInCircle(1);
    const float hue = p == Vec2() ? 0 : std::atan2(p.y, p.x) * 180 / math::PIf;
    return util::HSL2RGB(hue, p.Length(), lightness);
}

Vec4 App::RandomEntityColor4()
{
    const Vec3 sky = m_background->GetSkyColor().XYZ();
    for (;;)
    {
        const Vec3 color = RandomColor3();
        // Written so that a sky that is no number ends the search too.
        if (util::RGBIntensity(color) >= 0.05f && !(math::Distance(color, sky) < 0.1f))
            return Vec4(color, 1);
    }
}
}
