#include "physics/Circle.h"

namespace physics
{
using math::Vec2;

Circular::Circular(GeomKind kind, float radius, BodyReference bodyReference)
    : Geom(kind, bodyReference)
    , m_radius(radius)
{
}

Vec2 Circular::NormalWorld(const Vec2& p) const
{
    return Normalized(p - GetCenter());
}

float Circular::Area() const
{
    return math::PIf * m_radius * m_radius;
}

float Circular::InertiaSansMass() const
{
    return m_radius * m_radius / 2;
}

Vec2 Circular::GetClosestEdge(Vec2 p) const
{
    if (p == GetCenter())
        return GetCenter() + Vec2(m_radius, 0);
    return GetCenter() + m_radius * Normalized(p - GetCenter());
}

math::BoundingBox Circular::GetAABBWorld() const
{
    const Vec2 r(m_radius, m_radius);
    return math::BoundingBox(GetCenter() - r, GetCenter() + r);
}

math::OBB2D Circular::GetOBBWorld() const
{
    return math::OBB2D::FromCenterRad(GetCenter(), m_radius);
}

math::BoundingCircle Circular::GetBCWorld() const
{
    return math::BoundingCircle(GetCenter(), m_radius);
}

void Circular::SetRadius(float radius)
{
    const float old = m_radius;
    m_radius = radius;
    OnGeomChange([&] { m_radius = old; });
}

Circle::Circle(Vec2 pos, float radius)
    : Circular(GeomKind::Circle, radius)
{
    SetWorldPose(math::Mat2D::Translation(pos));
}

int CircleIntersectCount(const Vec2& center, float radius, const Linesegment& segment)
{
    const float d0 = Distance(segment.p0, center) - radius;
    const float d1 = Distance(segment.p1, center) - radius;
    if (d0 < 0 && d1 < 0)
        return 0;
    if (d0 < 0 || d1 < 0)
        return 1;
    return segment.Distance(center) >= radius ? 0 : 2;
}

int CircleIntersectCount(const Vec2& center, float radius, const LinesegmentList& list)
{
    int count = 0;
    for (const Linesegment& segment : list)
        count += CircleIntersectCount(center, radius, segment);
    return count;
}

CirclePtr Circle::Clone() const
{
    return QUIB_NEW Circle(*this);
}
}
