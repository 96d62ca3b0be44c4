// A frame in which nothing happens asks for no memory.
#include "AllocationCounter.h"
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/RecordedSDL.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"

#include <gtest/gtest.h>

#include <functional>

namespace
{
class FrameCounter : public gui::Component
{
public:
    void Update(float dt) override
    {
        Component::Update(dt);
        if (m_frame > 0)
            m_perFrame[m_frame - 1] = test::g_allocations - m_before;
        if (++m_frame == Frames)
            core::Subsystem::GetInstancePtr()->Exit();
        m_before = test::g_allocations;
    }

    static constexpr int Frames = 40;
    size_t m_perFrame[Frames] = {};

private:
    int m_frame = 0;
    size_t m_before = 0;
};
}

namespace
{
// To be called in a fresh process.
void ExpectNoAllocations(const std::string& dir, int from, const std::function<void()>& prepare)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    util::FileSystem::GetInstancePtr()->SetWorkDir(dir);
    core::Subsystem::SetLogToStandardOutput(false);
    core::Subsystem::Create();
    core::Subsystem::GetInstancePtr()->AddToRoot();
    gui::GUI::GetInstancePtr()->AddToRoot();
    recorded::State().delays.reserve(1000);
    const util::SharedPtr<FrameCounter> counter = QUIB_NEW FrameCounter;
    gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(counter);
    prepare();
    core::Subsystem::GetInstancePtr()->Run();
    for (int i = from; i < FrameCounter::Frames - 1; ++i)
        EXPECT_EQ(0u, counter->m_perFrame[i]) << "frame " << i;
}
}

TEST(Frame, AsksForNoMemoryWhenNothingHappens)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({ ExpectNoAllocations(dir.Path(), 10, [] {}); });
}

TEST(Frame, AsksForNoMemoryWhileItIsProfiledButForTheOutput)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({
        // From frame 12 on all stages have been seen. The first second is not over by the end.
        ExpectNoAllocations(dir.Path(), 12,
                            []
                            {
                                util::Profiler::GetInstancePtr()->SetActive(true);
                                util::Profiler2::GetInstancePtr()->SetActive(true);
                            });
        EXPECT_TRUE(util::Profiler::GetInstancePtr()->IsActive());
        EXPECT_EQ(9u, util::Profiler::GetInstancePtr()->GetRoot().GetChildCount());
        EXPECT_EQ("No output generated yet.", util::Profiler::GetInstancePtr()->GetOutput());
        EXPECT_EQ("No output generated yet.", util::Profiler2::GetInstancePtr()->GetOutput());
    });
}
