#include "app/tools/ChainTool.h"

#include "app/App.h"
#include "app/Chain.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/HingeEntity.h"
#include "input/Key.h"
#include "physics/Circle.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "rendering/Renderer.h"

#include <GL/gl.h>

#include <cmath>
#include <vector>

using math::Vec2;
using physics::GeomPtr;

namespace app
{
namespace
{
const float HingeSize = 0.75f; // in radii of a link

/// World units.
float LinkRadius()
{
    return 0.4f * App::GetInstancePtr()->GetScreenCM();
}

GeomPtr WorldGeom()
{
    return physics::Simulation::GetInstancePtr()->GetWorldGeom();
}

bool IsInSimulation(const GeomPtr& geom)
{
    return physics::Simulation::GetInstancePtr()->HasBody(geom->GetBody());
}

Vec2 ToLocal(const physics::Geom& geom, const Vec2& worldPoint)
{
    return TransformCoordinate(geom.GetPoseInv(), worldPoint);
}
}

ChainTool::ChainTool() = default;

ChainTool::~ChainTool() = default;

void ChainTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    Disband();
    SetInUse(true);
    const Vec2 pos = ToWorld(event.GetPosition());
    m_firstGeom = Scene::GetInstancePtr()->GetGeomAt(pos);
    SetEnd(m_firstGeom, m_firstGeom->GetClosestEdge(pos));
    m_linkColor = App::GetInstancePtr()->RandomEntityColor4();
    m_hingeColor = App::GetInstancePtr()->RandomEntityColor4();
    m_chain = QUIB_NEW Chain;
    event.SetHandled(true);
}

void ChainTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    // With Shift the mouse goes ahead, and a straight piece follows it later.
    if (!IsShiftDown())
        AppendChain(ToWorld(event.GetPosition()));
    event.SetHandled(true);
}

void ChainTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    const Vec2 pos = ToWorld(event.GetPosition());
    AppendChain(pos);
    if (m_isEndOnLink)
        FinishEnd(pos);
    const SnapshotPtr before = m_before;
    // It stays: breaking off must not find it.
    m_chain = nullptr;
    Disband();
    if (before)
        Undoer::GetInstancePtr()->AddUndo(before, "UndoChain");
    event.SetHandled(true);
}

void ChainTool::Draw() const
{
    if (!IsInUse())
        return;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glDisable(GL_TEXTURE_2D);
    renderer->SetColor4(m_linkColor);
    glBegin(GL_LINES);
    renderer->Vertex(GetLastPoint());
    renderer->Vertex(GetMousePos());
    glEnd();
    glEnable(GL_TEXTURE_2D);
}

bool ChainTool::Disband()
{
    if (!IsInUse())
        return false;
    SetInUse(false);
    // Clearing the scene breaks off tools, and breaking off must find nothing to do then.
    const util::SharedPtr<Chain> chain = m_chain;
    m_chain = nullptr;
    m_before = nullptr;
    m_firstGeom = nullptr;
    m_endGeom = nullptr;
    m_isEndOnLink = false;
    m_lastHinge = nullptr;
    m_linkCount = 0;
    if (!chain)
        return true;
    Scene* scene = Scene::GetInstancePtr();
    std::vector<EntityPtr> laid;
    for (const EntityPtr& entity : chain->GetEntities())
        if (scene->HasEntity(entity))
            laid.push_back(entity);
    scene->RemoveEntities(laid);
    return true;
}

void ChainTool::AppendChain(const Vec2& point)
{
    CheckEnd();
    const float radius = LinkRadius();
    // The resolution of the screen is the user's to set: it may be 0 or no number at all.
    if (!(radius > 0))
        return;
    const GeomPtr under = FindGeomAt(point);
    for (;;)
    {
        const Vec2 last = GetLastPoint();
        const float distance = Distance(last, point);
        if (!(distance >= 2 * radius) || m_linkCount == MaxLinks)
            return;
        const Vec2 dir = (point - last) / distance;
        // So far from the origin that a link is lost in the rounding.
        if (!(Distance(last + 2 * radius * dir, point) < distance))
            return;
        AppendLink(dir, radius, under);
    }
}

