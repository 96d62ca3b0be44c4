// What the tools for circles and planes share: the entity itself shows while the mouse is dragged, in the
// colour that it will have, and enters the scene with the release.
#pragma once

#include "app/tools/ShapeTool.h"
#include "math/Vector.h"

namespace app
{
class PreviewTool : public ShapeTool
{
public:
    ~PreviewTool() override;

    void Draw() const override;
    /// In neither scene nor simulation. Null as long as there is nothing to see.
    const EntityPtr& GetPreview() const { return m_preview; }

protected:
    /// @param undoName  see Undoer::AddUndo
    explicit PreviewTool(const char* undoName);

    /// Sets the preview, or leaves it as it is. What it throws is logged.
    virtual void UpdatePreview(const math::Vec2& end) = 0;
    /// It takes on the colour of this drag.
    void SetPreview(const EntityPtr& preview);

private:
    void Begin() override;
    void Stretch(const math::Vec2& end) override;
    void Finish(const math::Vec2& end) override;
    void Forget() override;

    const char* m_undoName;
    math::Vec4 m_color; // of all previews of this drag
    EntityPtr m_preview;
};
}
