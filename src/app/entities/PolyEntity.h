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
    /// Shares the textures that are there, for the same outline has the same maps.
    PolyEntity(const PolyEntity& o);

    // The distances to the outline as a texture.
    struct Map
    {
        const rendering::TextureProxy* texture;
        float scale; // world units that its range from 0 to 1 stands for
    };

    physics::Polygon& GetPolygon() const;
    /// Turns the polygon's distance map into a texture. Once, at the first draw.
    void LoadRenderingResources() const;
    /// Precise, and for what lies near to the outline only.
    Map GetDistMap() const;
    /// For a border that is wider than that map reaches, on a small polygon or a thin one. Made when it is
    /// first asked for.
    Map GetDeepMap() const;
    bool IsTiny() const;
    void DrawWithShader() const;
    void DrawWithAlphaTest() const;
    void DrawFixedFunction(const math::Vec4& color, const Map& map, float threshold) const;
    void DrawInside(const Map& map, float threshold) const;
    void DrawMap() const;
    void DrawOutlines() const;
    void DrawVertices() const;

    float m_distScale;           // of the texture, in world units
    mutable float m_deepest = 0; // how far from the outline the inside goes, in world units
    mutable rendering::TextureProxy m_distTexture;
    mutable rendering::TextureProxy m_deepTexture;
};
}
