#include "logging/Logger.h"

#include "TestSupport.h"
#include "util/FileSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

using logging::FileLogger;
using logging::FunctionLogger;
using logging::Logger;
using logging::LogLevel;
using logging::StreamLogger;
using test::LogCapture;
using Lines = std::vector<std::string>;

namespace
{
void NextFrame()
{
    Logger::GetInstancePtr()->Update();
}

// In a process of its own, in which no logger was ever made.
[[noreturn]] void LogWithoutServices(const std::string& dir)
{
    boost::filesystem::current_path(dir);
    Log(logging::LogError, "early");
    Log(logging::LogInfo, "plain");
    const bool made = Logger::Exists() || util::FileSystem::Exists();

    // And after the end of the logger.
    util::FileSystem::GetInstancePtr()->SetWorkDir(dir + "sub/");
    Logger::Create();
    Logger::Destroy();
    Log(logging::LogWarning, "late");
    std::_Exit(made ? 1 : 0);
}

// A sink whose own end logs, as a destructor that throws would.
[[noreturn]] void LogFromTheEndOfASink(const std::string& dir)
{
    struct Talker : logging::ILogger
    {
        Talker()
            : ILogger(logging::LogVerbose)
        {
        }
        ~Talker() override { ::Log(logging::LogInfo, "last words"); }
        void Log(const util::String&) override {}
    };
    boost::filesystem::current_path(dir);
    Logger::GetInstancePtr()->AddLogger(QUIB_NEW Talker);
    Logger::Destroy();
    std::_Exit(test::Slurp("Unlogged.txt") == "last words\n" ? 0 : 1);
}

class OwnProcess
{
public:
    OwnProcess()
        : m_style(testing::FLAGS_gtest_death_test_style)
    {
        testing::FLAGS_gtest_death_test_style = "threadsafe";
    }
    ~OwnProcess() { testing::FLAGS_gtest_death_test_style = m_style; }

private:
    std::string m_style;
};
}

TEST(Log, WithoutALoggerGoesToStandardOutputAndAFileAndMakesNoService)
{
    OwnProcess own;
    // The folder must be the same in the child, which runs this test again.
    const std::string dir = testing::TempDir() + "quib-unlogged/";
    boost::filesystem::remove_all(dir);
    boost::filesystem::create_directories(dir + "sub");
    EXPECT_EXIT(LogWithoutServices(dir), testing::ExitedWithCode(0), "");
    EXPECT_EQ("!! ERROR: early\nplain\n", test::Slurp(dir + "Unlogged.txt"));
    EXPECT_EQ("-- Warning: late\n", test::Slurp(dir + "sub/Unlogged.txt"));
    boost::filesystem::remove_all(dir);
}

TEST(Log, FromTheEndOfASinkFindsNoLogger)
{
    OwnProcess own;
    const std::string dir = testing::TempDir() + "quib-last-words/";
    boost::filesystem::remove_all(dir);
    boost::filesystem::create_directories(dir);
    EXPECT_EXIT(LogFromTheEndOfASink(dir), testing::ExitedWithCode(0), "");
    boost::filesystem::remove_all(dir);
}

TEST(Log, AddsThePrefixOfItsLevel)
{
    LogCapture log;
    Log(logging::LogWarning, "a");
    Log(logging::LogCodeCheck, "b");
    Log(logging::LogDataCheck, "c");
    Log(logging::LogError, "d");
    Log(logging::LogInfo, "e");
    Log(logging::LogVerbose, "f");
    EXPECT_EQ((Lines{"-- Warning: a", "b", "c", "!! ERROR: d", "e", "f"}), log.Lines());
}

TEST(Log, TakesNumbersForLevels)
{
    LogCapture log;
    Log(1, "a");
    Log(6, "b");
    EXPECT_EQ((Lines{"-- Warning: a", "!! ERROR: b"}), log.Lines());
}

