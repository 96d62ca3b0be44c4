// Shaders by name. Each has one mentor, which reads it from the shader folder and is never given up.
#pragma once

#include "rendering/Shader.h"
#include "util/Mentor.h"
#include "util/Singleton.h"
#include "util/String.h"

#include <map>

namespace rendering
{
using ShaderMentorPtr = util::SharedPtr<util::Mentor<Shader>>;
using ShaderProxy = util::MentorProxy<Shader>;

class ShaderManager : public util::Pointee, public util::Singleton<ShaderManager>
{
public:
    ShaderManager();

    /// The pair name.vert and name.frag. It is read, compiled and linked at its first use, and again for
    /// a new GL context. When shaders are off, or this one fails, the proxy tests false; it can then be
    /// used all the same, and the fixed functions draw.
    ShaderProxy Load(util::String name);

    static util::String GetShaderPath();
    /// The factory behind Load. Null when shaders are off.
    static Shader* LoadFromFiles(util::String name);
    /// What stands in for a shader that there is not: one with both sources empty.
    static Shader* CreateDefaultShader();

private:
    std::map<util::String, ShaderMentorPtr> m_mentors;
};
}
