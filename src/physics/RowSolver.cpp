#include "physics/RowSolver.h"

#include "physics/Contact.h"
#include "physics/Hinge.h"

#include <cstring>
#include <limits>

// Vectors wider than the baseline's registers are passed to inlined functions only: no call between
// translation units depends on how they would travel.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace physics
{
namespace
{
template<typename Batch>
void MakeRoom(std::vector<Batch>& batches, uint32_t index)
{
    if (batches.size() <= index)
        batches.resize(2 * (index + 1));
}

// An empty lane: it works on nothing but the accumulators of immovable bodies. All fields are arrays of
// one number per lane.
template<typename Batch>
void ClearLane(Batch& batch, int lane)
{
    static_assert(sizeof(Batch) % (RowBatch::Lanes * sizeof(float)) == 0, "arrays of lanes only");
    char* end = reinterpret_cast<char*>(&batch + 1);
    for (char* p = reinterpret_cast<char*>(&batch); p != end; p += RowBatch::Lanes * sizeof(float))
        std::memset(p + lane * sizeof(float), 0, sizeof(float));
}

template<typename Batch>
void ClearLanes(Batch& batch, int from)
{
    for (int lane = from; lane < RowBatch::Lanes; ++lane)
        ClearLane(batch, lane);
}

namespace baseline
{
#include "physics/Lanes.inl"
#include "physics/RowSweep.inl"
}

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUIB_HAS_AVX2_SWEEP
#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2
{
#include "physics/Lanes.inl"
#include "physics/RowSweep.inl"
}
#pragma GCC pop_options
#endif
#undef LANES_INLINE

}

RowSolver::Sweeps RowSolver::ChooseSweeps(Instructions instructions)
{
#ifdef QUIB_HAS_AVX2_SWEEP
    if (instructions == Instructions::Best && __builtin_cpu_supports("avx2"))
        return {avx2::SweepContacts, avx2::SweepLoneContacts, avx2::SweepHinges, avx2::SweepMotors};
#endif
    static_cast<void>(instructions);
    return {baseline::SweepContacts, baseline::SweepLoneContacts, baseline::SweepHinges,
            baseline::SweepMotors};
}

RowSolver::RowSolver(Instructions instructions)
    : m_sweeps(ChooseSweeps(instructions))
{
}

RowSolver::~RowSolver() = default;

void RowSolver::Solve(const ConstraintList& constraints, int iterations, bool preSort)
{
    if (constraints.empty())
        return;
    BuildRows(constraints, preSort);
    TakeOutLoneRows();
    if (preSort)
        SortKeys();
    Schedule(constraints);
    FindRuns();
    Sweep(iterations);
    WriteBack(constraints);
}

RowSolver::Kind RowSolver::KindOf(const Constraint& constraint)
{
    switch (constraint.m_kind)
    {
    case Constraint::Kind::Contact:
        return ContactKind;
    case Constraint::Kind::Hinge:
    {
        const Hinge& hinge = static_cast<const Hinge&>(constraint);
        const float limitSq = hinge.m_impulseLimit * hinge.m_impulseLimit;
        const bool mayBreak = limitSq < std::numeric_limits<float>::infinity();
        return hinge.m_motor || hinge.m_broken || mayBreak ? MotorKind : HingeKind;
    }
    case Constraint::Kind::Other:
        break;
    }
    return SingleKind;
}

inline uint32_t RowSolver::Enter(AbstractBody* body)
{
    if (body->IsImmovable())
        return 0;
    // The index is the body's own from an earlier call if it points back.
    const uint32_t index = body->GetSolverIndex();
    if (index < m_bodies.size() && m_bodies.begin()[index] == body)
        return index;
    return EnterNew(body);
}

uint32_t RowSolver::EnterNew(AbstractBody* body)
{
    const uint32_t index = static_cast<uint32_t>(m_bodies.size());
    body->SetSolverIndex(index);
    m_bodies.append(body);
    m_inertiaInv.append(body->GetInertiaInv());
    return index;
}

void RowSolver::BuildRows(const ConstraintList& constraints, bool preSort)
{
    m_bodies.clear();
    m_bodies.append(nullptr);
    m_inertiaInv.clear();
    m_inertiaInv.append(0);
    m_rows.clear();
    m_rows.reserve(constraints.size());
    m_keys.clear();
    m_keys.reserve(constraints.size());

    for (Constraint* constraint : constraints)
    {
        Row row;
        row.body0 = Enter(constraint->m_bodies[0]);
        row.body1 = Enter(constraint->m_bodies[1]);
        // What ties a movable body to itself is none that lanes could take.
        row.kind = row.body0 != row.body1 ? KindOf(*constraint) : SingleKind;
        if (row.kind == ContactKind)
        {
            Contact& contact = static_cast<Contact&>(*constraint);
            if (preSort)
                contact.CalcDesiredImpulse();
            row.normalX = contact.m_normal.x;
            row.normalY = contact.m_normal.y;
            row.r0x = contact.m_r[0].x;
            row.r0y = contact.m_r[0].y;
            row.r1x = contact.m_r[1].x;
            row.r1y = contact.m_r[1].y;
            row.massN = contact.m_effMassN;
            row.massT = contact.m_effMassT;
            row.targetN = contact.m_targetN;
            row.targetT = contact.m_targetT;
            row.totalN = contact.m_totalN;
            row.totalT = contact.m_totalT;
            row.friction = contact.m_friction;
        }
        else if (preSort)
            constraint->CalcDesiredImpulse();
        // Priorities are not negative: their bits are in the order of their values. What is not a
        // number comes last, as in ConstraintComparer.
        uint32_t bits;
        std::memcpy(&bits, &constraint->m_priority, sizeof(bits));
        const uint32_t infinity = 0x7F800000;
        m_keys.append({math::IsNaN(constraint->m_priority) ? ~0u : infinity - bits,
                       static_cast<uint32_t>(m_rows.size())});
        m_rows.append(row);
    }

    if (m_accum.size() < m_bodies.size())
        m_accum.resize(2 * m_bodies.size());
    m_accum[0] = VelChange{0, 0, 0, 0};
    for (size_t i = 1; i < m_bodies.size(); ++i)
    {
        const AbstractBody& body = *m_bodies.begin()[i];
        m_accum[i] = VelChange{body.GetVelChange().x, body.GetVelChange().y, body.GetAngVelChange(),
                               body.GetMassInv()};
    }
}

void RowSolver::TakeOutLoneRows()
{
    m_rowCounts.resize(m_bodies.size());
    uint32_t* const counts = m_rowCounts.data();
    std::memset(counts, 0, m_rowCounts.size() * sizeof(uint32_t));
    for (const Row& row : m_rows)
    {
        ++counts[row.body0];
        ++counts[row.body1];
    }
    counts[0] = 0; // immovable bodies bind nothing

    m_lanes.resize(m_rows.size());
    m_loneCount = 0;
    SortKey* kept = m_keys.begin();
    for (const SortKey& key : m_keys)
    {
        Row& row = m_rows.data()[key.row];
        if (row.kind != ContactKind || counts[row.body0] > 1 || counts[row.body1] > 1)
        {
            *kept++ = key;
            continue;
        }
        row.kind = LoneKind;
        const uint32_t lane = m_loneCount++;
        MakeRoom(m_loneBatches, lane / RowBatch::Lanes);
        FillLane(m_loneBatches[lane / RowBatch::Lanes], lane % RowBatch::Lanes, row);
        m_lanes.data()[key.row] = lane;
    }
    m_keys.resize(kept - m_keys.begin());
}

// Radix sort from the low digit up, which is stable: Knuth 1998, "The art of computer programming",
// volume 3, 5.2.5. Three digits of eleven bits for a float, as in Herf 2001, "Radix tricks".
void RowSolver::SortKeys()
{
    const int bits = 11;
    const uint32_t mask = (1u << bits) - 1;
    uint32_t counts[3][1u << bits] = {};
    for (const SortKey& k : m_keys)
    {
        ++counts[0][k.key & mask];
        ++counts[1][k.key >> bits & mask];
        ++counts[2][k.key >> 2 * bits];
    }
    m_keysBuffer.resize(m_keys.size());
    for (int digit = 0; digit < 3; ++digit)
    {
        uint32_t sum = 0;
        for (uint32_t& count : counts[digit])
        {
            const uint32_t n = count;
            count = sum;
            sum += n;
        }
        SortKey* out = m_keysBuffer.data();
        for (const SortKey& k : m_keys)
            out[counts[digit][k.key >> digit * bits & mask]++] = k;
        m_keys.swap(m_keysBuffer);
    }
}

void RowSolver::Schedule(const ConstraintList& constraints)
{
    m_places.clear();
    m_singles.clear();
    for (int kind = 0; kind < KindCount; ++kind)
    {
        m_counts[kind] = 0;
        m_open[kind].clear();
    }
    m_firstFree.resize(m_bodies.size());
    std::memset(m_firstFree.data(), 0, m_firstFree.size() * sizeof(uint32_t));

    const Row* rows = m_rows.data();
    uint32_t* firstFree = m_firstFree.data();
    for (const SortKey& key : m_keys)
    {
        const Row& row = rows[key.row];
        const uint32_t a = row.body0, b = row.body1;
        // Tried and dropped: to keep some batches between a row and those that it depends on, for the
        // sake of the processor. First fit spreads them well enough (bench/step, pyramid and wall).
        const uint32_t after = firstFree[a] > firstFree[b] ? firstFree[a] : firstFree[b];
        const uint32_t number = FindBatch(row.kind, after);
        Place& place = m_places.data()[number];
        const int lane = place.fill++;
        switch (row.kind)
        {
        case ContactKind:
            FillLane(m_contactBatches[place.index], lane, row);
            break;
        case HingeKind:
            FillLane(m_hingeBatches[place.index], lane, row,
                     static_cast<const Hinge&>(*constraints.begin()[key.row]));
            break;
        case MotorKind:
            FillLane(m_motorBatches[place.index], lane, row,
                     static_cast<const Hinge&>(*constraints.begin()[key.row]));
            break;
        default:
            m_singles.append(constraints.begin()[key.row]);
        }
        if (lane == RowBatch::Lanes - 1 || row.kind == SingleKind)
            m_open[row.kind].data()[number / 64] &= ~(uint64_t(1) << number % 64);
        m_lanes.data()[key.row] = number * RowBatch::Lanes + lane;
        firstFree[a] = firstFree[b] = number + 1;
        firstFree[0] = 0; // nobody waits for immovable bodies
    }
    ClearEmptyLanes();
}

void RowSolver::ClearEmptyLanes()
{
    for (const Place& place : m_places)
        switch (place.kind)
        {
        case ContactKind:
            ClearLanes(m_contactBatches[place.index], place.fill);
            break;
        case HingeKind:
            ClearLanes(m_hingeBatches[place.index], place.fill);
            break;
        case MotorKind:
            ClearLanes(m_motorBatches[place.index], place.fill);
            break;
        default:
            break;
        }
    if (m_loneCount % RowBatch::Lanes != 0)
        ClearLanes(m_loneBatches[m_loneCount / RowBatch::Lanes], m_loneCount % RowBatch::Lanes);
}

void RowSolver::FillLane(RowBatch& batch, int lane, const Row& row) const
{
    batch.normalX[lane] = row.normalX;
    batch.normalY[lane] = row.normalY;
    batch.r0x[lane] = row.r0x;
    batch.r0y[lane] = row.r0y;
    batch.r1x[lane] = row.r1x;
    batch.r1y[lane] = row.r1y;
    batch.massN[lane] = row.massN;
    batch.massT[lane] = row.massT;
    batch.targetN[lane] = row.targetN;
    batch.targetT[lane] = row.targetT;
    batch.totalN[lane] = row.totalN;
    batch.totalT[lane] = row.totalT;
    batch.friction[lane] = row.friction;
    batch.inertiaInv0[lane] = m_inertiaInv.begin()[row.body0];
    batch.inertiaInv1[lane] = m_inertiaInv.begin()[row.body1];
    batch.body0[lane] = row.body0;
    batch.body1[lane] = row.body1;
}

void RowSolver::FillLane(HingeBatch& batch, int lane, const Row& row, const Hinge& hinge) const
{
    batch.r0x[lane] = hinge.m_r[0].x;
    batch.r0y[lane] = hinge.m_r[0].y;
    batch.r1x[lane] = hinge.m_r[1].x;
    batch.r1y[lane] = hinge.m_r[1].y;
    batch.invK00[lane] = hinge.m_invK.m00;
    batch.invK01[lane] = hinge.m_invK.m01;
    batch.invK11[lane] = hinge.m_invK.m11;
    batch.biasX[lane] = hinge.m_bias.x;
    batch.biasY[lane] = hinge.m_bias.y;
    batch.totalX[lane] = hinge.m_total.x;
    batch.totalY[lane] = hinge.m_total.y;
    batch.inertiaInv0[lane] = m_inertiaInv.begin()[row.body0];
    batch.inertiaInv1[lane] = m_inertiaInv.begin()[row.body1];
    batch.body0[lane] = row.body0;
    batch.body1[lane] = row.body1;
}

void RowSolver::FillLane(MotorBatch& batch, int lane, const Row& row, const Hinge& hinge) const
{
    FillLane(static_cast<HingeBatch&>(batch), lane, row, hinge);
    batch.limitSq[lane] = hinge.m_impulseLimit * hinge.m_impulseLimit;
    batch.intact[lane] = hinge.m_broken ? 0 : -1;
    batch.isMotor[lane] = hinge.m_motor ? -1 : 0;
    batch.motorBias[lane] = hinge.m_motorBias;
    batch.motorMass[lane] = hinge.m_motorMass;
    batch.motorMax[lane] = hinge.m_motorMaxImpulse;
    batch.motorTotal[lane] = hinge.m_motorTotal;
}

// The first batch of that kind with room, from that place in the order on.
uint32_t RowSolver::FindBatch(Kind kind, uint32_t earliest)
{
    const uint64_t* open = m_open[kind].data();
    const size_t words = m_open[kind].size();
    size_t word = earliest / 64;
    if (word < words)
    {
        uint64_t bits = open[word] >> earliest % 64 << earliest % 64;
        while (!bits && ++word < words)
            bits = open[word];
        if (bits)
            return static_cast<uint32_t>(word * 64 + __builtin_ctzll(bits));
    }
    return AddBatch(kind);
}

uint32_t RowSolver::AddBatch(Kind kind)
{
    const uint32_t number = static_cast<uint32_t>(m_places.size());
    const uint32_t index = m_counts[kind]++;
    m_places.append({kind, 0, index});
    if (kind == ContactKind)
        MakeRoom(m_contactBatches, index);
    else if (kind == HingeKind)
        MakeRoom(m_hingeBatches, index);
    else if (kind == MotorKind)
        MakeRoom(m_motorBatches, index);
    while (m_open[kind].size() <= number / 64)
        m_open[kind].append(0);
    m_open[kind].data()[number / 64] |= uint64_t(1) << number % 64;
    return number;
}

void RowSolver::FindRuns()
{
    m_runs.clear();
    for (const Place& place : m_places)
        if (!m_runs.empty() && m_runs.back().kind == place.kind)
            m_runs.back().end = place.index + 1;
        else
            m_runs.append({place.kind, place.index, place.index + 1});
}

void RowSolver::Sweep(int iterations)
{
    VelChange* const accum = m_accum.data();
    const uint32_t loneBatches = (m_loneCount + RowBatch::Lanes - 1) / RowBatch::Lanes;
    m_sweeps.loneContacts(m_loneBatches.data(), m_loneBatches.data() + loneBatches, accum,
                          iterations);
    for (int i = 0; i < iterations; ++i)
        for (const Run& run : m_runs)
            switch (run.kind)
            {
            case ContactKind:
                m_sweeps.contacts(m_contactBatches.data() + run.begin,
                                  m_contactBatches.data() + run.end, accum);
                break;
            case HingeKind:
                m_sweeps.hinges(m_hingeBatches.data() + run.begin, m_hingeBatches.data() + run.end,
                                accum);
                break;
            case MotorKind:
                m_sweeps.motors(m_motorBatches.data() + run.begin, m_motorBatches.data() + run.end,
                                accum);
                break;
            default:
                for (uint32_t single = run.begin; single < run.end; ++single)
                    SolveSingle(*m_singles.begin()[single]);
            }
}

void RowSolver::SolveSingle(Constraint& constraint)
{
    for (AbstractBody* body : constraint.m_bodies)
        if (!body->IsImmovable())
        {
            const VelChange& change = m_accum[body->GetSolverIndex()];
            body->SetVelChange(math::Vec2(change.x, change.y), change.w);
        }
    constraint.CalcDesiredImpulse();
    constraint.ApplyImpulse();
    for (const AbstractBody* body : constraint.m_bodies)
        if (!body->IsImmovable())
        {
            VelChange& change = m_accum[body->GetSolverIndex()];
            change.x = body->GetVelChange().x;
            change.y = body->GetVelChange().y;
            change.w = body->GetAngVelChange();
        }
}

void RowSolver::WriteBack(const ConstraintList& constraints)
{
    for (size_t i = 1; i < m_bodies.size(); ++i)
        m_bodies.begin()[i]->SetVelChange(math::Vec2(m_accum[i].x, m_accum[i].y), m_accum[i].w);
    for (size_t i = 0; i < m_rows.size(); ++i)
    {
        const uint32_t number = m_lanes.begin()[i] / RowBatch::Lanes;
        const int lane = m_lanes.begin()[i] % RowBatch::Lanes;
        Constraint& constraint = *constraints.begin()[i];
        if (m_rows.begin()[i].kind == LoneKind)
        {
            const RowBatch& batch = m_loneBatches[number];
            Contact& contact = static_cast<Contact&>(constraint);
            contact.m_totalN = batch.totalN[lane];
            contact.m_totalT = batch.totalT[lane];
            continue;
        }
        const Place& place = m_places.begin()[number];
        if (place.kind == ContactKind)
        {
            const RowBatch& batch = m_contactBatches[place.index];
            Contact& contact = static_cast<Contact&>(constraint);
            contact.m_totalN = batch.totalN[lane];
            contact.m_totalT = batch.totalT[lane];
        }
        else if (place.kind == HingeKind)
        {
            const HingeBatch& batch = m_hingeBatches[place.index];
            Hinge& hinge = static_cast<Hinge&>(constraint);
            hinge.m_total = math::Vec2(batch.totalX[lane], batch.totalY[lane]);
        }
        else if (place.kind == MotorKind)
        {
            const MotorBatch& batch = m_motorBatches[place.index];
            Hinge& hinge = static_cast<Hinge&>(constraint);
            hinge.m_total = math::Vec2(batch.totalX[lane], batch.totalY[lane]);
            hinge.m_motorTotal = batch.motorTotal[lane];
            hinge.m_broken = !batch.intact[lane];
        }
    }
}
}
