#include "rendering/Texture.h"

#include "rendering/Renderer.h"

#include <GL/glew.h>

namespace rendering
{
Texture::Texture(const ImageFloatPtr& image, const ImageType& type)
    : m_type(type)
    , m_size(int(image->GetWidth()), int(image->GetHeight()))
{
    if (!HasGLLoaded())
        return;
    glGenTextures(1, &m_name);
    glBindTexture(GL_TEXTURE_2D, m_name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (m_type.mipmaps)
        gluBuild2DMipmaps(GL_TEXTURE_2D, int(m_type.format), m_size.x, m_size.y, GL_ALPHA, GL_FLOAT,
                          image->data());
    else
        glTexImage2D(GL_TEXTURE_2D, 0, int(m_type.format), m_size.x, m_size.y, 0, GL_ALPHA,
                     GL_FLOAT, image->data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                    m_type.mipmaps ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glBindTexture(GL_TEXTURE_2D, 0);
}

Texture::~Texture()
{
    if (m_name)
        glDeleteTextures(1, &m_name);
}

unsigned long Texture::MemoryUsage() const
{
    if (!m_name)
        return 0;
    const unsigned long bytesPerPixel = m_type.format == GL_ALPHA16 ? 2 : 1;
    const unsigned long bytes = static_cast<unsigned long>(m_size.x) * m_size.y * bytesPerPixel;
    return m_type.mipmaps ? bytes * 4 / 3 : bytes;
}

void Texture::Bind() const
{
    glBindTexture(GL_TEXTURE_2D, m_name);
}

void Texture::Unbind() const
{
    glBindTexture(GL_TEXTURE_2D, 0);
}
}
