#include "frame/GL.h"

#include <GL/glew.h>
#include <SDL.h>

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace bench
{
namespace
{
GLMode s_mode = GLMode::Real;

const int Width = 1024, Height = 768;

int s_mouseX = 0, s_mouseY = 0;

// A value that GL keeps, by what it is: "enable", 3553, 0. The texture unit or the program stands last.
using Key = std::array<long, 3>;
using Value = std::array<double, 16>;
enum Kind : long
{
    Capability, // what glPushAttrib keeps comes first
    Texture,
    Color,
    Blend,
    BlendColor,
    Alpha,
    DepthFunc,
    DepthMask,
    ColorMask,
    ClearColor,
    LineWidth,
    PointSize,
    MatrixMode,
    Viewport,
    FirstUnpushed,
    Program = FirstUnpushed,
    ActiveUnit,
    Uniform
};

std::map<Key, Value> s_state;
std::vector<std::map<Key, Value>> s_pushed;
long s_unit = 0, s_program = 0;

// Since the last time that something was drawn: by value, the functions that have set it.
std::map<Key, std::vector<const char*>> s_calls;
std::map<Key, Value> s_drawn; // the values then

void Count(const char* function)
{
    if (s_mode == GLMode::Counting)
        ++GetGLCounts()[function].calls;
}

// Something is drawn: of all calls that have set a value since the last time, one was needed when it is
// another value now, and none when it is not.
void Draw(const char* function)
{
    if (s_mode != GLMode::Counting)
        return;
    Count(function);
    for (auto& [key, functions] : s_calls)
    {
        const auto drawn = s_drawn.find(key);
        const bool isNew = drawn == s_drawn.end() || drawn->second != s_state[key];
        if (isNew && !functions.empty())
            functions.pop_back();
        for (const char* vain : functions)
            ++GetGLCounts()[vain].vain;
        s_drawn[key] = s_state[key];
    }
    s_calls.clear();
}

void Set(const char* function, const Key& key, const Value& value)
{
    if (s_mode != GLMode::Counting)
        return;
    Count(function);
    s_state[key] = value;
    s_calls[key].push_back(function);
}

template<typename T>
Value ToValue(const T* v, size_t n)
{
    Value value = {};
    for (size_t i = 0; i < n; ++i)
        value[i] = double(v[i]);
    return value;
}

void Push(const char* function)
{
    if (s_mode != GLMode::Counting)
        return;
    Count(function);
    s_pushed.push_back(s_state);
}

void Pop(const char* function)
{
    if (s_mode != GLMode::Counting || s_pushed.empty())
        return;
    Count(function);
    std::map<Key, Value> restored = std::move(s_pushed.back());
    s_pushed.pop_back();
    for (auto it = restored.begin(); it != restored.end();)
        it = it->first[0] >= FirstUnpushed ? restored.erase(it) : std::next(it);
    for (const auto& entry : s_state)
        if (entry.first[0] >= FirstUnpushed)
            restored.insert(entry);
    for (const auto& entry : restored)
        s_calls[entry.first]; // it may be another now
    s_state = std::move(restored);
}

template<typename Function>
Function Real(Function, const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool IsReal()
{
    return __builtin_expect(s_mode == GLMode::Real, 0);
}

// What GLEW's pointers point to when there is no driver.

void NoActiveTexture(GLenum unit)
{
    s_unit = long(unit);
    Set("glActiveTextureARB", {ActiveUnit, 0, 0}, {double(unit)});
}
void NoAttachObject(GLhandleARB, GLhandleARB) {}
void NoBlendColor(GLclampf r, GLclampf g, GLclampf b, GLclampf a)
{
    Set("glBlendColor", {BlendColor, 0, 0}, {r, g, b, a});
}
void NoCompileShader(GLhandleARB) {}
GLhandleARB s_lastObject = 0;
GLhandleARB NoCreateProgramObject()
{
    return ++s_lastObject;
}
GLhandleARB NoCreateShaderObject(GLenum)
{
    return ++s_lastObject;
}
void NoDeleteObject(GLhandleARB) {}
GLint GetLocation(const char* name)
{
    static std::map<std::string, GLint> s_locations;
    return s_locations.insert({name, GLint(s_locations.size())}).first->second;
}
GLint NoGetUniformLocation(GLhandleARB, const GLcharARB* name)
{
    return GetLocation(name);
}
GLint NoGetAttribLocation(GLhandleARB, const GLcharARB* name)
{
    return GetLocation(name);
}
void NoGetInfoLog(GLhandleARB, GLsizei, GLsizei* length, GLcharARB*)
{
    *length = 0;
}
void NoGetObjectParameteriv(GLhandleARB, GLenum which, GLint* value)
{
    *value = which == GL_OBJECT_INFO_LOG_LENGTH_ARB ? 0 : 1;
}
void NoLinkProgram(GLhandleARB) {}
void NoShaderSource(GLhandleARB, GLsizei, const GLcharARB**, const GLint*) {}
void NoUseProgramObject(GLhandleARB program)
{
    s_program = long(program);
    Set("glUseProgramObjectARB", {Program, 0, 0}, {double(program)});
}
void NoUniform1i(GLint location, GLint v)
{
    Set("glUniform1iARB", {Uniform, location, s_program}, {double(v)});
}
void NoUniform1f(GLint location, GLfloat v)
{
    Set("glUniform1fARB", {Uniform, location, s_program}, {v});
}
void NoUniform1fv(GLint location, GLsizei, const GLfloat* v)
{
    Set("glUniform1fvARB", {Uniform, location, s_program}, ToValue(v, 1));
}
void NoUniform2fv(GLint location, GLsizei, const GLfloat* v)
{
    Set("glUniform2fvARB", {Uniform, location, s_program}, ToValue(v, 2));
}
void NoUniform3fv(GLint location, GLsizei, const GLfloat* v)
{
    Set("glUniform3fvARB", {Uniform, location, s_program}, ToValue(v, 3));
}
void NoUniform4fv(GLint location, GLsizei, const GLfloat* v)
{
    Set("glUniform4fvARB", {Uniform, location, s_program}, ToValue(v, 4));
}
void NoUniformMatrix4fv(GLint location, GLsizei, GLboolean, const GLfloat* v)
{
    Set("glUniformMatrix4fvARB", {Uniform, location, s_program}, ToValue(v, 16));
}

void SetUpExtensions()
{
    __GLEW_ARB_fragment_program = __GLEW_ARB_vertex_program = __GLEW_ARB_multitexture = GL_TRUE;
    __GLEW_ARB_texture_border_clamp = __GLEW_EXT_blend_color = __GLEW_VERSION_1_4 = GL_TRUE;
    __glewActiveTextureARB = NoActiveTexture;
    __glewAttachObjectARB = NoAttachObject;
    __glewBlendColor = NoBlendColor;
    __glewCompileShaderARB = NoCompileShader;
    __glewCreateProgramObjectARB = NoCreateProgramObject;
    __glewCreateShaderObjectARB = NoCreateShaderObject;
    __glewDeleteObjectARB = NoDeleteObject;
    __glewGetAttribLocationARB = NoGetAttribLocation;
    __glewGetInfoLogARB = NoGetInfoLog;
    __glewGetObjectParameterivARB = NoGetObjectParameteriv;
    __glewGetUniformLocationARB = NoGetUniformLocation;
    __glewLinkProgramARB = NoLinkProgram;
    __glewShaderSourceARB = NoShaderSource;
    __glewUniform1fARB = NoUniform1f;
    __glewUniform1fvARB = NoUniform1fv;
    __glewUniform1iARB = NoUniform1i;
    __glewUniform2fvARB = NoUniform2fv;
    __glewUniform3fvARB = NoUniform3fv;
    __glewUniform4fvARB = NoUniform4fv;
    __glewUniformMatrix4fvARB = NoUniformMatrix4fv;
    __glewUseProgramObjectARB = NoUseProgramObject;
}
}

void SetGLMode(GLMode mode)
{
    s_mode = mode;
    if (mode != GLMode::Real)
        SetUpExtensions();
}

void SetMouse(int x, int y)
{
    s_mouseX = x;
    s_mouseY = y;
}

std::map<std::string, GLCount>& GetGLCounts()
{
    static std::map<std::string, GLCount> s_counts;
    return s_counts;
}
}

using namespace bench;

// These stand before the libraries' own.

/// @param parameters  in brackets
/// @param arguments   in brackets
/// @param instead     what is done in place of the call
#define QUIB_REPLACE(result, name, parameters, arguments, instead)                                 \
    extern "C" result name parameters                                                              \
    {                                                                                              \
        if (IsReal())                                                                              \
        {                                                                                          \
            static const auto s_real = Real(&name, #name);                                         \
            return s_real arguments;                                                               \
        }                                                                                          \
        instead;                                                                                   \
    }

/// One that is only counted.
#define QUIB_DROP(name, parameters, arguments)                                                     \
    QUIB_REPLACE(void, name, parameters, arguments, Count(#name))

/// One that draws, or reads what was drawn.
#define QUIB_DRAW(name, parameters, arguments)                                                     \
    QUIB_REPLACE(void, name, parameters, arguments, Draw(#name))

/// One that sets a value, which GL keeps.
#define QUIB_SET(name, parameters, arguments, ...)                                                 \
    QUIB_REPLACE(void, name, parameters, arguments, Set(#name, __VA_ARGS__))

QUIB_SET(glAlphaFunc, (GLenum f, GLclampf ref), (f, ref), {Alpha, 0, 0}, {double(f), ref})
QUIB_SET(glBindTexture, (GLenum target, GLuint name), (target, name), {Texture, 0, s_unit},
         {double(name)})
QUIB_SET(glBlendFunc, (GLenum s, GLenum d), (s, d), {Blend, 0, 0}, {double(s), double(d)})
QUIB_SET(glClearColor, (GLclampf r, GLclampf g, GLclampf b, GLclampf a), (r, g, b, a),
         {ClearColor, 0, 0}, {r, g, b, a})
QUIB_SET(glColor4fv, (const GLfloat* v), (v), {Color, 0, 0}, ToValue(v, 4))
QUIB_SET(glColorMask, (GLboolean r, GLboolean g, GLboolean b, GLboolean a), (r, g, b, a),
         {ColorMask, 0, 0}, {double(r), double(g), double(b), double(a)})
QUIB_SET(glDepthFunc, (GLenum f), (f), {DepthFunc, 0, 0}, {double(f)})
QUIB_SET(glDepthMask, (GLboolean on), (on), {DepthMask, 0, 0}, {double(on)})
QUIB_SET(glDisable, (GLenum c), (c), {Capability, long(c), c == GL_TEXTURE_2D ? s_unit : 0}, {0})
QUIB_SET(glEnable, (GLenum c), (c), {Capability, long(c), c == GL_TEXTURE_2D ? s_unit : 0}, {1})
QUIB_SET(glLineWidth, (GLfloat w), (w), {LineWidth, 0, 0}, {w})
QUIB_SET(glMatrixMode, (GLenum m), (m), {MatrixMode, 0, 0}, {double(m)})
QUIB_SET(glPointSize, (GLfloat s), (s), {PointSize, 0, 0}, {s})
QUIB_SET(glViewport, (GLint x, GLint y, GLsizei w, GLsizei h), (x, y, w, h), {Viewport, 0, 0},
         {double(x), double(y), double(w), double(h)})

QUIB_REPLACE(void, glPushAttrib, (GLbitfield mask), (mask), Push("glPushAttrib"))
QUIB_REPLACE(void, glPopAttrib, (), (), Pop("glPopAttrib"))

QUIB_DRAW(glBegin, (GLenum mode), (mode))
QUIB_DRAW(glClear, (GLbitfield mask), (mask))
QUIB_DRAW(glCopyTexSubImage2D,
          (GLenum t, GLint l, GLint ox, GLint oy, GLint x, GLint y, GLsizei w, GLsizei h),
          (t, l, ox, oy, x, y, w, h))
QUIB_DROP(glDeleteTextures, (GLsizei n, const GLuint* names), (n, names))
QUIB_DROP(glDisableClientState, (GLenum a), (a))
QUIB_DRAW(glDrawArrays, (GLenum mode, GLint first, GLsizei n), (mode, first, n))
QUIB_DROP(glEnableClientState, (GLenum a), (a))
QUIB_DROP(glEnd, (), ())
QUIB_DROP(glFinish, (), ())
QUIB_DROP(glLoadIdentity, (), ())
QUIB_DROP(glMultMatrixd, (const GLdouble* m), (m))
QUIB_DROP(glMultMatrixf, (const GLfloat* m), (m))
QUIB_DROP(glOrtho, (GLdouble l, GLdouble r, GLdouble b, GLdouble t, GLdouble n, GLdouble f),
          (l, r, b, t, n, f))
QUIB_DROP(glPixelStorei, (GLenum name, GLint value), (name, value))
QUIB_DROP(glPopMatrix, (), ())
QUIB_DROP(glPushMatrix, (), ())
QUIB_DRAW(glReadPixels,
          (GLint x, GLint y, GLsizei w, GLsizei h, GLenum format, GLenum type, void* data),
          (x, y, w, h, format, type, data))
QUIB_DROP(glRotatef, (GLfloat a, GLfloat x, GLfloat y, GLfloat z), (a, x, y, z))
QUIB_DROP(glScalef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))
QUIB_DROP(glTexCoord2f, (GLfloat s, GLfloat t), (s, t))
QUIB_DROP(glTexCoordPointer, (GLint n, GLenum type, GLsizei stride, const void* p),
          (n, type, stride, p))
QUIB_DROP(glTexImage2D,
          (GLenum t, GLint l, GLint inner, GLsizei w, GLsizei h, GLint border, GLenum format,
           GLenum type, const void* data),
          (t, l, inner, w, h, border, format, type, data))
QUIB_DROP(glTexParameteri, (GLenum t, GLenum name, GLint value), (t, name, value))
QUIB_DROP(glTranslatef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))
QUIB_DRAW(glVertex2f, (GLfloat x, GLfloat y), (x, y))
QUIB_DRAW(glVertex2fv, (const GLfloat* v), (v))
QUIB_DROP(glVertexPointer, (GLint n, GLenum type, GLsizei stride, const void* p),
          (n, type, stride, p))

QUIB_REPLACE(GLenum, glGetError, (), (), return GL_NO_ERROR)
QUIB_REPLACE(void, glGenTextures, (GLsizei n, GLuint* names), (n, names), static GLuint s_last = 0;
             for (GLsizei i = 0; i < n; ++i) names[i] = ++s_last)
QUIB_REPLACE(
    void, glGetIntegerv, (GLenum name, GLint* value), (name, value), Count("glGetIntegerv");
    if (name == GL_VIEWPORT) {
        value[0] = value[1] = 0;
        value[2] = Width;
        value[3] = Height;
    } else* value = 1)
QUIB_REPLACE(void, glGetFloatv, (GLenum name, GLfloat* value), (name, value), Count("glGetFloatv");
             std::fill_n(value,
                         name == GL_MODELVIEW_MATRIX || name == GL_PROJECTION_MATRIX ? 16 : 1,
                         1.0f))
QUIB_REPLACE(const GLubyte*, glGetString, (GLenum name), (name),
             return reinterpret_cast<const GLubyte*>("2.1"))
QUIB_REPLACE(GLint, gluBuild2DMipmaps,
             (GLenum t, GLint inner, GLsizei w, GLsizei h, GLenum format, GLenum type,
              const void* data),
             (t, inner, w, h, format, type, data), return 0)

QUIB_REPLACE(int, SDL_GL_SetAttribute, (SDL_GLattr a, int value), (a, value), return 0)
QUIB_REPLACE(int, SDL_GL_GetAttribute, (SDL_GLattr a, int* value), (a, value), *value = 8; return 0)
QUIB_REPLACE(SDL_Surface*, SDL_SetVideoMode, (int w, int h, int bpp, Uint32 flags),
             (w, h, bpp, flags), static SDL_Surface s_screen;
             return &s_screen)
QUIB_REPLACE(void, SDL_GL_SwapBuffers, (), (), Count("SDL_GL_SwapBuffers"))
QUIB_REPLACE(GLenum, glewInit, (), (), return GLEW_OK)

// Whatever the mode: where a pointer happens to be is not measured.
extern "C" Uint8 SDL_GetMouseState(int* x, int* y)
{
    *x = s_mouseX;
    *y = s_mouseY;
    return 0;
}
