// Textures with a real OpenGL: what becomes of their pixels and settings.
#include "FreshProcess.h"
#include "TestSupport.h"
#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "rendering/TextureManager.h"
#include "util/FileSystem.h"
#include "window/PlainWindow.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <cstring>

using rendering::ImageFloat;
using rendering::ImageFloatPtr;
using rendering::ImageRGBA32;
using rendering::ImageRGBA32Ptr;
using rendering::PixelRGBA32;
using rendering::Texture;

namespace
{
constexpr int Width = 62, Height = 40;

/// Each pixel tells where it lies.
ImageRGBA32Ptr Pattern(unsigned width, unsigned height)
{
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            (*image)(x, y) = PixelRGBA32(static_cast<unsigned char>(x * 10),
                                         static_cast<unsigned char>(y * 10), 200, 128);
    return image;
}

util::SharedPtr<Texture> Make(const rendering::AbstractImagePtr& image,
                              const Texture::ImageType& type)
{
    return new Texture(image, type);
}

int Parameter(const util::SharedPtr<Texture>& texture, GLenum name)
{
    GLint value = 0;
    texture->Bind();
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    texture->Unbind();
    return value;
}

/// 0 when there is no such level.
int LevelParameter(const util::SharedPtr<Texture>& texture, int level, GLenum name)
{
    GLint value = 0;
    texture->Bind();
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
    texture->Unbind();
    return value;
}

class TextureInContextTest : public testing::Test
{
protected:
    void Start() { test::OpenPlainWindow(server, Width, Height); }

    test::XServer server{"640x480x24"};
};
}

TEST_F(TextureInContextTest, ComesBackFromTheCardAsItWentThere)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        for (const bool mipmaps : {false, true})
            for (const auto& size : {math::Vec2i(8, 16), math::Vec2i(5, 3)})
            {
                SCOPED_TRACE(testing::Message() << size << mipmaps);
                const ImageRGBA32Ptr image = Pattern(size.x, size.y);
                const ImageRGBA32Ptr back = Make(image, {GL_RGBA, mipmaps})->ReadRGBA();
                ASSERT_EQ(unsigned(size.x), back->GetWidth());
                ASSERT_EQ(unsigned(size.y), back->GetHeight());
                // With mipmaps other sizes than powers of two have been scaled, there and back.
                if (!mipmaps || size.x == 8)
                    EXPECT_EQ(0, std::memcmp(image->data(), back->data(), 4 * size.x * size.y));
                else
                    EXPECT_EQ(200, (*back)(2, 1).z);
            }
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}

TEST_F(TextureInContextTest, OddRowsOfFloatsBecomeAlpha)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const ImageFloatPtr image = QUIB_NEW ImageFloat(3, 2);
        for (unsigned i = 0; i < 6; ++i)
            image->data()[i] = float(i) / 5;
        GLint before = 0, after = 0;
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &before);
        const ImageRGBA32Ptr back = Make(image, {GL_ALPHA})->ReadRGBA();
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &after);
        EXPECT_EQ(before, after);
        for (unsigned i = 0; i < 6; ++i)
            EXPECT_NEAR(51 * i, back->data()[i].w, 1) << i;
    });
}

TEST_F(TextureInContextTest, HasMipmapsDownToOnePixelWhenTheyAreAskedFor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const auto with = Make(Pattern(8, 4), {GL_RGBA, true});
        const auto without = Make(Pattern(8, 4), {GL_RGBA, false});
        EXPECT_EQ(4, LevelParameter(with, 1, GL_TEXTURE_WIDTH));
        EXPECT_EQ(1, LevelParameter(with, 3, GL_TEXTURE_WIDTH));
        EXPECT_EQ(0, LevelParameter(without, 1, GL_TEXTURE_WIDTH));
    });
}

TEST_F(TextureInContextTest, TakesItsQualityOnAndAnotherLater)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        const auto texture = Make(Pattern(8, 4), {GL_RGBA, true, {true, false, true, false, true}});
        const int clamp = GLEW_ARB_texture_border_clamp ? GL_CLAMP_TO_EDGE : GL_CLAMP;
        EXPECT_EQ(clamp, Parameter(texture, GL_TEXTURE_WRAP_S));
        EXPECT_EQ(GL_REPEAT, Parameter(texture, GL_TEXTURE_WRAP_T));
        EXPECT_EQ(GL_LINEAR_MIPMAP_LINEAR, Parameter(texture, GL_TEXTURE_MIN_FILTER));
        EXPECT_EQ(GL_NEAREST, Parameter(texture, GL_TEXTURE_MAG_FILTER));
        texture->SetQuality({false, true, false, true, false});
        EXPECT_EQ(GL_REPEAT, Parameter(texture, GL_TEXTURE_WRAP_S));
        EXPECT_EQ(clamp, Parameter(texture, GL_TEXTURE_WRAP_T));
        EXPECT_EQ(GL_NEAREST_MIPMAP_NEAREST, Parameter(texture, GL_TEXTURE_MIN_FILTER));
        EXPECT_EQ(GL_LINEAR, Parameter(texture, GL_TEXTURE_MAG_FILTER));
    });
}

