#include "app/entities/JointEntity.h"

#include "app/EntitySerializer.h"
#include "app/Scene.h"
#include "app/entities/Pictures.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "physics/WorldGeom.h"

using math::Vec2;
using physics::GeomPtr;

namespace app
{
namespace
{
// World units; how near a point must be to the geometry that its end is on, to stay on it.
const float KeepDistance = 0.001f;

Vec2 ToWorld(const physics::Geom& geom, const Vec2& local)
{
    return TransformCoordinate(geom.GetPose(), local);
}

Vec2 ToLocal(const physics::Geom& geom, const Vec2& world)
{
    return TransformCoordinate(geom.GetPoseInv(), world);
}

bool IsInSimulation(const GeomPtr& geom)
{
    return geom && physics::Simulation::GetInstancePtr()->HasBody(geom->GetBody());
}
}

JointEntity::JointEntity(float size)
    : m_size(size)
{
    SetColor4(math::Vec4(0.5f, 0.5f, 0.5f, 1));
}

JointEntity::~JointEntity() = default;

void JointEntity::CopyEnds(const JointEntity& o)
{
    for (int i = 0; i < 2; ++i)
    {
        m_geoms[i] = o.m_geoms[i];
        m_localPoints[i] = o.m_localPoints[i];
        m_worldPoints[i] = o.m_worldPoints[i];
    }
}

void JointEntity::AttachAt(const Vec2* points)
{
    const GeomPtr worldGeom = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    const Vec2 ends[2] = {points[0], points[1]}; // they may be our own
    GeomPtr geoms[2];
    for (int i = 0; i < 2; ++i)
        if (IsInSimulation(m_geoms[i]) && m_geoms[i] != worldGeom &&
            m_geoms[i]->DistanceWorld(ends[i]) < KeepDistance)
            geoms[i] = m_geoms[i];
    for (int i = 0; i < 2; ++i)
    {
        if (geoms[i])
            continue;
        for (const GeomPtr& found : Scene::GetInstancePtr()->GetGeomsAt(ends[i]))
            if (found != geoms[1 - i])
            {
                geoms[i] = found;
                break;
            }
    }
    AttachToWorld(geoms[0], ends[0], geoms[1], ends[1]);
}

void JointEntity::AttachToWorld(const GeomPtr& geom0, const Vec2& point0, const GeomPtr& geom1,
                                const Vec2& point1)
{
    m_worldPoints[0] = point0;
    m_worldPoints[1] = point1;
    m_geoms[0] = geom0 && geom1 ? geom0 : nullptr;
    m_geoms[1] = geom0 && geom1 ? geom1 : nullptr;
    if (!m_geoms[0])
        return;
    for (int i = 0; i < 2; ++i)
        m_localPoints[i] = ToLocal(*m_geoms[i], m_worldPoints[i]);
    CreateJoint();
}

void JointEntity::AttachToLocal(const GeomPtr& geom0, const Vec2& local0, const GeomPtr& geom1,
                                const Vec2& local1)
{
    m_localPoints[0] = local0;
    m_localPoints[1] = local1;
    const GeomPtr geoms[2] = {geom0, geom1};
    SetGeoms(geoms);
}

void JointEntity::SetGeoms(const GeomPtr* geoms)
{
    const bool isWhole = geoms[0] && geoms[1];
    for (int i = 0; i < 2; ++i)
        m_geoms[i] = isWhole ? geoms[i] : nullptr;
    if (!isWhole)
        return;
    UpdateWorldPoints();
    CreateJoint();
}

void JointEntity::UpdateWorldPoints()
{
    for (int i = 0; i < 2; ++i)
        if (m_geoms[i])
            m_worldPoints[i] = ToWorld(*m_geoms[i], m_localPoints[i]);
}

void JointEntity::GetBodies(physics::BodyPtr* bodies) const
{
    for (int i = 0; i < 2; ++i)
        bodies[i] = m_geoms[i] ? m_geoms[i]->GetBodyBody() : nullptr;
}

bool JointEntity::IsAttachedToWorld() const
{
    const GeomPtr worldGeom = physics::Simulation::GetInstancePtr()->GetWorldGeom();
    return m_geoms[0] == worldGeom || m_geoms[1] == worldGeom;
}

void JointEntity::Update(float dt)
{
    Entity::Update(dt);
    if (!m_isTransforming)
        UpdateWorldPoints();
}

Vec2 JointEntity::GetMiddle() const
{
    return (m_worldPoints[0] + m_worldPoints[1]) * 0.5f;
}

math::BoundingCircle JointEntity::AsCircle() const
{
    return math::BoundingCircle(m_worldPoints[0], m_size * 0.5f);
}

bool JointEntity::IsInView(const math::BoundingBox& view) const
{
    math::BoundingBox drawn(GetMiddle(), GetMiddle());
    drawn.Grow(GetPictureReach(m_size));
    return Intersects(drawn, view);
}

bool JointEntity::IsAlive() const
{
    return IsInSimulation(m_geoms[0]) && IsInSimulation(m_geoms[1]);
}

void JointEntity::StartTransform()
{
    // Its geometries may have moved since the last frame.
    if (!m_isTransforming)
        UpdateWorldPoints();
    m_isTransforming = true;
}

void JointEntity::Transform(const math::Mat2D& matrix)
{
    for (Vec2& point : m_worldPoints)
        point = TransformCoordinate(matrix, point);
}

void JointEntity::EndTransform()
{
    StopTransforming();
    AttachAt(m_worldPoints);
}

void JointEntity::SerializeTo(EntitySerializer& serializer) const
{
    Entity::SerializeTo(serializer);
    serializer.Set("size", m_size);
}

void JointEntity::Deserialize(const EntitySerializer& serializer)
{
    if (serializer.Has("size"))
    {
        const float size = serializer.Get<float>("size");
        if (!math::IsFinite(size) || size < 0)
            QUIB_THROW(BadDataException("Bad size: it must not be below 0"));
        m_size = size;
    }
    Entity::Deserialize(serializer);
}
}
