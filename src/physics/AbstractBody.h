// What moves: a position, a velocity, a mass. Rigid bodies and fluid particles derive from it, so that
// the integrators and the solver walk both alike.
#pragma once

#include "math/Vector.h"
#include "util/Pointee.h"
#include "util/SharedPtr.h"
#include "util/VectorPOD.h"

#include <cstdint>
#include <limits>

namespace physics
{
class Constraint;

// A body is immovable while it is suspended or when its inverse mass is 0: it takes no forces, keeps
// its velocity, and is not integrated.
class AbstractBody : public util::Pointee
{
public:
    AbstractBody()
        : m_id(s_idCounter++)
    {
    }
    /// A body of its own: a new id, in no simulation.
    AbstractBody(const AbstractBody& o);
    AbstractBody& operator=(const AbstractBody&) = delete;
    ~AbstractBody() override = default;

    /// Called after position or rotation have changed.
    virtual void ApplyPoseChange() {}
    /// True when the state is not finite any more; the simulation then removes the body.
    virtual bool IsBad() const;

    /// Has what a step reads of the body come from memory.
    void Prefetch() const { __builtin_prefetch(&m_pos); }

    /// Identity, counted up from 0 over all bodies of the process. The world body has 0.
    unsigned GetID() const { return m_id; }

    /// World position of the center of mass.
    const math::Vec2& GetPos() const { return m_pos; }
    const math::Vec2& GetVel() const { return m_vel; }
    /// Radians in (-pi, pi].
    float GetRot() const { return m_rot; }
    /// Radians per second.
    float GetAngVel() const { return m_angVel; }
    const math::Vec2& GetForce() const { return m_force; }
    float GetTorque() const { return m_torque; }
    float GetMass() const { return m_mass; }
    float GetMassInv() const { return m_massInv; }
    float GetInertia() const { return m_inertia; }
    float GetInertiaInv() const { return m_inertiaInv; }
    /// Summed area of the geometries.
    float GetArea() const { return m_area; }

    /// Among the bodies of the simulation. Particles never are.
    bool IsInSimulation() const { return m_isInSimulation; }

    bool IsSuspended() const { return m_suspended; }
    /// Holds the body still, for instance while the user edits it.
    void SetSuspended(bool suspended) { m_suspended = suspended; }
    bool IsImmovable() const { return m_suspended || m_massInv == 0; }

    /// The setters do nothing on an immovable body. SetPos and SetRot leave the pose as it is until
    /// ApplyPoseChange.
    void SetPos(const math::Vec2& pos)
    {
        if (!IsImmovable())
            m_pos = pos;
    }
    void SetRot(float rot)
    {
        if (!IsImmovable())
            m_rot = rot;
    }
    void SetVel(const math::Vec2& vel)
    {
        if (!IsImmovable())
            m_vel = vel;
    }
    void SetAngVel(float angVel)
    {
        if (!IsImmovable())
            m_angVel = angVel;
    }

    void AddForce(const math::Vec2& force)
    {
        if (!IsImmovable())
            m_force += force;
    }
    void AddTorque(float torque)
    {
        if (!IsImmovable())
            m_torque += torque;
    }
    /// A force that acts at a point of the world.
    void ApplyForce(math::Vec2 force, math::Vec2 worldPoint)
    {
        AddForce(force);
        AddTorque(math::Cross(worldPoint - m_pos, force));
    }
    void ClearForces()
    {
        m_force = math::Vec2();
        m_torque = 0;
    }

    /// The velocity of the body's matter at a point of the world.
    math::Vec2 GetVelAtWorld(math::Vec2 p) const
    {
        return m_vel + math::Cross(m_angVel, p - m_pos);
    }

    void IntegrateVelocity(float dt)
    {
        if (IsImmovable())
            return;
        m_vel += (dt * m_force) * m_massInv;
        m_angVel += (dt * m_torque) * m_inertiaInv;
    }
    void IntegratePosition(float dt)
    {
        if (IsImmovable())
            return;
        m_pos += dt * m_vel;
        m_rot = math::WrapAngle(m_rot + dt * m_angVel);
        if (m_hasPose)
            ApplyPoseChange();
    }

    // --- for the solvers ---

    /// Inverse mass and inertia as constraints see them: 0 while suspended.
    float GetSolverMassInv() const { return m_suspended ? 0 : m_massInv; }
    float GetSolverInertiaInv() const { return m_suspended ? 0 : m_inertiaInv; }
    /// What a solve has gathered so far. The velocity itself changes at the end of the solve only.
    const math::Vec2& GetVelChange() const { return m_velChange; }
    float GetAngVelChange() const { return m_angVelChange; }
    void SetVelChange(const math::Vec2& velChange, float angVelChange)
    {
        m_velChange = velChange;
        m_angVelChange = angVelChange;
    }
    /// Adds what was gathered to the velocity, unless immovable.
    void ApplyVelChange()
    {
        if (IsImmovable())
            return;
        m_vel += m_velChange;
        m_angVel += m_angVelChange;
    }
    /// Place among the bodies of the solve under way.
    uint32_t GetSolverIndex() const { return m_solverIndex; }
    void SetSolverIndex(uint32_t index) { m_solverIndex = index; }
    /// The constraints that touch this body; filled by the prioritised solver only.
    util::VectorPOD<Constraint*>& GetConstraints() { return m_constraints; }

protected:
    // In this order what a step touches of each body, again and again, fills 64 bytes: from the position to
    // the flags. Of ten thousand particles nothing else needs to come from memory.
    util::VectorPOD<Constraint*> m_constraints;
    unsigned m_id;
    float m_area = 0;
    math::Vec2 m_pos;
    math::Vec2 m_vel;
    math::Vec2 m_force;
    math::Vec2 m_velChange;
    float m_rot = 0;
    float m_angVel = 0;
    float m_torque = 0;
    float m_angVelChange = 0;
    float m_mass = std::numeric_limits<float>::infinity();
    float m_massInv = 0;
    float m_inertiaInv = 0;
    bool m_suspended = false;
    bool m_hasPose = true; // false where ApplyPoseChange does nothing, and needs no call

private:
    friend class Simulation;

    bool m_isInSimulation = false; // so that adding a body needs no search

protected:
    float m_inertia = std::numeric_limits<float>::infinity();

private:
    uint32_t m_solverIndex = 0;

    static inline unsigned s_idCounter = 0;
};
using AbstractBodyList = util::VectorPOD<AbstractBody*>;
}
