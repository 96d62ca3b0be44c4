// The law of a damped spring between two points.
#pragma once

#include "math/Vector.h"

namespace physics
{
struct SpringDamper
{
    float springConstant;  // force per length
    float dampingConstant; // force per speed
    float restLength;

    /// @param p0, p1  the ends
    /// @param w0, w1  their velocities
    /// @return the force on the first end; that on the second is its opposite
    math::Vec2 CalculateForces(math::Vec2 p0, math::Vec2 p1, math::Vec2 w0, math::Vec2 w1) const;
};
}
