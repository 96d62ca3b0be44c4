#include "util/String.h"

#include "WhatOf.h"
#include "util/Failures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>

using util::FromString;
using util::String;
using util::ToString;
using Parts = std::vector<String>;

namespace
{
template<typename T>
String CastError(const String& text)
{
    return test::WhatOf<BadDataException>([&] { FromString<T>(text); });
}
}

TEST(String, ChangesTheCaseOfEnglishLettersOnly)
{
    EXPECT_EQ("abc xyz 09_\xC4\xE4", util::ToLower("aBC XYz 09_\xC4\xE4"));
    EXPECT_EQ("ABC XYZ 09_\xC4\xE4", util::ToUpper("aBC XYz 09_\xC4\xE4"));
    EXPECT_EQ("@[`{", util::ToLower("@[`{"));
    EXPECT_EQ("@[`{", util::ToUpper("@[`{"));
}

TEST(String, SplitKeepsEmptyParts)
{
    EXPECT_EQ((Parts{"a", "b"}), util::Split("a,b", ','));
    EXPECT_EQ((Parts{"a", "", "b"}), util::Split("a,,b", ','));
    EXPECT_EQ((Parts{"a", ""}), util::Split("a,", ','));
    EXPECT_EQ((Parts{"", "a"}), util::Split(",a", ','));
    EXPECT_EQ((Parts{""}), util::Split("", ','));
    EXPECT_EQ((Parts{"a;b"}), util::Split("a;b", ','));
}

TEST(String, JoinIsTheWayBackFromSplit)
{
    EXPECT_EQ("", util::Join({}, ", "));
    EXPECT_EQ("a", util::Join({"a"}, ", "));
    EXPECT_EQ("a, , b", util::Join({"a", "", "b"}, ", "));
    EXPECT_EQ("x,,y,", util::Join(util::Split("x,,y,", ','), ","));
}

TEST(String, ComparesStartsAndEnds)
{
    EXPECT_TRUE(util::starts_with("welcome.qib", "wel"));
    EXPECT_TRUE(util::starts_with("x", ""));
    EXPECT_FALSE(util::starts_with("welcome", "Wel"));
    EXPECT_FALSE(util::starts_with("we", "wel"));
    EXPECT_TRUE(util::ends_with("welcome.qib", ".qib"));
    EXPECT_TRUE(util::ends_with("x", ""));
    EXPECT_FALSE(util::ends_with("welcome.QIB", ".qib"));
    EXPECT_FALSE(util::ends_with("qib", ".qib"));
}

TEST(String, ComparesIgnoringCase)
{
    EXPECT_TRUE(util::iends_with("WELCOME.QIB", ".qib"));
    EXPECT_FALSE(util::iends_with("QIB", ".qib"));
    EXPECT_TRUE(util::istarts_with("WELCOME.QIB", "wel"));
    EXPECT_FALSE(util::istarts_with("WE", "wel"));
    EXPECT_TRUE(util::iequals("aBc", "AbC"));
    EXPECT_FALSE(util::iequals("abc", "abcd"));
    EXPECT_FALSE(util::iequals("\xE4", "\xC4"));
}

TEST(String, PluralOfOneIsNone)
{
    EXPECT_EQ("s", util::Plural(0));
    EXPECT_EQ("", util::Plural(1));
    EXPECT_EQ("s", util::Plural(2));
}

