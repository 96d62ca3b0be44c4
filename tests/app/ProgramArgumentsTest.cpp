#include "app/ProgramArguments.h"

#include <gtest/gtest.h>

#include <stdexcept>

using app::ProgramArguments;

namespace
{
using Words = std::vector<std::string>;

ProgramArguments Read(Words words)
{
    words.insert(words.begin(), "quib");
    static std::vector<std::string> s_words; // the arguments point into it
    s_words = words;
    std::vector<char*> argv;
    for (std::string& word : s_words)
        argv.push_back(word.data());
    return app::ReadProgramArguments(static_cast<int>(argv.size()), argv.data());
}

Words Others(const ProgramArguments& arguments)
{
    return Words(arguments.others.begin(), arguments.others.end());
}

std::string Failure(const Words& words)
{
    try
    {
        Read(words);
    }
    catch (std::invalid_argument& e)
    {
        return e.what();
    }
    return "";
}
}

TEST(ProgramArguments, WithoutOptionsAllIsPassedOn)
{
    for (const Words& words : {Words{}, Words{"my", "first", "scene.qib"}, Words{"a.qib", "--fast"},
                               Words{"--record.qib"}, Words{"-record", "x"}})
    {
        const ProgramArguments arguments = Read(words);
        Words all = words;
        all.insert(all.begin(), "quib");
        EXPECT_EQ(all, Others(arguments));
        EXPECT_EQ("", arguments.record);
        EXPECT_EQ("", arguments.replay);
        EXPECT_FALSE(arguments.quitAfterReplay);
        EXPECT_FALSE(arguments.help);
    }
}

TEST(ProgramArguments, OptionsStandAnywhereAndTheSceneKeepsItsMeaning)
{
    const ProgramArguments record = Read({"my", "--record", "a file", "scene.qib"});
    EXPECT_EQ("a file", record.record);
    EXPECT_EQ((Words{"quib", "my", "scene.qib"}), Others(record));

    const ProgramArguments replay = Read({"--quit-after-replay", "a.qib", "--replay", "b.rec"});
    EXPECT_EQ("b.rec", replay.replay);
    EXPECT_TRUE(replay.quitAfterReplay);
    EXPECT_EQ((Words{"quib", "a.qib"}), Others(replay));

    EXPECT_TRUE(Read({"x", "--help"}).help);
}

TEST(ProgramArguments, APictureNamesItsFileAndItsTime)
{
    const ProgramArguments arguments = Read({"a", "--screenshot", "b.png", "scene.qib"});
    EXPECT_EQ("b.png", arguments.screenshot);
    EXPECT_EQ(1, arguments.after);
    EXPECT_EQ((Words{"quib", "a", "scene.qib"}), Others(arguments));
    EXPECT_EQ(2.5, Read({"--after", "2.5", "--screenshot", "b.png"}).after);
    EXPECT_EQ(0, Read({"--screenshot", "b.png", "--after", "0"}).after);
    EXPECT_EQ("", Read({}).screenshot);
}

TEST(ProgramArguments, AValueMayFollowAnEqualsSign)
{
    const ProgramArguments record = Read({"--record=a file", "scene.qib"});
    EXPECT_EQ("a file", record.record);
    EXPECT_EQ((Words{"quib", "scene.qib"}), Others(record));
    EXPECT_EQ("a=b", Read({"--replay=a=b"}).replay);
    const ProgramArguments picture = Read({"--after=2.5", "--screenshot=b.png", "a=b.qib"});
    EXPECT_EQ("b.png", picture.screenshot);
    EXPECT_EQ(2.5, picture.after);
    EXPECT_EQ((Words{"quib", "a=b.qib"}), Others(picture));
    EXPECT_EQ("--record needs a file", Failure({"--record="}));
}

TEST(ProgramArguments, WhatCannotBeFollowedIsRefused)
{
    const struct
    {
        Words words;
        const char* failure;
    } cases[] = {
        {{"--record"}, "--record needs a file"},
        {{"--screenshot"}, "--screenshot needs a file"},
        {{"--screenshot", "--after", "1"}, "--screenshot needs a file"},
        {{"--screenshot", "a.qib"}, "--screenshot needs a file, and \"a.qib\" is a scene"},
        {{"--after", "1"}, "--after needs --screenshot"},
        {{"--screenshot", "a", "--after", "1", "--after", "2"}, "--after is given twice"},
        {{"--screenshot", "a", "--after"}, "--after needs a number of seconds from 0 to 3600"},
        {{"--screenshot", "a", "--after", "-1"},
         "--after needs a number of seconds from 0 to 3600"},
        {{"--screenshot", "a", "--after", "3601"},
         "--after needs a number of seconds from 0 to 3600"},
        {{"--screenshot", "a", "--after", "nan"},
         "--after needs a number of seconds from 0 to 3600"},
        {{"--screenshot", "a", "--after", "1s"},
         "--after needs a number of seconds from 0 to 3600"},
        {{"--screenshot", "a", "--replay", "b"}, "--screenshot excludes --record and --replay"},
        {{"--screenshot", "a", "--record", "b"}, "--screenshot excludes --record and --replay"},
        {{"--replay", ""}, "--replay needs a file"},
        {{"--record", "--replay", "x"}, "--record needs a file"},
        {{"--record", "a", "--record", "b"}, "--record is given twice"},
        {{"--record", "a", "--replay", "b"}, "--record and --replay exclude each other"},
        {{"--quit-after-replay"}, "--quit-after-replay needs --replay"},
        {{"--record", "a", "--quit-after-replay"}, "--quit-after-replay needs --replay"},
        // It would be the end of that scene.
        {{"--record", "a.qib"}, "--record needs a file, and \"a.qib\" is a scene"},
        {{"--replay", "scenes/A.QIB"}, "--replay needs a file, and \"scenes/A.QIB\" is a scene"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.failure, Failure(c.words));
}

TEST(ProgramArguments, TheHelpNamesThemAll)
{
    const std::string help = app::ProgramHelp;
    for (const char* option :
         {"--record FILE", "--replay FILE", "--quit-after-replay", "--screenshot FILE",
          "--after SECONDS", "--version", "--help", ".qib"})
        EXPECT_NE(std::string::npos, help.find(option)) << option;
}
