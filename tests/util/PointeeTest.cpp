#include "util/Pointee.h"

#include "TestSupport.h"
#include "util/SafeDelete.h"
#include "util/SharedPtr.h"

#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

using util::LockPtr;
using util::Pointee;
using util::PointeeHandle;
using util::SharedPtr;
using util::WeakPtr;

namespace
{
struct Plain : Pointee
{
};

struct Node : Pointee
{
    SharedPtr<Node> next;
};

SharedPtr<Node> MakeChain(int n)
{
    SharedPtr<Node> first;
    for (int i = 0; i < n; ++i)
    {
        SharedPtr<Node> node = QUIB_NEW Node;
        node->next = first;
        first = node;
    }
    return first;
}

struct Thrower : Pointee
{
    ~Thrower() override { throw std::runtime_error("the end failed"); }
};

struct OddThrower : Pointee
{
    ~OddThrower() override { throw 7; }
};

// Twice on the same object is just what the sanitizer is there to report.
__attribute__((no_sanitize("undefined"))) void DestroyInPlace(Pointee* p)
{
    p->Pointee::~Pointee();
}

/// More live objects than any earlier sweep has counted twice, so that the next sweep is a full one.
std::vector<SharedPtr<Plain>> DoubleTheHandles()
{
    std::vector<SharedPtr<Plain>> objects;
    const size_t n = 2 * PointeeHandle::GetInstanceCount() + 1000;
    for (size_t i = 0; i < n; ++i)
        objects.push_back(QUIB_NEW Plain);
    return objects;
}

std::string MessageOf(const std::function<void()>& f)
{
    try
    {
        f();
    }
    catch (BadCoderException& e)
    {
        return e.what();
    }
    return "no BadCoderException";
}
}

TEST(Pointee, CountsConstructionsAndLivingObjects)
{
    const unsigned long made = Pointee::GetAllocateCount();
    const unsigned long living = Pointee::GetInstanceCount();
    {
        Plain onStack;
        SharedPtr<Plain> onHeap = QUIB_NEW Plain;
        EXPECT_EQ(made, onStack.GetPointeeID());
        EXPECT_EQ(made + 1, onHeap->GetPointeeID());
        EXPECT_EQ(made + 2, Pointee::GetAllocateCount());
        EXPECT_EQ(living + 2, Pointee::GetInstanceCount());
    }
    EXPECT_EQ(made + 2, Pointee::GetAllocateCount());
    EXPECT_EQ(living, Pointee::GetInstanceCount());
}

TEST(Pointee, OnTheStackHasAHandleAndIsNotDeleted)
{
    Plain onStack;
    ASSERT_TRUE(onStack.GetHandle());
    EXPECT_TRUE(onStack.GetHandle()->HasPtr());
    EXPECT_EQ(0u, onStack.GetHandle()->GetRefCount());
    EXPECT_EQ(0u, onStack.GetHandle()->GetWeakCount());
}

TEST(Pointee, CopyIsAnObjectOfItsOwn)
{
    Plain a;
    Plain b(a);
    EXPECT_NE(a.GetHandle(), b.GetHandle());
    EXPECT_NE(a.GetPointeeID(), b.GetPointeeID());

    Plain c;
    PointeeHandle* handle = c.GetHandle();
    const unsigned id = c.GetPointeeID();
    c = a;
    EXPECT_EQ(handle, c.GetHandle());
    EXPECT_EQ(id, c.GetPointeeID());
}

TEST(Pointee, RemembersWhereItWasAllocated)
{
    const int line = __LINE__ + 1;
    SharedPtr<Plain> p = QUIB_NEW Plain;
    const std::string expected =
        std::string(__FILE__) + ":" + std::to_string(line) + ": " + __PRETTY_FUNCTION__;
    EXPECT_EQ(expected, p->GetContext());
    EXPECT_STREQ("", Plain().GetContext());
}

TEST(Pointee, DestroyedTwiceIsLoggedAndNothingElse)
{
    alignas(Pointee) unsigned char memory[sizeof(Pointee)];
    Pointee* p = new (memory) Pointee;
    DestroyInPlace(p);

    test::LogCapture log(logging::LogWarning);
    const unsigned long living = Pointee::GetInstanceCount();
    DestroyInPlace(p);
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ("-- Warning: Called ~Pointee on a Pointee with m_state == State_Dead",
              log.Lines()[0]);
    EXPECT_EQ(living, Pointee::GetInstanceCount());
}

