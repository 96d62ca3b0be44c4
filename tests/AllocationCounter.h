// Counts every way to the heap: operator new ends in malloc or aligned_alloc. Under the address
// sanitizer, which has its own malloc, its hook counts. Included by one source of a program.
#pragma once

#include <cerrno>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*,
                                                                          size_t),
                                                         void (*onFree)(const volatile void*));

namespace test
{
size_t g_allocations = 0;
const int g_installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, size_t) { ++g_allocations; }, [](const volatile void*) {});
}
#else
namespace test
{
size_t g_allocations = 0;
}

extern "C"
{
    void* __libc_malloc(size_t);
    void* __libc_calloc(size_t, size_t);
    void* __libc_realloc(void*, size_t);
    void* __libc_memalign(size_t, size_t);

    void* malloc(size_t size)
    {
        ++test::g_allocations;
        return __libc_malloc(size);
    }
    void* calloc(size_t count, size_t size)
    {
        ++test::g_allocations;
        return __libc_calloc(count, size);
    }
    void* realloc(void* block, size_t size)
    {
        ++test::g_allocations;
        return __libc_realloc(block, size);
    }
    void* memalign(size_t alignment, size_t size)
    {
        ++test::g_allocations;
        return __libc_memalign(alignment, size);
    }
    void* aligned_alloc(size_t alignment, size_t size)
    {
        ++test::g_allocations;
        return __libc_memalign(alignment, size);
    }
    int posix_memalign(void** out, size_t alignment, size_t size)
    {
        ++test::g_allocations;
        *out = __libc_memalign(alignment, size);
        return *out ? 0 : ENOMEM;
    }
}
#endif
