#include "util/StaticProfilerData.h"

#include "util/ProfilerClock.h"

#include <gtest/gtest.h>

using test::g_milliseconds;
using util::StaticProfilerData;

namespace
{
class Listening
{
public:
    Listening() { StaticProfilerData::s_isListening = true; }
    ~Listening() { StaticProfilerData::s_isListening = false; }
};

// A name of this file's own, once it has been passed.
void Place(unsigned milliseconds)
{
    QUIB_PROFILE_OFTEN("StaticProfilerDataTest's place");
    g_milliseconds += milliseconds;
}

size_t CountInList(const std::string& name)
{
    size_t n = 0;
    for (StaticProfilerData* data = StaticProfilerData::GetFirst(); data; data = data->GetNext())
        n += data->GetName() == name;
    return n;
}

StaticProfilerData* Find(const std::string& name)
{
    StaticProfilerData* data = StaticProfilerData::GetFirst();
    while (data && data->GetName() != name)
        data = data->GetNext();
    return data;
}
}

TEST(StaticProfilerData, AddsUpTheTimesOfAFrameAndKeepsTheLongestCall)
{
    StaticProfilerData data("data");
    for (const unsigned milliseconds : {5u, 9u, 2u})
    {
        const unsigned start = data.Begin();
        EXPECT_EQ(g_milliseconds, start);
        g_milliseconds += milliseconds;
        data.End(start);
    }
    EXPECT_EQ(16u, data.GetFrameTime());
    EXPECT_EQ(9u, data.GetCallSpike());
    EXPECT_EQ(3u, data.GetCalls());
    EXPECT_EQ(0u, data.GetTotalTime()) << "not before the end of the frame";
    EXPECT_EQ(0u, data.GetFrameSpike());
}

TEST(StaticProfilerData, KeepsTheLongestFrame)
{
    StaticProfilerData data("data");
    for (const unsigned milliseconds : {5u, 9u, 2u})
    {
        data.End(g_milliseconds - milliseconds);
        data.EndFrame();
        EXPECT_EQ(0u, data.GetFrameTime());
    }
    EXPECT_EQ(16u, data.GetTotalTime());
    EXPECT_EQ(9u, data.GetFrameSpike());
    data.Clear();
    EXPECT_EQ(0u, data.GetTotalTime() + data.GetFrameSpike() + data.GetCallSpike() +
                      data.GetCalls() + data.GetFrameTime());
    EXPECT_EQ("data", data.GetName());
}

TEST(StaticProfilerData, StandsInTheListOfAllWhileItLives)
{
    {
        StaticProfilerData first("first of list"), second("second of list");
        {
            StaticProfilerData third("third of list");
            EXPECT_EQ(1u, CountInList("third of list"));
        }
        EXPECT_EQ(0u, CountInList("third of list"));
        EXPECT_EQ(1u, CountInList("first of list"));
        EXPECT_EQ(1u, CountInList("second of list"));
    }
    EXPECT_EQ(0u, CountInList("first of list"));
    EXPECT_EQ(0u, CountInList("second of list"));
}

TEST(StaticProfilerData, APlaceCountsEachPassWhileSomebodyListens)
{
    Place(7);
    StaticProfilerData* place = Find("StaticProfilerDataTest's place");
    ASSERT_TRUE(place);
    EXPECT_EQ(0u, place->GetCalls()) << "nobody listened";
    {
        const Listening listening;
        Place(7);
        Place(8);
    }
    EXPECT_EQ(1u, CountInList("StaticProfilerDataTest's place"));
    EXPECT_EQ(2u, place->GetCalls());
    EXPECT_EQ(15u, place->GetFrameTime());
    place->Clear();
}

TEST(StaticProfilerData, WhatBeginsWhileNobodyListensIsNotCountedByHalf)
{
    StaticProfilerData data("data");
    {
        const util::StaticProfilerScope scope(data);
        StaticProfilerData::s_isListening = true;
    }
    EXPECT_EQ(0u, data.GetCalls());
    {
        const util::StaticProfilerScope scope(data);
        StaticProfilerData::s_isListening = false;
    }
    EXPECT_EQ(1u, data.GetCalls());
}
