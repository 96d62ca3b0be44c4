// An entity with a shape in the physics world. The geometry is its own; the body belongs to the
// simulation and may be shared with other geometries, so nobody keeps it beyond a call.
#pragma once

#include "app/entities/Entity.h"
#include "script/Attributes.h"
#include "util/Callback.h"

#include <exception>
#include <vector>

namespace physics
{
class Body;
class Geom;
}

namespace app
{
class GeomEntity;
using GeomEntityPtr = util::SharedPtr<GeomEntity>;

class GeomEntity : public Entity
{
public:
    ~GeomEntity() override;

    const GeomEntity* AsGeomEntity() const override { return this; }

    const util::SharedPtr<physics::Geom>& GetGeom() const { return m_geom; }
    /// @param set  of the CollideSets, as bits: two geometries with one in common collide
    void SetCollideSet(int set) { m_collideSet = set; }
    /// Null before the entity is in the simulation.
    util::SharedPtr<physics::Body> GetBody() const;

    /// A new entity in no simulation, on a geometry of its own. Formulas of the attributes are run.
    virtual GeomEntityPtr Clone() const = 0;
    /// The same, stretched along the axes of the world and in place. The kind may change: a circle
    /// becomes a polygon.
    /// @param scale  negative components mirror
    /// @return null, and the log has a "Bad polygon", when no geometry can be made of that
    virtual GeomEntityPtr ScaledClone(const math::Vec2& scale) const = 0;
    /// The whole shape in opaque black, in its place. Blending, and the depth test, are the caller's.
    virtual void DrawBlack() const = 0;

    bool IsOnEntity(const math::Vec2& pos) const override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    /// Each body looks at its geometries once, however many of them leave it.
    static void RemoveFromSimulation(const std::vector<const GeomEntity*>& entities);
    bool IsAlive() const override;
    /// Moves the geometry alone: of a body with several, the others stay.
    void Transform(const math::Mat2D& matrix) override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    math::BoundingBox GetAABB() const override;
    /// Colour, zDepth and the four attributes, formulas as such.
    void CopyFrom(const Entity* other) override;

protected:
    /// The geometry's material becomes the default of the attributes.
    /// @param geom  not null; this entity's alone
    explicit GeomEntity(const util::SharedPtr<physics::Geom>& geom);

    /// Finite place and material; area, mass and inertia above 0.
    void Check() const override;

    /// What make gives, with this entity's attributes.
    /// @param make  gives an entity, or throws
    template<typename Make>
    GeomEntityPtr MakeScaled(Make make) const
    {
        try
        {
            const GeomEntityPtr clone = make();
            clone->CopyFrom(this);
            clone->Check();
            return clone;
        }
        catch (std::exception& e)
        {
            LogBadPolygon(e);
            return nullptr;
        }
    }

    bool HasBorder() const;
    /// The colour of the entity's border.
    math::Vec4 GetBorderColor() const;
    /// World units; 0 when no border is to be drawn.
    float GetBorderWidth() const;
    /// World units; half of the width below which something could fall between the pixels.
    static float GetMinHalfSize();

    /// For CopyFrom: a formula stays one. It is run at once, and may do anything.
    template<typename T>
    static void CopyBinding(script::AttribWrapper<T>& to, const script::AttribWrapper<T>& from)
    {
        to->SetObject(from.GetAttrib()->GetObject());
    }

    /// From now on the geometry follows the attribute.
    template<typename T>
    void PushToGeom(script::AttribWrapper<T>& attrib, void (physics::Geom::*setter)(T))
    {
        physics::Geom* geom = m_geom.get();
        attrib->AddChangeCallback(
            QUIB_NEW util::Callback([geom, setter, &attrib] { (geom->*setter)(attrib); }, this));
    }

private:
    static void LogBadPolygon(std::exception& e);

    util::SharedPtr<physics::Geom> m_geom;
    script::AttribWrapper<float> m_friction;
    script::AttribWrapper<float> m_restitution;
    script::AttribWrapper<bool> m_collideWater;
    script::AttribWrapper<int> m_collideSet; // bit mask of collision layers
};
}
