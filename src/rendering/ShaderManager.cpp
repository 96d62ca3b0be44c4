#include "rendering/ShaderManager.h"

#include "logging/Log.h"
#include "rendering/ResourceSettings.h"
#include "util/FileSystem.h"

namespace rendering
{
ShaderManager::ShaderManager()
{
    util::Mentor<Shader>::s_default = QUIB_NEW util::Mentor<Shader>(&CreateDefaultShader);
}

ShaderProxy ShaderManager::Load(util::String name)
{
    ShaderMentorPtr& mentor = m_mentors[name];
    if (!mentor)
        mentor = QUIB_NEW util::Mentor<Shader>([name] { return LoadFromFiles(name); });
    return mentor;
}

util::String ShaderManager::GetShaderPath()
{
    return util::FileSystem::GetInstancePtr()->ShaderDir() + "default/";
}

Shader* ShaderManager::LoadFromFiles(util::String name)
{
    if (!ResourceSettings::s_useShaders)
        return nullptr;
    util::FileSystem* files = util::FileSystem::GetInstancePtr();
    const util::String stem = GetShaderPath() + name;
    const util::String vertexSource = files->ReadWholeFile(stem + ".vert");
    const util::String fragmentSource = files->ReadWholeFile(stem + ".frag");
    try
    {
        return new Shader(name, vertexSource, fragmentSource);
    }
    catch (...)
    {
        // Many a failure has no log of the driver's that would name it.
        Log(logging::LogError, "Failed to load shader " + name);
        throw;
    }
}

Shader* ShaderManager::CreateDefaultShader()
{
    return new Shader("[NAME MISSING]", "", "");
}
}
