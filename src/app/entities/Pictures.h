// Pictures from the folder of textures: what joints, pens and the handles of tools look like.
#pragma once

#include "math/Vector.h"
#include "rendering/TextureProxy.h"

namespace app
{
class Entity;

/// A picture of that name, loaded at its first use. It lives for ever: whoever draws it keeps the reference.
const rendering::TextureProxy& GetPicture(const char* name);
/// On a square.
/// @param size   its side, in world units
/// @param color  that the picture's own are multiplied with
void DrawPicture(const rendering::TextureProxy& picture, const math::Vec2& center, float size,
                 const math::Vec4& color);
/// A ring to take hold of.
void DrawHandle(const math::Vec2& center, float size, const math::Vec4& color);
/// The ring around an entity of that size which the mouse is on, or which is selected; else nothing.
void DrawRing(const Entity& entity, const math::Vec2& center, float size);
/// World units; how far from its centre a picture of that size reaches, together with its ring and
/// however it is turned.
float GetPictureReach(float size);
}
