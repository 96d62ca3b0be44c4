#include "util/StackedBind.h"

#include "TestSupport.h"
#include "WhatOf.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{
using Calls = std::vector<std::string>;

Calls s_calls;

class Pen : public util::StackedBind<Pen>
{
public:
    explicit Pen(std::string name)
        : m_name(std::move(name))
    {
    }

    bool m_failsToBind = false;
    bool m_failsToUnbind = false;

private:
    void BindImpl() const override
    {
        s_calls.push_back("bind " + m_name);
        if (m_failsToBind)
            throw std::runtime_error("no " + m_name);
    }
    void UnbindImpl() const override
    {
        s_calls.push_back("unbind " + m_name);
        if (m_failsToUnbind)
            throw std::runtime_error("stuck " + m_name);
    }

    std::string m_name;
};

class StackedBindTest : public testing::Test
{
protected:
    ~StackedBindTest() noexcept override {} // a fixture's may not throw, which what it holds could

    void SetUp() override
    {
        s_calls.clear();
        ASSERT_EQ(0u, Pen::GetBoundCount());
    }
    void TearDown() override
    {
        Pen::s_skipUnbinds = false;
        EXPECT_EQ(0u, Pen::GetBoundCount());
    }

    Pen a{"a"}, b{"b"};
};

/// What an assertion says, up to where it stands.
std::string AssertionOf(const std::function<void()>& function)
{
    const std::string what = test::WhatOf<BadCoderException>(function);
    return what.substr(0, what.find(" in function"));
}
}

TEST_F(StackedBindTest, ANestedOneGivesWayToTheOneAround)
{
    a.Bind();
    b.Bind();
    EXPECT_EQ((Calls{"bind a", "unbind a", "bind b"}), s_calls);
    s_calls.clear();
    b.Unbind();
    EXPECT_EQ((Calls{"unbind b", "bind a"}), s_calls);
    s_calls.clear();
    a.Unbind();
    EXPECT_EQ((Calls{"unbind a"}), s_calls);
}

TEST_F(StackedBindTest, UnbindsInBetweenCanBeSkippedButNotTheLast)
{
    Pen::s_skipUnbinds = true;
    a.Bind();
    b.Bind();
    b.Unbind();
    EXPECT_EQ((Calls{"bind a", "bind b", "bind a"}), s_calls);
    s_calls.clear();
    a.Unbind();
    EXPECT_EQ((Calls{"unbind a"}), s_calls);
}

TEST_F(StackedBindTest, OneMayBeBoundWithinItself)
{
    a.Bind();
    a.Bind();
    a.Unbind();
    EXPECT_EQ((Calls{"bind a", "unbind a", "bind a", "unbind a", "bind a"}), s_calls);
    a.Unbind();
}

TEST_F(StackedBindTest, UnbindingInTheWrongOrderIsRefused)
{
    a.Bind();
    b.Bind();
    s_calls.clear();
    EXPECT_EQ("Code assertion failed: \"s_stack.top() == this\"", AssertionOf([&] { a.Unbind(); }));
    EXPECT_EQ(Calls(), s_calls);
    b.Unbind();
    a.Unbind();
}

TEST_F(StackedBindTest, UnbindingWhatNobodyBoundIsRefused)
{
    EXPECT_EQ("Code assertion failed: \"!s_stack.empty()\"", AssertionOf([&] { a.Unbind(); }));
    EXPECT_EQ(Calls(), s_calls);
}

TEST_F(StackedBindTest, AHundredCanBeBoundAndNoMore)
{
    for (int i = 0; i < 100; ++i)
        a.Bind();
    s_calls.clear();
    EXPECT_EQ("Code assertion failed: \"s_stack.size() < 100\"", AssertionOf([&] { a.Bind(); }));
    EXPECT_EQ(Calls(), s_calls);
    for (int i = 0; i < 100; ++i)
        a.Unbind();
}

TEST_F(StackedBindTest, AScopeUnbindsAtItsEnd)
{
    {
        util::BindScope<Pen> scope(a);
        EXPECT_EQ((Calls{"bind a"}), s_calls);
    }
    EXPECT_EQ((Calls{"bind a", "unbind a"}), s_calls);
}

TEST_F(StackedBindTest, AScopeThatIsLeftByAnExceptionUnbindsToo)
{
    const auto draw = [&]
    {
        util::BindScope<Pen> scope(a);
        throw std::runtime_error("torn");
    };
    EXPECT_EQ("torn", test::WhatOf<std::runtime_error>(draw));
    EXPECT_EQ((Calls{"bind a", "unbind a"}), s_calls);

    test::LogCapture log;
    a.m_failsToUnbind = true;
    EXPECT_EQ("torn", test::WhatOf<std::runtime_error>(draw)) << "the first one travels on";
    EXPECT_TRUE(log.Has("stuck a")) << log.Text();
}

TEST_F(StackedBindTest, WhatAScopeCouldNotBindIsNotBound)
{
    a.Bind();
    b.m_failsToBind = true;
    EXPECT_EQ("no b", test::WhatOf<std::runtime_error>([&] { util::BindScope<Pen> scope(b); }));
    EXPECT_EQ(1u, Pen::GetBoundCount());
    EXPECT_EQ("bind a", s_calls.back()) << "what was in force is again";

    // The one around already fails to give way: then nothing has been bound.
    a.m_failsToUnbind = true;
    b.m_failsToBind = false;
    EXPECT_EQ("stuck a", test::WhatOf<std::runtime_error>([&] { util::BindScope<Pen> scope(b); }));
    EXPECT_EQ(1u, Pen::GetBoundCount());
    a.m_failsToUnbind = false;
    a.Unbind();
}

TEST_F(StackedBindTest, AScopeTellsWhenItsUnbindingFails)
{
    a.m_failsToUnbind = true;
    EXPECT_EQ("stuck a", test::WhatOf<std::runtime_error>([&] { util::BindScope<Pen> scope(a); }));
}
