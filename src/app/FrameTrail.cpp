#include "app/FrameTrail.h"

#include "rendering/Renderer.h"

#include <GL/glew.h>

#include <cmath>

using math::IsFinite;
using math::Vec2;
using math::Vec3;

namespace app
{
static bool IsOn(const FrameTrail::Style& style)
{
    return style.color != Vec3(0, 0, 0);
}

static bool IsSane(const Vec2& v)
{
    // GL multiplies them with one another and with sizes in pixels. Written so that a NaN is none.
    const float limit = 1e6f;
    return std::fabs(v.x) <= limit && std::fabs(v.y) <= limit;
}

void FrameTrail::Draw(const Style& style, const Vec2& size) const
{
    if (!IsOn(style) || !IsFinite(style.color) || !IsSane(style.scale) ||
        !IsSane(style.translate) || !IsFinite(style.rotate))
        return;
    glPushMatrix();
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor3(style.color);
    renderer->Translate(style.translate);
    renderer->Translate(size * 0.5f);
    glRotatef(style.rotate, 0, 0, 1);
    glScalef(style.scale.x, style.scale.y, 1);
    renderer->Translate(size * -0.5f);
    m_frame.Draw(size);
    glPopMatrix();
}

void FrameTrail::Keep(const Style& style) const
{
    if (IsOn(style))
        m_frame.Copy();
}
}
