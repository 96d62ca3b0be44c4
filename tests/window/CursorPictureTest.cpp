// The program's own cursor: pixels around the mouse.
#include "window/Program.h"
#include "window/XServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

TEST(CursorPicture, ChangesWithTheToolAndBack)
{
    test::XServer server;
    test::WorkDir dir;
    dir.Write("autoexec.cfg", "App.Background.drawClouds = false");
    dir.Write("scenes/a.qib", "FileInfo.version = 2; Sim.timeFactor = 0.0");
    server.MovePointer(300, 200);
    test::Program program(dir, server.Display(), {"scenes/a.qib"});
    ASSERT_TRUE(program.WaitUntilItSays("Running program..."));
    const test::WindowInfo window = server.WaitForWindow();

    // 32 x 32 pixels around (300, 200).
    using Picture = std::vector<unsigned char>;
    const auto look = [&]
    {
        const Picture all = server.ReadPixels(window.id, window.width, window.height);
        Picture part;
        for (int y = 184; y < 216; ++y)
        {
            const auto row = all.begin() + 3 * (size_t(y) * window.width + 284);
            part.insert(part.end(), row, row + 3 * 32);
        }
        return part;
    };
    const auto isSky = [](const Picture& part)
    {
        for (size_t i = 0; i < part.size(); i += 3)
            if (std::abs(part[i] - part[0]) > 20 || std::abs(part[i + 2] - part[2]) > 20)
                return false;
        return part[2] > 150;
    };
    const int x = window.x + 300, y = window.y + 200;
    server.MovePointer(window.x + 500, window.y + 400);
    ASSERT_TRUE(test::WaitFor([&] { return isSky(look()); }));
    const Picture sky = look();

    server.MovePointer(x, y);
    ASSERT_TRUE(test::WaitFor([&] { return !isSky(look()); }));
    const Picture arrow = look();

    server.MovePointer(x + 40, y);
    server.Button(3, true);
    server.MovePointer(x + 20, y);
    server.MovePointer(x, y);
    EXPECT_TRUE(test::WaitFor(
        [&]
        {
            const Picture now = look();
            return now != arrow && !isSky(now);
        }));
    server.Button(3, false);
    EXPECT_TRUE(test::WaitFor([&] { return look() == arrow; }));
    server.MovePointer(x + 200, y + 200);
    EXPECT_TRUE(test::WaitFor([&] { return look() == sky; }));
}
