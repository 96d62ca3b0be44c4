// A weld: while it is in the simulation, its two geometries belong to one body. There is no joint in the
// physics; bodies are merged and split instead.
#pragma once

#include "app/entities/JointEntity.h"

namespace app
{
class FixJointEntity final : public JointEntity
{
public:
    /// @param size  world units
    explicit FixJointEntity(float size);
    ~FixJointEntity() override;

    const FixJointEntity* AsFixJointEntity() const override { return this; }

    JointEntityPtr Clone() const override;
    /// Welds the present geometries, if it had welded others.
    void CreateJoint() override;

    void Draw() const override;
    /// Merges the two bodies into the one with the smaller id. See app::WeldBatch for many at once.
    void AddToSimulation() override;
    /// Splits the body, unless other welds keep its two parts together.
    void RemoveFromSimulation() override;
    /// False also once the geometries are on two bodies.
    bool IsAlive() const override;

    void StartTransform() override;
    /// Welds what it has welded, wherever it was moved to: alone it snaps back. With one of its
    /// geometries it comes along, and is fastened to the other at the new place.
    void EndTransform() override;

    /// What it has welded; null for both when it is not in the simulation.
    /// @param i  0 or 1
    const util::SharedPtr<physics::Geom>& GetWelded(int i) const { return m_welded[i]; }
    /// For who takes the simulation apart by other ways.
    void ForgetWeld();

private:
    bool HasComeAlong(int i) const;

    util::SharedPtr<physics::Geom> m_welded[2];
    math::Vec2 m_startPoints[2]; // in the world, when the transformation began
};
}
