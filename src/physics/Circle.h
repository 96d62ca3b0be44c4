// Round geometries: what all of them share, and the circle.
#pragma once

#include "physics/Geom.h"
#include "physics/Linesegment.h"

namespace physics
{
class Circular : public Geom
{
public:
    float DistanceWorld(const math::Vec2& p) const override
    {
        return math::Distance(p, GetCenter()) - m_radius;
    }
    math::Vec2 NormalWorld(const math::Vec2& p) const override;
    float Area() const override;
    float InertiaSansMass() const override;
    math::Vec2 GetClosestEdge(math::Vec2 p) const override;
    math::BoundingBox GetAABBWorld() const override;
    math::OBB2D GetOBBWorld() const override;
    math::BoundingCircle GetBCWorld() const override;

    float GetRadius() const { return m_radius; }
    /// The owning body's mass follows.
    void SetRadius(float radius);

protected:
    Circular(GeomKind kind, float radius, BodyReference bodyReference = BodyReference::Counted);
    Circular(const Circular&) = default;

private:
    float m_radius;
};

/// How often the segments cross the outline of a circle in the world: each 0, 1 or 2 times.
int CircleIntersectCount(const math::Vec2& center, float radius, const Linesegment& segment);
int CircleIntersectCount(const math::Vec2& center, float radius, const LinesegmentList& list);

class Circle final : public Circular
{
public:
    Circle(math::Vec2 pos, float radius);

    /// How often the segment crosses the outline: 0, 1 or 2.
    int IntersectCountWorld(const Linesegment& segment) const
    {
        return CircleIntersectCount(GetCenter(), GetRadius(), segment);
    }
    int IntersectCountWorld(const LinesegmentList& list) const
    {
        return CircleIntersectCount(GetCenter(), GetRadius(), list);
    }

    /// A new geometry without a body. Deliberate: without the air friction multiplier and the
    /// no-collide set of this one.
    util::SharedPtr<Circle> Clone() const;

private:
    Circle(const Circle&) = default;
};

using CirclePtr = util::SharedPtr<Circle>;
}
