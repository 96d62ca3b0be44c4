// What moving and turning have in common: the selection is taken in hand, held still while the world
// runs, and is let go of as one step of undo, or put back.
#pragma once

#include "app/tools/Tool.h"
#include "math/Mat2D.h"

#include <vector>

namespace app
{
class TransformTool : public Tool
{
public:
    ~TransformTool() override;

protected:
    TransformTool();

    /// Selects what is there, unless it is selected already.
    /// @param pos  in the world
    /// @return whether there is anything
    bool SelectAt(const math::Vec2& pos);
    /// Begins. What BreakOff goes back to, and what LetGo makes undoable, is the scene as it is now.
    void RememberScene();
    /// From now on the selection is held still and follows.
    void TakeInHand();
    bool IsInHand() const { return m_isInHand; }
    void TransformHeld(const math::Mat2D& matrix);
    /// Nothing is undoable when nothing was taken in hand.
    void LetGo();
    /// Puts the scene back, if anything was taken in hand.
    void BreakOff();

private:
    /// See Undoer::AddUndo.
    virtual const char* GetUndoName() const = 0;
    SnapshotPtr Release();

    SnapshotPtr m_before;          // null between gestures
    std::vector<EntityPtr> m_held; // geometries first
    bool m_isInHand = false;
};
}
