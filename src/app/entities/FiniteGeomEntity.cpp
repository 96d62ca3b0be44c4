#include "app/entities/FiniteGeomEntity.h"

#include "app/EntitySerializer.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

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
}
