#include "gui/GUI.h"

#include "input/Input.h"
#include "input/Key.h"
#include "logging/Log.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>
#include <SDL_mouse.h>

namespace gui
{
namespace
{
// GUI units.
const float CursorSize = 32;

math::Vec2 ConvertPixel(int x, int y)
{
    return GUI::GetInstancePtr()->PosFromPixel(x, y);
}

/// Written so that a NaN is held too.
float Hold(float value, float least, float most)
{
    if (!(value > least))
        return least;
    return value < most ? value : most;
}

input::Input::ClickLimits GetClickLimits()
{
    const GUI* gui = GUI::GetInstancePtr();
    return {gui->GetClickTimeTolerance(), gui->GetClickTolerance()};
}

/// The mouse is over one of the children at most, the frontmost: whoever lies behind is covered there.
/// A child may reach out of its owner, and has the mouse there too.
/// @param allowed  false when it is covered
/// @param pos      inner coordinates
/// @return         whether the mouse is over anything there
bool UpdateMouseOverTree(Component& component, bool allowed, const math::Vec2& pos)
{
    bool isOver = allowed && component.GetOuterBBLocal().Contains(pos);
    component.SetMouseOverOuter(isOver);
    component.ForwardEvent(
        [&](Component* child)
        {
            if (child->IsMouseTransparent())
                return;
            if (UpdateMouseOverTree(*child, allowed, pos - child->GetInnerPos()))
            {
                isOver = true;
                allowed = false;
            }
        });
    return isOver;
}

template<typename P>
bool IsProfiling()
{
    return P::Exists() && P::GetInstancePtr()->IsActive();
}

/// Into the log, each text once.
/// @param shown  the latest
template<typename P>
void ShowProfile(util::String& shown)
{
    if (!IsProfiling<P>())
        return;
    const util::String& output = P::GetInstancePtr()->GetOutput();
    if (output == shown)
        return;
    shown = output;
    Log(logging::LogInfo, "Profiler output:\n" + output);
}
}

// Hangs in the root, behind what is added there later: the console, which wants its keys before a text
// box does.
class GUI::KeyboardListener final : public input::InputListener
{
public:
    explicit KeyboardListener(GUI* gui)
        : InputListener(50)
        , m_gui(gui)
    {
    }

