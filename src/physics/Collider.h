// Finds all contacts of one step. Made on the stack in each step, filled once, asked once.
//
// There is no persistent structure: geometries are sorted by type, and all pairs are tested, the cheap
// rejections first. The order of the loops fixes the order of the contacts, and so where the solver
// begins.
#pragma once

#include "util/SharedPtr.h"
#include "util/VectorPOD.h"

#include <vector>

namespace physics
{
class Body;
class Contact;
class ContactPool;
using BodyList = std::vector<util::SharedPtr<Body>>;

class Collider
{
public:
    Collider();
    ~Collider();
    Collider(const Collider&) = delete;
    Collider& operator=(const Collider&) = delete;

    /// Sorts the bodies' geometries by type. World geometries have no shape and are skipped.
    /// @throws BadCoderException  for a geometry that does not know its body
    void AssignBodies(const BodyList& bodies);

    /// Appends the contacts of all pairs. Asks for no memory where an earlier step had as many
    /// geometries, contacts aside.
    void Collide(ContactPool& pool, util::VectorPOD<Contact*>& contacts) const;

private:
    struct Lists;

    Lists* m_lists;
};
}
