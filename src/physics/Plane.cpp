#include "physics/Plane.h"

#include "math/Matrix.h"

#include <limits>

namespace physics
{
using math::Vec2;

Plane::Plane(const math::Plane2D& plane)
    : Geom(GeomKind::Plane)
    , m_plane(plane)
{
    const Vec2& n = plane.normal;
    const float angle = n == Vec2() ? 0.0f : std::atan2(n.y, n.x);
    SetWorldPose(math::Mat2D::Translation(-plane.d * n) * math::Mat2D::Rotation(angle));
}

Vec2 Plane::NormalWorld(const Vec2&) const
{
    return m_plane.normal;
}

float Plane::Area() const
{
    return std::numeric_limits<float>::infinity();
}

float Plane::InertiaSansMass() const
{
    return std::numeric_limits<float>::infinity();
}

Vec2 Plane::GetClosestEdge(Vec2 p) const
{
    return p - DistanceWorld(p) * m_plane.normal;
}

math::BoundingBox Plane::GetAABBWorld() const
{
    return math::BoundingBox::Everything();
}

math::OBB2D Plane::GetOBBWorld() const
{
    return math::OBB2D::Everything();
}

math::BoundingCircle Plane::GetBCWorld() const
{
    return math::BoundingCircle::Everything();
}

void Plane::SetWorldPose(const math::Mat2D& pose)
{
    Geom::SetWorldPose(pose);
    // Lines transform by the inverse transpose.
    const math::Vec3 plane = Inverted(math::Mat3(pose)).Transpose() * math::Vec3(1.0f, 0.0f, 0.0f);
    m_plane = math::Plane2D(Vec2(plane.x, plane.y), plane.z);
}

PlanePtr Plane::Clone() const
{
    return QUIB_NEW Plane(*this);
}
}
