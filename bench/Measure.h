// What more than one benchmark program measures with.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <ctime>

namespace bench
{
/// CPU time of the thread.
inline double GetThreadSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + 1e-9 * t.tv_nsec;
}

/// Bytes that the heap has given out, those of large blocks included.
inline size_t GetHeapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
}
