#include "gui/Layout.h"

#include "gui/Border.h"
#include "gui/Component.h"

#include <gtest/gtest.h>

#include <limits>

using gui::BorderLayout;
using gui::Component;
using gui::ComponentPtr;
using gui::Layout;
using gui::LayoutPtr;
using gui::ListLayout;
using math::Vec2;

namespace
{
const float Infinity = std::numeric_limits<float>::infinity();

ComponentPtr Child(float w, float h)
{
    const ComponentPtr child = QUIB_NEW Component;
    child->SetInnerSize(w, h);
    return child;
}

ComponentPtr List(int flags, float spacing = 0)
{
    return QUIB_NEW Component(QUIB_NEW ListLayout(flags, spacing));
}

ComponentPtr Add(const ComponentPtr& owner, float w, float h)
{
    const ComponentPtr child = Child(w, h);
    owner->AddComponent(child);
    return child;
}

class CountingLayout : public Layout
{
public:
    explicit CountingLayout(const LayoutPtr& layout)
        : m_layout(layout)
    {
    }
    void Organize(Component& component, const std::vector<ComponentPtr>& children) override
    {
        ++count;
        m_layout->Organize(component, children);
    }
    int count = 0;

private:
    LayoutPtr m_layout;
};

class CallCounter : public util::Pointee
{
public:
    void Count() { ++count; }
    int count = 0;
};
}

TEST(ListLayout, PlacesOneBelowTheOtherWithSpacingBetween)
{
    const ComponentPtr list = List(ListLayout::Vertical, 5);
    const ComponentPtr a = Add(list, 10, 20), b = Add(list, 30, 8), c = Add(list, 7, 7);
    EXPECT_EQ(Vec2(0, 0), a->GetOuterPos());
    EXPECT_EQ(Vec2(0, 25), b->GetOuterPos());
    EXPECT_EQ(Vec2(0, 38), c->GetOuterPos());
    EXPECT_EQ(Vec2(30, 45), list->GetInnerSize()) << "no spacing after the last";
}

TEST(ListLayout, PlacesOneBesideTheOther)
{
    const ComponentPtr list = List(ListLayout::Horizontal, 5);
    Add(list, 10, 20);
    const ComponentPtr b = Add(list, 30, 8);
    EXPECT_EQ(Vec2(15, 0), b->GetOuterPos());
    EXPECT_EQ(Vec2(45, 20), list->GetInnerSize());
}

TEST(ListLayout, CountsTheBordersOfItsChildren)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr a = Add(list, 10, 20);
    a->SetBorder(QUIB_NEW gui::SimpleBorder(3, math::Vec4(), math::Vec4()));
    const ComponentPtr b = Add(list, 10, 20);
    EXPECT_EQ(Vec2(0, 26), b->GetOuterPos());
    EXPECT_EQ(Vec2(16, 46), list->GetInnerSize());
}

TEST(ListLayout, StretchesAllToTheLargestAcross)
{
    const ComponentPtr list = List(ListLayout::Vertical | ListLayout::Stretch);
    const ComponentPtr a = Add(list, 10, 20);
    a->SetBorder(QUIB_NEW gui::SimpleBorder(3, math::Vec4(), math::Vec4()));
    Add(list, 30, 8);
    EXPECT_EQ(Vec2(30, 26), a->GetOuterSize()) << "the border is part of it";
    EXPECT_EQ(Vec2(24, 20), a->GetInnerSize());
}

TEST(ListLayout, AlignsToTheFarSideAcross)
{
    const ComponentPtr list = List(ListLayout::Vertical | ListLayout::AlignFar);
    const ComponentPtr a = Add(list, 10, 20), b = Add(list, 30, 8);
    EXPECT_EQ(Vec2(20, 0), a->GetOuterPos());
    EXPECT_EQ(Vec2(0, 20), b->GetOuterPos());

    const ComponentPtr row = List(ListLayout::Horizontal | ListLayout::AlignFar);
    const ComponentPtr c = Add(row, 10, 20), d = Add(row, 30, 8);
    EXPECT_EQ(Vec2(0, 0), c->GetOuterPos());
    EXPECT_EQ(Vec2(10, 12), d->GetOuterPos());
}

