// What the user has decided on textures and shaders. core::ResourceManager, which lies above, writes it.
#pragma once

namespace rendering
{
struct ResourceSettings
{
    static inline bool s_useShaders = true;
    static inline bool s_force16BitTextures = false;
};
}
