// The desk that tests of gestures share: one X server, one running Quib with a small window, one hand.
// Each test starts on an empty scene at rest, with the sketch tool chosen and nothing held.
#pragma once

#include "window/Hand.h"

#include <gtest/gtest.h>

#include <memory>

namespace test
{
class Desk : public testing::Test
{
protected:
    // What Lay puts on the desk.
    enum Scene
    {
        Nothing,
        Box,       // 1 x 1, dark red, in the middle
        TwoBoxes,  // both 1 x 1, blue at (-1, 0), green at (1, 0)
        Stacked,   // 2 x 2, blue, and over it 1 x 1, green, both in the middle
        Ground,    // a plane through (0, -1), and a box that rests on it at (0, -0.5)
        NoPatience // Nothing, but a press is no click after 0.05 s already
    };
    // Further things that a test may want to happen; hand->Do runs them.
    enum Change
    {
        DrawInside = NoPatience + 1,
        LeftClickMenus,
        Play, // without an undo entry
        Slow  // ten frames a second
    };

    void SetUp() override;
    void TearDown() override;

    /// Clears the desk first.
    void Lay(Scene scene) { hand->Do(scene); }

    // The view of each test: the origin in the middle.
    static constexpr double Zoom = 100;       // pixels to a unit
    static constexpr double Pixel = 1 / Zoom; // units
    static constexpr double ScreenCM = 86 / 2.54 / Zoom;

    struct Color
    {
        int r, g, b;
    };
    /// Looks, and waits until it is so. @return whether it came to be
    template<typename F>
    bool WaitForPicture(F isThere)
    {
        return WaitFor(
            [&]
            {
                pixels = hand->Look();
                return isThere();
            });
    }
    /// Of the last look.
    Color At(Point world) const;
    /// Whether any pixel of a square about a point is so.
    template<typename F>
    bool IsAnyNear(Point world, int pixelRadius, F isSo) const
    {
        for (int y = -pixelRadius; y <= pixelRadius; ++y)
            for (int x = -pixelRadius; x <= pixelRadius; ++x)
                if (isSo(At(world + Pixel * Point{double(x), double(y)})))
                    return true;
        return false;
    }

    /// Kinds of all entities, from back to front, as "Box Circle".
    static std::string Kinds(const SavedScene& scene);

    static WorkDir& Dir();
    static XServer& Server();
    static Program& TheProgram();

    Hand* hand = nullptr;
    std::vector<unsigned char> pixels; // of the last look
};

/// A place within a pixel, the least that a hand can mean.
testing::AssertionResult IsAt(const char*, const char* text, Point expected, Point found);
}

#define EXPECT_AT(expected, found) EXPECT_PRED_FORMAT2(test::IsAt, expected, found)
