#include "app/tools/SketchTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/FiniteGeomEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/entities/WeldBatch.h"
#include "logging/Log.h"
#include "math/OBB2D.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/Failures.h"
#include "util/Timer.h"

#include <algorithm>
#include <cmath>
#include <exception>

using math::Vec2;

namespace app
{
namespace
{
// Seconds for which a straight stroke waits for one that crosses it.
const double PreviousLineTime = 2;

// A zigzag: how long at most, and how wide, in parts of the distance of its ends. In fewer points there is
// no zigzag.
const size_t MinSpringPoints = 5;
const float MaxSpringLength = 1.05f;
const float MinSpringWidth = 0.1f;
const float MaxSpringWidth = 0.5f;

// How much of the body under it a hinge covers at most, and how far it may be from round: the factor by
// which a vertex is nearer or farther than the circle of the same area.
const float MaxHingePart = 0.5f;
const float MaxHingeFactor = 1.8f;

bool IsPinnedInside(const JointEntity& joint, const physics::Polygon& polygon)
{
    const physics::GeomPtr world = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    for (int i = 0; i < 2; ++i)
        if (joint.GetGeom(i) == world && polygon.DistanceWorld(joint.GetWorldPoint(i)) < 0)
            return true;
    return false;
}

/// Hands what was on the world over to the polygon. Deliberate: both ends, one outside of it too, so that a
/// spring from the background to the background is taken up whole.
void Adopt(JointEntity& joint, const physics::PolygonPtr& polygon)
{
    const physics::GeomPtr world = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    physics::GeomPtr geoms[2];
    Vec2 points[2];
    for (int i = 0; i < 2; ++i)
    {
        geoms[i] = joint.GetGeom(i);
        points[i] = joint.GetLocalPoint(i);
        const Vec2 worldPoint = joint.GetWorldPoint(i);
        if (geoms[i] == world && polygon->DistanceWorld(worldPoint) != 0)
        {
            geoms[i] = polygon;
            points[i] = TransformCoordinate(polygon->GetPoseInv(), worldPoint);
        }
    }
    joint.AttachToLocal(geoms[0], points[0], geoms[1], points[1]);
}

/// Whether no vertex is much nearer or farther than the circle of the same area.
bool IsRound(const physics::Polygon& polygon, float radius)
{
    for (const Vec2& vertex : polygon.GetVertices())
    {
        const float distance = vertex.Length(); // they lie around the centre
        if (distance < radius / MaxHingeFactor || distance > radius * MaxHingeFactor)
            return false;
    }
    return true;
}
}

SketchTool::SketchTool()
    : m_previousLineTime(util::Timer::GetCurrentTime())
{
}

SketchTool::~SketchTool() = default;

void SketchTool::Update(float)
{
    if (util::Timer::GetCurrentTime() - m_previousLineTime > PreviousLineTime)
        m_previousLine = Line();
}

void SketchTool::Draw() const
{
    const double age = util::Timer::GetCurrentTime() - m_previousLineTime;
    if (m_previousLine.GetPoints().size() > 1 && age < PreviousLineTime)
    {
        const rendering::ColorPusher color;
        const float alpha = static_cast<float>(1 - age / PreviousLineTime);
        rendering::Renderer::GetInstancePtr()->SetColor4(1, 0, 0, alpha);
        m_previousLine.Draw();
    }
    StrokeTool::Draw();
}

bool SketchTool::Disband()
{
    m_previousLine = Line();
    return StrokeTool::Disband();
}

void SketchTool::AnalyzeDrawing()
{
    if (GetStroke().GetPoints().size() < 2)
    {
        ClearStroke();
        return;
    }
    if (IsSpring())
        return;
    if (IsLine())
    {
        if (TestFixate() || TestEraseLine())
        {
            m_previousLine = Line();
            return;
        }
        // Deliberate: a straight stroke that hits nothing makes nothing. It waits for one to cross it.
        m_previousLine = GetStroke();
        m_previousLineTime = util::Timer::GetCurrentTime();
        return;
    }
    m_previousLine = Line();
    const physics::PolygonPtr polygon = IsPolygon();
    if (!polygon)
        return;

    // A stroke around anything selects. Joints that are pinned to the background alone do not count: the new
    // polygon takes them over.
    const GroupPtr caught = QUIB_NEW Group;
    std::vector<JointEntityPtr> adopted;
    bool isSelecting = false;
    for (const EntityPtr& entity : Scene::GetInstancePtr()->GetEntities())
    {
        JointEntity* joint = entity->ToJointEntity();
        const bool isAdopted = !isSelecting && joint && IsPinnedInside(*joint, *polygon);
        if (isAdopted)
            adopted.push_back(joint);
        if (entity->IsContainedBy(*polygon))
        {
            caught->Add(entity);
            isSelecting = isSelecting || !isAdopted;
        }
    }
    if (isSelecting)
    {
        Scene::GetInstancePtr()->SetSelection(caught);
        return;
    }
    if (adopted.empty() && IsHinge(polygon))
        return;
    AddPolygon(polygon, adopted);
}

void SketchTool::AddPolygon(const physics::PolygonPtr& polygon,
                            const std::vector<JointEntityPtr>& adopted)
{
    try
    {
        const SnapshotPtr before = Snapshot::TakeSnapshot();
        const GroupPtr joints = QUIB_NEW Group;
        // A batch of its own for each: one that both parts and welds has to settle at each change.
        {
            WeldBatch parting;
            for (const JointEntityPtr& joint : adopted)
            {
                joints->Add(joint);
                if (joint->AsFixJointEntity())
                    joint->RemoveFromSimulation();
            }
        }
        {
            WeldBatch welding;
            for (const JointEntityPtr& joint : adopted)
                Adopt(*joint, polygon);
            Scene::GetInstancePtr()->AddEntity(QUIB_NEW PolyEntity(polygon));
            for (const JointEntityPtr& joint : adopted)
                if (joint->AsFixJointEntity())
                    joint->AddToSimulation();
        }
        Scene::GetInstancePtr()->MoveToFront(joints);
        Undoer::GetInstancePtr()->AddUndo(before, "UndoPolygon");
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning, util::String("Error while creating polygon: ") + e.what());
    }
}

