// The solvers: from constraints to velocity changes.

#include "physics/Contact.h"
#include "physics/ForEachAhead.h"
#include "physics/Hinge.h"
#include "physics/RowSolver.h"
#include "physics/Simulation.h"
#include "util/Failures.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <memory_resource>
#include <set>

namespace physics
{
namespace
{
// Beyond this many iterations nothing changes but the time that they take, without end.
const int MaxIterations = 10000;
// Nor would one step of the prioritised solver come to an end with more applications than that: seconds as
// it is, where constraints have many neighbors.
const int64_t MaxApplications = 2000000;
}

int Simulation::CalcIterations() const
{
    return std::min<int>(m_solveIter, MaxIterations);
}

void Simulation::SetupSolver()
{
    const float h = m_timeDelta;
    const float lead = m_leapFrog ? h / 2 : 0.0f;
    const auto makeParams = [&](float damping)
    {
        ConstraintParams params(h, damping, m_solveConstant, lead);
        if (m_adHocSolver)
        {
            // A plain projection: the position error goes in one step, nothing is damped.
            params.dist = 1 / h;
            params.vel = 0;
            params.reg = 0;
        }
        params.dist *= m_solveDistFactor;
        params.vel *= m_solveVelFactor;
        params.acc *= m_solveAccFactor;
        params.reg *= m_solveRegularizationFactor;
        return params;
    };
    Contact::s_params = makeParams(m_solveDcontacts);
    Hinge::s_params = makeParams(m_solveDconstraints);
    Contact::s_targetPenetration = m_targetPenetration;

    Constraint::s_warmStart = m_warmStart;
    Constraint::s_warmStartFactor = m_warmStartFactor;
    Constraint::s_maxPositionCorrection = m_maxPositionCorrection;
}

void Simulation::RunSolver()
{
    QUIB_PROFILE("RunSolver");
    SetupSolver();

    {
        QUIB_PROFILE("Init bodies");
        ForEachAhead(m_allBodies, [](AbstractBody& body) { body.SetVelChange(math::Vec2(), 0); });
    }

    // The list keeps its capacity; it is emptied on every way out.
    struct ListGuard
    {
        ConstraintList& list;
        ~ListGuard() { list.clear(); }
    } guard{m_constraints};
    m_constraints.clear();
    for (Hinge* hinge : GetHingeList())
        m_constraints.append(hinge);
    for (Contact* contact : m_foundContacts)
        m_constraints.append(contact);

    {
        QUIB_PROFILE("SolveInit");
        QUIB_PASS_ON(InitConstraints(m_constraints));
    }
    if (m_prioritizedSolver)
        QUIB_PASS_ON(PrioritizedSolver(m_constraints));
    else
        QUIB_PASS_ON(GaussSeidelSolver(m_constraints));
    {
        QUIB_PROFILE("SolveExit");
        QUIB_PASS_ON(for (Constraint* constraint : m_constraints) constraint->SolveExit());
    }
    {
        QUIB_PROFILE("Applying velchanges");
        ForEachAhead(m_allBodies, [](AbstractBody& body) { body.ApplyVelChange(); });
    }
}

void Simulation::InitConstraints(ConstraintList& constraints)
{
    // What takes no part gives its place to the last one: this order is where the sweeps start from.
    Constraint** entry = constraints.begin();
    Constraint** end = constraints.end();
    while (entry != end)
    {
        if ((*entry)->SolveInit())
            ++entry;
        else
            *entry = *--end;
    }
    constraints.resize(end - constraints.begin());
}

void Simulation::GaussSeidelSolver(const ConstraintList& constraints)
{
    QUIB_PROFILE("GaussSeidelSolver");
    m_rowSolver->Solve(constraints, CalcIterations(), m_solvePreSortConstraints);
}

// Deliberate: the queue is a set keyed on priority alone. Of constraints of exactly equal priority only
// one is in it, the others stay out until a neighbour's application enters them again, and what leaves
// by key is whichever constraint has that value. Many at rest, with priority 0, so collapse into one.
void Simulation::PrioritizedSolver(const ConstraintList& constraints)
{
    QUIB_PROFILE("PrioritizedSolver");
    if (constraints.empty())
        return;
    for (AbstractBody* body : m_allBodies)
        body->GetConstraints().clear();

    // The nodes come from a pool that keeps its memory from step to step.
    std::pmr::set<Constraint*, ConstraintComparer> queue(&m_queueMemory);
    for (Constraint* constraint : constraints)
    {
        AbstractBody* const bodies[2] = {constraint->GetBodyPtr(0), constraint->GetBodyPtr(1)};
        CODE_ASSERT(bodies[0] && bodies[1]);
        for (AbstractBody* body : bodies)
            if (!body->IsImmovable())
                body->GetConstraints().append(constraint);
        constraint->CalcDesiredImpulse();
        queue.insert(constraint);
    }

    std::pmr::set<Constraint*, ConstraintCreationComparer> touched(&m_queueMemory);
    const int64_t count =
        std::min(int64_t(CalcIterations()) * int64_t(constraints.size()), MaxApplications);
    for (int64_t i = 0; i < count; ++i)
    {
        Constraint* const largest = *queue.begin();
        largest->ApplyImpulse();
        touched.clear();
        for (int k = 0; k < 2; ++k)
            for (Constraint* neighbor : largest->GetBodyPtr(k)->GetConstraints())
                touched.insert(neighbor);
        for (Constraint* constraint : touched)
        {
            queue.erase(constraint);
            constraint->CalcDesiredImpulse();
            queue.insert(constraint);
        }
    }
}
}
