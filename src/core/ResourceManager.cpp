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

/// Once there is GL, a switch reloads what it is about.
void ChargeSwitch()
{
    if (rendering::HasGLLoaded())
        ChargeReload();
}

bool IsSameType(const std::type_info& a, const std::type_info& b)
{
    return std::strcmp(a.name(), b.name()) == 0;
}
}

ResourceManager::ResourceManager()
    : Reflected("Resources")
    , m_shaders(this, "shaders", true, &ResourceManager::GetShaders, &ResourceManager::SetShaders)
    , m_force16BitTextures(this, "force16BitTextures", false,
                           &ResourceManager::GetForce16BitTextures,
                           &ResourceManager::SetForce16BitTextures)
{
    m_shaders->AddChangeCallback(util::MakeCallback(&ResourceManager::OnShaderOnOffChange, this));
    m_force16BitTextures->AddChangeCallback(
        util::MakeCallback(&ResourceManager::On16BitChange, this));

    const auto addReload = [this](const util::String& name, std::function<void()> reload)
    {
        AddVoidCmd(name,
                   [reload]
                   {
                       ChargeReload();
                       reload();
                   });
    };
    addReload("unloadAll", [this] { UnloadAll(); }); // which the next frame loads again
    addReload("loadAll", [this] { LoadAll(false); });
    addReload("reloadAll", [this] { LoadAll(true); });
    addReload("reloadTextures", [this] { LoadClass<rendering::Texture>(true); });
    addReload("reloadShaders", [this] { LoadClass<rendering::Shader>(true); });
    AddCmd("vramUsage", &ResourceManager::GetVRAMUsageForScript);
}

bool ResourceManager::GetShaders() const
{
    return ResourceSettings::s_useShaders;
}

void ResourceManager::SetShaders(bool on)
{
    ChargeSwitch(); // first: who can't pay changes nothing
    ResourceSettings::s_useShaders = on;
}

bool ResourceManager::GetForce16BitTextures() const
{
    return ResourceSettings::s_force16BitTextures;
}

void ResourceManager::SetForce16BitTextures(bool on)
{
    ChargeSwitch();
    ResourceSettings::s_force16BitTextures = on;
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
    if (!rendering::HasGLLoaded())
        return;
    Log(logging::LogInfo,
        util::String("Resources.shaders changed value to ") + util::ToString(m_shaders.Get()));
    if (!m_shaders)
        return; // the loaded ones stay, and nobody asks for them
    Log(logging::LogInfo, "LoadClass<Shader>");
    LoadClass<rendering::Shader>(true);
}

void ResourceManager::On16BitChange()
{
    // Before there is a window there is nothing to load anew.
    if (rendering::HasGLLoaded())
        LoadClass<rendering::Texture>(true);
}

unsigned long ResourceManager::GetVRAMUsage()
{
    unsigned long sum = 0;
    for (GraphicsResource* resource : GraphicsResource::GetAllClassInstances())
        sum += resource->MemoryUsage();
    return sum;
}

unsigned long ResourceManager::GetVRAMUsageForScript()
{
    script::Charge(script::ElementCost *
                   static_cast<int64_t>(GraphicsResource::GetClassInstanceCount()));
    return GetVRAMUsage();
}
}
