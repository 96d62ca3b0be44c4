#include "gui/Border.h"

#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

using math::Vec2;

namespace gui
{
SimpleBorder::SimpleBorder(float width, const math::Vec4& frameColor, const math::Vec4& fillColor)
    : m_width(width)
    , m_frameColor(frameColor)
    , m_fillColor(fillColor)
{
}

void SimpleBorder::Draw(Vec2 innerSize) const
{
    QUIB_PROFILE("SimpleBorder::Draw");
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Vec2 pos(-m_width, -m_width);
    const Vec2 size = innerSize + Vec2(2 * m_width, 2 * m_width);
    // Most components have an empty border: a fill that nobody sees would cost its whole area.
    if (m_fillColor.w != 0)
    {
        rendering::ColorPusher color;
        renderer->MulColor4(m_fillColor);
        renderer->DrawRect(pos, size, Vec2(1, 1));
    }
    if (m_width != 0)
    {
        rendering::ColorPusher color;
        renderer->MulColor4(m_frameColor);
        renderer->DrawFrame(pos, size, m_width);
    }
}
}
