#include "util/Callback.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <boost/bind.hpp>

#include <exception>
#include <list>
#include <memory>

using util::Callback;
using util::CallbackArg;
using util::CallbackArgSet;
using util::CallbackPtr;
using util::CallbackSet;
using util::MakeCallback;
using util::Pointee;
using util::SharedPtr;

namespace
{
struct Observer : Pointee
{
    void Note() { calls += "n"; }
    void NoteText(util::String text) { calls += text; }
    void NoteConstText(const util::String& text) { calls += text; }
    void NoteFlag(bool flag) { calls += flag ? "t" : "f"; }
    void NoteObject(SharedPtr<Observer> o) { calls += o->name; }
    void NoteFloat(float f) { value = f; }
    void Throw() { throw std::runtime_error("observer failed"); }
    void ThrowOddly() { throw 5; }

    std::string calls;
    std::string name = "observer";
    float value = 0;
};

CallbackPtr Make(const boost::function<void()>& f, Pointee* owner)
{
    return QUIB_NEW Callback(f, owner);
}

SharedPtr<CallbackArg<float>> MakeArg(const boost::function<void(float)>& f, Pointee* owner)
{
    return QUIB_NEW CallbackArg<float>(f, owner);
}
}

TEST(Callback, CallsItsFunctionWhileTheOwnerLives)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackPtr callback = MakeCallback(&Observer::Note, o.get());
    EXPECT_TRUE((*callback)());
    EXPECT_EQ("n", o->calls);
    EXPECT_EQ(1u, o->GetHandle()->GetRefCount()) << "a callback does not keep its owner";
}

TEST(Callback, OfADeadOwnerReturnsFalseAndDoesNotRun)
{
    int calls = 0;
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackPtr callback = Make([&] { ++calls; }, o.get());
    SharedPtr<CallbackArg<float>> withArgument = MakeArg([&](float) { ++calls; }, o.get());
    o = nullptr;
    EXPECT_FALSE((*callback)());
    EXPECT_FALSE((*withArgument)(1.0f));
    EXPECT_EQ(0, calls);
}

TEST(Callback, BindsOneArgumentByValue)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    util::String text = "early";
    CallbackPtr callback = MakeCallback(&Observer::NoteText, o.get(), text);
    text = "late";
    (*callback)();
    (*MakeCallback(&Observer::NoteConstText, o.get(), util::String("|")))();
    (*MakeCallback(&Observer::NoteFlag, o.get(), true))();

    SharedPtr<Observer> argument = QUIB_NEW Observer;
    argument->name = "held";
    CallbackPtr holds = MakeCallback(&Observer::NoteObject, o.get(), argument);
    argument = nullptr;
    (*holds)();
    EXPECT_EQ("early|theld", o->calls);
}

TEST(Callback, TakesAFloatWithAMemberThatTakesOne)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    SharedPtr<CallbackArg<float>> callback = MakeCallback(&Observer::NoteFloat, o.get());
    EXPECT_TRUE((*callback)(2.5f));
    EXPECT_EQ(2.5f, o->value);
}

TEST(Callback, FinishesItsBodyBeforeTheOwnerThatItReleasesGoes)
{
    static std::string s_order;
    struct Owner : Pointee
    {
        ~Owner() override { s_order += " deleted"; }
    };
    s_order.clear();
    SharedPtr<Owner> owner = QUIB_NEW Owner;
    CallbackPtr callback = Make(
        [&]
        {
            owner = nullptr;
            s_order += "body";
        },
        owner.get());
    EXPECT_TRUE((*callback)());
    EXPECT_EQ("body deleted", s_order);
}

TEST(CallbackSet, CallsInOrderOfAddition)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackSet set;
    for (const char* text : {"a", "b", "c"})
        set.Add(MakeCallback(&Observer::NoteText, o.get(), util::String(text)));
    set.CallAll();
    EXPECT_EQ("abc", o->calls);
}

TEST(CallbackSet, IgnoresANullCallback)
{
    CallbackSet set;
    set.Add(CallbackPtr());
    EXPECT_EQ(0u, set.size());
    EXPECT_NO_THROW(set.CallAll());
    set.Remove(CallbackPtr());

    CallbackArgSet<float> argSet;
    argSet.Add(nullptr);
    EXPECT_EQ(0u, argSet.size());
    EXPECT_NO_THROW(argSet.CallAll(1));
}

