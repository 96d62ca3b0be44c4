#include "physics/Joint.h"

#include "physics/Body.h"
#include "physics/Geom.h"
#include "util/Failures.h"

namespace physics
{
Joint::Joint(GeomPtr g0, GeomPtr g1)
    : m_geoms{g0, g1}
    , m_creationNumber(s_creationCounter++)
{
    CODE_ASSERT(g0);
    CODE_ASSERT(g1);
}

Joint::~Joint() = default;

bool Joint::IsGood() const
{
    const AbstractBody* const a = m_geoms[0]->GetBodyPtr();
    const AbstractBody* const b = m_geoms[1]->GetBodyPtr();
    // Two geometries have one body when they are welded, so that the first test is not the second.
    return m_geoms[0] != m_geoms[1] && a != b && a && a->IsInSimulation() && b &&
           b->IsInSimulation();
}

void Joint::GetBodies(BodyPtr* out) const
{
    for (int i = 0; i < 2; ++i)
        out[i] = m_geoms[i]->GetBodyBody();
}
}
