// The innermost loop of the solver, included by RowSolver.cpp once for each instruction set, after Lanes.inl.
// Same operations and operands in every set, hence the same bits.

typedef int32_t Mask8 __attribute__((vector_size(32)));

LANES_INLINE Vec8 Load(const float* p) { return *reinterpret_cast<const Vec8*>(p); }
LANES_INLINE Mask8 Load(const int32_t* p) { return *reinterpret_cast<const Mask8*>(p); }
LANES_INLINE void Store(float* p, Vec8 v) { *reinterpret_cast<Vec8*>(p) = v; }

// First operand greater: the first, else, NaN included, the second. As Max and Min of Constraint.
LANES_INLINE Vec8 Max(Vec8 a, Vec8 b) { return a > b ? a : b; }
LANES_INLINE Vec8 Min(Vec8 a, Vec8 b) { return a < b ? a : b; }

// The accumulators of eight bodies, one quantity to a vector.
struct Lanes
{
    Vec8 x, y, w, massInv;
};

LANES_INLINE void Gather(const VelChange* accum, const uint32_t* i, Lanes& out)
{
    const auto at = [=](int k) { return &accum[i[k]].x; };
    GatherLanes(at, out.x, out.y, out.w, out.massInv);
}

LANES_INLINE void Scatter(VelChange* accum, const uint32_t* i, const Lanes& in)
{
    const auto at = [=](int k) { return &accum[i[k]].x; };
    ScatterLanes(at, in.x, in.y, in.w, in.massInv);
}

// One sweep over eight contacts.
LANES_INLINE void SolveContacts(const RowBatch& batch, Lanes& a, Lanes& b, Vec8& totalN, Vec8& totalT)
{
    const Vec8 zero = {};
    const Vec8 r0x = Load(batch.r0x), r0y = Load(batch.r0y);
    const Vec8 r1x = Load(batch.r1x), r1y = Load(batch.r1y);
    const Vec8 nx = Load(batch.normalX), ny = Load(batch.normalY);

    // Contact::CalcDesiredImpulse. The tangent is (-ny, nx).
    const Vec8 wx = (b.x - b.w * r1y) - (a.x - a.w * r0y);
    const Vec8 wy = (b.y + b.w * r1x) - (a.y + a.w * r0x);
    const Vec8 dn = Load(batch.targetN) - (wx * nx + wy * ny) * Load(batch.massN);
    const Vec8 newN = Max(totalN + dn, zero);
    const Vec8 deltaN = newN - totalN;
    const Vec8 limit = Max(Load(batch.friction) * newN, zero);
    const Vec8 dt = Load(batch.targetT) - (wy * nx - wx * ny) * Load(batch.massT);
    const Vec8 newT = Max(-limit, Min(limit, totalT + dt));
    const Vec8 deltaT = newT - totalT;

    // Contact::ApplyImpulse. The totals grow by the deltas: newN is not always totalN + deltaN.
    const Vec8 jx = deltaN * nx - deltaT * ny;
    const Vec8 jy = deltaN * ny + deltaT * nx;
    a.x = a.x - a.massInv * jx;
    a.y = a.y - a.massInv * jy;
    a.w = a.w - Load(batch.inertiaInv0) * (r0x * jy - r0y * jx);
    b.x = b.x + b.massInv * jx;
    b.y = b.y + b.massInv * jy;
    b.w = b.w + Load(batch.inertiaInv1) * (r1x * jy - r1y * jx);
    totalN = totalN + deltaN;
    totalT = totalT + deltaT;
}

static void SweepContacts(RowBatch* batch, RowBatch* end, VelChange* accum)
{
    const Vec4f nothing = {};
    for (; batch != end; ++batch)
    {
        Lanes a, b;
        Gather(accum, batch->body0, a);
        Gather(accum, batch->body1, b);
        Vec8 totalN = Load(batch->totalN), totalT = Load(batch->totalT);
        SolveContacts(*batch, a, b, totalN, totalT);
        Store(batch->totalN, totalN);
        Store(batch->totalT, totalT);
        Scatter(accum, batch->body0, a);
        Scatter(accum, batch->body1, b);
        // Lanes of immovable bodies have written 0 * impulse here: not zero if that was infinite.
        *reinterpret_cast<Vec4f*>(accum) = nothing;
    }
}

// Where two vectors have different bits.
LANES_INLINE Mask8 Differences(Vec8 a, Vec8 b)
{
    return reinterpret_cast<Mask8>(a) ^ reinterpret_cast<Mask8>(b);
}

LANES_INLINE bool IsAnySet(Mask8 mask)
{
    typedef int64_t Mask4 __attribute__((vector_size(32)));
    const Mask4 m = reinterpret_cast<Mask4>(mask);
    return ((m[0] | m[1]) | (m[2] | m[3])) != 0;
}

LANES_INLINE Vec8 Masked(Vec8 v, Mask8 mask)
{
    return reinterpret_cast<Vec8>(reinterpret_cast<Mask8>(v) & mask);
}

LANES_INLINE void Mask(Lanes& lanes, Mask8 mask)
{
    lanes.x = Masked(lanes.x, mask);
    lanes.y = Masked(lanes.y, mask);
    lanes.w = Masked(lanes.w, mask);
}

