// The sweeps of the Gauss-Seidel solver over flat data.
//
// The method is projected Gauss-Seidel on impulses: one contact after the other is satisfied by itself,
// and its total held to what a contact may do (Jean 1999, "The non-smooth contact dynamics method"),
// starting from the impulses of the last step (Catto 2005, "Iterative dynamics with temporal
// coherence"). Clamping friction by the present normal impulse follows these; to sweep in the order of
// the first desired impulse, and to start from a share of the last impulses only, is our own.
//
// The result is defined by the plain sweep: one constraint after the other in the sorted order, each
// CalcDesiredImpulse then ApplyImpulse. Constraints that share no movable body don't see each other, so
// they may be solved at the same time. The rows of contacts are therefore packed eight to a batch, such
// that no two rows of a batch share a movable body and that of two rows that do share one the earlier
// stands in an earlier batch. Every lane of a vector then does what the plain sweep does, with the same
// operands in the same order: the results are the same to the bit. This is level scheduling as for sparse
// triangular systems (Saad 2003, "Iterative methods for sparse linear systems", chapter 11), but first
// fit into batches of eight.
//
// Any other constraint keeps its virtual operations and has a batch of its own, in its place.
#pragma once

#include "physics/Constraint.h"
#include "util/VectorPOD.h"

#include <cstdint>
#include <vector>

namespace physics
{
class Contact;

// The accumulators of a movable body. Index 0 stands for all immovable ones: always zero.
struct alignas(16) VelChange
{
    float x, y, w;
    float massInv;
};

// What a sweep reads of eight contacts, and nothing else.
struct alignas(64) RowBatch
{
    static const int Lanes = 8;

    float normalX[Lanes], normalY[Lanes];
    float r0x[Lanes], r0y[Lanes], r1x[Lanes], r1y[Lanes];
    float massN[Lanes], massT[Lanes];
    float targetN[Lanes], targetT[Lanes];
    float totalN[Lanes], totalT[Lanes];
    float friction[Lanes];
    float inertiaInv0[Lanes], inertiaInv1[Lanes];
    uint32_t body0[Lanes], body1[Lanes]; // indices into the accumulators; 0 and 0 in an empty lane
};

class RowSolver
{
public:
    // Which instructions the sweeps use. The results are the same.
    enum class Instructions
    {
        Best,    // that this machine has
        Baseline // that every machine has
    };

    explicit RowSolver(Instructions instructions = Instructions::Best);
    ~RowSolver();

    /// @param preSort  work in order of the first desired impulse, largest first and equal ones in the
    ///                 order of the list; else in the order of the list
    void Solve(const ConstraintList& constraints, int iterations, bool preSort);

private:
    using SweepFunction = void (*)(RowBatch* begin, RowBatch* end, VelChange* accum);

    // A constraint before it has its place in a batch. One cache line.
    struct Row
    {
        float normalX, normalY;
        float r0x, r0y, r1x, r1y;
        float massN, massT;
        float targetN, targetT;
        float totalN, totalT;
        float friction;
        uint32_t body0, body1;
        bool isContact;
    };
    static_assert(sizeof(Row) == 64, "a row is one cache line");

    struct SortKey
    {
        uint32_t key; // ascending
        uint32_t row;
    };

    uint32_t Enter(AbstractBody* body);
    void BuildRows(const ConstraintList& constraints, bool preSort);
    void SortKeys();
    void Schedule(const ConstraintList& constraints);
    uint32_t FindBatch(uint32_t earliest);
    uint32_t AddBatch();
    void Sweep(int iterations);
    void SolveSingle(uint32_t batch);
    void WriteBack(const ConstraintList& constraints);

    const SweepFunction m_sweep;

    util::VectorPOD<AbstractBody*> m_bodies; // [0] is null
    std::vector<VelChange> m_accum;          // by index in m_bodies
    util::VectorPOD<float> m_inertiaInv;
    util::VectorPOD<uint32_t> m_firstFree; // per body: the first batch after those that it is in

    util::VectorPOD<Row> m_rows; // in the order of the list
    util::VectorPOD<SortKey> m_keys, m_keysBuffer;
    util::VectorPOD<uint32_t> m_places; // per row: batch * Lanes + lane

    std::vector<RowBatch> m_batches; // never shrinks
    uint32_t m_batchCount = 0;
    util::VectorPOD<uint8_t> m_fill;        // rows in each batch
    util::VectorPOD<uint64_t> m_open;       // bit per batch: has room
    util::VectorPOD<Constraint*> m_singles; // per batch: the other constraint that has it, or null
};
}
