// The identity of a contact across time steps. Its hash is a sum of products with large constants,
// those of Ericson 2005, "Real-time collision detection", 7.1.3, for the cells of a grid.
#pragma once

#include <cstdint>

namespace physics
{
class ContactID
{
public:
    /// @param a, b   ids of the two geometries, in either order
    /// @param index  tells apart the contacts of one pair
    ContactID(unsigned a, unsigned b, unsigned index)
        : m_low(a < b ? a : b)
        , m_high(a < b ? b : a)
        , m_index(index)
        , m_hash(m_low * 0x8DA6B343u + m_high * 0xD8163841u + m_index * 0xCB1AB31Fu)
    {
    }

    unsigned GetLowGeom() const { return m_low; }
    unsigned GetHighGeom() const { return m_high; }
    unsigned GetIndex() const { return m_index; }
    uint32_t GetHash() const { return m_hash; }

    friend bool operator==(const ContactID& a, const ContactID& b)
    {
        return a.m_low == b.m_low && a.m_high == b.m_high && a.m_index == b.m_index;
    }
    friend bool operator!=(const ContactID& a, const ContactID& b) { return !(a == b); }

private:
    uint32_t m_low, m_high, m_index;
    uint32_t m_hash;
};

struct ContactIDHasher
{
    uint32_t operator()(const ContactID& id) const { return id.GetHash(); }
};
}
