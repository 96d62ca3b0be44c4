#include "app/Scene.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/Serializer.h"
#include "app/entities/GeomEntity.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "util/Callback.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"

#include <SDL_keysym.h>

#include <algorithm>
#include <limits>

using math::Vec2;

namespace app
{
namespace
{
bool DepthComp(const EntityPtr& a, const EntityPtr& b)
{
    return a->GetZDepth() < b->GetZDepth();
}

unsigned long LowestID(const GroupPtr& group)
{
    unsigned long lowest = std::numeric_limits<unsigned long>::max();
    for (const EntityPtr& entity : group->GetEntities())
        lowest = std::min(lowest, entity->GetID());
    return lowest;
}

/// The order of groups wherever one shows.
bool IsBefore(const GroupPtr& a, const GroupPtr& b)
{
    if (a->GetName() != b->GetName())
        return a->GetName() < b->GetName();
    const unsigned long lowestA = LowestID(a), lowestB = LowestID(b);
    return lowestA != lowestB ? lowestA < lowestB : a->GetPointeeID() < b->GetPointeeID();
}

bool IsAltDown()
{
    const input::Input* input = input::Input::GetInstancePtr();
    return input->IsKeyDown(SDLK_LALT) || input->IsKeyDown(SDLK_RALT);
}
}

Scene::Scene()
    : Reflected("Scene")
    , m_title(this, "title", "")
    , m_author(this, "author", "")
    , m_description(this, "description", "")
    , m_selection(QUIB_NEW Group(SelectedName))
    , m_camera(QUIB_NEW Camera)
{
    m_title->AddChangeCallback(util::MakeCallback(&Scene::OnTitleChange, this));
    AddReflectedChild(m_camera);
    AddCmd("Clear", &Scene::ClearScene);
    ClearScene();
}

Scene::~Scene() = default;

std::vector<GroupPtr> Scene::GetGroups() const
{
    std::vector<GroupPtr> groups(m_groups.begin(), m_groups.end());
    std::sort(groups.begin(), groups.end(), IsBefore);
    return groups;
}

GroupPtr Scene::GetGroupByName(const util::String& name) const
{
    // The set has no order that two runs would share.
    GroupPtr first;
    for (const GroupPtr& group : m_groups)
        if (group->GetName() == name && (!first || IsBefore(group, first)))
            first = group;
    return first;
}

GroupPtr Scene::GetOrCreateGroupByName(const util::String& name)
{
    GroupPtr group = GetGroupByName(name);
    if (!group)
    {
        group = QUIB_NEW Group(name);
        AddGroup(group);
    }
    return group;
}

bool Scene::HasEntity(const EntityPtr& entity) const
{
    return entity && std::find(m_entities.begin(), m_entities.end(), entity) != m_entities.end();
}

std::vector<EntityPtr> Scene::GetEntitiesAt(const Vec2& pos) const
{
    std::vector<EntityPtr> found;
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it)
        if ((*it)->IsOnEntity(pos))
            found.push_back(*it);
    return found;
}

EntityPtr Scene::GetEntityAt(const Vec2& pos) const
{
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it)
        if ((*it)->IsOnEntity(pos))
            return *it;
    return nullptr;
}

GroupPtr Scene::GetSelectionAt(const Vec2& pos) const
{
    GroupPtr picked = QUIB_NEW Group;
    const EntityPtr entity = GetEntityAt(pos);
    if (!entity)
        return picked;
    picked->Add(entity);
    if (IsAltDown())
        return picked;
    for (const GroupPtr& group : m_groups)
        if (group != m_selection && group != m_camera->GetTrackedGroup() && group->Contains(entity))
            picked->AddAll(group);
    return picked;
}

void Scene::AddEntity(const EntityPtr& entity)
{
    if (!entity)
        return;
    m_entities.push_back(entity);
    try
    {
        entity->AddToSimulation();
    }
    catch (...)
    {
        m_entities.pop_back();
        RemoveFromGroups(entity);
        throw;
    }
}

void Scene::RemoveEntity(const EntityPtr& entity)
{
    // The caller's handle may be the one in the list.
    const EntityPtr keep = entity;
    const auto it = std::find(m_entities.begin(), m_entities.end(), keep);
    if (it != m_entities.end())
        m_entities.erase(it);
    RemoveFromGroups(keep);
    if (Serializer::Exists())
        Serializer::GetInstancePtr()->ForgetEntity(keep);
    keep->RemoveFromSimulation();
}

void Scene::RemoveFromGroups(const EntityPtr& entity)
{
    for (const GroupPtr& group : m_groups)
        group->Remove(entity);
    // It need not be one of the scene's.
    if (const GroupPtr& tracked = m_camera->GetTrackedGroup())
        tracked->Remove(entity);
}

void Scene::AddGroup(const GroupPtr& group)
{
    if (m_groups.count(group))
        return;
    if (group->GetName() == SelectedName)
    {
        SetSelection(group);
        if (GetGroupByName(SelectedName))
            return;
    }
    if (group->GetName() == TrackedName)
    {
        m_camera->SetTrackedGroup(group);
        if (GetGroupByName(TrackedName))
            return;
    }
    m_groups.insert(group);
}

