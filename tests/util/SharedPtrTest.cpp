#include "util/SharedPtr.h"

#include "TestSupport.h"
#include "WhatOf.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

using util::LockPtr;
using util::Pointee;
using util::SharedPtr;
using util::WeakPtr;

namespace
{
struct Base : Pointee
{
    explicit Base(bool* isAlive = nullptr)
        : m_isAlive(isAlive)
    {
        if (m_isAlive)
            *m_isAlive = true;
    }
    ~Base() override
    {
        if (m_isAlive)
            *m_isAlive = false;
    }

    bool* m_isAlive;
    int value = 3;
};

struct Derived : Base
{
    using Base::Base;
};

// Every object of it lies at the same address.
struct AtOnePlace : Pointee
{
    static void* operator new(size_t)
    {
        alignas(16) static unsigned char s_place[128];
        static_assert(sizeof(AtOnePlace) <= sizeof(s_place), "");
        return s_place;
    }
    static void operator delete(void*) {}
};

/// A plain one, not of our own family.
template<typename F>
std::string RuntimeErrorOf(const F& f)
{
    return test::WhatOf<std::runtime_error>(f);
}
}

TEST(SharedPtr, KeepsTheObjectUntilTheLastOneGoes)
{
    bool isAlive = false;
    SharedPtr<Base> a = QUIB_NEW Base(&isAlive);
    SharedPtr<Base> b = a;
    EXPECT_EQ(2u, a->GetHandle()->GetRefCount());
    a.Reset(nullptr);
    EXPECT_TRUE(isAlive);
    b = nullptr;
    EXPECT_FALSE(isAlive);
}

TEST(SharedPtr, ResetToWhatItHoldsDoesNothing)
{
    bool isAlive = false;
    SharedPtr<Base> p = QUIB_NEW Base(&isAlive);
    p.Reset(p.get());
    EXPECT_TRUE(isAlive);
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
    p = *&p;
    EXPECT_TRUE(isAlive);
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
}

TEST(SharedPtr, CanBeMadeOfAPlainPointerAtAnyTime)
{
    bool isAlive = false;
    SharedPtr<Base> p = QUIB_NEW Base(&isAlive);
    Base* plain = p.get();
    SharedPtr<Base> again(plain);
    p = nullptr;
    EXPECT_TRUE(isAlive);
}

TEST(SharedPtr, StoresAfterTheOldObjectIsGoneAndCountsAfterThat)
{
    // The old object's destructor sees the handle that lets go of it: still at the old object.
    static SharedPtr<Base>* s_handle;
    static Base* s_seen;
    struct Old : Base
    {
        ~Old() override { s_seen = s_handle->get(); }
    };
    SharedPtr<Base> handle = QUIB_NEW Old;
    s_handle = &handle;
    Base* old = handle.get();
    SharedPtr<Base> other = QUIB_NEW Base;
    handle.Reset(other.get());
    EXPECT_EQ(old, s_seen);
    EXPECT_EQ(2u, other->GetHandle()->GetRefCount());
}

TEST(SharedPtr, AssignedFromInsideItsOwnObjectKeepsTheOtherAlive)
{
    struct Owner : Base
    {
        SharedPtr<Owner> inner;
    };
    SharedPtr<Owner> p = QUIB_NEW Owner;
    p->inner = QUIB_NEW Owner;
    Owner* inner = p->inner.get();
    p = p->inner;
    EXPECT_EQ(inner, p.get());
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
}

TEST(SharedPtr, ConvertsToItsBase)
{
    SharedPtr<Derived> d = QUIB_NEW Derived;
    SharedPtr<Base> b = d;
    EXPECT_TRUE(b == d);
    EXPECT_EQ(2u, d->GetHandle()->GetRefCount());
    EXPECT_TRUE(util::DynamicCast<Derived>(b) == d);
    EXPECT_FALSE(util::DynamicCast<Derived>(SharedPtr<Base>(QUIB_NEW Base)));
    static_assert(!std::is_convertible<SharedPtr<Base>, SharedPtr<Derived>>::value, "");
}

TEST(SharedPtr, MovesWithoutCounting)
{
    bool isAlive = false;
    SharedPtr<Base> a = QUIB_NEW Base(&isAlive);
    SharedPtr<Base> b(std::move(a));
    EXPECT_EQ(nullptr, a.get());
    EXPECT_EQ(1u, b->GetHandle()->GetRefCount());
    a = std::move(b);
    EXPECT_EQ(1u, a->GetHandle()->GetRefCount());
    SharedPtr<Base>& same = a;
    a = std::move(same);
    EXPECT_TRUE(isAlive);
    a = SharedPtr<Base>();
    EXPECT_FALSE(isAlive);
}

