// The world of the physics engine: owns every body, joint, hinge, particle and contact, advances them in
// fixed time steps, and removes what has gone bad or fallen out of the world. Scripts see its settings
// as "Sim".
#pragma once

#include "physics/Body.h"
#include "physics/Constraint.h"
#include "physics/ContactPool.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Callback.h"
#include "util/Singleton.h"
#include "util/String.h"

#include <memory>
#include <memory_resource>
#include <set>
#include <vector>

namespace physics
{
class Contact;
class ContactCache;
class Hinge;
class Joint;
class Particle;
class RowSolver;
class WorldGeom;
using ContactPtr = util::SharedPtr<Contact>;
using ContactList = std::vector<ContactPtr>;
using HingePtr = util::SharedPtr<Hinge>;
using JointPtr = util::SharedPtr<Joint>;
using ParticlePtr = util::SharedPtr<Particle>;
using ParticleList = std::vector<ParticlePtr>;

// In order of creation, which every run repeats.
struct CreationOrder
{
    bool operator()(const HingePtr& a, const HingePtr& b) const;
    bool operator()(const JointPtr& a, const JointPtr& b) const;
};
using HingeSet = std::set<HingePtr, CreationOrder>;
using JointSet = std::set<JointPtr, CreationOrder>;

// Must be made before any other body or geometry: its world body and world geometry have id 0.
class Simulation : public script::Reflected, public util::Singleton<Simulation>
{
public:
    Simulation();
    ~Simulation() override;

    /// Runs zero or more steps.
    /// @param dt  real duration of the frame in seconds
    void Update(double dt);
    /// One fixed step. Without integrate nothing moves, but contacts and step callbacks are current.
    void Step(bool integrate);

    /// Does nothing when the body is there already. Constant time.
    /// @throws BadCoderException  when null
    void AddBody(BodyPtr body);
    /// Detaches the body's geometries. Does nothing for the world body, nor for one that is not here.
    /// Takes the time of a walk over all bodies, however many are removed.
    void RemoveBodies(const BodyList& bodies);
    void RemoveBody(const BodyPtr& body) { RemoveBodies({body}); }
    bool HasBody(const util::SharedPtr<AbstractBody>& body) const;
    /// In order of addition, the world body first.
    const BodyList& GetBodies() const { return m_bodies; }

    /// Does nothing when the joint is there already. Logarithmic time, like all on joints and hinges.
    /// @throws BadCoderException  when null
    void AddJoint(JointPtr joint);
    /// Deactivates the joint even when it is not there.
    void RemoveJoint(JointPtr joint);
    bool HasJoint(const JointPtr& joint) const;
    /// In order of creation.
    const JointSet& GetJoints() const { return m_joints; }

    /// As with joints.
    void AddConstraint(HingePtr constraint);
    void RemoveConstraint(HingePtr constraint);
    bool HasConstraint(const HingePtr& constraint) const;
    const HingeSet& GetHinges() const { return m_hinges; }

    /// Does not ask whether the particle is there already.
    void AddParticle(ParticlePtr particle);
    const ParticleList& GetParticles() const { return m_particles; }
    void EraseWater();

    /// The contacts of the last step, in the order in which they were found.
    const ContactList& GetContacts() const { return m_contacts; }
    /// How many of them were there in the step before.
    unsigned GetMatchedContacts() const { return m_matchedContacts; }

    /// (0, 0) when switched off.
    math::Vec2 GetGravity() const;
    BodyPtr GetWorldBody() const;
    util::SharedPtr<WorldGeom> GetWorldGeom() const;

    /// Empties the world. Settings and simulated time stay.
    void Clear();

    /// Simulated seconds over all runs.
    double GetSimTime() const { return m_simTime; }
    void SetSimTime(double seconds) { m_simTime = seconds; }
    /// Seconds of a frame that catching up may fill. Updates take it for 1 when it is longer, or not a
    /// number.
    void SetFrameBudget(float seconds) { m_frameBudget = seconds; }
    float GetFrameBudget() const { return m_frameBudget; }
    /// At most that many steps per Update; 0 means no limit.
    void SetStepLimit(int steps) { m_stepLimit = steps; }
    /// Which share of the time owed the last running Update delivered; 1 when all of it.
    float GetRealtimeFraction() const { return m_realtimeFraction; }
    /// Forgets the simulated time still owed, or taken ahead.
    void ClearTimeDebt() { m_timeDebt = 0; }
    /// Statistics of the last Update, one per line.
    const util::String& GetStatusText() const { return m_statusText; }

    /// Called once per step with the time step, in paused steps too.
    util::CallbackArgSet<float>& OnStep() { return m_onStep; }

    // --- the stages of a step ---

