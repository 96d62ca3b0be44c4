#include "app/Scene.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/Chain.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/WeldBatch.h"
#include "app/tools/Tools.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "util/Callback.h"
#include "util/FileSystem.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <exception>

using math::Vec2;

namespace app
{
namespace
{
bool DepthComp(const EntityPtr& a, const EntityPtr& b)
{
    return a->GetZDepth() < b->GetZDepth();
}

/// The order of groups wherever one shows.
bool IsBefore(const GroupPtr& a, const GroupPtr& b)
{
    if (a->GetName() != b->GetName())
        return a->GetName() < b->GetName();
    const unsigned long lowestA = a->GetLowestID(), lowestB = b->GetLowestID();
    return lowestA != lowestB ? lowestA < lowestB : a->GetPointeeID() < b->GetPointeeID();
}

const float WaterPickRadii = 2.2f; // how near a particle must be, in its radii
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
    AddCmd("EraseWater", &Scene::EraseWater);
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
    const auto namesakes = m_groupsByName.find(name);
    if (namesakes == m_groupsByName.end())
        return nullptr;
    return *std::min_element(namesakes->second.begin(), namesakes->second.end(), IsBefore);
}

bool Scene::IsNameShared(const GroupPtr& group) const
{
    const auto namesakes = m_groupsByName.find(group->GetName());
    return namesakes != m_groupsByName.end() &&
           std::any_of(namesakes->second.begin(), namesakes->second.end(),
                       [&group](const GroupPtr& other) { return other != group; });
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
    return entity && entity->m_isInScene;
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

std::vector<physics::GeomPtr> Scene::GetGeomsAt(const Vec2& pos) const
{
    std::vector<physics::GeomPtr> geoms;
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it)
        if (const GeomEntity* geomEntity = (*it)->AsGeomEntity())
            if (geomEntity->IsOnEntity(pos))
                geoms.push_back(geomEntity->GetGeom());
    geoms.push_back(physics::Simulation::GetInstancePtr()->GetWorldGeom());
    return geoms;
}

physics::GeomPtr Scene::GetGeomAt(const Vec2& pos) const
{
    return GetGeomsAt(pos).front();
}

physics::GeomPtr Scene::GetGeomAtMousePos() const
{
    return GetGeomAt(App::GetInstancePtr()->GetMousePos());
}

physics::GeomSet Scene::GetAllGeoms() const
{
    physics::GeomSet geoms(m_entities.size());
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
            if (geomEntity->IsAlive())
                geoms.insert(geomEntity->GetGeom());
    geoms.insert(physics::Simulation::GetInstancePtr()->GetWorldGeom());
    return geoms;
}

bool Scene::IsWaterAt(const Vec2& pos) const
{
    const float limit = WaterPickRadii * physics::SPH::GetInstancePtr()->m_radius;
    for (const physics::ParticlePtr& particle :
         physics::Simulation::GetInstancePtr()->GetParticles())
        if (Distance(particle->GetPos(), pos) < limit)
            return true;
    return false;
}

void Scene::AddEntity(const EntityPtr& entity)
{
    if (!entity)
        return;
    m_entities.push_back(entity);
    entity->m_isInScene = true;
    try
    {
        entity->AddToSimulation();
    }
    catch (...)
    {
        entity->m_isInScene = false;
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
    Forget(keep);
    RemoveFromGroups(keep);
    keep->RemoveFromSimulation();
}

void Scene::RemoveEntities(const std::vector<EntityPtr>& entities)
{
    if (entities.empty())
        return;
    const std::vector<EntityPtr> keep = entities; // it may be our own list
    EntitySet leaving(keep.size());
    for (const EntityPtr& entity : keep)
    {
        Forget(entity);
        leaving.insert(entity);
    }
    RemoveFromGroups(leaving);
    m_entities.erase(std::remove_if(m_entities.begin(), m_entities.end(),
                                    [](const EntityPtr& entity) { return !entity->m_isInScene; }),
                     m_entities.end());

    // What one of them throws must not leave another in the simulation.
    std::exception_ptr failure;
    const auto tryTo = [&failure](const auto& run)
    {
        try
        {
            run();
        }
        catch (...)
        {
            if (!failure)
                failure = std::current_exception();
        }
    };
    std::vector<const GeomEntity*> geomEntities;
    {
        const WeldBatch unwelding;
        for (const EntityPtr& entity : keep)
        {
            if (const GeomEntity* geomEntity = entity->AsGeomEntity())
                geomEntities.push_back(geomEntity);
            else
                tryTo([&] { entity->RemoveFromSimulation(); });
        }
    }
    tryTo([&] { GeomEntity::RemoveFromSimulation(geomEntities); });
    if (failure)
        std::rethrow_exception(failure);
}

void Scene::Forget(const EntityPtr& entity)
{
    entity->m_isInScene = false;
    if (Serializer::Exists())
        Serializer::GetInstancePtr()->ForgetEntity(entity);
}

void Scene::RemoveFromGroups(const EntityPtr& entity)
{
    for (const GroupPtr& group : m_groups)
        group->Remove(entity);
    // It need not be one of the scene's.
    if (const GroupPtr& tracked = m_camera->GetTrackedGroup())
        tracked->Remove(entity);
}

void Scene::RemoveFromGroups(const EntitySet& entities)
{
    for (const GroupPtr& group : m_groups)
        group->RemoveAll(entities);
    if (const GroupPtr& tracked = m_camera->GetTrackedGroup())
        tracked->RemoveAll(entities);
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
    m_groupsByName[group->GetName()].insert(group);
}

void Scene::RemoveGroup(const GroupPtr& group)
{
    const GroupPtr removed = group; // it may lie in the set
    if (removed == m_selection || !m_groups.count(removed))
        return;
    m_groups.erase(removed);
    const auto namesakes = m_groupsByName.find(removed->GetName());
    namesakes->second.erase(removed);
    if (namesakes->second.size() == 0)
        m_groupsByName.erase(namesakes);
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
    QUIB_PROFILE("Scene::Update");

    std::vector<EntityPtr> dead; // no memory as long as it is empty
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

    QUIB_PASS_ON(RemoveEntities(dead));
    QUIB_PASS_ON(FlushBodies());
    QUIB_PASS_ON(RemoveEmptyGroups());
}

void Scene::RemoveEmptyGroups()
{
    std::vector<GroupPtr> empty;
    for (const GroupPtr& group : m_groups)
        // The selection stays; it is empty most of the time, and a frame shall ask for no memory.
        if (group->IsEmpty() && group != m_selection)
            empty.push_back(group);
    for (const GroupPtr& group : empty)
        RemoveGroup(group);
}

void Scene::FlushBodies()
{
    QUIB_PROFILE("Scene::FlushBodies");

    // Ids of the bodies that entities hold. The list keeps its capacity from frame to frame.
    m_heldBodies.clear();
    for (const EntityPtr& entity : m_entities)
        if (const GeomEntity* geomEntity = entity->AsGeomEntity())
            if (const physics::AbstractBody* body = geomEntity->GetGeom()->GetBodyPtr())
                m_heldBodies.push_back(body->GetID());
    // As a rule entities and their bodies come in the same order.
    if (!std::is_sorted(m_heldBodies.begin(), m_heldBodies.end()))
        std::sort(m_heldBodies.begin(), m_heldBodies.end());

    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    physics::BodyList stray;
    auto next = m_heldBodies.begin();
    for (const physics::BodyPtr& body : simulation->GetBodies())
    {
        const unsigned id = body->GetID();
        while (next != m_heldBodies.end() && *next < id)
            ++next;
        if (next != m_heldBodies.end() && *next == id)
            continue;
        if (std::binary_search(m_heldBodies.begin(), m_heldBodies.end(), id))
            continue;
        const physics::GeomSet& geoms = body->GetGeoms();
        if (geoms.size() == 1 && dynamic_cast<physics::WorldGeom*>(geoms.begin()->get()))
            continue;
        stray.push_back(body);
    }
    simulation->RemoveBodies(stray);
}

void Scene::ZoomToScene()
{
    math::BoundingBox entities;
    for (const EntityPtr& entity : m_entities)
    {
        // A plane's box is infinite, so planes count for nothing.
        const math::BoundingBox box = entity->GetAABB();
        if (!box.IsFinite())
            continue;
        entities.Include(box);
        CODE_ASSERT(entities.IsFinite());
    }
    math::BoundingBox all = entities;
    for (const physics::ParticlePtr& particle :
         physics::Simulation::GetInstancePtr()->GetParticles())
        all.Include(particle->GetPos());
    // A few stray drops must not ruin the view. The empty box has an infinite area, so that water alone
    // is looked at.
    const math::BoundingBox& box =
        all.IsFinite() && !(all.GetArea() > 2 * entities.GetArea()) ? all : entities;
    if (!box.IsFinite())
    {
        m_camera->Reset();
        return;
    }
    const Vec2 size = box.GetSize() * 1.1f;
    const Vec2 screen = gui::GUI::GetInstancePtr()->GetSize();
    // World units per GUI unit. Held to what the camera can do, so that neither a speck nor a world
    // of a scene makes a matrix without an inverse.
    const float wanted = std::max(size.x / screen.x, size.y / screen.y);
    const float s = std::clamp(wanted, 1 / Camera::GetMaxZoom(), 1 / Camera::GetMinZoom());
    const math::Mat3 guiToWorld = math::Mat3::Translation2D(box.GetCenter()) *
                                  math::Mat3::Scale2D(Vec2(s, -s)) *
                                  math::Mat3::Translation2D(screen * -0.5f);
    const math::Mat3 worldToGUI = Inverted(guiToWorld);
    // Finite boxes can have a middle or a size that is not, and lie where no view reaches.
    if (math::IsFinite(TransformCoordinate(worldToGUI, box.GetCenter())))
        m_camera->SetWorldToGUI(worldToGUI);
    else
        m_camera->Reset();
}

void Scene::ClearScene()
{
    // The scene is made before the tools, and clears itself then.
    if (Tools::Exists())
        Tools::GetInstancePtr()->Disband();
    m_camera->Reset();
    // The scene is made before what reads files, and clears itself then.
    if (Serializer::Exists())
        Serializer::GetInstancePtr()->ForgetAll();
    // Held until the simulation is empty: an entity frees its body only when it finds that the
    // simulation has let go of it.
    std::vector<EntityPtr> entities;
    entities.swap(m_entities);
    for (const EntityPtr& entity : entities)
    {
        entity->m_isInScene = false;
        // One that is kept for an undo must not go on drawing.
        if (PenEntity* pen = entity->ToPenEntity())
            pen->RemoveFromSimulation();
    }
    m_groups.clear();
    m_groupsByName.clear();
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

void Scene::ClearSceneUndoable()
{
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    ClearScene();
    Undoer::GetInstancePtr()->AddUndo(before, "UndoClear");
}

void Scene::EraseWater()
{
    physics::Simulation::GetInstancePtr()->EraseWater();
}

void Scene::SetTitle(const util::String& fileName)
{
    m_title = AppGUI::MakeShortFileName(fileName);
    // Deliberate, word and all: it tells that the name was not a short one.
    if (GetTitle() != fileName)
        Log(logging::LogWarning, "Wuut?");
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
