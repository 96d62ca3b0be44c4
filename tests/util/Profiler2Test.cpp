#include "util/Profiler2.h"

#include "KeyEvents.h"
#include "util/ProfilerClock.h"
#include "util/StaticProfilerData.h"

#include <SDL_keysym.h>
#include <gtest/gtest.h>

using test::g_milliseconds;
using util::Profiler2;
using util::StaticProfilerData;

namespace test
{
extern size_t g_allocations;
}

namespace
{
const char* const NothingYet = "No output generated yet.";

class Profiler2Test : public testing::Test
{
protected:
    void SetUp() override { Switch(true); }
    void TearDown() override { Switch(false); }
    void Switch(bool active)
    {
        profiler->SetActive(active);
        profiler->Update(0);
    }
    static void Pass(StaticProfilerData& data, unsigned milliseconds)
    {
        const util::StaticProfilerScope scope(data);
        g_milliseconds += milliseconds;
    }
    bool Press(int key, bool down = true, bool handled = false, bool repeat = false)
    {
        return test::SendKeyTo(*profiler, key, down, handled, repeat);
    }
    /// The row without its name; "" when there is none.
    std::string Row(const std::string& name) const
    {
        const std::string& output = profiler->GetOutput();
        const size_t at = output.find("\n " + name + " ");
        if (at == std::string::npos)
            return "";
        const size_t numbers = output.find_first_not_of(' ', at + 2 + name.size());
        return output.substr(numbers, output.find('\n', at + 1) - numbers);
    }

    Profiler2* profiler = Profiler2::GetInstancePtr();
    // The longest name of all, so that it sets the width.
    StaticProfilerData slow{"a place with a name of 32 bytes."};
    StaticProfilerData quick{"quick place"};
};
}

TEST_F(Profiler2Test, WritesARowForEachPlaceTheCostliestFirst)
{
    Pass(quick, 30);
    Pass(slow, 100);
    Pass(slow, 150);
    profiler->Update(0.4);
    Pass(quick, 50);
    profiler->Update(0.6);
    const std::string& output = profiler->GetOutput();
    EXPECT_EQ("FPS: 2.00\n"
              "\n"
              " Name                               %total   \xB5s/frame  frame-spike  call-spike"
              "   \xB5s/call   calls/frame\n"
              " a place with a name of 32 bytes.   25.0 %     125000       250 ms      150 ms"
              "     125000       1.0\n"
              " quick place                         8.0 %      40000        50 ms       50 ms"
              "     40000       1.0\n",
              output.substr(0, output.find('\n', output.find("\n quick place") + 1) + 1));
}

TEST_F(Profiler2Test, SortsByTotalTimeAndNotByCalls)
{
    Pass(slow, 10);
    for (int i = 0; i < 5; ++i)
        Pass(quick, 1);
    profiler->Update(1);
    EXPECT_LT(profiler->GetOutput().find("a place"), profiler->GetOutput().find("quick place"));
    for (int i = 0; i < 5; ++i)
        Pass(quick, 3);
    Pass(slow, 10);
    profiler->Update(1);
    EXPECT_GT(profiler->GetOutput().find("a place"), profiler->GetOutput().find("quick place"));

    StaticProfilerData same("same");
    EXPECT_FALSE(util::ProfilerComp()(&slow, &same));
    EXPECT_FALSE(util::ProfilerComp()(&same, &slow));
}

TEST_F(Profiler2Test, APlaceThatWasNotPassedHasARowOfZeros)
{
    profiler->Update(1);
    EXPECT_EQ("0.0 %          0         0 ms        0 ms         0       0.0", Row("quick place"));
}

TEST_F(Profiler2Test, OutputComesOnceASecondAndBeginsANewInterval)
{
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    Pass(quick, 500);
    profiler->Update(0.75);
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    profiler->Update(0.25);
    EXPECT_EQ("50.0 %     250000       500 ms      500 ms     500000       0.5",
              Row("quick place"));
    EXPECT_EQ(0u, quick.GetTotalTime() + quick.GetCalls());

    Pass(quick, 100);
    profiler->Update(2);
    EXPECT_EQ(0u, profiler->GetOutput().find("FPS: 0.50\n")) << profiler->GetOutput();
    EXPECT_EQ("5.0 %     100000       100 ms      100 ms     100000       1.0", Row("quick place"));
}

