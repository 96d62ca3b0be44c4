#include "app/tools/ScaleTool.h"

#include "app/App.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/Entity.h"
#include "app/entities/Pictures.h"
#include "app/tools/ToolDrawing.h"
#include "input/Input.h"
#include "rendering/Renderer.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <vector>

using math::BoundingBox;
using math::Mat3;
using math::Vec2;
using math::Vec4;

namespace app
{
namespace
{
// How far from the current box the mouse must be for another to take over, in parts of its diagonal.
const float TakeoverDistance = 0.05f;
const float FrameWidth = 0.03f; // screen centimetres
const Vec4 FrameColor(1, 1, 1, 0.5f);
const Vec4 GuideColor(1, 1, 1, 0.5f);
const Vec4 RingColor(1, 1, 1, 0.8f);
const Vec4 UsedRingColor(1, 0, 0, 0.8f);

bool IsDead(const EntityPtr& entity)
{
    return !Scene::GetInstancePtr()->HasEntity(entity) || !entity->IsAlive();
}

/// Without those of the group that have gone; null when nothing is left that handles could stand around.
GroupPtr LivingOf(const GroupPtr& group)
{
    if (!group)
        return nullptr;
    GroupPtr living = group;
    const EntitySet& entities = group->GetEntities();
    if (std::any_of(entities.begin(), entities.end(), IsDead))
    {
        living = QUIB_NEW Group(group->GetName());
        for (const EntityPtr& entity : entities)
            if (!IsDead(entity))
                living->Add(entity);
    }
    return living->CalcFiniteAABB().IsFinite() ? living : nullptr;
}

/// The nearest whole multiple or whole fraction.
float Snap(float f)
{
    return std::fabs(f) > 1 ? std::floor(f + 0.5f) : 1 / std::floor(1 / f + 0.5f);
}

BoundingBox Transformed(const Mat3& m, const BoundingBox& box)
{
    return BoundingBox(TransformCoordinate(m, box.GetMin()), TransformCoordinate(m, box.GetMax()));
}
}

ScaleTool::ScaleTool() = default;

ScaleTool::~ScaleTool() = default;

void ScaleTool::UpdateGroup(const Vec2& pos)
{
    const Scene* scene = Scene::GetInstancePtr();
    if (!scene->GetSelection()->IsEmpty())
    {
        m_group = scene->GetSelection();
        return;
    }
    const GroupPtr candidate = LivingOf(scene->GetSelectionAt(pos));
    m_group = LivingOf(m_group);
    if (!candidate)
        return;
    if (!m_group)
    {
        m_group = candidate;
        return;
    }
    // The current one stays as long as its handles, which may lie outside of the entity, are in reach.
    const BoundingBox box = m_group->CalcFiniteAABB();
    const bool isInside = box.Contains(candidate->CalcFiniteAABB());
    const bool isFar = box.Distance(pos) > TakeoverDistance * box.GetSize().Length();
    if (isInside || (isFar && !GetRingAt(box, pos)))
        m_group = candidate;
}

void ScaleTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseLeft, event))
        return;
    Disband();
    const Vec2 pos = ToWorld(event.GetPosition());
    UpdateGroup(pos);
    if (!m_group)
        return;
    const BoundingBox box = m_group->CalcFiniteAABB();
    const std::optional<Ring> ring = GetRingAt(box, pos);
    if (!ring)
        return;
    m_group = m_group->ShallowClone();
    m_center = CalcScaleCenter(box, *m_group, *ring);
    m_ring = *ring;
    m_applied = Vec2(1, 1);
    m_mouse = pos;
    SetInUse(true);
    event.SetHandled(true);
}

void ScaleTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    m_mouse = ToWorld(event.GetPosition());
    event.SetHandled(true);
}

void ScaleTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseLeft, event))
        return;
    m_mouse = ToWorld(event.GetPosition());
    ApplyDeltaTransform();
    Disband();
    event.SetHandled(true);
}

Vec2 ScaleTool::GetCurrentScaleFactor() const
{
    const input::Input* input = input::Input::GetInstancePtr();
    const Vec2 before = m_ring.pos - m_center, now = m_mouse - m_center;
    Vec2 factor(1, 1);
    for (int i = 0; i < 2; ++i)
        if (m_ring.axes[i])
            factor[i] = now[i] / before[i];
    if (IsShiftDown())
    {
        // Deliberate: with Shift a ring that moves one axis stands still, as there is no other axis to
        // keep the proportion with.
        const bool isCorner = m_ring.axes[0] && m_ring.axes[1];
        const float even = isCorner ? std::sqrt(std::fabs(factor.x * factor.y)) : 1;
        factor = isCorner ? Vec2(std::copysign(even, factor.x), std::copysign(even, factor.y))
                          : Vec2(1, 1);
    }
    if (input->CheckModifier(input::ModCtrl) || input->CheckModifier(input::ModMeta))
        factor = Vec2(Snap(factor.x), Snap(factor.y));
    for (int i = 0; i < 2; ++i)
        if (!m_ring.axes[i] || factor[i] == 0 || !math::IsFinite(factor[i]))
            factor[i] = 1;
    return factor;
}

