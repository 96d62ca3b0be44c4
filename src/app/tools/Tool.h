// What a click or drag of the mouse on the scene does. Tools owns one of each kind, for as long as the
// program runs; AppGUI hands the current one those events that no panel wants. A tool never registers
// with the input by itself.
//
// A tool that gets an event which is its own marks it as handled. It reports a failure to the log and
// leaves the scene as it was.
#pragma once

#include "app/Group.h"
#include "input/InputListener.h"
#include "math/Vector.h"

#include <string_view>

namespace app
{
class Snapshot;
using SnapshotPtr = util::SharedPtr<Snapshot>;

class Tool : public input::InputListener
{
public:
    Tool();
    ~Tool() override;

    /// Once a frame while it is the current one.
    /// @param dt  seconds since the last frame
    virtual void Update(float dt);
    /// In world coordinates, on top of the scene.
    virtual void Draw() const;
    /// Breaks off what it is doing.
    /// @return whether there was anything to break off
    virtual bool Disband();
    /// In the folder of cursors; "" for none of its own.
    virtual std::string_view GetCursorName() const;
    virtual void SetInUse(bool inUse) { m_inUse = inUse; }
    bool IsInUse() const { return m_inUse; }

    /// Escape breaks off.
    void OnKeyEvent(const input::KeyEvent& event) override;

protected:
    // For the handlers of subclasses.

    /// Whether nobody has taken it yet and it is of that button.
    template<typename Event>
    static bool IsFor(int button, const Event& event)
    {
        return !event.IsHandled() && event.GetButton() == button;
    }
    /// @param pos  GUI units
    static math::Vec2 ToWorld(const math::Vec2& pos);
    /// Of the mouse, in the world.
    static math::Vec2 GetMousePos();
    static bool IsShiftDown();
    /// The nearest multiple of 15 degrees.
    /// @param angle  radians
    static float SnapAngle(float angle);
    /// Whether a shape may be begun there: over an entity only when the user has chosen so.
    /// @param pos  in the world
    static bool MayBeginShapeAt(const math::Vec2& pos);
    /// One step of undo.
    /// @param name  see Undoer::AddUndo
    static void AddEntityUndoable(const EntityPtr& entity, const char* name);
    /// In a catch (...): logs "Error: " and what was thrown, or "Fail".
    /// @param location  QUIB_LOCATION
    static void LogCaught(const char* location);

private:
    bool m_inUse = false;
};
using ToolPtr = util::SharedPtr<Tool>;
}
