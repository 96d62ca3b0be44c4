#include "util/Profiler.h"

#include "AllocationCounter.h"
#include "KeyEvents.h"
#include "util/Profiler2.h"
#include "util/ProfilerClock.h"
#include "util/ScopeProfiler.h"
#include "util/Timer.h"

#include <SDL.h>
#include <gtest/gtest.h>

unsigned test::g_milliseconds = 1000;

// Stands before SDL's own.
extern "C" Uint32 SDL_GetTicks()
{
    return test::g_milliseconds;
}

using test::g_milliseconds;
using util::Profiler;
using util::ScopeProfiler;

namespace
{
const char* const TooMany = "ERROR: Too many children of node Main\n"
                            "This problem must be fixed before any profiling can be done.";
const char* const NothingYet = "No output generated yet.";

class ProfilerTest : public testing::Test
{
protected:
    // Each test starts with an active profiler at the beginning of a frame.
    void SetUp() override
    {
        profiler->Reset();
        Switch(true);
    }
    void TearDown() override
    {
        Switch(false);
        profiler->Reset();
    }
    void Switch(bool active)
    {
        profiler->SetActive(active);
        profiler->Update();
    }
    void EndFrame(unsigned milliseconds)
    {
        g_milliseconds += milliseconds;
        profiler->Update();
    }
    bool Press(int key, bool down = true, bool handled = false, bool repeat = false)
    {
        return test::SendKeyTo(*profiler, key, down, handled, repeat);
    }
    static bool IsListening() { return ScopeProfiler::s_begin || ScopeProfiler::s_end; }

    Profiler* profiler = Profiler::GetInstancePtr();
};

void Stage(unsigned milliseconds)
{
    QUIB_PROFILE("Stage");
    g_milliseconds += milliseconds;
}

void Recurse(int levels)
{
    QUIB_PROFILE("Recurse");
    g_milliseconds += 10;
    if (levels > 1)
        Recurse(levels - 1);
}

size_t Count(const std::string& text, const std::string& part)
{
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++n;
    return n;
}
}

TEST_F(ProfilerTest, WritesARowForEachScopeUnderTheOneThatItIsIn)
{
    for (int frame = 0; frame < 2; ++frame)
    {
        {
            QUIB_PROFILE("Outer");
            for (int i = 0; i < 2; ++i)
            {
                QUIB_PROFILE("Inner");
                g_milliseconds += 100;
            }
            g_milliseconds += 100;
        }
        EndFrame(200);
    }
    EXPECT_EQ(
        "FPS: 2.00\n"
        "\n"
        "Profile data for 1.000 s\n"
        " Name                   %owner    %total   \xB5s/frame  frame-spike   \xB5s/call"
        "   calls/frame\n"
        " Main                  100.0 %   100.0 %     500000        500000     500000     1.0\n"
        "   Outer                60.0 %    60.0 %     300000        300000     300000     1.0\n"
        "     Inner              66.7 %    40.0 %     200000        200000     100000     2.0\n"
        "     MISSING TIME       33.3 %    20.0 %     100000\n"
        "   MISSING TIME         40.0 %    40.0 %     200000\n",
        profiler->GetOutput());
}

TEST_F(ProfilerTest, MissesNoTimeWhereChildrenAddUpNorUnderAScopeWithoutChildren)
{
    // Ten tenths are less than one, in binary: that makes no row.
    for (int i = 0; i < 10; ++i)
        Stage(100);
    EndFrame(0);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Stage"));
    EXPECT_EQ(0u, Count(profiler->GetOutput(), "MISSING TIME"));
    for (int i = 0; i < 10; ++i)
        Stage(100);
    EndFrame(1);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "MISSING TIME"));
}

