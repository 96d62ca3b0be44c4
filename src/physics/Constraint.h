// What the solvers solve: contacts here, hinges by the same interface.
#pragma once

#include "math/Vector.h"
#include "physics/AbstractBody.h"
#include "util/VectorPOD.h"

namespace physics
{
// A constraint reads and writes the velocity changes of its own two bodies only. The solver relies on
// that: it may solve constraints that share no movable body in any order.
class Constraint : public util::Pointee
{
public:
    ~Constraint() override = default;

    /// Computes targets and applies the warm start.
    /// @return false when the constraint takes no part in this solve
    virtual bool SolveInit() = 0;
    /// Computes the increment that would satisfy the constraint now, and the priority.
    virtual void CalcDesiredImpulse() = 0;
    /// Applies that increment.
    virtual void ApplyImpulse() = 0;
    virtual void SolveExit() = 0;

    /// 0 or 1; may be null before SolveInit.
    AbstractBody* GetBodyPtr(int i) const { return m_bodies[i]; }
    /// Squared size of the last desired impulse.
    float GetPriority() const { return m_priority; }
    void SetDistScale(float scale) { m_distScale = scale; }
    bool IsContact() const { return m_isContact; }

    // Solver settings as of the last Simulation::SetupSolver.
    static inline bool s_warmStart = true;
    static inline float s_warmStartFactor = 0.5f;
    static inline float s_maxPositionCorrection = std::numeric_limits<float>::infinity();

protected:
    explicit Constraint(bool isContact = false)
        : m_isContact(isContact)
    {
    }

    /// An impulse on the velocity changes: positive on body 1, negative on body 0.
    void ApplyImpulse(const math::Vec2& impulse);

    float m_distScale = 1; // scale on the distance term
    AbstractBody* m_bodies[2] = {nullptr, nullptr};
    math::Vec2 m_r[2]; // arms, from each body's centre to the point
    float m_priority = 0;

private:
    friend class RowSolver;

    bool m_isContact;
};
using ConstraintList = util::VectorPOD<Constraint*>;

// Largest priority first.
struct ConstraintComparer
{
    bool operator()(const Constraint* a, const Constraint* b) const
    {
        return a->GetPriority() > b->GetPriority();
    }
};

/// The mass that an impulse along dir meets, when it acts at the arms ra and rb of two bodies.
/// Suspended bodies are infinitely heavy.
inline float CombinedMass(const AbstractBody& a, math::Vec2 ra, const AbstractBody& b,
                          math::Vec2 rb, math::Vec2 dir)
{
    const float ca = Cross(ra, dir);
    const float cb = Cross(rb, dir);
    return 1 / (a.GetSolverMassInv() + b.GetSolverMassInv() + a.GetSolverInertiaInv() * ca * ca +
                b.GetSolverInertiaInv() * cb * cb);
}
}
