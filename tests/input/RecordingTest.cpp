// The text form of recordings.
#include "input/Recording.h"

#include "input/Key.h"

#include <gtest/gtest.h>

#include <SDL_keysym.h>

using namespace input;

namespace
{
std::string Failure(const std::string& text)
{
    try
    {
        ParseRecording(text);
    }
    catch (BadRecording& e)
    {
        return e.what();
    }
    return "";
}

Recording Parse(const std::string& lines)
{
    return ParseRecording(RecordingHead + ("\n" + lines));
}

// One that has everything.
const char* const Whole = "quib recording 1\n"
                          "# made by hand\n"
                          "\n"
                          "clock 0 15\n"
                          "display 1280 1024\n"
                          "joystick 1 \"A \\\"good\\\" pad\" 0 -32768 32767\n"
                          "window 1024 768\n"
                          "frame 20\n"
                          "keydown a 97\n"
                          "mods 1\n"
                          "press 1 400 300\n"
                          "clock 2 21\n"
                          "clock 7 25\n"
                          "mouse 400 300\n"
                          "paste \"caf\\xe9\\n\"\n"
                          "frame 40\n"
                          "move 401 302 1 -2 1\n"
                          "release 1 401 302\n"
                          "frame 60\n"
                          "mods 0\n"
                          "mouse 401 302\n"
                          "quit\n";
}

TEST(Recording, HoldsFrameByFrameWhatTheProgramSaw)
{
    const Recording r = ParseRecording(Whole);
    EXPECT_EQ(1280, r.displayWidth);
    EXPECT_EQ(1024, r.displayHeight);
    EXPECT_EQ(1024, r.windowWidth);
    EXPECT_EQ(768, r.windowHeight);
    ASSERT_EQ(1u, r.joysticks.size());
    EXPECT_EQ(1, r.joysticks[0].index);
    EXPECT_EQ("A \"good\" pad", r.joysticks[0].name);
    EXPECT_EQ((std::vector<int>{0, -32768, 32767}), r.joysticks[0].axes);
    ASSERT_EQ(1u, r.start.clock.size());
    EXPECT_EQ(15u, r.start.clock[0].time);

    ASSERT_EQ(3u, r.frames.size());
    const RecordedFrame& first = r.frames[0];
    EXPECT_EQ(20u, first.time);
    ASSERT_EQ(2u, first.events.size());
    EXPECT_EQ(SDL_KEYDOWN, first.events[0].event.type);
    EXPECT_EQ(SDLK_a, first.events[0].event.key.keysym.sym);
    EXPECT_EQ(97, first.events[0].event.key.keysym.unicode);
    EXPECT_EQ(0, first.events[0].mods);
    EXPECT_EQ(SDL_MOUSEBUTTONDOWN, first.events[1].event.type);
    EXPECT_EQ(1, first.events[1].mods);
    ASSERT_EQ(2u, first.clock.size());
    EXPECT_EQ(2u, first.clock[0].reading);
    EXPECT_EQ(21u, first.clock[0].time);
    EXPECT_EQ(7u, first.clock[1].reading);
    EXPECT_EQ(std::vector<util::String>{"caf\xe9\n"}, first.pastes);
    EXPECT_FALSE(first.isQuit);
    EXPECT_TRUE(r.frames[2].isQuit);
}

TEST(Recording, ModifiersAndMouseStayUntilTheyChange)
{
    const Recording r = ParseRecording(Whole);
    const RecordedFrame& second = r.frames[1];
    EXPECT_EQ(1, second.mods);
    EXPECT_EQ(1, second.events[1].mods);
    EXPECT_EQ(400, second.mouseX);
    EXPECT_EQ(300, second.mouseY);
    EXPECT_TRUE(second.pastes.empty());
    EXPECT_TRUE(second.clock.empty());
    EXPECT_EQ(0, r.frames[2].mods);
    EXPECT_EQ(401, r.frames[2].mouseX);
}

