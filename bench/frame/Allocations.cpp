#include "frame/Allocations.h"

#include "AllocationCounter.h"

size_t bench::CountAllocations()
{
    return test::g_allocations;
}
