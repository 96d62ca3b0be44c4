// Positions, sizes and coordinates of components, and who hears of their changes.
#include "gui/GUIFixture.h"

#include "WhatOf.h"
#include "gui/Border.h"
#include "gui/LookAndFeel.h"

#include <limits>

using gui::Component;
using gui::ComponentPtr;
using gui::ListLayout;
using gui::Notes;
using gui::NotingComponent;
using gui::NotingPtr;
using math::BoundingBox;
using math::Vec2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

class UnevenBorder : public gui::Border
{
public:
    float MarginLeft() const override { return 1; }
    float MarginRight() const override { return 2; }
    float MarginTop() const override { return 4; }
    float MarginBottom() const override { return 8; }
    void Draw(Vec2) const override {}
};

class ComponentFormTest : public gui::GUIFixture
{
protected:
    NotingPtr Make(const std::string& name) { return QUIB_NEW NotingComponent(name, &notes); }
    NotingPtr Add(const std::string& name)
    {
        const NotingPtr child = Make(name);
        owner->AddComponent(child);
        notes.clear();
        return child;
    }
    Notes TakeNotes()
    {
        Notes taken;
        taken.swap(notes);
        return taken;
    }

    Notes notes;
    NotingPtr owner = Make("owner");
};

class CallNoter : public util::Pointee
{
public:
    CallNoter(Notes* notes)
        : m_notes(notes)
    {
    }
    void Note() { m_notes->push_back("callback"); }

private:
    Notes* m_notes;
};
}

TEST_F(ComponentFormTest, StartsWithoutBorderAndUnlimited)
{
    const ComponentPtr component = QUIB_NEW Component;
    EXPECT_EQ(gui::LookAndFeel::GetDefault()->GetEmptyBorder(), component->GetBorder());
    EXPECT_EQ(Vec2(0, 0), component->GetMinSize());
    EXPECT_EQ(Vec2(Infinity, Infinity), component->GetMaxSize());
    EXPECT_FALSE(component->IsFreelyPlaced());
    EXPECT_FALSE(component->GetLayout());
    EXPECT_FALSE(component->IsMouseOverOuter());
    EXPECT_FALSE(component->GetTooltip());
}

TEST_F(ComponentFormTest, ABorderSurroundsTheInnerArea)
{
    const ComponentPtr component = QUIB_NEW Component;
    component->SetOuterPos(10, 20);
    component->SetInnerSize(math::Vec2u(30, 40));
    component->SetBorder(QUIB_NEW UnevenBorder);
    EXPECT_EQ(Vec2(1, 4), component->GetInnerOffset());
    EXPECT_EQ(Vec2(11, 24), component->GetInnerPos());
    EXPECT_EQ(Vec2(30, 40), component->GetInnerSize());
    EXPECT_EQ(Vec2(33, 52), component->GetOuterSize());
    EXPECT_EQ(BoundingBox(Vec2(10, 20), Vec2(43, 72)), component->GetOuterBB());
    EXPECT_EQ(BoundingBox(Vec2(-1, -4), Vec2(32, 48)), component->GetOuterBBLocal());
    EXPECT_EQ(BoundingBox(Vec2(0, 0), Vec2(30, 40)), component->GetInnerBBLocal());
    component->SetOuterSize(Vec2(33, 42));
    EXPECT_EQ(Vec2(30, 30), component->GetInnerSize());
}

TEST_F(ComponentFormTest, NoBorderIsRefusedAndTheOldOneStays)
{
    const ComponentPtr component = QUIB_NEW Component;
    EXPECT_NE("", test::WhatOf<BadCoderException>([&] { component->SetBorder(nullptr); }));
    EXPECT_TRUE(component->GetBorder());
}

TEST_F(ComponentFormTest, TheMaximumLimitsTheSizeAsItIsAndNoLaterOne)
{
    const ComponentPtr component = QUIB_NEW Component;
    component->SetInnerSize(100, 10);
    component->SetMaxSize(Vec2(50, 50));
    EXPECT_EQ(Vec2(50, 10), component->GetInnerSize());
    // Deliberate: layouts set sizes, and see to the maximum themselves.
    component->SetInnerSize(80, 80);
    EXPECT_EQ(Vec2(80, 80), component->GetInnerSize());
    component->SetMaxSize(Vec2(50, 50));
    EXPECT_EQ(Vec2(80, 80), component->GetInnerSize()) << "it is the same maximum";
}

