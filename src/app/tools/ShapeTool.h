// What the tools for boxes, circles and planes share: the left button goes down at one point, and the
// shape reaches from there to the mouse until the release makes it.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class ShapeTool : public Tool
{
public:
    ShapeTool();
    ~ShapeTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    /// The view may move under a mouse that is still, and Shift may be pressed.
    void Update(float dt) override;
    bool Disband() override;

protected:
    /// Where the button went down, in the world.
    const math::Vec2& GetStart() const { return m_start; }

    /// The button has just gone down.
    virtual void Begin() {}
    /// The mouse is there. Called again for the same place too.
    virtual void Stretch(const math::Vec2&) {}
    /// It was let go there: makes the shape.
    virtual void Finish(const math::Vec2& end) = 0;
    /// Drops what shows.
    virtual void Forget() {}

private:
    math::Vec2 m_start;
};
}
