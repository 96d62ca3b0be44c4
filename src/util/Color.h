// Colour arithmetic. Components lie in 0 to 1.
#pragma once

#include "math/Vector.h"

namespace util
{
/// @param hue  degrees, wrapped to 0..360
math::Vec3 HSL2RGB(float hue, float saturation, float lightness);
/// The mean of the three.
float RGBIntensity(const math::Vec3& rgb);
}
