#include "rendering/Image.h"

#include "TestSupport.h"
#include "WhatOf.h"

#include <GL/gl.h>
#include <SDL.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>

using rendering::ImageFloat;
using rendering::ImageRGBA32;
using rendering::ImageRGBA32Ptr;
using rendering::PixelRGBA32;

namespace fs = boost::filesystem;

namespace
{
class ImageTest : public testing::Test
{
protected:
    static std::string Failure(const std::string& path)
    {
        return test::WhatOf<FileReadException>([&] { ImageRGBA32::LoadFile(path); });
    }
    /// @param color    red, green, blue and alpha as in 0xRRGGBBAA
    static void ExpectPixel(uint32_t color, const ImageRGBA32Ptr& image, unsigned x, unsigned y)
    {
        const PixelRGBA32& p = (*image)(x, y);
        EXPECT_EQ(color, uint32_t(p.x) << 24 | uint32_t(p.y) << 16 | uint32_t(p.z) << 8 | p.w)
            << x << ", " << y << std::hex << " is not " << color;
    }

    test::TempDir m_dir;
    test::InDirectory m_in{m_dir.Path()};
};

std::string Little(uint32_t value, int bytes)
{
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += i < 4 ? static_cast<char>(value >> (8 * i)) : '\0';
    return text;
}

/// Of width x 1 pixels, bottom up.
std::string TGA(int width, int bits, const std::string& pixels, const std::string& palette = "")
{
    const bool hasPalette = !palette.empty();
    return std::string(1, '\0') + (hasPalette ? "\1\1" : std::string("\0\2", 2)) + Little(0, 2) +
           Little(palette.size() / 3, 2) + Little(hasPalette ? 24 : 0, 1) + Little(0, 4) +
           Little(width, 2) + Little(1, 2) + Little(bits, 1) + Little(bits == 32 ? 8 : 0, 1) +
           palette + pixels;
}

std::string BMP(int32_t width, int32_t height, int bits, const std::string& pixels,
                const std::string& palette = "")
{
    const uint32_t offset = 54 + palette.size();
    return "BM" + Little(offset + pixels.size(), 4) + Little(0, 4) + Little(offset, 4) +
           Little(40, 4) + Little(width, 4) + Little(height, 4) + Little(1, 2) + Little(bits, 2) +
           Little(0, 4) + Little(pixels.size(), 4) + Little(0, 8) + Little(palette.size() / 4, 4) +
           Little(0, 4) + palette + pixels;
}
}

TEST_F(ImageTest, KnowsWhatGLCallsItsPixels)
{
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(3, 2, "a");
    EXPECT_EQ(unsigned(GL_RGBA), image->GetFormat());
    EXPECT_EQ(unsigned(GL_UNSIGNED_BYTE), image->GetType());
    EXPECT_EQ(3u, image->GetWidth());
    EXPECT_EQ(2u, image->GetHeight());
    EXPECT_EQ("a", image->GetName());
    EXPECT_EQ(&(*image)(0, 0), image->GetDataVoidPtr());
    EXPECT_EQ(&(*image)(0, 0) + 3, &(*image)(0, 1)) << "row by row";
    image->SetHasAlpha(false);
    EXPECT_FALSE(image->HasAlpha());
    const rendering::ImageFloatPtr alpha = QUIB_NEW ImageFloat(1, 1);
    EXPECT_EQ(unsigned(GL_ALPHA), alpha->GetFormat());
    EXPECT_EQ(unsigned(GL_FLOAT), alpha->GetType());
    EXPECT_TRUE(alpha->HasAlpha());
}

TEST_F(ImageTest, ARawFileIsSquareAndAlphaOnly)
{
    std::string bytes(4096, '\7');
    bytes[1] = '\x80';
    test::Spit("a.raw", bytes);
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.raw");
    EXPECT_EQ(64u, image->GetWidth());
    EXPECT_EQ(64u, image->GetHeight());
    EXPECT_TRUE(image->HasAlpha());
    ExpectPixel(0xFFFFFF07, image, 0, 0);
    ExpectPixel(0xFFFFFF80, image, 1, 0);
    ExpectPixel(0xFFFFFF07, image, 63, 63);
}

TEST_F(ImageTest, ARawFileThatIsNotSquareIsRefused)
{
    test::Spit("a.raw", std::string(4097, 'x'));
    EXPECT_EQ("The RAW-file \"a.raw\" contained a non quadratic picture.", Failure("a.raw"));
}

