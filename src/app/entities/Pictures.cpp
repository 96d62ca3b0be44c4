#include "app/entities/Pictures.h"

#include "app/App.h"
#include "app/entities/Entity.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"

#include <GL/glew.h>

namespace app
{
namespace
{
const float RingSize = 1.3f; // of what it lies around
}

const rendering::TextureProxy& GetPicture(const char* name)
{
    // Not destroyed at the end of the program, when GL has gone before.
    return *new rendering::TextureProxy(
        rendering::TextureManager::GetInstancePtr()->Load(name, {GL_RGBA, true}));
}

void DrawPicture(const rendering::TextureProxy& picture, const math::Vec2& center, float size,
                 const math::Vec4& color)
{
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(color);
    picture->Bind();
    renderer->DrawRect(center, size);
    picture->Unbind();
}

void DrawHandle(const math::Vec2& center, float size, const math::Vec4& color)
{
    static const rendering::TextureProxy& s_ring = GetPicture("ring");
    DrawPicture(s_ring, center, size, color);
}

void DrawRing(const Entity& entity, const math::Vec2& center, float size)
{
    if (entity.IsMouseOver() || entity.IsSelected())
        DrawHandle(center, RingSize * size, App::GetInstancePtr()->GetBorderColor(&entity));
}

float GetPictureReach(float size)
{
    // Half the diagonal of the picture's square is more than half the side of the ring's.
    return size * 0.7072f;
}
}
