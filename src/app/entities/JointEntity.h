// Anything fastened at two points: hinges, springs and welds. An end that is on no body is on the world's
// geometry. What dies with it is the joint only: it holds its geometries, and leaves the scene by itself
// once one of them has left.
#pragma once

#include "app/entities/Entity.h"
#include "math/BoundingSphere.h"
#include "math/Mat2D.h"

namespace physics
{
class Body;
class Geom;
}

namespace app
{
class FixJointEntity;
class JointEntity;
using JointEntityPtr = util::SharedPtr<JointEntity>;

class JointEntity : public Entity
{
public:
    ~JointEntity() override;

    const JointEntity* AsJointEntity() const override { return this; }
    virtual const FixJointEntity* AsFixJointEntity() const { return nullptr; }
    FixJointEntity* ToFixJointEntity() { return const_cast<FixJointEntity*>(AsFixJointEntity()); }

    /// A joint of the same kind, size, geometries and points, which is in neither scene nor simulation.
    /// Attributes, colour and buttons have their defaults.
    virtual JointEntityPtr Clone() const = 0;
    /// Makes the part that works in the physics world anew, for the present ends. It takes over the
    /// settings of the old one, and its place in the simulation if that one had any.
    virtual void CreateJoint() = 0;

    /// Fastens the ends to what lies under two points of the world. An end stays on the geometry that it
    /// has when its point is within that. The joint is dead when an end finds nothing.
    void AttachAt(const math::Vec2* points);
    /// @param geom0, geom1  the joint is dead when one is null
    /// @param point0, point1  in the world
    void AttachToWorld(const util::SharedPtr<physics::Geom>& geom0, const math::Vec2& point0,
                       const util::SharedPtr<physics::Geom>& geom1, const math::Vec2& point1);
    /// The same.
    /// @param local0, local1  each in its geometry's space
    void AttachToLocal(const util::SharedPtr<physics::Geom>& geom0, const math::Vec2& local0,
                       const util::SharedPtr<physics::Geom>& geom1, const math::Vec2& local1);
    /// Hands the ends over to two other geometries, with the local points as they are.
    void SetGeoms(const util::SharedPtr<physics::Geom>* geoms);

    /// @param i  0 or 1
    const util::SharedPtr<physics::Geom>& GetGeom(int i) const { return m_geoms[i]; }
    const math::Vec2& GetLocalPoint(int i) const { return m_localPoints[i]; }
    const math::Vec2& GetWorldPoint(int i) const { return m_worldPoints[i]; }
    /// @param bodies  out: two, null where there is none
    void GetBodies(util::SharedPtr<physics::Body>* bodies) const;
    /// Whether an end is on the world's own geometry.
    bool IsAttachedToWorld() const;

    /// World units; how large it is drawn and picked.
    float GetSize() const { return m_size; }
    void SetSize(float size) { m_size = size; }

    void Update(float dt) override;
    bool IsOnEntity(const math::Vec2& pos) const override;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    bool IsContainedBy(const physics::Polygon& polygon) const override;
    bool IsAlive() const override;
    void StartTransform() override;
    void Transform(const math::Mat2D& matrix) override;
    void EndTransform() override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    math::BoundingBox GetAABB() const override;

protected:
    explicit JointEntity(float size);

    /// For Clone.
    void CopyEnds(const JointEntity& o);
    /// The middle of the two ends, in the world: where a joint is drawn.
    math::Vec2 GetMiddle() const;
    /// How it is picked and erased.
    math::BoundingCircle AsCircle() const;

private:
    void UpdateWorldPoints();

    float m_size;
    util::SharedPtr<physics::Geom> m_geoms[2];
    math::Vec2 m_localPoints[2]; // in the geometries' spaces
    math::Vec2 m_worldPoints[2]; // while transforming, what counts
    bool m_isTransforming = false;
};
}
