#include "app/entities/EntityShader.h"

#include "core/ResourceManager.h"
#include "util/Callback.h"

namespace app
{
EntityShader::EntityShader(const char* name)
    : m_proxy(rendering::ShaderManager::GetInstancePtr()->Load(name))
{
    m_proxy.GetMentor()->AddCreateCallback(util::MakeCallback(&EntityShader::OnBuild, this));
}

EntityShader::~EntityShader() = default;

bool EntityShader::IsUsable() const
{
    return core::ResourceManager::GetInstancePtr()->GetShaders() && m_proxy;
}

GeomShader::GeomShader(const char* name)
    : EntityShader(name)
    , m_insideColor(*this, "InsideColor")
    , m_borderColor(*this, "BorderColor")
    , m_borderWidth(*this, "BorderWidth")
    , m_pixelSize(*this, "PixelSize")
{
}
}
