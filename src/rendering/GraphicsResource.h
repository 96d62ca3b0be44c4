// What takes video memory and dies with the GL context. Its mentor builds it again for the next one.
#pragma once

#include "util/ClassTracker.h"
#include "util/Pointee.h"

namespace rendering
{
class GraphicsResource : public util::Pointee, public util::ClassTracker<GraphicsResource>
{
public:
    /// Bytes, as far as we know them.
    virtual unsigned long MemoryUsage() const = 0;
};
}
