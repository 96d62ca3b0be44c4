// What the solvers solve: contacts here, hinges by the same interface.
#pragma once

#include "math/Vector.h"
#include "physics/AbstractBody.h"
#include "util/VectorPOD.h"

#include <cstdint>
#include <limits>

namespace physics
{
// A constraint reads and writes the velocity changes of its own two bodies only. The solver relies on
// that: it may solve constraints that share no movable body in any order.
class Constraint : public util::Pointee
{
public:
    // What the row solver has rows for.
    enum class Kind : uint8_t
    {
        Contact,
        Hinge,
        Other
    };

    ~Constraint() override = default;

    /// Computes targets and applies the warm start.
    /// @return false when the constraint takes no part in this solve
    virtual bool SolveInit() = 0;
    /// Computes the increment that would satisfy the constraint now, and the priority.
    virtual void CalcDesiredImpulse() = 0;
    /// Applies that increment.
    virtual void ApplyImpulse() = 0;
    virtual void SolveExit() = 0;

    /// @param i  0 or 1
    /// @return null for a geometry without a body; SolveInit then leaves the constraint out
    AbstractBody* GetBodyPtr(int i) const { return m_bodies[i]; }
    /// Squared size of the last desired impulse.
    float GetPriority() const { return m_priority; }
    float GetDistScale() const { return m_distScale; }
    void SetDistScale(float scale) { m_distScale = scale; }
    float GetWarmScale() const { return m_warmScale; }
    void SetWarmScale(float scale) { m_warmScale = scale; }
    bool IsContact() const { return m_kind == Kind::Contact; }
    /// Counted up over all constraints of the process. It stands for the address wherever an order is
    /// needed: addresses differ from run to run.
    uint64_t GetCreationNumber() const { return m_creationNumber; }

    // Solver settings as of the last Simulation::SetupSolver.
    static inline bool s_warmStart = true;
    static inline float s_warmStartFactor = 0.5f;
    static inline float s_maxPositionCorrection = std::numeric_limits<float>::infinity();

protected:
    explicit Constraint(Kind kind = Kind::Other)
        : m_kind(kind)
    {
        TakeCreationNumber();
    }

    /// For objects that are used again: a new constraint in an old place.
    void TakeCreationNumber() { m_creationNumber = s_creationCounter++; }

    /// An impulse on the velocity changes: positive on body 1, negative on body 0.
    void ApplyImpulse(const math::Vec2& impulse)
    {
        // Immovable bodies are left out rather than changed by 0 * impulse: an infinite impulse on one
        // body must not reach, as 0 * infinity, everything that stands on the same ground.
        AbstractBody& a = *m_bodies[0];
        if (!a.IsImmovable())
            a.SetVelChange(a.GetVelChange() - a.GetMassInv() * impulse,
                           a.GetAngVelChange() - a.GetInertiaInv() * math::Cross(m_r[0], impulse));
        AbstractBody& b = *m_bodies[1];
        if (!b.IsImmovable())
            b.SetVelChange(b.GetVelChange() + b.GetMassInv() * impulse,
                           b.GetAngVelChange() + b.GetInertiaInv() * math::Cross(m_r[1], impulse));
    }
    /// The same with an impulse that only turns.
    void ApplyAngularImpulse(float impulse);

    // In this form a NaN bound or value behaves in vector registers as it does here.
    static float Max(float a, float b) { return a > b ? a : b; }
    static float Min(float a, float b) { return a < b ? a : b; }

    float m_distScale = 1; // scale on the distance term
    float m_warmScale = 1; // scale on the warm start of a hinge
    AbstractBody* m_bodies[2] = {nullptr, nullptr};
    math::Vec2 m_r[2]; // arms, from each body's center to the point
    float m_priority = 0;

private:
    friend class RowSolver;

    Kind m_kind;
    uint64_t m_creationNumber;

    static inline uint64_t s_creationCounter = 0;
};
using ConstraintList = util::VectorPOD<Constraint*>;

// Largest priority first. One that is not a number comes last, so that this is an order in any case and
// what has gone bad keeps nobody else from being solved.
struct ConstraintComparer
{
    bool operator()(const Constraint* a, const Constraint* b) const
    {
        return a->GetPriority() > b->GetPriority() ||
               (math::IsNaN(b->GetPriority()) && !math::IsNaN(a->GetPriority()));
    }
};

// In order of creation.
struct ConstraintCreationComparer
{
    bool operator()(const Constraint* a, const Constraint* b) const
    {
        return a->GetCreationNumber() < b->GetCreationNumber();
    }
};

/// Acceleration of the point at arm r, by the forces of this step.
inline math::Vec2 CalcAcceleration(const AbstractBody& body, const math::Vec2& r)
{
    return body.GetSolverMassInv() * body.GetForce() +
           body.GetSolverInertiaInv() * math::Cross(body.GetTorque(), r);
}

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