TEST(Pointee, WhoseDestructorThrowsIsLoggedAndNobodyElseNotices)
{
    test::LogCapture log;
    const unsigned long living = Pointee::GetInstanceCount();
    SharedPtr<Thrower> p = QUIB_NEW Thrower;
    EXPECT_NO_THROW(p.Reset(nullptr));
    EXPECT_TRUE(log.Has(std::string("-- Warning: Exception caught when deleting a ") +
                        typeid(Thrower).name() + ": the end failed"))
        << log.Text();
    EXPECT_TRUE(log.Has("Caught exception: the end failed, ")) << log.Text();
    EXPECT_EQ(living, Pointee::GetInstanceCount());
}

TEST(Pointee, WhoseDestructorThrowsSomethingUnknownIsLoggedToo)
{
    test::LogCapture log;
    SharedPtr<Pointee> p = QUIB_NEW OddThrower;
    EXPECT_NO_THROW(p.Reset(nullptr));
    // The type is that of the object, not of the handle.
    EXPECT_TRUE(log.Has(std::string("-- Warning: Unknown exception caught when deleting a ") +
                        typeid(OddThrower).name()))
        << log.Text();
    EXPECT_TRUE(log.Has("Caught an unknown exception: ")) << log.Text();
}

TEST(Pointee, MayThrowInItsDestructorWhileAnotherExceptionTravels)
{
    test::LogCapture log;
    EXPECT_THROW(
        {
            SharedPtr<Thrower> p = QUIB_NEW Thrower;
            throw std::logic_error("on its way");
        },
        std::logic_error);
    EXPECT_TRUE(log.Has("the end failed"));
}

TEST(SafeDelete, OfNullDoesNothing)
{
    test::LogCapture log;
    util::SafeDelete(static_cast<Plain*>(nullptr));
    EXPECT_TRUE(log.Lines().empty());
}

TEST(SafeDelete, OfAThrowerThatIsNotCountedLogs)
{
    struct Uncounted
    {
        virtual ~Uncounted() noexcept(false) { throw std::runtime_error("no"); }
    };
    test::LogCapture log(logging::LogWarning);
    util::SafeDelete(new Uncounted);
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ(std::string("-- Warning: Exception caught when deleting a ") +
                  typeid(Uncounted).name() + ": no",
              log.Lines()[0]);
}

TEST(Pointee, ChainsOfAHundredThousandEndWithoutExhaustingTheStack)
{
    const unsigned long living = Pointee::GetInstanceCount();
    SharedPtr<Node> first = MakeChain(100000);
    EXPECT_EQ(living + 100000, Pointee::GetInstanceCount());
    first.Reset(nullptr);
    EXPECT_EQ(living, Pointee::GetInstanceCount());
}

TEST(Pointee, DeepInAChainReadsAsGoneBeforeItsDestructorRuns)
{
    static bool s_wasGone;
    struct Last : Node
    {
        WeakPtr<Last> me{this};
        ~Last() override { s_wasGone = me.IsNull(); }
    };
    s_wasGone = false;
    SharedPtr<Node> first = MakeChain(1000);
    Node* n = first.get();
    while (n->next)
        n = n->next.get();
    n->next = QUIB_NEW Last;
    first.Reset(nullptr);
    EXPECT_TRUE(s_wasGone);
}

TEST(Pointee, ThatThrowsDeepInAChainLeavesNoneBehind)
{
    struct Bad : Node
    {
        ~Bad() override { throw std::runtime_error("deep"); }
    };
    test::LogCapture log;
    const unsigned long living = Pointee::GetInstanceCount();
    SharedPtr<Node> first = MakeChain(500);
    for (int i = 0; i < 3; ++i)
    {
        SharedPtr<Node> bad = QUIB_NEW Bad;
        bad->next = first;
        SharedPtr<Node> top = MakeChain(100);
        Node* n = top.get();
        while (n->next)
            n = n->next.get();
        n->next = bad;
        first = top;
    }
    first.Reset(nullptr);
    EXPECT_EQ(living, Pointee::GetInstanceCount());
    EXPECT_TRUE(log.Has("deep"));
    // The depth is counted down again: a plain object still ends at once.
    SharedPtr<Plain> plain = QUIB_NEW Plain;
    plain.Reset(nullptr);
    EXPECT_EQ(living, Pointee::GetInstanceCount());
}

