#include "physics/AbstractBody.h"

namespace physics
{
AbstractBody::AbstractBody(const AbstractBody& o)
    : Pointee(o)
    , m_velChange(o.m_velChange)
    , m_angVelChange(o.m_angVelChange)
    , m_pos(o.m_pos)
    , m_vel(o.m_vel)
    , m_force(o.m_force)
    , m_rot(o.m_rot)
    , m_angVel(o.m_angVel)
    , m_torque(o.m_torque)
    , m_inertia(o.m_inertia)
    , m_inertiaInv(o.m_inertiaInv)
    , m_mass(o.m_mass)
    , m_massInv(o.m_massInv)
    , m_area(o.m_area)
    , m_id(s_idCounter++)
    , m_suspended(o.m_suspended)
{
}

bool AbstractBody::IsBad() const
{
    using math::IsFinite;
    return !IsFinite(m_pos) || !IsFinite(m_vel) || !IsFinite(m_rot) || !IsFinite(m_angVel);
}
}
