#include "core/ResourceManager.h"

#include "rendering/GraphicsResource.h"

namespace core
{
using rendering::GraphicsResource;

ResourceManager::ResourceManager()
    : Reflected("Resources")
{
    AddCmd("unloadAll", &ResourceManager::UnloadAll);
    AddVoidCmd("loadAll", [this] { LoadAll(false); });
    AddVoidCmd("reloadAll", [this] { LoadAll(true); });
    AddCmd("vramUsage", &ResourceManager::GetVRAMUsage);
}

void ResourceManager::UnloadAll()
{
    Log(logging::LogInfo, "Destroying GL resources");
    for (GraphicsResource* resource : GraphicsResource::GetAllClassInstances())
        resource->Unload();
}

void ResourceManager::LoadAll(bool reload)
{
    if (reload)
    {
        Log(logging::LogInfo, "Unloading the old");
        for (GraphicsResource* resource : GraphicsResource::GetAllClassInstances())
            resource->Unload();
    }

    Log(logging::LogInfo, "Loading the rest...");
    const auto resources = GraphicsResource::GetAllClassInstances();
    for (GraphicsResource* resource : resources)
    {
        try
        {
            resource->Load();
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogError, e.what());
        }
        catch (...)
        {
            CatchException(QUIB_LOCATION);
            Log(logging::LogError,
                util::String("Unknown error while loading ") + typeid(*resource).name());
        }
    }
    Log(logging::LogVerbose, util::ToString(resources.size()) + " resources loaded");
}

unsigned long ResourceManager::GetVRAMUsage()
{
    unsigned long sum = 0;
    for (GraphicsResource* resource : GraphicsResource::GetAllClassInstances())
        sum += resource->MemoryUsage();
    return sum;
}
}
