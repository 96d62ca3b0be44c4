// The contacts of the last step by their ids.
#pragma once

#include "physics/ContactID.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <cstdint>

namespace physics
{
class Contact;

// The contacts stand in the order in which they were put in, and behind them a hash table with open
// addressing says where. Both keep their blocks: ids come and go without a word to the allocator, which a
// table of buckets can't promise. It holds plain pointers; the simulation holds the contacts.
//
// Who asks for one id mostly asks next for that which came after it, as contacts are found in the same
// order in every step. That guess is tried before the table.
//
// Linear probing and multiplicative hashing by the golden ratio are those of Knuth 1998, "The art of
// computer programming", volume 3, 6.4. That clearing counts up a generation instead of walking the
// slots is our own.
class ContactCache
{
public:
    /// Deliberate: inserts an empty slot, a null, for an unknown id. The reference holds until the next
    /// call.
    Contact*& operator[](const ContactID& id);

    /// Empty slots included.
    size_t size() const { return m_entries.size(); }
    /// Keeps the blocks.
    void clear();

private:
    struct Entry
    {
        ContactID id;
        Contact* contact;
    };
    struct Slot
    {
        uint32_t generation; // in use when equal to m_generation
        uint32_t entry;
    };

    void Grow();
    Slot& FindSlot(const ContactID& id);

    util::VectorPOD<Entry> m_entries;
    util::VectorPOD<Slot> m_slots; // none, or a power of 2
    size_t m_guess = 0;            // the entry after the last one that was found
    uint32_t m_generation = 1;
};
}
