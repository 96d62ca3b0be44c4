#include "rendering/TextureManager.h"

#include "TestSupport.h"
#include "rendering/RecordedGL.h"
#include "rendering/Renderer.h"
#include "rendering/TextureFactories.h"
#include "util/FileSystem.h"

#include <GL/glu.h>
#include <gtest/gtest.h>

using rendering::ImageFloat;
using rendering::ImageRGBA32;
using rendering::ImageRGBA32Ptr;
using rendering::PixelRGBA32;
using rendering::Texture;
using rendering::TextureManager;
using rendering::TextureProxy;

namespace fs = boost::filesystem;

namespace
{
// Pictures are told apart by their width.
std::string BMP(int width)
{
    const auto little = [](unsigned value) {
        return std::string{char(value), char(value >> 8), char(value >> 16), char(value >> 24)};
    };
    const size_t row = (3 * width + 3) / 4 * 4;
    return "BM" + little(54 + row) + little(0) + little(54) + little(40) + little(width) +
           little(1) + std::string("\1\0\x18\0", 4) + little(0) + little(row) +
           std::string(16, '\0') + std::string(row, '\x7F');
}

class TextureManagerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        recorded::Clear();
        util::FileSystem::GetInstancePtr()->SetWorkDir(m_dir.Path());
        fs::create_directories(m_dir / "data/textures");
    }
    void TearDown() override { util::FileSystem::GetInstancePtr()->SetWorkDir(""); }
    /// Of any kind: SDL_image looks at what is inside.
    void Write(const std::string& name, int width) const
    {
        test::Spit(m_dir / ("data/textures/" + name), BMP(width));
    }
    static int WidthOf(const std::string& name)
    {
        return static_cast<int>(rendering::ImageFromPath(name)->GetWidth());
    }

    test::TempDir m_dir;
    TextureManager* m_manager = TextureManager::GetInstancePtr();
};
}

TEST_F(TextureManagerTest, APictureIsFoundWithoutItsExtensionInAFixedOrder)
{
    Write("a.jpg", 4);
    EXPECT_EQ(4, WidthOf("a"));
    Write("a.bmp", 3);
    EXPECT_EQ(3, WidthOf("a"));
    // SDL_image takes what ends so for a TGA and reads no other.
    test::Spit(m_dir / "data/textures/a.tga",
               std::string("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\1\0\x18\0", 18) + "blue--");
    EXPECT_EQ(2, WidthOf("a"));
    Write("a.png", 1);
    EXPECT_EQ(1, WidthOf("a"));
}

TEST_F(TextureManagerTest, AFolderOfThatNameHidesNoPicture)
{
    fs::create_directory(m_dir / "data/textures/b");
    fs::create_directory(m_dir / "data/textures/b.png");
    Write("b.bmp", 2);
    EXPECT_EQ(2, WidthOf("b"));
}

TEST_F(TextureManagerTest, ANameWithAnExtensionIsTakenAsItStands)
{
    Write("a.png", 1);
    Write("a.bmp", 3);
    EXPECT_EQ(3, WidthOf("a.bmp"));
    Write("a.xyz.png", 5);
    EXPECT_THROW(WidthOf("a.xyz"), FileReadException) << "the fourth from the end is a dot";
    Write("plain", 6);
    Write("plain.png", 7);
    EXPECT_EQ(6, WidthOf("plain")) << "a file that is there needs no extension";
}

TEST_F(TextureManagerTest, APathFromTheDataFolderOnIsNotLookedForAmongTheTextures)
{
    fs::create_directories(m_dir / "data/fonts");
    test::Spit(m_dir / "data/fonts/a.bmp", BMP(8));
    EXPECT_EQ(8, WidthOf(m_dir / "data/fonts/a"));
    // In whatever case: the folder's name then is not that of a file system that knows case.
    EXPECT_THROW(WidthOf(util::ToUpper(m_dir / "data/fonts/a")), FileReadException);
}

TEST_F(TextureManagerTest, ANameThatLeadsNowhereIsReportedAsItStands)
{
    test::LogCapture log;
    EXPECT_EQ(nullptr, rendering::TextureFromPath("none", {GL_RGBA}));
    const std::string path = m_dir / "data/textures/none";
    EXPECT_TRUE(log.Has("Error: Could not load image file \"" + path +
                        "\". SDL_image error: \"Couldn't open " + path + "\""))
        << log.Text();
    EXPECT_TRUE(log.Has("!! ERROR: Failed to load image none")) << log.Text();
}