// All sweeps over contacts that nobody else meddles with. One that has changed nothing is the last: the
// others would change nothing either.
static void SweepLoneContacts(RowBatch* batch, RowBatch* end, VelChange* accum, int iterations)
{
    const Vec4f nothing = {};
    for (; batch != end; ++batch)
    {
        const Mask8 isMovable0 = *reinterpret_cast<const Mask8*>(batch->body0) != 0;
        const Mask8 isMovable1 = *reinterpret_cast<const Mask8*>(batch->body1) != 0;
        Lanes a, b;
        Gather(accum, batch->body0, a);
        Gather(accum, batch->body1, b);
        Vec8 totalN = Load(batch->totalN), totalT = Load(batch->totalT);
        for (int i = 0; i < iterations; ++i)
        {
            const Lanes oldA = a, oldB = b;
            const Vec8 oldN = totalN, oldT = totalT;
            SolveContacts(*batch, a, b, totalN, totalT);
            Mask(a, isMovable0); // as above
            Mask(b, isMovable1);
            const Mask8 changed = Differences(a.x, oldA.x) | Differences(a.y, oldA.y) |
                                  Differences(a.w, oldA.w) | Differences(b.x, oldB.x) |
                                  Differences(b.y, oldB.y) | Differences(b.w, oldB.w) |
                                  Differences(totalN, oldN) | Differences(totalT, oldT);
            if (!IsAnySet(changed))
                break;
        }
        Store(batch->totalN, totalN);
        Store(batch->totalT, totalT);
        Scatter(accum, batch->body0, a);
        Scatter(accum, batch->body1, b);
        *reinterpret_cast<Vec4f*>(accum) = nothing;
    }
}

// The impulses that eight hinges want, as in Hinge::CalcDesiredImpulse.
LANES_INLINE void CalcHingeImpulses(const HingeBatch& batch, const Lanes& a, const Lanes& b, Vec8& jx,
                                    Vec8& jy)
{
    const Vec8 wx = (b.x - b.w * Load(batch.r1y)) - (a.x - a.w * Load(batch.r0y));
    const Vec8 wy = (b.y + b.w * Load(batch.r1x)) - (a.y + a.w * Load(batch.r0x));
    const Vec8 dx = Load(batch.biasX) - wx;
    const Vec8 dy = Load(batch.biasY) - wy;
    const Vec8 k01 = Load(batch.invK01);
    jx = Load(batch.invK00) * dx + k01 * dy;
    jy = k01 * dx + Load(batch.invK11) * dy;
}

// Constraint::ApplyImpulse on eight hinges.
LANES_INLINE void ApplyHingeImpulses(const HingeBatch& batch, Lanes& a, Lanes& b, Vec8 jx, Vec8 jy)
{
    a.x = a.x - a.massInv * jx;
    a.y = a.y - a.massInv * jy;
    a.w = a.w - Load(batch.inertiaInv0) * (Load(batch.r0x) * jy - Load(batch.r0y) * jx);
    b.x = b.x + b.massInv * jx;
    b.y = b.y + b.massInv * jy;
    b.w = b.w + Load(batch.inertiaInv1) * (Load(batch.r1x) * jy - Load(batch.r1y) * jx);
}

static void SweepHinges(HingeBatch* batch, HingeBatch* end, VelChange* accum)
{
    const Vec4f nothing = {};
    for (; batch != end; ++batch)
    {
        Lanes a, b;
        Gather(accum, batch->body0, a);
        Gather(accum, batch->body1, b);
        Vec8 jx, jy;
        CalcHingeImpulses(*batch, a, b, jx, jy);
        ApplyHingeImpulses(*batch, a, b, jx, jy);
        Store(batch->totalX, Load(batch->totalX) + jx);
        Store(batch->totalY, Load(batch->totalY) + jy);
        Scatter(accum, batch->body0, a);
        Scatter(accum, batch->body1, b);
        *reinterpret_cast<Vec4f*>(accum) = nothing; // as above
    }
}

static void SweepMotors(MotorBatch* batch, MotorBatch* end, VelChange* accum)
{
    const Vec4f nothing = {};
    const Vec8 zero = {};
    for (; batch != end; ++batch)
    {
        Lanes a, b;
        Gather(accum, batch->body0, a);
        Gather(accum, batch->body1, b);
        Vec8 jx, jy;
        CalcHingeImpulses(*batch, a, b, jx, jy);
        const Vec8 motorTotal = Load(batch->motorTotal), motorMax = Load(batch->motorMax);
        const Vec8 wanted =
            (Load(batch->motorBias) - (b.w - a.w)) * Load(batch->motorMass) + motorTotal;
        const Vec8 motorDelta = Max(-motorMax, Min(motorMax, wanted)) - motorTotal;

        // Hinge::ApplyImpulse. What breaks grows its total still, and applies nothing any more.
        const Mask8 wasIntact = Load(batch->intact);
        const Vec8 totalX = Load(batch->totalX) + jx, totalY = Load(batch->totalY) + jy;
        const Mask8 intact = wasIntact & ~(totalX * totalX + totalY * totalY > Load(batch->limitSq));
        Store(batch->totalX, wasIntact ? totalX : Load(batch->totalX));
        Store(batch->totalY, wasIntact ? totalY : Load(batch->totalY));
        *reinterpret_cast<Mask8*>(batch->intact) = intact;

        Lanes c = a, d = b;
        ApplyHingeImpulses(*batch, c, d, jx, jy);
        const Mask8 turns = intact & Load(batch->isMotor) & (motorDelta != zero);
        c.w = turns ? c.w - Load(batch->inertiaInv0) * motorDelta : c.w;
        d.w = turns ? d.w + Load(batch->inertiaInv1) * motorDelta : d.w;
        Store(batch->motorTotal, turns ? motorTotal + motorDelta : motorTotal);
        a.x = intact ? c.x : a.x;
        a.y = intact ? c.y : a.y;
        a.w = intact ? c.w : a.w;
        b.x = intact ? d.x : b.x;
        b.y = intact ? d.y : b.y;
        b.w = intact ? d.w : b.w;

        Scatter(accum, batch->body0, a);
        Scatter(accum, batch->body1, b);
        *reinterpret_cast<Vec4f*>(accum) = nothing;
    }
}
