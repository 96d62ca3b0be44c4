#include "gui/LookAndFeel.h"

#include <gtest/gtest.h>

using gui::BorderPtr;
using gui::LookAndFeel;
using gui::SimpleBorder;
using math::Vec2;
using math::Vec4;

TEST(LookAndFeel, IsDarkWithLightText)
{
    EXPECT_EQ(Vec4(0.1f, 0.1f, 0.1f, 1), LookAndFeel::GetDefault()->GetBackgroundColor());
    EXPECT_EQ(Vec4(1, 1, 1, 1), LookAndFeel::GetDefault()->GetForegroundColor());
}

TEST(LookAndFeel, HasABorderForEachPurpose)
{
    const struct
    {
        const char* name;
        BorderPtr (LookAndFeel::*get)() const;
        float width;
        Vec4 frame, fill;
    } cases[] = {
        {"default", &LookAndFeel::GetDefaultBorder, 1, {1, 1, 1, 0.25f}, {0.1f, 0.1f, 0.1f, 0.9f}},
        {"empty", &LookAndFeel::GetEmptyBorder, 0, {0, 0, 0, 0}, {0, 0, 0, 0}},
        {"small", &LookAndFeel::GetSmallBorder, 1, {1, 1, 1, 0.15f}, {0, 0, 0, 0}},
        {"button", &LookAndFeel::GetButtonBorder, 1, {1, 1, 1, 0.2f}, {0.2f, 0.2f, 0.2f, 0.9f}},
        {"tooltip", &LookAndFeel::GetTooltipBorder, 1, {1, 1, 1, 0.2f}, {0, 0, 0, 0.35f}},
        {"window", &LookAndFeel::GetWindowBorder, 1, {1, 1, 1, 0.25f}, {0.1f, 0.1f, 0.1f, 0.95f}},
        {"window title",
         &LookAndFeel::GetWindowTitleBorder,
         1,
         {1, 1, 1, 0.25f},
         {0.2f, 0.25f, 0.35f, 0.95f}},
        {"text box", &LookAndFeel::GetTextBoxBorder, 1, {1, 1, 1, 0.4f}, {0, 0, 0, 0.5f}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        const BorderPtr border = (LookAndFeel::GetDefault().get()->*c.get)();
        const auto* simple = dynamic_cast<const SimpleBorder*>(border.get());
        ASSERT_TRUE(simple);
        EXPECT_EQ(c.width, simple->GetWidth());
        EXPECT_EQ(c.frame, simple->GetFrameColor());
        EXPECT_EQ(c.fill, simple->GetFillColor());
        EXPECT_EQ(border.get(), (LookAndFeel::GetDefault().get()->*c.get)().get())
            << "all share it";
    }
}

TEST(Border, ItsSizesAreSumsOfItsMargins)
{
    class Uneven : public gui::Border
    {
    public:
        float MarginLeft() const override { return 1; }
        float MarginRight() const override { return 2; }
        float MarginTop() const override { return 4; }
        float MarginBottom() const override { return 8; }
        void Draw(Vec2) const override {}
    };
    const Uneven border;
    EXPECT_EQ(Vec2(1, 4), border.GetTopLeftSize());
    EXPECT_EQ(Vec2(2, 8), border.GetBottomRightSize());
    EXPECT_EQ(Vec2(3, 12), border.GetSize());
}
