// Scalar helpers.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace math
{
using real = float;

const float PIf = 3.14159265358979323846f;
const float TwoPIf = 6.28318530717958647692f;

inline bool IsZero(float x)
{
    return std::fabs(x) < 1e-7f;
}
inline bool IsZero(double x)
{
    return std::fabs(x) < 1e-11;
}

/// Tests the bits, so that no compiler option can reason it away.
inline bool IsNaN(float x)
{
    uint32_t bits;
    std::memcpy(&bits, &x, sizeof(bits));
    return (bits & 0x7FFFFFFFu) > 0x7F800000u;
}

inline bool IsFinite(float x)
{
    uint32_t bits;
    std::memcpy(&bits, &x, sizeof(bits));
    return (bits & 0x7FFFFFFFu) < 0x7F800000u;
}

inline bool IsFinite(double x)
{
    uint64_t bits;
    std::memcpy(&bits, &x, sizeof(bits));
    return (bits & 0x7FFFFFFFFFFFFFFFull) < 0x7FF0000000000000ull;
}

/// The angle in (-pi, pi]; 0 for one that is not finite.
inline float WrapAngle(float a)
{
    if (!IsFinite(a))
        return 0;
    // Most angles are in range already, and fmod gives them back as they are.
    if (a > -PIf && a <= PIf)
        return a;
    a = std::fmod(a, TwoPIf);
    while (a <= -PIf)
        a += TwoPIf;
    while (a > PIf)
        a -= TwoPIf;
    return a;
}

/// 0 at 0, 1 at 1 with a flat end.
inline float SmoothFun(float x)
{
    return x + x * x - x * x * x;
}

inline float Sign(float x)
{
    return x > 0 ? 1.0f : (x < 0 ? -1.0f : 0.0f);
}

template<typename T>
T Lerp(const T& a, const T& b, float t)
{
    return a + (b - a) * t;
}
}
