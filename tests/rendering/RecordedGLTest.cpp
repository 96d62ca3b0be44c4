#include "rendering/RecordedGL.h"

#include <GL/gl.h>

#include <sstream>

namespace recorded
{
std::vector<std::string>& Calls()
{
    static std::vector<std::string> s_calls;
    return s_calls;
}

State& GL()
{
    static State s_state;
    return s_state;
}

void Clear()
{
    Calls().clear();
    GL() = State();
}

namespace
{
template<typename... Args>
void Note(const char* name, Args... args)
{
    std::ostringstream text;
    text << name;
    (void)(text << ... << (" " + (std::ostringstream() << args).str()));
    Calls().push_back(text.str());
}
}
}

using recorded::GL;
using recorded::Note;

extern "C"
{
    void glColor4fv(const GLfloat* c)
    {
        Note("glColor4fv", c[0], c[1], c[2], c[3]);
    }
    void glVertex2fv(const GLfloat* v)
    {
        Note("glVertex2fv", v[0], v[1]);
    }
    void glVertex2f(GLfloat x, GLfloat y)
    {
        Note("glVertex2f", x, y);
    }
    void glTexCoord2f(GLfloat s, GLfloat t)
    {
        Note("glTexCoord2f", s, t);
    }
    void glTranslatef(GLfloat x, GLfloat y, GLfloat z)
    {
        Note("glTranslatef", x, y, z);
    }
    void glMultMatrixf(const GLfloat* m)
    {
        Note("glMultMatrixf", m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10],
             m[11], m[12], m[13], m[14], m[15]);
    }
    void glMultMatrixd(const GLdouble* m)
    {
        Note("glMultMatrixd", m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10],
             m[11], m[12], m[13], m[14], m[15]);
    }
    // Any matrix is that of the numbers 0 to 15 as they lie in memory.
    void glGetFloatv(GLenum name, GLfloat* values)
    {
        Note("glGetFloatv", name);
        for (int i = 0; i < 16; ++i)
            values[i] = static_cast<GLfloat>(i);
    }
    void glBegin(GLenum mode)
    {
        Note("glBegin", mode);
    }
    void glEnd()
    {
        Note("glEnd");
    }
    void glPushAttrib(GLbitfield mask)
    {
        Note("glPushAttrib", mask);
    }
    void glPopAttrib()
    {
        Note("glPopAttrib");
    }

    void glGetIntegerv(GLenum name, GLint* values)
    {
        if (name == GL_VIEWPORT)
        {
            values[0] = values[1] = 0;
            values[2] = GL().width;
            values[3] = GL().height;
        }
        else if (name == GL_PACK_ALIGNMENT)
            values[0] = GL().packAlignment;
        else if (name == GL_UNPACK_ALIGNMENT)
            values[0] = GL().unpackAlignment;
    }

    void glPixelStorei(GLenum name, GLint value)
    {
        if (name == GL_PACK_ALIGNMENT)
            GL().packAlignment = value;
        else if (name == GL_UNPACK_ALIGNMENT)
            GL().unpackAlignment = value;
    }

    void glGenTextures(GLsizei, GLuint* names)
    {
        *names = ++GL().textures;
        Note("glGenTextures", *names);
    }
    void glDeleteTextures(GLsizei, const GLuint* names)
    {
        Note("glDeleteTextures", *names);
    }
    void glBindTexture(GLenum, GLuint name)
    {
        Note("glBindTexture", name);
    }
    void glTexImage2D(GLenum, GLint level, GLint internalFormat, GLsizei width, GLsizei height,
                      GLint border, GLenum format, GLenum type, const void*)
    {
        Note("glTexImage2D", level, internalFormat, width, height, border, format, type,
             GL().unpackAlignment);
    }
    GLint gluBuild2DMipmaps(GLenum, GLint internalFormat, GLsizei width, GLsizei height,
                            GLenum format, GLenum type, const void*)
    {
        Note("gluBuild2DMipmaps", internalFormat, width, height, format, type,
             GL().unpackAlignment);
        return GL().mipmapsError;
    }
    void glTexParameteri(GLenum, GLenum name, GLint value)
    {
        Note("glTexParameteri", name, value);
    }
    void glTexParameterfv(GLenum, GLenum name, const GLfloat* v)
    {
        Note("glTexParameterfv", name, v[0], v[1], v[2], v[3]);
    }
    void glCopyTexSubImage2D(GLenum, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y,
                             GLsizei width, GLsizei height)
    {
        Note("glCopyTexSubImage2D", level, xoffset, yoffset, x, y, width, height);
    }

    // Pads rows as the real one does: each pixel is (column, row, 200).
    void glReadPixels(GLint, GLint, GLsizei width, GLsizei height, GLenum format, GLenum type,
                      void* data)
    {
        Note("glReadPixels", width, height, format, type, GL().packAlignment);
        unsigned char* out = static_cast<unsigned char*>(data);
        for (int y = 0; y < height; ++y)
        {
            unsigned char* pixel = out;
            for (int x = 0; x < width; ++x)
            {
                *pixel++ = static_cast<unsigned char>(x);
                *pixel++ = static_cast<unsigned char>(y);
                *pixel++ = 200;
            }
            const int a = GL().packAlignment;
            out += (width * 3 + a - 1) / a * a;
        }
    }

    GLenum glGetError()
    {
        const GLenum error = GL().error;
        GL().error = GL_NO_ERROR;
        return error;
    }
}
