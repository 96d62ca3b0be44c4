#include "physics/Hinge.h"

#include "physics/Geom.h"
#include "util/Failures.h"

#include <algorithm>

namespace physics
{
using math::Cross;
using math::Vec2;

Hinge::Hinge(GeomPtr g0, GeomPtr g1, Vec2 local0, Vec2 local1)
    : Constraint(Kind::Hinge)
    , m_geoms{g0, g1}
    , m_local{local0, local1}
{
    CODE_ASSERT(g0);
    CODE_ASSERT(g1);
}

Hinge::Hinge(GeomPtr g0, GeomPtr g1, Vec2 worldPoint)
    : Hinge(g0, g1, Vec2(), Vec2())
{
    for (int i = 0; i < 2; ++i)
        m_local[i] = TransformCoordinate(m_geoms[i]->GetPoseInv(), worldPoint);
}

Hinge::~Hinge() = default;

void Hinge::Activate()
{
    m_geoms[0]->AddNoCollide(m_geoms[1].get());
    m_geoms[1]->AddNoCollide(m_geoms[0].get());
}

void Hinge::Deactivate()
{
    // Deliberate: nobody counts. Of two hinges on one pair the first to go makes the pair collide.
    m_geoms[0]->RemoveNoCollide(m_geoms[1].get());
    m_geoms[1]->RemoveNoCollide(m_geoms[0].get());
}

bool Hinge::IsGood() const
{
    const AbstractBody* const a = m_geoms[0]->GetBodyPtr();
    const AbstractBody* const b = m_geoms[1]->GetBodyPtr();
    return !m_broken && a && a->IsInSimulation() && b && b->IsInSimulation();
}

void Hinge::GetWorldPoints(Vec2* out) const
{
    for (int i = 0; i < 2; ++i)
        out[i] = TransformCoordinate(m_geoms[i]->GetPose(), m_local[i]);
}

Vec2 Hinge::GetPos() const
{
    Vec2 p[2];
    GetWorldPoints(p);
    return (p[0] + p[1]) * 0.5f;
}

bool Hinge::SolveInit()
{
    m_bodies[0] = m_geoms[0]->GetBodyPtr();
    m_bodies[1] = m_geoms[1]->GetBodyPtr();
    if (!m_bodies[0] || !m_bodies[1] || m_bodies[0] == m_bodies[1])
        return false;
    AbstractBody& a = *m_bodies[0];
    AbstractBody& b = *m_bodies[1];
    if (a.IsImmovable() && b.IsImmovable())
        return false;

    Vec2 p[2];
    GetWorldPoints(p);
    if (math::DistanceSq(p[0], p[1]) > m_distanceLimit * m_distanceLimit)
    {
        m_broken = true;
        return false;
    }
    const Vec2 r0 = m_r[0] = p[0] - a.GetPos();
    const Vec2 r1 = m_r[1] = p[1] - b.GetPos();

    const float mass = a.GetSolverMassInv() + b.GetSolverMassInv();
    const float i0 = a.GetSolverInertiaInv();
    const float i1 = b.GetSolverInertiaInv();
    if (!CalcInverseMass(mass, i0, i1))
        return false;

    const Vec2 relAcc = CalcAcceleration(b, r1) - CalcAcceleration(a, r0);
    const Vec2 relVel = b.GetVelAtWorld(p[1]) - a.GetVelAtWorld(p[0]);
    Vec2 drift = p[1] - p[0];
    const float distance = drift.Length();
    if (distance > 0)
        drift = Min(distance, s_maxPositionCorrection) * drift / distance;
    m_bias = -(relAcc * s_params.acc + drift * s_params.dist * m_distScale + relVel * s_params.vel);

    if (m_motor)
    {
        m_motorMass = 1 / (i0 + i1 + s_params.reg);
        m_motorMaxImpulse = m_motorMass * s_params.dt * m_motorTorque;
        m_motorBias = (m_motorSpeed - (b.GetAngVel() - a.GetAngVel())) * s_params.vel -
                      (i1 * b.GetTorque() - i0 * a.GetTorque()) * s_params.acc;
    }

    if (!s_warmStart)
    {
        m_total = Vec2();
        m_motorTotal = 0;
        return true;
    }
    const float factor = s_warmStartFactor * m_warmScale;
    m_total *= factor;
    Constraint::ApplyImpulse(m_total);
    if (m_motor && m_motorTotal != 0)
    {
        m_motorTotal *= factor;
        ApplyAngularImpulse(m_motorTotal);
    }
    return true;
}

// Inverts K: the velocity that a unit impulse gives the anchors, and the softness that keeps it invertible
// where bodies are heavy.
//
// In single precision long levers, whose squares stand in all elements, leave nothing of the masses in the
// determinant: of its terms those that cancel are left out here. And in no more digits than the solver has,
// what resists along a lever is lost beside what resists across it, and the body is thrown out of the world:
// the softness is never less than such digits can tell.
/// @return false when there is no inverse; the old one is kept then
bool Hinge::CalcInverseMass(double massInv, double i0, double i1)
{
    const double x0 = m_r[0].x, y0 = m_r[0].y, x1 = m_r[1].x, y1 = m_r[1].y;
    const double levers = i0 * (x0 * x0 + y0 * y0) + i1 * (x1 * x1 + y1 * y1);
    const double soft = std::max(massInv + s_params.reg, 1e-7 * levers); // a NaN stays
    const double cross = x0 * y1 - y0 * x1;
    const double det = soft * soft + soft * levers + i0 * i1 * (cross * cross);
    const math::TMatrix2<float> inverse(
        static_cast<float>((soft + i0 * (x0 * x0) + i1 * (x1 * x1)) / det),
        static_cast<float>((i0 * (x0 * y0) + i1 * (x1 * y1)) / det),
        static_cast<float>((i0 * (x0 * y0) + i1 * (x1 * y1)) / det),
        static_cast<float>((soft + i0 * (y0 * y0) + i1 * (y1 * y1)) / det));
    if (!math::IsFinite(inverse.m00) || !math::IsFinite(inverse.m01) ||
        !math::IsFinite(inverse.m11))
        return false;
    m_invK = inverse;
    return true;
}

void Hinge::CalcDesiredImpulse()
{
    if (m_broken)
    {
        m_priority = 0;
        return;
    }
    const AbstractBody& a = *m_bodies[0];
    const AbstractBody& b = *m_bodies[1];
    const Vec2 w = (b.GetVelChange() + Cross(b.GetAngVelChange(), m_r[1])) -
                   (a.GetVelChange() + Cross(a.GetAngVelChange(), m_r[0]));
    m_impulse = m_invK * (m_bias - w);
    m_priority = m_impulse.LengthSq();
    if (!m_motor)
        return;
    const float total =
        (m_motorBias - (b.GetAngVelChange() - a.GetAngVelChange())) * m_motorMass + m_motorTotal;
    m_motorDelta = Max(-m_motorMaxImpulse, Min(m_motorMaxImpulse, total)) - m_motorTotal;
    m_priority += m_motorDelta * m_motorDelta;
}

void Hinge::ApplyImpulse()
{
    if (m_broken)
        return;
    m_total += m_impulse;
    if (m_total.LengthSq() > m_impulseLimit * m_impulseLimit)
    {
        m_broken = true;
        return;
    }
    Constraint::ApplyImpulse(m_impulse);
    if (m_motor && m_motorDelta != 0)
    {
        ApplyAngularImpulse(m_motorDelta);
        m_motorTotal += m_motorDelta;
    }
}
}
