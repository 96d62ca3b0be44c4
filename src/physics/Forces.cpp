// The forces of a step: gravity, air friction, buoyancy in air; joints; what water does to water.

#include "physics/ForEachAhead.h"
#include "physics/Geom.h"
#include "physics/Joint.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace physics
{
using math::Vec2;

namespace
{
// The settings, read once.
struct Air
{
    float invDt;
    float linear, quadratic, rot;
    float density;
    Vec2 gravity;
    bool hasFriction;
};

// Drag on a body that shows the air a width, centered at an arm from its center of mass. Inlined, as
// next: what is zero for all particles then costs nothing for any.
inline __attribute__((always_inline)) void AddAirFrictionForce(const Air& air, AbstractBody& body,
                                                               const Vec2& vel, float speed,
                                                               float width, const Vec2& arm,
                                                               float mult)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float mass = body.IsSuspended() ? inf : body.GetMass();
    const float inertia = body.IsSuspended() ? inf : body.GetInertia();

    // Drag can at most stop the body in one step and never reverses it.
    const float k = std::min((speed * air.quadratic + air.linear) * width * mult, mass * air.invDt);
    const Vec2 force = -k * vel;
    body.AddForce(force);
    body.AddTorque(math::Cross(arm, force));

    // Deliberate: mass, not inertia. Of two bodies of equal mass the long one keeps its spin longer.
    const float spin = std::fabs(body.GetAngVel());
    const float drag = mult * (mass * (spin * air.rot));
    const float limit = air.invDt * (inertia * spin);
    body.AddTorque(-std::min(drag, limit) * math::Sign(body.GetAngVel()));
}

inline __attribute__((always_inline)) void AddAirBuoyancy(const Air& air, AbstractBody& body,
                                                          float area, const Vec2& arm)
{
    const Vec2 force = -(area * air.density) * air.gravity;
    body.AddForce(force);
    body.AddTorque(math::Cross(arm, force));
}

void AddAirForces(const Air& air, Body& body)
{
    const Vec2 vel = body.GetVel();
    const float speed = vel.Length();
    const Vec2 across = math::Rot90CW(speed == 0 ? Vec2() : vel / speed);
    float width = 0, frictionArea = 0;
    Vec2 widthCenter, areaCenter;
    for (const Body::BodyPart& part : body.GetParts())
    {
        const Geom& geom = *part.geom;
        const math::OBB2D obb = geom.GetOBBWorld();
        const float w = 2 * obb.ProjectedRadius(across);
        width += w;
        widthCenter += w * obb.GetCenter();
        const float area = geom.Area();
        areaCenter += area * geom.GetCenter();
        frictionArea += geom.GetAirFrictionMult() * area;
    }
    if (air.hasFriction && !math::IsZero(speed) && width > 0)
        AddAirFrictionForce(air, body, vel, speed, width, widthCenter / width - body.GetPos(),
                            frictionArea / body.GetArea());
    if (air.density != 0)
        AddAirBuoyancy(air, body, body.GetArea(), areaCenter / body.GetArea() - body.GetPos());
}
}

void Simulation::CalcForces()
{
    QUIB_PROFILE("Simulation::CalcForces");
    Air air{1 / m_timeDelta,
            m_airFrictionLinear,
            m_airFrictionQuadratic,
            m_rotFrictionLinear,
            m_airDensity,
            GetGravity(),
            false};
    air.hasFriction = air.linear != 0 || air.quadratic != 0 || air.rot != 0;
    {
        QUIB_PROFILE("Body forces");
        const bool hasAir = m_airSwitch;
        for (const BodyPtr& body : m_bodies)
            if (!body->IsImmovable())
            {
                body->AddForce(body->GetMass() * air.gravity);
                if (hasAir)
                    AddAirForces(air, *body);
            }
    }
    SPH& sph = *SPH::GetInstancePtr();
    {
        QUIB_PROFILE("Particle forces");
        const float radius = sph.m_radius;
        const float area = radius * radius * math::PIf;
        // Deliberate: by the present settings, not by the particle's own mass.
        const Vec2 weight = area * sph.m_density * air.gravity;
        const auto addForces = [&](Particle& particle)
        {
            particle.AddForce(weight);
            // Deliberate: the switch for the air does not count here.
            if (air.hasFriction)
                AddAirFrictionForce(air, particle, particle.GetVel(), particle.GetVel().Length(),
                                    2 * radius, Vec2(), 1);
            if (air.density != 0)
                AddAirBuoyancy(air, particle, area, Vec2());
        };
        ForEachAhead(m_particles, addForces);
    }
    for (const JointPtr& joint : m_joints)
        joint->ApplyForce();
    if (m_running)
        sph.Update(m_particles, m_timeDelta);
}
}
