// A damped spring between two points.
#pragma once

#include "app/entities/JointEntity.h"
#include "physics/Linesegment.h"
#include "script/Attributes.h"

#include <optional>

namespace physics
{
class SpringJoint;
}

namespace app
{
class SpringEntity final : public JointEntity
{
public:
    /// @param size  its width in world units
    explicit SpringEntity(float size);
    ~SpringEntity() override;

    const SpringEntity* AsSpringEntity() const override { return this; }

    JointEntityPtr Clone() const override;
    void CreateJoint() override;

    /// World units; of a new spring the distance of its ends. One that is not attached yet keeps what it
    /// is given for when it is, and has 0 before.
    float GetTargetLength() const;
    void SetTargetLength(float length);
    /// On the stiffness, in parts of Sim.springForce.
    float GetStrengthFactor() const { return m_strengthFactor; }
    void SetStrengthFactor(float factor) { m_strengthFactor = factor; }
    /// On the damping; 1 is critical.
    float GetDampingFactor() const { return m_dampingFactor; }
    void SetDampingFactor(float factor) { m_dampingFactor = factor; }
    /// Between the ends, in the world.
    physics::Linesegment GetLine() const;

    void Draw() const override;
    bool IsOnEntity(const math::Vec2& pos) const override;
    bool ErasedBy(const physics::LinesegmentList& stroke) const override;
    bool IsContainedBy(const physics::Polygon& polygon) const override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    bool IsAlive() const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;
    math::BoundingBox GetAABB() const override;
    float CalcEnergy() const override;
    bool IsInView(const math::BoundingBox& view) const override;

protected:
    void Check() const override;

private:
    void PushFactors();

    util::SharedPtr<physics::SpringJoint> m_joint;
    std::optional<float> m_targetLength; // while there is no joint to keep it
    script::AttribWrapper<float> m_strengthFactor;
    script::AttribWrapper<float> m_dampingFactor;
};
}
