// Where contacts come from: the objects are made once and used again, so that a world in which as many
// touch as before needs no new memory.
#pragma once

#include "math/Vector.h"
#include "util/SharedPtr.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <vector>

namespace physics
{
class Contact;
class Geom;

class ContactPool
{
public:
    ContactPool();
    ~ContactPool();
    ContactPool(const ContactPool&) = delete;
    ContactPool& operator=(const ContactPool&) = delete;

    /// A contact as from its constructor. It stays in use until a Reclaim finds that nobody but the
    /// pool holds it.
    Contact* New(Geom* g1, Geom* g2, size_t id, const math::Vec2& p, const math::Vec2& n, float d);

    /// Takes back what nobody holds any more. Linear in the number of contacts in use.
    void Reclaim();

    /// Objects made so far.
    size_t GetObjectCount() const { return m_objects.size(); }
    size_t GetFreeCount() const { return m_free.size(); }

private:
    std::vector<util::SharedPtr<Contact>> m_objects;
    util::VectorPOD<Contact*> m_free; // the next one to use is the last
    util::VectorPOD<Contact*> m_used;
};
}
