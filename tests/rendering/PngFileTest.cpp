#include "rendering/PngFile.h"

#include "TestSupport.h"
#include "rendering/Image.h"
#include "util/Failures.h"

#include <gtest/gtest.h>

using rendering::ImageRGBA32;
using rendering::ImageRGBA32Ptr;

namespace
{
class PngFileTest : public testing::Test
{
protected:
    test::TempDir dir;
};
}

TEST_F(PngFileTest, HoldsThePixelsOfAnOddWidthTheRightWayUp)
{
    const int width = 5, height = 3;
    std::vector<unsigned char> rgb;
    for (int i = 0; i < width * height; ++i)
        for (const int channel : {i, 100 + i, 255 - i})
            rgb.push_back(static_cast<unsigned char>(channel));
    rendering::WritePngFile(dir / "a.png", width, height, rgb.data());

    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile(dir / "a.png");
    ASSERT_EQ(5u, image->GetWidth());
    ASSERT_EQ(3u, image->GetHeight());
    for (unsigned y = 0; y < 3; ++y)
        for (unsigned x = 0; x < 5; ++x)
        {
            const unsigned char i = static_cast<unsigned char>(y * 5 + x);
            const unsigned char green = static_cast<unsigned char>(100 + i);
            const unsigned char blue = static_cast<unsigned char>(255 - i);
            EXPECT_EQ(rendering::PixelRGBA32(i, green, blue, 255), (*image)(x, y)) << x << " " << y;
        }
}

TEST_F(PngFileTest, AFullDiskThrowsAndLeavesTheOldPictureWhole)
{
    namespace fs = boost::filesystem;
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    test::Spit(dir / "a.png", "old");
    fs::create_symlink("/dev/full", dir / "a.png.tmp");
    const std::vector<unsigned char> rgb(300 * 300 * 3);
    EXPECT_THROW(rendering::WritePngFile(dir / "a.png", 300, 300, rgb.data()), Exception);
    EXPECT_EQ("old", test::Slurp(dir / "a.png"));
}

TEST_F(PngFileTest, AMissingFolderThrows)
{
    const unsigned char rgb[3] = {};
    EXPECT_THROW(rendering::WritePngFile(dir / "no such/a.png", 1, 1, rgb), Exception);
}
