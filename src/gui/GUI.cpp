#include "gui/GUI.h"

#include "input/Input.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

namespace gui
{
namespace
{
math::Vec2 ConvertPixel(int x, int y)
{
    return GUI::GetInstancePtr()->PosFromPixel(x, y);
}

input::Input::ClickLimits GetClickLimits()
{
    const GUI* gui = GUI::GetInstancePtr();
    return {gui->GetClickTimeTolerance(), gui->GetClickTolerance()};
}
}

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
{
    SetReflectedName("GUI");
    m_root->SetReflectedName("Root");
    m_main->SetReflectedName("Main");
    m_scale->AddChangeCallback(util::MakeCallback(&GUI::OnScaleChange, this));

    m_main->SetFillOwner(true);
    m_root->AddComponent(m_main);
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
    m_root->Update(dt);
}

void GUI::Draw()
{
    util::ScopeProfiler profile("GUI::Draw");
    Begin();
    m_root->DrawCompAndChildren();
    End();
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
    const float scale = m_scale;
    // Written so that a NaN is held too.
    if (!(scale > 0.1f))
        return 0.1f;
    return scale < 10.0f ? scale : 10.0f;
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
    m_root->SetInnerSize(GetSize());
}

void GUI::OnScaleChange()
{
    OnNewWindowSize(m_windowSize.x, m_windowSize.y);
}
}
