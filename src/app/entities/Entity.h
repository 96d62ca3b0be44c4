// Anything that the user places in the scene. The scene owns it; a script sees its attributes.
#pragma once

#include "math/BoundingBox.h"
#include "math/Vector.h"
#include "script/Reflected.h"

namespace app
{
class EntitySerializer;
class GeomEntity;

class Entity : public script::Reflected
{
public:
    /// Takes the next id, and a colour of chance from the App.
    Entity();
    ~Entity() override;

    /// Unique while the program runs. In a file it only tells which entities belong to a group.
    unsigned long GetID() const { return m_id; }

    /// The entity as one with a geometry, else null. Asked of every entity in every frame.
    virtual const GeomEntity* AsGeomEntity() const { return nullptr; }

    const math::Vec4& GetColor4() const { return m_color; }
    void SetColor4(const math::Vec4& color) { m_color = color; }
    /// The place in the scene's list, from back to front. Right only just after
    /// Scene::DepthTagEntities and while a scene is being loaded.
    float GetZDepth() const { return m_zDepth; }
    void SetZDepth(float zDepth) { m_zDepth = zDepth; }

    /// The mouse is on the entity, the entity is in the selection: as of the last frame drawn.
    bool IsMouseOver() const { return m_mouseOver; }
    bool IsSelected() const { return m_selected; }
    void SetMouseOver(bool mouseOver) { m_mouseOver = mouseOver; }
    void SetSelected(bool selected) { m_selected = selected; }

    /// Once a frame. What throws here is removed from the scene.
    virtual void Update(float dt);
    /// In world coordinates.
    virtual void Draw() const = 0;
    /// @param pos  world position
    virtual bool IsOnEntity(const math::Vec2& pos) const = 0;
    virtual void AddToSimulation() = 0;
    virtual void RemoveFromSimulation() = 0;
    /// False once its part in the simulation is gone: the scene removes it then.
    virtual bool IsAlive() const { return true; }
    /// An override calls its base.
    virtual void SerializeTo(EntitySerializer& serializer) const;
    /// Any key may be absent. An override calls its base.
    /// @throws BadDataException  for a value of the wrong kind
    virtual void Deserialize(const EntitySerializer& serializer);
    /// In the world. Infinite for a plane.
    virtual math::BoundingBox GetAABB() const = 0;
    virtual bool IsInView(const math::BoundingBox& view) const;

protected:
    /// Called once all values are read and before the entity reaches out into the scene.
    /// @throws BadDataException  when they make no entity that the world can hold
    virtual void Check() const {}

private:
    static unsigned long s_idCounter;

    unsigned long m_id;
    math::Vec4 m_color; // red, green, blue, alpha
    bool m_mouseOver = false;
    bool m_selected = false;
    float m_zDepth = -1;
};
}
