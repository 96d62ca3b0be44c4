// Drives all GL resources together. The script object "Resources".
#pragma once

#include "script/Reflected.h"
#include "util/Singleton.h"

namespace core
{
class ResourceManager : public script::Reflected, public util::Singleton<ResourceManager>
{
public:
    ResourceManager();

    void UnloadAll();
    /// A resource that fails to load is logged and costs nothing but itself.
    /// @param reload  unload the loaded ones first
    void LoadAll(bool reload);
    /// Bytes, over all resources.
    unsigned long GetVRAMUsage();
};
}
