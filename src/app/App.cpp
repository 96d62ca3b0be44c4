#include "app/App.h"

#include "app/AppGUI.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/Constants.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/WaterDrawing.h"
#include "app/entities/Entity.h"
#include "app/tools/Tools.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "math/Matrix.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/Callback.h"
#include "util/Color.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"
#include "util/StaticProfilerData.h"

#include <GL/gl.h>
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

/// GL takes anything else for an error, and no setting may end the program. The attribute keeps what
/// was written.
float HoldAboveZero(float pixels)
{
    const float smallest = 0.01f;
    // Written so that a NaN is held too.
    return pixels > smallest ? pixels : smallest;
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
    m_appGUI->SaveSceneAs(Scene_Last, true);
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    files->EraseFileIfPossible(files->SceneDir() + Scene_Autosave);
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

void App::DrawComp() const
{
    Component::DrawComp();
    QUIB_PROFILE("App::DrawComp");
    const Scene* scene = Scene::GetInstancePtr();
    const Camera* camera = scene->GetCamera().get();
    const math::BoundingBox view(camera->GUIToWorld(Vec2()), camera->GUIToWorld(GetInnerSize()));
    {
        QUIB_PROFILE("Culling");
        m_visibleEntities.clear();
        for (const auto& entity : scene->GetEntities())
            // One that is shown elsewhere than it lies can be anywhere.
            if (entity->IsInView(view) || entity->GetDrawTransform() != math::Mat3())
                m_visibleEntities.push_back(entity);
    }

    rendering::AttribPusher attribs;
    glPushMatrix();
    rendering::Renderer::GetInstancePtr()->SetColor4(1, 1, 1, 1);
    {
        QUIB_PROFILE("Setup");
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
    }
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    m_background->DrawBG();

    math::Mat4FromMat2D(camera->WorldToGUI()).MultToGL();
    glLineWidth(HoldAboveZero(m_lineWidth));
    glPointSize(HoldAboveZero(m_pointSize));
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    DrawWater(view, m_waterColor);
    DrawEntities();
    if (m_drawBodyCenters)
        DrawBodyCenters();
    if (m_drawParticleCenters)
        DrawParticleCenters();
    if (m_drawCollisions)
        DrawCollisions();
    rendering::Renderer::GetInstancePtr()->SetColor4(1, 1, 1, 1);
    Tools::GetInstancePtr()->GetTool()->Draw();

    m_visibleEntities.clear();
    glPopMatrix();
}

void App::MarkMouseOver() const
{
    // When the mouse is elsewhere the flags stay as they were.
    const Vec2 mouse = input::Input::GetInstancePtr()->GetMousePos();
    if (!GetOuterBB().Contains(mouse))
        return;
    QUIB_PROFILE("Mouse-over");
    const GroupPtr picked = Scene::GetInstancePtr()->GetSelectionAt(GetMousePos());
    for (const auto& entity : m_visibleEntities)
        entity->SetMouseOver(picked->Contains(entity));
}

static void DrawTransformed(const Entity& entity)
{
    const math::Mat3& transform = entity.GetDrawTransform();
    if (transform == math::Mat3())
    {
        entity.Draw();
        return;
    }
    glPushMatrix();
    math::Mat4FromMat2D(transform).MultToGL();
    entity.Draw();
    glPopMatrix();
}

// Each entity stands in a depth layer of its own, so that a later one covers an earlier one whatever
// order each draws its own parts in.
void App::DrawEntities() const
{
    QUIB_PROFILE("Entities");
    MarkMouseOver();
    if (m_visibleEntities.empty())
        return;

    rendering::ColorPusher color;
    glPushMatrix();
    const float step = 0.9f / static_cast<float>(m_visibleEntities.size());
    glTranslatef(0, 0, step);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    for (const auto& entity : m_visibleEntities)
    {
        entity->SetSelected(Scene::GetInstancePtr()->IsSelected(entity));
        QUIB_PROFILE_OFTEN("Entity::Draw");
        DrawTransformed(*entity);
        glTranslatef(0, 0, step);
    }
    glDisable(GL_DEPTH_TEST);
    glPopMatrix();
}

// The velocity lines of the debug overlays are as long as the way of so many seconds.
static const float VelocityLineTime = 0.025f;

template<typename Bodies>
static void DrawVelocities(const Bodies& bodies)
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    for (const auto& body : bodies)
        if (!body->IsImmovable())
        {
            renderer->Vertex(body->GetPos());
            renderer->Vertex(body->GetPos() + body->GetVel() * VelocityLineTime);
        }
}

template<typename Bodies>
static void DrawPositions(const Bodies& bodies)
{
    for (const auto& body : bodies)
        if (!body->IsImmovable())
            rendering::Renderer::GetInstancePtr()->Vertex(body->GetPos());
}

void App::DrawBodyCenters() const
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(0, 1, 0, 0.5f);
    glBegin(GL_LINES);
    DrawVelocities(simulation->GetBodies());
    DrawVelocities(simulation->GetParticles());
    glEnd();
    renderer->SetColor4(0.4f, 1, 0.4f, 0.9f);
    glBegin(GL_POINTS);
    DrawPositions(simulation->GetBodies());
    DrawPositions(simulation->GetParticles());
    glEnd();
}

void App::DrawParticleCenters() const
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const physics::ParticleList& particles = physics::Simulation::GetInstancePtr()->GetParticles();
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(1, 0, 0, 0.5f);
    glBegin(GL_LINES);
    DrawVelocities(particles);
    glEnd();
    renderer->SetColor4(1, 0, 0, 1);
    glBegin(GL_POINTS);
    DrawPositions(particles);
    glEnd();
}

void App::DrawCollisions() const
{
    rendering::AttribPusher attribs;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glDisable(GL_TEXTURE_2D);
    const double now = physics::Simulation::GetInstancePtr()->GetSimTime();
    for (const auto& contact : m_contacts)
    {
        const Vec2 pos = contact->GetPos();
        renderer->SetColor4(0.5f, 0, 0, 0.5f);
        glBegin(GL_LINES);
        renderer->Vertex(pos);
        renderer->Vertex(pos + contact->GetTotalImpulse());
        glEnd();
        renderer->SetColor4(0, 1, 0, 0.5f);
        glBegin(GL_LINES);
        renderer->Vertex(pos);
        renderer->Vertex(pos + contact->GetNormal() * contact->GetDepth());
        glEnd();
        const bool isFresh = now - contact->GetStartTime() < 0.5;
        renderer->SetColor4(1, isFresh ? 1 : 0, isFresh ? 1 : 0, 1);
        glBegin(GL_POINTS);
        renderer->Vertex(pos);
        glEnd();
    }
}
}
