// A geometry entity that moves: it has a mass.
#pragma once

#include "app/entities/GeomEntity.h"

namespace app
{
class FiniteGeomEntity : public GeomEntity
{
public:
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;

protected:
    /// The geometry's material and the gravity in force become the defaults of its attributes.
    /// @param geom  not null
    explicit FiniteGeomEntity(const util::SharedPtr<physics::Geom>& geom);

    /// Mass and inertia that a body can move with.
    void Check() const override;

private:
    script::AttribWrapper<float> m_density; // mass per area
    script::AttribWrapper<float> m_airFrictionMult;
    script::AttribWrapper<float> m_controllerAcc; // the controller's force per mass
    script::AttribWrapper<bool> m_controllerReverseXY;
    script::AttribWrapper<bool> m_controllerInvertX;
    script::AttribWrapper<bool> m_controllerInvertY;
    util::String m_forceController; // as in the file; "" for none
};
}
