#include "physics/SPH.h"

#include "physics/CellCounts.h"
#include "physics/ForEachAhead.h"
#include "physics/SPHGrid.h"
#include "util/Random.h"
#include "util/ScopeProfiler.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace physics
{
using math::Vec2;

namespace
{
// The grid's own cells, in influence distances: so much wider that no rounding of a cell index can part
// neighbors by more than a cell.
const float GridCell = 1.0625f;

// More pairs than that are never held at once: they are found again when they are needed again. Water has
// three for each particle; only particles that lie on each other by the thousand get there.
const size_t MaxPairs = size_t(1) << 20;

struct Attribs
{
    float radius, density, friction, restitution;
};
}

// The particles as they are during an update and, for those who ask for neighbors, after it.
struct SPH::Flat
{
    const SPHKernels* kernels = &SPHKernels::Get(SPHKernels::Instructions::Best);

    SPHParams params;
    Attribs attribs = {};
    uint32_t attribsVersion = 0;

    // In the order of the list. Positions have eight elements more than there are particles.
    util::VectorPOD<float> x, y, velX, velY;

    // In the order of the grid.
    SPHGrid grid;
    SPHArrays arrays;
    util::VectorPOD<Particle*> particles;
    // The cells that the settings ask for, with room for eight more. They are counted; and where they are
    // so small that neighbors are missed, these are.
    util::VectorPOD<int32_t> cellX, cellY;
    bool hasSmallCells = false;
    CellCounts cellCounts;

    SPHPairs pairs;
    size_t pairCount = 0;                          // of the whole update
    util::VectorPOD<uint32_t> lonely, rejuvenated; // indices in the list
    util::String hashInfo;
};

SPH::SPH()
    : Reflected("SPH")
    , m_radius(this, "radius", 0.05f)
    , m_influence(this, "influence", 2.0f)
    , m_specialPressure(this, "specialPressure", true)
    , m_velocitySmoothing(this, "velocitySmoothing", true)
    , m_vaporizeTime(this, "vaporizeTime", 5.0f)
    , m_friction(this, "friction", 0.01f)
    , m_restitution(this, "restitution", 0.0f)
    , m_soundSpeed(this, "soundSpeed", 20.0f)
    , m_density(this, "density", 1.0f)
    , m_viscosity(this, "viscosity", 0.5f)
    , m_pressMultiplier(this, "pressMultiplier", 1.0f)
    , m_viscMultiplier(this, "viscMultiplier", 1.0f)
    , m_surfaceTension(this, "surfaceTension", 0.0f)
    , m_jitter(this, "jitter", 0.0f)
    , m_bucketSize(this, "bucketSize", 2.0f)
    , m_flat(new Flat)
{
}

SPH::~SPH() = default;

void SPH::SetInstructions(SPHKernels::Instructions instructions)
{
    m_flat->kernels = &SPHKernels::Get(instructions);
}

void SPH::Update(const ParticleList& particles, float dt)
{
    QUIB_PROFILE("SPH::Update");
    if (particles.empty())
        return;

    // Emptied on every way out.
    struct ListGuard
    {
        util::VectorPOD<Particle*>& list;
        ~ListGuard() { list.clear(); }
    } guard{m_particles};
    m_particles.reserve(particles.size());
    for (const ParticlePtr& particle : particles)
        m_particles.append(particle.get());

    UpdateAttribs();
    FindNeighbors();
    CalcForces();
    Evaporate(dt);
    AddJitter();
    ReportStatistics();
}

// Also reads what the particles bring along, as it passes by.
void SPH::UpdateAttribs()
{
    QUIB_PROFILE("Update rad/density");
    Flat& f = *m_flat;
    const Attribs attribs = {m_radius, m_density, m_friction, m_restitution};
    f.params = SPHParams(attribs.radius, attribs.density, InfluenceDistance());
    f.params.soundSpeed = m_soundSpeed;
    f.params.specialPressure = m_specialPressure;
    f.params.hasTension = m_surfaceTension != 0;

    // Particles that have these attributes already keep them. By the bits: NaN is a value like others.
    if (std::memcmp(&attribs, &f.attribs, sizeof(attribs)) != 0 || f.attribsVersion == 0)
    {
        f.attribs = attribs;
        if (++f.attribsVersion == 0)
            f.attribsVersion = 1;
    }

    const size_t n = m_particles.size();
    for (util::VectorPOD<float>* v : {&f.x, &f.y, &f.velX, &f.velY})
        v->resize(n + 8);
    size_t i = 0;
    const auto read = [&](Particle& p)
    {
        if (p.m_attribsVersion != f.attribsVersion)
        {
            p.SetAttribs(attribs.radius, attribs.density, attribs.friction, attribs.restitution);
            p.m_attribsVersion = f.attribsVersion;
        }
        f.x.data()[i] = p.m_pos.x;
        f.y.data()[i] = p.m_pos.y;
        f.velX.data()[i] = p.m_vel.x;
        f.velY.data()[i] = p.m_vel.y;
        ++i;
    };
    ForEachAhead(m_particles, read);
    for (; i < n + 8; ++i)
    {
        f.x.data()[i] = f.x.data()[n - 1];
        f.y.data()[i] = f.y.data()[n - 1];
    }
}

void SPH::FindNeighbors()
{
    QUIB_PROFILE("FindNeighbors");
    Flat& f = *m_flat;
    const size_t n = m_particles.size();
    const float h = f.params.influenceRad;
    {
        QUIB_PROFILE("Hashing particles");
        f.grid.Sort(*f.kernels, f.x.data(), f.y.data(), n, GridCell * std::fabs(h));

        f.arrays.Resize(n);
        f.particles.resize(n);
        const uint32_t* const places = f.grid.GetPlaces().data();
        for (size_t i = 0; i < n; ++i)
        {
            const uint32_t place = places[i];
            f.arrays.x.data()[place] = f.x.data()[i];
            f.arrays.y.data()[place] = f.y.data()[i];
            f.arrays.velX.data()[place] = f.velX.data()[i];
            f.arrays.velY.data()[place] = f.velY.data()[i];
            f.particles.data()[place] = m_particles.data()[i];
        }
        f.grid.FindRanges(f.arrays);

        // These part no neighbors, unless they are smaller than the influence distance: then whoever is
        // more than a cell away is not seen.
        const float bucketSize = m_bucketSize;
        const float cellSizeInv = 1 / (h * bucketSize);
        int32_t range[2];
        f.cellX.resize(n + 8);
        f.cellY.resize(n + 8);
        f.kernels->calcCells(f.arrays.x.data(), n, cellSizeInv, f.cellX.data(), range);
        f.kernels->calcCells(f.arrays.y.data(), n, cellSizeInv, f.cellY.data(), range);
        f.hasSmallCells = !(std::fabs(bucketSize) >= 1);
        f.cellCounts.Clear();
        for (size_t i = 0; i < n; ++i)
            f.cellCounts.Add(f.cellX.data()[i], f.cellY.data()[i]);
    }
    {
        QUIB_PROFILE("Building neighbor lists");
        f.pairs.begin = f.pairs.end = 0;
        f.pairs.Reserve(8 * n + 64);
        LoadPairs(0);
    }

    char text[160];
    std::snprintf(text, sizeof(text),
                  "Number of elements:  %zu\nAverage bucket size: %g\nMaximum bucket size: %zu\n",
                  f.cellCounts.GetOccupied(), double(n) / f.cellCounts.GetOccupied(),
                  f.cellCounts.GetFullest());
    f.hashInfo.assign(text);
    Report("hashInfo", f.hashInfo);
}

// Makes sure that the pairs of a particle, and of as many after it as there is room for, are there.
void SPH::LoadPairs(uint32_t begin)
{
    Flat& f = *m_flat;
    if (f.pairs.begin == begin && f.pairs.end > begin)
        return;
    const uint32_t n = f.arrays.count;
    const float maxDistSq = f.params.influenceRad * f.params.influenceRad;
    f.pairs.begin = begin;
    if (!(maxDistSq > 0))
    {
        f.pairs.end = n;
        f.pairs.count = 0;
        return;
    }
    const size_t limit = MaxPairs + n; // room for the pairs of one particle at least
    for (;;)
    {
        f.kernels->findPairs(f.arrays, maxDistSq, f.pairs);
        const size_t room = f.pairs.first.capacity();
        if (f.pairs.end == n || room >= limit)
            break;
        f.pairs.Reserve(std::min(2 * room, limit));
    }
    if (f.hasSmallCells)
        DropDistantCells();
}

void SPH::DropDistantCells()
{
    Flat& f = *m_flat;
    const auto touch = [](int32_t a, int32_t b) { return std::abs(int64_t(a) - b) <= 1; };
    SPHPairs& pairs = f.pairs;
    size_t kept = 0;
    for (size_t k = 0; k < pairs.count; ++k)
    {
        const uint32_t a = pairs.first.data()[k], b = pairs.second.data()[k];
        if (!touch(f.cellX.data()[a], f.cellX.data()[b]) ||
            !touch(f.cellY.data()[a], f.cellY.data()[b]))
            continue;
        pairs.first.data()[kept] = a;
        pairs.second.data()[kept] = b;
        pairs.dx.data()[kept] = pairs.dx.data()[k];
        pairs.dy.data()[kept] = pairs.dy.data()[k];
        pairs.distance.data()[kept] = pairs.distance.data()[k];
        ++kept;
    }
    pairs.count = kept;
    pairs.Finish();
}

void SPH::CalcForces()
{
    QUIB_PROFILE("CalcSPHForces");
    Flat& f = *m_flat;
    SPHArrays& arrays = f.arrays;
    const size_t n = arrays.count;

    const float ownDensity = f.params.InfluenceKernel(0) * f.params.mass;
    for (size_t i = 0; i < n; ++i)
    {
        arrays.density.data()[i] = ownDensity;
        arrays.neighborCount.data()[i] = 1;
    }
    f.pairCount = 0;
    bool isWhole = false; // all pairs are loaded at once
    for (uint32_t begin = 0; begin < n; begin = f.pairs.end)
    {
        LoadPairs(begin);
        f.kernels->addDensities(f.params, f.pairs, arrays);
        f.pairCount += f.pairs.count;
        isWhole = begin == 0;
    }
    f.kernels->startSums(f.params, arrays);
    for (uint32_t begin = 0; begin < n; begin = f.pairs.end)
    {
        LoadPairs(begin);
        if (!isWhole)
            f.kernels->calcDistances(f.pairs);
        f.kernels->addSums(f.params, f.pairs, arrays);
    }

    const float mass = f.params.mass;
    const float tension = m_surfaceTension * mass;
    const float pressure = mass * m_pressMultiplier;
    const float viscosity = m_viscosity * mass * m_viscMultiplier;
    const uint32_t* const places = f.grid.GetPlaces().data();
    for (util::VectorPOD<uint32_t>* v : {&f.lonely, &f.rejuvenated})
    {
        v->clear();
        v->reserve(n);
    }
    uint32_t i = 0;
    const auto write = [&](Particle& p)
    {
        const uint32_t place = places[i];
        const SPHState& state = arrays.state.data()[place];
        const SPHSums& sums = arrays.sums.data()[place];
        p.m_place = place;
        p.m_neighborCount = arrays.neighborCount.data()[place];
        if (p.m_neighborCount < 2)
            f.lonely.append(i);
        else if (p.m_age != 0)
            f.rejuvenated.append(i);
        p.m_density = state.density;
        p.m_pressure = state.pressure;
        p.m_surfaceForce = f.params.hasTension ? tension * arrays.tension.data()[place] : Vec2();
        p.AddForce((p.m_surfaceForce - pressure * Vec2(sums.pressureX, sums.pressureY) +
                    viscosity * Vec2(sums.viscosityX, sums.viscosityY)) *
                   mass);
        ++i;
    };
    ForEachAhead(m_particles, write);
}

void SPH::Evaporate(float dt)
{
    QUIB_PROFILE("Evaporation");
    for (uint32_t i : m_flat->lonely)
        m_particles.data()[i]->m_age += dt;
    for (uint32_t i : m_flat->rejuvenated)
        m_particles.data()[i]->m_age = 0;
}

void SPH::AddJitter()
{
    QUIB_PROFILE("Jitter");
    const float jitter = m_jitter;
    if (jitter == 0)
        return;
    static util::Random s_random;
    for (Particle* particle : m_particles)
        particle->AddForce(jitter * m_flat->params.mass * s_random.GetNormalVec2());
}

void SPH::ReportStatistics()
{
    QUIB_PROFILE("Statistics");
    const Flat& f = *m_flat;
    const size_t n = f.arrays.count;
    // Four sums each, which don't wait for each other.
    double pressures[4] = {}, densities[4] = {};
    for (size_t i = 0; i < n; ++i)
    {
        pressures[i % 4] += f.arrays.state.data()[i].pressure;
        densities[i % 4] += f.arrays.state.data()[i].density;
    }
    const double pressure = pressures[0] + pressures[1] + pressures[2] + pressures[3];
    const double density = densities[0] + densities[1] + densities[2] + densities[3];
    static const util::String s_neighCount = "AVG_neighCount", s_pressure = "AVG_pressure",
                              s_density = "AVG_density";
    Report(s_neighCount, static_cast<float>(double(n + 2 * f.pairCount) / n));
    Report(s_pressure, static_cast<float>(pressure / n));
    Report(s_density, static_cast<float>(density / n));
}

void SPH::VelocitySmoothing()
{
    QUIB_PROFILE("SPH vel-smoothing");
    if (!m_velocitySmoothing)
        return;
    // Deliberate: the list is empty between updates, so that water is not smoothed. All scenes are made
    // for water that is not.
    util::VectorPOD<Vec2> smooth;
    for (const Particle* particle : m_particles)
    {
        Vec2 sum;
        float weights = 0;
        for (const Particle::Neighbor& neighbor : particle->GetNeighbors())
        {
            const float weight = m_flat->params.InfluenceKernel(neighbor.distance);
            sum += weight * neighbor.particle->m_vel;
            weights += weight;
        }
        smooth.append(sum / weights);
    }
    for (size_t i = 0; i < m_particles.size(); ++i)
        m_particles[i]->SetVel(smooth[i]);
}

std::vector<Particle::Neighbor> SPH::GetNeighbors(const Particle& particle) const
{
    std::vector<Particle::Neighbor> neighbors;
    const Flat& f = *m_flat;
    const size_t place = particle.m_place;
    if (place >= f.particles.size() || f.particles[place] != &particle)
        return neighbors;
    neighbors.push_back({f.particles[place], 0, 0, 0});
    // Not through the pairs, which may not all be there.
    const float maxDistSq = f.params.influenceRad * f.params.influenceRad;
    const auto isFar = [&](const util::VectorPOD<int32_t>& cells, size_t i)
    { return std::abs(int64_t(cells[i]) - cells[place]) > 1; };
    for (size_t i = 0; i < f.particles.size(); ++i)
    {
        const float dx = f.arrays.x[i] - f.arrays.x[place], dy = f.arrays.y[i] - f.arrays.y[place];
        const float distSq = dx * dx + dy * dy;
        if (i == place || !(distSq < maxDistSq) ||
            (f.hasSmallCells && (isFar(f.cellX, i) || isFar(f.cellY, i))))
            continue;
        neighbors.push_back({f.particles[i], std::sqrt(distSq), dx, dy});
    }
    return neighbors;
}
}
