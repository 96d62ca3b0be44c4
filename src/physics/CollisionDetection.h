// Finds all contacts of one step.
//
// Bodies have no persistent spatial structure: all pairs are tested, with cheap rejection. The order of
// the loops fixes the order of the contacts, and so where the solver begins.
#pragma once

#include "math/BoundingBox.h"
#include "math/BoundingSphere.h"
#include "math/OBB2D.h"
#include "math/Vector.h"
#include "util/SharedPtr.h"
#include "util/VectorPOD.h"

#include <vector>

namespace physics
{
class AbstractBody;
class Body;
class Box;
class Circle;
class Contact;
class ContactPool;
class Geom;
class Particle;
class Plane;
class Polygon;

using BodyList = std::vector<util::SharedPtr<Body>>;

// Where new contacts go: made by the pool, listed in the order in which they were found.
struct ContactOutput
{
    ContactPool& pool;
    util::VectorPOD<Contact*>& contacts;
};

/// Whether contacts of the two are wanted: their collide sets share a bit, both hang on bodies, the
/// bodies differ and are not both immovable, and b is not in a's no-collide set.
bool ShouldCollide(const Geom* a, const Geom* b);
bool ShouldCollide(const Geom* a, const AbstractBody* bodyA, const Geom* b,
                   const AbstractBody* bodyB);

/// Whether two polygons may touch.
bool RoughIntersectTest(const Polygon& a, const Polygon& b);

bool AABBvcBC(const math::BoundingBox& box, const math::BoundingCircle& circle);

/// Appends a contact. One with data that is not finite is logged and dropped.
/// @param id      unique within the pair, and kept from step to step while the touch lasts
/// @param pos     world position
/// @param normal  unit vector, from g1 to g2
/// @param depth   positive when overlapping
void AddContact(ContactOutput& out, Geom& g1, Geom& g2, unsigned long id, math::Vec2 pos,
                math::Vec2 normal, float depth);
}
