#include "app/entities/FixJointEntity.h"

#include "app/entities/Pictures.h"
#include "app/entities/WeldBatch.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

using math::Vec2;
using physics::GeomPtr;

namespace app
{
FixJointEntity::FixJointEntity(float size)
    : JointEntity(size)
{
}

FixJointEntity::~FixJointEntity() = default;

JointEntityPtr FixJointEntity::Clone() const
{
    const util::SharedPtr<FixJointEntity> clone = QUIB_NEW FixJointEntity(GetSize());
    clone->CopyEnds(*this);
    return clone;
}

void FixJointEntity::CreateJoint()
{
    // What a scene that has been cleared away left welded is not in the simulation any more.
    const physics::Simulation* simulation = physics::Simulation::GetInstancePtr();
    const bool isEntered = m_welded[0] && (simulation->HasBody(m_welded[0]->GetBody()) ||
                                           simulation->HasBody(m_welded[1]->GetBody()));
    if (!isEntered || (m_welded[0] == GetGeom(0) && m_welded[1] == GetGeom(1)))
        return;
    RemoveFromSimulation();
    AddToSimulation();
}

void FixJointEntity::AddToSimulation()
{
    if (!GetGeom(0))
        return;
    m_welded[0] = GetGeom(0);
    m_welded[1] = GetGeom(1);
    WeldBatch::Weld(m_welded[0], m_welded[1]);
}

void FixJointEntity::RemoveFromSimulation()
{
    if (!m_welded[0])
        return;
    // Forgotten first: from now on it is none of the welds that hold a body together.
    const GeomPtr welded[2] = {m_welded[0], m_welded[1]};
    ForgetWeld();
    WeldBatch::Unweld(welded[0], welded[1]);
}

void FixJointEntity::ForgetWeld()
{
    m_welded[0] = nullptr;
    m_welded[1] = nullptr;
}

void FixJointEntity::StartTransform()
{
    JointEntity::StartTransform();
    for (int i : {0, 1})
        m_startPoints[i] = GetWorldPoint(i);
}

/// Whether that geometry was moved with the joint.
bool FixJointEntity::HasComeAlong(int i) const
{
    const Vec2 now = TransformCoordinate(GetGeom(i)->GetPose(), GetLocalPoint(i));
    return DistanceSq(now, GetWorldPoint(i)) < DistanceSq(now, m_startPoints[i]);
}

void FixJointEntity::EndTransform()
{
    StopTransforming();
    if (!GetGeom(0))
        return;
    const bool hasComeAlong[2] = {HasComeAlong(0), HasComeAlong(1)};
    if (hasComeAlong[0] == hasComeAlong[1])
        return;
    // The other one is the background, say. There its end would stay where the body has been.
    const int other = hasComeAlong[0] ? 1 : 0;
    Vec2 points[2] = {GetLocalPoint(0), GetLocalPoint(1)};
    points[other] = TransformCoordinate(GetGeom(other)->GetPoseInv(), GetWorldPoint(other));
    AttachToLocal(GetGeom(0), points[0], GetGeom(1), points[1]);
}

bool FixJointEntity::IsAlive() const
{
    return JointEntity::IsAlive() && GetGeom(0)->GetBodyPtr() == GetGeom(1)->GetBodyPtr();
}

void FixJointEntity::Draw() const
{
    QUIB_PROFILE("FixJoint::Draw");
    static const rendering::TextureProxy& s_fixjoint = GetPicture("fixjoint");
    math::Mat2D pose = GetGeom(0) ? GetGeom(0)->GetPose() : math::Mat2D();
    pose.SetTranslation(GetMiddle());
    glDisable(GL_DEPTH_TEST);
    glPushMatrix();
    pose.MultToGL();
    DrawPicture(s_fixjoint, Vec2(), GetSize(), GetColor4());
    DrawRing(*this, Vec2(), GetSize());
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
}
}
