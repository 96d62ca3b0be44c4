// An entity with a shape in the physics world. The geometry is its own; the body belongs to the
// simulation and may be shared with other geometries, so nobody keeps it beyond a call.
#pragma once

#include "app/entities/Entity.h"
#include "script/Attributes.h"

namespace physics
{
class Body;
class Geom;
}

namespace app
{
class GeomEntity : public Entity
{
public:
    ~GeomEntity() override;

    const util::SharedPtr<physics::Geom>& GetGeom() const { return m_geom; }
    /// Null before the entity is in the simulation.
    util::SharedPtr<physics::Body> GetBody() const;

    bool IsOnEntity(const math::Vec2& pos) const override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    bool IsAlive() const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    math::BoundingBox GetAABB() const override;

    /// A shape that the world can hold: finite place, and area, mass and inertia above 0.
    /// @throws BadDataException  "Bad geometry" and what is wrong with it
    virtual void CheckGeom() const;

protected:
    /// @param geom  not null
    explicit GeomEntity(const util::SharedPtr<physics::Geom>& geom);

    /// The colour of the entity's border.
    math::Vec4 GetBorderColor() const;
    /// World units; 0 when no border is to be drawn.
    float GetBorderWidth() const;

private:
    util::SharedPtr<physics::Geom> m_geom;
    script::AttribWrapper<float> m_friction;
    script::AttribWrapper<float> m_restitution;
    script::AttribWrapper<bool> m_collideWater;
    script::AttribWrapper<int> m_collideSet; // bit mask of collision layers
};
}
