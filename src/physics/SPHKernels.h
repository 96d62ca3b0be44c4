// What a step of the fluid computes over flat arrays: cells, pairs of neighbors, densities, forces.
//
// The formulas are those of Mueller, Charypar and Gross 2003, "Particle-based fluid simulation for
// interactive applications": the poly6 kernel for densities, the spiky kernel for pressure, the viscosity
// kernel. Deliberate: they are normalised for three dimensions, the gradient of the spiky kernel is
// multiplied by the vector to the neighbor and not by the unit vector, and the pressure of all but the
// loneliest water is positive.
//
// The particles stand in the order of a grid: by cell, column after column, and within a cell in the order
// of the caller's list. Two particles are neighbors by one pair, whose first is the one that comes first in
// that order; the pairs stand in order of their first, then of their second particle. So each particle
// meets its neighbors in the order of the grid, whichever of the two it is in a pair, and all sums are made
// in that order, itself first. It is the order in which one comes by when cells are visited column by
// column, each with itself, the cell above, and the three to the right, from the bottom up.
#pragma once

#include "math/Vector.h"
#include "util/VectorPOD.h"

#include <cstddef>
#include <cstdint>

namespace physics
{
// The settings of one step.
struct SPHParams
{
    SPHParams() = default;
    /// @param radius  of a particle
    /// @param influence  the distance in which particles feel each other, in world units
    SPHParams(float radius, float restDensity, float influence)
        : mass(radius * radius * math::PIf * restDensity)
        , influenceRad(influence)
        , restDensity(restDensity)
    {
        const float h3 = influence * influence * influence;
        kernel64PiH9Inv = 1 / (64 * math::PIf * (h3 * h3 * h3));
        kernelPiH6Inv = 1 / (math::PIf * (h3 * h3));
    }

    /// The weight of a particle at that distance.
    float InfluenceKernel(float r) const;

    float mass = 0; // of one particle
    float influenceRad = 0;
    float restDensity = 0;
    float kernel64PiH9Inv = 0; // 1 / (64 pi h^9)
    float kernelPiH6Inv = 0;   // 1 / (pi h^6)
    float soundSpeed = 0;
    bool specialPressure = true;
    bool hasTension = false; // whether the sums of the surface tension are wanted
};

// The state of a particle in the pressure and viscosity sums.
struct alignas(16) SPHState
{
    float density, pressure, velX, velY;
};

// Those sums.
struct alignas(16) SPHSums
{
    float pressureX, pressureY, viscosityX, viscosityY;
};

// The particles in grid order. Arrays that are read eight at a time have eight elements more than there
// are particles.
struct SPHArrays
{
    void Resize(size_t n);

    uint32_t count = 0;
    util::VectorPOD<float> x, y, velX, velY;
    // Where the neighbors that come after a particle are to be found: from the next particle to
    // columnEnd, and from nextBegin to nextEnd.
    util::VectorPOD<uint32_t> columnEnd, nextBegin, nextEnd;
    util::VectorPOD<float> density;
    util::VectorPOD<uint32_t> neighborCount; // itself included
    util::VectorPOD<SPHState> state;
    util::VectorPOD<SPHSums> sums;
    util::VectorPOD<math::Vec2> tension;
};

// Pairs of neighbors of consecutive particles, with room for eight more.
struct SPHPairs
{
    void Reserve(size_t n);
    /// Makes the room behind the pairs readable.
    void Finish();

    util::VectorPOD<uint32_t> first, second;
    util::VectorPOD<float> dx, dy;   // from the first to the second
    util::VectorPOD<float> distance; // its square at first
    size_t count = 0;
    uint32_t begin = 0, end = 0; // these particles are the first ones
};

// The loops. All sets of instructions give the same bits.
struct SPHKernels
{
    enum class Instructions
    {
        Best,    // that this machine has
        Baseline // that every machine has
    };
    static const SPHKernels& Get(Instructions instructions);

    /// Cell indices, truncated toward zero and held to +-MaxCell; -MaxCell for what is not a number.
    /// @param x      with seven elements more, which repeat the last
    /// @param cells  likewise
    /// @param range  receives the smallest and the largest
    void (*calcCells)(const float* x, size_t n, float cellSizeInv, int32_t* cells, int32_t* range);
    /// Finds the pairs whose first is from pairs.begin on, until all have been searched or the capacity
    /// does not last for the next one. Sets pairs.end and pairs.count.
    void (*findPairs)(const SPHArrays& arrays, float maxDistSq, SPHPairs& pairs);
    /// Square roots where the squares are. For pairs that addDensities does not come by.
    void (*calcDistances)(SPHPairs& pairs);
    /// Adds to densities and neighbor counts, and leaves distances where their squares were.
    void (*addDensities)(const SPHParams& params, SPHPairs& pairs, SPHArrays& arrays);
    /// Pressures and states from the densities; starts the sums with what each particle does to itself.
    void (*startSums)(const SPHParams& params, SPHArrays& arrays);
    void (*addSums)(const SPHParams& params, const SPHPairs& pairs, SPHArrays& arrays);
};
}