TEST(Recording, EveryKindOfEventReadsAsItPrints)
{
    for (const std::string line :
         {"keydown a 97", "keyup left_shift 0", "keydown world_70 230", "keydown #7 0",
          "keyup # 35", "keydown 5 53", "press 5 0 65535", "release 1 3 4",
          "move 10 20 -300 32767 7", "axis 31 255 -32768", "hat 0 1 12", "joydown 1 3",
          "joyup 31 255", "focus 0 2", "focus 1 6", "resize 640 480", "expose"})
    {
        const Recording r = Parse("frame 0\n" + line + "\n");
        ASSERT_EQ(1u, r.frames.at(0).events.size()) << line;
        EXPECT_EQ(line, PrintEvent(r.frames[0].events[0].event));
    }
}

TEST(Recording, WhatIsNoInputIsNotPrinted)
{
    for (Uint8 type : {SDL_QUIT, SDL_SYSWMEVENT, SDL_USEREVENT, SDL_JOYBALLMOTION, SDL_NUMEVENTS})
    {
        SDL_Event event = {};
        event.type = type;
        EXPECT_EQ("", PrintEvent(event));
    }
}

TEST(Recording, EveryKeyOfSDLReadsAsItPrints)
{
    for (int key = 0; key < SDLK_LAST; ++key)
    {
        SDL_Event event = {};
        event.type = SDL_KEYDOWN;
        event.key.keysym.sym = static_cast<SDLKey>(key);
        const Recording r = Parse("frame 0\n" + PrintEvent(event) + "\n");
        EXPECT_EQ(key, r.frames.at(0).events.at(0).event.key.keysym.sym);
    }
}

TEST(Recording, EveryTextReadsAsItIsQuoted)
{
    util::String all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    for (const util::String& text : {util::String(), all, util::String("\\x41 \"#\n")})
    {
        const util::String line = "paste " + Quote(text);
        for (const char c : line)
            EXPECT_TRUE(c >= ' ' && c <= '~') << int(c);
        EXPECT_EQ(text, Parse("frame 0\n" + line + "\n").frames.at(0).pastes.at(0));
    }
    EXPECT_EQ("\"a\\n\\t\\\"\\\\\\xe9\\x00\"", Quote(util::String("a\n\t\"\\\xe9\0", 7)));
}

TEST(Recording, AJoystickReadsAsItPrints)
{
    const RecordedJoystick joystick{3, "a \"b\"", {1, -2}};
    EXPECT_EQ("joystick 3 \"a \\\"b\\\"\" 1 -2", PrintJoystick(joystick));
    const Recording r = Parse(PrintJoystick(joystick) + "\n" + PrintJoystick({0, "", {}}) + "\n");
    EXPECT_EQ("a \"b\"", r.joysticks.at(0).name);
    EXPECT_EQ((std::vector<int>{1, -2}), r.joysticks.at(0).axes);
    EXPECT_TRUE(r.joysticks.at(1).axes.empty());
}

TEST(Recording, OfOneThatWasCutOffTheLastLineIsLeftOut)
{
    // Wherever the writing program died, what is there can be played.
    const std::string whole = Whole;
    const size_t head = whole.find('\n') + 1;
    for (size_t size = head; size < whole.size(); ++size)
        EXPECT_EQ("", Failure(whole.substr(0, size))) << size;
    const Recording r = Parse("frame 5\nkeydown a 97\nkeyup a");
    EXPECT_EQ(1u, r.frames.at(0).events.size());
}

TEST(Recording, WithoutFramesIsARecordingStill)
{
    EXPECT_TRUE(Parse("").frames.empty());
}

