// A panel that goes away by itself: the menu of what lies under the mouse, or the place of a dialog. The
// AppGUI shows one at a time. Takes clicks and drags in its area, and nothing beyond it.
#pragma once

#include "gui/Component.h"
#include "util/String.h"

namespace app
{
class Popup final : public gui::Component
{
public:
    /// @param id     its kind, such as "EntityOptions"; scripts find it under this name
    /// @param title  in the language of the program; "" for none
    Popup(const util::String& id, const util::String& title);

    const util::String& GetID() const { return m_id; }
    const util::String& GetTitle() const { return m_title; }

    void OnDragBegin(const input::DragEvent& event) override;
    void OnClick(const input::ClickEvent& event) override;

private:
    /// @param pos  GUI units
    bool IsInside(const math::Vec2& pos) const;

    util::String m_id;
    util::String m_title;
};
}
