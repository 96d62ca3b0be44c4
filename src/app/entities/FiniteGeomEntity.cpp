#include "app/entities/FiniteGeomEntity.h"

#include "app/App.h"
#include "app/EntitySerializer.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"

#include <cmath>

using math::Vec2;

namespace app
{
FiniteGeomEntity::FiniteGeomEntity(const util::SharedPtr<physics::Geom>& geom)
    : GeomEntity(geom)
    , m_density(this, "density", geom->GetDensity())
    , m_airFrictionMult(this, "airFrictionMult", geom->GetAirFrictionMult())
    , m_controllerAcc(this, "controllerAcc",
                      physics::Simulation::GetInstancePtr()->GetGravity().Length() + 1.0f)
    , m_controllerReverseXY(this, "controllerReverseXY", false)
    , m_controllerInvertX(this, "controllerInvertX", false)
    , m_controllerInvertY(this, "controllerInvertY", false)
{
    PushToGeom(m_density, &physics::Geom::SetDensity);
    PushToGeom(m_airFrictionMult, &physics::Geom::SetAirFrictionMult);
}

FiniteGeomEntity::~FiniteGeomEntity() = default;

std::vector<Vec2> FiniteGeomEntity::GetEquidistantPoints() const
{
    std::vector<Vec2> points;
    const float r = physics::SPH::GetInstancePtr()->m_radius;
    const float area = GetGeom()->Area();
    const float n = std::min(std::floor(area / (r * r / 2)),
                             static_cast<float>(App::GetInstancePtr()->GetMaxSPHSpawn()));
    // Written so that a NaN makes no water either.
    if (!(n >= 1))
        return points;
    const float spacing = std::sqrt(area / n);
    const math::OBB2D box = GetGeom()->GetOBBWorld();
    const Vec2 half = box.GetHalfSize();
    for (float y = -half.y + spacing / 2; y < half.y; y += spacing)
        for (float x = -half.x + spacing / 2; x < half.x; x += spacing)
        {
            const Vec2 p = box.GetCenter() + x * box.GetAxis(0) + y * box.GetAxis(1);
            if (GetGeom()->DistanceWorld(p) < 0)
                points.push_back(p);
        }
    return points;
}

float FiniteGeomEntity::CalcEnergy() const
{
    const physics::Geom& geom = *GetGeom();
    const physics::AbstractBody* body = geom.GetBodyPtr();
    if (!body)
        return 0;
    const Vec2 pos = geom.GetCenter();
    const float mass = geom.Mass();
    return 0.5f * mass * body->GetVelAtWorld(pos).LengthSq() +
           0.5f * geom.Inertia() * body->GetAngVel() * body->GetAngVel() -
           mass * Dot(physics::Simulation::GetInstancePtr()->GetGravity(), pos);
}

void FiniteGeomEntity::CopyFrom(const Entity* other)
{
    GeomEntity::CopyFrom(other);
    const FiniteGeomEntity* o = other->AsFiniteGeomEntity();
    if (!o)
        return;
    m_density = o->m_density;
    m_airFrictionMult = o->m_airFrictionMult;
    m_controllerAcc = o->m_controllerAcc;
    m_controllerReverseXY = o->m_controllerReverseXY;
    m_controllerInvertX = o->m_controllerInvertX;
    m_controllerInvertY = o->m_controllerInvertY;
    m_forceController = o->m_forceController;
}

void FiniteGeomEntity::SerializeTo(EntitySerializer& serializer) const
{
    GeomEntity::SerializeTo(serializer);
    if (!m_forceController.empty())
        serializer.Set("forceController", m_forceController);
}

void FiniteGeomEntity::Deserialize(const EntitySerializer& serializer)
{
    // Kept as it is and written again: nothing here is driven by a controller, and a scene must not
    // lose one by being saved. First, as the base reaches out into the scene at its end.
    if (serializer.Has("forceController"))
        m_forceController = serializer.Get<util::String>("forceController");
    GeomEntity::Deserialize(serializer);
}

void FiniteGeomEntity::Check() const
{
    GeomEntity::Check();
    if (!math::IsFinite(m_airFrictionMult))
        QUIB_THROW(BadDataException("Bad airFrictionMult"));
    // What has no end can't move, and the numbers of its body would be no numbers.
    if (!math::IsFinite(GetGeom()->Mass()) || !math::IsFinite(GetGeom()->Inertia()) ||
        !math::IsFinite(1 / GetGeom()->Mass()) || !math::IsFinite(1 / GetGeom()->Inertia()))
        QUIB_THROW(BadDataException("Bad geometry: mass and inertia are out of range"));
}

math::Mat2D FiniteGeomEntity::ScaledPose(const math::Mat2D& pose, const Vec2& scale)
{
    // As it is, to the bit, unless the scale turns it.
    if (scale.x == scale.y && scale.x > 0)
        return pose;
    const Vec2 axis = Normalized(Vec2(scale.x * pose.cos, scale.y * pose.sin));
    return math::Mat2D(axis.x, axis.y, pose.x, pose.y);
}
}
