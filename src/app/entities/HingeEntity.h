// Two points that stay together, with a motor if wanted, and keys that drive it.
#pragma once

#include "app/entities/JointEntity.h"
#include "input/ButtonInput.h"
#include "script/Attributes.h"

namespace physics
{
class Hinge;
}

namespace app
{
/// Radians per second: 15 rounds per minute.
extern const float DefaultMotorSpeed;

class HingeEntity final : public JointEntity
{
public:
    /// @param size  world units
    explicit HingeEntity(float size);
    /// @param point  in the world
    HingeEntity(const util::SharedPtr<physics::Geom>& geom0,
                const util::SharedPtr<physics::Geom>& geom1, const math::Vec2& point, float size);
    ~HingeEntity() override;

    JointEntityPtr Clone() const override;
    void CreateJoint() override;

    /// Null before it is attached.
    const util::SharedPtr<physics::Hinge>& GetHinge() const { return m_hinge; }
    input::ButtonInput& GetButtonForward() { return m_buttonForward; }
    input::ButtonInput& GetButtonBack() { return m_buttonBack; }
    input::ButtonInput& GetButtonBreak() { return m_buttonBreak; }

    /// Hands the settings and what the buttons say over to the physics.
    void Update(float dt) override;
    void Draw() const override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    /// False also once a limit has broken it.
    bool IsAlive() const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;

protected:
    void Check() const override;

private:
    util::SharedPtr<physics::Hinge> m_hinge;
    script::AttribWrapper<bool> m_motor;
    script::AttribWrapper<bool> m_ccw;
    script::AttribWrapper<float> m_motorSpeed;    // radians per second
    script::AttribWrapper<float> m_motorTorque;   // radians per second squared
    script::AttribWrapper<float> m_impulseLimit;  // breaks above
    script::AttribWrapper<float> m_distanceLimit; // world units; breaks above
    input::ButtonInput m_buttonForward;
    input::ButtonInput m_buttonBack;
    input::ButtonInput m_buttonBreak;
};
}
