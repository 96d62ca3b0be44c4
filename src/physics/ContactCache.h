// The contacts of the last step by their ids.
#pragma once

#include "physics/ContactID.h"
#include "util/VectorPOD.h"

#include <cstddef>

namespace physics
{
class Contact;

// A hash table with open addressing in one block, which is kept: ids come and go without a word to the
// allocator, which a table of buckets can't promise. It holds plain pointers; the simulation holds the
// contacts.
//
// Linear probing and multiplicative hashing by the golden ratio are those of Knuth 1998, "The art of
// computer programming", volume 3, 6.4. That clearing counts up a generation instead of walking the
// slots is our own.
class ContactCache
{
public:
    /// Deliberate: inserts an empty slot, a null, for an unknown id.
    Contact*& operator[](const ContactID& id);

    /// Empty slots included.
    size_t size() const { return m_size; }
    /// Keeps the block.
    void clear();

private:
    struct Slot
    {
        ContactID id;
        uint32_t generation; // in use when equal to m_generation
        Contact* contact;
    };

    void Grow();
    Slot& FindSlot(const ContactID& id);

    util::VectorPOD<Slot> m_slots; // none, or a power of 2
    size_t m_size = 0;
    uint32_t m_generation = 1;
};
}
