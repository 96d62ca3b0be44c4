// Pulls at a body while the world runs, with a soft hinge between the body and the mouse. With the right
// button held too it turns the body about the grip instead.
#pragma once

#include "app/tools/Tool.h"

namespace physics
{
class Body;
class Hinge;
class WorldGeom;
}

namespace app
{
class DragTool final : public Tool
{
public:
    DragTool();
    ~DragTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    void Update(float dt) override;
    void Draw() const override;
    bool Disband() override;
    std::string_view GetCursorName() const override;

    /// Whether the right button is down.
    static bool IsRotating();
    // While it is in use.

    /// From the grip to the mouse.
    math::Vec2 GetWrench() const;
    /// Radians per second. Deliberate: the direction of the wrench, as an angle; 0 for none.
    float GetMotorSpeed() const;
    /// Radians per second squared: see physics::Hinge.
    float GetMotorTorque() const;

private:
    void PlaceMouseBody(const math::Vec2& pos);

    // Infinitely heavy, and in the simulation during a drag only. Its geometry has no shape.
    util::SharedPtr<physics::Body> m_mouseBody;
    util::SharedPtr<physics::WorldGeom> m_mouseGeom;
    util::SharedPtr<physics::Hinge> m_hinge; // null when not in use
    math::Vec2 m_pos;                        // of the mouse body
    SnapshotPtr m_before;
    bool m_isDragged = false;
};
}