TEST_F(ComponentFormTest, ContentLargerThanTheMaximumIsLeftAsItIs)
{
    const ComponentPtr component = QUIB_NEW Component, child = QUIB_NEW Component;
    child->SetInnerSize(100, 100);
    component->AddComponent(child);
    component->SetMaxSize(Vec2(10, 10));
    EXPECT_EQ(Vec2(100, 100), child->GetInnerSize());
    EXPECT_EQ(Vec2(Infinity, Infinity), child->GetMaxSize());
}

TEST_F(ComponentFormTest, TheMinimumIsOnlyStored)
{
    owner->SetMinSize(Vec2(50, 60));
    EXPECT_EQ(Vec2(50, 60), owner->GetMinSize());
    EXPECT_EQ(Vec2(0, 0), owner->GetInnerSize());
    EXPECT_EQ(Notes(), TakeNotes());
}

TEST_F(ComponentFormTest, AChangeIsToldToTheChildrenThenTheOwnerThenTheCallbacks)
{
    const NotingPtr middle = Add("middle");
    middle->AddComponent(Make("a"));
    middle->AddComponent(Make("b"));
    const util::SharedPtr<CallNoter> noter = QUIB_NEW CallNoter(&notes);
    middle->AddFormChangeCallback(util::MakeCallback(&CallNoter::Note, noter.get()));
    notes.clear();
    const Notes expected{"middle form", "b owner's", "a owner's", "owner child's", "callback"};
    middle->SetInnerSize(10, 10);
    EXPECT_EQ(expected, TakeNotes());
    middle->SetOuterPos(1, 1);
    EXPECT_EQ(expected, TakeNotes());
    middle->SetBorder(QUIB_NEW UnevenBorder);
    EXPECT_EQ(expected, TakeNotes());
    middle->SetInnerSize(10, 10);
    middle->SetOuterPos(1, 1);
    EXPECT_EQ(Notes(), TakeNotes()) << "nothing has changed";
}

TEST_F(ComponentFormTest, WithNotificationsOffItOrganizesItselfAndTellsNobody)
{
    const NotingPtr middle = Add("middle");
    middle->AddComponent(Make("a"));
    const util::SharedPtr<CallNoter> noter = QUIB_NEW CallNoter(&notes);
    middle->AddFormChangeCallback(util::MakeCallback(&CallNoter::Note, noter.get()));
    notes.clear();
    middle->SetFormNotifications(false);
    middle->m_reorganized = 0;
    middle->SetInnerSize(10, 10);
    EXPECT_EQ(Notes{"middle form"}, TakeNotes());
    EXPECT_EQ(1, middle->m_reorganized);
}

TEST_F(ComponentFormTest, IsOrganizedAnewWhenAChildComesChangesOrGoes)
{
    const NotingPtr a = Add("a");
    EXPECT_EQ(1, owner->m_reorganized);
    a->SetInnerSize(10, 10);
    EXPECT_EQ(2, owner->m_reorganized);
    owner->RemoveComponent(a);
    EXPECT_EQ(3, owner->m_reorganized);
}

TEST_F(ComponentFormTest, AChildHearsOfItsNewOwnerBeforeTheLayoutPlacesIt)
{
    owner->SetInnerSize(30, 30);
    owner->SetLayout(ListLayout::Vertical);
    Add("a")->SetInnerSize(5, 5);
    const NotingPtr b = Make("b");
    owner->AddComponent(b);
    EXPECT_EQ(Vec2(0, 5), b->GetOuterPos());
    EXPECT_EQ("b owner's", notes.at(notes.size() - 2)) << "then it is moved";
}

TEST_F(ComponentFormTest, ANewLayoutIsInForceAtOnce)
{
    const NotingPtr a = Add("a"), b = Add("b");
    a->SetInnerSize(5, 5);
    b->SetInnerSize(5, 5);
    owner->SetLayout(ListLayout::Vertical);
    EXPECT_EQ(Vec2(0, 5), b->GetOuterPos());
    owner->SetLayout(QUIB_NEW ListLayout(ListLayout::Horizontal, 2));
    EXPECT_EQ(Vec2(7, 0), b->GetOuterPos());
}