TEST(PointeeHandle, AssertsWhatItsCountsNeed)
{
    SharedPtr<Plain> p = QUIB_NEW Plain;
    PointeeHandle* handle = p->GetHandle();
    WeakPtr<Plain> keepsTheHandle(p);

    handle->DecreaseLockCount();
    EXPECT_NE(std::string::npos, MessageOf([&] { handle->DecreaseRefCount(); })
                                     .find("Code assertion failed: \"m_refCount > 0\""));
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->DecreaseLockCount(); }).find("\"m_refCount > 0\""));
    handle->IncreaseLockCount();

    p.Reset(nullptr);
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->IncreaseRefCount(); }).find("\"HasPtr()\""));
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->DecreaseRefCount(); }).find("\"HasPtr()\""));
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->IncreaseLockCount(); }).find("\"HasPtr()\""));
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->DecreaseLockCount(); }).find("\"HasPtr()\""));
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->IncreaseWeakCount(); }).find("\"HasPtr()\""));

    // The weak count outlives the object.
    EXPECT_EQ(1u, handle->GetWeakCount());
    EXPECT_TRUE(keepsTheHandle.IsNull());
    EXPECT_EQ(0u, handle->GetWeakCount());
    EXPECT_NE(std::string::npos,
              MessageOf([&] { handle->DecreaseWeakCount(); }).find("\"m_weakCount > 0\""));
}

TEST(PointeeHandle, IsThreeWords)
{
    static_assert(sizeof(PointeeHandle) == 3 * sizeof(void*), "");
    SharedPtr<Plain> p = QUIB_NEW Plain;
    EXPECT_EQ(1u, p->GetHandle()->GetRefCount());
    EXPECT_EQ(0u, p->GetHandle()->GetWeakCount());
}

TEST(PointeeHandle, LockCountNeverDeletes)
{
    SharedPtr<Plain> p = QUIB_NEW Plain;
    PointeeHandle* handle = p->GetHandle();
    handle->DecreaseLockCount();
    EXPECT_TRUE(handle->HasPtr());
    EXPECT_EQ(0u, handle->GetRefCount());
    handle->IncreaseLockCount();
}

TEST(PointeeHandle, SmallSweepMeetsOnlyWhatCameSinceTheLastOne)
{
    std::vector<SharedPtr<Plain>> objects = DoubleTheHandles();
    PointeeHandle::Flush();
    const size_t afterFull = PointeeHandle::GetInstanceCount();

    // Dead among the old ones: not met.
    objects.resize(objects.size() - 1000);
    PointeeHandle::Flush();
    EXPECT_EQ(afterFull, PointeeHandle::GetInstanceCount());

    // Dead among the new ones: met.
    {
        SharedPtr<Plain> stays = QUIB_NEW Plain;
        objects.push_back(stays);
        for (int i = 0; i < 10; ++i)
            SharedPtr<Plain> goes = QUIB_NEW Plain;
    }
    EXPECT_EQ(afterFull + 11, PointeeHandle::GetInstanceCount());
    PointeeHandle::Flush();
    EXPECT_EQ(afterFull + 1, PointeeHandle::GetInstanceCount());
}

TEST(PointeeHandle, FullSweepComesWhenTheHandlesHaveDoubled)
{
    std::vector<SharedPtr<Plain>> objects = DoubleTheHandles();
    PointeeHandle::Flush();
    const size_t afterFull = PointeeHandle::GetInstanceCount();
    objects.resize(objects.size() - 1000);

    std::vector<SharedPtr<Plain>> more;
    while (PointeeHandle::GetInstanceCount() < 2 * afterFull)
        more.push_back(QUIB_NEW Plain);
    PointeeHandle::Flush();
    EXPECT_EQ(2 * afterFull, PointeeHandle::GetInstanceCount()) << "twice is not more than twice";

    more.push_back(QUIB_NEW Plain);
    PointeeHandle::Flush();
    EXPECT_EQ(2 * afterFull + 1 - 1000, PointeeHandle::GetInstanceCount());
}

TEST(PointeeHandle, StaysWhileAWeakReferenceStands)
{
    std::vector<SharedPtr<Plain>> objects = DoubleTheHandles();
    PointeeHandle::Flush();
    const size_t before = PointeeHandle::GetInstanceCount();
    {
        SharedPtr<Plain> p = QUIB_NEW Plain;
        WeakPtr<Plain> weak(p);
        p.Reset(nullptr);
        PointeeHandle::Flush();
        EXPECT_EQ(before + 1, PointeeHandle::GetInstanceCount());
    }
    std::vector<SharedPtr<Plain>> more = DoubleTheHandles();
    PointeeHandle::Flush();
    EXPECT_EQ(before + more.size(), PointeeHandle::GetInstanceCount());
}
