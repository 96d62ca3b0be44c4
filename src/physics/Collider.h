// Finds all contacts of one step. Made on the stack in each step, filled once, asked once.
//
// There is no persistent structure: geometries are sorted by type, and all pairs are tested, the cheap
// rejections first. The order of the loops fixes the order of the contacts, and so where the solver
// begins. Particles touch geometry here, but never each other.
#pragma once

#include "util/SharedPtr.h"
#include "util/VectorPOD.h"

#include <vector>

namespace physics
{
class Body;
class Contact;
class ContactPool;
class Particle;
using BodyList = std::vector<util::SharedPtr<Body>>;
using ParticleList = std::vector<util::SharedPtr<Particle>>;

class Collider
{
public:
    Collider();
    ~Collider();
    Collider(const Collider&) = delete;
    Collider& operator=(const Collider&) = delete;

    /// Sorts the bodies' geometries by type, and takes the particles as they are, each as a circle of a
    /// tenth of the fluid's particle radius. World geometries have no shape and are skipped.
    /// @throws BadCoderException  for a geometry that does not know its body
    void AssignBodies(const BodyList& bodies, const ParticleList& particles);

    /// Appends the contacts of all pairs. Asks for no memory where an earlier step had as many
    /// geometries, contacts aside.
    void Collide(ContactPool& pool, util::VectorPOD<Contact*>& contacts) const;

private:
    struct Lists;

    Lists* m_lists;
};
}
