#include "physics/WorldGeom.h"

#include <limits>

namespace physics
{
WorldGeom::WorldGeom()
    : Geom(GeomKind::Other)
{
}

float WorldGeom::DistanceWorld(const math::Vec2&) const
{
    return -1;
}

math::Vec2 WorldGeom::NormalWorld(const math::Vec2&) const
{
    return math::Vec2();
}

float WorldGeom::Area() const
{
    return std::numeric_limits<float>::infinity();
}

float WorldGeom::InertiaSansMass() const
{
    return std::numeric_limits<float>::infinity();
}

math::Vec2 WorldGeom::GetClosestEdge(math::Vec2 p) const
{
    return p;
}

math::BoundingBox WorldGeom::GetAABBWorld() const
{
    return math::BoundingBox::Empty();
}

math::OBB2D WorldGeom::GetOBBWorld() const
{
    return math::OBB2D::Empty();
}

math::BoundingCircle WorldGeom::GetBCWorld() const
{
    return math::BoundingCircle::Empty();
}
}
