// An entity that sits at a point, and is picked as a small circle around it: pens, and all joints but
// springs, which are picked along their whole length.
#pragma once

#include "app/entities/Entity.h"
#include "math/BoundingSphere.h"

namespace app
{
class PointEntity : public Entity
{
public:
    ~PointEntity() override;

    /// Strictly inside.
    bool IsOnEntity(const math::Vec2& pos) const override;
    /// By a stroke that crosses the circle more than once.
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    /// The whole circle.
    bool IsContainedBy(const physics::Polygon& lasso) const override;
    math::BoundingBox GetAABB() const override;

protected:
    /// In the world. A plain circle; a physics::Circle each time would use up the ids of geometries.
    virtual math::BoundingCircle AsCircle() const = 0;
};
}
