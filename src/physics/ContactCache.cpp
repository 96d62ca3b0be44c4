#include "physics/ContactCache.h"

#include <cstring>

namespace physics
{
Contact*& ContactCache::operator[](const ContactID& id)
{
    if (2 * m_size >= m_slots.size())
        Grow();
    Slot& slot = FindSlot(id);
    if (slot.generation != m_generation)
    {
        slot.id = id;
        slot.generation = m_generation;
        slot.contact = nullptr;
        ++m_size;
    }
    return slot.contact;
}

void ContactCache::clear()
{
    m_size = 0;
    if (++m_generation != 0)
        return;
    std::memset(static_cast<void*>(m_slots.data()), 0, m_slots.size() * sizeof(Slot));
    m_generation = 1;
}

// The slot of the id, or the free one where it belongs. There is always a free one.
ContactCache::Slot& ContactCache::FindSlot(const ContactID& id)
{
    Slot* slots = m_slots.data();
    const size_t mask = m_slots.size() - 1;
    // The ids of one pair differ in few bits: a multiplication carries them to the high half.
    size_t i = (id.GetHash() * 0x9E3779B97F4A7C15ull >> 32) & mask;
    while (slots[i].generation == m_generation && slots[i].id != id)
        i = (i + 1) & mask;
    return slots[i];
}

void ContactCache::Grow()
{
    util::VectorPOD<Slot> old;
    old.swap(m_slots);
    m_slots.resize(old.empty() ? 64 : 2 * old.size());
    std::memset(static_cast<void*>(m_slots.data()), 0, m_slots.size() * sizeof(Slot));
    for (const Slot& slot : old)
        if (slot.generation == m_generation)
            FindSlot(slot.id) = slot;
}
}
