// What was done and can be undone, and what was undone and can be redone. Made by the App, never
// destroyed; both stacks outlive the loading of scenes, which is an action itself.
//
// While an action is under way, as when a scene is loaded or brought back, all calls that would change the
// stacks are refused with a line in the log: a script in that scene could call for them.
#pragma once

#include "app/Action.h"
#include "util/Callback.h"
#include "util/Singleton.h"

#include <deque>

namespace app
{
class Undoer : public util::Pointee, public util::Singleton<Undoer>
{
public:
    /// Wants the App to be there.
    Undoer();
    ~Undoer() override;

    /// Does the action and remembers it. One that throws is logged and forgotten.
    void Do(const ActionPtr& action);
    /// Remembers an action whose work is done already.
    void AddUndo(const ActionPtr& action);
    /// The usual way: take a snapshot, change the scene, call this.
    /// @param name  a key of the language files; the pointer is kept
    void AddUndo(const SnapshotPtr& before, const char* name);

    /// Nothing happens when there is nothing to undo, or to redo.
    void Undo();
    void Redo();

    /// What Undo and Redo would work on; null when there is nothing.
    ActionPtr GetNextUndo() const;
    ActionPtr GetNextRedo() const;

    /// Called after each change of what can be undone and redone.
    void AddOnChangeCallback(const util::CallbackPtr& callback);

private:
    bool IsBusy() const;
    bool Try(Action& action, void (Action::*step)());
    void AddUndoPrivate(const ActionPtr& action);
    void AddRedoPrivate(const ActionPtr& action);
    void OnMaxUndoChange();
    static size_t MaxUndo();

    std::deque<ActionPtr> m_undo; // newest at the back
    std::deque<ActionPtr> m_redo; // newest at the back
    util::CallbackSet m_onChange;
    bool m_isBusy = false; // an action is under way
};
}
