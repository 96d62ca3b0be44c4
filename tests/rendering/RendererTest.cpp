#include "rendering/Renderer.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "WhatOf.h"
#include "rendering/Pushers.h"
#include "rendering/RecordedGL.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <ctime>

using math::Vec2;
using math::Vec3;
using math::Vec4;
using rendering::AttribPusher;
using rendering::ColorPusher;
using rendering::Renderer;

namespace fs = boost::filesystem;

namespace
{
using Calls = std::vector<std::string>;

std::string GLErrorText()
{
    return test::WhatOf<std::runtime_error>(rendering::CheckForGLError);
}

class RendererTest : public testing::Test
{
protected:
    void SetUp() override
    {
        r->ResetColor();
        recorded::Clear();
    }

    Renderer* r = Renderer::GetInstancePtr();
};

class ScreenShotTest : public RendererTest
{
protected:
    std::string Today()
    {
        char date[16];
        const std::time_t now = std::time(nullptr);
        std::strftime(date, sizeof(date), "%y%m%d", std::localtime(&now));
        return date;
    }

    test::TempDir m_dir;
    test::InDirectory m_in{m_dir.Path()};
};
}

TEST_F(RendererTest, StartsWhite)
{
    EXPECT_EQ(Vec4(1, 1, 1, 1), r->GetColor4());
}

TEST_F(RendererTest, SendsANewColorToGL)
{
    r->SetColor4(0.5f, 0.25f, 0.75f, 1);
    EXPECT_EQ(Calls{"glColor4fv 0.5 0.25 0.75 1"}, recorded::Calls());
    EXPECT_EQ(Vec4(0.5f, 0.25f, 0.75f, 1), r->GetColor4());
}

TEST_F(RendererTest, SettingTheCurrentColorIssuesNoGLCall)
{
    r->SetColor4(1, 1, 1, 1);
    r->SetColor3(Vec3(1, 1, 1));
    EXPECT_EQ(Calls(), recorded::Calls());
}

TEST_F(RendererTest, MultiplyingByAllOnesIssuesNoGLCall)
{
    r->SetColor4(0.5f, 0.5f, 0.5f, 0.5f);
    recorded::Clear();
    r->MulColor4(Vec4(1, 1, 1, 1));
    r->MulColor3(Vec3(1, 1, 1));
    EXPECT_EQ(Calls(), recorded::Calls());
}

TEST_F(RendererTest, MultipliesByComponent)
{
    r->SetColor4(0.5f, 1, 0.25f, 0.5f);
    r->MulColor4(Vec4(0.5f, 0.5f, 1, 0.5f));
    EXPECT_EQ(Vec4(0.25f, 0.5f, 0.25f, 0.25f), r->GetColor4());
    r->MulColor3(Vec3(2, 1, 0));
    EXPECT_EQ(Vec4(0.5f, 0.5f, 0, 0.25f), r->GetColor4());
}

TEST_F(RendererTest, AColorOfThreeKeepsTheAlpha)
{
    r->SetColor4(1, 1, 1, 0.5f);
    r->SetColor3(Vec3(0, 0.5f, 0));
    EXPECT_EQ(Vec4(0, 0.5f, 0, 0.5f), r->GetColor4());
    EXPECT_EQ(Vec3(0, 0.5f, 0), r->GetColor3());
}

TEST_F(RendererTest, ResetSendsWhiteEvenWhenTheCacheHoldsItAlready)
{
    r->ResetColor();
    EXPECT_EQ(Calls{"glColor4fv 1 1 1 1"}, recorded::Calls());
}

TEST_F(RendererTest, ColorPusherPutsTheColorBack)
{
    r->SetColor4(0.5f, 0.5f, 0.5f, 1);
    {
        ColorPusher pusher;
        r->SetColor4(1, 0, 0, 1);
    }
    EXPECT_EQ(Vec4(0.5f, 0.5f, 0.5f, 1), r->GetColor4());
    EXPECT_EQ("glColor4fv 0.5 0.5 0.5 1", recorded::Calls().back());
}

