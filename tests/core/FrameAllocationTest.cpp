// A frame in which nothing happens asks for no memory.
#include "AllocationCounter.h"
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/RecordedSDL.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <gtest/gtest.h>

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

TEST(Frame, AsksForNoMemoryWhenNothingHappens)
{
    test::TempDir dir;
    EXPECT_FINE_IN_FRESH_PROCESS({
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(dir.Path());
        core::Subsystem::SetLogToStandardOutput(false);
        core::Subsystem::Create();
        core::Subsystem::GetInstancePtr()->AddToRoot();
        gui::GUI::GetInstancePtr()->AddToRoot();
        recorded::State().delays.reserve(1000);
        const util::SharedPtr<FrameCounter> counter = QUIB_NEW FrameCounter;
        gui::GUI::GetInstancePtr()->GetMainContainer()->AddComponent(counter);
        core::Subsystem::GetInstancePtr()->Run();
        for (int i = 10; i < FrameCounter::Frames - 1; ++i)
            EXPECT_EQ(0u, counter->m_perFrame[i]) << "frame " << i;
    });
}
