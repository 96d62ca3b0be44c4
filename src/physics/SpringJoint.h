// A damped spring between two points of two bodies. How stiff it is follows from the masses that it
// joins, so that all springs of one strength swing alike, whatever they carry.
#pragma once

#include "math/Vector.h"
#include "physics/Joint.h"

namespace physics
{
class AbstractBody;

class SpringJoint final : public Joint
{
public:
    /// Rests at the present distance of the points.
    /// @param p0, p1  world positions of the ends
    /// @throws BadCoderException  when a geometry is null
    SpringJoint(GeomPtr g0, math::Vec2 p0, GeomPtr g1, math::Vec2 p1);

    void ApplyForce() override;

    /// @param out  the two ends
    void GetWorldPoints(math::Vec2* out) const;
    /// Potential energy; 0 when a body is missing.
    float CalcEnergy() const;

    /// World units.
    float GetRestLength() const { return m_restLength; }
    void SetRestLength(float length) { m_restLength = length; }
    /// Multiplier on Sim.springForce.
    float GetStrengthFactor() const { return m_strengthFactor; }
    void SetStrengthFactor(float factor) { m_strengthFactor = factor; }
    /// Multiplier on critical damping.
    float GetDampingFactor() const { return m_dampingFactor; }
    void SetDampingFactor(float factor) { m_dampingFactor = factor; }

private:
    float CalcMass(const AbstractBody& a, const AbstractBody& b, math::Vec2 dir) const;
    float CalcSpringConstant(float mass) const;

    math::Vec2 m_local[2]; // in each geometry's space
    float m_restLength;
    float m_strengthFactor = 1;
    float m_dampingFactor = 1;
};
using SpringJointPtr = util::SharedPtr<SpringJoint>;
}
