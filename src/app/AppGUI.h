// The root of the application's interface, lying over the scene: loading, saving and autosave.
// Owned by the App; the script object "App.GUI".
#pragma once

#include "app/widgets/Widget.h"
#include "gui/Component.h"
#include "script/Attributes.h"
#include "util/String.h"

#include <vector>

namespace app
{
class AppGUI : public gui::Component
{
public:
    AppGUI();

    /// Once a frame, and so what saves the scene and the configuration every App.autosaveTime.
    void Update(float dt) override;
    /// What no child has taken: the wheel zooms around the mouse.
    void OnKeyEvent(const input::KeyEvent& event) override;

    /// A notch of the wheel is a factor of 2 to the power of this.
    float GetZoomFactor() const { return m_zoomFactor; }
    /// Whether shapes may be begun on top of an entity.
    bool GetDrawInside() const { return m_drawInside; }
    bool GetDrawHingesWhenRunning() const { return m_drawHingesWhenRunning; }

    /// Loads the scene and sets it running: one undo brings it back as it was loaded and paused, the
    /// next the scene before. What goes wrong reaches the log; what was built by then stays.
    /// @param name      MakeLongFileName makes the path of it; "\" is as good as "/"
    /// @param autosave  the name is not kept as that of the current scene
    /// @return          whether it could be loaded
    bool LoadScene(util::String name, bool autosave);
    /// What goes wrong reaches the log, and a file that was there before is still whole.
    void SaveSceneAs(const util::String& name, bool autosave);

    /// As the user knows the file: without the ending ".qib" and the scene folder in front.
    static util::String MakeShortFileName(util::String name);
    /// Play or pause. Undoing the play is the reset; pausing can't be undone.
    void TogglePlaying();
    /// A mere point to come back to by undo.
    void TakeSnapshot();

    /// Takes down the panels: they are built again for the language in force.
    void Rebuild();
    /// All that are open, the oldest first.
    const std::vector<WidgetPtr>& GetWidgets() const { return m_widgets; }
    /// @param widget  not null
    void AddWidget(const WidgetPtr& widget) { m_widgets.push_back(widget); }
    /// One that is not open is ignored.
    void RemoveWidget(const WidgetPtr& widget);
    /// Those that belong to entities go with the scene, those of the user's layout stay.
    void RemoveGroupWidgets();

    /// Wishes for the panels of a first start. There is nothing to open them with before the first
    /// Rebuild in a window, so this only notes the wish.
    void SetUpDefaults() { m_wantsDefaults = true; }
    bool WantsDefaults() const { return m_wantsDefaults; }

    /// The next autosave comes App.autosaveTime from now.
    void PostponeAutosave();

private:
    script::AttribWrapper<float> m_zoomFactor;
    script::AttribWrapper<bool> m_drawInside;
    script::AttribWrapper<bool> m_leftClickMenus; // a left click opens the popup too
    script::AttribWrapper<bool> m_drawHingesWhenRunning;
    std::vector<WidgetPtr> m_widgets;
    bool m_wantsDefaults = false;
    double m_lastAutosave; // seconds
};

/// Adds a missing ".qib", and the scene folder in front of a name without "/".
util::String MakeLongFileName(util::String name);
}
