#include "physics/Geom.h"

#include "physics/Body.h"
#include "physics/Simulation.h"

namespace physics
{
Geom::Geom(GeomKind kind, BodyReference bodyReference)
    : m_id(s_idCounter++)
    , m_kind(kind)
    , m_bodyReference(bodyReference)
{
    // The one look upward: the defaults of a new geometry are settings of the simulation. Its own
    // constructor makes the world's geometry, when the settings stand already.
    const Simulation* simulation = Simulation::GetInstancePtr();
    m_density = simulation->m_defaultBodyDensity.Get();
    m_friction = simulation->m_defaultBodyFriction.Get();
    m_restitution = simulation->m_defaultBodyRestitution.Get();
}

Geom::Geom(const Geom& o)
    : util::Pointee(o)
    , m_id(s_idCounter++)
    , m_kind(o.m_kind)
    , m_bodyReference(o.m_bodyReference)
    , m_poseInv(o.m_poseInv)
    , m_pose(o.m_pose)
    , m_center(o.m_center)
    , m_density(o.m_density)
    , m_friction(o.m_friction)
    , m_restitution(o.m_restitution)
    // Deliberate: m_airFrictionMult and m_noCollide are not copied.
    , m_waterCollide(o.m_waterCollide)
    , m_collideSet(o.m_collideSet)
{
}

Geom::~Geom()
{
    SetBody(nullptr);
}

void Geom::SetBody(AbstractBody* body)
{
    if (body == m_body)
        return;
    if (m_bodyReference == BodyReference::Plain)
    {
        m_body = body;
        return;
    }
    if (body)
        body->GetHandle()->IncreaseRefCount();
    AbstractBody* old = m_body;
    m_body = body;
    if (old)
        old->GetHandle()->DecreaseRefCount();
}

util::SharedPtr<AbstractBody> Geom::GetBody() const
{
    return m_body;
}

util::SharedPtr<Body> Geom::GetBodyBody() const
{
    return GetBodyBodyPtr();
}

Body* Geom::GetBodyBodyPtr() const
{
    return dynamic_cast<Body*>(m_body);
}

void Geom::SetPos(math::Vec2 pos)
{
    math::Mat2D pose = m_pose;
    pose.SetTranslation(pos);
    SetWorldPose(pose);
}

void Geom::SetWorldPose(const math::Mat2D& pose)
{
    m_pose = pose;
    m_poseInv = Inverted(pose);
    m_center = pose.GetTranslation();
}

void Geom::CopyMaterial(const Geom& o)
{
    m_density = o.m_density;
    m_friction = o.m_friction;
    m_restitution = o.m_restitution;
    m_waterCollide = o.m_waterCollide;
    m_collideSet = o.m_collideSet;
}

void Geom::SetDensity(float density)
{
    const float old = m_density;
    m_density = density;
    OnGeomChange([&] { m_density = old; });
}

void Geom::OnGeomChange()
{
    if (Body* body = GetBodyBodyPtr())
        body->OnGeomChange();
}
}