TEST_F(ComponentFormTest, WithoutALayoutAnyMoreTheChildrenStandByPriority)
{
    owner->SetLayout(ListLayout::Vertical);
    const NotingPtr a = Add("a"), b = Add("b");
    a->SetPriority(60);
    EXPECT_EQ(a, owner->GetComponents()[0]);
    owner->SetLayout(gui::LayoutPtr());
    EXPECT_EQ(b, owner->GetComponents()[0]);
}

TEST_F(ComponentFormTest, TheOuterBoxFillsTheOwner)
{
    const NotingPtr child = Add("child");
    child->SetBorder(QUIB_NEW UnevenBorder);
    child->SetFillOwner(true);
    owner->SetInnerSize(100, 50);
    EXPECT_EQ(BoundingBox(Vec2(0, 0), Vec2(100, 50)), child->GetOuterBB());
    EXPECT_EQ(Vec2(97, 38), child->GetInnerSize());
}

TEST_F(ComponentFormTest, ADeepTreeIsFilledToItsLeaves)
{
    const NotingPtr a = Add("a"), b = Make("b");
    a->SetFillOwner(true);
    b->SetFillOwner(true);
    a->AddComponent(b);
    owner->SetInnerSize(100, 50);
    EXPECT_EQ(Vec2(100, 50), b->GetInnerSize());
}

TEST_F(ComponentFormTest, WithNotificationsOffItDoesNotFollowItsOwner)
{
    const NotingPtr child = Add("child");
    child->SetFillOwner(true);
    child->SetFormNotifications(false);
    owner->SetInnerSize(100, 50);
    EXPECT_EQ(Vec2(0, 0), child->GetInnerSize());
}

TEST_F(ComponentFormTest, CoordinatesGoThroughAllBordersAbove)
{
    owner->SetOuterPos(100, 200);
    owner->SetBorder(QUIB_NEW UnevenBorder);
    const NotingPtr child = Add("child");
    child->SetOuterPos(10, 20);
    child->SetBorder(QUIB_NEW UnevenBorder);
    EXPECT_EQ(Vec2(112, 228), child->LocalToGUI(Vec2(0, 0)));
    EXPECT_EQ(Vec2(3, 4), child->GUIToLocal(Vec2(115, 232)));
    EXPECT_EQ(Vec2(3, 4), TransformCoordinate(child->CalcWorldToLocalTransform(), Vec2(115, 232)));
    MoveMouse(115, 232);
    EXPECT_EQ(Vec2(3, 4), child->GetMousePosLocal());
}

TEST_F(ComponentFormTest, EventsAreForwardedFromTheLastChildToTheFirst)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c");
    std::vector<Component*> called;
    owner->ForwardEvent([&](Component* child) { called.push_back(child); });
    EXPECT_EQ((std::vector<Component*>{c.get(), b.get(), a.get()}), called);
}

TEST_F(ComponentFormTest, AChildThatRemovesASiblingIsNotCalledTwice)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c"), d = Add("d");
    std::vector<Component*> called;
    owner->ForwardEvent(
        [&](Component* child)
        {
            called.push_back(child);
            if (child == c.get())
                owner->RemoveComponent(a);
            if (child == d.get())
                owner->AddComponent(Make("new"));
        });
    EXPECT_EQ((std::vector<Component*>{d.get(), c.get(), b.get()}), called)
        << "neither those that left nor those that came";
}

TEST_F(ComponentFormTest, AFailureInAChildEndsTheForwardingAndTheNextOneIsWhole)
{
    const NotingPtr a = Add("a"), b = Add("b");
    const auto fail = [](Component*) { throw std::runtime_error("x"); };
    EXPECT_EQ("x", test::WhatOf<std::runtime_error>([&] { owner->ForwardEvent(fail); }));
    int called = 0;
    owner->ForwardEvent([&](Component*) { ++called; });
    EXPECT_EQ(2, called);
}
