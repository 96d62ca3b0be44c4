// Pixels on their way between memory and GL.
#pragma once

#include <GL/glew.h>

namespace rendering
{
// While it lives rows go without padding, which GL would put after those of an odd width.
class TightRows
{
public:
    /// @param name  GL_UNPACK_ALIGNMENT or GL_PACK_ALIGNMENT
    explicit TightRows(GLenum name)
        : m_name(name)
    {
        glGetIntegerv(name, &m_before);
        glPixelStorei(name, 1);
    }
    ~TightRows() { glPixelStorei(m_name, m_before); }
    TightRows(const TightRows&) = delete;
    TightRows& operator=(const TightRows&) = delete;

private:
    GLenum m_name;
    GLint m_before = 4;
};
}
