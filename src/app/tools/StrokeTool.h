// What the tools share that make something of a free stroke: collecting it while the mouse is dragged, and
// the recognition of lines and polygons.
#pragma once

#include "app/Line.h"
#include "app/tools/Tool.h"

namespace physics
{
class Polygon;
}

namespace app
{
class StrokeTool : public Tool
{
public:
    StrokeTool();
    ~StrokeTool() override;

    /// Empty between strokes.
    const Line& GetStroke() const { return m_stroke; }

    // Of the stroke.

    /// Whether it is a straight line: narrow, and without crossing itself.
    bool IsLine() const;
    /// A new one; null when the stroke is none, or a bad one.
    util::SharedPtr<physics::Polygon> IsPolygon() const;
    /// Erases what it cuts, undoably, and with one that is selected the whole selection. Planes are
    /// erased only alone.
    /// @return whether it erased anything
    bool TestEraseLine();
    /// Makes of it what it is.
    virtual void AnalyzeDrawing() = 0;

    void OnDragBegin(const input::DragEvent& event) override;
    /// With Shift the stroke goes on in a straight line to where Shift is let go, or the mouse button.
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    void OnKeyEvent(const input::KeyEvent& event) override;
    void Draw() const override;
    bool Disband() override;

protected:
    /// @param pos  in the world
    virtual bool MayBeginAt(const math::Vec2&) const { return true; }
    void ClearStroke() { m_stroke = Line(); }

private:
    void AddPoint(const math::Vec2& pos);

    Line m_stroke;
};
}
