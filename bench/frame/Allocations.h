#pragma once

#include <cstddef>

namespace bench
{
/// Ways to the heap so far, of the whole program and all libraries.
size_t CountAllocations();
}