TEST_F(TextureInContextTest, CopiesTheLowerLeftCornerOfTheWindow)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        glClearColor(1, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, 2, 3);
        glClearColor(0, 1, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        const auto texture = Make(Pattern(16, 8), {GL_RGB});
        texture->Copy(4, 4);
        const ImageRGBA32Ptr part = texture->ReadRGBA();
        EXPECT_EQ(255, (*part)(1, 2).y) << "green";
        EXPECT_EQ(255, (*part)(2, 2).x) << "red";
        EXPECT_EQ(255, (*part)(3, 3).x) << "red";
        EXPECT_EQ(200, (*part)(4, 3).z) << "as it was";
        EXPECT_EQ(200, (*part)(3, 4).z) << "as it was";
        texture->Copy();
        EXPECT_EQ(255, (*texture->ReadRGBA())(15, 7).x);
        // One that is larger than the window is no failure.
        Make(Pattern(128, 64), {GL_RGB})->Copy();
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}

TEST_F(TextureInContextTest, SixteenBitsAreForColorsOnly)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        rendering::ResourceSettings::s_force16BitTextures = true;
        const auto color = Make(Pattern(4, 4), {GL_RGBA});
        EXPECT_EQ(GL_RGB5_A1, LevelParameter(color, 0, GL_TEXTURE_INTERNAL_FORMAT));
        const ImageFloatPtr image = QUIB_NEW ImageFloat(1, 1);
        (*image)(0, 0) = 0.5f;
        const auto alpha = Make(image, {GL_ALPHA});
        EXPECT_EQ(GL_ALPHA, LevelParameter(alpha, 0, GL_TEXTURE_INTERNAL_FORMAT));
        EXPECT_NEAR(128, (*alpha->ReadRGBA())(0, 0).w, 1);
    });
}

TEST_F(TextureInContextTest, IsBoundToTheUnitThatIsAskedFor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        ASSERT_TRUE(rendering::HasMultiTexturing());
        const auto texture = Make(Pattern(4, 4), {GL_RGBA});
        const auto bound = []
        {
            GLint unit = 0, name = 0;
            glGetIntegerv(GL_ACTIVE_TEXTURE_ARB, &unit);
            glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
            return std::make_pair(unit - GL_TEXTURE0, name);
        };
        texture->Bind(1);
        EXPECT_EQ(1, bound().first);
        EXPECT_NE(0, bound().second);
        texture->Unbind(1);
        EXPECT_EQ(std::make_pair(1, 0), bound());
        glActiveTextureARB(GL_TEXTURE0);
        EXPECT_EQ(std::make_pair(0, 0), bound());
    });
}

TEST_F(TextureInContextTest, OneThatTheCardRefusesShowsTheDefault)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        GLint most = 0;
        glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
        rendering::TextureManager* manager = rendering::TextureManager::GetInstancePtr();
        const ImageFloatPtr image = QUIB_NEW ImageFloat(most + 1, 1);
        std::memset(image->data(), 0, sizeof(float) * (most + 1));
        test::LogCapture log(logging::LogError);
        const rendering::TextureProxy texture = manager->Load(image, {GL_ALPHA});
        EXPECT_FALSE(texture);
        EXPECT_EQ(math::Vec2i(64, 64), texture->GetSize());
        EXPECT_TRUE(log.Has("GL-Error: invalid value")) << log.Text();

        util::FileSystem::GetInstancePtr()->SetWorkDir(QUIB_SOURCE_DIR "/");
        EXPECT_FALSE(manager->Load("ring", {0x1234})) << "no such format";
        EXPECT_TRUE(log.Has("Failed to make a texture of a computed image of " +
                            util::ToString(most + 1) + " x 1 pixels"))
            << log.Text();
        EXPECT_TRUE(
            log.Has("Failed to make a texture of image " QUIB_SOURCE_DIR "/data/textures/ring.png"))
            << log.Text();
        EXPECT_NO_THROW(rendering::CheckForGLError());
    });
}