void Scene::RemoveGroup(const GroupPtr& group)
{
    if (group != m_selection)
        m_groups.erase(group);
}

void Scene::SetSelection(const GroupPtr& group)
{
    m_selection->Set(group);
}

void Scene::DepthTagEntities()
{
    float depth = 0;
    for (const EntityPtr& entity : m_entities)
        entity->SetZDepth(depth++);
}

void Scene::SortByDepth()
{
    std::stable_sort(m_entities.begin(), m_entities.end(), DepthComp);
}

void Scene::Update(float dt)
{
    util::ScopeProfiler profile("Scene::Update");

    std::vector<EntityPtr> dead;
    for (const EntityPtr& entity : m_entities)
    {
        try
        {
            if (entity->IsAlive())
            {
                entity->Update(dt);
                continue;
            }
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning, util::String("Entity update error:") + e.what());
        }
        dead.push_back(entity);
    }

    QUIB_PASS_ON(for (const EntityPtr& entity : dead) RemoveEntity(entity));
    QUIB_PASS_ON(FlushBodies());
    QUIB_PASS_ON(RemoveEmptyGroups());
}

void Scene::RemoveEmptyGroups()
{
    std::vector<GroupPtr> empty;
    for (const GroupPtr& group : m_groups)
        if (group->IsEmpty())
            empty.push_back(group);
    for (const GroupPtr& group : empty)
        RemoveGroup(group);
}

void Scene::FlushBodies()
{
    util::ScopeProfiler profile("Scene::FlushBodies");

    // Ids of the bodies that entities hold. The list keeps its capacity from frame to frame.
    m_heldBodies.clear();
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
            if (const physics::AbstractBody* body = geomEntity->GetGeom()->GetBodyPtr())
                m_heldBodies.push_back(body->GetID());
    std::sort(m_heldBodies.begin(), m_heldBodies.end());

    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    std::vector<physics::BodyPtr> stray;
    for (const physics::BodyPtr& body : simulation->GetBodies())
    {
        if (std::binary_search(m_heldBodies.begin(), m_heldBodies.end(), body->GetID()))
            continue;
        const physics::GeomSet& geoms = body->GetGeoms();
        if (geoms.size() == 1 && dynamic_cast<physics::WorldGeom*>(geoms.begin()->get()))
            continue;
        stray.push_back(body);
    }
    for (const physics::BodyPtr& body : stray)
        simulation->RemoveBody(body);
}

void Scene::ZoomToScene()
{
    math::BoundingBox all;
    for (const EntityPtr& entity : m_entities)
    {
        // A plane's box is infinite, so planes count for nothing.
        const math::BoundingBox box = entity->GetAABB();
        if (!box.IsFinite())
            continue;
        all.Include(box);
        CODE_ASSERT(all.IsFinite());
    }
    if (!all.IsFinite())
    {
        m_camera->Reset();
        return;
    }
    const Vec2 size = all.GetSize() * 1.1f;
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    // World units per GUI unit. Held to what the camera can do, so that neither a speck nor a world
    // of a scene makes a matrix without an inverse.
    const float wanted = std::max(size.x / screen.x, size.y / screen.y);
    const float s = std::clamp(wanted, 1 / Camera::GetMaxZoom(), 1 / Camera::GetMinZoom());
    const math::Mat3 guiToWorld = math::Mat3::Translation2D(all.GetCenter()) *
                                  math::Mat3::Scale2D(Vec2(s, -s)) *
                                  math::Mat3::Translation2D(screen * -0.5f);
    const math::Mat3 worldToGUI = Inverted(guiToWorld);
    // Finite boxes can have a middle or a size that is not, and lie where no view reaches.
    if (math::IsFinite(TransformCoordinate(worldToGUI, all.GetCenter())))
        m_camera->SetWorldToGUI(worldToGUI);
    else
        m_camera->Reset();
}

void Scene::ClearScene()
{
    m_camera->Reset();
    // The scene is made before what reads files, and clears itself then.
    if (Serializer::Exists())
        Serializer::GetInstancePtr()->ForgetAll();
    // Held until the simulation is empty: an entity frees its body only when it finds that the
    // simulation has let go of it.
    std::vector<EntityPtr> entities;
    entities.swap(m_entities);
    m_groups.clear();
    m_selection->Clear();
    AddGroup(m_selection);
    m_title = "";
    m_author = "";
    m_description = "";
    physics::Simulation::GetInstancePtr()->Clear();
    // The scene clears itself once before there is an interface.
    if (AppGUI* appGUI = App::GetInstancePtr()->GetAppGUI().get())
        appGUI->RemoveGroupWidgets();
}

void Scene::SetTexts(const util::String& title, const util::String& author,
                     const util::String& description)
{
    if (!title.empty())
        m_title = title;
    if (!author.empty())
        m_author = author;
    if (!description.empty())
        m_description = description;
}

void Scene::OnTitleChange()
{
    util::String text = util::FileSystem::GetInstancePtr()->NameAndVersion();
    if (!GetTitle().empty())
        text += " - " + GetTitle();
    core::Subsystem::GetInstancePtr()->SetTitle(text);
}
}
