#include "input/InputDelegator.h"

#include "input/Joystick.h"
#include "input/Key.h"
#include "input/ListenersForTest.h"

#include <gtest/gtest.h>

using namespace input;

namespace
{
using Notes = std::vector<std::string>;
using Weak = util::WeakPtr<InputListener>;

class InputDelegatorTest : public testing::Test
{
protected:
    util::SharedPtr<NotingListener> Add(int priority, const std::string& name)
    {
        util::SharedPtr<NotingListener> listener = QUIB_NEW NotingListener(priority, name, &notes);
        delegator->AddListener(Weak(listener.get()));
        return listener;
    }
    Notes Fire()
    {
        notes.clear();
        delegator->OnKeyEvent(KeyEvent('a', 0, true, math::Vec2()));
        return notes;
    }

    Notes notes;
    util::SharedPtr<InputDelegator> delegator = QUIB_NEW InputDelegator(50);
};
}

TEST_F(InputDelegatorTest, TheHighestPriorityGetsEachEventFirst)
{
    const auto low = Add(10, "low"), high = Add(90, "high"), middle = Add(50, "middle");
    EXPECT_EQ((Notes{"high", "middle", "low"}), Fire());
}

TEST_F(InputDelegatorTest, AmongEqualPrioritiesTheOneAddedLaterGetsEachEventFirst)
{
    const auto a = Add(50, "first"), b = Add(50, "second"), c = Add(50, "third");
    EXPECT_EQ((Notes{"third", "second", "first"}), Fire());
}

TEST_F(InputDelegatorTest, AChangedPriorityMovesTheListener)
{
    const auto a = Add(50, "a"), b = Add(40, "b");
    EXPECT_EQ((Notes{"a", "b"}), Fire());
    b->SetPriority(60);
    EXPECT_EQ((Notes{"b", "a"}), Fire());
}

TEST_F(InputDelegatorTest, AHandledEventStillReachesTheRest)
{
    const auto low = Add(10, "low"), high = Add(90, "high");
    high->m_onKey = [](const KeyEvent& event) { event.SetHandled(true); };
    bool wasHandled = false;
    low->m_onKey = [&](const KeyEvent& event) { wasHandled = event.IsHandled(); };
    EXPECT_EQ((Notes{"high", "low"}), Fire());
    EXPECT_TRUE(wasHandled) << "the flag tells the later listener";
}

TEST_F(InputDelegatorTest, AListenerThatRemovesItselfDuringDeliveryDoesNotDisturbTheRest)
{
    const auto a = Add(90, "a"), b = Add(50, "b"), c = Add(10, "c");
    b->m_onKey = [&](const KeyEvent&) { delegator->RemoveListener(Weak(b.get())); };
    EXPECT_EQ((Notes{"a", "b", "c"}), Fire());
    EXPECT_EQ((Notes{"a", "c"}), Fire());
}

TEST_F(InputDelegatorTest, AListenerAddedDuringDeliveryGetsTheNextEvent)
{
    const auto a = Add(90, "a");
    util::SharedPtr<NotingListener> late;
    a->m_onKey = [&](const KeyEvent&)
    {
        if (!late)
            late = Add(10, "late");
    };
    EXPECT_EQ((Notes{"a"}), Fire());
    EXPECT_EQ((Notes{"a", "late"}), Fire());
}

TEST_F(InputDelegatorTest, ADestroyedListenerIsDroppedAtTheNextEvent)
{
    auto a = Add(90, "a");
    const auto b = Add(10, "b");
    const util::WeakPtr<NotingListener> gone(a);
    a.Reset(nullptr);
    EXPECT_TRUE(gone.IsNull()) << "the delegator keeps nobody alive";
    EXPECT_EQ((Notes{"b"}), Fire());
    EXPECT_EQ((Notes{"b"}), Fire());
}

TEST_F(InputDelegatorTest, TheDeadDoNotDisturbTheOrderOfThoseAddedLater)
{
    std::vector<util::SharedPtr<NotingListener>> doomed;
    for (int priority : {90, 60, 50, 50, 40, 10, -5})
        doomed.push_back(Add(priority, "doomed"));
    const auto low = Add(10, "low"), middle = Add(50, "middle"), negative = Add(-3, "negative");
    doomed.clear();
    const auto high = Add(90, "high"), latest = Add(50, "latest"), last = Add(-4, "last");
    EXPECT_EQ((Notes{"high", "latest", "middle", "low", "negative", "last"}), Fire());
    low->SetPriority(70);
    EXPECT_EQ((Notes{"high", "low", "latest", "middle", "negative", "last"}), Fire());
}

