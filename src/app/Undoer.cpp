#include "app/Undoer.h"

#include "app/App.h"
#include "app/Snapshot.h"
#include "util/Failures.h"

namespace app
{
namespace
{
void Trim(std::deque<ActionPtr>& actions, size_t limit)
{
    while (actions.size() > limit)
        actions.pop_front();
}

/// Null when there is none.
ActionPtr Pop(std::deque<ActionPtr>& actions)
{
    if (actions.empty())
        return nullptr;
    const ActionPtr action = actions.back();
    actions.pop_back();
    return action;
}
}

Undoer::Undoer()
{
    App::GetInstancePtr()->AddOnMaxUndoChange(util::MakeCallback(&Undoer::OnMaxUndoChange, this));
}

Undoer::~Undoer() = default;

size_t Undoer::MaxUndo()
{
    return App::GetInstancePtr()->GetMaxUndo();
}

bool Undoer::IsBusy() const
{
    if (m_isBusy)
        Log(logging::LogWarning,
            "Nothing can be done, undone or redone while an action is under way");
    return m_isBusy;
}

/// What fails reaches the log. @return whether it went well
bool Undoer::Try(Action& action, void (Action::*step)())
{
    m_isBusy = true;
    bool isDone = false;
    try
    {
        (action.*step)();
        isDone = true;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("\"") + action.GetNameKey() + "\" failed: " + e.what());
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        Log(logging::LogError, util::String("\"") + action.GetNameKey() + "\" failed");
    }
    m_isBusy = false;
    return isDone;
}

void Undoer::Do(const ActionPtr& action)
{
    if (IsBusy())
        return;
    m_redo.clear();
    if (Try(*action, &Action::Do))
        AddUndoPrivate(action);
    m_onChange.CallAll();
}

void Undoer::AddUndo(const ActionPtr& action)
{
    if (IsBusy())
        return;
    m_redo.clear();
    AddUndoPrivate(action);
    m_onChange.CallAll();
}

void Undoer::AddUndo(const SnapshotPtr& before, const char* name)
{
    if (IsBusy())
        return;
    m_redo.clear();
    AddUndoPrivate(QUIB_NEW SnapshotRestorer(before, name, Snapshot::TakeSnapshot()));
    m_onChange.CallAll();
}

void Undoer::Undo()
{
    if (IsBusy())
        return;
    const ActionPtr action = Pop(m_undo);
    if (!action)
        return;
    if (Try(*action, &Action::Undo))
        AddRedoPrivate(action);
    m_onChange.CallAll();
}

void Undoer::Redo()
{
    if (IsBusy())
        return;
    const ActionPtr action = Pop(m_redo);
    if (!action)
        return;
    if (Try(*action, &Action::Redo))
        AddUndoPrivate(action);
    m_onChange.CallAll();
}

ActionPtr Undoer::GetNextUndo() const
{
    return m_undo.empty() ? nullptr : m_undo.back();
}

ActionPtr Undoer::GetNextRedo() const
{
    return m_redo.empty() ? nullptr : m_redo.back();
}

void Undoer::AddOnChangeCallback(const util::CallbackPtr& callback)
{
    m_onChange.Add(callback);
}

void Undoer::AddUndoPrivate(const ActionPtr& action)
{
    m_undo.push_back(action);
    Trim(m_undo, MaxUndo());
}

void Undoer::AddRedoPrivate(const ActionPtr& action)
{
    m_redo.push_back(action);
    Trim(m_redo, MaxUndo());
}

void Undoer::OnMaxUndoChange()
{
    Trim(m_undo, MaxUndo());
    Trim(m_redo, MaxUndo());
    m_onChange.CallAll();
}
}
