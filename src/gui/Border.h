// What surrounds the inner area of a component, and what it is filled with.
#pragma once

#include "math/Vector.h"
#include "util/SharedPtr.h"

namespace gui
{
// Margins are in GUI units. Components share one border, so that it does not change.
class Border : public util::Pointee
{
public:
    virtual float MarginLeft() const = 0;
    virtual float MarginRight() const = 0;
    virtual float MarginTop() const = 0;
    virtual float MarginBottom() const = 0;
    /// With (0, 0) at the top left of the inner area.
    virtual void Draw(math::Vec2 innerSize) const = 0;

    math::Vec2 GetTopLeftSize() const { return math::Vec2(MarginLeft(), MarginTop()); }
    math::Vec2 GetBottomRightSize() const { return math::Vec2(MarginRight(), MarginBottom()); }
    math::Vec2 GetSize() const { return GetTopLeftSize() + GetBottomRightSize(); }
};
using BorderPtr = util::SharedPtr<Border>;

// A rectangle of one colour in a frame of another.
class SimpleBorder final : public Border
{
public:
    /// @param width                  of the frame on all four sides; 0 for none
    /// @param frameColor, fillColor  are multiplied into the current colour
    SimpleBorder(float width, const math::Vec4& frameColor, const math::Vec4& fillColor);

    float MarginLeft() const override { return m_width; }
    float MarginRight() const override { return m_width; }
    float MarginTop() const override { return m_width; }
    float MarginBottom() const override { return m_width; }
    void Draw(math::Vec2 innerSize) const override;

    float GetWidth() const { return m_width; }
    const math::Vec4& GetFrameColor() const { return m_frameColor; }
    const math::Vec4& GetFillColor() const { return m_fillColor; }

private:
    float m_width; // GUI units
    math::Vec4 m_frameColor;
    math::Vec4 m_fillColor;
};
}