    void FlushBadBodies();
    void CalcForces();
    void CalcContacts();
    void IntegrateVelocity(float dt);
    void IntegratePosition(float dt);
    /// Turns the solver settings into coefficients.
    void SetupSolver();
    void RunSolver();
    /// Sweeps over all constraints in order of their first desired impulse, largest first. The result
    /// is that of the plain sweep, CalcDesiredImpulse then ApplyImpulse for one constraint after the
    /// other, to the bit.
    void GaussSeidelSolver(const ConstraintList& constraints);
    /// Always applies the constraint with the largest outstanding impulse.
    void PrioritizedSolver(const ConstraintList& constraints);

    // --- settings, in the order in which scripts see them ---

    script::AttribWrapper<bool> m_running;
    script::AttribWrapper<float> m_timeFactor; // simulated seconds per real second
    script::AttribWrapper<float> m_timeDelta;  // the fixed step in seconds
    script::AttribWrapper<math::Vec2> m_gravity;
    script::AttribWrapper<bool> m_gravitySwitch;
    script::AttribWrapper<bool> m_airSwitch;
    script::AttribWrapper<float> m_airFrictionLinear;
    script::AttribWrapper<float> m_airFrictionQuadratic;
    script::AttribWrapper<float> m_rotFrictionLinear;
    script::AttribWrapper<float> m_airDensity;
    script::AttribWrapper<float> m_springForce; // default spring constant
    script::AttribWrapper<float> m_defaultBodyDensity;
    script::AttribWrapper<float> m_defaultBodyFriction;
    script::AttribWrapper<float> m_defaultBodyRestitution;
    script::AttribWrapper<float> m_fallLimit; // distance along gravity
    script::AttribWrapper<bool> m_prioritizedSolver;
    script::AttribWrapper<float> m_targetPenetration;
    script::AttribWrapper<int> m_solveIter;                // the solvers make 10,000 at most
    script::AttribWrapper<float> m_solveConstant;          // stiffness
    script::AttribWrapper<float> m_solveDcontacts;         // damping in time steps
    script::AttribWrapper<float> m_solveDconstraints;      // the same for hinges
    script::AttribWrapper<bool> m_solvePenetrationDamping; // deliberate: nothing reads it
    script::AttribWrapper<float> m_solveDistFactor;
    script::AttribWrapper<float> m_solveVelFactor;
    script::AttribWrapper<float> m_solveAccFactor;
    script::AttribWrapper<float> m_solveRegularizationFactor;
    script::AttribWrapper<bool> m_solvePreSortConstraints;
    script::AttribWrapper<bool> m_leapFrog;
    script::AttribWrapper<bool> m_adHocSolver;
    script::AttribWrapper<bool> m_warmStart;
    script::AttribWrapper<float> m_warmStartFactor;
    script::AttribWrapper<float> m_maxPositionCorrection;

private:
    void CheckWorldInvariants() const;
    void FlushBodies(const math::Vec2& down, float fallLimit);
    void FlushParticles(const math::Vec2& down, float fallLimit);
    void FlushJoints();
    const util::VectorPOD<Hinge*>& GetHingeList();
    void RunSteps(double dt, float timeFactor);
    void AppendStatistics();
    int CalcIterations() const;
    static void InitConstraints(ConstraintList& constraints);

    util::SharedPtr<WorldGeom> m_worldGeom;
    BodyPtr m_worldBody;
    BodyList m_bodies;
    JointSet m_joints;
    HingeSet m_hinges;
    util::VectorPOD<Hinge*> m_hingeList; // the same as m_hinges, to walk
    bool m_isHingeListOld = false;
    ParticleList m_particles;
    AbstractBodyList m_allBodies; // rebuilt in every step: all bodies, then all particles
    ContactPool m_contactPool;
    util::VectorPOD<Contact*> m_foundContacts; // the same as m_contacts, as the collider gives them
    ContactList m_contacts;                    // of the current step
    ContactList m_lastContacts;                // of the step before, while the new ones are matched
    std::unique_ptr<ContactCache> m_contactCache;
    unsigned m_matchedContacts = 0;
    double m_timeDebt = 0; // simulated seconds still owed; negative when ahead
    float m_frameBudget = 0.05f;
    float m_realtimeFraction = 0; // share of the owed time that the last update delivered
    double m_simTime = 0;
    int m_stepLimit = 0;
    util::String m_statusText;
    util::CallbackArgSet<float> m_onStep;
    ConstraintList m_constraints; // of the solve under way
    std::unique_ptr<RowSolver> m_rowSolver;
    std::pmr::unsynchronized_pool_resource m_queueMemory; // of the prioritised solver's queue
};
}