TEST_F(Profiler2Test, ClearZeroesThePlacesAndResetTheTimeToo)
{
    Pass(quick, 100);
    profiler->Update(0.5);
    profiler->Clear();
    EXPECT_EQ(0u, quick.GetTotalTime());
    profiler->Update(0.5);
    EXPECT_EQ(0u, profiler->GetOutput().find("FPS: 2.00\n")) << "the time went on";

    profiler->Update(0.5);
    profiler->Reset();
    profiler->Update(0.75);
    EXPECT_EQ(0u, profiler->GetOutput().find("FPS: 2.00\n")) << "no new output yet";
    profiler->Update(0.25);
    Pass(quick, 100);
    profiler->Update(1);
    EXPECT_EQ(0u, profiler->GetOutput().find("FPS: 1.00\n"));
}

TEST_F(Profiler2Test, PlacesCountNothingWhileItIsOff)
{
    Switch(false);
    EXPECT_EQ("Unactive", profiler->GetOutput());
    Pass(quick, 100);
    EXPECT_EQ(0u, quick.GetCalls());
    profiler->Update(2);
    EXPECT_EQ("Unactive", profiler->GetOutput());
    Switch(true);
    EXPECT_EQ(NothingYet, profiler->GetOutput());
}

TEST_F(Profiler2Test, WhatCameBeforeItWasSwitchedOnIsNotInItsOutput)
{
    Pass(quick, 100);
    Switch(false);
    Switch(true);
    profiler->Update(1);
    EXPECT_EQ("0.0 %          0         0 ms        0 ms         0       0.0", Row("quick place"));
}

TEST_F(Profiler2Test, TheNumericPadsMultiplySwitchesItAndForcesAnOutput)
{
    Switch(false);
    EXPECT_TRUE(Press(SDLK_KP_MULTIPLY));
    EXPECT_FALSE(profiler->IsActive()) << "not before the end of the frame";
    profiler->Update(0.02);
    EXPECT_TRUE(profiler->IsActive());
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    profiler->Update(0);
    EXPECT_EQ(NothingYet, profiler->GetOutput()) << "no time, no rates";
    profiler->Update(0.02);
    const std::string forced = profiler->GetOutput();
    EXPECT_EQ(0u, forced.find("FPS: 100.00\n")) << forced;
    profiler->Update(0.02);
    EXPECT_EQ(forced, profiler->GetOutput()) << "only once";

    EXPECT_TRUE(Press(SDLK_KP_MULTIPLY));
    profiler->Update(0.02);
    EXPECT_FALSE(profiler->IsActive());
    Switch(true);
    profiler->Update(0.02);
    EXPECT_EQ(NothingYet, profiler->GetOutput()) << "it was not the key this time";
}

TEST_F(Profiler2Test, IgnoresOtherKeysReleasesRepeatsAndWhatSomebodyHasHandled)
{
    EXPECT_FALSE(Press(SDLK_KP_DIVIDE));
    EXPECT_FALSE(Press(SDLK_ASTERISK));
    EXPECT_FALSE(Press(SDLK_KP_MULTIPLY, false));
    EXPECT_FALSE(Press(SDLK_KP_MULTIPLY, true, false, true));
    EXPECT_TRUE(Press(SDLK_KP_MULTIPLY, true, true));
    profiler->Update(0.02);
    EXPECT_TRUE(profiler->IsActive());
    EXPECT_EQ(50, profiler->GetPriority());
}

TEST_F(Profiler2Test, AsksForNoMemoryBetweenOutputs)
{
    profiler->Update(1);
    const size_t before = test::g_allocations;
    for (int i = 0; i < 10; ++i)
    {
        Pass(quick, 1);
        Pass(slow, 1);
        profiler->Update(0.05);
    }
    EXPECT_EQ(before, test::g_allocations);
    profiler->Update(1);
    EXPECT_NE(before, test::g_allocations);
}