TEST_F(ProfilerTest, TheSpikeIsTheMostThatAScopeTookInOneFrameInAllItsCalls)
{
    Stage(30);
    Stage(40);
    EndFrame(0);
    Stage(60);
    EndFrame(0);
    const Profiler::Node& root = profiler->GetRoot();
    EXPECT_DOUBLE_EQ(0.07, root.GetLargestTime());
    EXPECT_DOUBLE_EQ(0.13, root.GetTotalTime());
    EXPECT_EQ(2u, root.GetCalls());
    EndFrame(1000);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Stage              11.5 %    11.5 %      43333"
                                               "        70000     43333     1.0\n"))
        << profiler->GetOutput();
}

TEST_F(ProfilerTest, EqualLiteralsAtTwoPlacesAreSiblings)
{
    Stage(10);
    {
        QUIB_PROFILE("Stage");
    }
    Stage(10);
    EXPECT_EQ(2u, profiler->GetRoot().GetChildCount());
    EndFrame(1000);
    EXPECT_EQ(2u, Count(profiler->GetOutput(), "\n   Stage "));
}

TEST_F(ProfilerTest, AScopeThatIsEnteredWithinItselfIsItsOwnChild)
{
    Recurse(3);
    EndFrame(1000);
    EXPECT_EQ(1u, profiler->GetRoot().GetChildCount());
    for (const char* row : {"\n   Recurse ", "\n     Recurse ", "\n       Recurse "})
        EXPECT_EQ(1u, Count(profiler->GetOutput(), row)) << profiler->GetOutput();
}

TEST_F(ProfilerTest, ANodeTellsItsChildrenApartByTheAddressOfTheirNames)
{
    const char first[] = "same", second[] = "same";
    Profiler::Node node("owner", nullptr);
    Profiler::Node* child = node.GetChild(first);
    EXPECT_STREQ("same", child->GetName());
    EXPECT_EQ(&node, child->GetParent());
    EXPECT_EQ(child, node.GetChild(first));
    EXPECT_NE(child, node.GetChild(second));
    EXPECT_EQ(2u, node.GetChildCount());
}

TEST_F(ProfilerTest, ATenthChildOfANodeStopsItAndTheProgramGoesOn)
{
    static const char names[11][2] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
    for (int i = 0; i < 9; ++i)
    {
        const ScopeProfiler scope(names[i]);
        const ScopeProfiler inner(names[10]);
    }
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    {
        const ScopeProfiler scope(names[9]);
        EXPECT_EQ(TooMany, profiler->GetOutput());
        EXPECT_FALSE(IsListening());
        Stage(10);
    }
    EXPECT_EQ(9u, profiler->GetRoot().GetChildCount());
    profiler->Begin(names[0]);
    EndFrame(2000);
    profiler->End();
    profiler->End();
    EndFrame(2000);
    EXPECT_EQ(TooMany, profiler->GetOutput());
    EXPECT_TRUE(profiler->IsActive());
}

TEST_F(ProfilerTest, NamesTheNodeThatHasTooManyChildren)
{
    static const char names[11][6] = {"inner", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
    const ScopeProfiler outer(names[0]);
    for (int i = 1; i < 11; ++i)
        const ScopeProfiler scope(names[i]);
    EXPECT_EQ(0u, profiler->GetOutput().find("ERROR: Too many children of node inner\n"));
}

TEST_F(ProfilerTest, AnEndTooManyStopsIt)
{
    Stage(10);
    profiler->End();
    EXPECT_EQ("ERROR: Too many calls to End()\n"
              "This problem must be fixed before any profiling can be done.",
              profiler->GetOutput());
    EXPECT_FALSE(IsListening());
}

TEST_F(ProfilerTest, AnUpdateWithinAScopeStopsIt)
{
    {
        QUIB_PROFILE("open");
        profiler->Update();
        EXPECT_EQ("ERROR: Profiler::Update() called within begin and end (fix code)\n"
                  "This problem must be fixed before any profiling can be done.",
                  profiler->GetOutput());
    }
    profiler->Reset();
    Stage(10);
    EndFrame(1000);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Stage"));
    EXPECT_EQ(0u, Count(profiler->GetOutput(), "ERROR"));
}

TEST_F(ProfilerTest, AnErrorStandsUntilAReset)
{
    profiler->End();
    Switch(false);
    EXPECT_EQ("Unactive", profiler->GetOutput());
    Switch(true);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "ERROR: "));
    EXPECT_FALSE(IsListening());
    profiler->Reset();
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    EXPECT_TRUE(IsListening());
}

