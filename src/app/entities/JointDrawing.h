// How joints and pens look: plain shapes, light with a dark outline, so that they show on light and on
// dark bodies. One entity stands in one layer of depth, so these draw without a depth test.
#pragma once

#include "math/Vector.h"
#include "physics/Linesegment.h"

namespace app
{
/// A ring around a hub.
/// @param size  of the square that it fills, in world units; and so with the next ones
void DrawHinge(const math::Vec2& center, float size, const math::Vec4& color);
/// A cross.
/// @param angle  radians
void DrawFixJoint(const math::Vec2& center, float angle, float size, const math::Vec4& color);
/// A dot.
void DrawPen(const math::Vec2& center, float size, const math::Vec4& color);
/// A coil from end to end.
/// @param size  how wide it is
void DrawSpring(const physics::Linesegment& line, float size, const math::Vec4& color);
/// Around one of that size, which is under the mouse or selected.
void DrawRing(const math::Vec2& center, float size, const math::Vec4& color);
/// A ring that fills the square itself: something to take hold of.
void DrawHandle(const math::Vec2& center, float size, const math::Vec4& color);
}
