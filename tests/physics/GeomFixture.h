// An empty world, and short ways to put shapes on bodies of their own.
#pragma once

#include "physics/Body.h"
#include "physics/Box.h"
#include "physics/Circle.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/ContactPool.h"
#include "physics/Particle.h"
#include "physics/Plane.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"

#include <gtest/gtest.h>

#include <vector>

namespace physics
{
class GeomFixture : public testing::Test
{
protected:
    // The simulation comes first, so that no geometry takes the id of the world's.
    GeomFixture()
        : sim(*Simulation::GetInstancePtr())
    {
        sim.Clear();
    }
    ~GeomFixture() override { Forget(); }

    /// Takes all bodies apart.
    void Forget()
    {
        found.clear();
        for (const BodyPtr& body : bodies)
            body->SetGeoms(GeomSet());
        bodies.clear();
        particles.clear();
    }

    /// On a body of its own, which the fixture keeps.
    template<typename T>
    T* Attach(util::SharedPtr<T> geom)
    {
        BodyPtr body = QUIB_NEW Body;
        body->SetGeom(geom);
        bodies.push_back(body);
        return geom.get();
    }
    Circle* AddCircle(math::Vec2 pos, float radius)
    {
        util::SharedPtr<Circle> circle = QUIB_NEW Circle(pos, radius);
        return Attach(circle);
    }
    Box* AddBox(math::Vec2 size, math::Vec2 pos, float angle = 0)
    {
        util::SharedPtr<Box> box = QUIB_NEW Box(size, pos);
        if (angle != 0)
            box->SetWorldPose(math::Mat2D::TranslationRotation(pos, angle));
        return Attach(box);
    }
    Plane* AddPlane(math::Vec2 normal, float d)
    {
        util::SharedPtr<Plane> plane = QUIB_NEW Plane(math::Plane2D(normal, d));
        return Attach(plane);
    }
    Polygon* AddPolygon(const math::Vec2List& points)
    {
        util::SharedPtr<Polygon> polygon = QUIB_NEW Polygon(points);
        return Attach(polygon);
    }

    Particle* AddParticle(math::Vec2 pos)
    {
        particles.push_back(QUIB_NEW Particle(pos, math::Vec2()));
        return particles.back().get();
    }

    /// All contacts of the bodies and particles, in order. They last until the next call.
    const util::VectorPOD<Contact*>& Collide()
    {
        pool.Reclaim();
        found.clear();
        Collider collider;
        collider.AssignBodies(bodies, particles);
        collider.Collide(pool, found);
        return found;
    }

    static void ExpectNear(const math::Vec2& expected, const math::Vec2& actual,
                           float tolerance = 1e-5f)
    {
        EXPECT_NEAR(expected.x, actual.x, tolerance);
        EXPECT_NEAR(expected.y, actual.y, tolerance);
    }

    static void ExpectContact(const Contact& contact, const Geom* g1, const Geom* g2, unsigned id,
                              const math::Vec2& pos, const math::Vec2& normal, float depth,
                              float tolerance = 1e-5f)
    {
        EXPECT_EQ(g1->GetBodyPtr(), contact.GetBodyPtr(0));
        EXPECT_EQ(g2->GetBodyPtr(), contact.GetBodyPtr(1));
        EXPECT_EQ(ContactID(g1->GetID(), g2->GetID(), id), contact.GetContactID());
        EXPECT_EQ(id, contact.GetIndex());
        ExpectNear(pos, contact.GetPos(), tolerance);
        ExpectNear(normal, contact.GetNormal(), tolerance);
        EXPECT_NEAR(depth, contact.GetDepth(), tolerance);
    }

    Simulation& sim;
    BodyList bodies;
    ParticleList particles;
    ContactPool pool;
    util::VectorPOD<Contact*> found;
};
}
