// What all entities of a kind share of their shader: the program, and its uniforms with the values that
// they hold. Made at the first use and never destroyed.
#pragma once

#include "rendering/ShaderVariable.h"

namespace app
{
class EntityShader : public util::Pointee
{
public:
    /// @param name  of the files
    explicit EntityShader(const char* name);
    ~EntityShader() override;

    /// The user wants shaders, and this one works. Otherwise GL's fixed functions draw.
    bool IsUsable() const;
    const rendering::ShaderProxy& GetProxy() const { return m_proxy; }
    const rendering::Shader& Get() const { return *m_proxy.operator->(); }
    /// Another one each time that the program has been built.
    unsigned GetBuild() const { return m_build; }

private:
    void OnBuild() { ++m_build; }

    rendering::ShaderProxy m_proxy;
    unsigned m_build = 1;
};

/// The one of that kind of shader.
template<typename S>
S& GetEntityShader()
{
    static const auto* const s_shader = new util::SharedPtr<S>(QUIB_NEW S);
    return **s_shader;
}

// A uniform of it. What the program holds already is not sent again: of many entities with the same
// border, the first one tells how wide it is.
template<typename T>
class EntityUniform
{
public:
    /// @param shader  which it belongs to
    EntityUniform(const EntityShader& shader, const char* name)
        : m_shader(shader)
        , m_uniform(shader.GetProxy(), name)
    {
    }

    /// The shader must be bound.
    void Set(const T& value)
    {
        if (m_build == m_shader.GetBuild() && value == m_value)
            return;
        m_uniform.Set(value);
        // Afterwards, as asking for the place of the uniform may build the program.
        m_build = m_shader.GetBuild();
        m_value = value;
    }

private:
    const EntityShader& m_shader;
    rendering::Uniform m_uniform;
    T m_value{};
    unsigned m_build = 0; // that has the value; 0: none has
};

// What all four kinds of geometry ask of their shader.
struct GeomShader : EntityShader
{
    explicit GeomShader(const char* name);

    EntityUniform<math::Vec4> m_insideColor;
    EntityUniform<math::Vec4> m_borderColor;
    EntityUniform<float> m_borderWidth; // world units
    EntityUniform<float> m_pixelSize;   // world units
};
}
