// A panel as a scene knows it: what it shows, for which entities, and where it lies. The AppGUI keeps
// those that are open; a scene's file holds those that belong to a group of its entities. Nothing is
// drawn for it.
#pragma once

#include "app/Group.h"
#include "math/Vector.h"
#include "util/SharedPtr.h"
#include "util/String.h"

namespace app
{
class Widget : public util::Pointee
{
public:
    /// @param id     its kind, such as "HingeOptions"; any text
    /// @param group  null when it belongs to the user's layout and not to the scene
    Widget(const util::String& id, const GroupPtr& group);
    ~Widget() override;

    const util::String& GetID() const { return m_id; }
    const GroupPtr& GetGroup() const { return m_group; }
    bool IsMinimized() const { return m_isMinimized; }
    void SetMinimized(bool isMinimized) { m_isMinimized = isMinimized; }
    /// On the screen, in pixels.
    const math::Vec2& GetPos() const { return m_pos; }
    void SetPos(const math::Vec2& pos) { m_pos = pos; }
    const util::String& GetTitle() const { return m_title; }
    void SetTitle(const util::String& title) { m_title = title; }

private:
    util::String m_id;
    GroupPtr m_group;
    bool m_isMinimized = false;
    math::Vec2 m_pos;
    util::String m_title;
};

using WidgetPtr = util::SharedPtr<Widget>;
}
