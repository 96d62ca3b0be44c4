#include "app/tools/RotateTool.h"

#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/Pictures.h"
#include "app/tools/ToolDrawing.h"
#include "input/Key.h"
#include "physics/Geom.h"

#include <cmath>

using math::Mat2D;
using math::Vec2;

namespace app
{
namespace
{
const float MinDistance = 0.5f; // of the mouse from the centre, in screen centimetres
const float ArcRadius = 1;      // screen centimetres
const int ArcSteps = 32;
const math::Vec4 ArcColor(1, 1, 1, 0.5f);

/// Radians; 0 for a zero vector.
float AngleOf(const Vec2& v)
{
    return v == Vec2() ? 0 : std::atan2(v.y, v.x);
}

float CalcStartAngle(const Group& selection)
{
    if (selection.GetEntities().size() == 1)
        if (const GeomEntity* only = selection.GetFirst()->AsGeomEntity())
            return only->GetGeom()->GetPose().GetAngle();
    return 0;
}
}

RotateTool::RotateTool() = default;

RotateTool::~RotateTool() = default;

void RotateTool::OnDragBegin(const input::DragEvent& event)
{
    if (!IsFor(input::MouseRight, event) || !SelectAt(ToWorld(event.GetPosition())))
        return;
    event.SetHandled(true);
    const GroupPtr selection = Scene::GetInstancePtr()->GetSelection();
    m_startAngle = m_total = m_applied = CalcStartAngle(*selection);
    m_center = selection->CalcRotationCenter();
    RememberScene();
}

void RotateTool::OnDrag(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseRight, event))
        return;
    event.SetHandled(true);
    const Vec2 arm = ToWorld(event.GetPosition()) - m_center;
    if (!IsInHand())
    {
        if (arm.Length() > MinDistance * App::GetInstancePtr()->GetScreenCM())
            TakeInHand();
        return;
    }
    const Camera* camera = Scene::GetInstancePtr()->GetCamera().get();
    const Vec2 armBefore = arm - camera->GUIToWorldNormal(event.GetDelta());
    m_total += math::WrapAngle(AngleOf(arm) - AngleOf(armBefore));
    if (m_total >= math::TwoPIf)
        m_total -= math::TwoPIf;
    if (m_total <= -math::TwoPIf)
        m_total += math::TwoPIf;
    const float step = CalcStep();
    if (step == 0)
        return;
    TransformHeld(Mat2D::Translation(m_center) * Mat2D::Rotation(step) *
                  Mat2D::Translation(-m_center));
    m_applied += step;
}

float RotateTool::CalcStep() const
{
    if (IsShiftDown())
        return SnapAngle(m_total) - m_applied;
    return math::WrapAngle(m_total - m_applied);
}

void RotateTool::OnDragEnd(const input::DragEvent& event)
{
    if (!IsInUse() || !IsFor(input::MouseRight, event))
        return;
    LetGo();
    event.SetHandled(true);
}

bool RotateTool::Disband()
{
    if (!IsInUse())
        return false;
    BreakOff();
    return true;
}

void RotateTool::Draw() const
{
    if (!IsInUse())
        return;
    const App* app = App::GetInstancePtr();
    static const rendering::TextureProxy& s_origo = GetPicture("rotate_origo.png");
    DrawPicture(s_origo, m_center, app->GetDefaultJointSize(), math::Vec4(1, 1, 1, 1));
    const float radius = ArcRadius * app->GetScreenCM();
    math::Vec2List arc;
    for (int i = 0; i <= ArcSteps; ++i)
    {
        const float angle = math::Lerp(m_startAngle, m_total, float(i) / ArcSteps);
        arc.push_back(m_center + Vec2(std::cos(angle), std::sin(angle)) * radius);
    }
    DrawLineStrip(arc, ArcColor);
}
}
