#include "physics/Constraint.h"

namespace physics
{
using math::Cross;
using math::Vec2;

void Constraint::ApplyImpulse(const Vec2& impulse)
{
    // Immovable bodies are left out rather than changed by 0 * impulse: an infinite impulse on one body
    // must not reach, as 0 * infinity, everything that stands on the same ground.
    AbstractBody& a = *m_bodies[0];
    if (!a.IsImmovable())
        a.SetVelChange(a.GetVelChange() - a.GetMassInv() * impulse,
                       a.GetAngVelChange() - a.GetInertiaInv() * Cross(m_r[0], impulse));
    AbstractBody& b = *m_bodies[1];
    if (!b.IsImmovable())
        b.SetVelChange(b.GetVelChange() + b.GetMassInv() * impulse,
                       b.GetAngVelChange() + b.GetInertiaInv() * Cross(m_r[1], impulse));
}

void Constraint::ApplyAngularImpulse(float impulse)
{
    AbstractBody& a = *m_bodies[0];
    if (!a.IsImmovable())
        a.SetVelChange(a.GetVelChange(), a.GetAngVelChange() - a.GetInertiaInv() * impulse);
    AbstractBody& b = *m_bodies[1];
    if (!b.IsImmovable())
        b.SetVelChange(b.GetVelChange(), b.GetAngVelChange() + b.GetInertiaInv() * impulse);
}
}