bool SketchTool::IsSpring() const
{
    const math::Vec2List& points = GetStroke().GetPoints();
    if (points.size() < MinSpringPoints)
        return false;
    const Vec2 ends[2] = {points.front(), points.back()};
    const float distance = math::Distance(ends[0], ends[1]);
    const Vec2 direction = Normalized(ends[1] - ends[0]);
    // Back where it began a stroke has no length along which it could be wide.
    if (direction == Vec2())
        return false;
    const math::OBB2D box = math::OBB2D::Build(points.data(), points.size(), direction);
    const float length = 2 * box.GetHalf(0), width = 2 * box.GetHalf(1);
    if (!(length <= MaxSpringLength * distance && width >= MinSpringWidth * distance &&
          width <= MaxSpringWidth * distance))
        return false;
    const util::SharedPtr<SpringEntity> spring = QUIB_NEW SpringEntity(width);
    spring->AttachAt(ends);
    // In mid-air there is nothing to fasten it to.
    if (spring->GetGeom(0))
        AddEntityUndoable(spring, "UndoSpring");
    return true;
}

bool SketchTool::TestFixate()
{
    try
    {
        const math::Vec2List crossings = IntersectTest(GetStroke(), m_previousLine);
        if (crossings.empty())
            return false;
        // Exactly one, and none of those are to count twice that a corner of a line gives on both of its
        // sides: they differ by rounding. No hand crosses twice within a pixel.
        const float pixel = App::GetInstancePtr()->GetPixelSize();
        for (const Vec2& crossing : crossings)
            if (!(math::Distance(crossing, crossings[0]) <= pixel))
                return false;
        const float size = static_cast<float>(
            0.7 * std::sqrt(double(GetStroke().Length() * m_previousLine.Length())));
        const util::SharedPtr<FixJointEntity> joint = QUIB_NEW FixJointEntity(size);
        const Vec2 ends[2] = {crossings[0], crossings[0]};
        joint->AttachAt(ends);
        if (joint->GetGeom(0)) // else in mid-air
            AddEntityUndoable(joint, "UndoFixate");
        return true;
    }
    catch (...)
    {
        LogCaught(QUIB_LOCATION);
        return false;
    }
}

bool SketchTool::IsHinge(const physics::PolygonPtr& polygon)
{
    const Vec2 center = polygon->GetCenter();
    const EntityPtr under = Scene::GetInstancePtr()->GetEntityAt(center);
    const FiniteGeomEntity* body = under ? under->AsFiniteGeomEntity() : nullptr;
    if (!body || polygon->Area() > MaxHingePart * body->GetGeom()->Area())
        return false;
    const float radius = std::sqrt(polygon->Area() / math::PIf);
    if (!IsRound(*polygon, radius))
        return false;
    try
    {
        const util::SharedPtr<HingeEntity> hinge = QUIB_NEW HingeEntity(2 * radius);
        const Vec2 ends[2] = {center, center};
        hinge->AttachAt(ends);
        AddEntityUndoable(hinge, "UndoHinge");
        return true;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning, util::String("Error while creating hinge: ") + e.what());
        return false;
    }
}
}
