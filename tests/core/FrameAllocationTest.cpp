// A frame in which nothing happens makes no objects. Plain blocks are not counted: the sweep of the
// callback sets lists them in one, every eleventh frame.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "core/RecordedSDL.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace
{
size_t s_allocations = 0;
}

// Never inlined: a compiler that sees free meet a block of operator new warns of a mismatch.
#define QUIB_NOINLINE __attribute__((noinline))

QUIB_NOINLINE void* operator new(size_t size)
{
    ++s_allocations;
    if (void* block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
QUIB_NOINLINE void* operator new[](size_t size)
{
    return operator new(size);
}
QUIB_NOINLINE void operator delete(void* block) noexcept
{
    std::free(block);
}
QUIB_NOINLINE void operator delete[](void* block) noexcept
{
    std::free(block);
}
QUIB_NOINLINE void operator delete(void* block, size_t) noexcept
{
    std::free(block);
}
QUIB_NOINLINE void operator delete[](void* block, size_t) noexcept
{
    std::free(block);
}

namespace
{
class FrameCounter : public gui::Component
{
public:
    void Update(float dt) override
    {
        Component::Update(dt);
        if (m_frame > 0)
            m_perFrame[m_frame - 1] = s_allocations - m_before;
        if (++m_frame == Frames)
            core::Subsystem::GetInstancePtr()->Exit();
        m_before = s_allocations;
    }

    static constexpr int Frames = 40;
    size_t m_perFrame[Frames] = {};

private:
    int m_frame = 0;
    size_t m_before = 0;
};
}

TEST(Frame, MakesNoObjectsWhenNothingHappens)
{
    const size_t before = s_allocations;
    delete new volatile int(1);
    ASSERT_LT(before, s_allocations) << "the counter counts";

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
