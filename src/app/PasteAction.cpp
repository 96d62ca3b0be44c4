#include "app/PasteAction.h"

#include "app/Snapshot.h"

namespace app
{
PasteAction::State::State()
    : snapshot(Snapshot::TakeSnapshot())
{
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
    m_hasChangedSettings = !(m_after.settings == m_before.settings);
}

void PasteAction::Do()
{
    Restore(m_after);
}

void PasteAction::Undo()
{
    Restore(m_before);
}

void PasteAction::Restore(const State& state) const
{
    if (m_hasChangedSettings)
        state.settings.Restore();
    state.snapshot->Restore();
}
}
