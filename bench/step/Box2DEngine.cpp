#include "step/Engine.h"

#include <box2d/box2d.h>

#include <cmath>

namespace bench
{
namespace
{
class Box2DEngine : public Engine
{
public:
    explicit Box2DEngine(const World& world)
        : m_world(b2Vec2(0, -world.gravity))
    {
        m_world.SetAllowSleeping(false);
        m_world.SetContinuousPhysics(false);
        for (const math::Plane2D& plane : world.planes)
        {
            // A half plane is the top of a large box.
            b2BodyDef def;
            b2Body* body = m_world.CreateBody(&def);
            const Vec2 center = plane.normal * (-plane.d - 10);
            b2PolygonShape shape;
            shape.SetAsBox(10, 1000, b2Vec2(center.x, center.y),
                           std::atan2(plane.normal.y, plane.normal.x));
            AddFixture(body, shape, 0);
        }
        for (const Shape& shape : world.shapes)
            m_bodies.push_back(MakeBody(shape));
        if (!world.hinges.empty())
        {
            const b2BodyDef def;
            b2Body* ground = m_world.CreateBody(&def);
            for (const HingePoint& hinge : world.hinges)
            {
                b2RevoluteJointDef joint;
                joint.Initialize(hinge.a == HingePoint::Ground ? ground : m_bodies[hinge.a],
                                 hinge.b == HingePoint::Ground ? ground : m_bodies[hinge.b],
                                 b2Vec2(hinge.point.x, hinge.point.y));
                m_world.CreateJoint(&joint);
            }
        }
    }

    void Step() override { m_world.Step(TimeStep, Iterations, 3); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (const b2Body* body : m_bodies)
            all.push_back(Vec2(body->GetWorldCenter().x, body->GetWorldCenter().y));
        return all;
    }
    size_t CountContacts() const override
    {
        size_t count = 0;
        for (const b2Contact* contact = m_world.GetContactList(); contact;
             contact = contact->GetNext())
            count += contact->GetManifold()->pointCount;
        return count;
    }

private:
    b2Body* MakeBody(const Shape& shape)
    {
        b2BodyDef def;
        def.type = b2_dynamicBody;
        def.position.Set(shape.pos.x, shape.pos.y);
        b2Body* body = m_world.CreateBody(&def);
        if (shape.kind == Shape::Box)
        {
            b2PolygonShape box;
            box.SetAsBox(shape.size.x / 2, shape.size.y / 2);
            AddFixture(body, box, Density);
        }
        else if (shape.kind == Shape::Circle)
        {
            b2CircleShape circle;
            circle.m_radius = shape.size.x;
            AddFixture(body, circle, Density);
        }
        else
            for (const Vec2List& piece : shape.convex)
            {
                std::vector<b2Vec2> points;
                for (const Vec2& p : piece)
                    points.push_back(b2Vec2(p.x, p.y));
                b2PolygonShape polygon;
                polygon.Set(points.data(), static_cast<int>(points.size()));
                AddFixture(body, polygon, Density);
            }
        return body;
    }

    static void AddFixture(b2Body* body, const b2Shape& shape, float density)
    {
        b2FixtureDef def;
        def.shape = &shape;
        def.density = density;
        def.friction = Friction; // mixed as the geometric mean, like ours
        def.restitution = 0;
        body->CreateFixture(&def);
    }

    b2World m_world;
    std::vector<b2Body*> m_bodies;
};
}

EnginePtr MakeBox2D(const World& world)
{
    return EnginePtr(new Box2DEngine(world));
}
}
