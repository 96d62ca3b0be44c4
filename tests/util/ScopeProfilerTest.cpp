#include "util/ScopeProfiler.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::string s_seen;
std::vector<const char*> s_names;

// Listens to all scopes while it lives.
class Listening
{
public:
    Listening()
    {
        s_seen.clear();
        s_names.clear();
        util::ScopeProfiler::s_begin = [](const char* name)
        {
            s_seen += std::string("(") + name;
            s_names.push_back(name);
        };
        util::ScopeProfiler::s_end = [] { s_seen += ")"; };
    }
    ~Listening()
    {
        util::ScopeProfiler::s_begin = m_begin;
        util::ScopeProfiler::s_end = m_end;
    }

private:
    const util::ScopeProfiler::BeginFunction m_begin = util::ScopeProfiler::s_begin;
    const util::ScopeProfiler::EndFunction m_end = util::ScopeProfiler::s_end;
};

void OnePlace()
{
    QUIB_PROFILE("same text");
}
}

TEST(ScopeProfiler, TellsItsListenerOfBeginAndEnd)
{
    const Listening listening;
    {
        QUIB_PROFILE("a");
        {
            QUIB_PROFILE("b");
            QUIB_PROFILE("c");
        }
        QUIB_PROFILE("d");
    }
    EXPECT_EQ("(a(b(c))(d))", s_seen);
}

TEST(ScopeProfiler, GivesEqualLiteralsAtTwoPlacesTwoNames)
{
    const Listening listening;
    {
        QUIB_PROFILE("same text");
    }
    OnePlace();
    OnePlace();
    ASSERT_EQ(3u, s_names.size());
    EXPECT_STREQ(s_names[0], s_names[1]);
    EXPECT_NE(s_names[0], s_names[1]);
    EXPECT_EQ(s_names[1], s_names[2]); // one place keeps its name
}

TEST(ScopeProfiler, IsSilentWithoutAListener)
{
    EXPECT_EQ(nullptr, util::ScopeProfiler::s_begin);
    EXPECT_EQ(nullptr, util::ScopeProfiler::s_end);
    EXPECT_NO_THROW(OnePlace());
}
