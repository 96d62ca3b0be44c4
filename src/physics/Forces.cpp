// The forces of a step: gravity, air friction, buoyancy in air.

#include "physics/Geom.h"
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
struct AirFriction
{
    float invDt;
    float linear, quadratic, rot;
};

// Drag on a body that shows the air a width, centered at an arm from its center of mass.
void AddAirFrictionForce(const AirFriction& air, AbstractBody& body, const Vec2& vel, float speed,
                         float width, const Vec2& arm, float mult)
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

void AddAirBuoyancy(float density, const Vec2& gravity, AbstractBody& body, float area,
                    const Vec2& arm)
{
    const Vec2 force = -(area * density) * gravity;
    body.AddForce(force);
    body.AddTorque(math::Cross(arm, force));
}
}

void Simulation::CalcForces()
{
    util::ScopeProfiler profile("Simulation::CalcForces");
    const Vec2 gravity = GetGravity();
    const AirFriction air{1 / m_timeDelta, m_airFrictionLinear, m_airFrictionQuadratic,
                          m_rotFrictionLinear};
    const float airDensity = m_airDensity;
    const bool hasAir = m_airSwitch;
    const bool hasFriction = air.linear != 0 || air.quadratic != 0 || air.rot != 0;

    {
        util::ScopeProfiler profileBodies("Body forces");
        for (const BodyPtr& handle : m_bodies)
        {
            Body& body = *handle;
            if (body.IsImmovable())
                continue;
            body.AddForce(body.GetMass() * gravity);
            if (!hasAir)
                continue;

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
            if (hasFriction && !math::IsZero(speed) && width > 0)
                AddAirFrictionForce(air, body, vel, speed, width,
                                    widthCenter / width - body.GetPos(),
                                    frictionArea / body.GetArea());
            if (airDensity != 0)
                AddAirBuoyancy(airDensity, gravity, body, body.GetArea(),
                               areaCenter / body.GetArea() - body.GetPos());
        }
    }
    // A stage of every step, even when there is no water.
    util::ScopeProfiler profileParticles("Particle forces");
}
}
