// An entity that is nothing: not in the world, not seen, found nowhere. Tests add what they watch.
#pragma once

#include "app/entities/Entity.h"

namespace test
{
class PlainEntity : public app::Entity
{
public:
    void Draw() const override {}
    bool IsOnEntity(const math::Vec2&) const override { return false; }
    bool ErasedBy(const physics::LinesegmentList&) const override { return false; }
    bool IsContainedBy(const physics::Polygon&) const override { return false; }
    void AddToSimulation() override {}
    void RemoveFromSimulation() override {}
    void Transform(const math::Mat2D&) override {}
    math::BoundingBox GetAABB() const override { return math::BoundingBox::Empty(); }
};
}
