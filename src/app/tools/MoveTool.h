// Moves the selection, or copies of it.
#pragma once

#include "app/tools/TransformTool.h"

namespace app
{
class MoveTool final : public TransformTool
{
public:
    MoveTool();
    ~MoveTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    /// Puts everything back. Deliberate: false even then, so that the key that broke it off goes on to
    /// others.
    bool Disband() override;
    std::string_view GetCursorName() const override;

private:
    const char* GetUndoName() const override;

    bool m_isCloning = false; // in the gesture under way, or the last one
};
}