TEST(ListLayout, GrowsWithItsChildrenAndDoesNotShrink)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr a = Add(list, 10, 20);
    Add(list, 5, 5);
    a->SetInnerSize(50, 30);
    EXPECT_EQ(Vec2(50, 35), list->GetInnerSize());
    a->SetInnerSize(1, 1);
    EXPECT_EQ(Vec2(50, 35), list->GetInnerSize());
    list->RemoveComponent(a);
    EXPECT_EQ(Vec2(50, 35), list->GetInnerSize());
}

TEST(ListLayout, WithoutChildrenItHasNoSize)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr a = Add(list, 10, 20);
    list->RemoveComponent(a);
    EXPECT_EQ(Vec2(0, 0), list->GetInnerSize());
}

TEST(ListLayout, LeavesOutWhatIsPlacedFreely)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr freely = Child(100, 100);
    freely->SetFreePlacement(true);
    freely->SetOuterPos(7, 8);
    list->AddComponent(freely);
    EXPECT_EQ(Vec2(0, 0), list->GetInnerSize());
    const ComponentPtr a = Add(list, 10, 20);
    EXPECT_EQ(Vec2(7, 8), freely->GetOuterPos());
    EXPECT_EQ(Vec2(0, 0), a->GetOuterPos());
    EXPECT_EQ(Vec2(10, 20), list->GetInnerSize());
}

TEST(ListLayout, ItsMaximumAcrossLimitsItsChildren)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    list->SetMaxSize(Vec2(40, 10));
    const ComponentPtr a = Add(list, 100, 100);
    EXPECT_EQ(Vec2(40, 100), a->GetInnerSize());
    EXPECT_EQ(Vec2(40, Infinity), a->GetMaxSize()) << "along the list there is no limit";
    const ComponentPtr b = Child(30, 5);
    b->SetMaxSize(Vec2(35, 50));
    list->AddComponent(b);
    EXPECT_EQ(Vec2(35, 50), b->GetMaxSize()) << "its own is less";
    EXPECT_EQ(Vec2(40, 105), list->GetInnerSize()) << "its content is not clipped";
}

TEST(ListLayout, AnInfiniteChildLeavesItsSizeAlone)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    Add(list, 10, 20);
    const ComponentPtr b = Add(list, Infinity, 20);
    EXPECT_EQ(Vec2(0, 20), b->GetOuterPos());
    EXPECT_EQ(Vec2(10, 20), list->GetInnerSize());
}

TEST(ListLayout, TakesChildrenInTheOrderOfAdditionWhateverTheirPriority)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr a = Add(list, 10, 10), b = Add(list, 10, 10);
    a->SetPriority(60);
    list->Reorganize();
    EXPECT_EQ((std::vector<ComponentPtr>{a, b}), list->GetComponents());
    EXPECT_EQ(Vec2(0, 10), b->GetOuterPos());
}

TEST(ListLayout, GrowthReachesTheListsAround)
{
    const ComponentPtr outer = List(ListLayout::Horizontal), inner = List(ListLayout::Vertical);
    outer->AddComponent(inner);
    const ComponentPtr beside = Add(outer, 5, 5);
    Add(inner, 10, 20);
    Add(inner, 30, 20);
    EXPECT_EQ(Vec2(30, 0), beside->GetOuterPos());
    EXPECT_EQ(Vec2(35, 40), outer->GetInnerSize());
}

TEST(ListLayout, NestedListsComeToRest)
{
    const util::SharedPtr<CountingLayout> counting =
        QUIB_NEW CountingLayout(QUIB_NEW ListLayout(ListLayout::Vertical | ListLayout::Stretch));
    const ComponentPtr outer = QUIB_NEW Component(counting);
    const ComponentPtr inner =
        List(ListLayout::Vertical | ListLayout::Stretch | ListLayout::AlignFar);
    outer->AddComponent(inner);
    Add(outer, 50, 5);
    const ComponentPtr a = Add(inner, 10, 20);
    counting->count = 0;
    a->SetInnerSize(70, 30);
    EXPECT_EQ(Vec2(70, 35), outer->GetInnerSize());
    EXPECT_LE(counting->count, 3);
    counting->count = 0;
    outer->Reorganize();
    EXPECT_EQ(1, counting->count) << "nothing changes any more";
}

