// Turns the selection about the point by which it hangs, else about its middle.
#pragma once

#include "app/tools/TransformTool.h"

namespace app
{
class RotateTool final : public TransformTool
{
public:
    RotateTool();
    ~RotateTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    /// Nothing moves before the mouse is far enough from the centre to give an angle.
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    bool Disband() override;
    /// The centre, and how far the mouse has turned.
    void Draw() const override;

private:
    const char* GetUndoName() const override { return "UndoRotate"; }
    float CalcStep() const;

    // Radians. Of a single geometry they are angles in the world, so that what snaps to a raster snaps
    // to that of the world; else they count from the beginning of the drag.
    math::Vec2 m_center;
    float m_startAngle = 0;
    float m_total = 0;   // how far the mouse has come
    float m_applied = 0; // how far the selection has come
};
}
