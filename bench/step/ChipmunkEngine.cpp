#include "step/Engine.h"

#include <chipmunk/chipmunk.h>

#include <cmath>

namespace bench
{
namespace
{
class ChipmunkEngine : public Engine
{
public:
    explicit ChipmunkEngine(const World& world)
        : m_space(cpSpaceNew())
    {
        cpSpaceSetIterations(m_space, Iterations);
        cpSpaceSetGravity(m_space, cpv(0, -world.gravity));
        cpSpaceSetCollisionSlop(m_space, 0.005); // as Box2D has it; the default is for pixels
        for (const math::Plane2D& plane : world.planes)
        {
            const Vec2 point = plane.normal * (-plane.d - 10);
            const Vec2 along = math::Rot90CCW(plane.normal) * 1000.0f;
            AddShape(cpSegmentShapeNew(cpSpaceGetStaticBody(m_space),
                                       cpv(point.x - along.x, point.y - along.y),
                                       cpv(point.x + along.x, point.y + along.y), 10));
        }
        for (const Shape& shape : world.shapes)
            AddBody(shape);
        for (const HingePoint& hinge : world.hinges)
        {
            cpConstraint* joint = cpPivotJointNew(GetHingeBody(hinge.a), GetHingeBody(hinge.b),
                                                  cpv(hinge.point.x, hinge.point.y));
            cpConstraintSetCollideBodies(joint, cpFalse);
            cpSpaceAddConstraint(m_space, joint);
            m_joints.push_back(joint);
        }
    }
    ~ChipmunkEngine() override
    {
        for (cpConstraint* joint : m_joints)
        {
            cpSpaceRemoveConstraint(m_space, joint);
            cpConstraintFree(joint);
        }
        for (cpShape* shape : m_shapes)
        {
            cpSpaceRemoveShape(m_space, shape);
            cpShapeFree(shape);
        }
        for (cpBody* body : m_bodies)
        {
            cpSpaceRemoveBody(m_space, body);
            cpBodyFree(body);
        }
        cpSpaceFree(m_space);
    }

    void Step() override { cpSpaceStep(m_space, TimeStep); }
    std::vector<Vec2> GetPositions() const override
    {
        std::vector<Vec2> all;
        for (cpBody* body : m_bodies)
        {
            const cpVect p = cpBodyLocalToWorld(body, cpBodyGetCenterOfGravity(body));
            all.push_back(Vec2(static_cast<float>(p.x), static_cast<float>(p.y)));
        }
        return all;
    }
    size_t CountContacts() const override
    {
        // Those of two movable bodies are met twice.
        struct Counts
        {
            cpBody* ground;
            size_t once, twice;
        } counts{cpSpaceGetStaticBody(m_space), 0, 0};
        for (cpBody* body : m_bodies)
            cpBodyEachArbiter(
                body,
                [](cpBody*, cpArbiter* arbiter, void* data)
                {
                    Counts& c = *static_cast<Counts*>(data);
                    CP_ARBITER_GET_BODIES(arbiter, a, b);
                    (a == c.ground || b == c.ground ? c.once : c.twice) +=
                        cpArbiterGetCount(arbiter);
                },
                &counts);
        return counts.once + counts.twice / 2;
    }

private:
    void AddBody(const Shape& shape)
    {
        cpBody* body = cpBodyNew(0, 0); // the shapes bring the mass
        cpSpaceAddBody(m_space, body);
        cpBodySetPosition(body, cpv(shape.pos.x, shape.pos.y));
        m_bodies.push_back(body);
        if (shape.kind == Shape::Box)
            AddShape(cpBoxShapeNew(body, shape.size.x, shape.size.y, 0));
        else if (shape.kind == Shape::Circle)
            AddShape(cpCircleShapeNew(body, shape.size.x, cpvzero));
        else
            for (const Vec2List& piece : shape.convex)
            {
                std::vector<cpVect> points;
                for (const Vec2& p : piece)
                    points.push_back(cpv(p.x, p.y));
                AddShape(
                    cpPolyShapeNewRaw(body, static_cast<int>(points.size()), points.data(), 0));
            }
    }

    cpBody* GetHingeBody(int i)
    {
        return i == HingePoint::Ground ? cpSpaceGetStaticBody(m_space) : m_bodies[i];
    }

    void AddShape(cpShape* shape)
    {
        cpSpaceAddShape(m_space, shape);
        if (cpShapeGetBody(shape) != cpSpaceGetStaticBody(m_space))
            cpShapeSetDensity(shape, Density);
        cpShapeSetFriction(shape, std::sqrt(Friction)); // mixed as the product
        cpShapeSetElasticity(shape, 0);
        m_shapes.push_back(shape);
    }

    cpSpace* m_space;
    std::vector<cpBody*> m_bodies;
    std::vector<cpShape*> m_shapes;
    std::vector<cpConstraint*> m_joints;
};
}

EnginePtr MakeChipmunk(const World& world)
{
    return EnginePtr(new ChipmunkEngine(world));
}
}
