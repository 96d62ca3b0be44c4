// When and where a component's tooltip appears.
#include "gui/GUIFixture.h"

#include <limits>

using gui::Component;
using gui::ComponentPtr;
using gui::ListLayout;
using math::Vec2;
using math::Vec4;

namespace
{
class TooltipTest : public gui::GUIFixture
{
protected:
    void SetUp() override
    {
        GUIFixture::SetUp();
        tip = MakeTip();
        tip->SetColor(Vec4(1, 0.5f, 0.25f, 1));
        a = Place(Main(), 10, 10, 50, 20);
        a->SetTooltip(tip);
    }

    static ComponentPtr MakeTip()
    {
        const ComponentPtr made = QUIB_NEW Component(QUIB_NEW ListLayout(ListLayout::Vertical));
        const ComponentPtr line = QUIB_NEW Component;
        line->SetInnerSize(60, 12);
        made->AddComponent(line);
        return made;
    }
    bool IsShown() { return gui->GetTooltipLayer()->HasComponent(tip); }
    void UpdateAt(double seconds)
    {
        SetSeconds(seconds);
        gui->Update(0);
    }

    ComponentPtr a, tip;
};
}

TEST_F(TooltipTest, AppearsAfterADelayAndFadesIn)
{
    MoveMouse(20, 20); // at 100 s
    UpdateAt(100.399);
    EXPECT_FALSE(IsShown());
    UpdateAt(100.401);
    ASSERT_TRUE(IsShown());
    EXPECT_NEAR(0.005f, tip->GetColor().w, 1e-4f);
    UpdateAt(100.5);
    EXPECT_FLOAT_EQ(0.5f, tip->GetColor().w);
    UpdateAt(100.6);
    EXPECT_FLOAT_EQ(1, tip->GetColor().w);
    UpdateAt(105);
    EXPECT_EQ(Vec4(1, 0.5f, 0.25f, 1), tip->GetColor()) << "only the alpha is the tooltip's own";
}

TEST_F(TooltipTest, FadesOutAfterTheMouseHasLeft)
{
    MoveMouse(20, 20);
    UpdateAt(101);
    SetSeconds(102);
    MoveMouse(5, 5);
    UpdateAt(102);
    EXPECT_FLOAT_EQ(1, tip->GetColor().w);
    UpdateAt(102.1);
    ASSERT_TRUE(IsShown());
    EXPECT_FLOAT_EQ(0.5f, tip->GetColor().w);
    UpdateAt(102.2);
    EXPECT_FALSE(IsShown());
}

TEST_F(TooltipTest, LiesBelowTheMouseAndTakesTheSizeThatItNeeds)
{
    MoveMouse(20, 25);
    tip->SetInnerSize(200, 200);
    UpdateAt(101);
    EXPECT_EQ(Vec2(28, 37), tip->GetOuterPos());
    EXPECT_EQ(Vec2(60, 12), tip->GetInnerSize());
    EXPECT_EQ(Vec2(400 - 28, std::numeric_limits<float>::infinity()), tip->GetMaxSize());
    MoveMouse(30, 20);
    UpdateAt(102);
    EXPECT_EQ(Vec2(28, 37), tip->GetOuterPos()) << "it stays where it appeared";
}

TEST_F(TooltipTest, AtTheEdgeItHasNoRoomAndNoNegativeSize)
{
    a->SetTooltip(nullptr);
    const ComponentPtr b = Place(Main(), 380, 100, 20, 20);
    b->SetTooltip(tip);
    MoveMouse(398, 110);
    UpdateAt(101);
    ASSERT_TRUE(IsShown());
    EXPECT_EQ(0, tip->GetMaxSize().x);
    EXPECT_EQ(0, tip->GetInnerSize().x);
}

TEST_F(TooltipTest, AShortVisitShowsNone)
{
    MoveMouse(20, 20);
    UpdateAt(100.3);
    MoveMouse(5, 5);
    UpdateAt(100.5);
    UpdateAt(103);
    EXPECT_FALSE(IsShown());
}

TEST_F(TooltipTest, ComesAgain)
{
    MoveMouse(20, 20);
    UpdateAt(101);
    MoveMouse(5, 5);
    UpdateAt(102);
    ASSERT_FALSE(IsShown());
    MoveMouse(40, 20);
    UpdateAt(102.3);
    EXPECT_FALSE(IsShown());
    UpdateAt(102.5);
    EXPECT_TRUE(IsShown());
    EXPECT_EQ(Vec2(48, 32), tip->GetOuterPos());
    EXPECT_FLOAT_EQ(0.5f, tip->GetColor().w);
}

TEST_F(TooltipTest, AnotherTooltipReplacesTheOneThatShows)
{
    MoveMouse(20, 20);
    UpdateAt(101);
    const ComponentPtr other = MakeTip();
    a->SetTooltip(other);
    EXPECT_FALSE(IsShown());
    EXPECT_EQ(other, a->GetTooltip());
    gui->Update(0);
    EXPECT_TRUE(gui->GetTooltipLayer()->HasComponent(other));
    a->SetTooltip(nullptr);
    EXPECT_TRUE(gui->GetTooltipLayer()->GetComponents().empty());
}

TEST_F(TooltipTest, GoesWithItsComponent)
{
    // A removed component gets no update in which its tooltip could fade.
    const ComponentPtr owner = Place(Main(), 100, 100, 50, 50);
    owner->AddComponent(a);
    MoveMouse(120, 120);
    UpdateAt(101);
    ASSERT_TRUE(IsShown());
    Main()->RemoveComponent(owner);
    EXPECT_FALSE(IsShown());
}

TEST_F(TooltipTest, IsNotInTheWayOfTheMouse)
{
    MoveMouse(20, 20);
    UpdateAt(101);
    MoveMouse(29, 30); // over the tooltip, and over the component behind it
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(tip->IsMouseOverOuter());
}
