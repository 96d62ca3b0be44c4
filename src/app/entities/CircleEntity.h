// A circle in the scene.
#pragma once

#include "app/entities/FiniteGeomEntity.h"

namespace physics
{
class Circle;
}

namespace app
{
/// The ratio 2 x / y as a triangle wave: from 0 up to 1 at the middle, and down to 0 again.
/// @param x  from 0 to y
/// @throws BadCoderException  when it is not
float CircConverter(float x, float y);

class CircleEntity final : public FiniteGeomEntity
{
public:
    /// @param geom  not null; this entity's alone
    explicit CircleEntity(const util::SharedPtr<physics::Circle>& geom);

    void Draw() const override;
    void DrawBlack() const override;
    GeomEntityPtr Clone() const override;
    GeomEntityPtr ScaledClone(const math::Vec2& scale) const override;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    bool IsContainedBy(const physics::Polygon& lasso) const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;

private:
    physics::Circle& GetCircle() const;
    void DrawWithShader() const;
    void DrawPolygon() const;
    void DrawTexture() const;
};
}
