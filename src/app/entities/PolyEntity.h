// A free-form polygon in the scene.
#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "rendering/TextureProxy.h"

namespace physics
{
class Polygon;
}

namespace app
{
class PolyEntity final : public FiniteGeomEntity
{
public:
    /// @param geom  not null; this entity's alone
    explicit PolyEntity(const util::SharedPtr<physics::Polygon>& geom);
    ~PolyEntity() override;

    void Draw() const override;
    void DrawBlack() const override;
    GeomEntityPtr Clone() const override;
    GeomEntityPtr ScaledClone(const math::Vec2& scale) const override;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    bool IsContainedBy(const physics::Polygon& lasso) const override;
    void SerializeTo(EntitySerializer& serializer) const override;

private:
    /// Shares the texture, for the same outline has the same map.
    PolyEntity(const PolyEntity& o);

    physics::Polygon& GetPolygon() const;
    /// Turns the polygon's distance map into a texture. Once, at the first draw.
    void LoadRenderingResources() const;
    bool IsTiny() const;
    void DrawWithShader() const;
    void DrawFixedFunction(const math::Vec4& color, float threshold) const;
    void DrawInside(float threshold) const;
    void DrawMap() const;
    void DrawOutlines() const;
    void DrawVertices() const;

    float m_distScale; // world units that the texture's range from 0 to 1 stands for
    mutable rendering::TextureProxy m_distTexture;
};
}