Mat3 ScaleTool::GetDeltaTransform() const
{
    const Vec2 factor = GetCurrentScaleFactor();
    if (factor == m_applied)
        return Mat3();
    return Mat3::Translation2D(m_center) *
           Mat3::Scale2D(Vec2(factor.x / m_applied.x, factor.y / m_applied.y)) *
           Mat3::Translation2D(-m_center);
}

void ScaleTool::SetDrawTransforms(const Mat3& transform) const
{
    for (const EntityPtr& entity : m_group->GetEntities())
        entity->SetDrawTransform(transform);
}

/// Whatever has left the scene during the drag must not be selected with the rest.
void ScaleTool::ForgetDead()
{
    std::vector<EntityPtr> dead;
    for (const EntityPtr& entity : m_group->GetEntities())
        if (IsDead(entity))
            dead.push_back(entity);
    for (const EntityPtr& entity : dead)
    {
        entity->SetDrawTransform(Mat3());
        m_group->Remove(entity);
    }
}

void ScaleTool::Update(float)
{
    m_mouse = GetMousePos();
    if (!IsInUse())
    {
        UpdateGroup(m_mouse);
        return;
    }
    ForgetDead();
    if (input::Input::GetInstancePtr()->CheckModifier(input::ModAlt))
        ApplyDeltaTransform();
    SetDrawTransforms(GetDeltaTransform());
}

void ScaleTool::ApplyDeltaTransform()
{
    const Vec2 factor = GetCurrentScaleFactor();
    if (factor == m_applied)
        return;
    ForgetDead();
    if (m_group->IsEmpty())
        return;
    if (!m_before)
        m_before = Snapshot::TakeSnapshot();
    const Mat3 delta = GetDeltaTransform();
    SetDrawTransforms(Mat3());
    Scene* scene = Scene::GetInstancePtr();
    // A formula among what is copied may break this off.
    const GroupPtr group = m_group;
    scene->Transform(group, delta);
    m_applied = factor;
    scene->SetSelection(group);
}

bool ScaleTool::Disband()
{
    if (!IsInUse())
        return false;
    SetInUse(false);
    SetDrawTransforms(Mat3());
    m_group = nullptr;
    SnapshotPtr before;
    before.swap(m_before);
    if (before)
        Undoer::GetInstancePtr()->AddUndo(before, "UndoScale");
    return true;
}

void ScaleTool::Draw() const
{
    if (!m_group)
        return;
    const BoundingBox now = m_group->CalcFiniteAABB();
    if (!now.IsFinite())
        return;
    const BoundingBox box = IsInUse() ? Transformed(GetDeltaTransform(), now) : now;
    glDisable(GL_TEXTURE_2D);
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(FrameColor);
    renderer->DrawFrame(box.GetMin(), box.GetSize(),
                        FrameWidth * App::GetInstancePtr()->GetScreenCM());
    glEnable(GL_TEXTURE_2D);
    const RingList rings = CalcRingList(box);
    for (const Ring& ring : rings)
        DrawHandle(ring.pos, 2 * ring.radius, RingColor);
    if (IsInUse())
        DrawUsedRing(rings);
}

void ScaleTool::DrawUsedRing(const RingList& rings) const
{
    const Vec2 factor = GetCurrentScaleFactor(), arm = m_ring.pos - m_center;
    const Vec2 reach(arm.x * factor.x, arm.y * factor.y);
    if (m_center != m_ring.anchor)
    {
        const Vec2 along(m_ring.axes.x ? reach.x : 0, m_ring.axes.y ? reach.y : 0);
        DrawLineStrip({m_center - along, m_center + along}, GuideColor);
    }
    const Vec2 handle = m_center + reach;
    // By its place: what is mirrored has another ring there.
    const auto used = std::min_element(
        rings.begin(), rings.end(),
        [&handle](const Ring& a, const Ring& b)
        { return math::DistanceSq(a.pos, handle) < math::DistanceSq(b.pos, handle); });
    if (used != rings.end())
        DrawHandle(used->pos, 2 * used->radius, UsedRingColor);
}

std::string_view ScaleTool::GetCursorName() const
{
    if (IsInUse())
        return m_ring.cursor;
    const std::optional<Ring> ring =
        m_group ? GetRingAt(m_group->CalcFiniteAABB(), m_mouse) : std::nullopt;
    return ring ? ring->cursor : "";
}
}
