// Draws springs, from one point to another.
#pragma once

#include "app/tools/Tool.h"

namespace physics
{
class Geom;
}

namespace app
{
class SpringEntity;

class SpringTool final : public Tool
{
public:
    SpringTool();
    ~SpringTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    void Update(float dt) override;
    void Draw() const override;
    bool Disband() override;

private:
    void AttachTo(const util::SharedPtr<physics::Geom>& geom, const math::Vec2& pos);

    util::SharedPtr<SpringEntity> m_preview; // never in the scene; null between gestures
    util::SharedPtr<physics::Geom> m_geom;   // of the first end
    math::Vec2 m_localPoint;                 // of the first end, in its geometry's space
};
}
