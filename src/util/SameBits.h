// Equality of values that are to come back exactly as they were: 0 and -0 are two, a NaN is itself.
#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace util
{
template<typename T>
bool HasSameBits(const T& a, const T& b)
{
    static_assert(std::is_trivially_copyable_v<T>);
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/// Of lists: the same number of elements, with the same bits.
template<typename List>
bool HaveSameBits(const List& a, const List& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      HasSameBits<typename List::value_type>);
}
}