TEST(Recording, ABrokenLineIsNamed)
{
    const struct
    {
        const char* text;
        const char* failure;
    } heads[] = {
        {"", "line 1: this is no recording"},
        {"quib recording 1", "line 1: this is no recording"}, // its line has no end
        {"FileInfo.version = 2;\n", "line 1: this is no recording"},
        {"quib recording 2\n", "line 1: this recording is of a version that is not known"},
        {"quib recording 10\n", "line 1: this recording is of a version that is not known"},
        {"quib recording 1 \n", "line 1: this recording is of a version that is not known"},
        {"\nquib recording 1\n", "line 1: this is no recording"},
    };
    for (const auto& c : heads)
        EXPECT_EQ(c.failure, Failure(c.text)) << c.text;

    const struct
    {
        const char* line;
        const char* failure;
    } lines[] = {
        {"jump 3", "\"jump\" is not known"},
        {" expose", "something is missing"},
        {"expose ", ""}, // a blank too much is none
        {"expose 1", "\"1\" is too much"},
        {"keydown a", "something is missing"},
        {"keydown  a 1", "something is missing"},
        {"keydown a 97 98", "\"98\" is too much"},
        {"keydown nokey 1", "\"nokey\" is no key"},
        {"keydown mouse_left 1", "\"mouse_left\" is no key"},
        {"keydown #323 1", "323 is not within 0 to 322"},
        {"keydown #x 1", "\"x\" is no whole number"},
        {"keydown a 65536", "65536 is not within 0 to 65535"},
        {"keydown a 1.5", "\"1.5\" is no whole number"},
        {"press 1 -1 0", "-1 is not within 0 to 65535"},
        {"press 256 0 0", "256 is not within 0 to 255"},
        {"press 1 99999999999 0", "99999999999 is not within 0 to 65535"},
        {"move 0 0 32768 0 0", "32768 is not within -32768 to 32767"},
        {"axis 32 0 0", "32 is not within 0 to 31"},
        {"hat 0 0 16", "16 is not within 0 to 15"},
        {"focus 2 0", "2 is not within 0 to 1"},
        {"resize 0 10", "0 is not within 1 to 65535"},
        {"mods 65536", "65536 is not within 0 to 65535"},
        {"mods -1", "-1 is not within 0 to 65535"},
        {"display 0 0", "0 is not within 1 to 65535"},
        {"window 1", "something is missing"},
        {"clock 5 99", "99 is not within 100 to 4294967295"},
        {"clock 5 4294967296", "4294967296 is not within 100 to 4294967295"},
        {"frame 99", "99 is not within 100 to 4294967295"},
        {"frame", "something is missing"},
        {"paste", "a text in double quotes is missing"},
        {"paste text", "a text in double quotes is missing"},
        {"paste \"text", "the text has no closing quote"},
        {"paste \"text\"x", "there is no blank after the text"},
        {"paste \"text\" x", "\"x\" is too much"},
        {"paste \"\\", "the text has a backslash that starts nothing"},
        {"paste \"\\q\"", "the text has a backslash that starts nothing"},
        {"paste \"\\x4\"", "the text has a backslash that starts nothing"},
        {"paste \"\\x-1\"", "the text has a backslash that starts nothing"},
        {"paste \"\\x", "the text has a backslash that starts nothing"},
        {"joystick 0", "a text in double quotes is missing"},
        {"joystick 0 \"Pad\" 40000", "40000 is not within -32768 to 32767"},
        {"joystick 32 \"Pad\"", "32 is not within 0 to 31"},
        {"quit now", "\"now\" is too much"},
    };
    for (const auto& c : lines)
    {
        const std::string text =
            RecordingHead + ("\n# a comment\nframe 100\n" + std::string(c.line)) + "\nexpose\n";
        EXPECT_EQ(*c.failure ? std::string("line 4: ") + c.failure : "", Failure(text)) << c.line;
    }
}

TEST(Recording, TheClockIsReadInOrder)
{
    EXPECT_EQ("line 4: 3 is not within 4 to 4294967295",
              Failure("quib recording 1\nframe 0\nclock 3 1\nclock 3 2\n"));
    EXPECT_EQ("line 5: 20 is not within 21 to 4294967295",
              Failure("quib recording 1\nframe 0\nclock 3 21\nexpose\nframe 20\n"));
}

TEST(Recording, EventsNeedAFrameAndASessionThatGoesOn)
{
    for (const std::string line :
         {"expose", "keydown a 97", "mods 1", "mouse 1 1", "paste \"\"", "quit"})
    {
        EXPECT_EQ("line 2: this stands before the first frame",
                  Failure("quib recording 1\n" + line + "\n"));
        EXPECT_EQ("line 4: this stands after the end of the session",
                  Failure("quib recording 1\nframe 1\nquit\n" + line + "\n"));
    }
}

TEST(Recording, NoBytesAreTooBroken)
{
    // Each line with each of its bytes replaced: understood or refused, and nothing else.
    const std::string whole = Whole;
    for (size_t i = 0; i < whole.size(); ++i)
        for (const char c : {'\0', '\n', ' ', '"', '\\', '9', '-', '\xff'})
        {
            std::string text = whole;
            text[i] = c;
            const std::string failure = Failure(text);
            EXPECT_TRUE(failure.empty() || failure.compare(0, 5, "line ") == 0) << failure;
        }
}