TEST(CallbackSet, RemovesTheFirstEntryOfTheSameObject)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackPtr twice = MakeCallback(&Observer::NoteText, o.get(), util::String("2"));
    CallbackSet set;
    set.Add(twice);
    set.Add(MakeCallback(&Observer::NoteText, o.get(), util::String("x")));
    set.Add(twice);
    set.Remove(twice);
    set.CallAll();
    EXPECT_EQ("x2", o->calls);
    set.Remove(MakeCallback(&Observer::Note, o.get())); // not in it
    EXPECT_EQ(2u, set.size());
}

TEST(CallbackSet, CallsAsManyAsItHadWhenThePassBegan)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackSet set;
    CallbackPtr later = MakeCallback(&Observer::NoteText, o.get(), util::String("later"));
    set.Add(Make(
        [&]
        {
            set.Remove(later);
            set.Add(MakeCallback(&Observer::NoteText, o.get(), util::String("added")));
        },
        o.get()));
    set.Add(later);
    set.CallAll();
    EXPECT_EQ("later", o->calls) << "removed during the pass, and still called in it";
    o->calls.clear();
    set.CallAll();
    EXPECT_EQ("added", o->calls);
}

TEST(CallbackSet, MayEndWithItsOwnerDuringAPass)
{
    struct Subject : Pointee
    {
        CallbackSet changed;
    };
    SharedPtr<Observer> o = QUIB_NEW Observer;
    SharedPtr<Subject> subject = QUIB_NEW Subject;
    subject->changed.Add(Make([&] { subject = nullptr; }, o.get()));
    subject->changed.Add(MakeCallback(&Observer::Note, o.get()));
    subject->changed.CallAll();
    EXPECT_EQ("n", o->calls);
}

TEST(CallbackSet, GuardsItsPassAgainstExceptions)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackSet set;
    set.Add(MakeCallback(&Observer::Note, o.get()));
    set.Add(MakeCallback(&Observer::Throw, o.get()));
    set.Add(MakeCallback(&Observer::Note, o.get()));
    test::LogCapture log;
    EXPECT_NO_THROW(set.CallAll());
    EXPECT_EQ("n", o->calls) << "the later ones are skipped";
    EXPECT_TRUE(log.Has("-- Warning: Exception caught in CallbackSet::CallAll: observer failed"))
        << log.Text();
    EXPECT_TRUE(log.Has("Caught exception: observer failed, ")) << log.Text();

    EXPECT_EQ(3u, set.size());
    EXPECT_NO_THROW(set.CallAll());
    EXPECT_EQ("nn", o->calls);
}

TEST(CallbackSet, LetsOtherThingsThanStdExceptionsThrough)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackSet set;
    set.Add(MakeCallback(&Observer::ThrowOddly, o.get()));
    EXPECT_THROW(set.CallAll(), int);
}

// Deliberate: the two sets differ here.
TEST(CallbackArgSet, HasNoGuard)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackArgSet<float> set;
    set.Add(MakeArg([](float) { throw std::runtime_error("through"); }, o.get()));
    set.Add(MakeCallback(&Observer::NoteFloat, o.get()));
    EXPECT_THROW(set.CallAll(1.0f), std::runtime_error);
    EXPECT_EQ(0.0f, o->value);
}

TEST(CallbackArgSet, HandsOnItsArgumentAndWalksACopy)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackArgSet<float> set;
    auto later = MakeCallback(&Observer::NoteFloat, o.get());
    set.Add(MakeArg([&](float) { set.Remove(later); }, o.get()));
    set.Add(later);
    set.CallAll(4.5f);
    EXPECT_EQ(4.5f, o->value);
    EXPECT_EQ(1u, set.size());
}

TEST(CallbackSet, KeepsDeadObserversUntilTheSweep)
{
    SharedPtr<Observer> o = QUIB_NEW Observer, living = QUIB_NEW Observer;
    CallbackSet set;
    CallbackArgSet<float> argSet;
    set.Add(MakeCallback(&Observer::Note, o.get()));
    set.Add(MakeCallback(&Observer::Note, living.get()));
    argSet.Add(MakeCallback(&Observer::NoteFloat, o.get()));
    o = nullptr;
    for (int frame = 0; frame < 10; ++frame)
        set.CallAll();
    EXPECT_EQ(2u, set.size());
    EXPECT_EQ(1u, argSet.size());
    util::AbstractCallbackSet::FlushCallbackSets();
    EXPECT_EQ(1u, set.size());
    EXPECT_EQ(0u, argSet.size());
    EXPECT_EQ("nnnnnnnnnn", living->calls);
}

