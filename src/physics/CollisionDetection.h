// Which geometries may touch, and where two of them do: the exact test of each pair of shapes. Finding
// the pairs is the Collider's work.
//
// A contact joins two geometries with an id unique within the pair, a world position, a unit normal
// from the first geometry to the second, and a depth, positive when overlapping.
#pragma once

#include "math/BoundingBox.h"
#include "math/BoundingSphere.h"
#include "math/OBB2D.h"
#include "math/Vector.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "util/VectorPOD.h"

#include <cstdint>

namespace physics
{
class Box;
class Circle;
class Contact;
class ContactPool;
class Plane;
class Polygon;

// Where new contacts go: made by the pool, listed in the order in which they were found.
struct ContactOutput
{
    ContactPool& pool;
    util::VectorPOD<Contact*>& contacts;
};

// A polygon in the pair loops.
struct PolyHull
{
    AbstractBody* body;
    Polygon* polygon;
};

// A circle in the pair loops.
struct CircleHull
{
    AbstractBody* body;
    Circle* circle;
    math::BoundingCircle bc; // world, as of assignment
};

// A box in the pair loops.
struct BoxHull
{
    explicit BoxHull(Box& b);

    Box* box;
    math::OBB2D obb;     // world, as of assignment
    float axisRadius[2]; // the box's own ProjectedRadius on its axes
};

// What ShouldCollide asks of a geometry, so that the pair loops read it once per step.
struct CollideFilter
{
    /// @param b  the geometry's body; null lets it collide with nothing
    CollideFilter(const Geom& g, const AbstractBody* b)
        : geom(&g)
        , body(b)
        , collideSet(b ? g.GetCollideSet() & Geom::COLLIDE_MASK : 0)
        , isImmovable(b && b->IsImmovable())
        , hasNoCollide(!g.GetNoCollide().empty())
    {
    }

    const Geom* geom;
    const AbstractBody* body;
    uint32_t collideSet; // the bits that count
    bool isImmovable;
    bool hasNoCollide;
};

/// Whether contacts of the two are wanted: their collide sets share a bit, both hang on bodies, the
/// bodies differ and are not both immovable, and b is not in a's no-collide set.
inline bool ShouldCollide(const CollideFilter& a, const CollideFilter& b)
{
    return (a.collideSet & b.collideSet) != 0 && a.body != b.body &&
           !(a.isImmovable && b.isImmovable) &&
           !(a.hasNoCollide && a.geom->GetNoCollide().count(const_cast<Geom*>(b.geom)));
}
inline bool ShouldCollide(const Geom* a, const AbstractBody* bodyA, const Geom* b,
                          const AbstractBody* bodyB)
{
    return ShouldCollide(CollideFilter(*a, bodyA), CollideFilter(*b, bodyB));
}
inline bool ShouldCollide(const Geom* a, const Geom* b)
{
    return ShouldCollide(a, a->GetBodyPtr(), b, b->GetBodyPtr());
}

/// Whether two polygons may touch.
bool RoughIntersectTest(const Polygon& a, const Polygon& b);

/// Whether a circle touches a box from outside, or has its center within the box on either axis.
bool AABBvcBC(const math::BoundingBox& box, const math::BoundingCircle& circle);

/// Appends a contact. One with data that is not finite is logged and dropped.
/// @param id      unique within the pair, and kept from step to step while the touch lasts
/// @param pos     world position
/// @param normal  unit vector, from g1 to g2
/// @param depth   positive when overlapping
void AddContact(ContactOutput& out, Geom& g1, Geom& g2, unsigned long id, math::Vec2 pos,
                math::Vec2 normal, float depth);

/// The contact of a water particle, a circle of radius r at p, whatever the collide sets say.
template<typename T>
void CollideParticle(float r, Geom& particle, const math::Vec2& p, T& geom, ContactOutput& out)
{
    const float d = geom.DistanceWorld(p);
    if (d < r)
        AddContact(out, geom, particle, 0, p, geom.NormalWorld(p), r - d);
}

// The contacts of one pair, whatever ShouldCollide says.
void CollidePlaneCircle(Plane& plane, const CircleHull& hull, ContactOutput& out);
void CollidePlanePoly(Plane& plane, Polygon& polygon, ContactOutput& out);
void CollidePlaneBox(Plane& plane, Box& box, ContactOutput& out);
void CollidePolyPoly(Polygon& a, Polygon& b, ContactOutput& out);
void CollideCircleCircle(const CircleHull& a, const CircleHull& b, ContactOutput& out);
void CollideCirclePolygon(const CircleHull& hull, Polygon& polygon, ContactOutput& out);
void CollideBoxBox(const BoxHull& a, const BoxHull& b, ContactOutput& out);
void CollideBoxPolygon(Box& box, Polygon& polygon, ContactOutput& out);
void CollideBoxCircle(Box& box, const CircleHull& hull, ContactOutput& out);
}
