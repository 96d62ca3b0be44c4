// What dies with the GL context and can be built again. core::ResourceManager takes all of them down
// before a new window and brings them back after it.
#pragma once

#include "util/ClassTracker.h"

namespace rendering
{
class GraphicsResource : public util::ClassTracker<GraphicsResource>
{
public:
    /// Builds the GL objects. Does nothing when they are there. Without GL (HasGLLoaded) there is
    /// nothing to build.
    virtual void Load() = 0;
    /// Frees the GL objects. Does nothing when there are none.
    virtual void Unload() = 0;
    /// Bytes of video memory, as far as we know them; 0 when unloaded.
    virtual unsigned long MemoryUsage() const = 0;
};
}
