#include "physics/SPHKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#ifdef __SSE__
#include <immintrin.h>
#endif
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUIB_HAS_AVX2_SPH
#endif

// Vectors wider than the baseline's registers are passed to inlined functions only: no call between
// translation units depends on how they would travel.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace physics
{
void SPHArrays::Resize(size_t n)
{
    const size_t padded = n + 8;
    count = static_cast<uint32_t>(n);
    for (util::VectorPOD<float>* v : {&x, &y, &velX, &velY, &density})
    {
        v->resize(padded);
        std::memset(v->data() + n, 0, 8 * sizeof(float));
    }
    for (util::VectorPOD<uint32_t>* v : {&columnEnd, &nextBegin, &nextEnd, &neighborCount})
        v->resize(n);
    state.resize(padded);
    sums.resize(padded);
    tension.resize(padded);
}

void SPHPairs::Reserve(size_t n)
{
    for (util::VectorPOD<uint32_t>* v : {&first, &second})
        v->reserve(n);
    for (util::VectorPOD<float>* v : {&dx, &dy, &distance})
        v->reserve(n);
}

void SPHPairs::Finish()
{
    for (util::VectorPOD<uint32_t>* v : {&first, &second})
        std::memset(v->data() + count, 0, 8 * sizeof(uint32_t));
    for (util::VectorPOD<float>* v : {&dx, &dy, &distance})
        std::memset(v->data() + count, 0, 8 * sizeof(float));
}

namespace
{
const float MaxCell = 1e9f;

// Where pairs are appended.
struct PairWriter
{
    explicit PairWriter(SPHPairs& pairs)
        : first(pairs.first.data())
        , second(pairs.second.data())
        , dx(pairs.dx.data())
        , dy(pairs.dy.data())
        , distSq(pairs.distance.data())
    {
    }

    uint32_t *first, *second;
    float *dx, *dy, *distSq;
    size_t count = 0;
};

namespace baseline
{
#include "physics/Lanes.inl"

LANES_INLINE void AppendNeighbors(const float* xs, const float* ys, uint32_t i, uint32_t begin,
                                  uint32_t end, float maxDistSq, PairWriter& out)
{
    const float x = xs[i], y = ys[i];
    for (uint32_t j = begin; j < end; ++j)
    {
        const float dx = xs[j] - x, dy = ys[j] - y;
        const float distSq = dx * dx + dy * dy;
        out.first[out.count] = i;
        out.second[out.count] = j;
        out.dx[out.count] = dx;
        out.dy[out.count] = dy;
        out.distSq[out.count] = distSq;
        out.count += distSq < maxDistSq;
    }
}

LANES_INLINE Vec8 Sqrt(Vec8 v)
{
#ifdef __SSE__
    const __m128 low = _mm_sqrt_ps(__builtin_shufflevector(v, v, 0, 1, 2, 3));
    const __m128 high = _mm_sqrt_ps(__builtin_shufflevector(v, v, 4, 5, 6, 7));
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
#else
    for (int l = 0; l < 8; ++l)
        v[l] = std::sqrt(v[l]);
    return v;
#endif
}

#include "physics/SPHKernels.inl"
}

#ifdef QUIB_HAS_AVX2_SPH
// For each set of lanes the numbers of its lanes, in a byte each, from the low end.
struct PackTable
{
    constexpr PackTable()
        : lanes()
    {
        for (int set = 0; set < 256; ++set)
        {
            int count = 0;
            for (int lane = 0; lane < 8; ++lane)
                if (set >> lane & 1)
                    lanes[set] |= uint64_t(lane) << 8 * count++;
        }
    }

    uint64_t lanes[256];
};
constexpr PackTable g_packTable;

#pragma GCC push_options
#pragma GCC target("avx2,popcnt")
namespace avx2
{
#include "physics/Lanes.inl"

LANES_INLINE void AppendNeighbors(const float* xs, const float* ys, uint32_t i, uint32_t begin,
                                  uint32_t end, float maxDistSq, PairWriter& out)
{
    const __m256 x = _mm256_set1_ps(xs[i]), y = _mm256_set1_ps(ys[i]);
    const __m256 limit = _mm256_set1_ps(maxDistSq);
    for (uint32_t j = begin; j < end; j += 8)
    {
        const __m256 dx = _mm256_sub_ps(_mm256_loadu_ps(xs + j), x);
        const __m256 dy = _mm256_sub_ps(_mm256_loadu_ps(ys + j), y);
        const __m256 distSq = _mm256_add_ps(_mm256_mul_ps(dx, dx), _mm256_mul_ps(dy, dy));
        const uint32_t inRange = end - j < 8 ? (1u << (end - j)) - 1 : 255;
        const uint32_t set = _mm256_movemask_ps(_mm256_cmp_ps(distSq, limit, _CMP_LT_OQ)) & inRange;
        const __m256i pack = _mm256_cvtepu8_epi32(
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&g_packTable.lanes[set])));
        const auto at = [&](uint32_t* p) { return reinterpret_cast<__m256i*>(p + out.count); };
        _mm256_storeu_si256(at(out.first), _mm256_set1_epi32(static_cast<int>(i)));
        _mm256_storeu_si256(at(out.second),
                            _mm256_add_epi32(pack, _mm256_set1_epi32(static_cast<int>(j))));
        _mm256_storeu_ps(out.dx + out.count, _mm256_permutevar8x32_ps(dx, pack));
        _mm256_storeu_ps(out.dy + out.count, _mm256_permutevar8x32_ps(dy, pack));
        _mm256_storeu_ps(out.distSq + out.count, _mm256_permutevar8x32_ps(distSq, pack));
        out.count += __builtin_popcount(set);
    }
}

LANES_INLINE Vec8 Sqrt(Vec8 v)
{
    return _mm256_sqrt_ps(v);
}

#include "physics/SPHKernels.inl"
}
#pragma GCC pop_options
#endif
#undef LANES_INLINE
}

float SPHParams::InfluenceKernel(float r) const
{
    return baseline::InfluenceKernel(*this, r);
}

const SPHKernels& SPHKernels::Get(Instructions instructions)
{
#ifdef QUIB_HAS_AVX2_SPH
    if (instructions == Instructions::Best && __builtin_cpu_supports("avx2") &&
        __builtin_cpu_supports("popcnt"))
        return avx2::g_kernels;
#endif
    static_cast<void>(instructions);
    return baseline::g_kernels;
}
}
