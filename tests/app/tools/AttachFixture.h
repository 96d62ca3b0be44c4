// What the tests of hinges, welds and pens made by a click have in common.
#pragma once

#include "HandFixture.h"

#include <chrono>
#include <thread>

namespace app
{
template<typename T>
class AttachFixture : public HandFixture
{
protected:
    void SetUp() override
    {
        HandFixture::SetUp();
        Run("GUI.clickTimeTolerance = 0.03");
        WaitLongerThanAClick();
    }
    void TearDown() override
    {
        Run("GUI.clickTimeTolerance = 0.4");
        HandFixture::TearDown();
    }
    static T& TheTool() { return *TheTools()->Get<T>(); }
    static void WaitLongerThanAClick()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    template<typename E>
    static util::SharedPtr<E> Newest()
    {
        return util::DynamicCast<E>(TheScene()->GetEntities().back());
    }
};
}
