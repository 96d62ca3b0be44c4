// Makes bodies of free strokes. Beside that it erases and selects as the SketchTool does, but knows no
// joints.
#pragma once

#include "app/tools/StrokeTool.h"

namespace app
{
class BrushTool final : public StrokeTool
{
public:
    BrushTool();
    ~BrushTool() override;

    void AnalyzeDrawing() override;

private:
    /// Over an entity only when the user has chosen so.
    bool MayBeginAt(const math::Vec2& pos) const override;
};
}
