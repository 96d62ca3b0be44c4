// Which components the mouse is over, as gui::GUI finds it out.
#include "gui/GUIFixture.h"

#include "gui/Border.h"

using gui::Component;
using gui::ComponentPtr;
using gui::Notes;
using gui::NotingComponent;
using gui::NotingPtr;
using math::Vec2;

namespace
{
class MouseOverTest : public gui::GUIFixture
{
protected:
    NotingPtr Make(const std::string& name) { return QUIB_NEW NotingComponent(name, &notes); }
    Notes TakeNotes()
    {
        Notes taken;
        for (const std::string& note : notes)
            if (note.find("enter") != std::string::npos || note.find("leave") != std::string::npos)
                taken.push_back(note);
        notes.clear();
        return taken;
    }

    Notes notes;
};
}

TEST_F(MouseOverTest, EntersAndLeavesWithTheMouse)
{
    const NotingPtr a = Place(Make("a"), Main(), 10, 10, 20, 20);
    notes.clear();
    SetSeconds(101);
    MoveMouse(9, 15);
    EXPECT_FALSE(a->IsMouseOverOuter());
    MoveMouse(15, 15);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_DOUBLE_EQ(101, a->GetMouseChangeTime());
    SetSeconds(102);
    MoveMouse(16, 15);
    EXPECT_DOUBLE_EQ(101, a->GetMouseChangeTime()) << "it was there already";
    MoveMouse(31, 15);
    EXPECT_FALSE(a->IsMouseOverOuter());
    EXPECT_DOUBLE_EQ(102, a->GetMouseChangeTime());
    EXPECT_EQ((Notes{"a enter", "a leave"}), TakeNotes());
}

TEST_F(MouseOverTest, TheTimeOfTheLastChangeStartsWithTheComponent)
{
    SetSeconds(103);
    EXPECT_DOUBLE_EQ(103, Place(Main(), 0, 0, 1, 1)->GetMouseChangeTime());
}

TEST_F(MouseOverTest, OfTwoOverlappingChildrenOnlyTheLaterHasIt)
{
    const NotingPtr a = Place(Make("a"), Main(), 10, 10, 20, 20);
    const NotingPtr b = Place(Make("b"), Main(), 20, 10, 20, 20);
    notes.clear();
    MoveMouse(15, 15);
    EXPECT_TRUE(a->IsMouseOverOuter());
    MoveMouse(25, 15); // in both
    EXPECT_FALSE(a->IsMouseOverOuter());
    EXPECT_TRUE(b->IsMouseOverOuter());
    EXPECT_EQ((Notes{"a enter", "b enter", "a leave"}), TakeNotes()) << "from front to back";
    MoveMouse(35, 15);
    MoveMouse(15, 15);
    EXPECT_EQ((Notes{"b leave", "a enter"}), TakeNotes());
}

TEST_F(MouseOverTest, TheOneOfHigherPriorityIsInFront)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20), b = Place(Main(), 10, 10, 20, 20);
    a->SetPriority(60);
    MoveMouse(15, 15);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(b->IsMouseOverOuter());
}

TEST_F(MouseOverTest, AnOwnerHasItTogetherWithItsChild)
{
    const ComponentPtr owner = Place(Main(), 10, 10, 50, 50), child = Place(owner, 10, 10, 20, 20);
    MoveMouse(25, 25);
    EXPECT_TRUE(owner->IsMouseOverOuter());
    EXPECT_TRUE(child->IsMouseOverOuter());
    MoveMouse(15, 15);
    EXPECT_TRUE(owner->IsMouseOverOuter());
    EXPECT_FALSE(child->IsMouseOverOuter());
}

TEST_F(MouseOverTest, AChildHasItOutsideOfItsOwnerToo)
{
    const ComponentPtr behind = Place(Main(), 0, 0, 100, 100);
    const ComponentPtr owner = Place(Main(), 10, 10, 20, 20), child = Place(owner, 15, 0, 20, 20);
    MoveMouse(40, 20);
    EXPECT_TRUE(child->IsMouseOverOuter());
    EXPECT_FALSE(owner->IsMouseOverOuter());
    EXPECT_FALSE(behind->IsMouseOverOuter()) << "covered by the child";
}

TEST_F(MouseOverTest, WhatLiesInACoveredComponentIsCoveredToo)
{
    const ComponentPtr owner = Place(Main(), 10, 10, 50, 50), child = Place(owner, 10, 10, 20, 20);
    MoveMouse(25, 25);
    ASSERT_TRUE(child->IsMouseOverOuter());
    Place(Main(), 20, 20, 10, 10);
    MoveMouse(26, 25);
    EXPECT_FALSE(owner->IsMouseOverOuter());
    EXPECT_FALSE(child->IsMouseOverOuter());
}

