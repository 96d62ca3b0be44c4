#include "physics/AbstractBody.h"

namespace physics
{
AbstractBody::AbstractBody(const AbstractBody& o)
    : Pointee(o)
    , m_id(s_idCounter++)
    , m_area(o.m_area)
    , m_pos(o.m_pos)
    , m_vel(o.m_vel)
    , m_force(o.m_force)
    , m_velChange(o.m_velChange)
    , m_rot(o.m_rot)
    , m_angVel(o.m_angVel)
    , m_torque(o.m_torque)
    , m_angVelChange(o.m_angVelChange)
    , m_mass(o.m_mass)
    , m_massInv(o.m_massInv)
    , m_inertiaInv(o.m_inertiaInv)
    , m_suspended(o.m_suspended)
    , m_hasPose(o.m_hasPose)
    , m_inertia(o.m_inertia)
{
}

bool AbstractBody::IsBad() const
{
    using math::IsFinite;
    return !IsFinite(m_pos) || !IsFinite(m_vel) || !IsFinite(m_rot) || !IsFinite(m_angVel);
}
}
