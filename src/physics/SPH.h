// The fluid: smoothed particle hydrodynamics, with settings that scripts see as "SPH".
//
// The simulation calls it once per step. Particles come as handles and leave as they are between the
// calls; during a call their state stands in flat arrays, in the order of a grid.
#pragma once

#include "physics/Particle.h"
#include "physics/SPHKernels.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

#include <memory>
#include <vector>

namespace physics
{
class SPH : public script::Reflected, public util::Singleton<SPH>
{
public:
    SPH();
    ~SPH() override;

    /// For tests: which instructions the next updates use. The results are the same.
    void SetInstructions(SPHKernels::Instructions instructions);

    /// Adds the forces that the particles exert on each other, ages the lonely ones, and brings all to
    /// the present attributes. Does nothing for an empty list.
    /// @param dt  seconds
    void Update(const ParticleList& particles, float dt);
    /// Deliberate: does nothing. It walks the particles of an Update under way, and none is when the
    /// simulation calls it.
    void VelocitySmoothing();

    /// How far particles feel each other.
    float InfluenceDistance() const { return m_radius * m_influence; }

    /// Of the last Update, in its order; empty for a particle that had no part in it. For inspection: walks
    /// all particles.
    std::vector<Particle::Neighbor> GetNeighbors(const Particle& particle) const;

    script::AttribWrapper<float> m_radius;         // particle radius
    script::AttribWrapper<float> m_influence;      // influence distance in radii
    script::AttribWrapper<bool> m_specialPressure; // the symmetric pressure term
    script::AttribWrapper<bool> m_velocitySmoothing;
    script::AttribWrapper<float> m_vaporizeTime; // seconds that a lonely droplet lives
    script::AttribWrapper<float> m_friction;     // against geometry
    script::AttribWrapper<float> m_restitution;  // against geometry
    script::AttribWrapper<float> m_soundSpeed;   // stiffness
    script::AttribWrapper<float> m_density;      // at rest
    script::AttribWrapper<float> m_viscosity;
    script::AttribWrapper<float> m_pressMultiplier;
    script::AttribWrapper<float> m_viscMultiplier;
    script::AttribWrapper<float> m_surfaceTension;
    script::AttribWrapper<float> m_jitter;     // random acceleration
    script::AttribWrapper<float> m_bucketSize; // hash cell size in influence distances

private:
    struct Flat;

    void UpdateAttribs();
    void FindNeighbors();
    void LoadPairs(uint32_t begin);
    void DropDistantCells();
    void CalcForces();
    void Evaporate(float dt);
    void AddJitter();
    void ReportStatistics();

    util::VectorPOD<Particle*> m_particles; // of the update under way
    std::unique_ptr<Flat> m_flat;
};
}
