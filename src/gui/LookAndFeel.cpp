#include "gui/LookAndFeel.h"

using math::Vec4;

namespace gui
{
namespace
{
const Vec4 Background(0.1f, 0.1f, 0.1f, 1);
const Vec4 Nothing(0, 0, 0, 0);

Vec4 White(float alpha)
{
    return Vec4(1, 1, 1, alpha);
}

BorderPtr Make(float width, const Vec4& frameColor, const Vec4& fillColor)
{
    return QUIB_NEW SimpleBorder(width, frameColor, fillColor);
}
}

LookAndFeel::LookAndFeel()
    : m_default(Make(1, White(0.25f), Vec4(0.1f, 0.1f, 0.1f, 0.9f)))
    , m_empty(Make(0, Nothing, Nothing))
    , m_small(Make(1, White(0.15f), Nothing))
    , m_button(Make(1, White(0.2f), Vec4(0.2f, 0.2f, 0.2f, 0.9f)))
    , m_tooltip(Make(1, White(0.2f), Vec4(0, 0, 0, 0.35f)))
    , m_window(Make(1, White(0.25f), Vec4(Background.XYZ(), 0.95f)))
    , m_windowTitle(Make(1, White(0.25f), Vec4(0.2f, 0.25f, 0.35f, 0.95f)))
    , m_textBox(Make(1, White(0.4f), Vec4(0, 0, 0, 0.5f)))
{
}

LookAndFeel::~LookAndFeel() = default;

const LookAndFeelPtr& LookAndFeel::GetDefault()
{
    static const auto* s_default = new LookAndFeelPtr(QUIB_NEW LookAndFeel);
    return *s_default;
}

Vec4 LookAndFeel::GetBackgroundColor() const
{
    return Background;
}

Vec4 LookAndFeel::GetForegroundColor() const
{
    return White(1);
}

BorderPtr LookAndFeel::GetDefaultBorder() const
{
    return m_default;
}

BorderPtr LookAndFeel::GetEmptyBorder() const
{
    return m_empty;
}

BorderPtr LookAndFeel::GetSmallBorder() const
{
    return m_small;
}

BorderPtr LookAndFeel::GetButtonBorder() const
{
    return m_button;
}

BorderPtr LookAndFeel::GetTooltipBorder() const
{
    return m_tooltip;
}

BorderPtr LookAndFeel::GetWindowBorder() const
{
    return m_window;
}

BorderPtr LookAndFeel::GetWindowTitleBorder() const
{
    return m_windowTitle;
}

BorderPtr LookAndFeel::GetTextBoxBorder() const
{
    return m_textBox;
}
}
