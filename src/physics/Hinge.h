// Two points, one on each of two geometries, that stay together: a hard constraint, solved with the
// contacts. It may turn its bodies with a motor, and break.
//
// The simulation keeps those that are entered; it removes one that is no longer good. The bodies are
// looked up through the geometries at every solve: geometries change bodies when they are welded.
#pragma once

#include "math/Matrix.h"
#include "physics/Constraint.h"
#include "physics/ConstraintParams.h"
#include "util/SharedPtr.h"

#include <limits>

namespace physics
{
class Geom;
using GeomPtr = util::SharedPtr<Geom>;

class Hinge final : public Constraint
{
public:
    /// @param local0, local1  the anchors, each in its geometry's space
    /// @throws BadCoderException  when a geometry is null
    Hinge(GeomPtr g0, GeomPtr g1, math::Vec2 local0, math::Vec2 local1);
    Hinge(GeomPtr g0, GeomPtr g1, math::Vec2 worldPoint);
    ~Hinge() override;

    /// The two geometries don't collide from now on.
    void Activate();
    /// They do again, even when another hinge holds the same pair.
    void Deactivate();
    /// Not broken, and both bodies in the simulation.
    bool IsGood() const;

    bool SolveInit() override;
    void CalcDesiredImpulse() override;
    void ApplyImpulse() override;
    void SolveExit() override {}

    /// The middle of the two anchors, which drift apart under load.
    math::Vec2 GetPos() const;
    /// @param out  the two anchors
    void GetWorldPoints(math::Vec2* out) const;
    /// @param i  0 or 1
    const GeomPtr& GetGeom(int i) const { return m_geoms[i]; }
    /// Anchor in the geometry's space.
    const math::Vec2& GetLocal(int i) const { return m_local[i]; }

    bool IsMotor() const { return m_motor; }
    void SetMotor(bool on) { m_motor = on; }
    /// Wanted angular velocity of body 1 less that of body 0, radians per second.
    float GetMotorSpeed() const { return m_motorSpeed; }
    void SetMotorSpeed(float speed) { m_motorSpeed = speed; }
    /// Deliberate: a limit of angular acceleration, radians per second squared, whatever the bodies'
    /// inertia.
    float GetMotorTorque() const { return m_motorTorque; }
    void SetMotorTorque(float torque) { m_motorTorque = torque; }
    /// Impulse in one step beyond which the hinge breaks.
    float GetImpulseLimit() const { return m_impulseLimit; }
    void SetImpulseLimit(float limit) { m_impulseLimit = limit; }
    /// Distance of the anchors beyond which the hinge breaks.
    float GetDistanceLimit() const { return m_distanceLimit; }
    void SetDistanceLimit(float limit) { m_distanceLimit = limit; }
    /// Once broken it stays so.
    bool IsBroken() const { return m_broken; }

    /// Impulses of this step, on geometry 1.
    const math::Vec2& GetTotalImpulse() const { return m_total; }
    float GetMotorTotal() const { return m_motorTotal; }

    static inline ConstraintParams s_params;

private:
    friend class RowSolver;

    bool CalcInverseMass(double massInv, double i0, double i1);

    GeomPtr m_geoms[2];
    math::Vec2 m_local[2];
    bool m_motor = false;
    float m_motorSpeed = 0;
    float m_motorTorque = 1;
    float m_impulseLimit = std::numeric_limits<float>::infinity();
    float m_distanceLimit = std::numeric_limits<float>::infinity();
    bool m_broken = false;

    math::TMatrix2<float> m_invK; // inverse of the effective mass matrix
    float m_motorMass = 0;        // effective angular mass
    float m_motorMaxImpulse = 0;  // per step
    math::Vec2 m_bias;            // wanted change of the anchors' relative velocity
    math::Vec2 m_impulse;         // the last increment; the row solver leaves it alone
    math::Vec2 m_total;           // gathered over the iterations
    float m_motorBias = 0;        // wanted change of the relative angular velocity
    float m_motorDelta = 0;       // the last increment; the row solver leaves it alone
    float m_motorTotal = 0;       // gathered over the iterations
};
using HingePtr = util::SharedPtr<Hinge>;
}
