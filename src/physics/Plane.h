// The half plane n * p + d < 0. Of infinite mass, so whatever body holds one is immovable.
#pragma once

#include "math/Plane.h"
#include "physics/Geom.h"

namespace physics
{
class Plane final : public Geom
{
public:
    explicit Plane(const math::Plane2D& plane);

    float DistanceWorld(const math::Vec2& p) const override { return m_plane.Distance(p); }
    math::Vec2 NormalWorld(const math::Vec2& p) const override;
    float Area() const override;
    float InertiaSansMass() const override;
    math::Vec2 GetClosestEdge(math::Vec2 p) const override;
    math::BoundingBox GetAABBWorld() const override;
    math::OBB2D GetOBBWorld() const override;
    math::BoundingCircle GetBCWorld() const override;
    /// The plane becomes the image of the half plane x < 0.
    void SetWorldPose(const math::Mat2D& pose) override;

    /// In world space.
    const math::Plane2D& GetPlane() const { return m_plane; }

    /// A new geometry without a body. Deliberate: without the air friction multiplier and the
    /// no-collide set of this one.
    util::SharedPtr<Plane> Clone() const;

private:
    Plane(const Plane&) = default;

    math::Plane2D m_plane; // world space
};

using PlanePtr = util::SharedPtr<Plane>;
}