    void OnKeyEvent(const input::KeyEvent& event) override
    {
        if (event.GetKey() >= input::FirstMouseKey)
            return;
        util::LockPtr<Component> owner(m_gui->m_keyboardOwner);
        for (Component* top = owner.get(); top; top = top->GetOwnerComponent())
            if (top == m_gui->m_root.get())
            {
                owner->OnKeyEvent(event);
                return;
            }
    }

private:
    GUI* m_gui; // whose it is
};

GUI::GUI()
    : InputListener(50)
    , m_clickTolerance(this, "clickTolerance", 3.5f)
    , m_clickTimeTolerance(this, "clickTimeTolerance", 0.4f)
    , m_forceOSCursor(this, "forceOSCursor", false)
    , m_font(this, "font", "arial_black")
    , m_crispFonts(this, "crispFonts", false)
    , m_crispFontFactor(this, "crispFontFactor", 0.5f)
    , m_fontShadow(this, "fontShadow", true)
    , m_fontShadowOffset(this, "fontShadowOffset", math::Vec2(0.0625f, 0.0625f))
    , m_scale(this, "scale", 1.0f)
    , m_opaqueness(this, "opaqueness", 0.9f)
    , m_root(QUIB_NEW Component)
    , m_main(QUIB_NEW Component)
    , m_tooltips(QUIB_NEW Component)
    , m_keyboardListener(QUIB_NEW KeyboardListener(this))
    , m_defaultCursor(LoadCursor("mouse"))
    , m_cursor(m_defaultCursor)
{
    SetReflectedName("GUI");
    m_root->SetReflectedName("Root");
    m_main->SetReflectedName("Main");
    m_scale->AddChangeCallback(util::MakeCallback(&GUI::OnScaleChange, this));

    m_tooltips->SetReflectedName("Tooltips");
    m_tooltips->SetMouseTransparent(true);
    m_main->SetFillOwner(true);
    m_tooltips->SetFillOwner(true);
    m_root->AddComponent(m_main);
    m_root->AddComponent(m_tooltips);
    m_root->AddListener(util::WeakPtr<InputListener>(m_keyboardListener));
    AddReflectedChild(m_root);

    input::Input* input = input::Input::GetInstancePtr();
    input->AddFirstListener(util::WeakPtr<InputListener>(m_root.get()));
    input->AddFirstListener(util::WeakPtr<InputListener>(this));
    input->SetPosFromPixel(ConvertPixel);
    input->SetClickLimits(GetClickLimits);
}

GUI::~GUI() = default;

void GUI::Update(float dt)
{
    // What opens, moves or goes under a still mouse is noticed too.
    UpdateMouseOver(input::Input::GetInstancePtr()->GetMousePos());
    m_root->Update(dt);
}

void GUI::Draw()
{
    QUIB_PROFILE("GUI::Draw");
    Begin();
    {
        rendering::AttribPusher attribs;
        glPushMatrix();
        m_root->DrawCompAndChildren();
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
    }
    DrawCursor();
    ShowProfiles();
    End();
}

void GUI::OnMouseMove(const input::MouseEvent& event)
{
    QUIB_PROFILE("GUI:OnMouseMove");
    UpdateMouseOver(event.GetPosition());
    InputListener::OnMouseMove(event);
}

void GUI::UpdateMouseOver(const math::Vec2& pos)
{
    UpdateMouseOverTree(*m_root, true, m_root->GUIToLocal(pos));
}

void GUI::ClaimKeyboard(const ComponentPtr& component)
{
    m_keyboardOwner = util::WeakPtr<Component>(component);
}

void GUI::ReleaseKeyboard(const ComponentPtr& component)
{
    if (HasKeyboard(component.get()))
        m_keyboardOwner = util::WeakPtr<Component>();
}

bool GUI::HasKeyboard(const Component* component) const
{
    return component && m_keyboardOwner.GetUnlocked() == component;
}

rendering::TextureProxy GUI::LoadCursor(const util::String& name)
{
    return rendering::TextureManager::GetInstancePtr()->Load(name, {GL_RGBA, true});
}

void GUI::SetCursor(const rendering::TextureProxy& texture)
{
    m_cursor = texture;
}

void GUI::DrawCursor()
{
    // One that could not be loaded is none: the desktop's serves better than a test picture.
    const bool isOurs = m_cursor && !m_forceOSCursor;
    ShowOSCursor(!isOurs);
    if (!isOurs)
        return;
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    renderer->SetColor4(1, 1, 1, 1);
    m_cursor->Bind();
    const math::Vec2 size(CursorSize, CursorSize);
    renderer->DrawRectGUI(input::Input::GetInstancePtr()->GetMousePos() - size / 2.0f, size,
                          math::Vec2(1, 1));
    m_cursor->Unbind();
}

void GUI::ShowProfiles()
{
    if (!IsProfiling<util::Profiler>() && !IsProfiling<util::Profiler2>())
        return;
    QUIB_PROFILE("Profiler output");
    ShowProfile<util::Profiler>(m_shownProfile);
    ShowProfile<util::Profiler2>(m_shownProfile2);
}

void GUI::ShowOSCursor(bool show)
{
    if (m_isOSCursorShown == show)
        return;
    m_isOSCursorShown = show;
    input::Input::GetInstancePtr()->SetShowCursor(show);
}

void GUI::Begin()
{
    m_attribs.emplace();
    const math::Vec2 size = GetSize();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0, size.x, size.y, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    rendering::Renderer::GetInstancePtr()->SetColor4(1, 1, 1, m_opaqueness);
}

void GUI::End()
{
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    m_attribs.reset();
}

float GUI::GetScale() const
{
    return Hold(m_scale, 0.1f, 10);
}

float GUI::GetClickTolerance() const
{
    return Hold(m_clickTolerance, 0, 100);
}

float GUI::GetClickTimeTolerance() const
{
    return Hold(m_clickTimeTolerance, 0, 5);
}

math::Vec2 GUI::PosFromPixel(int x, int y) const
{
    const float scale = GetScale();
    return math::Vec2(x / scale, y / scale);
}

math::Vec2 GUI::PixelFromPos(const math::Vec2& pos) const
{
    return pos * GetScale();
}

math::Vec2 GUI::GetSize() const
{
    return PosFromPixel(m_windowSize.x, m_windowSize.y);
}

void GUI::OnNewWindowSize(int width, int height)
{
    m_windowSize = math::TVector2<int>(width, height);
    m_isOSCursorShown.reset(); // a new window may have forgotten
    m_root->SetOuterSize(GetSize());
}

void GUI::OnScaleChange()
{
    OnNewWindowSize(m_windowSize.x, m_windowSize.y);
}
}
