#include "core/ResourceManager.h"

#include "rendering/Renderer.h"
#include "rendering/ResourceSettings.h"
#include "rendering/Shader.h"
#include "rendering/Texture.h"
#include "script/Recursion.h"
#include "util/Mentor.h"

#include <cstring>
#include <functional>

namespace core
{
using rendering::GraphicsResource;
using rendering::ResourceSettings;
using util::AbstractMentor;

namespace
{
/// A script that reloads again and again must end too: some tens of milliseconds, and a tenth for each
/// resource.
void ChargeReload()
{
    const size_t count = AbstractMentor::GetClassInstanceCount();
    script::Charge(4000000 + 10000 * static_cast<int64_t>(count));
}

bool IsSameType(const std::type_info& a, const std::type_info& b)
{
    return std::strcmp(a.name(), b.name()) == 0;
}
}

ResourceManager::ResourceManager()
    : Reflected("Resources")
    , m_shaders(this, "shaders", true)
    , m_force16BitTextures(this, "force16BitTextures", false)
{
    m_shaders->AddChangeCallback(util::MakeCallback(&ResourceManager::OnShaderOnOffChange, this));
    m_force16BitTextures->AddChangeCallback(
        util::MakeCallback(&ResourceManager::On16BitChange, this));
    ResourceSettings::s_useShaders = m_shaders;
    ResourceSettings::s_force16BitTextures = m_force16BitTextures;

    AddCmd("unloadAll", &ResourceManager::UnloadAll);
    const auto addReload = [this](const util::String& name, std::function<void()> reload)
    {
        AddVoidCmd(name,
                   [reload]
                   {
                       ChargeReload();
                       reload();
                   });
    };
    addReload("loadAll", [this] { LoadAll(false); });
    addReload("reloadAll", [this] { LoadAll(true); });
    addReload("reloadTextures", [this] { LoadClass<rendering::Texture>(true); });
    addReload("reloadShaders", [this] { LoadClass<rendering::Shader>(true); });
    AddCmd("vramUsage", &ResourceManager::GetVRAMUsage);
}

void ResourceManager::UnloadAll()
{
    Log(logging::LogInfo, "Destroying GL resources");
    for (AbstractMentor* mentor : AbstractMentor::GetAllClassInstances())
        mentor->Unload();
}

void ResourceManager::LoadAll(bool reload)
{
    const auto mentors = AbstractMentor::GetAllClassInstances();
    if (reload)
    {
        Log(logging::LogInfo, "Unloading the old");
        for (AbstractMentor* mentor : mentors)
            mentor->Unload();
    }
    LoadClass<rendering::Texture>(reload);
    if (m_shaders)
        LoadClass<rendering::Shader>(reload);
    Log(logging::LogInfo, "Loading the rest...");
    for (AbstractMentor* mentor : mentors)
        mentor->Load();
    Log(logging::LogVerbose, util::ToString(mentors.size()) + " resources loaded");
}

void ResourceManager::LoadType(const std::type_info& type, bool reload)
{
    Log(logging::LogInfo, util::String("Reloading ") + type.name());
    const auto mentors = AbstractMentor::GetAllClassInstances();
    // All of them first: one that fails takes the default, and not the one that goes next.
    if (reload)
        for (AbstractMentor* mentor : mentors)
            if (IsSameType(mentor->GetType(), type))
                mentor->Unload();
    for (AbstractMentor* mentor : mentors)
        if (IsSameType(mentor->GetType(), type))
            mentor->Load();
}

void ResourceManager::OnShaderOnOffChange()
{
    ResourceSettings::s_useShaders = m_shaders;
    if (!rendering::HasGLLoaded())
        return;
    ChargeReload();
    Log(logging::LogInfo,
        util::String("Resources.shaders changed value to ") + util::ToString(m_shaders.Get()));
    if (!m_shaders)
        return; // the loaded ones stay, and nobody asks for them
    Log(logging::LogInfo, "LoadClass<Shader>");
    LoadClass<rendering::Shader>(true);
}

void ResourceManager::On16BitChange()
{
    ResourceSettings::s_force16BitTextures = m_force16BitTextures;
    // Before there is a window there is nothing to load anew.
    if (!rendering::HasGLLoaded())
        return;
    ChargeReload();
    LoadClass<rendering::Texture>(true);
}

unsigned long ResourceManager::GetVRAMUsage()
{
    unsigned long sum = 0;
    for (GraphicsResource* resource : GraphicsResource::GetAllClassInstances())
        sum += resource->MemoryUsage();
    return sum;
}
}
