// Stiffness and damping of a kind of constraint, as coefficients for one time step.
#pragma once

namespace physics
{
// A spring of stiffness k, damped over d steps of length h, in the form that a stable implicit stepper
// for constrained systems uses (Lacoursiere 2007, "Ghosts and machines: regularized variational
// methods for interactive simulations of multibodies with dry frictional contacts").
struct ConstraintParams
{
    float dt = 0;   // the time step
    float dist = 0; // times a position error gives a velocity
    float vel = 0;  // share of the present velocity error that is corrected
    float acc = 0;  // time by which acceleration by forces is foreseen
    float reg = 0;  // added to the inverse of the effective mass

    ConstraintParams() = default;
    /// @param h  time step
    /// @param d  damping in time steps; nothing guards against h = 0 or d = -1/4
    /// @param k  stiffness
    /// @param a  lead time: half a step when velocities are integrated on both sides of the solver
    ConstraintParams(float h, float d, float k, float a)
        : dt(h)
        , dist(4 / (h * (1 + 4 * d)))
        , vel(4 * d / (1 + 4 * d))
        , acc(a)
        , reg(4 / (h * h * k * (1 + 4 * d)))
    {
    }
};
}
