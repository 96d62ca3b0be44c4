#include "util/Color.h"

#include <cmath>

namespace util
{
math::Vec3 HSL2RGB(float hue, float saturation, float lightness)
{
    hue = std::fmod(hue, 360.0f);
    if (hue < 0)
        hue += 360.0f;
    const float chroma = (1 - std::fabs(2 * lightness - 1)) * saturation;
    const float sector = hue / 60.0f;
    const float x = chroma * (1 - std::fabs(std::fmod(sector, 2.0f) - 1));
    const float m = lightness - chroma / 2;
    switch (static_cast<int>(sector))
    {
    case 0:
        return math::Vec3(chroma + m, x + m, m);
    case 1:
        return math::Vec3(x + m, chroma + m, m);
    case 2:
        return math::Vec3(m, chroma + m, x + m);
    case 3:
        return math::Vec3(m, x + m, chroma + m);
    case 4:
        return math::Vec3(x + m, m, chroma + m);
    default:
        return math::Vec3(chroma + m, m, x + m);
    }
}

float RGBIntensity(const math::Vec3& rgb)
{
    return (rgb.x + rgb.y + rgb.z) / 3;
}
}
