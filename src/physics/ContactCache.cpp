#include "physics/ContactCache.h"

#include <cstring>

namespace physics
{
Contact*& ContactCache::operator[](const ContactID& id)
{
    if (m_guess < m_entries.size() && m_entries.data()[m_guess].id == id)
        return m_entries.data()[m_guess++].contact;

    if (2 * m_entries.size() >= m_slots.size())
        Grow();
    Slot& slot = FindSlot(id);
    if (slot.generation == m_generation)
        m_guess = slot.entry + 1;
    else
    {
        // A new one in between: the guess stays.
        slot.entry = static_cast<uint32_t>(m_entries.size());
        slot.generation = m_generation;
        m_entries.append(Entry{id, nullptr});
    }
    return m_entries.data()[slot.entry].contact;
}

void ContactCache::clear()
{
    m_entries.clear();
    m_guess = 0;
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
    while (slots[i].generation == m_generation && m_entries.data()[slots[i].entry].id != id)
        i = (i + 1) & mask;
    return slots[i];
}

void ContactCache::Grow()
{
    m_slots.resize(m_slots.empty() ? 64 : 2 * m_slots.size());
    std::memset(static_cast<void*>(m_slots.data()), 0, m_slots.size() * sizeof(Slot));
    for (uint32_t i = 0; i < m_entries.size(); ++i)
        FindSlot(m_entries.data()[i].id) = Slot{m_generation, i};
}
}
