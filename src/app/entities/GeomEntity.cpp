#include "app/entities/GeomEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/Callback.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

using math::Vec2;

namespace app
{
namespace
{
/// The angle whose cosine and sine are those of the pose to the bit, when there is such a float.
std::optional<float> FindExactAngle(const math::Mat2D& pose)
{
    float below = pose.GetAngle(), above = below;
    for (int i = 0; i < 4; ++i)
    {
        for (float a : {below, above})
            if (std::cos(a) == pose.cos && std::sin(a) == pose.sin)
                return a;
        below = std::nextafter(below, -4.0f);
        above = std::nextafter(above, 4.0f);
    }
    return std::nullopt;
}

/// What a file holds: a scene that is saved, loaded and saved again must not turn bit by bit.
float CalcAngle(const math::Mat2D& pose)
{
    if (const std::optional<float> exact = FindExactAngle(pose))
        return *exact;
    // A pose that has turned step by step is seldom that of any float. It is loaded as that of its
    // angle, for which several floats may stand: the one that will be found then is written now.
    const float angle = pose.GetAngle();
    return FindExactAngle(math::Mat2D::Rotation(angle)).value_or(angle);
}
}

GeomEntity::GeomEntity(const util::SharedPtr<physics::Geom>& geom)
    : m_geom(geom)
    , m_friction(this, "friction", physics::Simulation::GetInstancePtr()->m_defaultBodyFriction)
    , m_restitution(this, "restitution",
                    physics::Simulation::GetInstancePtr()->m_defaultBodyRestitution)
    , m_collideWater(this, "collideWater", true)
    , m_collideSet(this, "collideSet", physics::Geom::COLLIDE_DEFAULT_GROUP)
{
    // The defaults are those of an entity that is loaded. This one may be made of a geometry that is not
    // new.
    m_friction = geom->GetFriction();
    m_restitution = geom->GetRestitution();
    m_collideWater = geom->GetWaterCollide();
    m_collideSet = geom->GetCollideSet();
    PushToGeom(m_friction, &physics::Geom::SetFriction);
    PushToGeom(m_restitution, &physics::Geom::SetRestitution);
    PushToGeom(m_collideWater, &physics::Geom::SetWaterCollide);
    PushToGeom(m_collideSet, &physics::Geom::SetCollideSet);
}

GeomEntity::~GeomEntity()
{
    // A body that is not in the simulation would be kept alive by its geometries, and they by it. All of
    // them let go of it, as nothing moves it any more: taken off one by one, thousands that were welded
    // together would take the square of their number.
    if (!physics::Simulation::Exists())
        return;
    const util::SharedPtr<physics::Body> body = GetBody();
    if (body && !physics::Simulation::GetInstancePtr()->HasBody(body))
        body->SetGeoms(physics::GeomSet());
}

util::SharedPtr<physics::Body> GeomEntity::GetBody() const
{
    return m_geom->GetBodyBody();
}

bool GeomEntity::IsOnEntity(const Vec2& pos) const
{
    return m_geom->DistanceWorld(pos) <= 0;
}

void GeomEntity::AddToSimulation()
{
    util::SharedPtr<physics::Body> body = GetBody();
    if (!body)
    {
        body = QUIB_NEW physics::Body;
        body->SetGeom(m_geom);
    }
    body->SetSuspended(false);
    physics::Simulation::GetInstancePtr()->AddBody(body);
}

void GeomEntity::RemoveFromSimulation()
{
    const util::SharedPtr<physics::Body> body = GetBody();
    if (!body)
        return;
    physics::GeomSet geoms = body->GetGeoms();
    CODE_ASSERT(geoms.count(m_geom));
    geoms.erase(m_geom);
    body->SetGeoms(geoms);
    // Otherwise the body stays with what it was fixed to.
    if (geoms.empty())
        physics::Simulation::GetInstancePtr()->RemoveBody(body);
}

void GeomEntity::RemoveFromSimulation(const std::vector<const GeomEntity*>& entities)
{
    std::map<unsigned, std::pair<util::SharedPtr<physics::Body>, physics::GeomSet>> rests; // by id
    for (const GeomEntity* entity : entities)
    {
        const util::SharedPtr<physics::Body> body = entity->GetBody();
        if (!body)
            continue;
        auto& rest = rests[body->GetID()];
        if (!rest.first)
            rest = {body, body->GetGeoms()};
        CODE_ASSERT(rest.second.count(entity->m_geom));
        rest.second.erase(entity->m_geom);
    }
    physics::BodyList empty;
    for (const auto& [id, rest] : rests)
    {
        rest.first->SetGeoms(rest.second);
        if (rest.second.empty())
            empty.push_back(rest.first);
    }
    physics::Simulation::GetInstancePtr()->RemoveBodies(empty);
}

bool GeomEntity::IsAlive() const
{
    // Asked in every frame: a body of any kind will do, which spares the cast.
    const util::SharedPtr<physics::AbstractBody> body = m_geom->GetBody();
    return body && physics::Simulation::GetInstancePtr()->HasBody(body);
}

void GeomEntity::Transform(const math::Mat2D& matrix)
{
    const util::SharedPtr<physics::Body> body = GetBody();
    if (!body)
        return;
    m_geom->SetWorldPose(matrix * m_geom->GetPose());
    body->OnGeomChange();
}

void GeomEntity::SerializeTo(EntitySerializer& serializer) const
{
    Entity::SerializeTo(serializer);
    serializer.Set("geomID", static_cast<unsigned long>(m_geom->GetID()));
    serializer.Set("pos", m_geom->GetCenter());
    serializer.Set("angle", CalcAngle(m_geom->GetPose()));
}

void GeomEntity::Deserialize(const EntitySerializer& serializer)
{
    if (serializer.Has("pos") || serializer.Has("angle"))
    {
        const Vec2 pos = serializer.Has("pos") ? serializer.Get<Vec2>("pos") : m_geom->GetCenter();
        const float angle = serializer.Has("angle") ? serializer.Get<float>("angle") : 0;
        if (!math::IsFinite(pos))
            QUIB_THROW(BadDataException("Bad pos"));
        if (!math::IsFinite(angle))
            QUIB_THROW(BadDataException("Bad angle"));
        m_geom->SetWorldPose(math::Mat2D::TranslationRotation(pos, angle));
        if (GetBody())
            GetBody()->OnGeomChange();
    }
    Entity::Deserialize(serializer);
}

math::BoundingBox GeomEntity::GetAABB() const
{
    return m_geom->GetAABBWorld();
}

void GeomEntity::CopyFrom(const Entity* other)
{
    Entity::CopyFrom(other);
    const GeomEntity* o = other->AsGeomEntity();
    if (!o)
        return;
    CopyBinding(m_friction, o->m_friction);
    CopyBinding(m_restitution, o->m_restitution);
    CopyBinding(m_collideWater, o->m_collideWater);
    CopyBinding(m_collideSet, o->m_collideSet);
}

void GeomEntity::Check() const
{
    if (!math::IsFinite(m_friction))
        QUIB_THROW(BadDataException("Bad friction"));
    if (!math::IsFinite(m_restitution))
        QUIB_THROW(BadDataException("Bad restitution"));
    if (!math::IsFinite(m_geom->GetCenter()))
        QUIB_THROW(BadDataException("Bad geometry: its place is not finite"));
    // Written so that a NaN fails.
    if (!(m_geom->Mass() > 0) || !(m_geom->Area() > 0) || !(m_geom->Inertia() > 0))
        QUIB_THROW(BadDataException("Bad geometry: mass, area and inertia must be above 0"));
}

void GeomEntity::LogBadPolygon(std::exception& e)
{
    CatchException(e, QUIB_LOCATION);
    Log(logging::LogInfo, "Bad polygon");
}

math::Vec4 GeomEntity::GetBorderColor() const
{
    return App::GetInstancePtr()->GetBorderColor(this);
}

bool GeomEntity::HasBorder() const
{
    return IsMouseOver() || IsSelected() || App::GetInstancePtr()->GetBorders();
}

float GeomEntity::GetBorderWidth() const
{
    return HasBorder() ? std::max(0.0f, App::GetInstancePtr()->GetObjectBorderWidth()) : 0;
}

float GeomEntity::GetMinHalfSize()
{
    // A disc of that radius holds the middle of a pixel wherever it lies, and so does what it fits into.
    return App::GetInstancePtr()->GetPixelSize() * 0.7072f;
}
}
