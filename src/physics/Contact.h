// One point of touch between two geometries, for one step.
//
// Contacts are rebuilt from nothing in every step. What survives (impulses, age) is carried over by the
// contact cache under the ContactID. The objects come from the simulation's ContactPool; others may
// hold handles for as long as they like, a held contact just keeps its last state.
#pragma once

#include "physics/Constraint.h"
#include "physics/ConstraintParams.h"
#include "physics/ContactID.h"
#include "util/SharedPtr.h"

#include <cstddef>
#include <vector>

namespace physics
{
class Geom;

class Contact final : public Constraint
{
public:
    /// @param id  tells apart the contacts of one pair
    /// @param p  world position
    /// @param n  unit vector, from g1 to g2
    /// @param d  depth in world units, positive when overlapping
    /// @throws BadCoderException  when p, n or d is not finite
    Contact(Geom* g1, Geom* g2, size_t id, const math::Vec2& p, const math::Vec2& n, float d);

    /// Goes on where a contact of the last step has ended.
    void ReadFrom(const Contact& old);

    bool SolveInit() override;
    void CalcDesiredImpulse() override;
    void ApplyImpulse() override;
    void SolveExit() override {}

    const math::Vec2& GetPos() const { return m_pos; }
    /// Unit, from geometry 1 to geometry 2.
    const math::Vec2& GetNormal() const { return m_normal; }
    const math::Vec2& GetTangent() const { return m_tangent; }
    /// Positive when overlapping.
    float GetDepth() const { return m_depth; }
    float GetFriction() const { return m_friction; }
    float GetRestitution() const { return m_restitution; }
    /// Impulses of this step along normal and tangent, on geometry 2.
    float GetTotalN() const { return m_totalN; }
    float GetTotalT() const { return m_totalT; }
    math::Vec2 GetTotalImpulse() const { return m_totalN * m_normal + m_totalT * m_tangent; }
    /// Ids of the two geometries, and the index within the pair.
    const ContactID& GetContactID() const { return m_contactId; }
    unsigned GetIndex() const { return m_contactId.GetIndex(); }
    /// Simulated time at which this touch began.
    double GetStartTime() const { return m_startTime; }
    /// True until the touch is found again in the next step.
    bool IsNew() const { return m_isNew; }
    /// By the velocities as they are now.
    bool IsSeparating() const;

    static inline ConstraintParams s_params;
    static inline float s_targetPenetration = 0;

private:
    friend class ContactPool;
    friend class RowSolver;

    void Init(Geom* g1, Geom* g2, size_t id, const math::Vec2& p, const math::Vec2& n, float d);

    double m_startTime = 0;
    math::Vec2 m_pos;
    math::Vec2 m_normal;
    float m_depth = 0;
    float m_friction = 0;
    float m_restitution = 0;
    math::Vec2 m_tangent;
    bool m_isNew = true;
    math::Vec2 m_relVel;                  // of body 1's point to body 0's, at SolveInit
    float m_massN = 0, m_massT = 0;       // effective masses
    float m_massRegN = 0, m_massRegT = 0; // the same, regularised
    float m_effMassN = 0, m_effMassT = 0; // the pair in use in this step
    float m_targetN = 0, m_targetT = 0;   // desired impulses at zero velocity change
    float m_totalN = 0, m_totalT = 0;     // gathered over the iterations; N is never negative
    float m_deltaN = 0, m_deltaT = 0;     // the last increments; the row solver leaves them alone
    ContactID m_contactId{0, 0, 0};
};

// In the header because the row solver asks every contact once.
inline void Contact::CalcDesiredImpulse()
{
    const AbstractBody& a = *m_bodies[0];
    const AbstractBody& b = *m_bodies[1];
    const math::Vec2 w = (b.GetVelChange() + math::Cross(b.GetAngVelChange(), m_r[1])) -
                         (a.GetVelChange() + math::Cross(a.GetAngVelChange(), m_r[0]));

    const float dn = m_targetN - math::Dot(w, m_normal) * m_effMassN;
    const float newN = Max(m_totalN + dn, 0); // contacts don't pull
    m_deltaN = newN - m_totalN;

    const float limit = Max(m_friction * newN, 0);
    const float dt = m_targetT - math::Dot(w, m_tangent) * m_effMassT;
    const float newT = Max(-limit, Min(limit, m_totalT + dt));
    m_deltaT = newT - m_totalT;

    m_priority = m_deltaN * m_deltaN + m_deltaT * m_deltaT;
}

using ContactPtr = util::SharedPtr<Contact>;
using ContactList = std::vector<ContactPtr>;

/// The signed geometric mean. One frictionless side is enough for a frictionless contact.
float Mix(float a, float b);
}
