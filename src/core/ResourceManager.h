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
    bool GetShaders() const { return m_shaders; }

    /// Bytes of video memory, over all resources.
    unsigned long GetVRAMUsage();

private:
    void OnShaderOnOffChange();
    void On16BitChange();

    script::AttribWrapper<bool> m_shaders;
    script::AttribWrapper<bool> m_force16BitTextures;
};
}