TEST_F(RendererTest, AttribPusherRestoresTheColorCacheAlsoWhenTheScopeChangedIt)
{
    {
        AttribPusher pusher;
        r->SetColor4(1, 0, 0, 1);
    }
    EXPECT_EQ(Vec4(1, 1, 1, 1), r->GetColor4());
    const Calls expected = {"glPushAttrib 1048575", "glColor4fv 1 0 0 1", "glPopAttrib",
                            "glColor4fv 1 1 1 1"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, PassesVerticesAndTranslationsOn)
{
    r->Vertex(Vec2(1, 2));
    r->Translate(Vec2(3, 4));
    r->Translate(Vec3(5, 6, 7));
    const Calls expected = {"glVertex2fv 1 2", "glTranslatef 3 4 0", "glTranslatef 5 6 7"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, TakesTheViewportSizeFromGL)
{
    recorded::GL().width = 640;
    recorded::GL().height = 480;
    EXPECT_EQ(math::TVector2<int>(640, 480), r->GetViewportSize());
}

TEST_F(RendererTest, DrawsARectangleWithTheTextureGrowingAlongWithIt)
{
    r->DrawRect(Vec2(1, 2), Vec2(10, 20), Vec2(0.5f, 0.25f));
    const Calls expected = {"glBegin 7",        "glTexCoord2f 0 0",
                            "glVertex2f 1 2",   "glTexCoord2f 0 0.25",
                            "glVertex2f 1 22",  "glTexCoord2f 0.5 0.25",
                            "glVertex2f 11 22", "glTexCoord2f 0.5 0",
                            "glVertex2f 11 2",  "glEnd"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, DrawsASquareAroundItsCentre)
{
    r->DrawRect(Vec2(5, 5), 4);
    const Calls expected = {"glBegin 7",      "glTexCoord2f 0 0",
                            "glVertex2f 3 3", "glTexCoord2f 0 1",
                            "glVertex2f 3 7", "glTexCoord2f 1 1",
                            "glVertex2f 7 7", "glTexCoord2f 1 0",
                            "glVertex2f 7 3", "glEnd"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, TurnsTheTextureOverWhereYPointsDown)
{
    r->DrawRectGUI(Vec2(1, 2), Vec2(10, 20), Vec2(0.5f, 0.25f));
    const Calls expected = {"glBegin 7",        "glTexCoord2f 0 0.25",
                            "glVertex2f 1 2",   "glTexCoord2f 0 0",
                            "glVertex2f 1 22",  "glTexCoord2f 0.5 0",
                            "glVertex2f 11 22", "glTexCoord2f 0.5 0.25",
                            "glVertex2f 11 2",  "glEnd"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, DrawsAFrameAsOneStripOfTenVertices)
{
    r->DrawFrame(Vec2(0, 0), Vec2(10, 8), 1);
    const Calls expected = {"glBegin 5",       "glVertex2f 0 0", "glVertex2f 1 1",
                            "glVertex2f 10 0", "glVertex2f 9 1", "glVertex2f 10 8",
                            "glVertex2f 9 7",  "glVertex2f 0 8", "glVertex2f 1 7",
                            "glVertex2f 0 0",  "glVertex2f 1 1", "glEnd"};
    EXPECT_EQ(expected, recorded::Calls());
}

TEST_F(RendererTest, AFrameOfWidthZeroIsAStripOfZeroArea)
{
    r->DrawFrame(Vec2(1, 2), Vec2(3, 4), 0);
    const Calls& calls = recorded::Calls();
    ASSERT_EQ(12u, calls.size());
    for (size_t i = 1; i < 11; i += 2)
        EXPECT_EQ(calls[i], calls[i + 1]) << "outer and inner corner differ";
}

// The flag of CheckForGLError can't be taken back.
TEST_F(RendererTest, AGLErrorIsThrownOnceGLHasLoadedAndSilentBefore)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ASSERT_FALSE(rendering::HasGLLoaded());
        recorded::GL().error = GL_INVALID_ENUM;
        EXPECT_NO_THROW(rendering::CheckForGLError());

        rendering::GLHasLoaded();
        EXPECT_TRUE(rendering::HasGLLoaded());
        recorded::GL().error = GL_INVALID_ENUM;
        EXPECT_EQ("GL-Error: invalid enumerant", GLErrorText());
        EXPECT_NO_THROW(rendering::CheckForGLError());

        recorded::GL().error = 4711;
        EXPECT_EQ("GL-Error: error 4711", GLErrorText()) << "a code that GLU has no text for";
    });
}

TEST_F(ScreenShotTest, WritesAnUncompressedTGA)
{
    recorded::GL().width = 300; // needs both bytes
    recorded::GL().height = 2;
    r->ScreenShotToFile("a.tga");

    const std::string file = test::Slurp("a.tga");
    ASSERT_EQ(18u + 300 * 2 * 3, file.size());
    const unsigned char expected[18] = {0, 0, 2, 0,          0,        0, 0, 0,  0,
                                        0, 0, 0, 300 & 0xFF, 300 >> 8, 2, 0, 24, 0};
    EXPECT_EQ(0, std::memcmp(expected, file.data(), sizeof(expected)));
    const Calls read = {"glReadPixels 300 2 32992 5121 1"}; // GL_BGR, GL_UNSIGNED_BYTE
    EXPECT_EQ(read, recorded::Calls());
}

TEST_F(ScreenShotTest, RowsOfAnOddWidthFollowWithoutAGap)
{
    recorded::GL().width = 3;
    recorded::GL().height = 2;
    r->ScreenShotToFile("a.tga");
    const std::string file = test::Slurp("a.tga");
    ASSERT_EQ(18u + 18, file.size());
    const unsigned char pixels[18] = {0, 0, 200, 1, 0, 200, 2, 0, 200,
                                      0, 1, 200, 1, 1, 200, 2, 1, 200};
    EXPECT_EQ(0, std::memcmp(pixels, file.data() + 18, sizeof(pixels)));
    EXPECT_EQ(4, recorded::GL().packAlignment) << "the alignment is put back";
}

TEST_F(ScreenShotTest, MakesTheFolderAndCountsUpWithinTheDay)
{
    r->ScreenShot("screenshots/quib");
    r->ScreenShot("screenshots/quib");
    EXPECT_TRUE(fs::exists("screenshots/quib_" + Today() + "_0000.tga"));
    EXPECT_TRUE(fs::exists("screenshots/quib_" + Today() + "_0001.tga"));
    EXPECT_FALSE(fs::exists("screenshots/quib_" + Today() + "_0002.tga"));
}

TEST_F(ScreenShotTest, FillsAGapFirst)
{
    std::ofstream("quib_" + Today() + "_0001.tga");
    r->ScreenShot("quib");
    r->ScreenShot("quib");
    EXPECT_TRUE(fs::exists("quib_" + Today() + "_0000.tga"));
    EXPECT_TRUE(fs::exists("quib_" + Today() + "_0002.tga"));
}

TEST_F(ScreenShotTest, AfterTenThousandOnADayOneFileIsWrittenOverAndOver)
{
    for (int i = 0; i < 10000; ++i)
    {
        char number[8];
        std::snprintf(number, sizeof(number), "%04d", i);
        std::ofstream("quib_" + Today() + "_" + number + ".tga");
    }
    r->ScreenShot("quib");
    ASSERT_TRUE(fs::exists("to_many_screenshots.tga"));
    recorded::GL().width = 10;
    r->ScreenShot("quib");
    EXPECT_EQ(10, test::Slurp("to_many_screenshots.tga")[12]);
}

TEST_F(ScreenShotTest, APictureThatCannotBeWrittenThrowsAndLeavesTheOldOneWhole)
{
    test::Spit("a.tga", "old");
    fs::create_directory("a.tga.tmp"); // stands in the way of what is written beside
    EXPECT_THROW(r->ScreenShotToFile("a.tga"), Exception);
    EXPECT_EQ("old", test::Slurp("a.tga"));
}

TEST_F(ScreenShotTest, AFullDiskThrowsAndLeavesTheOldPictureWhole)
{
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    test::Spit("a.tga", "old");
    fs::create_symlink("/dev/full", "a.tga.tmp");
    EXPECT_THROW(r->ScreenShotToFile("a.tga"), Exception);
    EXPECT_EQ("old", test::Slurp("a.tga"));
    EXPECT_FALSE(fs::exists(fs::symlink_status("a.tga.tmp")));
}
