#include "app/PasteAction.h"

#include "app/Snapshot.h"

namespace app
{
PasteAction::State::State()
    : snapshot(Snapshot::TakeSnapshot())
{
}

void PasteAction::State::Restore() const
{
    settings.Restore();
    snapshot->Restore();
}

PasteAction::PasteAction()
    : Action("UndoCodePaste")
    , m_after(m_before)
{
}

PasteAction::~PasteAction() = default;

void PasteAction::NoteResult()
{
    m_after = State();
}

void PasteAction::Do()
{
    m_after.Restore();
}

void PasteAction::Undo()
{
    m_before.Restore();
}
}
