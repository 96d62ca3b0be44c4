// The colours and borders of the toolkit.
#pragma once

#include "gui/Border.h"

namespace gui
{
class LookAndFeel : public util::Pointee
{
public:
    LookAndFeel();
    ~LookAndFeel() override;

    /// Never null; made at first use, never destroyed.
    static const util::SharedPtr<LookAndFeel>& GetDefault();

    virtual math::Vec4 GetBackgroundColor() const;
    virtual math::Vec4 GetForegroundColor() const;
    virtual BorderPtr GetDefaultBorder() const;
    /// Neither frame nor fill; what a component has until it gets another.
    virtual BorderPtr GetEmptyBorder() const;
    /// A frame without a fill.
    virtual BorderPtr GetSmallBorder() const;
    virtual BorderPtr GetButtonBorder() const;
    virtual BorderPtr GetTooltipBorder() const;
    virtual BorderPtr GetWindowBorder() const;
    virtual BorderPtr GetWindowTitleBorder() const;
    virtual BorderPtr GetTextBoxBorder() const;

private:
    // Made once: all components share them.
    BorderPtr m_default;
    BorderPtr m_empty;
    BorderPtr m_small;
    BorderPtr m_button;
    BorderPtr m_tooltip;
    BorderPtr m_window;
    BorderPtr m_windowTitle;
    BorderPtr m_textBox;
};
using LookAndFeelPtr = util::SharedPtr<LookAndFeel>;
}
