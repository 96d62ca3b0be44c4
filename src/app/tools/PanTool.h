// Moves the view, so that the picture follows the mouse.
#pragma once

#include "app/tools/Tool.h"

namespace app
{
class PanTool final : public Tool
{
public:
    PanTool();
    ~PanTool() override;

    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    void OnDragEnd(const input::DragEvent& event) override;
    /// The view stays where it is.
    bool Disband() override;
    std::string_view GetCursorName() const override;
};
}
