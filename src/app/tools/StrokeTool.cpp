#include "app/tools/StrokeTool.h"

#include "app/Action.h"
#include "app/App.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/entities/PlaneEntity.h"
#include "input/Input.h"
#include "logging/Log.h"
#include "physics/Polygon.h"
#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/Failures.h"

#include <SDL_keysym.h>

#include <algorithm>
#include <exception>

using math::Vec2;

namespace app
{
namespace
{
// How far a line's points may be off, in parts of the distance of its ends.
const float LineTolerance = 0.15f;

// How much of a stroke its loop must be.
const float MinLoopPart = 0.5f;

// The sides of a polygon are split into so many parts at most.
const float MaxAddedPoints = 10000;

void RemovePlanes(Group& entities)
{
    const EntitySet all = entities.GetEntities();
    for (const EntityPtr& entity : all)
        if (util::DynamicCast<PlaneEntity>(entity))
            entities.Remove(entity);
}
}

StrokeTool::StrokeTool() = default;

StrokeTool::~StrokeTool() = default;

void StrokeTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    const Vec2 pos = ToWorld(event.GetPosition());
    if (!math::IsFinite(pos) || !MayBeginAt(pos))
        return;
    SetInUse(true);
    event.SetHandled(true);
    ClearStroke();
    m_stroke.Add(pos);
}

void StrokeTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event) || IsShiftDown())
        return;
    AddPoint(ToWorld(event.GetPosition()));
    event.SetHandled(true);
}

void StrokeTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    AddPoint(ToWorld(event.GetPosition()));
    if (m_stroke.GetPoints().size() > 1)
        AnalyzeDrawing();
    event.SetHandled(true);
    ClearStroke();
    SetInUse(false);
}

void StrokeTool::OnKeyEvent(const input::KeyEvent& event)
{
    Tool::OnKeyEvent(event);
    const bool isShift = event.GetKey() == SDLK_LSHIFT || event.GetKey() == SDLK_RSHIFT;
    if (IsInUse() && isShift && !event.IsDown() && !event.IsHandled())
        AddPoint(GetMousePos());
}

void StrokeTool::AddPoint(const Vec2& pos)
{
    const float distance = math::Distance(m_stroke.GetPoints().back(), pos);
    if (math::IsFinite(pos) && distance >= App::GetInstancePtr()->GetMinimumPointDist())
        m_stroke.Add(pos);
}

void StrokeTool::Draw() const
{
    if (!IsInUse())
        return;
    const rendering::ColorPusher color;
    rendering::Renderer::GetInstancePtr()->SetColor4(0.85f, 1, 0.85f, 1);
    Line ink = m_stroke;
    ink.Add(GetMousePos());
    ink.Draw();
}

bool StrokeTool::Disband()
{
    ClearStroke();
    if (!IsInUse())
        return false;
    SetInUse(false);
    return true;
}

bool StrokeTool::IsLine() const
{
    const math::Vec2List& points = m_stroke.GetPoints();
    if (points.size() < 2)
        return false;
    const physics::Linesegment ends(points.front(), points.back());
    // A stroke back to where it began is a ring. Of a segment without length all points would be at no
    // distance.
    if (!(math::DistanceSq(ends.p0, ends.p1) > 0))
        return false;
    const float tolerance = LineTolerance * ends.Length();
    for (const Vec2& point : points)
        if (ends.Distance(point) > tolerance)
            return false;
    return !physics::AnyIntersect(m_stroke.GetSegments());
}

util::SharedPtr<physics::Polygon> StrokeTool::IsPolygon() const
{
    if (m_stroke.GetPoints().size() < 3)
        return nullptr;
    Line loop = m_stroke;
    if (loop.CheckSelfIntersect() != Line::Closed ||
        loop.Length() < MinLoopPart * m_stroke.Length())
        return nullptr;
    try
    {
        math::Vec2List ring = loop.GetPoints();
        ring.push_back(ring.front());
        // Who zooms in during the stroke may ask for a million points, and would wait for minutes.
        const float spacing =
            std::max(App::GetInstancePtr()->GetMaximumPointDist(), loop.Length() / MaxAddedPoints);
        ring = physics::AssertMaxDist(ring, spacing);
        if (ring.size() < 3)
            return nullptr;
        return QUIB_NEW physics::Polygon(ring);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogInfo, "Bad polygon");
        return nullptr;
    }
}

bool StrokeTool::TestEraseLine()
{
    const Scene* scene = Scene::GetInstancePtr();
    const physics::LinesegmentList segments = m_stroke.GetSegments();
    const GroupPtr erased = QUIB_NEW Group;
    bool isSelectionHit = false;
    for (const EntityPtr& entity : scene->GetEntities())
        try
        {
            if (!entity->ErasedBy(segments))
                continue;
            erased->Add(entity);
            isSelectionHit = isSelectionHit || scene->IsSelected(entity);
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            // Deliberate: the brush gives this name too.
            Log(logging::LogInfo, util::String("SketchTool::TestEraseLine, ErasedBy: ") + e.what());
        }
    // Deliberate: to cut one of the selection is to cut them all.
    if (isSelectionHit)
        erased->AddAll(scene->GetSelection());
    // Deliberate: a slash along the ground does not take the ground, nor do two planes go at once.
    if (erased->GetEntities().size() > 1)
        RemovePlanes(*erased);
    if (erased->IsEmpty())
        return false;
    Undoer::GetInstancePtr()->Do(QUIB_NEW EraseEntities(erased));
    return true;
}
}