TEST_F(ProfilerTest, OutputComesOnceASecond)
{
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    EndFrame(999);
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    EndFrame(1);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "FPS: 2.00\n")) << profiler->GetOutput();
    EndFrame(600);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Profile data for 1.000 s\n"));
    EndFrame(600);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "FPS: 1.67\n\nProfile data for 1.200 s\n"));
}

TEST_F(ProfilerTest, AnOutputClearsAllCountersAndKeepsTheNodes)
{
    Stage(10);
    EndFrame(1000);
    EXPECT_EQ(1u, profiler->GetRoot().GetChildCount());
    EXPECT_EQ(0u, profiler->GetRoot().GetCalls());
    EXPECT_EQ(0, profiler->GetRoot().GetTotalTime());
    EXPECT_EQ(0, profiler->GetRoot().GetLargestTime());
    EndFrame(1000);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "   Stage               0.0 %     0.0 %"
                                               "          0            0         0     0.0\n"))
        << profiler->GetOutput();
}

TEST_F(ProfilerTest, ClearKeepsTheNodesAndResetDropsThem)
{
    Stage(10);
    EndFrame(10);
    profiler->Clear();
    EXPECT_EQ(0u, profiler->GetRoot().GetCalls());
    EXPECT_EQ(1u, profiler->GetRoot().GetChildCount());
    EndFrame(1000);
    EXPECT_NE(NothingYet, profiler->GetOutput());
    profiler->Reset();
    EXPECT_EQ(0u, profiler->GetRoot().GetChildCount());
    EXPECT_EQ(NothingYet, profiler->GetOutput());
}

TEST_F(ProfilerTest, HearsOfNoScopeWhileItIsOff)
{
    Switch(false);
    EXPECT_EQ("Unactive", profiler->GetOutput());
    EXPECT_FALSE(IsListening());
    profiler->Begin("by hand");
    profiler->End();
    profiler->End();
    EndFrame(2000);
    EXPECT_EQ("Unactive", profiler->GetOutput());
    EXPECT_EQ(0u, profiler->GetRoot().GetChildCount());
}

TEST_F(ProfilerTest, IsSwitchedAtTheEndOfAFrameSoThatOpenScopesStayBalanced)
{
    {
        QUIB_PROFILE("open when switched off");
        profiler->SetActive(false);
        EXPECT_TRUE(profiler->IsActive());
    }
    profiler->Update();
    EXPECT_FALSE(profiler->IsActive());
    {
        QUIB_PROFILE("open when switched on");
        profiler->SetActive(true);
        EXPECT_FALSE(IsListening());
    }
    profiler->Update();
    EXPECT_TRUE(profiler->IsActive());
    EXPECT_TRUE(IsListening());
    Stage(10);
    EndFrame(1000);
    EXPECT_EQ(1u, profiler->GetRoot().GetChildCount());
    EXPECT_EQ(0u, Count(profiler->GetOutput(), "ERROR")) << profiler->GetOutput();
}

TEST_F(ProfilerTest, AScopeThatIsLeftByAnExceptionEnds)
{
    try
    {
        QUIB_PROFILE("thrown through");
        throw 1;
    }
    catch (int)
    {
    }
    EndFrame(1000);
    EXPECT_EQ(0u, Count(profiler->GetOutput(), "ERROR")) << profiler->GetOutput();
}