TEST_F(ImageTest, RawFilesComeWithColorsToo)
{
    test::Spit("a", "\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE\xF\x10");
    const ImageRGBA32Ptr rgba = ImageRGBA32::LoadRAW("a", ImageRGBA32::RAWRGBA);
    EXPECT_EQ(2u, rgba->GetHeight());
    EXPECT_TRUE(rgba->HasAlpha());
    ExpectPixel(0x01020304, rgba, 0, 0);
    ExpectPixel(0x0D0E0F10, rgba, 1, 1);
    // 16 bytes make five pixels of three.
    EXPECT_THROW(ImageRGBA32::LoadRAW("a", ImageRGBA32::RAWRGB), FileReadException);
    const ImageRGBA32Ptr rgb = ImageRGBA32::LoadRAW("a", ImageRGBA32::RAWRGB, 5, 1);
    EXPECT_FALSE(rgb->HasAlpha());
    ExpectPixel(0x010203FF, rgb, 0, 0);
    ExpectPixel(0x0D0E0FFF, rgb, 4, 0);
}

TEST_F(ImageTest, ARawFileThatEndsTooEarlyIsCorrupt)
{
    test::Spit("a", "four");
    const auto load = [](unsigned w, unsigned h)
    {
        return test::WhatOf<FileReadException>(
            [&] { ImageRGBA32::LoadRAW("a", ImageRGBA32::RAWAlpha, w, h); });
    };
    EXPECT_EQ("File \"a\" is corrupt.", load(5, 1));
    EXPECT_EQ("File \"a\" is corrupt.", load(0xFFFFFFFF, 0xFFFFFFFF)) << "and no memory is taken";
    EXPECT_EQ("nothing thrown", load(2, 2));
}

TEST_F(ImageTest, TheLastRowOfAPictureIsTheImagesFirst)
{
    // BMP files begin at the bottom as well, and rows are padded to four bytes.
    test::Spit("a.bmp", BMP(1, 2, 24, std::string("\0\0\xFF\0\xFF\0\0\0", 8)));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.bmp");
    ExpectPixel(0xFF0000FF, image, 0, 0);
    ExpectPixel(0x0000FFFF, image, 0, 1);
}

TEST_F(ImageTest, APictureOf24BitsIsOpaque)
{
    test::Spit("a.bmp", BMP(1, 1, 24, std::string("\x10\x20\x30\0", 4)));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.bmp");
    EXPECT_FALSE(image->HasAlpha());
    ExpectPixel(0x302010FF, image, 0, 0);
}

TEST_F(ImageTest, APictureWithAPaletteCountsAsOneWithAlpha)
{
    test::Spit("a.bmp",
               BMP(1, 1, 8, std::string("\1\0\0\0", 4), std::string("\0\0\0\0\x10\x20\x30\0", 8)));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.bmp");
    EXPECT_TRUE(image->HasAlpha());
    ExpectPixel(0x302010FF, image, 0, 0);
}

TEST_F(ImageTest, TransparentPixelsOfAPaletteStayTransparent)
{
    // Two pixels, of which the color 1 is the transparent one.
    test::Spit("a.gif", std::string("GIF89a\2\0\1\0\x80\0\0"
                                    "\x30\x20\x10\xFF\xFF\xFF"
                                    "!\xF9\4\1\0\0\1\0"
                                    ",\0\0\0\0\2\0\1\0\0"
                                    "\2\2\x44\x0A\0;",
                                    43));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.gif");
    EXPECT_TRUE(image->HasAlpha());
    ExpectPixel(0x302010FF, image, 0, 0);
    EXPECT_EQ(0, (*image)(1, 0).w);
}

TEST_F(ImageTest, APictureOf32BitsKeepsItsAlpha)
{
    test::Spit("a.tga", TGA(2, 32, "\1\2\3\4\5\6\7\x80"));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.tga");
    EXPECT_TRUE(image->HasAlpha());
    EXPECT_EQ(4, (*image)(0, 0).w);
    EXPECT_EQ(0x80, (*image)(1, 0).w);
}

TEST_F(ImageTest, TGAImagesGetRedAndBlueSwapped)
{
    // In the file stand blue, green, red and alpha, which SDL_image hands on in this order.
    test::Spit("a.tga", TGA(1, 32, "\x10\x20\x30\x40"));
    ExpectPixel(0x30201040, ImageRGBA32::LoadFile("a.tga"), 0, 0);
    // Without alpha they have been converted, and are right as they are.
    test::Spit("b.tga", TGA(1, 24, "\x10\x20\x30"));
    ExpectPixel(0x302010FF, ImageRGBA32::LoadFile("b.tga"), 0, 0);
    // Deliberate: those with a palette have been converted too, and are swapped all the same.
    test::Spit("c.tga", TGA(1, 8, std::string(1, '\0'), "\x10\x20\x30"));
    ExpectPixel(0x102030FF, ImageRGBA32::LoadFile("c.tga"), 0, 0);
}

