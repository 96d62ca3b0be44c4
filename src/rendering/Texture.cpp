#include "rendering/Texture.h"

#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "rendering/TightRows.h"
#include "util/ScopeProfiler.h"

#include <GL/glew.h>

#include <algorithm>
#include <vector>

namespace rendering
{
namespace
{
GLenum ChooseInternalFormat(GLenum format)
{
    if (ResourceSettings::s_force16BitTextures)
        switch (format)
        {
        case GL_RGB:
            return GL_RGB5;
        case GL_RGBA:
            return GL_RGB5_A1;
        }
    return format;
}

bool IsDepth(GLenum format)
{
    return format == GL_DEPTH_COMPONENT || format == GL_DEPTH_COMPONENT16 ||
           format == GL_DEPTH_COMPONENT24 || format == GL_DEPTH_COMPONENT32;
}

unsigned long BytesAPixel(GLenum format)
{
    switch (format)
    {
    case GL_ALPHA:
    case GL_LUMINANCE:
        return 1;
    case GL_ALPHA16:
    case GL_RGB5:
    case GL_RGB5_A1:
    case GL_DEPTH_COMPONENT16:
        return 2;
    case GL_RGB:
    case GL_DEPTH_COMPONENT:
    case GL_DEPTH_COMPONENT24:
        return 3;
    case GL_RGBA:
    case GL_DEPTH_COMPONENT32:
        return 4;
    }
    CODE_ASSERT(!"Bad image format");
    return 0;
}

GLint MinFilter(bool mipmaps, const Texture::Quality& quality)
{
    if (!mipmaps)
        return quality.m_linearMin ? GL_LINEAR : GL_NEAREST;
    if (quality.m_linearMip)
        return quality.m_linearMin ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
    return quality.m_linearMin ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
}

/// Of a corner, as GL reads the image.
math::Vec4 GetCornerColor(const AbstractImage& image)
{
    if (image.GetWidth() == 0 || image.GetHeight() == 0)
        return math::Vec4(0, 0, 0, 0);
    if (const auto* floats = dynamic_cast<const ImageFloat*>(&image))
        return math::Vec4(0, 0, 0, (*floats)(0, 0));
    const auto* colors = dynamic_cast<const ImageRGBA32*>(&image);
    CODE_ASSERT(colors);
    const PixelRGBA32& c = (*colors)(0, 0);
    return math::Vec4(c.x, c.y, c.z, c.w) * (1 / 255.0f);
}

util::String Describe(const AbstractImage& image)
{
    if (!image.GetName().empty())
        return "image " + image.GetName();
    return "a computed image of " + util::ToString(image.GetWidth()) + " x " +
           util::ToString(image.GetHeight()) + " pixels";
}

void ThrowGLUError(GLint code)
{
    const GLubyte* text = gluErrorString(static_cast<GLenum>(code));
    QUIB_THROW(
        std::runtime_error("GLU-Error: " + (text ? util::String(reinterpret_cast<const char*>(text))
                                                 : "error " + util::ToString(code))));
}
}

Texture::Texture(const AbstractImagePtr& image, const ImageType& type, unsigned internalFormat)
    : m_image(image)
    , m_size(static_cast<int>(image->GetWidth()), static_cast<int>(image->GetHeight()))
    , m_type(type)
    , m_internalFormat(internalFormat)
{
}

Texture* Texture::CreateEmpty(const AbstractImagePtr& image, const ImageType& type)
{
    return new Texture(image, type, ChooseInternalFormat(type.m_format));
}

Texture::Texture(const AbstractImagePtr& image, const ImageType& type)
    : Texture(image, type, ChooseInternalFormat(type.m_format))
{
    if (!HasGLLoaded())
        return;
    ReportEarlierGLError();
    try
    {
        QUIB_PASS_ON(glGenTextures(1, &m_name));
        QUIB_PASS_ON(Upload());
        QUIB_PASS_ON(CommitQuality());
        QUIB_PASS_ON(CheckForGLError());
    }
    catch (...)
    {
        // The destructor, which follows, deletes it. What GL says names nothing.
        glBindTexture(GL_TEXTURE_2D, 0);
        Log(logging::LogError, "Failed to make a texture of " + Describe(*m_image));
        throw;
    }
}

Texture::~Texture()
{
    if (m_name)
        glDeleteTextures(1, &m_name);
}

void Texture::Upload()
{
    const TightRows tightRows(GL_UNPACK_ALIGNMENT);
    const GLint internalFormat = static_cast<GLint>(m_internalFormat);
    const void* data = m_image->GetDataVoidPtr();
    glBindTexture(GL_TEXTURE_2D, m_name);
    if (m_type.m_mipmaps)
    {
        const GLint code = gluBuild2DMipmaps(GL_TEXTURE_2D, internalFormat, m_size.x, m_size.y,
                                             m_image->GetFormat(), m_image->GetType(), data);
        if (code != 0)
            ThrowGLUError(code);
    }
    else
        glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, m_size.x, m_size.y, 0, m_image->GetFormat(),
                     m_image->GetType(), data);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void Texture::CommitQuality()
{
    if (!m_name)
        return;
    const Quality& quality = m_type.m_quality;
    const GLint clamp = GLEW_ARB_texture_border_clamp ? GL_CLAMP_TO_EDGE : GL_CLAMP;
    glBindTexture(GL_TEXTURE_2D, m_name);
    const auto set = [](GLenum name, GLint value) { glTexParameteri(GL_TEXTURE_2D, name, value); };
    set(GL_TEXTURE_WRAP_S, quality.m_clampS ? clamp : GL_REPEAT);
    set(GL_TEXTURE_WRAP_T, quality.m_clampT ? clamp : GL_REPEAT);
    set(GL_TEXTURE_MIN_FILTER, MinFilter(m_type.m_mipmaps, quality));
    set(GL_TEXTURE_MAG_FILTER, quality.m_linearMag ? GL_LINEAR : GL_NEAREST);
    if (clamp == GL_CLAMP)
    {
        // It blends the outermost pixels with a color that is none of theirs, and would be transparent: in
        // a map of distances that is the deepest inside. Images whose border matters have a rim of one color.
        const math::Vec4 border = GetCornerColor(*m_image);
        glTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, &border.x);
    }
    if (IsDepth(m_internalFormat))
    {
        set(GL_DEPTH_TEXTURE_MODE, GL_INTENSITY);
        set(GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
        set(GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
}

void Texture::SetQuality(const Quality& quality)
{
    m_type.m_quality = quality;
    CommitQuality();
}

unsigned long Texture::MemoryUsage() const
{
    const unsigned long bytes =
        static_cast<unsigned long>(m_size.x) * m_size.y * BytesAPixel(m_internalFormat);
    return m_type.m_mipmaps ? bytes * 4 / 3 : bytes;
}

void Texture::Bind() const
{
    glBindTexture(GL_TEXTURE_2D, m_name);
}

void Texture::Unbind() const
{
    glBindTexture(GL_TEXTURE_2D, 0);
}

void Texture::Bind(int unit) const
{
    CODE_ASSERT(HasMultiTexturing());
    glActiveTextureARB(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, m_name);
}

void Texture::Unbind(int unit) const
{
    CODE_ASSERT(HasMultiTexturing());
    glActiveTextureARB(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void Texture::Copy()
{
    Copy(m_size.x, m_size.y);
}

void Texture::Copy(int w, int h)
{
    QUIB_PROFILE("Texture::Copy");
    if (!m_name)
        return;
    Bind();
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, w, h);
    Unbind();
}

ImageRGBA32Ptr Texture::ReadRGBA() const
{
    QUIB_PROFILE("Read");
    const ImageRGBA32Ptr image = QUIB_NEW ImageRGBA32(m_image->GetWidth(), m_image->GetHeight());
    image->SetHasAlpha(HasAlpha());
    if (!m_name)
    {
        std::fill_n(image->data(), size_t(m_size.x) * m_size.y, PixelRGBA32());
        return image;
    }
    Bind();
    // One with mipmaps may have been brought to powers of two.
    GLint width = 0, height = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    if (width == m_size.x && height == m_size.y)
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image->data());
    else
    {
        std::vector<PixelRGBA32> level(static_cast<size_t>(width) * height);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, level.data());
        gluScaleImage(GL_RGBA, width, height, GL_UNSIGNED_BYTE, level.data(), m_size.x, m_size.y,
                      GL_UNSIGNED_BYTE, image->data());
    }
    Unbind();
    return image;
}

bool HasMultiTexturing()
{
    return GLEW_ARB_multitexture;
}
}
