#include "physics/Simulation.h"

#include "logging/Log.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/ContactCache.h"
#include "physics/ForEachAhead.h"
#include "physics/Geom.h"
#include "physics/Hinge.h"
#include "physics/Joint.h"
#include "physics/Particle.h"
#include "physics/RowSolver.h"
#include "physics/SPH.h"
#include "physics/WorldGeom.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace physics
{
using math::Vec2;

namespace
{
// Seconds that one update may fill, whatever the frame rate that is asked for: longer, and nobody could
// set it right again.
const float MaxFrameBudget = 1;
}

bool CreationOrder::operator()(const HingePtr& a, const HingePtr& b) const
{
    return a->GetCreationNumber() < b->GetCreationNumber();
}

bool CreationOrder::operator()(const JointPtr& a, const JointPtr& b) const
{
    return a->GetCreationNumber() < b->GetCreationNumber();
}

Simulation::Simulation()
    : Reflected("unnamed")
    , m_running(this, "running", true)
    , m_timeFactor(this, "timeFactor", 1.0f)
    , m_timeDelta(this, "timeDelta", 0.01f)
    , m_gravity(this, "gravity", Vec2(0.0f, -9.8f))
    , m_gravitySwitch(this, "gravitySwitch", true)
    , m_airSwitch(this, "airSwitch", true)
    , m_airFrictionLinear(this, "airFrictionLinear", 0.01f)
    , m_airFrictionQuadratic(this, "airFrictionQuadratic", 0.0f)
    , m_rotFrictionLinear(this, "rotFrictionLinear", 0.01f)
    , m_airDensity(this, "airDensity", 0.01f)
    , m_springForce(this, "springForce", 1000.0f)
    , m_defaultBodyDensity(this, "defaultBodyDensity", 2.0f)
    , m_defaultBodyFriction(this, "defaultBodyFriction", 0.5f)
    , m_defaultBodyRestitution(this, "defaultBodyRestitution", 0.5f)
    , m_fallLimit(this, "fallLimit", 1000.0f)
    , m_prioritizedSolver(this, "prioritizedSolver", false)
    , m_targetPenetration(this, "targetPenetration", 0.001f)
    , m_solveIter(this, "solveIter", 30)
    , m_solveConstant(this, "solveConstant", 1e8f)
    , m_solveDcontacts(this, "solveDcontacts", 5.0f)
    , m_solveDconstraints(this, "solveDconstraints", 5.0f)
    , m_solvePenetrationDamping(this, "solvePenetrationDamping", false)
    , m_solveDistFactor(this, "solveDistFactor", 1.0f)
    , m_solveVelFactor(this, "solveVelFactor", 1.0f)
    , m_solveAccFactor(this, "solveAccFactor", 1.0f)
    , m_solveRegularizationFactor(this, "solveRegularizationFactor", 1.0f)
    , m_solvePreSortConstraints(this, "solvePreSortConstraints", true)
    , m_leapFrog(this, "leapFrog", true)
    , m_adHocSolver(this, "adHocSolver", false)
    , m_warmStart(this, "warmStart", true)
    , m_warmStartFactor(this, "warmStartFactor", 0.5f)
    , m_maxPositionCorrection(this, "maxPositionCorrection", std::numeric_limits<float>::infinity())
    , m_contactCache(new ContactCache)
    , m_rowSolver(new RowSolver)
{
    SetReflectedName("Sim");
    m_worldGeom = QUIB_NEW WorldGeom;
    m_worldBody = QUIB_NEW Body;
    m_worldBody->SetGeom(m_worldGeom);
    CODE_ASSERT(m_worldGeom->GetID() == 0);
    CODE_ASSERT(m_worldBody->GetID() == 0);
    Clear();
}

Simulation::~Simulation() = default;

void Simulation::CheckWorldInvariants() const
{
    CODE_ASSERT(m_worldBody->GetID() == 0);
    CODE_ASSERT(m_worldGeom->GetID() == 0);
    CODE_ASSERT(m_worldBody->GetGeoms().count(m_worldGeom) == 1);
    CODE_ASSERT(m_worldGeom->GetBody() == m_worldBody);
}

BodyPtr Simulation::GetWorldBody() const
{
    CheckWorldInvariants();
    return m_worldBody;
}

WorldGeomPtr Simulation::GetWorldGeom() const
{
    CheckWorldInvariants();
    return m_worldGeom;
}

Vec2 Simulation::GetGravity() const
{
    return m_gravitySwitch ? Vec2(m_gravity) : Vec2();
}

void Simulation::Clear()
{
    CheckWorldInvariants();
    for (const BodyPtr& body : m_bodies)
        body->m_isInSimulation = false;
    m_bodies.clear();
    // The pairs that don't collide belong to the hinges that are in the simulation.
    for (const JointPtr& joint : m_joints)
        joint->Deactivate();
    m_joints.clear();
    for (const HingePtr& hinge : m_hinges)
        hinge->Deactivate();
    m_hinges.clear();
    m_isHingeListOld = true;
    m_particles.clear();
    m_allBodies.clear();
    m_foundContacts.clear();
    m_contacts.clear();
    m_contactCache->clear();
    m_contactPool.Reclaim();
    m_matchedContacts = 0;
    m_timeDebt = 0;
    m_worldBody->SetGeom(m_worldGeom);
    AddBody(m_worldBody);
    CheckWorldInvariants();
}

void Simulation::AddBody(BodyPtr body)
{
    CODE_ASSERT(body);
    if (body->m_isInSimulation)
        return;
    body->ApplyPoseChange();
    m_bodies.push_back(body);
    body->m_isInSimulation = true;
}

void Simulation::RemoveBodies(const BodyList& bodies)
{
    bool isAnyHere = false;
    for (const BodyPtr& body : bodies)
    {
        if (!body || body == m_worldBody || !body->m_isInSimulation)
            continue;
        body->SetGeoms(GeomSet());
        body->m_isInSimulation = false;
        isAnyHere = true;
    }
    if (isAnyHere)
        m_bodies.erase(std::remove_if(m_bodies.begin(), m_bodies.end(),
                                      [](const BodyPtr& body) { return !body->m_isInSimulation; }),
                       m_bodies.end());
}

bool Simulation::HasBody(const util::SharedPtr<AbstractBody>& body) const
{
    return body && body->m_isInSimulation;
}

void Simulation::AddJoint(JointPtr joint)
{
    CODE_ASSERT(joint);
    if (HasJoint(joint))
        return;
    joint->Activate();
    m_joints.insert(joint);
}

void Simulation::RemoveJoint(JointPtr joint)
{
    if (!joint)
        return;
    joint->Deactivate();
    m_joints.erase(joint);
}

bool Simulation::HasJoint(const JointPtr& joint) const
{
    return joint && m_joints.count(joint) > 0;
}

void Simulation::AddConstraint(HingePtr constraint)
{
    CODE_ASSERT(constraint);
    if (HasConstraint(constraint))
        return;
    constraint->Activate();
    m_hinges.insert(constraint);
    m_isHingeListOld = true;
}

void Simulation::RemoveConstraint(HingePtr constraint)
{
    if (!constraint)
        return;
    constraint->Deactivate();
    m_hinges.erase(constraint);
    m_isHingeListOld = true;
}

bool Simulation::HasConstraint(const HingePtr& constraint) const
{
    return constraint && m_hinges.count(constraint) > 0;
}

const util::VectorPOD<Hinge*>& Simulation::GetHingeList()
{
    if (m_isHingeListOld)
    {
        m_hingeList.clear();
        for (const HingePtr& hinge : m_hinges)
            m_hingeList.append(hinge.get());
        m_isHingeListOld = false;
    }
    return m_hingeList;
}

void Simulation::AddParticle(ParticlePtr particle)
{
    m_particles.push_back(particle);
}

void Simulation::EraseWater()
{
    m_particles.clear();
}

void Simulation::Update(double dt)
{
    QUIB_PROFILE("Simulation::Update");
    m_statusText.clear();

    // A setting that is not finite must not stop the world for good.
    if (!math::IsFinite(m_timeDebt))
        m_timeDebt = 0;

    // In this form a NaN gives 0. Written back always: a formula bound to it lasts until here.
    m_timeFactor = m_timeFactor > 0 ? float(m_timeFactor) : 0.0f;
    const float timeFactor = m_timeFactor;

    if (!m_running || math::IsZero(timeFactor))
    {
        m_statusText += "Frozen\n";
        Step(false);
    }
    else
        RunSteps(dt, timeFactor);

    FlushBadBodies();
    {
        QUIB_PROFILE("Status text");
        AppendStatistics();
    }
}

void Simulation::RunSteps(double dt, float timeFactor)
{
    // In this form a NaN gives the limit.
    const float budget = m_frameBudget <= MaxFrameBudget ? m_frameBudget : MaxFrameBudget;
    const double total = timeFactor * dt + m_timeDebt;
    m_timeDebt = total;
    const double start = util::Timer::GetCurrentTime();
    const float h = m_timeDelta;
    const double oldSimTime = m_simTime;
    int steps = 0;
    while (m_timeDebt > 0)
    {
        const double t1 = util::Timer::GetCurrentTime();
        Step(m_running);
        const double t2 = util::Timer::GetCurrentTime();
        const double oldDebt = m_timeDebt;
        m_timeDebt -= h;
        m_simTime += h;
        // A step of 0, of negative length, or lost in the rounding of the debt would never pay it.
        if (++steps == m_stepLimit || !(m_timeDebt < oldDebt))
            break;
        // The frame's own time, what was spent here, and one more step must fit the budget.
        const double t3 = util::Timer::GetCurrentTime();
        if (dt + (t3 - start) + (t2 - t1) > budget)
            break;
    }
    if (!math::IsFinite(m_simTime))
        m_simTime = oldSimTime;

    if (!(m_timeDebt > 0))
    {
        // A negative rest stays: the simulation runs up to one step ahead and pays back next frame.
        m_realtimeFraction = 1;
        m_statusText += "100% realtime.\n";
    }
    else
    {
        // The missing time is dropped: the simulation slows down instead of spiralling.
        m_realtimeFraction = static_cast<float>((total - m_timeDebt) / total);
        m_timeDebt = 0;
        const float percent = m_realtimeFraction * 100;
        const bool isPrintable =
            std::fabs(percent) < 1e9f; // not with a time step gone wild, or NaN
        char text[32];
        std::snprintf(text, sizeof(text), "%3d%% realtime\n",
                      isPrintable ? static_cast<int>(percent) : 0);
        m_statusText += text;
    }
}

void Simulation::AppendStatistics()
{
    size_t geoms = 0;
    for (const BodyPtr& body : m_bodies)
        geoms += body->GetGeoms().size();
    // Geometries welded to the world make the world count as a body.
    const size_t bodies = m_bodies.size() - (m_worldBody->GetGeoms().size() == 1 ? 1 : 0);

    // Piece by piece: the text keeps its memory, and the numbers need none.
    const auto append = [this](size_t count, const char* what)
    {
        m_statusText += util::ToString(count);
        m_statusText += what;
    };
    append(bodies, " bodies\n");
    append(geoms - 1, " geometries\n");
    append(m_particles.size(), " particles\n");
    append(m_contacts.size(), " contacts\n");
    append(m_joints.size(), " springs\n");
    append(m_hinges.size(), " hinges\n");
    m_statusText += "Running at ";
    m_statusText += util::ToString(1 / m_timeDelta);
    m_statusText += " Hz\n";
}

void Simulation::Step(bool integrate)
{
    QUIB_PROFILE("Simu::Step");
    const float timeDelta = m_timeDelta;

    FlushBadBodies();

    m_allBodies.clear();
    for (const BodyPtr& body : m_bodies)
        m_allBodies.append(body.get());
    for (const ParticlePtr& particle : m_particles)
        m_allBodies.append(particle.get());

    if (integrate)
        CalcForces();
    // Without integration too, so that contacts are current in a paused world.
    CalcContacts();

    // Positions follow the new velocities, which makes either way symplectic Euler on free bodies. The
    // leapfrog form puts the solver between two half kicks (Hairer, Lubich, Wanner 2003, "Geometric
    // numerical integration illustrated by the Stoermer-Verlet method"); that it then foresees the
    // second half, instead of solving after it, is our own.
    if (integrate)
    {
        if (m_leapFrog)
        {
            IntegrateVelocity(timeDelta * 0.5f);
            RunSolver();
            IntegrateVelocity(timeDelta * 0.5f);
        }
        else
        {
            RunSolver();
            IntegrateVelocity(timeDelta);
        }
        IntegratePosition(timeDelta);
        SPH::GetInstancePtr()->VelocitySmoothing();
    }

    // Deliberate: in a paused world forces stay until the next running step.
    if (m_running)
        ForEachAhead(m_allBodies, [](AbstractBody& body) { body.ClearForces(); });

    // Deliberate: in paused steps too.
    m_onStep.CallAll(timeDelta);
}

void Simulation::IntegrateVelocity(float dt)
{
    QUIB_PROFILE("IntegrateVelocity");
    ForEachAhead(m_allBodies, [=](AbstractBody& body) { body.IntegrateVelocity(dt); });
}

void Simulation::IntegratePosition(float dt)
{
    QUIB_PROFILE("IntegratePosition");
    ForEachAhead(m_allBodies, [=](AbstractBody& body) { body.IntegratePosition(dt); });
}

void Simulation::FlushBadBodies()
{
    const float fallLimit = m_fallLimit;
    const Vec2 down = math::Normalized(GetGravity());
    FlushBodies(down, fallLimit);
    FlushParticles(down, fallLimit);
    // After the bodies, so that what hangs on one goes with it.
    FlushJoints();
}

void Simulation::FlushBodies(const Vec2& down, float fallLimit)
{
    BodyList bad;
    for (const BodyPtr& body : m_bodies)
        if (body->IsBad() || Dot(down, body->GetPos()) > fallLimit)
            bad.push_back(body);
    if (bad.empty())
        return;
    for (const BodyPtr& body : bad)
    {
        Log(logging::LogInfo, "Removing bad object");
        // Deliberate: the world body may come along here, is logged, and stays.
        body->m_isInSimulation = body == m_worldBody;
    }
    // All in one pass: one by one, thousands that fall off together would be felt.
    m_bodies.erase(std::remove_if(m_bodies.begin(), m_bodies.end(),
                                  [](const BodyPtr& body) { return !body->m_isInSimulation; }),
                   m_bodies.end());
    for (const BodyPtr& body : bad)
        if (body != m_worldBody)
            body->SetGeoms(GeomSet());
}

void Simulation::FlushParticles(const Vec2& down, float fallLimit)
{
    if (m_particles.empty())
        return;
    const float vaporizeTime = SPH::GetInstancePtr()->m_vaporizeTime;
    for (size_t i = 0; i < m_particles.size();)
    {
        const Particle& particle = *m_particles[i];
        if (i + 16 < m_particles.size())
            m_particles[i + 16]->Prefetch();
        if (particle.IsBad() || particle.GetAge() > vaporizeTime ||
            Dot(down, particle.GetPos()) > fallLimit)
        {
            m_particles[i] = std::move(m_particles.back());
            m_particles.pop_back();
        }
        else
            ++i;
    }
}

void Simulation::FlushJoints()
{
    std::vector<JointPtr> badJoints;
    for (const JointPtr& joint : m_joints)
        if (!joint->IsGood())
            badJoints.push_back(joint);
    for (const JointPtr& joint : badJoints)
        RemoveJoint(joint);

    std::vector<HingePtr> badHinges;
    for (Hinge* hinge : GetHingeList())
        if (!hinge->IsGood())
            badHinges.push_back(hinge);
    for (const HingePtr& hinge : badHinges)
        RemoveConstraint(hinge);
}

void Simulation::CalcContacts()
{
    QUIB_PROFILE("Sim::CalcContacts");
    {
        QUIB_PROFILE("Finding contacts");
        m_foundContacts.clear();
        Collider collider;
        collider.AssignBodies(m_bodies, m_particles);
        collider.Collide(m_contactPool, m_foundContacts);

        m_lastContacts.swap(m_contacts);
        m_contacts.clear();
        m_contacts.reserve(m_foundContacts.size());
        for (Contact* contact : m_foundContacts)
            m_contacts.emplace_back(contact);
    }
    {
        QUIB_PROFILE("Matching cache");
        m_matchedContacts = 0;
        for (Contact* contact : m_foundContacts)
            if (const Contact* old = (*m_contactCache)[contact->GetContactID()])
            {
                contact->ReadFrom(*old);
                ++m_matchedContacts;
            }
    }
    {
        QUIB_PROFILE("Update cache");
        m_contactCache->clear();
        for (Contact* contact : m_foundContacts)
            (*m_contactCache)[contact->GetContactID()] = contact;
        m_lastContacts.clear();
        m_contactPool.Reclaim();
    }
}
}
