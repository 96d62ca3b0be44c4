#include "util/ScopeProfiler.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string s_seen;
}

TEST(ScopeProfiler, TellsItsListenerOfBeginAndEnd)
{
    const auto begin = util::ScopeProfiler::s_begin;
    const auto end = util::ScopeProfiler::s_end;
    util::ScopeProfiler::s_begin = [](const char* name) { s_seen += std::string("(") + name; };
    util::ScopeProfiler::s_end = [] { s_seen += ")"; };
    {
        util::ScopeProfiler outer("a");
        util::ScopeProfiler inner("b");
    }
    util::ScopeProfiler::s_begin = begin;
    util::ScopeProfiler::s_end = end;
    EXPECT_EQ("(a(b))", s_seen);
}

TEST(ScopeProfiler, IsSilentWithoutAListener)
{
    EXPECT_EQ(nullptr, util::ScopeProfiler::s_begin);
    EXPECT_NO_THROW(util::ScopeProfiler("alone"));
}
