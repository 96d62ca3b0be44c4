// Owns one tool of each kind and decides which one is current. Made by the App after the scene, never
// destroyed. Not registered with the input: AppGUI hands it the keys that nobody else wants.
#pragma once

#include "app/tools/Tool.h"
#include "rendering/TextureProxy.h"
#include "util/Singleton.h"

#include <tuple>
#include <vector>

namespace app
{
class BoxTool;
class BrushTool;
class ChainTool;
class CircleTool;
class DragTool;
class FixJointTool;
class HingeTool;
class MoveTool;
class PanTool;
class PenTool;
class PlaneTool;
class RotateTool;
class ScaleTool;
class SketchTool;
class SpringTool;

class Tools : public input::InputListener, public util::Singleton<Tools>
{
public:
    Tools();
    ~Tools() override;

    /// The current one, never null: that of a tool key held down, else that of the gesture under way,
    /// else the one that the user chose.
    ToolPtr GetTool() const;
    /// The one of that kind, as in Get<MoveTool>().
    template<typename T>
    const util::SharedPtr<T>& Get() const
    {
        return std::get<util::SharedPtr<T>>(m_tools);
    }

    /// Until another is chosen. Breaks off the one before.
    /// @param tool  not null
    void Select(const ToolPtr& tool);
    /// For one gesture. Breaks off the current one.
    /// @param tool  null ends the gesture
    void SetActive(const ToolPtr& tool);
    bool HasActive() const { return bool(m_active); }

    /// Breaks off whatever is under way, as the scene is about to be another.
    void Disband();

    /// Null for a key of no tool.
    ToolPtr ToolFromKey(int key) const;
    /// 0 for a tool without a key.
    int KeyFromTool(const ToolPtr& tool) const;

    /// A tool's key chooses the tool when it is tapped, and lends it for as long as it is held longer.
    void OnKeyEvent(const input::KeyEvent& event) override;
    /// Once a frame.
    void Update(float dt);

private:
    void OnToolKeyPress(const input::KeyEvent& event);
    void OnToolKeyRelease();
    void UpdateCursor();

    std::tuple<util::SharedPtr<MoveTool>, util::SharedPtr<RotateTool>, util::SharedPtr<PanTool>,
               util::SharedPtr<SketchTool>, util::SharedPtr<BrushTool>, util::SharedPtr<DragTool>,
               util::SharedPtr<PlaneTool>, util::SharedPtr<CircleTool>, util::SharedPtr<BoxTool>,
               util::SharedPtr<ChainTool>, util::SharedPtr<SpringTool>,
               util::SharedPtr<FixJointTool>, util::SharedPtr<HingeTool>, util::SharedPtr<PenTool>,
               util::SharedPtr<ScaleTool>>
        m_tools;
    ToolPtr m_selected;
    ToolPtr m_active;  // null between gestures
    ToolPtr m_keyTool; // null while no tool key is held
    struct KeyEntry
    {
        int key;
        ToolPtr tool;
    };
    std::vector<KeyEntry> m_keyTable;
    int m_heldKey = 0;                // 0: none
    double m_pressTime = 0;           // seconds
    util::String m_cursorName;        // as the current tool has said; "" for none of its own
    rendering::TextureProxy m_cursor; // of that name
};
}
