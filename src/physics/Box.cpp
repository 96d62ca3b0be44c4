#include "physics/Box.h"

#include <cmath>

namespace physics
{
using math::Vec2;

Box::Box(Vec2 size, Vec2 pos)
    : Geom(GeomKind::Box)
    , m_localOBB(Vec2(), Vec2(1, 0), Vec2(0, 1), size.x / 2, size.y / 2)
{
    SetWorldPose(math::Mat2D::Translation(pos));
}

Vec2 Box::NormalWorld(const Vec2& p) const
{
    const Vec2 d = p - m_worldOBB.GetCenter();
    const float a = Dot(d, m_worldOBB.GetAxis(0)), b = Dot(d, m_worldOBB.GetAxis(1));
    const bool x = std::fabs(std::fabs(a) - m_worldOBB.GetHalf(0)) <
                   std::fabs(std::fabs(b) - m_worldOBB.GetHalf(1));
    const Vec2& axis = m_worldOBB.GetAxis(x ? 0 : 1);
    return (x ? a : b) >= 0 ? axis : -axis;
}

float Box::Area() const
{
    return m_localOBB.Area();
}

float Box::InertiaSansMass() const
{
    const Vec2 size = GetSize();
    return (size.x * size.x + size.y * size.y) / 12;
}

Vec2 Box::GetClosestEdge(Vec2 p) const
{
    return p - DistanceWorld(p) * NormalWorld(p);
}

math::BoundingBox Box::GetAABBWorld() const
{
    Vec2 corners[4];
    m_worldOBB.CalcCorners(corners);
    math::BoundingBox box;
    for (const Vec2& corner : corners)
        box.Include(corner);
    return box;
}

math::BoundingCircle Box::GetBCWorld() const
{
    return math::BoundingCircle(m_worldOBB.GetCenter(), m_worldOBB.GetHalfSize().Length());
}

void Box::SetWorldPose(const math::Mat2D& pose)
{
    Geom::SetWorldPose(pose);
    m_worldOBB = math::OBB2D::Transform(pose, m_localOBB);
}

void Box::SetSize(Vec2 size)
{
    const Vec2 old = m_localOBB.GetHalfSize();
    m_localOBB.SetHalfSize(size / 2);
    m_worldOBB.SetHalfSize(size / 2);
    OnGeomChange(
        [&]
        {
            m_localOBB.SetHalfSize(old);
            m_worldOBB.SetHalfSize(old);
        });
}

void Box::SetOBB(const math::OBB2D& obb)
{
    const math::OBB2D oldLocal = m_localOBB, oldWorld = m_worldOBB;
    m_localOBB = obb;
    m_worldOBB = math::OBB2D::Transform(GetPose(), m_localOBB);
    OnGeomChange(
        [&]
        {
            m_localOBB = oldLocal;
            m_worldOBB = oldWorld;
        });
}

BoxPtr Box::Clone() const
{
    return QUIB_NEW Box(*this);
}
}
