#include "physics/ContactPool.h"

#include "physics/Contact.h"

namespace physics
{
ContactPool::ContactPool() = default;
ContactPool::~ContactPool() = default;

Contact* ContactPool::New(Geom* g1, Geom* g2, size_t id, const math::Vec2& p, const math::Vec2& n,
                          float d)
{
    if (m_free.empty())
    {
        ContactPtr made = QUIB_NEW Contact(g1, g2, id, p, n, d);
        m_objects.push_back(made);
        m_used.append(made.get());
        return made.get();
    }
    Contact* contact = m_free.back();
    contact->Init(g1, g2, id, p, n, d);
    m_free.pop_back();
    m_used.append(contact);
    return contact;
}

void ContactPool::Reclaim()
{
    // From the back, so that objects leave in the order in which they left before: the solver walks
    // them in that order, and they lie so in memory.
    for (size_t i = m_used.size(); i-- > 0;)
        if (m_used[i]->GetHandle()->GetRefCount() == 1)
        {
            m_free.append(m_used[i]);
            m_used[i] = nullptr;
        }
    size_t kept = 0;
    for (Contact* contact : m_used)
        if (contact)
            m_used[kept++] = contact;
    m_used.resize(kept);
}
}