namespace
{
struct Subject : Pointee
{
    CallbackSet changed;
};

struct Taker : Pointee
{
    void Take(SharedPtr<Subject>) {}
};
}

TEST(CallbackSet, SweepSurvivesTheEndOfSetsThatItStillHadToVisit)
{
    // A dead callback holds the last handle to an object with a set of its own.
    std::vector<std::unique_ptr<CallbackSet>> sets;
    SharedPtr<Taker> taker = QUIB_NEW Taker;
    for (int i = 0; i < 200; ++i)
    {
        sets.push_back(std::make_unique<CallbackSet>());
        SharedPtr<Subject> subject = QUIB_NEW Subject;
        sets.back()->Add(MakeCallback(&Taker::Take, taker.get(), subject));
    }
    taker = nullptr;
    const size_t before = util::AbstractCallbackSet::GetClassInstanceCount();
    util::AbstractCallbackSet::FlushCallbackSets();
    EXPECT_EQ(before - 200, util::AbstractCallbackSet::GetClassInstanceCount());
}

TEST(CallbackSet, MayEndInItsOwnSweep)
{
    SharedPtr<Taker> taker = QUIB_NEW Taker;
    SharedPtr<Subject> subject = QUIB_NEW Subject;
    subject->changed.Add(MakeCallback(&Taker::Take, taker.get(), subject));
    CallbackSet* set = &subject->changed;
    subject = nullptr;
    taker = nullptr;
    const size_t before = util::AbstractCallbackSet::GetClassInstanceCount();
    set->Flush();
    EXPECT_EQ(before - 1, util::AbstractCallbackSet::GetClassInstanceCount());
}

TEST(CallbackArgSet, RemovesTheFirstOfTheSameAndIgnoresStrangers)
{
    SharedPtr<Observer> o = QUIB_NEW Observer;
    CallbackArgSet<float> set;
    const auto twice = MakeCallback(&Observer::NoteFloat, o.get());
    set.Add(twice);
    set.Add(twice);
    set.Remove(MakeCallback(&Observer::NoteFloat, o.get()));
    EXPECT_EQ(2u, set.size());
    set.Remove(twice);
    EXPECT_EQ(1u, set.size());
}

namespace
{
// Tells, at its end, whether an exception was travelling.
struct EndWitness
{
    explicit EndWitness(int* travelling)
        : m_travelling(travelling)
    {
    }
    ~EndWitness() { *m_travelling = std::uncaught_exceptions(); }

    int* m_travelling;
};

}

TEST(CallbackSet, HoldsAFailureOfItsSweepUntilTheDeadOnesAreReleased)
{
    int travelling = -1;
    std::list<CallbackPtr> callbacks;
    {
        SharedPtr<Observer> o = QUIB_NEW Observer;
        const auto witness = std::make_shared<EndWitness>(&travelling);
        callbacks.push_back(Make([witness] {}, o.get()));
        callbacks.push_back(Make([] {}, o.get()));
    }
    const auto removeOneAndFail = [&](const CallbackPtr& callback)
    {
        ASSERT_EQ(callback, callbacks.front());
        callbacks.pop_front();
        throw std::runtime_error("no further");
    };
    EXPECT_THROW(util::internal::FlushDead(callbacks, removeOneAndFail), std::runtime_error);
    EXPECT_EQ(0, travelling) << "released, and nothing travelled meanwhile";
    EXPECT_EQ(1u, callbacks.size());
}

TEST(InterpolatorBase, RunsEmpty)
{
    EXPECT_EQ(0u, util::InterpolatorBase::GetClassInstanceCount());
    util::InterpolatorBase::UpdateAll();

    struct Interpolator : util::InterpolatorBase
    {
        void Update() override { ++updates; }
        int updates = 0;
    } interpolator;
    util::InterpolatorBase::UpdateAll();
    EXPECT_EQ(1, interpolator.updates);
}
