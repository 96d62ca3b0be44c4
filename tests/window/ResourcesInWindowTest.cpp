// What takes video memory, through new windows and through settings.
#include "core/ResourceManager.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"
#include "window/PictureFixture.h"

#include <dlfcn.h>

#include <cstring>

namespace
{
bool s_isCardFull = false;
}

// These stand before the libraries' own.
extern "C" void glTexImage2D(GLenum target, GLint level, GLint internalFormat, GLsizei width,
                             GLsizei height, GLint border, GLenum format, GLenum type,
                             const void* data)
{
    static const auto s_real =
        reinterpret_cast<decltype(&glTexImage2D)>(dlsym(RTLD_NEXT, "glTexImage2D"));
    s_real(target, level, internalFormat, s_isCardFull ? -1 : width, height, border, format, type,
           data);
}

extern "C" GLint gluBuild2DMipmaps(GLenum target, GLint internalFormat, GLsizei width,
                                   GLsizei height, GLenum format, GLenum type, const void* data)
{
    static const auto s_real =
        reinterpret_cast<decltype(&gluBuild2DMipmaps)>(dlsym(RTLD_NEXT, "gluBuild2DMipmaps"));
    return s_isCardFull ? GLU_OUT_OF_MEMORY
                        : s_real(target, internalFormat, width, height, format, type, data);
}

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
    /// There or beside it: an edge may be rounded another way.
    bool IsShownAbout(const test::Pixel& p, int x, int y) const
    {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (IsNear(GetPixel(x + dx, y + dy), p.r, p.g, p.b))
                    return true;
        return false;
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
        EXPECT_EQ(SDL_ENABLE, SDL_ShowCursor(SDL_QUERY)) << "the desktop's cursor";
        const size_t lines = log.Lines().size();
        Draw();
        EXPECT_EQ(lines, log.Lines().size()) << "told once: " << log.Text();
    });
}

// Not even for the default.
TEST_F(ResourcesInWindowTest, WithoutRoomForAnyTextureAllIsDrawnAllTheSame)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        ShowEverything();
        MoveMouse(20, 20);
        Draw();
        const std::string picture = GetPicture();
        EXPECT_FALSE(IsNear(GetPixel(22, 22), 255, 255, 255)) << "a cursor";
        EXPECT_EQ(SDL_DISABLE, SDL_ShowCursor(SDL_QUERY));

        test::LogCapture log(logging::LogError);
        s_isCardFull = true;
        Run("Resources.reloadTextures");
        Draw();
        Draw();
        EXPECT_PIXEL(255, 127, 127, At(-1.1f, 0.2f));
        EXPECT_PIXEL(255, 255, 255, GetPixel(22, 22));
        EXPECT_EQ(SDL_ENABLE, SDL_ShowCursor(SDL_QUERY)) << "the desktop's cursor";
        for (const std::string& what :
             {"image " + (m_dir / "data/textures/hinge.png"), std::string("image frame")})
            EXPECT_TRUE(log.Has("Failed to make a texture of " + what)) << log.Text();
        EXPECT_TRUE(log.Has("There is no default texture: ")) << log.Text();

        s_isCardFull = false;
        Run("Resources.reloadTextures");
        Draw();
        EXPECT_TRUE(picture == GetPicture());
    });
}

// Mesa takes shader objects and multitexturing away with it. What lies beyond the edge of a polygon's map
// was its inside: dots along the outline of the map.
TEST_F(ResourcesInWindowTest, WithoutBorderClampOrShaderObjectsThePictureIsAsWithShadersOff)
{
    const std::string scene =
        std::string(test::EverythingScene) +
        "Scene.addPolygon { pos = [0.03, 0.51]; color = [0.0, 0.0, 1.0, 1.0]; "
        "vecs = [[-0.23, -0.07], [0.23, -0.06], [0.02, 0.09]] };\n"
        "Scene.Camera.pan = [0.1, 0.2]; Scene.Camera.zoom = 210.0;";
    EXPECT_FINE_IN_FRESH_PROCESS({
        Start();
        Run("Resources.shaders = false;\n" + scene);
        Draw();
        test::Spit(m_dir / "usual", GetPicture());
    });
    EXPECT_FINE_IN_FRESH_PROCESS({
        setenv("MESA_EXTENSION_OVERRIDE", "-GL_ARB_texture_border_clamp -GL_ARB_fragment_program",
               1);
        test::LogCapture log(logging::LogError);
        Start();
        Run(scene);
        Draw();
        EXPECT_FALSE(GLEW_ARB_texture_border_clamp || GLEW_ARB_fragment_program ||
                     GLEW_ARB_shader_objects);
        EXPECT_FALSE(rendering::HasMultiTexturing());
        EXPECT_TRUE(
            log.Has("This system doesn't support shaders. Please update your graphics driver "
                    "and try again"))
            << log.Text();
        EXPECT_TRUE(log.Has("Failed to load shader polygon")) << log.Text();
        const std::string usual = test::Slurp(m_dir / "usual");
        ASSERT_EQ(m_pixels.size() * sizeof(test::Pixel), usual.size());
        const std::vector<test::Pixel> plain = m_pixels;
        std::memcpy(m_pixels.data(), usual.data(), usual.size());
        for (int y = 1; y < m_height - 1; ++y)
            for (int x = 1; x < m_width - 1; ++x)
            {
                const test::Pixel& p = plain[size_t(m_height - 1 - y) * m_width + x];
                EXPECT_TRUE(IsShownAbout(p, x, y)) << p << " at " << x << ", " << y;
            }
    });
}
