// Four floats at a time, in the compiler's own vector type: SSE2 on x86-64, whatever the machine has
// elsewhere, and the same bits as scalar code everywhere.
#pragma once

#include <cstdint>
#include <cstring>

namespace math
{
typedef float Float4 __attribute__((vector_size(16)));
/// Comparisons of Float4 give this: -1 where true, 0 where false. Any comparison with a NaN but != is
/// false.
typedef int32_t Int4 __attribute__((vector_size(16)));

inline Float4 Splat4(float x)
{
    return Float4{x, x, x, x};
}

/// From any address.
inline Float4 Load4(const float* p)
{
    Float4 v;
    std::memcpy(&v, p, sizeof(v));
    return v;
}

inline Float4 Abs4(Float4 v)
{
    return reinterpret_cast<Float4>(reinterpret_cast<Int4>(v) & 0x7FFFFFFF);
}

/// The larger of each lane; b where either is a NaN.
inline Float4 Max4(Float4 a, Float4 b)
{
    return a > b ? a : b;
}

inline bool AnyTrue4(Int4 v)
{
    int64_t halves[2];
    std::memcpy(halves, &v, sizeof(v));
    return (halves[0] | halves[1]) != 0;
}

/// Bit i is set where lane i of a comparison is true.
inline unsigned Mask4(Int4 v)
{
#ifdef __SSE__
    return __builtin_ia32_movmskps(reinterpret_cast<Float4>(v));
#else
    return (v[0] & 1) | (v[1] & 2) | (v[2] & 4) | (v[3] & 8);
#endif
}
}
