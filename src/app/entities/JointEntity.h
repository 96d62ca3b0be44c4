// Anything fastened at two points: hinges, springs and welds. An end that is on no body is on the world's
// geometry. It keeps the geometries of its ends but does not decide on them: it leaves the scene by itself
// once one of them has left, and they stay when it leaves.
#pragma once

#include "app/entities/PointEntity.h"
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
class SpringEntity;
using JointEntityPtr = util::SharedPtr<JointEntity>;

class JointEntity : public PointEntity
{
public:
    ~JointEntity() override;

    const JointEntity* AsJointEntity() const override { return this; }
    virtual const FixJointEntity* AsFixJointEntity() const { return nullptr; }
    virtual const SpringEntity* AsSpringEntity() const { return nullptr; }
    FixJointEntity* ToFixJointEntity() { return const_cast<FixJointEntity*>(AsFixJointEntity()); }
    SpringEntity* ToSpringEntity() { return const_cast<SpringEntity*>(AsSpringEntity()); }

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
    bool IsAlive() const override;
    void StartTransform() override;
    void Transform(const math::Mat2D& matrix) override;
    /// Fastens the ends to what lies there now.
    void EndTransform() override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    /// By what is drawn, which lies in the middle of the ends and not where it is picked.
    bool IsInView(const math::BoundingBox& view) const override;

protected:
    explicit JointEntity(float size);

    /// For Clone.
    void CopyEnds(const JointEntity& o);
    /// The middle of the two ends, in the world: where a joint is drawn.
    math::Vec2 GetMiddle() const;
    /// Around the first end.
    math::BoundingCircle AsCircle() const override;
    /// The local points count again.
    void StopTransforming() { m_isTransforming = false; }

private:
    void UpdateWorldPoints();

    float m_size;
    util::SharedPtr<physics::Geom> m_geoms[2];
    math::Vec2 m_localPoints[2]; // in the geometries' spaces
    math::Vec2 m_worldPoints[2]; // while transforming, what counts
    bool m_isTransforming = false;
};
}
