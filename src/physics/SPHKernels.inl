// The innermost loops of the fluid, included by SPHKernels.cpp once for each instruction set, after Lanes.inl
// and what the vector extension lacks. Same operations and operands in every set, hence the same bits.

typedef float Vec8u __attribute__((vector_size(32), aligned(4)));
typedef int32_t Int8 __attribute__((vector_size(32)));
typedef int32_t Int8u __attribute__((vector_size(32), aligned(4)));

LANES_INLINE Vec8 Load(const float* p) { return *reinterpret_cast<const Vec8u*>(p); }
LANES_INLINE void Store(float* p, Vec8 v) { *reinterpret_cast<Vec8u*>(p) = v; }
LANES_INLINE Vec8 Splat(float x) { return Vec8{x, x, x, x, x, x, x, x}; }

// The formulas, for one number or for eight.

template<typename T>
LANES_INLINE T InfluenceKernel(const SPHParams& params, T r)
{
    const T t = params.influenceRad * params.influenceRad - r * r;
    return 315 * (t * t * t) * params.kernel64PiH9Inv;
}

template<typename T>
LANES_INLINE T PressureKernelDelta(const SPHParams& params, T r)
{
    const T t = params.influenceRad - r;
    return 45 * (t * t) * params.kernelPiH6Inv;
}

template<typename T>
LANES_INLINE T ViscocityKernelDelta2(const SPHParams& params, T r)
{
    return 45 * (params.influenceRad - r) * params.kernelPiH6Inv;
}

template<typename T>
LANES_INLINE T CalcPressure(const SPHParams& params, T density)
{
    return params.soundSpeed * params.soundSpeed * (density - params.restDensity);
}

/// What weighs the pressure force between two particles.
template<typename T>
LANES_INLINE T CalcPressureFactor(const SPHParams& params, T p0, T density0, T p1, T density1)
{
    if (params.specialPressure)
        return (p0 + p1) / (2 * density0 * density1);
    return p0 / (density0 * density0) + p1 / (density1 * density1);
}

static void CalcCells(const float* x, size_t n, float cellSizeInv, int32_t* cells, int32_t* range)
{
    const Vec8 low = Splat(-MaxCell), high = Splat(MaxCell);
    Int8 smallest = Int8{} + 0x7FFFFFFF, largest = -smallest;
    for (size_t i = 0; i < n; i += 8)
    {
        Vec8 q = Load(x + i) * cellSizeInv;
        q = q > low ? q : low; // for a NaN too
        q = q < high ? q : high;
        const Int8 cell = __builtin_convertvector(q, Int8);
        *reinterpret_cast<Int8u*>(cells + i) = cell;
        smallest = cell < smallest ? cell : smallest;
        largest = cell > largest ? cell : largest;
    }
    range[0] = smallest[0];
    range[1] = largest[0];
    for (int l = 1; l < 8; ++l)
    {
        range[0] = std::min(range[0], smallest[l]);
        range[1] = std::max(range[1], largest[l]);
    }
}

// Four quantities of eight records of four floats.
struct Lanes
{
    Vec8 a, b, c, d;
};

LANES_INLINE Lanes Gather(const SPHState* states, const uint32_t* i)
{
    const auto at = [=](int k) { return &states[i[k]].density; };
    Lanes out;
    GatherLanes(at, out.a, out.b, out.c, out.d);
    return out;
}

/// @param out  eight records of four floats
LANES_INLINE void Scatter(float* out, const Lanes& in)
{
    const auto at = [=](int k) { return out + 4 * k; };
    ScatterLanes(at, in.a, in.b, in.c, in.d);
}

static void FindPairs(const SPHArrays& arrays, float maxDistSq, SPHPairs& pairs)
{
    const float* const xs = arrays.x.data();
    const float* const ys = arrays.y.data();
    const size_t room = pairs.first.capacity();
    PairWriter writer(pairs);
    uint32_t i = pairs.begin;
    for (; i < arrays.count; ++i)
    {
        const uint32_t ends[2] = {arrays.columnEnd.data()[i], arrays.nextEnd.data()[i]};
        const uint32_t begins[2] = {i + 1, arrays.nextBegin.data()[i]};
        // What is written goes eight at a time.
        if (writer.count + (ends[0] - begins[0]) + (ends[1] - begins[1]) + 16 > room)
            break;
        for (int column = 0; column < 2; ++column)
            AppendNeighbors(xs, ys, i, begins[column], ends[column], maxDistSq, writer);
    }
    pairs.end = i;
    pairs.count = writer.count;
    pairs.Finish();
}

static void CalcDistances(SPHPairs& pairs)
{
    float* const distance = pairs.distance.data();
    for (size_t k = 0; k < pairs.count; k += 8)
        Store(distance + k, Sqrt(Load(distance + k)));
}

