#include "physics/Contact.h"

#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/Failures.h"

#include <cmath>

namespace physics
{
using math::Cross;
using math::Dot;
using math::IsFinite;
using math::Vec2;

float Mix(float a, float b)
{
    const float product = a * b;
    return math::Sign(product) * std::sqrt(std::fabs(product));
}

Contact::Contact(Geom* g1, Geom* g2, size_t id, const Vec2& p, const Vec2& n, float d)
    : Constraint(Kind::Contact)
{
    Init(g1, g2, id, p, n, d);
}

void Contact::Init(Geom* g1, Geom* g2, size_t id, const Vec2& p, const Vec2& n, float d)
{
    CODE_ASSERT(IsFinite(p));
    CODE_ASSERT(IsFinite(n));
    CODE_ASSERT(IsFinite(d));

    TakeCreationNumber();
    m_distScale = 1;
    m_priority = 0;
    m_startTime = Simulation::GetInstancePtr()->GetSimTime();
    m_pos = p;
    m_normal = n;
    m_depth = d;
    m_isNew = true;
    m_contactId = ContactID(g1->GetID(), g2->GetID(), static_cast<unsigned>(id));
    m_relVel = Vec2();
    m_targetN = m_targetT = 0;
    m_totalN = m_totalT = 0;
    m_deltaN = m_deltaT = 0;

    m_bodies[0] = g1->GetBodyPtr();
    m_bodies[1] = g2->GetBodyPtr();
    m_friction = Mix(g1->GetFriction(), g2->GetFriction());
    m_restitution = Mix(g1->GetRestitution(), g2->GetRestitution());
    m_tangent = math::Rot90CCW(m_normal);

    m_massN = m_massT = m_massRegN = m_massRegT = 0;
    if (m_bodies[0] && m_bodies[1])
    {
        const AbstractBody& a = *m_bodies[0];
        const AbstractBody& b = *m_bodies[1];
        m_r[0] = m_pos - a.GetPos();
        m_r[1] = m_pos - b.GetPos();
        m_massN = CombinedMass(a, m_r[0], b, m_r[1], m_normal);
        m_massT = CombinedMass(a, m_r[0], b, m_r[1], m_tangent);
        // Deliberate: the regularisation is that of the last step, as the solver is set up after the
        // contacts are found. In the very first step it is 0.
        m_massRegN = 1 / (1 / m_massN + s_params.reg);
        m_massRegT = 1 / (1 / m_massT + s_params.reg);
    }
    m_effMassN = m_massN;
    m_effMassT = m_massT;
}

void Contact::ReadFrom(const Contact& old)
{
    m_startTime = old.m_startTime;
    m_totalN = old.m_totalN;
    m_totalT = old.m_totalT;
    m_isNew = false;
}

bool Contact::IsSeparating() const
{
    if (!m_bodies[0] || !m_bodies[1])
        return false;
    return Dot(m_bodies[1]->GetVelAtWorld(m_pos) - m_bodies[0]->GetVelAtWorld(m_pos), m_normal) > 0;
}

bool Contact::SolveInit()
{
    if (!m_bodies[0] || !m_bodies[1])
        return false;
    const AbstractBody& a = *m_bodies[0];
    const AbstractBody& b = *m_bodies[1];
    if (a.IsImmovable() && b.IsImmovable())
        return false;

    const Vec2 relAcc = CalcAcceleration(b, m_r[1]) - CalcAcceleration(a, m_r[0]);
    m_relVel = b.GetVelAtWorld(m_pos) - a.GetVelAtWorld(m_pos);
    const float vn = Dot(m_relVel, m_normal);
    const float vt = Dot(m_relVel, m_tangent);
    const float an = Dot(relAcc, m_normal);
    const float at = Dot(relAcc, m_tangent);

    float bias;
    if (m_isNew)
    {
        // An impact. Restitution acts here and in no later step of this touch, so that what rests
        // does not keep bouncing.
        m_effMassN = m_massN;
        m_effMassT = m_massT;
        bias = vn * (1 + m_restitution);
    }
    else
    {
        m_effMassN = m_massRegN;
        m_effMassT = m_massRegT;
        const float err = Min(s_targetPenetration - m_depth, s_maxPositionCorrection);
        bias = an * s_params.acc + err * s_params.dist * m_distScale + vn * s_params.vel;
    }
    m_targetN = -m_effMassN * bias;
    m_targetT = -m_effMassT * (vt * s_params.vel + at * s_params.acc);

    if (!m_isNew && s_warmStart)
    {
        m_totalN *= s_warmStartFactor;
        m_totalT *= s_warmStartFactor;
        Constraint::ApplyImpulse(m_totalN * m_normal + m_totalT * m_tangent);
    }
    else
        m_totalN = m_totalT = 0;
    return true;
}

void Contact::ApplyImpulse()
{
    Constraint::ApplyImpulse(m_deltaN * m_normal + m_deltaT * m_tangent);
    m_totalN += m_deltaN;
    m_totalT += m_deltaT;
}
}
