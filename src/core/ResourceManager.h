// Drives the mentors of all GL resources together. The script object "Resources".
#pragma once

#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

#include <typeinfo>

namespace core
{
class ResourceManager : public script::Reflected, public util::Singleton<ResourceManager>
{
public:
    ResourceManager();

    void UnloadAll();
    /// A resource that fails to load is logged, and the default of its type stands in.
    /// @param reload  unload the loaded ones first
    void LoadAll(bool reload);
    void LoadType(const std::type_info& type, bool reload);
    template<typename T>
    void LoadClass(bool reload)
    {
        LoadType(typeid(T), reload);
    }

    /// Whether the user wants shaders at all.
    bool GetShaders() const;

    /// Bytes of video memory, over all resources.
    unsigned long GetVRAMUsage();

private:
    void SetShaders(bool on);
    bool GetForce16BitTextures() const;
    void SetForce16BitTextures(bool on);
    unsigned long GetVRAMUsageForScript();
    void OnShaderOnOffChange();
    void On16BitChange();

    // Their values are rendering::ResourceSettings.
    script::AttribWrapper<bool> m_shaders;
    script::AttribWrapper<bool> m_force16BitTextures;
};
}
