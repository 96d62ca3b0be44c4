// Loads a scene file, replacing what is there. Lives on the stacks of the Undoer.
#pragma once

#include "app/Action.h"
#include "app/SceneSettings.h"

#include <memory>

namespace app
{
class SceneLoader final : public Action
{
public:
    /// @param isImport  of a Quiblet: what is there stays, and what comes in gets to the mouse
    /// @param path      a name without a slash is looked for in the scene folder
    SceneLoader(bool isImport, util::String path);
    ~SceneLoader() override;

    /// What goes wrong with the file reaches the log.
    void Do() override;
    /// The scene before, with its texts, its settings and the name of its file.
    void Undo() override;
    void Redo() override;

    /// Whether the last Do has brought a scene.
    bool IsLoaded() const { return m_isLoaded; }
    /// Whether the last Do has taken the scene before away, whatever came of the file.
    bool HasCleared() const { return m_hasCleared; }

private:
    bool Load();
    void LoadScene(const util::String& text);
    void ImportQuiblet(const util::String& text);
    void SwapFileName();

    bool m_isImport;
    util::String m_path;
    bool m_isLoaded = false;
    bool m_hasCleared = false;
    SnapshotPtr m_snapshot;
    util::String m_fileName;                   // of the other scene
    std::unique_ptr<SceneSettings> m_settings; // before; null when nothing was loaded over it
};
}
