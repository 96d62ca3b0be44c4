// The rectangular geometry.
#pragma once

#include "physics/Geom.h"

namespace physics
{
class Box final : public Geom
{
public:
    Box(math::Vec2 size, math::Vec2 pos);

    float DistanceWorld(const math::Vec2& p) const override { return m_worldOBB.Distance(p); }
    /// The outward normal of the face that is nearest to p, inside as well as outside.
    math::Vec2 NormalWorld(const math::Vec2& p) const override;
    float Area() const override;
    float InertiaSansMass() const override;
    math::Vec2 GetClosestEdge(math::Vec2 p) const override;
    math::BoundingBox GetAABBWorld() const override;
    math::OBB2D GetOBBWorld() const override { return m_worldOBB; }
    math::BoundingCircle GetBCWorld() const override;
    void SetWorldPose(const math::Mat2D& pose) override;

    /// The box in geometry space and in world space.
    const math::OBB2D& GetLocalBox() const { return m_localOBB; }
    const math::OBB2D& GetWorldBox() const { return m_worldOBB; }
    /// Width and height.
    math::Vec2 GetSize() const { return m_localOBB.GetHalfSize() * 2.0f; }
    /// The owning body's mass follows.
    void SetSize(math::Vec2 size);
    /// Replaces the box in geometry space; the pose stays. The owning body's mass follows.
    void SetOBB(const math::OBB2D& obb);

    /// A new geometry without a body. Deliberate: without the air friction multiplier and the
    /// no-collide set of this one.
    util::SharedPtr<Box> Clone() const;

private:
    Box(const Box&) = default;

    math::OBB2D m_localOBB; // geometry space
    math::OBB2D m_worldOBB;
};

using BoxPtr = util::SharedPtr<Box>;
}
