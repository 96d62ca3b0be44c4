#include "physics/RowSolver.h"

#include "physics/Contact.h"

#include <cstring>

// Vectors wider than the baseline's registers are passed to inlined functions only: no call between
// translation units depends on how they would travel.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace physics
{
namespace
{
namespace baseline
{
#include "physics/RowSweep.inl"
}

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUIB_HAS_AVX2_SWEEP
#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2
{
#include "physics/RowSweep.inl"
}
#pragma GCC pop_options
#endif

auto ChooseSweep(RowSolver::Instructions instructions)
{
#ifdef QUIB_HAS_AVX2_SWEEP
    if (instructions == RowSolver::Instructions::Best && __builtin_cpu_supports("avx2"))
        return avx2::SweepBatches;
#endif
    static_cast<void>(instructions);
    return baseline::SweepBatches;
}
}

RowSolver::RowSolver(Instructions instructions)
    : m_sweep(ChooseSweep(instructions))
{
}

RowSolver::~RowSolver() = default;

void RowSolver::Solve(const ConstraintList& constraints, int iterations, bool preSort)
{
    if (constraints.empty())
        return;
    BuildRows(constraints, preSort);
    if (preSort)
        SortKeys();
    Schedule(constraints);
    Sweep(iterations);
    WriteBack(constraints);
}

uint32_t RowSolver::Enter(AbstractBody* body)
{
    if (body->IsImmovable())
        return 0;
    // The index is the body's own from an earlier call if it points back.
    uint32_t index = body->GetSolverIndex();
    if (index < m_bodies.size() && m_bodies.begin()[index] == body)
        return index;
    index = static_cast<uint32_t>(m_bodies.size());
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
        // A contact of a movable body with itself is none that lanes could take.
        row.isContact = constraint->IsContact() && row.body0 != row.body1;
        if (preSort)
            constraint->CalcDesiredImpulse();
        if (row.isContact)
        {
            const Contact& contact = static_cast<const Contact&>(*constraint);
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
    m_batchCount = 0;
    m_fill.clear();
    m_open.clear();
    m_singles.clear();
    m_places.resize(m_rows.size());
    m_firstFree.resize(m_bodies.size());
    std::memset(m_firstFree.data(), 0, m_firstFree.size() * sizeof(uint32_t));

    const Row* rows = m_rows.data();
    uint32_t* firstFree = m_firstFree.data();
    const float* inertiaInv = m_inertiaInv.data();
    for (const SortKey& key : m_keys)
    {
        const Row& row = rows[key.row];
        const uint32_t a = row.body0, b = row.body1;
        if (!row.isContact)
        {
            const uint32_t batch = AddBatch();
            m_open.data()[batch / 64] &= ~(uint64_t(1) << batch % 64);
            m_singles.data()[batch] = constraints.begin()[key.row];
            m_batches[batch].body0[0] = a;
            m_batches[batch].body1[0] = b;
            m_places.data()[key.row] = batch * RowBatch::Lanes;
            firstFree[a] = firstFree[b] = batch + 1;
            firstFree[0] = 0;
            continue;
        }

        // Tried and dropped: to keep some batches between a row and those that it depends on, for the
        // sake of the processor. First fit spreads them well enough (bench/step, pyramid and wall).
        const uint32_t after = firstFree[a] > firstFree[b] ? firstFree[a] : firstFree[b];
        const uint32_t index = FindBatch(after);
        RowBatch& batch = m_batches[index];
        const int lane = m_fill.data()[index]++;
        if (lane == RowBatch::Lanes - 1)
            m_open.data()[index / 64] &= ~(uint64_t(1) << index % 64);
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
        batch.inertiaInv0[lane] = inertiaInv[a];
        batch.inertiaInv1[lane] = inertiaInv[b];
        batch.body0[lane] = a;
        batch.body1[lane] = b;
        m_places.data()[key.row] = index * RowBatch::Lanes + lane;
        firstFree[a] = firstFree[b] = index + 1;
        firstFree[0] = 0; // nobody waits for immovable bodies
    }
}

// The first batch with room from that index on.
uint32_t RowSolver::FindBatch(uint32_t earliest)
{
    const uint64_t* open = m_open.data();
    const size_t words = m_open.size();
    size_t word = earliest / 64;
    if (word < words)
    {
        uint64_t bits = open[word] >> earliest % 64 << earliest % 64;
        while (!bits && ++word < words)
            bits = open[word];
        if (bits)
            return static_cast<uint32_t>(word * 64 + __builtin_ctzll(bits));
    }
    return AddBatch();
}

uint32_t RowSolver::AddBatch()
{
    const uint32_t index = m_batchCount++;
    if (m_batches.size() < m_batchCount)
        m_batches.resize(2 * m_batchCount);
    std::memset(static_cast<void*>(&m_batches[index]), 0, sizeof(RowBatch));
    m_fill.append(0);
    m_singles.append(nullptr);
    if (index % 64 == 0)
        m_open.append(0);
    m_open.data()[index / 64] |= uint64_t(1) << index % 64;
    return index;
}

void RowSolver::Sweep(int iterations)
{
    Constraint* const* singles = m_singles.data();
    RowBatch* batches = m_batches.data();
    VelChange* accum = m_accum.data();
    for (int i = 0; i < iterations; ++i)
        for (uint32_t begin = 0; begin < m_batchCount;)
        {
            uint32_t end = begin;
            while (end < m_batchCount && !singles[end])
                ++end;
            m_sweep(batches + begin, batches + end, accum);
            if (end < m_batchCount)
                SolveSingle(end);
            begin = end + 1;
        }
}

void RowSolver::SolveSingle(uint32_t batch)
{
    const uint32_t indices[2] = {m_batches[batch].body0[0], m_batches[batch].body1[0]};
    for (uint32_t i : indices)
        if (i != 0)
            m_bodies.begin()[i]->SetVelChange(math::Vec2(m_accum[i].x, m_accum[i].y), m_accum[i].w);
    Constraint* constraint = m_singles.begin()[batch];
    constraint->CalcDesiredImpulse();
    constraint->ApplyImpulse();
    for (uint32_t i : indices)
        if (i != 0)
        {
            const AbstractBody& body = *m_bodies.begin()[i];
            m_accum[i].x = body.GetVelChange().x;
            m_accum[i].y = body.GetVelChange().y;
            m_accum[i].w = body.GetAngVelChange();
        }
}

void RowSolver::WriteBack(const ConstraintList& constraints)
{
    for (size_t i = 1; i < m_bodies.size(); ++i)
        m_bodies.begin()[i]->SetVelChange(math::Vec2(m_accum[i].x, m_accum[i].y), m_accum[i].w);
    for (size_t i = 0; i < m_rows.size(); ++i)
        if (m_rows.begin()[i].isContact)
        {
            const uint32_t place = m_places.begin()[i];
            const RowBatch& batch = m_batches[place / RowBatch::Lanes];
            Contact& contact = static_cast<Contact&>(*constraints.begin()[i]);
            contact.m_totalN = batch.totalN[place % RowBatch::Lanes];
            contact.m_totalT = batch.totalT[place % RowBatch::Lanes];
        }
}
}
