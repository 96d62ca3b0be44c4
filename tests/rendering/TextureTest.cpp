#include "rendering/Texture.h"

#include "TestSupport.h"
#include "WhatOf.h"
#include "rendering/RecordedGL.h"
#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <memory>

using rendering::ImageFloat;
using rendering::ImageRGBA32;
using rendering::Texture;

namespace
{
using Calls = std::vector<std::string>;

template<typename... Args>
std::string Text(Args... args)
{
    std::ostringstream text;
    const char* separator = "";
    ((text << separator << args, separator = " "), ...);
    return text.str();
}

std::string Set(unsigned name, int value)
{
    return Text("glTexParameteri", name, value);
}

class TextureTest : public testing::Test
{
protected:
    void SetUp() override
    {
        rendering::GLHasLoaded();
        recorded::Clear();
        __GLEW_ARB_texture_border_clamp = GL_TRUE;
    }
    void TearDown() override
    {
        rendering::ResourceSettings::s_force16BitTextures = false;
        __GLEW_ARB_texture_border_clamp = GL_FALSE;
        __GLEW_ARB_multitexture = GL_FALSE;
    }
    static std::unique_ptr<Texture> Make(unsigned width, unsigned height,
                                         const Texture::ImageType& type)
    {
        return std::make_unique<Texture>(QUIB_NEW ImageRGBA32(width, height), type);
    }
    static bool Has(const std::string& call)
    {
        const Calls& calls = recorded::Calls();
        return std::find(calls.begin(), calls.end(), call) != calls.end();
    }
};
}

