// A rectangle in the scene.
#pragma once

#include "app/entities/FiniteGeomEntity.h"

namespace physics
{
class Box;
}

namespace app
{
class BoxEntity final : public FiniteGeomEntity
{
public:
    /// @param geom  not null; this entity's alone
    explicit BoxEntity(const util::SharedPtr<physics::Box>& geom);

    void Draw() const override;
    void DrawBlack() const override;
    GeomEntityPtr Clone() const override;
    GeomEntityPtr ScaledClone(const math::Vec2& scale) const override;
    /// The four sides, in the order of the corners of the world box.
    physics::LinesegmentList GetSides() const;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    bool IsContainedBy(const physics::Polygon& lasso) const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;

private:
    physics::Box& GetBox() const;
    void DrawWithShader() const;
    void DrawFixedFunction() const;
};
}
