// How the particles of the water look: soft discs, one for each, that run into one another.
#pragma once

#include "math/BoundingBox.h"
#include "math/Vector.h"

namespace app
{
/// In world coordinates; under everything else.
/// @param view  what lies outside of it is left out
void DrawWater(const math::BoundingBox& view, const math::Vec4& color);
}
