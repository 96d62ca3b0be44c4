// Makes of a free stroke what its shape tells: a polygon, a hinge, a spring, a weld, an erasure or a
// selection. The tool that the program begins with.
#pragma once

#include "app/tools/StrokeTool.h"

namespace app
{
class JointEntity;

class SketchTool final : public StrokeTool
{
public:
    SketchTool();
    ~SketchTool() override;

    /// The last stroke that was straight and hit nothing. It waits two seconds for one that crosses it.
    const Line& GetPreviousLine() const { return m_previousLine; }

    // Of the stroke. What they make of it can be undone.

    void AnalyzeDrawing() override;
    /// Makes a spring of a zigzag, from end to end. Deliberate: despite the name, and the const.
    /// @return whether it was one
    bool IsSpring() const;
    /// Welds what lies under the crossing of the stroke with the previous line.
    /// @return whether there was just one crossing
    bool TestFixate();
    /// Makes a hinge of a round shape that is small beside the body under it. Deliberate: despite the name.
    /// @param polygon  the stroke as one
    /// @return         whether it was one
    bool IsHinge(const util::SharedPtr<physics::Polygon>& polygon);

    void Update(float dt) override;
    void Draw() const override;
    bool Disband() override;

private:
    void AddPolygon(const util::SharedPtr<physics::Polygon>& polygon,
                    const std::vector<util::SharedPtr<JointEntity>>& adopted);

    Line m_previousLine;
    double m_previousLineTime; // seconds
};
}
