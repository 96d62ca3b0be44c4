// The place of a uniform or attribute in a shader's program, asked for once and kept until the program
// is built anew.
//
// One for each shader and name, not one for each object that is drawn: each hangs two callbacks on the
// shader's mentor. It may be a member, a static or on the stack as well as counted.
#pragma once

#include "rendering/ShaderManager.h"

namespace rendering
{
class ShaderVariable : public util::Pointee
{
public:
    ~ShaderVariable() override = default;
    ShaderVariable(const ShaderVariable&) = delete;
    ShaderVariable& operator=(const ShaderVariable&) = delete;

    /// -1 when the program has none of that name. Only the first call after a build asks GL, and logs
    /// the error.
    virtual int GetLocation() const
    {
        if (__builtin_expect(m_location < 0 && !m_isMissing, 0))
            Ask();
        return m_location;
    }

protected:
    ShaderVariable(ShaderProxy shader, util::String varName);

    virtual int GetLocationImpl() const = 0;
    /// Both forget the location. They run by callback.
    virtual void OnShaderDestroy();
    virtual void OnShaderCreate();

    const ShaderProxy m_shader;
    const util::String m_varName;

private:
    void Ask() const;

    // Whom the callbacks belong to: it lives as long as this does, also where no handle counts this.
    const util::SharedPtr<util::Pointee> m_life;
    mutable int m_location = -1;      // -1: unknown
    mutable bool m_isMissing = false; // it was asked for in vain
};

class Uniform final : public ShaderVariable
{
public:
    Uniform(ShaderProxy shader, util::String varName)
        : ShaderVariable(std::move(shader), std::move(varName))
    {
    }

    /// The shader must be bound.
    template<typename T>
    void Set(const T& value) const
    {
        Shader::SetUniform<T>(GetLocation(), value);
    }

private:
    int GetLocationImpl() const override;
};

class Attribute final : public ShaderVariable
{
public:
    Attribute(ShaderProxy shader, util::String varName)
        : ShaderVariable(std::move(shader), std::move(varName))
    {
    }

private:
    int GetLocationImpl() const override;
};
}
