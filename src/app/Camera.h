// The view of the world: pan and zoom, the conversions between GUI units and world units, and the
// group that the view follows. Owned by the scene; the script object "Scene.Camera".
//
// GUI units have y pointing down, the world has it pointing up.
#pragma once

#include "app/Group.h"
#include "math/Matrix.h"
#include "script/Attributes.h"
#include "script/Reflected.h"

namespace app
{
class Camera : public script::Reflected
{
public:
    static constexpr float GetDefaultZoom() { return 150; }
    static constexpr float GetMinZoom() { return 1.5f; }
    static constexpr float GetMaxZoom() { return 3000; }

    Camera();

    /// The world point in the middle of the view.
    math::Vec2 GetPan() const { return m_pan; }
    /// GUI units per world unit.
    float GetZoom() const { return m_zoom; }
    // What native code sets replaces a formula that a script has bound to the same attribute, and
    // leaves that of the other one alone. These four ignore values that are not finite.
    void SetPan(const math::Vec2& pan);
    /// Held to the range from GetMinZoom to GetMaxZoom, as everywhere.
    void SetZoom(float zoom);
    void SetWorldToGUI(const math::Mat3& m);
    void SetGUIToWorld(const math::Mat3& m);
    /// The default view, following nothing.
    void Reset();
    /// The picture moves by so many GUI units.
    void PanView(const math::Vec2& delta);
    /// Around the middle of the view.
    /// @param delta  notches of the wheel, each a factor of 2 to the power of App.GUI.zoomFactor
    void ZoomView(float delta);
    /// The same around a place of the view, which keeps showing the same point of the world.
    void ZoomView(float delta, const math::Vec2& fixedPos);

    math::Mat3 WorldToGUI() const;
    /// Where the view is heading. Nothing moves it gradually, so it is there already.
    math::Mat3 WorldToGUITarget() const { return WorldToGUI(); }
    math::Mat3 GUIToWorld() const;
    math::Vec2 GUIToWorld(const math::Vec2& pos) const;
    math::Vec2 WorldToGUI(const math::Vec2& pos) const;
    /// A direction or distance, not a place.
    math::Vec2 GUIToWorldNormal(const math::Vec2& v) const;

    const GroupPtr& GetTrackedGroup() const { return m_trackedGroup; }
    /// Null stops following. A followed group that bears TrackedName leaves the scene with it.
    void SetTrackedGroup(const GroupPtr& group);

    /// Once a frame: follows the tracked group.
    void Update(float dt);

private:
    void SetPanAttrib(math::Vec2 pan);
    void SetZoomAttrib(float zoom);
    void SetView(const math::Vec2& pan, float zoom);

    math::Vec2 m_pan;
    float m_zoom = GetDefaultZoom();
    script::AttribWrapper<math::Vec2> m_panAttrib;
    script::AttribWrapper<float> m_zoomAttrib;
    GroupPtr m_trackedGroup;
    math::Vec2 m_lastTrackedCenter;
};
}
