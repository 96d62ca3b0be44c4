// A component whose picture lags behind its position like jelly. Only the picture: the mouse finds it
// where it is.
#pragma once

#include "gui/Component.h"

namespace gui
{
class WobbleComponent : public Component
{
public:
    // Across which of its sides the picture is bent. The other end of it follows the position at once.
    enum WobbleAxis
    {
        WobbleDown, // the top follows, the bottom lags behind
        WobbleRight // the left side follows, the right one lags behind
    };

    /// It wobbles down.
    WobbleComponent();
    ~WobbleComponent() override;

    /// Off, the picture is where the component is. Whoever places it turns this off meanwhile.
    void SetWobble(bool on);
    void SetWobbleAxis(WobbleAxis axis) { m_axis = axis; }

    using Component::SetOuterPos;
    void SetOuterPos(math::Vec2 pos) override;
    void Update(float dt) override;
    void DrawCompAndChildren() const override;
    /// By the bent picture.
    math::Mat3 CalcWorldToLocalTransform() const override;

    /// What the picture is drawn by, from the outer top left.
    const math::Mat3& GetBend() const { return m_bend; }

private:
    void Settle();
    void CalcBend();

    bool m_wobble = true;
    WobbleAxis m_axis = WobbleDown;
    math::Vec2 m_drawnPos; // where the lagging end is
    math::Vec2 m_drawnVel; // GUI units per second
    math::Mat3 m_bend;     // the identity when at rest
};
}
