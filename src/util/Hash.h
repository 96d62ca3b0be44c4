// The hash functions of the program's own containers. All work in 32-bit arithmetic.
#pragma once

#include "math/Vector.h"
#include "util/SharedPtr.h"

#include <cstdint>
#include <string>

namespace util
{
template<typename T>
struct DefaultHasher;

template<typename T>
struct DefaultHasher<T*>
{
    uint32_t operator()(const T* p) const
    {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p)) * 0x8DA6B343u;
    }
};

template<typename T>
struct DefaultHasher<SharedPtr<T>>
{
    uint32_t operator()(const SharedPtr<T>& p) const { return DefaultHasher<T*>()(p.get()); }
};

template<>
struct DefaultHasher<std::string>
{
    uint32_t operator()(const std::string& text) const
    {
        uint32_t h = 0;
        for (char c : text)
            h = static_cast<uint32_t>(static_cast<signed char>(c)) + (h << 6) + (h << 16) - h;
        return h;
    }
};

template<>
struct DefaultHasher<math::TVector2<unsigned>>
{
    uint32_t operator()(const math::TVector2<unsigned>& v) const
    {
        return v.x * 0x8DA6B343u + v.y * 0xD8163841u;
    }
};

template<>
struct DefaultHasher<math::TVector2<int>>
{
    uint32_t operator()(const math::TVector2<int>& v) const
    {
        return static_cast<uint32_t>(v.x) * 0x8DA6B343u + static_cast<uint32_t>(v.y) * 0xD8163841u;
    }
};
}
