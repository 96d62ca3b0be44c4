#include "rendering/Renderer.h"

#include "logging/Log.h"
#include "rendering/PngFile.h"
#include "rendering/TightRows.h"
#include "util/FileSystem.h"

#include <GL/glew.h>
#include <boost/filesystem.hpp>

#include <cstdio>
#include <ctime>
#include <vector>

namespace rendering
{
namespace
{
bool s_isGlLoaded = false;

const math::Vec4 White(1, 1, 1, 1);

/// From its lower left corner, 3 bytes a pixel.
void ReadFrame(const math::TVector2<int>& size, GLenum format, void* pixels)
{
    const TightRows tightRows(GL_PACK_ALIGNMENT);
    glReadPixels(0, 0, size.x, size.y, format, GL_UNSIGNED_BYTE, pixels);
}
}

Renderer::Renderer()
    : m_color(White)
{
}

void Renderer::SetColor4(const math::Vec4& color)
{
    if (color == m_color)
        return;
    m_color = color;
    glColor4fv(&m_color.x);
}

void Renderer::MulColor4(const math::Vec4& factor)
{
    if (factor == White)
        return;
    SetColor4(math::Vec4::Mul(m_color, factor));
}

void Renderer::MulColor3(const math::Vec3& factor)
{
    SetColor3(math::Vec3::Mul(GetColor3(), factor));
}

void Renderer::ResetColor()
{
    m_color = White;
    glColor4fv(&m_color.x);
}

void Renderer::Vertex(const math::Vec2& v)
{
    glVertex2fv(&v.x);
}

void Renderer::Translate(const math::Vec2& v)
{
    glTranslatef(v.x, v.y, 0);
}

void Renderer::Translate(const math::Vec3& v)
{
    glTranslatef(v.x, v.y, v.z);
}

math::TVector2<int> Renderer::GetViewportSize() const
{
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    return math::TVector2<int>(viewport[2], viewport[3]);
}

void Renderer::DrawRect(float x, float y, float w, float h, float tw, float th)
{
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(x, y);
    glTexCoord2f(0, th);
    glVertex2f(x, y + h);
    glTexCoord2f(tw, th);
    glVertex2f(x + w, y + h);
    glTexCoord2f(tw, 0);
    glVertex2f(x + w, y);
    glEnd();
}

void Renderer::DrawRect(const math::Vec2& pos, const math::Vec2& size, const math::Vec2& texSize)
{
    DrawRect(pos.x, pos.y, size.x, size.y, texSize.x, texSize.y);
}

void Renderer::DrawRect(const math::Vec2& center, float size)
{
    DrawRect(center.x - size / 2, center.y - size / 2, size, size, 1, 1);
}

void Renderer::DrawRectGUI(float x, float y, float w, float h, float tw, float th)
{
    glBegin(GL_QUADS);
    glTexCoord2f(0, th);
    glVertex2f(x, y);
    glTexCoord2f(0, 0);
    glVertex2f(x, y + h);
    glTexCoord2f(tw, 0);
    glVertex2f(x + w, y + h);
    glTexCoord2f(tw, th);
    glVertex2f(x + w, y);
    glEnd();
}

void Renderer::DrawRectGUI(const math::Vec2& pos, const math::Vec2& size, const math::Vec2& texSize)
{
    DrawRectGUI(pos.x, pos.y, size.x, size.y, texSize.x, texSize.y);
}

void Renderer::DrawFrame(math::Vec2 pos, math::Vec2 size, float width)
{
    //  x0,y0 ---------- x1,y0     The strip zigzags between outer and inner corner, around and
    //    |  \ ________ /  |       back to the start.
    //    |   |        |   |
    //    |   |________|   |
    //    |  /          \  |
    //  x0,y1 ---------- x1,y1
    const float x0 = pos.x, y0 = pos.y, x1 = x0 + size.x, y1 = y0 + size.y;
    glBegin(GL_TRIANGLE_STRIP);
    glVertex2f(x0, y0);
    glVertex2f(x0 + width, y0 + width);
    glVertex2f(x1, y0);
    glVertex2f(x1 - width, y0 + width);
    glVertex2f(x1, y1);
    glVertex2f(x1 - width, y1 - width);
    glVertex2f(x0, y1);
    glVertex2f(x0 + width, y1 - width);
    glVertex2f(x0, y0);
    glVertex2f(x0 + width, y0 + width);
    glEnd();
}

void Renderer::ScreenShot(util::String stem)
{
    const boost::filesystem::path folder = boost::filesystem::path(stem).parent_path();
    if (!folder.empty())
        boost::filesystem::create_directories(folder);

    char date[16];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof(date), "%y%m%d", std::localtime(&now));
    const util::String base = stem + "_" + date + "_";
    for (int i = 0; i <= 9999; ++i)
    {
        char number[8];
        std::snprintf(number, sizeof(number), "%04d", i);
        const util::String file = base + number + ".tga";
        if (!util::FileSystem::GetInstancePtr()->FileExists(file))
        {
            ScreenShotToFile(file);
            return;
        }
    }
    // Deliberate: "to", and in the current directory.
    ScreenShotToFile("to_many_screenshots.tga");
}

void Renderer::ScreenShotToFile(const util::String& file)
{
    const math::TVector2<int> size = GetViewportSize();
    unsigned char header[18] = {};
    header[2] = 2; // uncompressed, true colour
    header[12] = size.x & 0xFF;
    header[13] = (size.x >> 8) & 0xFF;
    header[14] = size.y & 0xFF;
    header[15] = (size.y >> 8) & 0xFF;
    header[16] = 24; // bits of a pixel

    // Kept: a megabyte or more for each picture, and a recording takes one after the other.
    static util::String s_text;
    s_text.assign(reinterpret_cast<const char*>(header), sizeof(header));
    s_text.resize(sizeof(header) + static_cast<size_t>(size.x) * size.y * 3);

    ReadFrame(size, GL_BGR, &s_text[sizeof(header)]);

    util::FileSystem::GetInstancePtr()->WriteFile(file, s_text);
    Log(logging::LogVerbose, "Screenshot saved to \"" + file + "\"");
}

void Renderer::ScreenShotToPng(const util::String& file)
{
    const math::TVector2<int> size = GetViewportSize();
    std::vector<unsigned char> rgb(static_cast<size_t>(size.x) * size.y * 3);
    ReadFrame(size, GL_RGB, rgb.data());
    WritePngFile(file, size.x, size.y, rgb.data());
    Log(logging::LogVerbose, "Screenshot saved to \"" + file + "\"");
}

void GLHasLoaded()
{
    s_isGlLoaded = true;
}

void GLIsGone()
{
    s_isGlLoaded = false;
}

bool HasGLLoaded()
{
    return s_isGlLoaded;
}

void CheckForGLError()
{
    if (!s_isGlLoaded)
        return;
    const GLenum code = glGetError();
    if (code == GL_NO_ERROR)
        return;
    const GLubyte* text = gluErrorString(code);
    const util::String t =
        text ? reinterpret_cast<const char*>(text) : "error " + util::ToString(code);
    Log(logging::LogError, "GL-Error: " + t);
    QUIB_THROW(std::runtime_error("GL-Error: " + t));
}

void ReportEarlierGLError()
{
    try
    {
        CheckForGLError();
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION); // it has been logged
    }
}
}