TEST_F(TextureTest, UploadsItsImageAndSetsItsQuality)
{
    recorded::GL().unpackAlignment = 2;
    const auto texture = Make(3, 5, {GL_RGB, false});
    const Calls expected = {
        "glGenTextures 1",
        "glBindTexture 1",
        Text("glTexImage2D", 0, GL_RGB, 3, 5, 0, GL_RGBA, GL_UNSIGNED_BYTE, 1),
        "glBindTexture 0",
        "glBindTexture 1",
        Set(GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
        Set(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
        Set(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
        Set(GL_TEXTURE_MAG_FILTER, GL_LINEAR),
        "glBindTexture 0",
    };
    EXPECT_EQ(expected, recorded::Calls());
    EXPECT_EQ(2, recorded::GL().unpackAlignment) << "put back";
    EXPECT_EQ(math::Vec2i(3, 5), texture->GetSize());
    EXPECT_TRUE(texture->HasAlpha());
}

TEST_F(TextureTest, BuildsMipmapsWhenTheyAreAskedFor)
{
    const Texture texture(QUIB_NEW ImageFloat(3, 5), {GL_ALPHA, true});
    EXPECT_TRUE(Has(Text("gluBuild2DMipmaps", GL_ALPHA, 3, 5, GL_ALPHA, GL_FLOAT, 1)));
}

TEST_F(TextureTest, GoesWithItsNameInGL)
{
    Make(1, 1, {GL_RGBA}).reset();
    EXPECT_EQ("glDeleteTextures 1", recorded::Calls().back());
}

TEST_F(TextureTest, KnowsEachFilterAndWrapMode)
{
    const struct
    {
        bool mipmaps;
        Texture::Quality quality;
        int minFilter, magFilter, s, t;
    } cases[] = {
        {true, {}, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE},
        {true,
         {false, true, false, true, true},
         GL_NEAREST_MIPMAP_LINEAR,
         GL_LINEAR,
         GL_REPEAT,
         GL_CLAMP_TO_EDGE},
        {true,
         {true, false, true, false, false},
         GL_LINEAR_MIPMAP_NEAREST,
         GL_NEAREST,
         GL_CLAMP_TO_EDGE,
         GL_REPEAT},
        {true,
         {false, false, false, false, false},
         GL_NEAREST_MIPMAP_NEAREST,
         GL_NEAREST,
         GL_REPEAT,
         GL_REPEAT},
        {false,
         {true, true, false, true, true},
         GL_NEAREST,
         GL_LINEAR,
         GL_CLAMP_TO_EDGE,
         GL_CLAMP_TO_EDGE},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << &c - cases);
        const auto texture = Make(1, 1, {GL_RGBA, c.mipmaps});
        recorded::Calls().clear();
        texture->SetQuality(c.quality);
        EXPECT_TRUE(Has(Set(GL_TEXTURE_MIN_FILTER, c.minFilter)));
        EXPECT_TRUE(Has(Set(GL_TEXTURE_MAG_FILTER, c.magFilter)));
        EXPECT_TRUE(Has(Set(GL_TEXTURE_WRAP_S, c.s)));
        EXPECT_TRUE(Has(Set(GL_TEXTURE_WRAP_T, c.t)));
    }
}

TEST_F(TextureTest, ClampsInTheOldWayOnADriverWithoutBorders)
{
    __GLEW_ARB_texture_border_clamp = GL_FALSE;
    const rendering::ImageRGBA32Ptr colors = QUIB_NEW ImageRGBA32(2, 1);
    (*colors)(0, 0) = rendering::PixelRGBA32(255, 0, 51, 255);
    const Texture color(colors, {GL_RGBA});
    EXPECT_TRUE(Has(Set(GL_TEXTURE_WRAP_S, GL_CLAMP)));
    EXPECT_TRUE(Has(Set(GL_TEXTURE_WRAP_T, GL_CLAMP)));
    // Blended with what there is anyway.
    EXPECT_TRUE(Has(Text("glTexParameterfv", GL_TEXTURE_BORDER_COLOR, 1, 0, 0.2f, 1)));
    const rendering::ImageFloatPtr distances = QUIB_NEW ImageFloat(1, 2);
    (*distances)(0, 0) = 0.75f;
    const Texture map(distances, {GL_ALPHA});
    EXPECT_TRUE(Has(Text("glTexParameterfv", GL_TEXTURE_BORDER_COLOR, 0, 0, 0, 0.75f)));
    Make(0, 8, {GL_RGBA}); // has no corner
}

TEST_F(TextureTest, ADepthTextureIsCompared)
{
    for (const unsigned format :
         {GL_DEPTH_COMPONENT, GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT32})
    {
        recorded::Clear();
        Make(1, 1, {format});
        EXPECT_TRUE(Has(Set(GL_DEPTH_TEXTURE_MODE, GL_INTENSITY)));
        EXPECT_TRUE(Has(Set(GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE)));
        EXPECT_TRUE(Has(Set(GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL)));
    }
    recorded::Clear();
    Make(1, 1, {GL_RGBA});
    EXPECT_FALSE(Has(Set(GL_DEPTH_TEXTURE_MODE, GL_INTENSITY)));
}

TEST_F(TextureTest, SavesMemoryOnColorsAloneWhenTold)
{
    rendering::ResourceSettings::s_force16BitTextures = true;
    const struct
    {
        unsigned asked, given;
    } cases[] = {{GL_RGB, GL_RGB5}, {GL_RGBA, GL_RGB5_A1}, {GL_LUMINANCE, GL_LUMINANCE}};
    for (const auto& c : cases)
    {
        Make(1, 1, {c.asked});
        EXPECT_TRUE(Has(Text("glTexImage2D", 0, c.given, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, 1)));
    }
    const Texture alpha(QUIB_NEW ImageFloat(1, 1), {GL_ALPHA});
    EXPECT_TRUE(Has(Text("glTexImage2D", 0, GL_ALPHA, 1, 1, 0, GL_ALPHA, GL_FLOAT, 1)));
    EXPECT_EQ(2u, Make(1, 1, {GL_RGBA})->MemoryUsage());
}

TEST_F(TextureTest, KnowsTheBytesOfItsPixels)
{
    const struct
    {
        unsigned format;
        unsigned long bytes;
    } cases[] = {
        {GL_ALPHA, 1},
        {GL_ALPHA16, 2},
        {GL_LUMINANCE, 1},
        {GL_RGB, 3},
        {GL_RGB5, 2},
        {GL_RGB5_A1, 2},
        {GL_RGBA, 4},
        {GL_DEPTH_COMPONENT16, 2},
        {GL_DEPTH_COMPONENT24, 3},
        {GL_DEPTH_COMPONENT32, 4},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(15 * c.bytes, Make(3, 5, {c.format})->MemoryUsage()) << c.format;
        EXPECT_EQ(15 * c.bytes * 4 / 3, Make(3, 5, {c.format, true})->MemoryUsage());
    }
    test::LogCapture log;
    const auto bad = Make(1, 1, {GL_RGBA16});
    EXPECT_THROW(bad->MemoryUsage(), BadCoderException);
    EXPECT_TRUE(log.Has("!\"Bad image format\"")) << log.Text();
}

TEST_F(TextureTest, CopiesTheCornerOfTheFrameBuffer)
{
    const auto texture = Make(20, 10, {GL_RGBA});
    recorded::Calls().clear();
    texture->Copy();
    EXPECT_EQ((Calls{"glBindTexture 1", "glCopyTexSubImage2D 0 0 0 0 0 20 10", "glBindTexture 0"}),
              recorded::Calls());
    texture->Copy(7, 3);
    EXPECT_TRUE(Has("glCopyTexSubImage2D 0 0 0 0 0 7 3"));
}

TEST_F(TextureTest, IsBoundToAUnitOnlyWhereThereAreUnits)
{
    const auto texture = Make(1, 1, {GL_RGBA});
    recorded::Calls().clear();
    test::LogCapture log;
    EXPECT_THROW(texture->Bind(0), BadCoderException);
    EXPECT_THROW(texture->Unbind(1), BadCoderException);
    EXPECT_TRUE(log.Has("Code assertion failed: \"HasMultiTexturing()\"")) << log.Text();
    EXPECT_EQ(Calls(), recorded::Calls());
    texture->Bind();
    texture->Unbind();
    EXPECT_EQ((Calls{"glBindTexture 1", "glBindTexture 0"}), recorded::Calls());
}

TEST_F(TextureTest, OneThatGLRefusesIsNone)
{
    recorded::GL().mipmapsError = GLU_OUT_OF_MEMORY;
    test::LogCapture log(logging::LogError);
    EXPECT_EQ("GLU-Error: out of memory", test::WhatOf<std::runtime_error>(
                                              [] {
                                                  Make(3, 5, {GL_RGBA, true});
                                              }));
    EXPECT_EQ("glDeleteTextures 1", recorded::Calls().back());
    EXPECT_EQ(1,
              std::count(recorded::Calls().begin(), recorded::Calls().end(), "glDeleteTextures 1"));
    EXPECT_TRUE(log.Has("Failed to make a texture of a computed image of 3 x 5 pixels"))
        << log.Text();
    EXPECT_THROW(Texture(QUIB_NEW ImageFloat(1, 1, "circle"), {GL_ALPHA, true}),
                 std::runtime_error);
    EXPECT_TRUE(log.Has("Failed to make a texture of image circle")) << log.Text();
    EXPECT_EQ(4, recorded::GL().unpackAlignment);
}

TEST_F(TextureTest, AnErrorThatOthersLeftIsNotItsOwn)
{
    recorded::GL().error = GL_INVALID_ENUM;
    test::LogCapture log(logging::LogError);
    EXPECT_NO_THROW(Make(1, 1, {GL_RGBA}));
    EXPECT_TRUE(log.Has("GL-Error: invalid enumerant")) << log.Text();
}
