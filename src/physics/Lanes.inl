// Eight numbers at a time, in the compiler's vector extension, and eight records of four numbers turned into
// four vectors and back. Included once for each instruction set, in a namespace of its own, before the loops
// that are made of it.

typedef float Vec8 __attribute__((vector_size(32)));
typedef float Vec4f __attribute__((vector_size(16)));

#define LANES_INLINE static inline __attribute__((always_inline))

LANES_INLINE Vec8 LoadPair(const float* low, const float* high)
{
    const Vec4f a = *reinterpret_cast<const Vec4f*>(low);
    const Vec4f b = *reinterpret_cast<const Vec4f*>(high);
    return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7);
}

LANES_INLINE void StorePair(float* low, float* high, Vec8 v)
{
    *reinterpret_cast<Vec4f*>(low) = __builtin_shufflevector(v, v, 0, 1, 2, 3);
    *reinterpret_cast<Vec4f*>(high) = __builtin_shufflevector(v, v, 4, 5, 6, 7);
}

/// @param at  gives where record 0 to 7 is
/// @param a, b, c, d  receive the first to the fourth numbers
template<typename At>
LANES_INLINE void GatherLanes(At at, Vec8& a, Vec8& b, Vec8& c, Vec8& d)
{
    const Vec8 t0 = LoadPair(at(0), at(4)), t1 = LoadPair(at(1), at(5));
    const Vec8 t2 = LoadPair(at(2), at(6)), t3 = LoadPair(at(3), at(7));
    const Vec8 ab01 = __builtin_shufflevector(t0, t1, 0, 8, 1, 9, 4, 12, 5, 13);
    const Vec8 cd01 = __builtin_shufflevector(t0, t1, 2, 10, 3, 11, 6, 14, 7, 15);
    const Vec8 ab23 = __builtin_shufflevector(t2, t3, 0, 8, 1, 9, 4, 12, 5, 13);
    const Vec8 cd23 = __builtin_shufflevector(t2, t3, 2, 10, 3, 11, 6, 14, 7, 15);
    a = __builtin_shufflevector(ab01, ab23, 0, 1, 8, 9, 4, 5, 12, 13);
    b = __builtin_shufflevector(ab01, ab23, 2, 3, 10, 11, 6, 7, 14, 15);
    c = __builtin_shufflevector(cd01, cd23, 0, 1, 8, 9, 4, 5, 12, 13);
    d = __builtin_shufflevector(cd01, cd23, 2, 3, 10, 11, 6, 7, 14, 15);
}

template<typename At>
LANES_INLINE void ScatterLanes(At at, const Vec8& a, const Vec8& b, const Vec8& c, const Vec8& d)
{
    const Vec8 abLow = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
    const Vec8 abHigh = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
    const Vec8 cdLow = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
    const Vec8 cdHigh = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
    StorePair(at(0), at(4), __builtin_shufflevector(abLow, cdLow, 0, 1, 8, 9, 4, 5, 12, 13));
    StorePair(at(1), at(5), __builtin_shufflevector(abLow, cdLow, 2, 3, 10, 11, 6, 7, 14, 15));
    StorePair(at(2), at(6), __builtin_shufflevector(abHigh, cdHigh, 0, 1, 8, 9, 4, 5, 12, 13));
    StorePair(at(3), at(7), __builtin_shufflevector(abHigh, cdHigh, 2, 3, 10, 11, 6, 7, 14, 15));
}
