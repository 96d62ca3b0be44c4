// The paste of a text from the clipboard, which was run already: it may have changed whatever a script can reach.
#pragma once

#include "app/Action.h"
#include "app/SceneSettings.h"

namespace app
{
class PasteAction final : public Action
{
public:
    /// Before the text is run.
    PasteAction();
    ~PasteAction() override;

    /// After it was run.
    void NoteResult();

    void Do() override;
    void Undo() override;

private:
    struct State
    {
        State();

        SnapshotPtr snapshot;
        SceneSettings settings;
    };
    void Restore(const State& state) const;

    State m_before;
    State m_after;
    bool m_hasChangedSettings = false; // else those of the time of the undo stay
};
}
