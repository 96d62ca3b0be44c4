// What the sky and its clouds look like.
#include "window/PictureFixture.h"

#include "app/Background.h"

using math::Vec2;
using test::Pixel;

namespace
{
class BackgroundPictureTest : public test::PictureFixture
{
protected:
    void StartWithClouds()
    {
        Start();
        Run("App.Background.skyColor = [0.0, 0.0, 1.0, 1.0]; App.Background.drawClouds = true");
    }
    /// The sky alone: half-way to white at the bottom.
    bool IsSky(int x, int y) const
    {
        const int light = int(127.5f * float(y) / float(m_height));
        return IsNear(GetPixel(x, y), light, light, 255, 2);
    }
    /// In percent.
    int CountClouds() const
    {
        int n = 0;
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                n += !IsSky(x, y);
        return n * 100 / (m_width * m_height);
    }
    void LinkTexturesBut(const std::string& without)
    {
        UnlinkData("textures");
        const std::string from = QUIB_SOURCE_DIR "/data/textures/";
        boost::filesystem::create_directories(m_dir / "data/textures");
        for (const auto& entry : boost::filesystem::directory_iterator(from))
            if (entry.path().filename() != without)
                LinkData("textures/" + entry.path().filename().string());
    }
};

TEST_F(BackgroundPictureTest, CloudsDriftBeforeTheSky)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        StartWithClouds();
        Draw();
        const std::string picture = GetPicture();
        EXPECT_GT(CountClouds(), 10);
        EXPECT_LT(CountClouds(), 75);
        Draw();
        EXPECT_TRUE(picture == GetPicture()) << "they stand still between two updates";
        app::Background* background = app::App::GetInstancePtr()->GetBackground().get();
        background->Update(5);
        Draw();
        EXPECT_FALSE(picture == GetPicture());
        for (const char* off :
             {"App.Background.drawClouds = false", "App.Background.drawClouds = true; "
                                                   "App.Background.cloudOpacity = 0.0"})
        {
            Run(off);
            Draw();
            EXPECT_EQ(0, CountClouds()) << off;
        }
        // As opaque as the attribute says.
        Run("App.Background.cloudOpacity = 1.0");
        Draw();
        int lightest = 0;
        for (int x = 0; x < m_width; ++x)
            for (int y = 0; y < m_height; ++y)
                lightest = std::max<int>(lightest, GetPixel(x, y).r);
        EXPECT_GT(lightest, 225);
        Run("App.Background.cloudOpacity = 0.1");
        Draw();
        EXPECT_LT(GetPixel(m_width / 2, 0).r, 100);
    });
}

TEST_F(BackgroundPictureTest, ATranslucentSkyLetsTheFrameShowThrough)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run("App.Background.skyColor = [0.0, 1.0, 0.0, 0.25]");
        Draw();
        EXPECT_PIXEL(191, 64, 191, GetPixel(150, 0));
        Run("App.Background.skyColor = [0.0, 1.0, 0.0, 0.0]");
        Draw();
        EXPECT_PIXEL(255, 0, 255, GetPixel(150, 0));
        EXPECT_PIXEL(255, 0, 255, GetPixel(150, 199));
    });
}

TEST_F(BackgroundPictureTest, ThereAreNoCloudsWithoutPictures)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        LinkTexturesBut("background");
        StartWithClouds();
        Draw();
        EXPECT_EQ(0, CountClouds());
    });
}

TEST_F(BackgroundPictureTest, OneThatIsBrokenIsBlankAndTheOthersAreThere)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        LinkTexturesBut("background");
        boost::filesystem::create_directory(m_dir / "data/textures/background");
        test::Spit(m_dir / "data/textures/background/a.png", "no picture");
        test::Spit(m_dir / "data/textures/background/LICENSE", "no picture either");
        boost::filesystem::copy_file(QUIB_SOURCE_DIR "/data/textures/background/cloud1.png",
                                     m_dir / "data/textures/background/b.png");
        test::LogCapture log;
        StartWithClouds();
        EXPECT_TRUE(log.Has("Failed to load image background/a.png")) << log.Text();
        EXPECT_FALSE(log.Has("LICENSE")) << log.Text();
        Draw();
        EXPECT_GT(CountClouds(), 3);
        // Nothing of the picture that stands in for broken ones: magenta and green.
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                ASSERT_NEAR(GetPixel(x, y).r, GetPixel(x, y).g, 12) << x << ", " << y;
    });
}
}
