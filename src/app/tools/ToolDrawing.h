// What the overlays of several tools draw, in world coordinates.
#pragma once

#include "math/Vector.h"

namespace app
{
/// As wide as App.lineWidth.
void DrawLineStrip(const math::Vec2List& points, const math::Vec4& color);
}