TEST_F(MouseOverTest, AnUpdateSeesWhatOpensUnderAStillMouse)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20);
    MoveMouse(15, 15);
    const ComponentPtr b = Place(Main(), 10, 10, 20, 20);
    EXPECT_TRUE(a->IsMouseOverOuter());
    gui->Update(0);
    EXPECT_FALSE(a->IsMouseOverOuter());
    EXPECT_TRUE(b->IsMouseOverOuter());
    b->SetOuterPos(100, 100);
    gui->Update(0);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(b->IsMouseOverOuter());
}

TEST_F(MouseOverTest, GoesThroughATransparentComponentAndAllInIt)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20), b = Place(Main(), 10, 10, 20, 20);
    const ComponentPtr inB = Place(b, 0, 0, 20, 20);
    MoveMouse(15, 15);
    ASSERT_TRUE(inB->IsMouseOverOuter());
    b->SetMouseTransparent(true);
    EXPECT_FALSE(b->IsMouseOverOuter()) << "at once";
    EXPECT_FALSE(inB->IsMouseOverOuter());
    gui->Update(0);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(inB->IsMouseOverOuter());
    b->SetMouseTransparent(false);
    gui->Update(0);
    EXPECT_TRUE(inB->IsMouseOverOuter());
}

TEST_F(MouseOverTest, TheTooltipLayerLetsItThrough)
{
    EXPECT_TRUE(gui->GetTooltipLayer()->IsMouseTransparent());
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20);
    const ComponentPtr tip = Place(gui->GetTooltipLayer(), 10, 10, 20, 20);
    MoveMouse(15, 15);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(tip->IsMouseOverOuter());
}

TEST_F(MouseOverTest, ABorderIsOuterAndNotInner)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20);
    a->SetBorder(QUIB_NEW gui::SimpleBorder(4, math::Vec4(), math::Vec4()));
    MoveMouse(12, 20);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(a->IsMouseOverInner());
    EXPECT_EQ(Vec2(-2, 6), a->GetMousePosLocal());
    MoveMouse(14, 20);
    EXPECT_TRUE(a->IsMouseOverInner());
    MoveMouse(37, 20);
    EXPECT_TRUE(a->IsMouseOverOuter());
    EXPECT_FALSE(a->IsMouseOverInner());
    MoveMouse(39, 20);
    EXPECT_FALSE(a->IsMouseOverOuter());
}

TEST_F(MouseOverTest, InnerNeedsTheFlagToo)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20);
    Place(Main(), 10, 10, 20, 20);
    MoveMouse(15, 15);
    EXPECT_TRUE(a->GetInnerBBLocal().Contains(a->GetMousePosLocal()));
    EXPECT_FALSE(a->IsMouseOverInner());
}

TEST_F(MouseOverTest, AChildOfABorderedOwnerIsFoundWhereItIsDrawn)
{
    const ComponentPtr owner = Place(Main(), 10, 10, 50, 50);
    owner->SetBorder(QUIB_NEW gui::SimpleBorder(5, math::Vec4(), math::Vec4()));
    const ComponentPtr child = Place(owner, 0, 0, 10, 10);
    MoveMouse(14, 20);
    EXPECT_FALSE(child->IsMouseOverOuter());
    MoveMouse(16, 20);
    EXPECT_TRUE(child->IsMouseOverOuter());
    MoveMouse(24, 24);
    EXPECT_TRUE(child->IsMouseOverOuter());
}

TEST_F(MouseOverTest, FollowsTheScale)
{
    const ComponentPtr a = Place(Main(), 10, 10, 20, 20);
    Script("GUI.scale = 2.0");
    MoveMouse(59, 59);
    EXPECT_TRUE(a->IsMouseOverOuter());
    MoveMouse(15, 15);
    EXPECT_FALSE(a->IsMouseOverOuter());
}

TEST_F(MouseOverTest, WhatIsRemovedLosesIt)
{
    const NotingPtr owner = Place(Make("owner"), Main(), 10, 10, 20, 20);
    const NotingPtr child = Place(Make("child"), owner, 0, 0, 20, 20);
    MoveMouse(15, 15);
    TakeNotes();
    Main()->RemoveComponent(owner);
    EXPECT_FALSE(child->IsMouseOverOuter());
    EXPECT_EQ((Notes{"owner leave", "child leave"}), TakeNotes());
}

TEST_F(MouseOverTest, AComponentMayLeaveTheTreeWhenItIsEntered)
{
    const ComponentPtr behind = Place(Main(), 10, 10, 20, 20);
    NotingPtr a = Place(Make("a"), Main(), 10, 10, 20, 20);
    Place(a, 0, 0, 20, 20);
    a->m_onEvent = [&a]
    {
        // Nobody else holds it.
        NotingComponent* const leaving = a.get();
        a = nullptr;
        Main()->RemoveComponent(leaving);
    };
    MoveMouse(15, 15);
    gui->Update(0);
    EXPECT_TRUE(behind->IsMouseOverOuter());
    EXPECT_EQ(1u, Main()->GetComponents().size());
}
