// Scales and mirrors by handles around what is selected, or else around what the mouse is on.
#pragma once

#include "app/tools/ScaleRings.h"
#include "app/tools/Tool.h"
#include "math/Matrix.h"

namespace app
{
class ScaleTool final : public Tool
{
public:
    ScaleTool();
    ~ScaleTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    /// With Alt held the scene follows in every frame, else only what is drawn.
    void Update(float dt) override;
    void Draw() const override;
    /// Deliberate: what Alt has applied stays, and can be undone.
    bool Disband() override;
    std::string_view GetCursorName() const override;

    /// What shows handles; null for nothing. It may be the selection itself.
    const GroupPtr& GetGroup() const { return m_group; }
    /// Chooses that group.
    /// @param pos  in the world
    void UpdateGroup(const math::Vec2& pos);
    /// By axes, of what there was at the beginning of the drag. Never 0, always finite.
    math::Vec2 GetCurrentScaleFactor() const;
    /// From what the scene shows to what the mouse asks for.
    math::Mat3 GetDeltaTransform() const;

private:
    void ForgetDead();
    void ApplyDeltaTransform();
    void DrawUsedRing(const RingList& rings) const;
    void SetDrawTransforms(const math::Mat3& transform) const;

    GroupPtr m_group;   // during a drag a group of our own
    math::Vec2 m_mouse; // in the world, as last heard of
    // While in use:
    math::Vec2 m_center;
    Ring m_ring;          // as it was at the beginning
    math::Vec2 m_applied; // the factor that the scene shows
    SnapshotPtr m_before; // null as long as the scene has not changed
};
}
