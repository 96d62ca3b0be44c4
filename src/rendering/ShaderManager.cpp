#include "rendering/ShaderManager.h"

#include "logging/Log.h"
#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "util/FileSystem.h"

namespace rendering
{
namespace
{
/// One without a word, as a full disk leaves it, would be half of a program that draws anything, or none
/// and yet no failure.
util::String ReadSource(const util::String& path)
{
    util::String source = util::FileSystem::GetInstancePtr()->ReadWholeFile(path);
    if (source.empty())
        QUIB_THROW(BadDataException("The file \"" + path + "\" is empty"));
    return source;
}
}

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
    const util::String stem = GetShaderPath() + name;
    try
    {
        const util::String vertexSource = ReadSource(stem + ".vert");
        const util::String fragmentSource = ReadSource(stem + ".frag");
        ReportEarlierGLError(); // such as a texture's that was refused
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
    ReportEarlierGLError(); // nobody stands in for it
    return new Shader("[NAME MISSING]", "", "");
}
}
