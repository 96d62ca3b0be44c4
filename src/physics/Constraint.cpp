#include "physics/Constraint.h"

namespace physics
{
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
