#include "app/EntityActions.h"

#include "app/Action.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Chain.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "logging/Log.h"
#include "math/Matrix.h"
#include "physics/Body.h"
#include "physics/Circle.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"

#include <cmath>
#include <set>

using math::Mat3;
using math::Vec2;
using physics::BodyPtr;
using physics::GeomPtr;

namespace app
{
namespace
{
void ClosePopup()
{
    App::GetInstancePtr()->GetAppGUI()->ClosePopup();
}

/// Those of the group that are of the kind T and in the scene, in order of id.
template<typename T>
std::vector<util::SharedPtr<T>> Collect(const GroupPtr& group)
{
    std::vector<util::SharedPtr<T>> found;
    for (const EntityPtr& entity : group->GetSorted())
        if (Scene::GetInstancePtr()->HasEntity(entity))
            if (const util::SharedPtr<T> one = util::DynamicCast<T>(entity))
                found.push_back(one);
    return found;
}

/// Removes all joints of the kind that hold one of the geometries.
/// @return whether there were any
template<typename T>
bool LoosenType(const physics::GeomSet& geoms)
{
    Scene* scene = Scene::GetInstancePtr();
    std::vector<EntityPtr> loose;
    for (const EntityPtr& entity : scene->GetEntities())
        if (const T* joint = dynamic_cast<const T*>(entity.get()))
            if (geoms.count(joint->GetGeom(0)) || geoms.count(joint->GetGeom(1)))
                loose.push_back(entity);
    scene->RemoveEntities(loose);
    return !loose.empty();
}

/// Null where the body or whatever lies beside it has nothing at its centre.
util::SharedPtr<HingeEntity> MakeCenterHinge(const BodyPtr& body)
{
    GeomPtr own, other;
    for (const GeomPtr& geom : Scene::GetInstancePtr()->GetGeomsAt(body->GetPos()))
        if (GeomPtr& first = geom->GetBodyBody() == body ? own : other; !first)
            first = geom;
    if (!own || !other)
        return nullptr;
    return QUIB_NEW HingeEntity(own, other, body->GetPos(),
                                App::GetInstancePtr()->GetDefaultJointSize());
}

EntityPtr TransformIntoCircle(const PolyEntity& polygon)
{
    const physics::Geom& old = *polygon.GetGeom();
    const physics::CirclePtr geom =
        QUIB_NEW physics::Circle(Vec2(), std::sqrt(old.Area() / math::PIf));
    geom->SetWorldPose(old.GetPose());
    const util::SharedPtr<CircleEntity> circle = QUIB_NEW CircleEntity(geom);
    circle->CopyFrom(&polygon);
    return circle;
}
}

void OnErase(const GroupPtr& group)
{
    ClosePopup();
    if (!group->IsEmpty())
        Undoer::GetInstancePtr()->Do(QUIB_NEW EraseEntities(group));
}

void OnClone(const GroupPtr& group)
{
    ClosePopup();
    if (group->IsEmpty())
        return;
    physics::Simulation::GetInstancePtr()->m_running = false;
    Scene* scene = Scene::GetInstancePtr();
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    const GroupPtr clones = scene->CreateClone(group);
    scene->SetSelection(clones);
    scene->Transform(clones,
                     math::Mat2D::Translation(Vec2(App::GetInstancePtr()->GetScreenCM(), 0)));
    Undoer::GetInstancePtr()->AddUndo(before, "UndoClone");
}

void OnMirror(const GroupPtr& group)
{
    ClosePopup();
    if (group->IsEmpty())
        return;
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    const Vec2 center = group->CalcRotationCenter();
    Scene::GetInstancePtr()->Transform(group, Mat3::Translation2D(center) *
                                                  Mat3::Scale2D(Vec2(-1, 1)) *
                                                  Mat3::Translation2D(-center));
    Undoer::GetInstancePtr()->AddUndo(before, "UndoMirror");
}

void Liquify(const GroupPtr& group)
{
    ClosePopup();
    const auto solids = Collect<FiniteGeomEntity>(group);
    if (solids.empty())
        return;
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    std::vector<EntityPtr> erased;
    const size_t limit = static_cast<size_t>(std::max(0, App::GetInstancePtr()->GetMaxSPHSpawn()));
    size_t left = limit;
    for (const FiniteGeomEntityPtr& solid : solids)
    {
        const BodyPtr body = solid->GetBody();
        const std::vector<Vec2> points = solid->GetEquidistantPoints();
        if (points.empty() && limit > 0)
            continue; // smaller than a drop
        // Each may be as much as all of them together.
        if (limit == 0 || points.size() > left)
        {
            Log(logging::LogError,
                "That would be more water than App.maxSPHSpawn allows: some stay");
            break;
        }
        left -= points.size();
        for (const Vec2& pos : points)
            simulation->AddParticle(
                QUIB_NEW physics::Particle(pos, body ? body->GetVelAtWorld(pos) : Vec2()));
        erased.push_back(solid);
    }
    if (erased.empty())
        return;
    Scene::GetInstancePtr()->RemoveEntities(erased);
    Undoer::GetInstancePtr()->AddUndo(before, "UndoLiquify");
}

void Loosen(const GroupPtr& group)
{
    ClosePopup();
    physics::GeomSet geoms;
    for (const GeomEntityPtr& entity : Collect<GeomEntity>(group))
        geoms.insert(entity->GetGeom());
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    // One press loosens one kind.
    if (LoosenType<FixJointEntity>(geoms) || LoosenType<HingeEntity>(geoms) ||
        LoosenType<SpringEntity>(geoms))
        Undoer::GetInstancePtr()->AddUndo(before, "UndoLoosen");
}

void AddCenterHinge(const GroupPtr& group)
{
    ClosePopup();
    std::vector<EntityPtr> hinges;
    std::set<unsigned> seen; // ids of bodies
    // What is welded to the background turns around nothing.
    seen.insert(physics::Simulation::GetInstancePtr()->GetWorldBody()->GetID());
    for (const FiniteGeomEntityPtr& entity : Collect<FiniteGeomEntity>(group))
        if (const BodyPtr body = entity->GetBody(); body && seen.insert(body->GetID()).second)
            if (const EntityPtr hinge = MakeCenterHinge(body))
                hinges.push_back(hinge);
    if (hinges.empty())
        return;
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    for (const EntityPtr& hinge : hinges)
        Scene::GetInstancePtr()->AddEntity(hinge);
    Undoer::GetInstancePtr()->AddUndo(before, "UndoCenterHinge");
}

void TransformIntoCircles(const GroupPtr& group)
{
    ClosePopup();
    const auto polygons = Collect<PolyEntity>(group);
    if (polygons.empty())
        return;
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    EntityMap circles(polygons.size());
    for (const auto& polygon : polygons)
        circles[polygon] = TransformIntoCircle(*polygon);
    Scene::GetInstancePtr()->ReplaceGeoms(group, circles);
    Undoer::GetInstancePtr()->AddUndo(before, "UndoToCircle");
}

void DissolveChain(const GroupPtr& group)
{
    ClosePopup();
    std::vector<ChainPtr> chains; // one whose first member was met is empty at the second
    for (const EntityPtr& entity : Collect<Entity>(group))
        if (entity->GetChain())
            chains.push_back(entity->GetChain());
    if (chains.empty())
        return;
    const SnapshotPtr before = Snapshot::TakeSnapshot();
    for (const ChainPtr& chain : chains)
        chain->Detach();
    Undoer::GetInstancePtr()->AddUndo(before, "UndoDissolveChain");
}

void OnPenClearTrail(const GroupPtr& group)
{
    ClosePopup();
    for (const PenEntityPtr& pen : Collect<PenEntity>(group))
        pen->SetTrail({});
}

void MoveToMouse(const GroupPtr& group)
{
    if (const math::BoundingBox box = group->CalcFiniteAABB(); box.IsFinite())
        Scene::GetInstancePtr()->Transform(
            group,
            math::Mat2D::Translation(App::GetInstancePtr()->GetMousePos() - box.GetCenter()));
}
}
