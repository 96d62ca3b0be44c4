#include "app/tools/ToolDrawing.h"

#include "rendering/Renderer.h"

#include <GL/gl.h>

namespace app
{
void DrawLineStrip(const math::Vec2List& points, const math::Vec4& color)
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    glDisable(GL_TEXTURE_2D);
    glBegin(GL_LINE_STRIP);
    for (const math::Vec2& point : points)
        renderer->Vertex(point);
    glEnd();
    glEnable(GL_TEXTURE_2D);
}
}
