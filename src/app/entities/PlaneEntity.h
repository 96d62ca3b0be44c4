// A half plane in the scene: ground, walls.
#pragma once

#include "app/entities/GeomEntity.h"

#include <array>

namespace physics
{
class Plane;
}

namespace app
{
class PlaneEntity final : public GeomEntity
{
public:
    /// @param geom  not null; this entity's alone
    explicit PlaneEntity(const util::SharedPtr<physics::Plane>& geom);

    void Draw() const override;
    void DrawBlack() const override;
    GeomEntityPtr Clone() const override;
    GeomEntityPtr ScaledClone(const math::Vec2& scale) const override;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    /// Never.
    bool IsContainedBy(const physics::Polygon& lasso) const override;
    /// Planes are part of the world body.
    void AddToSimulation() override;

private:
    physics::Plane& GetPlane() const;
    /// From the GUI to where the plane's equation holds: the world, unless it is shown elsewhere.
    math::Mat3 GUIToPlane() const;
    /// The corners of the screen there, around it, and their distances from the plane.
    void CalcVecsAndDist(const math::Mat3& guiToPlane, std::array<math::Vec2, 4>& vecs,
                         std::array<float, 4>& dists) const;
    /// For the shader.
    math::Vec3 CalcGUIPlane() const;
};
}
