#include "gui/components/WobbleComponent.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

using math::Mat3;
using math::Vec2;

namespace gui
{
namespace
{
// Of the spring from the picture to the position, per unit of mass.
const float Stiffness = 300; // 1/s^2
const float Damping = 20;    // 1/s
const float MaxStep = 0.05f; // s; below this the integration is stable
}

WobbleComponent::WobbleComponent() = default;

WobbleComponent::~WobbleComponent() = default;

void WobbleComponent::SetWobble(bool on)
{
    m_wobble = on;
    if (!on)
        Settle();
}

void WobbleComponent::SetOuterPos(Vec2 pos)
{
    Component::SetOuterPos(pos);
    if (!m_wobble)
        Settle();
}

void WobbleComponent::Settle()
{
    m_drawnPos = GetOuterPos();
    m_drawnVel = Vec2();
    m_bend = Mat3();
}

void WobbleComponent::Update(float dt)
{
    Component::Update(dt);
    if (!m_wobble)
    {
        Settle();
        return;
    }
    const int steps = std::max(1, static_cast<int>(std::ceil(dt / MaxStep)));
    const float step = dt / steps;
    for (int i = 0; i < steps; ++i)
    {
        const Vec2 acceleration = (GetOuterPos() - m_drawnPos) * Stiffness - m_drawnVel * Damping;
        m_drawnVel += step * acceleration;
        m_drawnPos += step * m_drawnVel;
    }
    // A position that was no number must not be the last one.
    if (!IsFinite(m_drawnPos) || !IsFinite(m_drawnVel))
        Settle();
    CalcBend();
}

void WobbleComponent::CalcBend()
{
    const Vec2 d = GetOuterPos() - m_drawnPos;
    const Vec2 size = GetOuterSize();
    m_bend = Mat3();
    // Without a length there is nothing to be bent.
    if (m_axis == WobbleDown && size.y > 0)
    {
        m_bend[0][1] = -d.x / size.y;
        m_bend[1][1] = 1 - d.y / size.y;
    }
    if (m_axis == WobbleRight && size.x > 0)
    {
        m_bend[0][0] = 1 - d.x / size.x;
        m_bend[1][0] = -d.y / size.x;
    }
}

void WobbleComponent::DrawCompAndChildren() const
{
    if (!m_wobble)
    {
        Component::DrawCompAndChildren();
        return;
    }
    const Vec2 offset = GetInnerOffset();
    glPushMatrix();
    glTranslatef(-offset.x, -offset.y, 0);
    math::Mat4FromMat2D(m_bend).MultToGL();
    glTranslatef(offset.x, offset.y, 0);
    Component::DrawCompAndChildren();
    glPopMatrix();
}

Mat3 WobbleComponent::CalcWorldToLocalTransform() const
{
    // A picture that is bent flat shows no place at all.
    if (!m_wobble || m_bend.Determinant() == 0)
        return Component::CalcWorldToLocalTransform();
    const Vec2 offset = GetInnerOffset();
    return Mat3::Translation2D(-offset) * Inverted(m_bend) * Mat3::Translation2D(offset) *
           Component::CalcWorldToLocalTransform();
}
}
