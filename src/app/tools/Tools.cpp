#include "app/tools/Tools.h"

#include "app/tools/BoxTool.h"
#include "app/tools/BrushTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/FixJointTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/PenTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/SpringTool.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "rendering/Texture.h"
#include "util/Failures.h"
#include "util/Timer.h"

#include <SDL_keysym.h>

#include <utility>

namespace app
{
namespace
{
template<typename T>
void Make(util::SharedPtr<T>& tool)
{
    tool = QUIB_NEW T;
}
}

Tools::Tools()
    : InputListener(50)
{
    std::apply([](auto&... tool) { (Make(tool), ...); }, m_tools);
    m_selected = Get<SketchTool>();
    m_keyTable = {
        {SDLK_b, Get<BrushTool>()}, {SDLK_k, Get<SketchTool>()}, {SDLK_d, Get<DragTool>()},
        {SDLK_p, Get<PlaneTool>()}, {SDLK_c, Get<CircleTool>()}, {SDLK_x, Get<BoxTool>()},
        {SDLK_n, Get<ChainTool>()}, {SDLK_s, Get<SpringTool>()}, {SDLK_f, Get<FixJointTool>()},
        {SDLK_h, Get<HingeTool>()}, {SDLK_e, Get<PenTool>()},    {SDLK_r, Get<ScaleTool>()},
    };
}

Tools::~Tools() = default;

ToolPtr Tools::GetTool() const
{
    if (m_keyTool)
        return m_keyTool;
    return m_active ? m_active : m_selected;
}

void Tools::Select(const ToolPtr& tool)
{
    CODE_ASSERT(tool);
    // What breaks off may ask for the current tool.
    const ToolPtr before = m_selected;
    before->Disband();
    m_selected = tool;
    m_active = nullptr;
}

void Tools::SetActive(const ToolPtr& tool)
{
    GetTool()->Disband();
    m_active = tool;
}

ToolPtr Tools::ToolFromKey(int key) const
{
    for (const KeyEntry& entry : m_keyTable)
        if (entry.key == key)
            return entry.tool;
    return nullptr;
}

int Tools::KeyFromTool(const ToolPtr& tool) const
{
    for (const KeyEntry& entry : m_keyTable)
        if (entry.tool == tool)
            return entry.key;
    return 0;
}

void Tools::OnKeyEvent(const input::KeyEvent& event)
{
    InputListener::OnKeyEvent(event);
    if (event.IsHandled())
        return;
    if (event.IsDown())
        OnToolKeyPress(event);
    else if (m_keyTool && event.GetKey() == m_heldKey)
    {
        OnToolKeyRelease();
        event.SetHandled(true);
    }
}

void Tools::OnToolKeyPress(const input::KeyEvent& event)
{
    if (m_heldKey != 0 || event.IsRepeat())
    {
        // What took the press has the repeats too.
        if (event.GetKey() == m_heldKey)
            event.SetHandled(true);
        return;
    }
    const input::Input* input = input::Input::GetInstancePtr();
    // With these a letter means a command. The window system's key counts as Ctrl does.
    if (event.IsCtrlDown() || event.IsAltDown() || input->CheckModifier(input::ModMeta))
        return;
    const ToolPtr tool = ToolFromKey(event.GetKey());
    if (!tool || tool == GetTool())
        return;
    GetTool()->Disband();
    m_heldKey = event.GetKey();
    m_pressTime = util::Timer::GetCurrentTime();
    m_keyTool = tool;
    event.SetHandled(true);
}

void Tools::OnToolKeyRelease()
{
    const double held = util::Timer::GetCurrentTime() - m_pressTime;
    // Before anything that may throw: the next frame would find the key released again.
    const ToolPtr tool = std::exchange(m_keyTool, nullptr);
    m_heldKey = 0;
    if (held > gui::GUI::GetInstancePtr()->GetClickTimeTolerance())
        tool->Disband();
    else
        Select(tool);
}

void Tools::Disband()
{
    const ToolPtr current = GetTool(), active = m_active;
    current->Disband();
    // One that is lent may hide it.
    if (active && active != current)
        active->Disband();
    // Nor does a key that was tapped meanwhile end its gesture.
    std::apply([](const auto&... tool) { ((tool->IsInUse() && tool->Disband()), ...); }, m_tools);
}

void Tools::Update(float dt)
{
    // Somebody else may have taken the release.
    if (m_keyTool && !input::Input::GetInstancePtr()->IsKeyDown(m_heldKey))
        QUIB_PASS_ON(OnToolKeyRelease());
    const ToolPtr tool = GetTool();
    QUIB_PASS_ON(tool->Update(dt));
    UpdateCursor();
}

void Tools::UpdateCursor()
{
    const std::string_view name = GetTool()->GetCursorName();
    if (name != m_cursorName)
    {
        m_cursor = name.empty() ? rendering::TextureProxy()
                                : gui::GUI::LoadCursor("cursors/" + util::String(name));
        m_cursorName = name;
    }
    // One that fails to load may load later.
    gui::GUI* gui = gui::GUI::GetInstancePtr();
    if (m_cursor)
        gui->SetCursor(m_cursor);
    else
        gui->SetDefaultCursor();
}
}
