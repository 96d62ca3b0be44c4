#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Contact.h"
#include "physics/Hinge.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"
#include "step/Engine.h"

namespace bench
{
namespace
{
class QuibEngine : public Engine
{
public:
    explicit QuibEngine(const World& world)
        : m_sim(physics::Simulation::GetInstancePtr())
    {
        m_sim->Clear();
        m_sim->m_gravity = Vec2(0, -world.gravity);
        m_sim->m_timeDelta = TimeStep;
        m_sim->m_airSwitch = false;
        m_sim->m_solveIter = Iterations;
        m_sim->m_defaultBodyDensity = Density;
        m_sim->m_defaultBodyFriction = Friction;
        m_sim->m_defaultBodyRestitution = 0.0f;
        for (const math::Plane2D& plane : world.planes)
            Add(QUIB_NEW physics::Plane(plane));
        for (const Shape& shape : world.shapes)
            m_bodies.push_back(Add(MakeGeom(shape)));
        for (const HingePoint& hinge : world.hinges)
            m_sim->AddConstraint(
                QUIB_NEW physics::Hinge(GetHingeGeom(hinge.a), GetHingeGeom(hinge.b), hinge.point));
        for (const Vec2& p : world.particles)
            m_sim->AddParticle(QUIB_NEW physics::Particle(p, Vec2()));
    }
    ~QuibEngine() override { m_sim->Clear(); }

    void Step() override { m_sim->Step(true); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (const physics::BodyPtr& body : m_bodies)
            if (m_sim->HasBody(body))
                all.push_back(body->GetPos());
        for (const physics::ParticlePtr& particle : m_sim->GetParticles())
            all.push_back(particle->GetPos());
        return all;
    }
    size_t CountContacts() const override { return m_sim->GetContacts().size(); }

private:
    static physics::GeomPtr MakeGeom(const Shape& shape)
    {
        switch (shape.kind)
        {
        case Shape::Box:
            return QUIB_NEW physics::Box(shape.size, shape.pos);
        case Shape::Circle:
            return QUIB_NEW physics::Circle(shape.pos, shape.size.x);
        case Shape::Polygon:
            break;
        }
        Vec2List points = shape.points;
        for (Vec2& p : points)
            p += shape.pos;
        return QUIB_NEW physics::Polygon(points);
    }

    physics::BodyPtr Add(physics::GeomPtr geom)
    {
        physics::BodyPtr body = QUIB_NEW physics::Body;
        body->SetGeom(geom);
        m_sim->AddBody(body);
        return body;
    }

    physics::GeomPtr GetHingeGeom(int i) const
    {
        if (i == HingePoint::Ground)
            return m_sim->GetWorldGeom();
        return m_bodies[i]->GetParts()[0].geom;
    }

    physics::Simulation* m_sim;
    std::vector<physics::BodyPtr> m_bodies;
};
}

EnginePtr MakeQuib(const World& world)
{
    return EnginePtr(new QuibEngine(world));
}
}
