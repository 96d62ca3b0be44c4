// The geometry of the world body: no shape, infinite mass. The simulation makes it before any other
// geometry, so its id is 0.
#pragma once

#include "physics/Geom.h"

namespace physics
{
class WorldGeom final : public Geom
{
public:
    WorldGeom();

    float DistanceWorld(const math::Vec2& p) const override;
    math::Vec2 NormalWorld(const math::Vec2& p) const override;
    float Area() const override;
    float InertiaSansMass() const override;
    math::Vec2 GetClosestEdge(math::Vec2 p) const override;
    math::BoundingBox GetAABBWorld() const override;
    math::OBB2D GetOBBWorld() const override;
    math::BoundingCircle GetBCWorld() const override;
};

using WorldGeomPtr = util::SharedPtr<WorldGeom>;
}
