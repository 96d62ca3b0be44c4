// Draws boxes from corner to corner, squares with Shift. A box around entities selects them.
#pragma once

#include "app/tools/ShapeTool.h"

namespace app
{
class BoxTool final : public ShapeTool
{
public:
    BoxTool();
    ~BoxTool() override;

    void Draw() const override;

private:
    void Finish(const math::Vec2& end) override;
    /// Of the box, in the world.
    /// @param pos  of the mouse
    math::Vec2 GetEndPos(const math::Vec2& pos) const;
};
}