TEST_F(ImageTest, OtherPicturesOf32BitsHaveTheirColorsInOrder)
{
    test::Spit("a.bmp", BMP(1, 1, 32, "\x10\x20\x30\x40"));
    const ImageRGBA32Ptr image = ImageRGBA32::LoadFile("a.bmp");
    EXPECT_TRUE(image->HasAlpha());
    EXPECT_EQ(0x30, (*image)(0, 0).x);
    EXPECT_EQ(0x20, (*image)(0, 0).y);
    EXPECT_EQ(0x10, (*image)(0, 0).z);
}

TEST_F(ImageTest, WhatIsNoPictureIsToldWithSDLsWords)
{
    EXPECT_EQ("Could not load image file \"none.png\". SDL_image error: \"Couldn't open none.png\"",
              Failure("none.png"));
    test::Spit("a.png", "no picture, but some text that is long enough");
    EXPECT_EQ("Could not load image file \"a.png\". SDL_image error: \"Unsupported image format\"",
              Failure("a.png"));
    test::Spit("empty.png", "");
    EXPECT_NE("nothing thrown", Failure("empty.png"));
    fs::create_directory("dir.png");
    EXPECT_EQ("Could not load image file \"dir.png\". SDL_image error: \"It is no file\"",
              Failure("dir.png"));
    ASSERT_EQ(0, ::mkfifo("pipe.png", 0600));
    EXPECT_EQ("Could not load image file \"pipe.png\". SDL_image error: \"It is no file\"",
              Failure("pipe.png"));
    EXPECT_EQ("Failed to open file \"none.raw\"", Failure("none.raw"));
    fs::create_directory("dir.raw");
    EXPECT_EQ("File \"dir.raw\" is corrupt.", Failure("dir.raw"));
}

TEST_F(ImageTest, HugePicturesAreRefused)
{
    // 8 bits and no pixels behind: SDL makes the surface before it reads.
    const struct
    {
        int width, height;
    } cases[] = {{0x7FFFFFFF, 0x7FFFFFFF}, {-1, 1}, {1, -0x7FFFFFFF}, {0, 0x7FFF}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
        test::Spit("a.bmp", BMP(c.width, c.height, 8, "", std::string(1024, '\0')));
        EXPECT_NE("nothing thrown", Failure("a.bmp"));
    }
    test::Spit("a.raw", "");
    fs::resize_file("a.raw", 8193ul * 8193);
    EXPECT_EQ("Image file \"a.raw\" is too large: 8193 x 8193 pixels", Failure("a.raw"));
}

// SDL fell into an array that it had not made.
TEST_F(ImageTest, ABMPOfABitNumberThatDoesNotExistIsRefused)
{
    for (const int bits : {0, 3, 7, 64, 16388, 0xFFFF})
    {
        test::Spit("a.bmp", BMP(13, 11, bits, std::string(4000, '\xFF'), std::string(64, '\1')));
        EXPECT_EQ("Could not load image file \"a.bmp\". SDL_image error: \"Unknown number of bits "
                  "per pixel\"",
                  Failure("a.bmp"))
            << bits;
    }
}

TEST_F(ImageTest, KindsWhoseReadersTrustTheFileAreRefused)
{
    test::Spit("a.png", "/* XPM */\nstatic char *a[] = {\n\"1 1 1 1\",\n\"a c red\",\n\"a\"};\n");
    EXPECT_EQ("Could not load image file \"a.png\". SDL_image error: \"Unsupported image format\"",
              Failure("a.png"));
}

TEST_F(ImageTest, PicturesWithoutPixelsAreRefused)
{
    for (const std::string& size : {Little(0, 2) + Little(8, 2), Little(8, 2) + Little(0, 2)})
    {
        test::Spit("a.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0", 12) + size + " \10");
        EXPECT_NE("nothing thrown", Failure("a.tga"));
    }
}

// A truncated PNG made SDL_image read its last piece again without end.
TEST_F(ImageTest, TruncatedPicturesAreRefusedWhereverTheyEnd)
{
    const std::string texture = test::Slurp(QUIB_SOURCE_DIR "/data/textures/mouse.png");
    ASSERT_LT(100u, texture.size());
    const struct
    {
        const char* path;
        std::string bytes;
    } cases[] = {
        {"a.png", texture},
        {"a.tga", TGA(20, 32, std::string(80, 'x'))},
        {"a.bmp", BMP(10, 10, 24, std::string(320, 'x'))},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.path);
        const bool isPNG = c.bytes == texture;
        // The last twelve bytes of a PNG say no more than that it ends.
        const size_t end = c.bytes.size() - (isPNG ? 13 : 0);
        for (size_t size = 0; size < end; size += isPNG ? 7 : 3)
        {
            test::Spit(c.path, c.bytes.substr(0, size));
            EXPECT_NE("nothing thrown", Failure(c.path)) << size << " bytes";
        }
        test::Spit(c.path, c.bytes);
        EXPECT_EQ("nothing thrown", Failure(c.path));
    }
}
