#include "rendering/ShaderVariable.h"

namespace rendering
{
ShaderVariable::ShaderVariable(ShaderProxy shader, util::String varName)
    : m_shader(std::move(shader))
    , m_varName(std::move(varName))
    , m_life(QUIB_NEW util::Pointee)
{
    m_shader.GetMentor()->AddDestroyCallback(
        QUIB_NEW util::Callback([this] { OnShaderDestroy(); }, m_life.get()));
    m_shader.GetMentor()->AddCreateCallback(
        QUIB_NEW util::Callback([this] { OnShaderCreate(); }, m_life.get()));
}

void ShaderVariable::Ask() const
{
    // First, as this may build the shader, upon which everything known is forgotten.
    const int location = GetLocationImpl();
    m_location = location;
    m_isMissing = location < 0;
}

void ShaderVariable::OnShaderDestroy()
{
    m_location = -1;
    m_isMissing = false;
}

void ShaderVariable::OnShaderCreate()
{
    // Known from the default, which stood in for it.
    OnShaderDestroy();
}

int Uniform::GetLocationImpl() const
{
    return m_shader->GetUniformLocation(m_varName);
}

int Attribute::GetLocationImpl() const
{
    return m_shader->GetAttributeLocation(m_varName);
}
}
