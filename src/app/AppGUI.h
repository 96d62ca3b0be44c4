// The root of the application's interface, lying over the scene. What the user does reaches its panels
// first, then the current tool, and then what always means the same: the gestures of either button, the
// popup menu, the keys. Loads, saves and autosaves. Owned by the App; the script object "App.GUI".
#pragma once

#include "app/Group.h"
#include "app/widgets/Widget.h"
#include "gui/Component.h"
#include "script/Attributes.h"
#include "util/String.h"

#include <vector>

namespace app
{
class Snapshot;
class Tool;
using SnapshotPtr = util::SharedPtr<Snapshot>;
using ToolPtr = util::SharedPtr<Tool>;

class AppGUI : public gui::Component
{
public:
    AppGUI();
    ~AppGUI() override;

    /// From here on nothing is saved that nobody asked for.
    void StopAutosaves() { m_autosaves = false; }
    /// Once a frame, and so what saves the scene and the configuration every App.autosaveTime.
    void Update(float dt) override;

    void OnFormChange() override;

    // A child that takes an event has it alone (AppGUIEvents.cpp).

    /// To the current tool; when it does not want it, to the tool that the button means for one gesture.
    void OnDragBegin(const input::DragEvent& event) override;
    void OnDrag(const input::DragEvent& event) override;
    /// Ends the gesture in any case.
    void OnDragEnd(const input::DragEvent& event) override;
    /// To the current tool; else selects, and opens the menu of what is there.
    void OnClick(const input::ClickEvent& event) override;
    /// The shortcuts, then the tools.
    void OnKeyEvent(const input::KeyEvent& event) override;

    /// A notch of the wheel is a factor of 2 to the power of this.
    float GetZoomFactor() const { return m_zoomFactor; }
    /// Whether shapes may be begun on top of an entity.
    bool GetDrawInside() const { return m_drawInside; }
    bool GetDrawHingesWhenRunning() const { return m_drawHingesWhenRunning; }

    /// The scene's.
    const GroupPtr& GetSelection() const;
    /// In the world.
    math::Vec2 GetMousePos() const;

    /// Loads the scene and sets it running: one undo brings it back as it was loaded and paused, the
    /// next the scene before. What goes wrong reaches the log; what was built by then stays.
    /// @param name      MakeLongFileName makes the path of it; "\" is as good as "/"
    /// @param autosave  the name is not kept as that of the current scene
    /// @return          whether it could be loaded
    bool LoadScene(util::String name, bool autosave);
    /// What goes wrong reaches the log, and a file that was there before is still whole.
    /// @param autosave  the name is not kept as that of the current scene
    /// @return          whether it was saved
    bool SaveSceneAs(const util::String& name, bool autosave);

    /// Saves under the name of the current scene, "unnamed.qib" for one that has none yet.
    void OnSceneSave();
    /// Shows the place where a scene will be chosen.
    void OnSceneLoad();

    /// As the user knows the file: without the ending ".qib" and the scene folder in front.
    static util::String MakeShortFileName(util::String name);
    /// Play or pause. Undoing the play is the reset; pausing can't be undone.
    void TogglePlaying();
    /// A mere point to come back to by undo.
    void TakeSnapshot();

    void EraseWater();
    /// All that was not selected is, and nothing else.
    void InvertSelection();
    /// Makes a group without a name of them, to be selected as one. One step of undo.
    void AssignToEmptyGroup(const GroupPtr& entities);
    /// Into full screen at the screen's own size, and back to the window as it was.
    void ToggleFullscreen();

    // Around the move of a slider, which is one step of undo however many changes it makes.
    void OnSliderBegin();
    void OnSliderEnd();

    // The popup: one at a time.

    /// The menu of what is selected, else of the water or the background under the mouse.
    void OpenMenu();
    /// In place of the one that is open.
    void SetPopup(const gui::ComponentPtr& popup);
    void ClosePopup();
    /// Null when none is open.
    gui::ComponentPtr GetPopup() const;
    // Where a component lies best on the screen, none of it outside.
    void PositionAtMouse(gui::Component& component) const;
    void PositionInCenter(gui::Component& component) const;

    /// Takes down what is shown in the language of before; panels are built again for the one in force.
    void Rebuild();
    /// All that are open, the oldest first.
    const std::vector<WidgetPtr>& GetWidgets() const { return m_widgets; }
    /// The oldest that is open of that kind; null for none.
    WidgetPtr GetWidget(const util::String& id) const;
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
    void Place(gui::Component& component, const math::Vec2& pos) const;
    template<typename Call>
    static bool Try(Call call);
    template<typename Event>
    static void HandTo(const ToolPtr& tool, const Event& event,
                       void (input::InputListener::*handler)(const Event&));
    bool OnWheel(const input::KeyEvent& event);
    bool OnShortcut(const input::KeyEvent& event);
    bool OnEscape();
    void BreakOffDrag();
    void Undo();
    void Redo();
    void Copy();
    void Cut();
    void Paste();
    void EraseSelection();
    void SelectAll();
    void GroupSelection();
    void UngroupSelection();
    void Quit();

    script::AttribWrapper<float> m_zoomFactor;
    script::AttribWrapper<bool> m_drawInside;
    script::AttribWrapper<bool> m_leftClickMenus; // a left click opens the popup too
    script::AttribWrapper<bool> m_drawHingesWhenRunning;
    script::AttribWrapper<bool> m_trapUser;   // no menu leads out of the program
    script::AttribWrapper<bool> m_simpleMode; // menus leave out what few need
    // The one whose drag is under way, null for none. Another may be current meanwhile: a key can lend one.
    ToolPtr m_dragTool;
    int m_shortcutKey = 0; // the one whose last press was a shortcut, 0 for none
    gui::ComponentPtr m_popupHolder;
    std::vector<WidgetPtr> m_widgets;
    SnapshotPtr m_beforeSlider;         // while a slider is being moved
    math::TVector2<int> m_windowedSize; // pixels; of the window before it filled the screen
    bool m_wantsDefaults = false;
    double m_lastAutosave; // seconds
    bool m_autosaves = true;
};

// The kinds of popup that OpenMenu opens.
extern const char* const EntityMenuID;
extern const char* const WaterMenuID;
extern const char* const BackgroundMenuID;

/// Adds a missing ".qib", and the scene folder in front of a name without "/".
util::String MakeLongFileName(util::String name);
}
