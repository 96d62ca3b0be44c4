// What takes video memory, through new windows and through settings.
#include "core/ResourceManager.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"
#include "window/PictureFixture.h"

namespace
{
class ResourcesInWindowTest : public test::PictureFixture
{
protected:
    void ShowEverything()
    {
        Start();
        Run(test::EverythingScene);
        Draw();
    }
    static unsigned long GetUsage()
    {
        return core::ResourceManager::GetInstancePtr()->GetVRAMUsage();
    }
};
}

TEST_F(ResourcesInWindowTest, TenNewWindowsShowTheSameFromAsMuchMemory)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ShowEverything();
        const std::string picture = GetPicture();
        const unsigned long usage = GetUsage();
        EXPECT_LT(2 * 2048 * 2048 * 4ul, usage) << "the trail's and the water's alone";
        for (int i = 0; i < 10; ++i)
        {
            test::LogCapture log(logging::LogError);
            Run("System.recreateWindow");
            EXPECT_EQ(usage, GetUsage()) << "before the first frame of window " << i;
            Draw();
            EXPECT_EQ(usage, GetUsage()) << "window " << i;
            EXPECT_TRUE(picture == GetPicture()) << "window " << i;
            EXPECT_EQ("", log.Text());
        }
    });
}

TEST_F(ResourcesInWindowTest, TheFirstUseBringsBackWhatWasUnloaded)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ShowEverything();
        const std::string picture = GetPicture();
        const unsigned long usage = GetUsage();
        Run("Resources.unloadAll");
        EXPECT_EQ(0u, GetUsage());
        Draw();
        EXPECT_TRUE(picture == GetPicture());
        EXPECT_GE(usage, GetUsage());
        EXPECT_LT(0u, GetUsage());
        Run("Resources.loadAll");
        EXPECT_EQ(usage, GetUsage());
    });
}

TEST_F(ResourcesInWindowTest, TexturesOfSixteenBitsTakeHalfAndShowNearlyTheSame)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ShowEverything();
        const test::Pixel box = At(-1.1f, 0.2f);
        const unsigned long usage = GetUsage();
        Run("Resources.force16BitTextures = true");
        EXPECT_GT(usage * 6 / 10, GetUsage());
        Draw();
        EXPECT_PIXEL(box.r, box.g, box.b, At(-1.1f, 0.2f));
        Run("Resources.force16BitTextures = false");
        EXPECT_EQ(usage, GetUsage());
    });
}

TEST_F(ResourcesInWindowTest, ShadersComeAndGoWithTheirSwitch)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ShowEverything();
        const std::string picture = GetPicture();
        test::LogCapture log;
        Run("Resources.shaders = false");
        EXPECT_TRUE(log.Has("Resources.shaders changed value to false")) << log.Text();
        EXPECT_FALSE(log.Has("LoadClass<Shader>")) << log.Text();
        Draw();
        EXPECT_FALSE(picture == GetPicture()) << "plainer";
        Run("Resources.shaders = true");
        EXPECT_TRUE(log.Has("LoadClass<Shader>")) << log.Text();
        Draw();
        EXPECT_TRUE(picture == GetPicture());
    });
}

TEST_F(ResourcesInWindowTest, AFileThatAppearsIsFoundByReloading)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        boost::filesystem::remove(m_dir / "data/textures");
        boost::filesystem::create_directory(m_dir / "data/textures");
        Start();
        const rendering::TextureProxy texture =
            rendering::TextureManager::GetInstancePtr()->Load("ring", {GL_RGBA, true});
        test::LogCapture log(logging::LogError);
        EXPECT_FALSE(texture);
        EXPECT_TRUE(log.Has("Failed to load image ring")) << log.Text();
        EXPECT_EQ(64, texture->GetSize().x) << "the default is there to be used";
        boost::filesystem::copy_file(QUIB_SOURCE_DIR "/data/textures/ring.png",
                                     m_dir / "data/textures/ring.png");
        EXPECT_FALSE(texture);
        Run("Resources.reloadTextures");
        EXPECT_TRUE(texture);
    });
}

TEST_F(ResourcesInWindowTest, WithoutAnyDataFileAllIsDrawnAllTheSame)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        UnlinkData("textures");
        UnlinkData("shaders");
        test::LogCapture log(logging::LogError);
        ShowEverything();
        EXPECT_PIXEL(255, 127, 127, At(-1.1f, 0.2f));
        EXPECT_PIXEL(0, 0, 255, At(0.5f, -0.12f));
        for (const char* name : {"box", "polygon", "plane", "water"})
            EXPECT_TRUE(log.Has(std::string("default/") + name + ".vert")) << name;
        for (const char* name : {"hinge", "pen", "simpleWater", "mouse"})
            EXPECT_TRUE(log.Has(std::string("Failed to load image ") + name)) << name;
        const size_t lines = log.Lines().size();
        Draw();
        EXPECT_EQ(lines, log.Lines().size()) << "told once: " << log.Text();
    });
}
