#include "util/Failures.h"

#include "TestSupport.h"
#include "WhatOf.h"

#include <gtest/gtest.h>

using test::WhatOf;

namespace
{
struct Located
{
    std::string function;
    int line;
};

/// The text of a failed assertion at that place.
std::string AssertionText(const std::string& start, const std::string& condition, const Located& l)
{
    // Deliberate: "inf".
    return start + " failed: \"" + condition + "\" in function " + l.function + " inf " + __FILE__ +
           ":" + std::to_string(l.line);
}

Located AssertsCode(int x)
{
    Located l{__PRETTY_FUNCTION__, __LINE__ + 1};
    CODE_ASSERT(x % 2 == 0 && "100% \"sure\"");
    return l;
}
}

TEST(Exceptions, FormOneFamily)
{
    static_assert(std::is_base_of<std::runtime_error, Exception>::value, "");
    static_assert(std::is_base_of<Exception, BadCoderException>::value, "");
    static_assert(std::is_base_of<Exception, BadDataException>::value, "");
    static_assert(std::is_base_of<BadDataException, FileReadException>::value, "");
    static_assert(std::is_base_of<Exception, FatalException>::value, "");
    static_assert(!std::is_base_of<BadDataException, BadCoderException>::value, "");
    EXPECT_STREQ("the message", FileReadException("the message").what());
}

TEST(AssertionFailed, OfCodeThrowsWithTheLocationAndTheOddWord)
{
    const Located l = AssertsCode(2);
    const std::string text =
        AssertionText("Code assertion", "x % 2 == 0 && \"100% \\\"sure\\\"\"", l);
    test::LogCapture log, info(logging::LogInfo);
    EXPECT_EQ(text, WhatOf<BadCoderException>([] { AssertsCode(1); }));
    // Logged by the assertion at level 8, and again on its way out.
    ASSERT_FALSE(info.Lines().empty());
    EXPECT_EQ(text, info.Lines()[0]);
    EXPECT_EQ(1u, log.Count("Exception thrown: " + text + " from src/util/Failures.cpp:"))
        << log.Text();
}

TEST(AssertionFailed, OfDataThrowsBadData)
{
    test::LogCapture info(logging::LogInfo);
    std::string expected;
    const std::string text = WhatOf<BadDataException>(
        [&]
        {
            expected =
                AssertionText("Data assertion", "2 < 1", {__PRETTY_FUNCTION__, __LINE__ + 1});
            DATA_ASSERT(2 < 1);
        });
    EXPECT_EQ(expected, text);
    EXPECT_EQ(0u, text.find("Data"));
    EXPECT_TRUE(info.Has(text));
}

TEST(AssertionFailed, AsACheckIsLoggedAtItsBitAndGoesOn)
{
    test::LogCapture code(logging::LogCodeCheck), data(logging::LogDataCheck),
        info(logging::LogInfo);
    AssertionFailed("a == b", false, true, "void F()", "src/x.cpp", 12);
    AssertionFailed("c == d", false, false, "void G()", "src/y.cpp", 34);
    ASSERT_EQ(1u, code.Lines().size());
    EXPECT_EQ("Code check failed: \"a == b\" in function void F() inf src/x.cpp:12",
              code.Lines()[0]);
    ASSERT_EQ(1u, data.Lines().size());
    EXPECT_EQ("Data check failed: \"c == d\" in function void G() inf src/y.cpp:34",
              data.Lines()[0]);
    EXPECT_TRUE(info.Lines().empty());
}

TEST(Assertion, ThatHoldsCostsNothing)
{
    test::LogCapture log;
    int evaluated = 0;
    CODE_ASSERT(++evaluated == 1);
    DATA_ASSERT(++evaluated == 2);
    EXPECT_EQ(2, evaluated);
    EXPECT_TRUE(log.Lines().empty());
}

TEST(Throw, LogsTheMessageAndThePlaceAtLevel8)
{
    test::LogCapture info(logging::LogInfo);
    std::string expected;
    auto fails = [&]
    {
        expected = std::string("Exception thrown: so it is from ") + __FILE__ + ":" +
                   std::to_string(__LINE__ + 1) + ": " + __PRETTY_FUNCTION__;
        QUIB_THROW(std::runtime_error("so it is"));
    };
    EXPECT_EQ("so it is", WhatOf<std::runtime_error>(fails));
    ASSERT_EQ(1u, info.Lines().size());
    EXPECT_EQ(expected, info.Lines()[0]);
}

TEST(Throw, KeepsTheTypeOfTheException)
{
    EXPECT_EQ("m", WhatOf<FatalException>([] { QUIB_THROW(FatalException("m")); }));
    EXPECT_EQ("m", WhatOf<FileReadException>([] { QUIB_THROW(FileReadException("m")); }));
}

TEST(PassOn, LogsThePlaceAndRethrowsWhatItMet)
{
    test::LogCapture info(logging::LogInfo);
    std::string expected;
    auto stage = [&]
    {
        expected = std::string("Exception passed on at ") + __FILE__ + ":" +
                   std::to_string(__LINE__ + 1) + ": " + __PRETTY_FUNCTION__;
        QUIB_PASS_ON(throw 42);
    };
    EXPECT_THROW(stage(), int);
    ASSERT_EQ(1u, info.Lines().size());
    EXPECT_EQ(expected, info.Lines()[0]);
}

TEST(PassOn, OfASmoothStageIsSilent)
{
    test::LogCapture log;
    int a = 0, b = 0;
    QUIB_PASS_ON(a = 1, b = 2);
    EXPECT_EQ(3, a + b);
    EXPECT_TRUE(log.Lines().empty());
}

TEST(CatchException, TellsWhatWasCaught)
{
    test::LogCapture info(logging::LogInfo);
    CatchException("here");
    std::runtime_error plain("plain");
    CatchException(plain, "there");
    Exception own("own");
    CatchException(own, "elsewhere");
    BadDataException derived("derived");
    CatchException(derived, "far");
    std::exception& hidden = derived;
    CatchException(hidden, "near");
    EXPECT_EQ((std::vector<std::string>{
                  "Caught an unknown exception: here", "Caught exception: plain, there",
                  "Caught Exception: own, elsewhere", "Caught Exception: derived, far",
                  "Caught exception: derived, near"}),
              info.Lines());
}

TEST(Location, ReadsPathLineAndFunction)
{
    const std::string location = QUIB_LOCATION;
    EXPECT_EQ(std::string(__FILE__) + ":" + std::to_string(__LINE__ - 1) + ": " +
                  __PRETTY_FUNCTION__,
              location);
    EXPECT_EQ(0u, location.find("tests/util/FailuresTest.cpp:")) << location;
}