TEST(ListLayout, ChildrenThatItMovesTellNobody)
{
    const ComponentPtr list = List(ListLayout::Vertical);
    const ComponentPtr a = Add(list, 10, 20), b = Add(list, 10, 20);
    const util::SharedPtr<CallCounter> calls = QUIB_NEW CallCounter;
    b->AddFormChangeCallback(util::MakeCallback(&CallCounter::Count, calls.get()));
    a->SetInnerSize(10, 50);
    EXPECT_EQ(Vec2(0, 50), b->GetOuterPos());
    EXPECT_EQ(0, calls->count);
    b->SetInnerSize(10, 21);
    EXPECT_EQ(1, calls->count) << "afterwards it speaks again";
    EXPECT_EQ(Vec2(10, 71), list->GetInnerSize());
}

TEST(BorderLayout, PutsTheFirstAtTheStartAndPacksTheOthersAgainstTheEnd)
{
    const ComponentPtr row = QUIB_NEW Component(QUIB_NEW BorderLayout(0));
    row->SetInnerSize(100, 5);
    const ComponentPtr a = Add(row, 10, 10), b = Add(row, 20, 30), c = Add(row, 5, 5);
    EXPECT_EQ(Vec2(0, 0), a->GetOuterPos());
    EXPECT_EQ(Vec2(75, 0), b->GetOuterPos());
    EXPECT_EQ(Vec2(95, 0), c->GetOuterPos());
    EXPECT_EQ(Vec2(100, 30), row->GetInnerSize());
    row->SetInnerSize(200, 30);
    EXPECT_EQ(Vec2(195, 0), c->GetOuterPos());
}

TEST(BorderLayout, GrowsToTheSumOfItsChildren)
{
    const ComponentPtr column = QUIB_NEW Component(QUIB_NEW BorderLayout(1));
    column->SetInnerSize(1, 25);
    const ComponentPtr a = Add(column, 10, 10), b = Add(column, 20, 30);
    EXPECT_EQ(Vec2(0, 0), a->GetOuterPos());
    EXPECT_EQ(Vec2(0, 10), b->GetOuterPos());
    EXPECT_EQ(Vec2(20, 40), column->GetInnerSize());
}

TEST(BorderLayout, AloneTheFirstStaysAtTheStart)
{
    const ComponentPtr row = QUIB_NEW Component(QUIB_NEW BorderLayout(0));
    row->SetInnerSize(100, 5);
    const ComponentPtr a = Child(10, 10);
    a->SetOuterPos(30, 30);
    row->AddComponent(a);
    EXPECT_EQ(Vec2(0, 0), a->GetOuterPos());
}

TEST(BorderLayout, WithoutChildrenItKeepsItsSize)
{
    const ComponentPtr row = QUIB_NEW Component(QUIB_NEW BorderLayout(0));
    row->SetInnerSize(100, 5);
    row->RemoveComponent(Add(row, 10, 10));
    EXPECT_EQ(Vec2(100, 10), row->GetInnerSize());
}

TEST(BorderLayout, ASizeThatIsNoNumberEndsInNoHang)
{
    const ComponentPtr row = QUIB_NEW Component(QUIB_NEW BorderLayout(0));
    row->SetInnerSize(100, 5);
    Add(row, std::numeric_limits<float>::quiet_NaN(), 10);
    EXPECT_EQ(Vec2(100, 5), row->GetInnerSize());
}

TEST(BorderLayout, ChildrenThatItMovesTellNobody)
{
    const ComponentPtr row = QUIB_NEW Component(QUIB_NEW BorderLayout(0));
    Add(row, 10, 10);
    const ComponentPtr b = Add(row, 10, 10);
    const util::SharedPtr<CallCounter> calls = QUIB_NEW CallCounter;
    b->AddFormChangeCallback(util::MakeCallback(&CallCounter::Count, calls.get()));
    row->SetInnerSize(100, 10);
    EXPECT_EQ(Vec2(90, 0), b->GetOuterPos());
    EXPECT_EQ(0, calls->count);
}
