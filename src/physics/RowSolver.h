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
// they may be solved at the same time. The rows of contacts, and those of hinges, are therefore packed
// eight to a batch of their kind, such that no two rows of a batch share a movable body and that of two
// rows that do share one the earlier stands in an earlier batch, of whatever kind. Every lane of a vector then does what the plain sweep does, with the same
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
class Hinge;

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

// The same of eight hinges that have no motor and never break.
struct alignas(64) HingeBatch
{
    static const int Lanes = RowBatch::Lanes;

    float r0x[Lanes], r0y[Lanes], r1x[Lanes], r1y[Lanes];
    float invK00[Lanes], invK01[Lanes], invK11[Lanes]; // symmetric
    float biasX[Lanes], biasY[Lanes];
    float totalX[Lanes], totalY[Lanes];
    float inertiaInv0[Lanes], inertiaInv1[Lanes];
    uint32_t body0[Lanes], body1[Lanes];
};

// Of hinges that may have a motor, and break.
struct alignas(64) MotorBatch : HingeBatch
{
    float limitSq[Lanes];   // of the total impulse
    int32_t intact[Lanes];  // -1, or 0 when broken and in an empty lane
    int32_t isMotor[Lanes]; // -1 or 0
    float motorBias[Lanes], motorMass[Lanes], motorMax[Lanes], motorTotal[Lanes];
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
    // Where a row goes. Lone ones may be solved at any time, and so all their sweeps follow each other:
    // every drop of water that touches a wall has one. Single: keeps its virtual operations, and has a batch of its own.
    enum Kind : uint8_t
    {
        ContactKind,
        HingeKind,
        MotorKind,
        SingleKind,
        KindCount,
        LoneKind = KindCount // contacts whose movable bodies are in no other row; in no order
    };

    template<typename Batch>
    using SweepFunction = void (*)(Batch* begin, Batch* end, VelChange* accum);

    struct Sweeps
    {
        SweepFunction<RowBatch> contacts;
        void (*loneContacts)(RowBatch* begin, RowBatch* end, VelChange* accum, int iterations);
        SweepFunction<HingeBatch> hinges;
        SweepFunction<MotorBatch> motors;
    };

    // A constraint before it has its place in a batch. One cache line. Those that are no contacts have
    // bodies and kind only; the rest stays with the object until then.
    struct Row
    {
        float normalX, normalY;
        float r0x, r0y, r1x, r1y;
        float massN, massT;
        float targetN, targetT;
        float totalN, totalT;
        float friction;
        uint32_t body0, body1;
        Kind kind;
    };
    static_assert(sizeof(Row) == 64, "a row is one cache line");

    struct SortKey
    {
        uint32_t key; // ascending
        uint32_t row;
    };

    // Batches stand in one order, whatever their kind, and for each kind in an array of that order.
    struct Place
    {
        Kind kind;
        uint8_t fill;   // rows in it
        uint32_t index; // in the array of its kind
    };

    // Batches of one kind that follow each other.
    struct Run
    {
        Kind kind;
        uint32_t begin, end; // in the array of the kind
    };

    static Sweeps ChooseSweeps(Instructions instructions);
    static Kind KindOf(const Constraint& constraint);

    uint32_t Enter(AbstractBody* body);
    uint32_t EnterNew(AbstractBody* body);
    void BuildRows(const ConstraintList& constraints, bool preSort);
    void TakeOutLoneRows();
    void SortKeys();
    void Schedule(const ConstraintList& constraints);
    void ClearEmptyLanes();
    uint32_t FindBatch(Kind kind, uint32_t earliest);
    uint32_t AddBatch(Kind kind);
    void FillLane(RowBatch& batch, int lane, const Row& row) const;
    void FillLane(HingeBatch& batch, int lane, const Row& row, const Hinge& hinge) const;
    void FillLane(MotorBatch& batch, int lane, const Row& row, const Hinge& hinge) const;
    void FindRuns();
    void Sweep(int iterations);
    void SolveSingle(Constraint& constraint);
    void WriteBack(const ConstraintList& constraints);

    const Sweeps m_sweeps;

    util::VectorPOD<AbstractBody*> m_bodies; // [0] is null
    std::vector<VelChange> m_accum;          // by index in m_bodies
    util::VectorPOD<float> m_inertiaInv;
    util::VectorPOD<uint32_t> m_rowCounts; // per body
    util::VectorPOD<uint32_t> m_firstFree; // per body: the first batch after those that it is in

    util::VectorPOD<Row> m_rows;                   // in the order of the list
    util::VectorPOD<SortKey> m_keys, m_keysBuffer; // of all rows but the lone ones
    util::VectorPOD<uint32_t> m_lanes;             // per row: batch * Lanes + lane

    util::VectorPOD<Place> m_places;        // per batch
    uint32_t m_counts[KindCount];           // batches of each kind
    std::vector<RowBatch> m_contactBatches; // these never shrink
    std::vector<RowBatch> m_loneBatches;
    uint32_t m_loneCount = 0; // rows
    std::vector<HingeBatch> m_hingeBatches;
    std::vector<MotorBatch> m_motorBatches;
    util::VectorPOD<Constraint*> m_singles;
    util::VectorPOD<uint64_t> m_open[KindCount]; // bit per batch: is of that kind and has room
    util::VectorPOD<Run> m_runs;
};
}
