#include "physics/SpringDamper.h"

namespace physics
{
using math::Vec2;

Vec2 SpringDamper::CalculateForces(Vec2 p0, Vec2 p1, Vec2 w0, Vec2 w1) const
{
    Vec2 dir = p1 - p0;
    float length = dir.Normalize();
    if (length == 0)
    {
        // Deliberate: ends that coincide are driven apart along x.
        dir = Vec2(1, 0);
        length = 1e-6f;
    }
    return ((length - restLength) * springConstant + Dot(w1 - w0, dir) * dampingConstant) * dir;
}
}