// Deliberate: the error level is both check bits together.
TEST(Logger, GivesErrorsToWhoeverTakesOneOfTheTwoChecks)
{
    EXPECT_EQ(logging::LogError, logging::LogCodeCheck | logging::LogDataCheck);
    LogCapture code(logging::LogCodeCheck), data(logging::LogDataCheck),
        warning(logging::LogWarning);
    Log(logging::LogError, "both");
    EXPECT_EQ(Lines{"!! ERROR: both"}, code.Lines());
    EXPECT_EQ(Lines{"!! ERROR: both"}, data.Lines());
    EXPECT_TRUE(warning.Lines().empty());
}

TEST(Logger, AsksTheMaskOfEachSink)
{
    LogCapture errors(7), progress(16), file(31), console(23);
    Log(logging::LogInfo, "info");
    Log(logging::LogVerbose, "progress");
    Log(logging::LogWarning, "warning");
    EXPECT_EQ(Lines{"-- Warning: warning"}, errors.Lines());
    EXPECT_EQ(Lines{"progress"}, progress.Lines());
    EXPECT_EQ((Lines{"info", "progress", "-- Warning: warning"}), file.Lines());
    EXPECT_EQ((Lines{"progress", "-- Warning: warning"}), console.Lines());
}

TEST(Logger, WritesAWarningThatComesEveryFrameOnce)
{
    LogCapture log;
    for (int frame = 0; frame < 5; ++frame)
    {
        Log(logging::LogWarning, "again");
        Log(logging::LogWarning, "again");
        NextFrame();
    }
    EXPECT_EQ(1u, log.Count("again"));
}

TEST(Logger, WritesAWarningAgainAfterAFrameWithoutIt)
{
    LogCapture log;
    Log(logging::LogWarning, "now and then");
    NextFrame();
    NextFrame();
    Log(logging::LogWarning, "now and then");
    EXPECT_EQ(2u, log.Count("now and then"));
}

TEST(Logger, HoldsBackErrorsToo)
{
    LogCapture log;
    Log(logging::LogError, "e");
    NextFrame();
    Log(logging::LogError, "e");
    EXPECT_EQ(1u, log.Lines().size());
}

// Deliberate: the other levels repeat.
TEST(Logger, RepeatsAllLevelsButWarningAndError)
{
    LogCapture log;
    for (LogLevel level :
         {logging::LogCodeCheck, logging::LogDataCheck, logging::LogInfo, logging::LogVerbose})
    {
        log.Clear();
        Log(level, "same");
        Log(level, "same");
        NextFrame();
        Log(level, "same");
        EXPECT_EQ(3u, log.Lines().size()) << "level " << level;
    }
}

TEST(Logger, TellsAWarningFromAnErrorOfTheSameText)
{
    LogCapture log;
    Log(logging::LogError, "text");
    Log(logging::LogWarning, "text");
    EXPECT_EQ(2u, log.Lines().size());
}

TEST(Logger, RemembersTextsOfEveryLevel)
{
    LogCapture log;
    // The text stands in the frame's memory whatever its level was.
    Log(logging::LogInfo, "-- Warning: seen");
    Log(logging::LogWarning, "seen");
    EXPECT_EQ(1u, log.Lines().size());
}