TEST_F(ProfilerTest, TheNumericPadsDivideSwitchesItAndForcesAnOutput)
{
    Switch(false);
    EXPECT_TRUE(Press(SDLK_KP_DIVIDE));
    EXPECT_FALSE(profiler->IsActive()) << "not before the end of the frame";
    profiler->Update();
    EXPECT_TRUE(profiler->IsActive());
    EXPECT_EQ(NothingYet, profiler->GetOutput());
    EndFrame(0);
    EXPECT_EQ(NothingYet, profiler->GetOutput()) << "no time, no rates";
    EndFrame(20);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Profile data for 0.020 s\n"));
    EndFrame(20);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Profile data for 0.020 s\n")) << "only once";

    EXPECT_TRUE(Press(SDLK_KP_DIVIDE));
    profiler->Update();
    EXPECT_FALSE(profiler->IsActive());
    EXPECT_TRUE(Press(SDLK_KP_DIVIDE));
    EXPECT_TRUE(Press(SDLK_KP_DIVIDE));
    profiler->Update();
    EXPECT_FALSE(profiler->IsActive()) << "pressed twice in a frame";
}

TEST_F(ProfilerTest, IgnoresOtherKeysReleasesRepeatsAndWhatSomebodyHasHandled)
{
    EXPECT_FALSE(Press(SDLK_KP_MULTIPLY));
    EXPECT_FALSE(Press(SDLK_SLASH));
    EXPECT_FALSE(Press(SDLK_KP_DIVIDE, false));
    EXPECT_FALSE(Press(SDLK_KP_DIVIDE, true, false, true));
    EXPECT_TRUE(Press(SDLK_KP_DIVIDE, true, true));
    profiler->Update();
    EXPECT_TRUE(profiler->IsActive());
    EXPECT_EQ(50, profiler->GetPriority());
}

TEST_F(ProfilerTest, AsksForNoMemoryBetweenOutputs)
{
    const auto frame = [&]
    {
        Stage(1);
        Recurse(3);
        EndFrame(1);
    };
    frame();
    const size_t before = test::g_allocations;
    for (int i = 0; i < 10; ++i)
        frame();
    EXPECT_EQ(before, test::g_allocations);
    EndFrame(1000);
    EXPECT_NE(before, test::g_allocations);
}

TEST_F(ProfilerTest, GoesByTheRealClockInAReplayToo)
{
    util::Timer::SetSource([](unsigned) { return 5u; });
    Stage(250);
    EndFrame(750);
    util::Timer::SetSource(nullptr);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Stage              25.0 %"))
        << profiler->GetOutput();
}

TEST_F(ProfilerTest, TheClockMayBeginAnew)
{
    const unsigned before = g_milliseconds;
    g_milliseconds = 0u - 100;
    profiler->Reset();
    Stage(250);
    EndFrame(750);
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "FPS: 1.00\n\nProfile data for 1.000 s\n"));
    EXPECT_EQ(1u, Count(profiler->GetOutput(), "Stage              25.0 %"));
    g_milliseconds = before;
    profiler->Reset();
}

TEST_F(ProfilerTest, ItsOwnCostStandsInTheFlatList)
{
    util::Profiler2* flat = util::Profiler2::GetInstancePtr();
    flat->SetActive(true);
    flat->Update(0);
    Stage(10);
    Stage(10);
    flat->Update(1);
    for (const char* name : {" Profiler::Begin ", " Profiler::End "})
    {
        const std::string& output = flat->GetOutput();
        ASSERT_EQ(1u, Count(output, name)) << output;
        const size_t at = output.find(name);
        EXPECT_EQ("2.0", output.substr(output.find('\n', at) - 3, 3)) << "calls in a frame";
    }
    flat->SetActive(false);
    flat->Update(0);
}

TEST_F(ProfilerTest, LeavesAnotherListenerAloneWhileItIsOff)
{
    Switch(false);
    ScopeProfiler::s_begin = [](const char*) {};
    profiler->Reset();
    Switch(false);
    EXPECT_TRUE(ScopeProfiler::s_begin);
    ScopeProfiler::s_begin = nullptr;
}