TEST(SharedPtr, IsOrderedByItsObject)
{
    SharedPtr<Base> a = QUIB_NEW Base, b = QUIB_NEW Base;
    EXPECT_EQ(std::less<Base*>()(a.get(), b.get()), a < b);
    const std::set<SharedPtr<Base>> set{a, b, a};
    EXPECT_EQ(2u, set.size());
}

TEST(SharedPtr, OfNullReportsItsDereference)
{
    test::LogCapture log(logging::LogInfo);
    SharedPtr<Base> null;
    EXPECT_EQ("Tried to dereference a NULL SharedPtr", RuntimeErrorOf([&] { null->value = 1; }));
    EXPECT_EQ("Tried to dereference a NULL SharedPtr", RuntimeErrorOf([&] { (*null).value = 1; }));
    EXPECT_EQ("Tried to dereference a NULL SharedPtr", RuntimeErrorOf([&] { null.Check(); }));
    EXPECT_EQ(3u, log.Count("Exception thrown: Tried to dereference a NULL SharedPtr from "))
        << log.Text();
}

TEST(SharedPtr, LetsNoExceptionOutOfItsDestructor)
{
    test::LogCapture log(logging::LogInfo);
    SharedPtr<Base> keeper = QUIB_NEW Base;
    {
        SharedPtr<Base> p = keeper;
        keeper->GetHandle()->DecreaseLockCount();
        keeper->GetHandle()->DecreaseLockCount();
        // Counted down too far behind its back: its destructor meets a failed assertion.
    }
    keeper->GetHandle()->IncreaseLockCount();
    ASSERT_FALSE(log.Lines().empty());
    const std::string line = log.Lines().back();
    const std::string start = "Error: Code assertion failed: \"m_refCount > 0\" in function ";
    EXPECT_EQ(start, line.substr(0, start.size()));
    // what(), a line feed, the location, a line feed
    const size_t feed = line.find('\n');
    ASSERT_NE(std::string::npos, feed);
    EXPECT_EQ('\n', line.back());
    EXPECT_EQ(0u, line.find("src/util/SharedPtr.h:", feed) - feed - 1);
}

TEST(SharedPtr, LogsAnUnknownExceptionFromItsDestructorAsFail)
{
    test::LogCapture log(logging::LogInfo);
    util::LogContained(nullptr, "a.cpp:3: void F()");
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ("Fail\na.cpp:3: void F()\n", log.Lines()[0]);
}

TEST(SharedPtr, PointedAtAnObjectAtItsEndThrowsAndStaysNull)
{
    static SharedPtr<Base>* s_handle;
    static bool s_threw;
    struct Dying : Base
    {
        ~Dying() override
        {
            try
            {
                s_handle->Reset(this);
            }
            catch (BadCoderException&)
            {
                s_threw = true;
            }
        }
    };
    SharedPtr<Base> handle;
    s_handle = &handle;
    s_threw = false;
    SharedPtr<Base> dying = QUIB_NEW Dying;
    dying = nullptr;
    EXPECT_TRUE(s_threw);
    EXPECT_FALSE(handle);
}

TEST(WeakPtr, DoesNotKeepTheObjectAlive)
{
    bool isAlive = false;
    SharedPtr<Base> p = QUIB_NEW Base(&isAlive);
    WeakPtr<Base> weak(p);
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
    EXPECT_EQ(1u, p->GetHandle()->GetWeakCount());
    EXPECT_EQ(p.get(), LockPtr<Base>(weak).get());
    p = nullptr;
    EXPECT_FALSE(isAlive);
}

TEST(WeakPtr, OfADeadObjectGivesANullLockAndLetsGoOfTheHandle)
{
    SharedPtr<Base> p = QUIB_NEW Base;
    WeakPtr<Base> weak(p), other(p);
    util::PointeeHandle* handle = p->GetHandle();
    EXPECT_EQ(2u, handle->GetWeakCount());
    p = nullptr;
    EXPECT_EQ(2u, handle->GetWeakCount());
    LockPtr<Base> lock(weak);
    EXPECT_FALSE(lock);
    EXPECT_EQ(1u, handle->GetWeakCount());
    EXPECT_TRUE(weak.IsNull());
    EXPECT_EQ(1u, handle->GetWeakCount());
}

TEST(WeakPtr, OfADeadObjectTurnsNullWhenCopied)
{
    SharedPtr<Derived> p = QUIB_NEW Derived;
    WeakPtr<Derived> a(p), b(p), c(p);
    util::PointeeHandle* handle = p->GetHandle();
    WeakPtr<Base> keeper(p);
    p = nullptr;
    WeakPtr<Derived> copy(a);
    EXPECT_EQ(3u, handle->GetWeakCount());
    WeakPtr<Base> converted(b);
    EXPECT_EQ(2u, handle->GetWeakCount());
    WeakPtr<Derived> assigned;
    assigned = c;
    EXPECT_EQ(1u, handle->GetWeakCount());
    EXPECT_TRUE(copy.IsNull() && converted.IsNull() && assigned.IsNull());
}

