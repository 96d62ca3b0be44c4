// Anything that the user places in the scene. The scene owns it; a script sees its attributes.
#pragma once

#include "math/BoundingBox.h"
#include "math/Matrix.h"
#include "math/Vector.h"
#include "physics/Linesegment.h"
#include "script/Reflected.h"

#include <cstddef>

namespace physics
{
class Polygon;
}

namespace app
{
class Chain;
class EntitySerializer;
class FiniteGeomEntity;
class GeomEntity;
class JointEntity;
class PenEntity;

class Entity : public script::Reflected
{
public:
    /// Takes the next id, and a colour of chance from the App.
    Entity();
    ~Entity() override;

    /// Unique while the program runs. In a file it only tells which entities belong to a group.
    unsigned long GetID() const { return m_id; }

    // The entity as one of that kind, else null. Asked of every entity in every frame, where a cast at
    // run time would cost too much.
    virtual const GeomEntity* AsGeomEntity() const { return nullptr; }
    virtual const FiniteGeomEntity* AsFiniteGeomEntity() const { return nullptr; }
    virtual const JointEntity* AsJointEntity() const { return nullptr; }
    virtual const PenEntity* AsPenEntity() const { return nullptr; }
    JointEntity* ToJointEntity() { return const_cast<JointEntity*>(AsJointEntity()); }
    PenEntity* ToPenEntity() { return const_cast<PenEntity*>(AsPenEntity()); }

    /// Null for one in no chain.
    const util::SharedPtr<Chain>& GetChain() const { return m_chain; }
    /// Its place there.
    size_t GetChainIndex() const { return m_chainIndex; }
    /// For the chain, which keeps the other half of the relation.
    void SetChain(const util::SharedPtr<Chain>& chain, size_t index);

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

    /// Lies around the drawing, and shows a change before it is made.
    const math::Mat3& GetDrawTransform() const { return m_drawTransform; }
    void SetDrawTransform(const math::Mat3& transform) { m_drawTransform = transform; }

    /// Once a frame. What throws here is removed from the scene.
    virtual void Update(float dt);
    /// In world coordinates.
    virtual void Draw() const = 0;
    /// @param pos  world position
    virtual bool IsOnEntity(const math::Vec2& pos) const = 0;
    /// Whether an erasing stroke takes it away.
    virtual bool ErasedBy(const physics::LinesegmentList& stroke) const = 0;
    /// Whether a lasso catches it.
    virtual bool IsContainedBy(const physics::Polygon& lasso) const = 0;
    virtual void AddToSimulation() = 0;
    virtual void RemoveFromSimulation() = 0;
    /// False once its part in the simulation is gone: the scene removes it then.
    virtual bool IsAlive() const { return true; }
    // To move several: StartTransform on each, Transform on each, any number of times, and EndTransform
    // on each. A joint finds its geometries at their places in the third pass only.
    virtual void StartTransform() {}
    /// @param matrix  from the old to the new place in the world
    virtual void Transform(const math::Mat2D& matrix) = 0;
    virtual void EndTransform() {}
    /// An override calls its base.
    virtual void SerializeTo(EntitySerializer& serializer) const;
    /// Any key may be absent. An override calls its base.
    /// @throws BadDataException  for a value of the wrong kind
    virtual void Deserialize(const EntitySerializer& serializer);
    /// In the world. Infinite for a plane.
    virtual math::BoundingBox GetAABB() const = 0;
    /// Of motion, height and tension.
    virtual float CalcEnergy() const { return 0; }
    virtual bool IsInView(const math::BoundingBox& view) const;
    /// Takes over what the two have in common, if only colour and zDepth. An override calls its base.
    virtual void CopyFrom(const Entity* other);

protected:
    /// Called once all values are read and before the entity reaches out into the scene.
    /// @throws BadDataException  when they make no entity that the world can hold
    virtual void Check() const {}

private:
    friend class Scene;

    static unsigned long s_idCounter;

    unsigned long m_id;
    util::SharedPtr<Chain> m_chain;
    size_t m_chainIndex = 0;
    math::Vec4 m_color; // red, green, blue, alpha
    bool m_mouseOver = false;
    bool m_selected = false;
    bool m_isInScene = false; // so that asking for it needs no search; the scene writes it
    float m_zDepth = -1;
    math::Mat3 m_drawTransform;
};
}
