// A GLSL program on the graphics card, through the ARB calls: the fixed-function vertex inputs, and
// uniforms by name. It dies with the GL context, so that a mentor owns it and everybody else holds a
// ShaderProxy (rendering/ShaderManager.h).
#pragma once

#include "math/Matrix.h"
#include "math/Vector.h"
#include "rendering/GraphicsResource.h"
#include "util/StackedBind.h"
#include "util/String.h"

namespace rendering
{
class Shader final : public GraphicsResource, public util::StackedBind<Shader>
{
public:
    /// Either source may be empty: GL's fixed functions do that stage. With both empty there is no
    /// program at all; such a shader can be bound and leaves everything to the fixed functions.
    /// @param name  for the log
    /// @throws FatalException    without GL, or when it has no shaders
    /// @throws BadDataException  when a source doesn't compile or the two don't link; the log says why
    Shader(util::String name, util::String vertexSource, util::String fragmentSource);
    ~Shader() override;
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;

    /// 0: no driver tells.
    unsigned long MemoryUsage() const override { return 0; }

    const util::String& GetName() const { return m_name; }

    /// -1 when the program doesn't use it, which is logged as an error. A GL query: what is drawn many
    /// times a frame keeps it in a Uniform (rendering/ShaderVariable.h).
    int GetUniformLocation(const util::String& name) const;
    int GetAttributeLocation(const util::String& name) const;

    /// Of the shader that is bound. A location of -1 is ignored. For int, float, bool, Mat4 and the
    /// vectors of two to four floats.
    template<typename T>
    static void SetUniform(int location, const T& value) = delete;
    /// Looks the location up. The shader must be bound.
    template<typename T>
    void SetUniform(const util::String& name, const T& value) const
    {
        SetUniform<T>(GetUniformLocation(name), value);
    }

private:
    // Each asks GL for errors twice, before and after.
    void BindImpl() const override;
    void UnbindImpl() const override;
    void LogWhere(const char* kind, const util::String& name) const;

    util::String m_name;
    unsigned m_program = 0; // GL's; 0: both sources are empty
};

template<>
void Shader::SetUniform(int location, const int& value);
template<>
void Shader::SetUniform(int location, const float& value);
template<>
void Shader::SetUniform(int location, const bool& value);
template<>
void Shader::SetUniform(int location, const math::TMatrix4<float>& value);
template<>
void Shader::SetUniform(int location, const math::TVector2<float>& value);
template<>
void Shader::SetUniform(int location, const math::TVector3<float>& value);
template<>
void Shader::SetUniform(int location, const math::TVector4<float>& value);

/// Compiles a source. What the compiler says is logged.
/// @param type  GL_VERTEX_SHADER_ARB or GL_FRAGMENT_SHADER_ARB
/// @param name  for the log
/// @return GL's shader object, the caller's to delete
/// @throws BadDataException  when it doesn't compile
unsigned LoadShader(int type, util::String source, util::String name);

/// What GL had to say on compiling and on linking; "" for nothing.
util::String GetShaderLog(unsigned shader);
util::String GetProgramLog(unsigned program);
}
