// A thin, stateful layer over fixed-function OpenGL: the colour cache and the few primitives that
// everything draws with.
//
// The cache mirrors GL's current colour only as long as all colour calls go through here. Code that
// changes the colour in another way does so inside an AttribPusher's scope.
#pragma once

#include "math/Vector.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace rendering
{
class Renderer : public util::Pointee, public util::Singleton<Renderer>
{
public:
    Renderer();

    /// No GL query.
    const math::Vec4& GetColor4() const { return m_color; }
    math::Vec3 GetColor3() const { return m_color.XYZ(); }
    /// No GL call when it is the current colour already.
    void SetColor4(const math::Vec4& color);
    void SetColor4(float r, float g, float b, float a) { SetColor4(math::Vec4(r, g, b, a)); }
    /// Keeps the alpha.
    void SetColor3(const math::Vec3& color) { SetColor4(math::Vec4(color, m_color.w)); }
    /// By component. No GL call when the factor is all ones.
    void MulColor4(const math::Vec4& factor);
    void MulColor3(const math::Vec3& factor);
    /// Stores white and sends it in any case. For a context that has just been made.
    void ResetColor();

    void Vertex(const math::Vec2& v);
    void Translate(const math::Vec2& v);
    void Translate(const math::Vec3& v);

    /// Pixels. A GL query.
    math::TVector2<int> GetViewportSize() const;

    /// One quad with texture coordinates from (0, 0) at (x, y) to (tw, th) at (x + w, y + h).
    void DrawRect(float x, float y, float w, float h, float tw, float th);
    void DrawRect(const math::Vec2& pos, const math::Vec2& size, const math::Vec2& texSize);
    /// A square around its centre, with the whole texture.
    void DrawRect(const math::Vec2& center, float size);
    /// The same where y points down: a texture read from the frame buffer comes out upright.
    void DrawRectGUI(float x, float y, float w, float h, float tw, float th);
    void DrawRectGUI(const math::Vec2& pos, const math::Vec2& size, const math::Vec2& texSize);
    /// An outline that lies inside the rectangle.
    void DrawFrame(math::Vec2 pos, math::Vec2 size, float width);

    /// Writes the frame buffer to the first free file stem_YYMMDD_NNNN.tga, or to
    /// "to_many_screenshots.tga" when the ten thousand of the day are used up. Makes the folder where
    /// it is missing.
    /// @throws boost::filesystem::filesystem_error  when the folder can't be made or searched
    /// @throws Exception                            when the file can't be written
    void ScreenShot(util::String stem);
    /// Uncompressed 24-bit TGA. The file is whole, or as it was before.
    /// @throws Exception  when it can't be written
    void ScreenShotToFile(const util::String& file);
    /// The file is whole, or as it was before.
    /// @throws Exception  when it can't be written
    void ScreenShotToPng(const util::String& file);

private:
    math::Vec4 m_color;
};

/// Called once the first GL context is ready. From then on CheckForGLError looks.
void GLHasLoaded();
/// No context is left: nothing may reach GL until there is another one.
void GLIsGone();
bool HasGLLoaded();
/// @throws std::runtime_error  "GL-Error: " and GL's text when there is one; silent before GLHasLoaded
void CheckForGLError();
/// What others left behind, before a step that asks for its own: it is logged and goes no further.
void ReportEarlierGLError();
}
