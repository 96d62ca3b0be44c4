#include "physics/SpringJoint.h"

#include "physics/Constraint.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/SpringDamper.h"

#include <cmath>

namespace physics
{
using math::Vec2;

SpringJoint::SpringJoint(GeomPtr g0, Vec2 p0, GeomPtr g1, Vec2 p1)
    : Joint(g0, g1)
    , m_local{TransformCoordinate(g0->GetPoseInv(), p0), TransformCoordinate(g1->GetPoseInv(), p1)}
    , m_restLength(math::Distance(p0, p1))
{
}

void SpringJoint::GetWorldPoints(Vec2* out) const
{
    for (int i = 0; i < 2; ++i)
        out[i] = TransformCoordinate(m_geoms[i]->GetPose(), m_local[i]);
}

float SpringJoint::CalcMass(const AbstractBody& a, const AbstractBody& b, Vec2 dir) const
{
    // Deliberate: the anchors in geometry space stand for the arms. They have the right length where
    // the geometry sits at its body's center, but not the direction: a turned body swings differently.
    return CombinedMass(a, m_local[0], b, m_local[1], dir);
}

float SpringJoint::CalcSpringConstant(float mass) const
{
    return mass * Simulation::GetInstancePtr()->m_springForce * m_strengthFactor;
}

void SpringJoint::ApplyForce()
{
    AbstractBody* const a = m_geoms[0]->GetBodyPtr();
    AbstractBody* const b = m_geoms[1]->GetBodyPtr();
    if (!a || !b)
        return;
    Vec2 p[2];
    GetWorldPoints(p);
    const float mass = CalcMass(*a, *b, math::Normalized(p[1] - p[0]));
    const float constant = CalcSpringConstant(mass);
    const float damping = 2 * std::sqrt(mass * constant) * m_dampingFactor;
    const Vec2 force = SpringDamper{constant, damping, m_restLength}.CalculateForces(
        p[0], p[1], a->GetVelAtWorld(p[0]), b->GetVelAtWorld(p[1]));
    a->ApplyForce(force, p[0]);
    b->ApplyForce(-force, p[1]);
}

float SpringJoint::CalcEnergy() const
{
    const AbstractBody* const a = m_geoms[0]->GetBodyPtr();
    const AbstractBody* const b = m_geoms[1]->GetBodyPtr();
    if (!a || !b)
        return 0;
    Vec2 p[2];
    GetWorldPoints(p);
    const float constant = CalcSpringConstant(CalcMass(*a, *b, math::Normalized(p[1] - p[0])));
    const float stretch = math::Distance(p[0], p[1]) - m_restLength;
    return 0.5f * constant * (stretch * stretch);
}
}