TEST(WeakPtr, ReadsNullInTheDestructorOfItsObject)
{
    static WeakPtr<Base>* s_weak;
    static bool s_wasNull;
    struct Watched : Base
    {
        ~Watched() override { s_wasNull = !LockPtr<Base>(*s_weak); }
    };
    SharedPtr<Base> p = QUIB_NEW Watched;
    WeakPtr<Base> weak(p);
    s_weak = &weak;
    s_wasNull = false;
    p = nullptr;
    s_weak = nullptr;
    EXPECT_TRUE(s_wasNull);
}

TEST(WeakPtr, ResetMovesItsWeakCount)
{
    SharedPtr<Base> a = QUIB_NEW Base, b = QUIB_NEW Base;
    WeakPtr<Base> weak(a);
    weak.Reset(a.get());
    EXPECT_EQ(1u, a->GetHandle()->GetWeakCount());
    weak.Reset(b.get());
    EXPECT_EQ(0u, a->GetHandle()->GetWeakCount());
    EXPECT_EQ(1u, b->GetHandle()->GetWeakCount());
    weak = a;
    EXPECT_EQ(1u, a->GetHandle()->GetWeakCount());
    EXPECT_EQ(0u, b->GetHandle()->GetWeakCount());
    weak.Reset(nullptr);
    EXPECT_EQ(0u, a->GetHandle()->GetWeakCount());
}

TEST(WeakPtr, FindsANewObjectAtTheAddressOfADeadOne)
{
    SharedPtr<AtOnePlace> first = QUIB_NEW AtOnePlace;
    WeakPtr<AtOnePlace> weak(first);
    first = nullptr;
    SharedPtr<AtOnePlace> second = QUIB_NEW AtOnePlace;
    weak.Reset(second.get());
    EXPECT_EQ(second.get(), LockPtr<AtOnePlace>(weak).get());
}

TEST(WeakPtr, PointedAtAnObjectAtItsEndThrowsAndStaysNull)
{
    static WeakPtr<Base>* s_weak;
    static bool s_threw;
    struct Dying : Base
    {
        ~Dying() override
        {
            try
            {
                s_weak->Reset(this);
            }
            catch (BadCoderException&)
            {
                s_threw = true;
            }
        }
    };
    {
        WeakPtr<Base> weak;
        s_weak = &weak;
        s_threw = false;
        SharedPtr<Base> dying = QUIB_NEW Dying;
        dying = nullptr;
        EXPECT_TRUE(s_threw);
        EXPECT_TRUE(weak.IsNull());
    } // and its own destructor has nothing to count down
}

TEST(LockPtr, KeepsTheObjectWhileItStands)
{
    bool isAlive = false;
    SharedPtr<Base> p = QUIB_NEW Base(&isAlive);
    WeakPtr<Base> weak(p);
    {
        LockPtr<Base> lock(weak);
        p = nullptr;
        EXPECT_TRUE(isAlive);
        EXPECT_EQ(3, lock->value);
    }
    EXPECT_FALSE(isAlive);
}

TEST(LockPtr, InAConstructorDoesNotDeleteTheObject)
{
    struct LocksItself : Base
    {
        explicit LocksItself(bool* isAlive)
            : Base(isAlive)
        {
            WeakPtr<Base> weak(this);
            LockPtr<Base> lock(weak);
            EXPECT_TRUE(bool(lock));
        }
    };
    bool isAlive = false;
    SharedPtr<LocksItself> p = QUIB_NEW LocksItself(&isAlive);
    EXPECT_TRUE(isAlive);
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
}

TEST(LockPtr, OnTheStackNeverDeletes)
{
    Base onStack;
    WeakPtr<Base> weak(&onStack);
    {
        LockPtr<Base> outer(weak);
        EXPECT_EQ(1u, onStack.GetHandle()->GetRefCount());
    }
    EXPECT_EQ(0u, onStack.GetHandle()->GetRefCount());
    EXPECT_TRUE(onStack.GetHandle()->HasPtr());
}

TEST(LockPtr, OfNullReportsItsDereference)
{
    WeakPtr<Base> null;
    LockPtr<Base> lock(null);
    EXPECT_EQ("Tried to dereference a NULL LockPtr", RuntimeErrorOf([&] { lock->value = 1; }));
    EXPECT_EQ("Tried to dereference a NULL LockPtr", RuntimeErrorOf([&] { (*lock).value = 1; }));
}