void ChainTool::AppendLink(const Vec2& dir, float radius, const GeomPtr& under)
{
    if (!m_before)
        m_before = Snapshot::TakeSnapshot();
    const App* app = App::GetInstancePtr();
    const Vec2 last = GetLastPoint();
    const Vec2 center = last + radius * dir;
    const physics::CirclePtr circle = QUIB_NEW physics::Circle(center, radius);
    circle->SetDensity(app->GetChainDensityFactor() *
                       physics::Simulation::GetInstancePtr()->m_defaultBodyDensity);
    circle->SetWorldPose(math::Mat2D::TranslationRotation(center, std::atan2(dir.y, dir.x)));

    FastenEnd(circle, Vec2(-radius, 0), HingeSize * radius);
    const util::SharedPtr<CircleEntity> link = QUIB_NEW CircleEntity(circle);
    link->SetColor4(m_linkColor);
    Add(link);
    ++m_linkCount;

    SetEnd(circle, last + 2 * radius * dir);
    m_isEndOnLink = true;
    m_lastHinge = nullptr;
    FastenEnd(under, ToLocal(*under, GetLastPoint()), HingeSize * radius);
}

void ChainTool::FinishEnd(const Vec2& pos)
{
    const float radius = LinkRadius();
    const GeomPtr geom = FindGeomAt(pos);
    const bool isFree = geom == WorldGeom() && geom == m_firstGeom;
    // One that stopped short of the mouse would be torn there by the hinge.
    const bool isShort = !(Distance(GetLastPoint(), pos) < 2 * radius);
    if (!isFree && !isShort)
        FastenEnd(geom, ToLocal(*geom, geom->GetClosestEdge(pos)), HingeSize * radius);
    else if (m_lastHinge)
        Scene::GetInstancePtr()->RemoveEntity(m_lastHinge);
}

void ChainTool::CheckEnd()
{
    if (m_lastHinge && !m_lastHinge->IsAlive())
    {
        Scene::GetInstancePtr()->RemoveEntity(m_lastHinge);
        m_lastHinge = nullptr;
    }
    if (IsInSimulation(m_endGeom))
        return;
    if (m_firstGeom == m_endGeom)
        m_firstGeom = WorldGeom();
    SetEnd(WorldGeom(), GetLastPoint());
    m_isEndOnLink = false;
}

Vec2 ChainTool::GetLastPoint() const
{
    return TransformCoordinate(m_endGeom->GetPose(), m_endLocal);
}

void ChainTool::SetEnd(const GeomPtr& geom, const Vec2& worldPoint)
{
    m_endGeom = geom;
    m_endLocal = ToLocal(*geom, worldPoint);
}

GeomPtr ChainTool::FindGeomAt(const Vec2& pos) const
{
    for (const GeomPtr& geom : Scene::GetInstancePtr()->GetGeomsAt(pos))
        if (!m_isEndOnLink || geom != m_endGeom)
            return geom;
    return WorldGeom();
}

void ChainTool::FastenEnd(const GeomPtr& geom, const Vec2& local, float size)
{
    if (m_lastHinge)
    {
        m_lastHinge->AttachToLocal(m_lastHinge->GetGeom(0), m_lastHinge->GetLocalPoint(0), geom,
                                   local);
        return;
    }
    m_lastHinge = QUIB_NEW HingeEntity(size);
    m_lastHinge->AttachToLocal(m_endGeom, m_endLocal, geom, local);
    m_lastHinge->SetColor4(m_hingeColor);
    Add(m_lastHinge);
}

void ChainTool::Add(const EntityPtr& entity)
{
    m_chain->AddEntity(entity);
    Scene::GetInstancePtr()->AddEntity(entity);
}
}