TEST(Logger, GoesOnPastASinkThatFails)
{
    static bool s_fails;
    struct Failing : logging::ILogger
    {
        Failing()
            : ILogger(logging::LogDataCheck)
        {
        }
        void Log(const util::String&) override
        {
            if (s_fails)
                throw 3;
        }
    };
    // One more on each side, so that one stands behind it in whatever order they have.
    Logger::GetInstancePtr()->AddLogger(QUIB_NEW Failing);
    LogCapture log(logging::LogDataCheck), info(logging::LogInfo);
    Logger::GetInstancePtr()->AddLogger(QUIB_NEW Failing);

    s_fails = true;
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(Log(logging::LogDataCheck, "hello"));
    s_fails = false;
    EXPECT_EQ("ERROR - Failed to log text: hello\nERROR - Failed to log text: hello\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(Lines{"hello"}, log.Lines());
    EXPECT_EQ(2u, info.Count("Caught an unknown exception: src/logging/Logger.cpp:"))
        << info.Text();
}

TEST(FunctionLogger, CatchesWhatItsFunctionThrows)
{
    LogCapture info(logging::LogInfo);
    FunctionLogger logger(logging::LogVerbose,
                          [](const util::String&) { throw std::runtime_error("no"); });
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(logger.Log("text"));
    EXPECT_EQ("ERROR - Failed to log text: text\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(1u, info.Count("Caught an unknown exception: src/logging/Logger.cpp:"));
}

TEST(FunctionLogger, ThatFailsAtTheLevelOfItsOwnReportEnds)
{
    static bool s_fails;
    s_fails = true;
    Logger::GetInstancePtr()->AddLogger(QUIB_NEW FunctionLogger(logging::LogInfo,
                                                                [](const util::String&)
                                                                {
                                                                    if (s_fails)
                                                                        throw 1;
                                                                }));
    testing::internal::CaptureStderr();
    Log(logging::LogInfo, "deep");
    s_fails = false;
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, text.find("ERROR - Failed to log text: deep\n")) << text;
}

TEST(StreamLogger, WritesLines)
{
    std::ostringstream out;
    StreamLogger logger(logging::LogInfo, &out);
    logger.Log("one");
    logger.Log("two");
    EXPECT_EQ("one\ntwo\n", out.str());
    EXPECT_EQ(logging::LogInfo, logger.GetLevel());
}

TEST(FileLogger, BeginsWithItsHeaderAndStampsEachLine)
{
    test::TempDir dir;
    test::Spit(dir / "log", "old");
    {
        FileLogger logger(logging::LogInfo, dir / "log", false);
        logger.Log("hello");
        // Flushed: it can be read while the sink stands.
        const std::vector<util::String> lines = util::Split(test::Slurp(dir / "log"), '\n');
        ASSERT_EQ(6u, lines.size());
        EXPECT_EQ(std::string(29, '-'), lines[0]);
        EXPECT_EQ("  Quib beta 4.0", lines[1]);
        // Such as "  November 21 2025, 07:59:01".
        EXPECT_TRUE(testing::internal::RE::FullMatch(
            lines[2],
            "  [A-Z][a-z]+ [0-9][0-9] [0-9][0-9][0-9][0-9], [0-9][0-9]:[0-9][0-9]:[0-9][0-9]"))
            << lines[2];
        EXPECT_EQ(std::string(29, '-'), lines[3]);
        EXPECT_TRUE(
            testing::internal::RE::FullMatch(lines[4], "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]: hello"))
            << lines[4];
        EXPECT_EQ("", lines[5]);
    }
}

TEST(FileLogger, AppendsAfterTwoLineFeeds)
{
    test::TempDir dir;
    test::Spit(dir / "log", "old\n");
    FileLogger again(logging::LogInfo, dir / "log", true);
    EXPECT_EQ(0u, test::Slurp(dir / "log").find("old\n\n\n" + std::string(29, '-') + "\n  Quib"));
    FileLogger fresh(logging::LogInfo, dir / "fresh", true);
    EXPECT_EQ(0u, test::Slurp(dir / "fresh").find(std::string(29, '-') + "\n  Quib"))
        << "no line feeds ahead of the first header";
}

TEST(FileLogger, ThatCannotOpenItsFileIsSilent)
{
    test::TempDir dir;
    testing::internal::CaptureStderr();
    FileLogger logger(logging::LogInfo, dir / "none/log", true);
    EXPECT_NO_THROW(logger.Log("x"));
    FileLogger folder(logging::LogInfo, dir.Path(), false);
    EXPECT_NO_THROW(folder.Log("x"));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(PrintConsole, IsSilentWithoutAConsole)
{
    EXPECT_NO_THROW(logging::PrintConsole("nobody"));
    std::string printed;
    logging::SetConsolePrinter([&](const util::String& text) { printed += text + "|"; });
    logging::PrintConsole("a");
    logging::SetConsolePrinter({});
    logging::PrintConsole("b");
    EXPECT_EQ("a|", printed);
}
