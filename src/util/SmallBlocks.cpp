#include "util/SmallBlocks.h"

#include <new>
#include <vector>

namespace util
{
#ifdef __SANITIZE_ADDRESS__
// The sanitizer must see each block come and go.
void* AllocSmallBlock(size_t size)
{
    return ::operator new(size);
}

void FreeSmallBlock(void* block, size_t)
{
    ::operator delete(block);
}
#else
namespace
{
struct FreeBlock
{
    FreeBlock* next;
};

// Of the sizes. A type that must be aligned to 16 has a size of that grain, and so have its blocks.
const size_t Grain = 8;
const size_t MaxSize = 256;
const size_t SlabSize = size_t(64) << 10;

FreeBlock* s_free[MaxSize / Grain + 1] = {};

void AddSlab(size_t sizeClass)
{
    const size_t size = sizeClass * Grain;
    // Blocks of whole cache lines lie on such.
    char* slab = static_cast<char*>(::operator new(SlabSize, std::align_val_t(64)));
    // Slabs are never returned; the list keeps leak checkers content.
    static std::vector<char*>* s_slabs = new std::vector<char*>;
    s_slabs->push_back(slab);
    for (size_t offset = SlabSize / size * size; offset > 0;)
    {
        offset -= size;
        FreeBlock* block = reinterpret_cast<FreeBlock*>(slab + offset);
        block->next = s_free[sizeClass];
        s_free[sizeClass] = block;
    }
}
}

void* AllocSmallBlock(size_t size)
{
    if (size > MaxSize || size == 0)
        return ::operator new(size);
    const size_t sizeClass = (size + Grain - 1) / Grain;
    if (!s_free[sizeClass])
        AddSlab(sizeClass);
    FreeBlock* block = s_free[sizeClass];
    s_free[sizeClass] = block->next;
    return block;
}

void FreeSmallBlock(void* p, size_t size)
{
    if (size > MaxSize || size == 0)
    {
        ::operator delete(p);
        return;
    }
    FreeBlock* block = static_cast<FreeBlock*>(p);
    const size_t sizeClass = (size + Grain - 1) / Grain;
    block->next = s_free[sizeClass];
    s_free[sizeClass] = block;
}
#endif
}
