#include "app/Camera.h"

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Scene.h"
#include "gui/GUI.h"

#include <algorithm>
#include <cmath>

using math::Mat3;
using math::Vec2;

namespace app
{
namespace
{
float ClampZoom(float zoom)
{
    return std::clamp(zoom, Camera::GetMinZoom(), Camera::GetMaxZoom());
}
}

Camera::Camera()
    : Reflected("Camera")
    , m_panAttrib(this, "pan", Vec2(), &Camera::GetPan, &Camera::SetPanAttrib)
    , m_zoomAttrib(this, "zoom", GetDefaultZoom(), &Camera::GetZoom, &Camera::SetZoomAttrib)
{
}

// Native writes. They go through the attributes, which brings a value to scripts, removes the formula
// that was bound there, and calls whoever waits for a change.

void Camera::SetPan(const Vec2& pan)
{
    if (math::IsFinite(pan))
        m_panAttrib = pan;
}

void Camera::SetZoom(float zoom)
{
    if (math::IsFinite(zoom))
        m_zoomAttrib = ClampZoom(zoom);
}

void Camera::SetView(const Vec2& pan, float zoom)
{
    SetPan(pan);
    SetZoom(zoom);
}

// Behind the attributes, so for scripts too. A script must not be able to lock the user out of the
// view, and is told. A formula gets here in every frame with what it gives, and must not be replaced
// by that.

void Camera::SetPanAttrib(Vec2 pan)
{
    if (!math::IsFinite(pan))
        QUIB_THROW(BadDataException("The pan must be finite"));
    m_pan = pan;
}

void Camera::SetZoomAttrib(float zoom)
{
    if (!math::IsFinite(zoom))
        QUIB_THROW(BadDataException("The zoom must be finite"));
    m_zoom = ClampZoom(zoom);
    // A plain value out of range reads as what it became.
    if (m_zoom != zoom && !m_zoomAttrib->GetObject()->IsFunction())
        m_zoomAttrib = m_zoom;
}

void Camera::SetWorldToGUI(const Mat3& m)
{
    if (m.Determinant() == 0)
        return;
    SetGUIToWorld(Inverted(m));
}

void Camera::SetGUIToWorld(const Mat3& m)
{
    const float zoom = 1 / m[0][0];
    const Vec2 pan = TransformCoordinate(m, gui::GUI::GetInstancePtr()->GetSize() * 0.5f);
    if (!math::IsFinite(zoom) || !math::IsFinite(pan))
        return;
    SetView(pan, zoom);
}

void Camera::Reset()
{
    SetTrackedGroup(nullptr);
    SetView(Vec2(), GetDefaultZoom());
}

void Camera::PanView(const Vec2& delta)
{
    SetPan(m_pan - GUIToWorldNormal(delta));
}

void Camera::ZoomView(float delta)
{
    SetZoom(m_zoom * std::exp2(delta * App::GetInstancePtr()->GetAppGUI()->GetZoomFactor()));
}

void Camera::ZoomView(float delta, const Vec2& fixedPos)
{
    const Vec2 before = GUIToWorld(fixedPos);
    ZoomView(delta);
    SetPan(m_pan + (before - GUIToWorld(fixedPos)));
}

Mat3 Camera::WorldToGUI() const
{
    const Vec2 middle = gui::GUI::GetInstancePtr()->GetSize() * 0.5f;
    return Mat3(m_zoom, 0, middle.x - m_zoom * m_pan.x,  //
                0, -m_zoom, middle.y + m_zoom * m_pan.y, //
                0, 0, 1);
}

Mat3 Camera::GUIToWorld() const
{
    const Vec2 middle = gui::GUI::GetInstancePtr()->GetSize() * 0.5f;
    const float s = 1 / m_zoom;
    return Mat3(s, 0, m_pan.x - s * middle.x,  //
                0, -s, m_pan.y + s * middle.y, //
                0, 0, 1);
}

Vec2 Camera::GUIToWorld(const Vec2& pos) const
{
    return TransformCoordinate(GUIToWorld(), pos);
}

Vec2 Camera::WorldToGUI(const Vec2& pos) const
{
    return TransformCoordinate(WorldToGUI(), pos);
}

Vec2 Camera::GUIToWorldNormal(const Vec2& v) const
{
    return Vec2(v.x / m_zoom, -v.y / m_zoom);
}

void Camera::SetTrackedGroup(const GroupPtr& group)
{
    if (group == m_trackedGroup)
        return;
    const GroupPtr old = m_trackedGroup;
    m_trackedGroup = group;
    m_lastTrackedCenter = GetGroupCenter(group);
    if (old && old->GetName() == TrackedName)
        Scene::GetInstancePtr()->RemoveGroup(old);
}

void Camera::Update(float)
{
    if (!m_trackedGroup)
        return;
    const Vec2 center = GetGroupCenter(m_trackedGroup);
    if (!math::IsFinite(center))
    {
        SetTrackedGroup(nullptr);
        return;
    }
    if (center != m_lastTrackedCenter)
        SetPan(m_pan + (center - m_lastTrackedCenter));
    m_lastTrackedCenter = center;
}
}
