#include "input/DirInput.h"

#include "input/Input.h"
#include "util/Failures.h"

#include "../KeyEvents.h"
#include "../TestSupport.h"

#include <SDL_keysym.h>

#include <gtest/gtest.h>

#include <cmath>

namespace input
{
namespace
{
class DirInputTest : public testing::Test
{
protected:
    void TearDown() override
    {
        for (int key : {SDLK_UP, SDLK_RIGHT, SDLK_DOWN, SDLK_LEFT})
            test::SendKey(key, false);
    }
};

TEST_F(DirInputTest, ADirectionOfKeysRoundTripsItsText)
{
    const DirInputPtr dir = DirInput::Deserialize("keys up right down left");
    ASSERT_TRUE(dir);
    EXPECT_EQ("keys up right down left", dir->Serialize());
}

TEST_F(DirInputTest, KeysPointUpRightDownAndLeft)
{
    const DirInputPtr dir = DirInput::Deserialize("keys up right down left");
    EXPECT_EQ(math::Vec2(0, 0), dir->GetDir());
    const struct
    {
        int key;
        math::Vec2 dir;
    } cases[] = {{SDLK_UP, math::Vec2(0, 1)},
                 {SDLK_RIGHT, math::Vec2(1, 0)},
                 {SDLK_DOWN, math::Vec2(0, -1)},
                 {SDLK_LEFT, math::Vec2(-1, 0)}};
    for (const auto& c : cases)
    {
        test::SendKey(c.key, true);
        EXPECT_EQ(c.dir, dir->GetDir());
        test::SendKey(c.key, false);
    }
    test::SendKey(SDLK_UP, true);
    test::SendKey(SDLK_DOWN, true);
    EXPECT_EQ(math::Vec2(0, 0), dir->GetDir());
}

TEST_F(DirInputTest, ADiagonalOfKeysHasLengthOne)
{
    const DirInputPtr dir = DirInput::Deserialize("keys up right down left");
    test::SendKey(SDLK_UP, true);
    test::SendKey(SDLK_LEFT, true);
    EXPECT_NEAR(1, dir->GetDir().Length(), 1e-6f);
    EXPECT_NEAR(-std::sqrt(0.5f), dir->GetDir().x, 1e-6f);
}

TEST_F(DirInputTest, WithoutAJoystickATextOfOneIsRefusedWithAWarning)
{
    test::LogCapture log;
    EXPECT_FALSE(DirInput::Deserialize("joy 5 axis 0 1"));
    EXPECT_TRUE(log.Has("No joystick connected, cannot find DirInput \"joy 5 axis 0 1\""));
}

TEST_F(DirInputTest, AnythingElseIsRefusedWithAWarning)
{
    for (const char* text : {"", "mouse", "keys up right down", "keys up right down left space"})
    {
        test::LogCapture log;
        EXPECT_FALSE(DirInput::Deserialize(text));
        EXPECT_TRUE(log.Has(std::string("Failed to find DirInput \"") + text + "\"")) << log.Text();
    }
}

TEST_F(DirInputTest, SaysNoMoreThanTheBeginningOfALongText)
{
    for (const std::string word : {"joy ", "x "})
    {
        test::LogCapture log;
        EXPECT_FALSE(DirInput::Deserialize(word + std::string(100000, '1')));
        ASSERT_EQ(1u, log.Lines().size());
        EXPECT_LT(log.Lines()[0].size(), 2000u);
        EXPECT_TRUE(log.Has(" \"" + word + "111")) << log.Text();
    }
}

TEST_F(DirInputTest, RefusesNamesThatAreNoKeys)
{
    EXPECT_THROW(DirInput::Deserialize("keys up right down nokey"), BadDataException);
}
}
}