TEST_F(TextureManagerTest, TheLaterImageTypeOfAKnownNameIsIgnored)
{
    Write("known.png", 3);
    const TextureProxy first = m_manager->Load("known", {GL_RGB, false});
    const TextureProxy second = m_manager->Load("known", {GL_RGBA, true});
    EXPECT_EQ(first.GetMentor(), second.GetMentor());
    // Deliberate: whoever asks first decides.
    EXPECT_EQ(unsigned(GL_RGB), second->GetImageType().m_format);
    EXPECT_FALSE(second->GetImageType().m_mipmaps);
    EXPECT_NE(first.GetMentor(), m_manager->Load("other", {GL_RGB, false}).GetMentor());
}

TEST_F(TextureManagerTest, AFailedTextureShowsTheDefaultAndItsProxyTestsFalse)
{
    const TextureProxy missing = m_manager->Load("missing", {GL_RGBA});
    EXPECT_FALSE(missing);
    EXPECT_EQ(util::Mentor<Texture>::s_default->GetPtr().get(), missing.operator->());
    EXPECT_EQ(math::Vec2i(64, 64), missing->GetSize());
    // The file is tried again when it is loaded anew.
    Write("missing.png", 3);
    EXPECT_FALSE(missing);
    missing.GetMentor()->Unload();
    EXPECT_TRUE(missing);
    EXPECT_EQ(3, missing->GetSize().x);
}

TEST_F(TextureManagerTest, TheDefaultIsFourQuartersOfGreenAndMagenta)
{
    const util::SharedPtr<Texture> texture(rendering::CreateDefaultTexture());
    EXPECT_EQ("", texture->GetImage()->GetName());
    const ImageRGBA32Ptr image = util::DynamicCast<ImageRGBA32>(texture->GetImage());
    ASSERT_TRUE(image);
    ASSERT_EQ(64u, image->GetWidth());
    ASSERT_EQ(64u, image->GetHeight());
    const PixelRGBA32 green(0, 255, 0, 127), magenta(255, 0, 255, 255);
    for (const unsigned far : {0u, 31u})
    {
        EXPECT_TRUE(green == (*image)(far, far));
        EXPECT_TRUE(green == (*image)(32 + far, 32 + far));
        EXPECT_TRUE(magenta == (*image)(32 + far, far));
        EXPECT_TRUE(magenta == (*image)(far, 32 + far));
    }
}

TEST_F(TextureManagerTest, ADefaultThatGLRefusesIsNoTextureAndCanBeUsed)
{
    rendering::GLHasLoaded();
    const util::SharedPtr<util::Mentor<Texture>> usual = util::Mentor<Texture>::s_default;
    util::Mentor<Texture>::s_default =
        QUIB_NEW util::Mentor<Texture>(rendering::CreateDefaultTexture);
    recorded::GL().mipmapsError = GLU_OUT_OF_MEMORY;
    test::LogCapture log(logging::LogError);
    const TextureProxy missing = m_manager->Load("neither here", {GL_RGBA, true});
    EXPECT_FALSE(missing);
    EXPECT_EQ(math::Vec2i(64, 64), missing->GetSize());
    recorded::Calls().clear();
    missing->Bind();
    missing->Copy();
    EXPECT_EQ(std::vector<std::string>{"glBindTexture 0"}, recorded::Calls());
    EXPECT_TRUE(log.Has("!! ERROR: There is no default texture: GLU-Error: out of memory"))
        << log.Text();
    util::Mentor<Texture>::s_default = usual;
}

TEST_F(TextureManagerTest, ImagesMakeANewTextureEachTime)
{
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(2, 3);
    const TextureProxy a = m_manager->Load(image, {GL_RGBA}), b = m_manager->Load(image, {GL_RGBA});
    EXPECT_NE(a.GetMentor(), b.GetMentor());
    EXPECT_TRUE(a);
    EXPECT_EQ(math::Vec2i(2, 3), a->GetSize());
    const rendering::ImageFloatPtr alpha = QUIB_NEW ImageFloat(4, 5);
    EXPECT_EQ(math::Vec2i(4, 5), m_manager->Load(alpha, {GL_ALPHA})->GetSize());
}

TEST_F(TextureManagerTest, AComputedTextureIsComputedAgainEachTimeItIsLoaded)
{
    int count = 0;
    const TextureProxy texture = rendering::ComputedTexture(
        [&count]() -> rendering::AbstractImagePtr
        {
            ++count;
            return QUIB_NEW ImageFloat(2, 2);
        },
        {GL_ALPHA});
    EXPECT_EQ(0, count) << "nobody has used it";
    EXPECT_TRUE(texture);
    EXPECT_EQ(2, texture->GetSize().x);
    EXPECT_EQ(1, count);
    texture.GetMentor()->Unload();
    texture.GetMentor()->Load();
    EXPECT_EQ(2, count);
}
