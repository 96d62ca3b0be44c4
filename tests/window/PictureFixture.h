// The program in this process and in a window of an X server of its own, drawn when a test says so, and
// judged by its pixels. To be used in a fresh process.
#pragma once

#include "FreshProcess.h"
#include "TestSupport.h"
#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Startup.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "rendering/Renderer.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "window/XServer.h"

#include <GL/glew.h>
#include <SDL.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace test
{
// One of each, water, and a translucent body in it.
inline const char* const EverythingScene =
    "Scene.addPlane { geomID = 1; pos = [0.0, -0.8]; angle = 1.5707963 };\n"
    "Scene.addBox { geomID = 2; pos = [-0.9, 0.0]; size = [0.6, 0.6]; color = [1.0, 0.0, 0.0, 0.5] "
    "};\n"
    "Scene.addCircle { geomID = 3; pos = [-0.2, 0.0]; radius = 0.3; color = [0.0, 1.0, 0.0, 1.0] "
    "};\n"
    "Scene.addPolygon { geomID = 4; pos = [0.5, 0.0]; color = [0.0, 0.0, 1.0, 1.0]; "
    "vecs = [[-0.3, -0.3], [0.3, -0.3], [0.0, 0.4]] };\n"
    "Scene.addBox { geomID = 5; pos = [1.0, 0.0]; size = [0.6, 0.6] };\n"
    "Scene.addBox { geomID = 6; pos = [1.2, 0.0]; size = [0.6, 0.6] };\n"
    "Scene.addHinge { geom0 = 2; geom0pos = [0.0, 0.0]; geom1 = 0; geom1pos = [-0.9, 0.0]; size = "
    "0.2 };\n"
    "Scene.addFixjoint { geom0 = 5; geom0pos = [0.1, 0.0]; geom1 = 6; geom1pos = [-0.1, 0.0]; size "
    "= 0.2 };\n"
    "Scene.addSpring { geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = 4; geom1pos = [0.0, 0.0]; size = "
    "0.1 };\n"
    "Scene.addPen { geom = 3; relPoint = [0.0, 0.0]; size = 0.2 };\n"
    "Scene.addWater { vecs = [[-0.7, 0.5], [-0.6, 0.5], [-0.65, 0.55]] };\n"
    "Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0; Sim.running = false;\n";

struct Pixel
{
    unsigned char r, g, b, a;
};

inline std::ostream& operator<<(std::ostream& out, const Pixel& p)
{
    return out << "(" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ")";
}

class PictureFixture : public testing::Test
{
protected:
    explicit PictureFixture(const std::string& screen = "320x240x24")
        : m_server(screen)
    {
        boost::filesystem::create_directory(m_dir / "data");
        for (const char* folder : {"textures", "shaders"})
            LinkData(folder);
    }

    void LinkData(const std::string& name)
    {
        boost::filesystem::create_symlink(std::string(QUIB_SOURCE_DIR "/data/") + name,
                                          m_dir / ("data/" + name));
    }
    void UnlinkData(const std::string& name)
    {
        boost::filesystem::remove(m_dir / ("data/" + name));
    }

    /// The world's origin is in the middle, and 100 pixels are a world unit. White sky without clouds.
    /// @param depth  bits a pixel of a window; only one of 32 asks for alpha
    void Start(int width = 300, int height = 200, int depth = 32)
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", m_server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(m_dir.Path());
        core::Subsystem::SetLogToStandardOutput(false);
        app::CreateServices();
        core::WindowParams params;
        params.size = math::TVector2<int>(width, height);
        params.depth = depth;
        core::Subsystem::GetInstancePtr()->CreateWindow(params);
        Run("FileInfo.version = 2; Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0; "
            "Sim.running = false; "
            "App.Background.drawClouds = false; App.Background.skyColor = [1.0, 1.0, 1.0, 1.0]; "
            "App.borders = false");
        MoveMouse(5000, 5000);
    }

    static util::String Run(const util::String& code)
    {
        return script::Parser::GetInstancePtr()->ExecuteToString(code);
    }
    static void MoveMouse(int x, int y)
    {
        SDL_Event event = {};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = static_cast<Uint16>(x);
        event.motion.y = static_cast<Uint16>(y);
        input::Input::GetInstancePtr()->HandleEvent(event);
    }

    /// One frame, over magenta.
    void Draw() { DrawOver(1, 0, 1); }
    void DrawOver(float r, float g, float b)
    {
        glClearColor(r, g, b, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gui::GUI::GetInstancePtr()->Draw();
        EXPECT_NO_THROW(rendering::CheckForGLError());
        m_width = core::Subsystem::GetInstancePtr()->GetWidth();
        m_height = core::Subsystem::GetInstancePtr()->GetHeight();
        m_pixels.resize(size_t(m_width) * m_height);
        glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, m_pixels.data());
    }
    /// Of the last Draw, from the top left.
    Pixel GetPixel(int x, int y) const { return m_pixels[size_t(m_height - 1 - y) * m_width + x]; }
    /// At a place in the world.
    Pixel At(float x, float y) const
    {
        const math::Vec2 pos =
            app::Scene::GetInstancePtr()->GetCamera()->WorldToGUI(math::Vec2(x, y));
        return GetPixel(int(std::floor(pos.x)), int(std::floor(pos.y)));
    }
    /// As text, to compare whole pictures.
    std::string GetPicture() const
    {
        return std::string(reinterpret_cast<const char*>(m_pixels.data()), m_pixels.size() * 4);
    }

    static bool IsNear(const Pixel& p, int r, int g, int b, int tolerance = 4)
    {
        return std::abs(p.r - r) <= tolerance && std::abs(p.g - g) <= tolerance &&
               std::abs(p.b - b) <= tolerance;
    }

    XServer m_server;
    TempDir m_dir;
    int m_width = 0, m_height = 0;
    std::vector<Pixel> m_pixels;
};
}

#define EXPECT_PIXEL(r, g, b, pixel)                                                               \
    EXPECT_TRUE(IsNear(pixel, r, g, b))                                                            \
        << (pixel) << " instead of (" << (r) << ", " << (g) << ", " << (b) << ")"
