#include "rendering/Shader.h"

#include "logging/Log.h"
#include "rendering/Renderer.h"
#include "util/Failures.h"

#include <GL/glew.h>

#include <vector>

namespace rendering
{
namespace
{
// Deleted with the scope unless it is released.
class GLObject
{
public:
    explicit GLObject(unsigned handle)
        : m_handle(handle)
    {
    }
    ~GLObject()
    {
        if (m_handle)
            glDeleteObjectARB(m_handle);
    }
    GLObject(const GLObject&) = delete;
    GLObject& operator=(const GLObject&) = delete;

    unsigned Get() const { return m_handle; }
    unsigned Release()
    {
        const unsigned handle = m_handle;
        m_handle = 0;
        return handle;
    }

private:
    unsigned m_handle;
};

bool HasAllFunctions()
{
    return glGetObjectParameterivARB && glGetInfoLogARB && glCreateShaderObjectARB &&
           glShaderSourceARB && glCompileShaderARB && glCreateProgramObjectARB &&
           glAttachObjectARB && glLinkProgramARB && glDeleteObjectARB && glGetUniformLocationARB &&
           glGetAttribLocationARB && glUseProgramObjectARB && glUniform1iARB && glUniform1fARB &&
           glUniformMatrix4fvARB && glUniform1fvARB && glUniform2fvARB && glUniform3fvARB &&
           glUniform4fvARB;
}

bool GetStatus(unsigned object, GLenum which)
{
    GLint status = 0;
    glGetObjectParameterivARB(object, which, &status);
    return status != 0;
}

util::String GetInfoLog(unsigned object)
{
    GLint size = 0; // with the 0 at its end
    glGetObjectParameterivARB(object, GL_OBJECT_INFO_LOG_LENGTH_ARB, &size);
    if (size <= 1)
        return "";
    std::vector<char> text(static_cast<size_t>(size));
    GLsizei length = 0;
    glGetInfoLogARB(object, size, &length, text.data());
    return util::String(text.data(), static_cast<size_t>(length));
}

void LogResults(const char* what, const util::String& name, const util::String& results)
{
    if (!results.empty())
        Log(logging::LogInfo, what + name + "\n" + results + "--");
}

unsigned Compile(int type, const util::String& source, const util::String& name)
{
    CheckForGLError();
    GLObject shader(glCreateShaderObjectARB(static_cast<GLenum>(type)));
    if (!shader.Get())
        QUIB_THROW(BadDataException("CreateShader returned 0"));

    const GLcharARB* text = source.c_str();
    const GLint length = static_cast<GLint>(source.size());
    glShaderSourceARB(shader.Get(), 1, &text, &length);
    glCompileShaderARB(shader.Get());
    const bool isCompiled = GetStatus(shader.Get(), GL_OBJECT_COMPILE_STATUS_ARB);
    LogResults("-- Compilation results for shader: ", name, GetShaderLog(shader.Get()));
    if (!isCompiled)
        QUIB_THROW(BadDataException("Failed to compile shader"));
    return shader.Release();
}

void Attach(unsigned program, int type, const util::String& source, const util::String& name)
{
    if (source.empty())
        return;
    // Deleted at the end of the scope, which GL puts off until the program goes.
    const GLObject shader(LoadShader(type, source, name));
    glAttachObjectARB(program, shader.Get());
}

/// 0 when both sources are empty.
unsigned Link(const util::String& name, const util::String& vertexSource,
              const util::String& fragmentSource)
{
    CheckForGLError();
    if (vertexSource.empty() && fragmentSource.empty())
        return 0;
    if (!GLEW_ARB_vertex_program || !GLEW_ARB_fragment_program)
        QUIB_THROW(FatalException(
            "This system doesn't support shaders. Please update your graphics driver and try "
            "again"));
    if (!HasAllFunctions())
        QUIB_THROW(FatalException("NULL-function in Shader::Shader"));

    GLObject program(glCreateProgramObjectARB());
    if (!program.Get())
        QUIB_THROW(FatalException("CreateProgram returned 0"));
    Attach(program.Get(), GL_VERTEX_SHADER_ARB, vertexSource, name);
    Attach(program.Get(), GL_FRAGMENT_SHADER_ARB, fragmentSource, name);

    glLinkProgramARB(program.Get());
    const bool isLinked = GetStatus(program.Get(), GL_OBJECT_LINK_STATUS_ARB);
    LogResults("-- Linking results for program: ", name, GetProgramLog(program.Get()));
    if (!isLinked)
        QUIB_THROW(BadDataException("Failed to link shader"));
    return program.Release();
}

// The default shader is bound like any other, also where GL knows of no shaders.
void UseProgram(unsigned program)
{
    CheckForGLError();
    if (glUseProgramObjectARB)
        glUseProgramObjectARB(program);
    CheckForGLError();
}
}

Shader::Shader(util::String name, util::String vertexSource, util::String fragmentSource)
    : m_name(std::move(name))
{
    if (!HasGLLoaded())
        QUIB_THROW(FatalException("Tried to create shader when GL wasn't loaded"));
    QUIB_PASS_ON(m_program = Link(m_name, vertexSource, fragmentSource));
}

Shader::~Shader()
{
    if (m_program)
        glDeleteObjectARB(m_program);
}

void Shader::BindImpl() const
{
    UseProgram(m_program);
}

void Shader::UnbindImpl() const
{
    UseProgram(0);
}

void Shader::LogWhere(const char* kind, const util::String& name) const
{
    Log(logging::LogError, "Shader " + m_name + " has no " + kind + " " + name);
}

int Shader::GetUniformLocation(const util::String& name) const
{
    if (!m_program)
        return -1;
    const int location = glGetUniformLocationARB(m_program, name.c_str());
    CheckForGLError();
    if (location < 0)
    {
        Log(logging::LogError, "Uniform \"" + name + "\" not found in shader");
        LogWhere("uniform", name);
    }
    return location;
}

int Shader::GetAttributeLocation(const util::String& name) const
{
    if (!m_program)
        return -1;
    const int location = glGetAttribLocationARB(m_program, name.c_str());
    CheckForGLError();
    if (location < 0)
    {
        Log(logging::LogError, "Attribute \"" + name + "\" not found.");
        LogWhere("attribute", name);
    }
    return location;
}

// GL would ignore the location -1 too, but not where no program is bound: that would be an error, and
// the default shader is none.

template<>
void Shader::SetUniform(int location, const int& value)
{
    if (location >= 0)
        glUniform1iARB(location, value);
}

template<>
void Shader::SetUniform(int location, const float& value)
{
    if (location >= 0)
        glUniform1fARB(location, value);
}

template<>
void Shader::SetUniform(int location, const bool& value)
{
    if (location >= 0)
        glUniform1iARB(location, value);
}

// Deliberate: not transposed. GLSL takes the columns one after the other, and is given our rows.
template<>
void Shader::SetUniform(int location, const math::TMatrix4<float>& value)
{
    if (location >= 0)
        glUniformMatrix4fvARB(location, 1, GL_FALSE, &value.m[0][0]);
}

template<>
void Shader::SetUniform(int location, const math::TVector2<float>& value)
{
    if (location >= 0)
        glUniform2fvARB(location, 1, &value.x);
}

template<>
void Shader::SetUniform(int location, const math::TVector3<float>& value)
{
    if (location >= 0)
        glUniform3fvARB(location, 1, &value.x);
}

template<>
void Shader::SetUniform(int location, const math::TVector4<float>& value)
{
    if (location >= 0)
        glUniform4fvARB(location, 1, &value.x);
}

unsigned LoadShader(int type, util::String source, util::String name)
{
    unsigned shader = 0;
    QUIB_PASS_ON(shader = Compile(type, source, name));
    return shader;
}

util::String GetShaderLog(unsigned shader)
{
    return GetInfoLog(shader);
}

util::String GetProgramLog(unsigned program)
{
    return GetInfoLog(program);
}
}