TEST_F(InputDelegatorTest, AListenerOfTwoDelegatorsHangsInBoth)
{
    util::SharedPtr<InputDelegator> other = QUIB_NEW InputDelegator(50);
    const auto a = Add(50, "a"), b = Add(50, "b");
    other->AddListener(Weak(a.get()));
    delegator->AddListener(Weak(a.get()));
    EXPECT_EQ((Notes{"a", "b"}), Fire());
    other->RemoveListener(Weak(a.get()));
    EXPECT_EQ((Notes{"a", "b"}), Fire());
    b->SetPriority(60);
    a->SetPriority(70);
    EXPECT_EQ((Notes{"a", "b"}), Fire());
}

TEST_F(InputDelegatorTest, AListenerDestroyedDuringDeliveryByAnotherIsLeftOut)
{
    auto victim = Add(10, "victim");
    const auto a = Add(90, "a");
    a->m_onKey = [&](const KeyEvent&) { victim.Reset(nullptr); };
    EXPECT_EQ((Notes{"a"}), Fire());
}

TEST_F(InputDelegatorTest, OneAddedTwiceGetsEachEventOnceAndCountsAsTheLatest)
{
    const auto a = Add(50, "a"), b = Add(50, "b");
    delegator->AddListener(Weak(a.get()));
    EXPECT_EQ((Notes{"a", "b"}), Fire());
}

TEST_F(InputDelegatorTest, OneRemovedNoLongerMovesTheRest)
{
    const auto a = Add(50, "a"), b = Add(50, "b");
    delegator->RemoveListener(Weak(a.get()));
    a->SetPriority(90);
    EXPECT_EQ((Notes{"b"}), Fire());
    delegator->RemoveListener(Weak(a.get())); // is not there, which is fine
}

TEST_F(InputDelegatorTest, AddingNobodyIsAProgrammingError)
{
    EXPECT_THROW(delegator->AddListener(Weak()), BadCoderException);
}

TEST_F(InputDelegatorTest, HandsOnEveryKindOfEvent)
{
    const auto a = Add(50, "a");
    delegator->OnMouseMove(MouseEvent(0, math::Vec2(), math::Vec2()));
    SDL_Event quit = {};
    quit.type = SDL_QUIT;
    delegator->OnOtherEvent(InputEvent(quit));
    delegator->OnKeyEvent(KeyEvent('a', 0, true, math::Vec2()));
    EXPECT_EQ((Notes{"a move", "a other 12", "a"}), notes);
}

TEST_F(InputDelegatorTest, DelegatorsNest)
{
    util::SharedPtr<InputDelegator> outer = QUIB_NEW InputDelegator(50);
    outer->AddListener(Weak(delegator.get()));
    const auto a = Add(50, "a");
    outer->OnKeyEvent(KeyEvent('a', 0, true, math::Vec2()));
    EXPECT_EQ((Notes{"a"}), notes);
}

TEST_F(InputDelegatorTest, AFirstListenerStaysInFrontOfItsEqualsAndBehindTheHigher)
{
    const auto early = Add(50, "early");
    const util::SharedPtr<NotingListener> root = QUIB_NEW NotingListener(50, "root", &notes);
    delegator->AddFirstListener(Weak(root.get()));
    const auto late = Add(50, "late"), high = Add(51, "high");
    EXPECT_EQ((Notes{"high", "root", "late", "early"}), Fire());

    const util::SharedPtr<NotingListener> second = QUIB_NEW NotingListener(50, "second", &notes);
    delegator->AddFirstListener(Weak(second.get()));
    EXPECT_EQ((Notes{"high", "second", "root", "late", "early"}), Fire());
}

TEST_F(InputDelegatorTest, EveryKindOfEventIsHandedOn)
{
    const auto a = Add(50, "a"), b = Add(50, "b");
    const math::Vec2 o(0, 0);
    delegator->OnMouseMove(MouseEvent(0, o, o));
    delegator->OnOtherEvent(InputEvent(SDL_Event{}));
    delegator->OnDragBegin(DragEvent(o, o, o, MouseLeft));
    delegator->OnDrag(DragEvent(o, o, o, MouseLeft));
    delegator->OnDragEnd(DragEvent(o, o, o, MouseLeft));
    delegator->OnClick(ClickEvent(o, MouseLeft, 1));
    delegator->OnJoyAxisEvent(JoyAxisEvent(nullptr, 0));
    EXPECT_EQ((Notes{"b move", "a move", "b other 0", "a other 0", "b begin", "a begin", "b drag",
                     "a drag", "b end", "a end", "b click", "a click", "b axis", "a axis"}),
              notes);
}
