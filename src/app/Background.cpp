#include "app/Background.h"

#include "rendering/Pushers.h"
#include "rendering/Renderer.h"

#include <GL/gl.h>

using math::Vec2;
using math::Vec4;

namespace app
{
Background::Background()
    : m_skyColor(this, "skyColor", Vec4(0.3f, 0.4f, 1, 1))
    , m_cloudOpacity(this, "cloudOpacity", 0.9f)
    , m_drawClouds(this, "drawClouds", true)
{
    SetReflectedName("Background");
    SetFillOwner(true);
}

void Background::DrawBG() const
{
    rendering::ColorPusher color;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    const Vec2 size = GetInnerSize();
    const Vec4 top = GetSkyColor();
    const Vec4 bottom((top.x + 1) / 2, (top.y + 1) / 2, (top.z + 1) / 2, top.w);

    glDisable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    renderer->SetColor4(top);
    renderer->Vertex(Vec2(0, 0));
    renderer->Vertex(Vec2(size.x, 0));
    renderer->SetColor4(bottom);
    renderer->Vertex(Vec2(size.x, size.y));
    renderer->Vertex(Vec2(0, size.y));
    glEnd();
    glEnable(GL_TEXTURE_2D);
}
}
