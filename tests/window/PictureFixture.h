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
    void Start(int width = 300, int height = 200)
    {
        setenv("SDL_VIDEODRIVER", "x11", 1);
        setenv("DISPLAY", m_server.Display().c_str(), 1);
        util::FileSystem::GetInstancePtr()->SetWorkDir(m_dir.Path());
        core::Subsystem::SetLogToStandardOutput(false);
        app::CreateServices();
        core::WindowParams params;
        params.size = math::TVector2<int>(width, height);
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