TEST(ToString, GivesSixDigitsOfFloatingNumbers)
{
    EXPECT_EQ("0", ToString(0.0f));
    EXPECT_EQ("0", ToString(0.0));
    EXPECT_EQ("0.333333", ToString(1.0 / 3));
    EXPECT_EQ("123457", ToString(123456.7f));
    EXPECT_EQ("1.23457e+06", ToString(1234567.0f));
    EXPECT_EQ("1e-05", ToString(0.00001f));
    EXPECT_EQ("inf", ToString(std::numeric_limits<float>::infinity()));
    EXPECT_EQ("-inf", ToString(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ("2.5", ToString(2.5L));
}

TEST(ToString, GivesWholeNumbersInFull)
{
    EXPECT_EQ("-2147483648", ToString(std::numeric_limits<int>::min()));
    EXPECT_EQ("4294967295", ToString(std::numeric_limits<unsigned>::max()));
    EXPECT_EQ("1234567", ToString(1234567));
    EXPECT_EQ("18446744073709551615", ToString(std::numeric_limits<unsigned long>::max()));
}

TEST(ToString, OfTruthValuesIsAWord)
{
    EXPECT_EQ("true", ToString(true));
    EXPECT_EQ("false", ToString(false));
    EXPECT_EQ(true, FromString<bool>("true"));
    EXPECT_EQ(false, FromString<bool>("false"));
    EXPECT_EQ("Bad lexical cast: \"1\"", CastError<bool>("1"));
    EXPECT_EQ("Bad lexical cast: \"True\"", CastError<bool>("True"));
}

TEST(FromString, ReadsNumbers)
{
    EXPECT_EQ(42, FromString<int>("42"));
    EXPECT_EQ(-42, FromString<int>("-42"));
    EXPECT_EQ(42, FromString<int>("+42"));
    EXPECT_EQ(7u, FromString<unsigned>("7"));
    EXPECT_EQ(0.5f, FromString<float>("0.5"));
    EXPECT_EQ(-1.5e10, FromString<double>("-1.5e10"));
    EXPECT_EQ(1e20f, FromString<float>("1e+20"));
    EXPECT_EQ(" text ", FromString<String>(" text "));
}

TEST(FromString, ReadsInfinities)
{
    EXPECT_EQ(std::numeric_limits<float>::infinity(), FromString<float>("+inf"));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), FromString<float>("-inf"));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), FromString<double>("inf"));
}

TEST(FromString, RefusesWhatIsNoNumber)
{
    for (const char* text : {"", " 1", "1 ", "1.5x", "x", "1,5", "0x10", "99999999999", "1.0"})
        EXPECT_EQ("Bad lexical cast: \"" + String(text) + "\"", CastError<int>(text));
    for (const char* text : {"", " 1", "1.5x", "1,5", "one"})
        EXPECT_EQ("Bad lexical cast: \"" + String(text) + "\"", CastError<float>(text));
}

TEST(ToString, DoesNotDependOnTheLocaleOfStreams)
{
    // Somebody else's code in the process may set one: decimal commas and grouped thousands.
    struct Commas : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    EXPECT_EQ("1234.5", ToString(1234.5f));
    EXPECT_EQ("1234567", ToString(1234567));
    std::locale::global(before);
}

TEST(Shorten, KeepsTheHeadOfALongText)
{
    EXPECT_EQ("", util::Shorten(""));
    EXPECT_EQ("abc", util::Shorten("abc", 3));
    EXPECT_EQ("abc...", util::Shorten("abcd", 3));
    EXPECT_EQ(std::string(1000, 'x'), util::Shorten(std::string(1000, 'x')));
    EXPECT_EQ(std::string(1000, 'x') + "...", util::Shorten(std::string(1001, 'x')));
}

TEST(Latin1ToUTF8, GivesEachCharacterItsOneOrTwoBytes)
{
    EXPECT_EQ("", util::Latin1ToUTF8(""));
    EXPECT_EQ("plain\n", util::Latin1ToUTF8("plain\n"));
    EXPECT_EQ("caf\xc3\xa9 \xc2\x80\xc2\xbf\xc3\x80\xc3\xbf",
              util::Latin1ToUTF8("caf\xe9 \x80\xbf\xc0\xff"));
}

TEST(UTF8ToLatin1, TakesBackWhatTheOtherMakes)
{
    util::String all, back;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    ASSERT_TRUE(util::UTF8ToLatin1(util::Latin1ToUTF8(all), back));
    EXPECT_EQ(all, back);
}

TEST(UTF8ToLatin1, RefusesWhatLiesBeyondAndWhatIsBroken)
{
    const char* const cases[] = {
        "10 \xe2\x82\xac",  // a euro
        "\xc4\x80",         // the first beyond
        "\xf0\x9f\x98\x80", // a face
        "\xc3",             // cut off
        "\xc3x",            // its second byte is none
        "\xc3\xc3",
        "\xa9",     // a second byte alone
        "\xc0\x80", // longer than need be
        "\xc1\xbf",
        "\xff\xfe",
    };
    for (const char* text : cases)
    {
        util::String latin1 = "left alone";
        EXPECT_FALSE(util::UTF8ToLatin1(text, latin1)) << text;
        EXPECT_EQ("left alone", latin1);
    }
}
