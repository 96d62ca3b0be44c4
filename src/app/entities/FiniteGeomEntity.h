// A geometry entity that moves: it has a mass.
#pragma once

#include "app/entities/GeomEntity.h"
#include "math/Mat2D.h"

#include <vector>

namespace input
{
class DirInput;
using DirInputPtr = util::SharedPtr<DirInput>;
}

namespace app
{
class FiniteGeomEntity;
using FiniteGeomEntityPtr = util::SharedPtr<FiniteGeomEntity>;

class FiniteGeomEntity : public GeomEntity
{
public:
    ~FiniteGeomEntity() override;

    const FiniteGeomEntity* AsFiniteGeomEntity() const override { return this; }

    /// The keys or the stick that push it; null for none.
    const input::DirInputPtr& GetForceController() const { return m_forceController; }
    void SetForceController(const input::DirInputPtr& controller);

    /// World positions to put water at instead: as many particles as fit, at most App.maxSPHSpawn, and
    /// spread evenly. At least one when one fits, unless no place for it is found within reason, of
    /// which the log tells.
    std::vector<math::Vec2> GetEquidistantPoints() const;

    /// A bound controller pushes.
    void Update(float dt) override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    /// Kinetic and potential. 0 without a body.
    float CalcEnergy() const override;
    void CopyFrom(const Entity* other) override;

protected:
    /// The geometry's material and the gravity in force become the defaults of its attributes.
    /// @param geom  not null
    explicit FiniteGeomEntity(const util::SharedPtr<physics::Geom>& geom);

    /// Mass and inertia that a body can move with.
    void Check() const override;

    /// What is left of the dot product of two unit vectors that stand at a right angle.
    static constexpr float SkewTolerance = 1e-4f;
    /// The pose of what a scale along the axes of the world leaves a rectangle or a circle. The place
    /// stays.
    static math::Mat2D ScaledPose(const math::Mat2D& pose, const math::Vec2& scale);

private:
    /// What a file says of it.
    util::String GetControllerText() const;

    script::AttribWrapper<float> m_density; // mass per area
    script::AttribWrapper<float> m_airFrictionMult;
    script::AttribWrapper<float> m_controllerAcc; // the controller's force per mass
    script::AttribWrapper<bool> m_controllerReverseXY;
    script::AttribWrapper<bool> m_controllerInvertX;
    script::AttribWrapper<bool> m_controllerInvertY;
    input::DirInputPtr m_forceController;
    util::String m_unboundController; // of the file, when it can't be bound here; else ""
};
}