static void AddDensities(const SPHParams& params, SPHPairs& pairs, SPHArrays& arrays)
{
    float* const distance = pairs.distance.data();
    const uint32_t* const first = pairs.first.data();
    const uint32_t* const second = pairs.second.data();
    float* const density = arrays.density.data();
    uint32_t* const neighborCount = arrays.neighborCount.data();

    // Pairs with the same first follow each other: its sum stays in a register, and nobody else asks for
    // it meanwhile.
    uint32_t current = pairs.begin;
    float sum = density[current];
    uint32_t count = neighborCount[current];
    for (size_t k = 0; k < pairs.count; k += 8)
    {
        const Vec8 r = Sqrt(Load(distance + k));
        Store(distance + k, r);
        alignas(32) float w[8];
        Store(w, InfluenceKernel(params, r) * params.mass);
        const size_t n = pairs.count - k < 8 ? pairs.count - k : 8;
        for (size_t l = 0; l < n; ++l)
        {
            if (first[k + l] != current)
            {
                density[current] = sum;
                neighborCount[current] = count;
                current = first[k + l];
                sum = density[current];
                count = neighborCount[current];
            }
            sum += w[l];
            ++count;
            density[second[k + l]] += w[l];
            ++neighborCount[second[k + l]];
        }
    }
    density[current] = sum;
    neighborCount[current] = count;
}

static void StartSums(const SPHParams& params, SPHArrays& arrays)
{
    const Vec8 zero = {};
    for (size_t i = 0; i < arrays.count; i += 8)
    {
        Lanes state;
        state.a = Load(arrays.density.data() + i);
        state.b = CalcPressure(params, state.a);
        state.c = Load(arrays.velX.data() + i);
        state.d = Load(arrays.velY.data() + i);
        Scatter(&arrays.state.data()[i].density, state);

        // All this is zero, unless something in it is not finite.
        const Vec8 g = PressureKernelDelta(params, zero) * 0;
        const Vec8 inv = 1 / (state.a * state.a);
        const Vec8 visc = ViscocityKernelDelta2(params, zero);
        Lanes sums;
        sums.a = sums.b = zero + CalcPressureFactor(params, state.b, state.a, state.b, state.a) * g;
        sums.c = zero + visc * (state.c - state.c) * inv;
        sums.d = zero + visc * (state.d - state.d) * inv;
        Scatter(&arrays.sums.data()[i].pressureX, sums);
        if (params.hasTension)
        {
            const Vec8 t = zero + g * (1 / state.a);
            for (int l = 0; l < 8; ++l)
                arrays.tension.data()[i + l] = math::Vec2(t[l], t[l]);
        }
    }
}

template<bool HasTension>
LANES_INLINE void AddSumsOf(const SPHParams& params, const SPHPairs& pairs, SPHArrays& arrays)
{
    const uint32_t* const first = pairs.first.data();
    const uint32_t* const second = pairs.second.data();
    const SPHState* const states = arrays.state.data();
    Vec4f* const sums = reinterpret_cast<Vec4f*>(arrays.sums.data());
    math::Vec2* const tension = arrays.tension.data();

    uint32_t current = pairs.begin;
    Vec4f sum = sums[current];
    for (size_t k = 0; k < pairs.count; k += 8)
    {
        const Lanes a = Gather(states, first + k), b = Gather(states, second + k);
        const Vec8 r = Load(pairs.distance.data() + k);
        const Vec8 kernel = PressureKernelDelta(params, r);
        const Vec8 gx = kernel * Load(pairs.dx.data() + k);
        const Vec8 gy = kernel * Load(pairs.dy.data() + k);
        const Vec8 q = CalcPressureFactor(params, a.b, a.a, b.b, b.a);
        const Vec8 visc = ViscocityKernelDelta2(params, r);
        const Vec8 inv = 1 / (b.a * a.a);
        Lanes out;
        out.a = q * gx;
        out.b = q * gy;
        out.c = visc * (b.c - a.c) * inv;
        out.d = visc * (b.d - a.d) * inv;
        alignas(32) float terms[32];
        Scatter(terms, out);

        const size_t n = pairs.count - k < 8 ? pairs.count - k : 8;
        for (size_t l = 0; l < n; ++l)
        {
            if (first[k + l] != current)
            {
                sums[current] = sum;
                current = first[k + l];
                sum = sums[current];
            }
            // For the second one the vectors to the neighbor and between the velocities are turned
            // round, and nothing else: exactly the negative.
            const Vec4f term = *reinterpret_cast<const Vec4f*>(terms + 4 * l);
            sum = sum + term;
            sums[second[k + l]] = sums[second[k + l]] - term;
        }
        if (HasTension)
        {
            const Vec8 invA = 1 / a.a, invB = 1 / b.a;
            for (size_t l = 0; l < n; ++l)
            {
                tension[first[k + l]] += math::Vec2(gx[l] * invB[l], gy[l] * invB[l]);
                tension[second[k + l]] -= math::Vec2(gx[l] * invA[l], gy[l] * invA[l]);
            }
        }
    }
    sums[current] = sum;
}

static void AddSums(const SPHParams& params, const SPHPairs& pairs, SPHArrays& arrays)
{
    if (params.hasTension)
        AddSumsOf<true>(params, pairs, arrays);
    else
        AddSumsOf<false>(params, pairs, arrays);
}

static const SPHKernels g_kernels = {CalcCells, FindPairs, CalcDistances, AddDensities, StartSums, AddSums};
